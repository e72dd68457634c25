#include "apps/client/MirrorWorker.h"

#include "apps/client/MirrorPaths.h"
#include "frame/Vocabulary.h"
#include "platform/client/WholeFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <set>

namespace orvo::app {

namespace {

constexpr double sameTime = 0.001;
constexpr double latestTime = 4294967296.0;
/// What the editors show at once.
constexpr std::string_view iconFolder = orvo::iconFolder;

PathParts split(const std::string& path) {
    PathParts parts;
    size_t from = 0;
    while (from <= path.size()) {
        const size_t to = std::min(path.find('/', from), path.size());
        parts.push_back(path.substr(from, to - from));
        from = to + 1;
    }
    return parts;
}

std::string join(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + "/" + name;
}

bool isIcon(const std::string& folder) {
    return folder.starts_with(iconFolder) &&
           (folder.size() == iconFolder.size() || folder[iconFolder.size()] == '/');
}

QString reason() {
    return QString::fromLocal8Bit(std::strerror(errno));
}

QString textOf(const std::string& text) {
    return QString::fromStdString(text);
}

} // namespace

MirrorWorker::MirrorWorker(StoreOpener open, MirrorDirectory directory, const QString& workDir,
                           const MirrorPace& pace)
    : m_open(std::move(open))
    , m_directory(std::move(directory))
    , m_workDir(workDir)
    , m_pace(pace)
    , m_thread([this] { run(); }) {}

MirrorWorker::~MirrorWorker() {
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void MirrorWorker::ask(uint64_t number, int milliseconds, Recopy recopy) {
    {
        const std::lock_guard lock(m_mutex);
        const auto due = Clock::now() + std::chrono::milliseconds(milliseconds);
        // Who asks again does not put off what was asked before.
        m_due = m_asked == 0 || m_due < Clock::now() ? due : std::min(m_due, due);
        m_recopy = std::max(m_recopy, recopy);
        m_asked = number;
    }
    m_wake.notify_all();
}

void MirrorWorker::setConnected(bool up) {
    {
        const std::lock_guard lock(m_mutex);
        m_up = up;
    }
    m_wake.notify_all();
}

template <class Signal>
void MirrorWorker::post(Signal signal) {
    QMetaObject::invokeMethod(this, std::move(signal), Qt::QueuedConnection);
}

void MirrorWorker::run() {
    const store::WaitPolicyScope scope(this);
    readManifest();
    uint64_t done = 0;
    bool retry = false;
    std::unique_lock lock(m_mutex);
    while (!m_stop) {
        const bool wanted = m_up && (retry || m_asked != done);
        if (!wanted && !m_store) {
            m_wake.wait(lock);
        } else if (!wanted) {
            if (m_wake.wait_for(lock, m_pace.close) == std::cv_status::timeout) {
                lock.unlock(); // closing the connection may block
                m_store.reset();
                lock.lock();
            }
        } else if (Clock::now() < m_due) {
            m_wake.wait_until(lock, m_due);
        } else {
            done = m_asked;
            const Recopy recopy = std::exchange(m_recopy, Recopy::None);
            lock.unlock();
            const End end = pass(done, recopy);
            lock.lock();
            retry = end != End::Done;
            m_recopy = std::max(m_recopy, retry ? recopy : Recopy::None);
            if (end == End::Failed)
                m_due = Clock::now() + m_pace.retry;
            if (end != End::Restart)
                post([this, done] { emit answered(done); });
        }
    }
    lock.unlock();
    if (m_touched)
        writeManifest();
}

bool MirrorWorker::openStore() {
    if (m_store)
        return true;
    store::Status status;
    m_store = m_open(&status);
    if (!m_store && keepWaiting())
        tell(QStringLiteral("Файловая область не открыта: %1").arg(textOf(status.text)));
    return m_store != nullptr;
}

MirrorWorker::End MirrorWorker::pass(uint64_t number, Recopy recopy) {
    const Clock::time_point begin = Clock::now();
    std::vector<Wanted> queue;
    m_full = false;
    if (!openStore() || !list(recopy, &queue))
        return End::Failed;
    bool changed = removeStale();
    // What depends on this listing alone must be copied before the next one.
    const bool mayBreakOff = recopy == Recopy::None;
    Clock::time_point told = begin + m_pace.firstProgressAfter - m_pace.progressInterval;
    Clock::time_point staged = Clock::now();
    const int all = static_cast<int>(queue.size());
    End end = End::Done;
    for (int done = 0; done < all && end == End::Done; ++done) {
        if (!keepWaiting() || !fetch(queue[static_cast<size_t>(done)])) {
            end = End::Failed;
            break;
        }
        changed = true;
        const Clock::time_point now = Clock::now();
        if (now - told >= m_pace.progressInterval) {
            told = now;
            post([this, done, all] { emit progress(done + 1, all); });
        }
        if (now - staged >= m_pace.stage) {
            staged = now;
            writeManifest();
            post([this] { emit updated(); });
            if (mayBreakOff && m_asked != number)
                end = End::Restart;
        }
    }
    if (m_touched)
        writeManifest();
    if (changed)
        post([this] { emit updated(); });
    return end == End::Done && m_full ? End::Failed : end;
}

bool MirrorWorker::list(Recopy recopy, std::vector<Wanted>* queue) {
    ++m_listing;
    m_directory.forgetFolder();
    std::set<std::string> plain;
    store::Status status = plainFolderPaths(*m_store, &plain);
    if (status.ok() && keepWaiting())
        status = m_store->fileArea([&](const std::string& folder, const store::StoredFile& file) {
            if (!keepWaiting())
                return;
            if (plain.count(folder) && store::isPlainFileName(file.name))
                consider(folder, file, recopy, queue);
            else
                tell(QStringLiteral("«%1» не копируется на диск: в пути есть имя, которое не "
                                    "может быть именем папки или файла.")
                         .arg(textOf(join(folder, file.name))));
        });
    if (!status.ok() && keepWaiting())
        tell(QStringLiteral("Список файловой области не получен: %1").arg(textOf(status.text)));
    std::stable_partition(queue->begin(), queue->end(),
                          [](const Wanted& wanted) { return isIcon(wanted.folder); });
    return status.ok() && keepWaiting();
}

void MirrorWorker::consider(const std::string& folder, const store::StoredFile& file, Recopy recopy,
                            std::vector<Wanted>* queue) {
    // No disk holds every time that a store does, and what it makes of another would look changed
    // each time.
    const bool holds = file.time && *file.time >= 0 && *file.time < latestTime;
    const double time = holds ? *file.time : 0;
    const std::string path = join(folder, file.name);
    const auto known = m_manifest.find(path);
    bool same = known != m_manifest.end();
    if (same) {
        known->second = m_listing;
        const auto local = m_directory.info(split(path));
        // Without a time of its own only the notification tells that the content is another.
        same = local && local->size == file.size && std::fabs(local->time - time) < sameTime &&
               recopy < (holds ? Recopy::All : Recopy::Untimed);
    }
    if (!same)
        queue->push_back({folder, file.name, time});
}

bool MirrorWorker::removeStale() {
    bool changed = false;
    for (auto known = m_manifest.begin(); known != m_manifest.end();) {
        if (known->second == m_listing) {
            ++known;
            continue;
        }
        changed = m_directory.remove(split(known->first)) || changed;
        known = m_manifest.erase(known);
        m_touched = true;
    }
    return changed;
}

bool MirrorWorker::fetch(const Wanted& wanted) {
    std::vector<store::StoredFile> files;
    const store::Status status = m_store->fileGet(wanted.folder, wanted.name, true, &files);
    const std::string path = join(wanted.folder, wanted.name);
    if (!status.ok()) {
        if (keepWaiting())
            tell(QStringLiteral("Файл «%1» не получен: %2").arg(textOf(path), textOf(status.text)));
        return status.code != store::ConnectionBroken && status.code != store::CannotConnect &&
               status.code != store::Timeout;
    }
    if (files.empty())
        return true; // gone since the listing; its notification follows
    if (!m_directory.write(split(path), files.front().bytes, wanted.time)) {
        m_full = m_full || errno == ENOSPC || errno == EDQUOT;
        tell(QStringLiteral("Файл «%1» не записан в %2files: %3")
                 .arg(textOf(path), m_workDir, reason()));
        return true;
    }
    m_manifest[path] = m_listing;
    m_touched = true;
    return true;
}

void MirrorWorker::tell(const QString& text) {
    if (m_told.contains(text))
        return;
    m_told.insert(text);
    post([this, text] { emit problem(text); });
}

void MirrorWorker::readManifest() {
    QFile file(m_workDir + QStringLiteral("mirror.list"));
    if (!file.open(QIODevice::ReadOnly))
        return;
    for (const QByteArray& line : file.readAll().split('\n'))
        if (!line.isEmpty())
            m_manifest.emplace_hint(m_manifest.end(), line.toStdString(), 0);
}

void MirrorWorker::writeManifest() {
    QSaveFile file(m_workDir + QStringLiteral("mirror.list"));
    std::string lines;
    for (const auto& known : m_manifest)
        lines += known.first + '\n';
    if (client::openWhole(file) && client::saveWhole(file, QByteArray::fromStdString(lines)))
        m_touched = false;
    else
        tell(
            QStringLiteral("Список копии файловой области не записан: %1").arg(file.errorString()));
}

} // namespace orvo::app
