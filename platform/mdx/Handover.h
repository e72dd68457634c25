// Handover.h: a table on its way to a reader in the same process. It goes as it is, with its keys:
// packed and unpacked again a large one would be in memory three times.
//
//     ticket = "ORVOTKT" 01  number(8)
//
// What travels in the block of a reply is such a ticket. It stands for the table only at the place
// where it was put: the same bytes anywhere else, or from outside, stand for nothing.
#ifndef ORVO_PLATFORM_MDX_HANDOVER_H
#define ORVO_PLATFORM_MDX_HANDOVER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace orvo::mdx {

class Table;

/// Keeps the table until it is taken or this ends. Any thread may take it.
class Handover {
public:
    /// Throws std::bad_alloc.
    Handover();
    ~Handover();
    Handover(const Handover&) = delete;
    Handover& operator=(const Handover&) = delete;

    static constexpr size_t ticketSize = 16;
    const std::array<uint8_t, ticketSize>& ticket() const noexcept { return m_ticket; }
    /// From now on the ticket at that place, which outlives this, stands for the table.
    void offer(const void* place, std::unique_ptr<Table> table) noexcept;
    /// The table that the block stands for; null if it is no ticket, or if the table was taken.
    static std::unique_ptr<Table> take(const void* block, size_t length) noexcept;

private:
    uint64_t m_number;
    std::array<uint8_t, ticketSize> m_ticket;
};

} // namespace orvo::mdx

#endif
