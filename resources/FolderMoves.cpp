#include "resources/FolderMoves.h"

#include "editor/EditorWindow.h"
#include "frame/ClipboardRows.h"
#include "frame/FolderWalk.h"
#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"
#include "resources/ResourceEdit.h"
#include "resources/ResourceNames.h"

#include <QClipboard>
#include <QSet>

#include <algorithm>
#include <cassert>
#include <optional>

namespace orvo::resources {

bool FolderMoves::isOffered(int kind) const {
    const QByteArray bytes = clipboardBytes(m_parts.clipboard, resourcesMime);
    return bytes.contains('\n') && ClipboardRows::numberOf(bytes) == kind;
}

void FolderMoves::cut(const QModelIndexList& rows) {
    if (!m_parts.clipboard || !m_parts.tree)
        return;
    const auto top = std::find_if(rows.begin(), rows.end(),
                                  [this](const QModelIndex& row) { return isTopFolder(row); });
    if (top != rows.end()) {
        m_parts.window.refuse(tr("Не вырезано: %1 держит все ресурсы своего вида.")
                                  .arg(m_parts.names.describe(*top)));
        return;
    }
    ScratchTable resources(*m_parts.window.m_app->m_session, table::MenuResource);
    ScratchTable folders(*m_parts.window.m_app->m_session, table::MenuResourceFolder);
    if (!resources.fetch() || !folders.fetch())
        return;
    ClipboardRows payload;
    for (const QModelIndex& row : rows) {
        const QString key = m_parts.tree->getItemKeyLink(row);
        if (!ClipboardRows::canName(key))
            continue;
        // The rows of a selection are of one type.
        if (payload.keys.isEmpty())
            payload.number = kindOf(row);
        payload.keys.append(key);
        // The copies are no part of the payload. One is proof enough that the tables know of what
        // is cut.
        if (!resources.isEmpty() || !folders.isEmpty())
            continue;
        if (isFolder(row))
            copyFolder(key, resources, folders);
        else
            copyItem(key, resources);
    }
    if (resources.isEmpty() && folders.isEmpty())
        return;
    m_cutNames.clear();
    for (const QModelIndex& row : rows)
        m_cutNames.push_back({m_parts.tree->getItemKeyLink(row), m_parts.names.describe(row)});
    m_cutBytes = payload.bytes();
    assert(!m_cutBytes.isEmpty() && !m_cutNames.empty());
    offerOnClipboard(*m_parts.clipboard, resourcesMime, m_cutBytes);
}

void FolderMoves::copyItem(const QString& key, ScratchTable& resources) const {
    if (const MDRData* record = seekKey(m_parts.resources, key))
        resources.add().copyAll(record);
}

void FolderMoves::copyFolder(const QString& key, ScratchTable& resources,
                             ScratchTable& folders) const {
    walkFolders(
        key, [](const QString& folder) { return folder; },
        [&](const QString& folder) {
            if (const MDRData* record = seekKey(m_parts.folders, folder))
                folders.add().copyAll(record);
            const auto below = [&](const CMDArray& table, const char* link, auto visit) {
                walkGroup(table, 3, KeyValues().text(folder), [&](const MDRData* record) {
                    if (!holdsText(record, link, folder))
                        return false;
                    visit(textOf(record, field::KeyLink));
                    return true;
                });
            };
            std::vector<QString> subfolders;
            below(m_parts.folders, field::ParentKey,
                  [&](const QString& child) { subfolders.push_back(child); });
            below(m_parts.resources, field::MenuResourceFolderKey,
                  [&](const QString& item) { copyItem(item, resources); });
            return subfolders;
        });
}

void FolderMoves::paste(const QModelIndex& target) {
    const QByteArray bytes = clipboardBytes(m_parts.clipboard, resourcesMime);
    const int kind = ClipboardRows::numberOf(bytes).value_or(0);
    if (!m_parts.tree || !resourceKind(kind))
        return;
    const std::optional<ClipboardRows> rows = ClipboardRows::read(bytes);
    const bool intoFolder = rows && isFolder(target);
    const QString reason = intoFolder ? refusal(rows->keys, target) : QString();
    if (!reason.isEmpty()) {
        m_parts.window.refuse(reason); // the cut stays, for a better place
        return;
    }
    // From here on the cut is gone, whatever becomes of it.
    const QStringList gone = bytes == m_cutBytes ? goneSinceCut() : QStringList();
    m_parts.clipboard->clear(QClipboard::Clipboard);
    if (!intoFolder)
        return;
    QString folder = m_parts.tree->getItemKeyLink(target);
    if (sameText(folder, QString::fromLatin1(rowkey::files)))
        folder.clear();
    sendToFolder(rows->keys, folder, &RowWriter::textOrNull);
    if (!gone.isEmpty())
        m_parts.window.refuse(
            (size_t(gone.size()) < m_cutNames.size()
                 ? tr("Вставлено не всё. После вырезания удалено: %1.")
                 : tr("Не вставлено. После вырезания удалено: %1."))
                .arg(nameLines(gone).replace(QLatin1Char('\n'), QLatin1String(", "))));
}

QStringList FolderMoves::goneSinceCut() const {
    QStringList gone;
    for (const auto& [key, name] : m_cutNames)
        if (!m_parts.tree->findIndexByKey(key).isValid())
            gone << name;
    return gone;
}

void FolderMoves::drop(const QModelIndex& target, const QStringList& keys) {
    // The server does not know that folder yet, and may never do: what went there would be lost to
    // every tree.
    if (m_parts.edit.isNew() && target.isValid() && target == m_parts.edit.newRow()) {
        m_parts.window.refuse(
            tr("Не перемещено: %1 ещё не сохранена.").arg(m_parts.names.describe(target)));
        return;
    }
    // No view offers the top of the menu area.
    const QString reason = kindOf(target) == Kind::None ? QString() : refusal(keys, target);
    if (!reason.isEmpty()) {
        m_parts.window.refuse(reason);
        return;
    }
    QString folder = m_parts.tree->getItemKeyLink(target);
    for (const char* top : {rowkey::files, rowkey::resources})
        if (sameText(folder, QString::fromLatin1(top)))
            folder.clear();
    // A drop at the top asks for empty text where a paste asks for NULL.
    sendToFolder(keys, folder, &RowWriter::text);
}

bool FolderMoves::isTopFolder(const QModelIndex& row) const {
    return isFolder(row) && m_parts.tree->getItemLevel(row) == 1 &&
           !m_parts.tree->itemInSystemArea(row);
}

QString FolderMoves::refusal(const QStringList& keys, const QModelIndex& target) const {
    for (const QString& key : keys) {
        const QModelIndex row = m_parts.tree->findIndexByKey(key);
        QString reason = row.isValid() ? refusal(row, target) : QString();
        if (!reason.isEmpty())
            return reason;
    }
    return {};
}

QString FolderMoves::refusal(const QModelIndex& row, const QModelIndex& target) const {
    const auto notMoved = [&](const QString& reason) {
        return tr("Не перемещено: %1.\n").arg(m_parts.names.describe(row)) + reason;
    };
    if (!isFolder(target))
        return notMoved(tr("Это не папка: %1.").arg(m_parts.names.describe(target)));
    if (isTopFolder(row))
        return notMoved(tr("Эта папка держит все ресурсы своего вида."));
    if (kindOf(row) != kindOf(target))
        return notMoved(
            tr("Здесь место ресурсам другого вида: %1.").arg(m_parts.names.describe(target)));
    for (QModelIndex at = target.siblingAtColumn(0); at.isValid(); at = at.parent())
        if (at == row)
            return notMoved(tr("Папку нельзя поместить в неё саму."));
    // The file area stands for real folders, in which names are unique.
    if (kindOf(row) == Kind::File &&
        m_parts.names.hasNamesake(target, isFolder(row),
                                  textAt(row, isFolder(row) ? ResColumn::Caption : ResColumn::Name),
                                  textAt(row, ResColumn::KeyLink)))
        return notMoved(tr("Такое имя там уже есть: %1.").arg(m_parts.names.describe(target)));
    return {};
}

void FolderMoves::sendToFolder(const QStringList& keys, const QString& folder,
                               LinkWriter writeLink) {
    ScratchTable resources(*m_parts.window.m_app->m_session, table::MenuResource);
    ScratchTable folders(*m_parts.window.m_app->m_session, table::MenuResourceFolder);
    if (!resources.fetch() || !folders.fetch())
        return;
    QSet<QString> sent; // only a payload from elsewhere names a row twice
    for (const QString& key : keys) {
        const QModelIndex row = m_parts.tree->findIndexByKey(key);
        const QString folded = key.toCaseFolded();
        if (!row.isValid() || sent.contains(folded))
            continue;
        sent.insert(folded);
        const bool folderRow = isFolder(row);
        RowWriter record = (folderRow ? folders : resources).add(MDX_UPDATE);
        // A key in letters that no record can hold finds its row all the same, and would go out as
        // another key.
        const bool holds = fromRecord(toRecord(key)) == key;
        record.text(field::KeyLink, holds ? key : m_parts.tree->getItemKeyLink(row));
        (record.*writeLink)(folderRow ? field::ParentKey : field::MenuResourceFolderKey, folder);
        m_parts.focusKey = key;
        m_parts.focusCame = false;
    }
    resources.send();
    folders.send();
}

} // namespace orvo::resources
