#include "frame/Notification.h"

#include "frame/Records.h"

namespace {

const char* blockText(const MDXCliParam* param, int field) {
    const char* text = nullptr;
    if (MDRGetTextPtr(MDRFldByNum(param->array, field), param->record, &text) != MDX_OK || !text)
        return "";
    return text;
}

/// "NCI:Menu,..." names the table from the fifth character up to the first comma.
QString tableOf(const char* source) {
    const QString text = orvo::fromRecord(source);
    const int comma = text.indexOf(QLatin1Char(','));
    return comma < 0 ? QString() : text.mid(4, comma - 4);
}

bool isNciEvent(int32_t action) {
    return action == OrvoEventInsert || action == OrvoEventUpdate || action == OrvoEventDelete ||
           action == OrvoEventOther;
}

/// Fields are matched by number: the block's description and the local table have one order.
void mergeMarkedFields(const TEventNciParse& event, CMDArray& table, MDRData* record) {
    for (int i = 0; i < event.recordType.fieldCount; ++i) {
        const MDRField field = MDRFldByNum(&event.recordType, i);
        uint8_t marked = 0;
        if (field && MDRIsUser(field, &event.record, &marked) == MDX_OK && marked)
            table.SetValF(record, i, orvo::valueOf(&event.record, field));
    }
}

MDRVar keyVar(const TEventNciParse& event) {
    return orvo::textVar(QByteArray::fromRawData(event.key, static_cast<int>(qstrlen(event.key))));
}

void mergeAndPost(const TEventNciParse& event, CMDArray& table, MDRData* found) {
    if (MDRData* record = table.RecEdit(found)) {
        mergeMarkedFields(event, table, record);
        table.RecPost(record);
    }
}

} // namespace

namespace orvo {

Notification::Notification(MDXCliParam* param) {
    MDRTypInit(&m_event.recordType);
    MDRRecInit(&m_event.record);
    if (!param || !param->array || param->array->fieldCount != 10)
        return;
    m_isTableEvent = true;
    m_event.param = param;
    MDRGetAsInt32(MDRFldByNum(param->array, 1), param->record, &m_event.action);
    m_event.key = blockText(param, 4);
    m_event.source = blockText(param, 5);
    if (!isNciEvent(m_event.action))
        return;
    m_event.tableName = tableOf(m_event.source);
    if (m_event.action == OrvoEventDelete)
        return;
    uint32_t length = 0;
    const char* raw = nullptr;
    if (MDRGetTextRef(MDRFldByNum(param->array, 7), param->record, &length, &raw) != 0 ||
        length == 0)
        return;
    // A record that is cut or does not hold together counts as one without fields.
    if (MDRRecCheck(raw, length) != MDX_OK || MDRRecSet(&m_event.record, raw) != MDX_OK)
        return;
    MDRTypGen(&m_event.recordType, "NCI", &m_event.record);
}

Notification::~Notification() {
    MDRTypFree(&m_event.recordType);
}

bool Notification::hasValueFor(const char* field) const {
    uint8_t marked = 0;
    return m_event.recordType.fieldCount > 0 &&
           MDRIsUser(MDRFldByName(&m_event.recordType, field), &m_event.record, &marked) ==
               MDX_OK &&
           marked != 0;
}

bool Notification::isFor(const char* tableName) const {
    return sameText(m_event.tableName, QString::fromLatin1(tableName));
}

MDRData* findRecord(const TEventNciParse& event, const CMDArray* table) {
    return table ? seek(*table, 0, KeyValues().bytes(QByteArray(event.key))) : nullptr;
}

MDRData* createAndMerge(const TEventNciParse& event, CMDArray* table) {
    if (!table || findRecord(event, table))
        return nullptr;
    MDRData* record = MDARecNew(table->array);
    if (!record)
        return nullptr;
    MDRSetFlags(record, MDX_INSERT);
    table->SetValF(record, 0, keyVar(event));
    // Posted before the merge, so that the record is in the keys even if nothing is marked.
    table->RecPost(record);
    mergeAndPost(event, *table, record);
    return findRecord(event, table);
}

MDRData* editAndMerge(const TEventNciParse& event, CMDArray* table) {
    MDRData* record = findRecord(event, table);
    if (!record)
        return nullptr;
    mergeAndPost(event, *table, record);
    return findRecord(event, table);
}

} // namespace orvo

bool insertToBaseTable(const TEventNciParse& event, CMDArray* table) {
    return orvo::createAndMerge(event, table) != nullptr;
}

bool updateBaseTable(const TEventNciParse& event, CMDArray* table) {
    return orvo::editAndMerge(event, table) != nullptr;
}
