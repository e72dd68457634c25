// The two views: models, delegate, columns and connections.
#include "ui_OrvoResources.h"

#include "resources/OrvoResources.h"

#include "frame/ViewRows.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"
#include "resources/Fields.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QTreeView>

#include <algorithm>

using orvo::resources::ResColumn;

namespace {

constexpr int textWidth = 350;

QString passportStyleSheet() {
    return QStringLiteral("QTreeView::branch:has-children:!has-siblings:closed{border-image:none;"
                          "image:url(:/res/node_branch_close.png);}"
                          "QTreeView::branch:closed:has-children:has-siblings{border-image:none;"
                          "image:url(:/res/node_branch_close.png);}"
                          "QTreeView::branch:open:has-children:!has-siblings{border-image: none; "
                          "image:url(:/res/node_branch_open.png);}"
                          "QTreeView::branch:open:has-children:has-siblings{border-image: none; "
                          "image:url(:/res/node_branch_open.png);}");
}

QStringList columnTitles() {
    QStringList titles;
    for (const QString& title : orvo::resources::itemFields().titles())
        titles << OrvoResources::tr(title.toUtf8().constData());
    return titles;
}

} // namespace

void OrvoResources::setTreeArrangement() {
    QTreeView* tree = m_ui->tvRes;
    orvo::arrangeTree(tree);
    orvo::showMarks(tree, *this, [](const QModelIndex& row) {
        return qMakePair(QString::fromLatin1(orvo::resources::tableOf(row)),
                         orvo::resources::textAt(row, ResColumn::KeyLink));
    });
    // A value is edited in the passport only: an editor in the tree would write nowhere.
    tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree->setDragEnabled(true);
    tree->setAcceptDrops(true);
    tree->setDropIndicatorShown(true);
    m_resModel = std::make_unique<ResTreeModel>(columnTitles(), orvo::iconsPath(*this), this);
    m_search.setTree(*tree, *m_resModel);
    tree->setModel(m_resModel.get());
    m_resModel->setSpokenNote(orvo::spokenMarks(*tree));
    m_search.addBar(*m_resModel);
    orvo::hideColumns(tree, ResColumn::KeyLink, ResColumn::IsNew);
    tree->setColumnWidth(ResColumn::Caption, textWidth);
    tree->setColumnWidth(ResColumn::Name, textWidth);
    // Neither the titles nor a time are cut off.
    for (const int column : {ResColumn::Lock, ResColumn::LockTime})
        tree->setColumnWidth(column, std::max(tree->header()->sectionSizeHint(column),
                                              tree->fontMetrics().horizontalAdvance(
                                                  QStringLiteral(" 00.00.0000 00:00:00 "))));
    connect(tree, &QTreeView::customContextMenuRequested, this,
            &OrvoResources::showContextMenu_tvRes);

    m_ui->tvProp->setStyleSheet(passportStyleSheet());
    arrangePassport(m_ui->tvProp);
    orvo::followExpansion(tree, m_resModel.get());

    connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &OrvoResources::on_tvRes_currentChanged);
    connect(tree->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &OrvoResources::on_tvRes_selectionChanged);
    connect(m_resModel.get(), &ResTreeModel::dragdropOperation, this,
            &OrvoResources::on_res_dragdrop);
    bindCommands();
}
