#include "apps/admin/Failure.h"
#include "apps/admin/Folders.h"
#include "apps/admin/Output.h"
#include "apps/admin/Suggestion.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <QDateTime>

namespace orvo::admin {

namespace {

Row needForm(const Table& resources, const std::string& name) {
    const Row form = resources.find([&](const Row& row) {
        return row.integer(field::type_) == Form && sameText(row.text(field::name_), name);
    });
    if (!form) {
        std::vector<std::string> present;
        for (int i = 0; i < resources.count(); ++i)
            if (const Row row = resources.at(i); row.integer(field::type_) == Form)
                present.push_back(row.text(field::name_));
        throw Failure(StdText::tr("формы «") + name + StdText::tr("» нет") +
                      suggestion(name, present));
    }
    return form;
}

void lockOptions(OptionList& options) {
    options.append({QStringLiteral("login"), Text::tr("Кто держит блокировку."), Text::tr("ВХОД")});
}

int lock(const Invocation& call) {
    const std::string name = call.argument(0);
    const std::string login = call.value("login");
    if (login.empty())
        throw Failure(StdText::tr("форма не заблокирована: не сказано, кем (--login ВХОД)"));
    const auto store = call.open();
    const Table resources(*store, table::MenuResource);
    const Table users(*store, table::Users);
    const Row form = needForm(resources, name);
    const Row user =
        users.find([&](const Row& row) { return sameText(row.text(field::login_), login); });
    if (!user)
        throw Failure(StdText::tr("форма не заблокирована: пользователя «") + login +
                      StdText::tr("» нет") + suggestion(login, users.texts(field::login_)));
    // A lock of a user who is gone holds nothing.
    const Row holder = users.byKey(form.text(field::UsersKey));
    if (holder && !sameText(holder.key(), user.key()))
        throw Failure(StdText::tr("форма «") + name +
                      StdText::tr("» не заблокирована: её держит «") + holder.text(field::login_) +
                      StdText::tr("»"));
    Batch batch(table::MenuResource);
    batch.update(form.key()).text(field::UsersKey, user.key());
    batch.date(field::dateTimeEdit,
               static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0);
    batch.send(*store, StdText::tr("форма не заблокирована"));
    out(StdText::tr("форма заблокирована: ") + form.text(field::name_) + ", " +
        user.text(field::login_));
    return Done;
}

int unlock(const Invocation& call) {
    const auto store = call.open();
    const Table resources(*store, table::MenuResource);
    const Row form = needForm(resources, call.argument(0));
    if (form.isNull(field::UsersKey) && form.isNull(field::dateTimeEdit)) {
        out(StdText::tr("форма не была заблокирована: ") + form.text(field::name_));
        return Done;
    }
    Batch batch(table::MenuResource);
    batch.update(form.key()).null(field::UsersKey).null(field::dateTimeEdit);
    batch.send(*store, StdText::tr("блокировка не снята"));
    out(StdText::tr("блокировка снята: ") + form.text(field::name_));
    return Done;
}

} // namespace

const Verb lockVerb = {
    "lock",
    QT_TRANSLATE_NOOP("orvo", "ФОРМА --login ВХОД"),
    QT_TRANSLATE_NOOP("orvo", "Заблокировать форму за пользователем"),
    QT_TRANSLATE_NOOP("orvo", "Форма, которую держит другой пользователь, остаётся за ним."),
    1,
    1,
    lockOptions,
    lock,
};

const Verb unlockVerb = {
    "unlock",
    QT_TRANSLATE_NOOP("orvo", "ФОРМА"),
    QT_TRANSLATE_NOOP("orvo", "Снять блокировку формы"),
    "",
    1,
    1,
    nullptr,
    unlock,
};

} // namespace orvo::admin
