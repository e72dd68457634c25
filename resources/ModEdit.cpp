// What the host asks of the editor: its open edit, before it closes the editor or reopens it,
// and to show a record.
#include "ui_OrvoResources.h"

#include "resources/OrvoResources.h"

#include "frame/ViewRows.h"
#include "resources/Columns.h"

using orvo::resources::ResColumn;
using orvo::resources::ResourceEdit;

QString OrvoResources::ModEditText() const {
    if (!m_edit.isOpen())
        return {};
    const QString name = m_edit.row().siblingAtColumn(ResColumn::Caption).data().toString();
    const QString what =
        m_editState == ResourceEdit::NewRow ? tr("новая строка «%1»") : tr("строка «%1»");
    return what.arg(name.isEmpty() ? tr("без имени") : name);
}

QPair<QString, QString> OrvoResources::ModEditRecord() const {
    if (!m_edit.isOpen())
        return {};
    return {orvo::resources::tableOf(m_edit.row()),
            m_editState == ResourceEdit::NewRow ? QString() : m_edit.key()};
}

bool OrvoResources::ModEditSave() {
    return finishEdit();
}

void OrvoResources::ModEditCancel() {
    on_cancel_pressed();
}

bool OrvoResources::ModShowRecord(const QString& table, const QString& key, const QString&) {
    const QModelIndex row =
        m_resModel && !key.isEmpty() ? m_resModel->findIndexByKey(key) : QModelIndex();
    if (!row.isValid() || table != QLatin1String(orvo::resources::tableOf(row)))
        return false;
    orvo::makeCurrent(m_ui->tvRes, row);
    m_ui->tvRes->scrollTo(row);
    m_ui->tvRes->setFocus();
    return true;
}

bool OrvoResources::ModHasRow(const QString& table, const QString& key) const {
    const QModelIndex row =
        m_resModel && !key.isEmpty() ? m_resModel->findIndexByKey(key) : QModelIndex();
    return row.isValid() && table == QLatin1String(orvo::resources::tableOf(row));
}
