// check finds each kind of defect, names it, and tells errors from warnings by the exit code.
#include "AdminRun.h"

#include <QtTest>

class TestAdminCheck : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void aSoundStoreHasNoFindings();
    void everyDefectIsFoundAlone_data();
    void everyDefectIsFoundAlone();
    void keysOfFixedRowsAreFound();
    void aCycleIsToldOnceWithItsLength();
    void aFindingTellsWhereItsRecordStands();
    void whatIsBelowALostRecordIsCounted();
    void aCertainCureIsAppliedAndUndone_data();
    void aCertainCureIsAppliedAndUndone();
    void manyCuresAreOneAction();
    void whatIsNotCertainIsLeftAlone();
    void damagedPagesAreFound();
    void aFloodIsCutUnlessAllIsWanted();
    void theCheckChangesNothing();

private:
    const AdminRun sound_; ///< filled once, copied by every test
};

namespace {

// A small sound installation: a folder with a desktop, a menu folder with an element, a resource of
// each kind, a user.
const char* const soundRows[] = {
    "insert into Users values ('u1', 'anna', 'Аннина', 'Анна', null, 0)",
    "insert into MenuFileExt values ('e1', '.ui')",
    "insert into MenuFolder values ('d1', null, 'Папка', '1000', 1)",
    "insert into MenuFolder values ('d2', 'd1', 'Стол', '2000', 0)",
    "insert into MenuFolder values ('d3', 'd1', 'Второй', '2000', 0)",
    "insert into MenuResourceFolder select 'f1', KeyLink, 1, 'Разное' from MenuResourceFolder"
    " where type_ = 1",
    "insert into MenuResourceFolder select 'f3', KeyLink, 3, 'Схемы' from MenuResourceFolder"
    " where type_ = 3",
    "insert into MenuResource values ('r1', 'f1', 'Trends', 1, 'Тренды', null, null, null, null)",
    "insert into MenuResource values ('r3', 'f3', 'a.ui', 3, 'Схема', null, null, 'u1', 1.5)",
    "insert into Menu values ('m1', null, 'd2', 'Папка меню', 0, null, 0, 0, null, null)",
    "insert into Menu values ('m2', 'm1', 'd2', 'Тренды', 0, 'a.png', 0, 0, 'r1', null)",
    "insert into Menu values ('m3', null, 'd2', 'Схема', 1000, null, 0, 0, 'r3', null)",
};

} // namespace

void TestAdminCheck::initTestCase() {
    QVERIFY(sound_.init());
    for (const char* row : soundRows)
        sound_.sql(row);
    QCOMPARE(sound_.run({"put", "file", "--path", "icons", sound_.write("src/a.png", "x")}).code,
             0);
}

void TestAdminCheck::aSoundStoreHasNoFindings() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    const AdminResult result = admin.run({"check"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.lines().size(), 1);
    QVERIFY2(result.out.contains("ошибок: 0, замечаний: 0"), qPrintable(result.out));
}

void TestAdminCheck::everyDefectIsFoundAlone_data() {
    QTest::addColumn<QString>("statement");
    QTest::addColumn<bool>("isError");
    QTest::addColumn<QString>("finding"); // the line behind its severity
    const auto error = [](const char* name, const char* statement, const char* finding) {
        QTest::newRow(name) << QString(statement) << true << QString(finding);
    };
    const auto warning = [](const char* name, const char* statement, const char* finding) {
        QTest::newRow(name) << QString(statement) << false << QString(finding);
    };
    error("login empty", "insert into Users(KeyLink) values ('u2')",
          "Users u2 «»: пустое имя входа");
    error("login twice", "insert into Users(KeyLink, login_) values ('u2', 'ANNA')",
          "Users u2 «ANNA»: имя входа уже есть");
    error("extension empty", "insert into MenuFileExt values ('e2', '')",
          "MenuFileExt e2 «»: пустое расширение");
    warning("extension twice", "insert into MenuFileExt values ('e2', '.UI')",
            "MenuFileExt e2 «.UI»: расширение повторяется");

    error("desktop without a caption", "update MenuFolder set caption = '' where KeyLink = 'd3'",
          "MenuFolder d3 «»: пустое название");
    error("order that no loader seeks",
          "update MenuFolder set order_ = '3000' where KeyLink = 'd3'",
          "MenuFolder d3 «Второй»: порядок не \"1000\" (папка) и не \"2000\" (рабочий стол): "
          "\"3000\"");
    error("order missing", "update MenuFolder set order_ = null where KeyLink = 'd3'",
          "MenuFolder d3 «Второй»: порядок не \"1000\" (папка) и не \"2000\" (рабочий стол): \"\"");
    error("order of the other class", "update MenuFolder set order_ = '1000' where KeyLink = 'd3'",
          "MenuFolder d3 «Второй»: порядок не тот, у папки он");
    error("parent of a desktop missing",
          "update MenuFolder set ParentKey = 'gone' where KeyLink = 'd3'",
          "MenuFolder d3 «Второй»: нет родителя gone");
    error("desktop below a desktop", "update MenuFolder set ParentKey = 'd2' where KeyLink = 'd3'",
          "MenuFolder d3 «Второй»: родитель - рабочий стол, а не папка: «Стол» (d2)");
    error("folder of itself", "update MenuFolder set ParentKey = 'd1' where KeyLink = 'd1'",
          "MenuFolder d1 «Папка»: круг: стоит внутри самой себя; записей в круге: 1; вместе с этим "
          "не видно записей: 5");

    error("element without a caption", "update Menu set caption = null where KeyLink = 'm2'",
          "Menu m2 «»: пустое название");
    error("element without a desktop", "update Menu set FolderKey = null where KeyLink = 'm3'",
          "Menu m3 «Схема»: не сказано, на каком рабочем столе");
    error("desktop of an element gone", "update Menu set FolderKey = 'gone' where KeyLink = 'm3'",
          "Menu m3 «Схема»: нет рабочего стола gone");
    error("element on a folder of desktops",
          "update Menu set FolderKey = 'd1' where KeyLink = 'm3'",
          "Menu m3 «Схема»: вместо рабочего стола папка столов: «Папка» (d1)");
    error("desktop key in other letters", "update Menu set FolderKey = 'D2' where KeyLink = 'm3'",
          "Menu m3 «Схема»: ключ рабочего стола записан другими буквами: D2");
    error("parent of an element missing", "update Menu set parent = 'gone' where KeyLink = 'm2'",
          "Menu m2 «Тренды»: нет родителя gone");
    error("parent on another desktop", "update Menu set FolderKey = 'd3' where KeyLink = 'm2'",
          "Menu m2 «Тренды»: родитель на другом рабочем столе: «Папка меню» (m1)");
    error("parent that is no folder", "update Menu set parent = 'm3' where KeyLink = 'm2'",
          "Menu m2 «Тренды»: родитель - не папка меню: «Схема» (m3)");
    error("cycle of menu folders", "update Menu set parent = 'm1' where KeyLink = 'm1'",
          "Menu m1 «Папка меню»: круг: стоит внутри самой себя; записей в круге: 1");
    error("resource of an element missing",
          "update Menu set MenuResourceKey = 'gone' where KeyLink = 'm3'",
          "Menu m3 «Схема»: нет ресурса gone");
    warning("element of a file",
            "update Menu set MenuResourceKey = (select KeyLink from MenuResource where type_ = 4)"
            " where KeyLink = 'm3'",
            "Menu m3 «Схема»: ресурс такого типа из меню не запускается: «a.png» (");
    warning("icon missing", "update Menu set ico = 'b.png' where KeyLink = 'm2'",
            "Menu m2 «Тренды»: в папке icons нет значка b.png");
    warning("icon of a resource missing",
            "update MenuResource set ico = 'b.png' where KeyLink = 'r1'",
            "MenuResource r1 «Тренды»: в папке icons нет значка b.png");

    error("folder without a caption",
          "update MenuResourceFolder set caption = null where KeyLink = 'f1'",
          "MenuResourceFolder f1 «»: пустое название");
    error("folder twice",
          "insert into MenuResourceFolder select 'f9', ParentKey, type_, 'РАЗНОЕ'"
          " from MenuResourceFolder where KeyLink = 'f1'",
          "MenuResourceFolder f9 «РАЗНОЕ»: рядом есть папка с таким же названием");
    error("folder of no kind", "insert into MenuResourceFolder values ('f9', null, 7, 'Чужая')",
          "MenuResourceFolder f9 «Чужая»: неизвестный тип 7");
    error("parent of a folder missing",
          "update MenuResourceFolder set ParentKey = 'gone' where KeyLink = 'f1'",
          "MenuResourceFolder f1 «Разное»: нет родителя gone");
    error("parent of another kind",
          "insert into MenuResourceFolder values ('f9', 'f3', 1, 'Чужая')",
          "MenuResourceFolder f9 «Чужая»: родитель другого типа: «Схемы» (f3)");
    error("cycle of folders", "update MenuResourceFolder set ParentKey = 'f1' where KeyLink = 'f1'",
          "MenuResourceFolder f1 «Разное»: круг: стоит внутри самой себя; записей в круге: 1");
    error("top folder renamed",
          "update MenuResourceFolder set caption = 'x' where caption = 'функции'",
          "MenuResourceFolder: нет верхней папки, без неё дерево ресурсов не загружается; её "
          "сделает init: функции");
    error("folder under the fixed row",
          "insert into MenuResourceFolder values ('f9', 'FileResources', 4, 'Новая')",
          "MenuResourceFolder f9 «Новая»: сделана под верхней строкой дерева");
    warning("caption that is no path",
            "update MenuResourceFolder set caption = 'а/б' where KeyLink = 'f3'",
            "MenuResourceFolder f3 «а/б»: название не годится в путь");

    error("resource without a name", "update MenuResource set name_ = '' where KeyLink = 'r1'",
          "MenuResource r1 «Тренды»: пустое имя ресурса");
    error("resource name twice",
          "insert into MenuResource(KeyLink, MenuResourceFolderKey, name_, type_)"
          " values ('r9', 'f1', 'TRENDS', 1)",
          "MenuResource r9 «TRENDS»: имя ресурса повторяется: TRENDS");
    error("resource of no kind",
          "insert into MenuResource(KeyLink, name_, type_) values ('r9', 'x', 9)",
          "MenuResource r9 «x»: неизвестный тип 9");
    error("module without a folder",
          "update MenuResource set MenuResourceFolderKey = null where KeyLink = 'r1'",
          "MenuResource r1 «Тренды»: ресурс вне папок");
    error("form without a folder",
          "update MenuResource set MenuResourceFolderKey = null where KeyLink = 'r3'",
          "MenuResource r3 «Схема»: ресурс вне папок");
    error("folder of a module gone",
          "update MenuResource set MenuResourceFolderKey = 'gone' where KeyLink = 'r1'",
          "MenuResource r1 «Тренды»: нет папки gone");
    warning("orphan form",
            "update MenuResource set MenuResourceFolderKey = 'gone' where KeyLink = 'r3'",
            "MenuResource r3 «Схема»: папки нет, форма стоит среди непривязанных объектов; "
            "папка gone");
    error("folder of another kind",
          "update MenuResource set MenuResourceFolderKey = 'f3' where KeyLink = 'r1'",
          "MenuResource r1 «Тренды»: папка другого типа: «Схемы» (f3)");
    error("user of a lock gone", "update MenuResource set UsersKey = 'gone' where KeyLink = 'r3'",
          "MenuResource r3 «Схема»: нет пользователя, который держит блокировку: gone");
    warning("lock on a module", "update MenuResource set UsersKey = 'u1' where KeyLink = 'r1'",
            "MenuResource r1 «Тренды»: блокировка не на форме");
    error("file in the fixed row",
          "update MenuResource set MenuResourceFolderKey = 'FileResources' where type_ = 4",
          "MenuResource %FILE% «a.png»: после перезапуска редактора не виден; папка FileResources");
    warning("element where another one is", "update Menu set order_ = 0 where KeyLink = 'm3'",
            "Menu m3 «Схема»: место по порядку то же, что у соседнего элемента «Папка меню»: 0");
    warning("file without content",
            "insert into MenuResource(KeyLink, name_, type_) values ('r9', 'x.txt', 4)",
            "MenuResource r9 «x.txt»: содержимого файла в хранилище нет: x.txt");
    warning("file name with a separator",
            "insert into MenuResource(KeyLink, name_, type_) values ('r9', '../x', 4)",
            "MenuResource r9 «../x»: имя не годится для файла");
}

void TestAdminCheck::everyDefectIsFoundAlone() {
    QFETCH(QString, statement);
    QFETCH(bool, isError);
    QFETCH(QString, finding);
    const AdminRun admin;
    admin.copyFrom(sound_);
    admin.sql(statement);
    const AdminResult result = admin.run({"check"});
    QVERIFY(result.err.isEmpty());
    QCOMPARE(result.code, isError ? 1 : 0);
    QStringList lines = result.lines();
    lines.replaceInStrings(QRegularExpression("» \\([^)]*\\): "), "»: "); // where it stands
    finding.replace("%FILE%", admin.sql("select KeyLink from MenuResource where type_ = 4"));
    const QString line = (isError ? "ошибка: " : "замечание: ") + finding;
    int found = 0, others = 0;
    for (const QString& each : lines) {
        found += each.startsWith(line) ? 1 : 0;
        others += !each.startsWith(line) && each.startsWith("ошибка: ") && !isError ? 1 : 0;
    }
    QVERIFY2(found == 1, qPrintable(result.out));
    QVERIFY2(others == 0, qPrintable(result.out)); // a warning brings no errors along
}

void TestAdminCheck::keysOfFixedRowsAreFound() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    // Keys compare without regard to case.
    admin.sql("insert into MenuFolder values ('MainNode', null, 'Стол', '2000', 0)");
    admin.sql("insert into Menu values ('MenuRootNode', null, 'd2', 'Э', 0, null, 0, 0, 'r1', "
              "null)");
    QStringList keys = {"MenuFolder MainNode", "Menu MenuRootNode"};
    for (const char* key : {"MenuResources", "FILERESOURCES", "WrongFolder"}) {
        admin.sql(QString("insert into MenuResourceFolder values ('%1', null, 4, '%1')").arg(key));
        admin.sql(QString("insert into MenuResource(KeyLink, MenuResourceFolderKey, name_, type_) "
                          "values ('%1', 'f1', '%1', 1)")
                      .arg(key));
        keys << QString("MenuResourceFolder ") + key << QString("MenuResource ") + key;
    }
    const AdminResult result = admin.run({"check"});
    QCOMPARE(result.code, 1);
    for (const QString& key : keys)
        QVERIFY2(result.out.contains(QRegularExpression(
                     "ошибка: " + key + " «[^»]*»[^:]*: такой ключ у строки дерева")),
                 qPrintable(key + '\n' + result.out));
    QVERIFY2(result.out.contains("ошибок: 8,"), qPrintable(result.out));
}

void TestAdminCheck::aCycleIsToldOnceWithItsLength() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    for (int i = 0; i < 4; ++i)
        admin.sql(QString("insert into MenuFolder values ('c%1', 'c%2', 'К%1', '1000', 1)")
                      .arg(i)
                      .arg((i + 1) % 3));
    const AdminResult result = admin.run({"check"});
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out.count("круг: "), 1); // c3 hangs on it and is not in it
    QVERIFY2(result.out.contains("записей в круге: 3"), qPrintable(result.out));
}

void TestAdminCheck::aFindingTellsWhereItsRecordStands() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    admin.sql("update Menu set ico = 'b.png' where KeyLink = 'm2'");
    QVERIFY(admin.run({"check"}).out.contains("Menu m2 «Тренды» (Папка / Стол / Папка меню): "));
    const QJsonObject finding =
        QJsonDocument::fromJson(admin.run({"check", "--json"}).lines()[0].toUtf8()).object();
    QCOMPARE(finding["path"].toString(), QString("Папка / Стол / Папка меню"));
    QCOMPARE(finding["kind"].toString(), QString("no-icon"));
    QCOMPARE(finding["fix"].toString(), QString("убрать значок"));
}

void TestAdminCheck::whatIsBelowALostRecordIsCounted() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    admin.sql("update MenuFolder set ParentKey = 'gone' where KeyLink = 'd2'");
    const AdminResult result = admin.run({"check"});
    QVERIFY2(result.out.contains("нет родителя gone; вместе с этим не видно записей: 3"),
             qPrintable(result.out));
}

void TestAdminCheck::aCertainCureIsAppliedAndUndone_data() {
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QString>("look"); // one value that the cure changes
    QTest::addColumn<QString>("cured");
    const auto row = [](const char* name, const char* damage, const char* look, const char* cured) {
        QTest::newRow(name) << QString(damage) << QString(look) << QString(cured);
    };
    const char* top = "select ifnull(f.caption, '-') from MenuResource r left join "
                      "MenuResourceFolder f on f.KeyLink = r.MenuResourceFolderKey "
                      "where r.KeyLink = '%1'";
    row("orphan form",
        "update MenuResource set MenuResourceFolderKey = 'gone' where KeyLink = 'r3'",
        qPrintable(QString(top).arg("r3")), "формы отображения");
    row("module without a folder",
        "update MenuResource set MenuResourceFolderKey = null where KeyLink = 'r1'",
        qPrintable(QString(top).arg("r1")), "модули");
    row("module in a folder of forms",
        "update MenuResource set MenuResourceFolderKey = 'f3' where KeyLink = 'r1'",
        qPrintable(QString(top).arg("r1")), "модули");
    row("file below the fixed row",
        "update MenuResource set MenuResourceFolderKey = 'FileResources' where type_ = 4",
        "select ifnull(MenuResourceFolderKey, '-') from MenuResource where type_ = 4", "-");
    row("folder whose parent is gone",
        "update MenuResourceFolder set ParentKey = 'gone' where KeyLink = 'f1'",
        "select p.caption from MenuResourceFolder f join MenuResourceFolder p on p.KeyLink = "
        "f.ParentKey where f.KeyLink = 'f1'",
        "модули");
    row("desktop whose folder is gone",
        "update MenuFolder set ParentKey = 'gone' where KeyLink = 'd2'",
        "select ifnull(ParentKey, '-') from MenuFolder where KeyLink = 'd2'", "-");
    row("element whose folder is gone", "update Menu set parent = 'gone' where KeyLink = 'm2'",
        "select ifnull(parent, '-') from Menu where KeyLink = 'm2'", "-");
    row("desktop key in other letters", "update Menu set FolderKey = 'D2' where KeyLink = 'm3'",
        "select FolderKey from Menu where KeyLink = 'm3'", "d2");
    row("icon that is gone", "update Menu set ico = 'b.png' where KeyLink = 'm2'",
        "select ifnull(ico, '-') from Menu where KeyLink = 'm2'", "-");
    row("order of the other class", "update MenuFolder set order_ = '1000' where KeyLink = 'd3'",
        "select order_ from MenuFolder where KeyLink = 'd3'", "2000");
    row("two in one place", "update Menu set order_ = 0 where KeyLink = 'm3'",
        "select (select order_ from Menu where KeyLink = 'm1') < order_ from Menu where KeyLink = "
        "'m3'",
        "1");
    row("holder of a lock gone", "update MenuResource set UsersKey = 'gone' where KeyLink = 'r3'",
        "select ifnull(UsersKey, '-') || ifnull(dateTimeEdit, '-') from MenuResource "
        "where KeyLink = 'r3'",
        "--");
}

void TestAdminCheck::aCertainCureIsAppliedAndUndone() {
    QFETCH(QString, damage);
    QFETCH(QString, look);
    QFETCH(QString, cured);
    const AdminRun admin;
    admin.copyFrom(sound_);
    admin.sql(damage);
    const QString before = admin.sql(look);
    QVERIFY2(before != cured, qPrintable(before));
    const AdminResult fixed = admin.run({"check", "--fix"});
    QVERIFY2(fixed.code == 0 && fixed.out.contains(", исправлено: "),
             qPrintable(fixed.out + fixed.err));
    QCOMPARE(admin.sql(look), cured);
    const QString change = admin.sql("select max(id) from NciEvent");
    QCOMPARE(admin.sql("select login from NciEvent where id = " + change), QString("admin"));
    const AdminResult undone = admin.run({"undo", change});
    if (look.contains("UsersKey")) { // nobody gets a lock by an undo
        QVERIFY2(undone.err.contains("занятость отменой не меняется"), qPrintable(undone.err));
        QCOMPARE(admin.sql(look), cured);
        return;
    }
    QVERIFY2(undone.code == 0, qPrintable(undone.err));
    QCOMPARE(admin.sql(look), before);
}

void TestAdminCheck::manyCuresAreOneAction() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    for (int i = 0; i < 70; ++i)
        admin.sql(QString("insert into Menu values ('x%1', 'gone', 'd2', 'Э%1', 5, 'no.png', 0, 0, "
                          "'r1', null)")
                      .arg(i));
    const AdminResult fixed = admin.run({"check", "--fix", "--json"});
    const QJsonObject sum = QJsonDocument::fromJson(fixed.lines().last().toUtf8()).object();
    QVERIFY2(sum["fixed"].toInt() >= 140, qPrintable(fixed.lines().last()));
    QCOMPARE(sum["errors"].toInt(), 0);
    QCOMPARE(
        admin.sql("select count(distinct \"group\") from NciEvent where login = 'admin' and id > "
                  "(select max(id) - 70 from NciEvent)"),
        QString("1"));
    QCOMPARE(admin.run({"check"}).lines().size(), 1);
}

void TestAdminCheck::whatIsNotCertainIsLeftAlone() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    admin.sql("update Menu set MenuResourceKey = 'gone' where KeyLink = 'm3'"); // no folder, please
    admin.sql("insert into Users(KeyLink, login_) values ('u2', 'ANNA')");
    // Its name is taken where it would go.
    admin.sql("insert into MenuResourceFolder select 'f8', KeyLink, 1, 'Своя' from "
              "MenuResourceFolder where type_ = 1 and ParentKey is null");
    admin.sql("insert into MenuResourceFolder values ('f9', 'gone', 1, 'СВОЯ')");
    const int events = admin.count("NciEvent");
    const AdminResult result = admin.run({"check", "--fix"});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.out.contains("ошибок: 3, замечаний: 0, исправлено: 0"), qPrintable(result.out));
    QCOMPARE(admin.count("NciEvent"), events);
}

void TestAdminCheck::damagedPagesAreFound() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    admin.sql("with recursive n(i) as (select 1 union all select i + 1 from n where i < 3000) "
              "insert into MenuFileExt select 'x' || i, '.x' || i from n");
    admin.sql("pragma wal_checkpoint(truncate)");
    QFile file(admin.storePath());
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.size() > 200000);
    QVERIFY(file.seek(file.size() / 2 / 4096 * 4096));
    QCOMPARE(file.write(QByteArray(40960, '\x5a')), qint64(40960));
    file.close();
    const AdminResult result = admin.run({"check"});
    QVERIFY2(result.code == 1, qPrintable(result.out + result.err));
    QVERIFY2(result.out.contains("ошибка: база данных: "), qPrintable(result.out));
    QVERIFY2(!result.out.contains("ошибок: 0"), qPrintable(result.out));
}

void TestAdminCheck::aFloodIsCutUnlessAllIsWanted() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    for (int i = 0; i < 70; ++i)
        admin.sql(
            QString("insert into MenuFolder values ('x%1', 'gone', 'Стол', '2000', 0)").arg(i));
    const AdminResult cut = admin.run({"check"});
    QCOMPARE(cut.code, 1);
    QCOMPARE(cut.out.count("нет родителя gone"), 50);
    QVERIFY(cut.out.contains("не показано: MenuFolder: нет родителя: ещё 20"));
    QVERIFY(cut.out.contains("ошибок: 70"));
    QCOMPARE(admin.run({"check", "--all"}).out.count("нет родителя gone"), 70);
}

void TestAdminCheck::theCheckChangesNothing() {
    const AdminRun admin;
    admin.copyFrom(sound_);
    const int events = admin.count("NciEvent");
    QCOMPARE(admin.run({"check"}).code, 0);
    QCOMPARE(admin.count("NciEvent"), events);
}

QTEST_GUILESS_MAIN(TestAdminCheck)
#include "tst_admin_check.moc"
