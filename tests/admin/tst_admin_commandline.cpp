// The command line: help, version, and everything that makes no sense.
#include "AdminRun.h"
#include "tests/store/HostileUrls.h"

#include <QtTest>

namespace {
const char* const verbNames[] = {
    "init",     "demo",       "check",      "user add",   "user list", "user change", "user remove",
    "ext add",  "ext change", "ext remove", "ext list",   "lock",      "unlock",      "put form",
    "put file", "get form",   "get file",   "list forms", "list files"};
}

class TestAdminCommandLine : public QObject {
    Q_OBJECT

private slots:
    void helpNamesEveryVerb() {
        const AdminRun admin;
        const AdminResult help = admin.plain({"--help"});
        QCOMPARE(help.code, 0);
        QVERIFY(help.err.isEmpty());
        QVERIFY(help.out.startsWith("Вызов: orvo-admin [--store URL] ДЕЙСТВИЕ"));
        for (const char* verb : verbNames)
            QVERIFY2(help.out.contains(QStringLiteral("\n  %1 ").arg(verb)), verb);
    }

    void everyVerbHasItsHelp_data() {
        QTest::addColumn<QString>("verb");
        for (const char* verb : verbNames)
            QTest::newRow(verb) << QString(verb);
    }

    void everyVerbHasItsHelp() {
        QFETCH(QString, verb);
        const AdminRun admin;
        const AdminResult help = admin.plain(verb.split(' ') + QStringList("--help"));
        QCOMPARE(help.code, 0);
        QVERIFY(help.err.isEmpty());
        QVERIFY(help.out.startsWith("Вызов: orvo-admin [--store URL] " + verb));
        QVERIFY(help.out.contains("Ключи:"));
        QVERIFY2(!help.out.contains(QRegularExpression("[A-Za-z]{3,} [a-z]{3,} [a-z]{3,}")),
                 "an untranslated text");
    }

    void versionIsShown() {
        const AdminResult version = AdminRun().plain({"--version"});
        QCOMPARE(version.code, 0);
        QVERIFY(version.out.contains(QRegularExpression("^orvo-admin \\d+\\.\\d+\\.\\d+\n$")));
    }

    void nonsenseIsRefusedInOneLine_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("nothing") << QStringList{} << "не сказано, что делать";
        QTest::newRow("unknown verb") << QStringList{"explode"} << "неизвестное действие «explode»";
        QTest::newRow("verb with a slip") << QStringList{"chekc"} << "может быть, «check»?";
        QTest::newRow("option with a slip")
            << QStringList{"--sotre", "x", "check"} << "может быть, «--store»?";
        QTest::newRow("option of a verb with a slip")
            << QStringList{"user", "add", "a", "--fisrt", "b"} << "может быть, «--first»?";
        QTest::newRow("nothing alike is suggested")
            << QStringList{"explode"} << "«explode»; список: orvo-admin --help";
        QTest::newRow("empty verb") << QStringList{""} << "неизвестное действие «»";
        QTest::newRow("a verb with a line feed")
            << QStringList{"a\nb"} << "неизвестное действие «a b»";
        QTest::newRow("half a verb")
            << QStringList{"user"} << "бывает: add, change, remove, login, list";
        QTest::newRow("wrong second word") << QStringList{"put", "table"} << "бывает: form, file";
        QTest::newRow("unknown option")
            << QStringList{"--sotre", "x", "check"} << "неизвестный ключ «sotre»";
        QTest::newRow("unknown option of a verb")
            << QStringList{"check", "--fast"} << "check: неизвестный ключ «fast»";
        QTest::newRow("store without a value") << QStringList{"--store"} << "после «--store» нет";
        QTest::newRow("empty store") << QStringList{"--store", "", "check"} << "пуст";
        QTest::newRow("flag with a value")
            << QStringList{"check", "--all=yes"} << "не принимает значения";
        QTest::newRow("too few") << QStringList{"get", "form", "a"} << "не хватает аргументов";
        QTest::newRow("too many") << QStringList{"init", "now"} << "лишний аргумент «now»";
        QTest::newRow("put without files") << QStringList{"put", "file"} << "не хватает аргументов";
        QTest::newRow("scale without a number") << QStringList{"demo", "--scale"} << "нет значения";
        QTest::newRow("scale of a word")
            << QStringList{"demo", "--scale", "many"} << "«many» не число";
        QTest::newRow("scale too small")
            << QStringList{"demo", "--scale", "299"} << "«299» не число от";
        QTest::newRow("scale below zero")
            << QStringList{"demo", "--scale=-5"} << "«-5» не число от";
        QTest::newRow("scale too large")
            << QStringList{"demo", "--scale", "99999999999999999999"} << "не число от";
    }

    void nonsenseIsRefusedInOneLine() {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const AdminRun admin;
        const AdminResult result = admin.plain(arguments);
        QVERIFY2(result.refused(message), qPrintable(result.out + result.err));
        QVERIFY(QDir(admin.path()).isEmpty()); // and nothing was made
    }

    void theStoreMayStandBehindTheVerb() {
        const AdminRun admin;
        QCOMPARE(admin.plain({"init", "--store", admin.storePath()}).code, 0);
        QVERIFY(QFile::exists(admin.storePath()));
        QCOMPARE(admin.plain({"check", "--store=sqlite://" + admin.storePath()}).code, 0);
    }

    void withoutAStoreTheOneOfTheClientIsUsed() {
        const AdminRun admin;
        QCOMPARE(admin.plain({"init"}).code, 0);
        QVERIFY(QFile::exists(admin.path("orvo/orvo.db")));
    }

    void aMissingStoreIsNotMade() {
        const AdminRun admin;
        for (const QStringList& arguments :
             {QStringList{"check"}, QStringList{"demo"}, QStringList{"user", "list"},
              QStringList{"unlock", "a"}, QStringList{"list", "files"}}) {
            const AdminResult result = admin.run(arguments);
            QVERIFY2(result.refused("store.db"), qPrintable(result.err));
        }
        QVERIFY(QDir(admin.path()).isEmpty());
    }

    void whatIsNoStoreIsLeftAlone() {
        const AdminRun admin;
        const QByteArray text = QByteArray("no database at all\n").repeated(400);
        admin.write("store.db", text);
        for (const QStringList& arguments :
             {QStringList{"init"}, QStringList{"check"}, QStringList{"demo"}}) {
            const AdminResult result = admin.run(arguments);
            QVERIFY2(result.refused("store.db"), qPrintable(result.err));
        }
        QCOMPARE(AdminRun::read(admin.storePath()), text);
        const AdminResult folder = admin.plain({"--store", admin.path(), "check"});
        QCOMPARE(folder.code, 2);
        QCOMPARE(folder.err.count('\n'), 1);
    }

    void aPipeThatIsClosedIsAFailure() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QProcess shell;
        shell.start("/bin/sh", {"-c", QString("\"%1/orvo-admin\" --help >/dev/full")
                                          .arg(qEnvironmentVariable("ORVO_BIN_DIR"))});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 2);
        QVERIFY(QString::fromUtf8(shell.readAllStandardError()).contains("вывод не принят"));
    }

    void noPasswordOfAnAddressIsRepeated_data() {
        QTest::addColumn<QString>("url");
        for (const char* url : orvo::store::test::hostileUrls)
            QTest::newRow(url) << QString::fromUtf8(url);
    }

    void noPasswordOfAnAddressIsRepeated() {
        QFETCH(QString, url);
        const AdminRun admin;
        const QString old = QDir::currentPath();
        QVERIFY(QDir::setCurrent(admin.path()));
        // Where it belongs, and where somebody forgot "--store".
        for (const QStringList& words :
             {QStringList{"--store", url, "check"}, QStringList{"--store=" + url, "init"},
              QStringList{url, "check"}, QStringList{"check", url}, QStringList{"restore", url},
              QStringList{"check", "--store" + url}, QStringList{"user", url}}) {
            const AdminResult result = admin.plain(words);
            QCOMPARE(result.code, 2);
            QVERIFY(!result.err.isEmpty());
            for (const char* part : orvo::store::test::secretParts)
                QVERIFY2(!(result.out + result.err).contains(part), qPrintable(result.err));
        }
        QVERIFY(QDir::setCurrent(old));
        QVERIFY2(QDir(admin.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).isEmpty(),
                 qPrintable(QDir(admin.path()).entryList().join(' ')));
    }
};

QTEST_GUILESS_MAIN(TestAdminCommandLine)
#include "tst_admin_commandline.moc"
