#include "apps/admin/LocalFiles.h"

#include "apps/admin/Failure.h"
#include "apps/admin/Records.h"
#include "frame/StdText.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::admin {

namespace {

// The stores hold a file as one value; beyond this their databases refuse it anyway.
constexpr qint64 largestFile = 900000000;

mode_t currentMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

[[noreturn]] void refuse(const std::string& what, const std::string& why) {
    throw Failure(what + ": " + why);
}

} // namespace

LocalFile readLocalFile(const std::string& path) {
    const std::string what = StdText::tr("файл «") + path + StdText::tr("» не прочитан");
    const QFileInfo info(QString::fromStdString(path));
    if (path.empty() || !info.exists())
        refuse(what, StdText::tr("его нет"));
    // A pipe or a device would block or never end.
    if (!info.isFile())
        refuse(what,
               info.isDir() ? StdText::tr("это каталог") : StdText::tr("это не обычный файл"));
    if (info.size() > largestFile)
        refuse(what, StdText::tr("он больше 900 МБ"));
    LocalFile file{info.fileName().toStdString(), {}, 0};
    if (!store::isPlainFileName(file.name))
        refuse(what, StdText::tr("хранилище не принимает такое имя"));
    requireStorable(file.name, StdText::tr("имя файла"));
    QFile source(info.filePath());
    if (!source.open(QIODevice::ReadOnly))
        refuse(what, source.errorString().toStdString());
    const QByteArray bytes = source.readAll();
    if (source.error() != QFileDevice::NoError || (info.size() > 0 && bytes.isEmpty()))
        refuse(what, source.errorString().toStdString());
    file.bytes.assign(bytes.constData(), static_cast<size_t>(bytes.size()));
    file.time = static_cast<double>(info.lastModified().toMSecsSinceEpoch()) / 1000.0;
    return file;
}

void requireDirectory(const std::string& directory) {
    const QFileInfo info(QString::fromStdString(directory));
    if (directory.empty() || !info.exists())
        throw Failure(StdText::tr("каталога «") + directory + StdText::tr("» нет"));
    if (!info.isDir())
        throw Failure(StdText::tr("«") + directory + StdText::tr("» не каталог"));
}

void writeLocalFile(const std::string& directory, const std::string& name, std::string_view bytes,
                    const std::optional<double>& time) {
    const std::string path = directory + "/" + name;
    const std::string what = StdText::tr("файл «") + path + StdText::tr("» не записан");
    if (!store::isPlainFileName(name))
        throw Failure(StdText::tr("файл «") + name +
                      StdText::tr("» не записан: такое имя выводит из каталога"));
    const auto system = [&] { refuse(what, std::strerror(errno)); };
    QTemporaryFile file(QString::fromStdString(directory) + QStringLiteral("/.orvo-XXXXXX"));
    if (!file.open())
        refuse(what, file.errorString().toStdString());
    if (file.write(bytes.data(), static_cast<qint64>(bytes.size())) !=
            static_cast<qint64>(bytes.size()) ||
        !file.flush())
        refuse(what, file.errorString().toStdString());
    if (time && std::isfinite(*time) && std::abs(*time) < 1e12)
        file.setFileTime(QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(*time * 1000.0)),
                         QFileDevice::FileModificationTime);
    if (fchmod(file.handle(), 0666 & ~currentMask()) != 0 || fsync(file.handle()) != 0)
        system();
    if (std::rename(file.fileName().toStdString().c_str(), path.c_str()) != 0)
        system();
    file.setAutoRemove(false);
}

} // namespace orvo::admin
