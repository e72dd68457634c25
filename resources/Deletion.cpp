// Deleting a folder at once, and resources after a question. Rows and records go when the
// notification of the deletion comes; where the server refuses, they stay.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"

#include <QItemSelectionModel>

#include <algorithm>

using orvo::resources::ResColumn;

namespace {

constexpr int menuResourceKey = 2; ///< the server's key of `Menu` by `MenuResourceKey`

QString nameOf(const QModelIndex& row) {
    return row.siblingAtColumn(ResColumn::Name).data().toString();
}

} // namespace

void OrvoResources::on_actDelete_triggered() {
    if (!m_resModel)
        return; // the start failed
    const QModelIndex row = m_resModel->findIndexByKey(m_currentKey);
    if (!row.isValid())
        return;
    if (orvo::resources::isFolder(row)) {
        deleteRecord("MenuResourceFolder", m_resModel->getItemKeyLink(row));
        return;
    }
    const int count = m_ui->tvRes->selectionModel()->selectedRows().size();
    orvo::askQuestion(
        *this,
        tr("Вы действительно хотите удалить выделенные элементы") + tr(" (") +
            QString::number(count) + tr(") из списка ") +
            (m_resModel->itemInSystemArea(row) ? tr("системных ресурсов?") : tr("ресурсов меню?")),
        "1removeResourceMessage(QAbstractButton*)");
}

void OrvoResources::removeResourceMessage(QAbstractButton* button) {
    if (!orvo::answeredYes(*this, button)) {
        m_ui->tvRes->clearSelection();
        return;
    }
    // What is current now: a notification may have come while the question stood.
    const QModelIndex row = m_resModel->findIndexByKey(m_currentKey);
    if (!row.isValid())
        return;
    switch (row.siblingAtColumn(ResColumn::Type).data().toInt()) {
    case orvo::resources::Form:
        deleteForms();
        break;
    case orvo::resources::File:
        deleteFiles();
        break;
    case orvo::resources::Module:
    case orvo::resources::Function:
        if (isInMenus(m_currentKey))
            showReferenceError();
        else
            deleteRecord("MenuResource", m_currentKey);
        break;
    default:
        break;
    }
}

void OrvoResources::deleteRecord(const char* table, const QString& key) {
    orvo::ScratchTable out(*m_app->m_session, table);
    if (!out.fetch())
        return;
    out.add(MDX_DELETE).text("KeyLink", key);
    out.send();
}

void OrvoResources::deleteForms() {
    const QModelIndexList rows = m_ui->tvRes->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;
    // A menu that refers to a form keeps nothing from being deleted: the engineer is told of it.
    if (std::any_of(rows.begin(), rows.end(), [this](const QModelIndex& row) {
            return isInMenus(m_resModel->getItemKeyLink(row));
        }))
        showReferenceError();
    CToolFormDel tool(this);
    for (const QModelIndex& row : rows)
        tool.names.append(nameOf(row));
    tool.Perform(false);
}

void OrvoResources::deleteFiles() {
    const QModelIndexList rows = m_ui->tvRes->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;
    CToolFileDel tool(this);
    for (const QModelIndex& row : rows)
        tool.files.append({getFilePath(row.parent()), nameOf(row)});
    tool.Perform(false);
}

bool OrvoResources::isInMenus(const QString& key) {
    const QByteArray bytes = orvo::toRecord(key); // outlives the tool's run
    CToolRecByKey tool(this);
    tool.tableName = "Menu";
    tool.keyNumber = menuResourceKey;
    tool.keyValues.append(orvo::textVar(bytes));
    tool.keyBits.setBit(0);
    tool.Perform(false);
    return orvo::recordCount(tool.result) > 0;
}

void OrvoResources::showReferenceError() {
    orvo::showError(*this,
                    tr("Выполнение операции невозможно, так как на ресурс есть ссылки из меню."),
                    "1on_common_error_message(QAbstractButton*)");
}
