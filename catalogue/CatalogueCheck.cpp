// Looks at the whole catalogue: whether its invariants hold, and what it takes.
#include "catalogue/Catalogue.h"

#include "catalogue/Layout.h"
#include "platform/mdx/MdxBuild.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace orvo::catalogue {

const char* Catalogue::check() const {
    size_t nodes = 0, listed = 0, owners = 0;
    std::vector<size_t> counts(layouts().size(), 0);
    std::vector<bool> used(m_texts.size(), false);
    for (uint32_t number = 0; number < numberEnd(); ++number) {
        const char* block = m_blocks[number].get();
        if (!block)
            continue;
        const Layout& layout = layouts()[Layout::head(block).table];
        ++counts[layout.number];
        const uint32_t key = Layout::slot(block, 0);
        if (key >= m_texts.size() || !m_texts[key].bytes || m_texts[key].owner != number + 1)
            return "1: a key does not lead to its record";
        used[key] = true;
        const Record found = find(*layout.table, mdx::toUtf8(m_texts[key].bytes.get()));
        if (found.number() != number)
            return "2: two records have one key";
        for (uint32_t bits = layout.links(block); bits != 0; bits &= bits - 1, ++nodes)
            used[Layout::slot(block, std::countr_zero(bits))] = true;
    }
    for (uint32_t id = 1; id < m_texts.size(); ++id) {
        const Text& text = m_texts[id];
        if ((text.bytes != nullptr) != used[id])
            return "4: a text is held that nobody has, or is not that somebody has";
        owners += text.owner != 0 ? 1 : 0;
        Node before = 0;
        for (Node node = text.bytes ? text.first : 0; node != 0;
             before = node, node = neighbours(node)[1]) {
            if (neighbours(node)[0] != before || ++listed > nodes)
                return "3: a list is broken";
        }
    }
    if (counts != m_counts || owners != count())
        return "1: the records are not as many as were counted";
    return listed == nodes ? nullptr : "3: a value is in no list";
}

Catalogue::Memory Catalogue::memory() const {
    // A block of the heap has 8 bytes of its own, and is a multiple of 16.
    const auto heap = [](size_t size) { return std::max<size_t>(32, (size + 8 + 15) / 16 * 16); };
    Memory sum;
    sum.beside = m_blocks.capacity() * sizeof m_blocks[0] + m_texts.capacity() * sizeof m_texts[0] +
                 m_buckets.capacity() * 4 + (m_freeNumbers.capacity() + m_freeTexts.capacity()) * 4;
    for (const Text& text : m_texts)
        if (text.bytes) {
            const size_t size = std::strlen(text.bytes.get());
            sum.texts += size;
            sum.beside += heap(size + 1) - size;
        }
    for (const Block& block : m_blocks) {
        if (!block)
            continue;
        const Layout& layout = layouts()[Layout::head(block.get()).table];
        const uint32_t present = Layout::head(block.get()).present;
        size_t size = 4 + 4 * static_cast<size_t>(std::popcount(present)) +
                      8 * static_cast<size_t>(std::popcount(layout.links(block.get())));
        size_t own = 0;
        for (size_t i = 0; i < layout.kinds.size(); ++i) {
            const int field = static_cast<int>(i);
            if (!Layout::has(block.get(), field))
                continue;
            if (layout.kinds[i] == Layout::Date)
                size += 8;
            if (layout.kinds[i] == Layout::Plain) {
                const size_t length = std::strlen(block.get() + Layout::slot(block.get(), field));
                own += length;
                size += length + 1;
            }
        }
        sum.texts += own;
        sum.beside += heap(size) - own;
    }
    return sum;
}

} // namespace orvo::catalogue
