#include "history/LargeGroup.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/SharedPlace.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <QStringList>

#include <algorithm>
#include <map>

namespace orvo::history {

namespace {

bool countsContents(const store::ChangeCount& count) {
    return count.table == store::contentTable().name;
}

bool isOrder(const store::ChangeCount& count) {
    return count.part == store::ChangeCount::Order;
}

/// What records of a table are called that were not all read.
Noun anyOf(const store::TableDef& table) {
    if (std::string_view(table.name) == table::MenuFolder) // a folder or a desktop
        return {Text::tr("запись"), Text::tr("записи"), Text::tr("записей"), Noun::Feminine};
    return nounOf(table, {});
}

Deed deedOf(const store::ChangeCount& count) {
    switch (count.code) {
    case OrvoEventInsert:
        return Deed::Created;
    case OrvoEventDelete:
        return Deed::Deleted;
    default:
        return count.part == store::ChangeCount::Place   ? Deed::Moved
               : count.part == store::ChangeCount::Order ? Deed::Ordered
                                                         : Deed::Changed;
    }
}

} // namespace

LargeGroup::LargeGroup(const Group& group, RecordSource& source, bool isTakenBack)
    : m_group(group)
    , m_source(source)
    , m_isTakenBack(isTakenBack) {
    const auto& counts = group.counts;
    const bool onlyContents = std::all_of(counts.begin(), counts.end(), countsContents);
    const bool onlyOrder =
        std::all_of(counts.begin(), counts.end(), [](const store::ChangeCount& count) {
            return countsContents(count) || isOrder(count);
        });
    for (size_t i = 0; i < counts.size(); ++i)
        if (onlyContents || (!countsContents(counts[i]) && (onlyOrder || !isOrder(counts[i]))))
            m_kinds.push_back(
                {&counts[i], logged(group.tops[i]), group.follows[i], counts[i].count});
    for (Kind& kind : m_kinds)
        kind.top.isTakenBack = isTakenBack;
    m_replaced = group.rewrites && !isMostlyGone(group);
    if (group.rewrites && !m_replaced)
        leaveOutWrittenAgain();
    m_cut = !group.rewrites && isCut();
    if (!m_cut)
        return;
    // As the move that was meant: what was made, from where the other one was deleted.
    Kind& made = m_kinds.front();
    const auto gone = std::find_if(m_kinds.begin(), m_kinds.end(), [](const Kind& kind) {
        return kind.count->code == OrvoEventDelete;
    });
    made.top = movedBy(made.top, gone->top);
}

/// A cut writes anew what it takes away: as many records of each table, with the same one on top.
/// What others have put into it moves along.
bool LargeGroup::isCut() const {
    std::map<std::string, int64_t> surplus;
    const Kind* gone = nullptr;
    for (const Kind& kind : m_kinds) {
        if (kind.follows)
            continue;
        if (kind.count->code == OrvoEventUpdate || !kind.top.table)
            return false;
        const bool deleted = kind.count->code == OrvoEventDelete;
        surplus[kind.count->table] += deleted ? -kind.count->count : kind.count->count;
        if (deleted && !gone)
            gone = &kind;
    }
    const Kind& made = m_kinds.front();
    return made.count->code == OrvoEventInsert && gone && isCutOf(made.top, gone->top, m_source) &&
           std::all_of(surplus.begin(), surplus.end(),
                       [](const auto& table) { return table.second == 0; });
}

void LargeGroup::leaveOutWrittenAgain() {
    const std::map<std::string, int64_t> gone = goneByTable(m_group);
    std::vector<Kind> left;
    for (Kind kind : m_kinds) {
        if (kind.count->code != OrvoEventUpdate)
            kind.number =
                (kind.count->code == OrvoEventDelete ? 1 : -1) * gone.at(kind.count->table);
        if (kind.number > 0)
            left.push_back(std::move(kind));
    }
    if (!left.empty())
        m_kinds = std::move(left);
}

int64_t LargeGroup::gone() const {
    int64_t all = 0;
    for (const auto& [table, count] : goneByTable(m_group))
        all += std::max<int64_t>(count, 0);
    return all;
}

/// Whether all are of one kind and, as far as they were read, none holds the others.
bool LargeGroup::isFlat() const {
    const LoggedChange& top = first();
    if (m_kinds.size() > 1 || !top.table || m_group.rewrites)
        return false;
    return std::none_of(
        m_group.changes.begin(), m_group.changes.end(), [&](const store::Change& change) {
            return change.code == top.change->code && isPlacedBelow(logged(change), top);
        });
}

size_t LargeGroup::total() const {
    int64_t all = 0;
    for (const Kind& kind : m_kinds)
        if (m_replaced && kind.count->code == OrvoEventInsert)
            all += kind.count->count;
    if (m_replaced)
        return static_cast<size_t>(all);
    for (const Kind& kind : m_kinds)
        if (!m_cut || kind.count->code == OrvoEventInsert)
            all += kind.number;
    return static_cast<size_t>(all);
}

/// ": «a», «b», «c» …": the top one and others.
QString LargeGroup::names() const {
    constexpr int most = 3;
    QStringList list;
    const auto add = [&](const LoggedChange& read) {
        const QString name = nameOf(*read.table, known(read, m_source));
        if (!name.isEmpty())
            list << quoted(name);
    };
    add(first());
    for (const store::Change& change : m_group.changes) {
        if (list.size() == most)
            break;
        if (change.table == m_kinds.front().count->table && change.code == first().change->code &&
            store::foldedKey(change.key) != store::foldedKey(first().change->key))
            add(logged(change));
    }
    return list.isEmpty() ? QString()
                          : QStringLiteral(": %1 …").arg(list.join(QStringLiteral(", ")));
}

QString LargeGroup::along() const {
    if (!m_cut)
        return {};
    for (const Kind& kind : m_kinds)
        if (kind.follows)
            return Text::tr(" вместе с тем, что внутри: ") +
                   quoted(nameOf(*kind.top.table, known(kind.top, m_source))) +
                   (kind.count->count > 1 ? QStringLiteral(" …") : QString());
    return {};
}

QString LargeGroup::place() const {
    const LoggedChange& top = first();
    if (!top.table)
        return {};
    if (total() == 1 || !isFlat())
        return sharedPlace({&top}, m_source);
    std::vector<LoggedChange> reads;
    for (const store::Change& change : m_group.changes)
        if (change.table == top.change->table && change.code == top.change->code)
            reads.push_back(logged(change));
    std::vector<const LoggedChange*> some;
    some.reserve(reads.size());
    for (const LoggedChange& read : reads)
        some.push_back(&read);
    return sharedPlaceOfSome(some, m_source);
}

QString LargeGroup::line() const {
    const size_t all = total();
    if (const LoggedChange& top = first(); m_replaced && top.table)
        return (m_isTakenBack ? Text::tr("Снова как прежде: ") : Text::tr("Записаны заново: ")) +
               recordWords(*top.table, known(top, m_source), top.change->key) + andMore(all - 1) +
               (gone() > 0
                    ? (m_isTakenBack ? Text::tr("; возвращено ещё %1") : Text::tr("; удалено %1"))
                          .arg(gone())
                    : QString());
    if (all == 1 || !isFlat())
        return sentence(first(), m_source) + andMore(all - 1) + along();
    const Noun noun = anyOf(*first().table);
    LoggedChange whole = first();
    whole.deed = deedOf(*m_kinds.front().count);
    return deedWords(whole, noun, all) + QLatin1Char(' ') + counted(all, noun) + names();
}

QString LargeGroup::command() const {
    const size_t all = total();
    const LoggedChange& top = first();
    if (!top.table)
        return Text::tr("изменить записи");
    if (m_replaced && m_group.undoes.empty())
        return Text::tr("записать заново ") + objectWords(top, m_source) + andMore(all - 1);
    const bool flat = all > 1 && isFlat();
    const Deed deed = flat ? deedOf(*m_kinds.front().count) : top.deed;
    const QString verb =
        (m_group.undoes.empty() ? infinitive(deed) : Text::tr("вернуть")) + QLatin1Char(' ');
    return flat ? verb + counted(all, accusative(anyOf(*top.table)))
                : verb + objectWords(top, m_source) + andMore(all - 1);
}

} // namespace orvo::history
