#include "menu/MenuClipboard.h"

#include "editor/EditorWindow.h"
#include "frame/ClipboardRows.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "menu/Columns.h"
#include "menu/ElementWalk.h"
#include "menu/OpenMenu.h"

#include <QClipboard>
#include <QMimeData>

#include <algorithm>
#include <cassert>

namespace orvo::menu {

using editor::Copied;

namespace {

/// Whether the record of a key stands in a scratch table already. Only a payload from elsewhere
/// names an element twice, or a folder and what lies below it; each goes out once, and a long list
/// of folders within each other costs no more than their records.
bool holds(const ScratchTable& table, const QString& key) {
    return seekKey(table.table(), key) != nullptr;
}

} // namespace

MenuClipboard::MenuClipboard(editor::EditorWindow& window, const OpenMenu& menu,
                             QClipboard* const& clipboard)
    : m_window(window)
    , m_menu(menu)
    , m_clipboard(clipboard) {}

void MenuClipboard::put(MenuPayload::Mode mode, const QModelIndexList& rows) {
    if (!m_clipboard || !m_menu.hasTree())
        return;
    ScratchTable copies(*m_window.m_app->m_session, table::Menu);
    if (!copies.fetch())
        return;
    setKeys(copies.table(), keylist::Menu);
    QStringList keys;
    for (const QModelIndex& row : rows) {
        const QString key = m_menu.tree().getItemKeyLink(row);
        if (!ClipboardRows::canName(key))
            continue;
        keys.append(key);
        if (m_menu.tree().itemIsFolder(row))
            copyFolder(key, copies);
        else
            copyElement(key, copies);
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
    check();
    offerOnClipboard(*m_clipboard, menuMime, bytes);
}

bool MenuClipboard::ownCutIsGood() const {
    const QMimeData* offered = m_clipboard ? m_clipboard->mimeData() : nullptr;
    return !m_ownCut.isEmpty() && (!offered || offered->formats().isEmpty());
}

QByteArray MenuClipboard::toPaste() const {
    return ownCutIsGood() ? m_ownCut : clipboardBytes(m_clipboard, menuMime);
}

void MenuClipboard::copyElement(const QString& key, ScratchTable& copies) const {
    if (const MDRData* record = seekKey(m_menu.records(), key))
        copies.add().copyAll(record);
}

void MenuClipboard::copyFolder(const QString& key, ScratchTable& copies) const {
    walkElements(m_menu.records(), key, [&](const Element& element) {
        copyElement(element.key, copies);
        return true;
    });
}

void MenuClipboard::noteChange() {
    const QByteArray bytes = clipboardBytes(m_clipboard, menuMime);
    if (!ownCutIsGood() && bytes != m_ownCut)
        m_ownCut.clear();
    if (MenuPayload::mode(bytes) == MenuPayload::Copy)
        return;
    if (!m_cutPending)
        m_clipboard->clear(QClipboard::Clipboard);
    m_cutPending = false;
    check();
}

void MenuClipboard::paste(const QString& target) {
    if (!m_clipboard || !m_menu.hasTree())
        return;
    ScratchTable out(*m_window.m_app->m_session, table::Menu);
    if (!out.fetch())
        return;
    MenuPayload payload;
    if (!payload.read(toPaste()))
        return;
    const QModelIndex row = m_menu.tree().findIndexByKey(target);
    // Nothing lies below an element: its folder takes what is pasted on it.
    const QModelIndex folder = m_menu.tree().itemIsFolder(row) ? row : row.parent();
    if (!folder.isValid())
        return;
    const CMDArray& source = payload.table;
    if (payload.cut && (refusesCutInto(row, payload) || refusesOldCut(payload)))
        return;
    const QMap<QString, QString> newKeys = newKeysFor(source);
    const QString folderKey = m_menu.tree().getItemKeyLink(folder);
    const QString parent =
        sameText(folderKey, QString::fromLatin1(menuRootKey)) ? QString() : folderKey;
    // The menu that is shown need not be the current desktop's.
    const Paste paste{m_menu.desckKey(), source, out, newKeys};
    for (const QString& key : payload.keys) {
        const MDRData* record = seekKey(source, key);
        if (!record)
            continue;
        // A caption that is not the null string marks a chosen element.
        QString caption = textOf(record, field::caption);
        if (caption.isNull())
            caption = QStringLiteral("");
        if (isFolderRecord(record))
            pasteFolder(paste, parent, key, caption);
        else if (seekKey(m_menu.resources(), textOf(record, field::MenuResourceKey)))
            pasteElement(paste, parent, key, caption);
    }
    out.send();
    if (payload.cut)
        deleteCut(source, payload.keys);
}

bool MenuClipboard::refusesCutInto(const QModelIndex& target, const MenuPayload& payload) const {
    // The copies would go with what they lie below.
    QModelIndex cut;
    for (QModelIndex row = target; row.isValid(); row = row.parent())
        if (seekKey(payload.table, m_menu.tree().getItemKeyLink(row)))
            cut = row;
    if (!cut.isValid())
        return false;
    const QString name = cut.siblingAtColumn(MenuColumn::Caption).data().toString();
    m_window.refuse(tr("Вырезанное нельзя вставить в само себя: \"%1\".").arg(name));
    return true;
}

/// A cut writes the elements as they were then and deletes them with nothing but what was cut: what
/// others have done to them since would go without a word.
bool MenuClipboard::refusesOldCut(const MenuPayload& payload) const {
    const MDRData* first = MDARec(payload.table.array, 0, 0);
    CMDArray now;
    now.Attach(m_menu.request(textOf(first, field::FolderKey)));
    if (!now.array)
        return true; // the session has told why
    setKeys(now, keylist::Menu);
    QStringList gone, changed, added;
    const auto name = [](const MDRData* record) {
        return QStringLiteral("\"%1\"").arg(textOf(record, field::caption));
    };
    walkAll(payload.table, 0, [&](const MDRData* record) {
        const QString key = textOf(record, field::KeyLink);
        const MDRData* stored = seekKey(now, key);
        if (!stored)
            gone << name(record);
        else if (isChanged(record, stored, payload.keys.contains(key, Qt::CaseInsensitive)))
            changed << name(stored);
        walkGroup(now, 1, KeyValues().text(key), [&](const MDRData* below) {
            if (!holdsText(below, field::parent, key))
                return false;
            if (!seekKey(payload.table, textOf(below, field::KeyLink)))
                added << name(below);
            return true;
        });
        return true;
    });
    // Pasted before, nothing of it is left, and a paste makes copies.
    if (gone.size() == recordCount(payload.table) && !isStored(payload.table))
        gone.clear();
    QStringList reasons;
    const auto tell = [&](const QString& what, const QStringList& names) {
        if (!names.isEmpty())
            reasons << what.arg(nameLines(names).replace(QLatin1Char('\n'), QLatin1String(", ")));
    };
    tell(tr("изменено: %1"), changed);
    tell(tr("внутри появилось: %1"), added);
    tell(tr("удалено или перемещено: %1"), gone);
    if (reasons.isEmpty())
        return false;
    m_window.refuse(tr("Не вставлено. После вырезания %1. Посмотрите и вырежьте заново.")
                        .arg(reasons.join(QStringLiteral("; "))));
    return true;
}

bool MenuClipboard::isChanged(const MDRData* cut, const MDRData* stored, bool isChosen) const {
    // A chosen element gets another place among its siblings in any case.
    return std::any_of(
        m_menu.fields().begin(), m_menu.fields().end(), [&](const editor::RecordField& field) {
            const bool place = field.column == MenuColumn::Order;
            return field.name && !(isChosen && place) && field.read(cut) != field.read(stored);
        });
}

/// Whether any of the records is stored, in whatever menu.
bool MenuClipboard::isStored(const CMDArray& records) const {
    CToolRecByKeys tool(&m_window);
    tool.tableName = table::Menu;
    walkAll(records, 0, [&](const MDRData* record) {
        tool.keys << textOf(record, field::KeyLink);
        return true;
    });
    tool.Perform(false);
    return recordCount(tool.result) > 0;
}

void MenuClipboard::pasteElement(const Paste& paste, const QString& parent, const QString& key,
                                 const QString& caption) const {
    const MDRData* record = seekKey(paste.source, key);
    if (!record || holds(paste.out, newKeyOf(paste.newKeys, key)))
        return;
    RowWriter row = paste.out.add(MDX_INSERT);
    row.text(field::KeyLink, newKeyOf(paste.newKeys, key));
    if (caption.isNull()) {
        if (isNull(record, field::parent))
            row.null(field::parent);
        else
            row.text(field::parent, newKeyOf(paste.newKeys, textOf(record, field::parent)));
        copyFields(row, record, Copied::Place, editor::ItemRows);
    } else {
        row.text(field::parent, parent)
            .text(field::caption, caption)
            .integer(field::order_, m_menu.lastOrder(parent));
    }
    copyFields(row, record, Copied::Value, editor::ItemRows);
    row.text(field::FolderKey, paste.desck);
}

void MenuClipboard::copyFields(RowWriter& row, const MDRData* source, Copied how,
                               editor::Rows kind) const {
    for (const editor::RecordField& field : m_menu.fields())
        if (field.copied == how && (field.copiedOn & kind) != 0)
            row.copy(field.name, source);
}

void MenuClipboard::pasteFolderRow(const Paste& paste, const QString& parent, const QString& key,
                                   const QString& caption, const MDRData* record) const {
    RowWriter row = paste.out.add(MDX_INSERT);
    row.text(field::KeyLink, newKeyOf(paste.newKeys, key));
    if (caption.isNull()) {
        // A folder below a folder goes out with its caption in `parent` and without a caption of
        // its own. That is how it is to be, odd as it looks.
        if (isNull(record, field::caption))
            row.null(field::parent);
        else
            row.text(field::parent, textOf(record, field::caption));
        row.copy(field::order_, record);
    } else {
        row.textOrNull(field::parent, parent)
            .text(field::caption, caption)
            .integer(field::order_, m_menu.lastOrder(parent));
    }
    copyFields(row, record, Copied::Value, editor::FolderRows);
    row.text(field::FolderKey, paste.desck);
}

void MenuClipboard::pasteFolder(const Paste& paste, const QString& parent, const QString& key,
                                const QString& caption) const {
    walkElements(paste.source, key, [&](const Element& element) {
        const MDRData* record = seekKey(paste.source, element.key);
        if (!record || holds(paste.out, newKeyOf(paste.newKeys, element.key)))
            return false;
        // What comes with its folder has no caption given.
        const QString given = element.isFirst ? caption : QString();
        if (element.isFolder)
            pasteFolderRow(paste, parent, element.key, given, record);
        else if (seekKey(m_menu.resources(), textOf(record, field::MenuResourceKey)))
            pasteElement(paste, parent, element.key, given);
        return true;
    });
}

void MenuClipboard::deleteCut(const CMDArray& source, const QStringList& keys) const {
    ScratchTable out(*m_window.m_app->m_session, table::Menu);
    if (!out.fetch())
        return;
    for (const QString& key : keys) {
        const MDRData* record = seekKey(source, key);
        if (!record)
            continue;
        if (isFolderRecord(record))
            deleteFolder(key, source, out);
        else if (!holds(out, key))
            out.add(MDX_DELETE).text(field::KeyLink, key);
    }
    out.send();
}

void MenuClipboard::deleteFolder(const QString& key, const CMDArray& source,
                                 ScratchTable& out) const {
    // By the packed table: the source may belong to another desktop than the open one.
    walkElements(source, key, [&](const Element& element) {
        if (holds(out, element.key))
            return false;
        out.add(MDX_DELETE).text(field::KeyLink, element.key);
        return true;
    });
}

void MenuClipboard::check() const {
    assert(m_ownCut.isEmpty() || MenuPayload::mode(m_ownCut) == MenuPayload::Cut);
}

} // namespace orvo::menu
