// What is switched on when, and the context menus. Actions go off when their view loses the focus,
// and on only by a click, a change of the current row, or the context menu of the desktops.
#include "ui_OrvoMenu.h"

#include "menu/OrvoMenu.h"

#include "frame/Kinds.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "menu/Columns.h"

#include <QClipboard>
#include <QMenu>
#include <QMimeData>
#include <QToolButton>
#include <QTreeView>

using orvo::Kind;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

void OrvoMenu::on_focus_changed(QWidget* old, QWidget*) {
    if (old == m_ui->tvMenu)
        setMenuActionsDisabled();
    else if (old == m_ui->tvDesck)
        setDesckActionsDisabled();
}

QAction* OrvoMenu::creator(int kind) const {
    return kind == Kind::Module     ? m_ui->actNewElemModul
           : kind == Kind::Function ? m_ui->actNewElemFunction
           : kind == Kind::Form     ? m_ui->actNewElemFile
                                    : nullptr;
}

QList<QAction*> OrvoMenu::elementCreators() const {
    QList<QAction*> all{m_ui->actNewElemFolder};
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (QAction* action = creator(kind.number))
            all << action;
    return all;
}

void OrvoMenu::setMenuActionsDisabled() {
    for (QAction* action :
         elementCreators() + QList<QAction*>{m_ui->actDeleteElem, m_ui->actMoveDown,
                                             m_ui->actMoveUp, m_ui->actCopyMenuElement,
                                             m_ui->actCutMenuElement, m_ui->actPasteMenuElement})
        action->setEnabled(false);
}

void OrvoMenu::setDesckActionsDisabled() {
    for (QAction* action : {m_ui->actAddDescktop, m_ui->actAddFoldertvDesck,
                            m_ui->actDeleteFromtvDesck, m_ui->actChangeDescktopOrFolder,
                            m_ui->actCopyDescktopOrFolder, m_ui->actPasteDescktopOrFolder})
        action->setEnabled(false);
}

void OrvoMenu::setReadOnly() {
    orvo::keepOff(elementCreators());
    orvo::keepOff({m_ui->actDeleteElem, m_ui->actMoveDown, m_ui->actMoveUp, m_ui->actCutMenuElement,
                   m_ui->actPasteMenuElement, m_ui->actAddDescktop, m_ui->actAddFoldertvDesck,
                   m_ui->actDeleteFromtvDesck, m_ui->actChangeDescktopOrFolder,
                   m_ui->actPasteDescktopOrFolder});
    for (QTreeView* view :
         std::initializer_list<QTreeView*>{m_ui->tvDesck, m_ui->tvMenu, m_ui->tvProp})
        orvo::keepFromWriting(view);
    m_btnNewDesck->setEnabled(false);
    m_btnNewElem->setEnabled(false);
}

void OrvoMenu::setMenuActionsEnabled(const QModelIndex& index) {
    if (!index.isValid())
        return;
    const bool isRoot = m_menuModel->getItemLevel(index) == 0;
    const bool isFolder = isRoot || m_menuModel->itemIsFolder(index);

    for (QAction* action : elementCreators())
        action->setEnabled(isFolder);
    for (QAction* action : {m_ui->actDeleteElem, m_ui->actCopyMenuElement, m_ui->actCutMenuElement})
        action->setEnabled(!isRoot);
    // On an element the paste action keeps its last state.
    if (isFolder)
        m_ui->actPasteMenuElement->setEnabled(checkMimeType(QLatin1String(orvo::menu::menuMime)));
    m_ui->actMoveUp->setEnabled(!isRoot && !m_menuModel->itemIsFirstSibling(index));
    m_ui->actMoveDown->setEnabled(!isRoot && !m_menuModel->itemIsLastSibling(index));
}

void OrvoMenu::setDesckActionsEnabled(const QModelIndex& index) {
    if (!index.isValid())
        return;
    const int level = m_desckModel->getItemLevel(index);
    const bool isFolder = m_desckModel->isItemFolder(index);
    const bool isRoot = isFolder && level == 0;
    const bool isTopDesktop = !isFolder && level <= 1;

    // A desktop can be put only into a folder, and one that stands outside of any can be copied and
    // no more.
    m_ui->actAddDescktop->setEnabled(!isRoot && !isTopDesktop);
    m_ui->actAddFoldertvDesck->setEnabled(isFolder);
    m_ui->actDeleteFromtvDesck->setEnabled(isFolder ? !isRoot && !m_desckModel->hasChildren(index)
                                                    : !isTopDesktop);
    m_ui->actChangeDescktopOrFolder->setEnabled(!isRoot && !isTopDesktop);
    m_ui->actCopyDescktopOrFolder->setEnabled(!isRoot);
    if (isFolder)
        m_ui->actPasteDescktopOrFolder->setEnabled(
            checkMimeType(QLatin1String(orvo::menu::desckMime)));
}

bool OrvoMenu::checkMimeType(const QString& format) const {
    if (!m_clipboard)
        return false;
    const QMimeData* offered = m_clipboard->mimeData();
    return (offered && offered->hasFormat(format)) ||
           (format == QLatin1String(orvo::menu::menuMime) && m_menuClipboard.ownCutIsGood());
}

void OrvoMenu::showContextMenu_tvDesck(const QPoint& point) {
    const QPoint position = m_ui->tvDesck->viewport()->mapToGlobal(point);
    QMenu menu;
    QMenu* create = menu.addMenu(orvo::image("new1"), tr("Создать"));
    create->addActions({m_ui->actAddDescktop, m_ui->actAddFoldertvDesck});
    menu.addAction(m_ui->actChangeDescktopOrFolder);
    menu.addSeparator();
    menu.addActions({m_ui->actCopyDescktopOrFolder, m_ui->actPasteDescktopOrFolder});
    menu.addSeparator();
    menu.addAction(m_ui->actDeleteFromtvDesck);
    menu.addSeparator();
    menu.addAction(m_actPreview);

    const QModelIndex current = m_ui->tvDesck->currentIndex();
    if (current.isValid())
        setDesckActionsEnabled(current);
    const QModelIndex row = m_ui->tvDesck->indexAt(point);
    m_app->addRecordActions(&menu, QString::fromLatin1(orvo::table::MenuFolder),
                            row.siblingAtColumn(DesckColumn::KeyLink).data().toString());
    execMenu(menu, position);
}

void OrvoMenu::showContextMenu_tvMenu(const QPoint& point) {
    const QPoint position = m_ui->tvMenu->viewport()->mapToGlobal(point);
    QMenu menu;
    QMenu* create = menu.addMenu(orvo::image("newelem1"), tr("Новый элемент"));
    create->addActions(elementCreators());
    menu.addSeparator();
    menu.addActions({m_ui->actCutMenuElement, m_ui->actCopyMenuElement, m_ui->actPasteMenuElement});
    menu.addSeparator();
    menu.addAction(m_ui->actDeleteElem);
    const QModelIndex row = m_ui->tvMenu->indexAt(point);
    m_app->addRecordActions(&menu, QString::fromLatin1(orvo::table::Menu),
                            row.siblingAtColumn(MenuColumn::KeyLink).data().toString());
    execMenu(menu, position);
}
