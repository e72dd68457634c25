// SimilarRows.h: multiple selections of rows that belong together.
#ifndef ORVO_MODELS_SIMILARROWS_H
#define ORVO_MODELS_SIMILARROWS_H

#include <QModelIndex>

#include <functional>

class QItemSelection;
class QItemSelectionModel;

namespace orvo {

/// Keeps a multiple selection to rows that are alike, for the slot of selectionChanged: `selected`
/// is what has just been added. Added rows must be like the first of them, and all must be like the
/// first that then remains selected; the others are deselected. A single row may be anything.
void restrictSelectionToSimilarRows(
    QItemSelectionModel& selection, const QItemSelection& selected,
    const std::function<bool(const QModelIndex&, const QModelIndex&)>& alike);

} // namespace orvo

#endif
