#include "menu/ElementMoves.h"

#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/OpenMenu.h"

#include <QScopedValueRollback>
#include <QStringList>
#include <QTreeView>

#include <cassert>

namespace orvo::menu {

void ElementMoves::move(QTreeView& view, const QModelIndex& row, int32_t position,
                        const QModelIndex& target) {
    const QModelIndex current = view.currentIndex();
    const bool goesAlong = currentStandsIn(&view, row);
    const QString key = m_menu.tree().getItemKeyLink(current);
    assert(!m_isMoving);
    const QScopedValueRollback<bool> moving(m_isMoving, true);
    m_menu.tree().moveItem(row.row(), position, row.parent(), target);
    if (current.isValid() && goesAlong)
        makeCurrent(&view, m_menu.elementRow(key));
}

void ElementMoves::gather(QTreeView& view, const QString& folder) {
    QStringList folders{folder};
    while (!folders.isEmpty()) {
        const QString folderKey = folders.takeFirst();
        QStringList children;
        walkGroup(m_menu.records(), 1, KeyValues().text(folderKey), [&](const MDRData* record) {
            if (!holdsText(record, field::parent, folderKey))
                return false;
            children << textOf(record, field::KeyLink);
            return true;
        });
        for (const QString& child : children) {
            const QModelIndex parent = m_menu.elementRow(folderKey);
            const QModelIndex row = m_menu.recordRow(child);
            const int place = m_menu.tree().rowCount(parent);
            if (row.isValid()) {
                if (row.parent() != parent)
                    move(view, row, place, parent);
            } else if (m_menu.tree().insertRows(place, 1, parent)) {
                m_menu.fillRow(parent, place, seekKey(m_menu.records(), child));
                folders << child;
            }
        }
    }
}

} // namespace orvo::menu
