// RowDelegate.h: paints the texts of rows, whatever they are.
#ifndef ORVO_FRAME_ROWDELEGATE_H
#define ORVO_FRAME_ROWDELEGATE_H

#include <QPair>
#include <QStyledItemDelegate>

#include <functional>

class COrvoCliMod;
struct RecordMark;

namespace orvo {

/// A text of a record as one line that is cheap to lay out: control characters and ends of lines
/// become blanks, and of a long text only the start is kept, with "…" behind it.
QString displayLine(const QString& text);
/// Such a text, its lines kept, as a tool tip that shows it letter by letter, whatever it looks
/// like; of a long one the start. Empty for an empty text.
QString plainToolTip(const QString& text);

/// Rows are one line high and painting costs the same for any text; the value itself, and what an
/// editor shows, stays as it is.
class RowDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    /// More letters than a wide screen has room for.
    static constexpr int longestLine = 1000;

    using QStyledItemDelegate::QStyledItemDelegate;
    QString displayText(const QVariant& value, const QLocale& locale) const override;

    /// Table and key of the record behind a row.
    using RecordOf = std::function<QPair<QString, QString>(const QModelIndex&)>;
    /// From now on a row shows the host's mark of its record (COrvoCliApp::recordMark) at the end
    /// of its first cell, and more about it in a tool tip there. The module outlives the delegate.
    void showMarks(const COrvoCliMod& module, RecordOf recordOf);

    /// The mark of a row in words, for screen readers; empty: it has none.
    QString spokenMark(const QModelIndex& index) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    /// Colours that the model tells of a row are for a light window; on a dark one they become such
    /// as can be read there.
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    RecordMark markOf(const QModelIndex& index) const;

    const COrvoCliMod* m_module = nullptr;
    RecordOf m_recordOf;
};

} // namespace orvo

#endif
