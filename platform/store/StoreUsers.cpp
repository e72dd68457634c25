// Users, and their logins at databases that have such.
#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/StoreCore.h"

#include "frame/Vocabulary.h"

#include <algorithm>

namespace orvo::store {

namespace {

Status refuseText(const std::string& text) {
    if (isShowable(text))
        return {};
    return {Refused, StdText::tr("Знаки вне кодировки Windows-1251 недопустимы: ") + shown(text)};
}

Status refuseRights() {
    return {Refused, StdText::tr("Это хранилище не знает паролей и прав")};
}

} // namespace

/// The user of that login: of exactly it, else without regard to case. Refused if there is none.
Status StoreCore::findUser(const std::string& login, std::string* key, std::string* exact) {
    const TableDef& table = *findTable(table::Users);
    bool known = false;
    const Status status =
        select(table, {table.find(field::KeyLink), table.find(field::login_)}, [&](const Row& row) {
            const std::string& text = textOf(row[1]);
            if (!sameText(text, login) || (known && text != login))
                return;
            known = true;
            *key = textOf(row[0]);
            *exact = text;
        });
    if (status.ok() && !known)
        return {Refused, StdText::tr("Пользователя ") + shown(login) + StdText::tr(" нет")};
    return status;
}

Status StoreCore::userAdd(const User& user) {
    return guarded([&]() -> Status {
        const TableDef& users = *findTable(table::Users);
        const auto number = [&](const char* name) { return users.find(name); };
        if (user.login.empty())
            return {Refused, StdText::tr("Имя пользователя пусто")};
        for (const std::string* text :
             {&user.login, &user.lastName, &user.firstName, &user.midlName})
            if (const Status status = refuseText(*text); !status.ok())
                return status;
        return inWrite([&]() -> Status {
            bool taken = false;
            Status status = select(users, {number(field::login_)}, [&](const Row& row) {
                taken = taken || sameText(textOf(row[0]), user.login);
            });
            if (!status.ok())
                return status;
            if (taken)
                return {Refused, StdText::tr("Пользователь ") + shown(user.login) +
                                     StdText::tr(" уже есть")};
            if (hasLogins())
                status = makeLogin(user);
            else if (user.viewer || !user.password.empty())
                status = refuseRights();
            if (!status.ok())
                return status;
            Write write;
            write.flag = MDX_INSERT;
            write.key = newKey();
            write.values = {{number(field::login_), user.login},
                            {number(field::lastName), user.lastName},
                            {number(field::firstName), user.firstName},
                            {number(field::midlName), user.midlName},
                            {number(field::program), int64_t(user.program ? 1 : 0)}};
            return apply(users, write);
        });
    });
}

Status StoreCore::userChange(const std::string& login, const UserChange& change) {
    return guarded([&]() -> Status {
        const TableDef& table = *findTable(table::Users);
        Write write;
        write.flag = MDX_UPDATE;
        const std::pair<const char*, const std::optional<std::string>*> names[] = {
            {field::lastName, &change.lastName},
            {field::firstName, &change.firstName},
            {field::midlName, &change.midlName}};
        for (const auto& [name, text] : names) {
            if (!*text)
                continue;
            if (const Status status = refuseText(**text); !status.ok())
                return status;
            write.values.emplace_back(table.find(name), **text);
        }
        if (change.program)
            write.values.emplace_back(table.find(field::program), int64_t(*change.program ? 1 : 0));
        return inWrite([&]() -> Status {
            std::string exact;
            Status status = findUser(login, &write.key, &exact);
            if (status.ok() && (change.viewer || !change.password.empty()))
                status = hasLogins() ? changeLogin(exact, change) : refuseRights();
            if (status.ok() && !write.values.empty())
                status = apply(table, write);
            return status;
        });
    });
}

Status StoreCore::userRemove(const std::string& login, int* unlocked) {
    return guarded([&]() -> Status {
        const TableDef& users = *findTable(table::Users);
        const TableDef& resources = *findTable(table::MenuResource);
        const int holder = resources.find(field::UsersKey);
        const int since = resources.find(field::dateTimeEdit);
        return inWrite([&]() -> Status {
            Write user;
            user.flag = MDX_DELETE;
            std::string exact;
            Status status = findUser(login, &user.key, &exact);
            // A lock of a user who is gone could not be told from one of somebody.
            std::vector<std::string> held;
            if (status.ok())
                status = select(resources, {resources.find(field::KeyLink), holder},
                                [&](const Row& row) {
                                    if (foldedKey(textOf(row[1])) == foldedKey(user.key))
                                        held.push_back(textOf(row[0]));
                                });
            for (size_t i = 0; status.ok() && i < held.size(); ++i) {
                Write form;
                form.flag = MDX_UPDATE;
                form.key = held[i];
                form.values.resize(2);
                form.values[0].first = std::min(holder, since);
                form.values[1].first = std::max(holder, since);
                status = apply(resources, form);
            }
            *unlocked = static_cast<int>(held.size());
            if (status.ok())
                status = removeLogin(exact);
            if (status.ok())
                status = apply(users, user);
            return status;
        });
    });
}

Status StoreCore::loginAdd(const User& user) {
    return guarded([&]() -> Status {
        if (!hasLogins())
            return {Refused,
                    StdText::tr("У этого хранилища нет входов: его файл открывает тот, кому это "
                                "позволяют права на файл")};
        return inWrite([&]() -> Status {
            User exact = user;
            std::string key;
            const Status status = findUser(user.login, &key, &exact.login);
            return status.ok() ? makeLogin(exact) : status;
        });
    });
}

Status StoreCore::missingLogins(std::vector<std::string>* logins) {
    logins->clear();
    return {};
}

} // namespace orvo::store
