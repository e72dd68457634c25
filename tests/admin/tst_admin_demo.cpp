// The demonstration installation: what it promises, and how it grows.
#include "AdminRun.h"

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QLabel>
#include <QUiLoader>
#include <QtTest>

class TestAdminDemo : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(demo_.init());
        const AdminResult result = demo_.run({"demo"});
        QVERIFY2(result.code == 0, qPrintable(result.err));
        QVERIFY(result.out.contains("ресурсов 120, элементов меню 300"));
    }

    void theCountsAreAsPromised() {
        QCOMPARE(demo_.count("MenuResource"), 120);
        QCOMPARE(demo_.count("Menu"), 300);
        QCOMPARE(demo_.sql("select count(*) from MenuFolder where not isFolder").toInt(), 12);
        QCOMPARE(demo_.count("Users"), 8);
        QVERIFY(demo_.count("MenuFileExt") >= 4);
        QCOMPARE(
            demo_.sql("select group_concat(type_) from (select distinct type_ from MenuResource "
                      "order by 1)"),
            QString("1,2,3,4"));
        QCOMPARE(
            demo_.sql("select group_concat(caption, ';') from (select caption from "
                      "MenuResourceFolder where ParentKey is null and type_ < 4 order by type_)"),
            QString("модули;функции;формы отображения"));
        // Every record has its line in the change log.
        for (const char* table : {"Menu", "MenuFolder", "MenuResource", "Users"})
            QVERIFY(demo_
                        .sql(QString("select count(*) from NciEvent where code = 601 and "
                                     "tableName = '%1'")
                                 .arg(table))
                        .toInt() >= demo_.count(table));
    }

    void theCheckHasNothingButTheOrphan() {
        const AdminResult result = demo_.run({"check"});
        QCOMPARE(result.code, 0);
        QCOMPARE(result.lines().size(), 2);
        QVERIFY(result.lines()[0].startsWith("замечание: MenuResource "));
        QVERIFY(result.lines()[0].contains("непривязанных"));
    }

    void theDesktopsHaveFullMenus() {
        QCOMPARE(demo_.sql("select min(n) || '-' || max(n) from (select count(*) as n from Menu "
                           "group by FolderKey)"),
                 QString("25-25"));
        // Desktops stand in folders of folders, and one at the top.
        QCOMPARE(
            demo_.sql("select count(*) from MenuFolder where ParentKey is null and not isFolder"),
            QString("1"));
        QVERIFY(demo_
                    .sql("select count(*) from MenuFolder d join MenuFolder f on d.ParentKey = "
                         "f.KeyLink where not d.isFolder and f.ParentKey is not null")
                    .toInt() > 5);
        // Menu folders in menu folders.
        QVERIFY(demo_
                    .sql("select count(*) from Menu e join Menu f on e.parent = f.KeyLink where "
                         "e.MenuResourceKey is null")
                    .toInt() >= 5);
        // Siblings are told apart by their order.
        QCOMPARE(
            demo_.sql("select count(*) from (select 1 from Menu group by FolderKey, parent, order_ "
                      "having count(*) > 1)"),
            QString("0"));
    }

    void elementsAreOfAllKinds() {
        QCOMPARE(
            demo_.sql("select group_concat(type_) from (select distinct type_ from Menu m join "
                      "MenuResource r on m.MenuResourceKey = r.KeyLink order by 1)"),
            QString("1,2,3"));
        for (const char* what : {"MenuResourceKey is null", "separator", "oneCopy", "params <> ''"})
            QVERIFY2(demo_.sql(QString("select count(*) from Menu where %1").arg(what)).toInt() >=
                         20,
                     what);
    }

    void formsHaveFilesThatCanBeShown() {
        QCOMPARE(
            demo_.sql("select count(*) from MenuResource r where type_ = 3 and not exists "
                      "(select 1 from MenuResourceFile f where f.MenuResourceKey = r.KeyLink)"),
            QString("0"));
        const AdminRun work;
        for (const char* form : {"ks1_shema.ui", "ks1_gpa.ui", "ks1_energo.ui", "grs_polynino.ui",
                                 "gts_obzor_", "arh_shema_2009.ui"}) {
            const AdminResult got = demo_.run({"get", "form", form, work.path()});
            QVERIFY2(got.code == 0, qPrintable(got.err));
            const QString stem = QString(form).remove(QRegularExpression("(\\.ui|_)$"));
            QFile file(work.path(stem + ".ui"));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QUiLoader loader;
            const std::unique_ptr<QWidget> widget(loader.load(&file));
            QVERIFY2(widget, qPrintable(form + (": " + loader.errorString())));
            const auto* title = widget->findChild<QLabel*>("title");
            QCOMPARE(title->text(),
                     demo_.sql(
                         QString("select caption from MenuResource where name_ = '%1'").arg(form)));
            // Light letters of dark colours are not to be on a light ground of the form's own.
            const QString style = title->styleSheet();
            QVERIFY2(!style.contains("background") || style.contains("; color:"), form);
        }
        QVERIFY(!QImage(work.path("gts_obzor.png")).isNull());
    }

    void iconsAreImagesAndAreUsed() {
        const QStringList lines = demo_.run({"list", "files", "--path", "icons"}).lines();
        QVERIFY(lines.size() >= 20);
        const AdminRun work;
        for (const QString& line : lines) {
            const QString name = line.section('\t', 0, 0).mid(QString("icons/").size());
            QCOMPARE(demo_.run({"get", "file", "--path", "icons", name, work.path()}).code, 0);
            QVERIFY2(!QImage(work.path(name)).isNull(), qPrintable(name));
        }
        QVERIFY(demo_.sql("select count(distinct ico) from Menu").toInt() >= 20);
        QCOMPARE(demo_.sql("select count(*) from Menu where ico is null"), QString("0"));
    }

    void twoUsersHoldLocks() {
        QCOMPARE(demo_.sql("select count(distinct UsersKey) || ' ' || count(*) from MenuResource "
                           "where type_ = 3 and UsersKey is not null and dateTimeEdit is not null"),
                 QString("2 4"));
        QVERIFY(
            demo_
                .sql("select count(*) from MenuResource r join Users u on r.UsersKey = u.KeyLink "
                     "where login_ = 'demo'")
                .toInt() > 0);
    }

    void usersAreOfAllKinds() {
        QCOMPARE(demo_.sql("select count(*) from Users where program"), QString("1"));
        QCOMPARE(demo_.sql("select count(*) from Users where lastName is null and not program"),
                 QString("1"));
        QVERIFY(demo_.sql("select count(*) from Users where midlName <> ''").toInt() >= 3);
    }

    void everyRunGivesTheSameKeys() {
        const AdminRun other;
        QVERIFY(other.init());
        QCOMPARE(other.run({"demo"}).code, 0);
        for (const char* table :
             {"Menu", "MenuFolder", "MenuResource", "MenuResourceFolder", "Users", "MenuFileExt"}) {
            const QString keys =
                QString("select group_concat(KeyLink) from (select KeyLink from %1 order by 1)")
                    .arg(table);
            QCOMPARE(other.sql(keys), demo_.sql(keys));
            QCOMPARE(demo_.sql(QString("select count(*) from %1 where KeyLink not glob "
                                       "replace(hex(zeroblob(16)), '0', '[0-9a-f]')")
                                   .arg(table)),
                     QString("0"));
        }
    }

    void aUsedStoreIsRefused_data() {
        QTest::addColumn<QString>("statement");
        QTest::newRow("desktop") << "insert into MenuFolder values ('a', null, 'Стол', '2000', 0)";
        QTest::newRow("element") << "insert into Menu(KeyLink, caption) values ('a', 'Пункт')";
        QTest::newRow("resource")
            << "insert into MenuResource(KeyLink, name_, type_) values ('a', 'x', 1)";
        QTest::newRow("folder") << "insert into MenuResourceFolder values ('a', null, 4, 'Папка')";
    }

    void aUsedStoreIsRefused() {
        QFETCH(QString, statement);
        const AdminRun admin;
        QVERIFY(admin.init());
        admin.sql(statement);
        const int events = admin.count("NciEvent");
        QVERIFY(admin.run({"demo"}).refused("в хранилище уже есть данные"));
        QCOMPARE(admin.count("NciEvent"), events);
    }

    void usersWhoAreThereAreKept() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"user", "add", "Demo", "--last", "Свой"}).code, 0);
        QCOMPARE(admin.run({"user", "add", "stranger"}).code, 0);
        QCOMPARE(admin.run({"ext", "add", ".UI"}).code, 0);
        QCOMPARE(admin.run({"demo"}).code, 0);
        QCOMPARE(admin.count("Users"), 9);
        QCOMPARE(admin.sql("select lastName from Users where login_ = 'Demo'"), QString("Свой"));
        QCOMPARE(admin.run({"check"}).lines().size(), 2);
    }

    void growthIsExact_data() {
        QTest::addColumn<int>("scale");
        for (const int scale : {300, 301, 330, 777, 5000})
            QTest::newRow(qPrintable(QString::number(scale))) << scale;
    }

    void growthIsExact() {
        QFETCH(int, scale);
        const AdminRun admin;
        QVERIFY(admin.init());
        const AdminResult result = admin.run({"demo", "--scale", QString::number(scale)});
        QVERIFY2(result.code == 0, qPrintable(result.err));
        QCOMPARE(admin.count("MenuResource"), scale);
        QCOMPARE(admin.count("Menu"), scale);
        const AdminResult check = admin.run({"check"});
        QVERIFY2(check.code == 0 && check.lines().size() == 2, qPrintable(check.out));
    }

    void growthIsEven() {
        const AdminRun admin;
        QVERIFY(admin.init());
        QCOMPARE(admin.run({"demo", "--scale", "5000"}).code, 0);
        const QString perDesktop = admin.sql(
            "select max(n) - min(n) from (select count(*) as n from Menu join MenuFolder d "
            "on FolderKey "
            "= d.KeyLink where d.caption like 'АРМ %' group by FolderKey)");
        QVERIFY(perDesktop.toInt() <= 1);
        for (int type = 1; type <= 4; ++type)
            QVERIFY(
                admin
                    .sql(QString("select max(n) - min(n) from (select count(*) as n from "
                                 "MenuResource r join MenuResourceFolder f on "
                                 "MenuResourceFolderKey = f.KeyLink where f.caption like 'Узел %' "
                                 "and r.type_ = %1 group by f.KeyLink)")
                             .arg(type))
                    .toInt() <= 1);
    }

private:
    AdminRun demo_; ///< filled once, only read
};

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    TestAdminDemo test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_admin_demo.moc"
