// IconCache.h: the icons of a model's rows, so that painting a row decodes no image.
#ifndef ORVO_MODELS_ICONCACHE_H
#define ORVO_MODELS_ICONCACHE_H

#include <QDateTime>
#include <QHash>
#include <QIcon>
#include <QString>

/// Gives the icon of an image file or resource. A file on disk that has changed since is read anew,
/// one that is not there gives an icon without an image.
class IconCache {
public:
    QIcon icon(const QString& path);

private:
    struct Entry {
        QIcon icon;
        QDateTime changed;
        qint64 size = -1;
    };
    QHash<QString, Entry> m_entries;
};

#endif
