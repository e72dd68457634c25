#include "apps/client/PaneRoom.h"

#include <QAction>
#include <QDockWidget>
#include <QMainWindow>
#include <QTimer>

#include <algorithm>

namespace orvo::app {

namespace {

constexpr int usefulHeight = 300;

} // namespace

PaneRoom::PaneRoom(QMainWindow& window, QDockWidget& log) : m_window(window), m_log(log) {}

void PaneRoom::add(QDockWidget* pane) {
    m_panes << pane;
    connect(pane->toggleViewAction(), &QAction::toggled, this, [this](bool isOpen) {
        if (!isOpen) // the layout takes note of a closed pane in its own time
            QTimer::singleShot(0, this, &PaneRoom::giveBack);
    });
}

bool PaneRoom::isAnyOpen() const {
    return std::any_of(m_panes.begin(), m_panes.end(),
                       [](const QDockWidget* pane) { return !pane->isHidden(); });
}

void PaneRoom::open(QDockWidget* pane) {
    if (!isAnyOpen())
        m_before = m_log.isHidden() ? 0 : m_log.height();
    pane->show();
    pane->raise();
    if (pane->height() < usefulHeight)
        m_window.resizeDocks({pane}, {usefulHeight}, Qt::Vertical);
}

void PaneRoom::giveBack() {
    if (isAnyOpen())
        return;
    if (m_before > 0 && !m_log.isHidden())
        m_window.resizeDocks({&m_log}, {m_before}, Qt::Vertical);
    m_before = 0;
}

} // namespace orvo::app
