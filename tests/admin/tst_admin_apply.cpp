// What was tried on a copy goes into the living installation.
#include "AdminTest.h"

#include <QFile>

class TestAdminApply : public AdminTest {
    Q_OBJECT
public:
    using AdminTest::AdminTest;

private slots:
    void equalInstallationsDoNotDiffer();
    void differencesAreToldInWords();
    void anExportIsAppliedAndTakenBack();
    void aPartIsAppliedAlone();
    void whatIsNewInAPartThatIsThereComesToo();
    void aNameWithASlashLeadsToItsRecord();
    void whatAPartNeedsComesAlong();
    void aFormOfATakenNameIsLeftOut();
    void aFolderOfATakenNameIsLeftOutWithItsFiles();
    void aResourceThatWhatStaysOpensIsNotDeleted();
    void whatHasNoPlaceInTheStoreIsLeftOut();
    void theFoldersAtTheTopStay();
    void usersAndLocksStay();
    void aFormThatAnotherHoldsKeepsItsContents();
    void aFormThatAnotherHoldsIsNotDeleted();
    void editorsAreToldOfNewContents();
    void badArgumentsAreRefused();
    void whatNoStoreCanHoldIsRefused_data();
    void whatNoStoreCanHoldIsRefused();

private:
    /// An export of what the store holds now.
    QString exported(const char* name = "e.json") {
        const QString file = m_admin->path(name);
        run({"export", file});
        return file;
    }
    void plant() {
        QVERIFY(m_kind.byHand(
            "INSERT INTO \"MenuFolder\" (\"KeyLink\", \"caption\", \"ParentKey\", \"isFolder\") "
            "VALUES ('f', 'Цех', NULL, '1'), ('d', 'Стол', 'f', '0'), ('o', 'Другой', NULL, '0');"
            "INSERT INTO \"Menu\" (\"KeyLink\", \"caption\", \"FolderKey\", \"parent\") VALUES "
            "('a', 'А', 'd', NULL), ('b', 'Б', 'd', 'a'), ('x', 'Икс', 'o', NULL);"));
        ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "text")}));
    }
};

void TestAdminApply::equalInstallationsDoNotDiffer() {
    plant();
    const QString file = exported();
    ORVO_DONE(run({"diff", file}));
    QCOMPARE(run({"diff", file}).out, QString("различий нет\n"));
    QCOMPARE(run({"apply", file}).out, QString("различий нет\n"));
    QCOMPARE(
        run({"diff", QString::fromStdString(m_kind.url()), QString::fromStdString(m_kind.url())})
            .out,
        QString("различий нет\n"));
}

void TestAdminApply::differencesAreToldInWords() {
    plant();
    const QString file = exported();
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = 'Я' WHERE \"KeyLink\" = 'a';"
                          "DELETE FROM \"Menu\" WHERE \"KeyLink\" = 'x';"));
    const AdminResult result = run({"diff", file});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.out.contains("Переименован элемент меню «А»: было «Я»  (Цех / Стол)\n"),
             qPrintable(result.out));
    QVERIFY2(result.out.contains("Создан элемент меню «Икс»  (Другой)\n"), qPrintable(result.out));
    const AdminResult dry = run({"apply", file, "--dry-run"});
    QVERIFY2(dry.out.contains("Создан элемент меню «Икс»  (Другой)\n"), qPrintable(dry.out));
}

void TestAdminApply::anExportIsAppliedAndTakenBack() {
    plant();
    const QString file = exported();
    const QByteArray before = content();
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = 'Я' WHERE \"KeyLink\" = 'a';"
                          "DELETE FROM \"MenuFolder\" WHERE \"KeyLink\" = 'o';"
                          "INSERT INTO \"Menu\" (\"KeyLink\", \"caption\") VALUES ('new', 'Н');"));
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "changed text")}));
    ORVO_DONE(run({"put", "form", m_admin->write("src/b.ui", "another")}));
    const QByteArray changed = content();
    const AdminResult dry = run({"apply", file, "--dry-run"});
    QCOMPARE(dry.code, 0);
    QVERIFY2(dry.out.contains("записалось бы записей: "), qPrintable(dry.out));
    QCOMPARE(content(), changed);
    const AdminResult done = run({"apply", file});
    QVERIFY2(done.code == 0, qPrintable(done.err));
    QCOMPARE(content(), before);
    ORVO_DONE(run({"undo", done.out.trimmed().section(' ', -1)}));
    QCOMPARE(content(), changed);
}

void TestAdminApply::aPartIsAppliedAlone() {
    plant();
    const QString file = exported();
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = 'Я';"
                          "INSERT INTO \"Menu\" (\"KeyLink\", \"FolderKey\") VALUES ('n', 'd');"));
    ORVO_DONE(run({"apply", file, "--only", "Цех/Стол/А"}));
    QByteArray text;
    const char captions[] = "SELECT \"KeyLink\", \"caption\" FROM \"Menu\" ORDER BY \"KeyLink\";";
    QVERIFY(m_kind.byHand(captions, &text));
    QCOMPARE(text.trimmed(), QByteArray("a|А\nb|Б\nn|\nx|Я"));
    ORVO_DONE(run({"apply", file, "--only", "Цех"}));
    QVERIFY(m_kind.byHand(captions, &text));
    QCOMPARE(text.trimmed(), QByteArray("a|А\nb|Б\nx|Я"));
    ORVO_DONE(run({"apply", file, "--only", "X"})); // by its key
    QVERIFY(m_kind.byHand(captions, &text));
    QCOMPARE(text.trimmed(), QByteArray("a|А\nb|Б\nx|Икс"));
}

void TestAdminApply::whatIsNewInAPartThatIsThereComesToo() {
    plant();
    const QString file = exported();
    const QByteArray before = content();
    QVERIFY(m_kind.byHand("DELETE FROM \"Menu\" WHERE \"KeyLink\" = 'b';"));
    ORVO_DONE(run({"apply", file, "--only", "Цех/Стол"}));
    QCOMPARE(content(), before);
}

void TestAdminApply::aNameWithASlashLeadsToItsRecord() {
    plant();
    QVERIFY(m_kind.byHand("UPDATE \"MenuFolder\" SET \"caption\" = 'КС-3 / 4' WHERE "
                          "\"KeyLink\" = 'd'; UPDATE \"Menu\" SET \"caption\" = 'А/Б' WHERE "
                          "\"KeyLink\" = 'b';"));
    const QString file = exported();
    const QByteArray before = content();
    QVERIFY(m_kind.byHand("DELETE FROM \"Menu\" WHERE \"KeyLink\" = 'b';"));
    ORVO_DONE(run({"apply", file, "--only", "Цех/КС-3 / 4/А/А/Б"}));
    QCOMPARE(content(), before);
}

void TestAdminApply::whatAPartNeedsComesAlong() {
    plant();
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"MenuResourceKey\" = (SELECT \"KeyLink\" FROM "
                          "\"MenuResource\") WHERE \"KeyLink\" = 'b';"));
    const QString file = exported();
    const QByteArray before = content();
    QVERIFY(m_kind.byHand("DELETE FROM \"MenuResource\"; DELETE FROM \"Menu\" WHERE \"KeyLink\" <> "
                          "'x'; DELETE FROM \"MenuFolder\" WHERE \"KeyLink\" <> 'o';"));
    ORVO_DONE(run({"apply", file, "--only", "Цех/Стол"}));
    QCOMPARE(content(), before);
}

void TestAdminApply::aFormOfATakenNameIsLeftOut() {
    plant();
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"MenuResourceKey\" = (SELECT \"KeyLink\" FROM "
                          "\"MenuResource\"), \"caption\" = 'Я' WHERE \"KeyLink\" = 'b';"));
    const QString file = exported();
    QVERIFY(m_kind.byHand("DELETE FROM \"MenuResource\";"
                          "UPDATE \"Menu\" SET \"caption\" = 'Б' WHERE \"KeyLink\" = 'b';"));
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "another's")}));
    const QByteArray before = content();
    const QStringList apply = {"apply", file, "--only", "Цех/Стол"};
    const AdminResult asking = run(apply);
    QCOMPARE(asking.code, 2);
    QVERIFY2(asking.out.startsWith("Не внесено: форма «a.ui»: имя «a.ui» уже занято (ключ "),
             qPrintable(asking.out));
    QVERIFY2(asking.err.contains("ничего не изменено: решите, как быть"), qPrintable(asking.err));
    QCOMPARE(content(), before);
    QCOMPARE(run(apply + QStringList{"--dry-run"}).code, 1);
    QCOMPARE(run(apply + QStringList{"--partly"}).code, 1);
    QByteArray text;
    const char* const all = "SELECT \"KeyLink\" || \"caption\" FROM \"Menu\" WHERE "
                            "\"KeyLink\" = 'b' UNION ALL SELECT \"name_\" FROM "
                            "\"MenuResource\" ORDER BY 1;";
    QVERIFY(m_kind.byHand(all, &text));
    QCOMPARE(text.trimmed(), QByteArray("a.ui\nbЯ"));
    ORVO_DONE(run(apply + QStringList{"--other-names"}));
    QVERIFY(m_kind.byHand(all, &text));
    QCOMPARE(text.trimmed(), QByteArray("a (2).ui\na.ui\nbЯ"));
    QVERIFY(content().contains(QByteArray("text").toBase64()));
}

void TestAdminApply::aFolderOfATakenNameIsLeftOutWithItsFiles() {
    const char* const moved = "UPDATE \"MenuResource\" SET \"MenuResourceFolderKey\" = 'new' "
                              "WHERE \"name_\" = 'b.png';";
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuResourceFolder\" (\"KeyLink\", \"caption\", "
                          "\"type_\") VALUES ('old', 'Планы', 4);"));
    ORVO_DONE(run({"put", "file", m_admin->write("src/b.png", "b"), "--path", "Планы"}));
    const QByteArray before = content();
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuResourceFolder\" (\"KeyLink\", \"caption\", "
                          "\"type_\") VALUES ('new', 'планы', 4);"
                          "INSERT INTO \"MenuResource\" (\"KeyLink\", \"name_\", \"type_\", "
                          "\"MenuResourceFolderKey\") VALUES ('c', 'c.png', 4, 'new');"));
    QVERIFY(m_kind.byHand(moved));
    const QString file = exported();
    QVERIFY(m_kind.byHand("DELETE FROM \"MenuResource\" WHERE \"KeyLink\" = 'c';"
                          "UPDATE \"MenuResource\" SET \"MenuResourceFolderKey\" = 'old';"
                          "DELETE FROM \"MenuResourceFolder\" WHERE \"KeyLink\" = 'new';"));
    QCOMPARE(content(), before);
    const AdminResult partly = run({"apply", file, "--only", "new", "--partly"});
    QCOMPARE(partly.code, 1);
    QCOMPARE(partly.lines().first(),
             QString("Не внесено: папка ресурсов «планы»: имя «планы» уже занято (ключ old)"));
    QCOMPARE(content(), before);
}

void TestAdminApply::aResourceThatWhatStaysOpensIsNotDeleted() {
    plant();
    const QString without = exported();
    QVERIFY(m_kind.byHand(
        "INSERT INTO \"MenuResource\" (\"KeyLink\", \"name_\", \"type_\") VALUES ('r', 'arm', '1');"
        "UPDATE \"Menu\" SET \"MenuResourceKey\" = 'R' WHERE \"KeyLink\" = 'x';"));
    const QByteArray before = content();
    const AdminResult result = run({"apply", without, "--only", "r"});
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out,
             QString("Не удалено: модуль «arm»: на это ссылается элемент меню «Икс»\n"));
    QVERIFY2(result.err.contains("решите, как быть (без этого --partly)"), qPrintable(result.err));
    QCOMPARE(run({"apply", without, "--only", "r", "--partly"}).code, 1);
    QCOMPARE(content(), before);
}

void TestAdminApply::whatHasNoPlaceInTheStoreIsLeftOut() {
    plant();
    QVERIFY(m_kind.byHand("INSERT INTO \"Menu\" (\"KeyLink\", \"caption\", \"FolderKey\", "
                          "\"parent\") VALUES ('c', 'В', 'd', 'b'), ('e', 'Г', 'd', 'c');"));
    const QString file = exported();
    QVERIFY(m_kind.byHand("DELETE FROM \"Menu\" WHERE \"KeyLink\" IN ('c', 'e');"
                          "UPDATE \"Menu\" SET \"MenuResourceKey\" = (SELECT \"KeyLink\" FROM "
                          "\"MenuResource\" WHERE \"name_\" = 'a.ui') WHERE \"KeyLink\" = 'b';"));
    const QByteArray before = content();
    const AdminResult result = run({"apply", file, "--only", "c"});
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QString("Не внесено: элемент меню «В»: «Б» в хранилище не папка меню\n"));
    QCOMPARE(run({"apply", file, "--only", "c", "--partly"}).code, 1);
    QCOMPARE(content(), before);
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"MenuResourceKey\" = NULL, \"FolderKey\" = 'o', "
                          "\"parent\" = NULL WHERE \"KeyLink\" = 'b';"));
    QCOMPARE(run({"apply", file, "--only", "c"}).out,
             QString("Не внесено: элемент меню «В»: «Б» в хранилище на другом рабочем столе\n"));
    ORVO_DONE(run({"apply", file, "--only", "b"})); // all of it fits
    QByteArray text;
    QVERIFY(m_kind.byHand("SELECT \"caption\" FROM \"Menu\" WHERE \"KeyLink\" = 'e';", &text));
    QCOMPARE(text.trimmed(), QByteArray("Г"));
}

void TestAdminApply::theFoldersAtTheTopStay() {
    plant();
    const auto rename = [&](const char* from, const char* to) {
        return m_kind.byHand(QByteArray("UPDATE \"MenuResourceFolder\" SET \"caption\" = '") + to +
                             "' WHERE \"caption\" = '" + from + "';");
    };
    QVERIFY(rename("формы отображения", "схемы"));
    const QString file = exported();
    QVERIFY(rename("схемы", "формы отображения"));
    QCOMPARE(run({"apply", file}).code, 2);
    const QByteArray before = content();
    const AdminResult partly = run({"apply", file, "--partly"});
    QCOMPARE(partly.code, 1);
    QVERIFY2(partly.out.contains("Оставлено как есть: папка ресурсов «формы отображения»: без "
                                 "неё дерево ресурсов не загружается"),
             qPrintable(partly.out));
    QCOMPARE(content(), before);
}

void TestAdminApply::usersAndLocksStay() {
    plant();
    const QString file = exported();
    ORVO_DONE(run({"user", "add", "anna_a", "--last", "Иванова"}));
    ORVO_DONE(run({"lock", "a.ui", "--login", "anna_a"}));
    const QByteArray before = content();
    QCOMPARE(run({"apply", file}).out, QString("различий нет\n"));
    QCOMPARE(content(), before);
    QCOMPARE(run({"diff", file}).code, 1);
}

void TestAdminApply::aFormThatAnotherHoldsKeepsItsContents() {
    plant();
    const QString file = exported();
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "changed text")}));
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = 'Я' WHERE \"KeyLink\" = 'a';"));
    ORVO_DONE(run({"user", "add", "anna_a", "--last", "Иванова", "--first", "Анна"}));
    ORVO_DONE(run({"lock", "a.ui", "--login", "anna_a"}));
    const QString told = "Оставлено как есть: содержимое формы «a.ui»: она занята (Иванова А., ";
    const AdminResult dry = run({"apply", file, "--dry-run"});
    QCOMPARE(dry.code, 1);
    QVERIFY2(dry.out.contains(told), qPrintable(dry.out));
    const AdminResult done = run({"apply", file});
    QCOMPARE(done.code, 1);
    QVERIFY2(done.out.startsWith(told), qPrintable(done.out));
    const QByteArray changed = QByteArray("changed text").toBase64();
    QVERIFY(content().contains(changed));
    QVERIFY(!content().contains("\"caption\":\"Я\"")); // the rest is applied
    QCOMPARE(run({"apply", file}).out.section('\n', 1), QString("записывать нечего\n"));
    ORVO_DONE(run({"unlock", "a.ui"}));
    ORVO_DONE(run({"apply", file}));
    QVERIFY(!content().contains(changed));
}

void TestAdminApply::aFormThatAnotherHoldsIsNotDeleted() {
    const QString file = exported();
    plant();
    ORVO_DONE(run({"user", "add", "anna_a", "--last", "Иванова"}));
    ORVO_DONE(run({"lock", "a.ui", "--login", "anna_a"}));
    // Nor are the folders in which it stands.
    QVERIFY(m_kind.byHand(
        "INSERT INTO \"MenuResourceFolder\" (\"KeyLink\", \"caption\", \"type_\", \"ParentKey\") "
        "SELECT 'plans', 'Планы', \"type_\", \"MenuResourceFolderKey\" FROM \"MenuResource\";"
        "UPDATE \"MenuResource\" SET \"MenuResourceFolderKey\" = 'plans';"));
    const AdminResult done = run({"apply", file});
    QCOMPARE(done.code, 1);
    QVERIFY2(done.out.startsWith("Оставлено как есть: форма «a.ui»: занята (Иванова, "),
             qPrintable(done.out));
    QVERIFY(content().contains("\"Планы\"") && content().contains("\"a.ui\""));
    QVERIFY(!content().contains("\"Икс\""));
    ORVO_DONE(run({"unlock", "a.ui"}));
    ORVO_DONE(run({"apply", file}));
    QVERIFY(!content().contains("\"Планы\"") && !content().contains("\"a.ui\""));
}

void TestAdminApply::editorsAreToldOfNewContents() {
    plant();
    const QString file = exported();
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "changed text")}));
    ORVO_DONE(run({"apply", file}));
    // They follow the resources, not the contents.
    const QJsonObject newest =
        QJsonDocument::fromJson(run({"history", "--json", "--limit", "1"}).out.toUtf8()).object();
    QCOMPARE(newest["table"].toString(), QString("MenuResource"));
}

void TestAdminApply::badArgumentsAreRefused() {
    plant();
    const QString file = exported();
    ORVO_REFUSED(run({"apply", m_admin->write("x", "no export")}), "не выгрузка");
    ORVO_REFUSED(run({"apply", file, "--only", "Нет"}), "--only «Нет»: такого нет");
    ORVO_REFUSED(run({"apply", file, "--only", "Нет"}), "можно назвать и ключом");
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFolder\" (\"KeyLink\", \"caption\") VALUES ('g', "
                          "'Цех');"));
    ORVO_REFUSED(run({"apply", exported("two.json"), "--only", "Цех"}), "назовите по ключу: ");
    QFile cut(file);
    QVERIFY(cut.resize(cut.size() / 2));
    const QByteArray before = content();
    ORVO_REFUSED(run({"apply", file}), "выгрузка не прочитана");
    QCOMPARE(content(), before);
}

void TestAdminApply::whatNoStoreCanHoldIsRefused_data() {
    QTest::addColumn<QByteArray>("what");
    QTest::addColumn<QByteArray>("by");
    QTest::addColumn<QString>("message");
    const auto row = [](const char* name, const char* what, const char* by, const char* message) {
        QTest::newRow(name) << QByteArray(what) << QByteArray(by) << QString(message);
    };
    row("key twice", "\"Menu\": [\n", "\"Menu\": [\n{\"KeyLink\":\"A\"},\n",
        "таблица Menu, запись 2 (ключ \"a\"): такой ключ уже есть");
    row("no key", "\"KeyLink\":\"a\",", "", "в ключе KeyLink допустимы только");
    row("file name that leads out", "\"name_\":\"a.ui\",\"time\"", "\"name_\":\"../a.ui\",\"time\"",
        "недопустимое имя файла \"../a.ui\"");
    row("huge size", "\"size\":4", "\"size\":2147483647", "размер содержимого");
    row("inside itself", "\"caption\":\"А\"", "\"parent\":\"b\",\"caption\":\"А\"",
        "внутри самой себя");
}

void TestAdminApply::whatNoStoreCanHoldIsRefused() {
    QFETCH(QByteArray, what);
    QFETCH(QByteArray, by);
    QFETCH(QString, message);
    plant();
    QByteArray json = AdminRun::read(exported());
    QVERIFY2(json.contains(what), json);
    json.replace(json.indexOf(what), what.size(), by);
    const QByteArray before = content();
    const QString file = m_admin->write("bad.json", json);
    ORVO_REFUSED(run({"apply", file}), message);
    QCOMPARE(content(), before);
    if (!message.startsWith("внутри")) // to compare with, what nobody can have is good enough
        ORVO_REFUSED(run({"diff", file}), message);
}

int main(int argc, char** argv) {
    return runOnAllKinds<TestAdminApply>(argc, argv);
}

#include "tst_admin_apply.moc"
