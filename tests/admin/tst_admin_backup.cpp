// Backups, the way back, and what an interruption leaves: nothing.
#include "AdminTest.h"

#include <csignal>

class TestAdminBackup : public AdminTest {
    Q_OBJECT
public:
    using AdminTest::AdminTest;

private slots:
    void whatOthersKeepInTheDatabaseIsLeftAlone() {
        if (!isPostgres())
            QSKIP("a file holds nothing else");
        ORVO_DONE(run({"demo"}));
        QVERIFY(m_kind.byHand(
            "SELECT lo_create(0); CREATE SCHEMA another; CREATE TABLE another.kept (a int);"
            "INSERT INTO another.kept VALUES (7); CREATE TABLE public.\"Odd \"\"name\" (a int);"
            "CREATE FOREIGN DATA WRAPPER w; CREATE SERVER s FOREIGN DATA WRAPPER w;"
            "CREATE FOREIGN TABLE public.far (a int) SERVER s;"
            "CREATE FOREIGN TABLE another.far (a int) SERVER s;"
            "CREATE VIEW public.seen AS SELECT * FROM another.kept;"
            "CREATE FUNCTION public.mine() RETURNS int LANGUAGE sql AS 'SELECT 1';"));
        const QByteArray before = content();
        ORVO_DONE(run({"backup", m_admin->path("own")}));
        ORVO_DONE(run({"ext", "add", ".later"}));
        ORVO_DONE(run({"restore", "--replace", m_admin->path("own")}));
        QCOMPARE(content(), before);
        QByteArray words;
        QVERIFY(
            m_kind.byHand("SELECT a, public.mine() FROM another.kept, "
                          "(SELECT 1 FROM pg_largeobject_metadata) l, (SELECT FROM public.seen) s;",
                          &words));
        QCOMPARE(words, QByteArray("7|1"));
        QCOMPARE(run({"check"}).code, 0);
    }

    void aBackupBringsEverythingBack() {
        ORVO_DONE(run({"demo"}));
        const QByteArray before = content();
        const QStringList log = run({"history", "--json"}).lines();
        ORVO_DONE(run({"backup", file()}));
        ORVO_DONE(run({"user", "add", "later_b"}));
        ORVO_DONE(run({"restore", "--replace", file()}));
        QCOMPARE(content(), before);
        QCOMPARE(run({"history", "--json"}).lines(), log);
        QCOMPARE(run({"check"}).code, 0);

        // Into a fresh store of the kind too, as after a loss.
        QVERIFY(QFile::copy(file(), m_admin->path("kept")));
        QVERIFY(m_kind.renew());
        ORVO_DONE(run({"init"}));
        ORVO_DONE(run({"restore", m_admin->path("kept")}));
        QCOMPARE(content(), before);
        QCOMPARE(run({"history", "--json"}).lines(), log);
        ORVO_DONE(run({"user", "add", "after_b"}));
        QCOMPARE(run({"check"}).code, 0);
    }

    void aBackupIsOneMomentWhileOthersWrite() {
        ORVO_DONE(run({"demo", "--scale", "2000"}));
        // Two tables that are always changed together.
        const auto process = start({"backup", file()});
        QVERIFY(process);
        int written = 0;
        while (process->state() != QProcess::NotRunning || written == 0) {
            const QByteArray mark = QByteArray::number(++written);
            QVERIFY(m_kind.byHand("BEGIN; UPDATE \"MenuFolder\" SET \"caption\" = '" + mark +
                                  "'; UPDATE \"Users\" SET \"lastName\" = '" + mark +
                                  "'; COMMIT;"));
            process->waitForFinished(0);
        }
        QCOMPARE(process->exitCode(), 0);
        ORVO_DONE(run({"restore", "--replace", file()}));
        QByteArray captions, names;
        const auto ask = [&](const char* sql, QByteArray* into) {
            QVERIFY(m_kind.byHand(sql, into));
            *into = into->trimmed();
        };
        ask("SELECT min(\"caption\") FROM \"MenuFolder\";", &captions);
        ask("SELECT min(\"lastName\") FROM \"Users\";", &names);
        // As the demonstration left both, or both of one transaction.
        QVERIFY(!captions.isEmpty() && !names.isEmpty());
        bool number = false;
        captions.toInt(&number);
        if (number)
            QCOMPARE(names, captions);
    }

    void aStoreInUseNeedsReplace() {
        ORVO_DONE(run({"backup", file()}));
        ORVO_DONE(run({"restore", file()})); // nothing but the starting folders
        ORVO_DONE(run({"ext", "add", ".ui"}));
        const QByteArray before = content();
        ORVO_REFUSED(run({"restore", file()}), "не пустое");
        QCOMPARE(content(), before);
    }

    void readersNoticeARestore() {
        ORVO_DONE(run({"backup", file()}));
        ORVO_DONE(run({"ext", "add", ".ui"}));
        const auto reader = open();
        int64_t position = 0;
        QVERIFY(reader->logPosition(&position).ok());
        ORVO_DONE(run({"restore", "--replace", file()}));
        QVERIFY(reader->changed());
        // Wherever a reader stood, in this life of the store or before.
        std::vector<orvo::store::Change> changes;
        for (int64_t cursor = 0; cursor <= position; ++cursor)
            QCOMPARE(reader->readLog(cursor, 10, &changes).code, int(orvo::store::LogPruned));
        QVERIFY(reader->logPosition(&position).ok());
        ORVO_DONE(run({"ext", "add", ".txt"}));
        QVERIFY(reader->readLog(position, 10, &changes).ok());
        QCOMPARE(changes.size(), size_t(1));
        QVERIFY(changes[0].id > position);
    }

    void changesGoOnAfterARestore() {
        const auto writer = open();
        ORVO_DONE(run({"backup", file()}));
        ORVO_DONE(run({"restore", file()}));
        // A client that had the store open all the time.
        orvo::store::User user{"after_b", "А", "Б", "В"};
        const orvo::store::Status status = writer->userAdd(user);
        QVERIFY2(status.ok(), status.text.c_str());
        QCOMPARE(run({"user", "list"}).out, QString("after_b\tА Б В\tчеловек\n"));
        if (isPostgres())
            QVERIFY(m_kind.byHand("DROP ROLE IF EXISTS after_b, later_b;"));
    }

    void aBackupFileIsComplete() {
        ORVO_DONE(run({"demo"}));
        m_admin->write("copy", "old");
        ORVO_DONE(run({"backup", file()}));
        QCOMPARE(QDir(m_admin->path()).entryList(QDir::Files),
                 (QStringList{"copy", "copy.sha256"}));
        QCOMPARE(QFileInfo(file()).permissions() & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
        if (isPostgres())
            return;
        // It can be used as it is.
        const QByteArray before = content();
        const AdminResult direct = m_admin->plain({"--store", file(), "export", "-"});
        QCOMPARE(direct.code, 0);
        QCOMPARE(direct.out.toUtf8(), before);
    }

    void aBackupComesWithItsChecksum() {
        const auto verified = [&] {
            QProcess sum;
            sum.setWorkingDirectory(m_admin->path());
            sum.start("sha256sum", {"-c", "copy.sha256"});
            return sum.waitForFinished() && sum.exitCode() == 0;
        };
        ORVO_DONE(run({"backup", file()}));
        QVERIFY(verified());
        ORVO_DONE(run({"ext", "add", ".later"}));
        ORVO_DONE(run({"backup", file()})); // in the place of both
        QVERIFY(verified());
        const AdminResult restored = run({"restore", "--replace", file()});
        QCOMPARE(restored.code, 0);
        QVERIFY2(!restored.out.contains("контрольной суммы"), qPrintable(restored.out));
    }

    void aBackupUnlikeItsChecksumIsRefused() {
        ORVO_DONE(run({"demo"}));
        const QByteArray before = content();
        ORVO_DONE(run({"backup", file()}));
        // One letter of a text: what no check of the content could find.
        QByteArray bytes = AdminRun::read(file());
        const int at = isPostgres() ? bytes.size() - 2000 : bytes.indexOf("icons");
        QVERIFY(at > 0);
        bytes[at] = bytes[at] == 'I' ? 'i' : 'I';
        m_admin->write("copy", bytes);
        ORVO_REFUSED(run({"restore", "--replace", file()}), "контрольная сумма не та");
        QCOMPARE(content(), before);
        ORVO_DONE(run({"backup", m_admin->path("other")}));
        m_admin->write("other.sha256", "no sum");
        ORVO_REFUSED(run({"restore", "--replace", m_admin->path("other")}),
                     "контрольная сумма не та");
        QCOMPARE(content(), before);
    }

    void aBackupWithoutChecksumIsTakenWithAWord() {
        ORVO_DONE(run({"demo"}));
        const QByteArray before = content();
        ORVO_DONE(run({"backup", file()}));
        ORVO_DONE(run({"ext", "add", ".later"}));
        QVERIFY(QFile::remove(file() + ".sha256"));
        const AdminResult restored = run({"restore", "--replace", file()});
        QVERIFY2(restored.code == 0, qPrintable(restored.err));
        QVERIFY2(restored.out.contains("контрольной суммы рядом с копией нет"),
                 qPrintable(restored.out));
        QCOMPARE(content(), before);
    }

    void aBackupWithoutChecksumMustBeAsTheProgramMakesIt_data() {
        QTest::addColumn<QByteArray>("change");
        const auto add = [&](const char* name, const char* sqlite, const char* postgres) {
            if (*(isPostgres() ? postgres : sqlite))
                QTest::newRow(name) << QByteArray(isPostgres() ? postgres : sqlite);
        };
        add("content without its resource",
            "INSERT INTO \"MenuResourceFile\" VALUES ('k', 'x', 'f', 0, 3, x'616263');",
            "INSERT INTO \"MenuResourceFile\" VALUES ('k', 'x', 'f', 0, 0);");
        add("trigger gone", "DROP TRIGGER \"Users.updated\";", "");
        add("trigger changed",
            "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql = replace(sql, '602', "
            "'603') "
            "WHERE name = 'Users.updated';",
            "");
        add("index gone", "DROP INDEX \"Menu.parent\";", "");
        add("impossible change", "UPDATE \"NciEvent\" SET \"code\" = 604;",
            "UPDATE \"NciEvent\" SET \"code\" = 604;");
        add("nothing pruned", "DELETE FROM \"NciPruned\";", "DELETE FROM \"NciPruned\";");
        add("counter behind", "UPDATE sqlite_sequence SET seq = 1;", "");
    }

    void aBackupWithoutChecksumMustBeAsTheProgramMakesIt() {
        QFETCH(QByteArray, change);
        ORVO_DONE(run({"ext", "add", ".ui"}));
        const QByteArray before = content();
        ORVO_DONE(run({"backup", m_admin->path("own")}));
        QVERIFY(m_kind.byHand(change));
        QVERIFY(copy());
        ORVO_DONE(run({"restore", "--replace", m_admin->path("own")}));
        ORVO_REFUSED(run({"restore", "--replace", file()}), "изменена: ");
        QCOMPARE(content(), before);
    }

    void aChecksumVouchesForWhatWasInTheStore() {
        // What somebody did by hand must not cost him his backup.
        QVERIFY(m_kind.byHand(
            isPostgres()
                ? "INSERT INTO \"MenuResourceFile\" VALUES ('k', 'x', 'f', 0, 0);"
                : "INSERT INTO \"MenuResourceFile\" VALUES ('k', 'x', 'f', 0, 3, x'616263'); "
                  "DROP INDEX \"Menu.parent\";"));
        const QByteArray before = content();
        ORVO_DONE(run({"backup", file()}));
        QVERIFY(m_kind.renew());
        ORVO_DONE(run({"init"}));
        ORVO_DONE(run({"restore", "--replace", file()}));
        QCOMPARE(content(), before);
    }

    void whatIsNoBackupChangesNothing() {
        ORVO_DONE(run({"ext", "add", ".ui"}));
        const QByteArray before = content();
        ORVO_DONE(run({"backup", m_admin->path("own")}));
        ORVO_REFUSED(run({"restore", "--replace", m_admin->path("none")}),
                     "нет, или он не читается");
        ORVO_REFUSED(run({"restore", "--replace", m_admin->path()}), "нет, или он не читается");
        for (const char* bytes : {"", "text", "PGDMP", "SQLite format 3"})
            ORVO_REFUSED(run({"restore", "--replace", m_admin->write("bad", bytes)}),
                         "Резервная копия");
        // A backup of the other kind of store.
        if (m_other.name() != m_kind.name()) {
            QVERIFY(m_other.renew());
            ORVO_DONE(runOn(m_other, {"backup", file()}));
            ORVO_REFUSED(run({"restore", "--replace", file()}), "Резервная копия");
        }
        if (!isPostgres()) {
            const QString self = QString::fromStdString(m_kind.url()).mid(9);
            ORVO_REFUSED(run({"restore", "--replace", self}), "сам файл хранилища");
            ORVO_REFUSED(run({"backup", m_admin->path()}), "это каталог");
        }
        QCOMPARE(content(), before);
    }

    void aBackupOrAnExportOntoTheStoreItselfIsRefused() {
        if (isPostgres())
            QSKIP("a file of its own is what a store in an SQLite file has");
        ORVO_DONE(run({"ext", "add", ".ui"}));
        const QString own = QString::fromStdString(m_kind.url()).mid(9);
        const QFileInfo place(own);
        const QString link = m_admin->path("link");
        QVERIFY(QFile::link(own, link));
        // What writes all the time: the file and its journals are in use.
        const auto writer = open();
        QVERIFY(writer->userAdd({"anna", "А", "Б", "В"}).ok());
        QVERIFY(QFileInfo::exists(own + "-wal"));
        ORVO_DONE(run({"put", "file", m_admin->write(place.fileName(), "text")}));
        const QByteArray before = content();
        for (const QString& file : {own, own + "-wal", own + "-shm", own + "-journal", link,
                                    place.path() + "/./" + place.fileName()})
            for (const char* verb : {"export", "backup"})
                ORVO_REFUSED(run({verb, file}), "сам файл хранилища");
        // Nor does a stored file of that name come out over it.
        ORVO_REFUSED(run({"get", "file", place.fileName(), place.path()}), "сам файл хранилища");
        ORVO_DONE(run({"get", "file", place.fileName(), m_admin->path()}));
        QVERIFY(!QFileInfo::exists(own + "-journal"));
        QCOMPARE(content(), before);
        QVERIFY(writer->userAdd({"boris", "А", "Б", "В"}).ok());
        QCOMPARE(run({"user", "list"}).lines().size(), 2);
    }

    void aDamagedBackupChangesNothing() {
        ORVO_DONE(run({"demo"}));
        const QByteArray before = content();
        ORVO_DONE(run({"backup", file()}));
        const QByteArray good = AdminRun::read(file());
        for (int part = 1; part < 8; ++part) {
            m_admin->write("cut", good.left(good.size() * part / 8));
            const AdminResult result = run({"restore", "--replace", m_admin->path("cut")});
            QVERIFY2(result.code == 2, qPrintable(QString::number(part) + result.out));
            QVERIFY2(result.err.count('\n') == 1, qPrintable(result.err));
        }
        QCOMPARE(content(), before);
    }

    void aBackupWithoutATableChangesNothing_data() {
        QTest::addColumn<QByteArray>("damage");
        QTest::newRow("a table") << QByteArray("DROP TABLE \"MenuFileExt\"");
        QTest::newRow("contents") << QByteArray("DROP TABLE \"MenuResourceFile\"");
        QTest::newRow("the log") << QByteArray("DROP TABLE \"NciEvent\"");
        QTest::newRow("what is pruned") << QByteArray("DROP TABLE \"NciPruned\"");
        QTest::newRow("a field") << QByteArray(
            "ALTER TABLE \"Users\" RENAME COLUMN \"midlName\" TO "
            "\"other\"");
    }

    void aBackupWithoutATableChangesNothing() {
        QFETCH(QByteArray, damage);
        // The store loses it, and its backup is made by other means.
        const bool cascade = isPostgres() && damage.startsWith("DROP");
        QVERIFY(m_kind.byHand(damage + (cascade ? " CASCADE;" : ";")));
        QVERIFY(copy());
        QVERIFY(m_kind.renew());
        ORVO_DONE(run({"init"}));
        ORVO_DONE(run({"ext", "add", ".ui"}));
        const QByteArray before = content();
        const AdminResult refused = run({"restore", "--replace", file()});
        QVERIFY2(refused.code == 2, qPrintable(refused.out + refused.err));
        QVERIFY2(refused.err.count('\n') == 1, qPrintable(refused.err));
        QCOMPARE(content(), before);
        ORVO_DONE(run({"ext", "add", ".later"}));
    }

    void aBackupOfAnEarlierVersionBringsItsContent() {
        for (const int version : {1, 2}) {
            QVERIFY(m_kind.renewAsOf(version));
            QFile::remove(file());
            QVERIFY(copy());
            const QByteArray before = content();
            QVERIFY(before.contains("Щит ГЩУ"));
            QVERIFY(m_kind.renew());
            ORVO_DONE(run({"init"}));
            ORVO_DONE(run({"restore", file()}));
            QCOMPARE(content(), before);
            ORVO_DONE(run({"put", "file", "--path", "Файлы", m_admin->write("new.png", "bytes")}));
            ORVO_DONE(run({"get", "file", "--path", "Файлы", "new.png", m_admin->path()}));
        }
    }

    void aNewerBackupIsRefused() {
        ORVO_DONE(run({"backup", m_admin->path("own")}));
        QVERIFY(m_kind.byHand(isPostgres() ? "UPDATE \"NciStore\" SET \"version\" = 99;"
                                           : "PRAGMA user_version = 99;"));
        QVERIFY(copy()); // the command opens no such store
        QVERIFY(m_kind.renew());
        ORVO_REFUSED(run({"restore", file()}),
                     "более новой версией программы (версия 99, известна ");
        QCOMPARE(run({"check"}).code, 1); // as renewed: no folders
    }

    void anInterruptedBackupLeavesNoFile() {
        std::unique_ptr<QProcess> lock;
        if (isPostgres())
            QVERIFY((lock = this->lock("MenuResourceFileData")));
        else // something that takes its time
            QVERIFY(m_kind.byHand(
                "INSERT INTO \"MenuResourceFile\" VALUES ('k', 'x', 'f', 0, 200000000, "
                "zeroblob(200000000));"));
        QByteArray words;
        const auto process = start({"backup", file()});
        QVERIFY(process);
        QTRY_VERIFY(!QDir(m_admin->path()).entryList({"copy.new-*"}, QDir::Files).isEmpty());
        QVERIFY2(interrupt(*process, &words), words);
        QVERIFY(QDir(m_admin->path()).entryList(QDir::Files).isEmpty());
        if (lock)
            end(*lock);
    }

    void anInterruptedExportLeavesNoFile() {
        QVERIFY(m_kind.byHand(
            isPostgres() ? "INSERT INTO \"MenuFileExt\" SELECT i, repeat('x', 5000) FROM "
                           "generate_series(1, 60000) i;"
                         : "INSERT INTO \"MenuFileExt\" WITH RECURSIVE n(i) AS (SELECT 1 UNION "
                           "ALL SELECT i + 1 FROM n WHERE i < 60000) SELECT i, "
                           "printf('%05000d', i) FROM n;"));
        QByteArray words;
        const auto process = start({"export", file()});
        QVERIFY(process);
        const auto size = [&] {
            const auto found = QDir(m_admin->path()).entryInfoList({"copy.new-*"}, QDir::Files);
            return found.isEmpty() ? 0 : found[0].size();
        };
        QTRY_VERIFY_WITH_TIMEOUT(size() > 0, 60000);
        QVERIFY2(interrupt(*process, &words), words);
        QVERIFY(QDir(m_admin->path()).entryList(QDir::Files).isEmpty());
    }

    void anInterruptedRestoreChangesNothing() {
        if (!isPostgres())
            QVERIFY(m_kind.byHand(
                "INSERT INTO \"MenuResourceFile\" VALUES ('k', 'x', 'f', 0, 200000000, "
                "zeroblob(200000000));"));
        ORVO_DONE(run({"backup", file()}));
        if (!isPostgres())
            QVERIFY(m_kind.byHand("DELETE FROM \"MenuResourceFile\";"));
        ORVO_DONE(run({"ext", "add", ".ui"}));
        const QByteArray before = content();
        std::unique_ptr<QProcess> lock;
        if (isPostgres())
            QVERIFY((lock = this->lock("MenuResourceFileData")));
        const auto process = start({"restore", "--replace", file()});
        QVERIFY(process);
        if (isPostgres()) {
            QTRY_VERIFY_WITH_TIMEOUT(somebodyWaits(), 20000);
        } else {
            const QString journal = QString::fromStdString(m_kind.url()).mid(9) + "-wal";
            QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(journal).size() > 8 << 20, 60000);
        }
        QByteArray words;
        QVERIFY2(interrupt(*process, &words), words);
        if (lock)
            end(*lock);
        QCOMPARE(content(), before);
        QCOMPARE(run({"history", "--limit", "1"}).lines().value(1),
                 QString("    Расширение: «.ui»"));
    }

    void anInterruptedImportChangesNothing() {
        ORVO_DONE(run({"demo"}));
        const QByteArray before = content();
        const auto process = start({"import", "--replace", "-"});
        QVERIFY(process);
        // In the middle of the records, and nothing more comes: the end is not waited for.
        process->write(before.left(before.size() / 3));
        QVERIFY(process->waitForBytesWritten());
        QTest::qWait(500);
        QByteArray words;
        QVERIFY2(interrupt(*process, &words), words);
        QTRY_COMPARE(content(), before);
        ORVO_DONE(run({"ext", "add", ".later"}));
    }

    void aKilledImportChangesNothing() {
        ORVO_DONE(run({"demo"}));
        const QByteArray before = content();
        const auto process = start({"import", "--replace", "-"});
        QVERIFY(process);
        process->write(before.left(before.size() - 100));
        QVERIFY(process->waitForBytesWritten());
        QTest::qWait(500);
        end(*process);
        QTRY_COMPARE(content(), before);
    }

private:
    QString file() const { return m_admin->path("copy"); }
    /// A process of the command, started on the store.
    std::unique_ptr<QProcess> start(const QStringList& arguments) const {
        auto process = std::make_unique<QProcess>();
        process->start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin",
                       onStore(m_kind, arguments));
        return process->waitForStarted() ? std::move(process) : nullptr;
    }
    /// Ends it as Ctrl-C does; whether it ended as it should.
    static bool interrupt(QProcess& process, QByteArray* words) {
        ::kill(static_cast<pid_t>(process.processId()), SIGINT);
        const bool ended = process.waitForFinished(20000);
        *words = process.readAllStandardError();
        return ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 130 &&
               words->count('\n') == 1 && words->contains("прервано");
    }
    /// A session of PostgreSQL that holds a lock until it is killed.
    std::unique_ptr<QProcess> lock(const QByteArray& table) const {
        auto shell = std::make_unique<QProcess>();
        shell->start("psql", {"-X", "-q", "-d", QString::fromStdString(m_kind.url()), "-f", "-"});
        shell->write("BEGIN; LOCK TABLE \"" + table +
                     "\" IN ACCESS EXCLUSIVE MODE; \\echo locked\n");
        return shell->waitForReadyRead(20000) ? std::move(shell) : nullptr;
    }
    /// Whether a session waits for such a lock.
    bool somebodyWaits() const {
        QByteArray count;
        return m_kind.byHand("SELECT count(*) FROM pg_locks WHERE NOT granted;", &count) &&
               count.trimmed().toInt() > 0;
    }
    /// A backup of the store as it is, made by other means than the command.
    bool copy() const {
        QFile::remove(file()); // SQLite's own copy takes no file's place
        if (!isPostgres())
            return m_kind.byHand("VACUUM INTO '" + file().toUtf8() + "';");
        QProcess dump;
        dump.start("pg_dump", {"-Fc", "-f", file(), "-d", QString::fromStdString(m_kind.url())});
        return dump.waitForFinished() && dump.exitCode() == 0;
    }
    static void end(QProcess& process) {
        process.kill();
        process.waitForFinished();
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestAdminBackup>(argc, argv);
}
#include "tst_admin_backup.moc"
