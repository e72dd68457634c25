// FormViewer.h: shows a stored form.
#ifndef ORVO_APPS_CLIENT_FORMVIEWER_H
#define ORVO_APPS_CLIENT_FORMVIEWER_H

#include "platform/store/Store.h"

#include <QString>

class QWidget;

namespace orvo::app {

/// Opens a window on the stored files of the form that `request` names: Qt Designer forms live,
/// pictures as pictures, the rest as text; one tab for each file if there are several. `request` is
/// the form's name, or the name, ";" and parameters; a name may hold ";" itself, so the longest one
/// that exists is meant. The window deletes itself when closed, and belongs to `parent`. A file
/// that is damaged is shown as text with a word of it above, and `error` names it too; else `error`
/// stays as it was. Null, with one line in `error`, if there is no such form or it has no files.
QWidget* openForm(store::Store& store, const QString& request, QWidget* parent, QString* error);

} // namespace orvo::app

#endif
