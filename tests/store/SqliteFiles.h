// SqliteFiles.h: what the cases about files of SQLite stores share.
#ifndef ORVO_TESTS_STORE_SQLITEFILES_H
#define ORVO_TESTS_STORE_SQLITEFILES_H

#include <QFile>
#include <QProcess>
#include <QString>

#include <sys/mount.h>

namespace orvo::store::test {

inline QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Whether the file now holds these bytes and no others.
inline bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// What the database's own shell says to a statement.
inline QString shell(const QString& path, const QString& sql) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start("sqlite3", {"-batch", path, sql});
    process.waitForFinished();
    return QString::fromUtf8(process.readAll()).trimmed();
}

/// A small file system of its own, if the tests may mount one.
class SmallDisk {
public:
    explicit SmallDisk(const QString& path, const char* size = "size=1536k")
        : m_path(path.toUtf8()) {
        m_mounted = ::mount("tmpfs", m_path.constData(), "tmpfs", 0, size) == 0;
    }
    ~SmallDisk() {
        if (m_mounted)
            ::umount2(m_path.constData(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    bool mounted() const { return m_mounted; }
    /// Makes it larger or smaller; what it holds stays.
    bool resize(const QByteArray& size) const {
        return ::mount("tmpfs", m_path.constData(), "tmpfs", MS_REMOUNT, size.constData()) == 0;
    }

private:
    const QByteArray m_path;
    bool m_mounted;
};

} // namespace orvo::store::test

#endif
