#include "platform/client/IconLoader.h"

#include "platform/client/IconFile.h"

#include <QImage>
#include <QPixmap>

#include <algorithm>
#include <cassert>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace orvo {

using namespace std::chrono_literals;

/// A picture and where it comes from. Folder and name are read by the thread and never change;
/// `stamp` belongs to the thread that works on the file: the GUI thread hands it over by queuing.
struct IconLoader::File : IconPicture {
    QString folder, name;
    iconfile::Stamp stamp;
    QString key() const { return folder + QLatin1Char('/') + name; }
};

struct IconLoader::Work {
    struct Result {
        std::shared_ptr<File> file;
        bool isNew;
        QImage image;
    };
    std::mutex mutex;
    std::condition_variable wake, done;
    std::deque<std::shared_ptr<File>> queue;
    std::vector<Result> results;
    IconLoader* receiver = nullptr; ///< null: nobody waits any more
    bool isPosted = false;          ///< a call of deliver is on its way
    bool hasEnded = false;

    static Result look(const std::shared_ptr<File>& file) {
        const iconfile::Stamp before = file->stamp;
        const QByteArray bytes = iconfile::read(file->folder, file->name, &file->stamp);
        const bool isNew = file->stamp != before;
        return {file, isNew, isNew ? iconfile::decode(bytes) : QImage()};
    }

    void run() {
        std::unique_lock lock(mutex);
        while (receiver) {
            if (queue.empty()) {
                wake.wait(lock);
                continue;
            }
            const std::shared_ptr<File> file = queue.front();
            queue.pop_front();
            lock.unlock();
            Result result = look(file);
            lock.lock();
            results.push_back(std::move(result));
            done.notify_all();
            if (receiver && !isPosted) {
                isPosted = true;
                IconLoader* loader = receiver;
                QMetaObject::invokeMethod(
                    loader, [loader] { loader->deliver(); }, Qt::QueuedConnection);
            }
        }
        hasEnded = true;
        done.notify_all();
    }
};

std::shared_ptr<IconLoader> IconLoader::shared() {
    static std::weak_ptr<IconLoader> instance;
    std::shared_ptr<IconLoader> loader = instance.lock();
    if (!loader) {
        loader = std::make_shared<IconLoader>();
        instance = loader;
    }
    return loader;
}

IconLoader::IconLoader() : m_files(maxBytes), m_work(std::make_shared<Work>()) {
    m_work->receiver = this;
    m_thread = std::thread([work = m_work] { work->run(); });
}

IconLoader::~IconLoader() {
    std::unique_lock lock(m_work->mutex);
    m_work->receiver = nullptr;
    m_work->wake.notify_all();
    // A file system that does not answer must not keep the program from ending.
    const bool ended = m_work->done.wait_for(lock, 2s, [this] { return m_work->hasEnded; });
    lock.unlock();
    if (ended)
        m_thread.join();
    else
        m_thread.detach();
}

std::shared_ptr<IconPicture> IconLoader::picture(const QString& folder, const QString& name) {
    auto file = std::make_shared<File>();
    file->folder = folder;
    file->name = name;
    const QString key = file->key();
    if (const auto* known = m_files.object(key))
        return *known;
    constexpr int emptyCost = 1024;
    m_files.insert(key, new std::shared_ptr<File>(file), emptyCost + key.size() * 4);
    return file;
}

void IconLoader::refresh(const std::shared_ptr<IconPicture>& picture) {
    if (picture->isQueued)
        return;
    picture->isQueued = true;
    const std::lock_guard lock(m_work->mutex);
    assert(std::find(m_work->queue.begin(), m_work->queue.end(), picture) ==
           m_work->queue.end()); // 2
    m_work->queue.push_front(std::static_pointer_cast<File>(picture));
    if (m_work->queue.size() > maxQueued) {
        m_work->queue.back()->isQueued = false;
        m_work->queue.pop_back();
    }
    assert(m_work->queue.size() <= maxQueued); // 2
    assert(std::all_of(m_work->queue.begin(), m_work->queue.end(),
                       [](const std::shared_ptr<File>& file) { return file->isQueued; }));
    m_work->wake.notify_one();
}

void IconLoader::wait(const std::shared_ptr<IconPicture>& picture, int milliseconds) {
    {
        std::unique_lock lock(m_work->mutex);
        m_work->done.wait_for(lock, std::chrono::milliseconds(milliseconds), [&] {
            for (const Work::Result& result : m_work->results)
                if (result.file == picture)
                    return true;
            return !picture->isQueued;
        });
    }
    deliver();
}

void IconLoader::deliver() {
    std::vector<Work::Result> results;
    {
        const std::lock_guard lock(m_work->mutex);
        results.swap(m_work->results);
        m_work->isPosted = false;
    }
    for (const Work::Result& result : results) {
        File& file = *result.file;
        file.isQueued = false;
        if (file.isKnown && !result.isNew) {
            file.shownOn.clear();
            continue;
        }
        file.isKnown = true;
        file.icon = result.image.isNull() ? QIcon() : QIcon(QPixmap::fromImage(result.image));
        for (const QPointer<QWidget>& widget : file.shownOn)
            if (widget)
                widget->update();
        file.shownOn.clear();
        const QString key = file.key();
        m_files.insert(key, new std::shared_ptr<File>(result.file),
                       1024 + key.size() * 4 + static_cast<int>(result.image.sizeInBytes()));
    }
    assert(m_files.totalCost() <= maxBytes); // 3
}

} // namespace orvo
