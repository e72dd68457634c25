// What a notification does: the table first, then the tree. Own writes come back here like anybody
// else's, and only here do they take effect.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "menu/Columns.h"

#include <QAction>
#include <QScopedValueRollback>
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

bool OrvoMenu::MessageData(MDXCliParam* prm) {
    // A module whose start failed has neither tables nor trees to keep in step.
    if (!m_desckModel || !m_menuModel)
        return true;
    const orvo::Notification change(prm);
    if (!change.isTableEvent())
        return true;
    const bool folder = change.isFor("MenuFolder");
    const bool element = change.isFor("Menu");
    switch (change.action()) {
    case OrvoEventUpdate:
        if (folder)
            desckUpdated(change);
        else if (element)
            elementUpdated(change);
        break;
    case OrvoEventDelete:
        if (folder)
            orvo::removeRecord(change, m_tabFolder, m_ui->tvDesck, desckRow(change.key()));
        else if (element)
            elementDeleted(change);
        break;
    case OrvoEventInsert:
        if (folder)
            desckInserted(change);
        else if (element)
            elementInserted(change);
        else if (change.isFor("MenuResource"))
            orvo::createAndMerge(change.event(), &m_tabResource);
        break;
    default:
        break;
    }
    return true;
}

QModelIndex OrvoMenu::elementRow(const QString& key) const {
    // The model answers an empty key with the root row, and with it the whole menu would go.
    return key.isEmpty() ? QModelIndex() : m_menuModel->findIndexByKey(key);
}

QModelIndex OrvoMenu::recordRow(const QString& key) const {
    return orvo::sameText(key, QString::fromLatin1(menuRootKey)) ? QModelIndex() : elementRow(key);
}

QModelIndex OrvoMenu::desckRow(const QString& key) const {
    return orvo::sameText(key, QString::fromLatin1(orvo::menu::desckRootKey))
               ? QModelIndex()
               : m_desckModel->findIndexByKey(key);
}

void OrvoMenu::desckUpdated(const orvo::Notification& change) {
    MDRData* record = orvo::editAndMerge(change.event(), &m_tabFolder);
    const QModelIndex row = desckRow(change.key());
    if (record && row.isValid())
        showDesck(change.key(), record, row);
}

void OrvoMenu::desckInserted(const orvo::Notification& change) {
    MDRData* record = orvo::createAndMerge(change.event(), &m_tabFolder);
    if (!record)
        return;
    const QString key = change.key();
    QModelIndex row = desckRow(key);
    if (!row.isValid()) {
        // Somebody else's row. Without a parent key it has no place in this tree until the next
        // start.
        const QString parentKey = orvo::textOf(record, "ParentKey");
        const int32_t position = getDesckElementPosition(key, parentKey);
        const QModelIndex parent = m_desckModel->findIndexByKey(parentKey);
        if (position == -1 || !parent.isValid() || !m_desckModel->insertRows(position, 1, parent))
            return;
        row = m_desckModel->index(position, 0, parent);
    }
    showDesck(key, record, row);
}

void OrvoMenu::showDesck(const QString& key, MDRData* record, const QModelIndex& row) {
    const int32_t position = getDesckElementPosition(key, orvo::textOf(record, "ParentKey"));
    if (position == -1)
        return;
    // A row that moves leaves those below it behind: an edit there is saved first.
    if (m_desckEdit.isOpen() && position != row.row() && standsBelow(m_editDesckIndex, row))
        finishEdit();
    updateNewDesckNode(record, position, row);
    orvo::makeCurrentAnew(m_ui->tvDesck, m_desckModel->findIndexByKey(key));
}

void OrvoMenu::elementUpdated(const orvo::Notification& change) {
    MDRData* record = orvo::editAndMerge(change.event(), &m_tabMenu);
    const QString key = change.key();
    const QModelIndex row = recordRow(key);
    if (!record || !row.isValid())
        return;
    const QModelIndex parent = row.parent();
    const int number = row.row();
    const QString newParent = orvo::textOf(record, "parent");
    const QString oldParent = row.siblingAtColumn(MenuColumn::ParentKey).data().toString();
    const int32_t position = getMenuElementPosition(key, newParent);
    loadMenuRow(parent, number, record);
    m_elementEdit.merge(*m_menuModel, row, record, change);
    if (!orvo::sameText(newParent, oldParent)) {
        const QModelIndex target = m_menuModel->findIndexByKey(
            newParent.isEmpty() ? QString::fromLatin1(menuRootKey) : newParent);
        // Without a row for the new parent the element waits where it stands.
        if (!target.isValid())
            return;
        // An edit is saved in the new place: from the one that it leaves it would undo the move.
        const bool edited = m_elementEdit.changes(key);
        moveElement(row, position, target);
        if (edited)
            finishEdit();
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
    orvo::makeCurrentAnew(m_ui->tvMenu, current);
}

void OrvoMenu::elementInserted(const orvo::Notification& change) {
    MDRData* record = orvo::createAndMerge(change.event(), &m_tabMenu);
    if (!record)
        return;
    if (!orvo::holdsText(record, "FolderKey", openDesckKey())) {
        // The table holds the open desktop only.
        m_tabMenu.RecDel(record);
        return;
    }
    const QString key = change.key();
    const QModelIndex own = recordRow(key);
    if (own.isValid()) {
        loadMenuRow(own.parent(), own.row(), record);
        return;
    }
    const QString parentKey = orvo::textOf(record, "parent");
    const int32_t position = getMenuElementPosition(key, parentKey);
    const QModelIndex parent = m_menuModel->findIndexByKey(parentKey);
    if (position < 0 || !parent.isValid() || !m_menuModel->insertRows(position, 1, parent))
        return;
    loadMenuRow(parent, position, record);
    m_ui->tvMenu->setCurrentIndex(m_menuModel->index(position, 0, parent));
}

void OrvoMenu::moveElement(const QModelIndex& row, int32_t position, const QModelIndex& target) {
    QTreeView* view = m_ui->tvMenu;
    const bool hadCurrent = view->currentIndex().isValid();
    const QScopedValueRollback<bool> moving(m_movesRows, true);
    m_menuModel->moveItem(row.row(), position, row.parent(), target);
    // A row moves as a copy, and a view forgets a current row below the one that goes.
    if (hadCurrent && !view->currentIndex().isValid())
        view->setCurrentIndex(elementRow(m_currentMenuKey));
}

void OrvoMenu::elementDeleted(const orvo::Notification& change) {
    orvo::removeRecord(change, m_tabMenu, m_ui->tvMenu, recordRow(change.key()));
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
