// The passport of a menu element.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/CommonFunctions.h"
#include "menu/Columns.h"

#include <QTreeView>

using orvo::editor::FolderRows;
using orvo::editor::ItemRows;
using orvo::menu::MenuColumn;

void OrvoMenu::showMenuPassport(const QModelIndex& index) {
    if (m_menuModel->itemIsFolder(index))
        loadFolderPassport(index);
    else
        loadItemPassport(index);
}

void OrvoMenu::loadFolderPassport(const QModelIndex& index) {
    fillPassport(index, FolderRows);
}

void OrvoMenu::loadItemPassport(const QModelIndex& index) {
    fillPassport(index, ItemRows);
}

void OrvoMenu::fillPassport(const QModelIndex& index, orvo::editor::Rows kind) {
    if (!index.isValid())
        return;
    const bool isTop = m_menuModel->getItemLevel(index) == 0;
    const auto adjust = [&](const orvo::editor::RecordField& field, orvo::PassportRow& shown) {
        // The word of a folder is no number and reads as 0, which is its code; the root has none.
        if (field.column == MenuColumn::Type && kind == FolderRows)
            shown.value = convertMenuAttributes(shown.value.toInt());
        // The top row has no record.
        shown.readOnly = shown.readOnly || isTop;
    };
    m_ui->tvProp->expand(addPassport(index, m_elementFields, kind, adjust));
}
