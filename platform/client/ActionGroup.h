// ActionGroup.h: which writes belong to one action of the user, for the change log.
//
// An action is what the bare event loop runs at one go: a slot with all that it calls, the boxes in
// which it asks included. Its writes are one group of the log: whoever takes the action back takes
// back all of them. The first write after control returned to the bare loop begins a new one, and
// so does the first after a key or a button was pressed there.
#ifndef ORVO_PLATFORM_CLIENT_ACTIONGROUP_H
#define ORVO_PLATFORM_CLIENT_ACTIONGROUP_H

#include <QObject>

#include <cstdint>

namespace orvo::client {

/// Lives on the GUI thread, as the session does.
class ActionGroup : public QObject {
public:
    ActionGroup() = default;

    /// The group that the next write joins; 0: it begins one.
    int64_t current() const { return m_group; }
    /// A write has made changes, the first of them that one.
    void wrote(int64_t first);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    /// The event loop has come round.
    void turn();
    int64_t m_group = 0;
    bool m_watching = false; ///< an event filter of the application
};

} // namespace orvo::client

#endif
