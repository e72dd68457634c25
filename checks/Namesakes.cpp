#include "checks/Namesakes.h"

#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <cassert>

namespace orvo::checks {

namespace {

constexpr size_t many = 16; ///< records of one hash, from which on they are a crowd
constexpr size_t few = 8;   ///< below which a crowd is none any more

uint32_t hashOf(const std::string& identity) {
    const size_t hash = std::hash<std::string>()(identity);
    return static_cast<uint32_t>(hash ^ hash >> 32);
}

} // namespace

std::string Namesakes::folderPlace(int kind, std::string_view above, std::string_view caption) {
    return "f\n" + std::to_string(kind) + '\n' + folded(above) + '\n' + folded(caption);
}

std::string Namesakes::filePlace(std::string_view folder, std::string_view name) {
    return "r\n" + std::to_string(int(Kind::File)) + '\n' + folded(folder) + '\n' + folded(name);
}

std::string Namesakes::topPlace(int kind) {
    const char* caption = topCaptionOf(kind);
    return caption ? folderPlace(kind, {}, mdx::toCp1251(caption)) : std::string();
}

std::string Namesakes::identityOf(const Record& record) {
    const Fields& f = fields();
    const store::TableDef* table = &record.table();
    if (table == &f.elements) {
        const std::string_view desktop = record.cp1251(f.element.desktop);
        return desktop.empty()
                   ? std::string()
                   : "e\n" + folded(desktop) + '\n' + folded(record.cp1251(f.element.parent)) +
                         '\n' + std::to_string(record.integer(f.element.order));
    }
    if (table == &f.resources) {
        const std::string_view name = record.cp1251(f.resource.name);
        const int kind = record.integer(f.resource.kind);
        if (name.empty())
            return {};
        // Files are told apart by folder and name, everything else by its name alone.
        return kind == Kind::File ? filePlace(record.cp1251(f.resource.folder), name)
                                  : "r\n" + std::to_string(kind) + "\n\n" + folded(name);
    }
    if (table == &f.folders) {
        const std::string_view caption = record.cp1251(f.folder.caption);
        return caption.empty() ? std::string()
                               : folderPlace(record.integer(f.folder.kind),
                                             record.cp1251(f.folder.parent), caption);
    }
    if (table == &f.desktops)
        return {};
    const bool isUser = table == &f.users;
    const std::string_view name = record.cp1251(isUser ? f.user.login : f.extension.name);
    return name.empty() ? std::string() : (isUser ? "u\n" : "x\n") + folded(name);
}

void Namesakes::clear() {
    m_nodes.clear();
    m_chains.clear();
    m_crowds.clear();
    m_count = 0;
}

void Namesakes::link(uint32_t number) {
    Node& node = m_nodes[number];
    uint32_t& head = m_chains[node.hash & (m_chains.size() - 1)];
    node.previous = none;
    node.next = head;
    if (head != none)
        m_nodes[head].previous = number;
    head = number;
}

void Namesakes::unlink(uint32_t number) {
    const Node& node = m_nodes[number];
    if (node.previous == none)
        m_chains[node.hash & (m_chains.size() - 1)] = node.next;
    else
        m_nodes[node.previous].next = node.next;
    if (node.next != none)
        m_nodes[node.next].previous = node.previous;
}

void Namesakes::grow() {
    m_chains.assign(m_chains.empty() ? 1024 : m_chains.size() * 2, none);
    for (uint32_t number = 0; number < m_nodes.size(); ++number)
        if (m_nodes[number].used && !m_nodes[number].inCrowd)
            link(number);
}

/// Makes a crowd of the records of a chain that have that hash, if they are many.
void Namesakes::gather(const Catalogue& records, uint32_t hash) {
    std::vector<uint32_t> alike;
    for (uint32_t at = m_chains[hash & (m_chains.size() - 1)]; at != none; at = m_nodes[at].next)
        if (m_nodes[at].hash == hash)
            alike.push_back(at);
    if (alike.size() < many)
        return;
    Crowd& crowd = m_crowds[hash];
    for (const uint32_t number : alike) {
        unlink(number);
        m_nodes[number].inCrowd = true;
        crowd.emplace(store::foldedKey(records.at(number).key()), number);
    }
}

void Namesakes::scatter(uint32_t hash) {
    const auto crowd = m_crowds.find(hash);
    for (const auto& [key, number] : crowd->second) {
        m_nodes[number].inCrowd = false;
        link(number);
    }
    m_crowds.erase(crowd);
}

void Namesakes::add(const Catalogue& records, const Record& record) {
    const std::string identity = identityOf(record);
    if (identity.empty())
        return;
    const uint32_t number = record.number();
    if (number >= m_nodes.size())
        m_nodes.resize(std::max<size_t>(size_t(number) + 1, m_nodes.size() * 3 / 2));
    assert(!m_nodes[number].used);
    if (m_count >= m_chains.size())
        grow();
    const uint32_t hash = hashOf(identity);
    m_nodes[number].hash = hash;
    m_nodes[number].used = true;
    ++m_count;
    if (const auto crowd = m_crowds.find(hash); crowd != m_crowds.end()) {
        m_nodes[number].inCrowd = true;
        crowd->second.emplace(store::foldedKey(record.key()), number);
        return;
    }
    link(number);
    gather(records, hash);
}

void Namesakes::remove(const Record& record) {
    const uint32_t number = record.number();
    if (number >= m_nodes.size() || !m_nodes[number].used)
        return;
    const Node node = m_nodes[number];
    if (node.inCrowd) {
        Crowd& crowd = m_crowds[node.hash];
        crowd.erase({store::foldedKey(record.key()), number});
        if (crowd.size() < few)
            scatter(node.hash);
    } else {
        unlink(number);
    }
    m_nodes[number] = {};
    --m_count;
}

void Namesakes::forEach(const Catalogue& records, const std::string& identity,
                        const std::function<bool(const Record&)>& each) const {
    if (m_chains.empty() || identity.empty())
        return;
    const uint32_t hash = hashOf(identity);
    if (const auto crowd = m_crowds.find(hash); crowd != m_crowds.end()) {
        for (const auto& [key, number] : crowd->second)
            if (const Record record = records.at(number);
                identityOf(record) == identity && !each(record))
                return;
        return;
    }
    for (uint32_t at = m_chains[hash & (m_chains.size() - 1)]; at != none; at = m_nodes[at].next)
        if (m_nodes[at].hash == hash)
            if (const Record record = records.at(at);
                identityOf(record) == identity && !each(record))
                return;
}

Namesakes::First Namesakes::first(const Catalogue& records, const std::string& identity) const {
    First found;
    if (!identity.empty() && m_crowds.count(hashOf(identity)) > 0) {
        forEach(records, identity, [&](const Record& record) { // by their keys
            (found.owner ? found.next : found.owner) = record;
            return !found.next;
        });
        return found;
    }
    std::string ownerKey, nextKey;
    forEach(records, identity, [&](const Record& record) {
        std::string key = store::foldedKey(record.key());
        if (!found.owner || key < ownerKey) {
            found.next = std::exchange(found.owner, record);
            nextKey = std::exchange(ownerKey, std::move(key));
        } else if (!found.next || key < nextKey) {
            found.next = record;
            nextKey = std::move(key);
        }
        return true;
    });
    return found;
}

const char* Namesakes::check(const Catalogue& records) const {
    if (m_count > m_chains.size())
        return "2: there are fewer chains than records";
    std::vector<uint32_t> places(m_nodes.size(), 0);
    for (size_t chain = 0; chain < m_chains.size(); ++chain) {
        uint32_t before = none;
        for (uint32_t at = m_chains[chain]; at != none; before = at, at = m_nodes[at].next)
            if (m_nodes[at].previous != before || m_nodes[at].inCrowd || ++places[at] > 1 ||
                (m_nodes[at].hash & (m_chains.size() - 1)) != chain)
                return "1: a chain is broken";
    }
    for (const auto& [hash, crowd] : m_crowds) {
        if (crowd.size() < few)
            return "3: few records are a crowd";
        for (const auto& [key, number] : crowd)
            if (number >= m_nodes.size() || m_nodes[number].hash != hash ||
                !m_nodes[number].inCrowd || ++places[number] > 1 ||
                key != store::foldedKey(records.at(number).key()))
                return "3: a crowd has what it must not";
    }
    size_t count = 0;
    for (uint32_t number = 0; number < records.numberEnd(); ++number) {
        const Record record = records.at(number);
        const std::string identity = record ? identityOf(record) : std::string();
        const bool isThere = number < m_nodes.size() && m_nodes[number].used;
        if (isThere == identity.empty() || (isThere && m_nodes[number].hash != hashOf(identity)) ||
            (isThere && places[number] != 1))
            return "1: a record is not in the one place that it belongs to";
        count += isThere ? 1 : 0;
    }
    return count == m_count ? nullptr : "1: the records are not as many as were counted";
}

} // namespace orvo::checks
