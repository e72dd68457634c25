#include "models/MenuTreeModel.h"

#include "frame/ClipboardRows.h"
#include "frame/CommonFunctions.h"
#include "frame/Text.h"
#include "models/DragKeys.h"

#include <QMimeData>

namespace {

enum Column { Caption = 0, Type = 1, Icon = 4, KeyLink = 5 };

const QLatin1String dragType("OrvoMenu/menu/dragdrop");

/// What the word in the row's type column stands for; see getMenuAttributes.
int typeOf(const TabRec& row) {
    return getMenuAttributes(row.data(Type).toString());
}

bool isFolderRow(const TabRec& row) {
    return typeOf(row) == 0;
}

} // namespace

MenuTreeModel::MenuTreeModel(const QStringList& headers, const QString& iconsPath, QObject*)
    : TreeModelCore(headers, KeyLink,
                    Qt::ItemIsEditable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled)
    , m_iconsPath(iconsPath) {}

QVariant MenuTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const TabRec& row = *getItem(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return row.data(index.column());
    case Qt::DecorationRole:
        return index.column() == Caption ? decoration(row) : QVariant();
    case Qt::AccessibleTextRole:
        return spoken(index);
    case orvo::KeyRole:
        return row.data(KeyLink);
    default:
        return {};
    }
}

QVariant MenuTreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role == Qt::AccessibleTextRole && orientation == Qt::Horizontal && section == Caption)
        return orvo::Text::tr("Наименование");
    return TreeModelCore::headerData(section, orientation, role);
}

QVariant MenuTreeModel::decoration(const TabRec& row) const {
    if (row.level() == 0)
        return m_icons.resource(QStringLiteral(":/res/menu1.png"));
    const QString icon = row.data(Icon).toString();
    if (isFolderRow(row) && icon.isNull())
        return m_icons.resource(row.isExpanded() ? QStringLiteral(":/res/openfolder1.png")
                                                 : QStringLiteral(":/res/closedfolder1.png"));
    return typeOf(row) >= 0 && !icon.isNull() ? m_icons.file(m_iconsPath, icon) : QVariant();
}

bool MenuTreeModel::moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                             const QModelIndex& destinationParent, int destinationChild) {
    return moveValues(sourceParent, sourceRow, count, destinationParent, destinationChild);
}

QModelIndex MenuTreeModel::findIndexByKey(const QString& key) const {
    return key.isEmpty() ? index(0, 0) : TreeModelCore::findIndexByKey(key);
}

bool MenuTreeModel::itemIsFolder(const QModelIndex& index) const {
    if (!index.isValid())
        return false;
    const TabRec& row = *getItem(index);
    return row.level() == 0 || isFolderRow(row);
}

bool MenuTreeModel::itemIsFirstSibling(const QModelIndex& index) const {
    return index.isValid() && getItem(index)->childNumber() == 0;
}

bool MenuTreeModel::itemIsLastSibling(const QModelIndex& index) const {
    if (!index.isValid())
        return false;
    const TabRec* row = getItem(index);
    return row->parent() && row->childNumber() == row->parent()->childCount() - 1;
}

bool MenuTreeModel::copyChildRows(const QModelIndex& source, const QModelIndex& destination) {
    copyChildren(source, destination);
    return true;
}

QStringList MenuTreeModel::mimeTypes() const {
    return {dragType};
}

QMimeData* MenuTreeModel::mimeData(const QModelIndexList& indexes) const {
    QByteArray payload;
    for (const QModelIndex& row : orvo::dragkeys::rowsOf(indexes)) {
        const QString key = getItemKeyLink(row);
        if (orvo::ClipboardRows::canName(key))
            payload += key.toUtf8() + ';';
    }
    auto* data = new QMimeData;
    data->setData(dragType, payload);
    return data;
}

bool MenuTreeModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                                    const QModelIndex& parent) const {
    const QStringList keys = orvo::dragkeys::keys(orvo::dragkeys::payload(data, dragType));
    const QModelIndex target = firstColumn(parent);
    for (const QString& key : keys) {
        const QModelIndex source = findIndexByKey(key);
        // The walk ends below the top row, which is therefore never refused.
        for (QModelIndex at = target; at.parent().isValid(); at = at.parent()) {
            if (at == source)
                return false;
        }
    }
    if (keys.size() < 2)
        return true;
    for (const QString& key : keys) {
        if (findIndexByKey(key).parent() == target.parent())
            return false;
    }
    return true;
}

bool MenuTreeModel::dropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                                 const QModelIndex& parent) {
    const QStringList keys = orvo::dragkeys::keys(orvo::dragkeys::payload(data, dragType));
    emit dragdropOperation(firstColumn(parent), keys, row < 0 ? -1 : row);
    return false;
}
