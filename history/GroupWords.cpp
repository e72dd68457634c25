#include "history/GroupWords.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/LargeGroup.h"
#include "history/NetChanges.h"
#include "history/SharedPlace.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <optional>
#include <set>
#include <utility>

namespace orvo::history {

namespace {

std::vector<LoggedChange> allLogged(const Group& group, bool isTakenBack = false) {
    std::vector<LoggedChange> all;
    all.reserve(group.changes.size());
    for (const store::Change& change : group.changes) {
        all.push_back(logged(change));
        all.back().isTakenBack = isTakenBack;
    }
    return all;
}

/// Of a group that takes others back what it has taken back: what the others did, as far as that
/// went back.
Group takenBackBy(const Group& group) {
    Group made = group;
    for (std::vector<store::Change>* changes : {&made.changes, &made.tops})
        for (store::Change& change : *changes)
            change = reversed(change);
    for (store::ChangeCount& count : made.counts)
        if (count.code != OrvoEventUpdate)
            count.code = count.code == OrvoEventInsert ? OrvoEventDelete : OrvoEventInsert;
    std::reverse(made.counts.begin(), made.counts.end());
    std::reverse(made.tops.begin(), made.tops.end());
    std::reverse(made.follows.begin(), made.follows.end());
    return made;
}

bool isContent(const LoggedChange& read) {
    return read.table == &store::contentTable();
}

using RecordKeys = std::set<std::pair<std::string, std::string>>; ///< tables and folded keys

/// The changes that only follow a cut, or the taking back of one: of what it has written anew they
/// are about what was in it.
std::vector<const LoggedChange*> followersOf(const std::vector<LoggedChange>& all) {
    RecordKeys created, deleted;
    for (const LoggedChange& read : all)
        if (read.deed == Deed::Created || read.deed == Deed::Deleted)
            (read.deed == Deed::Created ? created : deleted)
                .insert({read.change->table, store::foldedKey(read.change->key)});
    const auto has = [](const RecordKeys& keys, const LoggedChange& read, const std::string& key) {
        return keys.count({read.above->name, store::foldedKey(key)}) != 0;
    };
    std::vector<const LoggedChange*> found;
    if (created.empty() || deleted.empty())
        return found;
    for (const LoggedChange& read : all)
        if (read.deed == Deed::Moved && has(deleted, read, read.from) &&
            has(created, read, read.to))
            found.push_back(&read);
    RecordKeys desktops; // what is within them changes only that
    for (const LoggedChange* read : found)
        desktops.insert({store::foldedKey(read->topFrom), store::foldedKey(read->topTo)});
    for (const LoggedChange& read : all)
        if (read.deed == Deed::Moved && read.topFrom.empty() &&
            desktops.count({store::foldedKey(read.from), store::foldedKey(read.to)}) != 0)
            found.push_back(&read);
    return found;
}

/// The changes that the line is about: not what goes with others.
std::vector<const LoggedChange*> mainOnes(const std::vector<LoggedChange>& all) {
    const auto saysNothing = [](const LoggedChange& read) { return changesNothing(*read.change); };
    const bool nothingSaid = std::all_of(all.begin(), all.end(), saysNothing);
    const bool onlyContents = std::all_of(all.begin(), all.end(), [&](const LoggedChange& read) {
        return isContent(read) || saysNothing(read);
    });
    const auto isOrder = [](const LoggedChange& read) { return read.deed == Deed::Ordered; };
    const bool onlyOrder = std::all_of(all.begin(), all.end(), [&](const LoggedChange& read) {
        return isOrder(read) || isContent(read) || saysNothing(read);
    });
    const std::vector<const LoggedChange*> followers = followersOf(all);
    const std::set<const LoggedChange*> following(followers.begin(), followers.end());
    RecordKeys deleted, created;
    for (const LoggedChange& read : all) {
        const std::pair<std::string, std::string> record{read.change->table,
                                                         store::foldedKey(read.change->key)};
        if (read.deed == Deed::Deleted)
            deleted.insert(record);
        if (read.deed == Deed::Created)
            created.insert(record);
    }
    const auto goesWithUser = [&](const LoggedChange& read) { // a form that he holds
        if (read.deed != Deed::Occupied && read.deed != Deed::Released)
            return false;
        const store::Value* user = valueIn(
            *read.table, read.deed == Deed::Occupied ? read.after : read.before, field::UsersKey);
        const std::pair<std::string, std::string> record{
            table::Users, user ? store::foldedKey(store::textOf(*user)) : std::string()};
        return (read.deed == Deed::Occupied ? created : deleted).count(record) != 0;
    };
    std::vector<const LoggedChange*> found;
    for (const LoggedChange& read : all) {
        if (goesWithUser(read))
            continue;
        if (read.table && ((isContent(read) && !onlyContents) || (isOrder(read) && !onlyOrder)))
            continue;
        if (following.count(&read) != 0 || (saysNothing(read) && !nothingSaid))
            continue;
        if (read.isTakenBack && read.deed == Deed::Moved &&
            created.count({read.above->name, store::foldedKey(read.to)}) != 0)
            continue; // others had put it there, and it went back
        const auto* records = read.deed == Deed::Deleted   ? &deleted
                              : read.deed == Deed::Created ? &created
                                                           : nullptr;
        bool below = false; // another one of the same deed
        if (records)
            for (const auto& [above, key] : placesOf(read))
                below = below || records->count({above->name, store::foldedKey(key)}) != 0;
        if (!below)
            found.push_back(&read);
    }
    return found;
}

/// «a», «b», «c» and how many more; empty if none has a name.
QString names(const std::vector<const LoggedChange*>& reads, RecordSource& source) {
    constexpr size_t most = 3;
    QStringList list;
    for (const LoggedChange* read : reads) {
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
QString together(const std::vector<const LoggedChange*>& reads, RecordSource& source) {
    const LoggedChange& first = *reads.front();
    const Noun noun = nounOf(*first.table, known(first, source));
    const QString line =
        deedWords(first, noun, reads.size()) + QLatin1Char(' ') + counted(reads.size(), noun);
    const bool sameWay = std::all_of(reads.begin(), reads.end(), [&](const LoggedChange* read) {
        return store::foldedKey(read->from) == store::foldedKey(first.from) &&
               store::foldedKey(read->to) == store::foldedKey(first.to);
    });
    if (first.deed == Deed::Moved && sameWay)
        return line + fromTo(first, source);
    return line + names(reads, source);
}

bool alike(const LoggedChange& a, const LoggedChange& b, RecordSource& source) {
    return a.deed == b.deed && a.table && a.table == b.table &&
           nounOf(*a.table, known(a, source)).one == nounOf(*b.table, known(b, source)).one;
}

bool allAlike(const std::vector<const LoggedChange*>& reads, RecordSource& source) {
    return std::all_of(reads.begin(), reads.end(), [&](const LoggedChange* read) {
        return alike(*reads.front(), *read, source);
    });
}

/// How many records were made or deleted together with that one, which is the only one on top.
size_t countInside(const std::vector<LoggedChange>& all, const LoggedChange& top) {
    if (top.deed != Deed::Created && top.deed != Deed::Deleted)
        return 0;
    return static_cast<size_t>(std::count_if(all.begin(), all.end(), [&](const LoggedChange& read) {
        return read.deed == top.deed && !isContent(read) && read.change != top.change;
    }));
}

std::vector<const LoggedChange*> pointersTo(const std::vector<LoggedChange>& reads) {
    std::vector<const LoggedChange*> pointers;
    pointers.reserve(reads.size());
    for (const LoggedChange& read : reads)
        pointers.push_back(&read);
    return pointers;
}

/// A cut writes anew what it takes away: these changes as the moves that were meant; empty if they
/// are none.
std::vector<LoggedChange> cutAsMoves(const std::vector<const LoggedChange*>& ones,
                                     RecordSource& source) {
    std::vector<const LoggedChange*> made, gone;
    for (const LoggedChange* read : ones) {
        if (read->deed == Deed::Created)
            made.push_back(read);
        if (read->deed == Deed::Deleted)
            gone.push_back(read);
    }
    std::vector<LoggedChange> moved;
    if (made.empty() || made.size() != gone.size() || made.size() + gone.size() != ones.size())
        return moved;
    for (const LoggedChange* one : made) { // of those alike the first belongs to the first
        const auto from = std::find_if(gone.begin(), gone.end(), [&](const LoggedChange* read) {
            return isCutOf(*one, *read, source);
        });
        if (from == gone.end())
            return {};
        moved.push_back(movedBy(*one, **from));
        gone.erase(from);
    }
    return moved;
}

QString lineOf(const std::vector<LoggedChange>& all, RecordSource& source) {
    const std::vector<const LoggedChange*> ones = mainOnes(all);
    if (ones.empty())
        return all.empty() ? Text::tr("Записаны заново те же значения")
                           : sentence(all.front(), source);
    const LoggedChange& first = *ones.front();
    if (ones.size() > 1 && allAlike(ones, source))
        return together(ones, source);
    if (ones.size() > 1) {
        const std::vector<LoggedChange> moved = cutAsMoves(ones, source);
        const std::vector<const LoggedChange*> followers = followersOf(all);
        const QString along =
            followers.empty() ? QString()
                              : Text::tr(" вместе с тем, что внутри") + names(followers, source);
        if (moved.size() == 1)
            return sentence(moved.front(), source) + along;
        if (!moved.empty() && allAlike(pointersTo(moved), source))
            return together(pointersTo(moved), source) + along;
        if (!moved.empty())
            return sentence(moved.front(), source) + andMore(moved.size() - 1) + along;
        return sentence(first, source) + andMore(ones.size() - 1);
    }
    QString line = sentence(first, source);
    if (const size_t inside = countInside(all, first); inside > 0)
        line += Text::tr(" со всем, что внутри (%1 %2)")
                    .arg(inside)
                    .arg(numeralForm(inside, Text::tr("запись"), Text::tr("записи"),
                                     Text::tr("записей")));
    return line;
}

/// A group that was read in part and not counted.
QString beginningOf(const std::vector<LoggedChange>& all, RecordSource& source) {
    const std::vector<const LoggedChange*> ones = mainOnes(all);
    const LoggedChange& first = ones.empty() ? all.front() : *ones.front();
    return sentence(first, source) +
           Text::tr(" и ещё не меньше %1 %2")
               .arg(all.size())
               .arg(numeralForm(all.size(), Text::tr("записи", "не меньше одной"),
                                Text::tr("записей"), Text::tr("записей")));
}

} // namespace

GroupWords describe(const Group& group, RecordSource& source) {
    const bool isTakenBack = !group.undoes.empty() && !group.redoes;
    const std::optional<Group> net = netChanges(group);
    const Group& whole = net ? *net : group;
    const Group told = isTakenBack ? takenBackBy(whole) : Group();
    const Group& about = isTakenBack ? told : whole;
    GroupWords words;
    source.prepareUpdated(about.changes);
    if (!about.counts.empty()) {
        const LargeGroup large(about, source, isTakenBack);
        words.what = large.line();
        words.place = large.place();
    } else {
        const std::vector<LoggedChange> all = allLogged(about, isTakenBack);
        words.what = about.whole ? lineOf(all, source) : beginningOf(all, source);
        const std::vector<const LoggedChange*> ones = mainOnes(all);
        const std::vector<LoggedChange> moved = cutAsMoves(ones, source);
        words.place = sharedPlace(moved.empty() ? ones : pointersTo(moved), source);
        if (!ones.empty()) {
            const store::Change& first = *(moved.empty() ? *ones.front() : moved.front()).change;
            words.first = {first.table, first.key};
        }
    }
    if (group.redoes)
        words.what = Text::tr("Повтор: ") + words.what.left(1).toLower() + words.what.mid(1);
    if (const size_t count = group.undoes.size(); count > 1)
        words.what += QStringLiteral(" (%1 %2)")
                          .arg(count)
                          .arg(numeralForm(count, Text::tr("действие"), Text::tr("действия"),
                                           Text::tr("действий")));
    return words;
}

QString commandWords(const Group& group, RecordSource& source) {
    if (!group.counts.empty())
        return LargeGroup(group, source).command();
    const std::optional<Group> net = netChanges(group);
    const Group& about = net ? *net : group;
    source.prepareUpdated(about.changes);
    const std::vector<LoggedChange> all = allLogged(about);
    std::vector<const LoggedChange*> ones = mainOnes(all);
    if (ones.empty() || !ones.front()->table)
        return Text::tr("изменить записи");
    const std::vector<LoggedChange> moved = cutAsMoves(ones, source);
    if (!moved.empty())
        ones = pointersTo(moved);
    const LoggedChange& first = *ones.front();
    const QString verb = group.undoes.empty() ? infinitive(first.deed) : Text::tr("вернуть");
    const QString object = objectWords(first, source);
    if (ones.size() == 1)
        return verb + QLatin1Char(' ') + object +
               (moved.empty() && countInside(all, first) > 0 ? Text::tr(" со всем, что внутри")
                                                             : QString());
    if (allAlike(ones, source))
        return verb + QLatin1Char(' ') +
               counted(ones.size(), accusative(nounOf(*first.table, known(first, source))));
    return verb + QLatin1Char(' ') + object + andMore(ones.size() - 1);
}

ChangeWords describe(const store::Change& change, RecordSource& source) {
    const LoggedChange read = logged(change);
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
            return value == store::Value() || value == store::Value(std::string());
        };
        if ((!hasNow && !hasWas) || (hasNow && hasWas && readAlike(now->second, was->second)) ||
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

QString placeOf(const store::Change& change, RecordSource& source) {
    const LoggedChange read = logged(change);
    return read.table ? placeOf(*read.table, known(read, source), &source) : QString();
}

} // namespace orvo::history
