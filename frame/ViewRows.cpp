#include "frame/ViewRows.h"

#include "frame/Notification.h"
#include "frame/Values.h"

#include <QGuiApplication>

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
    for (int column = 0; column < values.size(); ++column) {
        if (!values[column].isValid())
            continue;
        const QModelIndex cell = model.index(row.row(), column, parent);
        // Told of a change, a view looks for the row among all that are open.
        if (!isSame(cell.data(Qt::DisplayRole), values[column]))
            model.setData(cell, values[column], Qt::DisplayRole);
    }
}

bool currentStandsIn(const QTreeView* view, const QModelIndex& row) {
    for (QModelIndex up = view->currentIndex().siblingAtColumn(0); up.isValid(); up = up.parent())
        if (up == row)
            return true;
    return false;
}

void makeCurrent(QTreeView* view, const QModelIndex& row) {
    const QPersistentModelIndex wanted(row);
    // With nothing selected, a row that is toggled, or selected besides, is the only one.
    if (QGuiApplication::keyboardModifiers() & (Qt::ControlModifier | Qt::ShiftModifier))
        view->selectionModel()->clearSelection();
    view->setCurrentIndex(wanted);
}

/// A row that is one of several selected ones stays that.
void reselectRow(QTreeView* view, const QModelIndex& row) {
    const QPersistentModelIndex kept(row);
    QItemSelectionModel* selection = view->selectionModel();
    QItemSelection before = selection->selection();
    const bool isOneOfSeveral =
        before.contains(row) && (before.size() > 1 || before.first().height() > 1);
    makeCurrent(view, row.parent());
    makeCurrent(view, kept);
    if (!isOneOfSeveral)
        return;
    before.erase(std::remove_if(before.begin(), before.end(),
                                [](const QItemSelectionRange& range) { return !range.isValid(); }),
                 before.end());
    selection->select(before, QItemSelectionModel::Select);
}

void removeRow(QTreeView* view, const QModelIndex& row) {
    if (currentStandsIn(view, row))
        removePlaceholder(view, row);
    else
        view->model()->removeRows(row.row(), 1, row.parent());
}

void removePlaceholder(QTreeView* view, const QModelIndex& row) {
    QAbstractItemModel* model = view->model();
    const QPersistentModelIndex parent(row.parent());
    const int number = row.row();
    if (!model->removeRows(number, 1, parent))
        return;
    const int left = model->rowCount(parent);
    makeCurrent(view, left == 0 ? QModelIndex(parent)
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

namespace {

/// Has the view follow the current row or not. Its own slot for that lays out all open rows, to
/// find the places of the old and the new row, which are to be repainted.
void listen(QTreeView* view, QItemSelectionModel* selection, bool on) {
    if (on)
        QObject::connect(selection, SIGNAL(currentChanged(QModelIndex, QModelIndex)), view,
                         SLOT(currentChanged(QModelIndex, QModelIndex)));
    else
        QObject::disconnect(selection, SIGNAL(currentChanged(QModelIndex, QModelIndex)), view,
                            SLOT(currentChanged(QModelIndex, QModelIndex)));
}

/// Whether nothing but the repaint hangs on that: it also ends an editor that is open, and may open
/// one.
bool onlyRepaints(const QTreeView& view) {
    return view.selectionModel() && !(view.editTriggers() & QTreeView::CurrentChanged) &&
           !view.indexWidget(view.currentIndex());
}

} // namespace

QuietViews::QuietViews(const std::vector<QTreeView*>& views) {
    for (QTreeView* view : views) {
        const bool visible = view->isVisible();
        QItemSelectionModel* disconnectedSelection =
            visible && onlyRepaints(*view) ? view->selectionModel() : nullptr;
        if (disconnectedSelection)
            listen(view, disconnectedSelection, false);
        m_views.push_back({view, disconnectedSelection, view->currentIndex(), QModelIndex(),
                           visible, view->updatesEnabled(), view->hasAutoScroll()});
        // Out of sight it does none of this anyway, and notes to scroll when it is shown.
        if (!view->isVisible())
            continue;
        view->setUpdatesEnabled(false);
        view->setAutoScroll(false);
    }
}

QuietViews::~QuietViews() {
    for (const Quiet& quiet : m_views) {
        if (quiet.disconnectedSelection)
            listen(quiet.view, quiet.disconnectedSelection, true);
        if (quiet.visible)
            quiet.view->setAutoScroll(quiet.autoScroll);
        const QModelIndex current = quiet.view->currentIndex();
        if (quiet.target.isValid())
            quiet.view->scrollTo(quiet.target);
        else if (quiet.visible && quiet.autoScroll && current.isValid() && quiet.current != current)
            quiet.view->scrollTo(current);
        if (quiet.visible && quiet.updates)
            quiet.view->setUpdatesEnabled(true);
    }
}

void QuietViews::scrollTo(QTreeView* view, const QModelIndex& row) {
    for (QModelIndex up = row.parent(); up.isValid(); up = up.parent())
        view->expand(up);
    for (Quiet& quiet : m_views)
        if (quiet.view == view)
            quiet.target = row;
}

} // namespace orvo
