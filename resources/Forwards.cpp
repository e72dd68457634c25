// Slots and members that hand on to the class of their subject.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include <QItemSelectionModel>
#include <QLineEdit>
#include <QTreeView>

// Moves to another folder

bool OrvoResources::checkClipBoardType(int type) const {
    return m_moves.isOffered(type);
}

void OrvoResources::on_actCut_triggered() {
    if (m_resModel)
        m_moves.cut(m_ui->tvRes->selectionModel()->selectedRows(0));
}

void OrvoResources::on_actPaste_triggered() {
    m_moves.paste(m_ui->tvRes->currentIndex());
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the published interface has it so
void OrvoResources::on_res_dragdrop(const QModelIndex& destindex, QStringList srcList) {
    m_moves.drop(destindex, srcList);
}

void OrvoResources::on_clipboardDataChanged() {}

void OrvoResources::copyResItemToClipboard(const QString& key,
                                           orvo::ScratchTable& resources) const {
    m_moves.copyItem(key, resources);
}

void OrvoResources::copyResFolderToClipboard(const QString& key, orvo::ScratchTable& resources,
                                             orvo::ScratchTable& folders) const {
    m_moves.copyFolder(key, resources, folders);
}

// The search

void OrvoResources::on_search_textChanged(const QString& text) {
    m_search.find(text);
}

void OrvoResources::on_searchCmb_indexChanged(int) {
    on_search_textChanged(m_edSearch->text());
}

void OrvoResources::on_search_down_pressed() {
    m_search.step(1);
}

void OrvoResources::on_search_up_pressed() {
    m_search.step(-1);
}

void OrvoResources::openSearch() {
    m_search.open();
}

void OrvoResources::stepToHit(int by) {
    m_search.stepToHit(by);
}

void OrvoResources::searchByNext() {
    m_search.searchByNext();
}
