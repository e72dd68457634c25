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
// once, in Fields.
//
// The sources are split by subject: OrvoMenu (start, tables, notifications' end), ViewSetup (the
// views), Actions (what is switched on when, context menus), DesktopTree, MenuTree and Passports
// (filling), CurrentRow (what a move of the current row or the selection does), Notifications (what
// comes back from the server), Creating (new elements, the picker), Editing (save and cancel),
// DesktopOperations, Clipboard, Ordering (move buttons and drops), Deletion,
// ModEdit (what the host asks of it), Preview (what the preview of a desktop follows), Diagnostics
// (the tables as text).
#ifndef ORVO_MENU_ORVOMENU_H
#define ORVO_MENU_ORVOMENU_H

#include "editor/EditorWindow.h"
#include "menu/DesckEdit.h"
#include "menu/ElementEdit.h"
#include "menu/OpenEdit.h"
#include "models/models.h"

#include <QAbstractItemDelegate>
#include <QMap>
#include <QPersistentModelIndex>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>
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
class RowWriter;
class ScratchTable;
class TreeSearchBar;
} // namespace orvo

namespace orvo::menu {
struct MenuPayload;
}

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
    QString m_openDesckKey;    ///< of the desktop whose elements m_tabMenu holds; null: the current
    QString m_currentDesckKey; ///< key of the current row of tvDesck
    QString m_currentMenuKey;  ///< key of the current row of tvMenu
    CPopObjectList* m_palette = nullptr; ///< child, made on first use; m_popList is another
    QString m_paletteTarget;   ///< the row of tvMenu that was current when the palette was entered
    bool m_cutPending = false; ///< the clipboard holds a cut of this editor
    QByteArray m_ownCut;       ///< the last cut, as long as nothing else has been offered since
    bool m_skipDesckChange = false;  ///< the next on_tvDesck_currentChanged only clears this
    QAction* m_actPreview = nullptr; ///< child of the window
    orvo::TreeSearchBar* m_desckSearch = nullptr; ///< children of the views; null until the start
    orvo::TreeSearchBar* m_menuSearch = nullptr;
    bool m_hasPreview = false; ///< the host was asked for one, and follows it as it likes
    QTimer m_previewTimer;     ///< what it follows has changed, and perhaps changes more
    std::unique_ptr<Ui_OrvoMenu> m_ui;

    // Start and views
    bool loadTables();
    void setTreeArrangement();
    /// For a user who may not write: he looks, opens, copies, and nothing else.
    void setReadOnly();
    void setMenuFocusedItemAfterChanges();

    // Actions: nothing happens for an invalid index
    /// Those that make an element, as menus list them.
    QList<QAction*> elementCreators() const;
    void setMenuActionsEnabled(const QModelIndex& index);
    void setMenuActionsDisabled();
    void setDesckActionsEnabled(const QModelIndex& index);
    void setDesckActionsDisabled();
    /// Shows the current desktop beside the editor as operators get it; the preview follows from
    /// then on.
    void showPreview();
    void updatePreview();
    void followForPreview();
    /// Whether the clipboard offers that format.
    bool checkMimeType(const QString& format) const;

    void enableActions(QTreeView* pane) override;
    /// What the keys do here.
    void bindCommands();

    // Desktops. The loaders append below `parent`; a folder that is its own ancestor is shown and
    // not entered again.
    void loadDesckTreeUpper();
    /// The sub-folders of a row with all that lies below them.
    void loadDesckFolder(const QModelIndex& parent);
    /// The desktops of a row.
    void loadDesckItems(const QModelIndex& parent);
    /// The place of a record among its siblings in table order, which is the row it must have. For
    /// a key that is not among them that of the last sibling; -1 if there is no sibling.
    int32_t getDesckElementPosition(const QString& key, const QString& parentKey) const;
    /// Writes a record into an existing row, which is no new row afterwards, and moves it to that
    /// position among its siblings.
    void updateNewDesckNode(MDRData* record, int32_t position, const QModelIndex& row);
    /// Shows a record that has no row yet; nothing happens if its parent has none.
    void insertElementToDesckTree(MDRData* record);

    // Menu of a desktop
    void clearMenuModel();
    /// Fetches the elements of a desktop and shows them. If the fetch fails the last ones stay.
    void loadMenuTree(const QString& desckKey);
    /// The elements of the folder of that key, with all that lies below them.
    void loadMenuFolder(const QString& folderKey);
    /// Fills one row from a record of `Menu`.
    void loadMenuRow(const QModelIndex& parent, int row, MDRData* record);
    /// As getDesckElementPosition, for elements.
    int32_t getMenuElementPosition(const QString& key, const QString& parentKey) const;
    /// The `order_` of the last child of a row of the open desktop; the null string is the top of
    /// the menu. 0 without children.
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

    // Clipboard. A caption that is not the null string marks a chosen element, to be placed under
    // `parent`; the null string one that comes with its folder and keeps its relative place.
    // `keyMap`: old keys of the packed table to new ones.
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
    void openSearch() override;
    void stepToHit(int by) override;
    void searchByNext() override;
    /// Of the tree that has the focus; of the menu if none has it.
    orvo::TreeSearchBar* searchBar() const;
    /// What changes of the tables do.
    void followTables();
    /// The row of an element, the root row for its key; invalid for an empty key.
    QModelIndex elementRow(const QString& key) const;
    /// The row of a record; invalid for the keys of the root rows, which stand for none.
    QModelIndex recordRow(const QString& key) const;
    QModelIndex desckRow(const QString& key) const;
    /// The picker lists by the folders of resources; no tree shows them.
    void forgetResourceFolder(const orvo::Notification& change);
    void desckUpdated(const orvo::Notification& change);
    void desckDeleted(const orvo::Notification& change);
    void desckInserted(const orvo::Notification& change);
    /// Writes the record into the row, puts it in its place and refreshes what depends on it.
    void showDesck(const orvo::Notification& change, MDRData* record, const QModelIndex& row);
    void elementUpdated(const orvo::Notification& change);
    /// The record of a row has changed: puts back what was typed, and tells what gave way.
    void mergeElement(const orvo::Notification& change, const MDRData* record,
                      const QModelIndex& row);
    void elementDeleted(const orvo::Notification& change);
    bool m_movesRows = false; ///< the current row changes by a move of rows, not by the engineer
    /// The elements that the table has in a folder whose row is new: those that waited for it
    /// elsewhere come to it, and those that had no row get one.
    void gatherChildren(const QString& key);
    /// Moves a row with what lies below it; a current row among that stays current.
    void moveElement(const QModelIndex& row, int32_t position, const QModelIndex& target);
    /// Switches off a move button whose neighbour has gone.
    void limitMoves();
    void elementInserted(const orvo::Notification& change);

    // Creating
    void chooseNewElements(int32_t kind);
    void addChosenElements(CPopObjectList& list);
    /// Opens the palette beside the menu, or closes it; while it is open new elements are chosen
    /// in it.
    void showPalette();
    struct Picked {
        QString key; ///< of the resource
        QString caption;
    };
    /// New last elements of a folder, or of that in which the row stands. False if there are none.
    bool addElements(QModelIndex target, std::vector<Picked> picked);
    /// Takes out what others have deleted since the picker was filled, and says so in a box.
    void refuseDeleted(std::vector<Picked>& picked);
    QSet<QString> m_deletedResources; ///< folded keys; m_tabResource goes on having their records
    /// Resources dragged out of the picker become elements where they are dropped.
    bool eventFilter(QObject* watched, QEvent* event) override;
    const QObject* m_menuViewport = nullptr; ///< of tvMenu
    /// Enters the picker's choice. A folder of it is no resource: its choice is refused in a box.
    void takeChosenValue();

    // Editing
    /// Saves the open edit because the engineer turns to something else. An edit whose row is gone
    /// just ends. False if it stays open, because the server gave no structure to write in.
    bool finishEdit();
    void saveDesck();
    /// Shows the passport of the current row anew, without what was just typed into it.
    void refuseTyping(const QModelIndex& row);
    /// Closes the editors of names, on that row and on the current one.
    void closeDesckEditor(const QModelIndex& row);
    void saveElement(const QModelIndex& row, MdxRecordFlag flag);
    void cancelNewDesck();
    void cancelNewElement();
    void cancelDesckName();
    void cancelElement();

    // Desktop operations
    void addDesckRow(bool isFolder);
    /// The record of a pasted row; gives its new key.
    QString pasteDesckRow(const QString& parent, const MDRData* source, const QString& name,
                          const char* orderClass, orvo::ScratchTable& desktops);

    // Clipboard and order
    void putOnClipboard(int mode);
    /// Whether the last cut is still what a paste takes, though the clipboard is empty.
    bool ownCutIsGood() const;
    /// The payload that a paste of elements would take.
    QByteArray menuClipboard() const;
    /// Whether a row is, or lies below, what was cut; says so in a box.
    bool refusesCutInto(const QModelIndex& target, const orvo::menu::MenuPayload& payload);
    /// Whether others have changed what was cut, or put something into it; says so in a box.
    bool refusesOldCut(const orvo::menu::MenuPayload& payload);
    bool isChanged(const MDRData* cut, const MDRData* stored, bool isChosen) const;
    bool stillStored(const CMDArray& records);
    /// The fields that are copied so on such rows.
    void copyFields(orvo::RowWriter& row, const MDRData* source, orvo::editor::Copied how,
                    orvo::editor::Rows kind) const;
    void pasteMenuFolderRow(const QString& desck, const QString& parent, const QString& key,
                            const QString& caption, const MDRData* record,
                            orvo::ScratchTable& target, const QMap<QString, QString>& keyMap);
    void swapWithNeighbour(int step);
    /// Into the folder that stands above the current element, and out of the one it is in.
    void moveIntoFolder();
    void moveOutOfFolder();
    bool mayMoveIn() const;
    bool mayMoveOut() const;
    /// Adds orders that differ for a row and its siblings, as if the row stood at that place.
    void renumber(const QModelIndex& moved, int place, orvo::ScratchTable& out);
    orvo::RowWriter addOrder(orvo::ScratchTable& out, const QString& key, int order);
    /// The same with another parent, empty for the top of the menu.
    void addPlace(orvo::ScratchTable& out, const QString& key, int order, const QString& parent);
    void dropIntoFolder(const QModelIndex& folder, const QStringList& keys,
                        orvo::ScratchTable& moved);
    void dropAmongSiblings(const QModelIndex& source, int position, orvo::ScratchTable& moved);
    void dropBehindRow(const QModelIndex& source, const QModelIndex& destination, int position,
                       orvo::ScratchTable& moved, orvo::ScratchTable& shifted);

    /// The elements of a desktop from the server, the caller's; null if it does not answer.
    MDArray* requestMenu(const QString& desckKey) const;
    /// The desktop whose elements m_tabMenu holds: the current one, as long as its elements came
    /// when it was made current and no new element kept the menu of another.
    QString openDesckKey() const;
    /// Whether a folder of desktops is to stay, since there is something in it or the server does
    /// not answer; says the former in a box.
    bool refusesFullFolder(const QModelIndex& folder);

    /// Rows for the sub-folders or the desktops of `parentKey`, below `parent` or at the top of the
    /// batch; gives the new rows.
    std::vector<TabRec*> addDesckRows(DesckTreeModel::Batch& rows, TabRec* parent,
                                      const QString& parentKey, bool folders) const;
    /// All that lies below a folder of the batch.
    void addDesckFolder(DesckTreeModel::Batch& rows, TabRec* folder) const;
    int32_t desckPosition(const QString& key, const QString& parentKey, bool atTopLevel) const;

    /// The columns of an element; invalid where a row keeps what it has.
    QVector<QVariant> menuValues(const MDRData* record) const;
    struct MenuFolderRow {
        TabRec* row; ///< null: the row that the batch will hang below
        QString key;
    };
    /// Rows for the elements of a folder, from that position of key 1 on; gives the folders among
    /// them.
    std::vector<MenuFolderRow> addMenuRows(MenuTreeModel::Batch& rows, const MenuFolderRow& folder,
                                           int32_t position) const;
    /// The same with all that lies below them, as the content of the row `parent`.
    void addMenuTree(const QModelIndex& parent, const QString& key, int32_t position);
    void showMenuPassport(const QModelIndex& index);
    /// The passport of a row, as of one of that kind.
    void fillPassport(const QModelIndex& index, orvo::editor::Rows kind);
};

#endif
