// ViewRows.h: moves on the rows of a tree and its view that several windows make: writing a row,
// refreshing the current one, and following a deletion.
#ifndef ORVO_FRAME_VIEWROWS_H
#define ORVO_FRAME_VIEWROWS_H

#include "frame/OrvoMdx.h"

#include <QAbstractItemModel>
#include <QItemSelectionModel>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QTreeView>
#include <QVariant>
#include <QVector>

#include <initializer_list>
#include <utility>
#include <vector>

namespace orvo {

class Notification;

/// Writes columns of the row of an index. Not an edit: models that report edits stay silent.
void setRow(QAbstractItemModel& model, const QModelIndex& row,
            std::initializer_list<std::pair<int, QVariant>> values);
/// The same with one value per column; an invalid value leaves its column as it is.
void setRow(QAbstractItemModel& model, const QModelIndex& row, const QVector<QVariant>& values);

/// Whether the view's current row is that row or stands below it; any column counts.
bool currentStandsIn(const QTreeView* view, const QModelIndex& row);
/// Makes the row current and the only one that is selected, whatever keys are held down: Ctrl and
/// Shift mean something to the view's own setCurrentIndex, but not while a change comes in.
void makeCurrent(QTreeView* view, const QModelIndex& row);
/// Makes the row's parent current and then the row itself, which refreshes all that depends on the
/// current row.
void reselectRow(QTreeView* view, const QModelIndex& row);
/// Removes a row. If the current row goes with it, the next sibling becomes current, the previous
/// one behind the last, and the parent after the only one.
void removeRow(QTreeView* view, const QModelIndex& row);
/// Removes a row that was never saved. Wherever the current row is, the row that then stands in its
/// place becomes current, or the last one, or the parent if none is left.
void removePlaceholder(QTreeView* view, const QModelIndex& row);
/// Follows a notification of a deletion: the row goes first, if there is one, then the record. A
/// key that the table does not have changes nothing.
void removeRecord(const Notification& change, CMDArray& table, QTreeView* view,
                  const QModelIndex& row);

/// While one lives, the views follow changes without repainting, scrolling or laying out their rows
/// each time; at its end once, scrolled to the row that was asked for last, or to the current row
/// if that is another one. For bursts of notifications: a view's layout costs more than the change.
/// The views must outlive it.
class QuietViews {
public:
    explicit QuietViews(const std::vector<QTreeView*>& views);
    ~QuietViews();
    QuietViews(const QuietViews&) = delete;
    QuietViews& operator=(const QuietViews&) = delete;

    /// Opens the folders above a row at once and scrolls to it at the end, if it is still there
    /// then and no other row of its view was asked for. `view` is one of the views.
    void scrollTo(QTreeView* view, const QModelIndex& row);

private:
    struct Quiet {
        QTreeView* view;
        QPointer<QItemSelectionModel>
            disconnectedSelection; ///< to which the view does not listen meanwhile
        QPersistentModelIndex current;
        QPersistentModelIndex target;
        bool visible;
        bool updates;
        bool autoScroll;
    };
    std::vector<Quiet> m_views;
};

/// The icon of an open folder differs from that of a closed one: the model is told of both.
template <class Model>
void followExpansion(const QTreeView* view, const Model* model) {
    QObject::connect(view, &QTreeView::expanded, model, &Model::setItemExpanded);
    QObject::connect(view, &QTreeView::collapsed, model, &Model::setItemCollapsed);
}

} // namespace orvo

#endif
