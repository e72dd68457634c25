#include "apps/client/Look.h"

#include "frame/Contrast.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace orvo::app {

void ReadableDelegate::initStyleOption(QStyleOptionViewItem* option,
                                       const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    // Against the one of the two row colours that is harder to read on.
    const bool dark = isDark(option->palette);
    const QColor plain = option->palette.color(QPalette::Base);
    const QColor other = option->palette.color(QPalette::AlternateBase);
    const QColor behind = (luminanceOf(plain) < luminanceOf(other)) == dark ? other : plain;
    for (const auto group : {QPalette::Active, QPalette::Inactive})
        option->palette.setColor(group, QPalette::Text,
                                 readable(option->palette.color(group, QPalette::Text), behind));
}

QString clipped(const QString& text, int longest) {
    return text.size() > longest ? text.left(longest) + QChar(0x2026) : text;
}

QString plainToolTip(const QString& text, const QString& hint) {
    QString tip;
    if (!text.isEmpty())
        tip = QStringLiteral("<p style='white-space:pre-wrap'>%1</p>")
                  .arg(clipped(text).toHtmlEscaped());
    if (!hint.isEmpty())
        tip += QStringLiteral("<p>%1</p>").arg(hint.toHtmlEscaped());
    return tip;
}

QString alike(const QString& text) {
    return text.toCaseFolded().replace(QChar(0x451), QChar(0x435)); // ё, е
}

QString oneLine(QString text, int longest) {
    text = clipped(text, longest);
    for (QChar& letter : text)
        if (!letter.isPrint() || letter.category() == QChar::Separator_Line ||
            letter.category() == QChar::Separator_Paragraph)
            letter = QLatin1Char(' ');
    return text;
}

QHBoxLayout* addPaneRow(QVBoxLayout& pane) {
    constexpr int apart = 6;
    auto* row = new QHBoxLayout;
    row->setContentsMargins(6, 4, 6, 4);
    row->setSpacing(apart);
    pane.addLayout(row);
    return row;
}

} // namespace orvo::app
