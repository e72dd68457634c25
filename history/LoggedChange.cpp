#include "history/LoggedChange.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>

namespace orvo::history {

namespace {

/// What a change of an existing record was.
void classify(LoggedChange& read) {
    const store::TableDef& table = *read.table;
    if (read.change->code != OrvoEventUpdate) {
        read.deed = read.change->code == OrvoEventInsert ? Deed::Created : Deed::Deleted;
        return;
    }
    const auto changes = [&](const char* name) {
        const store::Value* now = valueIn(table, read.after, name);
        const store::Value* was = valueIn(table, read.before, name);
        return now && (!was || !readAlike(*now, *was));
    };
    const auto keyIn = [&](const Values& values, const char* name) {
        const store::Value* key = valueIn(table, values, name);
        return key ? store::textOf(*key) : std::string();
    };
    for (const store::ParentField& parent : store::parentFields(table))
        if (changes(parent.field)) {
            read.deed = Deed::Moved;
            read.above = store::findTable(parent.table);
            read.from = keyIn(read.before, parent.field);
            read.to = keyIn(read.after, parent.field);
            const bool isElement = std::strcmp(parent.field, field::parent) == 0;
            if (isElement && changes(field::FolderKey)) {
                read.topFrom = keyIn(read.before, field::FolderKey);
                read.topTo = keyIn(read.after, field::FolderKey);
            }
            return;
        }
    if (changes(field::caption) ||
        (table.find(field::caption) < 0 && (changes(field::name_) || changes(field::login_))))
        read.deed = Deed::Renamed;
    else if (changes(field::UsersKey))
        read.deed = store::textOf(*valueIn(table, read.after, field::UsersKey)).empty()
                        ? Deed::Released
                        : Deed::Occupied;
    else if (changes(field::order_) && read.after.size() == 1)
        read.deed = Deed::Ordered;
}

QString nameOfKey(const store::TableDef* table, const std::string& key, RecordSource& source) {
    const QString name =
        table && !key.empty() ? nameOf(*table, source.valuesOf(*table, key)) : QString();
    return name.isEmpty() ? QString() : quoted(name);
}

/// «Станция / Агрегаты»
QString pathOfKey(const store::TableDef& table, const std::string& key, RecordSource& source) {
    const Values values = source.valuesOf(table, key);
    const QString above = placeOf(table, values, &source);
    const QString name = nameOf(table, values);
    return quoted(above.isEmpty() ? name : above + QStringLiteral(" / ") + name);
}

} // namespace

const store::Value* valueIn(const store::TableDef& table, const Values& values, const char* name) {
    const auto found = values.find(table.find(name));
    return found == values.end() ? nullptr : &found->second;
}

Values known(const LoggedChange& read, RecordSource& source) {
    Values values;
    if (read.change->code == OrvoEventUpdate)
        values = source.valuesOf(*read.table, read.change->key);
    for (const auto& [field, value] : read.before)
        values[field] = value;
    for (const auto& [field, value] : read.after)
        values[field] = value;
    return toldValues(*read.table, std::move(values), source);
}

LoggedChange logged(const store::Change& change) {
    LoggedChange read;
    read.change = &change;
    read.table = tableOf(change.table);
    if (!read.table)
        return read;
    read.after = store::valuesFromJson(*read.table, change.after);
    read.before = store::valuesFromJson(*read.table, change.before);
    classify(read);
    return read;
}

store::Change reversed(const store::Change& change) {
    store::Change made = change;
    made.after.swap(made.before);
    if (change.code != OrvoEventUpdate)
        made.code = change.code == OrvoEventInsert ? OrvoEventDelete : OrvoEventInsert;
    return made;
}

std::vector<std::pair<const store::TableDef*, std::string>> placesOf(const LoggedChange& read) {
    std::vector<std::pair<const store::TableDef*, std::string>> places;
    if (!read.table)
        return places;
    const Values& values = read.deed == Deed::Deleted ? read.before : read.after;
    for (const store::ParentField& parent : store::parentFields(*read.table))
        if (const store::Value* link = valueIn(*read.table, values, parent.field);
            link && !store::textOf(*link).empty())
            places.emplace_back(store::findTable(parent.table), store::textOf(*link));
    return places;
}

bool isPlacedBelow(const LoggedChange& read, const LoggedChange& above) {
    const auto places = placesOf(read);
    return std::any_of(places.begin(), places.end(), [&](const auto& place) {
        return place.first == above.table &&
               store::foldedKey(place.second) == store::foldedKey(above.change->key);
    });
}

bool isCutOf(const LoggedChange& made, const LoggedChange& gone, RecordSource& source) {
    if (!made.table || made.table != gone.table ||
        store::foldedKey(made.change->key) == store::foldedKey(gone.change->key) ||
        nameOf(*made.table, known(made, source)) != nameOf(*gone.table, known(gone, source)))
        return false;
    const auto keyIn = [&](const Values& values, const char* name) {
        const store::Value* key = valueIn(*made.table, values, name);
        return key ? store::foldedKey(store::textOf(*key)) : std::string();
    };
    const std::vector<store::ParentField> parents = store::parentFields(*made.table);
    return std::any_of(parents.begin(), parents.end(), [&](const store::ParentField& parent) {
        return keyIn(made.after, parent.field) != keyIn(gone.before, parent.field);
    });
}

LoggedChange movedBy(const LoggedChange& made, const LoggedChange& gone) {
    LoggedChange read = made;
    read.deed = Deed::Moved;
    read.before = gone.before;
    const auto keyIn = [&](const Values& values, const char* name) {
        const store::Value* key = valueIn(*read.table, values, name);
        return key ? store::textOf(*key) : std::string();
    };
    for (const store::ParentField& parent : store::parentFields(*read.table)) {
        const std::string to = keyIn(read.after, parent.field);
        const std::string from = keyIn(gone.before, parent.field);
        if (to.empty() && from.empty())
            continue;
        read.above = store::findTable(parent.table);
        read.to = to;
        read.from = from;
        const bool isElement = std::strcmp(parent.field, field::parent) == 0;
        const std::string topFrom = keyIn(gone.before, field::FolderKey);
        const std::string topTo = keyIn(read.after, field::FolderKey);
        if (isElement && store::foldedKey(topFrom) != store::foldedKey(topTo)) {
            read.topFrom = topFrom;
            read.topTo = topTo;
        }
        break;
    }
    return read;
}

QString fromTo(const LoggedChange& read, RecordSource& source) {
    const store::TableDef* desktops = store::findTable(table::MenuFolder);
    const auto top = [&](const QString& words, const std::string& desktop) {
        const QString name = nameOfKey(desktops, desktop, source);
        return name.isEmpty() ? words : words + QLatin1Char(' ') + name;
    };
    QString from = nameOfKey(read.above, read.from, source);
    QString to = nameOfKey(read.above, read.to, source);
    if (!from.isEmpty() && from == to) { // another one of the same name: its place tells which
        from = pathOfKey(*read.above, read.from, source);
        to = pathOfKey(*read.above, read.to, source);
    }
    return QStringLiteral(" %1 %2").arg(
        from.isEmpty() ? top(Text::tr("с верхнего уровня"), read.topFrom)
                       : Text::tr("из %1").arg(from),
        to.isEmpty() ? top(Text::tr("на верхний уровень"), read.topTo) : Text::tr("в %1").arg(to));
}

QString deedWords(const LoggedChange& read, const Noun& noun, size_t count) {
    return read.isTakenBack ? takenBackWords(read.deed) : deedWord(read.deed, noun, count);
}

QString sentence(const LoggedChange& read, RecordSource& source) {
    if (!read.table)
        return (read.isTakenBack ? takenBackWords(Deed::Changed) + Text::tr(" таблица %1")
                                 : Text::tr("Изменена таблица %1"))
            .arg(quoted(QString::fromStdString(read.change->table)));
    const store::TableDef& table = *read.table;
    const Values values = known(read, source);
    QString line = deedWords(read, nounOf(table, values)) + QLatin1Char(' ') +
                   recordWords(table, values, read.change->key);
    if (read.deed == Deed::Renamed) {
        Values was = values;
        for (const auto& [field, value] : read.before)
            was[field] = value;
        const QString name = nameOf(table, was);
        if (name != nameOf(table, values) && read.isTakenBack)
            line += name.isEmpty() ? Text::tr(", снова без названия")
                                   : Text::tr(", снова ") + quoted(name);
        else if (name != nameOf(table, values))
            line += name.isEmpty() ? Text::tr(": не было названия")
                                   : Text::tr(": было ") + quoted(name);
    }
    return read.deed == Deed::Moved ? line + fromTo(read, source) : line;
}

QString objectWords(const LoggedChange& read, RecordSource& source) {
    const Values values = known(read, source);
    const QString name = nameOf(*read.table, values);
    return name.isEmpty() ? accusative(nounOf(*read.table, values)).one + QLatin1Char(' ') +
                                QString::fromStdString(read.change->key)
                          : quoted(name);
}

} // namespace orvo::history
