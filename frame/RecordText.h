// RecordText.h: texts of records as QStrings and back. All of it by the table of frame/CodePage.h:
// the codec of Qt that the published interface has as a member gives the same texts and is not
// asked.
#ifndef ORVO_FRAME_RECORDTEXT_H
#define ORVO_FRAME_RECORDTEXT_H

#include "frame/CodePage.h"

#include <QByteArray>
#include <QString>

#include <cstring>
#include <optional>

namespace orvo {

/// `length` bytes, NUL among them or not.
inline QString fromCodePage(const char* bytes, int length) {
    QString text(length, Qt::Uninitialized);
    QChar* out = text.data();
    for (int i = 0; i < length; ++i)
        out[i] = QChar(codepage::letterOf(bytes[i]));
    return text;
}

/// Record bytes (NUL-terminated) as a QString. NULL and empty text both give the null string: the
/// models take a null string for "no icon".
inline QString fromRecord(const char* bytes) {
    return bytes && *bytes ? fromCodePage(bytes, static_cast<int>(std::strlen(bytes))) : QString();
}

/// Nothing if the code page lacks a letter of the text, or U+0000 is one.
inline std::optional<QByteArray> toRecordExactly(const QString& text) {
    QByteArray bytes(text.size(), Qt::Uninitialized);
    char* out = bytes.data();
    for (const QChar letter : text) {
        if (letter.isNull() || !codepage::isIn(letter.unicode()))
            return {};
        *out++ = codepage::byteOf(letter.unicode());
    }
    return bytes;
}

/// A QString as record bytes: '?' for each letter that the code page lacks, nothing for the
/// invisible ones and for the first half of a letter that the text ends with. A null string gives
/// empty bytes.
inline QByteArray toRecord(const QString& text) {
    if (const std::optional<QByteArray> bytes = toRecordExactly(text))
        return *bytes;
    QByteArray bytes;
    bytes.reserve(text.size());
    for (auto at = text.begin(); at != text.end(); ++at) {
        unsigned letter = at->unicode();
        if (at->isHighSurrogate()) {
            if (at + 1 == text.end())
                break;
            if ((at + 1)->isLowSurrogate()) {
                letter = QChar::surrogateToUcs4(*at, *(at + 1));
                ++at;
            }
        }
        if (!codepage::isInvisible(letter))
            bytes.append(codepage::byteOf(letter));
    }
    return bytes;
}

} // namespace orvo

#endif
