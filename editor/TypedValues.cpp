#include "editor/TypedValues.h"

#include "editor/RecordFields.h"
#include "frame/Notification.h"

#include <QAbstractItemModel>

#include <algorithm>

namespace orvo::editor {

void TypedValues::type(int column, const QVariant& value, const QVariant& shown) {
    const auto known = m_typed.find(column);
    if (known == m_typed.end())
        m_typed.insert(column, {value, shown});
    else
        known->value = value;
}

std::vector<Replaced> TypedValues::merge(const Notification& change, const MDRData* record,
                                         const RecordFields& fields) {
    std::vector<Replaced> replaced;
    for (const RecordField& field : fields) {
        const auto typed = m_typed.find(field.column);
        if (typed == m_typed.end() || !field.name || !change.hasValueFor(field.name))
            continue;
        if (field.read(record) == typed->base)
            continue;
        replaced.push_back({field.column, typed->value});
        m_typed.erase(typed);
    }
    Q_ASSERT(std::none_of(fields.begin(), fields.end(), [&](const RecordField& field) { // 2
        const auto typed = m_typed.constFind(field.column);
        return typed != m_typed.cend() && field.name && change.hasValueFor(field.name) &&
               field.read(record) != typed->base;
    }));
    return replaced;
}

void TypedValues::show(QAbstractItemModel& model, const QModelIndex& row) const {
    for (auto typed = m_typed.begin(); typed != m_typed.end(); ++typed)
        model.setData(row.siblingAtColumn(typed.key()), typed->value, Qt::DisplayRole);
}

} // namespace orvo::editor
