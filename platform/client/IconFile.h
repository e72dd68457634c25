// IconFile.h: reads the picture of an icon from a file that a record names.
//
// The name is whatever somebody wrote into a record, and the file whatever somebody uploaded, so
// neither is trusted:
//   1 A file is read only if it is a regular one and lies inside the folder of icons after all
//     links are resolved. Nothing else is opened at all: opening a device or a pipe can have
//     effects or wait for ever.
//   2 At most `maxFileBytes` are read, and no more than `maxSide` x `maxSide` pixels decoded; the
//     size is taken from the header before any pixel is.
//   3 An SVG file is read once before it is drawn: it must be small, flat and without references
//     to other pictures or elements.
// All functions may be called on any thread.
#ifndef ORVO_PLATFORM_CLIENT_ICONFILE_H
#define ORVO_PLATFORM_CLIENT_ICONFILE_H

#include "frame/OrvoClient.h"

#include <QByteArray>
#include <QImage>
#include <QString>

#include <cstdint>

namespace orvo::iconfile {

constexpr qint64 maxFileBytes = 1 << 20;
constexpr int maxSide = 1024;  ///< pixels that are decoded
constexpr int shownSide = 128; ///< pixels that are kept: rows show 16 to 64
constexpr int maxNameSize = 1024;

/// Tells one state of a file from another. All zero: there is no such file, or it is not for us.
struct Stamp {
    uint64_t device = 0, inode = 0;
    int64_t size = 0, modified = 0, changed = 0; ///< times in nanoseconds
    bool operator==(const Stamp& other) const {
        return device == other.device && inode == other.inode && size == other.size &&
               modified == other.modified && changed == other.changed;
    }
    bool operator!=(const Stamp& other) const { return !(*this == other); }
};

/// The bytes of the file `name` below `folder`, which may be a link itself; null if rules 1 and 2
/// forbid it or it cannot be read. If the file is still the one of `*stamp`, nothing is read and
/// the result is null; `*stamp` then keeps its value, else it is set to what was found.
ORVOCLIENT_EXPORT QByteArray read(const QString& folder, const QString& name, Stamp* stamp);

/// The picture, at most `shownSide` pixels wide and high; null if the bytes are none, or break
/// rules 2 and 3.
ORVOCLIENT_EXPORT QImage decode(const QByteArray& bytes);

} // namespace orvo::iconfile

#endif
