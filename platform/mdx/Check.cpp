// Check.cpp: the invariants of trees, tables and records, looked at one by one, for tests.
#include "platform/mdx/FirstBroken.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/Table.h"

#include <algorithm>

namespace orvo::mdx {

namespace {

/// The zero-padded eight bytes of an image from `from` on.
uint64_t wordAt(const ImageBuffer& image, size_t from) {
    uint8_t bytes[8] = {};
    if (from < image.size())
        std::memcpy(bytes, image.data() + from, std::min<size_t>(8, image.size() - from));
    return loadOrdered(bytes);
}

bool beginsWith(const ImageBuffer& image, const uint8_t* prefix, size_t size) {
    for (size_t i = 0; i < size; ++i)
        if (prefix[i] != (i < image.size() ? image.data()[i] : 0))
            return false;
    return true;
}

int compareImages(const ImageBuffer& a, const ImageBuffer& b) {
    const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
    return order != 0 ? order : int(a.size() > b.size()) - int(a.size() < b.size());
}

} // namespace

// ---------------------------------------------------------------------------------------------
// KeyTree

/// A walk over one tree that keeps the first invariant it finds broken.
class KeyTreeCheck {
public:
    KeyTreeCheck(const KeyTree& tree, FirstBroken& broken) : m_tree(tree), m_broken(broken) {}

    void run() {
        if (!m_tree.m_root) {
            need(m_tree.m_size == 0 && m_tree.m_height == 0 && !m_tree.m_first,
                 "key tree 1: empty tree");
        } else {
            need(!m_tree.m_root->isLeaf == (m_tree.m_height > 0), "key tree 2: height");
            visit(m_tree.m_root, m_tree.m_height);
            need(!m_lastLeaf || !m_lastLeaf->next, "key tree 1: a leaf behind the last");
            need(m_seen == m_tree.m_size, "key tree 1: number of records");
        }
        need(freeNodes(m_tree.m_freeLeaves) == m_tree.m_freeLeafCount, "key tree 6: free leaves");
        need(freeNodes(m_tree.m_freeInners) == m_tree.m_freeInnerCount,
             "key tree 6: free inner nodes");
        need(m_leaves + m_tree.m_freeLeafCount == m_tree.m_leafCount, "key tree 6: lost leaves");
        need(m_inners + m_tree.m_freeInnerCount == m_tree.m_innerCount,
             "key tree 6: lost inner nodes");
        if (m_tree.m_scanLeaf)
            need(m_scanSeen, "key tree 7: the scan is in no leaf");
    }

private:
    using Node = KeyTree::Node;
    using Leaf = KeyTree::Leaf;
    using Inner = KeyTree::Inner;

    void need(bool holds, const char* invariant) { m_broken.need(holds, invariant); }

    void imageOf(uint32_t number, ImageBuffer& image) const {
        m_tree.m_fields.image(m_tree.m_pool.postedBody(m_tree.m_pool.at(number)), image);
    }

    static size_t freeNodes(const Node* first) {
        size_t count = 0;
        for (; first; first = first->next)
            ++count;
        return count;
    }

    /// Gives the first record below the node.
    uint32_t visit(const Node* node, unsigned height) {
        need(node->isLeaf == (height == 0), "key tree 2: leaves at one depth");
        need(node->count >= 1 && node->count <= KeyTree::nodeEntries,
             "key tree 1: entries of a node");
        if (!m_broken.none())
            return 0;
        return node->isLeaf ? leaf(*static_cast<const Leaf*>(node))
                            : inner(*static_cast<const Inner*>(node), height);
    }

    uint32_t leaf(const Leaf& leaf) {
        ++m_leaves;
        need(m_lastLeaf ? m_lastLeaf->next == &leaf && leaf.previous == m_lastLeaf
                        : m_tree.m_first == &leaf && !leaf.previous,
             "key tree 1: chain of leaves");
        m_lastLeaf = &leaf;
        if (m_tree.m_scanLeaf == &leaf) {
            m_scanSeen = true;
            need(m_tree.m_scanStart == m_seen, "key tree 7: the scan's position");
        }
        for (unsigned i = 0; i < leaf.count; ++i) {
            const Record* record = m_tree.m_pool.at(leaf.numbers[i]);
            need(record->is(Record::Posted) && record->number == leaf.numbers[i],
                 "key tree 3: its records");
            imageOf(leaf.numbers[i], m_image);
            if (m_seen > 0) {
                const int order = compareImages(m_lastImage, m_image);
                need(order < 0 || (order == 0 && m_lastEntry < record->entry), "key tree 3: order");
            }
            need(beginsWith(m_image, leaf.prefix, leaf.prefixSize), "key tree 4: prefix of a leaf");
            need(wordAt(m_image, leaf.prefixSize) == leaf.words[i], "key tree 4: word of a leaf");
            std::swap(m_image, m_lastImage);
            m_lastEntry = record->entry;
            ++m_seen;
        }
        return leaf.numbers[0];
    }

    uint32_t inner(const Inner& inner, unsigned height) {
        ++m_inners;
        const uint32_t start = m_seen;
        uint32_t first = 0;
        for (unsigned i = 0; i < inner.count && m_broken.none(); ++i) {
            need(inner.before[i] == m_seen - start, "key tree 5: records to the left of a child");
            const uint32_t number = visit(inner.children[i], height - 1);
            if (i == 0) {
                first = number;
                continue;
            }
            need(inner.numbers[i] == number, "key tree 5: separator");
            if (!m_broken.none())
                break;
            ImageBuffer image;
            imageOf(number, image);
            need(beginsWith(image, inner.prefix, inner.prefixSize),
                 "key tree 5: prefix of an inner node");
            need(wordAt(image, inner.prefixSize) == inner.words[i],
                 "key tree 5: word of an inner node");
        }
        need(inner.total == m_seen - start, "key tree 5: records below");
        return first;
    }

    const KeyTree& m_tree;
    const Leaf* m_lastLeaf = nullptr;
    ImageBuffer m_image, m_lastImage;
    uint32_t m_lastEntry = 0;
    uint32_t m_seen = 0; ///< records in the leaves so far
    size_t m_leaves = 0, m_inners = 0;
    bool m_scanSeen = false;
    FirstBroken& m_broken;
};

void KeyTree::check(FirstBroken& broken) const {
    KeyTreeCheck(*this, broken).run();
}

// ---------------------------------------------------------------------------------------------
// Table and pool

void RecordPool::check(const Record* record, FirstBroken& broken) const {
    broken.need(record->owner == m_owner && at(record->number) == record,
                "record 1: owner and number");
    broken.need(record->is(Record::Outside) ==
                    (record->body != reinterpret_cast<const uint8_t*>(record + 1)),
                "record 2: where the body is");
    broken.need(record->bodySize <= capacity(record), "record 2: a body larger than its room");
    broken.need(record->is(Record::Edited) == (m_kept.count(record->number) > 0),
                "record 3: an edited record keeps its posted body");
}

void Table::checkOrder(FirstBroken& broken) const {
    size_t holes = 0;
    for (size_t i = 0; i < m_order.size() && broken.none(); ++i) {
        if (m_order[i] == hole) {
            ++holes;
            continue;
        }
        const Record* posted = record(m_order[i]);
        broken.need(posted->is(Record::Posted) && posted->entry == i, "table 1: order of entry");
        m_records.check(posted, broken);
        if (broken.none() && posted->is(Record::Canonical))
            broken.need(isCanonical(posted->body, posted->bodySize, *structure()),
                        "record 4: a body that counts as canonical");
    }
    broken.need(holes == m_holes || !broken.none(), "table 1: holes");
    broken.need(m_order.empty() || m_order.back() != hole, "table 1: a hole at the end");
}

void Table::checkTrees(FirstBroken& broken) const {
    std::vector<unsigned> users(m_trees.size());
    std::vector<bool> unique(m_trees.size());
    for (const Key& key : m_keys) {
        if (!broken.need(key.tree < m_trees.size(), "table 2: a key without a tree"))
            return;
        ++users[key.tree];
        if (key.flags == MDX_KEY_UNIQUE)
            unique[key.tree] = true;
    }
    for (size_t i = 0; i < m_trees.size() && broken.none(); ++i) {
        const Tree& tree = m_trees[i];
        broken.need(tree.users == users[i] && users[i] > 0, "table 2: keys of a tree");
        broken.need(tree.unique == unique[i], "table 2: whether a key of the tree is unique");
        if (tree.unique)
            broken.need(tree.built && tree.tree->isUnique(), "table 4: a unique key is unique");
        if (!tree.built)
            continue;
        broken.need(tree.tree->size() == postedCount(), "table 3: a tree holds what is posted");
        tree.tree->check(broken);
    }
}

std::string check(const MDArray* array) {
    if (!array)
        return "no array";
    const Table& table = *arrayOf(array)->table;
    FirstBroken broken;
    broken.need(array->fieldCount == (table.structure() ? table.structure()->count() : 0) &&
                    array->keyCount == table.keys().size() &&
                    array->recordCount == (array->keyCount > 0 ? table.postedCount() : 0),
                "array 1: its public counts");
    table.checkOrder(broken);
    if (broken.none())
        table.checkTrees(broken);
    return broken.text();
}

} // namespace orvo::mdx
