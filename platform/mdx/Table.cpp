#include "platform/mdx/Table.h"

#include <algorithm>
#include <cassert>

namespace orvo::mdx {

// ---------------------------------------------------------------------------------------------
// Keys

void Table::setOwner(MDArray* owner) noexcept {
    m_records.setOwner(owner);
    for (const uint32_t number : entries())
        record(number)->owner = owner;
}

void Table::build(Tree& tree) {
    if (tree.built)
        return;
    tree.tree->build(entries(), false);
    tree.built = true;
}

int Table::addKey(std::string_view description, uint32_t flags, bool later) {
    if (flags != MDX_KEY_UNIQUE && flags != MDX_KEY_MULTI)
        return MDX_E_FORMAT;
    if (m_keys.size() >= maxKeys)
        return MDX_E_LIMIT;
    KeyFields fields;
    if (const int status = KeyFields::parse(description, structure(), fields); status != MDX_OK)
        return status;
    const bool unique = flags == MDX_KEY_UNIQUE;
    m_keys.reserve(m_keys.size() + 1);
    Key key{std::string(description), flags, 0};

    const auto same = std::find_if(m_trees.begin(), m_trees.end(),
                                   [&](const Tree& t) { return t.tree->fields() == fields; });
    if (same != m_trees.end()) {
        if (unique && !same->unique) {
            build(*same);
            if (!same->tree->isUnique())
                return MDX_E_DUPLICATE;
            same->unique = true;
        }
        ++same->users;
        key.tree = static_cast<size_t>(same - m_trees.begin());
    } else {
        m_trees.reserve(m_trees.size() + 1);
        Tree tree{std::make_unique<KeyTree>(m_records, std::move(fields)), false, unique, 1};
        if (unique || !later) {
            if (!tree.tree->build(entries(), unique))
                return MDX_E_DUPLICATE;
            tree.built = true;
        }
        key.tree = m_trees.size();
        m_trees.push_back(std::move(tree));
    }
    m_keys.push_back(std::move(key));
    return MDX_OK;
}

void Table::deleteKey(size_t key) noexcept {
    const size_t index = m_keys[key].tree;
    m_keys.erase(m_keys.begin() + static_cast<ptrdiff_t>(key));
    Tree& tree = m_trees[index];
    if (--tree.users == 0) {
        m_trees.erase(m_trees.begin() + static_cast<ptrdiff_t>(index));
        for (Key& other : m_keys)
            if (other.tree > index)
                --other.tree;
        return;
    }
    tree.unique = std::any_of(m_keys.begin(), m_keys.end(), [index](const Key& other) {
        return other.tree == index && other.flags == MDX_KEY_UNIQUE;
    });
}

const KeyTree* Table::tree(int key) {
    if (key < 0 || static_cast<size_t>(key) >= m_keys.size())
        return nullptr;
    Tree& tree = m_trees[m_keys[static_cast<size_t>(key)].tree];
    build(tree);
    return tree.tree.get();
}

size_t Table::keyMemory() const noexcept {
    size_t sum = 0;
    for (const Tree& tree : m_trees)
        sum += tree.tree->memory();
    return sum;
}

// ---------------------------------------------------------------------------------------------
// Records

std::span<const uint32_t> Table::entries() {
    if (m_holes > 0)
        compactOrder();
    return m_order;
}

// The order among the records stays, so the trees need not know.
void Table::compactOrder() noexcept {
    uint32_t next = 0;
    for (const uint32_t number : m_order) {
        if (number == hole)
            continue;
        record(number)->entry = next;
        m_order[next++] = number;
    }
    m_order.resize(next);
    m_holes = 0;
}

void Table::leaveOrder(Record* record) noexcept {
    assert(m_order[record->entry] == record->number && "1: its place in the order");
    m_order[record->entry] = hole;
    ++m_holes;
    record->set(Record::Posted, false);
    if (record->entry + size_t(1) == m_order.size()) {
        while (!m_order.empty() && m_order.back() == hole) {
            m_order.pop_back();
            --m_holes;
        }
    } else if (m_holes > 1024 && m_holes > m_order.size() / 2) {
        compactOrder();
    }
}

Record* Table::create(uint32_t bodySize) {
    Record* record = m_records.create(bodySize);
    m_hasRecords = true;
    return record;
}

Record* Table::createEmpty() {
    // Room for the texts of a record like those before, so that its body stays beside its head.
    const uint32_t fixed = m_structure->fixedSize();
    Record* record = create(std::max(fixed + 96, std::min(m_typicalSize, 4096u)));
    std::memset(record->bytes(), 0, fixed);
    record->bodySize = fixed;
    record->set(Record::Canonical, true);
    return record;
}

int Table::post(Record* record) {
    if (!record->is(Record::Canonical))
        record->set(Record::Canonical,
                    isCanonical(record->body, record->bodySize, *structure(), false));
    if (!record->is(Record::Posted))
        return postNew(record);
    return record->is(Record::Edited) ? postEdited(record) : MDX_OK;
}

int Table::postNew(Record* record) {
    if (m_order.size() >= INT32_MAX) {
        entries();
        if (m_order.size() >= INT32_MAX)
            return MDX_E_LIMIT;
    }
    for (Tree& tree : m_trees) {
        if (!tree.built)
            continue;
        tree.tree->prepareInsert(record);
        if (tree.unique && tree.tree->conflicts(record))
            return MDX_E_DUPLICATE;
    }
    m_typicalSize = m_typicalSize / 4 * 3 + (record->bodySize + 32) / 4;
    m_order.push_back(record->number);
    record->entry = static_cast<uint32_t>(m_order.size() - 1);
    record->set(Record::Posted, true);
    for (Tree& tree : m_trees)
        if (tree.built)
            tree.tree->insert(record);
    return MDX_OK;
}

int Table::postEdited(Record* record) {
    uint64_t changed = 0;
    static_assert(maxKeys <= 64);
    bool duplicate = false;
    for (size_t i = 0; i < m_trees.size(); ++i) {
        Tree& tree = m_trees[i];
        if (!tree.built)
            continue;
        tree.tree->prepareErase(record);
        tree.tree->prepareInsert(record);
        if (tree.tree->sameImages())
            continue;
        changed |= uint64_t(1) << i;
        duplicate |= tree.unique && tree.tree->conflicts(record);
    }
    // While the record is erased the keys still see the values it was posted with; while it is
    // inserted, the new ones.
    for (size_t i = 0; i < m_trees.size(); ++i)
        if (m_trees[i].built && (duplicate || (changed >> i & 1) != 0))
            m_trees[i].tree->erase(record);
    m_records.dropPosted(record);
    if (duplicate) {
        leaveOrder(record);
        return MDX_E_DUPLICATE;
    }
    for (size_t i = 0; i < m_trees.size(); ++i)
        if ((changed >> i & 1) != 0)
            m_trees[i].tree->insert(record);
    return MDX_OK;
}

void Table::remove(Record* record) {
    if (record->is(Record::Posted)) {
        for (Tree& tree : m_trees)
            if (tree.built)
                tree.tree->prepareErase(record);
        for (Tree& tree : m_trees)
            if (tree.built)
                tree.tree->erase(record);
        leaveOrder(record);
    }
    m_records.destroy(record);
}

int Table::postAll(std::span<const uint32_t> numbers) {
    size_t done = 0;
    int status = MDX_OK;
    const auto discard = [&](size_t from) {
        for (; from < numbers.size(); ++from)
            m_records.destroy(record(numbers[from]));
    };
    try {
        if (postedCount() + numbers.size() > INT32_MAX) {
            discard(0);
            return MDX_E_LIMIT;
        }
        // A few go in one by one, many are worth building the keys again.
        bool oneByOne = numbers.size() < postedCount() / 8;
        if (!oneByOne) {
            std::vector<uint32_t> order;
            order.reserve(postedCount() + numbers.size());
            const auto present = entries();
            order.insert(order.end(), present.begin(), present.end());
            for (const uint32_t number : numbers) {
                record(number)->entry = static_cast<uint32_t>(order.size());
                order.push_back(number);
            }
            std::vector<std::unique_ptr<KeyTree>> trees;
            for (const Tree& tree : m_trees) {
                auto fresh = std::make_unique<KeyTree>(m_records, tree.tree->fields());
                if (tree.built && !fresh->build(order, tree.unique)) {
                    oneByOne = true;
                    break;
                }
                trees.push_back(std::move(fresh));
            }
            if (!oneByOne) {
                for (size_t i = 0; i < trees.size(); ++i)
                    m_trees[i].tree.swap(trees[i]);
                m_order.swap(order);
                for (const uint32_t number : numbers)
                    record(number)->set(Record::Posted, true);
                return MDX_OK;
            }
        }
        for (; done < numbers.size(); ++done) {
            Record* next = record(numbers[done]);
            if (postNew(next) == MDX_E_DUPLICATE) {
                status = MDX_E_DUPLICATE;
                m_records.destroy(next);
            }
        }
    } catch (...) {
        discard(done);
        throw;
    }
    return status;
}

} // namespace orvo::mdx
