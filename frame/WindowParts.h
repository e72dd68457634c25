// WindowParts.h: the parts of a window that both editors have: the look of the trees and of the
// passport grid, tool buttons, question and error boxes.
#ifndef ORVO_FRAME_WINDOWPARTS_H
#define ORVO_FRAME_WINDOWPARTS_H

#include "frame/OrvoClient.h"

#include <QIcon>
#include <QString>
#include <QStringList>

#include <functional>
#include <initializer_list>

class QAbstractButton;
class QAbstractItemModel;
class QAction;
class QMainWindow;
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
QMenu* addInstantMenu(QToolButton* button, std::initializer_list<QAction*> actions);

// ---------------------------------------------------------------------------------------------
// Trees

/// The style sheet that paints the branches of the trees with the library's images.
const QString& treeStyleSheet();
/// What all record trees share: whole rows are selected, texts are never elided, the context menu
/// is the module's, and rows are equally high, so that the view need not measure each of a big
/// tree.
void arrangeTree(QTreeView* view, bool styled = true);
/// Hides the columns from `first` to `last`. The view has its model.
void hideColumns(QTreeView* view, int first, int last);

/// Deletes the central widget with the views below it, for a module's destructor: what the
/// selections tell while they go no longer reaches the module, and its models outlive their views.
void takeDownViews(QMainWindow& window);

/// The column titles of the passport grid.
QStringList passportColumns();
/// The passport grid: any trigger opens an editor, no header, caption and value are shown. The view
/// has its model.
void arrangePassport(QTreeView* view);

// ---------------------------------------------------------------------------------------------
// Files

/// The client's folder of icon files, with the separator at its end.
QString iconsPath(const COrvoCliMod& module);

// ---------------------------------------------------------------------------------------------
// Message boxes: both return at once; the flow goes on in `slot`, a slot of the module as SLOT()
// spells it, which takes the clicked button as QAbstractButton*.

/// A question with Yes and No. `details` stand below it: what it is about, by name.
void askQuestion(COrvoCliMod& module, const QString& text, const char* slot,
                 const QString& details = {});
/// Names for the details of a question, a line each: the first ten, then how many there are more.
QString nameLines(const QStringList& names);
/// A notice of an error with one button.
void showError(COrvoCliMod& module, const QString& text, const char* slot);
/// Hides the module's box and tells whether the button was its Yes. False without a box.
bool answeredYes(COrvoCliMod& module, QAbstractButton* button);

} // namespace orvo

#endif
