// RecordComposer.h: writes records into a table, one after the other, from their values.
#ifndef ORVO_PLATFORM_MDX_RECORDCOMPOSER_H
#define ORVO_PLATFORM_MDX_RECORDCOMPOSER_H

#include "platform/mdx/Bytes.h"
#include "platform/mdx/Structure.h"

#include <vector>

namespace orvo::mdx {

struct Array;

/// The record under way is composed in one buffer, which stays in the cache, and copied to its
/// place when its size is known. For one thread at a time. What fails first ends the writing; its
/// status is kept, and what is asked for afterwards does nothing.
class RecordComposer {
public:
    /// The array outlives the composer; null: nothing can be written. Throws std::bad_alloc.
    explicit RecordComposer(Array* array);

    int status() const noexcept { return m_status; }

    void begin() noexcept;
    void boolean(int field, bool value) noexcept;
    void integer(int field, int32_t value) noexcept;
    void date(int field, double value) noexcept;
    void textUtf8(int field, const char* text, size_t length) noexcept;
    void text1251(int field, const char* text, size_t length) noexcept;
    void block(int field, const void* bytes, size_t length) noexcept;
    void end() noexcept;
    /// Enters the records into the array and its keys. Gives the status.
    int finish() noexcept;

private:
    bool begins(int field, uint8_t type) noexcept;
    template <class T>
    void number(int field, T value) noexcept;
    template <class Fill>
    void text(int field, size_t room, Fill&& fill) noexcept;
    void fail(int what) noexcept {
        if (m_status == MDX_OK)
            m_status = what;
    }

    Array* m_array;
    const Structure* m_structure; ///< null: nothing can be written
    std::vector<uint8_t> m_body;
    uint32_t m_size = 0;
    std::vector<uint32_t> m_numbers;
    int m_status = MDX_OK;
    bool m_open = false;
    int m_last = -1; ///< field written last
};

} // namespace orvo::mdx

#endif
