#include "apps/client/WaitDialogController.h"

#include "apps/client/WaitPane.h"

#include <QApplication>
#include <QBackingStore>
#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace orvo::app {

namespace {

constexpr int showEveryMs = 250;
constexpr int dropInputMs = 100; ///< what came meanwhile has been handed out by then

} // namespace

WaitDialogController::WaitDialogController(QString store, QString program)
    : m_store(std::move(store))
    , m_program(std::move(program)) {}

WaitDialogController::~WaitDialogController() {
    closePane();
}

bool WaitDialogController::keepWaiting() {
    if (!m_call.isValid()) {
        m_call.start();
        m_shown.start();
    }
    if (m_givenUp)
        return false;
    if (!m_pane && m_call.elapsed() >= paneAfterMs)
        openPane();
    // Reads without handling any event.
    if (m_pane && (m_pane->waitForReadyRead(0) || m_pane->bytesAvailable() > 0))
        m_givenUp = true;
    if (m_shown.elapsed() >= showEveryMs) {
        showPixels();
        m_shown.start();
    }
    return !m_givenUp;
}

void WaitDialogController::waitEnded() {
    m_call.invalidate();
    m_givenUp = false;
    if (!m_pane)
        return;
    closePane();
    QCoreApplication::instance()->installEventFilter(this);
    QTimer::singleShot(dropInputMs, this,
                       [this] { QCoreApplication::instance()->removeEventFilter(this); });
}

bool WaitDialogController::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress: // a release may belong to a press from before
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
    case QEvent::Wheel:
        return event->spontaneous();
    case QEvent::Shortcut:
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}

void WaitDialogController::openPane() {
    const QWidget* window = QApplication::activeWindow();
    for (const QWidget* candidate : QApplication::topLevelWidgets()) {
        if (!window && candidate->isVisible())
            window = candidate;
    }
    m_pane = std::make_unique<QProcess>();
    m_pane->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_pane->start(m_program, waitPaneArguments(window ? window->geometry() : QRect(), m_store));
}

void WaitDialogController::closePane() {
    if (!m_pane)
        return;
    m_pane->kill();
    m_pane->waitForFinished(1000);
    m_pane.reset();
}

/// What a window manager or another window has wiped away comes back; nothing is painted again.
void WaitDialogController::showPixels() {
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        QBackingStore* pixels = widget->isVisible() ? widget->backingStore() : nullptr;
        if (pixels && pixels->window() && pixels->window()->isExposed())
            pixels->flush(QRect(QPoint(), pixels->size()));
    }
}

} // namespace orvo::app
