// What a notification does: the table first, then the tree. Own writes come back here like anybody
// else's, and only here do they take effect.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "menu/DesckRows.h"

#include <QAction>
#include <QTreeView>

using orvo::menu::MenuColumn;
using orvo::menu::menuRootKey;

namespace {

bool standsBelow(const QModelIndex& row, const QModelIndex& above) {
    for (QModelIndex up = row.parent(); up.isValid(); up = up.parent())
        if (up == above)
            return true;
    return false;
}

} // namespace

void OrvoMenu::followTables() {
    const auto to = [this](void (OrvoMenu::*apply)(const orvo::Notification&)) {
        return [this, apply](const orvo::Notification& change) { (this->*apply)(change); };
    };
    const auto create = [](CMDArray& table) {
        return [&table](const orvo::Notification& change) {
            orvo::createAndMerge(change.event(), &table);
        };
    };
    const auto edit = [](CMDArray& table) {
        return [&table](const orvo::Notification& change) {
            orvo::editAndMerge(change.event(), &table);
        };
    };
    follow({{orvo::table::MenuFolder, to(&OrvoMenu::desckInserted), to(&OrvoMenu::desckUpdated),
             [this](const orvo::Notification& change) {
                 orvo::removeRecord(change, m_tabFolder, m_ui->tvDesck,
                                    orvo::menu::desckRow(*m_desckModel, change.key()));
             }},
            {orvo::table::Menu, to(&OrvoMenu::elementInserted), to(&OrvoMenu::elementUpdated),
             to(&OrvoMenu::elementDeleted)},
            // The table keeps what is deleted; it is no longer to be chosen all the same.
            {orvo::table::MenuResource,
             [this](const orvo::Notification& change) {
                 orvo::createAndMerge(change.event(), &m_tabResource);
                 m_newElements.noteStored(change.key());
             },
             {},
             [this](const orvo::Notification& change) { m_newElements.noteDeleted(change.key()); }},
            {orvo::table::MenuResourceFolder, create(m_tabResFolder), edit(m_tabResFolder),
             [this](const orvo::Notification& change) {
                 // The picker lists by the folders of resources; no tree shows them.
                 if (MDRData* record = orvo::findRecord(change.event(), &m_tabResFolder))
                     m_tabResFolder.RecDel(record);
             }}},
           {m_ui->tvDesck, m_ui->tvMenu, m_ui->tvProp});
}

void OrvoMenu::desckUpdated(const orvo::Notification& change) {
    MDRData* record = orvo::editAndMerge(change.event(), &m_tabFolder);
    const QModelIndex row = orvo::menu::desckRow(*m_desckModel, change.key());
    if (record && row.isValid())
        showDesck(change, record, row);
}

void OrvoMenu::desckInserted(const orvo::Notification& change) {
    MDRData* record = orvo::createAndMerge(change.event(), &m_tabFolder);
    if (!record)
        return;
    const QString key = change.key();
    QModelIndex row = orvo::menu::desckRow(*m_desckModel, key);
    if (!row.isValid()) {
        // Somebody else's row. Without a parent key it has no place in this tree until the next
        // start.
        const QString parentKey = orvo::textOf(record, orvo::field::ParentKey);
        const int32_t position = getDesckElementPosition(key, parentKey);
        const QModelIndex parent = m_desckModel->findIndexByKey(parentKey);
        if (position == -1 || !parent.isValid() || !m_desckModel->insertRows(position, 1, parent))
            return;
        row = m_desckModel->index(position, 0, parent);
    }
    showDesck(change, record, row);
}

void OrvoMenu::showDesck(const orvo::Notification& change, MDRData* record,
                         const QModelIndex& row) {
    const QString key = change.key();
    const int32_t position =
        getDesckElementPosition(key, orvo::textOf(record, orvo::field::ParentKey));
    if (position == -1)
        return;
    // A row that moves is made again, with those below it: an edit there is saved first.
    const QModelIndex edited = m_editDesckIndex.sibling(m_editDesckIndex.row(), 0);
    if (m_desckEdit.isOpen() && position != row.row() &&
        (edited == row || standsBelow(edited, row)))
        finishEdit();
    updateNewDesckNode(record, position, row);
    const QModelIndex shown = m_desckModel->findIndexByKey(key);
    const auto replaced = m_desckEdit.merge(*m_desckModel, shown, change, record);
    if (!replaced.empty())
        tellReplaced(
            (m_desckModel->isItemFolder(shown) ? tr("папка «%1»") : tr("рабочий стол «%1»"))
                .arg(orvo::textOf(record, orvo::field::caption)),
            m_desckFields, replaced);
    if (mayMoveCurrent())
        orvo::reselectRow(m_ui->tvDesck, shown);
}

void OrvoMenu::mergeElement(const orvo::Notification& change, const MDRData* record,
                            const QModelIndex& row) {
    const auto replaced = m_elementEdit.merge(*m_menuModel, row, change, record);
    if (!replaced.empty())
        tellReplaced(tr("элемент «%1»").arg(orvo::textOf(record, orvo::field::caption)),
                     m_elementFields, replaced);
}

void OrvoMenu::elementUpdated(const orvo::Notification& change) {
    MDRData* record = orvo::editAndMerge(change.event(), &m_tabMenu);
    const QString key = change.key();
    const QModelIndex row = m_openMenu.recordRow(key);
    if (!record || !row.isValid())
        return;
    const QModelIndex parent = row.parent();
    const int number = row.row();
    const QString newParent = orvo::textOf(record, orvo::field::parent);
    const QString oldParent = row.siblingAtColumn(MenuColumn::ParentKey).data().toString();
    const int32_t position = getMenuElementPosition(key, newParent);
    loadMenuRow(parent, number, record);
    mergeElement(change, record, row);
    if (!orvo::sameText(newParent, oldParent)) {
        const QModelIndex target = m_menuModel->findIndexByKey(
            newParent.isEmpty() ? QString::fromLatin1(menuRootKey) : newParent);
        // Without a row for the new parent the element waits where it stands.
        if (!target.isValid())
            return;
        m_moves.move(*m_ui->tvMenu, row, position, target);
        limitMoves();
        return;
    }
    // The operator's own row stays current, with a fresh passport, also if it is the one that
    // moves.
    const QString currentKey = m_currentMenuKey;
    if (position != number && !m_menuModel->moveSiblingItem(number, position, parent))
        return;
    const QModelIndex current = m_menuModel->findIndexByKey(currentKey);
    if (!current.isValid())
        return;
    // All of the view: to find the place of one row it would lay out every row at once.
    m_ui->tvMenu->viewport()->update();
    orvo::reselectRow(m_ui->tvMenu, current);
}

void OrvoMenu::elementInserted(const orvo::Notification& change) {
    MDRData* record = orvo::createAndMerge(change.event(), &m_tabMenu);
    if (!record)
        return;
    if (!orvo::holdsText(record, orvo::field::FolderKey, m_openMenu.desckKey())) {
        // The table holds the open desktop only.
        m_tabMenu.RecDel(record);
        return;
    }
    const QString key = change.key();
    const QModelIndex own = m_openMenu.recordRow(key);
    if (own.isValid()) {
        loadMenuRow(own.parent(), own.row(), record);
        // What was typed since the save is not in the record.
        mergeElement(change, record, own);
        return;
    }
    const QString parentKey = orvo::textOf(record, orvo::field::parent);
    const int32_t position = getMenuElementPosition(key, parentKey);
    const QModelIndex parent = m_menuModel->findIndexByKey(parentKey);
    if (position < 0 || !parent.isValid() || !m_menuModel->insertRows(position, 1, parent))
        return;
    loadMenuRow(parent, position, record);
    m_moves.gather(*m_ui->tvMenu, key);
    if (mayMoveCurrent())
        orvo::makeCurrent(m_ui->tvMenu, m_openMenu.elementRow(key));
}

void OrvoMenu::elementDeleted(const orvo::Notification& change) {
    orvo::removeRecord(change, m_tabMenu, m_ui->tvMenu, m_openMenu.recordRow(change.key()));
    limitMoves();
}

void OrvoMenu::limitMoves() {
    const QModelIndex current = m_ui->tvMenu->currentIndex().siblingAtColumn(0);
    if (!current.isValid())
        return;
    if (m_menuModel->itemIsFirstSibling(current))
        m_ui->actMoveUp->setEnabled(false);
    if (m_menuModel->itemIsLastSibling(current))
        m_ui->actMoveDown->setEnabled(false);
}
