#include "history/GroupWords.h"

#include "frame/Vocabulary.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

namespace orvo::history {

namespace {

/// A change with its values read.
struct Read {
    const store::Change* change = nullptr;
    const store::TableDef* table = nullptr;
    Values after, before; ///< as the log tells
    Deed deed = Deed::Changed;
    std::string from, to;                   ///< Moved: keys of the parents
    const store::TableDef* above = nullptr; ///< Moved: their table
};

const store::Value* valueIn(const store::TableDef& table, const Values& values, const char* name) {
    const auto found = values.find(table.find(name));
    return found == values.end() ? nullptr : &found->second;
}

/// All that is known of the record: as it was right after the change, or before a deletion.
Values known(const Read& read, RecordSource& source) {
    Values values;
    if (read.change->code == OrvoEventUpdate)
        values = source.valuesOf(*read.table, read.change->key);
    for (const auto& [field, value] : read.before)
        values[field] = value;
    for (const auto& [field, value] : read.after)
        values[field] = value;
    return values;
}

/// What a change of an existing record was.
void classify(Read& read) {
    const store::TableDef& table = *read.table;
    if (read.change->code != OrvoEventUpdate) {
        read.deed = read.change->code == OrvoEventInsert ? Deed::Created : Deed::Deleted;
        return;
    }
    const auto changes = [&](const char* name) {
        const store::Value* now = valueIn(table, read.after, name);
        const store::Value* was = valueIn(table, read.before, name);
        return now && (!was || !(*now == *was));
    };
    for (const store::ParentField& parent : store::parentFields(table))
        if (changes(parent.field)) {
            read.deed = Deed::Moved;
            read.above = store::findTable(parent.table);
            const store::Value* was = valueIn(table, read.before, parent.field);
            read.from = was ? store::textOf(*was) : std::string();
            read.to = store::textOf(*valueIn(table, read.after, parent.field));
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

Read readChange(const store::Change& change) {
    Read read;
    read.change = &change;
    read.table = tableOf(change.table);
    if (!read.table)
        return read;
    read.after = store::valuesFromJson(*read.table, change.after);
    read.before = store::valuesFromJson(*read.table, change.before);
    classify(read);
    return read;
}

QString nameOfKey(const store::TableDef* table, const std::string& key, RecordSource& source) {
    const QString name =
        table && !key.empty() ? nameOf(*table, source.valuesOf(*table, key)) : QString();
    return name.isEmpty() ? QString() : quoted(name);
}

/// " из «Агрегаты» в «Крановая обвязка»"; what has no name is the top.
QString fromTo(const Read& read, RecordSource& source) {
    const QString top = QStringLiteral("верхнего уровня");
    const QString from = nameOfKey(read.above, read.from, source);
    const QString to = nameOfKey(read.above, read.to, source);
    return QStringLiteral(" из %1 %2")
        .arg(from.isEmpty() ? top : from,
             to.isEmpty() ? QStringLiteral("на верхний уровень") : QStringLiteral("в %1").arg(to));
}

QString sentence(const Read& read, RecordSource& source) {
    if (!read.table)
        return QStringLiteral("Изменена таблица %1")
            .arg(quoted(QString::fromStdString(read.change->table)));
    const store::TableDef& table = *read.table;
    const Values values = known(read, source);
    QString line = deedWord(read.deed, nounOf(table, values)) + QLatin1Char(' ') +
                   recordWords(table, values, read.change->key);
    if (read.deed == Deed::Renamed) {
        Values was = values;
        for (const auto& [field, value] : read.before)
            was[field] = value;
        if (nameOf(table, was) != nameOf(table, values))
            line += nameOf(table, was).isEmpty()
                        ? QStringLiteral(": не было названия")
                        : QStringLiteral(": было ") + quoted(nameOf(table, was));
    }
    return read.deed == Deed::Moved ? line + fromTo(read, source) : line;
}

bool isContent(const Read& read) {
    return read.table == &store::contentTable();
}

/// The changes that the line is about: not what goes with others.
std::vector<const Read*> mainOnes(const std::vector<Read>& all) {
    const bool onlyContents = std::all_of(all.begin(), all.end(), isContent);
    const auto isOrder = [](const Read& read) { return read.deed == Deed::Ordered; };
    const bool onlyOrder = std::all_of(
        all.begin(), all.end(), [&](const Read& read) { return isOrder(read) || isContent(read); });
    std::set<std::pair<std::string, std::string>> deleted, created;
    for (const Read& read : all) {
        const std::pair<std::string, std::string> record{read.change->table,
                                                         store::foldedKey(read.change->key)};
        if (read.deed == Deed::Deleted)
            deleted.insert(record);
        if (read.deed == Deed::Created)
            created.insert(record);
    }
    std::vector<const Read*> found;
    for (const Read& read : all) {
        if (read.table && ((isContent(read) && !onlyContents) || (isOrder(read) && !onlyOrder)))
            continue;
        const auto* records = read.deed == Deed::Deleted   ? &deleted
                              : read.deed == Deed::Created ? &created
                                                           : nullptr;
        bool below = false; // another one of the same deed
        if (records && read.table)
            for (const store::ParentField& parent : store::parentFields(*read.table)) {
                const store::Value* link =
                    valueIn(*read.table, read.deed == Deed::Created ? read.after : read.before,
                            parent.field);
                below = below ||
                        (link && records->count(
                                     {parent.table, store::foldedKey(store::textOf(*link))}) != 0);
            }
        if (!below)
            found.push_back(&read);
    }
    return found;
}

QString more(size_t count) {
    return count == 0 ? QString()
                      : QStringLiteral(" и ещё %1 %2")
                            .arg(count)
                            .arg(numeralForm(count, QStringLiteral("запись"),
                                             QStringLiteral("записи"), QStringLiteral("записей")));
}

/// «a», «b», «c» and how many more; empty if none has a name.
QString names(const std::vector<const Read*>& reads, RecordSource& source) {
    constexpr size_t most = 3;
    QStringList list;
    for (const Read* read : reads) {
        const QString name = nameOf(*read->table, known(*read, source));
        if (!name.isEmpty() && list.size() < static_cast<int>(most))
            list << quoted(name);
    }
    if (list.isEmpty())
        return {};
    const bool all = static_cast<size_t>(list.size()) == reads.size();
    return QStringLiteral(": ") + list.join(QStringLiteral(", ")) +
           (all ? QString() : QStringLiteral(" …"));
}

/// Several changes of one kind: "Удалены 3 элемента меню: «a», «b», «c»".
QString together(const std::vector<const Read*>& reads, RecordSource& source) {
    const Read& first = *reads.front();
    const Noun noun = nounOf(*first.table, known(first, source));
    const QString line =
        deedWord(first.deed, noun, reads.size()) + QLatin1Char(' ') + counted(reads.size(), noun);
    const bool sameWay = std::all_of(reads.begin(), reads.end(), [&](const Read* read) {
        return store::foldedKey(read->from) == store::foldedKey(first.from) &&
               store::foldedKey(read->to) == store::foldedKey(first.to);
    });
    if (first.deed == Deed::Moved && sameWay)
        return line + fromTo(first, source);
    return line + names(reads, source);
}

bool alike(const Read& a, const Read& b, RecordSource& source) {
    return a.deed == b.deed && a.table && a.table == b.table &&
           nounOf(*a.table, known(a, source)).one == nounOf(*b.table, known(b, source)).one;
}

std::vector<const Read*> pointersTo(const std::vector<Read>& reads) {
    std::vector<const Read*> pointers;
    pointers.reserve(reads.size());
    for (const Read& read : reads)
        pointers.push_back(&read);
    return pointers;
}

/// A cut writes anew what it takes away: these changes as the moves that were meant; empty if they
/// are none.
std::vector<Read> cutAsMoves(const std::vector<const Read*>& ones, RecordSource& source) {
    std::vector<const Read*> made, gone;
    for (const Read* read : ones) {
        if (read->deed == Deed::Created)
            made.push_back(read);
        if (read->deed == Deed::Deleted)
            gone.push_back(read);
    }
    const auto captions = [&](const std::vector<const Read*>& reads) {
        std::multiset<QString> found;
        for (const Read* read : reads)
            found.insert(QString::fromLatin1(read->table->name) +
                         nameOf(*read->table, known(*read, source)));
        return found;
    };
    std::vector<Read> moved;
    if (made.empty() || made.size() + gone.size() != ones.size() ||
        captions(made) != captions(gone))
        return moved;
    for (size_t i = 0; i < made.size(); ++i) {
        Read read = *made[i];
        read.deed = Deed::Moved;
        for (const store::ParentField& parent : store::parentFields(*read.table)) {
            const store::Value* to = valueIn(*read.table, read.after, parent.field);
            const store::Value* from = valueIn(*read.table, gone[i]->before, parent.field);
            if (!to || store::textOf(*to).empty())
                continue;
            read.above = store::findTable(parent.table);
            read.to = store::textOf(*to);
            read.from = from ? store::textOf(*from) : std::string();
            break;
        }
        moved.push_back(std::move(read));
    }
    return moved;
}

QString lineOf(const std::vector<Read>& all, RecordSource& source) {
    const std::vector<const Read*> ones = mainOnes(all);
    if (ones.empty())
        return all.empty() ? QStringLiteral("Нет изменений") : sentence(all.front(), source);
    const Read& first = *ones.front();
    constexpr size_t mostCompared = 200; // beyond it the first are taken for all
    const size_t compared = std::min(ones.size(), mostCompared);
    const bool one = std::all_of(ones.begin(), ones.begin() + static_cast<ptrdiff_t>(compared),
                                 [&](const Read* read) { return alike(first, *read, source); });
    if (ones.size() > 1 && one)
        return together(ones, source);
    if (ones.size() > 1) {
        const std::vector<Read> moved = cutAsMoves(ones, source);
        if (moved.size() == 1)
            return sentence(moved.front(), source);
        if (!moved.empty())
            return together(pointersTo(moved), source);
        return sentence(first, source) + more(ones.size() - 1);
    }
    QString line = sentence(first, source);
    const auto inside =
        static_cast<size_t>(std::count_if(all.begin(), all.end(), [&](const Read& read) {
            return read.deed == first.deed && !isContent(read) && &read != &first;
        }));
    if (inside > 0 && (first.deed == Deed::Created || first.deed == Deed::Deleted))
        line += QStringLiteral(" со всем, что внутри (%1 %2)")
                    .arg(inside)
                    .arg(numeralForm(inside, QStringLiteral("запись"), QStringLiteral("записи"),
                                     QStringLiteral("записей")));
    return line;
}

QString infinitive(Deed deed) {
    static const char* const words[] = {"создать",  "удалить", "переименовать", "переместить",
                                        "изменить", "занять",  "освободить",    "переставить"};
    return QString::fromUtf8(words[static_cast<size_t>(deed)]);
}

/// What something is done to: "папку ресурсов".
Noun accusative(Noun noun) {
    const QString word = noun.one.section(QLatin1Char(' '), 0, 0);
    if (noun.gender == Noun::Feminine && word.endsWith(QStringLiteral("а")))
        noun.one.replace(word.size() - 1, 1, QStringLiteral("у"));
    else if (noun.gender == Noun::Feminine && word.endsWith(QStringLiteral("я")))
        noun.one.replace(word.size() - 1, 1, QStringLiteral("ю"));
    return noun;
}

} // namespace

GroupWords describe(const Group& group, RecordSource& source) {
    GroupWords words;
    std::vector<Read> all;
    for (const store::Change& change : group.changes)
        all.push_back(readChange(change));
    words.what = lineOf(all, source);
    if (!group.whole)
        words.what += QStringLiteral(" (в действии больше %1 изменений)").arg(Group::mostChanges);
    if (!group.undoes.empty())
        words.what = QStringLiteral("Отмена: ") + words.what.left(1).toLower() + words.what.mid(1);
    const std::vector<const Read*> ones = mainOnes(all);
    if (!ones.empty() && ones.front()->table)
        words.place = placeOf(*ones.front()->table, known(*ones.front(), source), &source);
    return words;
}

QString commandWords(const Group& group, RecordSource& source) {
    std::vector<Read> all;
    for (const store::Change& change : group.changes)
        all.push_back(readChange(change));
    std::vector<const Read*> ones = mainOnes(all);
    if (ones.empty() || !ones.front()->table)
        return QStringLiteral("изменить записи");
    const std::vector<Read> moved = cutAsMoves(ones, source);
    if (!moved.empty())
        ones = pointersTo(moved);
    const Read& first = *ones.front();
    const QString verb = group.undoes.empty() ? infinitive(first.deed) : QStringLiteral("вернуть");
    const Values values = known(first, source);
    const QString name = nameOf(*first.table, values);
    const QString object = name.isEmpty()
                               ? accusative(nounOf(*first.table, values)).one + QLatin1Char(' ') +
                                     QString::fromStdString(first.change->key)
                               : quoted(name);
    if (ones.size() == 1)
        return verb + QLatin1Char(' ') + object +
               (all.size() > 1 && moved.empty() &&
                        (first.deed == Deed::Created || first.deed == Deed::Deleted)
                    ? QStringLiteral(" со всем, что внутри")
                    : QString());
    constexpr size_t mostCompared = 200;
    const auto compared = static_cast<ptrdiff_t>(std::min(ones.size(), mostCompared));
    if (std::all_of(ones.begin(), ones.begin() + compared,
                    [&](const Read* read) { return alike(first, *read, source); }))
        return verb + QLatin1Char(' ') +
               counted(ones.size(), accusative(nounOf(*first.table, values)));
    return verb + QLatin1Char(' ') + object + more(ones.size() - 1);
}

ChangeWords describe(const store::Change& change, RecordSource& source) {
    const Read read = readChange(change);
    ChangeWords words;
    words.what = sentence(read, source);
    if (!read.table)
        return words;
    for (size_t i = 1; i < read.table->fields.size(); ++i) {
        const auto field = static_cast<int>(i);
        const auto now = read.after.find(field);
        const auto was = read.before.find(field);
        const bool hasNow = now != read.after.end(), hasWas = was != read.before.end();
        const auto nothing = [](const store::Value& value) {
            return std::holds_alternative<std::monostate>(value);
        };
        if ((!hasNow && !hasWas) || (hasNow && hasWas && now->second == was->second) ||
            (hasNow != hasWas && nothing(hasNow ? now->second : was->second)))
            continue;
        const auto shown = [&](bool has, const store::Value& value) {
            return has ? valueWords(*read.table, field, value, &source) : QString();
        };
        words.fields.push_back({fieldWord(*read.table, field),
                                shown(hasWas, hasWas ? was->second : store::Value()),
                                shown(hasNow, hasNow ? now->second : store::Value())});
    }
    return words;
}

} // namespace orvo::history
