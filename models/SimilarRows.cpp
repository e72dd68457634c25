#include "models/SimilarRows.h"

#include "models/DragKeys.h"

#include <QItemSelectionModel>

namespace orvo {

void restrictSelectionToSimilarRows(
    QItemSelectionModel& selection, const QItemSelection& selected,
    const std::function<bool(const QModelIndex&, const QModelIndex&)>& alike) {
    if (selected.isEmpty() || selection.selectedRows().size() == 1)
        return;
    const QModelIndexList added = dragkeys::rowsOf(selected.indexes());
    if (added.isEmpty())
        return;
    const auto deselectUnlike = [&](const QModelIndexList& rows, const QModelIndex& reference) {
        for (const QModelIndex& row : rows)
            if (!alike(reference, row))
                selection.select(row, QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
    };
    deselectUnlike(added, added.first());
    const QModelIndexList remaining = selection.selectedRows();
    if (remaining.isEmpty())
        return;
    deselectUnlike(added, remaining.first());
    // What was selected before is not in the list; it must not stand beside rows of another kind.
    deselectUnlike(remaining, remaining.first());
}

} // namespace orvo
