// Saving the open edit and dropping it. The server sees an edit here for the first time; tables and
// tree follow when its notification comes.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "resources/Columns.h"
#include "resources/Fields.h"

#include <QToolButton>

using orvo::resources::isFolder;
using orvo::resources::kindOf;
using orvo::resources::ResColumn;
using orvo::resources::textAt;

bool OrvoResources::checkResourceName(const QString& name, const QModelIndex& index,
                                      QString* message) {
    const QString refusal = m_names.resourceRefusal(name, index);
    if (!refusal.isEmpty())
        *message = refusal;
    return refusal.isEmpty();
}

bool OrvoResources::checkResFolderName(const QString& caption, const QModelIndex& index,
                                       QString* message) {
    const QString refusal = m_names.folderRefusal(caption, index);
    if (!refusal.isEmpty())
        *message = refusal;
    return refusal.isEmpty();
}

void OrvoResources::loadResFolderToTable(const QModelIndex& index, orvo::ScratchTable& out,
                                         MdxRecordFlag flag) const {
    orvo::RowWriter record = out.add(flag);
    orvo::resources::folderFields().write(record, index, orvo::editor::FolderRows);
}

void OrvoResources::loadResourceToTable(const QModelIndex& index, orvo::ScratchTable& out,
                                        MdxRecordFlag flag) const {
    orvo::RowWriter record = out.add(flag);
    for (const orvo::editor::RecordField& field : orvo::resources::itemFields()) {
        if (!field.name)
            continue;
        const QVariant value = index.siblingAtColumn(field.column).data();
        const MDRData* stored =
            value.isValid() ? nullptr
                            : orvo::seekKey(m_tabResource, textAt(index, ResColumn::KeyLink));
        // A form without a folder shows no icon. It has one all the same.
        if (stored)
            record.copy(field.name, stored);
        else
            field.write(record, value);
    }
}

void OrvoResources::on_save_pressed() {
    const QString refusal = saveEdit();
    if (!refusal.isEmpty())
        refuse(refusal);
}

QString OrvoResources::nameRefusal(const QModelIndex& row) {
    if (isFolder(row))
        return m_names.folderRefusal(m_editCaption, row);
    // The name of an existing resource is not the user's to change.
    return m_editState == NewRow ? m_names.resourceRefusal(m_editObject, row) : QString();
}

QString OrvoResources::saveEdit() {
    const QModelIndex row = m_edit.row();
    if (!row.isValid())
        return {};
    const QString refusal = nameRefusal(row);
    if (!refusal.isEmpty())
        return refusal;
    const bool folder = isFolder(row);
    orvo::ScratchTable out(*m_app->m_session, orvo::resources::tableOf(row));
    if (!out.fetch())
        return {};
    const MdxRecordFlag flag = m_editState == NewRow ? MDX_INSERT : MDX_UPDATE;
    if (folder)
        loadResFolderToTable(row, out, flag);
    else
        loadResourceToTable(row, out, flag);
    if (!folder && flag == MDX_UPDATE)
        writeToSelected(out, m_editKey, row);
    m_edit.saved();
    endEdit();
    out.send();
    return {};
}

void OrvoResources::endEdit() {
    m_edit.end();
    enableEditButtons(false);
}

bool OrvoResources::finishEdit() {
    on_save_pressed();
    if (m_edit.isLost())
        endEdit();
    return !m_edit.isOpen();
}

bool OrvoResources::finishEditOnPath(const QModelIndex& row) {
    for (QModelIndex at = row.siblingAtColumn(0); at.isValid(); at = at.parent())
        if (at == m_edit.row() && isFolder(at))
            return finishEdit();
    return true;
}

void OrvoResources::on_cancel_pressed() {
    enableEditButtons(false);
    if (m_editState == NewRow && m_newItemIndex.isValid()) {
        const QPersistentModelIndex row = m_newItemIndex;
        m_edit.end();
        orvo::removePlaceholder(m_ui->tvRes, row);
    } else if (m_editState == EditRow) {
        cancelEdit();
    }
}

void OrvoResources::cancelEdit() {
    const QPersistentModelIndex row(m_edit.row());
    if (!row.isValid())
        return;
    const QString key = m_editKey;
    m_edit.end();
    const bool folder = isFolder(row);
    MDRData* record = orvo::seekKey(folder ? m_tabResFolder : m_tabResource, key);
    if (!record)
        return;
    if (folder)
        loadResFolderRow(row.parent(), row.row(), record);
    else
        loadResItemRow(row.parent(), row.row(), record);
    orvo::reselectRow(m_ui->tvRes, row);
}
