// DesckTreeModel.h: the tree of desktops and their folders.
#ifndef ORVO_MODELS_DESCKTREEMODEL_H
#define ORVO_MODELS_DESCKTREEMODEL_H

#include "frame/IconCache.h"
#include "models/TabRec.h"
#include "models/TreeModelCore.h"

/// Columns: 0 name, 1 KeyLink (the key), 2 ParentKey, 3 order_, 4 whether it is a folder, 5 whether
/// it is new. Operations of the core: TreeModelCore.h.
class DesckTreeModel : public orvo::TreeModelCore<TabRec> {
    Q_OBJECT
public:
    /// `parent`: Unused; the published interface has this parameter.
    explicit DesckTreeModel(const QStringList& headers, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    /// Moves the values of rows from one parent to another; rows below them are lost. False within
    /// one parent. Unused; the published interface has this operation.
    bool moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                  const QModelIndex& destinationParent, int destinationChild) override;

    /// A null string for an invalid index.
    QString getItemKeyLink(const QModelIndex& index) const { return itemKey(index); }
    /// True for an invalid index.
    bool isItemFolder(const QModelIndex& index) const;
    /// -1 for an invalid index, 0 for the top row.
    int getItemLevel(const QModelIndex& index) const { return itemLevel(index); }
    /// Whether there are rows below; of the whole tree for an invalid index. Beside the base
    /// class's function of that name, which the views ask, and which it does not override.
    bool hasChildren(const QModelIndex& index) { return rowCount(index) > 0; }
    using QAbstractItemModel::hasChildren;
    /// Row of the first child that is a desktop; -1 if there is none or the index is invalid.
    int getFirstDesckElement(const QModelIndex& index) const;
    /// Moves a row among its siblings: the values only, a folder arrives empty.
    bool moveSiblingItem(int from, int to, const QModelIndex& parent) {
        return moveSibling(from, to, parent, false);
    }

public slots:
    /// Change the icon at the view's next repaint, and nothing else.
    void setItemExpanded(const QModelIndex& index) { setItemExpandedFlag(index, true); }
    void setItemCollapsed(const QModelIndex& index) { setItemExpandedFlag(index, false); }

signals:
    /// The name was edited (column 0, role 2) to another text.
    void nameChanged(const QString& text);

private:
    mutable orvo::IconCache m_icons;
};

#endif
