#include "models/PopTreeModel.h"

#include "frame/Kinds.h"

using orvo::Kind;
using orvo::PickColumn;

PopTreeModel::PopTreeModel(const QStringList& headers, const QString& filesPath, QObject*)
    : TreeModelCore(headers, PickColumn::KeyLink, Qt::ItemIsEditable)
    , m_filesPath(filesPath) {}

void PopTreeModel::setInitialFolder(const QString& folder) {
    m_initialFolderPath = m_filesPath + folder + QLatin1Char('/');
}

bool PopTreeModel::itemIsFolder(const QModelIndex& index) const {
    return index.isValid() && getItem(index)->data(PickColumn::IsFolder).toBool();
}

QVariant PopTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const TabRec& row = *getItem(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return row.data(index.column());
    case Qt::DecorationRole:
        return index.column() == PickColumn::Name ? decoration(row) : QVariant();
    case orvo::KeyRole:
        return row.data(PickColumn::KeyLink);
    default:
        return {};
    }
}

QVariant PopTreeModel::decoration(const TabRec& row) const {
    if (row.data(PickColumn::IsFolder).toBool())
        return m_icons.resource(row.isExpanded() ? QStringLiteral(":/res/openfolder1.png")
                                                 : QStringLiteral(":/res/closedfolder1.png"));
    if (m_objectType == Kind::File && m_showFileIcons)
        return m_icons.file(m_initialFolderPath, row.data(PickColumn::Name).toString());
    const orvo::ResourceKind* kind = orvo::resourceKind(m_objectType);
    return kind ? m_icons.resource(QString::fromLatin1(kind->image)) : QVariant();
}
