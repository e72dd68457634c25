// Opening and making an SQLite store. A file that is no store is only ever looked at.
#include "platform/store/SqliteStore.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/SqliteSchema.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::store::sqlite {

namespace {

// Durable commits. The log is carried over every 16 MiB, which spreads that work over many commits,
// and its file is cut back after a burst, to no less than that: growing it costs more than
// overwriting. What is deleted is wiped where that costs no writes.
const char settings[] = "PRAGMA synchronous = FULL;"
                        "PRAGMA wal_autocheckpoint = 4000;"
                        "PRAGMA journal_size_limit = 33554432;"
                        "PRAGMA cache_size = -65536;"
                        "PRAGMA secure_delete = FAST;"
                        "PRAGMA foreign_keys = OFF;";

Status systemError(int code, const std::string& what, int number) {
    return {code, what + " (" + std::strerror(number) + ")"};
}

std::string directoryOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// What SQLite's own first bytes of a database file say: the mark, 0 if it is no database. Read
/// through SQLite's handle: to open and close the file by hand would drop the locks of another
/// store object of this process. Opened as immutable nothing is made beside it; the rest of the
/// file is not looked at, for it means nothing without its log.
Status markInHeader(const std::string& path, const std::string& what, int64_t* mark) {
    constexpr char magic[] = "SQLite format 3"; // with the zero byte at its end
    constexpr size_t markAt = 68, size = markAt + 4;
    Connection connection;
    const int opened =
        connection.open(immutableUri(path).c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    if (opened != SQLITE_OK)
        return connection.failure(what);
    sqlite3_file* file = connection.file();
    unsigned char head[size] = {};
    const int read =
        file != nullptr ? file->pMethods->xRead(file, head, sizeof head, 0) : SQLITE_IOERR;
    if (read != SQLITE_OK && read != SQLITE_IOERR_SHORT_READ)
        return systemError(CannotConnect, what + StdText::tr(": файл базы не читается"), errno);
    *mark = 0;
    if (std::memcmp(head, magic, sizeof magic) == 0)
        for (size_t i = markAt; i < size; ++i)
            *mark = *mark << 8 | head[i];
    return {};
}

/// The mark as SQLite reads it from file and log together. The log may hold the newer first page,
/// or the only good one. Neither file is changed, and nothing is made beside them.
int64_t markWithLog(const std::string& path) {
    int64_t mark = 0;
    Connection connection;
    if (connection.open(path.c_str(), SQLITE_OPEN_READWRITE) != SQLITE_OK)
        return 0;
    sqlite3_db_config(connection.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // Alone with the file SQLite keeps the index of the log in memory. If another program has the
    // database open, that index is there already.
    for (const char* mode : {"EXCLUSIVE", "NORMAL"}) {
        if (connection.execute(std::string("PRAGMA locking_mode = ") + mode) != SQLITE_OK)
            break;
        const int read = connection.integer("PRAGMA application_id", &mark);
        if ((read & 0xFF) != SQLITE_BUSY)
            break;
    }
    return mark;
}

/// Whether the existing file is a store, by its mark.
Status look(const std::string& path, const std::string& name) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return systemError(CannotConnect, StdText::tr("Нет доступа к файлу базы ") + name, errno);
    if (S_ISDIR(info.st_mode))
        return {NotAStore, StdText::tr("Это не хранилище, а каталог: ") + name};
    if (!S_ISREG(info.st_mode))
        return {NotAStore, StdText::tr("Это не хранилище: ") + name};
    int64_t mark = 0;
    const Status status = markInHeader(path, StdText::tr("Хранилище ") + name, &mark);
    if (!status.ok() || mark == applicationId)
        return status;
    // To SQLite a log belongs to no empty file: it would delete it.
    struct stat log {};
    const bool hasLog = ::stat((path + "-wal").c_str(), &log) == 0 && log.st_size > 0;
    if (info.st_size > 0 && hasLog && markWithLog(path) == applicationId)
        return {};
    return {NotAStore, StdText::tr("Файл не является хранилищем: ") + name +
                           (hasLog ? StdText::tr("; рядом лежит журнал, не удаляйте его") : "")};
}

/// A new file under a passing name, deleted unless it got its own.
class NewFile {
public:
    explicit NewFile(const std::string& path) : m_path(path + ".new-" + newKey()) {}
    ~NewFile() {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"})
            ::unlink((m_path + suffix).c_str());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const std::string& path() const { return m_path; }

    /// 0 or errno. Private from the first moment; its journals get the same mode.
    int create() const {
        const int fd = ::open(m_path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        if (fd < 0)
            return errno;
        ::close(fd);
        return 0;
    }

    /// 0 or errno. Never takes the place of a file.
    int rename(const std::string& path) const {
        int result =
            ::renameat2(AT_FDCWD, m_path.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
        if (result != 0 && (errno == EINVAL || errno == ENOSYS))
            result = ::link(m_path.c_str(), path.c_str()); // a file system that cannot do that
        return result == 0 ? 0 : errno;
    }

private:
    const std::string m_path;
};

/// Makes a store, complete before anyone can see it under its name.
Status create(const std::string& path, const std::string& name) {
    const std::string what = StdText::tr("Хранилище ") + name + StdText::tr(" не создано");
    for (const char* suffix : {"-wal", "-journal"}) {
        // It would be taken for the new file's and spoil it; and it may hold somebody's data.
        if (::access((path + suffix).c_str(), F_OK) == 0)
            return {CannotConnect, what + StdText::tr(": рядом остался журнал прежней базы ") +
                                       shown(path + suffix)};
    }
    const NewFile file(path);
    if (const int error = file.create(); error != 0)
        return systemError(CannotConnect, what, error);
    {
        Connection connection;
        if (connection.open(file.path().c_str(), SQLITE_OPEN_READWRITE) != SQLITE_OK ||
            connection.execute("PRAGMA journal_mode = WAL") != SQLITE_OK ||
            connection.execute(settings) != SQLITE_OK ||
            connection.execute("PRAGMA application_id = " + std::to_string(applicationId)) !=
                SQLITE_OK)
            return connection.failure(what);
        const Status status = migrate(connection);
        if (!status.ok())
            return {status.code, what + ": " + status.text};
        if (connection.execute("PRAGMA wal_checkpoint(TRUNCATE)") != SQLITE_OK)
            return connection.failure(what);
    }
    const int error = file.rename(path);
    if (error != 0 && error != EEXIST) // another process may have made it in the meantime
        return systemError(CannotConnect, what, error);
    const int directory = ::open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
        ::fsync(directory);
        ::close(directory);
    }
    return {};
}

bool isClosedForWriting(const std::string& path) {
    return ::faccessat(AT_FDCWD, directoryOf(path).c_str(), W_OK | X_OK, AT_EACCESS) != 0 ||
           ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0;
}

/// Log and index are made by those who write: without them nothing can be read.
Status connectToRead(const std::string& path, const std::string& name, Connection* connection) {
    const std::string what = StdText::tr("Хранилище ") + name;
    int64_t any = 0;
    if (connection->open(path.c_str(), SQLITE_OPEN_READONLY) != SQLITE_OK)
        return connection->failure(what);
    sqlite3_busy_timeout(connection->get(), busyMilliseconds);
    if (connection->integer("PRAGMA schema_version", &any) == SQLITE_CANTOPEN)
        return {Failed,
                what +
                    StdText::tr(": доступно только для чтения, а читать его можно, лишь пока оно "
                                "открыто у того, кто может писать")};
    if (connection->execute(settings) != SQLITE_OK)
        return connection->failure(what);
    const Status status = migrate(*connection);
    return status.ok() ? status : Status{status.code, what + ": " + status.text};
}

Status connect(const std::string& path, const std::string& name, Connection* connection) {
    const std::string what = StdText::tr("Хранилище ") + name;
    if (::faccessat(AT_FDCWD, directoryOf(path).c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        return systemError(
            Failed, what + StdText::tr(": в каталог базы нельзя писать, а её журнал лежит там же"),
            errno);
    if (connection->open(path.c_str(), SQLITE_OPEN_READWRITE) != SQLITE_OK)
        return connection->failure(what);
    if (sqlite3_db_readonly(connection->get(), "main") == 1)
        return {Failed, what + StdText::tr(": файл базы доступен только для чтения")};
    sqlite3_busy_timeout(connection->get(), busyMilliseconds);
    if (connection->execute("PRAGMA journal_mode = WAL") != SQLITE_OK ||
        connection->execute(settings) != SQLITE_OK)
        return connection->failure(what);
    const Status status = migrate(*connection);
    return status.ok() ? status : Status{status.code, what + ": " + status.text};
}

} // namespace

Status connectTo(const std::string& path, bool allowReadOnly, Connection* connection) {
    const Status status = look(path, shown(path));
    if (!status.ok())
        return status;
    return allowReadOnly && isClosedForWriting(path) ? connectToRead(path, shown(path), connection)
                                                     : connect(path, shown(path), connection);
}

std::string immutableUri(const std::string& path) {
    std::string out = "file:";
    for (const char c : path) {
        if (c == '?')
            out += "%3f";
        else if (c == '#')
            out += "%23";
        else if (c == '%')
            out += "%25";
        else
            out += c;
    }
    return out + "?immutable=1";
}

Status parseUrl(const std::string& url, Location* location) {
    std::string path = url.substr(url.find(':') + 1);
    const bool full = path.starts_with("//");
    if (full)
        path.erase(0, 2);
    // "sqlite://name/..." would name a machine.
    if (!isPathText(path) || (full && path.front() != '/'))
        return {BadArguments,
                StdText::tr("В адресе хранилища вида sqlite нет пути к файлу; он имеет вид "
                            "sqlite:///путь/orvo.db")};
    std::error_code error;
    location->file = std::filesystem::absolute(path, error).string();
    location->displayName = urlOf(location->file);
    return {};
}

std::string urlOf(const std::string& path) {
    return "sqlite://" + path;
}

std::unique_ptr<MaintainedStore> openStore(const std::string& url, const OpenOptions& options,
                                           Status* status) {
    Location location;
    *status = parseUrl(url, &location);
    if (!status->ok())
        return nullptr;
    // SQLite keeps its journals beside the file that a link points to; so must the watch.
    std::error_code error;
    std::string path = location.file;
    if (const auto real = std::filesystem::canonical(path, error); !error)
        path = real.string();
    const std::string name = shown(path);

    *status = {};
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) {
        if (errno != ENOENT && errno != ENOTDIR)
            *status =
                systemError(CannotConnect, StdText::tr("Нет доступа к файлу базы ") + name, errno);
        else if (!options.create)
            *status = {CannotConnect, StdText::tr("Нет файла базы ") + name};
        else
            *status = create(path, name);
        if (const auto made = std::filesystem::canonical(path, error); !error)
            path = made.string();
    }
    Connection connection;
    if (status->ok())
        *status = connectTo(path, options.allowReadOnly, &connection);
    if (!status->ok())
        return nullptr;
    auto store = std::make_unique<SqliteStore>(std::move(connection), path, options);
    *status = store->start();
    if (!status->ok())
        return nullptr;
    return store;
}

} // namespace orvo::store::sqlite
