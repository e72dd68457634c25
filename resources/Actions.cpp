// What is switched on when, and the context menu. The actions follow the current row alone, however
// many rows are selected.
#include "ui_OrvoResources.h"

#include "resources/OrvoResources.h"

#include "frame/Kinds.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"

#include <QMenu>
#include <QToolButton>
#include <QTreeView>

using orvo::Kind;
using orvo::resources::kindOf;
using orvo::resources::ResColumn;

QAction* OrvoResources::creator(int kind) const {
    return kind == Kind::Module     ? m_ui->actAddModule
           : kind == Kind::Function ? m_ui->actAddFunction
                                    : m_ui->actLoadFiles;
}

QList<QAction*> OrvoResources::creators() const {
    QList<QAction*> all;
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (!kind.hasContents)
            all << creator(kind.number);
    return all << m_ui->actAddFolder;
}

void OrvoResources::enableOnly(const QList<QAction*>& actions) {
    for (QAction* action :
         creators() + QList<QAction*>{m_ui->actLoadFiles, m_ui->actExtractFiles, m_ui->actDelete,
                                      m_ui->actCut, m_ui->actCopy, m_ui->actPaste, m_ui->actUnBlock,
                                      m_ui->actOpenScheme})
        action->setEnabled(actions.contains(action));
}

void OrvoResources::setReadOnly() {
    orvo::keepOff(creators());
    orvo::keepOff(
        {m_ui->actLoadFiles, m_ui->actDelete, m_ui->actCut, m_ui->actPaste, m_ui->actUnBlock});
    for (QTreeView* view : std::initializer_list<QTreeView*>{m_ui->tvRes, m_ui->tvProp})
        orvo::keepFromWriting(view);
    m_btnCreate->setEnabled(false);
}

void OrvoResources::setActionsDisabled() {
    enableOnly({});
}

std::optional<QList<QAction*>> OrvoResources::menuActions(const QModelIndex& row) const {
    const int level = m_resModel->getItemLevel(row);
    if (level == 0)
        return QList<QAction*>();
    if (level == 1) {
        // The folders of the kinds are known by their captions: one that was renamed offers
        // nothing.
        const QString caption = orvo::resources::textAt(row, ResColumn::Caption);
        for (const orvo::ResourceKind& kind : orvo::resourceKinds)
            if (kind.topFolder && orvo::sameText(caption, QString::fromUtf8(kind.topFolder)))
                return QList<QAction*>{m_ui->actAddFolder, creator(kind.number)};
        return {};
    }
    const int kind = kindOf(row);
    const orvo::ResourceKind* known = orvo::resourceKind(kind);
    if (!known || !known->topFolder)
        return {};
    const bool isFolder = m_resModel->itemIsFolder(row);
    QList<QAction*> on{m_ui->actAddFolder, creator(kind), m_ui->actCut};
    if (isFolder && checkClipBoardType(kind))
        on << m_ui->actPaste;
    if (!isFolder || !m_resModel->hasChildren(row))
        on << m_ui->actDelete;
    if (kind == Kind::Form && !isFolder) {
        on << m_ui->actExtractFiles << m_ui->actOpenScheme;
        if (row.siblingAtColumn(ResColumn::Blocked).data().toInt() >= orvo::resources::LockedHere)
            on << m_ui->actUnBlock;
    }
    return on;
}

QList<QAction*> OrvoResources::systemActions(const QModelIndex& row) const {
    const bool isRoot = m_resModel->getItemLevel(row) == 0;
    const bool isFolder = m_resModel->itemIsFolder(row);
    QList<QAction*> on{m_ui->actAddFolder, m_ui->actLoadFiles};
    if (!isFolder)
        on << m_ui->actExtractFiles;
    else if (checkClipBoardType(Kind::File))
        on << m_ui->actPaste;
    if (!isRoot) {
        on << m_ui->actCut;
        if (!isFolder || !m_resModel->hasChildren(row))
            on << m_ui->actDelete;
    }
    return on;
}

void OrvoResources::setActionsEnabledMenuRes(const QModelIndex& index) {
    if (!index.isValid())
        return;
    if (const auto actions = menuActions(index))
        enableOnly(*actions);
}

void OrvoResources::setActionsEnabledSystem(const QModelIndex& index) {
    if (index.isValid())
        enableOnly(systemActions(index));
}

bool OrvoResources::permits(QAction* action, const QModelIndex& row) const {
    if (m_resModel->itemInSystemArea(row))
        return systemActions(row).contains(action);
    const auto actions = menuActions(row);
    return actions && actions->contains(action);
}

void OrvoResources::showContextMenu_tvRes(const QPoint& pos) {
    QMenu menu;
    QMenu* create = menu.addMenu(orvo::image("new1"), tr("Создать"));
    create->addActions(creators());
    menu.addActions({m_ui->actLoadFiles, m_ui->actCut, m_ui->actPaste});
    menu.addSeparator();
    menu.addAction(m_ui->actDelete);
    menu.addSeparator();
    menu.addAction(m_ui->actExtractFiles);
    menu.addSeparator();
    menu.addAction(m_ui->actUnBlock);
    menu.addSeparator();
    menu.addAction(m_ui->actOpenScheme);
    orvo::addRecordActions(*m_app, menu, orvo::resources::recordOf(m_ui->tvRes->indexAt(pos)));
    execMenu(menu, m_ui->tvRes->viewport()->mapToGlobal(pos));
}
