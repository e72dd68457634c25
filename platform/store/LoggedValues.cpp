#include "platform/store/LoggedValues.h"

#include "platform/store/Names.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace orvo::store {

namespace {

class Reader {
public:
    explicit Reader(std::string_view json) : m_at(json.data()), m_end(json.data() + json.size()) {}

    bool take(char wanted) {
        if (m_at == m_end || *m_at != wanted)
            return false;
        ++m_at;
        return true;
    }
    bool take(std::string_view wanted) {
        if (std::string_view(m_at, left()).substr(0, wanted.size()) != wanted)
            return false;
        m_at += wanted.size();
        return true;
    }
    bool atEnd() const { return m_at == m_end; }
    bool text(std::string* text);
    bool number(double* number);
    char next() const { return m_at != m_end ? *m_at : '\0'; }

private:
    size_t left() const { return static_cast<size_t>(m_end - m_at); }
    bool escaped(std::string* text);

    const char* m_at;
    const char* m_end;
};

/// The opening quotation mark was taken; takes the closing one.
bool Reader::text(std::string* text) {
    for (;;) {
        const char* from = m_at;
        while (m_at != m_end && *m_at != '"' && *m_at != '\\') {
            if (static_cast<unsigned char>(*m_at) < 0x20)
                return false;
            const size_t length = sequenceLength({m_at, left()});
            if (length == 0)
                return false;
            m_at += length;
        }
        text->append(from, m_at);
        if (take('"'))
            return true;
        if (!take('\\') || !escaped(text))
            return false;
    }
}

/// What follows a backslash. Of the numbers of characters only those without another way: control
/// characters, but no zero.
bool Reader::escaped(std::string* text) {
    if (m_at == m_end)
        return false;
    constexpr std::string_view letters = "\"\\/bfnrt";
    constexpr std::string_view meant = "\"\\/\b\f\n\r\t";
    const char letter = *m_at++;
    if (const size_t which = letters.find(letter); which != std::string_view::npos) {
        text->push_back(meant[which]);
        return true;
    }
    constexpr size_t digits = 4;
    if (letter != 'u' || left() < digits)
        return false;
    unsigned code = 0;
    const auto [end, error] = std::from_chars(m_at, m_at + digits, code, 16);
    if (error != std::errc() || end != m_at + digits || code == 0 || code >= 0x80)
        return false;
    m_at = end;
    text->push_back(static_cast<char>(code));
    return true;
}

bool Reader::number(double* number) {
    const char* digits = next() == '-' ? m_at + 1 : m_at;
    const auto isDigit = [&](const char* at) { return at < m_end && *at >= '0' && *at <= '9'; };
    if (!isDigit(digits) || (*digits == '0' && isDigit(digits + 1)))
        return false;
    const auto [end, error] = std::from_chars(m_at, m_end, *number);
    if (error != std::errc() || end[-1] == '.')
        return false;
    m_at = end;
    return true;
}

} // namespace

bool readLoggedValues(const TableDef& table, std::string_view json, FieldValues* values) {
    Reader reader(json);
    const auto giveUp = [&] {
        *values = {};
        return false;
    };
    if (!reader.take('{'))
        return giveUp();
    values->reserve(table.fields.size());
    size_t field = 0;
    for (bool first = true; first || reader.take(','); first = false) {
        if (!reader.take('"'))
            return giveUp();
        for (; field < table.fields.size(); ++field) {
            Reader name = reader;
            if (name.take(std::string_view(table.fields[field].name)) && name.take("\":")) {
                reader = name;
                break;
            }
        }
        if (field == table.fields.size())
            return giveUp(); // no field, or not in the order of the table
        const MdxType type = table.fields[field].type;
        const bool isText = type == MDX_TEXT;
        Value value;
        bool fits = true;
        if (reader.take('"')) {
            std::string text;
            if (!reader.text(&text))
                return giveUp();
            value = std::move(text);
            fits = isText;
        } else if (!reader.take("null")) {
            double number = 0;
            const bool no = reader.take("false");
            const bool boolean = no || reader.take("true");
            if (boolean)
                number = no ? 0 : 1;
            else if (!reader.number(&number))
                return giveUp();
            fits = !isText && (type == MDX_DATE ? !boolean : std::fabs(number) < 1e15);
            if (type == MDX_DATE)
                value = number;
            else if (fits)
                value = static_cast<int64_t>(number);
        }
        if (fits)
            (*values)[static_cast<int>(field)] = std::move(value);
        ++field;
    }
    if (!reader.take('}') || !reader.atEnd())
        return giveUp();
    return true;
}

} // namespace orvo::store
