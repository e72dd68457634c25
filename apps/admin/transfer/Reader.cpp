#include "apps/admin/transfer/Format.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <istream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <streambuf>

namespace orvo::admin {

namespace {

using nlohmann::json;

/// A stream that knows its line. The parser takes its characters one by one from here.
class Source : public std::streambuf {
public:
    explicit Source(std::FILE* file) : m_file(file) {}

    uint64_t line() {
        m_lines += static_cast<uint64_t>(std::count(m_counted, gptr(), '\n'));
        m_counted = gptr();
        return m_lines + 1;
    }
    uint64_t position() const { return m_before + static_cast<uint64_t>(gptr() - eback()); }
    bool ended() const { return m_ended; }
    bool broken() const { return m_broken; }

protected:
    int_type underflow() override {
        line();
        m_before += static_cast<uint64_t>(egptr() - eback());
        const size_t size = std::fread(m_buffer, 1, sizeof m_buffer, m_file);
        setg(m_buffer, m_buffer, m_buffer + size);
        m_counted = m_buffer;
        m_ended = size == 0;
        m_broken = m_ended && std::ferror(m_file) != 0;
        return m_ended ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

private:
    std::FILE* const m_file;
    char m_buffer[1 << 16];
    char* m_counted = nullptr;
    uint64_t m_lines = 0, m_before = 0;
    bool m_ended = false, m_broken = false;
};

/// Takes the parser's events. Nothing is collected but one record, or one piece of a file.
class Handler : public json::json_sax_t {
public:
    Handler(Source& source, uint64_t size, store::Receiver& into, const store::Progress& progress,
            TransferCount* count)
        : m_source(source)
        , m_size(size)
        , m_into(into)
        , m_progress(progress)
        , m_count(count)
        , m_seen(store::tables().size(), false) {}

    store::Status status; ///< of the first thing that went wrong

    bool null() override {
        if (m_at != At::Field || m_field == dataField)
            return wrong("null");
        return take(std::monostate());
    }
    bool boolean(bool on) override {
        return m_at == At::Field && field().type == MDX_BOOLEAN ? take(int64_t(on ? 1 : 0))
                                                                : wrong("логическое значение");
    }
    bool number_integer(int64_t number) override { return integer(number, number); }
    bool number_unsigned(uint64_t number) override {
        const auto bound = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
        return integer(static_cast<int64_t>(std::min(number, bound)), static_cast<double>(number));
    }
    bool number_float(double number, const std::string& /*text*/) override {
        return m_at == At::Field && field().type == MDX_DATE ? take(number)
                                                             : wrong("дробное число");
    }
    bool string(std::string& text) override {
        if (m_at == At::Format)
            return text == exportFormat ? back(At::Top) : fail("это не выгрузка Orvo");
        if (m_at == At::Data)
            return piece(text);
        return m_at == At::Field && field().type == MDX_TEXT ? take(std::move(text))
                                                             : wrong("текст");
    }
    bool binary(json::binary_t& /*bytes*/) override { return wrong("двоичные данные"); }

    bool start_object(size_t /*elements*/) override {
        switch (m_at) {
        case At::Start:
            return back(At::Top);
        case At::TablesValue:
            return back(At::Tables);
        case At::Records:
            return openRecord();
        default:
            return wrong("объект {}");
        }
    }
    bool key(std::string& name) override {
        if (m_at == At::Top)
            return topKey(name);
        if (m_at == At::Tables)
            return tableKey(name);
        return fieldKey(name);
    }
    bool end_object() override {
        switch (m_at) {
        case At::Record:
            return closeRecord();
        case At::Tables:
            for (size_t i = 0; i < m_seen.size(); ++i)
                if (!m_seen[i])
                    return fail(std::string("нет таблицы \"") + store::tables()[i].name + "\"");
            return back(At::Top);
        default:
            if (!m_sawTables || !m_sawFiles)
                return fail(m_sawTables ? "нет списка \"files\"" : "нет таблиц \"tables\"");
            return back(At::End);
        }
    }
    bool start_array(size_t /*elements*/) override {
        if (m_at == At::Field && m_field == dataField) {
            m_at = At::Data;
            return openContent();
        }
        if (m_at != At::Table && m_at != At::FilesValue)
            return wrong("список []");
        m_number = 0;
        return back(At::Records);
    }
    bool end_array() override {
        if (m_at == At::Data) {
            if (m_taken != m_promised)
                return fail("в \"data\" байт " + std::to_string(m_taken) +
                            ", а в \"size\" сказано " + std::to_string(m_promised));
            return back(At::Record);
        }
        m_number = 0;
        const bool files = m_table == &store::contentTable();
        m_table = nullptr;
        return back(files ? At::Top : At::Tables);
    }
    bool parse_error(size_t /*position*/, const std::string& token,
                     const json::exception& /*error*/) override {
        if (m_source.broken())
            return fail(std::string("файл не читается (") + std::strerror(errno) + ")");
        if (m_source.ended())
            return fail("файл оборван: JSON не закончен");
        return fail("это не JSON" +
                    (token.empty() ? std::string() : " возле " + store::shown(token)));
    }

private:
    /// What is expected next.
    enum class At {
        Start,
        Top,
        Format,
        Version,
        TablesValue,
        Tables,
        Table,
        FilesValue,
        Records,
        Record,
        Field,
        Data,
        End
    };
    static constexpr size_t largestPiece = 64u << 20;
    /// In m_field: the bytes, which are no field of the table.
    static constexpr int dataField = -2;

    bool back(At to) {
        m_at = to;
        return true;
    }

    std::string place() {
        std::string text = "строка " + std::to_string(m_inRecord ? m_line : m_source.line());
        if (m_table != nullptr)
            text += m_table == &store::contentTable() ? std::string(", файлы")
                                                      : std::string(", таблица ") + m_table->name;
        if (m_inRecord) {
            text += ", запись " + std::to_string(m_number);
            if (!store::textOf(m_values.front()).empty())
                text += " (ключ " + store::shown(store::textOf(m_values.front())) + ")";
        }
        return text;
    }
    bool fail(const std::string& why) {
        if (status.ok())
            status = {store::Refused, place() + ": " + why};
        return false;
    }
    bool passed(store::Status given) {
        status = std::move(given);
        return status.ok();
    }

    const store::FieldDef& field() const {
        static const store::FieldDef data = {"data", MDX_NONE};
        return m_field == dataField ? data : m_table->fields[static_cast<size_t>(m_field)];
    }

    bool wrong(const char* what) {
        if (m_at != At::Field)
            return fail(std::string("здесь не ждали: ") + what);
        const char* expected = "список кусков Base64";
        if (m_field != dataField)
            switch (field().type) {
            case MDX_BOOLEAN:
                expected = "true или false";
                break;
            case MDX_INTEGER:
                expected = "целое число";
                break;
            case MDX_DATE:
                expected = "число";
                break;
            default:
                expected = "текст";
            }
        return fail(std::string("поле \"") + field().name + "\": нужно " + expected + ", а стоит " +
                    what);
    }

    template <typename Given>
    bool take(Given&& given) {
        m_values[static_cast<size_t>(m_field)] = std::forward<Given>(given);
        return back(At::Record);
    }

    template <typename Real>
    bool integer(int64_t number, Real real) {
        if (m_at == At::Version) {
            if (number != exportVersion)
                return fail("выгрузка версии " + std::to_string(number) + ", известна " +
                            std::to_string(exportVersion));
            return back(At::Top);
        }
        if (m_at != At::Field)
            return wrong("число");
        if (field().type == MDX_DATE)
            return take(static_cast<double>(real));
        if (field().type != MDX_INTEGER)
            return wrong("число");
        if (number < std::numeric_limits<int32_t>::min() ||
            number > std::numeric_limits<int32_t>::max())
            return fail(std::string("поле \"") + field().name + "\": число слишком велико");
        return take(number);
    }

    bool topKey(const std::string& name) {
        if (!m_sawFormat) {
            m_sawFormat = true;
            return name == "format" ? back(At::Format) : fail("это не выгрузка Orvo");
        }
        if (!m_sawVersion) {
            m_sawVersion = true;
            return name == "version" ? back(At::Version) : fail("нет версии выгрузки");
        }
        bool* const seen = name == "tables"  ? &m_sawTables
                           : name == "files" ? &m_sawFiles
                                             : nullptr;
        if (seen == nullptr)
            return fail("неизвестное имя " + store::shown(name));
        if (*seen)
            return fail(store::shown(name) + " дано дважды");
        *seen = true;
        if (name == "tables")
            return back(At::TablesValue);
        m_table = &store::contentTable();
        return back(At::FilesValue);
    }

    bool tableKey(const std::string& name) {
        const store::TableDef* table = store::findTable(name);
        if (table == nullptr)
            return fail("неизвестная таблица " + store::shown(name));
        const auto number = static_cast<size_t>(table - store::tables().data());
        if (m_seen[number])
            return fail("таблица " + store::shown(name) + " дана дважды");
        m_seen[number] = true;
        m_table = table;
        return back(At::Table);
    }

    bool openRecord() {
        m_values.assign(m_table->fields.size(), store::Value());
        m_given = 0;
        ++m_number;
        m_line = m_source.line();
        m_inRecord = true;
        m_hasData = false;
        if (m_progress && !m_progress(m_source.position(), m_size))
            return passed({store::Stopped, "прервано"});
        return back(At::Record);
    }

    bool fieldKey(const std::string& name) {
        if (m_hasData)
            return fail("после \"data\" полей быть не может");
        m_field = -1;
        for (size_t i = 0; i < m_table->fields.size(); ++i)
            if (name == m_table->fields[i].name)
                m_field = static_cast<int>(i);
        if (m_field < 0 && m_table == &store::contentTable() && name == "data")
            m_field = dataField;
        if (m_field == -1)
            return fail("неизвестное поле " + store::shown(name));
        if (m_field >= 0) {
            const uint64_t bit = uint64_t(1) << m_field;
            if ((m_given & bit) != 0)
                return fail("поле " + store::shown(name) + " дано дважды");
            m_given |= bit;
        }
        return back(At::Field);
    }

    bool openContent() {
        static const auto sizeField = static_cast<size_t>(store::contentTable().find(field::size));
        const auto* size = std::get_if<int64_t>(&m_values[sizeField]);
        if (size == nullptr)
            return fail("перед \"data\" нет размера \"size\"");
        m_promised = *size;
        m_taken = 0;
        m_hasData = true;
        ++m_count->files;
        return passed(m_into.content(m_values, place()));
    }

    bool piece(const std::string& text) {
        if (text.size() > largestPiece)
            return fail("кусок в \"data\" длиннее " + std::to_string(largestPiece >> 20) + " МиБ");
        const auto decoded = QByteArray::fromBase64Encoding(
            QByteArray::fromRawData(text.data(), static_cast<int>(text.size())),
            QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded || text.size() % 4 != 0)
            return fail("в \"data\" не Base64");
        const QByteArray& bytes = *decoded;
        m_taken += bytes.size();
        m_count->bytes += static_cast<uint64_t>(bytes.size());
        if (m_taken > m_promised)
            return fail("в \"data\" больше байт, чем сказано в \"size\"");
        if (m_progress && !m_progress(m_source.position(), m_size))
            return passed({store::Stopped, "прервано"});
        return passed(m_into.bytes({bytes.constData(), static_cast<size_t>(bytes.size())}));
    }

    bool closeRecord() {
        const bool content = m_table == &store::contentTable();
        if (content && !m_hasData)
            return fail("нет содержимого \"data\"");
        if (!content) {
            ++m_count->records;
            if (!passed(m_into.record(*m_table, m_values, place())))
                return false;
        }
        m_inRecord = false;
        return back(At::Records);
    }

    Source& m_source;
    const uint64_t m_size;
    store::Receiver& m_into;
    const store::Progress& m_progress;
    TransferCount* const m_count;

    At m_at = At::Start;
    bool m_sawFormat = false, m_sawVersion = false, m_sawTables = false, m_sawFiles = false;
    std::vector<bool> m_seen; ///< by the number of the table
    const store::TableDef* m_table = nullptr;

    bool m_inRecord = false, m_hasData = false;
    uint64_t m_line = 0, m_number = 0;
    std::vector<store::Value> m_values;
    uint64_t m_given = 0; ///< bits of the fields that the record has named
    int m_field = -1;     ///< of the table, or dataField
    int64_t m_promised = 0, m_taken = 0;
};

} // namespace

store::Status readExport(std::FILE* file, uint64_t size, store::Receiver& into,
                         const store::Progress& progress, TransferCount* count) {
    const auto source = std::make_unique<Source>(file);
    std::istream stream(source.get());
    Handler handler(*source, size, into, progress, count);
    const bool read = json::sax_parse(stream, &handler);
    if (!handler.status.ok() || read)
        return handler.status;
    return {store::Refused, "файл не прочитан"};
}

} // namespace orvo::admin
