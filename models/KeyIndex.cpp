#include "models/KeyIndex.h"

#include <QChar>

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvo {

namespace {

/// The folding of QString::compare: code unit by code unit, a low surrogate together with the high
/// one before it.
uint folded(ushort unit, ushort before) {
    if (unit < 0x80)
        return unit >= 'A' && unit <= 'Z' ? uint(unit) + ('a' - 'A') : unit;
    if (QChar::isLowSurrogate(unit) && QChar::isHighSurrogate(before))
        return QChar::toCaseFolded(QChar::surrogateToUcs4(before, unit));
    return QChar::toCaseFolded(uint(unit));
}

/// Up to four folded code units, one in each 16 bits.
uint64_t foldedUnits(const QChar* text, int from, int to) {
    uint64_t units = 0;
    for (int i = from; i < to; ++i) {
        const ushort before = i > 0 ? text[i - 1].unicode() : ushort(0);
        const uint64_t unit = folded(text[i].unicode(), before) & 0xffffu;
        units |= unit << (16 * (i - from));
    }
    return units;
}

/// The same for four units below 0x80: 0x20 is added to those from 'A' to 'Z'.
uint64_t foldedAscii(uint64_t units) {
    constexpr uint64_t each = 0x0001000100010001u;
    const uint64_t fromA = units + (0x80 - 'A') * each;
    const uint64_t behindZ = units + (0x80 - 'Z' - 1) * each;
    return units + ((fromA & ~behindZ & (0x80 * each)) >> 2);
}

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "units are packed as they lie in memory");

} // namespace

uint32_t KeyIndex::hash(const QString& key) {
    const QChar* text = key.constData();
    const int length = key.size();
    uint64_t h = static_cast<uint64_t>(length) * 0x9e3779b97f4a7c15u;
    for (int at = 0; at < length; at += 4) {
        uint64_t four = 0;
        if (length - at >= 4)
            std::memcpy(&four, text + at, sizeof four);
        if (length - at >= 4 && (four & 0xff80ff80ff80ff80u) == 0)
            four = foldedAscii(four);
        else
            four = foldedUnits(text, at, std::min(at + 4, length));
        h = (h ^ four) * 0xff51afd7ed558ccdu;
        h ^= h >> 32;
    }
    h *= 0xc4ceb9fe1a85ec53u;
    const auto upper = static_cast<uint32_t>(h >> 32);
    return upper ? upper : 1;
}

KeyIndex::Entry KeyIndex::entry(void* row, const QVariant& key) {
    const bool isText = key.userType() == QMetaType::QString;
    Entry entry;
    entry.row = row;
    entry.key = isText ? *static_cast<const QString*>(key.constData()) : key.toString();
    entry.hash = entry.key.isEmpty() ? 0 : hash(entry.key);
    return entry;
}

size_t KeyIndex::find(uint32_t hash) const {
    size_t slot = home(hash);
    while (m_slots[slot].hash != 0 && m_slots[slot].hash != hash)
        slot = next(slot);
    return slot;
}

void KeyIndex::insert(Entry entry) {
    if (entry.hash == 0)
        return;
    reserve(1);
    enter(std::move(entry));
}

void KeyIndex::insertAll(std::vector<Entry> entries) {
    reserve(entries.size());
    constexpr size_t ahead = 12;
    for (size_t i = 0; i < entries.size(); ++i) {
        if (i + ahead < entries.size())
            __builtin_prefetch(&m_slots[home(entries[i + ahead].hash)], 1);
        if (entries[i].hash != 0)
            enter(std::move(entries[i]));
    }
}

void KeyIndex::enter(Entry entry) {
    Q_ASSERT(entry.row && m_used < m_slots.size()); // 1: an empty slot ends every search
    Entry& slot = m_slots[find(entry.hash)];
    if (slot.hash == 0) {
        slot = std::move(entry);
        ++m_used;
        return;
    }
    auto& crowd = m_crowds[entry.hash];
    if (slot.row)
        crowd.emplace(std::exchange(slot.row, nullptr), std::exchange(slot.key, QString()));
    crowd.emplace(entry.row, std::move(entry.key));
}

void KeyIndex::remove(const Entry& entry) {
    if (m_slots.empty() || entry.hash == 0)
        return;
    const size_t at = find(entry.hash);
    Entry& slot = m_slots[at];
    if (slot.hash == 0)
        return;
    if (slot.row == entry.row) {
        vacate(at);
        return;
    }
    const auto crowd = m_crowds.find(entry.hash);
    if (crowd == m_crowds.end())
        return;
    crowd->second.erase(entry.row);
    if (crowd->second.size() == 1) {
        slot.row = crowd->second.begin()->first;
        slot.key = crowd->second.begin()->second;
        m_crowds.erase(crowd);
    }
}

/// Closes the gap by moving back the entries that stand behind it only because it was taken.
void KeyIndex::vacate(size_t gap) {
    for (size_t slot = next(gap); m_slots[slot].hash != 0; slot = next(slot)) {
        const size_t wanted = home(m_slots[slot].hash);
        const bool staysBehindGap =
            gap < slot ? wanted > gap && wanted <= slot : wanted > gap || wanted <= slot;
        if (staysBehindGap)
            continue;
        m_slots[gap] = std::move(m_slots[slot]);
        gap = slot;
    }
    m_slots[gap] = {};
    --m_used;
}

void KeyIndex::clear() {
    m_slots.clear();
    m_slots.shrink_to_fit();
    m_crowds.clear();
    m_used = 0;
}

size_t KeyIndex::count() const {
    size_t rows = m_used - m_crowds.size();
    for (const auto& [hash, crowd] : m_crowds)
        rows += crowd.size();
    return rows;
}

const char* KeyIndex::check() const {
    size_t used = 0;
    size_t crowded = 0;
    for (size_t i = 0; i < m_slots.size(); ++i) {
        const Entry& slot = m_slots[i];
        if (slot.hash == 0)
            continue;
        ++used;
        if (find(slot.hash) != i)
            return "key index 2: a slot that its hash does not lead to";
        crowded += slot.row ? 0 : 1;
        if (slot.row ? hash(slot.key) != slot.hash : m_crowds.count(slot.hash) == 0)
            return "key index 3: what a slot holds";
    }
    if (used != m_used || used * 4 > m_slots.size() * 3)
        return "key index 1: number of used slots";
    if (crowded != m_crowds.size())
        return "key index 3: a crowd without a slot";
    for (const auto& [hash, crowd] : m_crowds) {
        if (crowd.size() < 2)
            return "key index 3: a crowd of one";
    }
    return nullptr;
}

void KeyIndex::reserve(size_t further) {
    const size_t wanted = m_used + further;
    if (wanted * 4 > m_slots.size() * 3)
        resize(std::max({wanted + wanted / 3 + 1, m_slots.size() * 2, size_t(16)}));
}

void KeyIndex::resize(size_t size) {
    std::vector<Entry> old(size);
    old.swap(m_slots);
    for (Entry& entry : old) {
        if (entry.hash != 0)
            m_slots[find(entry.hash)] = std::move(entry);
    }
}

} // namespace orvo
