// Slots whose subjects are still to be written, each in a source of its own: creating and saving
// (the add actions, the passport's edits, save and cancel, the icon picker), uploading files and
// forms, deletion, the search bar, the clipboard and drops. Until then they do nothing: the window
// shows, follows the server and extracts, but changes nothing.
#include "resources/OrvoResources.h"

// Creating and saving
void OrvoResources::on_actAddModule_triggered() {}
void OrvoResources::on_actAddFunction_triggered() {}
void OrvoResources::on_actAddFolder_triggered() {}
void OrvoResources::on_editor_valueChanged(const QString&, const QVariant&) {}
void OrvoResources::on_passp_buttonpressed(const QString&) {}
void OrvoResources::on_poplist_OK_Pressed() {}
void OrvoResources::on_save_pressed() {}
void OrvoResources::on_cancel_pressed() {}

// Uploading
void OrvoResources::on_actLoadFiles_triggered() {}

// Deletion
void OrvoResources::on_actDelete_triggered() {}
void OrvoResources::removeResourceMessage(QAbstractButton*) {}

// Search
void OrvoResources::on_search_up_pressed() {}
void OrvoResources::on_search_down_pressed() {}
void OrvoResources::on_search_textChanged(const QString&) {}
void OrvoResources::on_searchCmb_indexChanged(int) {}

// Clipboard and drops
void OrvoResources::on_actCut_triggered() {}
void OrvoResources::on_actPaste_triggered() {}
void OrvoResources::on_res_dragdrop(const QModelIndex&, QStringList) {}
void OrvoResources::on_clipboardDataChanged() {}
