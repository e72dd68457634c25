#include "apps/client/FileMirror.h"

#include "apps/client/MirrorPaths.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSignalBlocker>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace orvo::app {

namespace {

constexpr int gatherMs = 30; ///< changes that come together are one comparison
constexpr int retryMs = 10000;
constexpr int sliceMs = 8; ///< the window answers in between
constexpr double sameTime = 0.001;

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

std::string join(const PathParts& parts) {
    std::string path;
    for (const std::string& part : parts)
        path += (path.empty() ? "" : "/") + part;
    return path;
}

/// Whether a change of that record can move, name, add or remove a file of the area. A comparison
/// takes the longer the more files there are, and most changes of a catalogue are about others.
bool concernsFiles(const store::Change& change) {
    constexpr int fileType = 4;
    const bool isFolder = change.table == "MenuResourceFolder";
    if (!isFolder && change.table != "MenuResource")
        return false;
    const auto fields = [](const std::string& json) {
        return QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
    };
    constexpr int updated = 602;
    if (change.code == updated) {
        // Only what has changed is told: not of what type the record is.
        const QStringList placing = isFolder
                                        ? QStringList{"caption", "ParentKey", "type_"}
                                        : QStringList{"name_", "MenuResourceFolderKey", "type_"};
        const QJsonObject after = fields(change.after);
        return std::any_of(placing.begin(), placing.end(),
                           [&](const QString& field) { return after.contains(field); });
    }
    const QJsonObject record = fields(change.after.size() > 2 ? change.after : change.before);
    return !record.contains("type_") || record["type_"].toInt() == fileType;
}

QString reason() {
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

FileMirror::FileMirror(store::Store& store, const QString& workDir, QObject* parent)
    : QObject(parent)
    , m_store(store)
    , m_workDir(workDir) {
    m_compare.setSingleShot(true);
    m_step.setSingleShot(true);
    connect(&m_compare, &QTimer::timeout, this, &FileMirror::compare);
    connect(&m_step, &QTimer::timeout, this, &FileMirror::step);
}

FileMirror::~FileMirror() {
    // What an unfinished copy has brought so far need not be fetched again. Who listens may be on
    // his way out as well.
    const QSignalBlocker silent(this);
    if (m_touched)
        writeManifest();
}

bool FileMirror::start(QString* error) {
    const QString root = m_workDir + QStringLiteral("files");
    if (!m_directory.open(QFile::encodeName(root).toStdString())) {
        *error = QStringLiteral("Каталог %1 недоступен: %2").arg(root, reason());
        return false;
    }
    m_running = true;
    readManifest();
    refresh();
    return true;
}

void FileMirror::changed(const store::Change& change) {
    // The file area is the files, the folders that make their paths and the records that name them.
    if (change.table == "MenuResourceFile")
        m_contentChanged = true;
    else if (!concernsFiles(change))
        return;
    if (!m_running)
        return;
    m_idle = false;
    if (m_connected && !m_compare.isActive())
        m_compare.start(gatherMs);
}

void FileMirror::setConnected(bool up) {
    m_connected = up;
    if (up) {
        refresh();
        return;
    }
    m_compare.stop();
    m_step.stop();
    m_idle = true;
}

void FileMirror::refresh() {
    if (!m_running || !m_connected)
        return;
    m_idle = false;
    m_compare.start(0);
}

void FileMirror::compare() {
    m_queue.clear(); // what is still missing is found missing again
    std::map<std::string, Wanted> wanted;
    std::set<std::string> plain;
    store::Status status = plainFolderPaths(m_store, &plain);
    if (status.ok())
        status = m_store.fileArea([&](const std::string& path, const store::StoredFile& file) {
            PathParts parts = path.empty() ? PathParts() : split(path);
            parts.push_back(file.name);
            if (!plain.count(path) || !store::isPlainFileName(file.name)) {
                tell(QStringLiteral("«%1» не копируется на диск: в пути есть имя, которое не может "
                                    "быть именем папки или файла.")
                         .arg(QString::fromStdString(join(parts))));
                return;
            }
            const std::string key = join(parts);
            const double time = file.time && std::isfinite(*file.time) ? *file.time : 0;
            const auto local = m_directory.info(parts);
            // Without a time only the notification tells that the content is another.
            const bool same = local && local->size == file.size &&
                              std::fabs(local->time - time) < sameTime && m_manifest.count(key) &&
                              (file.time || !m_contentChanged);
            if (!same)
                m_queue.push_back({parts, path, file.name, time});
            wanted[key] = {std::move(parts), path, file.name, time};
        });
    if (!status.ok()) {
        tell(QStringLiteral("Список файловой области не получен: %1")
                 .arg(QString::fromStdString(status.text)));
        tryLater();
        return;
    }
    m_contentChanged = false;
    removeStale(wanted);
    m_step.start(0);
}

void FileMirror::tryLater() {
    m_queue.clear();
    m_step.stop();
    m_idle = true;
    if (m_connected)
        m_compare.start(retryMs);
}

void FileMirror::removeStale(const std::map<std::string, Wanted>& wanted) {
    for (auto known = m_manifest.begin(); known != m_manifest.end();) {
        if (wanted.count(known->first)) {
            ++known;
            continue;
        }
        m_touched = m_directory.remove(known->second) || m_touched;
        known = m_manifest.erase(known);
    }
}

void FileMirror::step() {
    QElapsedTimer slice;
    slice.start();
    while (!m_queue.empty() && slice.elapsed() < sliceMs) {
        const Wanted next = std::move(m_queue.front());
        m_queue.pop_front();
        if (!fetch(next)) {
            tryLater();
            return;
        }
    }
    if (m_queue.empty())
        finish();
    else
        m_step.start(0);
}

bool FileMirror::fetch(const Wanted& wanted) {
    std::vector<store::StoredFile> files;
    const store::Status status = m_store.fileGet(wanted.path, wanted.name, true, &files);
    const QString shown = QString::fromStdString(join(wanted.parts));
    if (!status.ok()) {
        tell(QStringLiteral("Файл «%1» не получен: %2")
                 .arg(shown, QString::fromStdString(status.text)));
        return status.code != store::ConnectionBroken && status.code != store::CannotConnect &&
               status.code != store::Timeout;
    }
    if (files.empty())
        return true; // gone since the listing; its notification follows
    if (!m_directory.write(wanted.parts, files.front().bytes, wanted.time)) {
        tell(QStringLiteral("Файл «%1» не записан в %2files: %3").arg(shown, m_workDir, reason()));
        return true;
    }
    m_manifest[join(wanted.parts)] = wanted.parts;
    m_touched = true;
    return true;
}

void FileMirror::finish() {
    if (m_touched) {
        writeManifest();
        m_touched = false;
        emit updated();
    }
    m_idle = !m_compare.isActive();
}

void FileMirror::tell(const QString& text) {
    if (m_told.contains(text))
        return;
    m_told.insert(text);
    emit problem(text);
}

void FileMirror::readManifest() {
    QFile file(m_workDir + QStringLiteral("mirror.list"));
    if (!file.open(QIODevice::ReadOnly))
        return;
    for (const QByteArray& line : file.readAll().split('\n'))
        if (!line.isEmpty())
            m_manifest[line.toStdString()] = split(line.toStdString());
}

void FileMirror::writeManifest() {
    QSaveFile file(m_workDir + QStringLiteral("mirror.list"));
    bool ok = file.open(QIODevice::WriteOnly);
    for (const auto& [path, parts] : m_manifest)
        ok = ok && file.write((path + "\n").c_str()) >= 0;
    if (!ok || !file.commit())
        tell(
            QStringLiteral("Список копии файловой области не записан: %1").arg(file.errorString()));
}

} // namespace orvo::app
