// PostgresPresence.h: presence on a server.
//
// Each client says what it does in an announcement on a channel (NOTIFY), which any login may send
// and which is kept nowhere. Who comes new asks, and all others announce themselves once more. An
// announcement comes with the number of the server's process behind it; pg_stat_activity tells
// everybody whose process that is, and whether it still runs. So nobody can announce another, and
// who dies is gone when the server has closed his connection.
#ifndef ORVO_PLATFORM_STORE_POSTGRESPRESENCE_H
#define ORVO_PLATFORM_STORE_POSTGRESPRESENCE_H

#include "platform/store/PostgresApi.h"
#include "platform/store/Presence.h"

#include <chrono>
#include <map>

namespace orvo::store::postgres {

/// See Kinds.h.
std::unique_ptr<Presence> openPresence(const std::string& url, const std::string& login,
                                       Status* status);

/// Invariants, asserted in debug builds: 1 without a connection no peer is known; 2 a peer that is
/// shown is verified, by a look at the server that is no older than checkMs() and a call of look.
class PostgresPresence final : public Presence {
public:
    PostgresPresence(Url url, const std::string& login);
    ~PostgresPresence() override;

    void announce(std::vector<OpenEdit> edits) override;
    Status look(std::vector<PresenceEntry>* others) override;
    int wakeFd() const override;
    int nextLookMs() const override;

private:
    using Clock = std::chrono::steady_clock;
    struct Peer {
        PresenceEntry entry;     ///< as announced; the login is the server's word once verified
        std::string application; ///< of its session: another one has the same number later
        bool verified = false;
    };

    Status connect();
    void disconnect();
    /// Takes the waiting announcements.
    void take();
    void heard(const PGnotify& announcement);
    Status say(const char* verb);
    /// Forgets the peers whose session is gone and takes the login of the new ones.
    Status verify();
    int checkMs() const;

    const Url m_url;
    Connection m_connection;
    PresenceEntry m_own;
    std::map<int, Peer> m_peers; ///< by the number of the server's process
    bool m_changed = true;       ///< what is done here was not announced yet
    bool m_asked = false;        ///< somebody waits for an announcement
    bool m_unverified = false;
    bool m_news = false;         ///< something was heard that look has not given yet
    Clock::time_point m_said{};  ///< last announcement
    Clock::time_point m_check{}; ///< next look at the sessions
};

} // namespace orvo::store::postgres

#endif
