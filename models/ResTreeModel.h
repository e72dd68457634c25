// ResTreeModel.h: folders and resources of the resource editor, and its drag side.
#ifndef ORVO_MODELS_RESTREEMODEL_H
#define ORVO_MODELS_RESTREEMODEL_H

#include "frame/IconCache.h"
#include "models/TabRec.h"
#include "models/TreeModelCore.h"

#include <QSet>

/// Its columns are in resources/Columns.h. The model itself looks at 0 name, 1 resource, 2 icon
/// file name, 3 lock, 5 KeyLink (the key), 6 type (orvo::Kind), 9 whether it is a folder and 12
/// blocked (1 by this user, 2 by another). Roles 257 and 258 answer columns 0 and 1 for the search.
///
/// A drag carries rows of one type; the MIME type tells which: "OrvoResources/" followed by modres,
/// funcres, menures, sysres for 1 to 4 and "/dragdrop". The payload is the rows' keys in UTF-8,
/// joined by ";". A drop changes no row; it emits dragdropOperation.
class ResTreeModel : public orvo::TreeModelCore<TabRec> {
    Q_OBJECT
public:
    /// `iconsPath` ends with the separator. `parent`: Unused; the published interface has this
    /// parameter.
    ResTreeModel(const QStringList& headers, const QString& iconsPath, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    QStringList mimeTypes() const override;
    /// Null if there are no rows, if their types differ, or if the type is none of 1 to 4; else the
    /// caller owns it.
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    /// Emits dragdropOperation if the target's type has a payload. Always false, so that the view
    /// removes no rows.
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }

    /// A null string for an invalid index.
    QString getItemKeyLink(const QModelIndex& index) const { return itemKey(index); }
    /// False for an invalid index, true for a top row.
    bool itemIsFolder(const QModelIndex& index) const;
    int getItemLevel(const QModelIndex& index) const { return itemLevel(index); }
    /// Whether the row is of type 4; false for an invalid index.
    bool itemInSystemArea(const QModelIndex& index) const;
    /// Whether there are rows below; of the whole tree for an invalid index. Beside the base
    /// class's function of that name, which the views ask, and which it does not override.
    bool hasChildren(const QModelIndex& index) { return rowCount(index) > 0; }
    using QAbstractItemModel::hasChildren;

    // The list of files that a row may carry.
    int addfileInfo(const QModelIndex& index); ///< the new element's position; -1: invalid index
    int fileInfoCount(const QModelIndex& index) const; ///< 0 for an invalid index
    void clearfileInfo(const QModelIndex& index);
    /// Null for an invalid index or number; valid until the row's list changes.
    MyFileInfo* getfileInfo(const QModelIndex& index, int number) const;
    void setFileInfo(const QModelIndex& index, int number, const MyFileInfo& info);

    // As in MenuTreeModel; file lists stay behind, and an invalid `toParent` is the top.
    bool copyChildRows(const QModelIndex& source, const QModelIndex& destination);
    bool moveSiblingItem(int from, int to, const QModelIndex& parent) {
        return moveSibling(from, to, parent, true);
    }
    bool moveItem(int from, int to, const QModelIndex& fromParent, const QModelIndex& toParent) {
        return moveToParent(from, to, fromParent, toParent);
    }

public slots:
    void setItemExpanded(const QModelIndex& index) { setItemExpandedFlag(index, true); }
    void setItemCollapsed(const QModelIndex& index) { setItemExpandedFlag(index, false); }

signals:
    /// Keys dropped into the folder `destindex` (column 0).
    void dragdropOperation(const QModelIndex& destindex, QStringList srcList);

private:
    QVariant decoration(const TabRec& row, int column) const;
    /// Whether a row of the folder has one of these texts in a column.
    bool holdsAny(const QModelIndex& folder, int column, const QSet<QString>& texts) const;

    const QString m_iconsPath;
    mutable orvo::IconCache m_icons;
};

#endif
