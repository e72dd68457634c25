// Copy, cut and paste of menu elements. The clipboard carries whole records with everything below
// them, so that a paste works in another desktop and in another client. What it takes from the
// clipboard is untrusted input: every length is checked, keys are looked up before use.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/ClipboardRows.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "menu/Columns.h"
#include "menu/ElementWalk.h"
#include "menu/MenuPayload.h"

#include <QClipboard>
#include <QItemSelectionModel>
#include <QMimeData>

#include <algorithm>

using orvo::KeyValues;
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
    ScratchTable copies(*m_app->m_session, orvo::table::Menu);
    if (!copies.fetch())
        return;
    orvo::setKeys(copies.table(), orvo::keylist::Menu);
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
    m_cutPending = mode == MenuPayload::Cut;
    m_ownCut = mode == MenuPayload::Cut ? bytes : QByteArray();
    orvo::offerOnClipboard(*m_clipboard, menuMime, bytes);
}

bool OrvoMenu::ownCutIsGood() const {
    // Another editor that learns of a cut takes it off the clipboard; here it is still good, until
    // something else is offered.
    const QMimeData* offered = m_clipboard ? m_clipboard->mimeData() : nullptr;
    return !m_ownCut.isEmpty() && (!offered || offered->formats().isEmpty());
}

QByteArray OrvoMenu::menuClipboard() const {
    return ownCutIsGood() ? m_ownCut : orvo::clipboardBytes(m_clipboard, menuMime);
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
    const QByteArray bytes = orvo::clipboardBytes(m_clipboard, menuMime);
    if (!ownCutIsGood() && bytes != m_ownCut)
        m_ownCut.clear();
    if (MenuPayload::mode(bytes) == MenuPayload::Copy)
        return;
    // A cut lives only in the editor that made it: whoever else learns of it takes it away.
    if (!m_cutPending)
        m_clipboard->clear(QClipboard::Clipboard);
    m_cutPending = false;
}

void OrvoMenu::on_actPasteMenuElement_triggered() {
    if (!m_clipboard || !m_menuModel)
        return;
    ScratchTable out(*m_app->m_session, orvo::table::Menu);
    if (!out.fetch())
        return;
    MenuPayload payload;
    if (!payload.read(menuClipboard()))
        return;
    const QModelIndex target = m_menuModel->findIndexByKey(m_currentMenuKey);
    // Nothing lies below an element: its folder takes what is pasted on it.
    const QModelIndex folder = m_menuModel->itemIsFolder(target) ? target : target.parent();
    if (!folder.isValid())
        return;
    const CMDArray& source = payload.table;
    if (payload.cut && (refusesCutInto(target, payload) || refusesOldCut(payload)))
        return;
    const QMap<QString, QString> keyMap = orvo::menu::newKeysFor(source);
    const QString folderKey = m_menuModel->getItemKeyLink(folder);
    const QString parent =
        orvo::sameText(folderKey, QString::fromLatin1(menuRootKey)) ? QString() : folderKey;
    // The menu that is shown need not be the current desktop's.
    const QString desck = openDesckKey();
    for (const QString& key : payload.keys) {
        const MDRData* record = orvo::seekKey(source, key);
        if (!record)
            continue;
        // A caption that is not the null string marks a chosen element.
        QString caption = orvo::textOf(record, orvo::field::caption);
        if (caption.isNull())
            caption = QStringLiteral("");
        if (isFolderRecord(record))
            pasteMenuFolderToDB(desck, parent, key, caption, source, out, keyMap);
        else if (orvo::seekKey(m_tabResource, orvo::textOf(record, orvo::field::MenuResourceKey)))
            pasteMenuItemToDB(desck, parent, key, caption, source, out, keyMap);
    }
    out.send();
    if (payload.cut)
        deleteAfterCutFromMenu(source, payload.keys);
}

bool OrvoMenu::refusesCutInto(const QModelIndex& target, const MenuPayload& payload) {
    // The copies would go with what they lie below.
    QModelIndex cut;
    for (QModelIndex row = target; row.isValid(); row = row.parent())
        if (orvo::seekKey(payload.table, m_menuModel->getItemKeyLink(row)))
            cut = row;
    if (!cut.isValid())
        return false;
    const QString name = cut.siblingAtColumn(orvo::menu::MenuColumn::Caption).data().toString();
    refuse(tr("Вырезанное нельзя вставить в само себя: \"%1\".").arg(name));
    return true;
}

/// A cut writes the elements as they were then and deletes them with nothing but what was cut: what
/// others have done to them since would go without a word.
bool OrvoMenu::refusesOldCut(const MenuPayload& payload) {
    const MDRData* first = MDARec(payload.table.array, 0, 0);
    CMDArray now;
    now.Attach(requestMenu(orvo::textOf(first, orvo::field::FolderKey)));
    if (!now.array)
        return true; // the session has told why
    orvo::setKeys(now, orvo::keylist::Menu);
    QStringList gone, changed, added;
    const auto name = [](const MDRData* record) {
        return QStringLiteral("\"%1\"").arg(orvo::textOf(record, orvo::field::caption));
    };
    orvo::walkAll(payload.table, 0, [&](const MDRData* record) {
        const QString key = orvo::textOf(record, orvo::field::KeyLink);
        const MDRData* stored = orvo::seekKey(now, key);
        if (!stored)
            gone << name(record);
        else if (isChanged(record, stored, payload.keys.contains(key, Qt::CaseInsensitive)))
            changed << name(stored);
        orvo::walkGroup(now, 1, KeyValues().text(key), [&](const MDRData* below) {
            if (!orvo::holdsText(below, orvo::field::parent, key))
                return false;
            if (!orvo::seekKey(payload.table, orvo::textOf(below, orvo::field::KeyLink)))
                added << name(below);
            return true;
        });
        return true;
    });
    // Pasted before, nothing of it is left, and a paste makes copies.
    if (gone.size() == orvo::recordCount(payload.table) && !stillStored(payload.table))
        gone.clear();
    QStringList reasons;
    const auto tell = [&](const QString& what, const QStringList& names) {
        if (!names.isEmpty())
            reasons << what.arg(
                orvo::nameLines(names).replace(QLatin1Char('\n'), QLatin1String(", ")));
    };
    tell(tr("изменено: %1"), changed);
    tell(tr("внутри появилось: %1"), added);
    tell(tr("удалено или перемещено: %1"), gone);
    if (reasons.isEmpty())
        return false;
    refuse(tr("Не вставлено. После вырезания %1. Посмотрите и вырежьте заново.")
               .arg(reasons.join(QStringLiteral("; "))));
    return true;
}

bool OrvoMenu::isChanged(const MDRData* cut, const MDRData* stored, bool isChosen) const {
    // A chosen element gets another place among its siblings in any case.
    return std::any_of(
        m_elementFields.begin(), m_elementFields.end(), [&](const RecordField& field) {
            const bool place = field.column == orvo::menu::MenuColumn::Order;
            return field.name && !(isChosen && place) && field.read(cut) != field.read(stored);
        });
}

/// Whether any of the records is stored, in whatever menu.
bool OrvoMenu::stillStored(const CMDArray& records) {
    CToolRecByKeys tool(this);
    tool.tableName = orvo::table::Menu;
    orvo::walkAll(records, 0, [&](const MDRData* record) {
        tool.keys << orvo::textOf(record, orvo::field::KeyLink);
        return true;
    });
    tool.Perform(false);
    return orvo::recordCount(tool.result) > 0;
}

void OrvoMenu::pasteMenuItemToDB(const QString& desck, const QString& parent, const QString& key,
                                 const QString& caption, const CMDArray& source,
                                 ScratchTable& target, const QMap<QString, QString>& keyMap) {
    const MDRData* record = orvo::seekKey(source, key);
    if (!record || holds(target, newKeyOf(keyMap, key)))
        return;
    orvo::RowWriter row = target.add(MDX_INSERT);
    row.text(orvo::field::KeyLink, newKeyOf(keyMap, key));
    if (caption.isNull()) {
        if (orvo::isNull(record, orvo::field::parent))
            row.null(orvo::field::parent);
        else
            row.text(orvo::field::parent,
                     newKeyOf(keyMap, orvo::textOf(record, orvo::field::parent)));
        copyFields(row, record, Copied::Place, orvo::editor::ItemRows);
    } else {
        row.text(orvo::field::parent, parent)
            .text(orvo::field::caption, caption)
            .integer(orvo::field::order_, getLastMenuOrder(parent));
    }
    copyFields(row, record, Copied::Value, orvo::editor::ItemRows);
    row.text(orvo::field::FolderKey, desck);
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
    row.text(orvo::field::KeyLink, newKeyOf(keyMap, key));
    if (caption.isNull()) {
        // A folder below a folder goes out with its caption in `parent` and without a caption of
        // its own. That is how it is to be, odd as it looks.
        if (orvo::isNull(record, orvo::field::caption))
            row.null(orvo::field::parent);
        else
            row.text(orvo::field::parent, orvo::textOf(record, orvo::field::caption));
        row.copy(orvo::field::order_, record);
    } else {
        row.textOrNull(orvo::field::parent, parent)
            .text(orvo::field::caption, caption)
            .integer(orvo::field::order_, getLastMenuOrder(parent));
    }
    copyFields(row, record, Copied::Value, orvo::editor::FolderRows);
    row.text(orvo::field::FolderKey, desck);
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
        else if (orvo::seekKey(m_tabResource, orvo::textOf(record, orvo::field::MenuResourceKey)))
            pasteMenuItemToDB(desck, parent, element.key, given, source, target, keyMap);
        return true;
    });
}

void OrvoMenu::deleteAfterCutFromMenu(const CMDArray& source, const QStringList& keys) {
    ScratchTable out(*m_app->m_session, orvo::table::Menu);
    if (!out.fetch())
        return;
    for (const QString& key : keys) {
        const MDRData* record = orvo::seekKey(source, key);
        if (!record)
            continue;
        if (isFolderRecord(record))
            addMenuFolderToCut(key, source, out);
        else if (!holds(out, key))
            out.add(MDX_DELETE).text(orvo::field::KeyLink, key);
    }
    out.send();
}

void OrvoMenu::addMenuFolderToCut(const QString& key, const CMDArray& source,
                                  ScratchTable& target) {
    // By the packed table: the source may belong to another desktop than the open one.
    walkElements(source, key, [&](const Element& element) {
        if (holds(target, element.key))
            return false;
        target.add(MDX_DELETE).text(orvo::field::KeyLink, element.key);
        return true;
    });
}
