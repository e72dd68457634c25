#include "history/Unfit.h"

#include "frame/Vocabulary.h"
#include "history/Fitting.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/Names.h"

#include <cstring>
#include <functional>

namespace orvo::history {

namespace {

class Leaving {
public:
    Leaving(const Installation& from, const Installation& to, const std::set<RecordKey>* wanted,
            const std::set<RecordKey>& placed, std::set<RecordKey>& left)
        : m_from(from)
        , m_to(to)
        , m_wanted(wanted)
        , m_placed(placed)
        , m_left(left) {}

    std::vector<Unfit> leave() {
        keepTopFolders();
        for (bool again = true; again;) { // what is left may be named, or be missed by others
            again = false;
            for (const store::TableDef& table : store::tables())
                forEach(table, [&](const std::string& key, const Values& values) {
                    again = keepNamed({&table, key}, values) || again;
                    again = leaveOut({&table, key}, values) || again;
                });
        }
        return std::move(m_unfit);
    }

private:
    using See = std::function<void(const std::string& key, const Values& values)>;
    struct Link {
        RecordKey target;
        int field;
        bool places;
    };

    bool isWritten(const RecordKey& record) const {
        return (!m_wanted || m_wanted->count(record) != 0) && m_left.count(record) == 0;
    }
    /// The values that the record will have; null: it will not be there.
    const Values* then(const RecordKey& record) const {
        return (isWritten(record) ? m_to : m_from).find(*record.first, record.second);
    }
    void forEach(const store::TableDef& table, const See& see) const {
        for (const auto& [key, old] : m_from.records(table))
            if (const Values* values = then({&table, key}))
                see(key, *values);
        for (const auto& [key, made] : m_to.records(table))
            if (!m_from.find(table, key))
                if (const Values* values = then({&table, key}))
                    see(key, *values);
    }
    static std::vector<Link> linksOf(const store::TableDef& table, const Values& values) {
        std::vector<Link> links;
        const auto add = [&](const char* field, const char* target, bool places) {
            const int number = table.find(field);
            const auto value = values.find(number);
            if (value != values.end() && store::isKey(store::textOf(value->second)))
                links.push_back(
                    {{store::findTable(target), store::foldedKey(store::textOf(value->second))},
                     number,
                     places});
        };
        for (const store::ParentField& parent : store::parentFields(table))
            add(parent.field, parent.table, true);
        if (std::strcmp(table.name, table::Menu) == 0)
            add(field::MenuResourceKey, table::MenuResource, false);
        return links;
    }

    static Misfit misfitOf(const store::TableDef& table, const Link& link, const Values& values,
                           const Values& above) {
        const auto bond = values.find(bondField(table, link.field));
        return link.places
                   ? history::misfitOf(table, link.field,
                                       bond == values.end() ? store::Value() : bond->second, above)
                   : Misfit::None;
    }
    /// Whether the older installation has it like that.
    bool wasSo(const RecordKey& record, const Link& link, Misfit misfit) const {
        const Values* old = m_from.find(*record.first, record.second);
        if (!old || store::foldedKey(store::textOf(old->at(link.field))) != link.target.second)
            return false;
        const Values* above = m_from.find(*link.target.first, link.target.second);
        return above
                   ? misfit != Misfit::None && misfitOf(*record.first, link, *old, *above) == misfit
                   : misfit == Misfit::None;
    }

    /// Keeps those that would be deleted or renamed, unless another record becomes what they are.
    void keepTopFolders() {
        const store::TableDef& folders = *store::findTable(table::MenuResourceFolder);
        const store::NamePlaces names(folders);
        std::set<std::string> places;
        forEach(folders, [&](const std::string&, const Values& values) {
            places.insert(names.placeOf(values));
        });
        for (const auto& [key, values] : m_from.records(folders)) {
            if (!isTopFolder(folders, values) || places.count(names.placeOf(values)) != 0)
                continue;
            const RecordKey folder{&folders, key};
            m_left.insert(folder);
            m_unfit.push_back({folder, Unfit::TopFolder, folder, -1, false});
        }
    }

    /// Keeps what the record names and would be deleted.
    bool keepNamed(const RecordKey& record, const Values& values) {
        bool changed = false;
        for (const Link& link : linksOf(*record.first, values)) {
            if (then(link.target) || !m_from.find(*link.target.first, link.target.second))
                continue;
            const Values* wanted = m_to.find(*record.first, record.second);
            if (wanted == &values) // nor has it that in what is brought
                continue;
            m_left.insert(link.target);
            if (!link.places || m_left.count(record) == 0) // else it is clear why
                m_unfit.push_back({link.target, Unfit::StillNamed, record, link.field, false});
            changed = true;
        }
        return changed;
    }

    /// Leaves out the record if it cannot be so.
    bool leaveOut(const RecordKey& record, const Values& values) {
        if (m_to.find(*record.first, record.second) != &values || m_placed.count(record) != 0)
            return false;
        const bool isNew = !m_from.find(*record.first, record.second);
        for (const Link& link : linksOf(*record.first, values)) {
            const Values* made = m_to.find(*link.target.first, link.target.second);
            const Values* target = then(link.target);
            if (!made || made == target)
                continue;
            const Misfit misfit =
                target ? misfitOf(*record.first, link, values, *target) : Misfit::None;
            if (target &&
                (misfit == Misfit::None || misfitOf(*record.first, link, values, *made) == misfit))
                continue;
            if (wasSo(record, link, misfit))
                continue;
            m_left.insert(record);
            if (target || !link.places) // else what is above it is told of
                m_unfit.push_back({record,
                                   !target                      ? Unfit::NoResource
                                   : misfit == Misfit::NoFolder ? Unfit::NoFolder
                                                                : Unfit::Elsewhere,
                                   link.target, link.field, isNew});
            return true;
        }
        return false;
    }

    const Installation& m_from;
    const Installation& m_to;
    const std::set<RecordKey>* const m_wanted;
    const std::set<RecordKey>& m_placed;
    std::set<RecordKey>& m_left;
    std::vector<Unfit> m_unfit;
};

} // namespace

std::vector<Unfit> leaveUnfit(const Installation& from, const Installation& to,
                              const std::set<RecordKey>* wanted, const std::set<RecordKey>& placed,
                              std::set<RecordKey>* left) {
    return Leaving(from, to, wanted, placed, *left).leave();
}

} // namespace orvo::history
