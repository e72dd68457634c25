// PopObjectList.h: the pop-up in which the user chooses existing resources of one kind: modules,
// functions, forms, or files of the file area such as icons.
//
// The owner makes it once, sets objectType, multipleChoice, sourceName and chosenName, and shows
// it. Each showing copies the owner's tables afresh and asks the server nothing. On OK the result
// stands in chosenKey and chosenName, btnOK_pressed() is emitted while the selection of tvObj still
// stands, and the pop-up hides. A double click or Enter on a resource is OK; on a folder it opens
// that. Keys that walk through a list go to the tree, whichever button has the focus. The folders
// that were open are opened again when the same kind is shown next; at first all, if they are few.
//
// Invariants; 1 and 2 are asserted in debug builds:
// 1. It is a palette or none from the first show on.
// 2. Only a palette gives way, and is hidden as long as anything covers it.
// 3. Of one window one list at most covers its palette: the picker for one answer.
#ifndef ORVO_PICKER_POPOBJECTLIST_H
#define ORVO_PICKER_POPOBJECTLIST_H

#include "frame/OrvoClient.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "models/PopTreeModel.h"

#include <QMap>
#include <QPoint>
#include <QSet>
#include <QSize>
#include <QString>

#include <memory>

class QComboBox;
class QKeyEvent;
class QMainWindow;
class QTextCodec;
class QTreeView;

namespace orvo {
class AddButton;
class TreeSearchBar;
} // namespace orvo

QT_BEGIN_NAMESPACE
class Ui_CPopObjectList;
QT_END_NAMESPACE

/// What a drag out of the picker bears: the keys of resources, each followed by ";".
inline constexpr char pickedMime[] = "OrvoMenu/resources/picked";

class CPopObjectList : public CPopTemplate {
    Q_OBJECT
public:
    /// `parent` is the editor's window: a COrvoCliMod that is an orvo::ObjectListOwner.
    explicit CPopObjectList(QMainWindow* parent);
    ~CPopObjectList() override;

private:
    std::unique_ptr<Ui_CPopObjectList> m_ui;

public:
    QTextCodec*
        codec; ///< "Windows-1251"; not owned. Unused; the published interface has this member
    PopTreeModel* treeModel;     ///< model of tvObj; owned
    CMDArray resourceTable;      ///< own copy of `MenuResource`
    CMDArray folderTable;        ///< own copy of `MenuResourceFolder`
    int32_t objectType = 0;      ///< orvo::Kind to list
    QString sourceName;          ///< kind 4: top folder of the file area to list; empty: all of it
    bool multipleChoice = false; ///< kinds 1 to 3: several rows may be selected
    QString chosenKey;           ///< result: `KeyLink` of the chosen row
    QString chosenName;          ///< result: column 0; before the show: the name to preselect

    /// The tree, for the caller's look at the selected rows.
    QTreeView* tvObj() const;
    /// Reloads the list and shows the pop-up in front of its window, also if it is open already.
    void reloadAndShow();

    /// A palette from then on: it stands beside the middle of its window, stays after OK, and holds
    /// up no changes of others; when the user comes back to it, it lists what there is then. It has
    /// a selector of the kind and a button that adds the row under the mouse, and the keys of the
    /// window work in it. To be called before the first show.
    void becomePalette();
    bool isPalette() const { return m_isPalette; }

    void refreshTables();
    void clearModel();
    void loadItems(const QString& key);
    void loadFolders(const QString& key);
    void loadModules();
    void loadFunctions();
    void loadForms();
    void loadSysItems(const QString& key);
    void loadSysFolders(const QString& key);
    void loadSysFiles();

signals:
    void btnOK_pressed();

public slots:
    /// Hides the pop-up, unless it is a palette.
    void on_btnOK_clicked();
    void on_btnCancel_clicked();
    /// A palette: hides while something is shown over its window, and comes back as it was, with
    /// the keyboard if it had that. Calls with true and with false come in pairs.
    void giveWay(bool on);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// What the host offers for the resource at that place.
    orvo::RecordName recordOf(const QModelIndex& row) const;
    void showContextMenu(const QPoint& point);
    bool runRecordKey(const QKeyEvent& key);
    /// OK if the row is a resource. False for a folder.
    bool choose(const QModelIndex& row);
    bool treeKey(const QKeyEvent& event);
    /// The row that Enter means: chosen, or opened if it is a folder.
    void chooseCurrent();
    bool treeMouse(QEvent* event);
    /// Fills the tree for the kind that is set.
    void load();
    /// Lists another kind, in a palette.
    void showKind(int32_t kind);
    void placePalette();
    void makeKinds();
    void giveWayToThis(bool on);
    void addPaletteKeys();
    /// Drags the selected resources, for the owner's tree to make elements of.
    void startDrag();
    /// Shows what is listed as the title on the screen. The title that the owner has set is that of
    /// the last passport row, and stays.
    void showTitle();
    /// By what the list of a kind is remembered.
    QString listName() const;
    void rememberOpen();
    void openRemembered();

    /// The folder below the root of its kind with that caption; a null string if there is none.
    /// `found` tells whether the seek gave a position at all.
    QString rootFolder(int type, const QString& caption, bool* found) const;
    /// The top folder of a kind that has one.
    void loadTop(int32_t kind);
    void loadRoot(int type, const QString& caption);
    void loadFoldersOf(int type, const QString& key);
    void loadItemsOf(int type, const QString& key, bool withCaption);
    /// Selects the first resource of that kind and name that has a row, and takes its key.
    void preselect(int type);

    std::unique_ptr<PopTreeModel> m_model;
    QMap<QString, QSet<QString>> m_open; ///< by list: keys of the folders that were open
    QString m_shown;                     ///< list that the tree has; empty: none
    bool m_isPalette = false;
    QSize m_wholeSize;        ///< of a palette on a screen that has the room
    int m_coverings = 0;      ///< for which it has given way
    bool m_hadKeys = false;   ///< before that
    bool m_comesBack = false; ///< it is being shown as it was
    bool m_covers = false;    ///< a palette has given way to this
    QPoint m_pressed;         ///< where the mouse went down on a resource, in the viewport
    bool m_mayDrag = false;
    QComboBox* m_kinds = nullptr;  ///< child; null until it is a palette
    bool m_isTouched = false;      ///< the user has gone to a button by Tab
    orvo::AddButton* m_addButton;  ///< child of tvObj
    orvo::TreeSearchBar* m_search; ///< child of tvObj; a letter typed there opens it
};

#endif
