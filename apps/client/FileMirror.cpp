#include "apps/client/FileMirror.h"

#include "frame/Vocabulary.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace orvo::app {

namespace {

constexpr int gatherMs = 30; ///< changes that come together are one comparison

/// Whether a change of that record can move, name, add or remove a file of the area. A comparison
/// takes the longer the more files there are, and most changes of a catalogue are about others.
bool concernsFiles(const store::Change& change) {
    namespace field = orvo::field;
    const bool isFolder = change.table == orvo::table::MenuResourceFolder;
    if (!isFolder && change.table != orvo::table::MenuResource)
        return false;
    const auto fields = [](const std::string& json) {
        return QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
    };
    if (change.code == OrvoEventUpdate) {
        // Only what has changed is told: not of what type the record is.
        const QStringList placing =
            isFolder ? QStringList{field::caption, field::ParentKey, field::type_}
                     : QStringList{field::name_, field::MenuResourceFolderKey, field::type_};
        const QJsonObject after = fields(change.after);
        return std::any_of(placing.begin(), placing.end(),
                           [&](const QString& name) { return after.contains(name); });
    }
    const QJsonObject record = fields(change.after.size() > 2 ? change.after : change.before);
    return !record.contains(field::type_) || record[field::type_].toInt() == orvo::Kind::File;
}

/// What a change of a content asks for. An update that tells of neither size nor time is one of the
/// bytes alone, made by hand.
Recopy recopyAfter(const store::Change& change) {
    if (change.code != OrvoEventUpdate)
        return Recopy::Untimed;
    const QJsonObject after =
        QJsonDocument::fromJson(QByteArray::fromStdString(change.after)).object();
    return after.contains(orvo::field::size) || after.contains(orvo::field::time) ? Recopy::Untimed
                                                                                  : Recopy::All;
}

} // namespace

FileMirror::FileMirror(StoreOpener open, const QString& workDir, const MirrorPace& pace,
                       QObject* parent)
    : QObject(parent)
    , m_open(std::move(open))
    , m_workDir(workDir)
    , m_pace(pace) {}

FileMirror::~FileMirror() = default;

bool FileMirror::start(QString* error) {
    const QString root = m_workDir + QStringLiteral("files");
    MirrorDirectory directory;
    if (!directory.open(QFile::encodeName(root).toStdString())) {
        *error = QStringLiteral("Каталог %1 недоступен: %2")
                     .arg(root, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    m_worker = std::make_unique<MirrorWorker>(m_open, std::move(directory), m_workDir, m_pace);
    m_worker->setConnected(m_connected);
    connect(m_worker.get(), &MirrorWorker::problem, this, &FileMirror::problem);
    connect(m_worker.get(), &MirrorWorker::updated, this, &FileMirror::updated);
    connect(m_worker.get(), &MirrorWorker::answered, this, &FileMirror::finish);
    connect(m_worker.get(), &MirrorWorker::progress, this, [this](int done, int all) {
        m_shown = true;
        emit progress(done, all);
    });
    refresh();
    return true;
}

void FileMirror::changed(const store::Change& change) {
    // The file area is the files, the folders that make their paths and the records that name them.
    const bool contents = change.table == orvo::table::MenuResourceFile;
    if (m_worker && (contents || concernsFiles(change)))
        ask(gatherMs, contents ? recopyAfter(change) : Recopy::None);
}

void FileMirror::setConnected(bool up) {
    m_connected = up;
    if (!m_worker)
        return;
    m_worker->setConnected(up);
    if (up)
        refresh();
}

void FileMirror::refresh() {
    if (m_worker)
        ask(0, Recopy::None);
}

bool FileMirror::isIdle() const {
    return !m_worker || !m_connected || m_answered == m_asked;
}

void FileMirror::ask(int milliseconds, Recopy recopy) {
    m_worker->ask(++m_asked, milliseconds, recopy);
}

void FileMirror::finish(uint64_t number) {
    m_answered = number;
    if (std::exchange(m_shown, false))
        emit progress(0, 0);
}

} // namespace orvo::app
