#include "platform/store/PostgresStore.h"

#include "frame/StdText.h"
#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresCopy.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/Sql.h"

namespace orvo::store::postgres {

namespace {

/// The present row of a binary result as a record.
void writeRecord(const TableDef& table, const PGresult* result, int row,
                 mdx::RecordWriter& writer) {
    writer.begin();
    int i = 0;
    for (const FieldDef& field : table.fields) {
        if (!isNull(result, row, i)) {
            switch (field.type) {
            case MDX_BOOLEAN:
                writer.boolean(i, booleanAt(result, row, i));
                break;
            case MDX_INTEGER:
                writer.integer(i, static_cast<int32_t>(integerAt(result, row, i)));
                break;
            case MDX_DATE:
                writer.date(i, realAt(result, row, i));
                break;
            default: {
                const std::string_view text = textAt(result, row, i);
                writer.textUtf8(i, text.data(), text.size());
            }
            }
        }
        ++i;
    }
    writer.end();
}

} // namespace

PostgresStore::PostgresStore(Url url, Connection connection, const std::string& login,
                             bool asAnother, const OpenOptions& options)
    : StoreCore(login, options)
    , m_url(std::move(url))
    , m_asLogin(asAnother ? login : std::string())
    , m_connection(std::move(connection)) {}

Status PostgresStore::start() {
    return guarded([&]() -> Status {
        std::vector<const TableDef*> known = {&contentTable()};
        for (const TableDef& table : tables())
            known.push_back(&table);
        for (const TableDef* table : known) {
            const Result result = m_connection.query(
                "SELECT " + fieldList(*table) + " FROM " + qualified(table->name) + " LIMIT 0", {});
            if (!succeeded(result.get()))
                return m_connection.failure(StdText::tr("Хранилище ") + shown(displayName()) +
                                                ", " + inTable(*table),
                                            result.get());
        }
        return connect();
    });
}

/// Makes what a connection needs to be the store's; connects before, if that is necessary.
Status PostgresStore::connect() {
    if (!m_connection.usable()) {
        m_session.clear();
        Status status = m_connection.open(m_url);
        if (!status.ok())
            return status;
    }
    // While the server lists this session, it may still be at work; see resolveCommitOutcome.
    const Result session = m_connection.query(
        "SELECT format('pid = %s AND backend_start = %L::timestamptz', pid, backend_start), "
        "has_table_privilege('public.\"Menu\"', 'INSERT') AND NOT pg_is_in_recovery(), "
        "pg_is_in_recovery() FROM pg_stat_activity WHERE pid = pg_backend_pid()",
        {});
    if (!succeeded(session.get()) || PQntuples(session.get()) != 1)
        return m_connection.failure(StdText::tr("Подключение"), session.get());
    m_session = textAt(session.get(), 0, 0);
    m_mayWrite = booleanAt(session.get(), 0, 1);
    m_isStandby = booleanAt(session.get(), 0, 2);
    int64_t id = 0;
    return newest(&id, -1);
}

Status PostgresStore::ready() {
    // A call that was left by an exception may have left the connection in the middle of something.
    if (m_connection.usable() && PQtransactionStatus(m_connection.get()) != PQTRANS_IDLE)
        m_connection.close();
    return m_connection.alive() && !m_session.empty() ? Status() : connect();
}

Status PostgresStore::identity(std::string* identity) {
    return guarded([&]() -> Status {
        Status status = ready();
        if (!status.ok())
            return status;
        const std::string what = StdText::tr("Хранилище");
        const Result result =
            m_connection.query("SELECT \"identity\" FROM public.\"NciStore\"", {});
        if (!succeeded(result.get()) || PQntuples(result.get()) == 0)
            return m_connection.failure(what, result.get());
        *identity = textAt(result.get(), 0, 0);
        return {};
    });
}

// Tables -----------------------------------------------------------------------------------------

Status PostgresStore::fetchAll(const TableDef& table, MDArray* into) {
    Status status = ready();
    if (!status.ok())
        return status;
    Status read = records(table, into, [&](mdx::RecordWriter& writer) {
        return copyOut(m_connection,
                       "COPY " + qualified(table.name) + " (" + fieldList(table) +
                           ") TO STDOUT (FORMAT binary)",
                       inTable(table), table, writer);
    });
    if (read.code == Timeout && m_connection.usable())
        read.text += m_connection.whoHolds();
    return read;
}

Status PostgresStore::fetchMatching(const TableDef& table, const FieldDef& field, TextMatch match,
                                    std::string_view value, MDArray* into) {
    Status status = ready();
    if (!status.ok())
        return status;
    // The folded comparison finds by the index, the other is exact.
    const std::string folded = foldedEquals(table, field, "lower($1 COLLATE \"C\")");
    const std::string exact = exactlyEquals(field, "$1");
    std::string sql = "SELECT " + fieldList(table) + " FROM " + qualified(table.name) + " WHERE ";
    if (match == TextMatch::Key)
        sql += folded;
    else
        sql += isKeyOrLink(table, field) ? folded + " AND " + exact : exact;
    return records(table, into, [&](mdx::RecordWriter& writer) -> Status {
        if (!isText(value))
            return {};
        const Result result = m_connection.query(sql, Parameters().text(value));
        if (!succeeded(result.get()))
            return m_connection.failure(inTable(table), result.get());
        for (int row = 0; row < PQntuples(result.get()); ++row)
            writeRecord(table, result.get(), row, writer);
        return {};
    });
}

Status PostgresStore::rows(const TableDef& table, const std::vector<int>& fields,
                           const std::string& sql, const Parameters& parameters,
                           const EachRow& each) {
    Status status = drainPipeline(); // what was sent before has to show
    if (!status.ok())
        return status;
    const Result result = m_connection.query(sql, parameters);
    if (!succeeded(result.get()))
        return m_connection.failure(inTable(table), result.get());
    Row row(fields.size());
    for (int number = 0; number < PQntuples(result.get()); ++number) {
        for (size_t i = 0; i < fields.size(); ++i)
            row[i] = valueAt(table.fields[static_cast<size_t>(fields[i])].type, result.get(),
                             number, static_cast<int>(i));
        each(row);
    }
    return {};
}

Status PostgresStore::select(const TableDef& table, const std::vector<int>& fields,
                             const EachRow& each) {
    return rows(table, fields,
                "SELECT " + fieldList(table, fields) + " FROM " + qualified(table.name), {}, each);
}

Status PostgresStore::selectWhere(const TableDef& table, const std::vector<int>& fields, int where,
                                  const Value& value, const EachRow& each) {
    const FieldDef& field = table.fields[static_cast<size_t>(where)];
    const std::string name = identifier(field.name);
    const std::string sql =
        "SELECT " + fieldList(table, fields) + " FROM " + qualified(table.name) + " WHERE ";
    if (std::holds_alternative<std::monostate>(value))
        return rows(table, fields, sql + name + " IS NULL", {}, each);
    const auto* text = std::get_if<std::string>(&value);
    if (text != nullptr && !isText(*text))
        return {};
    if (text != nullptr && (field.link || where == 0)) {
        const std::string folded = foldedKey(*text);
        return rows(table, fields, sql + foldedEquals(table, field, "$1"),
                    Parameters().text(folded), each);
    }
    return rows(table, fields, sql + exactlyEquals(field, "$1"),
                Parameters().field(field.type, value), each);
}

Status PostgresStore::inRead(const Work& work) {
    const InvariantScope<PostgresStore> invariants(*this);
    Status status = ready();
    if (!status.ok())
        return status;
    const Result begun = m_connection.execute("BEGIN ISOLATION LEVEL REPEATABLE READ, READ ONLY");
    if (!succeeded(begun.get()))
        return m_connection.failure(StdText::tr("Чтение"), begun.get());
    try {
        status = work();
    } catch (...) {
        m_connection.execute("ROLLBACK");
        throw;
    }
    m_failure = {}; // of a connection that broke meanwhile: the next call makes a new one
    if (m_connection.usable())
        m_connection.execute("ROLLBACK"); // nothing to keep
    if (status.code == Timeout && m_connection.usable())
        status.text += m_connection.whoHolds();
    return status;
}

Status PostgresStore::contentBytes(const std::string& key, std::string* bytes) {
    const std::string from =
        " FROM public.\"MenuResourceFileData\" WHERE \"KeyLink\" = " + literal(key);
    const Result size =
        m_connection.execute("SELECT coalesce(sum(octet_length(\"data\")), 0)" + from);
    if (!succeeded(size.get()))
        return m_connection.failure(contentName(), size.get());
    bytes->clear();
    bytes->reserve(std::strtoull(PQgetvalue(size.get(), 0, 0), nullptr, 10));
    return copyOut(m_connection,
                   "COPY (SELECT \"data\"" + from + " ORDER BY \"part\") TO STDOUT (FORMAT binary)",
                   contentName(), [&](std::string_view piece) -> Status {
                       bytes->append(piece);
                       return {};
                   });
}

} // namespace orvo::store::postgres
