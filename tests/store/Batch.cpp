#include "Batch.h"

#include "platform/mdx/MdxBuild.h"

namespace orvo::store::test {

namespace {

void setValue(CMDArray& array, MDRData* record, const char* field, const QVariant& value) {
    MDRVar var{};
    std::string text;
    if (!value.isValid()) {
        var.null = 1;
    } else if (value.type() == QVariant::Bool) {
        var.type = MDX_BOOLEAN;
        var.value.boolean = value.toBool() ? 1 : 0;
    } else if (value.type() == QVariant::Int) {
        var.type = MDX_INTEGER;
        var.value.integer = value.toInt();
    } else if (value.type() == QVariant::Double) {
        var.type = MDX_DATE;
        var.value.date = value.toDouble();
    } else {
        text = mdx::toCp1251(value.toString().toStdString());
        var.type = MDX_TEXT;
        var.value.text.length = static_cast<uint32_t>(text.size());
        var.value.text.pointer = text.c_str();
    }
    array.SetValF(record, field, var);
}

QString valueText(MDRField field, const MDRData* record) {
    MDRVar var{};
    if (MDRGetVal(field, record, &var) != MDX_OK)
        return "?";
    if (var.null != 0)
        return "-";
    switch (var.type) {
    case MDX_BOOLEAN:
        return var.value.boolean != 0 ? "true" : "false";
    case MDX_INTEGER:
        return QString::number(var.value.integer);
    case MDX_DATE:
        return QString::number(var.value.date, 'g', 17);
    default:
        return QString::fromStdString(
            mdx::toUtf8(std::string_view(var.value.text.pointer, var.value.text.length)));
    }
}

} // namespace

Batch::Batch(const char* table) : m_table(table) {
    const TableDef* known = findTable(table);
    makeStructure(known != nullptr ? *known : tables().front(), array.array);
}

Batch& Batch::add(int flag, const char* key, Fields fields) {
    MDRData* record = MDARecNew(array.array);
    MDRSetFlags(record, static_cast<uint32_t>(flag));
    setValue(array, record, "KeyLink", QString(key));
    for (const auto& [field, value] : fields)
        setValue(array, record, field, value);
    MDARecPost(record, nullptr);
    m_last = record;
    return *this;
}

Batch& Batch::set(const char* field, const QVariant& value) {
    setValue(array, MDARecEdit(m_last), field, value);
    MDARecPost(m_last, nullptr);
    return *this;
}

QString dump(const MDArray* array, const QStringList& fields) {
    QStringList lines;
    for (uint32_t position = 0; position < array->recordCount; ++position) {
        const MDRData* record = MDARec(array, 0, static_cast<int32_t>(position));
        QStringList values;
        if (fields.isEmpty()) {
            for (int i = 0; i < array->fieldCount; ++i)
                values += valueText(MDRFldByNum(array, i), record);
        }
        for (const QString& name : fields)
            values += valueText(MDRFldByName(array, name.toUtf8().constData()), record);
        lines += values.join("|");
    }
    return lines.join("\n");
}

QString dump(Store& store, const char* table, const QStringList& fields) {
    CMDArray array;
    const Status status = store.fetch(table, array.array);
    return status.ok() ? dump(array.array, fields) : QString::fromStdString(status.text);
}

QString log(Store& store, int64_t cursor) {
    std::vector<Change> changes;
    const Status status = store.readLog(cursor, 100000, &changes);
    if (!status.ok())
        return QString::fromStdString(status.text);
    QStringList lines;
    for (const Change& change : changes)
        lines +=
            QString("%1 %2 %3 %4 %5 %6")
                .arg(change.code)
                .arg(change.table.c_str(), change.key.c_str(), change.login.c_str(),
                     QString::fromStdString(change.after), QString::fromStdString(change.before));
    return lines.join("\n");
}

} // namespace orvo::store::test
