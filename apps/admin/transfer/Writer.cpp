#include "apps/admin/transfer/Format.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>

namespace orvo::admin {

namespace {

/// Bytes of a piece of Base64; a multiple of 3, so that pieces could be joined.
constexpr size_t pieceSize = 48 << 10;
/// About how long a record is, for the progress.
constexpr uint64_t recordWeight = 200;

void appendText(std::string* line, std::string_view text) {
    *line += '"';
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            *line += '\\';
            *line += c;
        } else if (c == '\n') {
            *line += "\\n";
        } else if (c == '\t') {
            *line += "\\t";
        } else if (code < 0x20 || code == 0x7f) {
            *line += "\\u00";
            *line += "0123456789abcdef"[code >> 4];
            *line += "0123456789abcdef"[code & 15];
        } else {
            *line += c;
        }
    }
    *line += '"';
}

template <typename Number>
void appendNumber(std::string* line, Number number) {
    char text[32];
    line->append(text, std::to_chars(text, text + sizeof text, number).ptr);
}

class Writer : public store::Receiver {
public:
    Writer(std::FILE* file, const store::Progress& progress, TransferCount* count)
        : m_file(file)
        , m_progress(progress)
        , m_count(count) {}

    store::Status expect(uint64_t records, uint64_t contents, uint64_t bytes) override {
        m_all = (records + contents) * recordWeight + bytes;
        m_line = "{\n\"format\": \"" + std::string(exportFormat) +
                 "\",\n\"version\": " + std::to_string(exportVersion) + ",\n\"tables\": {\n";
        return {};
    }

    store::Status record(const store::TableDef& table, const std::vector<store::Value>& values,
                         const std::string& /*place*/) override {
        reach(table);
        ++m_count->records;
        separate();
        return fields(table, values, "}");
    }

    store::Status content(const std::vector<store::Value>& values,
                          const std::string& /*place*/) override {
        store::Status status = closeData();
        if (!status.ok())
            return status;
        toFiles();
        ++m_count->files;
        separate();
        m_inData = true;
        m_firstPiece = true;
        return fields(store::contentTable(), values, ",\"data\":[");
    }

    store::Status bytes(std::string_view data) override {
        m_count->bytes += data.size();
        store::Status status;
        while (status.ok() && m_piece.size() + data.size() >= pieceSize) {
            const size_t more = pieceSize - m_piece.size();
            m_piece += data.substr(0, more);
            data.remove_prefix(more);
            status = piece();
        }
        m_piece += data;
        return status;
    }

    store::Status finish() {
        store::Status status = closeData();
        if (!status.ok())
            return status;
        toFiles();
        m_line += m_first ? "]\n}\n" : "\n]\n}\n";
        status = send();
        if (status.ok() && std::fflush(m_file) != 0)
            status = failed();
        return status;
    }

private:
    /// Closes the tables before this one and opens it.
    void reach(const store::TableDef& table) {
        const auto wanted = static_cast<int>(&table - store::tables().data());
        while (m_table < wanted) {
            if (m_table >= 0)
                m_line += m_first ? "],\n" : "\n],\n";
            ++m_table;
            m_line +=
                std::string("\"") + store::tables()[static_cast<size_t>(m_table)].name + "\": [\n";
            m_first = true;
        }
    }

    void toFiles() {
        if (m_inFiles)
            return;
        reach(store::tables().back());
        m_line += m_first ? "]\n},\n\"files\": [\n" : "\n]\n},\n\"files\": [\n";
        m_first = true;
        m_inFiles = true;
    }

    void separate() {
        if (!m_first)
            m_line += ",\n";
        m_first = false;
    }

    store::Status fields(const store::TableDef& table, const std::vector<store::Value>& values,
                         const char* end) {
        char before = '{';
        for (size_t i = 0; i < values.size(); ++i) {
            const store::FieldDef& field = table.fields[i];
            if (std::holds_alternative<std::monostate>(values[i]))
                continue;
            m_line += before;
            before = ',';
            m_line += '"';
            m_line += field.name;
            m_line += "\":";
            if (const auto* text = std::get_if<std::string>(&values[i])) {
                if (store::validUtf8(*text) != *text)
                    return {store::Refused, store::inTable(table) + StdText::tr(", запись ") +
                                                store::shown(store::textOf(values.front())) +
                                                StdText::tr(", поле ") + store::shown(field.name) +
                                                StdText::tr(": текст не в кодировке UTF-8")};
                appendText(&m_line, *text);
            } else if (const auto* number = std::get_if<int64_t>(&values[i])) {
                if (field.type == MDX_BOOLEAN)
                    m_line += *number != 0 ? "true" : "false";
                else
                    appendNumber(&m_line, *number);
            } else if (const double real = std::get<double>(values[i]);
                       real == 0 && std::signbit(real)) {
                m_line += "-0.0"; // without a fraction it would be read as the integer 0
            } else {
                appendNumber(&m_line, real);
            }
        }
        m_line += end;
        return send();
    }

    store::Status piece() {
        const QByteArray encoded =
            QByteArray::fromRawData(m_piece.data(), static_cast<int>(m_piece.size())).toBase64();
        m_line += m_firstPiece ? "\"" : ",\"";
        m_line.append(encoded.constData(), static_cast<size_t>(encoded.size()));
        m_line += '"';
        m_firstPiece = false;
        m_piece.clear();
        return send();
    }

    store::Status closeData() {
        store::Status status;
        if (m_inData && !m_piece.empty())
            status = piece();
        if (m_inData)
            m_line += "]}";
        m_inData = false;
        return status;
    }

    store::Status send() {
        if (std::fwrite(m_line.data(), 1, m_line.size(), m_file) != m_line.size())
            return failed();
        m_line.clear();
        const uint64_t done = (m_count->records + m_count->files) * recordWeight + m_count->bytes;
        if (m_progress && !m_progress(done, std::max<uint64_t>(m_all, 1)))
            return {store::Stopped, StdText::tr("прервано")};
        return {};
    }

    static store::Status failed() {
        return {store::Failed, StdText::tr("файл не пишется (") + std::strerror(errno) + ")"};
    }

    std::FILE* const m_file;
    const store::Progress& m_progress;
    TransferCount* const m_count;
    uint64_t m_all = 0;
    std::string m_line;  ///< not yet sent
    std::string m_piece; ///< not yet encoded
    int m_table = -1;    ///< the open one of tables()
    bool m_first = true, m_firstPiece = true, m_inFiles = false, m_inData = false;
};

} // namespace

store::Status writeExport(store::MaintainedStore& store, std::FILE* file,
                          const store::Progress& progress, TransferCount* count) {
    Writer writer(file, progress, count);
    const store::Status status = store.writeOut(writer);
    return status.ok() ? writer.finish() : status;
}

} // namespace orvo::admin
