// OrvoResources.h: the resource editor: the catalogue of what menu elements start, in folders by
// kind, with the files that the server's stores hold for it.
//
// On the left the tree of folders and resources (tvRes) in two areas, the menu's and the files', on
// the right the passport of the current row (tvProp). A change goes to the server, and tables and
// tree follow when its notification comes back.
//
// The sources are split by subject: OrvoResources (start, tables, notifications' end), ViewSetup
// (the views), Actions (what is switched on when, context menu), CurrentRow (what a move of the
// current row or the selection does), Tree (filling), Passports, Notifications
// (what comes back from the server), Extraction (paths, files to the disk, opening a form),
// Creating (new rows, edits of the passport, the icon picker), Saving (save and cancel), Upload,
// Deletion, ModEdit (what the host asks of it), Diagnostics (the tables as text), Forwards (what
// hands on to the classes below). What it shares with every editor is in editor/EditorWindow.h.
//
// Beside the window: ResourceEdit (the open edit), CatalogueRows (rows from records, places),
// ResourceNames (rows in words, names that are taken), DeletionChecks (what is looked up before a
// deletion), FolderMoves (cut, paste and drops), CatalogueSearch; Fields (columns and fields),
// Columns (what rows are).
#ifndef ORVO_RESOURCES_ORVORESOURCES_H
#define ORVO_RESOURCES_ORVORESOURCES_H

#include "editor/EditorWindow.h"
#include "frame/ScratchTable.h"
#include "models/models.h"
#include "resources/CatalogueRows.h"
#include "resources/CatalogueSearch.h"
#include "resources/DeletionChecks.h"
#include "resources/FolderMoves.h"
#include "resources/ResourceEdit.h"
#include "resources/ResourceNames.h"

#include <QList>
#include <QPersistentModelIndex>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class QComboBox;
class QItemSelection;
class QLabel;
class QLineEdit;
class QMenu;
class QToolButton;
class Ui_OrvoResources;

namespace orvo {
class Notification;
}

class OrvoResources : public orvo::editor::EditorWindow {
    Q_OBJECT
public:
    /// Builds the window; touches no server. `app` and its session must outlive the module.
    explicit OrvoResources(COrvoCliApp* app);
    ~OrvoResources() override;

    /// Fetches the tables, makes the models and shows the catalogue. False, with a line in the log,
    /// if a table could not be fetched: the window then stays empty and has no models.
    bool ModuleStart() override;
    void ModuleStop() override;
    QString ModEditText() const override;
    bool ModEditSave() override;
    void ModEditCancel() override;
    QPair<QString, QString> ModEditRecord() const override;
    bool ModShowRecord(const QString& table, const QString& key, const QString& desktop) override;
    bool ModHasRow(const QString& table, const QString& key) const override;

    /// The records that this editor holds of `MenuResource` or `MenuResourceFolder`, as
    /// orvo::tableText shows them. A null string for any other table.
    Q_INVOKABLE QString tableText(const QString& table) const;

    const CMDArray* resourceTable() const override { return &m_tabResource; }
    const CMDArray* resourceFolderTable() const override { return &m_tabResFolder; }

protected:
    using ResourceEdit = orvo::resources::ResourceEdit;
    static constexpr uint32_t Idle = ResourceEdit::Idle;
    static constexpr uint32_t NewRow = ResourceEdit::NewRow;
    static constexpr uint32_t EditRow = ResourceEdit::EditRow;

    /// What is being edited. There is one edit at a time; its state is written by it alone, and
    /// m_editState, m_editObject, m_editCaption, m_editKey and m_newItemIndex show it.
    ResourceEdit m_edit;

    QString m_userProp0; ///< what the server tells of the user first and second. Unused; the
    QString m_userProp1; ///< published interface has these members
    QString m_userLogin;
    const uint32_t& m_editState = m_edit.state();
    QToolButton* m_btnCreate = nullptr; ///< these widgets are children of the window
    QMenu* m_menuCreate = nullptr;      ///< pop-up and child of its button
    QLabel* m_lblSearch = nullptr;
    QLineEdit* m_edSearch = nullptr;
    QComboBox* m_cmbSearch = nullptr;
    QToolButton* m_btnSearchUp = nullptr;
    QToolButton* m_btnSearchDown = nullptr;
    // Rows of m_resModel read from the records of the first two.
    CMDArray m_tabResource;  ///< `MenuResource`: 0 KeyLink, 1 type_;MenuResourceFolderKey;name_, 2
                             ///< type_;name_, 3 MenuResourceFolderKey
    CMDArray m_tabResFolder; ///< `MenuResourceFolder`: 0 KeyLink, 1 type_;ParentKey;caption, 2
                             ///< type_;caption, 3 ParentKey
    CMDArray m_tabUsers;     ///< `Users`: 0 KeyLink, 1 login_
    CMDArray m_tabFileExt;   ///< `MenuFileExt`: 0 KeyLink
    CMDArray m_tabOrphans;   ///< forms whose folder did not exist at the start: 0 KeyLink
    std::unique_ptr<ResTreeModel> m_resModel;      ///< null until the start succeeded
    const QString& m_editObject = m_edit.object(); ///< of the open edit, as last typed
    const QString& m_editCaption = m_edit.caption();
    orvo::resources::CatalogueSearch m_search{*this};
    const std::unique_ptr<orvo::RowSearch>& m_searchHits = m_search.hits();
    const int32_t& m_searchPos = m_search.position();
    QString m_currentKey;                    ///< key of the current row of tvRes
    const QString& m_editKey = m_edit.key(); ///< key of the row that is edited
    const QPersistentModelIndex& m_newItemIndex = m_edit.newRow(); ///< invalid once it is gone
    bool m_focusCame = false; ///< a change of m_focusKey has come since it was set
    orvo::resources::CatalogueRows m_rows{*this,      m_tabResource, m_tabResFolder,
                                          m_tabUsers, m_userLogin,   m_resModel};
    orvo::resources::ResourceNames m_names{m_tabResource, m_tabResFolder, m_edit, m_resModel};
    orvo::resources::DeletionChecks m_checks{*this, m_names, m_tabResource, m_tabResFolder};
    orvo::resources::FolderMoves m_moves{{*this, m_names, m_edit, m_tabResource, m_tabResFolder,
                                          m_resModel, m_clipboard, m_focusKey, m_focusCame}};
    std::unique_ptr<QObject> m_passportUses; ///< while the passport tells where it is used
    std::unique_ptr<Ui_OrvoResources> m_ui;

    // Start and views
    bool loadTables();
    void setTreeArrangement();
    /// For a user who may not write: he looks, opens, takes files out, and nothing else.
    void setReadOnly();
    void setResFocusedItemAfterChanges();

    // Actions: nothing happens for an invalid index
    void setActionsDisabled();
    void setActionsEnabledMenuRes(const QModelIndex& index);
    void setActionsEnabledSystem(const QModelIndex& index);
    bool checkClipBoardType(int type) const;

    void enableActions(QTreeView* pane) override;
    /// What the keys do here.
    void bindCommands();
    /// Says by whom and how the lock of the current form is taken off; here it is not.
    void explainLock();
    /// The action that makes a resource of the current folder's kind; null where none may.
    QAction* creatorHere() const;

    // Tree, by m_rows. The loaders append below `parent`.
    void loadResTreeUpper();
    /// The sub-folders of a folder row with all that lies below them.
    void loadFolders(int type, QModelIndex parent);
    /// The resources of a folder row.
    void loadItems(int type, QModelIndex parent);
    /// The level below the row of the file area.
    void loadSysRootFolders(const QModelIndex& parent);
    void loadSysRootItems(const QModelIndex& parent);
    /// A folder is no new row afterwards, while a resource keeps what the column IsNew says.
    void loadResFolderRow(const QModelIndex& parent, int row, MDRData* rec);
    void loadResItemRow(const QModelIndex& parent, int row, MDRData* rec);
    int32_t getResFolderPosition(const QString& key, const QString& parentKey, int type) const;
    int32_t getResItemPosition(const QString& key, const QString& folderKey, int type) const;
    int getFolderCount(const QString& key) const;

    // Passports: nothing happens for an invalid index. Those of forms and files ask the server.
    void loadFolderPassport(const QModelIndex& index);
    void loadItemPassport(const QModelIndex& index);

    // Saving. The checks, by m_names, tell whether the name may be used for the row of `index`; if
    // not, `message` says why.
    bool checkResourceName(const QString& name, const QModelIndex& index, QString* message);
    bool checkResFolderName(const QString& caption, const QModelIndex& index, QString* message);
    /// Add the record of a row, every field of it.
    void loadResFolderToTable(const QModelIndex& index, orvo::ScratchTable& out,
                              MdxRecordFlag flag) const;
    void loadResourceToTable(const QModelIndex& index, orvo::ScratchTable& out,
                             MdxRecordFlag flag) const;

    // Paths in the stores: captions as the rows show them, joined by "/"
    /// Of the folder of a form, from level 2 down to it; empty at level 1.
    QString getFormPath(const QModelIndex& index) const;
    /// Of a row of the file area, from level 1 down to its folder; a folder's own caption too.
    QString getFilePath(const QModelIndex& index) const;

    // Upload. What cannot be read whole is named in the log and stays away.
    /// Puts a file into a folder of the file area.
    void loadFileToDB(const QString& file, const QString& path);
    /// Puts a form: all files beside the chosen one whose names begin with its name, less one "_"
    /// at its end. Gives the chosen file's name; empty text if it could not be opened.
    QString loadFormToDB(const QString& file, const QString& path);

    // Clipboard: what m_moves does. Unused; the published interface has these members.
    void copyResItemToClipboard(const QString& key, orvo::ScratchTable& resources) const;
    void copyResFolderToClipboard(const QString& key, orvo::ScratchTable& resources,
                                  orvo::ScratchTable& folders) const;

protected slots:
    void on_tvRes_currentChanged(const QModelIndex& current, const QModelIndex& previous);
    /// Keeps a multiple selection to rows of one parent, one kind, and all folders or none.
    void on_tvRes_selectionChanged(const QItemSelection& selected,
                                   const QItemSelection& deselected);
    void on_editor_valueChanged(const QString& rowName, const QVariant& value) override;
    void on_passp_buttonpressed(const QString& rowName) override;
    void on_poplist_OK_Pressed() override;
    void showContextMenu_tvRes(const QPoint& pos);

    void on_actAddModule_triggered();
    void on_actAddFunction_triggered();
    void on_actAddFolder_triggered();
    void on_actDelete_triggered();
    void on_actLoadFiles_triggered();
    /// Asks for a directory and writes the files of the selected forms or files into it.
    void on_actExtractFiles_triggered();
    void on_actCut_triggered();
    void on_actPaste_triggered();
    /// Has the host open the current form.
    void on_actOpenScheme_triggered();

    void on_save_pressed() override;
    void on_cancel_pressed() override;
    void on_res_dragdrop(const QModelIndex& destindex, QStringList srcList);
    void on_clipboardDataChanged() override;

    void on_search_up_pressed();
    void on_search_down_pressed();
    void on_search_textChanged(const QString& text);
    void on_searchCmb_indexChanged(int curIndex);

    void removeResourceMessage(QAbstractButton* button);

private:
    // Start
    bool fetchUser();
    void makeSearchBar();

    // Actions
    /// What makes a resource of that kind: by hand, or by the upload of its contents.
    QAction* creator(int kind) const;
    /// Those that make a row by hand, as menus list them.
    QList<QAction*> creators() const;
    /// Switches all actions off but these.
    void enableOnly(const QList<QAction*>& actions);
    /// What the rules allow on a row, whatever is switched on at the moment; nothing for rows of
    /// which they say nothing.
    std::optional<QList<QAction*>> menuActions(const QModelIndex& row) const;
    QList<QAction*> systemActions(const QModelIndex& row) const;
    /// Whether an action is allowed on a row. The switches tell of the row that was current when
    /// they were set: an action that acts judges its row anew.
    bool permits(QAction* action, const QModelIndex& row) const;

    // Passports
    void showPassport(const QModelIndex& index);
    void addPassportRows(const QModelIndex& index);
    /// Adds where the resource of the row is used, and keeps that as it is.
    void addUses(const QModelIndex& index);
    /// A category for each stored file of a tool's reply.
    void addFileRows(const CMDArray& files, const QString& timeFormat);

    // Creating and saving
    void addRow(QAction* action, const QString& caption);
    /// Saves the open edit because another one is to begin. An edit whose row is gone just ends.
    /// False if it stays open: its name is refused, or the server gave no structure.
    bool finishEdit();
    /// Saves the open edit if it is of a folder on the way to a row, before anything is done there:
    /// a name that was typed and not saved may lead to another folder. False as in finishEdit.
    bool finishEditOnPath(const QModelIndex& row);
    void endEdit();
    /// Saves the open edit. Gives the reason if its name may not be used, and then nothing happens.
    QString saveEdit();
    /// Why the edited row may not be saved; empty if it may.
    QString nameRefusal(const QModelIndex& row);
    void cancelEdit();

    // Deletion
    /// Makes what is highlighted and what is current the same thing, if they differ.
    void agreeOnSelection();
    void deleteFolder(const QModelIndex& folder);
    /// The names of what a question is about.
    QString questionDetails(const QModelIndex& current) const;
    /// Of the selected rows.
    void deleteForms();
    void deleteFiles();
    void showReferenceError(const QModelIndex& row);

    // Notifications
    void notificationsTaken() override;
    void openSearch() override;
    void stepToHit(int by) override;
    void searchByNext() override;
    /// What changes of the tables do.
    void followTables();
    enum MoveKind {
        AmongSiblings,
        ToAnotherParent, ///< of a resource
        WithSubtree,     ///< of a folder to another parent
    };
    /// Moves a row by calling `move`. A row moves as a copy: the edited row is taken along if it is
    /// that one or below it. The current row is, too, while an edit is open and among siblings;
    /// otherwise only if it stood below a folder.
    template <class Move>
    void moveRow(Move move, MoveKind kind);
    bool m_following = false; ///< the current row is made current again in its new place
    /// What was typed into the row of a change goes back into it; what somebody else has replaced
    /// is named in the log.
    void mergeEdit(const orvo::Notification& change, const MDRData* record, const QModelIndex& row);
    void folderUpdated(const orvo::Notification& change);
    void folderInserted(const orvo::Notification& change);
    void folderDeleted(const orvo::Notification& change);
    void resourceUpdated(const orvo::Notification& change);
    void resourceInserted(const orvo::Notification& change);
    void resourceDeleted(const orvo::Notification& change);
    /// Shows the row of that key anew, which is current. Without an edit it is made current once
    /// more; an edit is not to be left for that.
    void selectAgain(const QString& key);
};

#endif
