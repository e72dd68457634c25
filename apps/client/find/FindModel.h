// FindModel.h: what a search has found, a row each: with the icon that an element bears, else with
// the picture of its kind.
#ifndef ORVO_APPS_CLIENT_FIND_FINDMODEL_H
#define ORVO_APPS_CLIENT_FIND_FINDMODEL_H

#include "catalogue/Search.h"
#include "frame/IconCache.h"

#include <QAbstractTableModel>

namespace orvo::app {

class FindModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Name, Object, Noun, Path, ColumnCount };

    /// `iconsPath`: the folder of icon files, with the separator at its end.
    explicit FindModel(QString iconsPath, QObject* parent = nullptr);

    void setFound(const QVector<catalogue::Found>& found);
    /// The one of that row; null for none.
    const catalogue::Found* at(int row) const;
    /// The row of that record; -1 for none.
    int rowOf(const QString& table, const QString& key) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QVariant picture(const catalogue::Found& found) const;

    const QString m_iconsPath;
    mutable IconCache m_icons;
    QVector<catalogue::Found> m_found;
};

} // namespace orvo::app

#endif
