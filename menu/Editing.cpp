// The one edit at a time: what opens it, what is written on save and undone on cancel. Edits are
// made in the trees; the server sees them on save, and the saved state comes back as a
// notification.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"

#include <QToolButton>
#include <QTreeView>

using orvo::sameText;
using namespace orvo::menu;

void OrvoMenu::on_editor_valueChanged(const QString& rowName, const QVariant& value) {
    const QPersistentModelIndex row(m_menuModel->findIndexByKey(m_currentMenuKey));
    if (!row.isValid()) {
        // The row has gone and left its passport: what cannot be kept is not taken.
        m_propModel->clearRows();
        return;
    }
    const QString key = m_menuModel->getItemKeyLink(row);
    // The open edit of a desktop or of another element, which could not be saved when it was left,
    // is saved first. If it cannot be now, nothing is taken that would be lost; nor is it for the
    // top row, which no record stands behind.
    const bool isOpenHere = m_elementEdit.isOpen() && sameText(key, m_editMenuKey);
    if (m_menuModel->getItemLevel(row) == 0 || (!isOpenHere && !finishEdit())) {
        m_propModel->clearRows();
        showMenuPassport(row);
        return;
    }
    if (!row.isValid())
        return;
    // A row without a column opens an edit too.
    if (m_editMode == NoEdit) {
        m_elementEdit.begin(row, key);
        enableEditButtons(true);
        // The engineer stays here, whatever an own move still makes current.
        m_focusKey.clear();
    }
    const int column = m_elementFields.editedColumn(rowName);
    if (column >= 0)
        m_elementEdit.change(*m_menuModel, row, column, value);
}

bool OrvoMenu::finishEdit() {
    if (m_editMode == NoEdit)
        return true;
    on_save_pressed();
    if (m_desckEdit.isOpen() && !m_editDesckIndex.isValid()) {
        m_desckEdit.end();
        // The row that became current instead is not to be renamed.
        closeDesckEditor(QModelIndex());
        m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
    }
    if (m_elementEdit.isOpen() && !m_elementEdit.row(*m_menuModel).isValid())
        m_elementEdit.end();
    return m_editMode == NoEdit;
}

void OrvoMenu::on_save_pressed() {
    enableEditButtons(false);
    switch (m_editMode) {
    case NewDesck:
    case RenameDesck:
        saveDesck();
        break;
    case NewElement:
        saveElement(m_elementEdit.row(*m_menuModel), MDX_INSERT);
        break;
    case EditElement:
        saveElement(m_elementEdit.row(*m_menuModel), MDX_UPDATE);
        break;
    default:
        break;
    }
}

void OrvoMenu::saveDesck() {
    const QPersistentModelIndex row = m_editDesckIndex;
    if (!row.isValid())
        return;
    orvo::ScratchTable out(*m_app->m_session, orvo::table::MenuFolder);
    if (!out.fetch())
        return;
    const bool isNew = m_desckEdit.isNew();
    // The editor's last word is part of the name.
    closeDesckEditor(row);
    {
        orvo::RowWriter record = out.add(isNew ? MDX_INSERT : MDX_UPDATE);
        m_desckEdit.write(record);
    }
    if (isNew)
        m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_desckEdit.end();
    if (!isNew) {
        out.send();
        return;
    }
    MDXCliParam* reply = nullptr;
    out.send(&reply);
    m_app->m_session->PrmFree(reply);
}

void OrvoMenu::closeDesckEditor(const QModelIndex& row) {
    // Becoming current is an edit trigger: a move away has opened an editor on the next row too.
    for (const QModelIndex& edited : {row, m_ui->tvDesck->currentIndex()})
        if (QWidget* editor = m_ui->tvDesck->indexWidget(edited.siblingAtColumn(0)))
            emit m_desckDelegate->closeEditor(editor, QAbstractItemDelegate::NoHint);
}

void OrvoMenu::saveElement(const QModelIndex& row, MdxRecordFlag flag) {
    if (!row.isValid())
        return;
    orvo::ScratchTable out(*m_app->m_session, orvo::table::Menu);
    if (!out.fetch())
        return;
    loadMenuRowToTable(row, out, flag);
    if (flag == MDX_UPDATE)
        writeToSelected(out, m_elementEdit.key(), row);
    m_elementEdit.end();
    out.send();
}

void OrvoMenu::loadMenuRowToTable(const QModelIndex& index, orvo::ScratchTable& out,
                                  MdxRecordFlag flag) {
    orvo::RowWriter record = out.add(flag);
    m_elementEdit.write(*m_menuModel, index, record);
}

void OrvoMenu::on_cancel_pressed() {
    enableEditButtons(false);
    switch (m_editMode) {
    case NewDesck:
        cancelNewDesck();
        break;
    case NewElement:
        cancelNewElement();
        break;
    case RenameDesck:
        cancelDesckName();
        break;
    case EditElement:
        cancelElement();
        break;
    default:
        break;
    }
}

void OrvoMenu::cancelNewDesck() {
    const QPersistentModelIndex row = m_editDesckIndex;
    if (!row.isValid())
        return;
    // First: an editor still open would have the last word when the current row changes.
    closeDesckEditor(row);
    m_desckEdit.end();
    m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
    orvo::removePlaceholder(m_ui->tvDesck, row);
}

void OrvoMenu::cancelNewElement() {
    const QPersistentModelIndex row(m_elementEdit.row(*m_menuModel));
    if (!row.isValid())
        return;
    m_elementEdit.end();
    orvo::removePlaceholder(m_ui->tvMenu, row);
}

void OrvoMenu::cancelDesckName() {
    const QPersistentModelIndex row = m_editDesckIndex;
    if (!row.isValid())
        return;
    const MDRData* record = orvo::seekKey(m_tabFolder, m_desckEdit.key());
    if (record)
        closeDesckEditor(row);
    m_desckEdit.end();
    if (!record)
        return;
    m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_desckModel->setData(row, orvo::textOf(record, orvo::field::caption), Qt::DisplayRole);
    orvo::reselectRow(m_ui->tvDesck, row);
}

void OrvoMenu::cancelElement() {
    // An edit that could not be saved when its row was left is still that row's.
    const QPersistentModelIndex row(m_elementEdit.row(*m_menuModel));
    if (!row.isValid())
        return;
    const QString key = m_elementEdit.key();
    m_elementEdit.end();
    MDRData* record = orvo::seekKey(m_tabMenu, key);
    if (!record)
        return;
    loadMenuRow(row.parent(), row.row(), record);
    const QModelIndex current = m_openMenu.elementRow(m_currentMenuKey);
    if (current.isValid())
        orvo::reselectRow(m_ui->tvMenu, current);
}

void OrvoMenu::on_Desck_NameChanged(const QString& text) {
    const QModelIndex current = m_ui->tvDesck->currentIndex();
    // The editor's last word may come when the current row has moved on already, even from within
    // the removal of the edited row: it is none of the new row's.
    if (m_editDesckIndex.isValid() && current.siblingAtColumn(0) != m_editDesckIndex)
        return;
    if (!current.isValid())
        return;
    m_desckModel->setData(current.siblingAtColumn(DesckColumn::Name), text, Qt::EditRole);
    m_desckEdit.type(text);
}

void OrvoMenu::on_closeDesckeditor(QWidget*, QAbstractItemDelegate::EndEditHint) {
    m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
}
