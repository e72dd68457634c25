// A damaged file of an SQLite store: what the command says of it, and that the way out which the
// administrator's page gives saves what can be saved.
#include "AdminRun.h"

#include <QFile>
#include <QProcess>
#include <QtTest>

class TestAdminDamage : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_admin = std::make_unique<AdminRun>();
        QVERIFY(m_admin->init());
        QCOMPARE(m_admin->run({"demo"}).code, 0);
    }

    void aDamagedTableIsNamedWithTheWayOut() {
        damage("MenuResource");
        const AdminResult checked = m_admin->run({"check"});
        QCOMPARE(checked.code, 1);
        QVERIFY2(checked.lines().value(0).startsWith("ошибка: база данных: таблица MenuResource: "),
                 qPrintable(checked.out));
        const AdminResult listed = m_admin->run({"list", "forms"});
        QVERIFY2(listed.refused("повреждён (таблица MenuResource: "), qPrintable(listed.err));
        QVERIFY2(listed.refused("ничего не удаляйте"), qPrintable(listed.err));
        QVERIFY2(listed.refused(".recover"), qPrintable(listed.err));
        QCOMPARE(m_admin->run({"user", "list"}).code, 0); // another table
    }

    void aCutOffFileIsNamedWithTheWayOut() {
        m_admin->sql("PRAGMA wal_checkpoint(TRUNCATE)");
        QVERIFY(QFile::resize(m_admin->storePath(), 20 * 4096));
        for (const QStringList& words : {QStringList{"check"}, QStringList{"user", "list"}}) {
            const AdminResult result = m_admin->run(words);
            QVERIFY2(result.refused("файл обрезан: страниц 20 из "), qPrintable(result.err));
            QVERIFY2(result.refused("ничего не удаляйте"), qPrintable(result.err));
        }
    }

    void aDamagedFileAndItsLogStayAsTheyAre() {
        damage("MenuResource");
        const QString store = m_admin->storePath();
        // With a log, as a program leaves them that was killed.
        QProcess program;
        program.start("sqlite3", {"-batch", store});
        program.write("UPDATE \"Menu\" SET \"caption\" = 'later'; SELECT 'changed';\n");
        QVERIFY(program.waitForReadyRead());
        program.kill();
        QVERIFY(program.waitForFinished());
        const QByteArray file = AdminRun::read(store), log = AdminRun::read(store + "-wal");
        QVERIFY(!log.isEmpty());
        for (const QStringList& words : {QStringList{"check"}, QStringList{"list", "forms"}}) {
            const AdminResult result = m_admin->run(words);
            QVERIFY2(result.code != 0, qPrintable(result.out));
            QVERIFY(AdminRun::read(store) == file);
            QVERIFY(AdminRun::read(store + "-wal") == log);
        }
    }

    void theWayOutOfTheManualSavesTheRest() {
        const int elements = m_admin->count("Menu"), changes = m_admin->count("NciEvent");
        const int resources = m_admin->count("MenuResource");
        damage("MenuResource");
        QProcess shell;
        shell.setWorkingDirectory(m_admin->path());
        shell.start(
            "sh",
            {"-c", "cp -a store.db saved.db && "
                   "{ sqlite3 saved.db .dump | sed 's/^ROLLBACK;.*/COMMIT;/'; echo \"PRAGMA "
                   "application_id = 1332901487; PRAGMA user_version = $(sqlite3 saved.db 'PRAGMA "
                   "user_version');\"; } | sqlite3 whole.db"});
        QVERIFY(shell.waitForFinished());
        QVERIFY2(shell.exitCode() == 0, shell.readAllStandardError());
        QVERIFY(QFile::remove(m_admin->storePath()));
        QVERIFY(QFile::rename(m_admin->path("whole.db"), m_admin->storePath()));
        QCOMPARE(m_admin->count("Menu"), elements);
        QCOMPARE(m_admin->count("NciEvent"), changes);
        const int left = m_admin->count("MenuResource");
        QVERIFY2(left > resources / 2 && left < resources, qPrintable(QString::number(left)));
        // It is a store again: sound as a database, writable, with a log that goes on.
        QVERIFY(!m_admin->run({"check"}).out.contains("база данных"));
        QCOMPARE(m_admin->run({"ext", "add", ".later"}).code, 0);
        QCOMPARE(m_admin->count("NciEvent"), changes + 1);
    }

    void aStoreOverwrittenDuringAnImportTakesNothing() {
        // A later copy of the same store: what the import has read so far is in it too.
        m_admin->sql("VACUUM INTO '" + m_admin->path("later.db") + "'");
        for (int i = 0; i < 6; ++i)
            QCOMPARE(m_admin
                         ->plain({"--store", "sqlite://" + m_admin->path("later.db"), "ext", "add",
                                  ".later" + QString::number(i)})
                         .code,
                     0);
        m_admin->sql("PRAGMA wal_checkpoint(TRUNCATE)");
        QCOMPARE(QProcess::execute("sqlite3", {m_admin->path("later.db"), "VACUUM"}), 0);
        const QByteArray later = AdminRun::read(m_admin->path("later.db"));
        const QByteArray json = m_admin->run({"export", "-"}).out.toUtf8();

        QProcess import;
        import.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin",
                     {"--store", "sqlite://" + m_admin->storePath(), "import", "--replace", "-"});
        import.write(json.left(json.size() / 2));
        QVERIFY(import.waitForBytesWritten());
        // Once it is in its write, nobody else gets in.
        QTRY_COMPARE_WITH_TIMEOUT(
            QProcess::execute("sqlite3", {"-cmd", ".timeout 0", m_admin->storePath(),
                                          "BEGIN IMMEDIATE; ROLLBACK"}),
            5, 10000);
        QCOMPARE(QProcess::execute("cp", {m_admin->path("later.db"), m_admin->storePath()}), 0);
        import.write(json.mid(json.size() / 2));
        import.closeWriteChannel();
        QVERIFY(import.waitForFinished());
        const QByteArray words = import.readAllStandardError();
        QVERIFY2(import.exitCode() == 2, words);
        QVERIFY2(words.contains("переписан"), words);
        QVERIFY(AdminRun::read(m_admin->storePath()) == later);
    }

private:
    /// Overwrites a page of the table's own records.
    void damage(const QString& table) const {
        m_admin->sql("PRAGMA wal_checkpoint(TRUNCATE)");
        const int page =
            m_admin
                ->sql("SELECT max(pageno) FROM dbstat WHERE pagetype = 'leaf' AND name = '" +
                      table + "'")
                .toInt();
        QVERIFY(page > 1);
        QFile file(m_admin->storePath());
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.seek(qint64(page - 1) * 4096));
        QCOMPARE(file.write(QByteArray(3000, 'x')), 3000);
    }
    std::unique_ptr<AdminRun> m_admin;
};

QTEST_GUILESS_MAIN(TestAdminDamage)
#include "tst_admin_damage.moc"
