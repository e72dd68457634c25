#include "apps/client/StoreThread.h"

#include <utility>

namespace orvo::app {

StoreThread::StoreThread(Opener open) : m_open(std::move(open)), m_thread([this] { loop(); }) {}

StoreThread::~StoreThread() {
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void StoreThread::run(QObject* context, Work work, Done done) {
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back({context, std::move(work), std::move(done)});
    }
    m_wake.notify_all();
}

store::Status StoreThread::perform(const Work& work) {
    store::Status status;
    if (!m_store) {
        m_store = m_open(&status);
        if (!m_store)
            return status;
        ++m_openings;
    }
    status = work(*m_store);
    if (status.code == store::ConnectionBroken || status.code == store::CannotConnect ||
        status.code == store::Timeout)
        m_store.reset();
    return status;
}

void StoreThread::loop() {
    const store::WaitPolicyScope scope(this);
    std::unique_lock lock(m_mutex);
    while (true) {
        m_wake.wait(lock, [this] { return m_stop || !m_jobs.empty(); });
        if (m_stop)
            break;
        Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        lock.unlock();
        const store::Status status = perform(job.work);
        job.work = nullptr; // what it shares is let go of here, before the answer
        QMetaObject::invokeMethod(
            this,
            [context = job.context, done = std::move(job.done), status] {
                if (context)
                    done(status);
            },
            Qt::QueuedConnection);
        lock.lock();
    }
    lock.unlock();
    m_store.reset();
}

} // namespace orvo::app
