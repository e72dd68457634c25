#include "frame/TreeView.h"

#if __has_include(<private/qtreeview_p.h>)
#include "frame/ShownRows.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <iterator>
#include <utility>

namespace orvo {

struct TreeView::Private {
    Private(TreeView& owner, QObjectData* data)
        : view(owner)
        , qt(*static_cast<QTreeViewPrivate*>(data)) {}

    /// Whether changes can be followed now.
    bool mayFollow() const {
        return isIncremental() && view.model() && qt.hiddenIndexes.isEmpty() &&
               qt.spanningIndexes.isEmpty() && !qt.animationsEnabled && qt.customIndent &&
               qt.uniformRowHeights;
    }
    /// Sets the list aside, if it is not yet. False if all is laid out anyway.
    bool follow() {
        if (isFollowing)
            return true;
        if (!mayFollow() || qt.delayedPendingLayout || qt.viewItems.isEmpty())
            return false;
        isFollowing = true;
        items.swap(qt.viewItems);
        lastViewed = std::exchange(qt.lastViewedItem, 0);
        view.scheduleDelayedItemsLayout();
        Q_ASSERT(qt.viewItems.isEmpty() && qt.delayedPendingLayout); // 1
        return true;
    }
    void forget() {
        isFollowing = false;
        items.clear();
        changes.clear();
    }
    void toggled(const QModelIndex& index) {
        if (isFollowing)
            changes.note(index);
    }
    /// Whether nothing that is shown depends on these rows, which are not the only ones there.
    bool areUnseen(const QModelIndex& parent, int count) const {
        return !isFollowing && !qt.delayedPendingLayout && parent.isValid() &&
               parent != view.rootIndex() && !view.isExpanded(parent) &&
               view.model()->rowCount(parent) > count;
    }
    void watch(const QAbstractItemModel& model) {
        const auto drop = [this] { forget(); };
        context = std::make_unique<QObject>();
        QObject* to = context.get();
        connect(&model, &QAbstractItemModel::rowsAboutToBeMoved, to, drop);
        connect(&model, &QAbstractItemModel::columnsAboutToBeInserted, to, drop);
        connect(&model, &QAbstractItemModel::columnsAboutToBeRemoved, to, drop);
        connect(&model, &QAbstractItemModel::columnsAboutToBeMoved, to, drop);
        connect(&model, &QAbstractItemModel::layoutAboutToBeChanged, to, drop);
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, to, drop);
        connect(&model, &QObject::destroyed, to, drop);
    }
    /// Brings the list up to date and gives it back to the view. False if that is not possible.
    bool layOut() {
        // Somebody who waits for no layout has made one.
        if (!mayFollow() || !qt.viewItems.isEmpty() || changes.isTooMuch())
            return false;
        if (std::exchange(qt.hasRemovedItems, false))
            for (auto it = qt.expandedIndexes.begin(); it != qt.expandedIndexes.end();)
                it = it->isValid() ? std::next(it) : qt.expandedIndexes.erase(it);
        if (!ShownRows(view, items).apply(changes))
            return false;
        qt.viewItems.swap(items);
        if (!qt.viewItems.isEmpty())
            qt.defaultItemHeight = view.indexRowSizeHint(qt.viewItems.at(0).index);
        qt.lastViewedItem = qMin(lastViewed, qMax(0, qt.viewItems.size() - 1));
        return true;
    }
    /// Whether the row is on the screen, or decides the height of all. Looks at the rows on the
    /// screen and no others.
    bool matters(const QModelIndex& index) const {
        if (!mayFollow() || view.verticalScrollMode() != ScrollPerItem)
            return true;
        const QVector<QTreeViewItem>& shown = qt.viewItems;
        const auto isAt = [&](int at) {
            return shown.at(at).index.internalId() == index.internalId();
        };
        const int first = qMax(0, view.verticalScrollBar()->value());
        const int height = qMax(1, qt.defaultItemHeight);
        const int end = qMin(shown.size(), first + view.viewport()->height() / height + 2);
        bool found = !shown.isEmpty() && isAt(0);
        for (int at = first; at < end && !found; ++at)
            found = isAt(at);
        return found;
    }

    TreeView& view;
    QTreeViewPrivate& qt;
    std::unique_ptr<QObject> context; ///< of the connections to the model
    bool isFollowing = false;
    QVector<QTreeViewItem> items; ///< kept aside
    int lastViewed = 0;
    ShownChanges changes;
    int layouts = 0;          ///< how often rows were laid out
    int removalLayouts = -1;  ///< when rows were about to be removed; -1: that was not followed
    bool isOffScreen = false; ///< the row that visualRect is asked for
};

TreeView::TreeView(QWidget* parent)
    : QTreeView(parent)
    , d(std::make_unique<Private>(*this, d_ptr.data())) {
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex& row) { d->toggled(row); });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex& row) { d->toggled(row); });
}

bool TreeView::isIncremental() {
    // In that very Qt only the members are where they were when this was compiled.
    static const bool isSame = qstrcmp(qVersion(), QT_VERSION_STR) == 0;
    return isSame;
}

void TreeView::setModel(QAbstractItemModel* model) {
    d->forget();
    d->context.reset();
    QTreeView::setModel(model);
    if (model)
        d->watch(*model);
}

void TreeView::reset() {
    d->forget();
    QTreeView::reset();
}

void TreeView::doItemsLayout() {
    ++d->layouts;
    const bool done = d->isFollowing && d->layOut();
    d->forget();
    if (!done) {
        QTreeView::doItemsLayout();
        return;
    }
    QAbstractItemView::doItemsLayout();
    header()->doItemsLayout();
}

QRect TreeView::visualRect(const QModelIndex& index) const {
    return d->isOffScreen ? QRect() : QTreeView::visualRect(index);
}

/// QTreeView looks for the row from where it looked last, in the whole list if need be.
void TreeView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                           const QVector<int>& roles) {
    if (topLeft != bottomRight || d->qt.delayedPendingLayout || d->matters(topLeft)) {
        QTreeView::dataChanged(topLeft, bottomRight, roles);
        return;
    }
    const QScopedValueRollback<bool> offScreen(d->isOffScreen, true);
    QAbstractItemView::dataChanged(topLeft, bottomRight, roles);
}

void TreeView::rowsInserted(const QModelIndex& parent, int first, int last) {
    if (parent.column() > 0 || d->areUnseen(parent, last - first + 1) || !d->follow()) {
        QTreeView::rowsInserted(parent, first, last);
        return;
    }
    d->changes.note(parent);
    QAbstractItemView::rowsInserted(parent, first, last);
}

void TreeView::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    // Where another row becomes current, the list is still asked for its place.
    QAbstractItemView::rowsAboutToBeRemoved(parent, first, last);
    d->removalLayouts = d->layouts;
    if (d->areUnseen(parent, last - first + 1))
        return;
    if (parent.column() <= 0 && d->follow()) {
        d->changes.noteRemoval(*model(), parent, first, last);
    } else {
        d->removalLayouts = -1;
        d->qt.viewItems.clear();
    }
}

/// Whatever another current row brings about may have laid out the rows in between, or opened their
/// parent, while they were still there.
void TreeView::rowsRemoved(const QModelIndex& parent, int first, int last) {
    const bool isOpened = !d->isFollowing && isExpanded(parent);
    if (d->removalLayouts != d->layouts || isOpened) {
        d->forget();
        QTreeView::rowsRemoved(parent, first, last);
        return;
    }
    d->qt.hasRemovedItems = true;
    d->qt._q_rowsRemoved(parent, first, last);
}

#else

namespace orvo {

struct TreeView::Private {};

TreeView::TreeView(QWidget* parent) : QTreeView(parent) {}

bool TreeView::isIncremental() {
    return false;
}

void TreeView::setModel(QAbstractItemModel* model) {
    QTreeView::setModel(model);
}

void TreeView::reset() {
    QTreeView::reset();
}

void TreeView::doItemsLayout() {
    QTreeView::doItemsLayout();
}

QRect TreeView::visualRect(const QModelIndex& index) const {
    return QTreeView::visualRect(index);
}

void TreeView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                           const QVector<int>& roles) {
    QTreeView::dataChanged(topLeft, bottomRight, roles);
}

void TreeView::rowsInserted(const QModelIndex& parent, int first, int last) {
    QTreeView::rowsInserted(parent, first, last);
}

void TreeView::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    QTreeView::rowsAboutToBeRemoved(parent, first, last);
}

void TreeView::rowsRemoved(const QModelIndex& parent, int first, int last) {
    QTreeView::rowsRemoved(parent, first, last);
}

#endif

TreeView::~TreeView() = default;

} // namespace orvo
