// The passport of a menu element.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/CommonFunctions.h"
#include "menu/Columns.h"
#include "models/Passport.h"

#include <QTreeView>

using orvo::menu::MenuColumn;

namespace {

/// One category with these rows below it, opened.
void fillPassport(QTreeView* view, PropModel& model, const QString& category,
                  std::initializer_list<orvo::PassportRow> rows) {
    view->expand(orvo::addPassportCategory(model, QStringLiteral("properties"), category, rows));
}

} // namespace

void OrvoMenu::showMenuPassport(const QModelIndex& index) {
    if (m_menuModel->itemIsFolder(index))
        loadFolderPassport(index);
    else
        loadItemPassport(index);
}

void OrvoMenu::loadFolderPassport(const QModelIndex& index) {
    if (!index.isValid())
        return;
    const auto value = [&](int column) { return index.sibling(index.row(), column).data(); };
    // The word in column 1 is no number and reads as 0, the code of a folder.
    const QString type = convertMenuAttributes(value(MenuColumn::Type).toInt());
    fillPassport(
        m_ui->tvProp, *m_propModel, tr("Свойства"),
        {{QStringLiteral("type"), tr("Тип"), MyEditorLine, true, type},
         {QStringLiteral("name"), tr("Наименование"), MyEditorLine, false,
          value(MenuColumn::Caption)},
         {QStringLiteral("icon"), tr("Иконка"), MyEditorButton, false, value(MenuColumn::Icon)},
         {QStringLiteral("separator"), tr("Разделитель"), MyEditorCheck, false,
          value(MenuColumn::Separator)}});
}

void OrvoMenu::loadItemPassport(const QModelIndex& index) {
    if (!index.isValid())
        return;
    const auto value = [&](int column) { return index.sibling(index.row(), column).data(); };
    fillPassport(
        m_ui->tvProp, *m_propModel, tr("Свойства"),
        {{QStringLiteral("keylink"), tr("Идентификатор"), MyEditorLine, true,
          value(MenuColumn::MenuResKey)},
         {QStringLiteral("type"), tr("Тип"), MyEditorLine, true, value(MenuColumn::Type)},
         {QStringLiteral("name"), tr("Наименование"), MyEditorLine, false,
          value(MenuColumn::Caption)},
         {QStringLiteral("object"), tr("Объект"), MyEditorButton, false,
          value(MenuColumn::Command)},
         {QStringLiteral("params"), tr("Параметры"), MyEditorLine, false,
          value(MenuColumn::Params)},
         {QStringLiteral("onecopy"), tr("Один эжкземпляр"), MyEditorCheck, false,
          value(MenuColumn::OneCopy)},
         {QStringLiteral("icon"), tr("Иконка"), MyEditorButton, false, value(MenuColumn::Icon)},
         {QStringLiteral("separator"), tr("Разделитель"), MyEditorCheck, false,
          value(MenuColumn::Separator)}});
}
