#include "checks/Problems.h"

#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cassert>

namespace orvo::checks {

namespace {

constexpr int deepest = 1000; ///< folders on the way to a file

/// Where a file of the file area lies, folded; none if its folder hangs nowhere.
std::optional<std::string> placeOf(const Catalogue& records, const Record& file) {
    const Fields& f = fields();
    std::string path;
    std::string key = file.text(f.resource.folder);
    for (int depth = 0; depth < deepest; ++depth) {
        if (key.empty() || isTopRow(key))
            return path + '\n' + folded(file.cp1251(f.resource.name));
        const Record folder = records.find(f.folders, key);
        if (!folder)
            return std::nullopt;
        const std::string caption = folded(folder.cp1251(f.folder.caption));
        path = path.empty() ? caption : caption + '/' + path;
        key = folder.text(f.folder.parent);
    }
    return std::nullopt;
}

int placeOf(const store::TableDef* table) {
    const auto& all = checkedTables();
    return static_cast<int>(std::find(all.begin(), all.end(), table) - all.begin());
}

} // namespace

// All of it --------------------------------------------------------------------------------------

void Problems::loaded(const Catalogue&) {
    lookAtAll();
}

void Problems::lookAtAll() {
    for (const auto& [number, findings] : std::exchange(m_found, {}))
        m_changed[{findings.front().table, findings.front().key}].clear();
    m_errors = m_warnings = 0;
    m_tops.clear();
    m_due.clear();
    m_contents.reset();
    m_contentChanges.clear();
    m_namesakes.clear();
    for (uint32_t number = 0; number < m_records.numberEnd(); ++number)
        if (const Record record = m_records.at(number))
            m_namesakes.add(m_records, record);
    findCircles();
    for (uint32_t number = 0; number < m_records.numberEnd(); ++number)
        if (m_records.at(number))
            lookAt(number);
    m_topsDue = true;
    settle();
}

void Problems::findCircles() {
    m_inCircle.clear();
    // Each record is walked once: the number of the walk that reached it, 0 for none.
    std::vector<uint32_t> walks(m_records.numberEnd(), 0);
    const auto next = [&](uint32_t number) -> std::optional<uint32_t> {
        const Record record = m_records.at(number);
        const int field = record ? parentFieldOf(record.table()) : -1;
        const Record parent = field < 0 ? Record() : m_records.linked(record, field);
        return parent ? std::make_optional(parent.number()) : std::nullopt;
    };
    for (uint32_t start = 0; start < m_records.numberEnd(); ++start) {
        const uint32_t walk = start + 1;
        std::optional<uint32_t> at = start;
        while (at && walks[*at] == 0) {
            walks[*at] = walk;
            at = next(*at);
        }
        // What the walk came back to is in a circle.
        while (at && walks[*at] == walk && m_inCircle.insert(*at).second)
            at = next(*at);
    }
}

Findings Problems::all() const {
    Findings all = m_tops;
    for (const auto& [number, findings] : m_found)
        all.insert(all.end(), findings.begin(), findings.end());
    std::sort(all.begin(), all.end(), [](const Finding& a, const Finding& b) {
        return std::make_tuple(placeOf(a.table), a.key, a.problem, a.value) <
               std::make_tuple(placeOf(b.table), b.key, b.problem, b.value);
    });
    return all;
}

bool Problems::holds(const Finding& finding) const {
    const Record record = m_records.find(*finding.table, finding.key);
    const auto found = record ? m_found.find(record.number()) : m_found.end();
    const Findings& all = found == m_found.end() ? m_tops : found->second;
    return std::find(all.begin(), all.end(), finding) != all.end();
}

Record Problems::topFolder(int kind) const {
    return m_namesakes.first(m_records, Namesakes::topPlace(kind)).owner;
}

// One record -------------------------------------------------------------------------------------

Findings Problems::findingsOf(const Record& record) const {
    Findings findings;
    look(scene(), record, findings);
    if (m_inCircle.empty() || !m_inCircle.count(record.number()))
        return findings;
    // A circle is told once, at the lowest key.
    const std::string own = store::foldedKey(record.key());
    const int field = parentFieldOf(record.table());
    int length = 1;
    for (Record at = m_records.linked(record, field); at && at.number() != record.number();
         at = m_records.linked(at, field), ++length)
        if (store::foldedKey(at.key()) < own)
            return findings;
    add(findings, record, Problem::Circle, std::to_string(length));
    return findings;
}

void Problems::lookAt(uint32_t number) {
    if (const Record record = m_records.at(number))
        replace(number, &record.table(), {}, findingsOf(record));
}

void Problems::count(const Findings& findings, int sign) {
    for (const Finding& finding : findings)
        (severityOf(finding.problem) == Severity::Error ? m_errors : m_warnings) +=
            static_cast<size_t>(sign);
}

void Problems::replace(uint32_t number, const store::TableDef* table, const std::string& key,
                       Findings findings) {
    const auto found = m_found.find(number);
    if (found == m_found.end() ? findings.empty() : found->second == findings)
        return;
    const std::string name = !findings.empty()        ? findings.front().key
                             : found != m_found.end() ? found->second.front().key
                                                      : key;
    count(findings, 1);
    if (found != m_found.end())
        count(found->second, -1);
    m_changed[{table, name}] = findings;
    if (findings.empty())
        m_found.erase(found);
    else if (found == m_found.end())
        m_found.emplace(number, std::move(findings));
    else
        found->second = std::move(findings);
}

bool Problems::settle(std::chrono::steady_clock::time_point until) {
    if (std::exchange(m_topsDue, false)) {
        Findings tops;
        lookAtTops(scene(), tops);
        if (!(tops == m_tops)) {
            count(m_tops, -1);
            count(tops, 1);
            m_tops = tops;
            m_changed[{&fields().folders, {}}] = std::move(tops);
        }
    }
    for (int looked = 1; !m_due.empty(); ++looked) {
        const uint32_t number = *m_due.begin();
        m_due.erase(m_due.begin());
        lookAt(number);
        if (looked % 16 == 0 && std::chrono::steady_clock::now() >= until)
            return m_due.empty();
    }
    return true;
}

void Problems::settle() {
    settle(std::chrono::steady_clock::time_point::max());
}

// Changes ----------------------------------------------------------------------------------------

/// One side of a change: as it was, or as it is.
struct Problems::Version {
    const Record& self;
    const Record& other;

    bool isOf(const store::TableDef& table) const { return &self.table() == &table; }
    bool changes(int field) const { return !other || self.cp1251(field) != other.cp1251(field); }
    bool changesNumber(int field) const {
        return !other || self.integer(field) != other.integer(field);
    }
    /// Whether it comes or goes.
    bool isWhole() const { return !other; }
};

void Problems::recordChanged(const Catalogue&, const Record& before, const Record& after) {
    const uint32_t number = (after ? after : before).number();
    if (before) {
        m_namesakes.remove(before);
        if (!after) {
            m_due.erase(number);
            replace(number, &before.table(), before.key(), {});
            if (m_contents)
                m_contents->erase(number);
        }
    }
    if (after) {
        m_namesakes.add(m_records, after);
        due(after);
    }
    for (const Version& version : {Version{before, after}, Version{after, before}}) {
        if (!version.self)
            continue;
        touchNamesakes(version.self);
        touchNamers(version);
        touchIcons(version);
        m_topsDue = m_topsDue || version.isOf(fields().folders);
    }
    touchCircle(before, after);
}

void Problems::touchNamesakes(const Record& version) {
    // Only which of them has the right to it can change, for others than this one.
    const Namesakes::First first = m_namesakes.first(m_records, Namesakes::identityOf(version));
    for (const Record& one : {first.owner, first.next})
        if (one)
            due(one);
}

void Problems::touchNamers(const Version& version) {
    const Fields& f = fields();
    const auto touch = [&](const char* table, const char* link) {
        m_records.forEachWith(table, link, version.self.key(), [&](const Record& namer, int) {
            due(namer);
            return true;
        });
    };
    if (version.isOf(f.elements) &&
        (version.changes(f.element.desktop) ||
         version.self.cp1251(f.element.resource).empty() !=
             (!version.other || version.other.cp1251(f.element.resource).empty()) ||
         version.isWhole()))
        touch(table::Menu, field::parent);
    if (version.isOf(f.desktops) && version.changesNumber(f.desktop.isFolder)) {
        touch(table::MenuFolder, field::ParentKey);
        touch(table::Menu, field::FolderKey);
    }
    if (version.isOf(f.folders) && version.changesNumber(f.folder.kind)) {
        touch(table::MenuResourceFolder, field::ParentKey);
        touch(table::MenuResource, field::MenuResourceFolderKey);
    }
    if (version.isOf(f.resources) && version.changesNumber(f.resource.kind))
        touch(table::Menu, field::MenuResourceKey);
    if (version.isOf(f.users) && version.isWhole())
        touch(table::MenuResource, field::UsersKey);
}

void Problems::touchIcons(const Version& version) {
    const Fields& f = fields();
    const auto touch = [&](const Record& file) {
        const std::string name = file.text(f.resource.name);
        if (file.integer(f.resource.kind) != Kind::File || name.empty())
            return;
        for (const char* table : {table::Menu, table::MenuResource})
            m_records.forEachWith(table, field::ico, name, [&](const Record& bearer, int) {
                due(bearer);
                return true;
            });
    };
    if (version.isOf(f.resources)) {
        const bool isElsewhere = version.changes(f.resource.folder) ||
                                 version.changes(f.resource.name) ||
                                 version.changesNumber(f.resource.kind);
        if (isElsewhere && isIconFolder(m_records.linked(version.self, f.resource.folder)))
            touch(version.self);
    } else if (version.isOf(f.folders) && isIconFolder(version.self) &&
               !isIconFolder(version.other)) {
        m_records.forEachWith(table::MenuResource, field::MenuResourceFolderKey, version.self.key(),
                              [&](const Record& file, int) {
                                  touch(file);
                                  return true;
                              });
    }
}

void Problems::touchCircle(const Record& before, const Record& after) {
    const store::TableDef& table = (after ? after : before).table();
    const int field = parentFieldOf(table);
    if (field < 0 || (before && after && before.cp1251(field) == after.cp1251(field)))
        return;
    const uint32_t number = (after ? after : before).number();
    // The circle that is broken, from the record above that it had.
    if (before && m_inCircle.erase(number))
        for (Record at = m_records.linked(before, field); at && m_inCircle.erase(at.number());
             at = m_records.linked(at, field))
            due(at);
    if (!after)
        return;
    // The circle that is closed. A walk that comes into another circle ends there.
    std::vector<uint32_t> walk{number};
    Record at = m_records.linked(after, field);
    while (at && at.number() != number && !m_inCircle.count(at.number())) {
        walk.push_back(at.number());
        at = m_records.linked(at, field);
    }
    if (!at || at.number() != number)
        return;
    m_inCircle.insert(walk.begin(), walk.end());
    m_due.insert(walk.begin(), walk.end());
}

// Contents ---------------------------------------------------------------------------------------

void Problems::setContents(const std::vector<FilePlace>& places) {
    std::unordered_set<std::string> stored;
    for (const FilePlace& place : places)
        stored.insert(folded(mdx::toCp1251(place.path)) + '\n' + folded(mdx::toCp1251(place.name)));
    m_contents.emplace();
    const Fields& f = fields();
    m_records.forEach(f.resources, [&](const Record& file) {
        if (file.integer(f.resource.kind) != Kind::File)
            return;
        const std::optional<std::string> place = placeOf(m_records, file);
        if (!place || stored.count(*place)) // of one that is in no place nobody told
            m_contents->insert(file.number());
        due(file);
    });
    for (const auto& [key, isStored] : m_contentChanges)
        contentChanged(key, isStored);
}

void Problems::contentChanged(const std::string& resource, bool stored) {
    m_contentChanges[store::foldedKey(resource)] = stored;
    const Record file = m_records.find(fields().resources, resource);
    if (!file || !m_contents)
        return;
    if (stored)
        m_contents->insert(file.number());
    else
        m_contents->erase(file.number());
    due(file);
}

const char* Problems::check() const {
    size_t errors = 0, warnings = 0;
    for (const Finding& finding : all())
        ++(severityOf(finding.problem) == Severity::Error ? errors : warnings);
    if (errors != m_errors || warnings != m_warnings)
        return "3: the findings are not as many as were counted";
    for (const auto& [number, findings] : m_found)
        if (findings.empty() || !m_records.at(number))
            return "2: a record without findings takes room";
    if (const char* broken = m_namesakes.check(m_records))
        return broken;
    if (!m_due.empty() || m_topsDue)
        return nullptr;
    Problems fresh(m_records);
    fresh.lookAtAll();
    fresh.m_contents = m_contents;
    if (m_contents)
        m_records.forEach(fields().resources,
                          [&](const Record& record) { fresh.lookAt(record.number()); });
    return fresh.all() == all() ? nullptr : "1: a fresh look finds others";
}

store::Status readContents(store::Store& store, std::vector<Problems::FilePlace>* places) {
    return store.fileArea([&](const std::string& path, const store::StoredFile& file) {
        places->push_back({path, file.name});
    });
}

} // namespace orvo::checks
