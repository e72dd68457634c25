#include "models/DragKeys.h"

#include <QMimeData>

namespace orvo::dragkeys {

QModelIndexList rowsOf(const QModelIndexList& indexes) {
    QModelIndexList rows;
    int lastRow = -1;
    QModelIndex lastParent;
    for (const QModelIndex& index : indexes) {
        const QModelIndex parent = index.parent();
        if (index.row() == lastRow && parent == lastParent)
            continue;
        rows.append(index.sibling(index.row(), 0));
        lastRow = index.row();
        lastParent = parent;
    }
    return rows;
}

QString payload(const QMimeData* data, const QString& type) {
    const QByteArray bytes = data ? data->data(type) : QByteArray();
    return bytes.isNull() ? QString() : QString::fromUtf8(bytes.constData());
}

QStringList keys(const QString& payload) {
    return payload.split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

} // namespace orvo::dragkeys
