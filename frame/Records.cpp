#include "frame/Records.h"

#include <QTextCodec>

#include <cstring>
#include <optional>

namespace orvo {

// ---------------------------------------------------------------------------------------------
// Text

QTextCodec* recordCodec() {
    static QTextCodec* const codec = QTextCodec::codecForName("Windows-1251");
    return codec;
}

bool sameText(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

MDRVar nullVar() {
    MDRVar value;
    std::memset(&value, 0, sizeof value);
    value.null = 1;
    return value;
}

MDRVar textVar(const QByteArray& bytes) {
    MDRVar value = nullVar();
    value.type = MDX_TEXT;
    value.null = 0;
    value.value.text.length = static_cast<uint32_t>(qstrlen(bytes.constData()));
    value.value.text.pointer = bytes.constData();
    return value;
}

MDRVar integerVar(int32_t number) {
    MDRVar value = nullVar();
    value.type = MDX_INTEGER;
    value.null = 0;
    value.value.integer = number;
    return value;
}

MDRVar booleanVar(bool flag) {
    MDRVar value = nullVar();
    value.type = MDX_BOOLEAN;
    value.null = 0;
    value.value.boolean = flag ? 1 : 0;
    return value;
}

// ---------------------------------------------------------------------------------------------
// Reading

MDRField fieldOf(const MDRData* record, const char* name) {
    return record ? MDRFldByName(record->owner, name) : nullptr;
}

MDRField fieldOf(const MDRData* record, int number) {
    return record ? MDRFldByNum(record->owner, number) : nullptr;
}

MDRVar valueOf(const MDRData* record, MDRField field) {
    MDRVar value = nullVar();
    if (field && record && MDRGetVal(field, record, &value) != MDX_OK)
        value = nullVar();
    return value;
}

QString textOf(const MDRData* record, MDRField field) {
    const MDRVar value = valueOf(record, field);
    return value.type == MDX_TEXT ? fromRecord(value.value.text.pointer) : QString();
}

QByteArray bytesOf(const MDRData* record, MDRField field) {
    const MDRVar value = valueOf(record, field);
    return value.type == MDX_TEXT ? QByteArray(value.value.text.pointer) : QByteArray();
}

int32_t integerOf(const MDRData* record, MDRField field) {
    int32_t value = 0;
    if (field && record && MDRGetAsInt32(field, record, &value) != MDX_OK)
        value = 0;
    return value;
}

bool flagOf(const MDRData* record, MDRField field) {
    return integerOf(record, field) != 0;
}

bool isNull(const MDRData* record, MDRField field) {
    const MDRVar value = valueOf(record, field);
    return value.null != 0 || value.type == MDX_NONE;
}

bool holdsText(const MDRData* record, MDRField field, const QString& text) {
    // The same letters are the usual case, of a walk over a group, and are seen without a copy.
    const MDRVar value = valueOf(record, field);
    const char* bytes = value.type == MDX_TEXT ? value.value.text.pointer : nullptr;
    int at = 0;
    for (; bytes && *bytes && at < text.size(); ++bytes, ++at)
        if (codepage::letterOf(*bytes) != text[at].unicode())
            return sameText(textOf(record, field), text);
    return at == text.size() && (!bytes || !*bytes);
}

bool isEmptyText(const MDRData* record, MDRField field) {
    const MDRVar value = valueOf(record, field);
    return value.type != MDX_TEXT || !value.value.text.pointer || !*value.value.text.pointer;
}

// ---------------------------------------------------------------------------------------------
// Keys

// Type 0 is NULL: zeroed bytes are a list of NULLs.
KeyValues::KeyValues() {
    std::memset(m_values.data(), 0, sizeof m_values);
}

KeyValues& KeyValues::add(const MDRVar& value) {
    if (m_count < m_bytes.size())
        m_values[m_count++] = value;
    return *this;
}

KeyValues& KeyValues::text(const QString& text) {
    return bytes(toRecord(text));
}

KeyValues& KeyValues::textOrNull(const QString& text) {
    return text.isEmpty() ? null() : this->text(text);
}

KeyValues& KeyValues::bytes(const QByteArray& bytes) {
    if (m_count == m_bytes.size())
        return *this;
    m_bytes[m_count] = bytes;
    return add(textVar(m_bytes[m_count]));
}

KeyValues& KeyValues::integer(int32_t value) {
    return add(integerVar(value));
}

KeyValues& KeyValues::null() {
    return add(nullVar());
}

int recordCount(const MDArray* array) {
    return array && array->keyCount > 0 ? static_cast<int>(array->recordCount) : 0;
}

int recordCount(const CMDArray& table) {
    return recordCount(table.array);
}

MDRData* seek(const CMDArray& table, int key, const KeyValues& values) {
    return MDARecSeekV(table.array, key, values.data(), nullptr);
}

MDRData* seekKey(const CMDArray& table, const QString& keyLink) {
    // With its letters replaced it would be another key, which a record may have.
    const std::optional<QByteArray> bytes = toRecordExactly(keyLink);
    return bytes ? seek(table, 0, KeyValues().bytes(*bytes)) : nullptr;
}

int32_t seekPosition(const CMDArray& table, int key, const KeyValues& values) {
    int32_t position = -1;
    MDARecSeekV(table.array, key, values.data(), &position);
    return position;
}

void setKeys(CMDArray& table, std::initializer_list<const char*> further) {
    table.KeyAdd(field::KeyLink, MDX_KEY_UNIQUE);
    while (table.array && table.array->keyCount >= 2) {
        table.status = MDAKeyDel(table.array, 0);
        if (table.status != MDX_OK)
            break;
    }
    for (const char* fields : further)
        table.KeyAdd(fields, MDX_KEY_MULTI);
}

} // namespace orvo
