// EscapeKey.h: Esc in a field by which rows are searched, the same in every window: one press
// leaves the field, whatever was typed there, and the focus goes back to the rows. A field that
// hides rows is emptied by it, so that all are shown again; one that finds them keeps its text for
// the next hit.
#ifndef ORVO_FRAME_ESCAPEKEY_H
#define ORVO_FRAME_ESCAPEKEY_H

#include <QKeyEvent>
#include <QWidget>

#include <functional>
#include <utility>

namespace orvo {

/// Takes Esc in a field, whatever it means in the window. A child of the field.
class EscapeKey : public QObject {
public:
    EscapeKey(QWidget* field, std::function<void()> leave)
        : QObject(field)
        , m_leave(std::move(leave)) {
        field->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        const bool isOverride = event->type() == QEvent::ShortcutOverride;
        if ((!isOverride && event->type() != QEvent::KeyPress) ||
            static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
            return false;
        event->accept();
        if (!isOverride)
            m_leave();
        return true;
    }

private:
    std::function<void()> m_leave;
};

} // namespace orvo

#endif
