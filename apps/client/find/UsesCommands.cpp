#include "apps/client/find/UsesCommands.h"

#include "apps/client/HostApp.h"
#include "apps/client/MainWindow.h"
#include "apps/client/RecordJump.h"
#include "apps/client/find/UsesPane.h"
#include "frame/Text.h"

#include <QDockWidget>
#include <QTimer>

namespace orvo::app {

UsesCommands::UsesCommands(catalogue::LiveCatalogue& live, MainWindow& window, HostApp& app,
                           RecordJump& jump, const QString& iconsPath)
    : m_window(window)
    , m_feed(live)
    , m_pane(new UsesPane(m_feed, iconsPath)) {
    m_window.addPane(m_pane, Text::tr("&Где используется"), QStringLiteral("usesDock"))
        ->setWindowTitle(Text::tr("Где используется"));
    connect(m_pane, &UsesPane::showRequested, &jump, &RecordJump::show);
    connect(&app, &HostApp::usesRequested, this, &UsesCommands::answer);
    connect(&app, &HostApp::showUsesRequested, this, [this](ShowUsesRequest* request) {
        request->refusal.clear();
        show({request->table, request->key}, request->takeFocus);
    });
}

UsesCommands::~UsesCommands() {
    delete m_pane; // it works with the feed
}

void UsesCommands::show(const catalogue::Subject& subject, bool takeFocus) {
    auto* dock = qobject_cast<QDockWidget*>(m_pane->parentWidget());
    m_pane->showUses(subject);
    if (takeFocus) {
        m_window.bringUp(dock);
    } else {
        dock->show();
        dock->raise();
    }
    // The pane takes room from the trees: the row that was asked about stays in sight.
    QTimer::singleShot(0, this, [this] { m_window.showCurrentRows(); });
}

void UsesCommands::answer(UsesRequest* request) {
    constexpr int mostPlaces = 10;
    request->refusal.clear();
    if (!request->receiver || !request->tell)
        return;
    std::vector<catalogue::Subject> subjects;
    for (const QString& key : qAsConst(request->keys))
        subjects.push_back({request->table, key});
    const auto tell = request->tell;
    if (!m_feed.isKnown())
        QMetaObject::invokeMethod(
            request->receiver, [tell] { tell({}); }, Qt::QueuedConnection);
    m_feed.watch(request->receiver, subjects, mostPlaces, [tell](const catalogue::Uses& uses) {
        UsesAnswer answer{
            true,         uses.count, catalogue::usesWords(uses), {}, catalogue::usesBrief(uses),
            uses.desktops};
        for (const catalogue::Found& place : uses.places)
            answer.places << catalogue::placeWords(place);
        tell(answer);
    });
}

} // namespace orvo::app
