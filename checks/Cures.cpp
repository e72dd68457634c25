#include "checks/Cures.h"

#include "frame/Kinds.h"
#include "frame/Text.h"
#include "history/RecordWords.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <limits>

namespace orvo::checks {

namespace {

using store::Value;

const Value null;

store::Write update(const Record& record, std::vector<std::pair<int, Value>> values) {
    std::sort(values.begin(), values.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    store::Write write;
    write.flag = MDX_UPDATE;
    write.key = record.key();
    write.values = std::move(values);
    return write;
}

Cure single(const char* words, const Record& record, std::vector<std::pair<int, Value>> values) {
    return {Text::tr(words), {&record.table(), {update(record, std::move(values))}}};
}

Cure clearing(const char* words, const Record& record, int field) {
    return single(words, record, {{field, null}});
}

/// Into the top folder of its kind, files to the top. Not where its name is taken.
std::optional<Cure> toTop(const Problems& problems, const Record& record, int kind, int link) {
    const Fields& f = fields();
    const Record top = problems.topFolder(kind);
    if (!resourceKind(kind) || (kind != Kind::File && !top))
        return std::nullopt;
    const std::string key = kind == Kind::File ? std::string() : top.key();
    if (top && top.number() == record.number())
        return std::nullopt;
    std::string identity;
    if (&record.table() == &f.folders)
        identity = Namesakes::folderPlace(kind, key, record.cp1251(f.folder.caption));
    else if (kind == Kind::File)
        identity = Namesakes::filePlace({}, record.cp1251(f.resource.name));
    if (!identity.empty() && problems.namesakes().first(problems.records(), identity).owner)
        return std::nullopt;
    Cure cure = single(QT_TRANSLATE_NOOP("orvo", "перенести на верхний уровень"), record,
                       {{link, key.empty() ? null : Value(key)}});
    if (!key.empty())
        cure.words = Text::tr("перенести в папку %1").arg(history::quoted(top.name()));
    cure.claims = identity;
    return cure;
}

/// Whether going up from there one comes upon the record.
bool standsBelow(const Catalogue& records, Record at, const Record& record) {
    for (int depth = 0; at && depth < 10000; ++depth, at = above(records, at))
        if (at.number() == record.number())
            return true;
    return false;
}

const char* const distinctOrdersWords =
    QT_TRANSLATE_NOOP("orvo", "дать соседним элементам разные места, сохранив порядок");

/// The folder of an element, as a text that no other folder has.
std::string folderOf(const Record& element) {
    const Fields& f = fields();
    return folded(element.cp1251(f.element.desktop)) + '\0' +
           folded(element.cp1251(f.element.parent));
}

/// Distinct orders for the elements of one folder, changing as few as the sequence allows.
std::optional<Cure> distinctOrders(const Catalogue& records, const Record& element) {
    const Fields& f = fields();
    struct Place {
        int order;
        std::string key;
        Record record;
    };
    std::vector<Place> places;
    const std::string parent = element.text(f.element.parent);
    const std::string desktop = element.text(f.element.desktop);
    const std::string folder = folderOf(element);
    const auto take = [&](const Record& one, int) {
        if (folderOf(one) == folder)
            places.push_back({one.integer(f.element.order), store::foldedKey(one.key()), one});
        return true;
    };
    if (parent.empty())
        records.forEachWith(table::Menu, field::FolderKey, desktop, take);
    else
        records.forEachWith(table::Menu, field::parent, parent, take);
    std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) {
        return std::tie(a.order, a.key) < std::tie(b.order, b.key);
    });
    std::vector<int64_t> orders;
    for (const Place& place : places)
        orders.push_back(orders.empty() ? place.order
                                        : std::max<int64_t>(place.order, orders.back() + 1));
    constexpr int64_t step = 1000;
    if (!orders.empty() && orders.back() > std::numeric_limits<int>::max())
        for (size_t i = 0; i < orders.size(); ++i)
            orders[i] = static_cast<int64_t>(i) * step;
    Cure cure{Text::tr(distinctOrdersWords), {&f.elements, {}}};
    cure.folder = folder;
    for (size_t i = 0; i < places.size(); ++i)
        if (orders[i] != places[i].order)
            cure.writes.writes.push_back(update(places[i].record, {{f.element.order, orders[i]}}));
    return cure.writes.writes.empty() ? std::nullopt : std::make_optional(cure);
}

const char* const toTopWords = QT_TRANSLATE_NOOP("orvo", "перенести на верхний уровень");
constexpr int64_t orderStep = 1000;

/// Whether it is below what there is not, and shown nowhere.
bool isLost(const Catalogue& records, const Record& element) {
    const int parent = fields().element.parent;
    return !element.text(parent).empty() && !records.linked(element, parent);
}

/// The last place at the top of a menu; one before the first if there is none.
int64_t lastAtTop(const Catalogue& records, const Record& element) {
    const Fields& f = fields();
    int64_t last = -orderStep;
    const std::string desktop = element.text(f.element.desktop);
    records.forEachWith(table::Menu, field::FolderKey, desktop, [&](const Record& one, int) {
        if (one.text(f.element.parent).empty())
            last = std::max<int64_t>(last, one.integer(f.element.order));
        return true;
    });
    return last;
}

/// To the end of its menu, where no other has its place.
Cure toTopOfMenu(const Record& element, int64_t order) {
    const Fields& f = fields();
    if (order > std::numeric_limits<int>::max())
        return clearing(toTopWords, element, f.element.parent);
    return single(toTopWords, element, {{f.element.parent, null}, {f.element.order, order}});
}

/// A desktop, or a folder of them, whose link names nothing is shown at the top.
std::optional<Cure> withoutParent(const Problems& problems, const Record& record) {
    const Fields& f = fields();
    if (&record.table() == &f.folders)
        return toTop(problems, record, record.integer(f.folder.kind), f.folder.parent);
    if (&record.table() == &f.elements)
        return toTopOfMenu(record, lastAtTop(problems.records(), record) + orderStep);
    return clearing(toTopWords, record, parentFieldOf(record.table()));
}

bool isWithoutParent(const Finding& finding) {
    return finding.problem == Problem::NoParent || finding.problem == Problem::UnderTopRow;
}

} // namespace

std::optional<Cure> cureOf(const Problems& problems, const Finding& finding) {
    const Fields& f = fields();
    const Catalogue& records = problems.records();
    const Record record = records.find(*finding.table, finding.key);
    if (!record)
        return std::nullopt;
    switch (finding.problem) {
    case Problem::NoParent:
    case Problem::UnderTopRow:
        return withoutParent(problems, record);
    case Problem::OrderClassUnknown:
    case Problem::OrderClassOfOther: {
        const bool isFolder = record.integer(f.desktop.isFolder) != 0;
        return single(
            isFolder ? QT_TRANSLATE_NOOP("orvo", "записать порядок «1000», как у папки")
                     : QT_TRANSLATE_NOOP("orvo", "записать порядок «2000», как у рабочего стола"),
            record,
            {{f.desktop.order, std::string(isFolder ? sortclass::folder : sortclass::desktop)}});
    }
    case Problem::DesktopSpelling: {
        const Record desktop = records.linked(record, f.element.desktop);
        if (!desktop)
            return std::nullopt;
        return single(QT_TRANSLATE_NOOP("orvo", "записать ключ рабочего стола так, как он есть"),
                      record, {{f.element.desktop, desktop.key()}});
    }
    case Problem::NoIcon:
        return clearing(QT_TRANSLATE_NOOP("orvo", "убрать значок"), record,
                        &record.table() == &f.elements ? f.element.icon : f.resource.icon);
    case Problem::SameOrder:
        return distinctOrders(records, record);
    case Problem::ParentOfOtherKind:
        // Not below itself, should the top folder have come to stand there.
        if (standsBelow(records, problems.topFolder(record.integer(f.folder.kind)), record))
            return std::nullopt;
        return toTop(problems, record, record.integer(f.folder.kind), f.folder.parent);
    case Problem::FolderUnsaid:
    case Problem::InTopRow:
    case Problem::NoFolder:
    case Problem::OrphanForm:
    case Problem::FolderOfOtherKind:
        return toTop(problems, record, record.integer(f.resource.kind), f.resource.folder);
    case Problem::LockHolderGone:
    case Problem::LockOnNoForm:
        return single(QT_TRANSLATE_NOOP("orvo", "снять блокировку"), record,
                      {{f.resource.holder, null}, {f.resource.since, null}});
    default:
        return std::nullopt;
    }
}

std::optional<QString> cureWordsOf(const Problems& problems, const Finding& finding) {
    if (finding.problem == Problem::SameOrder) // certain, wherever two are in one place
        return Text::tr(distinctOrdersWords);
    if (isWithoutParent(finding) && finding.table == &fields().elements) // the same
        return Text::tr(toTopWords);
    const auto cure = cureOf(problems, finding);
    return cure ? std::make_optional(cure->words) : std::nullopt;
}

void CureBatch::addToTopOfMenu(const Catalogue& records, const Record& element) {
    const std::string menu = folded(element.cp1251(fields().element.desktop));
    auto last = m_lastAtTop.find(menu);
    if (last == m_lastAtTop.end())
        last = m_lastAtTop.emplace(menu, lastAtTop(records, element)).first;
    last->second += orderStep;
    add(toTopOfMenu(element, last->second));
}

std::optional<QString> CureBatch::add(const Problems& problems, const Finding& finding) {
    const Catalogue& records = problems.records();
    if (finding.table == &fields().elements) {
        const Record element = records.find(*finding.table, finding.key);
        const bool sameOrder = element && finding.problem == Problem::SameOrder;
        if (sameOrder && m_folders.count(folderOf(element)) > 0)
            return Text::tr(distinctOrdersWords);
        // Where it goes it has a place of its own.
        if (element && (isWithoutParent(finding) || (sameOrder && isLost(records, element)))) {
            addToTopOfMenu(records, element);
            return Text::tr(sameOrder ? distinctOrdersWords : toTopWords);
        }
    }
    const auto cure = cureOf(problems, finding);
    if (!cure || !add(*cure))
        return std::nullopt;
    if (!cure->folder.empty())
        m_folders.insert(cure->folder);
    return cure->words;
}

bool CureBatch::add(const Cure& cure) {
    if (!cure.claims.empty() && !m_claims.insert(cure.claims).second)
        return false;
    auto& part = m_parts[cure.writes.table];
    for (const store::Write& write : cure.writes.writes) {
        store::Write& all = part.try_emplace(store::foldedKey(write.key), write).first->second;
        for (const auto& [field, value] : write.values) {
            const auto at = std::lower_bound(
                all.values.begin(), all.values.end(), field,
                [](const auto& known, int wanted) { return known.first < wanted; });
            if (at == all.values.end() || at->first != field)
                all.values.insert(at, {field, value});
        }
    }
    return true;
}

std::vector<store::TableWrites> CureBatch::parts() const {
    std::vector<store::TableWrites> parts;
    for (const auto& [table, writes] : m_parts) {
        parts.push_back({table, {}});
        for (const auto& [key, write] : writes)
            parts.back().writes.push_back(write);
    }
    return parts;
}

} // namespace orvo::checks
