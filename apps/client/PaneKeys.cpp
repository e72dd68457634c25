#include "apps/client/PaneKeys.h"

#include "frame/ContextMenuKey.h"
#include "frame/EscapeKey.h"
#include "frame/FirstRow.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
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

void onPaneKey(QWidget& pane, const char* command, const std::function<void()>& run) {
    for (const QKeySequence& keys : keys::sequences(*keys::command(QLatin1String(command)))) {
        auto* shortcut = new QShortcut(keys, &pane); // the pane's child
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        QObject::connect(shortcut, &QShortcut::activated, &pane, run);
    }
}

void addPaneKeys(QWidget& pane) {
    for (QAbstractItemView* view : pane.findChildren<QAbstractItemView*>())
        if (view->contextMenuPolicy() == Qt::CustomContextMenu) {
            new ContextMenuKey(view); // these: the view's children
            new FirstRow(view);
        }
    onPaneKey(pane, keys::save, [&pane] { saveBeside(pane); });
    QLineEdit* field = fieldOf(pane);
    if (!field)
        return;
    onPaneKey(pane, keys::find, [field = QPointer<QLineEdit>(field)] {
        if (!field)
            return;
        field->show(); // one that comes when it is wanted
        field->setFocus(Qt::ShortcutFocusReason);
        field->selectAll();
    });
    const bool isHidden = field->isHidden();
    new EscapeKey(field, [&pane, field, isHidden] { // the field's child
        field->clear();
        pane.setFocus(Qt::ShortcutFocusReason);
        field->setHidden(isHidden);
    });
}

} // namespace orvo::app
