#include "platform/client/Corrections.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace orvo::client {

namespace {

std::string jsonOf(const store::TableDef& table, const RecordWrite& record) {
    QJsonObject object;
    for (const auto& [number, value] : record.values) {
        const store::FieldDef& field = table.fields[static_cast<size_t>(number)];
        QJsonValue json; // null
        if (const auto* text = std::get_if<std::string>(&value))
            json = QString::fromStdString(*text);
        else if (const auto* integer = std::get_if<int64_t>(&value))
            json = field.type == MDX_BOOLEAN ? QJsonValue(*integer != 0)
                                             : QJsonValue(static_cast<qint64>(*integer));
        else if (const auto* real = std::get_if<double>(&value))
            json = *real;
        object[QString::fromLatin1(field.name)] = json;
    }
    object[QString::fromLatin1(table.fields.front().name)] = QString::fromStdString(record.key);
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

} // namespace

std::vector<store::Change> correctionsOf(const WriteRequest& request, store::Store& store) {
    std::vector<store::Change> changes;
    const store::TableDef* table = store::findTable(request.table);
    if (!table || request.kind != WriteRequest::Records)
        return changes;
    for (const RecordWrite& record : recordsOf(request)) {
        store::Change change;
        change.table = request.table;
        change.key = record.key;
        change.login = store.login(); // one's own: the current row may follow
        change.code = OrvoEventUpdate;
        change.after = change.before = "{}";
        if (record.flag == MDX_INSERT) {
            CMDArray present;
            if (!store
                     .fetchLinked(request.table, table->fields.front().name, record.key,
                                  present.array)
                     .ok())
                return {};
            if (mdx::postedCount(present.array) == 0) {
                change.code = OrvoEventInsert;
                change.after = jsonOf(*table, record);
                changes.push_back(change);
                change.code = OrvoEventDelete;
                change.before = std::move(change.after);
                change.after = "{}";
            }
        }
        if (record.flag != MDX_DELETE)
            changes.push_back(std::move(change));
    }
    return changes;
}

} // namespace orvo::client
