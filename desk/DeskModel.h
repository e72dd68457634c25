// DeskModel.h: the menu of a desktop as operators see it, a tree of its elements.
#ifndef ORVO_DESK_DESKMODEL_H
#define ORVO_DESK_DESKMODEL_H

#include "frame/IconCache.h"
#include "models/TabRec.h"
#include "models/TreeModelCore.h"

#include <QHash>
#include <QIcon>

namespace orvo::desk {

/// Columns are those of DeskColumn. Rows have names, icons and a tool tip, and cannot be edited.
class DeskModel : public TreeModelCore<TabRec> {
    Q_OBJECT
public:
    enum Role {
        SeparatorRole = Qt::UserRole + 1, ///< bool: a line is drawn above the row
        FolderRole,                       ///< bool
        BrokenRole,                       ///< bool: it cannot be opened
        OwnIconRole, ///< QIcon of its kind: for one whose own file is no picture
    };

    explicit DeskModel(const QString& iconsPath);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// Only rows that hold others can be opened.
    bool hasChildren(const QModelIndex& parent = {}) const override { return rowCount(parent) > 0; }

    /// The icon of an open folder differs from that of a closed one.
    void setRowExpanded(const QModelIndex& row, bool expanded) {
        setItemExpandedFlag(row, expanded);
    }

    static QVariant value(const QModelIndex& row, int column);
    static bool isFolder(const QModelIndex& row);

private:
    QIcon icon(const TabRec& row) const;
    QIcon ownIcon(const TabRec& row) const;

    QString m_iconsPath;
    mutable IconCache m_icons;
    mutable QHash<QString, QIcon> m_ownIcons;
};

} // namespace orvo::desk

#endif
