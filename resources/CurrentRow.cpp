// What a move of the current row or of the selection does. A move away from an unsaved row saves
// it: the editor never asks whether changes are to be dropped.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "models/SimilarRows.h"
#include "resources/Columns.h"

#include <QItemSelectionModel>

using orvo::resources::ResColumn;

void OrvoResources::on_tvRes_currentChanged(const QModelIndex& current, const QModelIndex&) {
    if (m_following)
        return;
    m_currentKey = m_resModel->getItemKeyLink(current);
    m_propModel->clearRows();
    if (m_edit.isLost())
        endEdit();
    if (!m_edit.isOpen()) {
        setActionsDisabled();
        if (m_resModel->itemInSystemArea(current))
            setActionsEnabledSystem(current);
        else
            setActionsEnabledMenuRes(current);
    } else if (m_editState != NewRow || current.siblingAtColumn(0) != m_newItemIndex) {
        // A new row that was saved before bears the mark of a new one still, and is another row.
        on_save_pressed();
    }
    showPassport(current);
}

void OrvoResources::on_tvRes_selectionChanged(const QItemSelection& selected,
                                              const QItemSelection&) {
    // The kind of a row tells its area as well.
    orvo::restrictSelectionToSimilarRows(
        *m_ui->tvRes->selectionModel(), selected, [](const QModelIndex& a, const QModelIndex& b) {
            return a.parent() == b.parent() &&
                   a.siblingAtColumn(ResColumn::Type).data() ==
                       b.siblingAtColumn(ResColumn::Type).data() &&
                   orvo::resources::isFolder(a) == orvo::resources::isFolder(b);
        });
}
