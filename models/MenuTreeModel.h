// MenuTreeModel.h: the menu of the current desktop, and the drag side of the menu editor.
#ifndef ORVO_MODELS_MENUTREEMODEL_H
#define ORVO_MODELS_MENUTREEMODEL_H

#include "frame/IconCache.h"
#include "models/TabRec.h"
#include "models/TreeModelCore.h"

/// Its columns are in menu/Columns.h. The model itself looks at 0 caption, 1 type as a word, 4 icon
/// file name and 5 KeyLink (the key).
///
/// A drag carries "OrvoMenu/menu/dragdrop": the key of each dragged row in UTF-8, each followed by
/// ";". A drop changes no row; it emits dragdropOperation.
class MenuTreeModel : public orvo::TreeModelCore<TabRec> {
    Q_OBJECT
public:
    /// `iconsPath` ends with the separator. `parent`: Unused; the published interface has this
    /// parameter.
    MenuTreeModel(const QStringList& headers, const QString& iconsPath, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// As in the core; screen readers get a word for the first column, whose title is blank.
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override { return rowCount(parent) > 0; }
    /// Moves the values of rows from one parent to another; rows below them are lost. False within
    /// one parent. Unused; the published interface has this operation.
    bool moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                  const QModelIndex& destinationParent, int destinationChild) override;

    QStringList mimeTypes() const override;
    /// Never null, even for no rows; the caller owns it.
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    /// Refuses to drop a row on itself or below itself, and several rows on a sibling of one of
    /// them.
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    /// Emits dragdropOperation. Always false, so that the view removes no rows.
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }

    /// As in the core, but an empty key gives the top row, below which elements without a parent
    /// belong; invalid in an empty model.
    QModelIndex findIndexByKey(const QString& key) const;
    QString getItemKeyLink(const QModelIndex& index) const { return itemKey(index); }
    /// False for an invalid index, true for the top row.
    bool itemIsFolder(const QModelIndex& index) const;
    int getItemLevel(const QModelIndex& index) const { return itemLevel(index); }
    bool itemIsFirstSibling(const QModelIndex& index) const;
    bool itemIsLastSibling(const QModelIndex& index) const;

    /// Copies the rows below `source` to the head of those below `destination`, with all below
    /// them. Always true.
    bool copyChildRows(const QModelIndex& source, const QModelIndex& destination);
    /// Moves a row with all below it among its siblings. False if a row is not there.
    bool moveSiblingItem(int from, int to, const QModelIndex& parent) {
        return moveSibling(from, to, parent, true);
    }
    /// Moves a row with all below it to another parent. False, and nothing changed, if the row or
    /// the place is not there or is below the row.
    bool moveItem(int from, int to, const QModelIndex& fromParent, const QModelIndex& toParent) {
        return moveToParent(from, to, fromParent, toParent);
    }

public slots:
    void setItemExpanded(const QModelIndex& index) { setItemExpandedFlag(index, true); }
    void setItemCollapsed(const QModelIndex& index) { setItemExpandedFlag(index, false); }

signals:
    /// Keys dropped on `destindex` (column 0; invalid for the empty area). `opt` is -1 for a drop
    /// on the row itself, else the row below it before which the indicator stood.
    void dragdropOperation(const QModelIndex& destindex, QStringList srcList, int opt);

private:
    QVariant decoration(const TabRec& row) const;

    const QString m_iconsPath;
    mutable orvo::IconCache m_icons;
};

#endif
