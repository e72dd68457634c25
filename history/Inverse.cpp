#include "history/Inverse.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/Overtaken.h"
#include "history/Planning.h"
#include "history/RecordWords.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/Names.h"

#include <algorithm>

namespace orvo::history {

namespace {

/// Says of a group that was taken back before by whom and when.
store::Status remarkDone(store::MaintainedStore& store, const Standing& standing, int64_t group,
                         std::vector<Remark>* remarks) {
    Remark made;
    made.why = Remark::AlreadyDone;
    made.group = group;
    store::Status status;
    if (const int64_t by = standing.undoneBy(group); by != 0) {
        store::LogQuery query;
        query.above = by - 1;
        query.below = by + 1;
        std::vector<store::Change> found;
        status = store.history(query, 1, &found);
        if (!found.empty()) {
            made.login = found.front().login;
            made.time = found.front().time;
        }
    }
    remarks->push_back(std::move(made));
    return status;
}

/// The name, or the key of what has none.
QString nameInQuotes(const store::TableDef& table, RecordSource& source, const std::string& key) {
    const QString name = nameOf(table, source.valuesOf(table, key));
    return quoted(name.isEmpty() ? QString::fromStdString(key) : name);
}

} // namespace

bool Remark::asksForName() const {
    return why == NameTaken && store::NamePlaces::letRename(*table);
}

Remark lockRemark(const FormLock& lock, Remark::Why why) {
    Remark made;
    made.why = why;
    made.table = store::findTable(table::MenuResource);
    made.key = lock.key;
    made.login = lock.login;
    made.time = lock.since;
    return made;
}

store::Status planInverse(store::MaintainedStore& store, const Selection& selection,
                          const Choices& choices, Inverse* inverse) {
    const std::vector<int64_t>& groups = selection.groups;
    *inverse = {};
    store::Status status = store.logPosition(&inverse->seen);
    Standing standing;
    if (status.ok())
        status = standing.read(store, groups);
    if (!status.ok())
        return status;
    for (const int64_t group : groups)
        if (standing.stands(group))
            inverse->undoes.push_back(group);
        else if (status = remarkDone(store, standing, group, &inverse->remarks); !status.ok())
            return status;
    standing.settle(inverse->undoes);
    Planning planning(store, standing, choices, selection, *inverse);
    status = planning.collect();
    if (status.ok())
        status = planning.decide();
    if (status.ok()) {
        planning.findCuts();
        status = planning.keepCutsThatWentOn();
    }
    if (status.ok())
        planning.followCuts();
    if (status.ok())
        status = planning.keepLocked();
    if (status.ok())
        planning.keepRights();
    if (status.ok())
        planning.keepTopFolders();
    for (bool again = true; again && status.ok();) {
        again = false;
        status = planning.placeRestored();
        bool taken = false;
        if (status.ok())
            status = planning.keepWhatIsBuiltOn(&again);
        if (status.ok())
            status = planning.keepNamesApart(&taken);
        again = again || taken;
    }
    if (status.ok())
        status = planning.releaseForms();
    if (status.ok())
        status = planning.keepIcons();
    if (status.ok())
        status = planning.decideContents();
    if (status.ok())
        planning.compose();
    return status;
}

store::Status writeInverse(store::MaintainedStore& store, Inverse* plan) {
    const store::Status status = store.writeAll(plan->parts, plan->seen, plan->undoes);
    plan->written = status.ok();
    return tellWhoOvertook(store, plan->parts, plan->seen, status);
}

store::Status undo(store::MaintainedStore& store, const Selection& selection,
                   const Choices& choices, Inverse* done) {
    constexpr int mostTries = 5;
    store::Status status;
    for (int i = 0; i < mostTries; ++i) {
        status = planInverse(store, selection, choices, done);
        if (!status.ok() || done->count == 0 || (done->asks() && !choices.partly))
            return status;
        status = writeInverse(store, done);
        if (status.code != store::Outdated)
            return status;
    }
    return status;
}

bool Inverse::asks() const {
    return std::any_of(remarks.begin(), remarks.end(), [](const Remark& remark) {
        return remark.asksForPlace() || remark.why == Remark::BuiltOn ||
               remark.why == Remark::CutChanged || remark.why == Remark::NameTaken ||
               remark.why == Remark::NoResource;
    });
}

QString freeNameWords(const Inverse& plan, const store::Change& change) {
    const auto found = plan.freeNames.find({change.table, store::foldedKey(change.key)});
    return found == plan.freeNames.end()
               ? QString()
               : Text::tr(" под именем ") + quoted(QString::fromStdString(found->second));
}

namespace {

QString namedWords(const Remark& remark, const QString& record, RecordSource& source) {
    const store::TableDef& by = *remark.namedBy;
    return Text::tr("Не удалено: %1: на это ссылается %2")
        .arg(record, recordWords(by, source.valuesOf(by, remark.missing), remark.missing));
}

/// Why it is not as it should have been.
QString mainWords(const Remark& remark, RecordSource& source, const PersonNames& names) {
    const auto number = [&] { return QString::number(remark.group); };
    if (remark.why == Remark::Forgotten)
        return Text::tr("Действие %1 журнал уже не помнит").arg(number());
    if (remark.why == Remark::HalfForgotten)
        return Text::tr("Действие %1: его начало журнал уже не помнит").arg(number());
    const QString who = whoAndWhen(remark.login, remark.time, names);
    if (remark.why == Remark::AlreadyDone)
        return Text::tr("Действие %1 уже отменено (%2)").arg(number(), who);
    if (remark.why == Remark::NothingDone)
        return Text::tr("Действие %1 ничего не изменило").arg(number());
    if (remark.why == Remark::OnlyPart)
        return Text::tr("Из действий, которые изменили и другое, возвращается только то, что "
                        "относится сюда");
    const store::TableDef& table = *remark.table;
    const QString record = recordWords(
        table, toldValues(table, source.valuesOf(table, remark.key), source), remark.key);
    switch (remark.why) {
    case Remark::ChangedSince:
        return Text::tr("Оставлено как есть: %1, поле «%2»: с тех пор изменено (%3)")
            .arg(record, fieldWord(table, remark.field), who);
    case Remark::DeletedSince:
        return Text::tr("Не возвращено: %1: с тех пор удалено (%2)").arg(record, who);
    case Remark::MovedSince:
        return Text::tr("Не возвращено: %1: с тех пор перемещено (%2)").arg(record, who);
    case Remark::NoPlace:
    case Remark::PlaceInside:
    case Remark::PlaceNoFolder:
    case Remark::PlaceElsewhere: {
        const store::TableDef* above = targetTable(table, remark.field);
        const QString name =
            above ? nameOf(*above, source.valuesOf(*above, remark.missing)) : QString();
        const QString place =
            quoted(name.isEmpty() ? QString::fromStdString(remark.missing) : name);
        if (remark.why == Remark::PlaceNoFolder)
            return Text::tr("Не возвращено: %1: нет места, %2 больше не %3 (%4)")
                .arg(record, place, fieldWord(table, remark.field).toLower(), who);
        if (remark.why == Remark::PlaceElsewhere)
            return (bondField(table, remark.field) == table.find(field::FolderKey)
                        ? Text::tr("Не возвращено: %1: нет места, %2 теперь на другом "
                                   "рабочем столе (%3)")
                        : Text::tr("Не возвращено: %1: нет места, %2 теперь для ресурсов "
                                   "другого вида (%3)"))
                .arg(record, place, who);
        return remark.why == Remark::NoPlace
                   ? Text::tr("Не возвращено: %1: нет места, удалена запись %2 (%3; %4)")
                         .arg(record, place, fieldWord(table, remark.field).toLower(), who)
                   : Text::tr("Не возвращено: %1: нет места, %2 стоит теперь внутри")
                         .arg(record, place);
    }
    case Remark::NoResource: {
        const QString resource =
            nameInQuotes(*store::findTable(table::MenuResource), source, remark.missing);
        return remark.field < 0
                   ? Text::tr("Не возвращено: %1: ресурс %2 удалён (%3)").arg(record, resource, who)
                   : Text::tr("Оставлено как есть: %1, поле «%2»: ресурс %3 удалён (%4)")
                         .arg(record, fieldWord(table, remark.field), resource, who);
    }
    case Remark::NoIcon: {
        const QString file = quoted(QString::fromStdString(remark.missing));
        return remark.field < 0
                   ? Text::tr("Возвращено без картинки: %1: файла значка %2 больше нет (%3)")
                         .arg(record, file, who)
                   : Text::tr("Оставлено как есть: %1, поле «%2»: файла %3 больше нет (%4)")
                         .arg(record, fieldWord(table, remark.field), file, who);
    }
    case Remark::TopFolder:
        if (remark.field >= 0)
            return Text::tr("Оставлено как есть: %1, поле «%2»: без неё дерево ресурсов не "
                            "загружается")
                .arg(record, fieldWord(table, remark.field));
        return Text::tr("Не удалено: %1: без неё дерево ресурсов не загружается").arg(record);
    case Remark::Locked:
        return Text::tr("Оставлено как есть: %1: занята (%2)").arg(record, who);
    case Remark::ContentLocked:
        return Text::tr("Оставлено как есть: содержимое формы %1: она занята (%2)")
            .arg(nameInQuotes(table, source, remark.key), who);
    case Remark::LockStays:
        return Text::tr("Оставлено как есть: %1: занятость отменой не меняется").arg(record);
    case Remark::GoneBefore:
        return Text::tr("Уже удалено: %1 (%2)").arg(record, who);
    case Remark::MakingUndone:
        return Text::tr("Создание уже отменено: %1 (%2)").arg(record, who);
    case Remark::SameBefore:
        return Text::tr("Уже как прежде: %1").arg(record);
    case Remark::NoRights:
        return Text::tr("Без прав на сервере: %1: их даёт orvo-admin user login %2")
            .arg(record, QString::fromStdString(remark.missing));
    case Remark::RightsStay:
        return Text::tr("Не удалено: %1: вместе с правами на сервере его убирает orvo-admin "
                        "user remove %2")
            .arg(record, QString::fromStdString(remark.missing));
    case Remark::NameTaken:
        return Text::tr("%1: %2: имя %3 уже занято%4")
            .arg(remark.field < 0 ? Text::tr("Не возвращено") : Text::tr("Оставлено как есть"),
                 record, quoted(QString::fromStdString(remark.missing)),
                 remark.group > 0 ? QStringLiteral(" (%1)").arg(who) : QString());
    case Remark::BuiltOn:
        if (remark.field >= 0)
            return Text::tr("Оставлено как есть: %1, поле «%2»: внутри стоит другое (%3)")
                .arg(record, fieldWord(table, remark.field), who);
        if (remark.namedBy)
            return namedWords(remark, record, source) + QStringLiteral(" (%1)").arg(who);
        return Text::tr("Не удалено: %1: на этом построено другое (%2)").arg(record, who);
    case Remark::StillNamed:
        return namedWords(remark, record, source);
    case Remark::MovedBack:
        return Text::tr("Не удалено, а возвращено туда, где было: %1 (%2)").arg(record, who);
    case Remark::OlderInside: {
        const store::TableDef& above = *targetTable(table, remark.field);
        return Text::tr("Оставлено как есть: %1: внутри стоит %2, прежнего места больше нет")
            .arg(recordWords(above, source.valuesOf(above, remark.missing), remark.missing),
                 record);
    }
    case Remark::CutChanged:
        return Text::tr("Не перенесено назад: %1 и всё, что перемещено вместе с ним: с тех "
                        "пор изменено (%2)")
            .arg(record, who);
    case Remark::DamagedBytes:
        return Text::tr("Не возвращено: %1: прежнее содержимое повреждено или "
                        "изменено мимо программы")
            .arg(record);
    default:
        return Text::tr("Не возвращено: %1: прежнее содержимое не хранится").arg(record);
    }
}

QString chosenWords(const Remark& remark, RecordSource& source) {
    const store::TableDef& above = *targetTable(*remark.table, remark.field);
    const QString place = nameInQuotes(above, source, remark.chosen);
    const QString word = fieldWord(*remark.table, remark.field).toLower();
    if (remark.chosen.empty())
        return Text::tr("верхний уровень");
    switch (*remark.whyNotChosen) {
    case Remark::PlaceInside:
        return Text::tr("%1 стоит теперь внутри").arg(place);
    case Remark::PlaceNoFolder:
        return Text::tr("%1 не %2").arg(place, word);
    case Remark::PlaceElsewhere:
        return (bondField(*remark.table, remark.field) == remark.table->find(field::FolderKey)
                    ? Text::tr("%1 на другом рабочем столе")
                    : Text::tr("%1 для ресурсов другого вида"))
            .arg(place);
    default:
        return Text::tr("записи %1 нет (%2)").arg(place, word);
    }
}

} // namespace

QString remarkWords(const Remark& remark, RecordSource& source, const PersonNames& names) {
    const QString words = mainWords(remark, source, names);
    return remark.whyNotChosen ? Text::tr("%1; выбранное место не годится: %2")
                                     .arg(words, chosenWords(remark, source))
                               : words;
}

} // namespace orvo::history
