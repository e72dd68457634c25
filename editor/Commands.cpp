#include "editor/Commands.h"

#include "frame/ContextMenuKey.h"
#include "frame/RowDelegate.h"

#include <QAction>
#include <QApplication>
#include <QHelpEvent>
#include <QToolBar>
#include <QToolButton>
#include <QToolTip>

#include <algorithm>

namespace orvo::editor {

namespace {

/// Those that a key held down goes on with.
bool repeats(const keys::Command& command) {
    const QLatin1String id(command.id);
    return id == QLatin1String(keys::moveUp) || id == QLatin1String(keys::moveDown);
}

/// Those whose keys the view would take for a step to another row, where nothing can be moved.
bool keepsItsKey(const keys::Command& command) {
    const QLatin1String id(command.id);
    return repeats(command) || id == QLatin1String(keys::moveIn) ||
           id == QLatin1String(keys::moveOut);
}

void addCommand(QAction& action, const keys::Command& command) {
    const QString before = action.property(commandProperty).toString();
    const QString id = QLatin1String(command.id);
    action.setProperty(commandProperty, before.isEmpty() ? id : before + QLatin1Char(' ') + id);
    // Shown only: the key is taken by the pane, in which the action may be off.
    action.setShortcutContext(Qt::WidgetShortcut);
    action.setShortcuts(action.shortcuts() + keys::sequences(command));
}

} // namespace

Commands::Commands(QMainWindow* window, Rules rules)
    : QObject(window)
    , m_window(window)
    , m_rules(std::move(rules)) {
    connect(qApp, &QApplication::focusChanged, this, [this](const QWidget*, QWidget* now) {
        for (const Binding& binding : m_bindings)
            if (binding.pane && (now == binding.pane || binding.pane->isAncestorOf(now)))
                m_current = binding.pane;
    });
}

void Commands::bind(const char* id, QTreeView* pane, QAction* action) {
    const keys::Command* command = keys::command(QLatin1String(id));
    Q_ASSERT(command && action);
    if (pane) {
        addCommand(*action, *command);
    } else {
        action->setProperty(commandProperty, QLatin1String(id));
        action->setProperty(menuProperty, int(command->menu));
        action->setProperty(placeProperty, int(command - keys::commands));
        action->setShortcuts(keys::sequences(*command));
    }
    add({command, pane, !pane, action, {}, {}, false});
}

void Commands::bind(const char* id, QTreeView* pane, QAction* shows, const Act& act, const May& may,
                    bool asIs) {
    const keys::Command* command = keys::command(QLatin1String(id));
    Q_ASSERT(command && pane);
    if (shows)
        addCommand(*shows, *command);
    add({command, pane, false, nullptr, act, may, asIs});
}

void Commands::add(Binding binding) {
    Q_ASSERT(std::none_of(m_bindings.begin(), m_bindings.end(), [&](const Binding& one) { // 1
        return one.command == binding.command &&
               (one.isGlobal ? binding.isGlobal : one.pane && one.pane == binding.pane);
    }));
    if (binding.pane)
        binding.pane->installEventFilter(this);
    if (!binding.isGlobal)
        entry(*binding.command);
    if (!m_current)
        m_current = binding.pane;
    m_bindings.push_back(std::move(binding));
}

QAction* Commands::entry(const keys::Command& command) {
    QAction*& entry = m_entries[&command];
    if (entry)
        return entry;
    entry = new QAction(keys::text(command), m_window);
    entry->setObjectName(QLatin1String("entry_") + QLatin1String(command.id));
    entry->setProperty(menuProperty, int(command.menu));
    entry->setProperty(placeProperty, int(&command - keys::commands));
    // Shown only, as above.
    entry->setShortcutContext(Qt::WidgetShortcut);
    entry->setShortcuts(keys::sequences(command));
    connect(entry, &QAction::triggered, this, [this, &command] {
        if (const Binding* binding = find(command, m_current)) {
            binding->pane->setFocus(Qt::ShortcutFocusReason);
            run(*binding);
        }
    });
    return entry;
}

const Commands::Binding* Commands::find(const keys::Command& command, const QTreeView* pane) const {
    for (const Binding& binding : m_bindings)
        if (binding.command == &command && binding.pane && binding.pane == pane)
            return &binding;
    return nullptr;
}

const Commands::Binding* Commands::find(const QTreeView* pane, const QKeyEvent& event) const {
    for (const Binding& binding : m_bindings)
        if (binding.pane && binding.pane == pane && keys::matches(event, *binding.command) &&
            (binding.action || keepsItsKey(*binding.command) || mayRun(binding)))
            return &binding;
    return nullptr;
}

bool Commands::mayRun(const Binding& binding) {
    return binding.action ? binding.action->isEnabled() : !binding.may || binding.may();
}

void Commands::run(const Binding& binding) {
    // The bindings stay; what they act on may go.
    const QPointer<QTreeView> pane = binding.pane;
    if (!binding.asIs && !m_rules.finishEdit())
        return;
    if (pane)
        m_rules.enable(pane);
    if (!mayRun(binding))
        return;
    if (binding.action)
        binding.action->trigger();
    else
        binding.act();
}

void Commands::refresh() {
    if (m_current)
        m_rules.enable(m_current);
    for (auto entry = m_entries.cbegin(); entry != m_entries.cend(); ++entry) {
        const Binding* binding = find(*entry.key(), m_current);
        // What an open edit keeps off is done when that has been saved.
        entry.value()->setEnabled(binding &&
                                  (mayRun(*binding) || (!binding->asIs && m_rules.isEditing())));
    }
}

// -------------------------------------------------------------------------------------------------
// Keys

bool Commands::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ToolTip)
        return showToolTip(watched, event);
    auto* pane = qobject_cast<QTreeView*>(watched);
    if (!pane)
        return false;
    if (asksForContextMenu(*event) && pane->contextMenuPolicy() == Qt::CustomContextMenu) {
        event->accept();
        if (event->type() != QEvent::ShortcutOverride) {
            m_rules.enable(pane);
            openContextMenu(*pane);
        }
        return true;
    }
    if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress)
        return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    const Binding* binding = find(pane, key);
    if (!binding)
        return false;
    event->accept();
    if (event->type() == QEvent::KeyPress && (!key.isAutoRepeat() || repeats(*binding->command)))
        run(*binding);
    return true;
}

// -------------------------------------------------------------------------------------------------
// Tool tips

void Commands::showKeysInToolTips() {
    for (const QToolBar* bar : m_window->findChildren<QToolBar*>())
        for (QToolButton* button : bar->findChildren<QToolButton*>())
            if (button->defaultAction())
                button->installEventFilter(this);
}

void Commands::addKeys(QWidget* widget, const QString& tip, const char* id) {
    if (const keys::Command* command = keys::command(QLatin1String(id)))
        widget->setToolTip(QStringLiteral("%1 (%2)").arg(tip, keys::shown(*command)));
}

bool Commands::showToolTip(QObject* button, QEvent* event) {
    auto* shown = qobject_cast<QToolButton*>(button);
    const QAction* action = shown ? shown->defaultAction() : nullptr;
    if (!action || action->shortcut().isEmpty())
        return false;
    QToolTip::showText(
        static_cast<QHelpEvent*>(event)->globalPos(),
        plainToolTip(QStringLiteral("%1 (%2)").arg(
            action->toolTip(), action->shortcut().toString(QKeySequence::NativeText))),
        shown);
    return true;
}

} // namespace orvo::editor
