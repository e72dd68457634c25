// What the keys and the client's menu entries do in the panes of the menu editor. A new row, and
// what is pasted, goes into the folder in which the current row stands, if that is none itself.
#include "ui_OrvoMenu.h"

#include "menu/OrvoMenu.h"

#include "frame/Kinds.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"

#include <QToolButton>
#include <QTreeView>

namespace keys = orvo::keys;

void OrvoMenu::enableActions(QTreeView* pane) {
    if (pane == m_ui->tvDesck)
        on_tvDesck_clicked(pane->currentIndex());
    else if (pane == m_ui->tvMenu)
        on_tvMenu_clicked(pane->currentIndex());
}

void OrvoMenu::bindCommands() {
    orvo::editor::Commands& all = commands();
    QTreeView* desck = m_ui->tvDesck;
    QTreeView* menu = m_ui->tvMenu;
    bindEditCommands({desck, menu});

    all.bind(keys::newItem, desck, m_ui->actAddDescktop);
    const auto mayAddFolder = [this, desck] {
        return m_app->m_mayWrite && desck->currentIndex().isValid();
    };
    all.bind(
        keys::newFolder, desck, m_ui->actAddFoldertvDesck, [this] { addDesckRow(true); },
        mayAddFolder);
    const auto rename = [this, desck] {
        if (m_desckEdit.isOpen() && desck->currentIndex() == m_editDesckIndex)
            desck->edit(desck->currentIndex());
        else
            m_ui->actChangeDescktopOrFolder->trigger();
    };
    const auto mayRename = [this, desck] {
        return m_app->m_mayWrite &&
               (m_desckEdit.isOpen() ? desck->currentIndex() == m_editDesckIndex
                                     : m_ui->actChangeDescktopOrFolder->isEnabled());
    };
    all.bind(keys::rename, desck, m_ui->actChangeDescktopOrFolder, rename, mayRename, true);
    all.bind(keys::copy, desck, m_ui->actCopyDescktopOrFolder);
    all.bind(keys::paste, desck, m_ui->actPasteDescktopOrFolder);
    const auto isNewDesck = [this] { return m_desckEdit.isOpen() && m_desckEdit.isNew(); };
    all.bind(
        keys::remove, desck, m_ui->actDeleteFromtvDesck,
        [this, isNewDesck] {
            if (isNewDesck())
                on_cancel_pressed();
            else
                m_ui->actDeleteFromtvDesck->trigger();
        },
        [this, isNewDesck] { return isNewDesck() || m_ui->actDeleteFromtvDesck->isEnabled(); },
        true);

    const auto mayAdd = [this, menu] {
        return m_app->m_mayWrite && menu->currentIndex().isValid();
    };
    all.bind(
        keys::newItem, menu, nullptr, [this] { on_actNewElemModul_triggered(); }, mayAdd);
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (QAction* action = creator(kind.number))
            all.bind(
                keys::newOf(kind.number), menu, action,
                [this, number = kind.number] { m_newElements.choose(number); }, mayAdd);
    all.bind(
        keys::newFolder, menu, m_ui->actNewElemFolder, [this] { on_actNewElemFolder_triggered(); },
        mayAdd);
    all.bind(
        keys::rename, menu, nullptr, [this] { passportKeys().editRow(QStringLiteral("name")); },
        [this] { return m_app->m_mayWrite && m_openMenu.recordRow(m_currentMenuKey).isValid(); },
        true);
    all.bind(keys::cut, menu, m_ui->actCutMenuElement);
    all.bind(keys::copy, menu, m_ui->actCopyMenuElement);
    all.bind(
        keys::paste, menu, m_ui->actPasteMenuElement,
        [this] { on_actPasteMenuElement_triggered(); },
        [this, mayAdd] { return mayAdd() && checkMimeType(QLatin1String(orvo::menu::menuMime)); });
    const auto isNewElement = [this] { return m_elementEdit.isOpen() && m_elementEdit.isNew(); };
    all.bind(
        keys::remove, menu, m_ui->actDeleteElem,
        [this, isNewElement] {
            if (isNewElement())
                on_cancel_pressed();
            else if (finishEdit())
                on_actDeleteElem_triggered();
        },
        [this] {
            return m_app->m_mayWrite && (m_menuModel->findIndexByKey(m_currentMenuKey)).isValid() &&
                   m_menuModel->getItemLevel(m_menuModel->findIndexByKey(m_currentMenuKey)) > 0;
        },
        true);
    all.bind(keys::moveUp, menu, m_ui->actMoveUp);
    all.bind(keys::moveDown, menu, m_ui->actMoveDown);
    all.bind(
        keys::moveIn, menu, nullptr, [this] { m_order.moveIn(); },
        [this] { return m_order.mayMoveIn(); });
    all.bind(
        keys::moveOut, menu, nullptr, [this] { m_order.moveOut(); },
        [this] { return m_order.mayMoveOut(); });
    bindSelection(menu,
                  [this, menu] {
                      orvo::editor::SelectedRecords chosen{orvo::table::Menu, &m_elementFields,
                                                           m_currentMenuKey};
                      for (const QModelIndex& row : menu->selectionModel()->selectedRows(0))
                          if (m_openMenu.recordRow(m_menuModel->getItemKeyLink(row)).isValid())
                              chosen.rows.push_back({m_menuModel->getItemKeyLink(row),
                                                     m_menuModel->itemIsFolder(row)
                                                         ? orvo::editor::FolderRows
                                                         : orvo::editor::ItemRows,
                                                     row});
                      return chosen;
                  },
                  {QStringLiteral("name")}, {});
    for (QTreeView* pane : {desck, menu, m_ui->tvProp})
        all.bind(
            keys::palette, pane, nullptr, [this] { m_newElements.togglePalette(); },
            [this] { return m_app->m_mayWrite && m_menuModel->rowCount() > 0; });
    for (QTreeView* pane : {menu, m_ui->tvProp})
        all.bind(
            keys::uses, pane, nullptr,
            [this, menu] {
                showUses(orvo::table::Menu, m_menuModel->getItemKeyLink(menu->currentIndex()));
            },
            [this, menu] {
                return m_openMenu.recordRow(m_menuModel->getItemKeyLink(menu->currentIndex()))
                    .isValid();
            },
            true);
    const auto element = [this]() -> orvo::RecordName {
        const QString key = m_menuModel->getItemKeyLink(m_ui->tvMenu->currentIndex());
        return {QString::fromLatin1(orvo::table::Menu),
                m_openMenu.recordRow(key).isValid() ? key : QString()};
    };
    bindRecord(menu, element);
    bindPassportRecord(element);
    bindRecord(desck, [desck]() -> orvo::RecordName {
        return {QString::fromLatin1(orvo::table::MenuFolder),
                desck->currentIndex()
                    .siblingAtColumn(orvo::menu::DesckColumn::KeyLink)
                    .data()
                    .toString()};
    });
    m_newElements.takeDrops(*menu);
    desck->setAccessibleName(tr("Рабочие столы"));
    menu->setAccessibleName(tr("Меню рабочего стола"));
    nameForReaders(tr("Паспорт элемента"));
    all.addKeys(m_btnNewDesck, m_btnNewDesck->text(), keys::newItem);
    all.addKeys(m_btnNewElem, m_btnNewElem->text(), keys::newItem);
}
