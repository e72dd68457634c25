// Making a store; users, extensions, locks.
#include "AdminRun.h"

#include <QtTest>

class TestAdminBasics : public QObject {
    Q_OBJECT

private slots:
    void initMakesTheFoldersThatTheEditorsExpect() {
        const AdminRun admin;
        const AdminResult result = admin.run({"init"});
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.startsWith("хранилище сделано: "));
        QVERIFY(result.err.isEmpty());
        QCOMPARE(
            admin.sql("select group_concat(type_ || '=' || caption, ';') from "
                      "(select * from MenuResourceFolder where ParentKey is null order by type_)"),
            QString("1=модули;2=функции;3=формы отображения;4=icons"));
        QCOMPARE(admin.run({"check"}).code, 0);
    }

    void initAgainChangesNothing() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"user", "add", "anna"}).code, 0);
        const int events = admin.count("NciEvent");
        const AdminResult again = admin.run({"init"});
        QCOMPARE(again.code, 0);
        QVERIFY(again.out.startsWith("хранилище уже есть: "));
        QCOMPARE(admin.count("NciEvent"), events);
        QCOMPARE(admin.count("Users"), 1);
    }

    void initGivesBackAMissingFolder() {
        const AdminRun admin;
        QVERIFY(admin.init());
        admin.sql("delete from MenuResourceFolder where type_ = 2");
        QCOMPARE(admin.run({"check"}).code, 1);
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"check"}).code, 0);
        QCOMPARE(admin.count("MenuResourceFolder"), 4);
    }

    void initRefusesAPlaceThatCannotBe() {
        const AdminRun admin;
        admin.write("file", "x");
        const AdminResult result = admin.plain({"--store", admin.path("file/store.db"), "init"});
        QVERIFY2(result.refused("хранилище не сделано"), qPrintable(result.err));
    }

    void aMistypedFolderIsNotMade() {
        const AdminRun admin;
        QVERIFY(QDir().mkpath(admin.path("stores")));
        for (const char* place : {"stroes/orvo.db", "stroes/deeper/orvo.db"}) {
            const AdminResult result = admin.plain({"--store", admin.path(place), "init"});
            QVERIFY2(result.refused("stroes» нет; может быть, «stores»?"), qPrintable(result.err));
        }
        QCOMPARE(QDir(admin.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{"stores"});
    }

    void anAddressMakesNoFolders() {
        const AdminRun admin;
        const QString url = "sqlite:" + admin.path("store.db");
        const AdminResult made = admin.plain({"--store", url, "init"});
        QVERIFY2(made.code == 0, qPrintable(made.err));
        QCOMPARE(QDir(admin.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{"store.db"});
        QVERIFY(admin.plain({"--store", "sqlite:" + admin.path("none/store.db"), "init"})
                    .refused("хранилище не сделано"));
        QVERIFY(!QFileInfo::exists(admin.path("none")));
        QCOMPARE(QDir(admin.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{"store.db"});
    }

    void usersAreAddedAndListed() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin
                     .run({"user", "add", "petrov", "--last", "Петров", "--first", "Пётр",
                           "--middle", "Петрович"})
                     .code,
                 0);
        QCOMPARE(admin.run({"user", "add", "collector", "--program"}).code, 0);
        const AdminResult list = admin.run({"user", "list"});
        QCOMPARE(list.code, 0);
        QStringList lines = list.lines();
        lines.sort();
        QCOMPARE(lines,
                 (QStringList{"collector\t\tпрограмма", "petrov\tПетров Пётр Петрович\tчеловек"}));
        QCOMPARE(admin.sql("select lastName from Users where login_ = 'petrov'"),
                 QString("Петров"));
    }

    void aLoginIsTakenOnce_data() {
        QTest::addColumn<QString>("login");
        QTest::newRow("the same") << "petrov";
        QTest::newRow("in capitals") << "PETROV";
    }

    void aLoginIsTakenOnce() {
        QFETCH(QString, login);
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"user", "add", "petrov"}).code, 0);
        QVERIFY(admin.run({"user", "add", login}).refused("уже есть"));
        QCOMPARE(admin.count("Users"), 1);
    }

    void badUsersAreRefused_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty login") << QStringList{""} << "пустое или с пробелом";
        QTest::newRow("login with a blank") << QStringList{"a b"} << "пустое или с пробелом";
        QTest::newRow("login with a line feed") << QStringList{"a\nb"} << "управляющий знак";
        QTest::newRow("outside the code page")
            << QStringList{"li", "--last", "李"} << "нет в кодировке Windows-1251";
    }

    void badUsersAreRefused() {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const AdminRun admin;
        QVERIFY(admin.init());
        const AdminResult result = admin.run(QStringList{"user", "add"} + arguments);
        QVERIFY2(result.refused(message), qPrintable(result.err));
        QCOMPARE(admin.count("Users"), 0);
    }

    void extensionsAreAddedOnce() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"ext", "add", ".ui"}).code, 0);
        QCOMPARE(admin.run({"ext", "add", "_"}).code, 0);
        QVERIFY(admin.run({"ext", "add", ".UI"}).refused("уже есть"));
        QStringList lines = admin.run({"ext", "list"}).lines();
        lines.sort();
        QCOMPARE(lines, (QStringList{".ui", "_"}));
    }

    void badExtensionsAreRefused_data() {
        QTest::addColumn<QString>("extension");
        for (const char* bad : {"", "*.ui", ".u i", ".ui;.txt", "a/b", ".ui)", "\x01"})
            QTest::newRow(bad) << QString(bad);
    }

    void badExtensionsAreRefused() {
        QFETCH(QString, extension);
        const AdminRun admin;
        QVERIFY(admin.init());
        QVERIFY(admin.run({"ext", "add", extension}).refused("расширение"));
        QCOMPARE(admin.count("MenuFileExt"), 0);
    }

    void aFormIsLockedAndUnlocked() {
        const AdminRun admin;
        QVERIFY(admin.init());
        addForm(admin, "scheme.ui");
        QCOMPARE(admin.run({"user", "add", "anna"}).code, 0);
        const double before = QDateTime::currentMSecsSinceEpoch() / 1000.0;
        const AdminResult lock = admin.run({"lock", "Scheme.UI", "--login", "ANNA"});
        QVERIFY2(lock.code == 0, qPrintable(lock.err));
        QCOMPARE(
            admin.sql("select login_ from Users join MenuResource on UsersKey = Users.KeyLink"),
            QString("anna"));
        const double time = admin.sql("select dateTimeEdit from MenuResource").toDouble();
        QVERIFY(time >= before - 1 && time <= before + 100);
        QCOMPARE(admin.run({"list", "forms"}).out, QString("scheme.ui\tscheme.ui\tanna\n"));

        QCOMPARE(admin.run({"unlock", "scheme.ui"}).code, 0);
        QCOMPARE(admin.sql("select count(*) from MenuResource where UsersKey is null "
                           "and dateTimeEdit is null"),
                 QString("1"));
        const AdminResult again = admin.run({"unlock", "scheme.ui"});
        QCOMPARE(again.code, 0);
        QVERIFY(again.out.contains("не была заблокирована"));
    }

    void aLockOfAnotherUserStays() {
        const AdminRun admin;
        QVERIFY(admin.init());
        addForm(admin, "scheme.ui");
        QCOMPARE(admin.run({"user", "add", "anna"}).code, 0);
        QCOMPARE(admin.run({"user", "add", "boris"}).code, 0);
        QCOMPARE(admin.run({"lock", "scheme.ui", "--login", "anna"}).code, 0);
        QVERIFY(admin.run({"lock", "scheme.ui", "--login", "boris"}).refused("её держит «anna»"));
        QCOMPARE(admin.run({"lock", "scheme.ui", "--login", "anna"}).code, 0);
    }

    void aLockOfAUserWhoIsGoneIsTaken() {
        const AdminRun admin;
        QVERIFY(admin.init());
        addForm(admin, "scheme.ui");
        QCOMPARE(admin.run({"user", "add", "anna"}).code, 0);
        admin.sql("update MenuResource set UsersKey = 'gone'");
        QCOMPARE(admin.run({"lock", "scheme.ui", "--login", "anna"}).code, 0);
        QCOMPARE(admin.run({"check"}).code, 0);
    }

    void lockingNeedsAFormAndAUser() {
        const AdminRun admin;
        QVERIFY(admin.init());
        addForm(admin, "scheme.ui");
        QVERIFY(admin.run({"lock", "scheme.ui"}).refused("не сказано, кем"));
        QVERIFY(admin.run({"lock", "scheme.ui", "--login", "anna"}).refused("«anna» нет"));
        QVERIFY(admin.run({"lock", "other.ui", "--login", "anna"}).refused("формы «other.ui» нет"));
        QVERIFY(admin.run({"unlock", "other.ui"}).refused("формы «other.ui» нет"));
    }

    void changesReachTheChangeLog() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"user", "add", "anna"}).code, 0);
        QCOMPARE(admin.sql("select code || ' ' || tableName || ' ' || login from NciEvent "
                           "order by id desc limit 1"),
                 QString("601 Users admin"));
    }

    void aTerminalGetsNoControlCharacters() {
        const AdminRun admin;
        QVERIFY(admin.init());
        // Of both blocks: the second is as good as an escape character to a terminal.
        admin.sql(
            "insert into MenuFolder values ('k', null, 'a' || char(155) || '31mb' || char(27) "
            "|| 'c' || char(133) || char(127) || 'd' || char(160), '1000', 1)");
        admin.sql(
            "insert into MenuFileExt values ('e', 'a' || char(155) || '31mb' || char(27) || 'c' "
            "|| char(160))");
        const AdminResult history = admin.run({"history"}), extensions = admin.run({"ext", "list"});
        for (const AdminResult& result : {history, extensions}) {
            QCOMPARE(result.code, 0);
            QVERIFY2(result.out.contains("31mb"), qPrintable(result.out + result.err));
            for (const QChar letter : result.out)
                QVERIFY2(letter == '\n' || letter.category() != QChar::Other_Control,
                         qPrintable(QString::number(letter.unicode(), 16)));
        }
        QVERIFY(extensions.out.contains(QChar(0xA0))); // a letter beside them, and none of them
    }

private:
    static void addForm(const AdminRun& admin, const QString& name) {
        const AdminResult result = admin.run({"put", "form", admin.write("src/" + name, "text")});
        QVERIFY2(result.code == 0, qPrintable(result.err));
    }
};

QTEST_GUILESS_MAIN(TestAdminBasics)
#include "tst_admin_basics.moc"
