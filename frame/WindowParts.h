// WindowParts.h: the look that all windows share: trees, the passport grid, tool buttons.
#ifndef ORVO_FRAME_WINDOWPARTS_H
#define ORVO_FRAME_WINDOWPARTS_H

#include "frame/OrvoClient.h"
#include "frame/RowDelegate.h"

#include <QIcon>
#include <QString>
#include <QStringList>

#include <functional>
#include <initializer_list>

class QAbstractItemModel;
class QAction;
class QMenu;
class QToolBar;
class QToolButton;
class QTreeView;

namespace orvo {

// ---------------------------------------------------------------------------------------------
// Forms

/// Runs `setupUi` without the warnings that connecting slots by name prints for slots which follow
/// the naming rule on_<object>_<signal> but whose object is no child of the form: the modules
/// connect those themselves. All other messages pass.
void setupForm(const std::function<void()>& setupUi);

/// An image of the library's own set by its name, "up1" for ":/res/up1.png".
QIcon image(const char* name);

// ---------------------------------------------------------------------------------------------
// Tool bar

/// Text beside icon, icons at the size they are drawn for.
void arrangeToolBar(QToolBar* bar);
/// A tool button with text beside its icon, child of `owner`.
QToolButton* makeToolButton(QWidget* owner, const char* imageName, const QString& text);
/// Gives a button a pop-up that opens at once and holds these actions. The menu is the button's.
QMenu* addInstantMenu(QToolButton* button, const QList<QAction*>& actions);

// ---------------------------------------------------------------------------------------------
// Trees

/// The style sheet that paints the branches of the trees with the library's images.
const QString& treeStyleSheet();
/// What all record trees share: whole rows are selected, texts are never elided, the context menu
/// is the module's, and rows are equally high, so that the view need not measure each of a big
/// tree.
void arrangeTree(QTreeView* view, bool styled = true);
/// Shows the host's marks in a tree that arrangeTree has arranged; see RowDelegate::showMarks.
void showMarks(QTreeView* view, const COrvoCliMod& module, RowDelegate::RecordOf recordOf);
/// For the model of such a view, which may outlive it: the mark of a row in words.
std::function<QString(const QModelIndex&)> spokenMarks(const QTreeView& view);
/// For a user who may not write: nothing is typed into a tree, dragged out of it or dropped on it.
void keepFromWriting(QTreeView* view);
/// Likewise: the actions stay off, whatever the module's own rules say later on.
void keepOff(const QList<QAction*>& actions);
/// Hides the columns from `first` to `last`. The view has its model.
void hideColumns(QTreeView* view, int first, int last);

/// The column titles of the passport grid.
QStringList passportColumns();
/// The passport grid: any trigger opens an editor, no header, caption and value are shown. The view
/// has its model.
void arrangePassport(QTreeView* view);

// ---------------------------------------------------------------------------------------------
// Records

/// A record by the name of its table and its key; an empty key: none.
struct RecordName {
    QString table, key;
    bool hasContents = false; ///< a form or file, of which versions are kept
};
/// Puts what the host offers for a record (COrvoCliApp::addRecordActions) into its context menu;
/// nothing for none.
void addRecordActions(COrvoCliApp& app, QMenu& menu, const RecordName& record);
/// Whether the host offers a command (of frame/Keys.h) for a record, as in its context menu.
bool offersForRecord(COrvoCliApp& app, const RecordName& record, const char* command);
/// Does it, if it is offered.
void runForRecord(COrvoCliApp& app, const RecordName& record, const char* command);

// ---------------------------------------------------------------------------------------------
// Files

/// The client's folder of icon files, with the separator at its end.
QString iconsPath(const COrvoCliMod& module);

// ---------------------------------------------------------------------------------------------
// Boxes

/// Names for the details of a question, a line each, which the box wraps; endless ones without
/// their middle: the first ten, then how many there are more, of `count` in all if these are not
/// all of them.
QString nameLines(const QStringList& names, int count = 0);

} // namespace orvo

#endif
