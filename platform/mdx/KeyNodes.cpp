// KeyNodes.cpp: splitting, joining and counting the nodes of a key tree.
#include "platform/mdx/KeyTree.h"

#include <algorithm>
#include <cassert>

namespace orvo::mdx {

uint32_t KeyTree::total(const Node* node) noexcept {
    return node->isLeaf ? node->count : node->total;
}

bool KeyTree::countsAdd(const Inner& node) noexcept {
    const unsigned last = node.count - 1u;
    return node.before[last] + total(node.children[last]) == node.total;
}

void KeyTree::recount(Inner& node) noexcept {
    uint32_t sum = 0;
    for (unsigned i = 0; i < node.count; ++i) {
        node.before[i] = sum;
        sum += total(node.children[i]);
    }
    node.total = sum;
}

void KeyTree::setSeparator(Inner& node, unsigned index, uint32_t number) noexcept {
    uint8_t start[Node::maxPrefix + 8];
    imageStart(number, start);
    // A node with one separator has no others to agree with.
    const uint64_t word = wordFor(node, node.words, start);
    node.words[index] = word;
    node.numbers[index] = number;
}

// The subtree below steps[depth - 1] begins with another record now.
void KeyTree::setFirst(const Path& path, unsigned depth, uint32_t number) noexcept {
    while (depth > 0) {
        const Step& step = path.steps[--depth];
        if (step.index > 0) {
            setSeparator(*step.node, step.index, number);
            return;
        }
    }
}

// Makes room in a full leaf; `leaf` and `index` then tell where the new entry goes.
void KeyTree::split(Path& path, Leaf*& leaf, unsigned& index) noexcept {
    Leaf* right = takeLeaf();
    // Keys that come in rising order fill their leaves.
    const bool atEnd = index == nodeEntries && !leaf->next;
    const unsigned keep = atEnd ? nodeEntries - 1 : nodeEntries / 2;
    right->count = static_cast<uint16_t>(nodeEntries - keep);
    std::copy_n(leaf->words + keep, right->count, right->words);
    std::copy_n(leaf->numbers + keep, right->count, right->numbers);
    right->prefixSize = leaf->prefixSize;
    std::memcpy(right->prefix, leaf->prefix, sizeof leaf->prefix);
    leaf->count = static_cast<uint16_t>(keep);

    right->next = leaf->next;
    right->previous = leaf;
    if (leaf->next)
        static_cast<Leaf*>(leaf->next)->previous = right;
    leaf->next = right;

    tighten(*leaf, leaf->numbers, leaf->words, 0);
    tighten(*right, right->numbers, right->words, 0);
    insertChild(path, path.depth, right, right->numbers[0]);
    // An entry between the halves goes to the left one: the right one keeps its first record.
    if (index > keep) {
        leaf = right;
        index -= keep;
        if (path.depth > 0) {
            // insertChild left the last step at the left node.
            Step& step = path.steps[path.depth - 1];
            ++step.index;
        }
    }
}

// Puts `child` to the right of the node below steps[depth - 1], splitting inner nodes as needed.
// Afterwards the path leads to the left of the two again.
void KeyTree::insertChild(Path& path, unsigned depth, Node* child, uint32_t number) noexcept {
    if (depth == 0) {
        Inner* root = takeInner();
        root->count = 2;
        root->children[0] = m_root;
        root->children[1] = child;
        root->numbers[0] = 0;
        root->words[0] = 0;
        setSeparator(*root, 1, number);
        recount(*root);
        m_root = root;
        ++m_height;
        std::move_backward(path.steps, path.steps + path.depth, path.steps + path.depth + 1);
        path.steps[0] = {root, 0};
        ++path.depth;
        return;
    }
    Step* step = &path.steps[depth - 1];
    if (step->node->count == nodeEntries) {
        Inner* left = step->node;
        Inner* right = takeInner();
        const bool atEnd = step->index == nodeEntries - 1;
        const unsigned keep = atEnd ? nodeEntries - 2 : nodeEntries / 2;
        right->count = static_cast<uint16_t>(nodeEntries - keep);
        std::copy_n(left->words + keep, right->count, right->words);
        std::copy_n(left->numbers + keep, right->count, right->numbers);
        std::copy_n(left->children + keep, right->count, right->children);
        right->prefixSize = left->prefixSize;
        std::memcpy(right->prefix, left->prefix, sizeof left->prefix);
        left->count = static_cast<uint16_t>(keep);
        const uint32_t leftTotal = left->before[keep];
        for (unsigned i = 0; i < right->count; ++i)
            right->before[i] = left->before[keep + i] - leftTotal;
        right->total = left->total - leftTotal;
        left->total = leftTotal;
        const uint32_t rightFirst = right->numbers[0];
        tighten(*left, left->numbers, left->words, 1);
        tighten(*right, right->numbers, right->words, 1);
        const unsigned levels = path.depth;
        insertChild(path, depth - 1, right, rightFirst);
        depth += path.depth - levels; // a new root moved the steps down
        step = &path.steps[depth - 1];
        if (step->index >= keep) {
            step->node = right;
            step->index -= keep;
            ++path.steps[depth - 2].index;
        }
    }
    Inner& node = *step->node;
    const unsigned at = step->index + 1;
    std::move_backward(node.words + at, node.words + node.count, node.words + node.count + 1);
    std::move_backward(node.numbers + at, node.numbers + node.count, node.numbers + node.count + 1);
    std::move_backward(node.before + at, node.before + node.count, node.before + node.count + 1);
    std::move_backward(node.children + at, node.children + node.count,
                       node.children + node.count + 1);
    ++node.count;
    node.children[at] = child;
    // The records of the child were counted with the node they were split off from.
    node.before[at] = node.before[at - 1] + total(node.children[at - 1]);
    node.words[at] = 0;
    setSeparator(node, at, number);
}

// Takes a child out of steps[depth]'s node; its records are gone already, or are its left
// neighbour's now.
void KeyTree::removeChild(Path& path, unsigned depth) noexcept {
    Inner* node = path.steps[depth].node;
    const unsigned at = path.steps[depth].index;
    std::copy(node->words + at + 1, node->words + node->count, node->words + at);
    std::copy(node->numbers + at + 1, node->numbers + node->count, node->numbers + at);
    std::copy(node->before + at + 1, node->before + node->count, node->before + at);
    std::copy(node->children + at + 1, node->children + node->count, node->children + at);
    --node->count;
    if (node->count == 0) {
        freeInner(node);
        if (depth == 0) {
            m_root = nullptr;
            m_height = 0;
        } else {
            removeChild(path, depth - 1);
        }
        return;
    }
    if (at == 0)
        setFirst(path, depth, node->numbers[0]); // its second child is the first now
    while (!m_root->isLeaf && m_root->count == 1) {
        auto* old = static_cast<Inner*>(m_root);
        m_root = old->children[0];
        --m_height;
        freeInner(old);
    }
}

// Joins a sparse leaf with a neighbour under the same node, if both fit well into one.
void KeyTree::mergeLeaf(Path& path) noexcept {
    Step& step = path.steps[path.depth - 1];
    unsigned leftIndex = step.index;
    if (leftIndex + 1u == step.node->count) {
        if (leftIndex == 0)
            return;
        --leftIndex;
    }
    auto* left = static_cast<Leaf*>(step.node->children[leftIndex]);
    auto* right = static_cast<Leaf*>(step.node->children[leftIndex + 1]);
    if (left->count + right->count > nodeEntries * 3 / 4)
        return;
    const auto common = static_cast<unsigned>(
        std::mismatch(left->prefix, left->prefix + std::min(left->prefixSize, right->prefixSize),
                      right->prefix)
            .first -
        left->prefix);
    shrinkPrefix(*left, left->words, common);
    shrinkPrefix(*right, right->words, common);
    std::copy_n(right->words, right->count, left->words + left->count);
    std::copy_n(right->numbers, right->count, left->numbers + left->count);
    left->count = static_cast<uint16_t>(left->count + right->count);
    freeLeaf(right);
    tighten(*left, left->numbers, left->words, 0);
    step.index = leftIndex + 1;
    removeChild(path, path.depth - 1);
}

// ---------------------------------------------------------------------------------------------
// Memory

void KeyTree::growLeaves(size_t count) {
    const size_t size = (count * sizeof(Leaf) + 63) & ~size_t(63);
    const size_t whole = size > hugePage / 2 ? (size + hugePage - 1) / hugePage * hugePage : size;
    auto* leaves = reinterpret_cast<Leaf*>(m_pages.add(whole));
    for (size_t i = whole / sizeof(Leaf); i-- > 0;) {
        leaves[i].next = m_freeLeaves;
        m_freeLeaves = leaves + i;
        ++m_freeLeafCount;
        ++m_leafCount;
    }
}

void KeyTree::growInners(size_t count) {
    auto* inners = reinterpret_cast<Inner*>(m_pages.add(count * sizeof(Inner)));
    for (size_t i = count; i-- > 0;) {
        inners[i].next = m_freeInners;
        m_freeInners = inners + i;
        ++m_freeInnerCount;
        ++m_innerCount;
    }
}

// What one insertion can need: a leaf, and an inner node for each level and a new root.
void KeyTree::reserveNodes() {
    if (m_freeLeafCount < 2)
        growLeaves(std::clamp<size_t>(m_leafCount / 4, 1, hugePage / sizeof(Leaf)) + 1);
    if (m_root && m_freeInnerCount < m_height + size_t(1))
        growInners(m_height + size_t(1) + m_innerCount / 4);
}

KeyTree::Leaf* KeyTree::takeLeaf() noexcept {
    assert(m_freeLeaves && "6: prepareInsert has been called");
    auto* leaf = static_cast<Leaf*>(m_freeLeaves);
    m_freeLeaves = leaf->next;
    --m_freeLeafCount;
    leaf->count = 0;
    leaf->prefixSize = 0;
    leaf->isLeaf = true;
    leaf->next = nullptr;
    leaf->previous = nullptr;
    return leaf;
}

// Takes the leaf out of the chain, too.
void KeyTree::freeLeaf(Leaf* leaf) noexcept {
    if (leaf->next)
        static_cast<Leaf*>(leaf->next)->previous = leaf->previous;
    if (leaf->previous)
        leaf->previous->next = leaf->next;
    else
        m_first = static_cast<Leaf*>(leaf->next);
    leaf->next = m_freeLeaves;
    m_freeLeaves = leaf;
    ++m_freeLeafCount;
}

void KeyTree::freeInner(Inner* inner) noexcept {
    inner->next = m_freeInners;
    m_freeInners = inner;
    ++m_freeInnerCount;
}

KeyTree::Inner* KeyTree::takeInner() noexcept {
    assert(m_freeInners && "6: prepareInsert has been called");
    auto* inner = static_cast<Inner*>(m_freeInners);
    m_freeInners = inner->next;
    --m_freeInnerCount;
    inner->count = 0;
    inner->prefixSize = 0;
    inner->isLeaf = false;
    inner->next = nullptr;
    inner->total = 0;
    return inner;
}

} // namespace orvo::mdx
