// The three views: models, delegates, columns and connections.
#include "ui_OrvoMenu.h"

#include "menu/OrvoMenu.h"

#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "menu/Columns.h"
#include "models/TreeSearchBar.h"

#include <QApplication>
#include <QItemSelectionModel>
#include <QTreeView>

using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

void OrvoMenu::setTreeArrangement() {
    QTreeView* desck = m_ui->tvDesck;
    orvo::arrangeTree(desck);
    desck->setEditTriggers(QAbstractItemView::NoEditTriggers);
    desck->setHeaderHidden(true);
    desck->setSelectionMode(QAbstractItemView::SingleSelection);
    m_desckModel = std::make_unique<DesckTreeModel>(m_desckFields.titles(), this);
    desck->setModel(m_desckModel.get());
    orvo::hideColumns(desck, DesckColumn::KeyLink, m_desckFields.columnCount() - 1);
    connect(m_desckModel.get(), &DesckTreeModel::nameChanged, this,
            &OrvoMenu::on_Desck_NameChanged);
    m_desckDelegate = std::make_unique<DesckDelegate>(m_desckModel.get(), this);
    m_desckDelegate->showMarks(*this, [](const QModelIndex& row) {
        return qMakePair(QString::fromLatin1(orvo::table::MenuFolder),
                         row.siblingAtColumn(DesckColumn::KeyLink).data().toString());
    });
    desck->setItemDelegate(m_desckDelegate.get());
    m_desckModel->setSpokenNote(orvo::spokenMarks(*desck));
    orvo::followExpansion(desck, m_desckModel.get());
    m_desckSearch = new orvo::TreeSearchBar(desck, *m_desckModel, DesckColumn::KeyLink,
                                            {{DesckColumn::Name, tr("Имя")}});
    connect(desck, &QTreeView::customContextMenuRequested, this,
            &OrvoMenu::showContextMenu_tvDesck);
    // A click with Ctrl on the current row would leave nothing highlighted that is acted on.
    connect(desck->selectionModel(), &QItemSelectionModel::selectionChanged, this, [desck] {
        QItemSelectionModel* selection = desck->selectionModel();
        if (!selection->hasSelection() && selection->currentIndex().isValid())
            selection->select(selection->currentIndex(),
                              QItemSelectionModel::Select | QItemSelectionModel::Rows);
    });
    connect(desck, &QTreeView::clicked, this, &OrvoMenu::on_tvDesck_clicked);
    connect(m_desckDelegate.get(), &QAbstractItemDelegate::closeEditor, this,
            &OrvoMenu::on_closeDesckeditor);

    QTreeView* menu = m_ui->tvMenu;
    orvo::arrangeTree(menu);
    orvo::showMarks(menu, *this, [](const QModelIndex& row) {
        return qMakePair(QString::fromLatin1(orvo::table::Menu),
                         row.siblingAtColumn(MenuColumn::KeyLink).data().toString());
    });
    menu->setEditTriggers(QAbstractItemView::NoEditTriggers);
    menu->setSelectionMode(QAbstractItemView::ExtendedSelection);
    menu->setDragEnabled(true);
    menu->setAcceptDrops(true);
    menu->setDropIndicatorShown(true);
    QStringList titles = m_elementFields.titles();
    for (QString& title : titles)
        title = tr(title.toUtf8().constData());
    m_menuModel = std::make_unique<MenuTreeModel>(titles, orvo::iconsPath(*this), this);
    menu->setModel(m_menuModel.get());
    m_menuModel->setSpokenNote(orvo::spokenMarks(*menu));
    orvo::hideColumns(menu, MenuColumn::FolderKey, m_elementFields.columnCount() - 1);
    menu->setColumnWidth(MenuColumn::Caption, 300);
    orvo::followExpansion(menu, m_menuModel.get());
    m_menuSearch = new orvo::TreeSearchBar(
        menu, *m_menuModel, MenuColumn::KeyLink,
        {{MenuColumn::Caption, tr("Наименование")}, {MenuColumn::Command, tr("Ресурс")}});
    connect(menu, &QTreeView::customContextMenuRequested, this, &OrvoMenu::showContextMenu_tvMenu);
    connect(menu, &QTreeView::clicked, this, &OrvoMenu::on_tvMenu_clicked);
    connect(menu->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &OrvoMenu::on_tvMenu_selectionChanged);
    connect(m_menuModel.get(), &MenuTreeModel::dragdropOperation, this,
            &OrvoMenu::on_menu_dragdrop);

    arrangePassport(m_ui->tvProp);
    connect(desck->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &OrvoMenu::on_tvDesck_currentChanged);
    connect(menu->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &OrvoMenu::on_tvMenu_currentChanged);
    connect(m_passpDelegate.get(), &PasspDelegate::returnPressed, this,
            &OrvoMenu::on_passp_returnPressed);
    bindCommands();
}

orvo::TreeSearchBar* OrvoMenu::searchBar() const {
    const QWidget* focus = QApplication::focusWidget();
    return focus && (focus == m_ui->tvDesck || m_ui->tvDesck->isAncestorOf(focus)) ? m_desckSearch
                                                                                   : m_menuSearch;
}
