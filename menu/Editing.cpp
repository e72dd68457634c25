// The one edit at a time: what opens it, what is written on save and undone on cancel. Edits are
// made in the trees; the server sees them on save, and the saved state comes back as a
// notification.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "menu/Columns.h"

#include <QToolButton>
#include <QTreeView>

#include <algorithm>
#include <utility>

using orvo::menu::DesckColumn;
using orvo::menu::desckRootKey;
using orvo::menu::MenuColumn;

namespace {

/// The column of `tvMenu` that a passport row shows and changes; -1 for rows that show only.
int columnOf(const QString& rowName) {
    static const std::pair<const char*, int> columns[] = {
        {"name", MenuColumn::Caption},        {"icon", MenuColumn::Icon},
        {"params", MenuColumn::Params},       {"onecopy", MenuColumn::OneCopy},
        {"separator", MenuColumn::Separator},
    };
    for (const auto& [name, column] : columns)
        if (orvo::sameText(rowName, QString::fromLatin1(name)))
            return column;
    return -1;
}

QString textAt(const QModelIndex& row, int column) {
    return row.siblingAtColumn(column).data().toString();
}

} // namespace

void OrvoMenu::on_editor_valueChanged(const QString& rowName, const QVariant& value) {
    const QModelIndex row = m_menuModel->findIndexByKey(m_currentMenuKey);
    if (!row.isValid())
        return;
    // A row without a column opens an edit too.
    if (m_editMode == NoEdit) {
        endElementEdit();
        m_editMode = EditElement;
        m_editMenuKey = m_currentMenuKey;
        m_btnSave->setEnabled(true);
        m_btnCancel->setEnabled(true);
    }
    const int column = columnOf(rowName);
    if (column < 0)
        return;
    if (m_editMode == EditElement)
        m_editValues[column] = value;
    m_menuModel->setData(row.siblingAtColumn(column), value, Qt::DisplayRole);
}

bool OrvoMenu::finishEdit() {
    if (m_editMode == NoEdit)
        return true;
    on_save_pressed();
    const bool desck = m_editMode == NewDesck || m_editMode == RenameDesck;
    const bool rowThere = desck ? m_editDesckIndex.isValid() : editedElement().isValid();
    if (!rowThere) {
        endElementEdit();
        // The row that became current instead is not to be renamed.
        if (desck) {
            closeDesckEditor(QModelIndex());
            m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
        }
    }
    return m_editMode == NoEdit;
}

void OrvoMenu::endElementEdit() {
    m_editMode = NoEdit;
    m_editMenuIndex = QModelIndex();
    m_editMenuKey.clear();
    m_editValues.clear();
}

bool OrvoMenu::isEdited(const QString& key) const {
    return m_editMode == EditElement && orvo::sameText(key, m_editMenuKey);
}

void OrvoMenu::keepEdit(const QModelIndex& row, const MDRData* record,
                        const orvo::Notification& change) {
    static const std::pair<int, const char*> fields[] = {
        {MenuColumn::Caption, "caption"},     {MenuColumn::Icon, "ico"},
        {MenuColumn::Params, "params"},       {MenuColumn::OneCopy, "oneCopy"},
        {MenuColumn::Separator, "separator"},
    };
    for (const auto& [column, field] : fields) {
        if (change.brings(field))
            m_editValues.remove(column); // somebody was quicker
        else if (m_editValues.contains(column))
            m_menuModel->setData(row.siblingAtColumn(column), m_editValues[column],
                                 Qt::DisplayRole);
    }
    // An own write of its place has come back when the record has that place.
    const auto parent = m_editValues.constFind(MenuColumn::ParentKey);
    if (m_editValues.value(MenuColumn::Order) == QVariant(orvo::integerOf(record, "order_")) &&
        (parent == m_editValues.constEnd() ||
         orvo::holdsText(record, "parent", parent->toString()))) {
        m_editValues.remove(MenuColumn::Order);
        m_editValues.remove(MenuColumn::ParentKey);
    }
}

QModelIndex OrvoMenu::editedElement() const {
    // The row that the edit was made on. If it is gone, because it moved with a folder above it,
    // the one that now has its key.
    if (m_editMenuIndex.isValid() || !m_menuModel)
        return m_editMenuIndex;
    return elementRow(m_editMenuKey.isEmpty() ? m_currentMenuKey : m_editMenuKey);
}

void OrvoMenu::on_save_pressed() {
    m_btnSave->setEnabled(false);
    m_btnCancel->setEnabled(false);
    switch (m_editMode) {
    case NewDesck:
        saveNewDesck();
        break;
    case NewElement:
        saveElement(editedElement(), MDX_INSERT);
        break;
    case RenameDesck:
        saveDesckName();
        break;
    case EditElement:
        saveElement(editedElement(), MDX_UPDATE);
        break;
    default:
        break;
    }
}

void OrvoMenu::saveNewDesck() {
    const QModelIndex row = m_editDesckIndex;
    if (!row.isValid())
        return;
    orvo::ScratchTable out(*m_app->m_session, "MenuFolder");
    if (!out.fetch())
        return;
    const QString parentKey = textAt(row, DesckColumn::ParentKey);
    orvo::RowWriter record = out.add(MDX_INSERT);
    record.text("KeyLink", textAt(row, DesckColumn::KeyLink))
        .text("caption", textAt(row, DesckColumn::Name));
    if (orvo::sameText(parentKey, QString::fromLatin1(desckRootKey)))
        record.null("ParentKey");
    else
        record.text("ParentKey", parentKey);
    record.text("order_", textAt(row, DesckColumn::Order))
        .flag("isFolder", row.siblingAtColumn(DesckColumn::IsFolder).data().toBool());
    record.post();

    m_editMode = NoEdit;
    closeDesckEditor(row);
    m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_editDesckIndex = QModelIndex();
    MDXCliParam* reply = nullptr;
    out.send(&reply);
    m_app->m_session->PrmFree(reply);
}

void OrvoMenu::saveDesckName() {
    const QModelIndex row = m_editDesckIndex;
    if (!row.isValid())
        return;
    orvo::ScratchTable out(*m_app->m_session, "MenuFolder");
    if (!out.fetch())
        return;
    closeDesckEditor(row);
    out.add(MDX_UPDATE)
        .text("KeyLink", textAt(row, DesckColumn::KeyLink))
        .text("caption", textAt(row, DesckColumn::Name));
    m_editMode = NoEdit;
    m_editDesckIndex = QModelIndex();
    out.send();
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
    orvo::ScratchTable out(*m_app->m_session, "Menu");
    if (!out.fetch())
        return;
    loadMenuRowToTable(row, out, flag);
    endElementEdit();
    out.send();
}

void OrvoMenu::loadMenuRowToTable(const QModelIndex& index, orvo::ScratchTable& out,
                                  MdxRecordFlag flag) const {
    const auto flagAt = [&](int column) { return index.siblingAtColumn(column).data().toBool(); };
    orvo::RowWriter record = out.add(flag);
    record.text("KeyLink", textAt(index, MenuColumn::KeyLink));
    const QVariant order = index.siblingAtColumn(MenuColumn::Order).data();
    if (m_editValues.contains(MenuColumn::ParentKey))
        record.textOrNull("parent", m_editValues[MenuColumn::ParentKey].toString());
    else if (m_menuModel->getItemLevel(index.parent()) != 0)
        record.text("parent", textAt(index, MenuColumn::ParentKey));
    else
        record.null("parent");
    record.text("FolderKey", textAt(index, MenuColumn::FolderKey))
        .text("caption", textAt(index, MenuColumn::Caption))
        .integer("order_", m_editValues.value(MenuColumn::Order, order).toInt())
        .text("ico", textAt(index, MenuColumn::Icon))
        .flag("separator", flagAt(MenuColumn::Separator))
        .flag("oneCopy", flagAt(MenuColumn::OneCopy));
    if (!m_menuModel->itemIsFolder(index))
        record.text("MenuResourceKey", textAt(index, MenuColumn::MenuResKey))
            .text("params", textAt(index, MenuColumn::Params));
}

void OrvoMenu::on_cancel_pressed() {
    m_btnSave->setEnabled(false);
    m_btnCancel->setEnabled(false);
    switch (m_editMode) {
    case NewDesck:
        if (!m_editDesckIndex.isValid())
            return;
        m_editMode = NoEdit;
        m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
        orvo::removePlaceholder(m_ui->tvDesck, m_editDesckIndex);
        break;
    case NewElement: {
        const QPersistentModelIndex row = editedElement();
        if (!row.isValid())
            return;
        endElementEdit();
        orvo::removePlaceholder(m_ui->tvMenu, row);
        break;
    }
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

void OrvoMenu::cancelDesckName() {
    const QPersistentModelIndex row = m_editDesckIndex;
    if (!row.isValid())
        return;
    m_editMode = NoEdit;
    const MDRData* record = orvo::seekKey(m_tabFolder, textAt(row, DesckColumn::KeyLink));
    if (!record)
        return;
    m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // First: an editor still open would have the last word when the current row changes.
    closeDesckEditor(row);
    m_desckModel->setData(row, orvo::textOf(record, "caption"), Qt::DisplayRole);
    m_editDesckIndex = QModelIndex();
    orvo::makeCurrentAnew(m_ui->tvDesck, row);
}

void OrvoMenu::cancelElement() {
    const QPersistentModelIndex row(m_menuModel->findIndexByKey(m_currentMenuKey));
    if (!row.isValid())
        return;
    endElementEdit();
    MDRData* record = orvo::seekKey(m_tabMenu, m_currentMenuKey);
    if (!record)
        return;
    loadMenuRow(row.parent(), row.row(), record);
    orvo::makeCurrentAnew(m_ui->tvMenu, row);
}

void OrvoMenu::on_Desck_NameChanged(const QString& text) {
    const QModelIndex current = m_ui->tvDesck->currentIndex();
    // The editor's last word may come when the current row has moved on already, even from within
    // the removal of the edited row: it is none of the new row's.
    if (m_editDesckIndex.isValid() && current.siblingAtColumn(0) != m_editDesckIndex)
        return;
    if (current.isValid())
        m_desckModel->setData(current.siblingAtColumn(DesckColumn::Name), text, Qt::EditRole);
}

void OrvoMenu::on_closeDesckeditor(QWidget*, QAbstractItemDelegate::EndEditHint) {
    m_ui->tvDesck->setEditTriggers(QAbstractItemView::NoEditTriggers);
}
