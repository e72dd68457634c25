// FieldValues.h: values of a record by the numbers of its fields in the table; fields of which
// nothing is known are missing. Like a std::map, but in one piece of memory: plans hold several of
// them for each of a hundred thousand records.
#ifndef ORVO_PLATFORM_STORE_FIELDVALUES_H
#define ORVO_PLATFORM_STORE_FIELDVALUES_H

#include "platform/store/WritePlan.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace orvo::store {

/// Invariant: the numbers rise. References and iterators last until a field is added or taken away.
class FieldValues {
public:
    using Item = std::pair<int, Value>;
    using iterator = std::vector<Item>::iterator;
    using const_iterator = std::vector<Item>::const_iterator;

    bool empty() const { return m_items.empty(); }
    size_t size() const { return m_items.size(); }
    iterator begin() { return m_items.begin(); }
    iterator end() { return m_items.end(); }
    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }
    void reserve(size_t count) { m_items.reserve(count); }

    iterator find(int field) { return found(m_items, field); }
    const_iterator find(int field) const { return found(m_items, field); }
    size_t count(int field) const { return find(field) != end() ? 1 : 0; }
    const Value& at(int field) const {
        const auto item = find(field);
        if (item == end())
            throw std::out_of_range("FieldValues");
        return item->second;
    }
    /// NULL if it is new.
    Value& operator[](int field) {
        const auto at = place(m_items, field);
        if (at != end() && at->first == field)
            return at->second;
        const auto where = at - begin();
        m_items.emplace_back().first = field;
        std::rotate(begin() + where, end() - 1, end());
        return m_items[static_cast<size_t>(where)].second;
    }
    void erase(int field) {
        if (const auto item = find(field); item != end())
            m_items.erase(item);
    }
    void erase(iterator item) { m_items.erase(item); }
    /// Takes over the fields that are missing here. What is left there is of no use.
    void takeMissing(FieldValues&& other) {
        if (empty()) {
            m_items = std::move(other.m_items);
            return;
        }
        for (Item& item : other.m_items)
            if (count(item.first) == 0)
                (*this)[item.first] = std::move(item.second);
    }
    /// The values as a write has them; nothing is left here.
    std::vector<Item> take() { return std::exchange(m_items, {}); }

private:
    template <typename Items>
    static auto place(Items& items, int field) -> decltype(items.begin()) {
        return std::lower_bound(items.begin(), items.end(), field,
                                [](const Item& item, int number) { return item.first < number; });
    }
    template <typename Items>
    static auto found(Items& items, int field) -> decltype(items.begin()) {
        const auto at = place(items, field);
        return at != items.end() && at->first == field ? at : items.end();
    }

    std::vector<Item> m_items;
};

} // namespace orvo::store

#endif
