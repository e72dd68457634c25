#include "history/Difference.h"

#include "frame/Vocabulary.h"
#include "history/Locks.h"
#include "platform/store/Merge.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

namespace orvo::history {

namespace {

void addBranch(const Installation& installation, const RecordKey& top, std::set<RecordKey>* found) {
    const Children children = childrenIn(installation);
    std::set<RecordKey> seen; // below what was found in the other installation there may be more
    std::vector<RecordKey> open;
    if (installation.find(*top.first, top.second))
        open.push_back(top);
    while (!open.empty()) {
        const RecordKey record = open.back();
        open.pop_back();
        if (!seen.insert(record).second)
            continue;
        if (const auto below = children.find(record); below != children.end())
            open.insert(open.end(), below->second.begin(), below->second.end());
    }
    found->insert(seen.begin(), seen.end());
}

/// Adds what the records need and `from` lacks: what is above them, and the resources of elements.
void addNeeded(const Installation& from, const Installation& to, std::set<RecordKey>* records) {
    const Children children = childrenIn(to);
    std::vector<RecordKey> open(records->begin(), records->end());
    while (!open.empty()) {
        const auto [table, key] = open.back();
        open.pop_back();
        const Values* values = to.find(*table, key);
        if (!values)
            continue;
        std::vector<RecordKey> needed = recordsAbove(*table, *values);
        if (const int field = table->find(field::MenuResourceKey);
            field >= 0 && store::isKey(textAt(*values, field)))
            needed.emplace_back(store::findTable(table::MenuResource),
                                store::foldedKey(textAt(*values, field)));
        const auto contents = children.find({table, key}); // of a resource that is needed
        if (contents != children.end() && std::strcmp(table->name, table::MenuResource) == 0)
            for (const RecordKey& content : contents->second)
                if (content.first == &store::contentTable())
                    needed.push_back(content);
        for (const RecordKey& one : needed)
            if (to.find(*one.first, one.second) && !from.find(*one.first, one.second) &&
                records->insert(one).second)
                open.push_back(one);
    }
}

/// What is not written as the newer installation has it.
struct Exceptions {
    std::set<RecordKey> left;   ///< not written at all
    std::set<RecordKey> placed; ///< keep their name and place
    std::map<RecordKey, std::string> names;
};

/// What the exceptions leave of the values that a record has in the newer installation.
Values adjusted(const Exceptions& exceptions, const store::TableDef& table, const std::string& key,
                const Values* old, Values values) {
    const RecordKey record{&table, key};
    const auto name = exceptions.names.find(record);
    const bool placed = old && exceptions.placed.count(record) != 0;
    if (!placed && name == exceptions.names.end())
        return values;
    const store::NamePlaces names(table);
    if (placed)
        for (const int field : {names.name(), names.folder(), names.kind()})
            values[field] = old->at(field);
    else
        values[names.name()] = name->second;
    return values;
}

/// The folders of what is not deleted, or keeps its place, are not deleted.
void keepAbove(const Installation& from, const Installation& to, const store::TableDef& table,
               const Values& values, Exceptions& exceptions) {
    for (const RecordKey& above : recordsAbove(table, values)) {
        const Values* folder = from.find(*above.first, above.second);
        if (folder && !to.find(*above.first, above.second) && exceptions.left.insert(above).second)
            keepAbove(from, to, *above.first, *folder, exceptions);
    }
}

/// Leaves out the deletion of held forms.
void keepHeld(const Installation& from, const Installation& to, const std::set<RecordKey>* wanted,
              const std::set<std::string>& held, Exceptions& exceptions,
              std::map<std::string, bool>* heldBack) {
    const store::TableDef& forms = *store::findTable(table::MenuResource);
    for (const std::string& key : held) {
        const RecordKey form{&forms, key};
        const Values* old = from.find(forms, key);
        if (!old || to.find(forms, key) || (wanted && wanted->count(form) == 0))
            continue;
        (*heldBack)[key] = true;
        exceptions.left.insert(form);
        keepAbove(from, to, forms, *old, exceptions);
    }
}

class Comparing {
public:
    Comparing(const Installation& from, const Installation& to, const Exceptions& exceptions,
              const std::set<std::string>& held, Difference& difference)
        : m_from(from)
        , m_to(to)
        , m_exceptions(exceptions)
        , m_held(held)
        , m_difference(difference) {}

    /// Adds the writes of one kind to a table, of those of its records that are wanted.
    void add(const store::TableDef& table, int flag, const std::set<RecordKey>* wanted) {
        store::TableWrites part;
        part.table = &table;
        const Installation& named = flag == MDX_DELETE ? m_from : m_to;
        for (const auto& [key, values] : named.records(table)) {
            if ((wanted && wanted->count({&table, key}) == 0) ||
                m_exceptions.left.count({&table, key}) != 0)
                continue;
            const Values* old = m_from.find(table, key);
            const Values* made = m_to.find(table, key);
            const int needed = !old ? MDX_INSERT : !made ? MDX_DELETE : MDX_UPDATE;
            if (needed != flag)
                continue;
            if (made && store::NamePlaces::letRename(table)) {
                const Values written = adjusted(m_exceptions, table, key, old, *made);
                add(table, flag, key, old, &written, part);
            } else {
                add(table, flag, key, old, made, part);
            }
        }
        if (!part.writes.empty())
            m_difference.parts.push_back(std::move(part));
    }

    /// Adds writes without a value to the forms and files whose contents alone are written: by
    /// these editors show them anew, and a lock that is taken meanwhile meets them.
    void addEchoes() {
        const store::TableDef& resources = *store::findTable(table::MenuResource);
        for (const store::TableWrites& part : m_difference.parts)
            if (part.table == &resources)
                for (const store::Write& write : part.writes)
                    m_owners.erase(store::foldedKey(write.key));
        store::TableWrites echo;
        echo.table = &resources;
        for (const std::string& owner : m_owners)
            if (m_from.find(resources, owner))
                echo.writes.push_back({MDX_UPDATE, owner, {}});
        if (!echo.writes.empty())
            m_difference.parts.push_back(std::move(echo));
    }

private:
    void add(const store::TableDef& table, int flag, const std::string& key, const Values* old,
             const Values* made, store::TableWrites& part) {
        store::Write write;
        write.flag = flag;
        write.key = textAt(old ? *old : *made, 0);
        Values before, after;
        if (flag == MDX_DELETE)
            before = *old;
        const bool content = &table == &store::contentTable();
        const bool bytes =
            content && made && (!old || m_from.checksumOf(key) != m_to.checksumOf(key));
        if (made)
            for (const auto& [field, value] : *made) {
                const bool same = old && old->at(field) == value;
                const bool withBytes = bytes && field == table.find(field::size);
                if (isLockField(table, field) || (field == 0 && old) || (same && !withBytes))
                    continue;
                after[field] = value;
                if (old)
                    before[field] = old->at(field);
                if (field != 0)
                    write.values.emplace_back(field, value);
            }
        if (flag == MDX_UPDATE && write.values.empty() && !bytes)
            return;
        // Contents go with their form or file.
        if (flag == MDX_DELETE && content && !owner(*old))
            return;
        if (content && (isHeld(old) || isHeld(made)))
            return;
        store::Change change;
        change.code = flag == MDX_INSERT   ? OrvoEventInsert
                      : flag == MDX_DELETE ? OrvoEventDelete
                                           : OrvoEventUpdate;
        change.table = table.name;
        change.key = write.key;
        change.after = jsonOf(table, after);
        change.before = jsonOf(table, before);
        m_difference.changes.push_back(std::move(change));
        part.writes.push_back(std::move(write));
        if (!content)
            return;
        part.bytes.push_back(
            {0, bytes ? std::optional<std::string_view>(m_to.bytesOf(key)) : std::nullopt});
        m_owners.insert(store::foldedKey(ownerKey(made ? *made : *old)));
    }
    static std::string ownerKey(const Values& content) {
        return textAt(content, store::contentTable().find(field::MenuResourceKey));
    }
    /// Whether a content's form is held; notes it.
    bool isHeld(const Values* content) {
        const std::string key = content ? store::foldedKey(ownerKey(*content)) : std::string();
        const bool held = m_held.count(key) != 0;
        if (held)
            m_difference.heldBack.emplace(key, false);
        return held;
    }
    bool owner(const Values& content) const {
        return m_to.find(*store::findTable(table::MenuResource), ownerKey(content)) != nullptr;
    }

    const Installation& m_from;
    const Installation& m_to;
    const Exceptions& m_exceptions;
    const std::set<std::string>& m_held;
    Difference& m_difference;
    std::set<std::string> m_owners; ///< of the contents that are written; folded
};

/// Keeps names apart in what an installation will be.
class Naming {
public:
    /// `wanted`: null: all.
    Naming(const Installation& from, const Installation& to, const std::set<RecordKey>* wanted,
           SameNames rule, Exceptions& exceptions)
        : m_from(from)
        , m_to(to)
        , m_wanted(wanted)
        , m_rule(rule)
        , m_exceptions(exceptions) {}

    /// Adds exceptions until no two records share a name that did not before.
    void settle(std::vector<TakenName>* leftOut) {
        for (bool again = true; again;) { // what keeps its place may stand in the way of others
            again = false;
            for (const store::TableDef& table : store::tables())
                if (store::NamePlaces::letRename(table))
                    again = look(table, leftOut) || again;
        }
    }

private:
    bool look(const store::TableDef& table, std::vector<TakenName>* leftOut) {
        const store::NamePlaces names(table);
        std::map<std::string, std::string> holders; // place to folded key
        std::map<std::string, Values> fresh;        // what gets a new place, by folded key
        for (const auto& [key, values] : m_from.records(table)) {
            const Values* made = m_to.find(table, key);
            const std::string place = names.placeOf(values);
            if (!isWritten({&table, key})) {
                holders.emplace(place, key);
            } else if (made) {
                Values after = adjusted(m_exceptions, table, key, &values, *made);
                if (names.placeOf(after) == place)
                    holders.emplace(place, key);
                else
                    fresh[key] = std::move(after);
            }
        }
        for (const auto& [key, values] : m_to.records(table))
            if (!m_from.find(table, key) && isWritten({&table, key}))
                fresh[key] = adjusted(m_exceptions, table, key, nullptr, values);
        bool changed = false;
        for (auto& [key, values] : fresh) {
            const std::string place = names.placeOf(values);
            const auto [holder, free] = holders.emplace(place, key);
            if (free || place.empty())
                continue;
            changed = true;
            const std::string name = textAt(values, names.name());
            if (m_rule == SameNames::Number) {
                number(names, {&table, key}, values, &holders);
                continue;
            }
            leftOut->push_back(
                {{&table, key}, {&table, holder->second}, name, !m_from.find(table, key)});
            leaveOut({&table, key});
        }
        return changed && m_rule == SameNames::LeaveOut;
    }

    bool isWritten(const RecordKey& record) const {
        return (!m_wanted || m_wanted->count(record) != 0) && m_exceptions.left.count(record) == 0;
    }

    void number(const store::NamePlaces& names, const RecordKey& record, Values& values,
                std::map<std::string, std::string>* holders) {
        const std::string name = textAt(values, names.name());
        for (int number = 2;; ++number) {
            values[names.name()] = names.numbered(name, number);
            if (holders->emplace(names.placeOf(values), record.second).second)
                break;
        }
        m_exceptions.names[record] = textAt(values, names.name());
    }

    void leaveOut(const RecordKey& record) {
        if (const Values* old = m_from.find(*record.first, record.second)) {
            m_exceptions.placed.insert(record);
            keepAbove(m_from, m_to, *record.first, *old, m_exceptions);
            return;
        }
        std::set<RecordKey> branch;
        addBranch(m_to, record, &branch);
        for (const RecordKey& below : branch) {
            if (!m_from.find(*below.first, below.second))
                m_exceptions.left.insert(below);
            else if (store::NamePlaces::letRename(*below.first))
                leaveOut(below); // it was to be moved there
        }
    }

    const Installation& m_from;
    const Installation& m_to;
    const std::set<RecordKey>* const m_wanted;
    const SameNames m_rule;
    Exceptions& m_exceptions;
};

} // namespace

Difference differenceOf(const Installation& from, const Installation& to,
                        const std::optional<RecordKey>& top, bool withUsers, SameNames names,
                        const std::set<std::string>& held) {
    Difference difference;
    std::set<RecordKey> wanted;
    if (top) {
        addBranch(from, *top, &wanted);
        addBranch(to, *top, &wanted);
        addNeeded(from, to, &wanted);
    }
    std::vector<const store::TableDef*> tables = allTables();
    if (!withUsers)
        tables.erase(std::remove(tables.begin(), tables.end(), store::findTable(table::Users)),
                     tables.end());
    Exceptions exceptions;
    keepHeld(from, to, top ? &wanted : nullptr, held, exceptions, &difference.heldBack);
    if (names != SameNames::Stay)
        for (size_t left = 0; left == 0 || left != exceptions.left.size();) {
            Naming(from, to, top ? &wanted : nullptr, names, exceptions)
                .settle(&difference.leftOut);
            left = exceptions.left.size();
            std::vector<Unfit> unfit =
                leaveUnfit(from, to, top ? &wanted : nullptr, exceptions.placed, &exceptions.left);
            difference.unfit.insert(difference.unfit.end(), unfit.begin(), unfit.end());
            if (unfit.empty())
                break;
        }
    Comparing comparing(from, to, exceptions, held, difference);
    for (const int flag : {MDX_INSERT, MDX_UPDATE})
        for (const store::TableDef* table : tables)
            comparing.add(*table, flag, top ? &wanted : nullptr);
    for (auto table = tables.rbegin(); table != tables.rend(); ++table)
        comparing.add(**table, MDX_DELETE, top ? &wanted : nullptr);
    comparing.addEchoes();
    return difference;
}

} // namespace orvo::history
