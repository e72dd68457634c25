#include "apps/client/PaneKeys.h"

#include "frame/ContextMenuKey.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QShortcut>

namespace orvo::app {

namespace {

/// The pane's own field, none that is part of another; null if it has none.
QLineEdit* fieldOf(const QWidget& pane) {
    for (QLineEdit* field : pane.findChildren<QLineEdit*>())
        if (!qobject_cast<QComboBox*>(field->parentWidget()) &&
            !qobject_cast<QAbstractSpinBox*>(field->parentWidget()))
            return field;
    return nullptr;
}

/// Whoever works through a list goes to the editor and back: the edit is still open.
void saveBeside(const QWidget& pane) {
    const QWidget* window = &pane;
    while (window->parentWidget()) // a pane that was taken out is a window of its own
        window = window->parentWidget();
    for (QAction* save : window->findChildren<QAction*>(QStringLiteral("saveEdit")))
        if (const auto* editor = qobject_cast<const QWidget*>(save->parent());
            editor && editor->isVisible())
            save->trigger();
}

} // namespace

void addPaneKeys(QWidget& pane) {
    for (QAbstractItemView* view : pane.findChildren<QAbstractItemView*>())
        if (view->contextMenuPolicy() == Qt::CustomContextMenu)
            new ContextMenuKey(view); // the view's child
    for (const QKeySequence& keys : keys::sequences(*keys::command(QLatin1String(keys::save)))) {
        auto* save = new QShortcut(keys, &pane); // the pane's child
        save->setContext(Qt::WidgetWithChildrenShortcut);
        QObject::connect(save, &QShortcut::activated, &pane, [&pane] { saveBeside(pane); });
    }
    QLineEdit* field = fieldOf(pane);
    if (!field)
        return;
    for (const QKeySequence& keys : keys::sequences(*keys::command(QLatin1String(keys::find)))) {
        auto* find = new QShortcut(keys, &pane); // the pane's child
        find->setContext(Qt::WidgetWithChildrenShortcut);
        QObject::connect(find, &QShortcut::activated, field, [field] {
            field->setFocus(Qt::ShortcutFocusReason);
            field->selectAll();
        });
    }
}

} // namespace orvo::app
