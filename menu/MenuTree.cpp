// The menu of the current desktop. Its order comes from the key "parent;order_" of `Menu`.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/CommonFunctions.h"
#include "frame/FolderWalk.h"
#include "frame/Records.h"
#include "frame/Siblings.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"

#include <limits>

using orvo::KeyValues;
using orvo::menu::MenuColumn;
using orvo::menu::menuRootKey;

void OrvoMenu::clearMenuModel() {
    if (m_menuModel) {
        const int count = m_menuModel->rowCount(QModelIndex());
        if (count > 0)
            m_menuModel->removeRows(0, count, QModelIndex());
    }
    if (m_propModel)
        m_propModel->clearRows();
}

MDArray* OrvoMenu::requestMenu(const QString& desckKey) const {
    const QByteArray sql =
        orvo::toRecord(QStringLiteral("select * from Menu where FolderKey = '%1'").arg(desckKey));
    return m_app->m_session->SqlRequest(sql.constData());
}

QString OrvoMenu::openDesckKey() const {
    return m_openDesckKey.isNull() ? m_currentDesckKey : m_openDesckKey;
}

void OrvoMenu::loadMenuTree(const QString& desckKey) {
    MDArray* fetched = requestMenu(desckKey);
    if (fetched)
        m_openDesckKey = desckKey;
    m_tabMenu.Attach(fetched);
    orvo::setKeys(m_tabMenu, orvo::keylist::Menu);

    MenuTreeModel& model = *m_menuModel;
    if (!model.insertRows(0, 1, QModelIndex()))
        return;
    const QModelIndex root = model.index(0, 0, QModelIndex());
    orvo::setRow(model, root,
                 {{MenuColumn::KeyLink, QString::fromLatin1(menuRootKey)},
                  {MenuColumn::Caption, tr("Меню")}});
    const int32_t position = orvo::seekPosition(m_tabMenu, 1, KeyValues());
    if (position == -1)
        return;
    addMenuTree(root, QString(), position);
    m_ui->tvMenu->expand(root);
}

void OrvoMenu::loadMenuFolder(const QString& folderKey) {
    const QModelIndex folder = m_menuModel->findIndexByKey(folderKey);
    if (folder.isValid())
        addMenuTree(folder, folderKey,
                    orvo::seekPosition(m_tabMenu, 1, KeyValues().text(folderKey)));
}

void OrvoMenu::addMenuTree(const QModelIndex& parent, const QString& key, int32_t position) {
    auto rows = m_menuModel->newRows(parent);
    orvo::walkFolders(
        MenuFolderRow{nullptr, key}, [](const MenuFolderRow& folder) { return folder.key; },
        [&](const MenuFolderRow& folder) {
            const bool isTop = !folder.row && folder.key == key;
            return addMenuRows(
                rows, folder,
                isTop ? position : orvo::seekPosition(m_tabMenu, 1, KeyValues().text(folder.key)));
        });
    m_menuModel->insertFilledRows(m_menuModel->rowCount(parent), std::move(rows), parent);
}

std::vector<OrvoMenu::MenuFolderRow> OrvoMenu::addMenuRows(MenuTreeModel::Batch& rows,
                                                           const MenuFolderRow& folder,
                                                           int32_t position) const {
    std::vector<MenuFolderRow> folders;
    orvo::walkFrom(m_tabMenu, 1, position, [&](const MDRData* record) {
        if (!orvo::holdsText(record, orvo::field::parent, folder.key))
            return false;
        const QVector<QVariant> values = menuValues(record);
        TabRec* row = rows.add(values, folder.row);
        if (orvo::sameText(values[MenuColumn::Type].toString(), convertMenuAttributes(0)))
            folders.push_back({row, values[MenuColumn::KeyLink].toString()});
        return true;
    });
    return folders;
}

QVector<QVariant> OrvoMenu::menuValues(const MDRData* record) const {
    QVector<QVariant> values = m_elementFields.values(record);
    const QString resourceKey = values[MenuColumn::MenuResKey].toString();
    values.replace(MenuColumn::IsNew, false);
    if (resourceKey.isEmpty()) {
        values.replace(MenuColumn::Type, convertMenuAttributes(0));
    } else if (const MDRData* resource = orvo::seekKey(m_tabResource, resourceKey)) {
        values.replace(MenuColumn::Type,
                       convertMenuAttributes(orvo::integerOf(resource, orvo::field::type_)));
        values.replace(MenuColumn::Command, orvo::textOf(resource, orvo::field::name_));
    }
    return values;
}

void OrvoMenu::loadMenuRow(const QModelIndex& parent, int row, MDRData* record) {
    orvo::setRow(*m_menuModel, m_menuModel->index(row, 0, parent), menuValues(record));
}

int32_t OrvoMenu::getMenuElementPosition(const QString& key, const QString& parentKey) const {
    const MDRData* own = orvo::seekKey(m_tabMenu, key);
    KeyValues exact;
    orvo::addField(exact, own, orvo::field::parent);
    orvo::addField(exact, own, orvo::field::order_);
    return orvo::siblingPosition(m_tabMenu, 1, KeyValues().textOrNull(parentKey), key, own, exact,
                                 [&](const MDRData* record) {
                                     return orvo::holdsText(record, orvo::field::parent, parentKey);
                                 });
}

int32_t OrvoMenu::getLastMenuOrder(const QString& parent) const {
    KeyValues end;
    if (parent.isNull())
        end.null();
    else
        end.text(parent);
    end.integer(std::numeric_limits<int32_t>::max());
    const auto isChild = [&](const MDRData* record) {
        return parent.isNull() ? orvo::isNull(record, orvo::field::parent)
                               : orvo::holdsText(record, orvo::field::parent, parent);
    };
    // The key ends in `order_`: the last child stands before the first record behind the group.
    const int32_t behind = orvo::seekPosition(m_tabMenu, 1, end);
    int32_t last = (behind < 0 ? orvo::recordCount(m_tabMenu) : behind) - 1;
    orvo::walkFrom(m_tabMenu, 1, behind, [&](const MDRData* record) {
        const bool child = isChild(record); // of the highest order there is
        last += child ? 1 : 0;
        return child;
    });
    const MDRData* record = last < 0 ? nullptr : MDARec(m_tabMenu.array, 1, last);
    return record && isChild(record) ? orvo::integerOf(record, orvo::field::order_) : 0;
}
