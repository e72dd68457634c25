// The passport of a menu element.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/CommonFunctions.h"
#include "menu/Columns.h"
#include "models/Passport.h"

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
    std::vector<orvo::PassportRow> rows;
    for (const orvo::editor::RecordField* field : m_elementFields.passport(kind)) {
        const orvo::editor::PassportCell& cell = field->passport;
        QVariant value = index.siblingAtColumn(field->column).data();
        // The word of a folder is no number and reads as 0, which is its code; the root has none.
        if (field->column == MenuColumn::Type && kind == FolderRows)
            value = convertMenuAttributes(value.toInt());
        // No record stands behind the top row.
        const bool readOnly = cell.readOnly || m_menuModel->getItemLevel(index) == 0;
        rows.push_back(
            {QString::fromLatin1(cell.row), tr(cell.caption), cell.editor, readOnly, value});
    }
    m_ui->tvProp->expand(orvo::addPassportCategory(*m_propModel, QStringLiteral("properties"),
                                                   tr("Свойства"), rows));
}
