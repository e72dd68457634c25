// A store's whole content on its way out and in.
#include "frame/StdText.h"
#include "platform/store/Maintenance.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"
#include "platform/store/StoreCore.h"

#include "frame/Vocabulary.h"

#include <cassert>
#include <cmath>
#include <limits>

namespace orvo::store {

namespace {

std::string placeInWords(const TableDef& table, const std::vector<Value>& values,
                         const std::string& place) {
    return place.empty() ? inTable(table) + StdText::tr(", запись ") + shown(textOf(values.front()))
                         : place;
}

/// Whether a value is one that the field can hold.
bool fits(const Value& value, const FieldDef& field) {
    if (std::holds_alternative<std::monostate>(value))
        return true;
    const auto* number = std::get_if<int64_t>(&value);
    switch (field.type) {
    case MDX_BOOLEAN:
        return number != nullptr && (*number == 0 || *number == 1);
    case MDX_INTEGER:
        return number != nullptr && *number >= std::numeric_limits<int32_t>::min() &&
               *number <= std::numeric_limits<int32_t>::max();
    case MDX_DATE: {
        const auto* real = std::get_if<double>(&value);
        return real != nullptr && std::isfinite(*real);
    }
    default:
        return std::holds_alternative<std::string>(value);
    }
}

/// Checks what comes and writes it, records of one table by the thousand: each call of a database
/// costs more than the row.
///
/// Invariants:
/// 1. What is gathered belongs to m_table, in the order in which it came.
/// 2. Nothing is gathered while a content is open: its key refers to a record before it.
class Filler : public Receiver {
public:
    explicit Filler(StoreBackend& store) : m_store(store) {}

    Status expect(uint64_t /*records*/, uint64_t /*contents*/, uint64_t /*bytes*/) override {
        return {};
    }

    Status record(const TableDef& table, const std::vector<Value>& values,
                  const std::string& place) override {
        Status status = endContent();
        if (status.ok() && m_table != &table)
            status = writeGathered();
        Write write;
        if (status.ok())
            status = plan(table, values, place, &write);
        if (!status.ok()) { // what came before it may be wrong too, and is to be told first
            const Status before = writeGathered();
            return before.ok() ? status : before;
        }
        m_table = &table;
        for (const auto& [field, value] : write.values)
            m_size += sizeof value + textOf(value).size();
        m_gathered.push_back(std::move(write));
        const bool isEnough = m_gathered.size() >= mostGathered || m_size >= mostBytes;
        return isEnough ? writeGathered() : status;
    }

    Status content(const std::vector<Value>& values, const std::string& place) override {
        static const auto sizeField = static_cast<size_t>(contentTable().find(field::size));
        Status status = finish();
        if (status.ok())
            status = plan(contentTable(), values, place, &m_content);
        if (!status.ok())
            return status;
        m_left = static_cast<uint64_t>(std::get<int64_t>(values[sizeField]));
        status = m_store.beginContent(m_content, m_left);
        m_open = status.ok();
        return status;
    }

    Status bytes(std::string_view piece) override {
        if (!m_open)
            return {BadArguments, StdText::tr("Содержимое без записи")};
        if (piece.size() > m_left)
            return {Refused,
                    m_content.place + StdText::tr(": содержимое длиннее, чем сказано в записи")};
        m_left -= piece.size();
        return piece.empty() ? Status() : m_store.contentPiece(piece);
    }

    /// Writes what is gathered; to be called at the end of it all.
    Status finish() {
        const Status status = endContent();
        return status.ok() ? writeGathered() : status;
    }

private:
    static constexpr size_t mostGathered = 2000;
    static constexpr size_t mostBytes = 1 << 20;

    Status endContent() {
        if (!m_open)
            return {};
        assert(m_gathered.empty());
        m_open = false;
        if (m_left != 0)
            return {Refused,
                    m_content.place + StdText::tr(": содержимое короче, чем сказано в записи")};
        return m_store.endContent();
    }

    Status writeGathered() {
        if (m_gathered.empty())
            return {};
        Status status = m_store.applyAll(*m_table, m_gathered);
        m_gathered.clear();
        m_size = 0;
        return status;
    }

    static Status plan(const TableDef& table, const std::vector<Value>& values,
                       const std::string& place, Write* write) {
        if (const Status checked = checkRecord(table, values, place); !checked.ok())
            return checked;
        write->flag = MDX_INSERT;
        write->key = textOf(values.front());
        write->place = placeInWords(table, values, place);
        write->values.clear();
        for (size_t i = 1; i < values.size(); ++i) {
            // All fields, so that one statement serves all records of a table.
            const bool none = table.fields[i].link && textOf(values[i]).empty();
            write->values.emplace_back(static_cast<int>(i), none ? Value() : values[i]);
        }
        return {};
    }

    StoreBackend& m_store;
    const TableDef* m_table = nullptr;
    std::vector<Write> m_gathered;
    size_t m_size = 0; ///< of its values, in bytes
    Write m_content;   ///< the open one
    bool m_open = false;
    uint64_t m_left = 0; ///< of the open content
};

} // namespace

Status checkRecord(const TableDef& table, const std::vector<Value>& values,
                   const std::string& place) {
    if (values.size() != table.fields.size())
        return {BadArguments, inTable(table) + StdText::tr(": запись с другим числом полей")};
    const auto refused = [&](const std::string& why) -> Status {
        return {Refused, placeInWords(table, values, place) + ": " + why};
    };
    if (!isKey(textOf(values.front())))
        return refused(
            StdText::tr("в ключе KeyLink допустимы только печатные знаки ASCII, хотя бы один"));
    for (size_t i = 1; i < values.size(); ++i)
        if (!fits(values[i], table.fields[i]))
            return refused(StdText::tr("значение не подходит полю ") + shown(table.fields[i].name));
    if (&table != &contentTable())
        return {};
    const auto* size = std::get_if<int64_t>(&values[static_cast<size_t>(table.find(field::size))]);
    if (size == nullptr || *size < 0 || static_cast<uint64_t>(*size) > largestFile)
        return refused(StdText::tr("размер содержимого не от 0 до ") +
                       std::to_string(largestFile >> 20) + StdText::tr(" МиБ"));
    const std::string name = textOf(values[static_cast<size_t>(table.find(field::name_))]);
    return isPlainFileName(name) ? Status()
                                 : refused(StdText::tr("недопустимое имя файла ") + shown(name));
}

// Out --------------------------------------------------------------------------------------------

Status StoreCore::writeOut(Receiver& into) {
    return guarded([&] {
        return inRead([&]() -> Status {
            Amount amount;
            Status status = measure(&amount);
            if (status.ok())
                status = into.expect(amount.records, amount.contents, amount.bytes);
            for (const TableDef& table : tables()) {
                if (!status.ok())
                    return status;
                status = selectInOrder(table,
                                       [&](const Row& row) { return into.record(table, row, {}); });
            }
            // Their bytes are other statements, so the records are taken first; they are small.
            std::vector<Row> contents;
            if (status.ok())
                status = selectInOrder(contentTable(), [&](const Row& row) -> Status {
                    contents.push_back(row);
                    return {};
                });
            for (const Row& content : contents) {
                if (!status.ok())
                    return status;
                status = into.content(content, {});
                if (status.ok())
                    status =
                        contentPieces(textOf(content[0]), [&](std::string_view piece) -> Status {
                            return into.bytes(piece);
                        });
            }
            return status;
        });
    });
}

// In ---------------------------------------------------------------------------------------------

Status StoreCore::replaceAll(const std::function<Status(Receiver& store)>& work) {
    return guarded([&] {
        return inWrite([&]() -> Status {
            Status status = clearAll();
            Filler filler(*this);
            if (status.ok())
                status = work(filler);
            if (status.ok())
                status = filler.finish();
            return status;
        });
    });
}

} // namespace orvo::store
