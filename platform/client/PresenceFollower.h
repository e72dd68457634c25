// PresenceFollower.h: takes part in a store's presence, in a thread of its own, so that a server
// that is slow, frozen or gone never holds up a window.
#ifndef ORVO_PLATFORM_CLIENT_PRESENCEFOLLOWER_H
#define ORVO_PLATFORM_CLIENT_PRESENCEFOLLOWER_H

#include "frame/OrvoClient.h"
#include "platform/store/Presence.h"

#include <memory>
#include <thread>
#include <vector>

namespace orvo::client {

class ORVOCLIENT_EXPORT PresenceFollower : public QObject {
    Q_OBJECT
public:
    /// Takes the presence over and begins at once. Not null.
    explicit PresenceFollower(std::unique_ptr<store::Presence> presence, QObject* parent = nullptr);
    /// The others see this client leave. Waits for no server.
    ~PresenceFollower() override;

    /// What this client edits now.
    void announce(std::vector<store::OpenEdit> edits);
    /// The other clients, as of the last changed(). Nobody while the store does not answer.
    const std::vector<store::PresenceEntry>& others() const { return m_others; }

signals:
    /// others() has changed. Emitted in the thread of this object.
    void changed();

private:
    class Worker;
    void take();

    std::vector<store::PresenceEntry> m_others;
    std::unique_ptr<Worker> m_worker; ///< what the thread works on; goes after it
    std::thread m_thread;
};

} // namespace orvo::client

#endif
