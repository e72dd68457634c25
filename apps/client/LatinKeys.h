// LatinKeys.h: shortcuts with a Latin letter, where the keyboard has a Russian layout and no other.
#ifndef ORVO_APPS_CLIENT_LATINKEYS_H
#define ORVO_APPS_CLIENT_LATINKEYS_H

#include <QObject>

namespace orvo::app {

/// Gives every action that gets into a window the Cyrillic twin of its shortcut, and lets text
/// fields take Ctrl with a Cyrillic letter for Ctrl with the Latin one of the same key. With a
/// Latin layout beside the Russian one the window system does the same, and nothing changes.
class LatinKeys : public QObject {
public:
    /// For the whole application, whose child it is; to be called once.
    static void install();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit LatinKeys(QObject* parent) : QObject(parent) {}
};

} // namespace orvo::app

#endif
