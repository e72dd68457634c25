// Adding, renaming, deleting and copying desktops and their folders. New rows start as placeholders
// and are written on save; deleting and pasting write at once.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/ClipboardRows.h"
#include "frame/CommonFunctions.h"
#include "frame/FolderWalk.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "menu/Columns.h"
#include "menu/ElementWalk.h"

#include <QClipboard>
#include <QItemSelectionModel>
#include <QMap>
#include <QToolButton>

using orvo::KeyValues;
using orvo::ScratchTable;
using orvo::editor::Copied;
using orvo::editor::RecordField;
using orvo::menu::DesckColumn;
using orvo::menu::desckMime;
using orvo::menu::desckRootKey;
using orvo::menu::desktopClass;
using orvo::menu::folderClass;
using orvo::menu::newKeyOf;

namespace {

/// The record of a pasted row; gives its new key.
QString addPasted(const orvo::editor::RecordFields& fields, const QString& parent,
                  const MDRData* source, const QString& name, const char* orderClass,
                  ScratchTable& desktops) {
    QString key = QString::fromLatin1(GenGuid32());
    orvo::RowWriter row = desktops.add(MDX_INSERT);
    row.text(orvo::field::KeyLink, key);
    if (orvo::sameText(parent, QString::fromLatin1(desckRootKey)))
        row.null(orvo::field::ParentKey);
    else
        row.text(orvo::field::ParentKey, parent);
    row.text(orvo::field::order_, QString::fromLatin1(orderClass));
    for (const RecordField& field : fields)
        if (field.copied == Copied::Value)
            row.copy(field.name, source);
    if (name.isNull())
        row.copy(orvo::field::caption, source);
    else
        row.text(orvo::field::caption, name);
    return key;
}

} // namespace

void OrvoMenu::on_actAddDescktop_triggered() {
    addDesckRow(false);
}

void OrvoMenu::on_actAddFoldertvDesck_triggered() {
    addDesckRow(true);
}

void OrvoMenu::addDesckRow(bool isFolder) {
    const QPersistentModelIndex current(m_ui->tvDesck->currentIndex().siblingAtColumn(0));
    if (!current.isValid())
        return;
    if (!finishEdit())
        return;
    const QModelIndex parent =
        m_desckModel->isItemFolder(current) ? QModelIndex(current) : current.parent();
    const QString parentKey = m_desckModel->getItemKeyLink(parent);
    // Below the top a new folder stands before the desktops; all else goes to the end.
    int row = m_desckModel->rowCount(parent);
    if (isFolder && m_desckModel->getItemLevel(parent) != 0) {
        const int firstDesktop = m_desckModel->getFirstDesckElement(parent);
        if (firstDesktop >= 0)
            row = firstDesktop;
    }
    if (!m_desckModel->insertRows(row, 1, parent))
        return;
    const QString key = QString::fromLatin1(GenGuid32());
    const QModelIndex added = m_desckModel->index(row, 0, parent);
    orvo::setRow(*m_desckModel, added,
                 {{DesckColumn::KeyLink, key},
                  {DesckColumn::IsFolder, isFolder},
                  {DesckColumn::Name, isFolder ? tr("новая папка1") : tr("новый рабочий стол")},
                  {DesckColumn::ParentKey, parentKey},
                  {DesckColumn::Order, QString::fromLatin1(isFolder ? folderClass : desktopClass)},
                  {DesckColumn::IsNew, true}});
    m_desckEdit.beginNew(added, key);
    enableEditButtons(true);
    m_ui->tvDesck->scrollTo(added);
    m_ui->tvDesck->selectionModel()->select(added, QItemSelectionModel::ClearAndSelect);
    orvo::makeCurrent(m_ui->tvDesck, added);
    // Only now: becoming current is a trigger too, and no editor is to open by itself.
    m_ui->tvDesck->setEditTriggers(QAbstractItemView::AllEditTriggers);
}

void OrvoMenu::on_actChangeDescktopOrFolder_triggered() {
    const QPersistentModelIndex current(m_ui->tvDesck->currentIndex());
    if (!current.isValid())
        return;
    if (!finishEdit())
        return;
    m_desckEdit.begin(current, m_desckModel->getItemKeyLink(current));
    enableEditButtons(true);
    setDesckActionsDisabled();
    m_ui->tvDesck->setEditTriggers(QAbstractItemView::AllEditTriggers);
    m_ui->tvDesck->edit(current);
}

void OrvoMenu::on_actDeleteFromtvDesck_triggered() {
    const QModelIndex current = m_ui->tvDesck->currentIndex();
    if (!current.isValid())
        return;
    if (m_desckEdit.isNew() && current == m_editDesckIndex) {
        on_cancel_pressed(); // never saved, so there is nothing to delete
        return;
    }
    if (m_desckModel->isItemFolder(current)) {
        if (refusesFullFolder(current))
            return;
        deleteRecords(orvo::table::MenuFolder, {m_desckModel->getItemKeyLink(current)});
        return;
    }
    const QString name = current.siblingAtColumn(DesckColumn::Name).data().toString();
    ask({.text = tr("Вы действительно хотите удалить рабочий стол \"") + name + tr("\"?"),
         .slot = SLOT(removeDesckTopMessage(QAbstractButton*)),
         .table = orvo::table::MenuFolder,
         .keys = {m_currentDesckKey}});
}

bool OrvoMenu::refusesFullFolder(const QModelIndex& folder) {
    // Others may have put something into it that this window does not show yet.
    CMDArray stored;
    QString error;
    if (!GetTableRecords(m_app->m_session, orvo::table::MenuFolder, stored, &error))
        return true;
    const QString key = m_desckModel->getItemKeyLink(folder);
    bool holds = m_desckModel->hasChildren(folder);
    orvo::setKeys(stored, {orvo::field::ParentKey});
    orvo::walkGroup(stored, 1, KeyValues().text(key), [&](const MDRData* record) {
        holds = holds || orvo::holdsText(record, orvo::field::ParentKey, key);
        return false;
    });
    if (holds)
        refuse(tr("Папка \"%1\" не удалена: в ней есть рабочие столы или папки.")
                   .arg(folder.siblingAtColumn(DesckColumn::Name).data().toString()));
    return holds;
}

void OrvoMenu::removeDesckTopMessage(QAbstractButton* button) {
    if (!answeredYes(button))
        return;
    // A notification may have made a folder current while the question stood, or taken the row.
    const QModelIndex desktop = m_desckModel->findIndexByKey(m_currentDesckKey);
    if (desktop.isValid() && m_desckModel->isItemFolder(desktop))
        return;
    ScratchTable elements(*m_app->m_session, orvo::table::Menu);
    ScratchTable desktops(*m_app->m_session, orvo::table::MenuFolder);
    if (!elements.fetch() || !desktops.fetch())
        return;
    // The table has its elements, unless it could not be opened when it became current.
    CMDArray fetched;
    const bool isOpen = orvo::sameText(m_openMenu.desckKey(), m_currentDesckKey);
    if (!isOpen)
        fetched.Attach(m_openMenu.request(m_currentDesckKey));
    if (!isOpen && !fetched.array)
        return;
    if (!isOpen)
        orvo::setKeys(fetched, {});
    orvo::walkAll(isOpen ? m_tabMenu : fetched, 0, [&](const MDRData* record) {
        if (orvo::holdsText(record, orvo::field::FolderKey, m_currentDesckKey))
            elements.add(MDX_DELETE)
                .text(orvo::field::KeyLink, orvo::textOf(record, orvo::field::KeyLink));
        return true;
    });
    desktops.add(MDX_DELETE).text(orvo::field::KeyLink, m_currentDesckKey);
    clearMenuModel();
    m_currentMenuKey.clear();
    // What was being edited there is gone, and the view tells nobody.
    if (m_elementEdit.isOpen())
        finishEdit();
    // The elements leave the server before the desktop that they belong to.
    elements.send();
    desktops.send();
}

void OrvoMenu::on_actCopyDescktopOrFolder_triggered() {
    if (!m_clipboard || !m_desckModel || !m_desckModel->findIndexByKey(m_currentDesckKey).isValid())
        return;
    orvo::offerOnClipboard(*m_clipboard, desckMime, orvo::toRecord(m_currentDesckKey));
}

void OrvoMenu::on_actPasteDescktopOrFolder_triggered() {
    if (!m_desckModel)
        return;
    const QString source =
        orvo::fromRecord(orvo::clipboardBytes(m_clipboard, desckMime).constData());
    const QModelIndex target = m_desckModel->findIndexByKey(m_currentDesckKey);
    if (!target.isValid())
        return;
    ScratchTable elements(*m_app->m_session, orvo::table::Menu);
    ScratchTable desktops(*m_app->m_session, orvo::table::MenuFolder);
    if (!elements.fetch() || !desktops.fetch())
        return;
    const QModelIndex sourceRow = m_desckModel->findIndexByKey(source);
    if (!sourceRow.isValid())
        return;
    const QString name = sourceRow.siblingAtColumn(DesckColumn::Name).data().toString();
    const QString parentKey = m_desckModel->getItemKeyLink(target);
    const QString newName = name + tr("_копия");
    if (m_desckModel->isItemFolder(sourceRow))
        pasteDesckFolderToDB(parentKey, source, newName, elements, desktops);
    else
        pasteDesckItemToDB(parentKey, source, newName, elements, desktops);
    // The desktops exist on the server before their elements.
    desktops.send();
    elements.send();
}

void OrvoMenu::pasteDesckFolderToDB(const QString& parent, const QString& source,
                                    const QString& name, ScratchTable& elements,
                                    ScratchTable& desktops) {
    struct Item {
        QString parent, source, name;
        bool isFolder = true;
    };
    orvo::walkFolders(
        Item{parent, source, name}, [](const Item& item) { return item.source; },
        [&](const Item& item) -> std::vector<Item> {
            if (!item.isFolder) {
                pasteDesckItemToDB(item.parent, item.source, item.name, elements, desktops);
                return {};
            }
            const MDRData* record = orvo::seekKey(m_tabFolder, item.source);
            if (!record)
                return {};
            const QString key =
                addPasted(m_desckFields, item.parent, record, item.name, folderClass, desktops);
            std::vector<Item> below;
            orvo::walkGroup(
                m_tabFolder, 3, KeyValues().text(item.source), [&](const MDRData* child) {
                    if (!orvo::holdsText(child, orvo::field::ParentKey, item.source))
                        return false;
                    // Only the top row of a paste has a name of its own.
                    below.push_back({key, orvo::textOf(child, orvo::field::KeyLink), QString(),
                                     orvo::flagOf(child, orvo::field::isFolder)});
                    return true;
                });
            return below;
        });
}

void OrvoMenu::pasteDesckItemToDB(const QString& parent, const QString& source, const QString& name,
                                  ScratchTable& elements, ScratchTable& desktops) {
    const MDRData* record = orvo::seekKey(m_tabFolder, source);
    if (!record)
        return;
    const QString desktop = addPasted(m_desckFields, parent, record, name, desktopClass, desktops);

    // From the server: m_tabMenu has the open desktop only. Without an answer the desktop is pasted
    // without elements.
    CMDArray menu;
    menu.Attach(m_openMenu.request(source));
    orvo::setKeys(menu);
    const QMap<QString, QString> newKeys = orvo::menu::newKeysFor(menu);
    orvo::walkAll(menu, 0, [&](const MDRData* element) {
        const QString oldParent = orvo::textOf(element, orvo::field::parent);
        orvo::RowWriter row = elements.add(MDX_INSERT);
        row.text(orvo::field::KeyLink,
                 newKeyOf(newKeys, orvo::textOf(element, orvo::field::KeyLink)));
        if (oldParent.isEmpty())
            row.null(orvo::field::parent);
        else
            row.text(orvo::field::parent, newKeyOf(newKeys, oldParent));
        for (const RecordField& field : m_elementFields)
            if (field.copied != Copied::Never)
                row.copy(field.name, element);
        row.text(orvo::field::FolderKey, desktop);
        return true;
    });
}
