// Writing to a PostgreSQL store: a transaction is one stream of statements, sent without waiting
// for their results.
#include "platform/store/PostgresStore.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresCopy.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/Sql.h"
#include "platform/store/WaitPolicy.h"

#include <cassert>
#include <chrono>
#include <thread>

namespace orvo::store::postgres {

namespace {

/// So many results may be outstanding. They fit into the buffers between here and the server:
/// otherwise both might wait for the other to read.
constexpr size_t mostOutstanding = 512;

/// How long the outcome of a commit is looked for after the connection broke.
constexpr std::chrono::seconds outcomeTimeout(5);

std::string unknownOutcome() {
    return StdText::tr(": неизвестно, сохранено ли изменение");
}

/// The last change that a call left in the log, and the id of its first.
const std::string& writtenOfCall() {
    static const std::string sql =
        std::string("SELECT ") + changeColumns +
        ", (SELECT min(\"id\") FROM public.\"NciEvent\" WHERE \"id\" > $1 AND \"call\" = $2) FROM "
        "public.\"NciEvent\" WHERE \"id\" > $1 AND \"call\" = $2 ORDER BY \"id\" DESC LIMIT 1";
    return sql;
}

const char dataTable[] = "public.\"MenuResourceFileData\"";

/// The statement for a write of this shape.
std::string statement(const TableDef& table, const Write& write) {
    WriteSyntax syntax;
    syntax.table = qualified(table.name);
    syntax.whereKey = "lower(" + identifier(table.fields[0].name) + ") = $1";
    syntax.parameter = '$';
    return writeStatement(table, write, syntax);
}

} // namespace

// The stream -------------------------------------------------------------------------------------

Status PostgresStore::send(const std::string& sql, const Parameters& parameters, std::string what,
                           bool writes) {
    if (!m_failure.ok())
        return m_failure;
    if (PQpipelineStatus(m_connection.get()) == PQ_PIPELINE_OFF &&
        PQenterPipelineMode(m_connection.get()) == 0)
        return m_failure = m_connection.failure(what, nullptr);
    if (!m_connection.isPrepared(sql)) {
        if (!m_connection.sendPrepare(sql, parameters))
            return m_failure = m_connection.failure(what, nullptr);
        m_sent.push_back({sql, what, writes});
    }
    if (!m_connection.sendRun(sql, parameters))
        return m_failure = m_connection.failure(what, nullptr);
    m_sent.push_back({{}, std::move(what), writes});
    if (m_sent.size() > mostOutstanding) {
        if (PQsendFlushRequest(m_connection.get()) == 0)
            return m_failure = m_connection.failure(StdText::tr("Запись"), nullptr);
        receive(mostOutstanding / 2);
    }
    return m_failure;
}

void PostgresStore::receiveOne() {
    const Sent sent = std::move(m_sent.front());
    m_sent.pop_front();
    while (const Result result = m_connection.next()) {
        if (succeeded(result.get())) {
            if (sent.tells && sent.prepared.empty())
                takeWritten(result.get());
            continue;
        }
        if (!sent.prepared.empty())
            m_connection.forget(sent.prepared);
        if (PQresultStatus(result.get()) == PGRES_PIPELINE_ABORTED || !m_failure.ok())
            continue;
        if (stateOf(result.get()) == "42501" && sent.writes)
            m_failure = {Refused, sent.what + StdText::tr(": у пользователя ") +
                                      shown(PQuser(m_connection.get())) +
                                      StdText::tr(" нет права на запись")};
        else
            m_failure = m_connection.failure(sent.what, result.get());
        if (!m_connection.usable())
            return;
    }
    if (!m_connection.usable() && m_failure.ok())
        m_failure = m_connection.failure(sent.what, nullptr);
}

void PostgresStore::receive(size_t left) {
    while (m_sent.size() > left && m_connection.usable())
        receiveOne();
}

Status PostgresStore::drainPipeline() {
    if (m_connection.usable() && PQpipelineStatus(m_connection.get()) != PQ_PIPELINE_OFF) {
        if (PQpipelineSync(m_connection.get()) == 0 && m_failure.ok())
            m_failure = m_connection.failure(StdText::tr("Запись"), nullptr);
        receive(0);
        while (m_connection.usable()) { // up to the mark itself
            const Result mark = m_connection.next();
            if (PQresultStatus(mark.get()) == PGRES_PIPELINE_SYNC)
                break;
        }
        if (m_connection.usable() && PQexitPipelineMode(m_connection.get()) == 0 && m_failure.ok())
            m_failure = m_connection.failure(StdText::tr("Запись"), nullptr);
    }
    if (!m_connection.usable() && m_failure.ok())
        m_failure = m_connection.failure(StdText::tr("Запись"), nullptr);
    return m_failure;
}

Status PostgresStore::begin(const std::string& call) {
    m_sent.clear();
    m_failure = {};
    m_commitSent = false;
    const std::string what = StdText::tr("Запись");
    const std::string group = origin().group > 0 ? std::to_string(origin().group) : std::string();
    const std::string undoes = listText(origin().undoes);
    const Status begun = send("BEGIN", {}, what, false);
    if (!begun.ok())
        return begun;
    // Who writes waits here for who writes already, before it holds anything else.
    return send(std::string("SELECT ") + takeLogLock +
                    ", set_config('orvo.login', $1, true), set_config('orvo.call', $2, true), "
                    "set_config('orvo.client', $3, true), set_config('orvo.place', $4, true), "
                    "set_config('orvo.action', $5, true), set_config('orvo.undoes', $6, true)",
                Parameters()
                    .text(m_asLogin)
                    .text(call)
                    .text(origin().client)
                    .text(origin().place)
                    .text(group)
                    .text(undoes),
                what, true);
}

Status PostgresStore::commit() {
    const Status asked =
        send(writtenOfCall(), Parameters().integer(m_written.since).text(m_written.call),
             StdText::tr("Запись"), false);
    if (!asked.ok())
        return asked; // before the commit: nothing is saved
    if (!m_sent.empty())
        m_sent.back().tells = true;
    m_commitSent = true; // even a failed send may have put it on its way
    const Status sent = send("COMMIT", {}, StdText::tr("Запись"), false);
    const Status finished = drainPipeline();
    return sent.ok() ? finished : sent;
}

void PostgresStore::takeWritten(const PGresult* result) {
    const std::vector<Change> last = changesIn(result, 0);
    if (last.empty())
        return;
    m_written.first = integerAt(result, 0, changeColumnCount);
    m_written.last = LogCursor(last.front());
    m_known = last.front().id;
}

void PostgresStore::checkInvariants() const {
#ifndef NDEBUG
    assert(!m_connection.usable() || PQpipelineStatus(m_connection.get()) == PQ_PIPELINE_OFF);
    assert(m_sent.empty() && m_failure.ok());
    assert(!m_content);
    assert(!m_written.unknown || (m_written.first == 0 && m_written.last.proof.empty()));
    assert(m_written.first == 0 ||
           (m_written.first > m_written.since && m_written.last.id >= m_written.first));
#endif
}

void PostgresStore::rollback() {
    m_content.reset();
    // The failure that led here is the one that is told. If the stream cannot be ended either, the
    // connection goes, and the server rolls back.
    if (!drainPipeline().ok() && PQpipelineStatus(m_connection.get()) != PQ_PIPELINE_OFF)
        m_connection.close();
    if (m_connection.usable() && PQtransactionStatus(m_connection.get()) != PQTRANS_IDLE)
        m_connection.execute("ROLLBACK");
    m_sent.clear();
    m_failure = {};
}

Status PostgresStore::inWrite(const Work& work) {
    const InvariantScope<PostgresStore> invariants(*this);
    const std::string notSaved =
        StdText::tr("изменения не сохранены: "); // first: the rest may be long
    m_written = {};
    Status status = ready();
    if (!status.ok())
        return {status.code, notSaved + status.text};
    const std::string call = newKey();
    const std::string session = m_session;
    const int64_t since = m_known;
    m_written.since = since;
    m_written.call = call;
    status = begin(call);
    try {
        if (status.ok())
            status = work();
        if (status.ok())
            status = commit();
    } catch (...) {
        rollback();
        throw;
    }
    if (status.ok() || m_connection.usable()) {
        if (!status.ok()) {
            rollback();
            if (status.code == Timeout && m_connection.usable())
                status.text += m_connection.whoHolds();
            m_written = {};
        }
        return status;
    }
    m_sent.clear();
    m_failure = {};
    m_content.reset();
    if (status.code != ConnectionBroken && !m_connection.givenUp())
        return status;
    if (!m_commitSent)
        return {status.code, notSaved + status.text};
    m_written.first = 0; // said by a transaction that may not have ended
    m_written.last = {};
    m_written.unknown = true;
    if (m_connection.givenUp()) // and so is the search for the outcome
        return {Timeout, status.text + unknownOutcome()};
    return resolveCommitOutcome(call, since, session);
}

Status PostgresStore::resolveCommitOutcome(const std::string& call, int64_t since,
                                           const std::string& session) {
    const std::string lost = StdText::tr("Соединение с базой потеряно при записи");
    const Status unknown = {ConnectionBroken, lost + unknownOutcome()};
    const auto end = std::chrono::steady_clock::now() + outcomeTimeout;
    while (!connect().ok()) {
        if (m_connection.givenUp() || std::chrono::steady_clock::now() > end)
            return unknown;
        std::this_thread::sleep_for(std::chrono::milliseconds(waitStepMs));
        if (!keepWaiting())
            return unknown;
    }
    // The old session may not have noticed anything yet and commit later.
    m_connection.execute("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE " + session);
    for (bool gone = false; !gone;) {
        const Result listed = m_connection.execute("SELECT FROM pg_stat_activity WHERE " + session);
        if (!succeeded(listed.get()) || std::chrono::steady_clock::now() > end || !keepWaiting())
            return unknown;
        gone = PQntuples(listed.get()) == 0;
        if (!gone)
            std::this_thread::sleep_for(std::chrono::milliseconds(waitStepMs));
    }
    const Result found = m_connection.query(
        "SELECT EXISTS (SELECT FROM public.\"NciEvent\" WHERE \"id\" > $1 AND \"call\" = $2), "
        "(SELECT \"id\" > $1 FROM public.\"NciPruned\")",
        Parameters().integer(since).text(call));
    if (!succeeded(found.get()))
        return unknown;
    if (booleanAt(found.get(), 0, 0)) {
        const Result left =
            m_connection.query(writtenOfCall(), Parameters().integer(since).text(call));
        if (succeeded(left.get()))
            takeWritten(left.get());
        m_written.unknown = false;
        return {};
    }
    if (booleanAt(found.get(), 0, 1))
        return unknown; // the log was pruned in the meantime
    m_written.unknown = false;
    return {ConnectionBroken, lost + StdText::tr(": изменения не сохранены")};
}

// The writes -------------------------------------------------------------------------------------

Status PostgresStore::apply(const TableDef& table, const Write& write) {
    std::string what = placeOf(table, write);
    const bool insert = write.flag == MDX_INSERT;
    if (!insert && !isText(write.key))
        return {}; // the key of no record
    const std::string key = insert ? write.key : foldedKey(write.key);
    Parameters parameters;
    parameters.text(key);
    for (const auto& [number, value] : write.values) {
        const FieldDef& field = table.fields[static_cast<size_t>(number)];
        const auto* text = std::get_if<std::string>(&value);
        if (text != nullptr && !isText(*text))
            return {Refused, what + StdText::tr(": недопустимый знак в поле ") + shown(field.name)};
        parameters.field(field.type, value);
    }
    return send(statement(table, write), parameters, std::move(what), true);
}

Status PostgresStore::applyContent(const Write& write, std::string_view bytes) {
    const TableDef& table = contentTable();
    Status status = apply(table, write);
    if (status.ok() && write.flag == MDX_UPDATE)
        status = send(std::string("DELETE FROM ") + dataTable + " WHERE \"KeyLink\" = $1",
                      Parameters().text(write.key), contentName(), true);
    if (status.ok())
        status = putChecksum(write.key, checksum(bytes));
    if (status.ok())
        status = drainPipeline();
    if (!status.ok() || bytes.empty())
        return status;
    const Connection::NoTimeoutScope noTimeout(m_connection); // a large file, a slow disk
    return copyIn(m_connection, copyContentIn, contentName(), write.key, bytes);
}

Status PostgresStore::putChecksum(const std::string& key, const std::string& sum) {
    // For the row that there is: an update of a missing key has written nothing.
    return send(
        "INSERT INTO public.\"MenuResourceFileSum\" SELECT \"KeyLink\", $2 FROM "
        "public.\"MenuResourceFile\" WHERE \"KeyLink\" = $1 ON CONFLICT (\"KeyLink\") DO UPDATE "
        "SET \"sha256\" = excluded.\"sha256\"",
        Parameters().text(key).text(sum), contentName(), true);
}

} // namespace orvo::store::postgres
