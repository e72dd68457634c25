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

using orvo::KeyValues;
using orvo::resources::isFolder;
using orvo::resources::kindOf;
using orvo::resources::ResColumn;
using orvo::resources::textAt;

bool OrvoResources::checkResourceName(const QString& name, const QModelIndex& index,
                                      QString* message) {
    if (name.isEmpty()) {
        *message = tr("Свойство Объект не может быть пустым. Данные не сохранены.");
        return false;
    }
    // Unique among all of its kind, in whatever folder. What this window has saved a moment ago is
    // in its rows before it is in the table.
    const int type = kindOf(index);
    bool taken = orvo::seek(m_tabResource, 2, KeyValues().integer(type).text(name)) != nullptr;
    for (const QString& key : m_edit.expected()) {
        const QModelIndex row = m_resModel->findIndexByKey(key);
        taken = taken || (row.isValid() && !isFolder(row) && kindOf(row) == type &&
                          row != index.siblingAtColumn(0) &&
                          orvo::sameText(textAt(row, ResColumn::Name), name));
    }
    if (taken)
        *message = tr("Такой ресурс уже существует. Данные не сохранены.");
    return !taken;
}

bool OrvoResources::checkResFolderName(const QString& caption, const QModelIndex& index,
                                       QString* message) {
    if (caption.isEmpty()) {
        *message = tr("Свойство \"Имя папки\" не может быть пустым. Данные не сохранены.");
        return false;
    }
    // A folder that is saved again is among these itself: its old name is taken.
    const QString parentKey = textAt(index, ResColumn::FolderKey);
    const bool taken = hasFolderRow(index.parent(), caption, textAt(index, ResColumn::KeyLink)) ||
                       hasFolderRecord(folderLinks(parentKey, kindOf(index)), caption, QString());
    if (taken)
        *message =
            tr("Папка с таким именем уже существует у данного родителя. Данные не сохранены.");
    return !taken;
}

QStringList OrvoResources::folderLinks(const QString& folderKey, int type) const {
    const QString files = QString::fromLatin1(orvo::rowkey::files);
    const bool top = folderKey.isEmpty() || orvo::sameText(folderKey, files);
    return type == orvo::Kind::File && top ? QStringList{QString(), files} : QStringList{folderKey};
}

bool OrvoResources::hasFolderRow(const QModelIndex& parent, const QString& caption,
                                 const QString& exceptKey) const {
    // What this window has just named is in its rows before it is in the table.
    for (int number = 0; number < m_resModel->rowCount(parent); ++number) {
        const QModelIndex row = m_resModel->index(number, 0, parent);
        if (!isFolder(row))
            break; // folders come first
        if (orvo::sameText(textAt(row, ResColumn::Caption), caption) &&
            !orvo::sameText(textAt(row, ResColumn::KeyLink), exceptKey))
            return true;
    }
    return false;
}

bool OrvoResources::hasFolderRecord(const QStringList& links, const QString& caption,
                                    const QString& exceptKey) const {
    bool found = false;
    for (const QString& link : links)
        orvo::walkGroup(m_tabResFolder, 3, KeyValues().textOrNull(link),
                        [&](const MDRData* record) {
                            if (!orvo::holdsText(record, orvo::field::ParentKey, link))
                                return false;
                            found = orvo::holdsText(record, orvo::field::caption, caption) &&
                                    !orvo::holdsText(record, orvo::field::KeyLink, exceptKey);
                            return !found;
                        });
    return found;
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
    QString message;
    if (isFolder(row))
        checkResFolderName(m_editCaption, row, &message);
    else if (m_editState == NewRow) // the name of an existing resource is not the user's to change
        checkResourceName(m_editObject, row, &message);
    return message;
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
