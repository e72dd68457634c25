#include "apps/admin/Failure.h"
#include "apps/admin/Json.h"
#include "apps/admin/Output.h"
#include "apps/admin/Records.h"
#include "apps/admin/Suggestion.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <QFile>

#include <cstdio>

namespace orvo::admin {

namespace {

void nameOptions(OptionList& options) {
    options.append({QStringLiteral("last"), Text::tr("Фамилия."), Text::tr("ФАМИЛИЯ")});
    options.append({QStringLiteral("first"), Text::tr("Имя."), Text::tr("ИМЯ")});
    options.append({QStringLiteral("middle"), Text::tr("Отчество."), Text::tr("ОТЧЕСТВО")});
}

void addOptions(OptionList& options) {
    nameOptions(options);
    options.append({QStringLiteral("program"),
                    Text::tr("Это программа, а не человек: показывается по входу.")});
    options.append({QStringLiteral("viewer"), Text::tr("Только читает (хранилище PostgreSQL).")});
    options.append({QStringLiteral("password-stdin"),
                    Text::tr("Задать пароль входа: первая строка стандартного ввода (хранилище "
                             "PostgreSQL).")});
}

/// The password is taken from standard input: on the command line every user of the machine could
/// read it.
std::string passwordFromInput(const std::string& what) {
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        throw Failure(what + StdText::tr(": стандартный ввод закрыт"));
    QByteArray line = input.readLine(4096);
    if (line.endsWith('\n'))
        line.chop(1);
    if (line.isEmpty() || line.contains('\0'))
        throw Failure(what + StdText::tr(": на стандартном вводе нет пароля"));
    return line.toStdString();
}

int add(const Invocation& call) {
    store::User user{call.argument(0),     call.value("last"),  call.value("first"),
                     call.value("middle"), call.has("program"), call.has("viewer")};
    if (user.login.empty() || user.login.find_first_of(" \t") != std::string::npos)
        throw Failure(StdText::tr("пользователь не добавлен: имя входа пустое или с пробелом"));
    requireStorable(user.login, StdText::tr("имя входа"));
    requireStorable(user.lastName, StdText::tr("фамилия"));
    requireStorable(user.firstName, StdText::tr("имя"));
    requireStorable(user.midlName, StdText::tr("отчество"));
    if (call.has("password-stdin"))
        user.password = passwordFromInput(StdText::tr("пользователь не добавлен"));
    const auto store = call.open();
    if (Table(*store, table::Users).find([&](const Row& row) {
            return sameText(row.text(field::login_), user.login);
        }))
        throw Failure(StdText::tr("пользователь не добавлен: «") + user.login +
                      StdText::tr("» уже есть"));
    require(store->userAdd(user), StdText::tr("пользователь не добавлен"));
    out(StdText::tr("пользователь добавлен: ") + user.login);
    return Done;
}

void changeOptions(OptionList& options) {
    nameOptions(options);
    const auto flag = [&](const char* name, const QString& text) {
        options.append({QString::fromUtf8(name), text});
    };
    flag("program", Text::tr("Это программа, а не человек: показывается по входу."));
    flag("person", Text::tr("Это человек: показывается по фамилии."));
    flag("viewer", Text::tr("Отныне только читает (хранилище PostgreSQL)."));
    flag("engineer", Text::tr("Отныне и пишет (хранилище PostgreSQL)."));
    flag("password-stdin",
         Text::tr("Сменить пароль входа: первая строка стандартного ввода (хранилище "
                  "PostgreSQL)."));
}

/// True or false by the one of two options that is given; none for neither.
std::optional<bool> choice(const Invocation& call, const char* yes, const char* no) {
    if (call.has(yes) && call.has(no))
        throw Failure(StdText::tr("пользователь не изменён: --") + yes + StdText::tr(" или --") +
                      no + StdText::tr(", не оба"));
    if (!call.has(yes) && !call.has(no))
        return {};
    return call.has(yes);
}

/// Before the store is asked: its refusal knows no suggestions.
void needUser(store::Store& store, const std::string& login, const std::string& what) {
    const Table users(store, table::Users);
    if (!users.find([&](const Row& row) { return sameText(row.text(field::login_), login); }))
        throw Failure(what + StdText::tr(": пользователя «") + login + StdText::tr("» нет") +
                      suggestion(login, users.texts(field::login_)));
}

int change(const Invocation& call) {
    const std::string what = StdText::tr("пользователь не изменён");
    const std::string login = call.argument(0);
    store::UserChange change;
    const auto text = [&](const char* option,
                          const std::string& name) -> std::optional<std::string> {
        if (!call.has(option))
            return {};
        requireStorable(call.value(option), name);
        return call.value(option);
    };
    change.lastName = text("last", StdText::tr("фамилия"));
    change.firstName = text("first", StdText::tr("имя"));
    change.midlName = text("middle", StdText::tr("отчество"));
    change.program = choice(call, "program", "person");
    change.viewer = choice(call, "viewer", "engineer");
    if (call.has("password-stdin"))
        change.password = passwordFromInput(what);
    if (!change.lastName && !change.firstName && !change.midlName && !change.program &&
        !change.viewer && change.password.empty())
        throw Failure(
            what + StdText::tr(": не сказано, что изменить; ключи: orvo-admin user change --help"));
    const auto store = call.open();
    needUser(*store, login, what);
    require(store->userChange(login, change), what);
    out(StdText::tr("пользователь изменён: ") + login);
    return Done;
}

int remove(const Invocation& call) {
    const std::string what = StdText::tr("пользователь не удалён");
    const std::string login = call.argument(0);
    const auto store = call.open();
    needUser(*store, login, what);
    int unlocked = 0;
    require(store->userRemove(login, &unlocked), what);
    out(StdText::tr("пользователь удалён: ") + login +
        (unlocked ? StdText::tr(", снято блокировок форм: ") + std::to_string(unlocked) : ""));
    return Done;
}

void loginOptions(OptionList& options) {
    options.append({QStringLiteral("viewer"), Text::tr("Только читает.")});
    options.append({QStringLiteral("password-stdin"),
                    Text::tr("Задать пароль входа: первая строка стандартного ввода.")});
}

int login(const Invocation& call) {
    store::User user;
    user.login = call.argument(0);
    user.viewer = call.has("viewer");
    if (call.has("password-stdin"))
        user.password = passwordFromInput(StdText::tr("вход не дан"));
    const auto store = call.open();
    require(store->loginAdd(user), StdText::tr("вход не дан"));
    out(StdText::tr("вход на сервер дан: ") + user.login);
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
        const bool program = row.integer(field::program) != 0;
        if (call.has("json"))
            outJson({{"login", jsonText(row.text(field::login_))},
                     {"last", jsonText(row.text(field::lastName))},
                     {"first", jsonText(row.text(field::firstName))},
                     {"middle", jsonText(row.text(field::midlName))},
                     {"isProgram", program}});
        else
            out(cell(row.text(field::login_)) + "\t" + cell(name) + "\t" +
                (program ? StdText::tr("программа") : StdText::tr("человек")));
    }
    return Done;
}

} // namespace

const Verb userAddVerb = {
    "user add",
    QT_TRANSLATE_NOOP(
        "orvo", "ВХОД [--last ФАМИЛИЯ] [--first ИМЯ] [--middle ОТЧЕСТВО] [--program] [--viewer] "
                "[--password-stdin]"),
    QT_TRANSLATE_NOOP("orvo", "Добавить пользователя"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "В хранилище PostgreSQL пользователь получает и вход на сервер: с правом записи или, с\n"
        "--viewer, только чтения."),
    1,
    1,
    addOptions,
    add,
};

const Verb userChangeVerb = {
    "user change",
    QT_TRANSLATE_NOOP(
        "orvo", "ВХОД [--last ФАМИЛИЯ] [--first ИМЯ] [--middle ОТЧЕСТВО] [--program | --person] "
                "[--viewer | --engineer] [--password-stdin]"),
    QT_TRANSLATE_NOOP("orvo", "Изменить пользователя"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Меняется то, что названо. Имя входа не меняется: под ним пользователь стоит в истории.\n"
        "--viewer, --engineer и --password-stdin меняют права и пароль входа на сервер "
        "PostgreSQL."),
    1,
    1,
    changeOptions,
    change,
};

const Verb userRemoveVerb = {
    "user remove",
    QT_TRANSLATE_NOOP("orvo", "ВХОД"),
    QT_TRANSLATE_NOOP("orvo", "Удалить пользователя"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Вместе с ним снимаются его блокировки форм; его изменения в истории остаются. На сервере\n"
        "PostgreSQL он теряет права на хранилища Orvo; сам вход остаётся, его удаляет DROP ROLE."),
    1,
    1,
    nullptr,
    remove,
};

const Verb userLoginVerb = {
    "user login",
    QT_TRANSLATE_NOOP("orvo", "ВХОД [--viewer] [--password-stdin]"),
    QT_TRANSLATE_NOOP("orvo", "Дать пользователю вход на сервер"),
    QT_TRANSLATE_NOOP("orvo",
                      "Для пользователя, который есть в таблице, но не на сервере: после import в "
                      "другое хранилище\n"
                      "PostgreSQL или restore на другой сервер. Права и пароль - как у user add."),
    1,
    1,
    loginOptions,
    login,
};

const Verb userListVerb = {
    "user list",
    "[--json]",
    QT_TRANSLATE_NOOP("orvo", "Перечислить пользователей"),
    QT_TRANSLATE_NOOP("orvo", "На каждой строке через табуляцию: имя входа, фамилия имя отчество, "
                              "«человек» или «программа»."),
    0,
    0,
    jsonOption,
    list,
};

} // namespace orvo::admin
