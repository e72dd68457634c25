// DragKeys.h: what the two draggable trees share: rows of a drag, and keys of a payload.
#ifndef ORVO_MODELS_DRAGKEYS_H
#define ORVO_MODELS_DRAGKEYS_H

#include <QModelIndexList>
#include <QString>
#include <QStringList>

class QMimeData;

namespace orvo::dragkeys {

/// One index of column 0 for each run of indexes of one row: the rows of a drag or a selection.
QModelIndexList rowsOf(const QModelIndexList& indexes);

/// The payload of that type: UTF-8 up to the first zero byte. A null string if there is none.
QString payload(const QMimeData* data, const QString& type);
/// The keys of a payload text: split at ";", empty parts left out.
QStringList keys(const QString& payload);

} // namespace orvo::dragkeys

#endif
