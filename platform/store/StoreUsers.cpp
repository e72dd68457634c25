// Users, and their logins at databases that have such.
#include "platform/store/Names.h"
#include "platform/store/StoreCore.h"

#include "frame/Vocabulary.h"

namespace orvo::store {

Status StoreCore::userAdd(const User& user) {
    return guarded([&]() -> Status {
        const TableDef& users = *findTable(table::Users);
        const auto number = [&](const char* name) { return users.find(name); };
        if (user.login.empty())
            return {Refused, "Имя пользователя пусто"};
        for (const std::string* text :
             {&user.login, &user.lastName, &user.firstName, &user.midlName}) {
            if (!isShowable(*text))
                return {Refused, "Знаки вне кодировки Windows-1251 недопустимы: " + shown(*text)};
        }
        return inWrite([&]() -> Status {
            bool taken = false;
            Status status = select(users, {number(field::login_)}, [&](const Row& row) {
                taken = taken || sameText(textOf(row[0]), user.login);
            });
            if (!status.ok())
                return status;
            if (taken)
                return {Refused, "Пользователь " + shown(user.login) + " уже есть"};
            if (hasLogins())
                status = makeLogin(user);
            else if (user.viewer || !user.password.empty())
                status = {Refused, "Это хранилище не знает паролей и прав"};
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

Status StoreCore::loginAdd(const User& user) {
    return guarded([&]() -> Status {
        if (!hasLogins())
            return {Refused, "У этого хранилища нет входов: его файл открывает тот, кому это "
                             "позволяют права на файл"};
        const TableDef& users = *findTable(table::Users);
        return inWrite([&]() -> Status {
            bool known = false;
            User exact = user;
            const Status status = select(users, {users.find(field::login_)}, [&](const Row& row) {
                if (sameText(textOf(row[0]), user.login) &&
                    (!known || textOf(row[0]) == user.login))
                    exact.login = textOf(row[0]);
                known = known || sameText(textOf(row[0]), user.login);
            });
            if (!status.ok())
                return status;
            if (!known)
                return {Refused, "Пользователя " + shown(user.login) + " нет"};
            return makeLogin(exact);
        });
    });
}

Status StoreCore::missingLogins(std::vector<std::string>* logins) {
    logins->clear();
    return {};
}

} // namespace orvo::store
