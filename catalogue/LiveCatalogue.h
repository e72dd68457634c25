// LiveCatalogue.h: a catalogue on a thread of its own, kept as the store is.
//
// It is loaded over a connection of its own, which is closed again, and from then on follows
// changed(), which is to be connected to NotificationPump::changed (or to whatever else tells each
// change of the log once, in order). So there is one reader of the log in a client.
//
// Threads: the functions of this class and its signals belong to the thread of the object, the
// catalogue, its listeners and all work to the other one.
//
// Invariants; 1 is asserted in debug builds:
//  1. Work and listeners find the catalogue loaded, with all that changed() was told before run().
//  2. Each work that was begun is answered once, unless its context or this object goes before.
//  3. Changes told between the beginning of a loading and its end are applied behind it; those told
//     before reload() are not.
#ifndef ORVO_CATALOGUE_LIVECATALOGUE_H
#define ORVO_CATALOGUE_LIVECATALOGUE_H

#include "catalogue/Catalogue.h"
#include "platform/store/WaitPolicy.h"

#include <QObject>
#include <QPointer>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace orvo::catalogue {

class LiveCatalogue : public QObject, private store::WaitPolicy {
    Q_OBJECT
public:
    using Opener = std::function<std::unique_ptr<store::Store>(store::Status* status)>;
    using Work = std::function<void(const Catalogue& catalogue)>;
    using Done = std::function<void()>;
    /// After a failure loading is tried again so much later.
    static constexpr int retryMs = 5000;

    explicit LiveCatalogue(Opener open);
    /// Gives up what is being done, waiting for no server; what is not begun is forgotten.
    ~LiveCatalogue() override;

    /// Hears of everything from its first loading on. Before start.
    void addListener(std::shared_ptr<Listener> listener);
    /// Begins to load; nothing happens before, whatever is told or asked. A second call does
    /// nothing.
    void start();
    bool isStarted() const { return m_started; }
    /// Whether it is loaded and no loading is due.
    bool isLoaded() const { return m_loaded; }
    /// A change of the log.
    void changed(const store::Change& change);
    /// The log is another one, or some of it was missed.
    void reload();
    /// Does work as soon as everything is loaded; then `done`, if the context is still there. Both
    /// are called once; what they share is theirs.
    void run(QObject* context, Work work, Done done);
    /// For work: has something done in the thread of this object, if the context is still there.
    /// The pointer is made in that thread.
    void post(const QPointer<QObject>& context, Done done);

signals:
    /// Loaded, for the first time or again.
    void loaded();
    /// Loading failed, and will be tried again.
    void failed(const QString& text);

private:
    struct Job {
        QPointer<QObject> context;
        Work work;
        Done done;
    };

    bool keepWaiting() override { return !m_stop; }
    void loop();
    void load(std::unique_lock<std::mutex>& lock);

    const Opener m_open;
    bool m_started = false;
    bool m_loaded = false;
    std::atomic<bool> m_stop = false;
    Catalogue m_catalogue; ///< the thread's alone
    std::vector<std::shared_ptr<Listener>> m_listeners;

    std::mutex m_mutex; ///< over these
    std::condition_variable m_wake;
    std::vector<store::Change> m_changes;
    std::deque<Job> m_jobs;
    uint64_t m_loadings = 0; ///< asked for
    uint64_t m_done = 0;     ///< of these, the one that the catalogue is of

    std::thread m_thread; ///< last: it begins when everything else is there
};

} // namespace orvo::catalogue

#endif
