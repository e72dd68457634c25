// Moving rows to another folder: cut and paste, and drops. Only the folder link of the records goes
// out; the rows move when the notifications come, and a cut changes nothing at all until the paste.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/ClipboardRows.h"
#include "frame/FolderWalk.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "resources/Columns.h"

#include <QClipboard>
#include <QItemSelectionModel>
#include <QSet>

using orvo::ClipboardRows;
using orvo::KeyValues;
using orvo::ScratchTable;
using orvo::resources::ResColumn;
using orvo::resources::resourcesMime;

void OrvoResources::on_actCut_triggered() {
    if (!m_clipboard || !m_resModel)
        return;
    ScratchTable resources(*m_app->m_session, "MenuResource");
    ScratchTable folders(*m_app->m_session, "MenuResourceFolder");
    if (!resources.fetch() || !folders.fetch())
        return;
    ClipboardRows cut;
    for (const QModelIndex& row : m_ui->tvRes->selectionModel()->selectedRows(0)) {
        const QString key = m_resModel->getItemKeyLink(row);
        if (!ClipboardRows::canName(key))
            continue;
        // The rows of a selection are of one type.
        if (cut.keys.isEmpty())
            cut.number = row.siblingAtColumn(ResColumn::Type).data().toInt();
        cut.keys.append(key);
        // The copies are no part of the payload. One is proof enough that the tables know of what
        // is cut.
        if (!resources.isEmpty() || !folders.isEmpty())
            continue;
        if (orvo::resources::isFolder(row))
            copyResFolderToClipboard(key, resources, folders);
        else
            copyResItemToClipboard(key, resources);
    }
    if (!resources.isEmpty() || !folders.isEmpty())
        orvo::offerOnClipboard(*m_clipboard, resourcesMime, cut.bytes());
}

void OrvoResources::copyResItemToClipboard(const QString& key, ScratchTable& resources) const {
    if (const MDRData* record = orvo::seekKey(m_tabResource, key))
        resources.add().copyAll(record);
}

void OrvoResources::copyResFolderToClipboard(const QString& key, ScratchTable& resources,
                                             ScratchTable& folders) const {
    orvo::walkFolders(
        key, [](const QString& folder) { return folder; },
        [&](const QString& folder) {
            if (const MDRData* record = orvo::seekKey(m_tabResFolder, folder))
                folders.add().copyAll(record);
            const auto below = [&](const CMDArray& table, const char* link, auto visit) {
                orvo::walkGroup(table, 3, KeyValues().text(folder), [&](const MDRData* record) {
                    if (!orvo::holdsText(record, link, folder))
                        return false;
                    visit(orvo::textOf(record, "KeyLink"));
                    return true;
                });
            };
            std::vector<QString> subfolders;
            below(m_tabResFolder, "ParentKey",
                  [&](const QString& child) { subfolders.push_back(child); });
            below(m_tabResource, "MenuResourceFolderKey",
                  [&](const QString& item) { copyResItemToClipboard(item, resources); });
            return subfolders;
        });
}

void OrvoResources::on_actPaste_triggered() {
    const QByteArray bytes = orvo::clipboardBytes(m_clipboard, resourcesMime);
    const int kind = ClipboardRows::numberOf(bytes).value_or(0);
    if (!m_resModel || kind < orvo::resources::Module || kind > orvo::resources::File)
        return;
    const std::optional<ClipboardRows> rows = ClipboardRows::read(bytes);
    // From here on the cut is gone, whatever becomes of it.
    m_clipboard->clear(QClipboard::Clipboard);
    const QModelIndex target = m_ui->tvRes->currentIndex();
    if (!rows || !orvo::resources::isFolder(target))
        return;
    QString folder = m_resModel->getItemKeyLink(target);
    if (orvo::sameText(folder, QString::fromLatin1(orvo::resources::fileRootKey)))
        folder.clear();
    sendToFolder(rows->keys, folder, &orvo::RowWriter::textOrNull);
}

void OrvoResources::on_res_dragdrop(const QModelIndex& destindex, QStringList srcList) {
    // The server does not know that folder yet, and may never do: what went there would be lost to
    // every tree.
    if (m_editState == NewRow && destindex.isValid() && destindex == m_newItemIndex)
        return;
    QString folder = m_resModel->getItemKeyLink(destindex);
    for (const char* top : {orvo::resources::fileRootKey, orvo::resources::menuRootKey})
        if (orvo::sameText(folder, QString::fromLatin1(top)))
            folder.clear();
    // A drop at the top asks for empty text where a paste asks for NULL.
    sendToFolder(srcList, folder, &orvo::RowWriter::text);
}

void OrvoResources::sendToFolder(const QStringList& keys, const QString& folder,
                                 LinkWriter writeLink) {
    ScratchTable resources(*m_app->m_session, "MenuResource");
    ScratchTable folders(*m_app->m_session, "MenuResourceFolder");
    if (!resources.fetch() || !folders.fetch())
        return;
    QSet<QString> sent; // only a payload from elsewhere names a row twice
    for (const QString& key : keys) {
        const QModelIndex row = m_resModel->findIndexByKey(key);
        const QString folded = key.toCaseFolded();
        if (!row.isValid() || sent.contains(folded))
            continue;
        sent.insert(folded);
        const bool isFolder = orvo::resources::isFolder(row);
        orvo::RowWriter record = (isFolder ? folders : resources).add(MDX_UPDATE);
        // A key in letters that no record can hold finds its row all the same, and would go out as
        // another key.
        const bool holds = orvo::fromRecord(orvo::toRecord(key)) == key;
        record.text("KeyLink", holds ? key : m_resModel->getItemKeyLink(row));
        (record.*writeLink)(isFolder ? "ParentKey" : "MenuResourceFolderKey", folder);
        m_focusKey = key;
    }
    resources.send();
    folders.send();
}

void OrvoResources::on_clipboardDataChanged() {}
