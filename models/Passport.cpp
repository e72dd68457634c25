#include "models/Passport.h"

namespace orvo {

QModelIndex addPassportCategory(PropModel& model, const QString& name, const QString& caption,
                                const std::vector<PassportRow>& rows) {
    model.AddCategoryRow(name, caption, QModelIndex());
    const QModelIndex category = model.index(model.rowCount() - 1, 0);
    for (const PassportRow& row : rows) {
        model.AddEditorRow(row.name, row.caption, row.editor, category, row.readOnly);
        model.setRowValue(row.name, row.value);
    }
    return category;
}

void editPassportValue(PropModel& model, const QString& rowName, const QVariant& value) {
    const QModelIndex row = model.findIndexByKey(rowName);
    if (row.isValid())
        model.setData(row.siblingAtColumn(PropColumn::Value), value, Qt::EditRole);
}

} // namespace orvo
