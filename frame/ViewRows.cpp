#include "frame/ViewRows.h"

#include "frame/Notification.h"

#include <algorithm>

namespace orvo {

void setRow(QAbstractItemModel& model, const QModelIndex& row,
            std::initializer_list<std::pair<int, QVariant>> values) {
    const QModelIndex parent = row.parent();
    for (const auto& [column, value] : values)
        model.setData(model.index(row.row(), column, parent), value, Qt::DisplayRole);
}

void setRow(QAbstractItemModel& model, const QModelIndex& row, const QVector<QVariant>& values) {
    const QModelIndex parent = row.parent();
    for (int column = 0; column < values.size(); ++column)
        if (values[column].isValid())
            model.setData(model.index(row.row(), column, parent), values[column], Qt::DisplayRole);
}

bool currentStandsIn(const QTreeView* view, const QModelIndex& row) {
    for (QModelIndex up = view->currentIndex().siblingAtColumn(0); up.isValid(); up = up.parent())
        if (up == row)
            return true;
    return false;
}

void makeCurrentAnew(QTreeView* view, const QModelIndex& row) {
    const QPersistentModelIndex kept(row);
    view->setCurrentIndex(row.parent());
    view->setCurrentIndex(kept);
}

void removeRow(QTreeView* view, const QModelIndex& row) {
    QAbstractItemModel* model = view->model();
    const QPersistentModelIndex parent(row.parent());
    const int number = row.row();
    const bool currentGoes = currentStandsIn(view, row);
    model->removeRows(number, 1, parent);
    if (!currentGoes)
        return;
    const int left = model->rowCount(parent);
    view->setCurrentIndex(left == 0 ? QModelIndex(parent)
                                    : model->index(std::min(number, left - 1), 0, parent));
}

void removeRecord(const Notification& change, CMDArray& table, QTreeView* view,
                  const QModelIndex& row) {
    if (!findRecord(change.event(), &table))
        return;
    if (row.isValid())
        removeRow(view, row);
    // Found anew: the removal may have moved the current row, and what depends on it may have
    // changed the table.
    table.RecDel(findRecord(change.event(), &table));
}

} // namespace orvo
