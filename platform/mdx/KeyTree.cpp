#include "platform/mdx/KeyTree.h"

#include <algorithm>
#include <cassert>

namespace orvo::mdx {
namespace {

// First of `count` ascending words that is not less than `word`. The record numbers beside it are
// asked for as soon as the search has come near.
inline unsigned firstNotLess(const uint64_t* words, const uint32_t* numbers, unsigned count,
                             uint64_t word) noexcept {
    const uint64_t* base = words;
    while (count > 1) {
        if (count <= 32 && count > 16) {
            __builtin_prefetch(numbers + (base - words));
            __builtin_prefetch(numbers + (base - words) + 16);
        }
        const unsigned half = count / 2;
        base += half & -static_cast<unsigned>(base[half - 1] < word); // no branch to mispredict
        count -= half;
    }
    return static_cast<unsigned>(base - words) + (count == 1 && *base < word ? 1 : 0);
}

} // namespace

KeyTree::KeyTree(const RecordPool& pool, KeyFields fields)
    : m_pool(pool)
    , m_fields(std::move(fields)) {}

KeyTree::~KeyTree() = default;

size_t KeyTree::memory() const noexcept {
    return (m_leafCount - m_freeLeafCount) * sizeof(Leaf) +
           (m_innerCount - m_freeInnerCount) * sizeof(Inner);
}

// ---------------------------------------------------------------------------------------------
// Searching

int KeyTree::compare(const Query& query, uint32_t number, size_t from, bool& equal) const noexcept {
    const Record* record = m_pool.at(number);
    __builtin_prefetch(reinterpret_cast<const char*>(record) + 64);
    const int order = m_fields.compare(query.image, query.size, m_pool.postedBody(record), from);
    equal = order == 0 && (query.entry == noEntry || query.entry == record->entry);
    if (order != 0 || equal)
        return order;
    return query.entry < record->entry ? -1 : 1;
}

bool KeyTree::startsWith(uint32_t number, const Query& query) const noexcept {
    return m_fields.compare(query.image, query.size, m_pool.postedBody(m_pool.at(number)), 0) == 0;
}

// The first entry from `first` on that is not less than the query. `equal` tells whether it is the
// record sought: its image begins with the query's and, if the query has one, its entry is the
// same.
unsigned KeyTree::lowerBound(const Node& node, const uint32_t* numbers, const uint64_t* words,
                             unsigned first, const Query& query, bool& equal) const noexcept {
    const unsigned count = node.count;
    equal = false;
    const size_t shared = std::min<size_t>(query.size, node.prefixSize);
    if (const int order = std::memcmp(query.image, node.prefix, shared); order != 0)
        return order < 0 ? first : count;
    if (query.size < node.prefixSize) { // all begin with the query
        equal = count > first;
        return first;
    }
    const size_t known = node.prefixSize + size_t(8);
    const uint64_t word = loadOrdered(query.image + node.prefixSize);
    unsigned low = first + firstNotLess(words + first, numbers + first, count - first, word);
    if (low == count)
        return low;
    if (query.entry == noEntry && query.size <= known) {
        const auto rest = static_cast<unsigned>(query.size - node.prefixSize);
        equal = rest == 0 || (words[low] ^ word) >> (64 - 8 * rest) == 0;
        return low;
    }
    if (words[low] != word)
        return low;
    unsigned high = low + 1; // [low, high) are to share the word
    while (high < count && words[high] == word)
        ++high;
    // Each comparison waits for a record from memory; those the next two may be about are on their
    // way meanwhile.
    const auto ask = [&](unsigned from, unsigned to, auto&& again, int levels) -> void {
        if (from >= to)
            return;
        const unsigned middle = (from + to) / 2;
        const auto* record = reinterpret_cast<const char*>(m_pool.at(numbers[middle]));
        __builtin_prefetch(record);
        __builtin_prefetch(record + 64);
        if (levels > 1) {
            again(from, middle, again, levels - 1);
            again(middle + 1, to, again, levels - 1);
        }
    };
    bool middleEqual = false;
    if (query.entry == noEntry) { // the start of a group is sought most of the time
        if (high - low > 1)
            ask(low + 1, high, ask, 2);
        if (compare(query, numbers[low], known, equal) <= 0)
            return low;
        ++low;
        equal = false;
    }
    while (low < high) {
        if (high - low > 1)
            ask(low, high, ask, 3);
        const unsigned middle = (low + high) / 2;
        if (compare(query, numbers[middle], known, middleEqual) > 0) {
            low = middle + 1;
        } else {
            high = middle;
            equal = middleEqual;
        }
    }
    return low;
}

// The child in which the query has its place: the last whose first record is less, or, if the query
// names a record, is it. Records that begin with a query without entry may end the child before.
unsigned KeyTree::childFor(const Inner& node, const Query& query) const noexcept {
    bool equal = false;
    const unsigned next = lowerBound(node, node.numbers, node.words, 1, query, equal);
    return equal && query.entry != noEntry ? next : next - 1;
}

// The leaf in which the query has its place.
KeyTree::Leaf* KeyTree::descend(const Query& query, Path* path, uint32_t* before) const noexcept {
    Node* node = m_root;
    for (unsigned level = m_height; level > 0;) {
        auto* inner = static_cast<Inner*>(node);
        const unsigned index = childFor(*inner, query);
        if (before)
            *before += inner->before[index];
        if (path)
            path->steps[path->depth++] = {inner, index};
        node = inner->children[index];
        // All words of the leaf are asked for at once: waiting for one line after the other is what
        // a search costs.
        if (--level == 0) {
            const auto* bytes = reinterpret_cast<const char*>(node);
            for (size_t line = 0; line < sizeof(Node) + sizeof(Leaf::words); line += 64)
                __builtin_prefetch(bytes + line);
        }
    }
    return static_cast<Leaf*>(node);
}

KeyTree::Found KeyTree::find(const Query& query, Path* path, uint32_t* position) const noexcept {
    uint32_t before = 0;
    Leaf* leaf = descend(query, path, &before);
    bool equal = false;
    unsigned index = lowerBound(*leaf, leaf->numbers, leaf->words, 0, query, equal);
    if (position)
        *position = before + index;
    if (index == leaf->count && !path && leaf->next) {
        leaf = static_cast<Leaf*>(leaf->next);
        index = 0;
        equal = startsWith(leaf->numbers[0], query);
    }
    return {leaf, index, equal};
}

Record* KeyTree::seek(const MDRVar* values, int32_t* position) const {
    if (position)
        *position = -1;
    if (m_size == 0)
        return nullptr;
    const bool fits = m_fields.image(values, m_seek);
    const Query query{m_seek.data(), m_seek.size(), noEntry};
    uint32_t place = 0;
    const Found found = find(query, nullptr, &place);
    if (position && place < m_size)
        *position = static_cast<int32_t>(place);
    if (!fits || !found.equal || found.index >= found.leaf->count)
        return nullptr;
    return m_pool.at(found.leaf->numbers[found.index]);
}

Record* KeyTree::at(uint32_t position) const noexcept {
    if (position >= m_size)
        return nullptr;
    // A scan goes from one leaf to the next.
    if (m_scanLeaf) {
        uint32_t offset = position - m_scanStart; // wraps for a position before the leaf
        if (offset == m_scanLeaf->count && m_scanLeaf->next) {
            m_scanStart += m_scanLeaf->count;
            m_scanLeaf = static_cast<Leaf*>(m_scanLeaf->next);
            offset = 0;
        }
        if (offset < m_scanLeaf->count) {
            if (offset + 8 < m_scanLeaf->count) {
                const auto* ahead = m_pool.at(m_scanLeaf->numbers[offset + 8]);
                __builtin_prefetch(ahead);
                __builtin_prefetch(reinterpret_cast<const uint8_t*>(ahead) + 64);
            }
            return m_pool.at(m_scanLeaf->numbers[offset]);
        }
    }
    Node* node = m_root;
    uint32_t rest = position;
    while (!node->isLeaf) {
        auto* inner = static_cast<Inner*>(node);
        const auto index = static_cast<unsigned>(
            std::upper_bound(inner->before, inner->before + inner->count, rest) - inner->before -
            1);
        rest -= inner->before[index];
        node = inner->children[index];
    }
    m_scanLeaf = static_cast<Leaf*>(node);
    m_scanStart = position - rest;
    return m_pool.at(m_scanLeaf->numbers[rest]);
}

bool KeyTree::isUnique() const {
    ImageBuffer image;
    size_t keySize = 0;
    bool unique = true;
    forEach([&](uint32_t number) {
        const uint8_t* body = m_pool.postedBody(m_pool.at(number));
        if (!unique)
            return;
        if (keySize > 0 && m_fields.compare(image.data(), keySize, body, 0) == 0)
            unique = false;
        keySize = m_fields.image(body, image);
    });
    return unique;
}

// ---------------------------------------------------------------------------------------------
// Changing

void KeyTree::prepareErase(const Record* record) {
    m_fields.image(m_pool.postedBody(record), m_old);
}

void KeyTree::prepareInsert(const Record* record) {
    m_newKey = m_fields.image(record->body, m_new);
    reserveNodes();
}

bool KeyTree::sameImages() const noexcept {
    return m_old.size() == m_new.size() &&
           std::memcmp(m_old.data(), m_new.data(), m_old.size()) == 0;
}

bool KeyTree::conflicts(const Record* record) noexcept {
    if (m_size == 0)
        return false;
    // A query ends in zero bytes; here the part of field 0 stands behind the key's own.
    uint8_t* const tail = m_new.grow(0) - (m_new.size() - m_newKey);
    uint8_t kept[8];
    std::memcpy(kept, tail, sizeof kept);
    std::memset(tail, 0, sizeof kept);
    const Found found = find({m_new.data(), m_newKey, noEntry}, nullptr, nullptr);
    std::memcpy(tail, kept, sizeof kept);
    return found.equal && found.index < found.leaf->count &&
           found.leaf->numbers[found.index] != record->number;
}

void KeyTree::insert(const Record* record) noexcept {
    m_scanLeaf = nullptr;
    if (!m_root) {
        m_first = takeLeaf();
        m_root = m_first;
    }
    Path path;
    const Found found = find({m_new.data(), m_new.size(), record->entry}, &path, nullptr);
    Leaf* leaf = found.leaf;
    unsigned index = found.index;
    if (leaf->count == nodeEntries)
        split(path, leaf, index);
    uint8_t start[Node::maxPrefix + 8] = {};
    std::memcpy(start, m_new.data(), std::min(sizeof start, m_new.size()));
    const uint64_t word = wordFor(*leaf, leaf->words, start);
    const size_t behind = leaf->count - index;
    std::memmove(leaf->words + index + 1, leaf->words + index, behind * sizeof *leaf->words);
    std::memmove(leaf->numbers + index + 1, leaf->numbers + index, behind * sizeof *leaf->numbers);
    leaf->words[index] = word;
    leaf->numbers[index] = record->number;
    ++leaf->count;
    assert((index == 0 || leaf->words[index - 1] <= word) && "3, 4: order of a leaf");
    assert((behind == 0 || word <= leaf->words[index + 1]) && "3, 4: order of a leaf");
    ++m_size;
    for (unsigned i = path.depth; i-- > 0;) {
        auto& [node, at] = path.steps[i];
        ++node->total;
        for (unsigned k = at + 1; k < node->count; ++k)
            ++node->before[k];
        assert(countsAdd(*node) && "5: counts of an inner node");
    }
}

void KeyTree::erase(const Record* record) noexcept {
    m_scanLeaf = nullptr;
    Path path;
    Leaf* leaf = descend({m_old.data(), m_old.size(), record->entry}, &path, nullptr);
    const auto index = static_cast<unsigned>(
        std::find(leaf->numbers, leaf->numbers + leaf->count - 1, record->number) - leaf->numbers);
    assert(leaf->numbers[index] == record->number && "3: the record is where its image leads");
    const size_t behind = leaf->count - index - size_t(1);
    std::memmove(leaf->words + index, leaf->words + index + 1, behind * sizeof *leaf->words);
    std::memmove(leaf->numbers + index, leaf->numbers + index + 1, behind * sizeof *leaf->numbers);
    --leaf->count;
    --m_size;
    for (unsigned i = path.depth; i-- > 0;) {
        auto& [node, at] = path.steps[i];
        --node->total;
        for (unsigned k = at + 1; k < node->count; ++k)
            --node->before[k];
        assert(countsAdd(*node) && "5: counts of an inner node");
    }
    if (leaf->count == 0) {
        freeLeaf(leaf);
        if (path.depth == 0)
            m_root = nullptr;
        else
            removeChild(path, path.depth - 1);
        return;
    }
    if (index == 0)
        setFirst(path, path.depth, leaf->numbers[0]);
    if (leaf->count < nodeEntries / 4 && path.depth > 0)
        mergeLeaf(path);
}

// ---------------------------------------------------------------------------------------------
// Prefixes and words

// The first bytes of a record's image, as many as a prefix and a word can hold, or fewer and zeros.
size_t KeyTree::imageStart(uint32_t number, uint8_t* out) const noexcept {
    return m_fields.bytes(m_pool.postedBody(m_pool.at(number)), 0, out, Node::maxPrefix + 8);
}

// Shortens the common prefix to `common` bytes. What was in the prefix moves into the words, which
// lose as many bytes at their end: comparisons then look at the records a little more often.
void KeyTree::shrinkPrefix(Node& node, uint64_t* words, unsigned common) const noexcept {
    const unsigned lost = node.prefixSize - common;
    uint64_t head = 0; // the bytes that leave the prefix, at the top
    for (unsigned i = 0; i < 8; ++i)
        head = head << 8 | (i < lost ? node.prefix[common + i] : 0);
    for (unsigned i = 0; i < node.count; ++i)
        words[i] = lost >= 8 ? head : head | words[i] >> (8 * lost);
    node.prefixSize = static_cast<uint8_t>(common);
}

// The word of an image in this node, whose prefix is shortened if the image does not share it.
uint64_t KeyTree::wordFor(Node& node, uint64_t* words, const uint8_t* start) const noexcept {
    const auto common = static_cast<unsigned>(
        std::mismatch(node.prefix, node.prefix + node.prefixSize, start).first - node.prefix);
    if (common < node.prefixSize)
        shrinkPrefix(node, words, common);
    return loadOrdered(start + node.prefixSize);
}

// Lengthens the prefix to what the first and the last key, and so all between, have in common, if
// that gains enough to be worth reading the records for their new words.
void KeyTree::tighten(Node& node, uint32_t* numbers, uint64_t* words,
                      unsigned first) const noexcept {
    if (node.count < first + 2u)
        return;
    uint8_t low[Node::maxPrefix + 8], high[Node::maxPrefix + 8];
    const size_t most =
        std::min<size_t>({imageStart(numbers[first], low),
                          imageStart(numbers[node.count - 1], high), Node::maxPrefix});
    const auto common = static_cast<unsigned>(std::mismatch(low, low + most, high).first - low);
    if (common < node.prefixSize + 4u)
        return;
    std::memcpy(node.prefix, low, common);
    node.prefixSize = static_cast<uint8_t>(common);
    for (unsigned i = first; i < node.count; ++i) {
        uint8_t bytes[8];
        m_fields.bytes(m_pool.postedBody(m_pool.at(numbers[i])), common, bytes, sizeof bytes);
        words[i] = loadOrdered(bytes);
    }
}

// Fills in the words of a node that has its numbers.
void KeyTree::setWords(Inner& node) const noexcept {
    node.words[0] = 0;
    for (unsigned i = 1; i < node.count; ++i) {
        uint8_t start[Node::maxPrefix + 8];
        imageStart(node.numbers[i], start);
        node.words[i] = loadOrdered(start);
    }
    tighten(node, node.numbers, node.words, 1);
}

} // namespace orvo::mdx
