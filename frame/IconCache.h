// IconCache.h: the icons of a model's rows, so that painting a row reads and decodes no image. The
// host has it, for its own lists and for the trees of the modules.
#ifndef ORVO_FRAME_ICONCACHE_H
#define ORVO_FRAME_ICONCACHE_H

#include "frame/OrvoClient.h"

#include <QHash>
#include <QIcon>
#include <QString>

#include <memory>

namespace orvo {

class IconLoader;

/// Gives icons at once. One of a file shows its picture when it has been read on another thread:
/// views that have painted it are then repainted. Each paint has the file looked at again, so one
/// that has changed is shown anew by a repaint. A file that is missing, lies outside of its folder,
/// is no regular one, or is too large (IconFile.h) gives an icon without a picture.
///
/// Who takes the pixmap of such an icon instead of painting it cannot be told later; he waits a
/// moment for the file.
class ORVOCLIENT_EXPORT IconCache {
public:
    IconCache();
    ~IconCache();
    IconCache(const IconCache&) = delete;
    IconCache& operator=(const IconCache&) = delete;

    /// One of the library's own images, ":/res/...".
    QIcon resource(const QString& path);
    /// The image file `name` in `folder`; `name` comes from a record and is not trusted.
    QIcon file(const QString& folder, const QString& name);
    /// The same with a picture that is shown once it is known that the file has none.
    QIcon file(const QString& folder, const QString& name, const QIcon& instead);

private:
    QHash<QString, QIcon> m_resources;
    std::shared_ptr<IconLoader> m_loader; ///< null until a file is asked for
};

} // namespace orvo

#endif
