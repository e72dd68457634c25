// Slots and members that hand on to the class of their subject.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "menu/Columns.h"

#include <QItemSelectionModel>
#include <QTreeView>

using orvo::ScratchTable;
using orvo::menu::MenuColumn;
using orvo::menu::MenuPayload;

// The open menu

void OrvoMenu::clearMenuModel() {
    if (m_menuModel) {
        const int count = m_menuModel->rowCount(QModelIndex());
        if (count > 0)
            m_menuModel->removeRows(0, count, QModelIndex());
    }
    if (m_propModel)
        m_propModel->clearRows();
}

void OrvoMenu::loadMenuTree(const QString& desckKey) {
    m_openMenu.fetch(desckKey);
    MenuTreeModel& model = *m_menuModel;
    if (!model.insertRows(0, 1, QModelIndex()))
        return;
    const QModelIndex root = model.index(0, 0, QModelIndex());
    orvo::setRow(model, root,
                 {{MenuColumn::KeyLink, QString::fromLatin1(orvo::menu::menuRootKey)},
                  {MenuColumn::Caption, tr("Меню")}});
    if (m_openMenu.addAll(root))
        m_ui->tvMenu->expand(root);
}

void OrvoMenu::loadMenuFolder(const QString& folderKey) {
    const QModelIndex folder = m_menuModel->findIndexByKey(folderKey);
    if (folder.isValid())
        m_openMenu.addFolder(folder, folderKey);
}

void OrvoMenu::loadMenuRow(const QModelIndex& parent, int row, MDRData* record) {
    m_openMenu.fillRow(parent, row, record);
}

int32_t OrvoMenu::getMenuElementPosition(const QString& key, const QString& parentKey) const {
    return m_openMenu.position(key, parentKey);
}

int32_t OrvoMenu::getLastMenuOrder(const QString& parent) const {
    return m_openMenu.lastOrder(parent);
}

// The places of elements

void OrvoMenu::on_actMoveUp_triggered() {
    m_order.swapWithNeighbour(-1);
}

void OrvoMenu::on_actMoveDown_triggered() {
    m_order.swapWithNeighbour(1);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the published interface has it so
void OrvoMenu::on_menu_dragdrop(const QModelIndex& destindex, QStringList srcList, int option) {
    m_order.drop(destindex, srcList, option);
}

// The clipboard

void OrvoMenu::on_actCopyMenuElement_triggered() {
    if (m_menuModel)
        m_menuClipboard.put(MenuPayload::Copy, m_ui->tvMenu->selectionModel()->selectedRows(0));
}

void OrvoMenu::on_actCutMenuElement_triggered() {
    if (m_menuModel)
        m_menuClipboard.put(MenuPayload::Cut, m_ui->tvMenu->selectionModel()->selectedRows(0));
}

void OrvoMenu::on_actPasteMenuElement_triggered() {
    m_menuClipboard.paste(m_currentMenuKey);
}

void OrvoMenu::on_clipboardDataChanged() {
    m_menuClipboard.noteChange();
}

void OrvoMenu::copyMenuItemToClipboard(const QString& key, ScratchTable& copies) {
    m_menuClipboard.copyElement(key, copies);
}

void OrvoMenu::copyMenuFolderToClipboard(const QString& key, ScratchTable& copies) {
    m_menuClipboard.copyFolder(key, copies);
}

void OrvoMenu::pasteMenuItemToDB(const QString& desck, const QString& parent, const QString& key,
                                 const QString& caption, const CMDArray& source,
                                 ScratchTable& target, const QMap<QString, QString>& keyMap) {
    m_menuClipboard.pasteElement({desck, source, target, keyMap}, parent, key, caption);
}

void OrvoMenu::pasteMenuFolderToDB(const QString& desck, const QString& parent, const QString& key,
                                   const QString& caption, const CMDArray& source,
                                   ScratchTable& target, const QMap<QString, QString>& keyMap) {
    m_menuClipboard.pasteFolder({desck, source, target, keyMap}, parent, key, caption);
}

void OrvoMenu::deleteAfterCutFromMenu(const CMDArray& source, const QStringList& keys) {
    m_menuClipboard.deleteCut(source, keys);
}

void OrvoMenu::addMenuFolderToCut(const QString& key, const CMDArray& source,
                                  ScratchTable& target) {
    m_menuClipboard.deleteFolder(key, source, target);
}

// The preview

void OrvoMenu::slot_modNotify(QString name, QVariant value) {
    if (name == QLatin1String("preview"))
        m_preview.follow();
    EditorWindow::slot_modNotify(name, value);
}
