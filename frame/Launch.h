// Launch.h: how a module asks its host to open what an element of an operator's menu stands for.
#ifndef ORVO_FRAME_LAUNCH_H
#define ORVO_FRAME_LAUNCH_H

#include <QString>

#include <cstdint>

namespace orvo {

/// The code of COrvoCliMod::doCall whose data is a LaunchRequest*.
inline constexpr int callLaunch = 65;

/// What to open. The host fills `refusal` before doCall returns; a host that does not know the call
/// leaves it as it is.
struct LaunchRequest {
    QString key;      ///< of the element: what "one copy" goes by
    QString caption;  ///< for the title
    int32_t kind = 0; ///< Kind::Module, Function, Form or File
    QString name;     ///< of the module, function, form or file
    QString path;     ///< of a file: captions of its folders joined by "/"
    QString params;
    bool oneCopy = false; ///< bring one that is open to the front instead of opening another
    QString refusal = QStringLiteral("Приложение не умеет открывать элементы меню.");
};

} // namespace orvo

#endif
