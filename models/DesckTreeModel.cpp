#include "models/DesckTreeModel.h"

namespace {

enum Column { Name = 0, KeyLink = 1, IsFolder = 4 };

QString iconPath(const TabRec& row) {
    if (row.level() == 0)
        return QStringLiteral(":/res/folders1.png");
    if (!row.data(IsFolder).toBool())
        return QStringLiteral(":/res/descktop1.png");
    return row.isExpanded() ? QStringLiteral(":/res/openfolder1.png")
                            : QStringLiteral(":/res/closedfolder1.png");
}

} // namespace

DesckTreeModel::DesckTreeModel(const QStringList& headers, QObject*)
    : TreeModelCore(headers, KeyLink, Qt::ItemIsEditable) {}

QVariant DesckTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const TabRec& row = *getItem(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return row.data(index.column());
    case Qt::DecorationRole:
        return index.column() == Name ? m_icons.resource(iconPath(row)) : QVariant();
    case Qt::AccessibleTextRole:
        return spoken(index);
    case orvo::KeyRole:
        return row.data(KeyLink);
    default:
        return {};
    }
}

bool DesckTreeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    const QVariant oldName = getItem(index)->data(Name);
    const bool renames = index.column() == Name && role == Qt::EditRole && value != oldName;
    if (!TreeModelCore::setData(index, value, role))
        return false;
    if (renames)
        emit nameChanged(value.toString());
    return true;
}

bool DesckTreeModel::moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                              const QModelIndex& destinationParent, int destinationChild) {
    return moveValues(sourceParent, sourceRow, count, destinationParent, destinationChild);
}

bool DesckTreeModel::isItemFolder(const QModelIndex& index) const {
    return !index.isValid() || getItem(index)->data(IsFolder).toBool();
}

int DesckTreeModel::getFirstDesckElement(const QModelIndex& index) const {
    if (!index.isValid())
        return -1;
    const TabRec* parent = getItem(index);
    for (int row = 0; row < parent->childCount(); ++row) {
        if (!parent->child(row)->data(IsFolder).toBool())
            return row;
    }
    return -1;
}
