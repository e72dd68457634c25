// QtCompat.h: what Qt 5 and Qt 6 do differently and no call of both covers. The one place that asks
// for the version of Qt in the sources; cmake/OrvoQt.cmake is that of the build.
#ifndef ORVO_FRAME_QTCOMPAT_H
#define ORVO_FRAME_QTCOMPAT_H

#include <QtGlobal>

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

namespace orvo::qt {

/// Arguments and output are UTF-8 whatever the locale says, as they always are in Qt 6.
inline void speakUtf8() {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
}

} // namespace orvo::qt

#endif
