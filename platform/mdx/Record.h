// Record.h: record heads and where their bodies live.
#ifndef ORVO_PLATFORM_MDX_RECORD_H
#define ORVO_PLATFORM_MDX_RECORD_H

#include "platform/mdx/Body.h"
#include "platform/mdx/FirstBroken.h"
#include "platform/mdx/Pages.h"

#include <unordered_map>
#include <vector>

namespace orvo::mdx {

/// The head of a record of an array. Its body follows it in the same memory while it fits there,
/// else it has a block of its own.
struct Record : MDRData {
    enum State : uint8_t {
        Posted = 1,   ///< in the array's order and keys
        Edited = 2,   ///< written to since it was posted; the pool keeps the posted body
        Outside = 4,  ///< the body has a block of its own
        Canonical = 8 ///< the body is canonical (Body.h)
    };

    uint32_t entry; ///< index in the array's order of entry, while posted
    uint16_t units; ///< units of memory of head and inner body
    uint8_t state;
    uint8_t flag; ///< MdxRecordFlag

    bool is(State s) const noexcept { return (state & s) != 0; }
    void set(State s, bool on) noexcept {
        state = static_cast<uint8_t>(on ? state | s : state & ~s);
    }
    uint8_t* innerBody() noexcept { return reinterpret_cast<uint8_t*>(this + 1); }
    uint8_t* bytes() noexcept { return const_cast<uint8_t*>(body); }
};
static_assert(sizeof(Record) == 32);

inline Record* recordOf(MDRData* data) noexcept {
    return static_cast<Record*>(data);
}
inline const Record* recordOf(const MDRData* data) noexcept {
    return static_cast<const Record*>(data);
}

/// All records of one array. A record number is the address of its head in units of 16 bytes
/// within numbered chunks, so that the key trees reach a record without a table of addresses.
///
/// Of each record that is not destroyed this holds; check() looks at it.
///
///  1. It has the pool's owner, and its number leads back to it.
///  2. Its body follows the head, or is a block of its own and the record Outside; either way there
///     is room for bodySize bytes.
///  3. An Edited record, and no other, has a copy of the body it was posted with.
///  4. A Canonical record has a canonical body (Body.h).
///
/// A destroyed record has no owner and no body; its number chains the free places of its size.
class RecordPool {
public:
    explicit RecordPool(MDArray* owner) : m_owner(owner) {}
    ~RecordPool();
    RecordPool(const RecordPool&) = delete;
    RecordPool& operator=(const RecordPool&) = delete;

    /// The heads of the records follow one by one.
    void setOwner(MDArray* owner) noexcept { m_owner = owner; }
    /// A new head with room for a body of that size; the body is not filled. Throws std::bad_alloc,
    /// std::length_error.
    Record* create(uint32_t bodySize);
    void destroy(Record* record) noexcept;

    Record* at(uint32_t number) const noexcept {
        return reinterpret_cast<Record*>(m_chunks[number >> chunkShift] +
                                         size_t(number & chunkMask) * unit);
    }
    uint32_t capacity(const Record* record) const noexcept;
    /// Gives the record a body block of its own of that capacity, unfilled, and hands back the old
    /// block (null if it was the inner body), to be freed with freeOutside once it is read.
    uint8_t* moveOutside(Record* record, uint32_t bodyCapacity);
    void freeOutside(uint8_t* body) noexcept;

    /// Keeps a copy of the body as it was posted. Throws std::bad_alloc.
    void keepPosted(Record* record);
    void dropPosted(Record* record) noexcept;
    /// The body the keys know: as it was when the record was posted.
    const uint8_t* postedBody(const Record* record) const noexcept {
        return record->is(Record::Edited) ? keptBody(record) : record->body;
    }
    /// The kept body of an edited record, or null.
    uint8_t* keptBytes(const Record* record) noexcept {
        return record->is(Record::Edited) ? const_cast<uint8_t*>(keptBody(record)) : nullptr;
    }
    uint32_t postedSize(const Record* record) const noexcept;
    /// Looks at the invariants above but the last.
    void check(const Record* record, FirstBroken& broken) const;
    /// At least as many bytes as all bodies together.
    size_t memory() const noexcept { return m_pages.bytes() + m_outsideBytes; }

private:
    static constexpr unsigned chunkShift = 17;
    static constexpr uint32_t chunkMask = (1u << chunkShift) - 1;
    static constexpr uint32_t unit = 16;
    static constexpr uint32_t maxInner = 16u << 10; ///< larger bodies get a block of their own
    static constexpr uint32_t maxUnits = (maxInner + sizeof(Record)) / unit;

    struct Outside; // head of a body block
    struct Kept {
        std::unique_ptr<uint8_t[]> body;
        uint32_t size;
    };

    const uint8_t* keptBody(const Record* record) const noexcept;
    uint32_t takeUnits(uint32_t units);
    void addChunk(uint32_t units);
    Outside* newOutside(uint32_t capacity);

    MDArray* m_owner;
    std::vector<uint8_t*> m_chunks;
    Pages m_pages;
    uint32_t m_used = 0, m_end = 0; ///< units of the last chunk
    std::vector<uint32_t> m_free;   ///< per number of units: first free place + 1, or 0
    Outside* m_outside = nullptr;   ///< all body blocks, to free them
    size_t m_outsideBytes = 0;      ///< of body blocks and kept bodies
    std::unordered_map<uint32_t, Kept> m_kept;
};

} // namespace orvo::mdx

#endif
