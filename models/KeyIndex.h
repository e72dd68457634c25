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

namespace orvo {

/// Open addressing over 32-bit hashes, about 20 bytes a row. It keeps no keys, which the rows have:
/// two keys may have one hash, and whoever searches compares. Rows whose hashes are equal stand
/// aside, so that a key borne by many rows slows nothing else down. Does not own the rows.
///
/// Between two calls all of this holds; check() looks at it.
///
///  1. m_used counts the slots with a hash; they are at most three quarters of all.
///  2. No hash has two slots, and none of the slots from its home to its own is empty.
///  3. A slot of one row holds that row. A hash of two and more rows has a slot without a row, and
///     they are all in m_crowds, which holds nothing else.
class KeyIndex {
public:
    struct Entry {
        uint32_t hash = 0; ///< 0: a row without a key
        void* row = nullptr;
    };

    /// Equal for texts that compare equal without regard to case; never 0.
    static uint32_t hash(const QString& key);
    /// The entry of a row with that value in the key column.
    static Entry entry(void* row, const QVariant& key);

    /// A row without a key is not entered.
    void insert(const Entry& entry);
    /// All at once; the slots of a big table are fetched ahead.
    void insertAll(const std::vector<Entry>& entries);
    /// Nothing happens if the row is not there with that hash.
    void remove(const Entry& entry);
    void clear();
    /// Rows entered.
    size_t count() const;
    /// The first invariant that does not hold; null if all do. For tests: it looks at every slot.
    const char* check() const;

    /// Calls visit(row), in no order, for each row with the hash of that key: for all rows of the
    /// key, without regard to case, and perhaps for some of another one.
    template <class Visit>
    void forEachCandidate(const QString& key, Visit visit) const {
        if (m_hashes.empty())
            return;
        const uint32_t hashed = hash(key);
        const size_t slot = find(hashed);
        if (m_hashes[slot] != hashed)
            return;
        if (m_rows[slot]) {
            visit(m_rows[slot]);
            return;
        }
        for (void* row : m_crowds.at(hashed))
            visit(row);
    }

private:
    size_t home(uint32_t hash) const { return (uint64_t(hash) * m_hashes.size()) >> 32; }
    size_t next(size_t slot) const { return slot + 1 == m_hashes.size() ? 0 : slot + 1; }
    /// The slot of the hash, or the empty one where it would stand.
    size_t find(uint32_t hash) const;
    /// Makes room for so many further rows at once.
    void reserve(size_t further);
    void resize(size_t size);
    void enter(const Entry& entry);
    void vacate(size_t slot);

    std::vector<uint32_t> m_hashes; ///< by slot; 0: empty
    std::vector<void*> m_rows;      ///< by slot; null in a used slot: see m_crowds
    size_t m_used = 0;
    std::unordered_map<uint32_t, std::unordered_set<void*>> m_crowds; ///< two and more
};

} // namespace orvo

#endif
