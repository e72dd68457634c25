#include "platform/store/PostgresPresence.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/StoreCore.h"

#include <algorithm>
#include <cassert>
#include <poll.h>

namespace orvo::store::postgres {

namespace {

constexpr char channel[] = "orvo_presence";
constexpr char hello[] = "hello"; ///< here I am; who else is?
constexpr char here[] = "here";
constexpr char gone[] = "gone";

using std::chrono::milliseconds;

/// Many may ask at once, after a restart of the server: one answer serves all who asked meanwhile.
constexpr milliseconds answerPause(250);
/// How often is looked whether the others are still connected. All clients together are not to keep
/// the server busy with it, so many look less often.
constexpr int checkOftenMs = 2000;
constexpr int checkPerPeerMs = 20;

/// A machine that fell off the network is noticed by the server, whose own limit is two hours.
constexpr char keepAlive[] = "SET tcp_keepalives_idle = 5;"
                             "SET tcp_keepalives_interval = 2;"
                             "SET tcp_keepalives_count = 3";

struct FreeNotify {
    void operator()(PGnotify* notification) const { PQfreemem(notification); }
};

std::string announcement(const char* verb, const PresenceEntry& entry) {
    return std::string(verb) + '\n' + presenceText(entry);
}

} // namespace

std::unique_ptr<Presence> openPresence(const std::string& location, const std::string& login,
                                       Status* status) {
    Url url;
    *status = url.parse(location);
    if (!status->ok())
        return nullptr;
    // Another name for each: the server may give the number of a session that ended to a new one.
    url.set("application_name", "orvo presence " + newKey().substr(0, 12));
    return std::make_unique<PostgresPresence>(std::move(url), login);
}

PostgresPresence::PostgresPresence(Url url, const std::string& login)
    : m_url(std::move(url))
    , m_own(ownPresence(login)) {}

PostgresPresence::~PostgresPresence() {
    if (!m_connection.usable())
        return;
    // Sent and not waited for: the server reads it before it meets the end of the connection.
    PGconn* connection = m_connection.get();
    const std::string sql = std::string("NOTIFY ") + channel + ", '" + gone + "'";
    if (PQsendQuery(connection, sql.c_str()) != 0)
        PQflush(connection);
}

void PostgresPresence::announce(std::vector<OpenEdit> edits) {
    if (edits.size() > mostOpenEdits)
        edits.resize(mostOpenEdits);
    m_changed = m_changed || edits != m_own.edits;
    m_own.edits = std::move(edits);
}

int PostgresPresence::wakeFd() const {
    return m_connection.usable() ? PQsocket(m_connection.get()) : -1;
}

int PostgresPresence::nextLookMs() const {
    if (m_news || !m_connection.usable())
        return 0;
    Clock::time_point next = m_peers.empty() ? Clock::now() + milliseconds(checkOftenMs) : m_check;
    if (m_asked)
        next = std::min(next, m_said + answerPause);
    const auto left = std::chrono::duration_cast<milliseconds>(next - Clock::now()).count() + 1;
    return static_cast<int>(std::clamp<int64_t>(left, 0, 60000));
}

Status PostgresPresence::connect() {
    disconnect();
    Status status = m_connection.open(m_url);
    for (const std::string& sql : {std::string(keepAlive), std::string("LISTEN ") + channel}) {
        if (!status.ok())
            break;
        const Result result = m_connection.execute(sql);
        if (!succeeded(result.get()))
            status = m_connection.failure(StdText::tr("Подключение"), result.get());
    }
    if (status.ok())
        status = say(hello);
    if (!status.ok())
        disconnect();
    return status;
}

void PostgresPresence::disconnect() {
    m_connection.close();
    m_peers.clear();
    m_unverified = m_asked = m_news = false;
    m_changed = true;
}

Status PostgresPresence::say(const char* verb) {
    const std::string text = announcement(verb, m_own);
    const Result result =
        m_connection.query("SELECT pg_notify('orvo_presence', $1)", Parameters().text(text));
    if (!succeeded(result.get()))
        return m_connection.failure(StdText::tr("Присутствие"), result.get());
    m_changed = m_asked = false;
    m_said = Clock::now();
    return {};
}

void PostgresPresence::take() {
    pollfd wait = {wakeFd(), POLLIN, 0};
    if (wait.fd >= 0 && ::poll(&wait, 1, 0) == 1)
        PQconsumeInput(m_connection.get());
    while (const std::unique_ptr<PGnotify, FreeNotify> one{PQnotifies(m_connection.get())})
        heard(*one);
}

void PostgresPresence::heard(const PGnotify& announcement) {
    if (announcement.be_pid == PQbackendPID(m_connection.get()))
        return;
    std::string_view text(announcement.extra != nullptr ? announcement.extra : "");
    m_news = true;
    if (text == gone) {
        m_peers.erase(announcement.be_pid);
        return;
    }
    const size_t line = text.find('\n');
    const std::string_view verb = text.substr(0, line);
    PresenceEntry entry;
    if (line == std::string_view::npos || (verb != hello && verb != here) ||
        !parsePresence(text.substr(line + 1), &entry))
        return;
    m_asked = m_asked || verb == hello;
    const auto known = m_peers.find(announcement.be_pid);
    if (known == m_peers.end() && m_peers.size() >= mostPresent)
        return;
    // It is looked at again: the process may be another's by now, or act under another login.
    m_peers[announcement.be_pid].entry = std::move(entry);
    m_peers[announcement.be_pid].verified = false;
    m_unverified = true;
}

int PostgresPresence::checkMs() const {
    return std::max(checkOftenMs, checkPerPeerMs * static_cast<int>(m_peers.size()));
}

Status PostgresPresence::verify() {
    if (m_peers.empty() || (!m_unverified && Clock::now() < m_check))
        return {};
    std::string numbers;
    for (const auto& [number, peer] : m_peers)
        numbers += (numbers.empty() ? "{" : ",") + std::to_string(number);
    numbers += '}';
    // Who owns the store may write under another login, and be seen under it.
    const Result result = m_connection.query(
        "SELECT pid, usename::text, application_name, pg_has_role(usesysid, (SELECT relowner FROM "
        "pg_class WHERE oid = 'public.\"NciEvent\"'::regclass), 'MEMBER') FROM pg_stat_activity "
        "WHERE datname = current_database() AND usename IS NOT NULL AND pid = "
        "ANY ($1::text::integer[])",
        Parameters().text(numbers));
    if (!succeeded(result.get()))
        return m_connection.failure(StdText::tr("Присутствие"), result.get());
    std::map<int, Peer> alive;
    for (int row = 0; row < PQntuples(result.get()); ++row) {
        const auto number = static_cast<int>(integerAt(result.get(), row, 0));
        const auto found = m_peers.find(number);
        if (found == m_peers.end())
            continue;
        Peer& peer = found->second;
        const std::string application(textAt(result.get(), row, 2));
        if (peer.verified && peer.application != application)
            continue;
        peer.application = application;
        peer.verified = true;
        if (!booleanAt(result.get(), row, 3))
            peer.entry.login = textAt(result.get(), row, 1);
        alive.emplace(number, std::move(peer));
    }
    m_peers = std::move(alive);
    m_unverified = false;
    m_check = Clock::now() + milliseconds(checkMs());
    return {};
}

Status PostgresPresence::look(std::vector<PresenceEntry>* others) {
    others->clear();
    const Status done = guarded([&]() -> Status {
        Status status = m_connection.alive() ? Status() : connect();
        if (!status.ok())
            return status;
        take();
        m_news = false;
        if (m_changed || (m_asked && Clock::now() >= m_said + answerPause))
            status = say(here);
        if (status.ok())
            status = verify();
        if (!status.ok())
            return status;
        for (const auto& [number, peer] : m_peers) {
            assert(peer.verified); // 2
            others->push_back(peer.entry);
        }
        sortPresence(others);
        take(); // what came with the answers above does not wake the descriptor any more
        return status;
    });
    if (!done.ok()) {
        disconnect();
        others->clear();
    }
    assert(m_connection.usable() || m_peers.empty()); // 1
    return done;
}

} // namespace orvo::store::postgres
