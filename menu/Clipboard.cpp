// Copy, cut and paste of menu elements. The clipboard carries whole records with everything below
// them, so that a paste works in another desktop and in another client. What the clipboard brings
// is anybody's bytes and is checked before it is believed.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/ClipboardRows.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "menu/Columns.h"
#include "menu/ElementWalk.h"
#include "menu/MenuPayload.h"

#include <QClipboard>
#include <QItemSelectionModel>

using orvo::ScratchTable;
using orvo::editor::Copied;
using orvo::editor::RecordField;
using orvo::menu::Element;
using orvo::menu::isFolderRecord;
using orvo::menu::menuMime;
using orvo::menu::MenuPayload;
using orvo::menu::menuRootKey;
using orvo::menu::newKeyOf;
using orvo::menu::walkElements;

namespace {

/// Whether the record of a key stands in a scratch table already. Only a payload from elsewhere
/// names an element twice, or a folder and what lies below it; each goes out once, and a long list
/// of folders within each other costs no more than their records.
bool holds(const ScratchTable& table, const QString& key) {
    return orvo::seekKey(table.table(), key) != nullptr;
}

} // namespace

void OrvoMenu::on_actCopyMenuElement_triggered() {
    putOnClipboard(MenuPayload::Copy);
}

void OrvoMenu::on_actCutMenuElement_triggered() {
    putOnClipboard(MenuPayload::Cut);
}

void OrvoMenu::putOnClipboard(int mode) {
    if (!m_clipboard || !m_menuModel)
        return;
    ScratchTable copies(*m_app->m_session, "Menu");
    if (!copies.fetch())
        return;
    orvo::setKeys(copies.table(), {"parent;order_"});
    QStringList keys;
    for (const QModelIndex& row : m_ui->tvMenu->selectionModel()->selectedRows(0)) {
        const QString key = m_menuModel->getItemKeyLink(row);
        if (!orvo::ClipboardRows::canName(key))
            continue;
        keys.append(key);
        if (m_menuModel->itemIsFolder(row))
            copyMenuFolderToClipboard(key, copies);
        else
            copyMenuItemToClipboard(key, copies);
    }
    if (copies.isEmpty())
        return;
    const QByteArray bytes = MenuPayload::write(mode, keys, copies.table());
    if (bytes.isEmpty())
        return;
    // Told beforehand: some platforms report the change before setMimeData returns, and this
    // editor would then take its own cut for a foreign one.
    if (mode == MenuPayload::Cut)
        m_cutPending = true;
    orvo::offerOnClipboard(*m_clipboard, menuMime, bytes);
}

void OrvoMenu::copyMenuItemToClipboard(const QString& key, ScratchTable& copies) {
    if (const MDRData* record = orvo::seekKey(m_tabMenu, key))
        copies.add().copyAll(record);
}

void OrvoMenu::copyMenuFolderToClipboard(const QString& key, ScratchTable& copies) {
    walkElements(m_tabMenu, key, [&](const Element& element) {
        copyMenuItemToClipboard(element.key, copies);
        return true;
    });
}

void OrvoMenu::on_clipboardDataChanged() {
    if (MenuPayload::mode(orvo::clipboardBytes(m_clipboard, menuMime)) == MenuPayload::Copy)
        return;
    // A cut lives only in the editor that made it: whoever else learns of it takes it away.
    if (!m_cutPending)
        m_clipboard->clear(QClipboard::Clipboard);
    m_cutPending = false;
}

void OrvoMenu::on_actPasteMenuElement_triggered() {
    if (!m_clipboard || !m_menuModel)
        return;
    ScratchTable out(*m_app->m_session, "Menu");
    if (!out.fetch())
        return;
    MenuPayload payload;
    if (!payload.read(orvo::clipboardBytes(m_clipboard, menuMime)))
        return;
    if (!m_menuModel->findIndexByKey(m_currentMenuKey).isValid())
        return;
    const CMDArray& source = payload.table;
    // What is cut cannot come to lie below itself: the copies would go with what they lie below.
    if (payload.cut && orvo::seekKey(source, m_currentMenuKey))
        return;
    const QMap<QString, QString> keyMap = orvo::menu::newKeysFor(source);
    const QString parent = orvo::sameText(m_currentMenuKey, QString::fromLatin1(menuRootKey))
                               ? QString()
                               : m_currentMenuKey;
    for (const QString& key : payload.keys) {
        const MDRData* record = orvo::seekKey(source, key);
        if (!record)
            continue;
        // A caption that is not the null string marks a chosen element.
        QString caption = orvo::textOf(record, "caption");
        if (caption.isNull())
            caption = QStringLiteral("");
        if (isFolderRecord(record))
            pasteMenuFolderToDB(m_currentDesckKey, parent, key, caption, source, out, keyMap);
        else if (orvo::seekKey(m_tabResource, orvo::textOf(record, "MenuResourceKey")))
            pasteMenuItemToDB(m_currentDesckKey, parent, key, caption, source, out, keyMap);
    }
    out.send();
    if (payload.cut)
        deleteAfterCutFromMenu(source, payload.keys);
}

void OrvoMenu::pasteMenuItemToDB(const QString& desck, const QString& parent, const QString& key,
                                 const QString& caption, const CMDArray& source,
                                 ScratchTable& target, const QMap<QString, QString>& keyMap) {
    const MDRData* record = orvo::seekKey(source, key);
    if (!record || holds(target, newKeyOf(keyMap, key)))
        return;
    orvo::RowWriter row = target.add(MDX_INSERT);
    row.text("KeyLink", newKeyOf(keyMap, key));
    if (caption.isNull()) {
        if (orvo::isNull(record, "parent"))
            row.null("parent");
        else
            row.text("parent", newKeyOf(keyMap, orvo::textOf(record, "parent")));
        copyFields(row, record, Copied::Place, orvo::editor::ItemRows);
    } else {
        row.text("parent", parent)
            .text("caption", caption)
            .integer("order_", getLastMenuOrder(parent));
    }
    copyFields(row, record, Copied::Value, orvo::editor::ItemRows);
    row.text("FolderKey", desck);
}

void OrvoMenu::copyFields(orvo::RowWriter& row, const MDRData* source, Copied how,
                          orvo::editor::Rows kind) const {
    for (const RecordField& field : m_elementFields)
        if (field.copied == how && (field.copiedOn & kind) != 0)
            row.copy(field.name, source);
}

void OrvoMenu::pasteMenuFolderRow(const QString& desck, const QString& parent, const QString& key,
                                  const QString& caption, const MDRData* record,
                                  ScratchTable& target, const QMap<QString, QString>& keyMap) {
    orvo::RowWriter row = target.add(MDX_INSERT);
    row.text("KeyLink", newKeyOf(keyMap, key));
    if (caption.isNull()) {
        // A folder below a folder goes out with its caption in `parent` and without a caption of
        // its own. That is how it is to be, odd as it looks.
        if (orvo::isNull(record, "caption"))
            row.null("parent");
        else
            row.text("parent", orvo::textOf(record, "caption"));
        row.copy("order_", record);
    } else {
        row.textOrNull("parent", parent)
            .text("caption", caption)
            .integer("order_", getLastMenuOrder(parent));
    }
    copyFields(row, record, Copied::Value, orvo::editor::FolderRows);
    row.text("FolderKey", desck);
}

void OrvoMenu::pasteMenuFolderToDB(const QString& desck, const QString& parent, const QString& key,
                                   const QString& caption, const CMDArray& source,
                                   ScratchTable& target, const QMap<QString, QString>& keyMap) {
    walkElements(source, key, [&](const Element& element) {
        const MDRData* record = orvo::seekKey(source, element.key);
        if (!record || holds(target, newKeyOf(keyMap, element.key)))
            return false;
        // What comes with its folder has no caption given.
        const QString given = element.isFirst ? caption : QString();
        if (element.isFolder)
            pasteMenuFolderRow(desck, parent, element.key, given, record, target, keyMap);
        else if (orvo::seekKey(m_tabResource, orvo::textOf(record, "MenuResourceKey")))
            pasteMenuItemToDB(desck, parent, element.key, given, source, target, keyMap);
        return true;
    });
}

void OrvoMenu::deleteAfterCutFromMenu(const CMDArray& source, const QStringList& keys) {
    ScratchTable out(*m_app->m_session, "Menu");
    if (!out.fetch())
        return;
    for (const QString& key : keys) {
        const MDRData* record = orvo::seekKey(source, key);
        if (!record)
            continue;
        if (isFolderRecord(record))
            addMenuFolderToCut(key, source, out);
        else if (!holds(out, key))
            out.add(MDX_DELETE).text("KeyLink", key);
    }
    out.send();
}

void OrvoMenu::addMenuFolderToCut(const QString& key, const CMDArray& source,
                                  ScratchTable& target) {
    // By the packed table: the source may belong to another desktop than the open one.
    walkElements(source, key, [&](const Element& element) {
        if (holds(target, element.key))
            return false;
        target.add(MDX_DELETE).text("KeyLink", element.key);
        return true;
    });
}
