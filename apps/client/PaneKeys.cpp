#include "apps/client/PaneKeys.h"

#include "frame/ContextMenuKey.h"

#include <QAbstractSpinBox>
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

} // namespace

void addPaneKeys(QWidget& pane) {
    for (QAbstractItemView* view : pane.findChildren<QAbstractItemView*>())
        if (view->contextMenuPolicy() == Qt::CustomContextMenu)
            new ContextMenuKey(view); // the view's child
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
