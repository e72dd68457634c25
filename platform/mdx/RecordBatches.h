// RecordBatches.h: the values of many records on their way to a second thread, which composes them.
//
//     batch = value*
//     value = kind(1) field(1) number(8)           boolean, integer, date
//           | kind(1) field(1) length(4) bytes     text, block
//           | kind(1) field(1)                     begin or end of a record; the field is 0
//
// A record may go on in the next batch, a value does not. A field number that no structure can
// have is FF, which none has either.
#ifndef ORVO_PLATFORM_MDX_RECORDBATCHES_H
#define ORVO_PLATFORM_MDX_RECORDBATCHES_H

#include "platform/mdx/RecordComposer.h"

#include <array>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace orvo::mdx {

/// While it lives the composer, which outlives it, belongs to its thread. One thread gives the
/// values; they are composed in the order they were given.
class RecordBatches {
public:
    /// Starts the thread. Throws std::bad_alloc, std::system_error.
    explicit RecordBatches(RecordComposer& composer);
    /// Composes what was given, and ends the thread.
    ~RecordBatches();
    RecordBatches(const RecordBatches&) = delete;
    RecordBatches& operator=(const RecordBatches&) = delete;

    enum class Kind : uint8_t { Begin, End, Boolean, Integer, Date, Utf8, Cp1251, Bytes };

    void mark(Kind kind) noexcept { head(kind, 0, 0); }
    template <class Number>
    void number(Kind kind, int field, Number value) noexcept {
        static_assert(sizeof value <= 8);
        uint8_t* at = head(kind, field, 8);
        store(at, value);
    }
    /// Long ones are not copied: the call waits and composes them itself.
    void bytes(Kind kind, int field, const void* bytes, size_t length) noexcept;

private:
    static constexpr size_t batchSize = 128 << 10; ///< some hundred records; stays in a cache
    static constexpr size_t batches = 4;
    static constexpr size_t longest = batchSize / 4; ///< of what is copied

    struct Batch {
        std::unique_ptr<uint8_t[]> bytes;
        size_t size = 0;
    };

    /// Room for a value of that size behind its kind and field.
    uint8_t* head(Kind kind, int field, size_t size) noexcept {
        if (batchSize - m_batches[m_filling].size < size + 2)
            give();
        Batch& batch = m_batches[m_filling];
        uint8_t* at = batch.bytes.get() + batch.size;
        at[0] = static_cast<uint8_t>(kind);
        at[1] = static_cast<uint8_t>(field >= 0 && field < 0xFF ? field : 0xFF);
        batch.size += size + 2;
        return at + 2;
    }
    void give() noexcept;
    void drain() noexcept;
    void work() noexcept;
    void compose(const Batch& batch) noexcept;

    RecordComposer& m_composer;
    std::array<Batch, batches> m_batches; ///< a ring
    size_t m_filling = 0;                 ///< the giver's

    std::mutex m_mutex; ///< of what follows
    std::condition_variable m_changed;
    size_t m_given = 0; ///< batches with the thread, the one at work included
    bool m_ending = false;

    std::thread m_thread;
};

} // namespace orvo::mdx

#endif
