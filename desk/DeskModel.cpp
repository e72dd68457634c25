#include "desk/DeskModel.h"

#include "desk/Columns.h"
#include "frame/Kinds.h"
#include "frame/RowDelegate.h"
#include "frame/Text.h"

#include <QFont>

namespace orvo::desk {

namespace {

const char* imageOf(int kind, bool open) {
    if (kind == Kind::None)
        return open ? ":/res/openfolder1@2x.png" : ":/res/closedfolder1@2x.png";
    const ResourceKind* known = resourceKind(kind);
    return (known ? known : resourceKind(Kind::File))->deskImage;
}

QString shownCaption(const TabRec& row) {
    QString caption = row.data(DeskColumn::Caption).toString();
    if (caption.isEmpty())
        caption = Text::tr("(без названия)");
    if (row.data(DeskColumn::Unsaved).toBool())
        caption += Text::tr(" (не сохранено)");
    return caption;
}

} // namespace

DeskModel::DeskModel(const QString& iconsPath)
    : TreeModelCore(QStringList(QVector<QString>(DeskColumn::Count).toList()), DeskColumn::Key, {})
    , m_iconsPath(iconsPath) {}

QVariant DeskModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const TabRec& row = *getItem(index);
    switch (role) {
    case Qt::DisplayRole:
        return index.column() == DeskColumn::Caption ? shownCaption(row) : row.data(index.column());
    case Qt::FontRole: {
        QFont font;
        font.setItalic(row.data(DeskColumn::Unsaved).toBool());
        return font;
    }
    case Qt::DecorationRole:
        return index.column() == DeskColumn::Caption ? QVariant(icon(row)) : QVariant();
    case OwnIconRole:
        return ownIcon(row);
    case Qt::ToolTipRole:
        return plainToolTip(row.data(DeskColumn::Note).toString());
    case KeyRole:
        return row.data(DeskColumn::Key);
    case SeparatorRole:
        return row.data(DeskColumn::Separator).toBool();
    case FolderRole:
        return row.data(DeskColumn::Kind).toInt() == Kind::None;
    case BrokenRole:
        return !row.data(DeskColumn::Note).toString().isEmpty();
    default:
        return {};
    }
}

QIcon DeskModel::icon(const TabRec& row) const {
    const QString name = row.data(DeskColumn::Icon).toString();
    return name.isEmpty() ? ownIcon(row) : m_icons.file(m_iconsPath, name);
}

/// The images are made for rows of 16 points and screens twice as fine: those serve here.
QIcon DeskModel::ownIcon(const TabRec& row) const {
    const QString path =
        QString::fromLatin1(imageOf(row.data(DeskColumn::Kind).toInt(), row.isExpanded()));
    QIcon& icon = m_ownIcons[path];
    if (icon.isNull()) {
        QPixmap image(path);
        image.setDevicePixelRatio(1);
        icon = QIcon(image);
    }
    return icon;
}

QVariant DeskModel::value(const QModelIndex& row, int column) {
    const auto* model = static_cast<const DeskModel*>(row.model());
    return model ? model->getItem(row)->data(column) : QVariant();
}

bool DeskModel::isFolder(const QModelIndex& row) {
    return value(row, DeskColumn::Kind).toInt() == Kind::None;
}

} // namespace orvo::desk
