// What an SQLite store keeps of stored bytes that were replaced or deleted.
#include "platform/store/Names.h"
#include "platform/store/Sql.h"
#include "platform/store/SqliteStore.h"

namespace orvo::store::sqlite {

Status SqliteStore::selectVersions(const VersionQuery& query, std::vector<KeptVersion>* versions) {
    // Not kept prepared: its text has the keys.
    Statement statement = m_connection.prepare(std::string("SELECT ") + versionColumns +
                                               " FROM \"NciVersion\"" + versionsWhere(query));
    if (!statement)
        return m_connection.failure(contentName());
    const auto text = [&](int column) { return validUtf8(std::string(statement.text(column))); };
    int step = SQLITE_DONE;
    while ((step = statement.step()) == SQLITE_ROW) {
        KeptVersion version;
        version.id = statement.integer(0);
        version.event = statement.integer(1);
        version.login = text(2);
        version.time = statement.real(3);
        version.key = text(4);
        version.resource = text(5);
        version.name = text(6);
        if (sqlite3_column_type(statement.get(), 7) != SQLITE_NULL)
            version.fileTime = statement.real(7);
        version.size = static_cast<uint64_t>(statement.integer(8));
        version.sha256 = text(9);
        versions->push_back(std::move(version));
    }
    return step == SQLITE_DONE ? Status() : m_connection.failure(contentName());
}

Status SqliteStore::versionPieces(int64_t id, const EachPiece& each) {
    sqlite3_blob* raw = nullptr;
    const int opened =
        sqlite3_blob_open(m_connection.get(), "main", "NciVersion", "data", id, 0, &raw);
    const Blob blob(raw);
    if (opened != SQLITE_OK)
        return m_connection.failure(contentName());
    return blobPieces(blob, each);
}

Status SqliteStore::applyVersion(const Write& write, const KeptVersion& version) {
    Status status = beginContent(write, version.size);
    if (status.ok())
        status =
            versionPieces(version.id, [&](std::string_view piece) { return contentPiece(piece); });
    const Status ended = endContent();
    return status.ok() ? ended : status;
}

Status SqliteStore::deleteVersions(const std::vector<int64_t>& ids) {
    for (const char* sql : {"UPDATE \"NciPruned\" SET \"versions\" = max(\"versions\", "
                            "coalesce((SELECT \"event\" FROM "
                            "\"NciVersion\" WHERE \"id\" = ?1), 0))",
                            "DELETE FROM \"NciVersion\" WHERE \"id\" = ?1"}) {
        Statement* statement = cached(sql);
        if (statement == nullptr)
            return m_connection.failure(contentName());
        for (const int64_t id : ids) {
            const ResetAfter reset(*statement);
            statement->bind(1, id);
            if (statement->step() != SQLITE_DONE)
                return m_connection.failure(contentName());
        }
    }
    return {};
}

Status SqliteStore::selectVersionsEnd(int64_t* change) {
    return m_connection.integer("SELECT \"versions\" FROM \"NciPruned\"", change) == SQLITE_OK
               ? Status()
               : m_connection.failure(contentName());
}

Status SqliteStore::checkVersions(std::vector<std::string>* damages) {
    return inRead([&]() -> Status {
        std::vector<KeptVersion> all;
        Status status = selectVersions({}, &all);
        for (auto version = all.rbegin(); status.ok() && version != all.rend(); ++version) {
            const Status read = readVersion(*version, nullptr);
            if (!read.ok())
                damages->push_back(read.text);
        }
        return status;
    });
}

} // namespace orvo::store::sqlite
