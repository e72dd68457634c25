// IconCheck.h: which image a decoration shows.
#ifndef ORVO_TESTS_MODELS_ICONCHECK_H
#define ORVO_TESTS_MODELS_ICONCHECK_H

#include <QIcon>
#include <QImage>
#include <QModelIndex>

/// Whether the decoration is that image, which must exist and have a picture.
inline bool showsImage(const QModelIndex& index, const QString& path) {
    const QSize size(16, 16);
    const QImage expected = QIcon(path).pixmap(size).toImage();
    const QImage shown = index.data(Qt::DecorationRole).value<QIcon>().pixmap(size).toImage();
    return !expected.isNull() && shown == expected;
}

/// Neither an icon nor anything else.
inline bool showsNothing(const QModelIndex& index) {
    return !index.data(Qt::DecorationRole).isValid();
}

/// A small image file of one colour.
inline bool makeImage(const QString& path, Qt::GlobalColor color) {
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(color);
    return image.save(path, "PNG");
}

#endif
