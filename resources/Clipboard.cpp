// Moving rows to another folder: cut and paste, and drops. Only the folder link of the records goes
// out; the rows move when the notifications come, and a cut changes nothing at all until the paste.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/ClipboardRows.h"
#include "frame/FolderWalk.h"
#include "frame/Kinds.h"
#include "frame/ScratchTable.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"

#include <QClipboard>
#include <QItemSelectionModel>
#include <QSet>

#include <algorithm>

using orvo::ClipboardRows;
using orvo::KeyValues;
using orvo::Kind;
using orvo::ScratchTable;
using orvo::resources::isFolder;
using orvo::resources::kindOf;
using orvo::resources::ResColumn;
using orvo::resources::resourcesMime;
using orvo::resources::textAt;

void OrvoResources::on_actCut_triggered() {
    if (!m_clipboard || !m_resModel)
        return;
    const QModelIndexList rows = m_ui->tvRes->selectionModel()->selectedRows(0);
    const auto top = std::find_if(rows.begin(), rows.end(),
                                  [this](const QModelIndex& row) { return isTopFolder(row); });
    if (top != rows.end()) {
        refuse(tr("Не вырезано: %1 держит все ресурсы своего вида.").arg(describe(*top)));
        return;
    }
    ScratchTable resources(*m_app->m_session, orvo::table::MenuResource);
    ScratchTable folders(*m_app->m_session, orvo::table::MenuResourceFolder);
    if (!resources.fetch() || !folders.fetch())
        return;
    ClipboardRows cut;
    for (const QModelIndex& row : rows) {
        const QString key = m_resModel->getItemKeyLink(row);
        if (!ClipboardRows::canName(key))
            continue;
        // The rows of a selection are of one type.
        if (cut.keys.isEmpty())
            cut.number = kindOf(row);
        cut.keys.append(key);
        // The copies are no part of the payload. One is proof enough that the tables know of what
        // is cut.
        if (!resources.isEmpty() || !folders.isEmpty())
            continue;
        if (isFolder(row))
            copyResFolderToClipboard(key, resources, folders);
        else
            copyResItemToClipboard(key, resources);
    }
    if (resources.isEmpty() && folders.isEmpty())
        return;
    m_cutNames.clear();
    for (const QModelIndex& row : rows)
        m_cutNames.push_back({m_resModel->getItemKeyLink(row), describe(row)});
    m_cutBytes = cut.bytes();
    orvo::offerOnClipboard(*m_clipboard, resourcesMime, m_cutBytes);
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
                    visit(orvo::textOf(record, orvo::field::KeyLink));
                    return true;
                });
            };
            std::vector<QString> subfolders;
            below(m_tabResFolder, orvo::field::ParentKey,
                  [&](const QString& child) { subfolders.push_back(child); });
            below(m_tabResource, orvo::field::MenuResourceFolderKey,
                  [&](const QString& item) { copyResItemToClipboard(item, resources); });
            return subfolders;
        });
}

void OrvoResources::on_actPaste_triggered() {
    const QByteArray bytes = orvo::clipboardBytes(m_clipboard, resourcesMime);
    const int kind = ClipboardRows::numberOf(bytes).value_or(0);
    if (!m_resModel || !orvo::resourceKind(kind))
        return;
    const std::optional<ClipboardRows> rows = ClipboardRows::read(bytes);
    const QModelIndex target = m_ui->tvRes->currentIndex();
    const bool intoFolder = rows && isFolder(target);
    const QString refusal = intoFolder ? moveRefusal(rows->keys, target) : QString();
    if (!refusal.isEmpty()) {
        refuse(refusal); // the cut stays, for a better place
        return;
    }
    // From here on the cut is gone, whatever becomes of it.
    const QStringList gone = bytes == m_cutBytes ? namesGoneSinceCut() : QStringList();
    m_clipboard->clear(QClipboard::Clipboard);
    if (!intoFolder)
        return;
    QString folder = m_resModel->getItemKeyLink(target);
    if (orvo::sameText(folder, QString::fromLatin1(orvo::rowkey::files)))
        folder.clear();
    sendToFolder(rows->keys, folder, &orvo::RowWriter::textOrNull);
    if (!gone.isEmpty())
        refuse((size_t(gone.size()) < m_cutNames.size()
                    ? tr("Вставлено не всё. После вырезания удалено: %1.")
                    : tr("Не вставлено. После вырезания удалено: %1."))
                   .arg(orvo::nameLines(gone).replace(QLatin1Char('\n'), QLatin1String(", "))));
}

QStringList OrvoResources::namesGoneSinceCut() const {
    QStringList gone;
    for (const auto& [key, name] : m_cutNames)
        if (!m_resModel->findIndexByKey(key).isValid())
            gone << name;
    return gone;
}

void OrvoResources::on_res_dragdrop(const QModelIndex& destindex, QStringList srcList) {
    // The server does not know that folder yet, and may never do: what went there would be lost to
    // every tree.
    if (m_editState == NewRow && destindex.isValid() && destindex == m_newItemIndex) {
        refuse(tr("Не перемещено: %1 ещё не сохранена.").arg(describe(destindex)));
        return;
    }
    // No view offers the top of the menu area.
    const QString refusal =
        kindOf(destindex) == Kind::None ? QString() : moveRefusal(srcList, destindex);
    if (!refusal.isEmpty()) {
        refuse(refusal);
        return;
    }
    QString folder = m_resModel->getItemKeyLink(destindex);
    for (const char* top : {orvo::rowkey::files, orvo::rowkey::resources})
        if (orvo::sameText(folder, QString::fromLatin1(top)))
            folder.clear();
    // A drop at the top asks for empty text where a paste asks for NULL.
    sendToFolder(srcList, folder, &orvo::RowWriter::text);
}

bool OrvoResources::isTopFolder(const QModelIndex& row) const {
    return isFolder(row) && m_resModel->getItemLevel(row) == 1 &&
           !m_resModel->itemInSystemArea(row);
}

QString OrvoResources::moveRefusal(const QStringList& keys, const QModelIndex& target) const {
    for (const QString& key : keys) {
        const QModelIndex row = m_resModel->findIndexByKey(key);
        const QString refusal = row.isValid() ? moveRefusal(row, target) : QString();
        if (!refusal.isEmpty())
            return refusal;
    }
    return {};
}

QString OrvoResources::moveRefusal(const QModelIndex& row, const QModelIndex& target) const {
    const auto refusal = [&](const QString& reason) {
        return tr("Не перемещено: %1.\n").arg(describe(row)) + reason;
    };
    if (!isFolder(target))
        return refusal(tr("Это не папка: %1.").arg(describe(target)));
    if (isTopFolder(row))
        return refusal(tr("Эта папка держит все ресурсы своего вида."));
    if (kindOf(row) != kindOf(target))
        return refusal(tr("Здесь место ресурсам другого вида: %1.").arg(describe(target)));
    for (QModelIndex at = target.siblingAtColumn(0); at.isValid(); at = at.parent())
        if (at == row)
            return refusal(tr("Папку нельзя поместить в неё саму."));
    // The file area stands for real folders, in which names are unique.
    if (kindOf(row) == Kind::File &&
        hasNamesake(target, isFolder(row),
                    textAt(row, isFolder(row) ? ResColumn::Caption : ResColumn::Name),
                    textAt(row, ResColumn::KeyLink)))
        return refusal(tr("Такое имя там уже есть: %1.").arg(describe(target)));
    return {};
}

bool OrvoResources::hasNamesake(const QModelIndex& folder, bool isFolder, const QString& name,
                                const QString& exceptKey) const {
    const QStringList links = folderLinks(m_resModel->getItemKeyLink(folder), Kind::File);
    if (isFolder)
        return hasFolderRow(folder, name, exceptKey) || hasFolderRecord(links, name, exceptKey);
    bool found = false;
    for (const QString& link : links)
        orvo::walkGroup(
            m_tabResource, 1, KeyValues().integer(Kind::File).textOrNull(link).text(name),
            [&](const MDRData* record) {
                if (orvo::integerOf(record, orvo::field::type_) != Kind::File ||
                    !orvo::holdsText(record, orvo::field::MenuResourceFolderKey, link) ||
                    !orvo::holdsText(record, orvo::field::name_, name))
                    return false;
                // Names that differ in case are two files on every disk.
                found = orvo::textOf(record, orvo::field::name_) == name &&
                        !orvo::holdsText(record, orvo::field::KeyLink, exceptKey);
                return !found;
            });
    return found;
}

void OrvoResources::sendToFolder(const QStringList& keys, const QString& folder,
                                 LinkWriter writeLink) {
    ScratchTable resources(*m_app->m_session, orvo::table::MenuResource);
    ScratchTable folders(*m_app->m_session, orvo::table::MenuResourceFolder);
    if (!resources.fetch() || !folders.fetch())
        return;
    QSet<QString> sent; // only a payload from elsewhere names a row twice
    for (const QString& key : keys) {
        const QModelIndex row = m_resModel->findIndexByKey(key);
        const QString folded = key.toCaseFolded();
        if (!row.isValid() || sent.contains(folded))
            continue;
        sent.insert(folded);
        const bool folderRow = isFolder(row);
        orvo::RowWriter record = (folderRow ? folders : resources).add(MDX_UPDATE);
        // A key in letters that no record can hold finds its row all the same, and would go out as
        // another key.
        const bool holds = orvo::fromRecord(orvo::toRecord(key)) == key;
        record.text(orvo::field::KeyLink, holds ? key : m_resModel->getItemKeyLink(row));
        (record.*writeLink)(folderRow ? orvo::field::ParentKey : orvo::field::MenuResourceFolderKey,
                            folder);
        m_focusKey = key;
        m_focusCame = false;
    }
    resources.send();
    folders.send();
}

void OrvoResources::on_clipboardDataChanged() {}
