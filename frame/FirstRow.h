// FirstRow.h: whoever comes to a list by key finds a row chosen there, the same in every window:
// the commands of the row are on. Qt's view makes its first row current once only, and selects
// nothing.
#ifndef ORVO_FRAME_FIRSTROW_H
#define ORVO_FRAME_FIRSTROW_H

#include <QAbstractItemView>
#include <QFocusEvent>
#include <QItemSelectionModel>

namespace orvo {

/// Makes the first row current and selects it when the view gets the focus by a key and has neither
/// a current row nor a selected one. A child of the view.
class FirstRow : public QObject {
public:
    /// Whether the focus that comes with its window counts too: not where a selection has effects
    /// that nobody who only turned to the window has asked for.
    enum With { KeysAlone, WindowsToo };

    explicit FirstRow(QAbstractItemView* view, With with = WindowsToo)
        : QObject(view)
        , m_view(*view)
        , m_withWindow(with == WindowsToo) {
        view->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::FocusIn && m_view.model() &&
            !m_view.currentIndex().isValid() && !m_view.selectionModel()->hasSelection() &&
            counts(static_cast<QFocusEvent*>(event)->reason()))
            m_view.setCurrentIndex(m_view.model()->index(0, 0));
        return false;
    }

private:
    bool counts(Qt::FocusReason reason) const {
        return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
               reason == Qt::ShortcutFocusReason ||
               (m_withWindow && reason == Qt::ActiveWindowFocusReason);
    }

    QAbstractItemView& m_view;
    const bool m_withWindow;
};

} // namespace orvo

#endif
