// The file of an SQLite store: making it, opening it, and what can go wrong with it.
#include "Batch.h"
#include "SqliteFiles.h"

#include "platform/store/SqliteStore.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

int modeOf(const QString& path) {
    struct stat info {};
    return ::stat(path.toUtf8().constData(), &info) == 0 ? int(info.st_mode & 07777) : -1;
}

/// Acts as a user whom permissions bind, also when the tests run as root.
class PlainUser {
public:
    PlainUser() { m_root = ::geteuid() == 0 && ::seteuid(65534) == 0; }
    ~PlainUser() {
        if (m_root && ::seteuid(0) != 0)
            qFatal("cannot become root again");
    }
    PlainUser(const PlainUser&) = delete;
    PlainUser& operator=(const PlainUser&) = delete;

private:
    bool m_root;
};

/// Files of this process cannot grow past the limit while it lives.
class FileLimit {
public:
    explicit FileLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        rlimit limit = m_old;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileLimit() { ::setrlimit(RLIMIT_FSIZE, &m_old); }
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;

private:
    rlimit m_old{};
};

} // namespace

#define REFUSED(file, expected, create)                                                            \
    do {                                                                                           \
        Status refusedStatus;                                                                      \
        QVERIFY(!openPath(file, &refusedStatus, create));                                          \
        QVERIFY2(refusedStatus.code == (expected), refusedStatus.text.c_str());                    \
        QVERIFY(!refusedStatus.text.empty());                                                      \
        QVERIFY(refusedStatus.text.find('\n') == std::string::npos);                               \
    } while (false)

namespace {

/// Writes until the store fails; then the failure is clear, what was written is all there, nothing
/// of the failed call is, and reading goes on.
void fillUp(Store& store, const char* word) {
    const QString filler(20000, 'x');
    int written = 0;
    Status status;
    for (; written < 1000; ++written) {
        status = Batch("MenuFileExt")
                     .insert(QString("a%1").arg(written, 4, 10, QChar('0')).toUtf8().constData(),
                             {{"fileExt", filler}})
                     .insert(QString("b%1").arg(written, 4, 10, QChar('0')).toUtf8().constData(),
                             {{"fileExt", filler}})
                     .send(store);
        if (!status.ok())
            break;
    }
    QVERIFY(written > 0 && written < 1000);
    QCOMPARE(status.code, int(Failed));
    QVERIFY2(status.text.find(word) != std::string::npos, status.text.c_str());
    CMDArray array;
    const Status fetched = store.fetch("MenuFileExt", array.array);
    QVERIFY2(fetched.ok(), fetched.text.c_str());
    QCOMPARE(array.array->recordCount, uint32_t(2 * written));
    int64_t position = 0;
    QVERIFY(store.logPosition(&position).ok());
    QCOMPARE(position, int64_t(2 * written));
}

} // namespace

class TestSqliteFile : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_directory = std::make_unique<QTemporaryDir>();
        QVERIFY(m_directory->isValid());
        QVERIFY(::chmod(m_directory->path().toUtf8().constData(), 0777) == 0);
    }

    void missingFileIsNotMadeUnlessAsked() {
        REFUSED(path(), CannotConnect, false);
        QVERIFY(entries().isEmpty());
        QVERIFY(opened(true));
        QCOMPARE(entries(), QStringList("orvo.db"));
        auto store = opened(true); // an existing one is opened
        QVERIFY(store->update("MenuFileExt", Batch("MenuFileExt").insert("k").array.array).ok());
        store = opened(true);
        QCOMPARE(dump(*store, "MenuFileExt"), QString("k|-"));
    }

    void madeStoreIsPrivateWhateverTheMask() {
        for (const mode_t mask : {0000, 0022, 0077}) {
            m_directory = std::make_unique<QTemporaryDir>();
            const mode_t old = ::umask(mask);
            const auto store = opened(true);
            ::umask(old);
            QVERIFY(store);
            QVERIFY(Batch("MenuFileExt").insert("k").send(*store).ok());
            QCOMPARE(modeOf(path()), 0600);
            QCOMPARE(modeOf(path() + "-wal"), 0600);
            QCOMPARE(modeOf(path() + "-shm"), 0600);
        }
    }

    void urlsAndPathsNameTheSameFile() {
        QVERIFY(opened(true));
        const QString old = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_directory->path()));
        for (const QString& url :
             {"sqlite://" + path(), "sqlite:" + path(), path(), QString("sqlite:orvo.db"),
              QString("orvo.db"), QString("./orvo.db"),
              QString("sqlite:../%1/orvo.db").arg(QDir::current().dirName())}) {
            Status status;
            const auto store = openPath(url, &status);
            QVERIFY2(store, status.text.c_str());
            QCOMPARE(QString::fromStdString(store->displayName()),
                     "sqlite://" + QFileInfo(path()).canonicalFilePath());
        }
        // What a URI would take apart is part of a name here.
        for (const char* name :
             {"a b.db", "имя.db", "a?mode=ro.db", "a%20b.db", "a#b.db", "a'b\".db"}) {
            Status status;
            const QString odd = m_directory->filePath(name);
            QVERIFY2(openPath(odd, &status, true), status.text.c_str());
            QVERIFY2(openPath("sqlite://" + odd, &status), status.text.c_str());
            QVERIFY(QFile::exists(odd));
        }
        QVERIFY(QDir::setCurrent(old));
    }

    void linkToAStoreWakesLikeTheStoreItself() {
        QVERIFY(opened(true));
        QDir(m_directory->path()).mkdir("links");
        const QString link = m_directory->filePath("links/store.db");
        QVERIFY(QFile::link(path(), link));
        Status status;
        const auto linked = openPath(link, &status);
        QVERIFY2(linked, status.text.c_str());
        linked->takeWake();
        const auto direct = opened();
        QVERIFY(Batch("MenuFileExt").insert("k").send(*direct).ok());
        QCOMPARE(dump(*linked, "MenuFileExt"), QString("k|-"));
        fd_set set;
        FD_ZERO(&set);
        FD_SET(linked->wakeFd(), &set);
        timeval wait = {2, 0};
        QCOMPARE(::select(linked->wakeFd() + 1, &set, nullptr, nullptr, &wait), 1);
        QVERIFY(!QFile::exists(link + "-wal"));
    }

    void foreignFilesAreRefusedAndLeftAsTheyAre_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"text", "empty", "zeros", "magic only", "sqlite", "sqlite wal",
                                 "sqlite with another mark"})
            QTest::newRow(kind) << QString(kind);
    }

    void foreignFilesAreRefusedAndLeftAsTheyAre() {
        QFETCH(QString, kind);
        if (kind == "text")
            QVERIFY(writeFile(path(), "Это письмо.\n"));
        else if (kind == "empty")
            QVERIFY(writeFile(path(), ""));
        else if (kind == "zeros")
            QVERIFY(writeFile(path(), QByteArray(8192, '\0')));
        else if (kind == "magic only")
            QVERIFY(writeFile(path(), QByteArray("SQLite format 3\0", 16)));
        else if (kind == "sqlite")
            shell(path(), "CREATE TABLE t (a); INSERT INTO t VALUES (1)");
        else if (kind == "sqlite wal")
            shell(path(),
                  "PRAGMA journal_mode = WAL; CREATE TABLE t (a); INSERT INTO t VALUES (1)");
        else
            shell(path(),
                  "PRAGMA application_id = 7; CREATE TABLE t (a); INSERT INTO t VALUES (1)");
        const QByteArray before = bytesOf(path());
        const QDateTime time = QFileInfo(path()).lastModified();
        REFUSED(path(), NotAStore, false);
        REFUSED(path(), NotAStore, true);
        QCOMPARE(bytesOf(path()), before);
        QCOMPARE(QFileInfo(path()).lastModified(), time);
        QCOMPARE(entries(), QStringList("orvo.db"));
    }

    void directoryAndMissingDirectoryAreRefused() {
        REFUSED(m_directory->path(), NotAStore, false);
        REFUSED(m_directory->path(), NotAStore, true);
        REFUSED(m_directory->filePath("no/orvo.db"), CannotConnect, false);
        REFUSED(m_directory->filePath("no/orvo.db"), CannotConnect, true);
        REFUSED("/dev/null", NotAStore, true);
        QVERIFY(entries().isEmpty());
        QVERIFY(writeFile(m_directory->filePath("file"), "x"));
        REFUSED(m_directory->filePath("file/orvo.db"), CannotConnect, true);
        REFUSED(m_directory->filePath(QString(300, 'n')), CannotConnect, true);
        QVERIFY(QFile::link(m_directory->filePath("gone"), m_directory->filePath("link")));
        REFUSED(m_directory->filePath("link"), CannotConnect, true);
        QCOMPARE(entries().size(), 2);
    }

    void leftOverJournalIsNotMixedWithANewStore() {
        QVERIFY(writeFile(path() + "-wal", "somebody's last changes"));
        REFUSED(path(), CannotConnect, true);
        QCOMPARE(entries(), QStringList("orvo.db-wal"));
        QCOMPARE(bytesOf(path() + "-wal"), QByteArray("somebody's last changes"));
    }

    void severalProcessesMayMakeTheStoreAtOnce() {
        std::vector<std::unique_ptr<QProcess>> makers;
        for (int i = 0; i < 4; ++i) {
            makers.push_back(std::make_unique<QProcess>());
            makers.back()->setProcessChannelMode(QProcess::ForwardedChannels);
            makers.back()->start(QCoreApplication::applicationFilePath(),
                                 {"--make", path(), "key" + QString::number(i)});
        }
        for (const auto& maker : makers) {
            QVERIFY(maker->waitForFinished());
            QCOMPARE(maker->exitCode(), 0);
        }
        QCOMPARE(dump(*opened(), "MenuFileExt", {"KeyLink"}), QString("key0\nkey1\nkey2\nkey3"));
        QVERIFY(QDir(m_directory->path()).entryList({"*.new-*"}).isEmpty());
    }

    void lockedStoreIsRefusedAfterAWait() {
        QVERIFY(Batch("MenuFileExt").insert("k").send(*opened(true)).ok());
        QProcess holder;
        holder.start("sqlite3", {"-batch", path()});
        holder.write("PRAGMA locking_mode = EXCLUSIVE; INSERT INTO MenuFileExt VALUES ('h', 'x'); "
                     "SELECT 'held';\n");
        QString words;
        while (!words.contains("held") && holder.waitForReadyRead())
            words += holder.readAll();
        QVERIFY(words.contains("held"));
        REFUSED(path(), Timeout, false);
        holder.closeWriteChannel();
        QVERIFY(holder.waitForFinished());
        QCOMPARE(dump(*opened(), "MenuFileExt", {"KeyLink"}), QString("h\nk"));
    }

    void writeWaitsForAnotherWriterAndThenGivesUp() {
        const auto store = opened(true);
        QVERIFY(store);
        QProcess holder;
        holder.start("sqlite3", {"-batch", path()});
        holder.write(
            "BEGIN IMMEDIATE; INSERT INTO MenuFileExt VALUES ('h', 'x'); SELECT 'held';\n");
        QString words;
        while (!words.contains("held") && holder.waitForReadyRead())
            words += holder.readAll();
        QVERIFY(words.contains("held"));
        QElapsedTimer clock;
        clock.start();
        const Status status = Batch("MenuFileExt").insert("k").send(*store);
        QCOMPARE(status.code, int(Timeout));
        QVERIFY(!status.text.empty());
        QVERIFY(clock.elapsed() >= sqlite::busyMilliseconds / 2);
        QCOMPARE(dump(*store, "MenuFileExt"), QString()); // readers do not wait
        holder.write("COMMIT;\n");
        holder.closeWriteChannel();
        QVERIFY(holder.waitForFinished());
        QVERIFY(Batch("MenuFileExt").insert("k").send(*store).ok());
        QCOMPARE(dump(*store, "MenuFileExt", {"KeyLink"}), QString("h\nk"));
    }

    void readOnlyFileIsRefused() {
        QVERIFY(Batch("MenuFileExt").insert("k").send(*opened(true)).ok());
        QVERIFY(::chmod(path().toUtf8().constData(), 0444) == 0);
        const QByteArray before = bytesOf(path());
        {
            const PlainUser user;
            REFUSED(path(), Failed, false);
        }
        QCOMPARE(bytesOf(path()), before);
        QCOMPARE(entries(), QStringList("orvo.db"));
        QVERIFY(::chmod(path().toUtf8().constData(), 0600) == 0);
        QCOMPARE(dump(*opened(), "MenuFileExt"), QString("k|-"));
    }

    void readOnlyDirectoryIsRefused() {
        QVERIFY(Batch("MenuFileExt").insert("k").send(*opened(true)).ok());
        QVERIFY(::chmod(path().toUtf8().constData(), 0666) == 0);
        QVERIFY(::chmod(m_directory->path().toUtf8().constData(), 0555) == 0);
        {
            const PlainUser user;
            REFUSED(path(), Failed, false);
            REFUSED(m_directory->filePath("new.db"), CannotConnect, true);
        }
        QVERIFY(::chmod(m_directory->path().toUtf8().constData(), 0777) == 0);
        QCOMPARE(entries(), QStringList("orvo.db"));
        QCOMPARE(dump(*opened(), "MenuFileExt"), QString("k|-"));
    }

    void storeThatMayOnlyBeReadIsReadWhereThatIsEnough() {
        QVERIFY(opened(true));
        QVERIFY(::chmod(path().toUtf8().constData(), 0644) == 0);
        QVERIFY(::chmod(m_directory->path().toUtf8().constData(), 0755) == 0);
        OpenOptions how;
        how.login = "looker";
        how.allowReadOnly = true;
        Status status;
        {
            const PlainUser user;
            QVERIFY(!open(path().toStdString(), how, &status)); // nobody keeps a log for it
            QCOMPARE(status.code, int(Failed));
        }
        const auto writer = opened();
        QVERIFY(writer->mayWrite());
        QVERIFY(Batch("MenuFileExt").insert("k").send(*writer).ok());
        {
            const PlainUser user;
            const auto reader = open(path().toStdString(), how, &status);
            QVERIFY2(reader, status.text.c_str());
            QVERIFY(!reader->mayWrite());
            QCOMPARE(dump(*reader, "MenuFileExt"), QString("k|-"));
            QVERIFY(!Batch("MenuFileExt").insert("other").send(*reader).ok());
            LogCursor cursor;
            QVERIFY(reader->logEnd(&cursor).ok());
            QVERIFY(Batch("MenuFileExt").insert("later").send(*writer).ok());
            std::vector<Change> changes;
            status = reader->readLog(cursor, 10, &changes);
            QVERIFY2(status.ok(), status.text.c_str());
            QCOMPARE(changes.size(), size_t(1));
            QCOMPARE(changes[0].key, std::string("later"));
        }
        QVERIFY(::chmod(m_directory->path().toUtf8().constData(), 0777) == 0);
    }

    void copyWithoutALogIsReadAndLeftAsItIs() {
        QVERIFY(Batch("MenuFileExt").insert("k").send(*opened(true)).ok());
        QCOMPARE(QProcess::execute("sqlite3", {"-batch", path(), "PRAGMA journal_mode = DELETE"}),
                 0);
        QVERIFY(::chmod(path().toUtf8().constData(), 0444) == 0);
        QVERIFY(::chmod(m_directory->path().toUtf8().constData(), 0777) == 0);
        const QStringList before = entries();
        OpenOptions how;
        how.login = "looker";
        how.allowReadOnly = true;
        Status status;
        const PlainUser user;
        const auto reader = open(path().toStdString(), how, &status);
        QVERIFY2(reader, status.text.c_str());
        QCOMPARE(dump(*reader, "MenuFileExt"), QString("k|-"));
        std::vector<Change> changes;
        for (int look = 0; look < 2; ++look) {
            status = reader->readLog(0, 10, &changes);
            QVERIFY2(status.ok(), status.text.c_str());
        }
        QCOMPARE(entries(), before);
    }

    void fileWithoutReadingRightIsRefused() {
        QVERIFY(opened(true));
        QVERIFY(::chmod(path().toUtf8().constData(), 0000) == 0);
        {
            const PlainUser user;
            REFUSED(path(), CannotConnect, false);
            REFUSED(path(), CannotConnect, true);
        }
        QVERIFY(::chmod(path().toUtf8().constData(), 0600) == 0);
        QVERIFY(opened());
    }

    /// What a statement changes goes into a file of its own when memory does not hold it any more.
    void aStatementOfManyPagesIsWritten() {
        const auto store = opened(true);
        QVERIFY(store);
        QVERIFY(Batch("MenuFileExt").insert("k").send(*store).ok());
        for (const int size : {50'000, 130'000, 270'000, 1'000'000, 100}) {
            const QString text(size, 'x');
            const Status status =
                Batch("MenuFileExt").update("k", {{"fileExt", text}}).send(*store);
            QVERIFY2(status.ok(), status.text.c_str());
            QCOMPARE(dump(*store, "MenuFileExt"), "k|" + text);
        }
    }

    void fullDiskLosesNothing() {
        QDir(m_directory->path()).mkdir("disk");
        const SmallDisk disk(m_directory->filePath("disk"));
        if (!disk.mounted())
            QSKIP("needs the right to mount a file system");
        const QString file = m_directory->filePath("disk/orvo.db");
        Status status;
        auto store = openPath(file, &status, true);
        QVERIFY2(store, status.text.c_str());
        fillUp(*store, "не осталось места");
        QCOMPARE(shell(file, "PRAGMA integrity_check"), QString("ok"));
    }

    void limitOfFileSizeLosesNothing() {
        auto store = opened(true);
        QVERIFY(store);
        {
            const FileLimit limit(1 << 20);
            fillUp(*store, "не осталось места");
        }
        const QString before = dump(*store, "MenuFileExt", {"KeyLink"});
        QVERIFY(Batch("MenuFileExt").insert("z").send(*store).ok());
        store.reset();
        QCOMPARE(dump(*opened(), "MenuFileExt", {"KeyLink"}), before + "\nz");
        QCOMPARE(shell(path(), "PRAGMA integrity_check"), QString("ok"));
    }

    void storeCannotBeMadeOnAFullDisk() {
        {
            const FileLimit limit(8192);
            REFUSED(path(), Failed, true);
        }
        QVERIFY(entries().isEmpty());
        QVERIFY(opened(true));
    }

    void damagedPagesAreReported() {
        {
            const auto store = opened(true);
            Batch batch("MenuFileExt");
            for (int i = 0; i < 2000; ++i)
                batch.insert(QByteArray::number(100000 + i).constData(),
                             {{"fileExt", "расширение"}});
            QVERIFY(batch.send(*store).ok());
            std::vector<std::string> damages = {"old"};
            QVERIFY(store->integrity(&damages).ok());
            QVERIFY(damages.empty());
        }
        const int root =
            shell(path(), "SELECT rootpage FROM sqlite_schema WHERE name = 'MenuFileExt'").toInt();
        QVERIFY(root > 1);
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.seek(qint64(root - 1) * 4096);
        file.write(QByteArray(2000, '\xAB'));
        file.close();

        const auto store = opened();
        QVERIFY(store);
        CMDArray array;
        const Status status = store->fetch("MenuFileExt", array.array);
        QCOMPARE(status.code, int(Failed));
        for (const char* word :
             {"повреждён (таблица MenuFileExt: ", "ничего не удаляйте", ".recover"})
            QVERIFY2(status.text.find(word) != std::string::npos, status.text.c_str());
        QCOMPARE(int(array.array->fieldCount), 0);
        QCOMPARE(array.array->keyCount, 0u);
        std::vector<std::string> damages;
        QVERIFY(store->integrity(&damages).ok());
        QVERIFY(!damages.empty());
        for (const std::string& damage : damages)
            QVERIFY(!damage.empty() && damage.find('\n') == std::string::npos);
        // The rest is still at hand.
        CMDArray rest;
        QVERIFY(store->fetch("Menu", rest.array).ok());
    }

    void damagedHeaderIsNoStore() {
        QVERIFY(opened(true));
        QByteArray bytes = bytesOf(path());
        bytes[0] = 'X';
        QVERIFY(writeFile(path(), bytes));
        REFUSED(path(), NotAStore, false);
        REFUSED(path(), NotAStore, true);
        QCOMPARE(bytesOf(path()), bytes);
    }

    void cutOffFileIsReported() {
        QVERIFY(opened(true));
        const QByteArray bytes = bytesOf(path());
        for (const int length : {100, 1000, 4096, 8192, int(bytes.size()) - 4096}) {
            QVERIFY(writeFile(path(), bytes.left(length)));
            Status status;
            const auto store = openPath(path(), &status);
            if (store) { // the part that is gone was not needed to open it
                std::vector<std::string> damages;
                QVERIFY(store->integrity(&damages).ok());
                QVERIFY(!damages.empty());
            } else {
                QVERIFY(!status.text.empty());
                QVERIFY(status.code == Failed || status.code == NotAStore);
            }
        }
    }

    void killedWriterLeavesAllOrNothing() {
        QVERIFY(opened(true));
        for (int round = 0; round < 5; ++round) {
            QProcess writer;
            writer.start(QCoreApplication::applicationFilePath(), {"--pairs", path()});
            QVERIFY(writer.waitForReadyRead()); // it has begun
            QTest::qWait(20 + 30 * round);
            writer.kill();
            QVERIFY(writer.waitForFinished());
        }
        const auto store = opened();
        QVERIFY(store);
        CMDArray array;
        QVERIFY(store->fetch("MenuFileExt", array.array).ok());
        QVERIFY(array.array->recordCount > 0);
        QCOMPARE(array.array->recordCount % 2, 0u);
        int64_t position = 0;
        QVERIFY(store->logPosition(&position).ok());
        QCOMPARE(position, int64_t(array.array->recordCount));
        QCOMPARE(shell(path(), "SELECT count(*) FROM NciWriter WHERE login = ''"), QString("1"));
        QCOMPARE(shell(path(), "PRAGMA integrity_check"), QString("ok"));
    }

    void lookingAtTheFileDropsNoLocks() {
        // Another process that closes the store as the last one deletes its journal. It must see
        // that this process has the store open, also after this process has looked at the file once
        // more.
        const auto store = opened(true);
        QVERIFY(store);
        QVERIFY(Batch("MenuFileExt").insert("k").send(*store).ok());
        QVERIFY(opened());
        QCOMPARE(shell(path(), "SELECT count(*) FROM MenuFileExt"), QString("1"));
        QVERIFY(QFile::exists(path() + "-wal"));
        QVERIFY(Batch("MenuFileExt").insert("l").send(*store).ok());
        QCOMPARE(shell(path(), "SELECT count(*) FROM MenuFileExt"), QString("2"));
    }

private:
    QString path() const { return m_directory->filePath("orvo.db"); }
    std::unique_ptr<Store> openPath(const QString& file, Status* status,
                                    bool create = false) const {
        return orvo::store::open(file.toStdString(), {"tester", create}, status);
    }
    /// Opens, or fails the test with the reason.
    std::unique_ptr<Store> opened(bool create = false) const {
        Status status;
        auto store = openPath(path(), &status, create);
        if (!store)
            QTest::qFail(status.text.c_str(), __FILE__, __LINE__);
        return store;
    }
    QStringList entries() const {
        return QDir(m_directory->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    std::unique_ptr<QTemporaryDir> m_directory;
};

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    Status status;
    if (argc == 4 && qstrcmp(argv[1], "--make") == 0) {
        const auto store = orvo::store::open(argv[2], {"maker", true}, &status);
        if (store)
            status = Batch("MenuFileExt").insert(argv[3]).send(*store);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return status.ok() ? 0 : 1;
    }
    if (argc == 3 && qstrcmp(argv[1], "--pairs") == 0) { // until killed
        const auto store = orvo::store::open(argv[2], {"pairs", false}, &status);
        for (int i = 0; store && status.ok(); ++i) {
            const QByteArray key =
                QByteArray::number(application.applicationPid()) + "." + QByteArray::number(i);
            status = Batch("MenuFileExt")
                         .insert((key + "a").constData())
                         .insert((key + "b").constData())
                         .send(*store);
            if (i == 0) {
                puts("begun");
                fflush(stdout);
            }
        }
        return 1;
    }
    TestSqliteFile test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sqlite_file.moc"
