// Table.h: what stands behind an MDArray.
#ifndef ORVO_PLATFORM_MDX_TABLE_H
#define ORVO_PLATFORM_MDX_TABLE_H

#include "platform/mdx/Handover.h"
#include "platform/mdx/KeyTree.h"
#include "platform/mdx/Record.h"
#include "platform/mdx/Structure.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::mdx {

constexpr size_t maxKeys = 64;

/// Structure, records and keys of one array.
///
/// Keys over the same fields share a tree. The tree of a key that is not unique is built when the
/// key is first asked for, if the key came with a packed image: tables arrive with keys that are
/// often thrown away unused.
///
/// Between two calls all of this holds; checkOrder and checkTrees look at it.
///
///  1. m_order lists the posted records: that at place i has the entry i. A deleted one leaves a
///     hole; m_holes counts them, and none is at the end.
///  2. Each key has a tree, and each tree the number of its keys; a tree is unique if one of them
///     is.
///  3. A tree that is built holds exactly the posted records, with the values they were posted
///     with.
///  4. A unique tree is built, and no two of its records have the same key.
class Table {
public:
    explicit Table(MDArray* owner) : m_records(owner) {}

    /// For a table without records that are not posted: all it has belongs to that array now.
    void setOwner(MDArray* owner) noexcept;

    const Structure* structure() const noexcept { return m_structure.get(); }
    /// Only for a table without records and keys.
    void setStructure(StructureRef structure) noexcept { m_structure = std::move(structure); }
    bool isBlank() const noexcept { return m_keys.empty() && m_order.empty() && !m_hasRecords; }

    // Keys. The functions throw std::bad_alloc and then have changed nothing.

    struct Key {
        std::string description;
        uint32_t flags;
        size_t tree; ///< index of its tree
    };
    const std::vector<Key>& keys() const noexcept { return m_keys; }
    int addKey(std::string_view description, uint32_t flags, bool later);
    void deleteKey(size_t key) noexcept;
    /// The tree of that key, built; null for an unknown key.
    const KeyTree* tree(int key);
    size_t keyMemory() const noexcept;

    // Records

    uint32_t postedCount() const noexcept {
        return static_cast<uint32_t>(m_order.size() - m_holes);
    }
    /// The posted records in the order of their entry.
    std::span<const uint32_t> entries();
    Record* record(uint32_t number) const noexcept { return m_records.at(number); }
    RecordPool& pool() noexcept { return m_records; }
    const RecordPool& pool() const noexcept { return m_records; }

    /// A record that is not posted, with a body of that size whose bytes are still to be filled.
    Record* create(uint32_t bodySize);
    /// A record with all fields NULL.
    Record* createEmpty();
    int post(Record* record);
    void remove(Record* record);
    /// Posts new records, built outside, all at once. Those that a unique key refuses are deleted,
    /// and the result is MDX_E_DUPLICATE; if it throws, all of them are deleted.
    int postAll(std::span<const uint32_t> numbers);
    /// For a table without keys and posted records: enters canonical records one after the other,
    /// and then takes over their numbers in that order.
    static void enter(Record* record, uint32_t entry) noexcept {
        record->entry = entry;
        record->state |= Record::Posted | Record::Canonical;
    }
    void adoptOrder(std::vector<uint32_t> order) noexcept { m_order = std::move(order); }

    /// Look at the invariants above, at those of the posted records, and at those of the trees.
    void checkOrder(FirstBroken& broken) const;
    void checkTrees(FirstBroken& broken) const;

private:
    struct Tree {
        std::unique_ptr<KeyTree> tree;
        bool built;
        bool unique; ///< a key on it is
        unsigned users;
    };

    void build(Tree& tree);
    int postNew(Record* record);
    int postEdited(Record* record);
    void leaveOrder(Record* record) noexcept;
    void compactOrder() noexcept;

    static constexpr uint32_t hole = UINT32_MAX;

    StructureRef m_structure;
    RecordPool m_records;
    bool m_hasRecords = false;     ///< a record has been created
    std::vector<uint32_t> m_order; ///< posted records by entry, with holes of the deleted ones
    size_t m_holes = 0;
    uint32_t m_typicalSize = 0; ///< about what a body takes
    std::vector<Key> m_keys;
    std::vector<Tree> m_trees;
};

/// The array behind the handle.
struct Array final : MDArray {
    std::unique_ptr<Table> table;
    std::unique_ptr<Handover> handover; ///< of another table, in a block of a record; or null

    /// Brings the public counts up to date.
    void publish() noexcept;
    /// Takes over another content.
    void take(std::unique_ptr<Table> other) noexcept;
};

inline Array* arrayOf(MDArray* array) noexcept {
    return static_cast<Array*>(array);
}
inline const Array* arrayOf(const MDArray* array) noexcept {
    return static_cast<const Array*>(array);
}
/// The table of the array a record belongs to.
inline Table& tableOf(const Record* record) noexcept {
    return *arrayOf(record->owner)->table;
}

/// Makes an array without a structure; throws std::bad_alloc.
std::unique_ptr<Array> makeArray();

} // namespace orvo::mdx

#endif
