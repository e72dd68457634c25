// A PostgreSQL store's whole content on its way out and in, and questions to its log.
#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresCopy.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/PostgresStore.h"
#include "platform/store/Sql.h"

namespace orvo::store::postgres {

namespace {

/// So many changes are read with one statement; of more, so many at a time, which the system can
/// hold on their way.
constexpr int changesAtOnce = 500;

} // namespace

Status PostgresStore::measure(Amount* amount) {
    std::string records;
    for (const TableDef& table : tables())
        records +=
            (records.empty() ? "SELECT (SELECT count(*) FROM " : " + (SELECT count(*) FROM ") +
            qualified(table.name) + ")";
    const Result result = m_connection.query(
        records + ", (SELECT count(*) FROM public.\"MenuResourceFile\"), (SELECT "
                  "coalesce(sum(\"size\"), 0)::bigint FROM public.\"MenuResourceFile\")",
        {});
    if (!succeeded(result.get()))
        return m_connection.failure(StdText::tr("Чтение"), result.get());
    amount->records = static_cast<uint64_t>(integerAt(result.get(), 0, 0));
    amount->contents = static_cast<uint64_t>(integerAt(result.get(), 0, 1));
    amount->bytes = static_cast<uint64_t>(integerAt(result.get(), 0, 2));
    return {};
}

Status PostgresStore::selectInOrder(const TableDef& table,
                                    const std::function<Status(const Row& row)>& each) {
    const Connection::NoTimeoutScope noTimeout(m_connection); // sorts before the first row
    return copyOut(m_connection,
                   "COPY (SELECT " + fieldList(table) + " FROM " + qualified(table.name) +
                       " ORDER BY lower(\"KeyLink\")) TO STDOUT (FORMAT binary)",
                   inTable(table), table, each);
}

Status PostgresStore::contentPieces(const std::string& key, const EachPiece& each) {
    return copyOut(
        m_connection,
        "COPY (SELECT \"data\" FROM public.\"MenuResourceFileData\" WHERE \"KeyLink\" = " +
            literal(key) + " ORDER BY \"part\") TO STDOUT (FORMAT binary)",
        contentName(), each);
}

Status PostgresStore::clearAll() {
    const Connection::NoTimeoutScope noTimeout(m_connection); // each row writes the log
    Status status = send("DELETE FROM public.\"MenuResourceFile\"", {}, contentName(), true);
    for (auto table = tables().rbegin(); status.ok() && table != tables().rend(); ++table)
        status = send("DELETE FROM " + qualified(table->name), {}, inTable(*table), true);
    return status.ok() ? drainPipeline() : status;
}

Status PostgresStore::beginContent(const Write& write, uint64_t /*size*/) {
    Status status = apply(contentTable(), write);
    if (status.ok())
        status = drainPipeline();
    if (!status.ok())
        return status;
    m_contentKey = write.key;
    m_contentSum.reset();
    m_content.emplace(m_connection, write.place.empty() ? contentName() : write.place, write.key);
    return m_content->begin(copyContentIn);
}

Status PostgresStore::contentPiece(std::string_view piece) {
    m_contentSum.add(piece);
    return m_content->put(piece);
}

Status PostgresStore::endContent() {
    const Connection::NoTimeoutScope noTimeout(m_connection); // a large file, a slow disk
    const Status status = m_content->end();
    m_content.reset();
    return status.ok() ? putChecksum(m_contentKey, m_contentSum.text()) : status;
}

std::vector<Change> PostgresStore::changesIn(const PGresult* rows, int column) {
    std::vector<Change> changes;
    takeChanges(rows, column, &changes);
    return changes;
}

void PostgresStore::takeChanges(const PGresult* rows, int column, std::vector<Change>* changes) {
    const auto text = [&](int i, int at) { return std::string(textAt(rows, i, column + at)); };
    for (int i = 0; i < PQntuples(rows) && !isNull(rows, i, column); ++i) {
        Change change;
        change.id = integerAt(rows, i, column);
        change.code = static_cast<int>(integerAt(rows, i, column + 1));
        change.table = text(i, 2);
        change.key = text(i, 3);
        change.login = text(i, 4);
        change.time = realAt(rows, i, column + 5);
        change.after = text(i, 6);
        change.before = text(i, 7);
        change.group = integerAt(rows, i, column + 8);
        change.client = text(i, 9);
        change.place = text(i, 10);
        change.undoes = groupsIn(textAt(rows, i, column + 11));
        changes->push_back(std::move(change));
    }
}

Status PostgresStore::selectChanges(const ChangeQuery& query, std::vector<Change>* changes) {
    // In a transaction what was sent before has to show, and a new connection would be none of it.
    const bool isWithin =
        m_connection.usable() && PQtransactionStatus(m_connection.get()) == PQTRANS_INTRANS;
    const Status status = isWithin ? drainPipeline() : ready();
    if (!status.ok())
        return status;
    const std::string which = changesWhere(query, "public.\"NciEvent\"");
    if (!isText(which))
        return {BadArguments,
                std::string(logName()) + StdText::tr(": недопустимый знак в условии")};
    const Connection::NoTimeoutScope noTimeout(m_connection); // a long log
    const std::string select =
        std::string("SELECT ") + changeColumns + " FROM public.\"NciEvent\"" + which;
    if (query.limit > changesAtOnce)
        return selectManyChanges(select, isWithin, changes);
    const Result result = m_connection.query(select, {});
    if (!succeeded(result.get()))
        return m_connection.failure(logName(), result.get());
    *changes = changesIn(result.get(), 0);
    return {};
}

/// With a cursor the server reads the rows in the order of an index instead of sorting all of them
/// first, and reads on while those it has sent are taken over here.
Status PostgresStore::selectManyChanges(const std::string& select, bool isWithin,
                                        std::vector<Change>* changes) {
    const std::string fetch =
        "FETCH FORWARD " + std::to_string(changesAtOnce) + " FROM orvo_changes";
    // Compiling the query takes longer than what it saves.
    const std::string begin = isWithin ? "" : "BEGIN READ ONLY; SET LOCAL jit = off; ";
    Result rows = m_connection.execute(begin + "DECLARE orvo_changes BINARY NO SCROLL CURSOR FOR " +
                                       select + "; " + fetch);
    std::vector<Change> found;
    for (bool more = true; more && succeeded(rows.get());) {
        more = PQntuples(rows.get()) == changesAtOnce;
        const bool sent = !more || m_connection.sendText(fetch);
        takeChanges(rows.get(), 0, &found);
        if (more)
            rows = sent ? m_connection.answer() : Result();
    }
    Status status;
    if (!succeeded(rows.get()))
        status = m_connection.failure(logName(), rows.get());
    if (m_connection.usable() && !isWithin)
        m_connection.execute("ROLLBACK"); // nothing to keep
    else if (status.ok())
        m_connection.execute("CLOSE orvo_changes");
    if (status.ok())
        changes->swap(found);
    return status;
}

Status PostgresStore::countChanges(int64_t group, std::vector<ChangeCount>* counts) {
    return guarded([&]() -> Status {
        Status status = ready();
        if (!status.ok())
            return status;
        const Connection::NoTimeoutScope noTimeout(m_connection); // a large group
        const Result result = m_connection.query(
            countStatement(group, "public.\"NciEvent\"", "pg_catalog.strpos"), {});
        if (!succeeded(result.get()))
            return m_connection.failure(logName(), result.get());
        std::vector<ChangeCount> found;
        found.reserve(static_cast<size_t>(PQntuples(result.get())));
        for (int i = 0; i < PQntuples(result.get()); ++i)
            found.push_back({std::string(textAt(result.get(), i, 0)),
                             static_cast<int>(integerAt(result.get(), i, 1)),
                             static_cast<ChangeCount::Part>(integerAt(result.get(), i, 2)),
                             integerAt(result.get(), i, 3), integerAt(result.get(), i, 4),
                             integerAt(result.get(), i, 5)});
        counts->swap(found);
        return {};
    });
}

Status PostgresStore::logBefore(double time, int64_t* id, int64_t* count) {
    return guarded([&]() -> Status {
        const Status status = ready();
        if (!status.ok())
            return status;
        const Connection::NoTimeoutScope noTimeout(m_connection); // a long log
        const Result result = m_connection.query(
            "SELECT coalesce(max(\"id\"), 0), count(*) FROM public.\"NciEvent\" WHERE \"id\" <= "
            "(SELECT max(\"id\") FROM public.\"NciEvent\" WHERE \"time\" < $1 AND \"id\" < "
            "coalesce((SELECT min(\"id\") FROM public.\"NciEvent\" WHERE \"time\" >= $1 AND "
            "\"time\" <= date_part('epoch', clock_timestamp())), 9223372036854775807))",
            Parameters().field(MDX_DATE, Value(time)));
        if (!succeeded(result.get()))
            return m_connection.failure(logName(), result.get());
        *id = integerAt(result.get(), 0, 0);
        *count = integerAt(result.get(), 0, 1);
        return {};
    });
}

} // namespace orvo::store::postgres
