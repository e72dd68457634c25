// WorkingClient.h: an engineer's client in a random run (RandomRun.h) with all that the host does
// around the editors: each has a handle of its own of the session, what could not be written stays
// in the list, and an editor that has its engineer's attention is given nothing.
//
// What attention is, and what a question is told, comes from the host library. The order of
// deliveries is made here, by the rules of platform/client/NotificationPump.h: the pump itself goes
// by the clock, and a seed could not repeat a run.
#ifndef ORVO_TESTS_MENU_WORKINGCLIENT_H
#define ORVO_TESTS_MENU_WORKINGCLIENT_H

#include "platform/client/Attention.h"
#include "platform/client/QuestionNotes.h"
#include "platform/client/UnwrittenList.h"
#include "tests/menu/RandomRun.h"
#include "tests/menu/TypedTexts.h"
#include "tests/menu/WindowHands.h"

#include <QCoreApplication>

#include <array>

namespace orvo::test {

/// The application object of one editor.
class HandleApp : public COrvoCliApp {
public:
    HandleApp(COrvoCliApp& app, COrvoCliMod& module)
        : m_app(app)
        , m_handle(client::makeModuleSession(*app.m_session, module)) {
        m_session = m_handle.get();
        m_logModule = app.m_logModule;
        m_workDir = app.m_workDir;
    }
    void log(int level, const QString& place, const QString& text) override {
        m_app.log(level, place, text);
    }
    void moduleTitle(COrvoCliMod* module, const QString& title, const QString& second) override {
        m_app.moduleTitle(module, title, second);
    }

private:
    COrvoCliApp& m_app;
    const std::unique_ptr<COrvoCliSes> m_handle;
};

/// A part has, besides what RandomClient asks for: open(host, beforeStart), typedTexts() with all
/// that stands in its open edit and its open cells, and dropped, called with these before a cancel.
template <class... Parts>
class WorkingClient {
public:
    explicit WorkingClient(TestStore& store)
        : m_store(store)
        , m_number(s_made++ % 2)
        , m_reader(store.connect("reader")) {
        restart();
    }
    ~WorkingClient() { close(); }

    /// The process ends, and another begins where it was.
    void restart() {
        close();
        m_unwritten.reset();
        m_host = std::make_unique<TestHost>(m_store);
        m_unwritten =
            std::make_unique<client::UnwrittenList>(client::sessionStore(*m_host->m_session));
        QString error;
        if (!m_unwritten->keepIn(QString("%1/unwritten-%2").arg(m_store.directory()).arg(m_number),
                                 &error))
            qFatal("%s", qPrintable(error));
        client::setUnwritten(*m_host->m_session, m_unwritten.get());
        const client::SessionEvents& events = client::sessionEvents(*m_host->m_session);
        QObject::connect(&events, &client::SessionEvents::written, [this] { m_wrote = true; });
        QObject::connect(&events, &client::SessionEvents::failed, [this] { ++failures; });
        QObject::connect(m_unwritten.get(), &client::UnwrittenList::dropped,
                         [this](const QString& module, const auto& corrections) {
                             each([&](auto& part) {
                                 auto& all = m_places[indexOf(part)].corrections;
                                 if (part.module().m_moduleName == module)
                                     all.insert(all.end(), corrections.begin(), corrections.end());
                             });
                         });
        openEditors();
    }
    /// Opens all editors anew.
    void open() {
        close();
        openEditors();
    }

    template <class Part>
    Part& part() {
        return std::get<Part>(m_parts);
    }
    template <class Act>
    void each(Act&& act) {
        (act(part<Parts>()), ...);
    }
    client::UnwrittenList& unwritten() { return *m_unwritten; }
    TestHost& host() { return *m_host; }
    int number() const { return m_number; }
    TypedTexts* typed = nullptr; ///< is asked for missing ones; null: nobody is
    int failures = 0;            ///< that the session reported
    QString wrong;               ///< what an act did here that it must not

    /// Does what an engineer does in one part: its echo ends the hold on an open edit.
    template <class Part, class Act>
    void act(Part& part, Act&& what) {
        m_wrote = false;
        m_host->writes().calls.clear();
        what();
        for (const WriteCall& call : m_host->writes().calls)
            for (const QString& record : call.records)
                if (typed && record.startsWith('-'))
                    typed->dropRecord(m_number, record.section(' ', 0, 0).mid(1));
        if (m_wrote && !client::sessionStore(*m_host->m_session)
                            .logPosition(&m_places[indexOf(part)].echo)
                            .ok())
            qFatal("no change log");
        settleUnknown();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    /// Delivers to each editor its next notifications, at most `most`; false if none may be.
    bool step(int most = 1) {
        readLog();
        bool any = false;
        each([&](auto& part) { any = deliver(part, most) || any; });
        return any;
    }

    /// The first difference of an editor at rest that has heard of everything.
    QString check() {
        QString found;
        each([&](auto& part) {
            if (found.isEmpty() && part.isAtRest() && m_places[indexOf(part)].waiting.empty() &&
                client::attentionIn(part.module()) == client::Attention::None)
                found = part.check(m_store);
        });
        return found;
    }
    QString fault() {
        QString found = wrong;
        each([&](auto& part) {
            if (found.isEmpty())
                found = part.fault;
        });
        return found.isEmpty() ? lost() : found;
    }
    /// A text that was typed here and is nowhere.
    QString lost() {
        QString kept = unwrittenTexts();
        QString told;
        each([&](auto& part) {
            kept += part.typedTexts();
            told += std::exchange(part.told, {});
            if (boxStands(part.module()))
                told += boxText(part.module());
        });
        for (const LogLine& line : std::exchange(m_host->logLines, {}))
            told += line.text;
        return typed ? typed->missing(m_number, kept, told) : QString();
    }
    QString unwrittenTexts() const {
        QString texts;
        for (const client::UnwrittenEntry& entry : m_unwritten->entries())
            for (const client::RecordWrite& record : client::recordsOf(entry.request))
                for (const auto& [field, value] : record.values)
                    if (const auto* text = std::get_if<std::string>(&value))
                        texts += QString::fromStdString(*text) + '\n';
        return texts;
    }
    void watch() {
        each([](auto& part) { part.watch(); });
    }

private:
    struct Place {
        std::deque<store::Change> waiting;
        int64_t echo = 0; ///< up to here an open edit is told
        std::vector<store::Change> corrections;
        std::unique_ptr<HandleApp> app;
    };

    template <class Part>
    size_t indexOf(const Part&) const {
        size_t index = 0;
        for (const bool is : {std::is_same_v<Part, Parts>...}) {
            if (is)
                return index;
            ++index;
        }
        return index;
    }
    void close() { (part<Parts>().close(), ...); }
    void openEditors() {
        m_cursor = client::sessionCursor(*m_host->m_session).id;
        if (!client::sessionStore(*m_host->m_session).logPosition(&m_cursor).ok())
            qFatal("no change log");
        each([&](auto& part) {
            Place& place = m_places[indexOf(part)];
            place.waiting.clear();
            place.corrections.clear();
            part.open(*m_host, [&](COrvoCliMod& module) {
                auto app = std::make_unique<HandleApp>(*m_host, module);
                module.m_app = app.get();
                place.app = std::move(app);
            });
            part.watch();
        });
    }
    /// The connection is back, as far as a test that does not wait can tell.
    void settleUnknown() {
        const auto& entries = m_unwritten->entries();
        if (std::any_of(entries.begin(), entries.end(), [](const client::UnwrittenEntry& entry) {
                return entry.state == client::UnwrittenEntry::Unknown;
            }))
            m_unwritten->connectionReturned();
    }
    void readLog() {
        std::vector<store::Change> changes;
        if (!m_reader->readLog(m_cursor, 100000, &changes).ok())
            qFatal("no change log");
        for (const store::Change& change : changes) {
            m_cursor = change.id;
            each([&](auto& part) {
                client::noteInQuestion(part.module(), change);
                m_places[indexOf(part)].waiting.push_back(change);
            });
        }
    }
    template <class Part>
    bool deliver(Part& part, int most) {
        Place& place = m_places[indexOf(part)];
        int count = 0;
        if (!place.corrections.empty() &&
            client::attentionIn(part.module()) == client::Attention::None) {
            for (const store::Change& change : std::exchange(place.corrections, {})) {
                part.seen(change);
                part.module().messagePut(m_maker.make(change));
            }
            part.module().MessageOn();
            part.watch();
        }
        for (; count < most && !place.waiting.empty(); ++count) {
            const client::Attention attention = client::attentionIn(part.module());
            const bool edits =
                attention == client::Attention::Cell || attention == client::Attention::Edit;
            if (attention != client::Attention::None &&
                !(edits && place.waiting.front().id <= place.echo))
                break;
            const store::Change change = std::move(place.waiting.front());
            place.waiting.pop_front();
            part.seen(change);
            part.module().messagePut(m_maker.make(change));
        }
        if (count == 0)
            return false;
        part.module().MessageOn();
        part.watch();
        return true;
    }

    static inline int s_made = 0;

    TestStore& m_store;
    const int m_number;
    std::unique_ptr<store::Store> m_reader;
    client::NotificationMaker m_maker;
    int64_t m_cursor = 0;
    bool m_wrote = false;
    std::unique_ptr<TestHost> m_host; ///< outlives the list and the editors
    std::unique_ptr<client::UnwrittenList> m_unwritten;
    std::array<Place, sizeof...(Parts)> m_places;
    std::tuple<Parts...> m_parts;
};

} // namespace orvo::test

#endif
