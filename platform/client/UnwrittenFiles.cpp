#include "platform/client/UnwrittenFiles.h"

#include "frame/Text.h"
#include "platform/client/WholeFile.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::client {

namespace {

const QByteArray magic = QByteArrayLiteral("ORVOUNW1");
constexpr int digestSize = 32;
constexpr qint64 largest = 1LL << 30;
const QString ending = QStringLiteral(".entry");

enum Member {
    Owner = 1,
    Id,
    State,
    When,
    Module,
    What,
    Place,
    Why,
    Seen,
    Kind,
    Table,
    Records,
    FormPath,
    Files,
    DeletedRecord,
    DeletedParent,
    DeletedParentKey,
    DeletedParentTable,
    Since,
    Call,
    LastId,
    LastProof,
    TheirsList,
};

QByteArray bytesOf(const std::string& text) {
    return {text.data(), static_cast<int>(text.size())};
}

std::string textAt(const QCborMap& map, int member) {
    return map.value(member).toByteArray().toStdString();
}

/// A lock that the system takes away with the process; -1 if another has it.
int lockFile(const QString& directory) {
    const int fd = ::open(QFile::encodeName(directory + QStringLiteral("/lock")).constData(),
                          O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

/// Reads a file that only its owner, who is the user of this process, may write.
bool readOwn(const QString& path, QByteArray* bytes) {
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0)
        return false;
    struct stat about {};
    QFile file;
    const bool good = ::fstat(fd, &about) == 0 && S_ISREG(about.st_mode) &&
                      about.st_uid == ::geteuid() && (about.st_mode & 077) == 0 &&
                      about.st_size <= largest &&
                      file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    if (!good) {
        if (!file.isOpen())
            ::close(fd);
        return false;
    }
    *bytes = file.readAll();
    return bytes->size() == about.st_size;
}

} // namespace

QByteArray packEntry(const UnwrittenEntry& entry, const QString& owner) {
    QCborMap map;
    map[Owner] = owner;
    map[Id] = entry.id;
    map[State] = static_cast<int>(entry.state);
    map[When] = entry.when.toMSecsSinceEpoch();
    map[Module] = entry.module;
    map[What] = entry.words.what;
    map[Place] = entry.words.place;
    map[Why] = entry.why;
    map[Seen] = qint64(entry.seen);
    map[Kind] = static_cast<int>(entry.request.kind);
    map[Table] = bytesOf(entry.request.table);
    map[Records] = entry.request.records;
    map[FormPath] = entry.request.formPath;
    map[DeletedRecord] = bytesOf(entry.deletedRecord);
    map[DeletedParent] = bytesOf(entry.deletedParent);
    map[DeletedParentKey] = bytesOf(entry.deletedParentKey);
    map[DeletedParentTable] = bytesOf(entry.deletedParentTable);
    map[Since] = qint64(entry.written.since);
    map[Call] = bytesOf(entry.written.call);
    map[LastId] = qint64(entry.written.last.id);
    map[LastProof] = bytesOf(entry.written.last.proof);
    QCborArray files;
    for (const WriteRequest::File& file : entry.request.files)
        files.append(QCborArray{file.path, file.name, file.bytes,
                                file.time ? QCborValue(*file.time) : QCborValue()});
    map[Files] = files;
    QCborArray theirs;
    for (const Theirs& one : entry.theirs)
        theirs.append(QCborArray{bytesOf(one.key), one.field, one.value, one.login,
                                 one.time.toMSecsSinceEpoch()});
    map[TheirsList] = theirs;
    const QByteArray body = map.toCborValue().toCbor();
    return magic + QCryptographicHash::hash(body, QCryptographicHash::Sha256) + body;
}

bool unpackEntry(const QByteArray& bytes, UnwrittenEntry* entry, QString* owner) {
    const int head = magic.size() + digestSize;
    if (!bytes.startsWith(magic) || bytes.size() < head)
        return false;
    const QByteArray body = bytes.mid(head);
    if (QCryptographicHash::hash(body, QCryptographicHash::Sha256) !=
        bytes.mid(magic.size(), digestSize))
        return false;
    QCborParserError error;
    const QCborMap map = QCborValue::fromCbor(body, &error).toMap();
    if (error.error != QCborError::NoError)
        return false;
    UnwrittenEntry read;
    *owner = map.value(Owner).toString();
    read.id = map.value(Id).toString();
    const qint64 state = map.value(State).toInteger();
    const qint64 kind = map.value(Kind).toInteger();
    const QUuid id = QUuid::fromString(read.id);
    read.id = id.toString(QUuid::WithoutBraces); // it becomes a file's name
    if (id.isNull() || state < UnwrittenEntry::Refused || state > UnwrittenEntry::Waiting ||
        kind < WriteRequest::Records || kind > WriteRequest::FileDelete)
        return false;
    read.state = static_cast<UnwrittenEntry::State>(state);
    read.when = QDateTime::fromMSecsSinceEpoch(map.value(When).toInteger());
    read.module = map.value(Module).toString();
    read.words.what = map.value(What).toString();
    read.words.place = map.value(Place).toString();
    read.why = map.value(Why).toString();
    read.seen = map.value(Seen).toInteger(-1);
    read.request.kind = static_cast<WriteRequest::Kind>(kind);
    read.request.table = textAt(map, Table);
    read.request.records = map.value(Records).toByteArray();
    read.request.formPath = map.value(FormPath).toString();
    read.deletedRecord = textAt(map, DeletedRecord);
    read.deletedParent = textAt(map, DeletedParent);
    read.deletedParentKey = textAt(map, DeletedParentKey);
    read.deletedParentTable = textAt(map, DeletedParentTable);
    read.written.since = map.value(Since).toInteger();
    read.written.call = textAt(map, Call);
    read.written.last = {map.value(LastId).toInteger(), textAt(map, LastProof)};
    for (const QCborValue& one : map.value(Files).toArray()) {
        const QCborArray parts = one.toArray();
        WriteRequest::File file{
            parts.at(0).toString(), parts.at(1).toString(), parts.at(2).toByteArray(), {}};
        if (parts.at(3).isDouble())
            file.time = parts.at(3).toDouble();
        read.request.files.push_back(std::move(file));
    }
    const store::TableDef* table = store::findTable(read.request.table);
    for (const QCborValue& one : map.value(TheirsList).toArray()) {
        const QCborArray parts = one.toArray();
        const auto field = static_cast<int>(parts.at(1).toInteger(-1));
        if (!table || field < 0 || static_cast<size_t>(field) >= table->fields.size())
            return false;
        read.theirs.push_back({parts.at(0).toByteArray().toStdString(), field,
                               parts.at(2).toString(), parts.at(3).toString(),
                               QDateTime::fromMSecsSinceEpoch(parts.at(4).toInteger())});
    }
    if (!isSound(read.request))
        return false;
    *entry = std::move(read);
    return true;
}

UnwrittenFiles::~UnwrittenFiles() {
    if (m_lock < 0)
        return;
    // What is empty is not left behind; a directory with entries stays for the next process.
    if (QDir(m_own).entryList({QLatin1Char('*') + ending}, QDir::Files).isEmpty()) {
        QFile::remove(m_own + QStringLiteral("/lock"));
        QDir().rmdir(m_own);
    }
    ::close(m_lock);
}

bool UnwrittenFiles::open(const QString& directory, QString* error) {
    m_above = directory;
    m_own = directory + QLatin1Char('/') + QUuid::createUuid().toString(QUuid::WithoutBraces);
    const mode_t before = ::umask(077);
    const bool made = QDir().mkpath(m_own);
    ::umask(before);
    m_lock = made ? lockFile(m_own) : -1;
    if (m_lock >= 0)
        return true;
    *error = Text::tr("Каталог %1 не создан: %2. Несохранённое останется только в памяти.")
                 .arg(m_own, QString::fromLocal8Bit(std::strerror(errno)));
    return false;
}

std::vector<UnwrittenEntry> UnwrittenFiles::takeOver(QStringList* problems) {
    std::vector<UnwrittenEntry> entries;
    for (const QString& name :
         QDir(m_above).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks)) {
        const QString directory = m_above + QLatin1Char('/') + name;
        if (directory == m_own)
            continue;
        const int lock = lockFile(directory);
        if (lock < 0)
            continue; // its process lives
        for (const QString& file :
             QDir(directory).entryList({QLatin1Char('*') + ending}, QDir::Files)) {
            const QString path = directory + QLatin1Char('/') + file;
            QByteArray bytes;
            UnwrittenEntry entry;
            QString owner;
            if (!readOwn(path, &bytes) || !unpackEntry(bytes, &entry, &owner)) {
                *problems << path;
                continue;
            }
            if (owner != m_owner)
                continue;
            const QByteArray from = QFile::encodeName(path);
            const QByteArray to = QFile::encodeName(pathOf(entry.id));
            if (::rename(from.constData(), to.constData()) == 0)
                entries.push_back(std::move(entry));
        }
        if (QDir(directory).entryList({QLatin1Char('*') + ending}, QDir::Files).isEmpty()) {
            QFile::remove(directory + QStringLiteral("/lock"));
            QDir().rmdir(directory);
        }
        ::close(lock);
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto& a, const auto& b) { return a.when < b.when; });
    return entries;
}

QString UnwrittenFiles::pathOf(const QString& id) const {
    return m_own + QLatin1Char('/') + id + ending;
}

bool UnwrittenFiles::save(const UnwrittenEntry& entry, QString* error) {
    QSaveFile file(pathOf(entry.id));
    if (openWhole(file) && file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
        saveWhole(file, packEntry(entry, m_owner)))
        return true;
    *error = Text::tr("%1 не записан: %2").arg(file.fileName(), file.errorString());
    return false;
}

void UnwrittenFiles::remove(const QString& id) {
    QFile::remove(pathOf(id));
}

} // namespace orvo::client
