// PopObjectList.h: the pop-up in which the user chooses existing resources of one kind: modules,
// functions, forms, or files of the file area such as icons.
//
// The owner makes it once, sets objectType, multipleChoice, sourceName and chosenName, and shows
// it. Each showing copies the owner's tables afresh and asks the server nothing. On OK the result
// stands in chosenKey and chosenName, btnOK_pressed() is emitted while the selection of tvObj still
// stands, and the pop-up hides.
#ifndef ORVO_PICKER_POPOBJECTLIST_H
#define ORVO_PICKER_POPOBJECTLIST_H

#include "frame/OrvoClient.h"
#include "frame/Vocabulary.h"
#include "models/PopTreeModel.h"

#include <QString>

#include <memory>

class QMainWindow;
class QTextCodec;
class QTreeView;

QT_BEGIN_NAMESPACE
class Ui_CPopObjectList;
QT_END_NAMESPACE

class CPopObjectList : public CPopTemplate {
    Q_OBJECT
public:
    enum Kind : int32_t {
        KindModule = orvo::Kind::Module,
        KindFunction = orvo::Kind::Function,
        KindForm = orvo::Kind::Form,
        KindFile = orvo::Kind::File
    };

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
    int32_t objectType = 0;      ///< kind to list: 1 module, 2 function, 3 form, 4 file
    QString sourceName;          ///< kind 4: top folder of the file area to list; empty: all of it
    bool multipleChoice = false; ///< kinds 1 to 3: several rows may be selected
    QString chosenKey;           ///< result: `KeyLink` of the chosen row
    QString chosenName;          ///< result: column 0; before the show: the name to preselect

    /// The tree, for the caller's look at the selected rows.
    QTreeView* tvObj() const;
    /// Reloads the list and shows the pop-up in front of its window, also if it is open already.
    void reloadAndShow();

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
    void on_btnOK_clicked();
    void on_btnCancel_clicked();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
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
};

#endif
