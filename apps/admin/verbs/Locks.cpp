#include "apps/admin/Failure.h"
#include "apps/admin/Folders.h"
#include "apps/admin/Output.h"
#include "apps/admin/Verb.h"

#include <QDateTime>

namespace orvo::admin {

namespace {

Row needForm(const Table& resources, const std::string& name) {
    const Row form = resources.find([&](const Row& row) {
        return row.integer("type_") == Form && sameText(row.text("name_"), name);
    });
    if (!form)
        throw Failure("формы «" + name + "» нет");
    return form;
}

void lockOptions(QCommandLineParser& parser) {
    parser.addOption({QStringLiteral("login"), QString::fromUtf8("Кто держит блокировку."),
                      QString::fromUtf8("ВХОД")});
}

int lock(const Invocation& call) {
    const std::string name = call.argument(0);
    const std::string login = call.value("login");
    if (login.empty())
        throw Failure("форма не заблокирована: не сказано, кем (--login ВХОД)");
    const auto store = call.open();
    const Table resources(*store, "MenuResource");
    const Table users(*store, "Users");
    const Row form = needForm(resources, name);
    const Row user =
        users.find([&](const Row& row) { return sameText(row.text("login_"), login); });
    if (!user)
        throw Failure("форма не заблокирована: пользователя «" + login + "» нет");
    // A lock of a user who is gone holds nothing.
    const Row holder = users.byKey(form.text("UsersKey"));
    if (holder && !sameText(holder.key(), user.key()))
        throw Failure("форма «" + name + "» не заблокирована: её держит «" + holder.text("login_") +
                      "»");
    Batch batch("MenuResource");
    batch.update(form.key()).text("UsersKey", user.key());
    batch.date("dateTimeEdit", static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0);
    batch.send(*store, "форма не заблокирована");
    out("форма заблокирована: " + form.text("name_") + ", " + user.text("login_"));
    return Done;
}

int unlock(const Invocation& call) {
    const auto store = call.open();
    const Table resources(*store, "MenuResource");
    const Row form = needForm(resources, call.argument(0));
    if (form.isNull("UsersKey") && form.isNull("dateTimeEdit")) {
        out("форма не была заблокирована: " + form.text("name_"));
        return Done;
    }
    Batch batch("MenuResource");
    batch.update(form.key()).null("UsersKey").null("dateTimeEdit");
    batch.send(*store, "блокировка не снята");
    out("блокировка снята: " + form.text("name_"));
    return Done;
}

} // namespace

const Verb lockVerb = {
    "lock",
    "ФОРМА --login ВХОД",
    "Заблокировать форму за пользователем",
    "Форма, которую держит другой пользователь, остаётся за ним.",
    1,
    1,
    lockOptions,
    lock,
};

const Verb unlockVerb = {
    "unlock", "ФОРМА", "Снять блокировку формы", "", 1, 1, nullptr, unlock,
};

} // namespace orvo::admin
