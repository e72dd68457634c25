#include "apps/client/DeskDock.h"

#include "frame/Keys.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace orvo::app {

namespace {

/// The layout of the window takes the first width of a pane from its content.
class DeskHolder : public QWidget {
public:
    DeskHolder(QWidget* desk, int width) : m_width(width) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(desk);
        setFocusProxy(desk);
    }
    QSize sizeHint() const override { return {m_width, QWidget::sizeHint().height()}; }

private:
    const int m_width;
};

} // namespace

DeskDock::DeskDock(QWidget* desk, int width, std::function<void()> closed, QWidget* parent)
    : QDockWidget(parent)
    , m_closed(std::move(closed)) {
    setWidget(new DeskHolder(desk, width)); // the dock's own
    setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    connect(desk, &QObject::destroyed, this, &QObject::deleteLater);
}

void DeskDock::fix() {
    setFeatures(QDockWidget::NoDockWidgetFeatures);
    setTitleBarWidget(new QWidget(this)); // none
}

QDockWidget* DeskDock::of(const QWidget* desk) {
    QWidget* above = desk ? desk->parentWidget() : nullptr;
    while (above && !qobject_cast<QDockWidget*>(above))
        above = above->parentWidget();
    return qobject_cast<QDockWidget*>(above);
}

void DeskDock::closeBy(std::initializer_list<const char*> commands) {
    for (const char* command : commands)
        m_closing.push_back(keys::command(QLatin1String(command)));
}

/// What a part of the pane has no use for comes here, before the window's own shortcuts are asked.
bool DeskDock::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (std::any_of(m_closing.begin(), m_closing.end(),
                        [&key](const keys::Command* one) { return keys::matches(key, *one); })) {
            event->accept();
            if (event->type() == QEvent::KeyPress)
                close();
            return true;
        }
    }
    return QDockWidget::event(event);
}

void DeskDock::closeEvent(QCloseEvent* event) {
    event->accept();
    m_closed();
}

} // namespace orvo::app
