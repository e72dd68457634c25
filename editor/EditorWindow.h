// EditorWindow.h: what every editor's window has: the buttons that save and cancel the open edit,
// the passport of the current row with its icon picker, tables that are fetched at the start and
// followed by notifications, and the boxes that ask before something is deleted or say why
// something is not done. An editor derives from it and adds its subject: trees, records,
// operations.
//
// Life of a window, in this order:
// 1. The editor's constructor sets up its form, puts its own tool buttons and those of
//    makeEditButtons() into the tool bar. No server is touched.
// 2. ModuleStart() fetches the tables by fetch(), makes the models of the trees, then
//    arrangePassport() and, last, follow(). After a failed fetch nothing more is done.
// 3. MessageOn() takes the notifications that wait; MessageData() hands each to what follow() was
//    given for its table.
// 4. The editor's destructor calls destroyViews() first: its models die with it, before this base.
//
// Invariants; 1 and 3 are asserted in debug builds:
// 1. The models of the passport exist if, and only if, arrangePassport() was called.
// 2. Nothing is followed before the tables and models are there: after a failed start notifications
//    are taken and do nothing.
// 3. m_quiet is set while MessageOn() takes notifications, and at no other time.
#ifndef ORVO_EDITOR_EDITORWINDOW_H
#define ORVO_EDITOR_EDITORWINDOW_H

#include "editor/Commands.h"
#include "editor/PassportKeys.h"
#include "editor/RecordFields.h"
#include "editor/SelectionEdit.h"
#include "editor/TypedValues.h"
#include "frame/Launch.h"
#include "frame/WindowParts.h"
#include "models/Passport.h"
#include "models/models.h"
#include "picker/ObjectListOwner.h"

#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class CPopObjectList;
class QAbstractButton;
class QClipboard;
class QMenu;
class QTextCodec;
class QToolButton;
class QTreeView;

namespace orvo {
class Notification;
class QuietViews;
class ScratchTable;
class TreeSearchBar;
} // namespace orvo

namespace orvo::editor {

class EditorWindow : public COrvoCliMod, public ObjectListOwner {
    Q_OBJECT
public:
    ~EditorWindow() override;

    void MessageOn() override;
    /// Merges a notification into its table and then into the tree. Always true.
    bool MessageData(MDXCliParam* prm) override;

    /// "menus": the host is about to show the entries of this window in its menus.
    void slot_modNotify(QString name, QVariant value) override;

    // An editor that opens the picker gives it the catalogue.
    const CMDArray* resourceTable() const override { return nullptr; }
    const CMDArray* resourceFolderTable() const override { return nullptr; }

    // For the parts of an editor, which are classes of their own.

    /// Says in a box why something is not done. Returns at once.
    void refuse(const QString& reason);
    /// The picker, made when it is first asked for.
    CPopObjectList* picker();
    /// Whether a folder is chosen in a picker, where a resource is wanted; says so in a box.
    bool refusesChosenFolder(const CPopObjectList& list);

protected:
    explicit EditorWindow(COrvoCliApp* app);

    QTextCodec* m_codec; ///< "Windows-1251"; not owned. Unused; the published interface has this
                         ///< member
    QClipboard* m_clipboard;          ///< the application's, not owned
    QToolButton* m_btnSave = nullptr; ///< these buttons are children of the window
    QToolButton* m_btnCancel = nullptr;
    std::unique_ptr<PropModel> m_propModel; ///< these are null until the start succeeded
    std::unique_ptr<PasspDelegate> m_passpDelegate;
    CPopObjectList* m_popList = nullptr; ///< the picker, child of the window, made on first use
    QString m_popTarget;                 ///< passport row that opened the picker
    QString m_focusKey; ///< row to make current after the next notifications; null: none

    // ---------------------------------------------------------------------------------------------
    // The open edit

    /// The tool buttons that save and cancel it.
    void makeEditButtons();
    void enableEditButtons(bool enabled);

    /// Says in the log which typed values of a record gave way to another's; `what` names it.
    void tellReplaced(const QString& what, const RecordFields& fields,
                      const std::vector<Replaced>& replaced);

    // ---------------------------------------------------------------------------------------------
    // Keys and menus

    /// What keys and menu entries do; the editor binds its own.
    Commands& commands() { return *m_commands; }
    PassportKeys& passportKeys() { return *m_passportKeys; }
    /// Binds what every editor has: saving and dropping the open edit, and in the passport, which
    /// is arranged, its fields. `trees` are the panes beside it.
    void bindEditCommands(const std::vector<QTreeView*>& trees);
    /// The passport is that of several rows if several are selected in the tree: it tells where
    /// they differ, an edit is written to all of them, and a command writes the value that stands
    /// there. `own`: passport rows that an edit changes in the current record only; `singular`:
    /// those that the command leaves alone as well.
    void bindSelection(QTreeView* tree, std::function<SelectedRecords()> selected,
                       const QStringList& own, const QStringList& singular);
    /// The engineer types into a passport row. To be called for a change that is not made in it.
    void noteTyped(const QString& rowName);
    /// Adds what the open edit of that record writes to the other selected ones.
    void writeToSelected(ScratchTable& out, const QString& key, const QModelIndex& row);
    /// Binds in a pane what the host offers for records; `record`: the one of the current row.
    void bindRecord(QTreeView* pane, const std::function<RecordName()>& record);
    /// The same in the passport, which gets a context menu of it: the record that it is of.
    void bindPassportRecord(const std::function<RecordName()>& record);
    /// Switches the actions of a pane on as a click on its current row does.
    virtual void enableActions(QTreeView* /*pane*/) {}
    /// Shows a context menu. What it offers stays as it is while keys walk through it, although the
    /// focus is in the menu then.
    void execMenu(QMenu& menu, const QPoint& position);
    /// Names the passport and the tool bars for screen readers; the editor names its own trees.
    void nameForReaders(const QString& passport);
    /// An edit has ended: what the current rows permit is on again, without a click on them.
    void enableAfterEdit();

    // ---------------------------------------------------------------------------------------------
    // Tables

    /// Fetches a table's records at the start. False, with a line in the log under the name of that
    /// editor, if the server does not give them; null: this one.
    bool fetch(const char* table, CMDArray& records, const char* editor = nullptr);

    /// What a notification about a table's record does. An empty function: nothing.
    struct Followed {
        using Apply = std::function<void(const Notification& change)>;
        const char* table;
        Apply inserted;
        Apply updated;
        Apply deleted;
    };
    /// Follows these tables from now on, and no other. `views` show them: they follow a burst of
    /// notifications in one step.
    void follow(std::vector<Followed> tables, std::vector<QTreeView*> views);
    /// Scrolls a view to a row; while notifications are taken at their end, to the last row asked
    /// for.
    void showRow(QTreeView* view, const QModelIndex& row);
    /// Asks the server to delete the records of these keys of a table.
    void deleteRecords(const char* table, const QStringList& keys);

    // ---------------------------------------------------------------------------------------------
    // The passport

    /// Makes the models of the passport and shows them in that view.
    void arrangePassport(QTreeView* view);
    /// Fills the category "Свойства" from a row, by the fields that are shown on such rows;
    /// `adjust` may change each before it is added. Gives the category.
    using Adjust = std::function<void(const RecordField& field, PassportRow& shown)>;
    QModelIndex addPassport(const QModelIndex& row, const RecordFields& fields, Rows kind,
                            const Adjust& adjust = {});
    /// Shows the values of a row again in the passport that stands there, open editors included.
    void refreshPassport(const QModelIndex& row, const RecordFields& fields);

    /// The picker, ready to offer the icons.
    CPopObjectList* iconPicker();
    static bool isIconRow(const QString& rowName);
    /// Enters the icon that was chosen into the passport as the engineer's own edit does.
    void takeChosenIcon();

    // ---------------------------------------------------------------------------------------------
    // Boxes, which return at once.

    /// A question with Yes and No about records of a table; `below` are those that lie below them.
    /// The flow goes on in `slot`, a slot of the editor as SLOT() spells it, which takes the
    /// clicked button as QAbstractButton*.
    struct Question {
        QString text;
        const char* slot;
        const char* table;
        QStringList keys;
        QStringList below = {};
        QString details = {}; ///< what it is about, by name
    };
    void ask(const Question& question);
    /// Hides the box and tells whether the button was its Yes. False without a box.
    bool answeredYes(QAbstractButton* button);
    /// Says something in a box; nothing has gone wrong.
    void tell(const QString& title, const QString& text);
    /// Adds the places where records are used to the details of the box that stands, as soon as the
    /// host knows them, and as long as it stands.
    void nameUsesInBox(const char* table, const QStringList& keys, const QString& details);
    /// Has the host show where a record is used. False if it cannot.
    bool showUses(const char* table, const QString& key, bool takeFocus = true);
    /// Tells where records are used, now and when it changes, as long as what it returns lives;
    /// null if the host does not know.
    std::unique_ptr<QObject> watchUses(const char* table, const QStringList& keys,
                                       const std::function<void(const UsesAnswer&)>& tell);

    // ---------------------------------------------------------------------------------------------
    // The end

    /// Deletes the central widget with the views below it: what the selections tell while they go
    /// no longer reaches the window, and its models outlive their views.
    void destroyViews();

    /// The search field of the tree that has the focus, or of the window's main one; null: there is
    /// none.
    virtual TreeSearchBar* searchBar() const { return nullptr; }
    /// Ctrl+F: shows that search field.
    virtual void openSearch();
    /// F3 and Shift+F3: goes to the next hit of that search (1) or to the one before (-1).
    virtual void stepToHit(int by);
    /// Searches by another column from now on.
    virtual void searchByNext();

    /// All notifications that waited have been taken.
    virtual void notificationsTaken() {}

signals:
    /// The buttons that save and cancel were switched on or off: an edit is open, or none is.
    void editStateChanged();

protected slots:
    virtual void on_save_pressed() = 0;
    virtual void on_cancel_pressed() = 0;
    virtual void on_editor_valueChanged(const QString& rowName, const QVariant& value) = 0;
    virtual void on_passp_buttonpressed(const QString&) {}
    virtual void on_poplist_OK_Pressed() {}
    virtual void on_clipboardDataChanged() {}
    void on_common_error_message(QAbstractButton* button);

private:
    /// A text in the words of the editor's own class, which may have its own for it.
    QString translated(const char* text) const;
    void showBox(const QString& title, const QString& text, TMessageBoxIcon icon,
                 TMessageBoxType type, const char* slot, const QString& details = {});

    void bindApplyToAll(const QStringList& singular);
    /// Tells the passport which rows are selected now.
    void showSelected();

    std::vector<Followed> m_followed;
    std::vector<QTreeView*> m_views;
    QTreeView* m_passportView = nullptr;    ///< child of the window
    PassportKeys* m_passportKeys = nullptr; ///< the view's
    Commands* m_commands;                   ///< child of the window
    std::vector<QTreeView*> m_panes;        ///< that have actions: children of the window
    QTimer m_afterEdit;
    std::function<SelectedRecords()> m_selected; ///< empty: one row has a passport at a time
    std::unique_ptr<SelectionEdit> m_selectionEdit;
    QTimer m_showSelected;
    QuietViews* m_quiet = nullptr;      ///< not owned
    std::unique_ptr<QObject> m_boxUses; ///< while the box that stands is told of places
};

} // namespace orvo::editor

#endif
