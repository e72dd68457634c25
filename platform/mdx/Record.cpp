#include "platform/mdx/Record.h"

#include <algorithm>
#include <cassert>
#include <new>

namespace orvo::mdx {

struct RecordPool::Outside {
    Outside* previous;
    Outside* next;
    uint32_t capacity;

    static Outside* of(const uint8_t* body) noexcept {
        return reinterpret_cast<Outside*>(const_cast<uint8_t*>(body)) - 1;
    }
    uint8_t* body() noexcept { return reinterpret_cast<uint8_t*>(this + 1); }
};

RecordPool::~RecordPool() {
    while (m_outside) {
        Outside* next = m_outside->next;
        ::operator delete(m_outside);
        m_outside = next;
    }
}

void RecordPool::addChunk(uint32_t units) {
    // Scratch arrays hold a record or two, tables a million: the chunks grow with their number.
    constexpr size_t sizes[] = {4u << 10, 64u << 10, 512u << 10};
    const size_t index = m_chunks.size();
    if (index > UINT32_MAX >> chunkShift)
        throw std::length_error("records");
    const size_t size =
        std::max<size_t>(index < std::size(sizes) ? sizes[index] : hugePage, size_t(units) * unit);
    m_chunks.reserve(std::max<size_t>(4, std::bit_ceil(index + 1)));
    m_chunks.push_back(m_pages.add(size));
    m_used = 0;
    m_end = static_cast<uint32_t>(size / unit);
}

uint32_t RecordPool::takeUnits(uint32_t units) {
    if (units < m_free.size()) {
        if (uint32_t& first = m_free[units]) {
            const uint32_t number = first - 1;
            first = at(number)->number;
            return number;
        }
    }
    if (m_end - m_used < units)
        addChunk(units);
    const auto number = static_cast<uint32_t>((m_chunks.size() - 1) << chunkShift) + m_used;
    m_used += units;
    return number;
}

Record* RecordPool::create(uint32_t bodySize) {
    const bool outside = bodySize > maxInner;
    const uint32_t units =
        static_cast<uint32_t>((sizeof(Record) + (outside ? 0 : bodySize) + unit - 1) / unit);
    if (m_free.empty())
        m_free.resize(maxUnits + 1); // here, so that destroy() needs no memory
    Outside* block = outside ? newOutside(bodySize) : nullptr;
    uint32_t number;
    try {
        number = takeUnits(units);
    } catch (...) {
        if (block)
            freeOutside(block->body());
        throw;
    }
    auto* record = new (at(number)) Record;
    record->owner = m_owner;
    record->body = block ? block->body() : record->innerBody();
    record->bodySize = bodySize;
    record->number = number;
    record->entry = 0;
    record->units = static_cast<uint16_t>(units);
    record->state = block ? Record::Outside : 0;
    record->flag = 0;
    return record;
}

void RecordPool::destroy(Record* record) noexcept {
    assert(record->owner == m_owner && at(record->number) == record && "1: a record of this pool");
    dropPosted(record);
    if (record->is(Record::Outside))
        freeOutside(record->bytes());
    const uint32_t number = record->number;
    uint32_t& first = m_free[record->units];
    // The head stays in its place until another record takes it: reads and writes through the old
    // handle find no owner and no body there, and refuse.
    record->owner = nullptr;
    record->body = nullptr;
    record->bodySize = 0;
    record->number = first; // the chain of free places
    first = number + 1;
}

uint32_t RecordPool::capacity(const Record* record) const noexcept {
    if (record->is(Record::Outside))
        return Outside::of(record->body)->capacity;
    return record->units * unit - static_cast<uint32_t>(sizeof(Record));
}

RecordPool::Outside* RecordPool::newOutside(uint32_t capacity) {
    auto* block = static_cast<Outside*>(::operator new(sizeof(Outside) + capacity));
    *block = {nullptr, m_outside, capacity};
    if (m_outside)
        m_outside->previous = block;
    m_outside = block;
    m_outsideBytes += capacity;
    return block;
}

uint8_t* RecordPool::moveOutside(Record* record, uint32_t bodyCapacity) {
    Outside* block = newOutside(bodyCapacity);
    uint8_t* old = record->is(Record::Outside) ? record->bytes() : nullptr;
    record->body = block->body();
    record->set(Record::Outside, true);
    return old;
}

void RecordPool::freeOutside(uint8_t* body) noexcept {
    if (!body)
        return;
    Outside* block = Outside::of(body);
    m_outsideBytes -= block->capacity;
    (block->previous ? block->previous->next : m_outside) = block->next;
    if (block->next)
        block->next->previous = block->previous;
    ::operator delete(block);
}

void RecordPool::keepPosted(Record* record) {
    auto copy = std::make_unique_for_overwrite<uint8_t[]>(record->bodySize);
    std::memcpy(copy.get(), record->body, record->bodySize);
    m_kept[record->number] = {std::move(copy), record->bodySize};
    m_outsideBytes += record->bodySize;
    record->set(Record::Edited, true);
}

void RecordPool::dropPosted(Record* record) noexcept {
    if (!record->is(Record::Edited))
        return;
    const auto kept = m_kept.find(record->number);
    assert(kept != m_kept.end() && "3: an edited record has its posted body");
    m_outsideBytes -= kept->second.size;
    m_kept.erase(kept);
    record->set(Record::Edited, false);
}

const uint8_t* RecordPool::keptBody(const Record* record) const noexcept {
    return m_kept.find(record->number)->second.body.get();
}

uint32_t RecordPool::postedSize(const Record* record) const noexcept {
    return record->is(Record::Edited) ? m_kept.find(record->number)->second.size : record->bodySize;
}

} // namespace orvo::mdx
