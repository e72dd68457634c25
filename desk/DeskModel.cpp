#include "desk/DeskModel.h"

#include "desk/Columns.h"
#include "frame/RowDelegate.h"
#include "frame/Vocabulary.h"

#include <QFont>

namespace orvo::desk {

namespace {

const char* ownIcon(int kind, bool open) {
    switch (kind) {
    case Kind::None:
        return open ? ":/res/openfolder1.png" : ":/res/closedfolder1.png";
    case Kind::Module:
        return ":/res/modul1.png";
    case Kind::Function:
        return ":/res/function1.png";
    case Kind::Form:
        return ":/res/showscheme1.png";
    default:
        return ":/res/file1.png";
    }
}

QString shownCaption(const TabRec& row) {
    QString caption = row.data(DeskColumn::Caption).toString();
    if (caption.isEmpty())
        caption = QStringLiteral("(без названия)");
    if (row.data(DeskColumn::Unsaved).toBool())
        caption += QStringLiteral(" (не сохранено)");
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
        return index.column() == DeskColumn::Caption ? icon(row) : QVariant();
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

QVariant DeskModel::icon(const TabRec& row) const {
    const QString name = row.data(DeskColumn::Icon).toString();
    if (!name.isEmpty())
        return m_icons.file(m_iconsPath, name);
    return m_icons.resource(
        QString::fromLatin1(ownIcon(row.data(DeskColumn::Kind).toInt(), row.isExpanded())));
}

QVariant DeskModel::value(const QModelIndex& row, int column) {
    const auto* model = static_cast<const DeskModel*>(row.model());
    return model ? model->getItem(row)->data(column) : QVariant();
}

bool DeskModel::isFolder(const QModelIndex& row) {
    return value(row, DeskColumn::Kind).toInt() == Kind::None;
}

} // namespace orvo::desk
