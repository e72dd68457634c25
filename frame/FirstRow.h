// FirstRow.h: whoever comes to a list by key finds a row chosen there, the same in every window:
// the commands of the row are on. Qt's view makes its first row current once only, and selects
// nothing.
#ifndef ORVO_FRAME_FIRSTROW_H
#define ORVO_FRAME_FIRSTROW_H

#include <QAbstractItemView>
#include <QFocusEvent>

namespace orvo {

/// Makes the first row current and selects it when the view gets the focus by a key, or its window
/// becomes active, and it has no current row. A child of the view.
class FirstRow : public QObject {
public:
    explicit FirstRow(QAbstractItemView* view) : QObject(view), m_view(*view) {
        view->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::FocusIn && m_view.model() &&
            !m_view.currentIndex().isValid() && isByKey(static_cast<QFocusEvent*>(event)->reason()))
            m_view.setCurrentIndex(m_view.model()->index(0, 0));
        return false;
    }

private:
    static bool isByKey(Qt::FocusReason reason) {
        return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
               reason == Qt::ShortcutFocusReason || reason == Qt::ActiveWindowFocusReason;
    }

    QAbstractItemView& m_view;
};

} // namespace orvo

#endif
