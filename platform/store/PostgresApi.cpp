// The connection: making it, waiting on it and sending.
#include "platform/store/PostgresApi.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/WaitPolicy.h"

#include <cassert>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <poll.h>
#include <thread>

namespace orvo::store::postgres {

namespace {

/// Set once a connection stands; the store's statements rely on them. With that search path a name
/// without a schema is never one that somebody has made in the database. No session outlives its
/// client for long, and none of its statements runs for ever: long ones are reads of everything.
const char settings[] = "SET search_path = pg_catalog, pg_temp;"
                        "SET standard_conforming_strings = on;"
                        "SET client_min_messages = warning;"
                        "SET lock_timeout = '5s';"
                        "SET idle_in_transaction_session_timeout = '60s';"
                        "SET statement_timeout = '2h';"
                        "SELECT set_config(name, '10s', false) FROM pg_settings WHERE name = "
                        "'client_connection_check_interval';" // since version 14
                        "SET extra_float_digits = 1";

/// A stream is long when it has more than the system holds of it at a time; how long it is left
/// alone then to send on, in which time that does not run full.
constexpr int longStream = 256 << 10;
constexpr std::chrono::microseconds gathering(100);

/// One try to connect. The system's part of it (names, for example) knows no steps, so where
/// the thread has a wait policy, it runs beside; one that was given up ends by itself.
struct Attempt {
    explicit Attempt(Url to) : url(std::move(to)) {}

    void run() {
        const Url::Arrays arrays = url.arrays();
        const auto begin = std::chrono::steady_clock::now();
        ConnectionHandle own(PQconnectdbParams(arrays.names.data(), arrays.values.data(), 0));
        if (own && PQstatus(own.get()) != CONNECTION_OK) {
            why = url.withoutSecrets(PQerrorMessage(own.get()));
            // A server that answers at once is asked once more, for the code of its refusal: its
            // words are in a language of its own.
            if (std::chrono::steady_clock::now() - begin < std::chrono::seconds(1)) {
                PQsetErrorVerbosity(own.get(), PQERRORS_VERBOSE);
                PQreset(own.get());
                PQsetErrorVerbosity(own.get(), PQERRORS_DEFAULT);
                if (PQstatus(own.get()) != CONNECTION_OK)
                    state = stateIn(PQerrorMessage(own.get()));
            }
        }
        connection = std::move(own);
    }

    const Url url;
    ConnectionHandle connection; ///< null: no memory
    std::string why, state;

    std::mutex mutex; ///< of the one below, when it runs beside
    std::condition_variable over;
    bool done = false;
};

/// Null if the thread's wait policy ended the wait.
std::shared_ptr<Attempt> attempt(const Url& url) {
    auto one = std::make_shared<Attempt>(url);
    if (!hasWaitPolicy()) {
        one->run();
        return one;
    }
    std::thread([one] {
        try {
            one->run();
        } catch (...) { // no memory: there is no connection then
        }
        const std::lock_guard lock(one->mutex);
        one->done = true;
        one->over.notify_all();
    }).detach();
    std::unique_lock lock(one->mutex);
    while (!one->over.wait_for(lock, std::chrono::milliseconds(waitStepMs),
                               [&] { return one->done; })) {
        if (!keepWaiting())
            return nullptr;
    }
    return one;
}

} // namespace

Status Connection::open(const Url& url) {
    close();
    m_end = End::None;
    m_silentMs = std::atoi(url.get("tcp_user_timeout").c_str());
    const std::string what = StdText::tr("Нет подключения к ") + shown(url.displayName());
    const std::string where = what + ": ";
    const std::shared_ptr<Attempt> made = attempt(url);
    if (!made) {
        m_end = End::GivenUp;
        return {Timeout, where + StdText::tr("ожидание прервано")};
    }
    m_connection = std::move(made->connection);
    if (!m_connection)
        return {NoMemory, StdText::tr("Не хватает памяти")};
    if (!usable()) {
        const bool noPassword = PQconnectionNeedsPassword(get()) != 0;
        close();
        if (made->state.starts_with("28") || noPassword)
            return {BadLogin, where +
                                  StdText::tr("пользователь не найден или неправильный пароль (") +
                                  made->why + ")"};
        if (made->state == "3D000")
            return {UnknownName, where + StdText::tr("нет базы ") + shown(url.get("dbname"))};
        if (made->state == "42501")
            return {Refused, where + StdText::tr("недостаточно прав (") + made->why + ")"};
        return {CannotConnect, where + made->why};
    }
    PQsetNoticeProcessor(
        get(), [](void*, const char*) {}, nullptr);
    if (PQsetnonblocking(get(), 1) != 0)
        return failure(what, nullptr);
    const Result set = execute(settings);
    if (!succeeded(set.get()))
        return failure(what, set.get());
    return {};
}

void Connection::close() {
    m_connection.reset();
    m_prepared.clear();
}

void Connection::checkInvariants() const {
    assert(m_connection || m_prepared.empty());
    assert(m_end == End::None || !m_connection);
    assert(!usable() || PQisnonblocking(get()) != 0);
}

// Waiting ----------------------------------------------------------------------------------------

/// Until the server has something to say, or (POLLOUT) takes more. If the wait is ended, the
/// connection is closed.
bool Connection::wait(short events) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    for (;;) {
        const auto silent =
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
        if (m_timeLimited && m_silentMs > 0 && silent >= m_silentMs) {
            close();
            m_end = End::Silent;
            return false;
        }
        pollfd socket = {PQsocket(get()), events, 0};
        const int ready = ::poll(&socket, 1, waitStepMs);
        if (ready > 0 || (ready < 0 && errno != EINTR))
            return true; // if it is a failure, libpq will meet it
        if (ready == 0 && !keepWaiting()) {
            close();
            m_end = End::GivenUp;
            return false;
        }
    }
}

bool Connection::flush() {
    while (usable()) {
        const int left = PQflush(get());
        if (left <= 0)
            return left == 0;
        // If its output is not read, the server blocks and no longer reads ours.
        if (!wait(POLLIN | POLLOUT) || PQconsumeInput(get()) == 0)
            return false;
    }
    return false;
}

bool Connection::awaitInput() {
    return wait(POLLIN) && PQconsumeInput(get()) != 0;
}

/// False if the connection was closed. Where it only broke, there is a result that tells.
bool Connection::awaitResult() {
    flush();
    while (usable() && PQisBusy(get()) != 0) {
        if (!awaitInput())
            break;
    }
    return get() != nullptr;
}

Result Connection::next() {
    return awaitResult() ? Result(PQgetResult(get())) : Result();
}

// Whoever waits for each of the server's small packets is woken for each of them, which costs both
// sides more than the data itself. In the midst of a long stream they are left to gather.
int Connection::copyData(char** message) {
    enum { Look, Nap, Wait } next = m_streamed >= longStream ? Look : Wait;
    for (;;) {
        const int length = PQgetCopyData(get(), message, 1);
        if (length != 0) {
            if (length > 0 && m_streamed < longStream)
                m_streamed += length;
            return length;
        }
        if (next == Wait) {
            if (!awaitInput() && !usable())
                return -2;
            continue;
        }
        if (next == Nap)
            std::this_thread::sleep_for(gathering);
        next = next == Look ? Nap : Wait;
        if (PQconsumeInput(get()) == 0 && !usable())
            return -2;
    }
}

bool Connection::alive() {
    while (usable()) {
        pollfd wait = {PQsocket(get()), POLLIN, 0};
        if (::poll(&wait, 1, 0) != 1)
            break;
        if (PQconsumeInput(get()) == 0)
            break;
        PQisBusy(get()); // reads a final error message, if any
    }
    if (!usable())
        close();
    return usable();
}

/// Takes what an earlier call has left; a copy that was given up midway is ended.
void Connection::takeRest() {
    while (usable()) {
        const Result left = next();
        if (!left)
            return;
        const ExecStatusType status = PQresultStatus(left.get());
        if (status == PGRES_COPY_IN) {
            int ended = 0;
            while ((ended = PQputCopyEnd(get(), "given up")) == 0 && flush())
                continue;
            if (ended != 1)
                close();
        } else if (status == PGRES_COPY_OUT) {
            char* row = nullptr;
            while (copyData(&row) > 0)
                PQfreemem(row);
        }
    }
}

Result Connection::execute(const std::string& sql) {
    const InvariantScope<Connection> invariants(*this);
    Result last;
    takeRest();
    m_streamed = 0;
    if (usable() && PQsendQuery(get(), sql.c_str()) != 0) {
        while (Result result = next()) {
            const ExecStatusType status = PQresultStatus(result.get());
            last = std::move(result);
            if (status == PGRES_COPY_IN || status == PGRES_COPY_OUT || !usable())
                break;
        }
    }
    return last ? std::move(last) : Result(PQmakeEmptyPGresult(nullptr, PGRES_FATAL_ERROR));
}

bool Connection::sendText(const std::string& sql) {
    return PQsendQuery(get(), sql.c_str()) != 0 && flush();
}

Result Connection::answer() {
    Result first = next();
    while (first && usable() && next())
        continue;
    return first;
}

bool Connection::sendPrepare(const std::string& sql, const Parameters& parameters) {
    std::vector<Oid> types;
    for (const auto& parameter : parameters.m_values)
        types.push_back(parameter.type);
    const std::string name = "s" + std::to_string(m_made++);
    if (PQsendPrepare(get(), name.c_str(), sql.c_str(), static_cast<int>(types.size()),
                      types.data()) == 0)
        return false;
    m_prepared.emplace(sql, name);
    return true;
}

bool Connection::sendRun(const std::string& sql, const Parameters& parameters) const {
    const std::vector<Parameters::Parameter>& all = parameters.m_values;
    std::vector<const char*> values;
    std::vector<int> lengths;
    const std::vector<int> formats(all.size(), 1);
    for (const auto& parameter : all) {
        const std::string_view bytes = parameter.own.empty() ? parameter.bytes : parameter.own;
        values.push_back(parameter.null ? nullptr : bytes.empty() ? "" : bytes.data());
        lengths.push_back(static_cast<int>(bytes.size()));
    }
    return PQsendQueryPrepared(get(), m_prepared.at(sql).c_str(), static_cast<int>(all.size()),
                               values.data(), lengths.data(), formats.data(), 1) != 0;
}

Result Connection::query(const std::string& sql, const Parameters& parameters, int milliseconds) {
    const int usual = m_silentMs;
    if (milliseconds >= 0)
        m_silentMs = milliseconds;
    const auto run = [&]() -> Result {
        if (!isPrepared(sql)) {
            if (!sendPrepare(sql, parameters))
                return {};
            Result prepared = answer();
            if (!prepared || !succeeded(prepared.get())) {
                forget(sql);
                return prepared;
            }
        }
        if (!sendRun(sql, parameters))
            return {};
        return answer();
    };
    Result result = run();
    m_silentMs = usual;
    return result;
}

} // namespace orvo::store::postgres
