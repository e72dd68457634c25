#include "platform/store/PostgresCopy.h"

#include "frame/StdText.h"

#include <bit>
#include <cstring>

namespace orvo::store::postgres {

namespace {

constexpr std::string_view signature("PGCOPY\n\377\r\n\0", 11);
constexpr size_t headerSize = signature.size() + 8;

/// Reads numbers and values from a message, and never past its end.
class Reader {
public:
    explicit Reader(std::string_view bytes) : m_at(bytes.data()), m_end(m_at + bytes.size()) {}
    size_t left() const { return static_cast<size_t>(m_end - m_at); }

    bool take(size_t length, const char** bytes) {
        if (left() < length)
            return false;
        *bytes = m_at;
        m_at += length;
        return true;
    }
    template <typename Number>
    bool number(Number* value) {
        const char* bytes = nullptr;
        if (!take(sizeof *value, &bytes))
            return false;
        *value = decode<Number>(bytes);
        return true;
    }
    template <typename Number>
    static Number decode(const char* bytes) {
        if constexpr (sizeof(Number) == 2) {
            uint16_t raw = 0;
            std::memcpy(&raw, bytes, 2);
            return std::bit_cast<Number>(__builtin_bswap16(raw));
        } else if constexpr (sizeof(Number) == 4) {
            uint32_t raw = 0;
            std::memcpy(&raw, bytes, 4);
            return std::bit_cast<Number>(__builtin_bswap32(raw));
        } else {
            uint64_t raw = 0;
            std::memcpy(&raw, bytes, 8);
            return std::bit_cast<Number>(__builtin_bswap64(raw));
        }
    }

private:
    const char* m_at;
    const char* m_end;
};
static_assert(std::endian::native == std::endian::little);

/// Takes what the server says after the rows, to the end.
Status finish(Connection& connection, std::string_view what) {
    Status status;
    while (connection.usable()) {
        const Result end = connection.next();
        if (!end && connection.usable())
            return status;
        if (!succeeded(end.get()) && status.ok())
            status = connection.failure(what, end.get());
    }
    return status.ok() ? connection.failure(what, nullptr) : status;
}

/// Takes the messages of a copy one by one. Always reads to the end, so that the connection can be
/// used again; what comes after `each` has refused is dropped.
template <typename Each>
Status messages(Connection& connection, const std::string& sql, std::string_view what,
                const Each& each) {
    const Status broken = {BadStructure,
                           std::string(what) + StdText::tr(": сервер прислал непонятные данные")};
    {
        const Result begun = connection.execute(sql);
        if (PQresultStatus(begun.get()) != PGRES_COPY_OUT)
            return connection.failure(what, begun.get());
    }
    struct Free {
        void operator()(char* memory) const { PQfreemem(memory); }
    };
    bool headed = false;
    Status status;
    for (;;) {
        char* raw = nullptr;
        const int length = connection.copyData(&raw);
        const std::unique_ptr<char, Free> message(raw);
        if (length < 0)
            break;
        if (!status.ok())
            continue;
        std::string_view bytes(raw, static_cast<size_t>(length));
        if (!headed) {
            headed = true;
            if (bytes.size() < headerSize || bytes.substr(0, signature.size()) != signature) {
                status = broken;
                continue;
            }
            const size_t extension = Reader::decode<uint32_t>(bytes.data() + headerSize - 4);
            bytes.remove_prefix(headerSize);
            if (extension > bytes.size()) {
                status = broken;
                continue;
            }
            bytes.remove_prefix(extension);
        }
        Reader reader(bytes);
        while (status.ok() && reader.left() > 0) {
            int16_t fields = 0;
            if (!reader.number(&fields) || (fields >= 0 && !each(reader, fields)))
                status = broken;
            else if (fields < 0 && reader.left() > 0)
                status = broken; // nothing follows the trailer
        }
    }
    const Status ended = finish(connection, what);
    if (!ended.ok())
        return ended;
    return status;
}

} // namespace

Status copyOut(Connection& connection, const std::string& sql, std::string_view what,
               const TableDef& table, mdx::RecordWriter& writer) {
    return messages(connection, sql, what, [&](Reader& reader, int fields) {
        if (static_cast<size_t>(fields) != table.fields.size())
            return false;
        writer.begin();
        int number = 0;
        for (const FieldDef& field : table.fields) {
            int32_t length = 0;
            const char* value = nullptr;
            if (!reader.number(&length))
                return false;
            if (length < 0) {
                ++number;
                continue;
            }
            if (!reader.take(static_cast<size_t>(length), &value))
                return false;
            switch (field.type) {
            case MDX_BOOLEAN:
                if (length != 1)
                    return false;
                writer.boolean(number, *value != 0);
                break;
            case MDX_INTEGER:
                if (length != 4)
                    return false;
                writer.integer(number, Reader::decode<int32_t>(value));
                break;
            case MDX_DATE:
                if (length != 8)
                    return false;
                writer.date(number, Reader::decode<double>(value));
                break;
            default:
                writer.textUtf8(number, value, static_cast<size_t>(length));
            }
            ++number;
        }
        writer.end();
        return true;
    });
}

Status copyOut(Connection& connection, const std::string& sql, std::string_view what,
               const TableDef& table,
               const std::function<Status(const std::vector<Value>& row)>& each) {
    std::vector<Value> row(table.fields.size());
    Status refused;
    const Status status = messages(connection, sql, what, [&](Reader& reader, int fields) {
        if (static_cast<size_t>(fields) != row.size())
            return false;
        for (size_t i = 0; i < row.size(); ++i) {
            int32_t length = 0;
            const char* bytes = nullptr;
            if (!reader.number(&length))
                return false;
            row[i] = std::monostate();
            if (length < 0)
                continue;
            if (!reader.take(static_cast<size_t>(length), &bytes))
                return false;
            const MdxType type = table.fields[i].type;
            if (type == MDX_BOOLEAN && length == 1)
                row[i] = int64_t(*bytes != 0 ? 1 : 0);
            else if (type == MDX_INTEGER && length == 4)
                row[i] = int64_t(Reader::decode<int32_t>(bytes));
            else if (type == MDX_DATE && length == 8)
                row[i] = Reader::decode<double>(bytes);
            else if (type == MDX_TEXT)
                row[i] = std::string(bytes, static_cast<size_t>(length));
            else
                return false;
        }
        refused = each(row);
        return refused.ok();
    });
    return refused.ok() ? status : refused;
}

Status copyOut(Connection& connection, const std::string& sql, std::string_view what,
               const std::function<Status(std::string_view bytes)>& each) {
    Status refused;
    const Status status = messages(connection, sql, what, [&](Reader& reader, int fields) {
        int32_t length = 0;
        const char* value = nullptr;
        if (fields != 1 || !reader.number(&length) || length < 0 ||
            !reader.take(static_cast<size_t>(length), &value))
            return false;
        refused = each({value, static_cast<size_t>(length)});
        return refused.ok();
    });
    return refused.ok() ? status : refused;
}

// In ---------------------------------------------------------------------------------------------

namespace {

constexpr size_t partSize = 512 << 10;

void appendNumber(std::string* out, uint64_t value, int size) {
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8)
        *out += static_cast<char>(value >> shift & 0xFF);
}

/// Sends the data to the end, or parts would gather in memory.
bool putData(Connection& connection, std::string_view data) {
    return PQputCopyData(connection.get(), data.data(), static_cast<int>(data.size())) == 1 &&
           connection.flush();
}

} // namespace

ContentCopy::ContentCopy(Connection& connection, std::string what, std::string key)
    : m_connection(&connection)
    , m_what(std::move(what))
    , m_key(std::move(key)) {}

Status ContentCopy::begin(const std::string& sql) {
    const Result begun = m_connection->execute(sql);
    if (PQresultStatus(begun.get()) != PGRES_COPY_IN)
        return m_connection->failure(m_what, begun.get());
    m_head.assign(signature);
    m_head.append(8, '\0');
    return {};
}

Status ContentCopy::sendPart(std::string_view data) {
    appendNumber(&m_head, 3, 2);
    appendNumber(&m_head, m_key.size(), 4);
    m_head += m_key;
    appendNumber(&m_head, 4, 4);
    appendNumber(&m_head, m_number++, 4);
    appendNumber(&m_head, data.size(), 4);
    m_sent = m_sent && putData(*m_connection, m_head) && putData(*m_connection, data);
    m_head.clear();
    // Where the sending was stopped, the server says why.
    return m_sent ? Status() : end();
}

Status ContentCopy::put(std::string_view bytes) {
    Status status;
    while (status.ok() && m_part.size() + bytes.size() >= partSize) {
        const size_t more = partSize - m_part.size();
        if (m_part.empty()) {
            status = sendPart(bytes.substr(0, more));
        } else {
            m_part += bytes.substr(0, more);
            status = sendPart(m_part);
            m_part.clear();
        }
        bytes.remove_prefix(more);
    }
    m_part += bytes;
    return status;
}

Status ContentCopy::end() {
    if (m_sent && !m_part.empty()) {
        const std::string last = std::move(m_part);
        m_part.clear();
        const Status status = sendPart(last);
        if (!status.ok())
            return status;
    }
    appendNumber(&m_head, 0xFFFF, 2);
    m_sent = m_sent && putData(*m_connection, m_head) &&
             PQputCopyEnd(m_connection->get(), nullptr) == 1 && m_connection->flush();
    const Status status = finish(*m_connection, m_what);
    return status.ok() && !m_sent ? m_connection->failure(m_what, nullptr) : status;
}

Status copyIn(Connection& connection, const std::string& sql, std::string_view what,
              std::string_view key, std::string_view bytes) {
    ContentCopy copy(connection, std::string(what), std::string(key));
    Status status = copy.begin(sql);
    if (status.ok())
        status = copy.put(bytes);
    return status.ok() ? copy.end() : status;
}

} // namespace orvo::store::postgres
