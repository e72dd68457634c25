// Slots that connections name and whose subjects are still to come: notifications of the clipboard,
// editing, the passport's buttons, drag and drop.
#include "menu/OrvoMenu.h"

void OrvoMenu::on_clipboardDataChanged() {}
void OrvoMenu::on_Desck_NameChanged(const QString&) {}
void OrvoMenu::on_closeDesckeditor(QWidget*, QAbstractItemDelegate::EndEditHint) {}
void OrvoMenu::on_menu_dragdrop(const QModelIndex&, QStringList, int) {}
void OrvoMenu::on_editor_valueChanged(const QString&, const QVariant&) {}
void OrvoMenu::on_passp_buttonpressed(const QString&) {}
void OrvoMenu::on_passp_returnPressed(const QString&) {}
void OrvoMenu::on_save_pressed() {}
void OrvoMenu::on_cancel_pressed() {}
