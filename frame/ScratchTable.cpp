#include "frame/ScratchTable.h"

#include "frame/CommonFunctions.h"

namespace orvo {

RowWriter::RowWriter(CMDArray& table, MDRData* record)
    : m_table(&table)
    , m_record(record)
    , m_open(record != nullptr) {}

RowWriter::RowWriter(RowWriter&& other) noexcept
    : m_table(other.m_table)
    , m_record(other.m_record)
    , m_posted(other.m_posted)
    , m_open(std::exchange(other.m_open, false)) {}

RowWriter::~RowWriter() {
    post();
}

uint32_t RowWriter::post() {
    if (std::exchange(m_open, false))
        m_posted = m_table->RecPost(m_record);
    return m_posted;
}

RowWriter& RowWriter::text(const char* field, const QString& text) {
    const QByteArray bytes = toRecord(text);
    m_table->SetValF(m_record, field, textVar(bytes));
    return *this;
}

RowWriter& RowWriter::textOrNull(const char* field, const QString& text) {
    return text.isEmpty() ? null(field) : this->text(field, text);
}

RowWriter& RowWriter::null(const char* field) {
    m_table->SetValF(m_record, field, nullVar());
    return *this;
}

RowWriter& RowWriter::integer(const char* field, int32_t value) {
    m_table->SetValF(m_record, field, integerVar(value));
    return *this;
}

RowWriter& RowWriter::flag(const char* field, bool value) {
    m_table->SetValF(m_record, field, booleanVar(value));
    return *this;
}

RowWriter& RowWriter::copy(const char* field, const MDRData* source) {
    m_table->SetValF(m_record, field, valueOf(source, field));
    return *this;
}

RowWriter& RowWriter::copyAll(const MDRData* source) {
    const int count = source && source->owner ? source->owner->fieldCount : 0;
    for (int i = 0; i < count; ++i)
        m_table->SetValF(m_record, i, valueOf(source, i));
    return *this;
}

ScratchTable::ScratchTable(COrvoCliSes& session, std::string tableName)
    : m_session(session)
    , m_name(std::move(tableName)) {}

bool ScratchTable::fetch(QString* error) {
    QString unread;
    return GetTableStructure(&m_session, m_name, m_table, error ? error : &unread) != 0;
}

RowWriter ScratchTable::add() {
    MDRData* record = MDARecNew(m_table.array);
    if (record)
        ++m_added;
    return RowWriter(m_table, record);
}

RowWriter ScratchTable::add(MdxRecordFlag flag) {
    RowWriter row = add();
    MDRSetFlags(row.record(), flag);
    return row;
}

void ScratchTable::send(MDXCliParam** reply) {
    if (isEmpty() || std::exchange(m_sent, true))
        return;
    m_session.SqlUpdate(m_name.c_str(), m_table.array, true, reply);
}

} // namespace orvo
