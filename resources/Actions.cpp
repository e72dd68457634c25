// What is switched on when, and the context menu. The actions follow the current row alone, however
// many rows are selected.
#include "ui_OrvoResources.h"

#include "resources/OrvoResources.h"

#include "frame/ClipboardRows.h"
#include "frame/Records.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"

#include <QMenu>

using orvo::resources::ResColumn;

void OrvoResources::enableOnly(const QList<QAction*>& actions) {
    for (QAction* action :
         {m_ui->actAddModule, m_ui->actAddFunction, m_ui->actAddFolder, m_ui->actLoadFiles,
          m_ui->actExtractFiles, m_ui->actDelete, m_ui->actCut, m_ui->actCopy, m_ui->actPaste,
          m_ui->actUnBlock, m_ui->actOpenScheme})
        action->setEnabled(actions.contains(action));
}

void OrvoResources::setActionsDisabled() {
    enableOnly({});
}

void OrvoResources::setActionsEnabledMenuRes(const QModelIndex& index) {
    using namespace orvo::resources;
    if (!index.isValid())
        return;
    const auto value = [&](int column) { return index.sibling(index.row(), column).data(); };
    const auto creator = [this](int kind) {
        return kind == Module     ? m_ui->actAddModule
               : kind == Function ? m_ui->actAddFunction
                                  : m_ui->actLoadFiles;
    };
    const int level = m_resModel->getItemLevel(index);
    if (level == 0) {
        setActionsDisabled();
        return;
    }
    if (level == 1) {
        // The folders of the kinds are known by their captions: one that was renamed offers
        // nothing.
        const QString caption = value(ResColumn::Caption).toString();
        if (orvo::sameText(caption, QStringLiteral("модули")))
            enableOnly({m_ui->actAddFolder, creator(Module)});
        else if (orvo::sameText(caption, QStringLiteral("функции")))
            enableOnly({m_ui->actAddFolder, creator(Function)});
        else if (orvo::sameText(caption, QStringLiteral("формы отображения")))
            enableOnly({m_ui->actAddFolder, creator(Form)});
        return;
    }
    const int kind = value(ResColumn::Type).toInt();
    if (kind < Module || kind > Form)
        return;
    const bool isFolder = m_resModel->itemIsFolder(index);
    QList<QAction*> on{m_ui->actAddFolder, creator(kind), m_ui->actCut};
    if (isFolder && checkClipBoardType(kind))
        on << m_ui->actPaste;
    if (!isFolder || !m_resModel->hasChildren(index))
        on << m_ui->actDelete;
    if (kind == Form && !isFolder) {
        on << m_ui->actExtractFiles << m_ui->actOpenScheme;
        if (value(ResColumn::Blocked).toInt() >= LockedHere)
            on << m_ui->actUnBlock;
    }
    enableOnly(on);
}

void OrvoResources::setActionsEnabledSystem(const QModelIndex& index) {
    if (!index.isValid())
        return;
    const bool isRoot = m_resModel->getItemLevel(index) == 0;
    const bool isFolder = m_resModel->itemIsFolder(index);
    QList<QAction*> on{m_ui->actAddFolder, m_ui->actLoadFiles};
    if (!isFolder)
        on << m_ui->actExtractFiles;
    else if (checkClipBoardType(orvo::resources::File))
        on << m_ui->actPaste;
    if (!isRoot) {
        on << m_ui->actCut;
        if (!isFolder || !m_resModel->hasChildren(index))
            on << m_ui->actDelete;
    }
    enableOnly(on);
}

bool OrvoResources::checkClipBoardType(int type) const {
    const QByteArray bytes = orvo::clipboardBytes(m_clipboard, orvo::resources::resourcesMime);
    return bytes.contains('\n') && orvo::ClipboardRows::numberOf(bytes) == type;
}

void OrvoResources::showContextMenu_tvRes(const QPoint& pos) {
    QMenu menu;
    QMenu* create = menu.addMenu(orvo::image("new1"), tr("Создать"));
    create->addActions({m_ui->actAddModule, m_ui->actAddFunction, m_ui->actAddFolder});
    menu.addActions({m_ui->actLoadFiles, m_ui->actCut, m_ui->actPaste});
    menu.addSeparator();
    menu.addAction(m_ui->actDelete);
    menu.addSeparator();
    menu.addAction(m_ui->actExtractFiles);
    menu.addSeparator();
    menu.addAction(m_ui->actUnBlock);
    menu.addSeparator();
    menu.addAction(m_ui->actOpenScheme);
    menu.exec(m_ui->tvRes->viewport()->mapToGlobal(pos));
}
