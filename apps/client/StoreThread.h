// StoreThread.h: a connection to the store on a thread of its own, for work that may take its time
// and whose end the window does not wait for.
//
// Invariants:
// 1. Jobs are done one after the other, in the order of run().
// 2. Each job that was begun is answered once, unless its context or this object goes before; the
//    answers come in the thread of this object, from its event loop.
// 3. The store is opened with the first job, and again after a failure that lost the connection.
#ifndef ORVO_APPS_CLIENT_STORETHREAD_H
#define ORVO_APPS_CLIENT_STORETHREAD_H

#include "platform/store/Maintenance.h"
#include "platform/store/WaitPolicy.h"

#include <QObject>
#include <QPointer>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace orvo::app {

class StoreThread : public QObject, private store::WaitPolicy {
    Q_OBJECT
public:
    using Opener = std::function<std::unique_ptr<store::MaintainedStore>(store::Status* status)>;
    /// In the thread. What it keeps of the store it may use as long as openings() stays the same.
    using Work = std::function<store::Status(store::MaintainedStore& store)>;
    using Done = std::function<void(const store::Status& status)>;

    explicit StoreThread(Opener open);
    /// Gives up what is being done, waiting for no server; what is not begun is forgotten.
    ~StoreThread() override;

    /// `done` is not called if `context` has gone by then. What both need is theirs to share.
    void run(QObject* context, Work work, Done done);
    /// How often the store was opened. For jobs.
    uint64_t openings() const { return m_openings; }

private:
    struct Job {
        QPointer<QObject> context;
        Work work;
        Done done;
    };

    bool keepWaiting() override { return !m_stop; }
    void loop();
    store::Status perform(const Work& work);

    const Opener m_open;
    std::atomic<bool> m_stop = false;
    std::atomic<uint64_t> m_openings = 0;
    std::unique_ptr<store::MaintainedStore> m_store; ///< the thread's alone

    std::mutex m_mutex; ///< over these
    std::condition_variable m_wake;
    std::deque<Job> m_jobs;

    std::thread m_thread; ///< last: it begins when everything else is there
};

} // namespace orvo::app

#endif
