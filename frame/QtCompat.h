// QtCompat.h: what Qt 5 and Qt 6 do differently and no call of both covers. The one place that asks
// for the version of Qt in the sources; cmake/OrvoQt.cmake is that of the build.
#ifndef ORVO_FRAME_QTCOMPAT_H
#define ORVO_FRAME_QTCOMPAT_H

#include <QCoreApplication>
#include <QProcess>

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

/// Windows and pictures follow the scale of the screen, as they always do in Qt 6. Before the
/// application is made.
inline void followScreenScale() {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
}

/// The only key of a sequence with its modifiers, 0 if it has none or several.
template <class KeySequence> // this header is for programs without Qt's Gui as well
int onlyKey(const KeySequence& sequence) {
    if (sequence.count() != 1)
        return 0;
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return sequence[0];
#else
    return sequence[0].toCombined();
#endif
}

/// A process that sets itself up in the child, between fork and exec.
class SetUpProcess : public QProcess {
public:
    explicit SetUpProcess(QObject* parent = nullptr) : QProcess(parent) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        setChildProcessModifier([this] { setUpChild(); });
#endif
    }

protected:
    /// System calls only.
    virtual void setUpChild() = 0;
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    void setupChildProcess() final {
        setUpChild();
    }
#endif
};

} // namespace orvo::qt

#endif
