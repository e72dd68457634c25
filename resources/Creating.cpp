// Creating rows and editing them in the passport, with the icon picker. What is new or changed
// lives in the tree alone until it is saved.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/ViewRows.h"
#include "models/Passport.h"
#include "picker/PopObjectList.h"
#include "resources/Columns.h"
#include "resources/Fields.h"

#include <QToolButton>

using orvo::resources::isFolder;
using orvo::resources::ResColumn;

void OrvoResources::on_actAddModule_triggered() {
    addRow(m_ui->actAddModule, tr("новый модуль"));
}

void OrvoResources::on_actAddFunction_triggered() {
    addRow(m_ui->actAddFunction, tr("новая функция"));
}

void OrvoResources::on_actAddFolder_triggered() {
    addRow(m_ui->actAddFolder, tr("новая папка"));
}

void OrvoResources::addRow(QAction* action, const QString& caption) {
    if (!m_resModel)
        return; // the start failed
    const QModelIndex current = m_resModel->findIndexByKey(m_currentKey);
    if (!current.isValid())
        return;
    const QPersistentModelIndex parent(isFolder(current) ? current : current.parent());
    const bool orphans = orvo::sameText(m_resModel->getItemKeyLink(parent),
                                        QString::fromLatin1(orvo::rowkey::orphans));
    // No record stands behind the folder of the orphans, and none is known of a resource at the
    // top: what is made there would be shown by no start.
    if (!parent.isValid() || orphans || !permits(action, current)) {
        refuse(tr("Здесь этого создать нельзя: %1.").arg(m_names.describe(current)));
        return;
    }
    // There is one edit at a time.
    if (!finishEdit())
        return;
    // A resource takes its kind from its folder.
    const bool folder = action == m_ui->actAddFolder;
    const QVariant type = parent.sibling(parent.row(), ResColumn::Type).data();
    const QString folderKey = m_resModel->getItemKeyLink(parent);
    const int row = folder ? 0 : m_resModel->rowCount(parent);
    if (!m_resModel->insertRows(row, 1, parent))
        return;
    enableEditButtons(true);
    const QModelIndex added = m_resModel->index(row, 0, parent);
    const QString key = QString::fromLatin1(GenGuid32());
    orvo::setRow(*m_resModel, added,
                 {{ResColumn::KeyLink, key},
                  {ResColumn::FolderKey, folderKey},
                  {ResColumn::Caption, caption},
                  {ResColumn::IsFolder, folder},
                  {ResColumn::Type, type},
                  {ResColumn::IsNew, true}});
    m_edit.beginNew(added, key, folder ? QStringLiteral("folder") : QString(), caption);
    setActionsDisabled();
    m_ui->tvRes->scrollTo(added);
    orvo::makeCurrent(m_ui->tvRes, added);
}

void OrvoResources::on_editor_valueChanged(const QString& rowName, const QVariant& value) {
    QModelIndex row = m_resModel->findIndexByKey(m_currentKey);
    if (!row.isValid()) {
        // The row has gone and left its passport: what cannot be kept is not taken.
        m_propModel->clearRows();
        return;
    }
    // Nothing can come of an edit whose row is gone: it must not swallow this one.
    if (m_edit.isLost())
        endEdit();
    if (m_edit.isOpen() && !m_edit.isOf(m_currentKey)) {
        // It waits because its name was refused. What is typed here would show, and be stored with
        // neither row.
        const QString edited = m_names.describe(m_edit.row());
        const QString reason = saveEdit();
        if (m_edit.isOpen()) {
            m_propModel->clearRows();
            showPassport(row);
            refuse(tr("Сначала закончите правку: %1.\n%2").arg(edited, reason));
            return;
        }
        row = m_resModel->findIndexByKey(m_currentKey);
    }
    // A row without a column opens an edit too.
    if (!m_edit.isOpen()) {
        m_edit.begin(row, m_currentKey);
        enableEditButtons(true);
    }
    const int column = orvo::resources::itemFields().editedColumn(rowName);
    if (column >= 0)
        m_edit.change(*m_resModel, column, value);
}

void OrvoResources::on_passp_buttonpressed(const QString& rowName) {
    m_popTarget = rowName;
    if (!isIconRow(rowName))
        return;
    // What was chosen last is offered again.
    iconPicker()->reloadAndShow();
}

void OrvoResources::on_poplist_OK_Pressed() {
    if (m_popList && isIconRow(m_popTarget))
        takeChosenIcon();
}
