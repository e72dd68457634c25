#include "apps/admin/transfer/Format.h"

#include "frame/StdText.h"
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
        return m_at == At::Field && field().type == MDX_BOOLEAN
                   ? take(int64_t(on ? 1 : 0))
                   : wrong(StdText::tr("логическое значение"));
    }
    bool number_integer(int64_t number) override { return integer(number, number); }
    bool number_unsigned(uint64_t number) override {
        const auto bound = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
        return integer(static_cast<int64_t>(std::min(number, bound)), static_cast<double>(number));
    }
    bool number_float(double number, const std::string& /*text*/) override {
        return m_at == At::Field && field().type == MDX_DATE ? take(number)
                                                             : wrong(StdText::tr("дробное число"));
    }
    bool string(std::string& text) override {
        if (m_at == At::Format)
            return text == exportFormat ? back(At::Top) : fail(StdText::tr("это не выгрузка Orvo"));
        if (m_at == At::Data)
            return piece(text);
        return m_at == At::Field && field().type == MDX_TEXT ? take(std::move(text))
                                                             : wrong(StdText::tr("текст"));
    }
    bool binary(json::binary_t& /*bytes*/) override {
        return wrong(StdText::tr("двоичные данные"));
    }

    bool start_object(size_t /*elements*/) override {
        switch (m_at) {
        case At::Start:
            return back(At::Top);
        case At::TablesValue:
            return back(At::Tables);
        case At::Records:
            return openRecord();
        default:
            return wrong(StdText::tr("объект {}"));
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
                    return fail(StdText::tr("нет таблицы \"") + store::tables()[i].name + "\"");
            return back(At::Top);
        default:
            if (!m_sawTables || !m_sawFiles)
                return fail(m_sawTables ? StdText::tr("нет списка \"files\"")
                                        : StdText::tr("нет таблиц \"tables\""));
            return back(At::End);
        }
    }
    bool start_array(size_t /*elements*/) override {
        if (m_at == At::Field && m_field == dataField) {
            m_at = At::Data;
            return openContent();
        }
        if (m_at != At::Table && m_at != At::FilesValue)
            return wrong(StdText::tr("список []"));
        m_number = 0;
        return back(At::Records);
    }
    bool end_array() override {
        if (m_at == At::Data) {
            if (m_taken != m_promised)
                return fail(StdText::tr("в \"data\" байт ") + std::to_string(m_taken) +
                            StdText::tr(", а в \"size\" сказано ") + std::to_string(m_promised));
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
            return fail(StdText::tr("файл не читается (") + std::strerror(errno) + ")");
        if (m_source.ended())
            return fail(StdText::tr("файл оборван: JSON не закончен"));
        return fail(StdText::tr("это не JSON") +
                    (token.empty() ? std::string() : StdText::tr(" возле ") + store::shown(token)));
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
        std::string text =
            StdText::tr("строка ") + std::to_string(m_inRecord ? m_line : m_source.line());
        if (m_table != nullptr)
            text += m_table == &store::contentTable() ? StdText::tr(", файлы")
                                                      : StdText::tr(", таблица ") + m_table->name;
        if (m_inRecord) {
            text += StdText::tr(", запись ") + std::to_string(m_number);
            if (!store::textOf(m_values.front()).empty())
                text +=
                    StdText::tr(" (ключ ") + store::shown(store::textOf(m_values.front())) + ")";
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

    bool wrong(const std::string& what) {
        if (m_at != At::Field)
            return fail(StdText::tr("здесь не ждали: ") + what);
        std::string expected = StdText::tr("список кусков Base64");
        if (m_field != dataField)
            switch (field().type) {
            case MDX_BOOLEAN:
                expected = StdText::tr("true или false");
                break;
            case MDX_INTEGER:
                expected = StdText::tr("целое число");
                break;
            case MDX_DATE:
                expected = StdText::tr("число");
                break;
            default:
                expected = StdText::tr("текст");
            }
        return fail(StdText::tr("поле \"") + field().name + StdText::tr("\": нужно ") + expected +
                    StdText::tr(", а стоит ") + what);
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
                return fail(StdText::tr("выгрузка версии ") + std::to_string(number) +
                            StdText::tr(", известна ") + std::to_string(exportVersion));
            return back(At::Top);
        }
        if (m_at != At::Field)
            return wrong(StdText::tr("число"));
        if (field().type == MDX_DATE)
            return take(static_cast<double>(real));
        if (field().type != MDX_INTEGER)
            return wrong(StdText::tr("число"));
        if (number < std::numeric_limits<int32_t>::min() ||
            number > std::numeric_limits<int32_t>::max())
            return fail(StdText::tr("поле \"") + field().name +
                        StdText::tr("\": число слишком велико"));
        return take(number);
    }

    bool topKey(const std::string& name) {
        if (!m_sawFormat) {
            m_sawFormat = true;
            return name == "format" ? back(At::Format) : fail(StdText::tr("это не выгрузка Orvo"));
        }
        if (!m_sawVersion) {
            m_sawVersion = true;
            return name == "version" ? back(At::Version) : fail(StdText::tr("нет версии выгрузки"));
        }
        bool* const seen = name == "tables"  ? &m_sawTables
                           : name == "files" ? &m_sawFiles
                                             : nullptr;
        if (seen == nullptr)
            return fail(StdText::tr("неизвестное имя ") + store::shown(name));
        if (*seen)
            return fail(store::shown(name) + StdText::tr(" дано дважды"));
        *seen = true;
        if (name == "tables")
            return back(At::TablesValue);
        m_table = &store::contentTable();
        return back(At::FilesValue);
    }

    bool tableKey(const std::string& name) {
        const store::TableDef* table = store::findTable(name);
        if (table == nullptr)
            return fail(StdText::tr("неизвестная таблица ") + store::shown(name));
        const auto number = static_cast<size_t>(table - store::tables().data());
        if (m_seen[number])
            return fail(StdText::tr("таблица ") + store::shown(name) + StdText::tr(" дана дважды"));
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
            return passed({store::Stopped, StdText::tr("прервано")});
        return back(At::Record);
    }

    bool fieldKey(const std::string& name) {
        if (m_hasData)
            return fail(StdText::tr("после \"data\" полей быть не может"));
        m_field = -1;
        for (size_t i = 0; i < m_table->fields.size(); ++i)
            if (name == m_table->fields[i].name)
                m_field = static_cast<int>(i);
        if (m_field < 0 && m_table == &store::contentTable() && name == "data")
            m_field = dataField;
        if (m_field == -1)
            return fail(StdText::tr("неизвестное поле ") + store::shown(name));
        if (m_field >= 0) {
            const uint64_t bit = uint64_t(1) << m_field;
            if ((m_given & bit) != 0)
                return fail(StdText::tr("поле ") + store::shown(name) +
                            StdText::tr(" дано дважды"));
            m_given |= bit;
        }
        return back(At::Field);
    }

    bool openContent() {
        static const auto sizeField = static_cast<size_t>(store::contentTable().find(field::size));
        const auto* size = std::get_if<int64_t>(&m_values[sizeField]);
        if (size == nullptr)
            return fail(StdText::tr("перед \"data\" нет размера \"size\""));
        m_promised = *size;
        m_taken = 0;
        m_hasData = true;
        ++m_count->files;
        return passed(m_into.content(m_values, place()));
    }

    bool piece(const std::string& text) {
        if (text.size() > largestPiece)
            return fail(StdText::tr("кусок в \"data\" длиннее ") +
                        std::to_string(largestPiece >> 20) + StdText::tr(" МиБ"));
        const auto decoded = QByteArray::fromBase64Encoding(
            QByteArray::fromRawData(text.data(), static_cast<int>(text.size())),
            QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded || text.size() % 4 != 0)
            return fail(StdText::tr("в \"data\" не Base64"));
        const QByteArray& bytes = *decoded;
        m_taken += bytes.size();
        m_count->bytes += static_cast<uint64_t>(bytes.size());
        if (m_taken > m_promised)
            return fail(StdText::tr("в \"data\" больше байт, чем сказано в \"size\""));
        if (m_progress && !m_progress(m_source.position(), m_size))
            return passed({store::Stopped, StdText::tr("прервано")});
        return passed(m_into.bytes({bytes.constData(), static_cast<size_t>(bytes.size())}));
    }

    bool closeRecord() {
        const bool content = m_table == &store::contentTable();
        if (content && !m_hasData)
            return fail(StdText::tr("нет содержимого \"data\""));
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
    return {store::Refused, StdText::tr("файл не прочитан")};
}

} // namespace orvo::admin
