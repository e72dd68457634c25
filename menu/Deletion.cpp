// Deleting an element with all that lies below it, after a question in the right grammatical case.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/CommonFunctions.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "menu/Columns.h"
#include "menu/ElementWalk.h"

#include <QItemSelectionModel>
#include <QTreeView>

using orvo::ScratchTable;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

void OrvoMenu::on_actDeleteElem_triggered() {
    if (!m_menuModel)
        return;
    const QModelIndex element = m_openMenu.elementRow(m_currentMenuKey);
    const QModelIndex desktop = m_desckModel->findIndexByKey(m_currentDesckKey);
    if (!element.isValid() && !desktop.isValid())
        return;
    // What is named and deleted is what is highlighted.
    if (element.isValid())
        m_ui->tvMenu->selectionModel()->select(element, QItemSelectionModel::ClearAndSelect |
                                                            QItemSelectionModel::Rows);
    const QString name = element.siblingAtColumn(MenuColumn::Caption).data().toString();
    const QString desktopName = desktop.siblingAtColumn(DesckColumn::Name).data().toString();
    QString text;
    if (m_menuModel->itemIsFolder(element)) {
        text = tr("Вы действительно хотите удалить папку \"") + name +
               tr("\" вместе со всеми входящими элементами из рабочего стола \"");
    } else {
        QString kind = element.siblingAtColumn(MenuColumn::Type).data().toString();
        // The one kind whose accusative differs.
        if (orvo::sameText(kind, convertMenuAttributes(2)))
            kind = tr("функцию");
        text = tr("Вы действительно хотите удалить ") + kind + tr(" \"") + name +
               tr("\" из рабочего стола \"");
    }
    QStringList below;
    orvo::menu::walkElements(m_tabMenu, m_currentMenuKey, [&](const orvo::menu::Element& one) {
        if (!one.isFirst)
            below << one.key;
        return true;
    });
    ask({.text = text + desktopName + tr("\"?"),
         .slot = SLOT(removeMenuMessage(QAbstractButton*)),
         .table = orvo::table::Menu,
         .keys = {m_currentMenuKey},
         .below = below});
}

void OrvoMenu::removeMenuMessage(QAbstractButton* button) {
    if (!answeredYes(button))
        return;
    ScratchTable out(*m_app->m_session, orvo::table::Menu);
    if (!out.fetch())
        return;
    // A notification may have removed it while the question stood.
    const QModelIndex element = m_openMenu.elementRow(m_currentMenuKey);
    if (!element.isValid())
        return;
    out.add(MDX_DELETE).text(orvo::field::KeyLink, m_currentMenuKey);
    if (m_menuModel->itemIsFolder(element))
        deleteMenuFolder(m_currentMenuKey, out);
    out.send();
}

void OrvoMenu::deleteMenuFolder(const QString& key, ScratchTable& out) {
    // By the table: a new row that is not yet saved has nothing to delete.
    orvo::menu::walkElements(m_tabMenu, key, [&](const orvo::menu::Element& element) {
        if (!element.isFirst)
            out.add(MDX_DELETE).text(orvo::field::KeyLink, element.key);
        return true;
    });
}
