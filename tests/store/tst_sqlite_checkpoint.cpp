// A store whose log is being carried over into its file, or was when the writer died: the file
// itself says nothing then, only file and log together.
#include "Batch.h"
#include "SqliteFiles.h"
#include "StoreTest.h"

#include "platform/store/SqliteStore.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <algorithm>
#include <csignal>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

constexpr int pageSize = 4096;
constexpr int logHeader = 32, frameHeader = 24; ///< of SQLite's write-ahead log

/// ORVO_CHECKPOINT_TRIALS, or few.
int trials(int usual) {
    const int asked = qEnvironmentVariableIntValue("ORVO_CHECKPOINT_TRIALS");
    return asked > 0 ? asked : usual;
}

/// Leaves the file as a checkpoint does that ended after its first page: the header tells of pages
/// that the file does not have yet. They are in the log.
void writeFirstPageFromLog(const QString& path) {
    const QByteArray log = bytesOf(path + "-wal");
    QByteArray page;
    for (int at = logHeader; at + frameHeader + pageSize <= log.size();
         at += frameHeader + pageSize)
        if (qFromBigEndian<quint32>(log.constData() + at) == 1)
            page = log.mid(at + frameHeader, pageSize);
    QCOMPARE(page.size(), pageSize);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(qFromBigEndian<quint32>(page.constData() + 28) * pageSize > file.size());
    QCOMPARE(file.write(page), pageSize);
}

/// Whether the header tells of more pages than the file has.
bool isBehindItsLog(const QString& path) {
    QFile file(path);
    const QByteArray head = file.open(QIODevice::ReadOnly) ? file.read(100) : QByteArray();
    return head.size() == 100 &&
           qint64(qFromBigEndian<quint32>(head.constData() + 28)) * pageSize > file.size();
}

QByteArray content(int number) {
    const QByteArray word = QByteArray::number(number) + " ";
    return word.repeated(200000 + 700000 * (number % 5) / word.size());
}

/// Puts one file after the other until it fails or is killed; says the number of each that is in.
int upload(const char* path, int from) {
    Status status;
    const auto store = orvo::store::open(path, {"uploader", false}, &status);
    for (int i = from; store; ++i) {
        const QByteArray bytes = content(i);
        status = store->filePut(
            {{"", std::to_string(i), {bytes.constData(), static_cast<size_t>(bytes.size())}, {}}});
        if (!status.ok())
            break;
        printf("%d\n", i);
        fflush(stdout);
    }
    fprintf(stderr, "%s\n", status.text.c_str());
    return 1;
}

/// A process that does that.
class Uploader {
public:
    Uploader(const QString& path, int from) {
        m_process.start(QCoreApplication::applicationFilePath(),
                        {"--upload", path, QString::number(from)});
    }
    ~Uploader() { kill(); }
    Uploader(const Uploader&) = delete;
    Uploader& operator=(const Uploader&) = delete;

    void kill() {
        m_process.kill();
        m_process.waitForFinished();
    }
    bool waitForFirst() { return m_process.waitForReadyRead(20000); }
    bool waitForEnd() { return m_process.waitForFinished(120000); }
    bool running() const { return m_process.state() == QProcess::Running; }
    /// Number of the last file that it said was in; `none` if it said nothing.
    int last(int none) {
        m_said += m_process.readAllStandardOutput();
        const QList<QByteArray> lines = m_said.left(m_said.lastIndexOf('\n')).split('\n');
        return lines.last().isEmpty() ? none : lines.last().toInt();
    }
    QByteArray words() { return m_process.readAllStandardError(); }

private:
    QProcess m_process;
    QByteArray m_said;
};

} // namespace

class TestSqliteCheckpoint : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_directory = std::make_unique<QTemporaryDir>();
        QVERIFY(m_directory->isValid());
    }

    void fileBehindItsLogOpensWhole() {
        makeStoreBehindItsLog(path());
        writeFirstPageFromLog(path());
        holds(path(), 1);
    }

    void storeWithItsFirstPageInTheLogOnlyOpensWhole() {
        // Power failed while the first page was being written: the log has it still.
        makeStoreBehindItsLog(path());
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadWrite));
        QCOMPARE(file.write(QByteArray(512, '\xA5')), 512);
        file.close();
        holds(path(), 1);
    }

    void foreignDatabaseWithALogIsLeftAsItIs_data() {
        QTest::addColumn<bool>("inUse");
        QTest::newRow("left over") << false;
        QTest::newRow("in use") << true;
    }

    void foreignDatabaseWithALogIsLeftAsItIs() {
        QFETCH(bool, inUse);
        QProcess holder;
        holder.start("sqlite3", {"-batch", path("live.db")});
        holder.write("PRAGMA journal_mode = WAL; CREATE TABLE t (a); SELECT 'held';\n");
        QByteArray words;
        while (!words.contains("held") && holder.waitForReadyRead())
            words += holder.readAll();
        if (!inUse)
            for (const char* suffix : {"", "-wal"})
                QVERIFY(QFile::copy(path("live.db") + suffix, path() + suffix));
        const QString place = inUse ? path("live.db") : path();
        const QByteArray file = bytesOf(place), log = bytesOf(place + "-wal");
        const QStringList entries = QDir(m_directory->path()).entryList(QDir::Files);
        for (const bool create : {false, true}) {
            Status status;
            QVERIFY(!orvo::store::open(place.toStdString(), {"t", create}, &status));
            QVERIFY2(status.code == NotAStore, status.text.c_str());
        }
        QCOMPARE(bytesOf(place), file);
        QCOMPARE(bytesOf(place + "-wal"), log);
        QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files), entries);
        holder.closeWriteChannel();
        QVERIFY(holder.waitForFinished());
    }

    void storeOpensWhileAnotherProcessUploads() {
        int opened = 0;
        const int wanted = trials(12);
        while (opened < wanted) {
            // Anew now and then: a small file grows most.
            renew();
            Uploader uploader(path(), 1);
            QVERIFY(uploader.waitForFirst());
            QElapsedTimer clock;
            for (clock.start(); clock.elapsed() < 3000 && opened < wanted; ++opened) {
                Status status;
                const auto store = orvo::store::open(path().toStdString(), {"t", false}, &status);
                QVERIFY2(store, status.text.c_str());
            }
            QVERIFY2(uploader.running(), uploader.words());
        }
        qInfo("opened %d times while another process was uploading", opened);
    }

    void killedUploadsLeaveAllThatWasSaved() {
        const int wanted = trials(3);
        int saved = 0, behind = 0;
        for (int round = 0; round < wanted; ++round) {
            renew();
            Uploader uploader(path(), 1);
            QVERIFY(uploader.waitForFirst());
            QTest::qWait(QRandomGenerator::global()->bounded(2000));
            uploader.kill();
            const int last = uploader.last(0);
            behind += isBehindItsLog(path()) ? 1 : 0;
            holds(path(), last);
            if (QTest::currentTestFailed())
                return;
            saved += last;
        }
        qInfo("killed %d times, %d of them with the header before the file; %d files saved, all "
              "there",
              wanted, behind, saved);
    }

    void fullDiskLeavesAllThatWasSaved() {
        const int wanted = std::max(1, trials(2) / 10);
        int saved = 0, behind = 0;
        for (int round = 0; round < wanted; ++round) {
            QDir(m_directory->path()).mkdir("disk");
            // The file is full before its log is, or the other way round.
            const QByteArray size = "size=" + QByteArray::number(21000 + 3700 * (round % 7)) + "k";
            const SmallDisk disk(path("disk"), size.constData());
            if (!disk.mounted())
                QSKIP("needs the right to mount a file system");
            const QString place = path("disk/orvo.db");
            {
                Status status;
                QVERIFY2(orvo::store::open(place.toStdString(), {"t", true}, &status),
                         status.text.c_str());
            }
            Uploader uploader(place, 1);
            QVERIFY(uploader.waitForEnd());
            const QByteArray words = uploader.words();
            QVERIFY2(words.contains("не осталось места"), words);
            const int last = uploader.last(0);
            behind += isBehindItsLog(place) ? 1 : 0;
            // A full disk may refuse the opening, but is no damage.
            Status status;
            if (!orvo::store::open(place.toStdString(), {"t", false}, &status))
                QVERIFY2(status.text.find("не осталось места") != std::string::npos,
                         status.text.c_str());
            // On a disk with room again.
            for (const char* suffix : {"", "-wal"}) {
                QFile::remove(path() + suffix);
                if (QFile::exists(place + suffix))
                    QVERIFY(QFile::copy(place + suffix, path() + suffix));
            }
            holds(path(), last);
            if (QTest::currentTestFailed())
                return;
            saved += last;
        }
        qInfo(
            "%d full disks, %d of them with the header before the file; %d files saved, all there",
            wanted, behind, saved);
    }

private:
    QString path(const char* name = "orvo.db") const { return m_directory->filePath(name); }
    /// A store with a file that is in its log only, as nobody has it open.
    void makeStoreBehindItsLog(const QString& place) const {
        Status status;
        const auto store = orvo::store::open(path("live.db").toStdString(), {"t", true}, &status);
        QVERIFY2(store, status.text.c_str());
        const QByteArray bytes = content(1);
        ORVO_OK(store->filePut(
            {{"", "1", {bytes.constData(), static_cast<size_t>(bytes.size())}, {}}}));
        for (const char* suffix : {"", "-wal"})
            QVERIFY(QFile::copy(path("live.db") + suffix, place + suffix));
    }
    /// An empty store, whatever was there.
    void renew() const {
        for (const char* suffix : {"", "-wal", "-shm"})
            QFile::remove(path() + suffix);
        Status status;
        QVERIFY2(orvo::store::open(path().toStdString(), {"t", true}, &status),
                 status.text.c_str());
    }
    /// Whether the store at that place opens and holds the files up to `last`, and is sound.
    void holds(const QString& place, int last) const {
        Status status;
        const auto store = orvo::store::open(place.toStdString(), {"t", false}, &status);
        QVERIFY2(store, status.text.c_str());
        for (int i = 1; i <= last; ++i) {
            std::vector<StoredFile> files;
            ORVO_OK(store->fileGet("", std::to_string(i), i > last - 3, &files));
            QVERIFY2(files.size() == 1, qPrintable(QString::number(i)));
            if (i > last - 3)
                QVERIFY(QByteArray::fromStdString(files[0].bytes) == content(i));
        }
        std::vector<std::string> damages;
        ORVO_OK(store->integrity(&damages));
        QVERIFY2(damages.empty(), damages.empty() ? "" : damages[0].c_str());
    }
    std::unique_ptr<QTemporaryDir> m_directory;
};

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    if (argc == 4 && qstrcmp(argv[1], "--upload") == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        return upload(argv[2], QByteArray(argv[3]).toInt());
    }
    TestSqliteCheckpoint test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sqlite_checkpoint.moc"
