// ClipboardRows.h: rows on the clipboard. Both editors cut and paste by the keys of the rows, and
// their formats begin alike:
//
//     payload = number LF keys LF rest
//     number  = decimal digits     what is offered, in the editor's own count
//     keys    = { key ";" }        the chosen rows in the order of the selection, UTF-8
//     rest    = any bytes          what the format has beyond that, often nothing
#ifndef ORVO_FRAME_CLIPBOARDROWS_H
#define ORVO_FRAME_CLIPBOARDROWS_H

#include <QByteArray>
#include <QStringList>

#include <optional>

class QClipboard;

namespace orvo {

/// A payload taken apart, or to be put together. Untrusted input: every length is checked, and keys
/// are looked up before use.
struct ClipboardRows {
    static constexpr char lineFeed = '\n';
    static constexpr char separator = ';';

    int number = 0;
    QStringList keys; ///< none is empty
    QByteArray rest;

    /// The payload; canName must hold for each key.
    QByteArray bytes() const;
    /// Whether a payload can name the row of that key: one with a separator in it, as only a
    /// foreign hand makes them, would be read as the keys of other rows.
    static bool canName(const QString& key) {
        return !key.contains(QLatin1Char(separator)) && !key.contains(QLatin1Char(lineFeed)) &&
               !key.contains(QChar::Null);
    }
    /// The number before the first line feed, or of all bytes if there is none; nothing if they are
    /// no number.
    static std::optional<int> numberOf(const QByteArray& bytes);
    /// Nothing unless both line feeds are there. A number that is none reads as 0, bytes that are
    /// no UTF-8 make keys that name no row, and a NUL ends the keys.
    static std::optional<ClipboardRows> read(const QByteArray& bytes);
};

/// What the clipboard offers in that format; empty for nothing, and without a clipboard.
QByteArray clipboardBytes(const QClipboard* clipboard, const char* mime);
/// Puts bytes of that format on the clipboard, alone.
void offerOnClipboard(QClipboard& clipboard, const char* mime, const QByteArray& bytes);

} // namespace orvo

#endif
