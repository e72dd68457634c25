#include "models/KeyIndex.h"

#include <QChar>

#include <algorithm>

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

} // namespace

uint32_t KeyIndex::hash(const QString& key) {
    uint32_t h = 0x811c9dc5u;
    ushort before = 0;
    for (const QChar c : key) {
        h = (h ^ folded(c.unicode(), before)) * 0x01000193u;
        before = c.unicode();
    }
    h ^= h >> 16;
    h *= 0x85ebca6bu;
    h ^= h >> 13;
    h *= 0xc2b2ae35u;
    h ^= h >> 16;
    return h ? h : 1;
}

uint32_t KeyIndex::hash(const QVariant& key) {
    if (key.userType() == QMetaType::QString) {
        const QString& text = *static_cast<const QString*>(key.constData());
        return text.isEmpty() ? 0 : hash(text);
    }
    const QString text = key.toString();
    return text.isEmpty() ? 0 : hash(text);
}

size_t KeyIndex::find(uint32_t hash) const {
    size_t slot = home(hash);
    while (m_hashes[slot] != 0 && m_hashes[slot] != hash)
        slot = next(slot);
    return slot;
}

void KeyIndex::insert(uint32_t hash, void* row) {
    reserve(1);
    const size_t slot = find(hash);
    if (m_hashes[slot] == 0) {
        m_hashes[slot] = hash;
        m_rows[slot] = row;
        ++m_used;
        return;
    }
    auto& crowd = m_crowds[hash];
    if (m_rows[slot]) {
        crowd.insert(m_rows[slot]);
        m_rows[slot] = nullptr;
    }
    crowd.insert(row);
}

void KeyIndex::remove(uint32_t hash, void* row) {
    if (m_hashes.empty())
        return;
    const size_t slot = find(hash);
    if (m_hashes[slot] == 0)
        return;
    if (m_rows[slot] == row) {
        vacate(slot);
        return;
    }
    const auto crowd = m_crowds.find(hash);
    if (crowd == m_crowds.end())
        return;
    crowd->second.erase(row);
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
    m_hashes.clear();
    m_rows.clear();
    m_hashes.shrink_to_fit();
    m_rows.shrink_to_fit();
    m_crowds.clear();
    m_used = 0;
}

void KeyIndex::reserve(size_t further) {
    const size_t wanted = m_used + further;
    if (wanted * 4 > m_hashes.size() * 3)
        resize(std::max({wanted + wanted / 3 + 1, m_hashes.size() * 2, size_t(16)}));
}

void KeyIndex::resize(size_t size) {
    std::vector<uint32_t> hashes(size, 0);
    std::vector<void*> rows(size, nullptr);
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
