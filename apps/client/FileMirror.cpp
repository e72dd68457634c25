#include "apps/client/FileMirror.h"

#include "frame/Text.h"

#include <QFile>

#include <cerrno>
#include <cstring>

namespace orvo::app {

namespace {

constexpr int gatherMs = 30; ///< changes that come together are one look

} // namespace

FileMirror::FileMirror(StoreOpener open, const QString& workDir, const MirrorPace& pace,
                       MirrorExtent extent, QObject* parent)
    : QObject(parent)
    , m_open(std::move(open))
    , m_workDir(workDir)
    , m_extent(extent)
    , m_pace(pace) {}

FileMirror::~FileMirror() = default;

bool FileMirror::start(QString* error) {
    const QString root = m_workDir + QStringLiteral("files");
    MirrorDirectory directory;
    if (!directory.open(QFile::encodeName(root).toStdString())) {
        *error = Text::tr("Каталог %1 недоступен: %2")
                     .arg(root, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    m_worker =
        std::make_unique<MirrorWorker>(m_open, std::move(directory), m_workDir, m_extent, m_pace);
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
    MirrorChanges changes;
    if (m_worker && changes.add(change))
        ask(gatherMs, changes);
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
        ask(0, MirrorChanges::everything());
}

bool FileMirror::isIdle() const {
    return !m_worker || !m_connected || m_answered == m_asked;
}

void FileMirror::ask(int milliseconds, const MirrorChanges& changes) {
    m_worker->ask(++m_asked, milliseconds, changes);
}

void FileMirror::finish(uint64_t number) {
    m_answered = number;
    if (std::exchange(m_shown, false))
        emit progress(0, 0);
}

} // namespace orvo::app
