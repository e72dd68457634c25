#include "apps/client/Screenshot.h"

#include "apps/client/MainWindow.h"
#include "apps/client/ScreenshotRows.h"
#include "apps/client/StatusLine.h"
#include "frame/OrvoClient.h"
#include "platform/client/ModuleRegistry.h"

#include <QCoreApplication>
#include <QPixmap>

#include <cstdio>

namespace orvo::app {

namespace {

constexpr int lookMs = 50;
constexpr int restMs = 400; ///< repaints and last layouts
constexpr int limitMs = 120000;

} // namespace

Screenshot::Screenshot(Context context, QObject* parent)
    : QObject(parent)
    , m_context(std::move(context)) {
    connect(&m_timer, &QTimer::timeout, this, &Screenshot::look);
    m_total.start();
    m_timer.start(lookMs);
}

void Screenshot::look() {
    m_rest = m_context.settled() ? m_rest + lookMs : 0;
    const bool late = m_total.elapsed() >= limitMs;
    if (m_rest < restMs && !late)
        return;
    if (!m_isArranged && !late) {
        for (const auto& module : m_context.modules.modules(client::ModuleState::Running))
            if (module->isVisible())
                prepareScreenshot(*module);
        m_isArranged = true;
        m_rest = 0;
        return;
    }
    m_timer.stop();
    save();
}

void Screenshot::save() {
    const auto count = [this](client::ModuleState state) {
        return static_cast<int>(m_context.modules.modules(state).size());
    };
    const bool all = count(client::ModuleState::Failed) == 0 &&
                     count(client::ModuleState::Running) >= m_context.expected;
    const bool saved = m_context.window.grab().save(m_context.file, "PNG");
    if (!saved)
        std::fprintf(stderr, "orvo-client: снимок %s не записан.\n",
                     qUtf8Printable(m_context.file));
    else if (!all)
        std::fprintf(stderr, "orvo-client: не все модули запущены: %s\n",
                     qUtf8Printable(m_context.window.statusLine()->failure()));
    QCoreApplication::exit(saved && all ? 0 : 1);
}

} // namespace orvo::app
