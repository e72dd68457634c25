#include "history/ReturnVersion.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/Locks.h"
#include "history/Overtaken.h"
#include "history/RecordWords.h"
#include "platform/store/Names.h"

namespace orvo::history {

namespace {

store::Status notReturned(int code, const QString& why) {
    return {code, (Text::tr("Не возвращено: ") + why).toStdString()};
}

/// As undo says it.
store::Status left(int code, const Remark& remark, RecordSource& source, const PersonNames& names) {
    return {code, remarkWords(remark, source, names).toStdString()};
}

store::Status checkLock(store::MaintainedStore& store, const std::string& resource,
                        RecordSource& source, const PersonNames& names) {
    std::map<std::string, FormLock> held;
    store::Status status = heldByOthers(store, {resource}, &held);
    if (!status.ok() || held.empty())
        return status;
    return left(store::Refused, lockRemark(held.begin()->second), source, names);
}

store::Status checkBytes(store::MaintainedStore& store, const store::KeptVersion& version,
                         RecordSource& source) {
    store::Status read = store.versionBytes(version.id, nullptr);
    if (read.code != store::Failed && read.code != store::UnknownName)
        return read;
    Remark remark;
    remark.why = read.code == store::Failed ? Remark::DamagedBytes : Remark::NoBytes;
    remark.table = &store::contentTable();
    remark.key = version.key;
    return left(read.code, remark, source, {});
}

/// The key of the content that is to have the bytes: the version's, or of the one that stands in
/// its place by now; empty: there is none.
store::Status findContent(store::MaintainedStore& store, const store::KeptVersion& version,
                          bool isFile, std::string* key) {
    const store::TableDef& table = store::contentTable();
    std::vector<std::pair<std::string, std::string>> found;
    store::Status status =
        store.keysNaming(table, table.find(field::MenuResourceKey), {version.resource}, &found);
    std::vector<std::string> keys;
    for (auto& [content, resource] : found)
        keys.push_back(std::move(content));
    std::map<std::string, std::vector<store::Value>> stored;
    if (status.ok())
        status = store.storedValues(table, keys, &stored);
    const auto name = static_cast<size_t>(table.find(field::name_));
    key->clear();
    for (const auto& [folded, row] : stored) {
        if (folded == store::foldedKey(version.key)) {
            *key = store::textOf(row.front());
            break;
        }
        if (key->empty() && (isFile || store::textOf(row[name]) == version.name))
            *key = store::textOf(row.front());
    }
    return status;
}

/// `stored`: the key of the content that is there; empty: it is to be made.
store::Write writeOf(const store::KeptVersion& version, const std::string& stored) {
    const store::TableDef& table = store::contentTable();
    const bool isStored = !stored.empty();
    store::Write write;
    write.flag = isStored ? MDX_UPDATE : MDX_INSERT;
    write.key = isStored ? stored : version.key;
    for (int i = 1; i < static_cast<int>(table.fields.size()); ++i) {
        const std::string_view name = table.fields[static_cast<size_t>(i)].name;
        if (name == field::size)
            write.values.emplace_back(i, static_cast<int64_t>(version.size));
        else if (name == field::time) {
            write.values.emplace_back().first = i;
            if (version.fileTime)
                write.values.back().second = *version.fileTime;
        } else if (isStored)
            continue;
        else if (name == field::MenuResourceKey)
            write.values.emplace_back(i, version.resource);
        else if (name == field::name_)
            write.values.emplace_back(i, version.name);
    }
    return write;
}

} // namespace

store::Status returnVersion(store::MaintainedStore& store, int64_t id, int64_t seen,
                            const PersonNames& names) {
    store::VersionQuery query;
    query.id = id;
    std::vector<store::KeptVersion> found;
    store::Status status = store.versions(query, &found);
    if (!status.ok())
        return notReturned(status.code, QString::fromStdString(status.text));
    if (found.empty())
        return notReturned(store::UnknownName, Text::tr("версия уже не хранится"));
    const store::KeptVersion& version = found.front();
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    LoggedRecords source(store);
    std::map<std::string, std::vector<store::Value>> resource;
    status = store.storedValues(resources, {version.resource}, &resource);
    if (!status.ok())
        return notReturned(status.code, QString::fromStdString(status.text));
    if (resource.empty())
        return notReturned(
            store::Refused,
            Text::tr("формы или файла больше нет: сначала верните удаление в истории"));
    status = checkLock(store, version.resource, source, names);
    if (status.ok()) // a write would give the bytes a checksum of their own
        status = checkBytes(store, version, source);
    if (!status.ok())
        return status;
    const store::Value& kind =
        resource.begin()->second[static_cast<size_t>(resources.find(field::type_))];
    std::string stored;
    status = findContent(store, version, kind == store::Value(int64_t{Kind::File}), &stored);
    if (!status.ok())
        return notReturned(status.code, QString::fromStdString(status.text));
    store::TableWrites part;
    part.table = &store::contentTable();
    part.writes.push_back(writeOf(version, stored));
    store::BytesToWrite bytes;
    bytes.version = id;
    part.bytes.push_back(std::move(bytes));
    // Editors do not follow contents: by the echo of its record they show the resource anew. A lock
    // that is taken meanwhile meets it.
    store::TableWrites echo;
    echo.table = &resources;
    echo.writes.push_back({MDX_UPDATE, version.resource, {}});
    status = store.writeAll({part, echo}, seen, {});
    status = tellWhoOvertook(store, {part, echo}, seen, names, status);
    return status.ok() ? status : notReturned(status.code, QString::fromStdString(status.text));
}

} // namespace orvo::history
