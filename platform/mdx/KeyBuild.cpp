// KeyBuild.cpp: building a key tree from the records of a table: the images of all records are laid
// out one after the other, their order is found by a radix sort of eight image bytes at a time, and
// the leaves are filled from left to right. Of a large table two threads do half of each step.
#include "platform/mdx/KeyImages.h"
#include "platform/mdx/KeyTree.h"
#include "platform/mdx/RunInParallel.h"

#include <algorithm>
#include <array>

namespace orvo::mdx {
namespace {

struct SortItem {
    uint64_t word;   ///< eight bytes of the image
    uint32_t image;  ///< place of the image, in units of eight bytes; rises with the entry
    uint32_t number; ///< of the record
};

inline bool wordThenEntry(const SortItem& a, const SortItem& b) noexcept {
    return a.word != b.word ? a.word < b.word : a.image < b.image;
}

// Sorts by word; items with the same word keep their order. `other` has room for as many.
void radixSort(SortItem* items, SortItem* other, size_t count) {
    uint32_t counts[8][256] = {};
    for (size_t i = 0; i < count; ++i)
        for (unsigned byte = 0; byte < 8; ++byte)
            ++counts[byte][items[i].word >> (8 * byte) & 0xFF];
    // The upper bytes alone tell most items apart if they have many values: the passes for the
    // lower ones are then left out, and the few that still agree are sorted afterwards.
    unsigned lowest = 8;
    double groups = 1;
    while (lowest > 0 && groups < 4.0 * double(count)) {
        --lowest;
        groups *= double(
            std::count_if(counts[lowest], counts[lowest] + 256, [](uint32_t n) { return n > 0; }));
    }
    SortItem* from = items;
    SortItem* to = other;
    for (unsigned byte = lowest; byte < 8; ++byte) {
        uint32_t* places = counts[byte];
        if (places[items[0].word >> (8 * byte) & 0xFF] == count)
            continue; // the same in all
        uint32_t sum = 0;
        for (unsigned i = 0; i < 256; ++i)
            sum += std::exchange(places[i], sum);
        for (size_t i = 0; i < count; ++i)
            to[places[from[i].word >> (8 * byte) & 0xFF]++] = from[i];
        std::swap(from, to);
    }
    if (from != items)
        std::copy_n(from, count, items);
    if (lowest == 0)
        return;
    for (size_t begin = 0; begin < count;) {
        size_t end = begin + 1;
        while (end < count && items[end].word >> (8 * lowest) == items[begin].word >> (8 * lowest))
            ++end;
        if (end - begin > 1)
            std::sort(items + begin, items + end, wordThenEntry);
        begin = end;
    }
}

} // namespace

class KeyBuilder {
public:
    KeyBuilder(KeyTree& tree, std::span<const uint32_t> records) : m_tree(tree) {
        const size_t size = records.size() * sizeof(SortItem);
        const size_t whole = size < hugePage ? size : (size + hugePage - 1) / hugePage * hugePage;
        m_items = {reinterpret_cast<SortItem*>(m_pages.add(whole)), records.size()};
        m_other = reinterpret_cast<SortItem*>(m_pages.add(whole));
        if (records.size() < manyRecords) {
            layOut(records, m_items, m_images);
            return;
        }
        const size_t half = records.size() / 2;
        KeyImages others;
        runInParallel([&] { layOut(records.first(half), m_items.first(half), m_images); },
                      [&] { layOut(records.subspan(half), m_items.subspan(half), others); });
        const uint32_t moved = m_images.append(std::move(others));
        for (SortItem& item : m_items.subspan(half))
            item.image += moved;
    }

    void sort() { sort(m_items.data(), m_items.size(), 0, m_items.size() >= manyRecords); }

    bool isUnique() const {
        const size_t count = m_items.size();
        if (count < manyRecords)
            return differ(1, count);
        bool low = false;
        bool high = false;
        runInParallel([&] { low = differ(1, count / 2); },
                      [&] { high = differ(count / 2, count); });
        return low && high;
    }

    void fill() {
        std::vector<size_t> ends;
        for (size_t begin = 0; begin < m_items.size(); begin = ends.back())
            ends.push_back(leafEnd(begin, ends.size()));
        const size_t leaves = ends.size();
        m_tree.growLeaves(leaves);
        size_t level = leaves;
        size_t inners = 0;
        while (level > 1) {
            level = (level + fillTo - 1) / fillTo;
            inners += level;
        }
        if (inners > 0)
            m_tree.growInners(inners);

        std::vector<KeyTree::Node*> nodes(leaves);
        std::vector<uint32_t> firsts(leaves);
        KeyTree::Leaf* previous = nullptr;
        for (size_t i = 0; i < leaves; ++i) {
            KeyTree::Leaf* leaf = m_tree.takeLeaf();
            leaf->previous = previous;
            (previous ? previous->next : m_firstLeaf) = leaf;
            previous = leaf;
            nodes[i] = leaf;
            firsts[i] = m_items[i == 0 ? 0 : ends[i - 1]].number;
        }
        const auto fillLeaves = [&](size_t first, size_t last) {
            for (size_t i = first; i < last; ++i)
                fillLeaf(static_cast<KeyTree::Leaf&>(*nodes[i]), i == 0 ? 0 : ends[i - 1], ends[i]);
        };
        if (m_items.size() < manyRecords)
            fillLeaves(0, leaves);
        else
            runInParallel([&] { fillLeaves(0, leaves / 2); },
                          [&] { fillLeaves(leaves / 2, leaves); });
        m_tree.m_first = static_cast<KeyTree::Leaf*>(m_firstLeaf);
        m_tree.m_size = static_cast<uint32_t>(m_items.size());
        m_tree.m_height = 0;
        while (nodes.size() > 1)
            fillLevel(nodes, firsts);
        m_tree.m_root = nodes[0];
    }

private:
    static constexpr size_t fillTo = 116; ///< leaves room for the first insertions
    static constexpr size_t leastFill = 88;
    static constexpr size_t averageFill = 107; ///< keeps a key within 16 bytes a record
    static constexpr size_t ahead = 16;
    static constexpr size_t smallRun = 32;
    static constexpr size_t manyRecords = 1 << 16; ///< from which a second thread pays

    void layOut(std::span<const uint32_t> records, std::span<SortItem> items, KeyImages& images) {
        ImageBuffer buffer;
        for (size_t i = 0; i < records.size(); ++i) {
            if (i + 4 < records.size())
                __builtin_prefetch(m_tree.m_pool.at(records[i + 4]));
            const Record* record = m_tree.m_pool.at(records[i]);
            const size_t keySize = m_tree.m_fields.image(m_tree.m_pool.postedBody(record), buffer);
            new (&items[i])
                SortItem{0, images.add(buffer.data(), buffer.size(), keySize), records[i]};
        }
    }

    // Compares from `depth` on, up to which both agree.
    bool less(const SortItem& a, const SortItem& b, size_t depth) const {
        const KeyImages::Head x = m_images.head(a.image), y = m_images.head(b.image);
        const size_t xSize = std::min<size_t>(x.size, KeyImages::maxSize);
        const size_t ySize = std::min<size_t>(y.size, KeyImages::maxSize);
        depth = std::min({depth, xSize, ySize});
        const int order =
            std::memcmp(m_images.image(a.image) + depth, m_images.image(b.image) + depth,
                        std::min(xSize, ySize) - depth);
        if (order != 0)
            return order < 0;
        if (x.size == KeyImages::cut && y.size == KeyImages::cut)
            if (const int rest = compareRecords(a, b, false); rest != 0)
                return rest < 0;
        return a.image < b.image;
    }

    // Images too long to be laid out whole: compared again, from the records.
    int compareRecords(const SortItem& a, const SortItem& b, bool keyOnly) const {
        ImageBuffer image;
        const KeyFields& fields = m_tree.m_fields;
        const auto body = [this](const SortItem& item) {
            return m_tree.m_pool.postedBody(m_tree.m_pool.at(item.number));
        };
        const size_t keySize = fields.image(body(a), image);
        return fields.compare(image.data(), keyOnly ? keySize : image.size(), body(b), 0);
    }

    bool sameKey(const SortItem& a, const SortItem& b) const {
        const KeyImages::Head x = m_images.head(a.image), y = m_images.head(b.image);
        if (x.keySize != y.keySize)
            return false;
        if (x.keySize == KeyImages::cut)
            return compareRecords(a, b, true) == 0;
        return std::memcmp(m_images.image(a.image), m_images.image(b.image), x.keySize) == 0;
    }

    // Whether the items from first to last each have another key than the one before.
    bool differ(size_t first, size_t last) const {
        for (size_t i = first; i < last; ++i) {
            if (i + ahead < last)
                __builtin_prefetch(m_images.at(m_items[i + ahead].image));
            if (sameKey(m_items[i - 1], m_items[i]))
                return false;
        }
        return true;
    }

    // How many bytes from `depth` on all images share. Eight zero bytes follow each image, so a
    // word can be loaded at any place up to its end.
    size_t common(const SortItem* items, size_t count, size_t depth) const {
        const uint8_t* first = m_images.image(items[0].image);
        size_t shared =
            std::min<size_t>(m_images.head(items[0].image).size, KeyImages::maxSize) - depth;
        for (size_t i = 1; i < count && shared > 0; ++i) {
            if (i + ahead < count)
                __builtin_prefetch(m_images.at(items[i + ahead].image));
            const uint8_t* other = m_images.image(items[i].image);
            for (size_t k = 0; k < shared; k += 8) {
                const uint64_t difference =
                    load<uint64_t>(first + depth + k) ^ load<uint64_t>(other + depth + k);
                if (difference != 0) {
                    shared =
                        std::min(shared, k + static_cast<size_t>(std::countr_zero(difference)) / 8);
                    break;
                }
            }
        }
        return shared;
    }

    // `second`: a second thread may help.
    void sort(SortItem* items, size_t count, size_t depth, bool second) {
        if (count < 2)
            return;
        if (count <= smallRun) {
            std::sort(items, items + count, [this, depth](const SortItem& a, const SortItem& b) {
                return less(a, b, depth);
            });
            return;
        }
        const size_t firstSize = m_images.head(items[0].image).size;
        const size_t laidOut = std::min<size_t>(firstSize, KeyImages::maxSize);
        if (depth < laidOut)
            depth += common(items, count, depth);
        if (depth >= laidOut) {
            // All the same as far as laid out, and in the order of their entry.
            if (firstSize == KeyImages::cut)
                std::sort(items, items + count,
                          [this, depth](const SortItem& a, const SortItem& b) {
                              return less(a, b, depth);
                          });
            return;
        }
        if (!second || count < manyRecords) {
            loadWords(items, count, depth);
            sortByWord(items, count, depth, false);
            return;
        }
        runInParallel([&] { loadWords(items, count / 2, depth); },
                      [&] { loadWords(items + count / 2, count - count / 2, depth); });
        const size_t low = partition(items, count);
        if (low < count / 8 || count - low < count / 8) {
            sortByWord(items, count, depth, true);
            return;
        }
        runInParallel([&] { sortByWord(items, low, depth, false); },
                      [&] { sortByWord(items + low, count - low, depth, false); });
    }

    void loadWords(SortItem* items, size_t count, size_t depth) const {
        for (size_t i = 0; i < count; ++i) {
            if (i + ahead < count)
                __builtin_prefetch(m_images.image(items[i + ahead].image) + depth);
            items[i].word = loadOrdered(m_images.image(items[i].image) + depth);
        }
    }

    // Brings the items with the lesser words to the front, about half of them if the words allow,
    // each side in the order it had. Gives their number.
    size_t partition(SortItem* items, size_t count) {
        std::array<uint64_t, 255> sample;
        for (size_t i = 0; i < sample.size(); ++i)
            sample[i] = items[count / sample.size() * i].word;
        std::nth_element(sample.begin(), sample.begin() + sample.size() / 2, sample.end());
        const uint64_t middle = sample[sample.size() / 2];
        SortItem* low = items;
        SortItem* high = otherOf(items);
        for (size_t i = 0; i < count; ++i) {
            const SortItem item = items[i];
            *(item.word < middle ? low : high)++ = item;
        }
        std::copy(otherOf(items), high, low);
        return static_cast<size_t>(low - items);
    }

    // The spare room beside an item.
    SortItem* otherOf(SortItem* items) const { return m_other + (items - m_items.data()); }

    void sortByWord(SortItem* items, size_t count, size_t depth, bool second) {
        if (count > 512)
            radixSort(items, otherOf(items), count);
        else
            std::sort(items, items + count, wordThenEntry);
        for (size_t begin = 0; begin < count;) {
            size_t end = begin + 1;
            while (end < count && items[end].word == items[begin].word)
                ++end;
            sort(items + begin, end - begin, depth + 8, second);
            begin = end;
        }
    }

    size_t sharedWithPrevious(size_t at) const {
        const uint8_t* a = m_images.image(m_items[at - 1].image);
        const uint8_t* b = m_images.image(m_items[at].image);
        const size_t size =
            std::min<size_t>({m_images.head(m_items[at - 1].image).size,
                              m_images.head(m_items[at].image).size, KeyTree::Node::maxPrefix});
        for (size_t k = 0; k < size; k += 8)
            if (const uint64_t difference = load<uint64_t>(a + k) ^ load<uint64_t>(b + k))
                return std::min(size, k + static_cast<size_t>(std::countr_zero(difference)) / 8);
        return size;
    }

    // Where the leaf that begins there ends. It is not filled as told if ending elsewhere keeps the
    // records with the same leading values in leaves of their own: the prefix then holds those
    // values, and the words tell the records apart. A group that fills between one leaf and two is
    // halved, as long as the leaves before it were full enough.
    size_t leafEnd(size_t begin, size_t leavesBefore) const {
        const size_t left = m_items.size() - begin;
        if (left <= KeyTree::nodeEntries - 4)
            return m_items.size();
        size_t best = begin + fillTo;
        size_t least = sharedWithPrevious(best);
        if (least < 8)
            return best;
        least -= 8; // what it must gain
        const size_t most = KeyTree::nodeEntries - 2;
        const size_t last = std::min(left - 1, most);
        bool gains = false;
        for (size_t size = leastFill; size <= last; ++size) {
            const size_t shared = sharedWithPrevious(begin + size);
            if (shared < least || (shared == least && (!gains || begin + size <= begin + fillTo))) {
                least = shared;
                best = begin + size;
                gains = true;
            }
        }
        if (gains)
            return best;
        for (size_t size = last + 1; size < std::min(left, 2 * most); ++size)
            if (sharedWithPrevious(begin + size) <= least) {
                const size_t half = begin + size / 2;
                return half >= (leavesBefore + 1) * averageFill ? half : best;
            }
        return best;
    }

    void fillLeaf(KeyTree::Leaf& leaf, size_t begin, size_t end) {
        const uint8_t* low = m_images.image(m_items[begin].image);
        const uint8_t* high = m_images.image(m_items[end - 1].image);
        const size_t size = std::min<size_t>({m_images.head(m_items[begin].image).size,
                                              m_images.head(m_items[end - 1].image).size,
                                              KeyTree::Node::maxPrefix});
        const auto prefix = static_cast<size_t>(std::mismatch(low, low + size, high).first - low);
        std::memcpy(leaf.prefix, low, prefix);
        leaf.prefixSize = static_cast<uint8_t>(prefix);
        leaf.count = static_cast<uint16_t>(end - begin);
        for (size_t i = begin; i < end; ++i) {
            if (i + ahead < m_items.size())
                __builtin_prefetch(m_images.at(m_items[i + ahead].image));
            leaf.words[i - begin] = loadOrdered(m_images.image(m_items[i].image) + prefix);
            leaf.numbers[i - begin] = m_items[i].number;
        }
    }

    void fillLevel(std::vector<KeyTree::Node*>& nodes, std::vector<uint32_t>& firsts) {
        const size_t count = (nodes.size() + fillTo - 1) / fillTo;
        for (size_t i = 0; i < count; ++i) {
            const size_t begin = nodes.size() * i / count;
            const size_t end = nodes.size() * (i + 1) / count;
            KeyTree::Inner* inner = m_tree.takeInner();
            inner->count = static_cast<uint16_t>(end - begin);
            std::copy(nodes.begin() + static_cast<ptrdiff_t>(begin),
                      nodes.begin() + static_cast<ptrdiff_t>(end), inner->children);
            std::copy(firsts.begin() + static_cast<ptrdiff_t>(begin),
                      firsts.begin() + static_cast<ptrdiff_t>(end), inner->numbers);
            m_tree.setWords(*inner);
            KeyTree::recount(*inner);
            m_levelNodes.push_back(inner);
            m_levelFirsts.push_back(firsts[begin]);
        }
        nodes.swap(m_levelNodes);
        firsts.swap(m_levelFirsts);
        m_levelNodes.clear();
        m_levelFirsts.clear();
        ++m_tree.m_height;
    }

    KeyTree& m_tree;
    KeyImages m_images;
    Pages m_pages;
    std::span<SortItem> m_items;
    SortItem* m_other = nullptr; ///< room for as many
    std::vector<KeyTree::Node*> m_levelNodes;
    std::vector<uint32_t> m_levelFirsts;
    KeyTree::Node* m_firstLeaf = nullptr;
};

bool KeyTree::build(std::span<const uint32_t> records, bool unique) {
    if (records.empty())
        return true;
    KeyBuilder builder(*this, records);
    builder.sort();
    if (unique && !builder.isUnique())
        return false;
    builder.fill();
    return true;
}

} // namespace orvo::mdx
