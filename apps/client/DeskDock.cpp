#include "apps/client/DeskDock.h"

#include <QCloseEvent>
#include <QVBoxLayout>

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

void DeskDock::closeEvent(QCloseEvent* event) {
    event->accept();
    m_closed();
}

} // namespace orvo::app
