// The passport of a menu element.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/CommonFunctions.h"
#include "menu/Columns.h"

#include <QTreeView>

using orvo::menu::MenuColumn;

namespace {

struct PassportRow {
    const char* name;
    QString caption;
    MyEditorType editor;
    bool readOnly;
    QVariant value;
};

/// One category with these rows below it, opened.
void fillPassport(QTreeView* view, PropModel& model, const QString& category,
                  std::initializer_list<PassportRow> rows) {
    model.AddCategoryRow(QStringLiteral("properties"), category, QModelIndex());
    const QModelIndex parent = model.findIndexByKey(QStringLiteral("properties"));
    for (const PassportRow& row : rows) {
        const QString name = QString::fromLatin1(row.name);
        model.AddEditorRow(name, row.caption, row.editor, parent, row.readOnly);
        model.setRowValue(name, row.value);
    }
    view->expand(parent);
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
        {{"type", tr("Тип"), MyEditorLine, true, type},
         {"name", tr("Наименование"), MyEditorLine, false, value(MenuColumn::Caption)},
         {"icon", tr("Иконка"), MyEditorButton, false, value(MenuColumn::Icon)},
         {"separator", tr("Разделитель"), MyEditorCheck, false, value(MenuColumn::Separator)}});
}

void OrvoMenu::loadItemPassport(const QModelIndex& index) {
    if (!index.isValid())
        return;
    const auto value = [&](int column) { return index.sibling(index.row(), column).data(); };
    fillPassport(
        m_ui->tvProp, *m_propModel, tr("Свойства"),
        {{"keylink", tr("Идентификатор"), MyEditorLine, true, value(MenuColumn::MenuResKey)},
         {"type", tr("Тип"), MyEditorLine, true, value(MenuColumn::Type)},
         {"name", tr("Наименование"), MyEditorLine, false, value(MenuColumn::Caption)},
         {"object", tr("Объект"), MyEditorButton, false, value(MenuColumn::Command)},
         {"params", tr("Параметры"), MyEditorLine, false, value(MenuColumn::Params)},
         {"onecopy", tr("Один эжкземпляр"), MyEditorCheck, false, value(MenuColumn::OneCopy)},
         {"icon", tr("Иконка"), MyEditorButton, false, value(MenuColumn::Icon)},
         {"separator", tr("Разделитель"), MyEditorCheck, false, value(MenuColumn::Separator)}});
}
