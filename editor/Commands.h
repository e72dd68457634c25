// Commands.h: what the keyboard does in the panes of an editor, and the entries of the client's
// menus that do the same. Keys, texts and menus are those of frame/Keys.h.
//
// A pane is a view; a command may be bound in several, and means there what it was bound to. Its
// keys act while the view itself has the focus: in an editor of a cell they edit. The menus' entry
// acts on the pane that had the focus last.
//
// An action that is switched off since its view lost the focus is no refusal: before a command acts
// the open edit is saved, as when another row is made current, and the actions are switched on as
// by a click on the current row.
//
// Invariants; 1 is asserted in debug builds:
// 1. Each command of the list has at most one binding in a pane, and one entry in all.
// 2. A pane that is deleted takes its bindings out of use; they are found by QPointer.
#ifndef ORVO_EDITOR_COMMANDS_H
#define ORVO_EDITOR_COMMANDS_H

#include "frame/Keys.h"

#include <QMainWindow>
#include <QMap>
#include <QPointer>
#include <QTreeView>

#include <functional>
#include <vector>

class QAction;
class QKeyEvent;

namespace orvo::editor {

/// A menu entry for the client has this property: the number of its menu, a keys::Menu.
inline constexpr char menuProperty[] = "orvoMenu";
/// And this one: its place among the others.
inline constexpr char placeProperty[] = "orvoPlace";
/// An action that a command triggers has this one: the ids of the commands, split by blanks.
using keys::commandProperty;

class Commands : public QObject {
    Q_OBJECT
public:
    using Act = std::function<void()>;
    using May = std::function<bool()>;
    struct Rules {
        std::function<bool()> isEditing;
        /// Switches the actions of a pane on as a click on its current row does.
        std::function<void(QTreeView* pane)> enable;
        /// Saves the open edit. False if it stays open.
        std::function<bool()> finishEdit;
    };

    /// `window` owns it and the menu entries.
    Commands(QMainWindow* window, Rules rules);

    /// In this pane the command triggers the action, if it is on then; null: in the whole window,
    /// by a shortcut of the action.
    void bind(const char* id, QTreeView* pane, QAction* action);
    /// In this pane the command is `act`; `may`: whether it can be done now. `asIs`: an open edit
    /// is not saved before. `shows`: the action at which the keys are shown, or null.
    void bind(const char* id, QTreeView* pane, QAction* shows, const Act& act, const May& may = {},
              bool asIs = false);
    /// Shows the keys in the tool tips of the window's tool bars.
    void showKeysInToolTips();
    /// Adds the keys of a command to a tool tip of a widget.
    static void addKeys(QWidget* widget, const QString& tip, const char* id);

    /// Switches the menu entries on and off, as is right for the pane that had the focus last.
    void refresh();
    QTreeView* currentPane() const { return m_current; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Binding {
        const keys::Command* command;
        QPointer<QTreeView> pane; ///< null: the whole window
        bool isGlobal;
        QPointer<QAction> action; ///< or
        Act act;
        May may;
        bool asIs;
    };
    void add(Binding binding);
    QAction* entry(const keys::Command& command);
    const Binding* find(const keys::Command& command, const QTreeView* pane) const;
    const Binding* find(const QTreeView* pane, const QKeyEvent& event) const;
    static bool mayRun(const Binding& binding);
    void run(const Binding& binding);
    bool showToolTip(QObject* button, QEvent* event);

    QMainWindow* const m_window;
    const Rules m_rules;
    std::vector<Binding> m_bindings;
    QMap<const keys::Command*, QAction*> m_entries; ///< children of the window
    QPointer<QTreeView> m_current;
};

} // namespace orvo::editor

#endif
