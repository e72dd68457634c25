#include "frame/RowDelegate.h"

#include "frame/Contrast.h"

#include "frame/OrvoClient.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace orvo {

namespace {

constexpr int markPadding = 6;
constexpr int markGap = 3; ///< to the edges of the cell
constexpr int longestMark = 40;

/// The place of a mark: at the end of the cell, and no more than two thirds of it.
QRect markPlace(const QStyleOptionViewItem& option, const QString& label) {
    const int room = option.rect.width() * 2 / 3;
    // Some room more than the text: the pencil may come from another font.
    const int width =
        std::min(room, option.fontMetrics.horizontalAdvance(label) +
                           2 * option.fontMetrics.averageCharWidth() + 2 * markPadding);
    QRect place = option.rect.adjusted(0, 1, -markGap, -1);
    place.setLeft(place.right() - width + 1);
    return place;
}

QString markLabel(const RecordMark& mark) {
    // A pencil before the name: it is being edited, not owned.
    return QChar(0x270E) + QStringLiteral(" ") + displayLine(mark.label.left(longestMark));
}

} // namespace

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

QString plainToolTip(const QString& text) {
    constexpr int longest = 2000;
    if (text.isEmpty())
        return {};
    const QString shown = text.size() > longest ? text.left(longest) + QChar(0x2026) : text;
    return QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(shown.toHtmlEscaped());
}

QString RowDelegate::displayText(const QVariant& value, const QLocale& locale) const {
    if (value.userType() == QMetaType::QString)
        return displayLine(value.toString());
    return QStyledItemDelegate::displayText(value, locale);
}

void RowDelegate::showMarks(const COrvoCliMod& module, RecordOf recordOf) {
    m_module = &module;
    m_recordOf = std::move(recordOf);
}

RecordMark RowDelegate::markOf(const QModelIndex& index) const {
    const COrvoCliApp* host = m_module ? m_module->m_app : nullptr;
    if (!host || index.column() != 0 || !host->hasRecordMarks())
        return {};
    const QPair<QString, QString> record = m_recordOf(index);
    return record.second.isEmpty() ? RecordMark() : host->recordMark(record.first, record.second);
}

QString RowDelegate::spokenMark(const QModelIndex& index) const {
    const RecordMark mark = markOf(index);
    return (mark.tip.isEmpty() ? mark.label : mark.tip).simplified();
}

void RowDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    // The trees cut texts off without a sign, and what follows would read as their end.
    if (option->textElideMode == Qt::ElideNone)
        option->textElideMode = Qt::ElideRight;
    // The mark at the end of the cell leaves the text the rest of it.
    if (const RecordMark mark = markOf(index); !mark.label.isEmpty()) {
        const QWidget* view = option->widget;
        const QStyle* style = view ? view->style() : QApplication::style();
        const QRect text = style->subElementRect(QStyle::SE_ItemViewItemText, option, view);
        const int room = markPlace(*option, markLabel(mark)).left() - markGap - text.left() -
                         style->pixelMetric(QStyle::PM_FocusFrameHMargin, option, view) - 1;
        option->text = option->fontMetrics.elidedText(option->text, Qt::ElideRight, room);
    }
    if (!isDark(option->palette)) // there the colours are what they were asked to be
        return;
    QColor behind = option->palette.color(QPalette::Base);
    if (option->backgroundBrush.style() == Qt::SolidPattern) {
        behind = ground(option->backgroundBrush.color(), option->palette);
        option->backgroundBrush = behind;
    }
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        const QColor text = option->palette.color(group, QPalette::Text);
        option->palette.setColor(group, QPalette::Text, readable(text, behind));
    }
}

void RowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
    QStyledItemDelegate::paint(painter, option, index);
    const RecordMark mark = markOf(index);
    if (mark.label.isEmpty())
        return;
    const QString label = markLabel(mark);
    const QRect place = markPlace(option, label);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QColor behind = ground(QColor(0xff, 0xf4, 0xd0), option.palette);
    painter->setPen(QColor(0xd9, 0xb3, 0x4a));
    painter->setBrush(behind);
    painter->drawRoundedRect(QRectF(place).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter->setPen(readable(QColor(0x6b, 0x4e, 0x00), behind));
    painter->setFont(option.font);
    const QRect inner = place.adjusted(markPadding, 0, -markPadding, 0);
    painter->drawText(inner, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                      option.fontMetrics.elidedText(label, Qt::ElideRight, inner.width()));
    painter->restore();
}

bool RowDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                            const QStyleOptionViewItem& option, const QModelIndex& index) {
    const RecordMark mark = index.isValid() ? markOf(index) : RecordMark();
    if (mark.label.isEmpty() || event->type() != QEvent::ToolTip ||
        !markPlace(option, markLabel(mark)).contains(event->pos()))
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), plainToolTip(mark.tip), view);
    return true;
}

} // namespace orvo
