#include "platform/mdx/Handover.h"

#include "platform/mdx/Table.h"

#include <map>
#include <mutex>
#include <string_view>

namespace orvo::mdx {

namespace {

constexpr std::string_view ticketMagic("ORVOTKT\x01", 8);

struct Offer {
    const void* place = nullptr;
    std::unique_ptr<Table> table;
};

struct Offers {
    std::mutex mutex; ///< of what follows
    std::map<uint64_t, Offer> byNumber;
    uint64_t last = 0;
};

Offers& offers() {
    static Offers all;
    return all;
}

} // namespace

Handover::Handover() {
    const std::lock_guard lock(offers().mutex);
    m_number = ++offers().last;
    offers().byNumber.emplace(m_number, Offer());
    std::memcpy(m_ticket.data(), ticketMagic.data(), ticketMagic.size());
    store(m_ticket.data() + ticketMagic.size(), m_number);
}

Handover::~Handover() {
    std::unique_ptr<Table> left; // ends without the lock
    const std::lock_guard lock(offers().mutex);
    const auto offer = offers().byNumber.find(m_number);
    left = std::move(offer->second.table);
    offers().byNumber.erase(offer);
}

void Handover::offer(const void* place, std::unique_ptr<Table> table) noexcept {
    const std::lock_guard lock(offers().mutex);
    offers().byNumber.find(m_number)->second = {place, std::move(table)};
}

std::unique_ptr<Table> Handover::take(const void* block, size_t length) noexcept {
    if (length != ticketSize || std::memcmp(block, ticketMagic.data(), ticketMagic.size()) != 0)
        return nullptr;
    const auto number = load<uint64_t>(static_cast<const uint8_t*>(block) + ticketMagic.size());
    const std::lock_guard lock(offers().mutex);
    const auto offer = offers().byNumber.find(number);
    if (offer == offers().byNumber.end() || offer->second.place != block)
        return nullptr;
    return std::move(offer->second.table);
}

} // namespace orvo::mdx
