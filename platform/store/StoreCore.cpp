#include "platform/store/StoreCore.h"

#include "platform/store/LinkCycles.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"

#include <exception>
#include <new>
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

} // namespace

Status statusOfException() noexcept {
    int code = Failed;
    try {
        try {
            throw;
        } catch (const std::bad_alloc&) {
            code = NoMemory;
            return {code, "Не хватает памяти"};
        } catch (const std::length_error&) {
            code = NoMemory;
            return {code, "Не хватает памяти"};
        } catch (const std::exception& error) {
            return {code, std::string("Внутренняя ошибка: ") + error.what()};
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
        status = {NoMemory, inTable(table) + ": не хватает памяти"};
    else if (status.ok() && result != MDX_OK)
        status = {BadStructure, inTable(table) + ": записи не складываются в таблицу (код " +
                                    std::to_string(result) + ")"};
    if (!status.ok())
        clear(into);
    return status;
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
            return {UnknownName, "Неизвестная таблица " + shown(name)};
        const int number = table->find(field);
        const FieldDef* which = number < 0 ? nullptr : &table->fields[static_cast<size_t>(number)];
        if (which == nullptr || which->type != MDX_TEXT)
            return {UnknownName, inTable(*table) + ": нет текстового поля " + shown(field)};
        if (match == TextMatch::Key && !isKeyOrLink(*table, *which))
            return {UnknownName, inTable(*table) + ": поле " + shown(field) + " не хранит ключей"};
        if (into == nullptr || into->fieldCount != 0)
            return {BadArguments, inTable(*table) + ": массив для записей не пуст"};
        return fetchMatching(*table, *which, match, value, into);
    });
}

Status StoreCore::refuseCycles(const TableDef& table, const std::vector<Write>& writes) {
    if (!LinkCycles::concern(table))
        return {};
    LinkCycles cycles(table);
    for (const Write& write : writes)
        cycles.add(write);
    return cycles.check([&](const std::string& key, std::string* parent) {
        parent->clear();
        return selectWhere(table, {cycles.field()}, 0, key,
                           [&](const Row& row) { *parent = textOf(row[0]); });
    });
}

Status StoreCore::update(std::string_view tableName, const MDArray* records, UpdateGuard* guard) {
    return guarded([&]() -> Status {
        const TableDef* table = findTable(tableName);
        if (table == nullptr)
            return {Refused, "Неизвестная таблица " + shown(tableName)};
        if (records == nullptr)
            return {BadArguments, "Нет записей для таблицы " + shown(tableName)};
        const WritePlan plan(*table, records);
        if (plan.count() == 0)
            return {};
        std::vector<Write> writes(plan.count());
        for (uint32_t entry = 0; entry < plan.count(); ++entry)
            if (const Status status = plan.write(entry, &writes[entry]); !status.ok())
                return status;
        if (guard != nullptr) {
            UpdateGuard found;
            found.seen = guard->seen;
            found.own = guard->own;
            const Status status = inWrite([&] { return applyGuarded(*table, writes, found); });
            if (status.ok())
                *guard = std::move(found);
            else
                guard->parentDeletion = std::move(found.parentDeletion);
            return status;
        }
        return inWrite([&]() -> Status {
            if (const Status status = refuseCycles(*table, writes); !status.ok())
                return status;
            for (const Write& write : writes)
                if (const Status status = apply(*table, write); !status.ok())
                    return status;
            return {};
        });
    });
}

Status StoreCore::makeLogin(const User& user) {
    if (user.viewer || !user.password.empty())
        return {Refused, "Это хранилище не знает паролей и прав"};
    return {};
}

Status StoreCore::userAdd(const User& user) {
    return guarded([&]() -> Status {
        const TableDef& table = *findTable("Users");
        const auto field = [&](const char* name) { return table.find(name); };
        if (user.login.empty())
            return {Refused, "Имя пользователя пусто"};
        for (const std::string* text :
             {&user.login, &user.lastName, &user.firstName, &user.midlName}) {
            if (!isShowable(*text))
                return {Refused, "Знаки вне кодировки Windows-1251 недопустимы: " + shown(*text)};
        }
        return inWrite([&]() -> Status {
            bool taken = false;
            Status status = select(table, {field("login_")}, [&](const Row& row) {
                taken = taken || sameText(textOf(row[0]), user.login);
            });
            if (!status.ok())
                return status;
            if (taken)
                return {Refused, "Пользователь " + shown(user.login) + " уже есть"};
            status = makeLogin(user);
            if (!status.ok())
                return status;
            Write write;
            write.flag = MDX_INSERT;
            write.key = newKey();
            write.values = {{field("login_"), user.login},
                            {field("lastName"), user.lastName},
                            {field("firstName"), user.firstName},
                            {field("midlName"), user.midlName},
                            {field("program"), int64_t(user.program ? 1 : 0)}};
            return apply(table, write);
        });
    });
}

} // namespace orvo::store
