// KeyIndex.h: from the hash of a row's key to the rows that have it. Part of the tree-model core.
#ifndef ORVO_MODELS_KEYINDEX_H
#define ORVO_MODELS_KEYINDEX_H

#include <QString>
#include <QVariant>

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// Open addressing over 32-bit hashes, 16 bytes a row; rows whose hashes are equal stand aside in
/// sets, so that a key borne by many rows slows nothing else down. Does not own the rows.
class KeyIndex {
public:
    /// Equal for texts that compare equal without regard to case; never 0.
    static uint32_t hash(const QString& key);
    /// The hash of a key column's value; 0 if it has no text, and then it is not to be entered.
    static uint32_t hash(const QVariant& key);

    void insert(uint32_t hash, void* row);
    /// Nothing happens if the row is not there under that hash.
    void remove(uint32_t hash, void* row);
    void clear();
    /// Makes room for so many further rows at once.
    void reserve(size_t further);

    /// Calls visit(row) for each row of that hash, in no order.
    template <class Visit>
    void forEach(uint32_t hash, Visit visit) const {
        if (m_hashes.empty())
            return;
        const size_t slot = find(hash);
        if (m_hashes[slot] != hash)
            return;
        if (m_rows[slot]) {
            visit(m_rows[slot]);
            return;
        }
        for (void* row : m_crowds.at(hash))
            visit(row);
    }

private:
    size_t home(uint32_t hash) const { return (uint64_t(hash) * m_hashes.size()) >> 32; }
    size_t next(size_t slot) const { return slot + 1 == m_hashes.size() ? 0 : slot + 1; }
    /// The slot of the hash, or the empty one where it would stand.
    size_t find(uint32_t hash) const;
    void resize(size_t size);
    void vacate(size_t slot);

    std::vector<uint32_t> m_hashes; ///< 0: empty slot
    std::vector<void*> m_rows;      ///< null in a used slot: see m_crowds
    size_t m_used = 0;
    std::unordered_map<uint32_t, std::unordered_set<void*>> m_crowds; ///< two rows and more
};

#endif
