// OrvoMenu.h: the menu editor: the desktops, and for each desktop the tree of elements that a
// workstation offers.
//
// On the left the desktops and their folders (tvDesck), in the middle the menu of the current
// desktop (tvMenu), on the right the passport of the current element (tvProp). What a row shows
// comes from records; a change goes to the server, and tables and trees follow when its
// notification comes back.
//
// What it shares with every editor is in editor/EditorWindow.h. What is being edited is an object:
// an ElementEdit or a DesckEdit, of which one is open at most. The fields of the records stand
// once, in Fields. Subjects of their own are classes: OpenMenu (the elements of the open desktop),
// MenuClipboard, ElementOrder (move buttons and drops), ElementMoves (rows that come to another
// folder), NewElements (picker and palette), DesktopPreview; and DesckRows (rows of tvDesck from
// records).
//
// The window's sources are split by subject: OrvoMenu (start, tables, notifications' end),
// ViewSetup (the views), Actions (what is switched on when, context menus), Commands (keys),
// DesktopTree and Passports (filling), CurrentRow (what a move of the current row or the selection
// does), Notifications (what comes back from the server), Creating (new folders, the picker),
// Editing (save and cancel), DesktopOperations, Deletion, ModEdit (what the host asks of it),
// Diagnostics (the tables as text), Forwards (what hands on to those classes).
#ifndef ORVO_MENU_ORVOMENU_H
#define ORVO_MENU_ORVOMENU_H

#include "editor/EditorWindow.h"
#include "menu/DesckEdit.h"
#include "menu/DesktopPreview.h"
#include "menu/ElementEdit.h"
#include "menu/ElementMoves.h"
#include "menu/ElementOrder.h"
#include "menu/MenuClipboard.h"
#include "menu/NewElements.h"
#include "menu/OpenEdit.h"
#include "menu/OpenMenu.h"
#include "models/models.h"

#include <QAbstractItemDelegate>
#include <QMap>
#include <QPersistentModelIndex>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <memory>
#include <vector>

class QItemSelection;
class QMenu;
class QToolButton;
class QTreeView;
class Ui_OrvoMenu;

namespace orvo {
class Notification;
class ScratchTable;
class TreeSearchBar;
} // namespace orvo

class OrvoMenu : public orvo::editor::EditorWindow {
    Q_OBJECT
public:
    /// Builds the window; touches no server. `app` and its session must outlive the module.
    explicit OrvoMenu(COrvoCliApp* app);
    ~OrvoMenu() override;

    /// Fetches the tables, makes the models and shows the desktops. False, with a line in the log,
    /// if a table could not be fetched: the window then stays empty and has no models.
    bool ModuleStart() override;
    void ModuleStop() override;
    QString ModEditText() const override;
    bool ModEditSave() override;
    void ModEditCancel() override;
    QPair<QString, QString> ModEditRecord() const override;
    bool ModShowRecord(const QString& table, const QString& key, const QString& desktop) override;

    /// "preview": the host shows a preview, which follows this editor from then on.
    void slot_modNotify(QString name, QVariant value) override;

    /// The records that this editor holds of `MenuFolder`, `Menu` (the open desktop) or
    /// `MenuResource`, by key: a line of field names, then a line per record, values split by tabs,
    /// NULL as \\N. A null string for any other table.
    Q_INVOKABLE QString tableText(const QString& table) const;

    const CMDArray* resourceTable() const override { return &m_tabResource; }
    const CMDArray* resourceFolderTable() const override { return &m_tabResFolder; }

protected:
    QToolButton* m_btnNewDesck = nullptr; ///< these buttons are children of the window
    QToolButton* m_btnNewElem = nullptr;
    QMenu* m_menuNewDesck = nullptr; ///< pop-up and child of its button
    QMenu* m_menuNewElem = nullptr;
    CMDArray m_tabResource;  ///< `MenuResource`: 0 KeyLink, 1 name_
    CMDArray m_tabFolder;    ///< `MenuFolder`: 0 KeyLink, 1 order_;caption, 2
                             ///< order_;ParentKey;caption, 3 ParentKey;order_;caption
    CMDArray m_tabMenu;      ///< `Menu`, the current desktop only: 0 KeyLink, 1 parent;order_
    CMDArray m_tabResFolder; ///< `MenuResourceFolder`, with the keys it came with
    std::unique_ptr<DesckTreeModel> m_desckModel; ///< these are null until the start succeeded
    std::unique_ptr<MenuTreeModel> m_menuModel;
    std::unique_ptr<DesckDelegate> m_desckDelegate;
    orvo::editor::RecordFields m_elementFields; ///< of tvMenu
    orvo::editor::RecordFields m_desckFields;   ///< of tvDesck
    orvo::menu::OpenEdit m_openEdit;            ///< which of the two edits is open, if any
    orvo::menu::DesckEdit m_desckEdit{m_openEdit, m_desckFields};
    orvo::menu::ElementEdit m_elementEdit{m_openEdit, m_elementFields};
    // What is open, an orvo::menu::EditMode, and on which row: only the edits write these.
    const int32_t& m_editMode = m_openEdit.mode();
    const QPersistentModelIndex& m_editDesckIndex = m_desckEdit.index();
    const QPersistentModelIndex& m_editMenuIndex = m_elementEdit.index();
    const QString& m_editMenuKey = m_elementEdit.key();
    QString m_currentDesckKey; ///< key of the current row of tvDesck
    QString m_currentMenuKey;  ///< key of the current row of tvMenu
    orvo::menu::OpenMenu m_openMenu{*this,           m_tabMenu,   m_tabResource,
                                    m_elementFields, m_menuModel, m_currentDesckKey};
    orvo::menu::ElementMoves m_moves{m_openMenu};
    orvo::menu::ElementOrder m_order{*this, m_openMenu, m_elementEdit, m_currentMenuKey,
                                     m_focusKey};
    orvo::menu::MenuClipboard m_menuClipboard{*this, m_openMenu, m_clipboard};
    const bool& m_cutPending = m_menuClipboard.cutPending(); ///< the clipboard holds its cut
    orvo::menu::NewElements m_newElements{*this, m_openMenu, m_currentMenuKey,
                                          [this] { return finishEdit(); }};
    orvo::menu::DesktopPreview m_preview{*this, m_openMenu, m_elementEdit, m_desckModel,
                                         m_currentDesckKey};
    bool m_skipDesckChange = false;  ///< the next on_tvDesck_currentChanged only clears this
    QAction* m_actPreview = nullptr; ///< child of the window
    orvo::TreeSearchBar* m_desckSearch = nullptr; ///< children of the views; null until the start
    orvo::TreeSearchBar* m_menuSearch = nullptr;
    std::unique_ptr<Ui_OrvoMenu> m_ui;

    // Start and views
    bool loadTables();
    void setTreeArrangement();
    /// For a user who may not write: he looks, opens, copies, and nothing else.
    void setReadOnly();
    void setMenuFocusedItemAfterChanges();

    // Actions: nothing happens for an invalid index
    /// What makes an element of a resource of that kind; null for a kind that stands in no menu.
    QAction* creator(int kind) const;
    /// Those that make an element, as menus list them.
    QList<QAction*> elementCreators() const;
    void setMenuActionsEnabled(const QModelIndex& index);
    void setMenuActionsDisabled();
    void setDesckActionsEnabled(const QModelIndex& index);
    void setDesckActionsDisabled();
    /// Whether the clipboard offers that format.
    bool checkMimeType(const QString& format) const;

    void enableActions(QTreeView* pane) override;
    /// What the keys do here.
    void bindCommands();

    // Desktops. The loaders append below `parent`, by menu/DesckRows.h.
    void loadDesckTreeUpper();
    /// The sub-folders of a row with all that lies below them.
    void loadDesckFolder(const QModelIndex& parent);
    /// The desktops of a row.
    void loadDesckItems(const QModelIndex& parent);
    /// As orvo::menu::desckPosition; without a parent key at the top level.
    int32_t getDesckElementPosition(const QString& key, const QString& parentKey) const;
    /// Writes a record into an existing row, which is no new row afterwards, and moves it to that
    /// position among its siblings.
    void updateNewDesckNode(MDRData* record, int32_t position, const QModelIndex& row);
    /// Shows a record that has no row yet; nothing happens if its parent has none.
    void insertElementToDesckTree(MDRData* record);

    // Menu of a desktop, by m_openMenu
    void clearMenuModel();
    /// Fetches the elements of a desktop and shows them. If the fetch fails the last ones stay.
    void loadMenuTree(const QString& desckKey);
    /// The elements of the folder of that key, with all that lies below them.
    void loadMenuFolder(const QString& folderKey);
    /// Fills one row from a record of `Menu`.
    void loadMenuRow(const QModelIndex& parent, int row, MDRData* record);
    int32_t getMenuElementPosition(const QString& key, const QString& parentKey) const;
    int32_t getLastMenuOrder(const QString& parent) const;
    void loadFolderPassport(const QModelIndex& index);
    void loadItemPassport(const QModelIndex& index);

    // Editing
    /// Adds the record of an element's row, every field of it.
    void loadMenuRowToTable(const QModelIndex& index, orvo::ScratchTable& out, MdxRecordFlag flag);

    // Desktop operations. The paste functions add records for one row, or for a folder with all
    // below it; the null string as `name` keeps the old caption.
    void pasteDesckItemToDB(const QString& parent, const QString& source, const QString& name,
                            orvo::ScratchTable& elements, orvo::ScratchTable& desktops);
    void pasteDesckFolderToDB(const QString& parent, const QString& source, const QString& name,
                              orvo::ScratchTable& elements, orvo::ScratchTable& desktops);

    // Clipboard: what m_menuClipboard does. Unused; the published interface has these members.
    void copyMenuItemToClipboard(const QString& key, orvo::ScratchTable& copies);
    void copyMenuFolderToClipboard(const QString& key, orvo::ScratchTable& copies);
    void pasteMenuItemToDB(const QString& desck, const QString& parent, const QString& key,
                           const QString& caption, const CMDArray& source,
                           orvo::ScratchTable& target, const QMap<QString, QString>& keyMap);
    void pasteMenuFolderToDB(const QString& desck, const QString& parent, const QString& key,
                             const QString& caption, const CMDArray& source,
                             orvo::ScratchTable& target, const QMap<QString, QString>& keyMap);
    void deleteAfterCutFromMenu(const CMDArray& source, const QStringList& keys);
    void addMenuFolderToCut(const QString& key, const CMDArray& source, orvo::ScratchTable& target);

    // Deletion
    /// Adds the delete records of all that lies below an element, each folder before its contents.
    void deleteMenuFolder(const QString& key, orvo::ScratchTable& out);

protected slots:
    void on_focus_changed(QWidget* old, QWidget* now);
    void on_clipboardDataChanged() override;

    void showContextMenu_tvDesck(const QPoint& point);
    void showContextMenu_tvMenu(const QPoint& point);

    void on_tvDesck_currentChanged(const QModelIndex& current, const QModelIndex& previous);
    void on_tvDesck_clicked(const QModelIndex& index);
    void on_tvMenu_currentChanged(const QModelIndex& current, const QModelIndex& previous);
    void on_tvMenu_clicked(const QModelIndex& index);
    /// Keeps a multiple selection within one parent.
    void on_tvMenu_selectionChanged(const QItemSelection& selected,
                                    const QItemSelection& deselected);

    void on_Desck_NameChanged(const QString& text);
    void on_closeDesckeditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint);
    void on_menu_dragdrop(const QModelIndex& destindex, QStringList srcList, int option);
    void on_editor_valueChanged(const QString& rowName, const QVariant& value) override;
    void on_passp_buttonpressed(const QString& rowName) override;
    void on_passp_returnPressed(const QString& rowName);
    void on_save_pressed() override;
    void on_cancel_pressed() override;
    void on_poplist_OK_Pressed() override;

    void on_actNewElemModul_triggered();
    void on_actNewElemFunction_triggered();
    void on_actNewElemFile_triggered();
    void on_actNewElemFolder_triggered();
    void on_actDeleteElem_triggered();
    void on_actMoveUp_triggered();
    void on_actMoveDown_triggered();
    void on_actCopyMenuElement_triggered();
    void on_actCutMenuElement_triggered();
    void on_actPasteMenuElement_triggered();
    void on_actAddDescktop_triggered();
    void on_actAddFoldertvDesck_triggered();
    void on_actChangeDescktopOrFolder_triggered();
    void on_actDeleteFromtvDesck_triggered();
    void on_actCopyDescktopOrFolder_triggered();
    void on_actPasteDescktopOrFolder_triggered();

    void removeMenuMessage(QAbstractButton* button);
    void removeDesckTopMessage(QAbstractButton* button);

private:
    // Notifications
    void notificationsTaken() override;
    orvo::TreeSearchBar* searchBar() const override;
    /// What changes of the tables do.
    void followTables();
    void desckUpdated(const orvo::Notification& change);
    void desckInserted(const orvo::Notification& change);
    /// Writes the record into the row, puts it in its place and refreshes what depends on it.
    void showDesck(const orvo::Notification& change, MDRData* record, const QModelIndex& row);
    void elementUpdated(const orvo::Notification& change);
    /// The record of a row has changed: puts back what was typed, and tells what gave way.
    void mergeElement(const orvo::Notification& change, const MDRData* record,
                      const QModelIndex& row);
    void elementDeleted(const orvo::Notification& change);
    /// Switches off a move button whose neighbour has gone.
    void limitMoves();
    void elementInserted(const orvo::Notification& change);

    // Creating
    /// Enters the picker's choice. A folder of it is no resource: its choice is refused in a box.
    void takeChosenValue();

    // Editing
    /// Saves the open edit because the engineer turns to something else. An edit whose row is gone
    /// just ends. False if it stays open, because the server gave no structure to write in.
    bool finishEdit();
    void saveDesck();
    /// Closes the editors of names, on that row and on the current one.
    void closeDesckEditor(const QModelIndex& row);
    void saveElement(const QModelIndex& row, MdxRecordFlag flag);
    void cancelNewDesck();
    void cancelNewElement();
    void cancelDesckName();
    void cancelElement();

    // Desktop operations
    void addDesckRow(bool isFolder);
    /// Whether a folder of desktops is to stay, since there is something in it or the server does
    /// not answer; says the former in a box.
    bool refusesFullFolder(const QModelIndex& folder);

    // Passports
    void showMenuPassport(const QModelIndex& index);
    /// The passport of a row, as of one of that kind.
    void fillPassport(const QModelIndex& index, orvo::editor::Rows kind);
};

#endif
