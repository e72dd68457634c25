// What is kept of stored bytes that were replaced or deleted.
#include "frame/StdText.h"
#include "platform/store/ContentChecksum.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"
#include "platform/store/StoreCore.h"

namespace orvo::store {

namespace {

std::string versionName() {
    return StdText::tr("Прежнее содержимое");
}

std::string nameOf(const KeptVersion& version) {
    return StdText::tr("Прежнее содержимое файла ") + shown(version.name) +
           StdText::tr(" (версия ") + std::to_string(version.id) + ")";
}

} // namespace

std::string versionsWhere(const VersionQuery& query) {
    std::string where = " WHERE \"event\" IS NOT NULL";
    const auto keys = [&](const char* column, const std::vector<std::string>& wanted) {
        std::string list;
        for (const std::string& key : wanted)
            if (isKey(key))
                list += (list.empty() ? "" : ", ") + literal(foldedKey(key));
        where +=
            std::string(" AND lower(") + column + ") IN (" + (list.empty() ? "NULL" : list) + ")";
    };
    if (query.id > 0)
        where += " AND \"id\" = " + std::to_string(query.id);
    if (!query.resource.empty())
        keys("\"MenuResourceKey\"", {query.resource});
    if (query.contents)
        keys("\"KeyLink\"", *query.contents);
    return where + " ORDER BY \"id\" DESC";
}

Status StoreBackend::applyVersion(const Write& /*write*/, const KeptVersion& version) {
    return {Failed, nameOf(version) + StdText::tr(" не хранится")};
}

Status StoreCore::versions(const VersionQuery& query, std::vector<KeptVersion>* versions) {
    return guarded([&]() -> Status {
        std::vector<KeptVersion> found;
        const Status status = inRead([&] { return selectVersions(query, &found); });
        if (status.ok())
            versions->swap(found);
        return status;
    });
}

Status StoreCore::findVersion(int64_t id, KeptVersion* version) {
    VersionQuery query;
    query.id = id;
    std::vector<KeptVersion> found;
    const Status status = selectVersions(query, &found);
    if (!status.ok())
        return status;
    if (id < 1 || found.empty())
        return {UnknownName, std::string(versionName()) + StdText::tr(": версии ") +
                                 std::to_string(id) +
                                 StdText::tr(" нет, её могло забыть сокращение (prune)")};
    *version = std::move(found.front());
    return {};
}

Status StoreCore::readVersion(const KeptVersion& version, const TakePiece& take,
                              std::string* sha256) {
    uint64_t size = 0;
    Checksum sum;
    const Status status = versionPieces(version.id, [&](std::string_view piece) -> Status {
        size += piece.size();
        sum.add(piece);
        return take ? take(piece) : Status();
    });
    if (!status.ok())
        return {status.code, nameOf(version) + ": " + status.text};
    const std::string found = sum.text();
    if (size != version.size || (!version.sha256.empty() && found != version.sha256))
        return {Failed, nameOf(version) + StdText::tr(" повреждено или изменено мимо программы: не "
                                                      "сходится с контрольной суммой")};
    if (sha256 != nullptr)
        *sha256 = found;
    return {};
}

Status StoreCore::hasBytesOf(const std::string& content, int64_t id, bool* has) {
    *has = false;
    return guarded([&]() -> Status {
        return inRead([&]() -> Status {
            KeptVersion version;
            Status status = findVersion(id, &version);
            std::string key; // as it is spelled
            if (status.ok())
                status = selectKeys(contentTable(), {0}, {foldedKey(content)},
                                    [&](const Row& row) { key = textOf(row.front()); });
            if (!status.ok() || key.empty())
                return status;
            if (version.sha256.empty())
                status = readVersion(version, nullptr, &version.sha256);
            uint64_t size = 0;
            Checksum sum;
            if (status.ok())
                status = contentPieces(key, [&](std::string_view piece) -> Status {
                    size += piece.size();
                    sum.add(piece);
                    return {};
                });
            *has = status.ok() && size == version.size && sum.text() == version.sha256;
            return status;
        });
    });
}

Status StoreCore::versionBytes(int64_t id, const TakePiece& take) {
    return guarded([&]() -> Status {
        return inRead([&]() -> Status {
            KeptVersion version;
            const Status status = findVersion(id, &version);
            return status.ok() ? readVersion(version, take) : status;
        });
    });
}

Status StoreCore::versionsForgotten(int64_t* change) {
    return guarded([&] { return inRead([&] { return selectVersionsEnd(change); }); });
}

Status StoreCore::pruneVersions(double before, uint64_t mostBytes, bool onlyLook,
                                PrunedVersions* pruned) {
    return guarded([&]() -> Status {
        std::vector<KeptVersion> all; // the newest first
        Status status = inRead([&] { return selectVersions({}, &all); });
        if (!status.ok())
            return status;
        std::vector<int64_t> gone;
        uint64_t kept = 0;
        PrunedVersions sum;
        bool full = false; // what is older than one that goes, goes too
        for (const KeptVersion& version : all) {
            full = full || kept + version.size > mostBytes;
            if (version.time >= before && !full) {
                kept += version.size;
                continue;
            }
            gone.push_back(version.id);
            ++sum.count;
            sum.bytes += version.size;
        }
        if (!onlyLook && !gone.empty())
            status = inWrite([&] { return deleteVersions(gone); });
        if (status.ok())
            *pruned = sum;
        return status;
    });
}

} // namespace orvo::store
