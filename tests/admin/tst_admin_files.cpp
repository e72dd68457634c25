// Forms and files into the store and out of it.
#include "AdminRun.h"

#include <QtTest>

#include <sys/stat.h>

class TestAdminFiles : public QObject {
    Q_OBJECT

private slots:
    void aFormComesBackAsItWent() {
        const AdminRun admin;
        QVERIFY(admin.init());
        const QByteArray bytes = QByteArray("<ui>\0\xff", 6).repeated(1000);
        const AdminResult put = admin.run({"put", "form", admin.write("src/a.ui", bytes),
                                           admin.write("src/a.ui.txt", ""), //
                                           admin.write("src/a.ui.схема", "x")});
        QVERIFY2(put.code == 0, qPrintable(put.err));
        QVERIFY(put.out.contains("файлов: 3"));
        QCOMPARE(folderOf(admin, "a.ui"), QString("формы отображения"));

        QDir(admin.path()).mkdir("dst");
        const AdminResult get = admin.run({"get", "form", "a.ui", admin.path("dst")});
        QVERIFY2(get.code == 0, qPrintable(get.err));
        QCOMPARE(get.lines().size(), 3);
        QCOMPARE(AdminRun::read(admin.path("dst/a.ui")), bytes);
        QCOMPARE(AdminRun::read(admin.path("dst/a.ui.схема")), QByteArray("x"));
        QVERIFY(QFileInfo(admin.path("dst/a.ui.txt")).exists());
        QCOMPARE(QFileInfo(admin.path("dst/a.ui.txt")).size(), 0);
        // Nothing but the files: no temporary one is left.
        QCOMPARE(QDir(admin.path("dst"))
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                     .size(),
                 3);
    }

    void theHandleGivesTheFormItsName() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin
                     .run({"put", "form", admin.write("src/b", "1"), admin.write("src/b.ui", "2"),
                           admin.write("src/b_", "3")})
                     .code,
                 0);
        QCOMPARE(admin.sql("select name_ from MenuResource"), QString("b_"));
    }

    void aFormThatAnotherHoldsIsNotReplaced() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QVERIFY(admin.run({"user", "add", "petrov", "--last", "Петров"}).code == 0);
        QCOMPARE(admin.run({"put", "form", admin.write("src/a.ui", "first")}).code, 0);
        QCOMPARE(admin.run({"lock", "a.ui", "--login", "petrov"}).code, 0);
        const QString second = admin.write("src/a.ui", "second");
        const AdminResult held = admin.run({"put", "form", second});
        QVERIFY2(held.refused("форма не загружена: «a.ui» занята (Петров"), qPrintable(held.err));
        QVERIFY2(held.err.contains("orvo-admin unlock a.ui"), qPrintable(held.err));
        QDir(admin.path()).mkdir("dst");
        QCOMPARE(admin.run({"get", "form", "a.ui", admin.path("dst")}).code, 0);
        QCOMPARE(AdminRun::read(admin.path("dst/a.ui")), QByteArray("first"));
        QCOMPARE(admin.run({"unlock", "a.ui"}).code, 0);
        QCOMPARE(admin.run({"put", "form", second}).code, 0);
    }

    void aFormGoesIntoTheFolderOfThePath() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin
                     .run({"put", "form", "--make-folders", "--path", "Станции/КС-1",
                           admin.write("src/a.ui", "1")})
                     .code,
                 0);
        QCOMPARE(folderOf(admin, "a.ui"), QString("КС-1"));
        QCOMPARE(admin.run({"list", "forms"}).out, QString("Станции/КС-1/a.ui\ta.ui\t\n"));
        QCOMPARE(admin.run({"check"}).code, 0);
    }

    void aMissingFolderIsMadeOnlyIfAskedFor() {
        const AdminRun admin;
        QVERIFY(admin.init());
        const QString file = admin.write("src/a.txt", "1");
        QVERIFY(admin.run({"put", "file", "--path", "Документы", file}).refused("--make-folders"));
        QVERIFY(admin.run({"put", "form", "--path", "Документы", file}).refused("--make-folders"));
        QCOMPARE(admin.count("MenuResourceFolder"), 4);
        QCOMPARE(admin.count("MenuResource"), 0);
        for (int i = 0; i < 2; ++i)
            QCOMPARE(
                admin.run({"put", "file", "--make-folders", "--path", "Документы/2024", file}).code,
                0);
        QCOMPARE(admin.count("MenuResourceFolder"), 6);
        QCOMPARE(admin.count("MenuResource"), 1);
        QCOMPARE(admin.run({"check"}).code, 0);
    }

    void filesComeBackWithBytesAndTime() {
        const AdminRun admin;
        QVERIFY(admin.init());
        const QString source = admin.write("src/значок №1.png", "\x89PNG");
        QFile file(source);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QDateTime time = QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC);
        QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
        file.close();
        QCOMPARE(admin.run({"put", "file", "--path", "icons", source}).code, 0);
        QCOMPARE(admin.run({"list", "files"}).out,
                 QString("icons/значок №1.png\t4\t2023-11-14T22:13:20Z\n"));
        QDir(admin.path()).mkdir("dst");
        QCOMPARE(
            admin.run({"get", "file", "--path", "icons", "значок №1.png", admin.path("dst")}).code,
            0);
        QCOMPARE(AdminRun::read(admin.path("dst/значок №1.png")), QByteArray("\x89PNG"));
        QCOMPARE(QFileInfo(admin.path("dst/значок №1.png")).lastModified().toUTC(), time);
    }

    void aFileIsReplacedInItsFolder() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin
                     .run({"put", "file", admin.write("one/a.txt", "old"),
                           admin.write("one/b.txt", "stays")})
                     .code,
                 0);
        QCOMPARE(admin.run({"put", "file", admin.write("two/a.txt", "new")}).code, 0);
        QCOMPARE(admin.count("MenuResource"), 2);
        QCOMPARE(admin.run({"get", "file", "a.txt", admin.path()}).code, 0);
        QCOMPARE(AdminRun::read(admin.path("a.txt")), QByteArray("new"));
    }

    void badPathsAreRefused_data() {
        QTest::addColumn<QString>("path");
        for (const char* bad :
             {"/", "a//b", "/a", "a/", "..", "a/../b", ".", "a\\b", "a\nb", "ж/山"})
            QTest::newRow(bad) << QString(bad);
    }

    void badPathsAreRefused() {
        QFETCH(QString, path);
        const AdminRun admin;
        QVERIFY(admin.init());
        const QString file = admin.write("src/a.txt", "1");
        for (const char* kind : {"form", "file"}) {
            const AdminResult result =
                admin.run({"put", kind, "--make-folders", "--path", path, file});
            QCOMPARE(result.code, 2);
            QVERIFY2(result.out.isEmpty() && result.err.count('\n') == 1, qPrintable(result.err));
        }
        QCOMPARE(admin.count("MenuResourceFolder"), 4);
        QCOMPARE(admin.count("MenuResource"), 0);
    }

    void aFileThatCannotBeReadStopsTheWholePut() {
        const AdminRun admin;
        QVERIFY(admin.init());
        const QString good = admin.write("src/a.txt", "1");
        QVERIFY(admin.run({"put", "file", good, admin.path("src/none")}).refused("его нет"));
        QVERIFY(admin.run({"put", "file", good, admin.path("src")}).refused("это каталог"));
        QVERIFY(admin.run({"put", "file", good, ""}).refused("его нет"));
        const QString pipe = admin.path("pipe");
        QCOMPARE(mkfifo(pipe.toUtf8().constData(), 0600), 0);
        QVERIFY(admin.run({"put", "form", good, pipe}).refused("это не обычный файл"));
        const QString secret = admin.write("src/secret", "1");
        QFile::setPermissions(secret, {});
        if (geteuid() != 0) // to root no file is closed
            QVERIFY(admin.run({"put", "file", good, secret}).refused("не прочитан"));
        QCOMPARE(admin.count("MenuResource"), 0);
    }

    void aNameGivenTwiceIsRefused() {
        const AdminRun admin;
        QVERIFY(admin.init());
        const AdminResult result = admin.run(
            {"put", "file", admin.write("one/a.txt", "1"), admin.write("two/a.txt", "2")});
        QVERIFY(result.refused("дано дважды"));
        QCOMPARE(admin.count("MenuResource"), 0);
    }

    void aNameOutsideTheCodePageIsRefused() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QVERIFY(admin.run({"put", "file", admin.write("src/山.txt", "1")}).refused("Windows-1251"));
        QVERIFY(
            admin.run({"put", "file", admin.write("src/a\nb", "1")}).refused("не принимает такое"));
        QCOMPARE(admin.count("MenuResource"), 0);
    }

    void getWritesNothingOutsideTheDirectory() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin
                     .run({"put", "form", admin.write("src/a.ui", "1"),
                           admin.write("src/a.ui.txt", "2")})
                     .code,
                 0);
        QDir(admin.path()).mkpath("dst/inner");
        for (const char* evil : {"../evil", "/evil", "..", "sub/evil"}) {
            admin.sql(
                QString("update MenuResourceFile set name_ = '%1' where name_ not like '%.ui'")
                    .arg(evil));
            admin.run({"get", "form", "a.ui", admin.path("dst/inner")});
            QVERIFY(!QFile::exists(admin.path("dst/evil")));
            QVERIFY(!QFile::exists("/evil"));
            QCOMPARE(QDir(admin.path("dst")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                     QStringList{"inner"});
            QVERIFY(!QDir(admin.path("dst/inner/sub")).exists());
        }
        QVERIFY(admin.run({"get", "file", "../a.ui", admin.path("dst/inner")}).code == 2);
    }

    void getReplacesALinkInsteadOfFollowingIt() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"put", "file", admin.write("src/a.txt", "new")}).code, 0);
        const QString precious = admin.write("precious", "mine");
        QDir(admin.path()).mkdir("dst");
        QVERIFY(QFile::link(precious, admin.path("dst/a.txt")));
        QCOMPARE(admin.run({"get", "file", "a.txt", admin.path("dst")}).code, 0);
        QCOMPARE(AdminRun::read(precious), QByteArray("mine"));
        QCOMPARE(AdminRun::read(admin.path("dst/a.txt")), QByteArray("new"));
        QVERIFY(!QFileInfo(admin.path("dst/a.txt")).isSymLink());
    }

    void getNeedsADirectory() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"put", "form", admin.write("src/a.ui", "1")}).code, 0);
        QVERIFY(admin.run({"get", "form", "a.ui", admin.path("none")}).refused("нет"));
        QVERIFY(admin.run({"get", "form", "a.ui", admin.path("src/a.ui")}).refused("не каталог"));
        QVERIFY(admin.run({"get", "form", "a.ui", ""}).refused("нет"));
        QDir(admin.path()).mkpath("dst/a.ui"); // a directory where the file is to be
        QVERIFY(admin.run({"get", "form", "a.ui", admin.path("dst")}).refused("не записан"));
        QCOMPARE(QDir(admin.path("dst"))
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{"a.ui"});
    }

    void whatIsNotThereIsSaid() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QVERIFY(admin.run({"get", "form", "a.ui", admin.path()}).refused("формы «a.ui» нет"));
        QVERIFY(admin.run({"get", "file", "a.txt", admin.path()}).refused("файла «a.txt» нет"));
        QVERIFY(admin.run({"get", "file", "--path", "x/y", "a.txt", admin.path()})
                    .refused("файла «x/y/a.txt» нет"));
        QVERIFY(admin.run({"list", "forms", "--path", "x"}).refused("папки «x» нет"));
        QVERIFY(admin.run({"list", "files", "--path", "x"}).refused("папки «x» нет"));
    }

    void listShowsOneFolderAndWhatIsBelow() {
        const AdminRun admin;
        QVERIFY(admin.init());
        const auto put = [&](const QString& path, const QString& name) {
            return admin
                .run({"put", "file", "--make-folders", "--path", path,
                      admin.write("src/" + name, "1")})
                .code;
        };
        QCOMPARE(put("А", "1.txt"), 0);
        QCOMPARE(put("А/Б", "2.txt"), 0);
        QCOMPARE(put("АБ", "3.txt"), 0);
        const auto names = [&](const QStringList& more) {
            QStringList found;
            for (const QString& line : admin.run(QStringList{"list", "files"} + more).lines())
                found << line.section('\t', 0, 0);
            return found;
        };
        QCOMPARE(names({}), (QStringList{"А/1.txt", "А/Б/2.txt", "АБ/3.txt"}));
        QCOMPARE(names({"--path", "а"}), (QStringList{"А/1.txt", "А/Б/2.txt"}));
        QCOMPARE(names({"--path", "А/Б"}), QStringList{"А/Б/2.txt"});
    }

private:
    static QString folderOf(const AdminRun& admin, const QString& resource) {
        return admin.sql(QString("select f.caption from MenuResource r join MenuResourceFolder f "
                                 "on r.MenuResourceFolderKey = f.KeyLink where r.name_ = '%1'")
                             .arg(resource));
    }
};

QTEST_GUILESS_MAIN(TestAdminFiles)
#include "tst_admin_files.moc"
