#include "platform/client/IconFile.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QXmlStreamReader>
#include <QtEndian>

#include <array>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::iconfile {

namespace {

class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_fd; }

private:
    int m_fd;
};

QByteArray ownPath(const Descriptor& file) {
    return "/proc/self/fd/" + QByteArray::number(file.get());
}

/// Where a descriptor leads, without any link; null if that is unknown.
QByteArray realPath(const Descriptor& file) {
    std::array<char, PATH_MAX> target{};
    const ssize_t size = ::readlink(ownPath(file).constData(), target.data(), target.size());
    return size > 0 ? QByteArray(target.data(), static_cast<int>(size)) : QByteArray();
}

bool isInside(const QByteArray& path, const QByteArray& folder) {
    return !folder.isEmpty() && path.startsWith(folder.endsWith('/') ? folder : folder + '/');
}

int64_t nanoseconds(const timespec& time) {
    return int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

bool isAllowedSize(const QSize& size) {
    return size.width() > 0 && size.height() > 0 && size.width() <= maxSide &&
           size.height() <= maxSide;
}

/// An .ico file may hold pictures that are larger than its directory says.
bool isHarmlessIco(const QByteArray& bytes) {
    constexpr int headSize = 6, entrySize = 16, maxEntries = 64;
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    const auto size = static_cast<quint32>(bytes.size());
    if (size < headSize)
        return false;
    const int count = qFromLittleEndian<quint16>(data + 4);
    if (count > maxEntries || size < static_cast<quint32>(headSize + count * entrySize))
        return false;
    for (int i = 0; i < count; ++i) {
        const auto offset = qFromLittleEndian<quint32>(data + headSize + i * entrySize + 12);
        if (offset > size || size - offset < 24)
            return false;
        const uchar* picture = data + offset;
        const bool isPng = bytes.mid(static_cast<int>(offset), 4) == "\x89PNG";
        const qint64 width = isPng ? qFromBigEndian<quint32>(picture + 16)
                                   : qAbs(qint64{qFromLittleEndian<qint32>(picture + 4)});
        const qint64 height = isPng ? qFromBigEndian<quint32>(picture + 20)
                                    // colours and mask, one above the other
                                    : qAbs(qint64{qFromLittleEndian<qint32>(picture + 8)}) / 2;
        if (width > maxSide || height > maxSide)
            return false;
    }
    return true;
}

/// Each scan of a progressive JPEG costs a pass over the whole picture.
bool isHarmlessJpeg(const QByteArray& bytes) {
    constexpr int maxScans = 64;
    return bytes.count("\xff\xda") <= maxScans;
}

bool isHarmlessSvg(const QByteArray& bytes) {
    constexpr int maxDepth = 32, maxElements = 5000;
    QXmlStreamReader xml(bytes);
    int depth = 0, elements = 0;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth > maxDepth || ++elements > maxElements)
                return false;
            for (const char* reference : {"use", "image", "script", "video", "animation"})
                if (xml.name() == QLatin1String(reference))
                    return false;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::DTD:
            if (!xml.entityDeclarations().isEmpty())
                return false;
            break;
        default:
            break;
        }
    }
    return !xml.hasError();
}

bool isHarmless(const QByteArray& format, const QByteArray& bytes) {
    if (format == "svg")
        return isHarmlessSvg(bytes);
    if (bytes.startsWith(QByteArray("\0\0\1\0", 4))) // an .ico
        return isHarmlessIco(bytes);
    if (format == "jpeg" || format == "jpg")
        return isHarmlessJpeg(bytes);
    // Others are left out: a compressed SVG, e.g., has no size before it is unpacked.
    for (const char* plain : {"png", "gif", "bmp", "xpm", "xbm", "pbm", "pgm", "ppm"})
        if (format == plain)
            return true;
    return false;
}

} // namespace

QByteArray read(const QString& folder, const QString& name, Stamp* stamp) {
    const Stamp before = *stamp;
    *stamp = {};
    if (name.isEmpty() || name.size() > maxNameSize || name.contains(QChar(0)))
        return {};
    // O_PATH finds a file without opening it.
    const Descriptor root(
        ::open(QFile::encodeName(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (root.get() < 0)
        return {};
    const Descriptor found(::open(QFile::encodeName(folder + QLatin1Char('/') + name).constData(),
                                  O_PATH | O_CLOEXEC));
    struct stat info = {};
    if (found.get() < 0 || ::fstat(found.get(), &info) != 0 || !S_ISREG(info.st_mode) ||
        info.st_size > maxFileBytes || !isInside(realPath(found), realPath(root)))
        return {};
    *stamp = {info.st_dev, info.st_ino, info.st_size, nanoseconds(info.st_mtim),
              nanoseconds(info.st_ctim)};
    if (*stamp == before)
        return {};
    const Descriptor file(
        ::open(ownPath(found).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    QFile device;
    if (file.get() < 0 || !device.open(file.get(), QIODevice::ReadOnly, QFile::DontCloseHandle))
        return {};
    // One byte more tells a file that has grown since.
    const QByteArray bytes = device.read(maxFileBytes + 1);
    return bytes.size() <= maxFileBytes ? bytes : QByteArray();
}

QImage decode(const QByteArray& bytes) {
    if (bytes.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    if (!isHarmless(reader.format(), bytes) || !isAllowedSize(reader.size()))
        return {};
    const QImage image = reader.read();
    if (image.width() <= shownSide && image.height() <= shownSide)
        return image;
    return image.scaled(shownSide, shownSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

} // namespace orvo::iconfile
