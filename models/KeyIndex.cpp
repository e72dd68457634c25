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
    const QString text = isText ? *static_cast<const QString*>(key.constData()) : key.toString();
    return {text.isEmpty() ? 0 : hash(text), row};
}

size_t KeyIndex::find(uint32_t hash) const {
    size_t slot = home(hash);
    while (m_hashes[slot] != 0 && m_hashes[slot] != hash)
        slot = next(slot);
    return slot;
}

void KeyIndex::insert(const Entry& entry) {
    if (entry.hash == 0)
        return;
    reserve(1);
    enter(entry);
}

void KeyIndex::insertAll(const std::vector<Entry>& entries) {
    reserve(entries.size());
    constexpr size_t ahead = 12;
    for (size_t i = 0; i < entries.size(); ++i) {
        if (i + ahead < entries.size()) {
            const size_t slot = home(entries[i + ahead].hash);
            __builtin_prefetch(&m_hashes[slot], 1);
            __builtin_prefetch(&m_rows[slot], 1);
        }
        if (entries[i].hash != 0)
            enter(entries[i]);
    }
}

void KeyIndex::enter(const Entry& entry) {
    Q_ASSERT(entry.row && m_used < m_hashes.size()); // 1: an empty slot ends every search
    const size_t slot = find(entry.hash);
    if (m_hashes[slot] == 0) {
        m_hashes[slot] = entry.hash;
        m_rows[slot] = entry.row;
        ++m_used;
        return;
    }
    auto& crowd = m_crowds[entry.hash];
    if (m_rows[slot])
        crowd.insert(std::exchange(m_rows[slot], nullptr));
    crowd.insert(entry.row);
}

void KeyIndex::remove(const Entry& entry) {
    if (m_hashes.empty() || entry.hash == 0)
        return;
    const size_t slot = find(entry.hash);
    if (m_hashes[slot] == 0)
        return;
    if (m_rows[slot] == entry.row) {
        vacate(slot);
        return;
    }
    const auto crowd = m_crowds.find(entry.hash);
    if (crowd == m_crowds.end())
        return;
    crowd->second.erase(entry.row);
    if (crowd->second.size() == 1) {
        m_rows[slot] = *crowd->second.begin();
        m_crowds.erase(crowd);
    }
}

/// Closes the gap by moving back the entries that stand behind it only because it was taken.
void KeyIndex::vacate(size_t gap) {
    for (size_t slot = next(gap); m_hashes[slot] != 0; slot = next(slot)) {
        const size_t wanted = home(m_hashes[slot]);
        const bool staysBehindGap =
            gap < slot ? wanted > gap && wanted <= slot : wanted > gap || wanted <= slot;
        if (staysBehindGap)
            continue;
        m_hashes[gap] = m_hashes[slot];
        m_rows[gap] = m_rows[slot];
        gap = slot;
    }
    m_hashes[gap] = 0;
    m_rows[gap] = nullptr;
    --m_used;
}

void KeyIndex::clear() {
    m_hashes = {};
    m_rows = {};
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
    for (size_t i = 0; i < m_hashes.size(); ++i) {
        if (m_hashes[i] == 0) {
            if (m_rows[i])
                return "key index 3: a row in an empty slot";
            continue;
        }
        ++used;
        if (find(m_hashes[i]) != i)
            return "key index 2: a slot that its hash does not lead to";
        crowded += m_rows[i] ? 0 : 1;
        if (!m_rows[i] && m_crowds.count(m_hashes[i]) == 0)
            return "key index 3: what a slot holds";
    }
    if (used != m_used || used * 4 > m_hashes.size() * 3)
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
    if (wanted * 4 > m_hashes.size() * 3)
        resize(std::max({wanted + wanted / 3 + 1, m_hashes.size() * 3 / 2, size_t(16)}));
}

void KeyIndex::resize(size_t size) {
    std::vector<uint32_t> hashes(size);
    std::vector<void*> rows(size);
    hashes.swap(m_hashes);
    rows.swap(m_rows);
    for (size_t i = 0; i < hashes.size(); ++i) {
        if (hashes[i] == 0)
            continue;
        const size_t slot = find(hashes[i]);
        m_hashes[slot] = hashes[i];
        m_rows[slot] = rows[i];
    }
}

} // namespace orvo
