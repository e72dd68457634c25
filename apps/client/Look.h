// Look.h: how texts from elsewhere are shown; rows of controls in panes; the language of Qt's own.
#ifndef ORVO_APPS_CLIENT_LOOK_H
#define ORVO_APPS_CLIENT_LOOK_H

#include <QString>
#include <QStyledItemDelegate>

class QHBoxLayout;
class QVBoxLayout;

namespace orvo::app {

/// A text as a tooltip that shows it letter by letter, whatever it looks like: what servers say may
/// hold what reads as markup. With `hint` a line of our own below it. Empty for two empty texts.
QString plainToolTip(const QString& text, const QString& hint = {});

/// As much of a text from elsewhere as is worth laying out; the end of a longer one as "…".
QString clipped(const QString& text, int longest = 2000);

/// A text from elsewhere as the title of a tab or window: control characters as blanks, and the end
/// of a long one as "…".
QString oneLine(QString text, int longest = 120);

/// With the letters made equal that a search in a pane takes for the same.
QString alike(const QString& text);

/// A further row of a pane, for controls: apart from each other and from the pane's edges, while
/// the pane's rows touch. The layout owns it.
QHBoxLayout* addPaneRow(QVBoxLayout& pane);

/// The name of the desktop entry, the icon and the metadata, and the class of the windows.
inline constexpr char applicationId[] = "org.orvo.Client";

/// Shows the colours that items have for a light window as such that can be read on the view's own.
class ReadableDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace orvo::app

#endif
