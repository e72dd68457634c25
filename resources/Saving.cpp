// Saving the open edit and dropping it. The server sees an edit here for the first time; tables and
// tree follow when its notification comes.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"

#include <QToolButton>

using orvo::KeyValues;
using orvo::resources::ResColumn;

namespace {

QVariant valueAt(const QModelIndex& row, int column) {
    return row.siblingAtColumn(column).data();
}

QString textAt(const QModelIndex& row, int column) {
    return valueAt(row, column).toString();
}

} // namespace

bool OrvoResources::checkResourceName(const QString& name, const QModelIndex& index,
                                      QString* message) {
    if (name.isEmpty()) {
        *message = tr("Свойство Объект не может быть пустым. Данные не сохранены.");
        return false;
    }
    // Unique among all of its kind, in whatever folder.
    const int type = valueAt(index, ResColumn::Type).toInt();
    if (orvo::seek(m_tabResource, 2, KeyValues().integer(type).text(name))) {
        *message = tr("Такой ресурс уже существует. Данные не сохранены.");
        return false;
    }
    return true;
}

bool OrvoResources::checkResFolderName(const QString& caption, const QModelIndex& index,
                                       QString* message) {
    if (caption.isEmpty()) {
        *message = tr("Свойство \"Имя папки\" не может быть пустым. Данные не сохранены.");
        return false;
    }
    // A folder that is saved again is among these itself: its old name is taken.
    const QString parentKey = textAt(index, ResColumn::FolderKey);
    bool taken = false;
    orvo::walkGroup(m_tabResFolder, 3, KeyValues().textOrNull(parentKey),
                    [&](const MDRData* record) {
                        if (!orvo::holdsText(record, "ParentKey", parentKey))
                            return false;
                        taken = orvo::holdsText(record, "caption", caption);
                        return !taken;
                    });
    if (taken)
        *message =
            tr("Папка с таким именем уже существует у данного родителя. Данные не сохранены.");
    return !taken;
}

void OrvoResources::loadResFolderToTable(const QModelIndex& index, orvo::ScratchTable& out,
                                         MdxRecordFlag flag) const {
    out.add(flag)
        .text("KeyLink", textAt(index, ResColumn::KeyLink))
        .text("ParentKey", textAt(index, ResColumn::FolderKey))
        .integer("type_", valueAt(index, ResColumn::Type).toInt())
        .text("caption", textAt(index, ResColumn::Caption));
}

void OrvoResources::loadResourceToTable(const QModelIndex& index, orvo::ScratchTable& out,
                                        MdxRecordFlag flag) const {
    out.add(flag)
        .text("KeyLink", textAt(index, ResColumn::KeyLink))
        .text("MenuResourceFolderKey", textAt(index, ResColumn::FolderKey))
        .text("name_", textAt(index, ResColumn::Name))
        .integer("type_", valueAt(index, ResColumn::Type).toInt())
        .text("caption", textAt(index, ResColumn::Caption))
        .text("params", textAt(index, ResColumn::Params))
        .text("ico", textAt(index, ResColumn::Icon));
}

void OrvoResources::on_save_pressed() {
    switch (m_editState) {
    case NewRow:
        if (m_newItemIndex.isValid())
            saveRow(m_newItemIndex, MDX_INSERT);
        break;
    case EditRow: {
        const QModelIndex row = m_resModel->findIndexByKey(m_editKey);
        if (row.isValid())
            saveRow(row, MDX_UPDATE);
        break;
    }
    default:
        break;
    }
}

void OrvoResources::saveRow(const QModelIndex& row, MdxRecordFlag flag) {
    const bool isFolder = orvo::resources::isFolder(row);
    QString message;
    // The name of an existing resource is not the user's to change.
    const bool named = isFolder
                           ? checkResFolderName(m_editCaption, row, &message)
                           : flag != MDX_INSERT || checkResourceName(m_editObject, row, &message);
    if (!named) {
        orvo::showError(*this, message, "1on_common_error_message(QAbstractButton*)");
        return;
    }
    orvo::ScratchTable out(*m_app->m_session, isFolder ? "MenuResourceFolder" : "MenuResource");
    if (!out.fetch())
        return;
    if (isFolder)
        loadResFolderToTable(row, out, flag);
    else
        loadResourceToTable(row, out, flag);
    if (flag == MDX_INSERT)
        m_newItemIndex = QModelIndex();
    endEdit();
    out.send();
}

void OrvoResources::endEdit() {
    m_editState = Idle;
    m_btnSave->setEnabled(false);
    m_btnCancel->setEnabled(false);
}

bool OrvoResources::editIsLost() const {
    switch (m_editState) {
    case NewRow:
        return !m_newItemIndex.isValid();
    case EditRow:
        return !m_resModel->findIndexByKey(m_editKey).isValid();
    default:
        return false;
    }
}

bool OrvoResources::finishEdit() {
    on_save_pressed();
    if (editIsLost())
        endEdit();
    return m_editState == Idle;
}

void OrvoResources::on_cancel_pressed() {
    m_btnSave->setEnabled(false);
    m_btnCancel->setEnabled(false);
    switch (m_editState) {
    case NewRow:
        if (!m_newItemIndex.isValid())
            return;
        m_editState = Idle;
        orvo::removePlaceholder(m_ui->tvRes, m_newItemIndex);
        break;
    case EditRow:
        cancelEdit();
        break;
    default:
        break;
    }
}

void OrvoResources::cancelEdit() {
    const QPersistentModelIndex row(m_resModel->findIndexByKey(m_editKey));
    if (!row.isValid())
        return;
    m_editState = Idle;
    const bool isFolder = orvo::resources::isFolder(row);
    MDRData* record = orvo::seekKey(isFolder ? m_tabResFolder : m_tabResource, m_editKey);
    if (!record)
        return;
    if (isFolder)
        loadResFolderRow(row.parent(), row.row(), record);
    else
        loadResItemRow(row.parent(), row.row(), record);
    orvo::makeCurrentAnew(m_ui->tvRes, row);
}
