#include "catalogue/Catalogue.h"

#include "catalogue/Layout.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/mdx/MdxBuild.h"

#include <algorithm>
#include <cassert>

namespace orvo::catalogue {

// ---------------------------------------------------------------------------------------------
// A record

const store::TableDef& Record::table() const {
    return *Catalogue::layouts()[Catalogue::Layout::head(m_block).table].table;
}

bool Record::isIn(const char* table) const {
    return m_block && std::strcmp(this->table().name, table) == 0;
}

std::string_view Record::cp1251(int field) const {
    using Layout = Catalogue::Layout;
    if (!m_block || field < 0 || !Layout::has(m_block, field))
        return {};
    const uint32_t slot = Layout::slot(m_block, field);
    switch (Catalogue::layouts()[Layout::head(m_block).table].kinds[static_cast<size_t>(field)]) {
    case Layout::Indexed:
        return m_owner->m_texts[slot].bytes.get();
    case Layout::Plain:
        return m_block + slot;
    default:
        return {};
    }
}

std::string Record::key() const {
    return text(0);
}

std::string Record::text(int field) const {
    return mdx::toUtf8(cp1251(field));
}

std::string Record::text(const char* field) const {
    return m_block ? text(table().find(field)) : std::string();
}

int Record::integer(int field) const {
    using Layout = Catalogue::Layout;
    if (!m_block || field < 0 || !Layout::has(m_block, field) ||
        Catalogue::layouts()[Layout::head(m_block).table].kinds[static_cast<size_t>(field)] !=
            Layout::Number)
        return 0;
    return static_cast<int>(Layout::slot(m_block, field));
}

int Record::integer(const char* field) const {
    return m_block ? integer(table().find(field)) : 0;
}

bool Record::isNull(int field) const {
    return !m_block || field < 0 || !Catalogue::Layout::has(m_block, field);
}

history::Values Record::values() const {
    using Layout = Catalogue::Layout;
    history::Values values;
    if (!m_block)
        return values;
    const Layout& layout = Catalogue::layouts()[Layout::head(m_block).table];
    for (int i = 0, end = static_cast<int>(layout.kinds.size()); i < end; ++i) {
        store::Value& value = values[i];
        if (isNull(i))
            continue;
        if (layout.kinds[static_cast<size_t>(i)] == Layout::Number) {
            value = int64_t(integer(i));
        } else if (layout.kinds[static_cast<size_t>(i)] == Layout::Date) {
            double date = 0;
            std::memcpy(&date, m_block + Layout::slot(m_block, i), sizeof date);
            value = date;
        } else {
            value = text(i);
        }
    }
    return values;
}

QString Record::name() const {
    return m_block ? history::nameOf(table(), values()) : QString();
}

// ---------------------------------------------------------------------------------------------
// Records

Catalogue::Catalogue() {
    clear();
}

Catalogue::~Catalogue() = default;

void Catalogue::clear() {
    m_blocks.clear();
    m_freeNumbers.clear();
    m_counts.assign(layouts().size(), 0);
    m_texts.clear();
    m_texts.emplace_back(); // 0 is none
    m_freeTexts.clear();
    m_buckets.assign(1024, 0);
    m_textCount = 0;
}

size_t Catalogue::count() const {
    return m_blocks.size() - m_freeNumbers.size();
}

size_t Catalogue::count(const store::TableDef& table) const {
    return m_counts[layoutOf(table).number];
}

Record Catalogue::at(uint32_t number) const {
    if (number >= m_blocks.size() || !m_blocks[number])
        return {};
    return {this, m_blocks[number].get(), number};
}

Record Catalogue::find(const store::TableDef& table, std::string_view key) const {
    const std::string bytes = mdx::toCp1251(key);
    const uint8_t domain = layoutOf(table).number;
    for (uint32_t text = findText(bytes, domain); text != 0; text = findText(bytes, domain, text))
        if (m_texts[text].owner != 0)
            return at(m_texts[text].owner - 1);
    return {};
}

Record Catalogue::find(const char* table, std::string_view key) const {
    const store::TableDef* def = store::findTable(table);
    return def ? find(*def, key) : Record();
}

void Catalogue::forEach(const store::TableDef& table,
                        const std::function<void(const Record&)>& each) const {
    const uint8_t wanted = layoutOf(table).number;
    for (uint32_t number = 0; number < numberEnd(); ++number)
        if (m_blocks[number] && Layout::head(m_blocks[number].get()).table == wanted)
            each(at(number));
}

// ---------------------------------------------------------------------------------------------
// Who names whom

void Catalogue::walk(uint8_t domain, std::string_view text, const Each& each, const Layout* table,
                     int field) const {
    for (uint32_t id = findText(text, domain); id != 0; id = findText(text, domain, id))
        for (Node node = m_texts[id].first; node != 0; node = neighbours(node)[1]) {
            const Record namer = at(node / 8 - 1);
            const Layout& layout = layouts()[Layout::head(namer.m_block).table];
            if (table && &layout != table)
                continue;
            uint32_t bits = layout.links(namer.m_block);
            for (uint32_t skip = node % 8; skip > 0; --skip)
                bits &= bits - 1;
            const int number = std::countr_zero(bits);
            if ((field < 0 || field == number) && !each(namer, number))
                return;
        }
}

void Catalogue::forEachWith(const char* table, const char* field, std::string_view text,
                            const Each& each) const {
    const store::TableDef* def = store::findTable(table);
    const int number = def ? def->find(field) : -1;
    if (number < 0)
        return;
    const Layout& layout = layoutOf(*def);
    assert(layout.kinds[static_cast<size_t>(number)] == Layout::Indexed);
    walk(layout.domains[static_cast<size_t>(number)], mdx::toCp1251(text), each, &layout, number);
}

void Catalogue::forEachLink(const store::TableDef& table, std::string_view key,
                            const Each& each) const {
    walk(layoutOf(table).number, mdx::toCp1251(key), each, nullptr, -1);
}

Record Catalogue::linked(const Record& record, int field) const {
    if (record.isNull(field))
        return {};
    const Layout& layout = layouts()[Layout::head(record.m_block).table];
    const auto place = static_cast<size_t>(field);
    if (layout.targets[place] == Layout::noTarget)
        return {};
    const Text& text = m_texts[Layout::slot(record.m_block, field)];
    if (text.owner != 0)
        return at(text.owner - 1);
    // The record's key may be spelled in letters of the other case.
    const std::string_view bytes = text.bytes.get();
    for (uint32_t id = findText(bytes, text.domain); id != 0; id = findText(bytes, text.domain, id))
        if (m_texts[id].owner != 0)
            return at(m_texts[id].owner - 1);
    return {};
}

Record Catalogue::above(const Record& record) const {
    if (record)
        for (const int field : layouts()[Layout::head(record.m_block).table].above)
            if (!record.isNull(field))
                return linked(record, field);
    return {};
}

QString Catalogue::path(const Record& record) const {
    CatalogueRecords source(*this);
    return record ? history::placeOf(record.table(), record.values(), &source) : QString();
}

history::Values CatalogueRecords::valuesOf(const store::TableDef& table, const std::string& key) {
    return m_catalogue.find(table, key).values();
}

// ---------------------------------------------------------------------------------------------
// Lists

uint32_t* Catalogue::neighbours(Node node) const {
    char* block = m_blocks[node / 8 - 1].get();
    return Layout::slotsOf(block) + std::popcount(uint32_t(Layout::head(block).present)) +
           size_t(2) * (node % 8);
}

void Catalogue::link(uint32_t number) {
    const char* block = m_blocks[number].get();
    const Layout& layout = layouts()[Layout::head(block).table];
    m_texts[Layout::slot(block, 0)].owner = number + 1;
    ++m_counts[layout.number];
    Node node = 8 * (number + 1);
    for (uint32_t bits = layout.links(block); bits != 0; bits &= bits - 1, ++node) {
        Text& text = m_texts[Layout::slot(block, std::countr_zero(bits))];
        uint32_t* own = neighbours(node);
        own[0] = 0;
        own[1] = text.first;
        if (text.first != 0)
            neighbours(text.first)[0] = node;
        text.first = node;
    }
}

void Catalogue::unlink(uint32_t number) {
    const char* block = m_blocks[number].get();
    const Layout& layout = layouts()[Layout::head(block).table];
    m_texts[Layout::slot(block, 0)].owner = 0;
    --m_counts[layout.number];
    Node node = 8 * (number + 1);
    for (uint32_t bits = layout.links(block); bits != 0; bits &= bits - 1, ++node) {
        const uint32_t* own = neighbours(node);
        if (own[1] != 0)
            neighbours(own[1])[0] = own[0];
        if (own[0] != 0)
            neighbours(own[0])[1] = own[1];
        else
            m_texts[Layout::slot(block, std::countr_zero(bits))].first = own[1];
    }
}

void Catalogue::release(const char* block) {
    const Layout& layout = layouts()[Layout::head(block).table];
    releaseText(Layout::slot(block, 0));
    for (uint32_t bits = layout.links(block); bits != 0; bits &= bits - 1)
        releaseText(Layout::slot(block, std::countr_zero(bits)));
}

// ---------------------------------------------------------------------------------------------
// Texts

uint32_t Catalogue::findText(std::string_view text, uint8_t domain, uint32_t after) const {
    uint32_t id =
        after != 0 ? m_texts[after].next : m_buckets[hashOf(text, domain) & (m_buckets.size() - 1)];
    while (id != 0 && (m_texts[id].domain != domain || !isAlike(m_texts[id].bytes.get(), text)))
        id = m_texts[id].next;
    return id;
}

uint32_t Catalogue::intern(std::string_view text, uint8_t domain) {
    for (uint32_t id = findText(text, domain); id != 0; id = findText(text, domain, id))
        if (text == m_texts[id].bytes.get())
            return id;
    if (m_textCount >= m_buckets.size())
        growBuckets();
    uint32_t id = 0;
    if (m_freeTexts.empty()) {
        id = static_cast<uint32_t>(m_texts.size());
        m_texts.emplace_back();
    } else {
        id = m_freeTexts.back();
        m_freeTexts.pop_back();
    }
    Text& added = m_texts[id];
    added.bytes.reset(new char[text.size() + 1]);
    std::memcpy(added.bytes.get(), text.data(), text.size());
    added.bytes[text.size()] = '\0';
    added.owner = added.first = 0;
    added.domain = domain;
    uint32_t& bucket = m_buckets[hashOf(text, domain) & (m_buckets.size() - 1)];
    added.next = std::exchange(bucket, id);
    ++m_textCount;
    return id;
}

void Catalogue::releaseText(uint32_t text) {
    Text& gone = m_texts[text];
    if (!gone.bytes || gone.owner != 0 || gone.first != 0)
        return;
    uint32_t* place = &m_buckets[hashOf(gone.bytes.get(), gone.domain) & (m_buckets.size() - 1)];
    while (*place != text)
        place = &m_texts[*place].next;
    *place = gone.next;
    gone.bytes.reset();
    m_freeTexts.push_back(text);
    --m_textCount;
}

void Catalogue::growBuckets() {
    m_buckets.assign(2 * m_buckets.size(), 0);
    for (uint32_t id = 1; id < m_texts.size(); ++id) {
        Text& text = m_texts[id];
        if (!text.bytes)
            continue;
        uint32_t& bucket =
            m_buckets[hashOf(text.bytes.get(), text.domain) & (m_buckets.size() - 1)];
        text.next = std::exchange(bucket, id);
    }
}

} // namespace orvo::catalogue
