#include "platform/store/ChangeRecord.h"

#include "platform/mdx/MdxBuild.h"
#include "platform/store/LoggedValues.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <exception>
#include <limits>

namespace orvo::store {

namespace {

/// True if the value fits. `text` keeps the bytes that `var` refers to.
bool convert(const QJsonValue& value, MdxType type, MDRVar* var, std::string* text) {
    *var = {};
    if (value.isNull()) {
        var->null = 1;
        return true;
    }
    var->type = type;
    if (type == MDX_TEXT) {
        if (!value.isString())
            return false;
        *text = mdx::toCp1251(value.toString().toUtf8().toStdString());
        var->value.text.length = static_cast<uint32_t>(text->size());
        var->value.text.pointer = text->c_str();
        return true;
    }
    if (!value.isDouble() && !value.isBool())
        return false;
    const double number = value.isBool() ? (value.toBool() ? 1 : 0) : value.toDouble();
    if (type == MDX_BOOLEAN)
        var->value.boolean = number != 0 ? 1 : 0;
    else if (type == MDX_DATE)
        var->value.date = number;
    else if (number >= std::numeric_limits<int32_t>::min() &&
             number <= std::numeric_limits<int32_t>::max())
        var->value.integer = static_cast<int32_t>(number);
    else
        return false;
    return true;
}

/// False if a field of that type cannot hold it.
bool valueOf(const QJsonValue& json, MdxType type, Value* value) {
    const double real = json.isBool() ? (json.toBool() ? 1 : 0) : json.toDouble();
    if (json.isNull())
        *value = std::monostate();
    else if (type == MDX_TEXT && json.isString())
        *value = json.toString().toStdString();
    else if (type == MDX_DATE && json.isDouble())
        *value = real;
    else if ((type == MDX_BOOLEAN || type == MDX_INTEGER) && (json.isDouble() || json.isBool()) &&
             std::fabs(real) < 1e15)
        *value = static_cast<int64_t>(real);
    else
        return false;
    return true;
}

} // namespace

bool setFromJson(const TableDef& table, const std::string& json, MDRData* record) try {
    if (record == nullptr)
        return false;
    const QJsonDocument document = QJsonDocument::fromJson(
        QByteArray::fromRawData(json.data(), static_cast<int>(json.size())));
    if (!document.isObject())
        return false;
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const int number = table.find(it.key().toStdString());
        if (number < 0)
            continue;
        const MDRField field = MDRFldByNum(record->owner, number);
        MDRVar var;
        std::string text;
        if (!convert(it.value(), table.fields[static_cast<size_t>(number)].type, &var, &text))
            continue;
        if (MDRSetVal(field, record, &var) == MDX_OK)
            MDRSetUser(field, record, 1);
    }
    return true;
} catch (const std::exception&) {
    return false;
}

FieldValues valuesFromJson(const TableDef& table, const std::string& json) {
    FieldValues values;
    if (json == "{}") // half of all that the log holds
        return values;
    if (readLoggedValues(table, json, &values))
        return values;
    const QJsonObject object =
        QJsonDocument::fromJson(QByteArray::fromRawData(json.data(), static_cast<int>(json.size())))
            .object();
    for (size_t i = 0; i < table.fields.size(); ++i) {
        const FieldDef& field = table.fields[i];
        const auto found = object.constFind(QLatin1String(field.name));
        if (found == object.constEnd())
            continue;
        Value value;
        if (valueOf(found.value(), field.type, &value))
            values[static_cast<int>(i)] = std::move(value);
    }
    return values;
}

} // namespace orvo::store
