#include "apps/client/MirrorManifest.h"

#include "platform/client/WholeFile.h"

#include <QFile>

#include <cassert>

namespace orvo::app {

MirrorManifest::MirrorManifest(const QString& workDir)
    : m_file(workDir + QStringLiteral("mirror.list")) {}

void MirrorManifest::read() {
    QFile file(m_file);
    if (!file.open(QIODevice::ReadOnly))
        return;
    for (const QByteArray& line : file.readAll().split('\n'))
        if (!line.isEmpty())
            m_paths.emplace_hint(m_paths.end(), line.toStdString(), 0);
}

QString MirrorManifest::write() {
    QSaveFile file(m_file);
    std::string lines;
    for (const auto& known : m_paths)
        lines += known.first + '\n';
    if (!client::openWhole(file) || !client::saveWhole(file, QByteArray::fromStdString(lines)))
        return file.errorString();
    m_isTouched = false;
    return {};
}

void MirrorManifest::add(const std::string& path, uint64_t listing) {
    m_paths[path] = listing;
    m_isTouched = true;
}

bool MirrorManifest::mark(const std::string& path, uint64_t listing) {
    const auto known = m_paths.find(path);
    if (known == m_paths.end())
        return false;
    known->second = listing;
    return true;
}

void MirrorManifest::remove(const std::string& path) {
    m_paths.erase(path);
    m_isTouched = true;
}

std::vector<std::string> MirrorManifest::notIn(uint64_t listing) const {
    std::vector<std::string> paths;
    for (const auto& [path, named] : m_paths) {
        assert(named <= listing);
        if (named != listing)
            paths.push_back(path);
    }
    return paths;
}

} // namespace orvo::app
