// A store whose files are removed, moved, replaced or overwritten while it is open: it says so,
// writes nothing into what is left, and opens what stands there then when it is asked to.
#include "Batch.h"
#include "SqliteFiles.h"
#include "StoreTest.h"

#include "platform/store/Maintenance.h"

#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

using namespace orvo::store;
using namespace orvo::store::test;

class TestSqlitePlace : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_store.reset();
        m_directory = std::make_unique<QTemporaryDir>();
        m_store = opened(path(), true);
        QVERIFY(m_store);
        ORVO_OK(Batch("MenuFileExt").insert("own").send(*m_store));
    }

    void lostFileIsToldAndNotWritten_data() {
        QTest::addColumn<QString>("words");
        QTest::newRow("removed") << "удалён или перемещён";
        QTest::newRow("moved") << "удалён или перемещён";
        QTest::newRow("replaced") << "другой файл";
        QTest::newRow("log removed") << "-wal";
        QTest::newRow("index removed") << "-shm";
        QTest::newRow("overwritten") << "переписан";
        QTest::newRow("overwritten by a later copy") << "переписан";
        QTest::newRow("overwritten by a later copy, vacuumed") << "переписан";
        QTest::newRow("overwritten by a copy, vacuumed") << "переписан";
    }

    void lostFileIsToldAndNotWritten() {
        QFETCH(QString, words);
        const QByteArray what = QTest::currentDataTag();
        int64_t position = 0;
        ORVO_OK(m_store->logPosition(&position));
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(position, 10, &changes));
        QCOMPARE(makeOther("other"), QString("0|0|0"));
        // Another name of the same file shows what is written into it.
        QCOMPARE(::link(path().toUtf8().constData(), path("seen").toUtf8().constData()), 0);
        if (what == "removed")
            QVERIFY(QFile::remove(path()));
        else if (what == "moved")
            QVERIFY(rename(path(), path("away.db")));
        else if (what == "replaced")
            QVERIFY(rename(path("other.db"), path()));
        else if (what == "log removed")
            QVERIFY(QFile::remove(path() + "-wal"));
        else if (what == "index removed")
            QVERIFY(QFile::remove(path() + "-shm"));
        else if (what.contains("copy"))
            QVERIFY(overwriteByCopy(what.contains("later"), what.contains("vacuumed")));
        else
            QVERIFY(writeFile(path(), QByteArray(20 * 4096, 'x')));
        const QByteArray before = bytesOf(path("seen")), log = bytesOf(path() + "-wal");

        QVERIFY(m_store->changed()); // the slow poll finds it
        for (int i = 0; i < 2; ++i) {
            const Status read = m_store->readLog(position, 10, &changes);
            QCOMPARE(read.code, int(ConnectionBroken));
            QVERIFY2(QString::fromStdString(read.text).contains(words), read.text.c_str());
            const Status status = Batch("MenuFileExt").insert("lost").send(*m_store);
            QCOMPARE(status.code, int(ConnectionBroken));
            QVERIFY2(QString::fromStdString(status.text).contains(words), status.text.c_str());
        }
        QVERIFY(bytesOf(path("seen")) == before);
        QVERIFY(bytesOf(path() + "-wal") == log);
        m_store.reset(); // nor does closing write into what is not its own
        if (what != "log removed" && what != "index removed")
            QVERIFY(bytesOf(path("seen")) == before);
        if (what == "replaced")
            QCOMPARE(shell(path(), "PRAGMA integrity_check"), QString("ok"));
    }

    void fileThatComesBackIsWrittenAgain() {
        QVERIFY(rename(path(), path("away.db")));
        QCOMPARE(Batch("MenuFileExt").insert("lost").send(*m_store).code, int(ConnectionBroken));
        QCOMPARE(m_store->reopen().code, int(CannotConnect));
        QVERIFY(rename(path("away.db"), path()));
        ORVO_OK(Batch("MenuFileExt").insert("later").send(*m_store));
        ORVO_OK(m_store->reopen());
        QCOMPARE(dump(*m_store, "MenuFileExt", {"KeyLink"}), QString("later\nown"));
        m_store.reset();
        QCOMPARE(dump(*opened(path()), "MenuFileExt", {"KeyLink"}), QString("later\nown"));
    }

    void otherStoreInThePlaceIsOpenedOnRequest() {
        QCOMPARE(makeOther("other"), QString("0|0|0"));
        QVERIFY(rename(path("other.db"), path()));
        QCOMPARE(Batch("MenuFileExt").insert("lost").send(*m_store).code, int(ConnectionBroken));
        ORVO_OK(m_store->reopen());
        QCOMPARE(dump(*m_store, "MenuFileExt", {"KeyLink"}), QString("other"));
        ORVO_OK(Batch("MenuFileExt").insert("z").send(*m_store));
        int64_t position = 0;
        ORVO_OK(m_store->logPosition(&position));
        QCOMPARE(position, int64_t(2));
        m_store->takeWake(); // others' writes wake it in the new place too
        ORVO_OK(Batch("MenuFileExt").insert("zz").send(*opened(path())));
        QVERIFY(m_store->changed());
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(position, 10, &changes));
        QCOMPARE(changes.size(), size_t(1));
        m_store.reset();
        QCOMPARE(dump(*opened(path()), "MenuFileExt", {"KeyLink"}), QString("other\nz\nzz"));
        QCOMPARE(shell(path(), "PRAGMA integrity_check"), QString("ok"));
    }

    void logOfTheFormerFileIsKeptAndNotMixedIn() {
        // Two clients had the former file open; each opens the new one when its user asks for it.
        const auto second = opened(path());
        QCOMPARE(makeOther("other"), QString("0|0|0"));
        const QByteArray log = bytesOf(path() + "-wal");
        QVERIFY(log.size() > 4096);
        QVERIFY(rename(path("other.db"), path()));
        ORVO_OK(m_store->reopen());
        ORVO_OK(Batch("MenuFileExt").insert("first").send(*m_store));
        QCOMPARE(Batch("MenuFileExt").insert("lost").send(*second).code, int(ConnectionBroken));
        ORVO_OK(second->reopen());
        ORVO_OK(Batch("MenuFileExt").insert("second").send(*second));
        QCOMPARE(dump(*m_store, "MenuFileExt", {"KeyLink"}), QString("first\nother\nsecond"));
        const QStringList kept =
            QDir(m_directory->path()).entryList({"orvo.db-wal.old-*"}, QDir::Files);
        QCOMPARE(kept.size(), 1);
        QVERIFY(bytesOf(m_directory->filePath(kept[0])) == log);
        QCOMPARE(shell(path(), "PRAGMA integrity_check"), QString("ok"));
    }

    void noStoreInThePlaceIsRefusedAndLeftAlone() {
        QVERIFY(writeFile(path("letter"), "Это письмо.\n"));
        QVERIFY(rename(path("letter"), path()));
        QCOMPARE(m_store->reopen().code, int(NotAStore));
        QCOMPARE(Batch("MenuFileExt").insert("lost").send(*m_store).code, int(ConnectionBroken));
        QCOMPARE(bytesOf(path()), QByteArray("Это письмо.\n"));
    }

    void removedLogIsSavedIntoTheFile() {
        QVERIFY(QFile::remove(path() + "-wal"));
        QCOMPARE(Batch("MenuFileExt").insert("lost").send(*m_store).code, int(ConnectionBroken));
        QCOMPARE(m_store->reopen().code, int(ConnectionBroken));
        m_store.reset();
        // What was in the removed log only is in the file.
        QCOMPARE(dump(*opened(path()), "MenuFileExt", {"KeyLink"}), QString("own"));
        ORVO_OK(Batch("MenuFileExt").insert("later").send(*opened(path())));
        QCOMPARE(dump(*opened(path()), "MenuFileExt", {"KeyLink"}), QString("later\nown"));
        QCOMPARE(shell(path(), "PRAGMA integrity_check"), QString("ok"));
    }

    void overwrittenFileIsLeftAlone() {
        // The mistake of one who copies a backup over a store in use: it may not become worse.
        // By other processes: to open and close the file here would drop the store's own locks.
        QCOMPARE(QProcess::execute("cp", {path(), path("earlier")}), 0);
        for (int i = 0; i < 5; ++i)
            ORVO_OK(Batch("MenuFileExt").insert(QByteArray::number(i).constData()).send(*m_store));
        QCOMPARE(shell(path(), "PRAGMA wal_checkpoint(FULL)").section('|', 0, 0), QString("0"));
        ORVO_OK(Batch("MenuFileExt").insert("seen").send(*m_store));
        const QByteArray earlier = bytesOf(path("earlier"));
        QCOMPARE(QProcess::execute("cp", {path("earlier"), path()}), 0);
        QCOMPARE(Batch("MenuFileExt").insert("lost").send(*m_store).code, int(ConnectionBroken));
        QCOMPARE(m_store->reopen().code, int(ConnectionBroken));
        m_store.reset();
        QVERIFY(bytesOf(path()) == earlier);
    }

    void restoringIsNoReplacement() {
        QCOMPARE(makeOther("other"), QString("0|0|0"));
        {
            Status status;
            const auto restorer = openMaintained(path().toStdString(), {"admin", false}, &status);
            QVERIFY2(restorer, status.text.c_str());
            ORVO_OK(restorer->restore(path("other.db").toStdString(), {}));
        }
        QCOMPARE(shell(path(), "PRAGMA wal_checkpoint(FULL)").section('|', 0, 0), QString("0"));
        ORVO_OK(Batch("MenuFileExt").insert("z").send(*m_store));
        QCOMPARE(dump(*m_store, "MenuFileExt", {"KeyLink"}), QString("other\nz"));
    }

    void othersCheckpointsAreNoReplacement() {
        const QString filler(3000, 'x');
        for (int round = 0; round < 20; ++round) {
            const auto other = opened(path());
            Batch batch("MenuFileExt");
            for (int i = 0; i < 50; ++i)
                batch.insert((QByteArray::number(round) + "." + QByteArray::number(i)).constData(),
                             {{"fileExt", filler}});
            ORVO_OK(batch.send(*other));
            if (round % 2 == 0)
                shell(path(), round % 4 == 0 ? "PRAGMA wal_checkpoint(TRUNCATE)" : "VACUUM");
            ORVO_OK(
                Batch("MenuFileExt").insert(QByteArray::number(round).constData()).send(*m_store));
        }
    }

    void checkpointsAtAnyMomentAreNoReplacement() {
        const auto reader = opened(path());
        // One carries over after every commit, one waits for all readers, one empties the log.
        QProcess others[3];
        const char* const work[] = {"PRAGMA wal_autocheckpoint = 1;",
                                    "PRAGMA wal_checkpoint(RESTART);",
                                    "PRAGMA wal_checkpoint(TRUNCATE);"};
        for (int i = 0; i < 3; ++i) {
            others[i].setStandardOutputFile(QProcess::nullDevice());
            others[i].setStandardErrorFile(QProcess::nullDevice());
            others[i].start("sqlite3", {path()});
            others[i].write(".timeout 5000\n");
        }
        int statements = 0;
        const auto busy = [&others] {
            return std::any_of(std::begin(others), std::end(others), [](const QProcess& other) {
                return other.state() != QProcess::NotRunning;
            });
        };
        // The others are given work until this store has written often enough beside them.
        for (int writes = 0; writes < 40 || busy(); ++writes) {
            for (int i = 0; i < 3 && writes < 40; ++i)
                for (int j = 0; j < 10; ++j, ++statements)
                    others[i].write(QByteArray(work[i]) + "INSERT INTO \"MenuFileExt\" VALUES ('o" +
                                    QByteArray::number(statements) + "', hex(randomblob(" +
                                    QByteArray::number(j % 7 * 2000) + ")));\n");
            if (writes == 40)
                for (QProcess& other : others)
                    other.closeWriteChannel();
            QCoreApplication::processEvents();
            const Status status =
                Batch("MenuFileExt")
                    .insert(QByteArray::number(writes).constData(), {{"fileExt", "x"}})
                    .send(*m_store);
            QVERIFY2(status.ok() || status.code == Timeout,
                     status.text.c_str()); // three are in the way
            reader->changed();
            std::vector<Change> changes;
            ORVO_OK(reader->readLog(0, 1, &changes));
        }
    }

    void touchedFileIsNoReplacement() {
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(QProcess::execute("touch", {"-d", "yesterday", path()}), 0);
            ORVO_OK(Batch("MenuFileExt").insert(QByteArray::number(i).constData()).send(*m_store));
            if (i == 1)
                QCOMPARE(shell(path(), "PRAGMA wal_checkpoint(FULL)").section('|', 0, 0),
                         QString("0"));
        }
    }

    void checkpointThatFailsHalfWayIsNoReplacement() {
        m_store.reset();
        QVERIFY(QDir(m_directory->path()).mkdir("disk"));
        const SmallDisk disk(path("disk"), "size=8m");
        if (!disk.mounted())
            QSKIP("a file system of its own needs the right to mount one");
        const QString place = path("disk/orvo.db");
        m_store = opened(place, true);
        for (int round = 0; round < 6; ++round) {
            Batch batch("MenuFileExt");
            for (int i = 0; i < 80; ++i)
                batch.insert(QByteArray::number(100 * round + i).constData(),
                             {{"fileExt", QString(3000, 'x')}});
            ORVO_OK(batch.send(*m_store));
            // Nothing is left for the file to grow into.
            QCOMPARE(
                QProcess::execute("sh", {"-c", "cat /dev/zero >" + path("disk/full") + " 2>&-"}),
                1);
            QVERIFY(shell(place, "PRAGMA wal_checkpoint(FULL)").contains("full"));
            m_store->changed();
            QVERIFY(QFile::remove(path("disk/full")));
            ORVO_OK(Batch("MenuFileExt")
                        .insert((QByteArray::number(round) + ".").constData())
                        .send(*m_store));
            if (round % 3 == 2)
                shell(place, "PRAGMA wal_checkpoint(TRUNCATE)");
        }
        m_store.reset();
    }

    void fileThatIsSoundWithItsLogAloneIsNoReplacement() {
        Batch batch("MenuFileExt");
        for (int i = 0; i < 200; ++i) // the file grows, so that its first page is in the log
            batch.insert(QByteArray::number(i).constData(), {{"fileExt", QString(300, 'x')}});
        ORVO_OK(batch.send(*m_store));
        QCOMPARE(QProcess::execute("cp", {path(), path("copy.db")}), 0);
        QCOMPARE(QProcess::execute("cp", {path("orvo.db-wal"), path("copy.db-wal")}), 0);
        QByteArray bytes = bytesOf(path("copy.db"));
        bytes[15] = 1; // in the name of the format
        QVERIFY(writeFile(path("copy.db"), bytes));
        const auto copy = opened(path("copy.db"));
        QVERIFY(copy);
        ORVO_OK(Batch("MenuFileExt").insert("one more").send(*copy));
        copy->changed();
        ORVO_OK(Batch("MenuFileExt").insert("and another").send(*copy));
    }

private:
    QString path(const char* name = "orvo.db") const { return m_directory->filePath(name); }
    std::unique_ptr<Store> opened(const QString& place, bool create = false) const {
        Status status;
        auto store = orvo::store::open(place.toStdString(), {"t", create}, &status);
        if (!store)
            QTest::qFail(status.text.c_str(), __FILE__, __LINE__);
        return store;
    }
    /// Another store, as a whole in one file.
    QString makeOther(const char* key) const {
        const auto other = opened(path("other.db"), true);
        if (!Batch("MenuFileExt").insert(key).send(*other).ok())
            return "not written";
        return shell(path("other.db"), "PRAGMA wal_checkpoint(TRUNCATE)");
    }
    /// Of the store as it is, with later records in it or none. By other processes: to open and
    /// close the file here would drop the store's own locks.
    bool overwriteByCopy(bool later, bool vacuumed) const {
        shell(path(), ".backup '" + path("copy.db") + "'");
        for (int i = 0; later && i < 6; ++i)
            if (!Batch("MenuFileExt")
                     .insert(QByteArray("later") + QByteArray::number(i))
                     .send(*opened(path("copy.db")))
                     .ok())
                return false;
        return (!vacuumed || shell(path("copy.db"), "VACUUM").isEmpty()) &&
               shell(path("copy.db"), "PRAGMA wal_checkpoint(TRUNCATE)") == "0|0|0" &&
               QProcess::execute("cp", {path("copy.db"), path()}) == 0;
    }
    bool rename(const QString& from, const QString& to) const {
        return std::rename(from.toUtf8().constData(), to.toUtf8().constData()) == 0;
    }
    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<Store> m_store; ///< with one record
};

QTEST_GUILESS_MAIN(TestSqlitePlace)
#include "tst_sqlite_place.moc"
