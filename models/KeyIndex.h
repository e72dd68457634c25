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

/// Open addressing over 32-bit hashes, about 21 bytes a row; rows whose hashes are equal stand
/// aside in sets, so that a key borne by many rows slows nothing else down. Does not own the rows.
class KeyIndex {
public:
    /// Equal for texts that compare equal without regard to case; never 0.
    static uint32_t hash(const QString& key);
    /// The hash of a key column's value; 0 if it has no text, and then it is not to be entered.
    static uint32_t hash(const QVariant& key);
    /// Whether the key column's value is that key, without regard to case.
    static bool isKey(const QVariant& value, const QString& key);

    struct Entry {
        uint32_t hash = 0; ///< 0: empty slot
        void* row = nullptr;
    };

    void insert(uint32_t hash, void* row);
    /// All entries at once, their hashes not 0. The slots of a big table are fetched ahead.
    void insertAll(const std::vector<Entry>& entries);
    /// Nothing happens if the row is not there under that hash.
    void remove(uint32_t hash, void* row);
    void clear();

    /// Calls visit(row) for each row of that hash, in no order.
    template <class Visit>
    void forEach(uint32_t hash, Visit visit) const {
        if (m_slots.empty())
            return;
        const Entry& entry = m_slots[find(hash)];
        if (entry.hash != hash)
            return;
        if (entry.row) {
            visit(entry.row);
            return;
        }
        for (void* row : m_crowds.at(hash))
            visit(row);
    }

private:
    size_t home(uint32_t hash) const { return (uint64_t(hash) * m_slots.size()) >> 32; }
    size_t next(size_t slot) const { return slot + 1 == m_slots.size() ? 0 : slot + 1; }
    /// The slot of the hash, or the empty one where it would stand.
    size_t find(uint32_t hash) const;
    void resize(size_t size);
    void vacate(size_t slot);

    /// Makes room for so many further rows at once.
    void reserve(size_t further);
    void enter(uint32_t hash, void* row);

    std::vector<Entry> m_slots; ///< a row that is null in a used slot: see m_crowds
    size_t m_used = 0;
    std::unordered_map<uint32_t, std::unordered_set<void*>> m_crowds; ///< two rows and more
};

#endif
