#include "catalogue/Catalogue.h"

#include "catalogue/Layout.h"
#include "frame/StdText.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Maintenance.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <iterator>
#include <optional>
#include <utility>

namespace orvo::catalogue {

namespace {

/// Small letters for capital ones, Windows-1251.
const std::array<uint8_t, 256>& folding() {
    static const std::array<uint8_t, 256> table = [] {
        std::array<uint8_t, 256> all{};
        for (size_t i = 0; i < all.size(); ++i)
            all[i] = static_cast<uint8_t>(i >= 'A' && i <= 'Z' ? i + 'a' - 'A' : i);
        const std::string upper = mdx::toCp1251(store::upperLetters);
        const std::string lower = mdx::toCp1251(store::lowerLetters);
        for (size_t i = 0; i < upper.size(); ++i)
            all[static_cast<uint8_t>(upper[i])] = static_cast<uint8_t>(lower[i]);
        return all;
    }();
    return table;
}

/// What the texts of an indexed field that is no link are names of; nothing for any other field.
std::optional<uint8_t> namesDomain(const char* field) {
    constexpr uint8_t firstOfNames = 32; // beyond the tables
    uint8_t domain = firstOfNames;
    for (const char* name : {field::ico, field::name_, field::login_, field::fileExt}) {
        if (std::strcmp(field, name) == 0)
            return domain;
        ++domain;
    }
    return {};
}

} // namespace

uint8_t foldedByte(uint8_t letter) {
    return folding()[letter];
}

uint32_t hashOf(std::string_view text, uint8_t domain) {
    const auto& fold = folding();
    uint32_t hash = 2166136261U ^ domain;
    for (const char letter : text)
        hash = (hash ^ fold[static_cast<uint8_t>(letter)]) * 16777619U;
    return hash ^ hash >> 15;
}

bool isAlike(const char* held, std::string_view text) {
    const auto& fold = folding();
    for (const char letter : text)
        if (*held == '\0' ||
            fold[static_cast<uint8_t>(*held++)] != fold[static_cast<uint8_t>(letter)])
            return false;
    return *held == '\0';
}

// ---------------------------------------------------------------------------------------------
// Layouts

const std::vector<Catalogue::Layout>& Catalogue::layouts() {
    static const std::vector<Layout> all = [] {
        std::vector<Layout> made;
        for (const store::TableDef& table : store::tables()) {
            Layout layout;
            layout.table = &table;
            layout.number = static_cast<uint8_t>(made.size());
            for (const store::FieldDef& field : table.fields) {
                const bool isKey = &field == &table.fields.front();
                Layout::Kind kind = field.type == MDX_TEXT   ? Layout::Plain
                                    : field.type == MDX_DATE ? Layout::Date
                                                             : Layout::Number;
                uint8_t target = Layout::noTarget;
                if (const store::TableDef* named = history::targetOf(table, field))
                    target = static_cast<uint8_t>(named - store::tables().data());
                std::optional<uint8_t> domain = namesDomain(field.name);
                if (isKey)
                    domain = layout.number;
                else if (target != Layout::noTarget)
                    domain = target;
                if (domain)
                    kind = Layout::Indexed;
                if (domain && !isKey)
                    layout.indexed |= static_cast<uint16_t>(1U << layout.kinds.size());
                layout.kinds.push_back(kind);
                layout.domains.push_back(domain.value_or(Layout::noTarget));
                layout.targets.push_back(target);
            }
            for (const store::ParentField& parent : store::parentFields(table))
                layout.above.push_back(table.find(parent.field));
            assert(layout.kinds.size() <= 16 && std::popcount(uint32_t(layout.indexed)) <= 8);
            made.push_back(std::move(layout));
        }
        return made;
    }();
    return all;
}

const Catalogue::Layout& Catalogue::layoutOf(const store::TableDef& table) {
    return layouts()[static_cast<size_t>(&table - store::tables().data())];
}

// ---------------------------------------------------------------------------------------------
// Blocks

/// Texts are others', and live until the block is packed.
struct Catalogue::Draft {
    explicit Draft(const Layout& of) : layout(of), values(of.kinds.size()) {}

    struct Value {
        bool isNull = true;
        int32_t number = 0;
        double date = 0;
        std::string_view text = {};
    };
    const Layout& layout;
    std::vector<Value> values;

    void take(const Record& record) {
        for (size_t i = 0; i < values.size(); ++i) {
            const int field = static_cast<int>(i);
            Value& value = values[i];
            value.isNull = record.isNull(field);
            if (value.isNull)
                continue;
            if (layout.kinds[i] == Layout::Number)
                value.number = record.integer(field);
            else if (layout.kinds[i] == Layout::Date)
                value.date = std::get<double>(record.values()[field]);
            else
                value.text = record.cp1251(field);
        }
    }
    /// The fields of a record, or those of them that are marked as set.
    void take(MDRData* record, bool onlySet) {
        for (size_t i = 0; i < values.size(); ++i) {
            const MDRField field = MDRFldByNum(record->owner, static_cast<int>(i));
            uint8_t set = 0;
            MDRVar var{};
            if (onlySet && (MDRIsUser(field, record, &set) != MDX_OK || set == 0))
                continue;
            MDRGetVal(field, record, &var);
            Value& value = values[i];
            value = {};
            value.isNull = var.null != 0 || var.type == MDX_NONE;
            if (value.isNull)
                continue;
            if (var.type == MDX_TEXT)
                value.text = {var.value.text.pointer, var.value.text.length};
            else if (var.type == MDX_DATE)
                value.date = var.value.date;
            else
                value.number = var.type == MDX_BOOLEAN ? var.value.boolean : var.value.integer;
        }
    }
};

Catalogue::Block Catalogue::pack(const Draft& draft) {
    const Layout& layout = draft.layout;
    uint16_t present = 0;
    size_t size = sizeof(Head), rest = 0;
    for (size_t i = 0; i < draft.values.size(); ++i) {
        if (draft.values[i].isNull)
            continue;
        present = static_cast<uint16_t>(present | 1U << i);
        size += sizeof(uint32_t) + ((layout.indexed >> i & 1) != 0 ? 2 * sizeof(Node) : 0);
        if (layout.kinds[i] == Layout::Date)
            rest += sizeof(double);
        else if (layout.kinds[i] == Layout::Plain)
            rest += draft.values[i].text.size() + 1;
    }
    Block block(new char[size + rest]);
    *reinterpret_cast<Head*>(block.get()) = {layout.number, 0, present};
    uint32_t* slot = Layout::slotsOf(block.get());
    char* end = block.get() + size;
    for (const bool dates : {true, false}) { // their slots stay in the order of the fields
        uint32_t* at = slot;
        for (size_t i = 0; i < draft.values.size(); ++i) {
            const Draft::Value& value = draft.values[i];
            if (value.isNull)
                continue;
            uint32_t& word = *at++;
            if (layout.kinds[i] == Layout::Date && dates) {
                word = static_cast<uint32_t>(end - block.get());
                std::memcpy(end, &value.date, sizeof value.date);
                end += sizeof value.date;
            } else if (layout.kinds[i] == Layout::Plain && !dates) {
                word = static_cast<uint32_t>(end - block.get());
                std::memcpy(end, value.text.data(), value.text.size());
                end += value.text.size();
                *end++ = '\0';
            } else if (layout.kinds[i] == Layout::Number) {
                word = static_cast<uint32_t>(value.number);
            } else if (layout.kinds[i] == Layout::Indexed && dates) {
                word = intern(value.text, layout.domains[i]);
            }
        }
    }
    return block;
}

void Catalogue::place(uint32_t number, Block block) {
    m_blocks[number] = std::move(block);
    link(number);
}

// ---------------------------------------------------------------------------------------------
// Loading and following

store::Status Catalogue::load(store::Store& store, const std::atomic<bool>* stop) {
    clear();
    for (const Layout& layout : layouts()) {
        CMDArray rows;
        store::Status status = store.fetch(layout.table->name, rows.array);
        if (!status.ok()) {
            clear();
            return status;
        }
        const uint32_t count = mdx::postedCount(rows.array);
        m_blocks.reserve(m_blocks.size() + count);
        Draft draft(layout);
        for (uint32_t i = 0; i < count; ++i) {
            if (stop && *stop) {
                clear();
                return {store::Stopped, StdText::tr("Чтение прервано.")};
            }
            draft.take(mdx::postedRecord(rows.array, i), false);
            Block block = pack(draft);
            m_blocks.emplace_back();
            place(numberEnd() - 1, std::move(block));
        }
    }
    // A vector that has just doubled would keep half of its place for nothing.
    if (m_texts.capacity() > m_texts.size() + m_texts.size() / 8) {
        std::vector<Text> fitting;
        fitting.reserve(m_texts.size() + m_texts.size() / 16);
        std::move(m_texts.begin(), m_texts.end(), std::back_inserter(fitting));
        m_texts = std::move(fitting);
    }
    assert(check() == nullptr);
    for (Listener* listener : m_listeners)
        listener->loaded(*this);
    return {};
}

bool Catalogue::apply(const store::Change& change) {
    const store::TableDef* table = store::findTable(change.table);
    if (!table)
        return false;
    const Record old = find(*table, change.key);
    if (change.code == OrvoEventDelete)
        return remove(old);
    if (!old && change.code != OrvoEventInsert)
        return false;
    const Layout& layout = layoutOf(*table);
    CMDArray rows;
    MDRData* record =
        store::makeStructure(*table, rows.array) == MDX_OK ? MDARecNew(rows.array) : nullptr;
    if (!record || !store::setFromJson(*table, change.after, record))
        return false;
    Draft draft(layout);
    if (old)
        draft.take(old);
    draft.take(record, true);
    const std::string key = mdx::toCp1251(change.key);
    if (draft.values[0].isNull)
        draft.values[0] = {false, 0, 0, key};
    Block block = pack(draft);
    if (!old) {
        uint32_t number = numberEnd();
        if (m_freeNumbers.empty()) {
            m_blocks.emplace_back();
        } else {
            number = m_freeNumbers.back();
            m_freeNumbers.pop_back();
        }
        place(number, std::move(block));
        tell({}, at(number));
        return true;
    }
    const uint32_t number = old.number();
    unlink(number);
    const Block before = std::exchange(m_blocks[number], nullptr);
    place(number, std::move(block));
    tell(old, at(number));
    release(before.get());
    return true;
}

bool Catalogue::remove(const Record& record) {
    if (!record)
        return false;
    const uint32_t number = record.number();
    unlink(number);
    const Block before = std::exchange(m_blocks[number], nullptr);
    m_freeNumbers.push_back(number);
    tell(record, {});
    release(before.get());
    return true;
}

void Catalogue::tell(const Record& before, const Record& after) const {
    for (Listener* listener : m_listeners)
        listener->recordChanged(*this, before, after);
}

void Catalogue::addListener(Listener* listener) {
    m_listeners.push_back(listener);
}

void Catalogue::removeListener(Listener* listener) {
    m_listeners.erase(std::remove(m_listeners.begin(), m_listeners.end(), listener),
                      m_listeners.end());
}

} // namespace orvo::catalogue
