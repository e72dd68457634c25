// Deleting a folder at once, and resources after a question. Rows and records go when the
// notification of the deletion comes; where the server refuses, they stay.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Kinds.h"
#include "frame/ScratchTable.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"

#include <QItemSelectionModel>

#include <algorithm>

using orvo::Kind;
using orvo::resources::kindOf;
using orvo::resources::nameOf;
using orvo::resources::ResColumn;
using orvo::resources::textAt;

namespace {

/// Whether nothing but the record is deleted with a resource of that kind.
bool isRecordOnly(int kind) {
    const orvo::ResourceKind* known = orvo::resourceKind(kind);
    return known && !known->hasContents;
}

QString keyOf(const QModelIndex& row) {
    return textAt(row, ResColumn::KeyLink);
}

} // namespace

void OrvoResources::on_actDelete_triggered() {
    if (!m_resModel)
        return; // the start failed
    if (!m_resModel->findIndexByKey(m_currentKey).isValid())
        return;
    agreeOnSelection();
    const QModelIndex row = m_resModel->findIndexByKey(m_currentKey);
    if (orvo::resources::isFolder(row)) {
        deleteFolder(row);
        return;
    }
    if (!finishEditOnPath(row))
        return;
    // Of modules and functions the current one goes, however many are selected: what is highlighted
    // and counted is what goes.
    if (isRecordOnly(kindOf(row)))
        m_ui->tvRes->selectionModel()->select(row, QItemSelectionModel::ClearAndSelect |
                                                       QItemSelectionModel::Rows);
    const QModelIndexList selected = m_ui->tvRes->selectionModel()->selectedRows();
    const int count = selected.size();
    QStringList keys{m_resModel->getItemKeyLink(row)};
    for (const QModelIndex& one : selected)
        if (one != row)
            keys << m_resModel->getItemKeyLink(one);
    ask({.text =
             tr("Вы действительно хотите удалить выделенные элементы") + tr(" (") +
             QString::number(count) + tr(") из списка ") +
             (m_resModel->itemInSystemArea(row) ? tr("системных ресурсов?") : tr("ресурсов меню?")),
         .slot = SLOT(removeResourceMessage(QAbstractButton*)),
         .table = orvo::table::MenuResource,
         .keys = keys,
         .details = questionDetails(row)});
    nameUsesInBox(orvo::table::MenuResource, isRecordOnly(kindOf(row)) ? keys.mid(0, 1) : keys,
                  questionDetails(row));
}

void OrvoResources::agreeOnSelection() {
    // A row of another folder becomes current by a click that adds to the selection, and is not
    // selected: what is highlighted is meant.
    QItemSelectionModel* selection = m_ui->tvRes->selectionModel();
    const QModelIndexList selected = selection->selectedRows();
    const QModelIndex current = selection->currentIndex();
    if (selected.isEmpty())
        selection->select(current, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    else if (!selection->isRowSelected(current.row(), current.parent()))
        selection->setCurrentIndex(selected.last(), QItemSelectionModel::NoUpdate);
}

QString OrvoResources::questionDetails(const QModelIndex& current) const {
    if (isRecordOnly(kindOf(current)))
        return tr("Будет удалено: %1.").arg(m_names.describe(current));
    QStringList names;
    for (const QModelIndex& row : m_ui->tvRes->selectionModel()->selectedRows())
        names << m_names.describe(row);
    return orvo::nameLines(names);
}

void OrvoResources::deleteFolder(const QModelIndex& folder) {
    if (m_moves.isTopFolder(folder) || orvo::resources::isFixedKey(keyOf(folder)))
        refuse(tr("Не удалено: %1 держит все ресурсы своего вида.").arg(m_names.describe(folder)));
    else if (!m_checks.isEmptyFolder(folder))
        refuse(tr("Не удалено: %1 не пуста. Сначала удалите или переместите то, что в ней. Папки, "
                  "созданные другими, видны после повторного открытия редактора.")
                   .arg(m_names.describe(folder)));
    else
        deleteRecords(orvo::table::MenuResourceFolder, {keyOf(folder)});
}

void OrvoResources::removeResourceMessage(QAbstractButton* button) {
    if (!answeredYes(button)) {
        m_ui->tvRes->clearSelection();
        return;
    }
    // What is current now: a notification may have come while the question stood.
    const QModelIndex row = m_resModel->findIndexByKey(m_currentKey);
    if (!row.isValid())
        return;
    switch (kindOf(row)) {
    case Kind::Form:
        deleteForms();
        break;
    case Kind::File:
        deleteFiles();
        break;
    default:
        if (!isRecordOnly(kindOf(row)))
            break;
        if (m_checks.isInMenus(row))
            showReferenceError(row);
        else
            deleteRecords(orvo::table::MenuResource, {m_currentKey});
    }
}

void OrvoResources::deleteForms() {
    const QModelIndexList rows = m_ui->tvRes->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;
    // A menu that refers to a form keeps nothing from being deleted: the engineer is told of it.
    const auto used = std::find_if(rows.begin(), rows.end(), [this](const QModelIndex& row) {
        return m_checks.isInMenus(row);
    });
    if (used != rows.end())
        showReferenceError(*used);
    // The tool knows forms by their names. Of two with one name it would take either; the record
    // takes what is stored for it along.
    QStringList keys;
    CToolFormDel tool(this);
    for (const QModelIndex& row : rows)
        if (m_names.isAmbiguous(row))
            keys.append(keyOf(row));
        else
            tool.names.append(nameOf(row));
    if (!tool.names.isEmpty())
        tool.Perform(false);
    deleteRecords(orvo::table::MenuResource, keys);
}

void OrvoResources::deleteFiles() {
    const QModelIndexList rows = m_ui->tvRes->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;
    QStringList keys;
    CToolFileDel tool(this);
    for (const QModelIndex& row : rows)
        if (m_names.isAmbiguous(row))
            keys.append(keyOf(row));
        else
            tool.files.append({getFilePath(row.parent()), nameOf(row)});
    if (!tool.files.isEmpty())
        tool.Perform(false);
    deleteRecords(orvo::table::MenuResource, keys);
}

/// The places are named in the box, and listed where each can be opened. What becomes of the
/// deletion is told below its text: forms go all the same.
void OrvoResources::showReferenceError(const QModelIndex& row) {
    const QString what = m_names.describe(row);
    const QString key = keyOf(row);
    QString details = tr("Не удалено: %1.").arg(what);
    if (!isRecordOnly(kindOf(row)))
        details = (m_ui->tvRes->selectionModel()->selectedRows().size() > 1
                       ? tr("Используется %1. Выделенные формы всё же удаляются, и элементы меню "
                            "остаются без них.")
                       : tr("%1 всё же удаляется, и элементы меню остаются без неё."))
                      .arg(what) +
                  QLatin1Char(' ') + tr("Вернуть: «Правка» → «Отменить».");
    details.replace(0, 1, details.at(0).toUpper());
    refuse(tr("Выполнение операции невозможно, так как на ресурс есть ссылки из меню."));
    m_popMessageBox->setDetails(details);
    if (!showUses(orvo::table::MenuResource, key, false))
        return;
    details += QLatin1Char('\n') + tr("Каждое место открывается из панели «Где используется».");
    nameUsesInBox(orvo::table::MenuResource, {key}, details);
}
