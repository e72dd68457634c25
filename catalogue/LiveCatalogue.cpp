#include "catalogue/LiveCatalogue.h"

#include <cassert>
#include <chrono>
#include <utility>

namespace orvo::catalogue {

LiveCatalogue::LiveCatalogue(Opener open) : m_open(std::move(open)), m_thread([this] { loop(); }) {}

LiveCatalogue::~LiveCatalogue() {
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void LiveCatalogue::addListener(std::shared_ptr<Listener> listener) {
    assert(!m_started);
    const std::lock_guard lock(m_mutex);
    m_catalogue.addListener(listener.get());
    m_listeners.push_back(std::move(listener));
}

void LiveCatalogue::start() {
    if (!std::exchange(m_started, true))
        reload();
}

void LiveCatalogue::changed(const store::Change& change) {
    if (!m_started || !store::findTable(change.table))
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_changes.push_back(change);
    }
    m_wake.notify_all();
}

void LiveCatalogue::reload() {
    if (!m_started)
        return;
    m_loaded = false;
    {
        const std::lock_guard lock(m_mutex);
        m_changes.clear();
        ++m_loadings;
    }
    m_wake.notify_all();
}

void LiveCatalogue::run(QObject* context, Work work, Done done) {
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back({context, std::move(work), std::move(done)});
    }
    m_wake.notify_all();
}

void LiveCatalogue::post(const QPointer<QObject>& context, Done done) {
    QMetaObject::invokeMethod(
        this,
        [context, done = std::move(done)] {
            if (context)
                done();
        },
        Qt::QueuedConnection);
}

void LiveCatalogue::load(std::unique_lock<std::mutex>& lock) {
    const uint64_t loading = m_loadings;
    lock.unlock();
    store::Status status;
    if (const std::unique_ptr<store::Store> store = m_open(&status))
        status = m_catalogue.load(*store, &m_stop);
    if (status.ok())
        for (const auto& listener : m_listeners)
            listener->settled(m_catalogue);
    const QString text = QString::fromStdString(status.text);
    lock.lock();
    if (m_stop || loading != m_loadings)
        return;
    if (status.ok()) {
        m_done = loading;
        post(this, [this, loading] {
            const std::lock_guard inner(m_mutex);
            m_loaded = m_loadings == loading;
            if (m_loaded)
                QMetaObject::invokeMethod(this, &LiveCatalogue::loaded, Qt::QueuedConnection);
        });
        return;
    }
    post(this, [this, text] { emit failed(text); });
    m_wake.wait_for(lock, std::chrono::milliseconds(retryMs),
                    [this, loading] { return m_stop || loading != m_loadings; });
}

void LiveCatalogue::loop() {
    const store::WaitPolicyScope scope(this);
    std::unique_lock lock(m_mutex);
    while (true) {
        m_wake.wait(lock, [this] {
            return m_stop || m_done != m_loadings ||
                   (m_done != 0 && !(m_jobs.empty() && m_changes.empty()));
        });
        if (m_stop)
            return;
        if (m_done != m_loadings) {
            load(lock);
        } else if (!m_changes.empty()) {
            const std::vector<store::Change> changes = std::exchange(m_changes, {});
            lock.unlock();
            for (const store::Change& change : changes) {
                if (m_stop)
                    break;
                m_catalogue.apply(change);
            }
            for (const auto& listener : m_listeners)
                listener->settled(m_catalogue);
            lock.lock();
        } else {
            assert(m_done != 0 && m_done == m_loadings && m_changes.empty()); // 1
            Job job = std::move(m_jobs.front());
            m_jobs.pop_front();
            lock.unlock();
            job.work(m_catalogue);
            job.work = nullptr; // what it shares is let go of here, before the answer
            post(job.context, std::move(job.done));
            lock.lock();
        }
    }
}

} // namespace orvo::catalogue
