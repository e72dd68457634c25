#include "apps/client/WidgetReport.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QJsonArray>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QToolBar>
#include <QTreeView>

#include <functional>

namespace orvo::app::report {

namespace {

QJsonArray rectOf(const QRect& rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

QRect onScreen(const QWidget& widget, const QRect& rect) {
    return {widget.mapToGlobal(rect.topLeft()), rect.size()};
}

QJsonObject namesOf(const QObject& object) {
    return {{"class", QString::fromLatin1(object.metaObject()->className())},
            {"name", object.objectName()}};
}

QString plain(QString text) {
    return text.remove(QLatin1Char('&'));
}

bool isMeant(const QObject& object, const QString& text, const QString& wanted) {
    return object.objectName() == wanted || (!text.isEmpty() && plain(text) == wanted);
}

QJsonObject controlOf(const QObject& object, const QString& text, bool enabled) {
    QJsonObject entry = namesOf(object);
    entry["text"] = plain(text);
    entry["enabled"] = enabled;
    entry["visible"] = false;
    return entry;
}

/// Where a widget shows the action; invalid if it does not.
QRect placeOf(const QWidget& holder, QAction& action) {
    if (!holder.isVisible())
        return {};
    if (const auto* menu = qobject_cast<const QMenu*>(&holder))
        return onScreen(*menu, menu->actionGeometry(&action));
    if (const auto* bar = qobject_cast<const QMenuBar*>(&holder))
        return onScreen(*bar, bar->actionGeometry(&action));
    if (const auto* bar = qobject_cast<const QToolBar*>(&holder))
        if (const QWidget* button = bar->widgetForAction(&action))
            return button->isVisible() ? onScreen(*button, button->rect()) : QRect();
    return {};
}

void addAction(QJsonArray& list, QAction& action) {
    QJsonObject entry = controlOf(action, action.text(), action.isEnabled());
    if (action.isCheckable())
        entry["checked"] = action.isChecked();
    bool shown = false;
    for (const QWidget* holder : action.associatedWidgets()) {
        const QRect place = placeOf(*holder, action);
        if (!place.isValid())
            continue;
        shown = true;
        QJsonObject there = entry;
        there["visible"] = true;
        there["rect"] = rectOf(place);
        list.append(there);
    }
    if (!shown)
        list.append(entry);
}

void addButton(QJsonArray& list, const QAbstractButton& button) {
    QJsonObject entry = controlOf(button, button.text(), button.isEnabled());
    if (button.isCheckable())
        entry["checked"] = button.isChecked();
    if (button.isVisible()) {
        entry["visible"] = true;
        entry["rect"] = rectOf(onScreen(button, button.rect()));
    }
    list.append(entry);
}

void addLabel(QJsonArray& list, const QLabel& label) {
    QJsonObject entry = controlOf(label, {}, label.isEnabled());
    entry["text"] = label.text();
    if (label.isVisible()) {
        entry["visible"] = true;
        entry["rect"] = rectOf(onScreen(label, label.rect()));
    }
    list.append(entry);
}

QTreeView* findTree(const QString& name) {
    QTreeView* found = nullptr;
    for (const QWidget* top : QApplication::topLevelWidgets())
        for (QTreeView* view : top->findChildren<QTreeView*>(name))
            if (!found || view->isVisible())
                found = view;
    return found;
}

/// One rectangle per column, null for hidden ones; empty for a row outside the view.
QJsonArray rectsOf(const QTreeView& view, const QModelIndex& row) {
    QJsonArray rects;
    bool any = false;
    for (int column = 0; column < view.model()->columnCount(row.parent()); ++column) {
        const QRect rect = view.visualRect(row.siblingAtColumn(column)) & view.viewport()->rect();
        const bool seen = !view.isColumnHidden(column) && rect.isValid();
        any = any || seen;
        rects.append(seen ? QJsonValue(rectOf(onScreen(*view.viewport(), rect))) : QJsonValue());
    }
    return any ? rects : QJsonArray();
}

} // namespace

QJsonObject windows() {
    QJsonArray list;
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (!window->isVisible())
            continue;
        QJsonObject entry = namesOf(*window);
        entry["title"] = window->windowTitle();
        entry["popup"] = window->windowType() == Qt::Popup;
        entry["active"] = window->isActiveWindow();
        entry["rect"] = rectOf(window->geometry());
        list.append(entry);
    }
    QJsonObject result{{"windows", list}};
    if (const QWidget* focus = QApplication::focusWidget()) {
        QJsonObject entry = namesOf(*focus);
        entry["rect"] = rectOf(onScreen(*focus, focus->rect()));
        result["focus"] = entry;
    }
    return result;
}

QJsonObject tree(const QString& name) {
    const QTreeView* view = findTree(name);
    if (!view)
        return {};
    QJsonArray columns;
    QJsonArray rows;
    if (const QAbstractItemModel* model = view->model()) {
        for (int column = 0; column < model->columnCount(); ++column)
            columns.append(model->headerData(column, Qt::Horizontal).toString());
        const QModelIndex current = view->currentIndex().siblingAtColumn(0);
        const std::function<void(const QModelIndex&, int)> walk = [&](const QModelIndex& parent,
                                                                      int depth) {
            for (int row = 0; row < model->rowCount(parent); ++row) {
                const QModelIndex index = model->index(row, 0, parent);
                QJsonArray cells;
                for (int column = 0; column < model->columnCount(parent); ++column)
                    cells.append(index.siblingAtColumn(column).data().toString());
                QJsonObject entry{{"depth", depth},
                                  {"cells", cells},
                                  {"expanded", view->isExpanded(index)},
                                  {"current", index == current},
                                  {"selected", view->selectionModel()->isSelected(index)}};
                const QJsonArray rects = view->isVisible() ? rectsOf(*view, index) : QJsonArray();
                if (!rects.isEmpty())
                    entry["rects"] = rects;
                rows.append(entry);
                walk(index, depth + 1);
            }
        };
        walk({}, 0);
    }
    QJsonObject result{{"columns", columns}, {"rows", rows}, {"focus", view->hasFocus()}};
    if (view->isVisible())
        result["rect"] = rectOf(onScreen(*view->viewport(), view->viewport()->rect()));
    return result;
}

QJsonObject controls(const QString& nameOrText) {
    QSet<QAction*> actions;
    QSet<QAbstractButton*> buttons;
    for (QWidget* top : QApplication::topLevelWidgets()) {
        for (QAction* action : top->actions() + top->findChildren<QAction*>())
            actions.insert(action);
        for (QAbstractButton* button : top->findChildren<QAbstractButton*>())
            buttons.insert(button);
    }
    QJsonArray list;
    for (QAction* action : qAsConst(actions))
        if (isMeant(*action, action->text(), nameOrText))
            addAction(list, *action);
    for (const QAbstractButton* button : qAsConst(buttons))
        if (isMeant(*button, button->text(), nameOrText))
            addButton(list, *button);
    for (const QWidget* top : QApplication::topLevelWidgets())
        for (const QLabel* label : top->findChildren<QLabel*>(nameOrText))
            addLabel(list, *label);
    return {{"controls", list}};
}

} // namespace orvo::app::report
