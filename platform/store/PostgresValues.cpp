// Values on their way to the server and back, and what a result says.
#include "platform/store/PostgresApi.h"

#include "platform/store/Names.h"

#include <bit>
#include <cstdlib>
#include <cstring>

namespace orvo::store::postgres {

namespace {

// Types of values by their fixed numbers in every server.
constexpr Oid booleanType = 16;
constexpr Oid bigintType = 20;
constexpr Oid integerType = 23;
constexpr Oid textType = 25;
constexpr Oid doubleType = 701;

Oid typeOf(MdxType type) {
    switch (type) {
    case MDX_BOOLEAN:
        return booleanType;
    case MDX_INTEGER:
        return integerType;
    case MDX_DATE:
        return doubleType;
    default:
        return textType;
    }
}

Oid arrayOf(Oid type) {
    switch (type) {
    case booleanType:
        return 1000;
    case integerType:
        return 1007;
    case doubleType:
        return 1022;
    default:
        return 1009;
    }
}

std::string bigEndian(uint64_t value, int bytes) {
    std::string out;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8)
        out += static_cast<char>(value >> shift & 0xFF);
    return out;
}

uint64_t fromBigEndian(std::string_view bytes) {
    uint64_t value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

} // namespace

bool isText(std::string_view text) {
    for (size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        length = sequenceLength(text);
        if (length == 0 || text.front() == '\0')
            return false;
    }
    return true;
}

Parameters& Parameters::text(std::string_view value) {
    m_values.push_back({textType, false, value, {}});
    return *this;
}

Parameters& Parameters::integer(int64_t value) {
    m_values.push_back({bigintType, false, {}, bigEndian(static_cast<uint64_t>(value), 8)});
    return *this;
}

Parameters& Parameters::field(MdxType type, const Value& value) {
    Parameter parameter;
    parameter.type = typeOf(type);
    parameter.null = false;
    if (const auto* text = std::get_if<std::string>(&value))
        parameter.bytes = *text;
    else if (const auto* real = std::get_if<double>(&value))
        parameter.own = bigEndian(std::bit_cast<uint64_t>(*real), 8);
    else if (const auto* number = std::get_if<int64_t>(&value))
        parameter.own = bigEndian(static_cast<uint64_t>(*number), type == MDX_BOOLEAN ? 1 : 4);
    else
        parameter.null = true;
    m_values.push_back(std::move(parameter));
    return *this;
}

Parameters& Parameters::fields(MdxType type, const std::vector<const Value*>& values) {
    constexpr int number = 4; // bytes of one
    Parameters all;
    all.m_values.reserve(values.size());
    size_t bytes = 0;
    for (const Value* value : values) {
        all.field(type, *value);
        bytes += all.m_values.back().bytes.size() + all.m_values.back().own.size() + number;
    }
    Parameter array;
    array.type = arrayOf(typeOf(type));
    array.null = false;
    const uint64_t head[] = {1, 1, typeOf(type), values.size(), 1}; // one dimension, from 1
    array.own.reserve(sizeof head + bytes);
    for (const uint64_t part : head)
        array.own += bigEndian(part, number);
    for (const Parameter& one : all.m_values) {
        const std::string_view text = one.own.empty() ? one.bytes : std::string_view(one.own);
        array.own += bigEndian(one.null ? ~uint64_t(0) : text.size(), number);
        array.own += text;
    }
    m_values.push_back(std::move(array));
    return *this;
}

// Results ----------------------------------------------------------------------------------------

bool isNull(const PGresult* result, int row, int column) {
    return PQgetisnull(result, row, column) != 0;
}

std::string_view textAt(const PGresult* result, int row, int column) {
    return {PQgetvalue(result, row, column), static_cast<size_t>(PQgetlength(result, row, column))};
}

int64_t integerAt(const PGresult* result, int row, int column) {
    const std::string_view bytes = textAt(result, row, column);
    const uint64_t value = fromBigEndian(bytes);
    return bytes.size() == 4 ? static_cast<int32_t>(value) : static_cast<int64_t>(value);
}

double realAt(const PGresult* result, int row, int column) {
    return std::bit_cast<double>(fromBigEndian(textAt(result, row, column)));
}

bool booleanAt(const PGresult* result, int row, int column) {
    return fromBigEndian(textAt(result, row, column)) != 0;
}

Value valueAt(MdxType type, const PGresult* result, int row, int column) {
    if (isNull(result, row, column))
        return std::monostate();
    switch (type) {
    case MDX_BOOLEAN:
        return int64_t(booleanAt(result, row, column) ? 1 : 0);
    case MDX_INTEGER:
        return integerAt(result, row, column);
    case MDX_DATE:
        return realAt(result, row, column);
    default:
        return std::string(textAt(result, row, column));
    }
}

bool succeeded(const PGresult* result) {
    const ExecStatusType status = PQresultStatus(result);
    return status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK || status == PGRES_EMPTY_QUERY;
}

std::string_view stateOf(const PGresult* result) {
    const char* state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    return state != nullptr ? std::string_view(state) : std::string_view();
}

std::string stateIn(std::string_view message) {
    for (size_t i = 0; i + 7 <= message.size(); ++i) {
        if (message[i] != ' ' || message[i + 6] != ':')
            continue;
        const std::string_view state = message.substr(i + 1, 5);
        bool digit = false;
        bool plain = true;
        for (const char c : state) {
            digit = digit || (c >= '0' && c <= '9');
            plain = plain && ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'));
        }
        if (digit && plain)
            return std::string(state);
    }
    return {};
}

} // namespace orvo::store::postgres
