// KeyTree.h: one key of an array: a counted B+ tree of record numbers.
//
// A node keeps what its keys have in common (their images' first bytes) once, and beside each
// 4-byte record number the next eight bytes of its image as a number, so that most searches of a
// node touch no record. Inner nodes count the records below each child. The order is total: image,
// then entry into the array (KeyFields.h), so a record is found in O(log n) among any number of
// equal ones.
#ifndef ORVO_PLATFORM_MDX_KEYTREE_H
#define ORVO_PLATFORM_MDX_KEYTREE_H

#include "platform/mdx/FirstBroken.h"
#include "platform/mdx/KeyFields.h"
#include "platform/mdx/Record.h"

#include <span>

namespace orvo::mdx {

/// Between two calls all of this holds; check() looks at it.
///
///  1. The leaves form a chain from m_first on, each with 1 to nodeEntries records; m_size counts
///     the records of all. Without records there is no node, and m_height is 0.
///  2. All leaves are m_height levels below the root, and every inner node has 1 to nodeEntries
///     children.
///  3. The records are posted ones, ascending by the image of their posted body and then by entry.
///  4. All images of a leaf begin with its prefix (a short image as if zeros followed), and beside
///     each number stand the eight bytes behind the prefix.
///  5. Separator i > 0 of an inner node is the first record below child i, with prefix and word as
///     in a leaf; before[i] counts the records below the children to its left, total those below
///     all.
///  6. Every node taken from m_pages is in the tree or in one of the two free lists, whose lengths
///     are counted. After prepareInsert they hold what one insertion can need.
///  7. m_scanLeaf is null, or a leaf of the tree whose first record has the position m_scanStart.
class KeyTree {
public:
    /// The tree reads records from `pool`, which must outlive it.
    KeyTree(const RecordPool& pool, KeyFields fields);
    ~KeyTree();
    KeyTree(const KeyTree&) = delete;
    KeyTree& operator=(const KeyTree&) = delete;

    const KeyFields& fields() const noexcept { return m_fields; }
    uint32_t size() const noexcept { return m_size; }

    /// Builds the empty tree over these records, given in their order of entry. False, and the tree
    /// stays empty, if `unique` and two have the same key. Throws std::bad_alloc.
    bool build(std::span<const uint32_t> records, bool unique);
    /// Whether no two records have the same key.
    bool isUnique() const;

    /// The record at that position, or null.
    Record* at(uint32_t position) const noexcept;
    /// The first record whose key equals the values, or null; `*position`, if given, receives the
    /// position of the first record not less than the values, or -1. Throws std::bad_alloc.
    Record* seek(const MDRVar* values, int32_t* position) const;
    /// All record numbers in key order, handed to `visit`.
    template <class Visit>
    void forEach(Visit&& visit) const;

    // Changes go in two steps, so that a change to all keys of an array either happens or does not:
    // the preparing ones may throw and change nothing, the others cannot fail.

    /// Notes the present image of the record's posted body as the one to be erased.
    void prepareErase(const Record* record);
    /// Notes the image of the record's own body as the one to be inserted, and gets the memory.
    void prepareInsert(const Record* record);
    /// Whether the two noted images are the same.
    bool sameImages() const noexcept;
    /// Whether another record has the key noted by prepareInsert.
    bool conflicts(const Record* record) noexcept;
    void erase(const Record* record) noexcept;
    void insert(const Record* record) noexcept;

    /// Looks at every invariant above.
    void check(FirstBroken& broken) const;

    /// Bytes of memory the nodes take.
    size_t memory() const noexcept;

    static constexpr unsigned nodeEntries = 128;

private:
    struct Node;
    struct Leaf;
    struct Inner;
    struct Step {
        Inner* node;
        unsigned index;
    };
    struct Path {
        Step steps[12]; // nodes of at least two children: more than 32 bits of records need not be
        unsigned depth = 0;
    };
    struct Query {
        const uint8_t* image;
        size_t size;
        uint32_t entry; ///< noEntry: before all records that begin with the image
    };
    struct Found {
        Leaf* leaf;
        unsigned index;
        bool equal; ///< the record there is the one sought
    };
    static constexpr uint32_t noEntry = UINT32_MAX;

    friend class KeyBuilder;
    friend class KeyTreeCheck;

    int compare(const Query& query, uint32_t number, size_t from, bool& equal) const noexcept;
    unsigned lowerBound(const Node& node, const uint32_t* numbers, const uint64_t* words,
                        unsigned first, const Query& query, bool& equal) const noexcept;
    unsigned childFor(const Inner& node, const Query& query) const noexcept;
    Leaf* descend(const Query& query, Path* path, uint32_t* before) const noexcept;
    Found find(const Query& query, Path* path, uint32_t* position) const noexcept;
    bool startsWith(uint32_t number, const Query& query) const noexcept;

    size_t imageStart(uint32_t number, uint8_t* out) const noexcept;
    void shrinkPrefix(Node& node, uint64_t* words, unsigned common) const noexcept;
    uint64_t wordFor(Node& node, uint64_t* words, const uint8_t* start) const noexcept;
    void setWords(Inner& node) const noexcept;
    void tighten(Node& node, uint32_t* numbers, uint64_t* words, unsigned first) const noexcept;
    void setSeparator(Inner& node, unsigned index, uint32_t number) noexcept;
    void setFirst(const Path& path, unsigned depth, uint32_t number) noexcept;
    void split(Path& path, Leaf*& leaf, unsigned& index) noexcept;
    void insertChild(Path& path, unsigned depth, Node* child, uint32_t number) noexcept;
    void removeChild(Path& path, unsigned depth) noexcept;
    void mergeLeaf(Path& path) noexcept;
    static void recount(Inner& node) noexcept;
    static uint32_t total(const Node* node) noexcept;
    static bool countsAdd(const Inner& node) noexcept;

    void reserveNodes();
    void freeLeaf(Leaf* leaf) noexcept;
    void freeInner(Inner* inner) noexcept;
    Leaf* takeLeaf() noexcept;
    Inner* takeInner() noexcept;
    void growLeaves(size_t count);
    void growInners(size_t count);

    const RecordPool& m_pool;
    KeyFields m_fields;
    Node* m_root = nullptr; ///< null while empty
    Leaf* m_first = nullptr;
    uint32_t m_size = 0;
    unsigned m_height = 0; ///< levels of inner nodes

    Pages m_pages;
    Node* m_freeLeaves = nullptr;
    Node* m_freeInners = nullptr;
    size_t m_freeLeafCount = 0, m_freeInnerCount = 0;
    size_t m_leafCount = 0, m_innerCount = 0;

    ImageBuffer m_old, m_new;
    size_t m_newKey = 0; ///< size of the key's own part of m_new
    mutable ImageBuffer m_seek;
    mutable Leaf* m_scanLeaf = nullptr; ///< where at() was last
    mutable uint32_t m_scanStart = 0;
};

struct KeyTree::Node {
    static constexpr unsigned maxPrefix = 64;

    uint16_t count;
    uint8_t prefixSize;
    bool isLeaf;
    uint32_t total; ///< records below, of an inner node
    Node* next;     ///< the leaf to the right, or the next free node
    uint8_t prefix[maxPrefix];
};

struct alignas(64) KeyTree::Leaf : Node {
    uint64_t words[nodeEntries];
    uint32_t numbers[nodeEntries];
    Leaf* previous;
};

/// Child i holds the records from separator i on; that is always its first record. Separator 0 is
/// not looked at.
struct alignas(64) KeyTree::Inner : Node {
    uint64_t words[nodeEntries];
    uint32_t numbers[nodeEntries];
    uint32_t before[nodeEntries]; ///< records in the children to the left
    Node* children[nodeEntries];
};

template <class Visit>
void KeyTree::forEach(Visit&& visit) const {
    for (const Node* node = m_first; node; node = node->next)
        for (unsigned i = 0; i < node->count; ++i)
            visit(static_cast<const Leaf*>(node)->numbers[i]);
}

} // namespace orvo::mdx

#endif
