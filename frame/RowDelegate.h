// RowDelegate.h: paints the texts of rows, whatever they are.
#ifndef ORVO_FRAME_ROWDELEGATE_H
#define ORVO_FRAME_ROWDELEGATE_H

#include <QStyledItemDelegate>

namespace orvo {

/// A text of a record as one line that is cheap to lay out: control characters and ends of lines
/// become blanks, and of a long text only the start is kept, with "…" behind it.
QString displayLine(const QString& text);

/// Rows are one line high and painting costs the same for any text; the value itself, and what an
/// editor shows, stays as it is.
class RowDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    /// More letters than a wide screen has room for.
    static constexpr int longestLine = 1000;

    using QStyledItemDelegate::QStyledItemDelegate;
    QString displayText(const QVariant& value, const QLocale& locale) const override;
};

} // namespace orvo

#endif
