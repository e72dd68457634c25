#include "models/ResTreeModel.h"

#include "frame/ClipboardRows.h"
#include "frame/Kinds.h"
#include "frame/Values.h"
#include "models/DragKeys.h"

#include <QColor>
#include <QMimeData>

namespace {

enum Column {
    Name = 0,
    Resource = 1,
    Icon = 2,
    Lock = 3,
    KeyLink = 5,
    Type = 6,
    IsFolder = 9,
    Blocked = 12
};
using orvo::Kind;
enum SearchRole { NameRole = Qt::UserRole + 1, ResourceRole = Qt::UserRole + 2 };

/// The drag format of a type; empty for rows that cannot be dragged.
QString dragType(int type) {
    const orvo::ResourceKind* kind = orvo::resourceKind(type);
    return kind ? QString::fromLatin1(kind->dragFormat) : QString();
}

} // namespace

ResTreeModel::ResTreeModel(const QStringList& headers, const QString& iconsPath, QObject*)
    : TreeModelCore(headers, KeyLink,
                    Qt::ItemIsEditable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled)
    , m_iconsPath(iconsPath) {}

QVariant ResTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const TabRec& row = *getItem(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return row.data(index.column());
    case Qt::DecorationRole:
        return decoration(row, index.column());
    case Qt::ForegroundRole:
        return index.column() == Name && row.data(Type).toInt() == Kind::Orphans ? QColor(Qt::red)
                                                                                 : QVariant();
    case Qt::AccessibleTextRole:
        return spoken(index);
    case orvo::KeyRole:
        return row.data(KeyLink);
    case NameRole:
        return row.data(Name);
    case ResourceRole:
        return row.data(Resource);
    default:
        return {};
    }
}

QVariant ResTreeModel::decoration(const TabRec& row, int column) const {
    const int type = row.data(Type).toInt();
    switch (column) {
    case Name:
        if (row.data(IsFolder).toBool())
            return m_icons.resource(row.isExpanded() ? QStringLiteral(":/res/openfolder1.png")
                                                     : QStringLiteral(":/res/closedfolder1.png"));
        if (const orvo::ResourceKind* kind = orvo::resourceKind(type))
            return m_icons.resource(QString::fromLatin1(kind->image));
        return {};
    case Lock: {
        const QVariant blocked = row.data(Blocked);
        if (type != Kind::Form || orvo::isNull(blocked))
            return {};
        if (blocked.toInt() == 1)
            return m_icons.resource(QStringLiteral(":/res/blocked1.png"));
        if (blocked.toInt() == 2)
            return m_icons.resource(QStringLiteral(":/res/blocked5.png"));
        return {};
    }
    case Icon: {
        const QString icon = row.data(Icon).toString();
        return icon.isNull() ? QVariant() : m_icons.file(m_iconsPath, icon);
    }
    default:
        return {};
    }
}

bool ResTreeModel::itemIsFolder(const QModelIndex& index) const {
    if (!index.isValid())
        return false;
    const TabRec& row = *getItem(index);
    return row.level() == 0 || row.data(IsFolder).toBool();
}

bool ResTreeModel::itemInSystemArea(const QModelIndex& index) const {
    return index.isValid() && getItem(index)->data(Type).toInt() == Kind::File;
}

int ResTreeModel::addfileInfo(const QModelIndex& index) {
    return index.isValid() ? item(index)->addfileInfoElement() : -1;
}

int ResTreeModel::fileInfoCount(const QModelIndex& index) const {
    return index.isValid() ? getItem(index)->fileInfoCount() : 0;
}

void ResTreeModel::clearfileInfo(const QModelIndex& index) {
    if (index.isValid())
        item(index)->clearFileInfo();
}

MyFileInfo* ResTreeModel::getfileInfo(const QModelIndex& index, int number) const {
    return index.isValid() ? item(index)->getfileInfo(number) : nullptr;
}

void ResTreeModel::setFileInfo(const QModelIndex& index, int number, const MyFileInfo& info) {
    if (index.isValid())
        item(index)->setfileInfo(number, info);
}

bool ResTreeModel::copyChildRows(const QModelIndex& source, const QModelIndex& destination) {
    copyChildren(source, destination);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Drag and drop

QStringList ResTreeModel::mimeTypes() const {
    QStringList formats;
    for (const bool hasContents : {true, false})
        for (const orvo::ResourceKind& kind : orvo::resourceKinds)
            if (kind.hasContents == hasContents)
                formats << dragType(kind.number);
    return formats;
}

QMimeData* ResTreeModel::mimeData(const QModelIndexList& indexes) const {
    const QModelIndexList rows = orvo::dragkeys::rowsOf(indexes);
    if (rows.isEmpty())
        return nullptr;
    const int type = getItem(rows.first())->data(Type).toInt();
    QStringList keys;
    for (const QModelIndex& row : rows) {
        const QString key = getItemKeyLink(row);
        if (getItem(row)->data(Type).toInt() != type || !orvo::ClipboardRows::canName(key))
            return nullptr;
        keys.append(key);
    }
    const QString format = dragType(type);
    if (format.isEmpty())
        return nullptr;
    auto* data = new QMimeData;
    data->setData(format, keys.join(QLatin1Char(';')).toUtf8());
    return data;
}

bool ResTreeModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                                   const QModelIndex& parent) const {
    if (!parent.isValid())
        return false;
    const QModelIndex target = firstColumn(parent);
    const int targetType = getItem(target)->data(Type).toInt();
    QStringList keys;
    const QString format = dragType(targetType);
    if (!format.isEmpty()) {
        const QString payload = orvo::dragkeys::payload(data, format);
        if (payload.isEmpty())
            return false;
        keys = orvo::dragkeys::keys(payload);
    }
    if (row >= rowCount(target))
        return false;

    const QModelIndex here = index(row, 0, parent);
    const bool intoHere = here.isValid() && itemIsFolder(here);
    QModelIndex destination = here;
    if (here.isValid() && !intoHere)
        destination = here.parent();
    else if (!here.isValid())
        destination = itemIsFolder(target) ? target : target.parent();

    QModelIndexList above;
    for (QModelIndex at = destination; getItemLevel(at) >= 2;)
        above.append(at = at.parent());
    QSet<QString> folderNames, resourceNames;
    for (const QString& key : keys) {
        const QModelIndex source = findIndexByKey(key);
        if (!intoHere && source.parent() == destination)
            return false;
        if (above.contains(source))
            return false;
        if (itemIsFolder(source))
            folderNames.insert(itemText(source, Name));
        else
            resourceNames.insert(itemText(source, Resource));
    }
    // The file area stands for real folders, in which names are unique.
    return targetType != Kind::File || !(holdsAny(destination, Name, folderNames) ||
                                         holdsAny(destination, Resource, resourceNames));
}

bool ResTreeModel::holdsAny(const QModelIndex& folder, int column,
                            const QSet<QString>& texts) const {
    const TabRec* row = getItem(folder);
    for (int i = 0; i < row->childCount() && !texts.isEmpty(); ++i) {
        if (texts.contains(row->child(i)->data(column).toString()))
            return true;
    }
    return false;
}

bool ResTreeModel::dropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                                const QModelIndex& parent) {
    QModelIndex target = firstColumn(parent);
    if (row < 0 && !itemIsFolder(target))
        target = target.parent();
    if (!target.isValid())
        return false;
    const QString format = dragType(getItem(target)->data(Type).toInt());
    if (format.isEmpty())
        return false;
    const QString payload = orvo::dragkeys::payload(data, format);
    if (!payload.isNull())
        emit dragdropOperation(target, orvo::dragkeys::keys(payload));
    return false;
}
