#include "apps/client/MirrorWorker.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace orvo::app {

namespace {

constexpr double sameTime = 0.001;
constexpr double latestTime = 4294967296.0;

/// No disk holds every time that a store does, and what it makes of another would look changed each
/// time.
std::optional<double> timeOnDisk(const store::StoredFile& file) {
    const bool holds = file.time && *file.time >= 0 && *file.time < latestTime;
    return holds ? file.time : std::nullopt;
}

QString reason() {
    return QString::fromLocal8Bit(std::strerror(errno));
}

QString textOf(const std::string& text) {
    return QString::fromStdString(text);
}

} // namespace

MirrorWorker::MirrorWorker(StoreOpener open, MirrorDirectory directory, const QString& workDir,
                           MirrorExtent extent, const MirrorPace& pace)
    : m_open(std::move(open))
    , m_directory(std::move(directory))
    , m_workDir(workDir)
    , m_extent(extent)
    , m_pace(pace)
    , m_manifest(workDir)
    , m_thread([this] { run(); }) {}

MirrorWorker::~MirrorWorker() {
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void MirrorWorker::ask(uint64_t number, int milliseconds, const MirrorChanges& changes) {
    {
        const std::lock_guard lock(m_mutex);
        const auto due = Clock::now() + std::chrono::milliseconds(milliseconds);
        // Who asks again does not put off what was asked before.
        m_due = m_asked == 0 || m_due < Clock::now() ? due : std::min(m_due, due);
        m_changes.merge(changes);
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
    m_manifest.read();
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
            MirrorChanges changes = std::exchange(m_changes, {});
            lock.unlock();
            const End end = pass(done, changes);
            lock.lock();
            retry = end != End::Done;
            if (retry) {
                changes.merge(m_changes);
                m_changes = std::move(changes);
            }
            assert(done <= m_asked);
            if (end == End::Failed)
                m_due = Clock::now() + m_pace.retry;
            if (end != End::Restart)
                post([this, done] { emit answered(done); });
        }
    }
    lock.unlock();
    if (m_manifest.isTouched())
        writeManifest();
}

bool MirrorWorker::openStore() {
    if (m_store)
        return true;
    store::Status status;
    m_store = m_open(&status);
    if (!m_store && keepWaiting())
        tell(Text::tr("Файловая область не открыта: %1").arg(textOf(status.text)));
    return m_store != nullptr;
}

MirrorWorker::End MirrorWorker::pass(uint64_t number, MirrorChanges& changes) {
    m_begun = Clock::now();
    m_full = false;
    std::vector<Wanted> queue;
    bool changed = false;
    if (!openStore())
        return End::Failed;
    store::Status status = changes.isWhole() ? store::Status() : resolve(&changes);
    if (status.ok() && !changes.isWhole())
        status = look(&changes, &queue, &changed);
    if (!status.ok() && keepWaiting())
        tell(Text::tr("Файловая область не прочитана: %1").arg(textOf(status.text)));
    if (!status.ok() || !keepWaiting())
        return End::Failed;
    if (changes.isWhole()) {
        if (!list(changes.recopy(), &queue))
            return End::Failed;
        changed = removeStale();
    }
    // What depends on this look alone must be copied before the next one.
    return copy(number, queue, changes.isWhole() && changes.recopy() == Recopy::None, changed);
}

MirrorWorker::End MirrorWorker::copy(uint64_t number, const std::vector<Wanted>& queue,
                                     bool mayBreakOff, bool changed) {
    assert(m_store);
    Clock::time_point told = m_begun + m_pace.firstProgressAfter - m_pace.progressInterval;
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
    if (m_manifest.isTouched())
        writeManifest();
    if (changed)
        post([this] { emit updated(); });
    return end == End::Done && m_full ? End::Failed : end;
}

bool MirrorWorker::list(Recopy recopy, std::vector<Wanted>* queue) {
    ++m_listing;
    m_directory.forgetFolder();
    store::Status status = m_folders.read(*m_store);
    const auto each = [&](const std::string& folder, const store::StoredFile& file) {
        if (keepWaiting() && hasPlace(folder, file.name))
            consider(folder, file, recopy, queue);
    };
    if (status.ok() && keepWaiting())
        status = m_extent == MirrorExtent::All ? m_store->fileArea(each) : listIcons(each);
    if (!status.ok() && keepWaiting())
        tell(Text::tr("Список файловой области не получен: %1").arg(textOf(status.text)));
    std::stable_partition(queue->begin(), queue->end(),
                          [](const Wanted& wanted) { return isIcon(wanted.folder); });
    return status.ok() && keepWaiting();
}

store::Status MirrorWorker::listIcons(
    const std::function<void(const std::string&, const store::StoredFile&)>& each) {
    for (const auto& [key, path] : m_folders.folders()) {
        if (!isIcon(path))
            continue;
        CMDArray records;
        store::Status status = m_store->fetchLinked(
            table::MenuResource, field::MenuResourceFolderKey, key, records.array);
        for (uint32_t i = 0; status.ok() && i < mdx::postedCount(records.array); ++i) {
            const MDRData* record = mdx::postedRecord(records.array, i);
            if (fieldNumber(records.array, field::type_, record) != Kind::File)
                continue;
            const std::string name = fieldText(records.array, field::name_, record);
            std::vector<store::StoredFile> files;
            status = m_store->fileGet(path, name, false, &files);
            for (const store::StoredFile& file : files)
                each(path, file);
        }
        if (!status.ok() || !keepWaiting())
            return status;
    }
    return {};
}

bool MirrorWorker::isCopied(const std::string& folder) const {
    return m_extent == MirrorExtent::All || isIcon(folder);
}

void MirrorWorker::consider(const std::string& folder, const store::StoredFile& file, Recopy recopy,
                            std::vector<Wanted>* queue) {
    const std::optional<double> time = timeOnDisk(file);
    const std::string path = joinPath(folder, file.name);
    bool same = m_manifest.mark(path, m_listing);
    if (same) {
        const auto local = m_directory.info(partsOf(path));
        // Without a time of its own only the notification tells that the content is another.
        same = local && local->size == file.size &&
               std::fabs(local->time - time.value_or(0)) < sameTime &&
               recopy < (time ? Recopy::All : Recopy::Untimed);
    }
    if (!same)
        queue->push_back({folder, file.name});
}

bool MirrorWorker::hasPlace(const std::string& folder, const std::string& name) {
    if (m_folders.isPlain(folder) && store::isPlainFileName(name))
        return true;
    tell(Text::tr("«%1» не копируется на диск: в пути есть имя, которое не может быть именем "
                  "папки или файла.")
             .arg(textOf(joinPath(folder, name))));
    return false;
}

store::Status MirrorWorker::resolve(MirrorChanges* changes) {
    for (const std::string& key : changes->folders()) {
        CMDArray folders;
        store::Status status =
            m_store->fetchLinked(table::MenuResourceFolder, field::KeyLink, key, folders.array);
        if (!status.ok())
            return status;
        for (uint32_t i = 0; i < mdx::postedCount(folders.array); ++i)
            if (fieldNumber(folders.array, field::type_, mdx::postedRecord(folders.array, i)) ==
                Kind::File) {
                changes->compareWhole();
                return {};
            }
    }
    return {};
}

/// The log has those changes as well that were made before a resource was read, but whose
/// notifications are still on the way.
store::Status MirrorWorker::learnFormerPlaces(MirrorChanges* changes) {
    constexpr int most = 1000;
    std::vector<store::Change> since;
    store::Status status = m_store->readLog(changes->since() - 1, most, &since);
    if (status.code == store::LogPruned || status.code == store::LogReplaced ||
        since.size() == most) {
        changes->compareWhole();
        return {};
    }
    for (const store::Change& change : since)
        changes->learn(change);
    return status;
}

store::Status MirrorWorker::look(MirrorChanges* changes, std::vector<Wanted>* queue,
                                 bool* changed) {
    struct Resource {
        std::string name, folder;
        bool isFile = false;
    };
    std::map<std::string, Resource> resources;
    for (const auto& entry : changes->resources()) {
        CMDArray records;
        store::Status status =
            m_store->fetchLinked(table::MenuResource, field::KeyLink, entry.first, records.array);
        if (!status.ok())
            return status;
        Resource& resource = resources[entry.first];
        if (mdx::postedCount(records.array) > 0) {
            const MDRData* record = mdx::postedRecord(records.array, 0);
            resource = {fieldText(records.array, field::name_, record),
                        fieldText(records.array, field::MenuResourceFolderKey, record),
                        fieldNumber(records.array, field::type_, record) == Kind::File};
        }
    }
    store::Status status = learnFormerPlaces(changes);
    m_directory.forgetFolder();
    // If all is compared now, nothing is named any more.
    for (const auto& [key, before] : changes->resources()) {
        const auto& [name, folder, isFile] = resources[key];
        const auto path = m_folders.path(folder);
        std::set<std::string> names = before.names, folders = before.folders;
        names.insert(name);
        folders.insert(folder);
        for (const std::string& formerFolder : folders) {
            const auto former = m_folders.path(formerFolder);
            if (!former || !isCopied(*former))
                continue;
            // Where it was there may be another's file now: the store tells.
            for (const std::string& formerName : names)
                if (status.ok() && (!isFile || former != path || formerName != name) &&
                    m_manifest.has(joinPath(*former, formerName)))
                    status = lookAt(*former, formerName, false, queue, changed);
        }
        if (status.ok() && isFile && path && isCopied(*path) && hasPlace(*path, name))
            status = lookAt(*path, name, before.content, queue, changed);
    }
    return status;
}

store::Status MirrorWorker::lookAt(const std::string& folder, const std::string& name, bool copy,
                                   std::vector<Wanted>* queue, bool* changed) {
    std::vector<store::StoredFile> files;
    store::Status status = m_store->fileGet(folder, name, false, &files);
    if (!status.ok())
        return status;
    bool isThere = false;
    for (const store::StoredFile& file : files) {
        consider(folder, file, copy ? Recopy::All : Recopy::None, queue);
        isThere = isThere || file.name == name;
    }
    const std::string path = joinPath(folder, name);
    if (!isThere && m_manifest.has(path))
        *changed = remove(path) || *changed;
    return {};
}

bool MirrorWorker::remove(const std::string& path) {
    m_manifest.remove(path);
    return m_directory.remove(partsOf(path));
}

bool MirrorWorker::removeStale() {
    bool changed = false;
    for (const std::string& path : m_manifest.notIn(m_listing)) {
        // What this one does not copy another client of the same user may.
        const size_t slash = path.rfind('/');
        if (isCopied(slash == std::string::npos ? std::string() : path.substr(0, slash)))
            changed = remove(path) || changed;
    }
    return changed;
}

bool MirrorWorker::fetch(const Wanted& wanted) {
    std::vector<store::StoredFile> files;
    const store::Status status = m_store->fileGet(wanted.folder, wanted.name, true, &files);
    const std::string path = joinPath(wanted.folder, wanted.name);
    if (!status.ok()) {
        if (keepWaiting())
            tell(Text::tr("Файл «%1» не получен: %2").arg(textOf(path), textOf(status.text)));
        return status.code != store::ConnectionBroken && status.code != store::CannotConnect &&
               status.code != store::Timeout;
    }
    if (files.empty())
        return true; // gone since the listing; its notification follows
    // Time and bytes of one file: another may stand there since the comparison.
    const double time = timeOnDisk(files.front()).value_or(0);
    if (!m_directory.write(partsOf(path), files.front().bytes, time)) {
        m_full = m_full || errno == ENOSPC || errno == EDQUOT;
        tell(Text::tr("Файл «%1» не записан в %2files: %3").arg(textOf(path), m_workDir, reason()));
        return true;
    }
    m_manifest.add(path, m_listing);
    return true;
}

void MirrorWorker::tell(const QString& text) {
    if (m_told.contains(text))
        return;
    m_told.insert(text);
    post([this, text] { emit problem(text); });
}

void MirrorWorker::writeManifest() {
    const QString error = m_manifest.write();
    if (!error.isNull())
        tell(Text::tr("Список копии файловой области не записан: %1").arg(error));
}

} // namespace orvo::app
