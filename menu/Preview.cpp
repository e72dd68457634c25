// What the preview of a desktop follows: the current desktop, and the open edit of an element.
#include "menu/OrvoMenu.h"

#include "frame/Launch.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"

#include <QToolButton>

using orvo::menu::DesckColumn;

void OrvoMenu::showPreview() {
    const QModelIndex desk = m_desckModel ? desckRow(m_currentDesckKey) : QModelIndex();
    if (!desk.isValid() || m_desckModel->isItemFolder(desk)) {
        refuse(tr("Выберите рабочий стол."));
        return;
    }
    orvo::PreviewRequest request;
    request.desktop = m_currentDesckKey;
    doCall(orvo::callPreview, &request);
    if (!request.refusal.isEmpty()) {
        refuse(request.refusal);
        return;
    }
    followForPreview();
}

void OrvoMenu::slot_modNotify(QString name, QVariant value) {
    if (name == QLatin1String("preview") && m_desckModel)
        followForPreview();
    EditorWindow::slot_modNotify(name, value);
}

/// The rows have what was typed; whether it is saved the buttons know.
void OrvoMenu::followForPreview() {
    m_previewTimer.start();
    if (std::exchange(m_hasPreview, true))
        return;
    const auto changed = [this] { m_previewTimer.start(); };
    connect(m_menuModel.get(), &QAbstractItemModel::dataChanged, this, changed);
    connect(m_menuModel.get(), &QAbstractItemModel::rowsInserted, this, changed);
    connect(m_menuModel.get(), &QAbstractItemModel::rowsRemoved, this, changed);
    connect(this, &OrvoMenu::editStateChanged, this, changed);
}

void OrvoMenu::updatePreview() {
    orvo::PreviewEdit edit;
    const QModelIndex desk = desckRow(m_currentDesckKey);
    if (desk.isValid() && !m_desckModel->isItemFolder(desk) &&
        !desk.siblingAtColumn(DesckColumn::IsNew).data().toBool())
        edit.desktop = m_currentDesckKey;
    const QModelIndex row =
        m_elementEdit.isOpen() ? m_elementEdit.row(*m_menuModel) : QModelIndex();
    if (row.isValid()) {
        const TabRec& record = *m_menuModel->getItem(row);
        edit.key = m_elementEdit.key();
        edit.isNew = m_elementEdit.isNew();
        for (const orvo::editor::RecordField& one : m_elementFields)
            if (one.name)
                edit.values.insert(QString::fromLatin1(one.name), record.data(one.column));
        const QString parent = m_menuModel->getItemKeyLink(row.parent());
        edit.values.insert(QString::fromLatin1(orvo::field::parent),
                           recordRow(parent).isValid() ? parent : QString());
    }
    doCall(orvo::callPreviewEdit, &edit);
}
