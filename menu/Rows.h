// Rows.h: filling rows of the trees.
#ifndef ORVO_MENU_ROWS_H
#define ORVO_MENU_ROWS_H

#include <QAbstractItemModel>
#include <QVariant>

#include <initializer_list>
#include <utility>

namespace orvo::menu {

/// Writes columns of the row of an index. Not an edit: models that report edits stay silent.
inline void setRow(QAbstractItemModel& model, const QModelIndex& row,
                   std::initializer_list<std::pair<int, QVariant>> values) {
    const QModelIndex parent = row.parent();
    for (const auto& [column, value] : values)
        model.setData(model.index(row.row(), column, parent), value, Qt::DisplayRole);
}

} // namespace orvo::menu

#endif
