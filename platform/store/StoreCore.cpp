#include "platform/store/StoreCore.h"

#include "frame/StdText.h"
#include "platform/store/GuardedUpdate.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"

#include <algorithm>
#include <exception>
#include <new>
#include <numeric>
#include <stdexcept>

namespace orvo::store {

namespace {

/// Back to no structure and no records.
void clear(MDArray* array) {
    MDArray* empty = nullptr;
    if (MDACreate(&empty, 0) == MDX_OK) {
        MDACopy(array, empty, 1);
        MDADestroy(empty);
    }
}

/// Refuses an array that holds something already.
Status checkEmpty(const TableDef& table, const MDArray* into) {
    if (into == nullptr || into->fieldCount != 0)
        return {BadArguments, inTable(table) + StdText::tr(": массив для записей не пуст")};
    return {};
}

void writeRow(const TableDef& table, const std::vector<Value>& row, mdx::RecordWriter& writer) {
    writer.begin();
    for (size_t i = 0; i < row.size(); ++i) {
        const int field = static_cast<int>(i);
        if (const auto* text = std::get_if<std::string>(&row[i]))
            writer.textUtf8(field, text->data(), text->size());
        else if (const auto* real = std::get_if<double>(&row[i]))
            writer.date(field, *real);
        else if (const auto* number = std::get_if<int64_t>(&row[i])) {
            if (table.fields[i].type == MDX_BOOLEAN)
                writer.boolean(field, *number != 0);
            else
                writer.integer(field, static_cast<int32_t>(*number));
        }
    }
    writer.end();
}

Status unknownTable(std::string_view name) {
    return {UnknownName, StdText::tr("Неизвестная таблица ") + shown(name)};
}

} // namespace

Status statusOfException() noexcept {
    int code = Failed;
    try {
        try {
            throw;
        } catch (const std::bad_alloc&) {
            code = NoMemory;
            return {code, StdText::tr("Не хватает памяти")};
        } catch (const std::length_error&) {
            code = NoMemory;
            return {code, StdText::tr("Не хватает памяти")};
        } catch (const std::exception& error) {
            return {code, StdText::tr("Внутренняя ошибка: ") + error.what()};
        }
    } catch (...) { // no memory even for the text
        return {code, {}};
    }
}

Status StoreCore::records(const TableDef& table, MDArray* into,
                          const std::function<Status(mdx::RecordWriter& writer)>& write) {
    MDAKeyDescription key{};
    std::string_view(table.fields[0].name).copy(key.name, sizeof key.name - 1);
    int result = makeStructure(table, into);
    if (result == MDX_OK)
        result = MDAKeyAdd(into, 1, &key);
    Status status;
    if (result == MDX_OK) {
        mdx::RecordWriter writer(into);
        status = write(writer);
        result = writer.finish();
    }
    if (status.ok() && result == MDX_E_MEMORY)
        status = {NoMemory, inTable(table) + StdText::tr(": не хватает памяти")};
    else if (status.ok() && result != MDX_OK)
        status = {BadStructure, inTable(table) +
                                    StdText::tr(": записи не складываются в таблицу (код ") +
                                    std::to_string(result) + ")"};
    if (!status.ok())
        clear(into);
    return status;
}

void StoreCore::tellFaults(const ContentFaults& faults, std::vector<std::string>* lines) {
    std::vector<std::string> keys;
    for (const auto& [fault, key] : faults)
        keys.push_back(key);
    // A store whose records cannot be read tells the keys.
    std::map<std::string, std::string> names;
    const Status named = keys.empty() ? Status() : m_files.contentNames(keys, &names);
    for (const auto& [fault, key] : faults) {
        const auto found = named.ok() ? names.find(foldedKey(key)) : names.end();
        const std::string what = found == names.end()
                                     ? StdText::tr(" содержимого ") + key
                                     : StdText::tr(" содержимого файла ") + found->second +
                                           StdText::tr(" (ключ ") + key + ")";
        lines->push_back(fault == ContentFault::OtherSize
                             ? StdText::tr("Размер") + what +
                                   StdText::tr(" не сходится с записанным")
                         : fault == ContentFault::NoChecksum
                             ? StdText::tr("Нет контрольной суммы") + what
                             : StdText::tr("Байты") + what +
                                   StdText::tr(" повреждены или изменены мимо программы: не "
                                               "сходятся с контрольной суммой"));
    }
}

std::string StoreCore::placeOf(const TableDef& table, const Write& write) {
    return write.place.empty() ? inTable(table) + StdText::tr(", запись ") + shown(write.key)
                               : write.place;
}

Status StoreCore::fetch(std::string_view name, MDArray* into) {
    return guarded([&]() -> Status {
        const TableDef* table = findTable(name);
        if (table == nullptr)
            return unknownTable(name);
        const Status empty = checkEmpty(*table, into);
        return empty.ok() ? fetchAll(*table, into) : empty;
    });
}

Status StoreCore::fetchWhere(std::string_view name, std::string_view field, std::string_view value,
                             MDArray* into) {
    return fetchField(name, field, TextMatch::Exact, value, into);
}

Status StoreCore::fetchLinked(std::string_view name, std::string_view field, std::string_view key,
                              MDArray* into) {
    return fetchField(name, field, TextMatch::Key, key, into);
}

Status StoreCore::fetchField(std::string_view name, std::string_view field, TextMatch match,
                             std::string_view value, MDArray* into) {
    return guarded([&]() -> Status {
        const TableDef* table = findTable(name);
        if (table == nullptr)
            return unknownTable(name);
        const int number = table->find(field);
        const FieldDef* which = number < 0 ? nullptr : &table->fields[static_cast<size_t>(number)];
        if (which == nullptr || which->type != MDX_TEXT)
            return {UnknownName,
                    inTable(*table) + StdText::tr(": нет текстового поля ") + shown(field)};
        if (match == TextMatch::Key && !isKeyOrLink(*table, *which))
            return {UnknownName, inTable(*table) + StdText::tr(": поле ") + shown(field) +
                                     StdText::tr(" не хранит ключей")};
        const Status empty = checkEmpty(*table, into);
        return empty.ok() ? fetchMatching(*table, *which, match, value, into) : empty;
    });
}

Status StoreCore::fetchKeys(std::string_view name, const std::vector<std::string>& keys,
                            MDArray* into) {
    return guarded([&]() -> Status {
        const TableDef* table = findTable(name);
        if (table == nullptr)
            return unknownTable(name);
        if (const Status empty = checkEmpty(*table, into); !empty.ok())
            return empty;
        std::vector<int> fields(table->fields.size());
        std::iota(fields.begin(), fields.end(), 0);
        std::vector<std::string> folded;
        for (const std::string& key : keys)
            if (isKey(key)) // no other is one of a record
                folded.push_back(foldedKey(key));
        std::sort(folded.begin(), folded.end());
        folded.erase(std::unique(folded.begin(), folded.end()), folded.end());
        return records(*table, into, [&](mdx::RecordWriter& writer) -> Status {
            return inRead([&] {
                return selectKeys(*table, fields, folded,
                                  [&](const Row& row) { writeRow(*table, row, writer); });
            });
        });
    });
}

Status StoreCore::update(std::string_view tableName, const MDArray* records, UpdateGuard* guard) {
    return guarded([&]() -> Status {
        const TableDef* table = findTable(tableName);
        if (table == nullptr)
            return {Refused, StdText::tr("Неизвестная таблица ") + shown(tableName)};
        if (records == nullptr)
            return {BadArguments, StdText::tr("Нет записей для таблицы ") + shown(tableName)};
        const WritePlan plan(*table, records);
        if (plan.count() == 0)
            return {};
        std::vector<Write> writes(plan.count());
        for (uint32_t entry = 0; entry < plan.count(); ++entry)
            if (const Status status = plan.write(entry, &writes[entry]); !status.ok())
                return status;
        UpdateGuard found;
        if (guard != nullptr) {
            found.seen = guard->seen;
            found.own = guard->own;
        }
        const Status status = inWrite([&] {
            return GuardedUpdate(*this, *table, writes).apply(guard != nullptr ? &found : nullptr);
        });
        if (guard != nullptr && status.ok())
            *guard = std::move(found);
        else if (guard != nullptr)
            guard->parentDeletion = std::move(found.parentDeletion);
        return status;
    });
}

// Stored forms and files -------------------------------------------------------------------------

Status StoreCore::formGet(std::string_view form, bool withBytes, std::vector<StoredFile>* files) {
    return guarded([&] { return m_files.formGet(form, withBytes, files); });
}

Status StoreCore::formPut(std::string_view path, const std::vector<FileToPut>& files) {
    return guarded([&] { return m_files.formPut(path, files); });
}

Status StoreCore::formDelete(const std::vector<std::string>& forms) {
    return guarded([&] { return m_files.formDelete(forms); });
}

Status StoreCore::fileGet(std::string_view path, std::string_view name, bool withBytes,
                          std::vector<StoredFile>* files) {
    return guarded([&] { return m_files.fileGet(path, name, withBytes, files); });
}

Status StoreCore::filePut(const std::vector<FileToPut>& files) {
    return guarded([&] { return m_files.filePut(files); });
}

Status StoreCore::fileDelete(const std::vector<std::pair<std::string, std::string>>& files) {
    return guarded([&] { return m_files.fileDelete(files); });
}

Status StoreCore::fileArea(
    const std::function<void(const std::string& path, const StoredFile& file)>& each) {
    return guarded([&] { return m_files.fileArea(each); });
}

} // namespace orvo::store
