#include "menu/DesktopPreview.h"

#include "editor/EditorWindow.h"
#include "frame/Launch.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "menu/DesckRows.h"
#include "menu/ElementEdit.h"
#include "menu/OpenMenu.h"

#include <cassert>
#include <utility>

namespace orvo::menu {

DesktopPreview::DesktopPreview(editor::EditorWindow& window, const OpenMenu& menu,
                               const ElementEdit& edit,
                               const std::unique_ptr<DesckTreeModel>& desktops,
                               const QString& current)
    : m_window(window)
    , m_menu(menu)
    , m_edit(edit)
    , m_desktops(desktops)
    , m_current(current) {
    m_changed.setSingleShot(true);
    m_changed.setInterval(0);
    QObject::connect(&m_changed, &QTimer::timeout, &m_changed, [this] { tell(); });
}

void DesktopPreview::show() {
    const QModelIndex desk = m_desktops ? desckRow(*m_desktops, m_current) : QModelIndex();
    if (!desk.isValid() || m_desktops->isItemFolder(desk)) {
        m_window.refuse(tr("Выберите рабочий стол."));
        return;
    }
    PreviewRequest request;
    request.desktop = m_current;
    m_window.doCall(callPreview, &request);
    if (!request.refusal.isEmpty()) {
        m_window.refuse(request.refusal);
        return;
    }
    follow();
}

/// The rows have what was typed; whether it is saved the buttons know.
void DesktopPreview::follow() {
    if (!m_desktops)
        return;
    assert(m_menu.hasTree());
    m_changed.start();
    if (std::exchange(m_isFollowing, true))
        return;
    const auto changed = [this] { m_changed.start(); };
    const MenuTreeModel* tree = &m_menu.tree();
    QObject::connect(tree, &QAbstractItemModel::dataChanged, &m_changed, changed);
    QObject::connect(tree, &QAbstractItemModel::rowsInserted, &m_changed, changed);
    QObject::connect(tree, &QAbstractItemModel::rowsRemoved, &m_changed, changed);
    QObject::connect(&m_window, &editor::EditorWindow::editStateChanged, &m_changed, changed);
}

void DesktopPreview::tell() const {
    assert(m_isFollowing);
    PreviewEdit edit;
    const QModelIndex desk = desckRow(*m_desktops, m_current);
    if (desk.isValid() && !m_desktops->isItemFolder(desk) &&
        !desk.siblingAtColumn(DesckColumn::IsNew).data().toBool())
        edit.desktop = m_current;
    const QModelIndex row = m_edit.isOpen() ? m_edit.row(m_menu.tree()) : QModelIndex();
    if (row.isValid()) {
        const TabRec& record = *m_menu.tree().getItem(row);
        edit.key = m_edit.key();
        edit.isNew = m_edit.isNew();
        for (const editor::RecordField& one : m_menu.fields())
            if (one.name)
                edit.values.insert(QString::fromLatin1(one.name), record.data(one.column));
        const QString parent = m_menu.tree().getItemKeyLink(row.parent());
        edit.values.insert(QString::fromLatin1(field::parent),
                           m_menu.recordRow(parent).isValid() ? parent : QString());
    }
    m_window.doCall(callPreviewEdit, &edit);
}

} // namespace orvo::menu
