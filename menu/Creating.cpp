// New folders of a menu, which stand in the tree as placeholders until they are saved, and what is
// chosen in the picker: new elements (menu/NewElements.h), and values of the passport.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/CommonFunctions.h"
#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/Text.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "models/Passport.h"
#include "picker/PopObjectList.h"

#include <QItemSelectionModel>
#include <QToolButton>

using orvo::editor::FieldType;
using orvo::editor::RecordField;
using orvo::menu::MenuColumn;
using orvo::menu::NewElements;

namespace {

bool isRow(const QString& rowName, const char* name) {
    return orvo::sameText(rowName, QString::fromLatin1(name));
}

} // namespace

void OrvoMenu::on_actNewElemModul_triggered() {
    m_newElements.choose(orvo::Kind::Module);
}

void OrvoMenu::on_actNewElemFunction_triggered() {
    m_newElements.choose(orvo::Kind::Function);
}

void OrvoMenu::on_actNewElemFile_triggered() {
    m_newElements.choose(orvo::Kind::Form);
}

void OrvoMenu::on_poplist_OK_Pressed() {
    if (!m_popList)
        return;
    if (m_popList->multipleChoice)
        m_newElements.addChosen(*m_popList);
    else
        takeChosenValue();
}

void OrvoMenu::takeChosenValue() {
    if (refusesChosenFolder(*m_popList))
        return;
    const QString name = m_popList->chosenName;
    const QString key = m_popList->chosenKey;
    std::vector<NewElements::Picked> chosen{{key, name}};
    if (isRow(m_popTarget, "object"))
        m_newElements.refuseDeleted(chosen);
    if (chosen.empty())
        return;
    if (isIconRow(m_popTarget)) {
        takeChosenIcon();
    } else if (isRow(m_popTarget, "object")) {
        orvo::editPassportValue(*m_propModel, QStringLiteral("object"), name);
        orvo::editPassportValue(*m_propModel, QStringLiteral("keylink"), key);
    }
}

void OrvoMenu::on_passp_buttonpressed(const QString& rowName) {
    m_popTarget = rowName;
    const auto valueOf = [this](const char* row) {
        return m_propModel->getRowValue(QString::fromLatin1(row)).toString();
    };
    // What would be chosen for the top row could be written nowhere.
    if (m_menuModel->getItemLevel(m_menuModel->findIndexByKey(m_currentMenuKey)) == 0) {
        refuse(tr("Это не элемент меню: выбрать для него ничего нельзя."));
        return;
    }
    if (isIconRow(rowName)) {
        CPopObjectList* list = iconPicker();
        list->chosenName = valueOf("icon");
        list->reloadAndShow();
    } else if (isRow(rowName, "object")) {
        CPopObjectList* list = picker();
        list->multipleChoice = false;
        list->chosenName = valueOf("object");
        const orvo::ResourceKind* kind = orvo::resourceKind(getMenuAttributes(valueOf("type")));
        if (!kind || !kind->choice)
            return;
        list->setWindowTitle(orvo::Text::tr(kind->choice));
        list->objectType = kind->number;
        list->sourceName = QString();
        list->reloadAndShow();
    }
}

void OrvoMenu::on_passp_returnPressed(const QString& rowName) {
    if (!isIconRow(rowName))
        return;
    const QString none; // null, which the tree takes for "no icon" at once
    m_propModel->setRowValue(rowName, none);
    // Setting a row's value is no edit of the user's: the change is handed on here.
    noteTyped(rowName);
    on_editor_valueChanged(rowName, none);
}

void OrvoMenu::on_actNewElemFolder_triggered() {
    if (!m_menuModel)
        return; // the start failed
    const QModelIndex current = m_ui->tvMenu->currentIndex().siblingAtColumn(0);
    const QPersistentModelIndex parent(m_menuModel->itemIsFolder(current) ? current
                                                                          : current.parent());
    if (!parent.isValid() || !finishEdit() || !parent.isValid())
        return;
    const int row = m_menuModel->rowCount(parent);
    const int order = m_openMenu.nextOrder(parent);
    if (!m_menuModel->insertRows(row, 1, parent))
        return;
    const QString key = QString::fromLatin1(GenGuid32());
    const QModelIndex folder = m_menuModel->index(row, 0, parent);
    orvo::setRow(*m_menuModel, folder,
                 {{MenuColumn::KeyLink, key},
                  {MenuColumn::Caption, tr("Новая папка")},
                  {MenuColumn::FolderKey, m_openMenu.desckKey()},
                  {MenuColumn::ParentKey, m_menuModel->getItemKeyLink(parent)},
                  {MenuColumn::Type, convertMenuAttributes(0)},
                  {MenuColumn::IsNew, true},
                  {MenuColumn::Order, order}});
    for (const RecordField& field : m_elementFields)
        if (field.type == FieldType::Flag)
            orvo::setRow(*m_menuModel, folder, {{field.column, false}});
    m_elementEdit.beginNew(folder, key);
    enableEditButtons(true);
    m_ui->tvMenu->scrollTo(folder);
    m_ui->tvMenu->selectionModel()->select(folder, QItemSelectionModel::ClearAndSelect);
    orvo::makeCurrent(m_ui->tvMenu, folder);
}
