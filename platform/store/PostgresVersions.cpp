// What a PostgreSQL store keeps of stored bytes that were replaced or deleted.
#include "platform/store/PostgresCopy.h"
#include "platform/store/PostgresStore.h"
#include "platform/store/Sql.h"

namespace orvo::store::postgres {

Status PostgresStore::selectVersions(const VersionQuery& query,
                                     std::vector<KeptVersion>* versions) {
    if (const Status status = drainPipeline(); !status.ok())
        return status;
    const Result result =
        m_connection.query(std::string("SELECT ") + versionColumns + " FROM public.\"NciVersion\"" +
                               versionsWhere(query),
                           {});
    if (!succeeded(result.get()))
        return m_connection.failure(contentName(), result.get());
    for (int row = 0; row < PQntuples(result.get()); ++row) {
        const auto text = [&](int column) {
            return std::string(textAt(result.get(), row, column));
        };
        KeptVersion version;
        version.id = integerAt(result.get(), row, 0);
        version.event = integerAt(result.get(), row, 1);
        version.login = text(2);
        version.time = realAt(result.get(), row, 3);
        version.key = text(4);
        version.resource = text(5);
        version.name = text(6);
        if (!isNull(result.get(), row, 7))
            version.fileTime = realAt(result.get(), row, 7);
        version.size = static_cast<uint64_t>(integerAt(result.get(), row, 8));
        version.sha256 = text(9);
        versions->push_back(std::move(version));
    }
    return {};
}

Status PostgresStore::versionPieces(int64_t id, const EachPiece& each) {
    return copyOut(m_connection,
                   "COPY (SELECT \"data\" FROM public.\"NciVersionData\" WHERE \"id\" = " +
                       std::to_string(id) + " ORDER BY \"part\") TO STDOUT (FORMAT binary)",
                   contentName(), each);
}

Status PostgresStore::applyVersion(const Write& write, const KeptVersion& version) {
    // The bytes never leave the server.
    Status status = apply(contentTable(), write);
    if (status.ok() && write.flag == MDX_UPDATE)
        status = send("DELETE FROM public.\"MenuResourceFileData\" WHERE \"KeyLink\" = $1",
                      Parameters().text(write.key), contentName(), true);
    if (status.ok())
        status = send("INSERT INTO public.\"MenuResourceFileData\" SELECT \"KeyLink\", \"part\", "
                      "\"data\" FROM public.\"MenuResourceFile\", public.\"NciVersionData\" WHERE "
                      "\"KeyLink\" = $1 AND \"id\" = $2",
                      Parameters().text(write.key).integer(version.id), contentName(), true);
    if (status.ok())
        status = putChecksum(write.key, version.sha256);
    return status;
}

Status PostgresStore::deleteVersions(const std::vector<int64_t>& ids) {
    Status status;
    for (const int64_t id : ids) {
        if (status.ok())
            status = send("UPDATE public.\"NciPruned\" SET \"versions\" = greatest(\"versions\", "
                          "(SELECT \"event\" FROM public.\"NciVersion\" WHERE \"id\" = $1))",
                          Parameters().integer(id), contentName(), true);
        if (status.ok())
            status = send("DELETE FROM public.\"NciVersion\" WHERE \"id\" = $1",
                          Parameters().integer(id), contentName(), true);
    }
    return status;
}

Status PostgresStore::selectVersionsEnd(int64_t* change) {
    if (const Status status = drainPipeline(); !status.ok())
        return status;
    const Result result = m_connection.query("SELECT \"versions\" FROM public.\"NciPruned\"", {});
    if (!succeeded(result.get()) || PQntuples(result.get()) != 1)
        return m_connection.failure(contentName(), result.get());
    *change = integerAt(result.get(), 0, 0);
    return {};
}

} // namespace orvo::store::postgres
