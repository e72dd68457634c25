#include "apps/admin/Failure.h"
#include "apps/admin/Output.h"
#include "apps/admin/Records.h"
#include "apps/admin/Verb.h"

#include <QFile>

#include <cstdio>

namespace orvo::admin {

namespace {

void addOptions(QCommandLineParser& parser) {
    parser.addOption(
        {QStringLiteral("last"), QString::fromUtf8("Фамилия."), QString::fromUtf8("ФАМИЛИЯ")});
    parser.addOption(
        {QStringLiteral("first"), QString::fromUtf8("Имя."), QString::fromUtf8("ИМЯ")});
    parser.addOption(
        {QStringLiteral("middle"), QString::fromUtf8("Отчество."), QString::fromUtf8("ОТЧЕСТВО")});
    parser.addOption({QStringLiteral("program"),
                      QString::fromUtf8("Это программа, а не человек: показывается по входу.")});
    parser.addOption(
        {QStringLiteral("viewer"), QString::fromUtf8("Только читает (хранилище PostgreSQL).")});
    parser.addOption(
        {QStringLiteral("password-stdin"),
         QString::fromUtf8("Задать пароль входа: первая строка стандартного ввода (хранилище "
                           "PostgreSQL).")});
}

/// The password is taken from standard input: on the command line every user of the machine could
/// read it.
std::string passwordFromInput(const std::string& what) {
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        throw Failure(what + ": стандартный ввод закрыт");
    QByteArray line = input.readLine(4096);
    if (line.endsWith('\n'))
        line.chop(1);
    if (line.isEmpty() || line.contains('\0'))
        throw Failure(what + ": на стандартном вводе нет пароля");
    return line.toStdString();
}

int add(const Invocation& call) {
    store::User user{call.argument(0),     call.value("last"),  call.value("first"),
                     call.value("middle"), call.has("program"), call.has("viewer")};
    if (user.login.empty() || user.login.find_first_of(" \t") != std::string::npos)
        throw Failure("пользователь не добавлен: имя входа пустое или с пробелом");
    requireStorable(user.login, "имя входа");
    requireStorable(user.lastName, "фамилия");
    requireStorable(user.firstName, "имя");
    requireStorable(user.midlName, "отчество");
    if (call.has("password-stdin"))
        user.password = passwordFromInput("пользователь не добавлен");
    const auto store = call.open();
    if (Table(*store, table::Users).find([&](const Row& row) {
            return sameText(row.text(field::login_), user.login);
        }))
        throw Failure("пользователь не добавлен: «" + user.login + "» уже есть");
    require(store->userAdd(user), "пользователь не добавлен");
    out("пользователь добавлен: " + user.login);
    return Done;
}

void loginOptions(QCommandLineParser& parser) {
    parser.addOption({QStringLiteral("viewer"), QString::fromUtf8("Только читает.")});
    parser.addOption({QStringLiteral("password-stdin"),
                      QString::fromUtf8("Задать пароль входа: первая строка стандартного ввода.")});
}

int login(const Invocation& call) {
    store::User user;
    user.login = call.argument(0);
    user.viewer = call.has("viewer");
    if (call.has("password-stdin"))
        user.password = passwordFromInput("вход не дан");
    const auto store = call.open();
    require(store->loginAdd(user), "вход не дан");
    out("вход на сервер дан: " + user.login);
    return Done;
}

int list(const Invocation& call) {
    const auto store = call.open();
    const Table users(*store, table::Users);
    for (int i = 0; i < users.count(); ++i) {
        const Row row = users.at(i);
        std::string name = row.text(field::lastName);
        for (const char* field : {field::firstName, field::midlName})
            if (const std::string part = row.text(field); !part.empty())
                name += (name.empty() ? "" : " ") + part;
        out(cell(row.text(field::login_)) + "\t" + cell(name) + "\t" +
            (row.integer(field::program) ? "программа" : "человек"));
    }
    return Done;
}

} // namespace

const Verb userAddVerb = {
    "user add",
    "ВХОД [--last ФАМИЛИЯ] [--first ИМЯ] [--middle ОТЧЕСТВО] [--program] [--viewer] "
    "[--password-stdin]",
    "Добавить пользователя",
    "В хранилище PostgreSQL пользователь получает и вход на сервер: с правом записи или, с\n"
    "--viewer, только чтения.",
    1,
    1,
    addOptions,
    add,
};

const Verb userLoginVerb = {
    "user login",
    "ВХОД [--viewer] [--password-stdin]",
    "Дать пользователю вход на сервер",
    "Для пользователя, который есть в таблице, но не на сервере: после import в другое хранилище\n"
    "PostgreSQL или restore на другой сервер. Права и пароль - как у user add.",
    1,
    1,
    loginOptions,
    login,
};

const Verb userListVerb = {
    "user list",
    "",
    "Перечислить пользователей",
    "На каждой строке через табуляцию: имя входа, фамилия имя отчество, «человек» или «программа».",
    0,
    0,
    nullptr,
    list,
};

} // namespace orvo::admin
