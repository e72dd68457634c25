#include "frame/RowDelegate.h"

namespace orvo {

QString displayLine(const QString& text) {
    QString line = text.left(RowDelegate::longestLine);
    for (QChar& letter : line)
        if (letter.category() == QChar::Other_Control || letter == QChar::LineSeparator ||
            letter == QChar::ParagraphSeparator)
            letter = QLatin1Char(' ');
    if (text.size() > line.size())
        line += QChar(0x2026);
    return line;
}

QString RowDelegate::displayText(const QVariant& value, const QLocale& locale) const {
    if (value.userType() == QMetaType::QString)
        return displayLine(value.toString());
    return QStyledItemDelegate::displayText(value, locale);
}

} // namespace orvo
