#include "frame/ClipboardRows.h"

#include <QClipboard>
#include <QMimeData>

namespace orvo {

QByteArray ClipboardRows::bytes() const {
    QByteArray bytes = QByteArray::number(number) + lineFeed;
    for (const QString& key : keys)
        bytes += key.toUtf8() + separator;
    bytes += lineFeed;
    return bytes += rest;
}

std::optional<int> ClipboardRows::numberOf(const QByteArray& bytes) {
    const int end = bytes.indexOf(lineFeed);
    bool isNumber = false;
    const int number = (end < 0 ? bytes : bytes.left(end)).toInt(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<ClipboardRows> ClipboardRows::read(const QByteArray& bytes) {
    const int numberEnd = bytes.indexOf(lineFeed);
    const int keysEnd = numberEnd < 0 ? -1 : bytes.indexOf(lineFeed, numberEnd + 1);
    if (keysEnd < 0)
        return {};
    const QByteArray keys = bytes.mid(numberEnd + 1, keysEnd - numberEnd - 1);
    return ClipboardRows{numberOf(bytes).value_or(0),
                         QString::fromUtf8(keys.constData()) // up to a NUL
                             .split(QLatin1Char(separator), Qt::SkipEmptyParts),
                         bytes.mid(keysEnd + 1)};
}

QByteArray clipboardBytes(const QClipboard* clipboard, const char* mime) {
    const QMimeData* offered = clipboard ? clipboard->mimeData() : nullptr;
    return offered ? offered->data(QLatin1String(mime)) : QByteArray();
}

void offerOnClipboard(QClipboard& clipboard, const char* mime, const QByteArray& bytes) {
    auto* offered = new QMimeData; // the clipboard's
    offered->setData(QLatin1String(mime), bytes);
    clipboard.setMimeData(offered, QClipboard::Clipboard);
}

} // namespace orvo
