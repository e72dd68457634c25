#include "apps/client/find/FindModel.h"

#include "apps/client/Look.h"
#include "frame/Kinds.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"

#include <QIcon>

#include <utility>

namespace orvo::app {

namespace {

/// The picture of its kind, as the editors' trees show it. The pictures come with their library.
const char* pictureOf(const catalogue::Found& found) {
    if (found.table == QLatin1String(table::Users))
        return ":/orvo/app/person.png";
    if (found.table == QLatin1String(table::MenuFolder))
        return found.isFolder ? ":/res/closedfolder1.png" : ":/res/descktop1.png";
    if (found.isFolder)
        return found.isSeparator ? "" : ":/res/closedfolder1.png";
    const ResourceKind* kind = resourceKind(found.kind);
    return kind ? kind->image : "";
}

} // namespace

FindModel::FindModel(QString iconsPath, QObject* parent)
    : QAbstractTableModel(parent)
    , m_iconsPath(std::move(iconsPath)) {}

QVariant FindModel::picture(const catalogue::Found& found) const {
    const bool isElement = found.table == QLatin1String(table::Menu);
    const QIcon kind = m_icons.resource(QLatin1String(pictureOf(found)));
    return isElement && !found.icon.isEmpty() ? m_icons.file(m_iconsPath, found.icon, kind) : kind;
}

void FindModel::setFound(const QVector<catalogue::Found>& found) {
    beginResetModel();
    m_found = found;
    endResetModel();
}

const catalogue::Found* FindModel::at(int row) const {
    return row >= 0 && row < m_found.size() ? &m_found.at(row) : nullptr;
}

int FindModel::rowOf(const QString& table, const QString& key) const {
    for (int row = 0; row < m_found.size(); ++row)
        if (m_found.at(row).key == key && m_found.at(row).table == table)
            return row;
    return -1;
}

int FindModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_found.size();
}

int FindModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant FindModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const catalogue::Found& found = m_found.at(index.row());
    const QString texts[ColumnCount] = {found.name, found.object, found.noun, found.path};
    switch (role) {
    case Qt::DisplayRole:
        return oneLine(texts[index.column()]);
    case Qt::ToolTipRole:
        return plainToolTip(clipped(texts[index.column()]));
    case Qt::DecorationRole:
        return index.column() == Name ? picture(found) : QVariant();
    case Qt::AccessibleTextRole: {
        // A reader of the screen is told the whole row at its first cell.
        if (index.column() != Name)
            return oneLine(texts[index.column()]);
        QStringList all = {found.name, found.noun};
        if (!found.path.isEmpty())
            all << found.path;
        return oneLine(all.join(QStringLiteral(", ")));
    }
    default:
        return {};
    }
}

QVariant FindModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    const char* const titles[ColumnCount] = {
        QT_TRANSLATE_NOOP("orvo", "Название"), QT_TRANSLATE_NOOP("orvo", "Объект"),
        QT_TRANSLATE_NOOP("orvo", "Что это"), QT_TRANSLATE_NOOP("orvo", "Где")};
    return section >= 0 && section < ColumnCount ? Text::tr(titles[section]) : QString();
}

} // namespace orvo::app
