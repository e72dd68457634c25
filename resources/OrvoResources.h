// OrvoResources.h: the resource editor: the catalogue of what menu elements start, in folders by
// kind, with the files that the server's stores hold for it.
//
// On the left the tree of folders and resources (tvRes) in two areas, the menu's and the files', on
// the right the passport of the current row (tvProp). A change goes to the server, and tables and
// tree follow when its notification comes back.
//
// The sources are split by subject: OrvoResources (start, tables, notifications' end), ViewSetup
// (the views), Actions (what is switched on when, context menu), CurrentRow (what a move of the
// current row or the selection does), Tree (filling, rows, positions), Passports, Notifications
// (what comes back from the server), Extraction (paths, files to the disk, opening a form),
// Creating (new rows, edits of the passport, the icon picker), Saving (save and cancel), Upload,
// Deletion, Search, Clipboard (cut, paste and drops), ModEdit (what the host asks of it),
// Diagnostics (the tables as text). What it shares with every editor is in editor/EditorWindow.h;
// beside the window: ResourceEdit (the open edit), Fields (columns and fields), Columns (what rows
// are).
#ifndef ORVO_RESOURCES_ORVORESOURCES_H
#define ORVO_RESOURCES_ORVORESOURCES_H

#include "editor/EditorWindow.h"
#include "frame/ScratchTable.h"
#include "models/RowSearch.h"
#include "models/TreeSearchBar.h"
#include "models/models.h"
#include "resources/ResourceEdit.h"

#include <QList>
#include <QPersistentModelIndex>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

class QComboBox;
class QItemSelection;
class QLabel;
class QKeyEvent;
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
    std::unique_ptr<orvo::RowSearch> m_searchHits; ///< in m_resModel, and null as long as it is
    int32_t m_searchPos = 0;                       ///< may stand one place past either end
    orvo::TreeSearchBar* m_treeSearch = nullptr;   ///< child of tvRes; while the tool bar has no
                                                   ///< room for its field
    QString m_currentKey;                          ///< key of the current row of tvRes
    const QString& m_editKey = m_edit.key();       ///< key of the row that is edited
    const QPersistentModelIndex& m_newItemIndex = m_edit.newRow(); ///< invalid once it is gone
    std::unique_ptr<QObject> m_passportUses; ///< while the passport tells where it is used
    std::unique_ptr<Ui_OrvoResources> m_ui;

    // Start and views
    bool loadTables();
    void setTreeArrangement();
    /// For a user who may not write: he looks, opens, takes files out, and nothing else.
    void setReadOnly();
    void setResFocusedItemAfterChanges();
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    /// The search field and its choice in colours that suit the palette and what was found.
    void colourSearch();
    void colourSearchChoice();

    // Actions: nothing happens for an invalid index
    void setActionsDisabled();
    void setActionsEnabledMenuRes(const QModelIndex& index);
    void setActionsEnabledSystem(const QModelIndex& index);
    /// Whether the clipboard holds rows of that kind, cut by a resource editor.
    bool checkClipBoardType(int type) const;

    void enableActions(QTreeView* pane) override;
    /// What the keys do here.
    void bindCommands();
    /// Says by whom and how the lock of the current form is taken off; here it is not.
    void explainLock();
    /// The action that makes a resource of the current folder's kind; null where none may.
    QAction* creatorHere() const;

    // Tree. The loaders append below `parent`; a folder that is its own ancestor is shown and not
    // entered again.
    void loadResTreeUpper();
    /// The sub-folders of a folder row with all that lies below them.
    void loadFolders(int type, QModelIndex parent);
    /// The resources of a folder row.
    void loadItems(int type, QModelIndex parent);
    /// The level below the row of the file area.
    void loadSysRootFolders(const QModelIndex& parent);
    void loadSysRootItems(const QModelIndex& parent);
    /// Write a record into an existing row. A folder is no new row afterwards, while a resource
    /// keeps what the column IsNew says. What a record does not tell of a lock stays as it was.
    void loadResFolderRow(const QModelIndex& parent, int row, MDRData* rec);
    void loadResItemRow(const QModelIndex& parent, int row, MDRData* rec);
    /// The place of a folder among its sibling folders in table order; -1 if it is not among them.
    int32_t getResFolderPosition(const QString& key, const QString& parentKey, int type) const;
    /// The place of a resource among its sibling resources, behind getFolderCount rows.
    int32_t getResItemPosition(const QString& key, const QString& folderKey, int type) const;
    /// How many folders stand before the resources of a row; the empty key is the top of the file
    /// area.
    int getFolderCount(const QString& key) const;

    // Passports: nothing happens for an invalid index. Those of forms and files ask the server.
    void loadFolderPassport(const QModelIndex& index);
    void loadItemPassport(const QModelIndex& index);

    // Saving. The checks tell whether the name may be used for the row of `index`; if not,
    // `message` says why.
    /// Unique among the resources of its kind, in whatever folder.
    bool checkResourceName(const QString& name, const QModelIndex& index, QString* message);
    /// Unique among the folders of its parent, the folder itself included.
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

    // Clipboard: copies of the records of a resource, and of a folder with all below it
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
    /// Copies the forms whose folder does not exist.
    void findOrphans();
    void makeSearchBar();

    // Actions
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

    // Tree
    /// Rows for the folders or the resources of a folder, below `parent` or at the top of the
    /// batch; addFolderRows gives the new rows.
    std::vector<TabRec*> addFolderRows(ResTreeModel::Batch& rows, TabRec* parent, int type,
                                       const QString& parentKey) const;
    void addItemRows(ResTreeModel::Batch& rows, TabRec* parent, int type,
                     const QString& folderKey) const;
    /// The folders of that parent key with all below them, as rows below `parent`. False if there
    /// are none.
    bool appendFolders(int type, const QString& parentKey, const QModelIndex& parent);
    void appendItems(int type, const QString& folderKey, const QModelIndex& parent);
    void appendOrphans(const QModelIndex& parent);
    /// A row without a record.
    QModelIndex addFixedRow(const QModelIndex& parent, const char* key, const QString& caption,
                            int type);
    /// The fields behind a row.
    const orvo::editor::RecordFields& fieldsOf(const QModelIndex& row) const;
    /// What was cut here and has been deleted since, in words.
    QStringList namesGoneSinceCut() const;
    /// A row in words: what it is, its caption, and the resource if that is another word.
    QString describe(const QModelIndex& row) const;
    /// Keys by which the records of a folder name it; the top of the file area has two.
    QStringList folderLinks(const QString& folderKey, int type) const;
    /// Whether a sub-folder with another key has that caption: among the rows below a folder, and
    /// among the records with one of these links.
    bool hasFolderRow(const QModelIndex& parent, const QString& caption,
                      const QString& exceptKey) const;
    bool hasFolderRecord(const QStringList& links, const QString& caption,
                         const QString& exceptKey) const;
    /// Whether a folder of the file area has another sub-folder or file of that name. Folders are
    /// told apart without regard to case, files by every letter.
    bool hasNamesake(const QModelIndex& folder, bool isFolder, const QString& name,
                     const QString& exceptKey) const;
    /// The columns of a resource's row; invalid where the row keeps what it has.
    QVector<QVariant> itemValues(const MDRData* record) const;
    /// Whether the row may show more than its record, from the table of users.
    static bool mayBeLocked(const MDRData* record);
    /// A row for a batch. Most rows read their values from the record.
    void addItemRow(ResTreeModel::Batch& rows, const MDRData* record, TabRec* parent) const;
    /// To be called before the record of a notification changes or goes: rows that read from it
    /// keep what they show.
    void keepFolderRows(const orvo::Notification& change);
    void keepItemRows(const orvo::Notification& change);
    void addLock(const MDRData* record, QVector<QVariant>& values) const;
    /// The row of a folder key; the empty key is the top of the file area.
    QModelIndex folderRow(const QString& key) const;

    // Passports
    void showPassport(const QModelIndex& index);
    void addPassportRows(const QModelIndex& index);
    /// Adds where the resource of the row is used, and keeps that as it is.
    void addUses(const QModelIndex& index);
    /// A category for each stored file of a tool's reply.
    void addFileRows(const CMDArray& files, const QString& timeFormat);
    /// A time of the server, in local time; a null string for NULL.
    QString timeText(const MDRData* record, MDRField field, const QString& format) const;

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
    /// Whether a folder is empty by the rows, by the tables and by the server, which knows what
    /// others have put there.
    bool isEmptyFolder(const QModelIndex& folder);
    bool hasRecords(const char* table, int keyNumber, const QString& key);
    /// What the server has of a table by one of its keys.
    void lookUp(const char* table, int keyNumber, const QString& key,
                const std::function<void(const CMDArray& found)>& use);
    /// The names of what a question is about.
    QString questionDetails(const QModelIndex& current) const;
    /// Whether another record bears the name by which the tools would find that one.
    bool isAmbiguous(const QModelIndex& row) const;
    /// Of the selected rows.
    void deleteForms();
    void deleteFiles();
    /// Whether elements of any menu start that resource; asks the server. The log names them.
    bool isInMenus(const QModelIndex& row);
    void showReferenceError(const QModelIndex& row);

    // Upload
    /// The name filter of the dialog that asks for forms.
    QString formFilter() const;
    /// Asks the server to have the forms of those names in that folder. A form without a record yet
    /// stands there already, where the upload put it.
    void moveForms(const QStringList& names, const QString& folderKey);
    void logUnread(const char* place, const QString& file, const QString& reason);

    // Search
    orvo::TreeSearch treeSearch();
    /// Goes to the next hit in a direction, which one button stands for and the other against.
    bool searchKey(const QKeyEvent& event);
    void stepSearch(int step, QToolButton* forth, QToolButton* back);

    // Moving rows
    /// How the link to a folder is written, which tells by what the empty key goes out.
    using LinkWriter = orvo::RowWriter& (orvo::RowWriter::*)(const char* field, const QString& key);
    /// Asks the server to have the rows in that folder, each once; keys without a row are passed
    /// over. The last one gets the focus when it has moved.
    void sendToFolder(const QStringList& keys, const QString& folder, LinkWriter writeLink);
    /// Why a row may not go into a folder; empty if it may.
    QString moveRefusal(const QModelIndex& row, const QModelIndex& target) const;
    /// The same of several rows: the first reason.
    QString moveRefusal(const QStringList& keys, const QModelIndex& target) const;
    /// Whether it is a folder that the records of a kind hang on, at the top of the menu area.
    bool isTopFolder(const QModelIndex& row) const;

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
    QByteArray m_cutBytes;    ///< what was cut here last, as it went to the clipboard
    std::vector<std::pair<QString, QString>> m_cutNames; ///< its keys, and what they name
    bool m_focusCame = false; ///< a change of m_focusKey has come since it was set
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
