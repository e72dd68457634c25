#include "apps/client/ScreenshotRows.h"

#include <QIcon>
#include <QTreeView>

#include <algorithm>
#include <functional>
#include <vector>

namespace orvo::app {

namespace {

using Rows = std::vector<QPersistentModelIndex>;

std::vector<QTreeView*> shownTrees(const QWidget& window) {
    std::vector<QTreeView*> views;
    for (QTreeView* view : window.findChildren<QTreeView*>())
        if (view->isVisible() && view->model())
            views.push_back(view);
    const auto left = [&](const QTreeView* view) { return view->mapTo(&window, QPoint()).x(); };
    std::stable_sort(views.begin(), views.end(), [&](const QTreeView* one, const QTreeView* other) {
        return left(one) < left(other);
    });
    return views;
}

/// The rows that `wanted` accepts, depth first, `limit` at the most.
Rows rowsOf(const QAbstractItemModel& model, size_t limit,
            const std::function<bool(const QModelIndex&)>& wanted) {
    Rows found;
    const std::function<void(const QModelIndex&)> walk = [&](const QModelIndex& parent) {
        for (int row = 0; row < model.rowCount(parent) && found.size() < limit; ++row) {
            const QModelIndex index = model.index(row, 0, parent);
            if (wanted(index) && found.size() < limit)
                found.emplace_back(index);
            walk(index);
        }
    };
    walk({});
    return found;
}

void choose(QTreeView& view, const QModelIndex& row) {
    for (QModelIndex up = row.parent(); up.isValid(); up = up.parent())
        view.expand(up);
    view.setCurrentIndex(row);
    view.scrollTo(row);
}

/// Content is what lies below the top row.
bool hasContent(const QTreeView& view) {
    return view.model()->rowCount(view.model()->index(0, 0)) > 0;
}

/// Chooses the first leaf that brings content into `next`.
void chooseLeafFor(QTreeView& view, const QTreeView& next) {
    constexpr size_t attempts = 20; // each may ask the server
    const QAbstractItemModel& model = *view.model();
    for (const QPersistentModelIndex& row :
         rowsOf(model, attempts, [&](const QModelIndex& at) { return model.rowCount(at) == 0; })) {
        if (!row.isValid())
            continue;
        choose(view, row);
        if (hasContent(next))
            return;
    }
}

void chooseLeafWithIcon(QTreeView& view) {
    const QAbstractItemModel& model = *view.model();
    constexpr size_t foldersToOpen = 3;
    for (const QPersistentModelIndex& folder : rowsOf(
             model, foldersToOpen, [&](const QModelIndex& row) { return model.rowCount(row) > 0; }))
        view.expand(folder);
    const auto leaves = [&](bool withIcon) {
        return rowsOf(model, 1, [&](const QModelIndex& row) {
            const bool inFolder = row.parent().parent().isValid();
            return model.rowCount(row) == 0 &&
                   (!withIcon ||
                    (inFolder && !row.data(Qt::DecorationRole).value<QIcon>().isNull()));
        });
    };
    Rows leaf = leaves(true);
    if (leaf.empty())
        leaf = leaves(false);
    if (!leaf.empty())
        choose(view, leaf.front());
}

} // namespace

void prepareScreenshot(QWidget& window) {
    const std::vector<QTreeView*> views = shownTrees(window);
    for (size_t i = 0; i < views.size(); ++i) {
        QTreeView& view = *views[i];
        if (view.editTriggers() & QAbstractItemView::CurrentChanged)
            continue;
        if (i == 0 && views.size() > 1)
            chooseLeafFor(view, *views[1]);
        else
            chooseLeafWithIcon(view);
    }
}

} // namespace orvo::app
