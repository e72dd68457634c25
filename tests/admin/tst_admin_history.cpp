// Who changed what, and how the log forgets.
#include "AdminTest.h"

#include <QProcess>
#include <QRegularExpression>

#include <cstring>

class TestAdminHistory : public AdminTest {
    Q_OBJECT
public:
    using AdminTest::AdminTest;

private slots:
    void anActionTellsWhoWhatAndFromWhatToWhat();
    void changesByHandAreTold();
    void anActionIsTakenBack();
    void whatIsLeftIsNamed();
    void eachFolderThatIsGoneGetsAPlace();
    void aTakenNameIsNamedAndAFreeOneIsOffered();
    void aUserComesBackWithoutHisRights();
    void badUndoIsRefused();
    void undoTellsHowLongItLasts();
    void theNewestComesFirst();
    void filtersLeaveWhatIsAskedFor();
    void theKeyOfAFileFindsItsContentsToo();
    void aDryRunTellsWhereItsRecordsStand();
    void aDryRunTellsTheValuesOfEachField();
    void peopleAreCalledByTheirNames();
    void jsonIsAnObjectALine();
    void hostileFiltersAreData();
    void badFiltersAreRefused_data();
    void badFiltersAreRefused();
    void pruningForgetsOnlyWhatIsOlder();
    void aRowDatedAheadKeepsNothingFromBeingForgotten();
    void pruningForgetsOldBytes();
    void theTimerPrunesAsTheCommandUnderstands();
    void deletedFormsComeBackWithTheirBytes();
    void aDryRunForgetsNothing();
    void aReaderBehindThePrunedChangesNotices();

private:
    /// A program that lets nobody else write until it is killed.
    std::unique_ptr<QProcess> holdWrites() const {
        const QString url = QString::fromStdString(m_kind.url());
        auto shell = std::make_unique<QProcess>();
        if (isPostgres()) {
            shell->start("psql", {"-X", "-q", "-d", url, "-f", "-"});
            shell->write("BEGIN; LOCK TABLE \"MenuResource\" IN EXCLUSIVE MODE; \\echo held\n");
        } else {
            shell->start("sqlite3", {url.mid(int(strlen("sqlite://")))});
            shell->write("BEGIN IMMEDIATE; SELECT 'held';\n");
        }
        return shell->waitForReadyRead(20000) ? std::move(shell) : nullptr;
    }
    void makeUser(const char* login) const {
        QCOMPARE(run({"user", "add", login, "--last", "Иванов"}).code, 0);
    }
};

void TestAdminHistory::anActionTellsWhoWhatAndFromWhatToWhat() {
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "text")}));
    makeUser("anna_h");
    ORVO_DONE(run({"lock", "a.ui", "--login", "anna_h"}));
    const AdminResult result = run({"history", "--limit", "1"});
    QCOMPARE(result.code, 0);
    const QStringList lines = result.lines();
    QCOMPARE(lines.size(), 3);
    const QRegularExpression head(
        "^\\d+  \\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d(Z|[+-]\\d\\d:\\d\\d)  "
        "admin  Занята форма «a.ui»  \\(формы отображения\\)$");
    QVERIFY2(head.match(lines[0]).hasMatch(), qPrintable(result.out));
    QCOMPARE(lines[1], QString("    Кем занята: пусто -> «anna_h»"));
    QVERIFY2(lines[2].startsWith("    Когда занята: пусто -> "), qPrintable(lines[2]));

    ORVO_DONE(run({"unlock", "a.ui"}));
    QVERIFY(run({"history", "--limit", "1"}).lines().value(1).endsWith("» -> пусто"));
}

void TestAdminHistory::changesByHandAreTold() {
    QVERIFY(
        m_kind.byHand("INSERT INTO \"MenuFolder\" (\"KeyLink\", \"caption\", \"isFolder\") VALUES "
                      "('k', 'Стол', '1'), ('l', 'Стул', '1');"));
    QVERIFY(
        m_kind.byHand("UPDATE \"MenuFolder\" SET \"caption\" = 'Пульт' WHERE \"KeyLink\" = 'k';"));
    const QString login = isPostgres() ? "postgres" : "(вручную)";
    const QStringList lines = run({"history", "--table", "MenuFolder"}).lines();
    QCOMPARE(lines.size(), 5);
    QVERIFY(lines[0].endsWith("  " + login +
                              "  Переименована папка рабочих столов «Пульт»: было «Стол»"));
    QCOMPARE(lines[1], QString("    Название: «Стол» -> «Пульт»"));
    QVERIFY(lines[2].endsWith("  " + login + "  Созданы 2 папки рабочих столов: «Стол», «Стул»"));
    QCOMPARE(lines[3], QString("    Создана папка рабочих столов «Стол»"));
    QCOMPARE(lines[4], QString("    Создана папка рабочих столов «Стул»"));
}

void TestAdminHistory::anActionIsTakenBack() {
    QVERIFY(m_kind.byHand(
        "INSERT INTO \"Menu\" (\"KeyLink\", \"caption\") VALUES ('a', 'А'), ('b', 'Б');"));
    const QByteArray before = content();
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = 'Я';"));
    const QString number = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    const QByteArray changed = content();
    const AdminResult dry = run({"undo", number, "--dry-run"});
    QCOMPARE(dry.code, 0);
    QVERIFY2(dry.out.contains("Переименован элемент меню «А»: было «Я»"), qPrintable(dry.out));
    QVERIFY(dry.out.endsWith("записалось бы записей: 2\n"));
    QCOMPARE(content(), changed);
    // By any of its changes.
    ORVO_DONE(run({"undo", QString::number(number.toInt() + 1)}));
    QCOMPARE(content(), before);
    QVERIFY(run({"history", "--limit", "1"})
                .out.contains("  admin  Отменено переименование: 2 элемента меню: «Я», «Я»"));
    ORVO_REFUSED(run({"undo", number}), "Действие " + number + " уже отменено");
    const auto told = [&] {
        return run({"history"}).lines().filter(QRegularExpression('^' + number + ' ')).value(0);
    };
    const auto newest = [&] {
        const AdminResult all = run({"history", "--json", "--table", "Menu", "--key", "a"});
        return QJsonDocument::fromJson(all.lines().value(1).toUtf8()).object();
    };
    QVERIFY2(told().endsWith("Переименованы 2 элемента меню: «Я», «Я» [отменено]"),
             qPrintable(told()));
    QCOMPARE(newest()["action"].toString(), QString("Переименованы 2 элемента меню: «Я», «Я»"));
    QVERIFY(newest()["undone"].toBool());
    ORVO_DONE(run({"undo", run({"history", "--limit", "1"}).out.section(' ', 0, 0)}));
    QCOMPARE(content(), changed);
    QVERIFY2(told().endsWith("«Я», «Я»"), qPrintable(told()));
}

void TestAdminHistory::whatIsLeftIsNamed() {
    QVERIFY(m_kind.byHand("INSERT INTO \"Menu\" (\"KeyLink\", \"caption\") VALUES ('a', 'А');"));
    const QString made = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = '1', \"params\" = '1';"));
    const QString first = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = '2';"));
    const AdminResult result = run({"undo", first});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.out.contains("Оставлено как есть: элемент меню «2», поле «Название»"),
             qPrintable(result.out));
    const QByteArray before = content();
    const AdminResult asking = run({"undo", made});
    QVERIFY2(asking.err.contains("решите, как быть (--with-others или без этого --partly)"),
             qPrintable(asking.err));
    QCOMPARE(content(), before);
    QCOMPARE(run({"undo", made, "--with-others"}).code, 0);
    QVERIFY(!content().contains("\"caption\":\"2\""));
}

void TestAdminHistory::eachFolderThatIsGoneGetsAPlace() {
    QVERIFY(m_kind.byHand("INSERT INTO \"Menu\" (\"KeyLink\", \"parent\") VALUES ('f', NULL), "
                          "('g', NULL), ('x', 'f'), ('y', 'g');"));
    QVERIFY(m_kind.byHand("DELETE FROM \"Menu\" WHERE \"parent\" IS NOT NULL;"));
    const QString number = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    QVERIFY(m_kind.byHand("DELETE FROM \"Menu\";"));
    QVERIFY(run({"undo", number, "--place", "f="}).err.contains("решите, как быть"));
    QCOMPARE(run({"undo", number, "--place", "f=", "--place", "g="}).code, 0);
    QVERIFY(content().contains("\"x\"") && content().contains("\"y\""));
}

void TestAdminHistory::aTakenNameIsNamedAndAFreeOneIsOffered() {
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "first")}));
    QVERIFY(m_kind.byHand("DELETE FROM \"MenuResource\";"));
    const QString deletion = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "second")}));
    const QByteArray before = content();
    const AdminResult asking = run({"undo", deletion});
    QVERIFY2(asking.out.contains("Не возвращено: форма «a.ui»: имя «a.ui» уже занято (admin, "),
             qPrintable(asking.out));
    QVERIFY2(asking.err.contains("(--other-names или без этого --partly)"), qPrintable(asking.err));
    QCOMPARE(content(), before);
    ORVO_DONE(run({"undo", deletion, "--other-names"}));
    QVERIFY(content().contains("a (2).ui"));

    // Nothing helps with what gets no other name.
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" (\"KeyLink\", \"fileExt\") VALUES ('e', "
                          "'.svg');"));
    QVERIFY(m_kind.byHand("DELETE FROM \"MenuFileExt\" WHERE \"KeyLink\" = 'e';"));
    const QString extension = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" (\"KeyLink\", \"fileExt\") VALUES ('f', "
                          "'.svg');"));
    const AdminResult taken = run({"undo", extension});
    QVERIFY2(taken.err.contains("решите, как быть (--partly)"), qPrintable(taken.err));
}

void TestAdminHistory::aUserComesBackWithoutHisRights() {
    const auto mayWrite = [&] {
        QByteArray found;
        return m_kind.byHand("SELECT pg_has_role('anna_u', 'orvo_engineer', 'MEMBER');", &found) &&
               found == "t";
    };
    const auto newest = [&] { return run({"history", "--limit", "1"}).out.section(' ', 0, 0); };
    ORVO_DONE(run({"user", "add", "anna_u"}));
    const QString made = newest();
    const QString users = run({"user", "list"}).out;
    ORVO_DONE(run({"user", "remove", "anna_u"}));
    const AdminResult back = run({"undo", newest()});
    QCOMPARE(run({"user", "list"}).out, users);
    QCOMPARE(back.code, isPostgres() ? 1 : 0);
    if (isPostgres()) {
        QVERIFY2(back.out.contains("Без прав на сервере: пользователь «anna_u»: их даёт orvo-admin "
                                   "user login anna_u"),
                 qPrintable(back.out));
        QVERIFY(!mayWrite());
        ORVO_DONE(run({"user", "login", "anna_u"}));
        QVERIFY(mayWrite());
    }
    // Nor does he go without them.
    const AdminResult gone = run({"undo", made});
    QCOMPARE(run({"user", "list"}).out, isPostgres() ? users : QString());
    if (isPostgres()) {
        QVERIFY2(gone.refused("Не удалено: пользователь «anna_u»: вместе с правами на сервере его "
                              "убирает orvo-admin user remove anna_u"),
                 qPrintable(gone.err));
        ORVO_DONE(run({"user", "remove", "anna_u"}));
        QVERIFY(m_kind.byHand("DROP ROLE anna_u;"));
    }
}

void TestAdminHistory::badUndoIsRefused() {
    ORVO_REFUSED(run({"undo", "x"}), "«x» не номер изменения");
    ORVO_REFUSED(run({"undo", "0"}), "не номер изменения");
    ORVO_REFUSED(run({"undo", "9223372036854775807"}), "не номер изменения");
    ORVO_REFUSED(run({"undo", "999999"}), "изменения 999999 в журнале нет");
    ORVO_REFUSED(run({"undo", "1", "--place", "x"}), "--place «x»");
}

void TestAdminHistory::undoTellsHowLongItLasts() {
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "text")}));
    const QString number = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    const std::unique_ptr<QProcess> other = holdWrites();
    QVERIFY(other);
    QProcess undo;
    undo.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin",
               onStore(m_kind, {"undo", "--progress", number}));
    QByteArray told;
    QTRY_VERIFY2((undo.waitForReadyRead(100), told += undo.readAllStandardError()).contains(" с\n"),
                 told);
    QVERIFY2(told.startsWith("отмена: 1 с\n"), told);
    other->kill();
    QVERIFY(other->waitForFinished());
    QVERIFY(undo.waitForFinished());
    QCOMPARE(undo.exitCode(), 0);
}

void TestAdminHistory::theNewestComesFirst() {
    // More than are read at a time.
    ORVO_DONE(run({"demo", "--scale", "3000"}));
    const QStringList lines = run({"history", "--json"}).lines();
    QVERIFY(lines.size() > 6000);
    double last = 1e18;
    for (const QString& line : lines) {
        const double id = QJsonDocument::fromJson(line.toUtf8()).object()["id"].toDouble();
        QVERIFY(id < last);
        last = id;
    }
    QCOMPARE(last, 1.0);
    QCOMPARE(run({"history", "--json", "--limit", "2500"}).lines(), lines.mid(0, 2500));
}

void TestAdminHistory::filtersLeaveWhatIsAskedFor() {
    makeUser("anna_h");
    QVERIFY(m_kind.byHand("UPDATE \"Users\" SET \"lastName\" = 'Петрова';"));
    const QJsonObject newest =
        QJsonDocument::fromJson(run({"history", "--json", "--limit", "1"}).out.toUtf8()).object();
    const QString key = newest["key"].toString();
    const auto count = [&](const QStringList& filter) {
        return run(QStringList{"history", "--json"} + filter).lines().size();
    };
    const QString hand = QString::fromUtf8(m_kind.handLogin());
    QCOMPARE(count({"--text", "пЕТров"}), 1);
    ORVO_REFUSED(run({"history", "--within", key}), "--within");
    QCOMPARE(count({}), 6); // four folders
    QCOMPARE(count({"--table", "Users"}), 2);
    QCOMPARE(count({"--table", "Users", "--key", key.toUpper()}), 2);
    QCOMPARE(count({"--table", "Menu", "--key", key}), 0);
    QCOMPARE(count({"--user", hand}), 1);
    QCOMPARE(count({"--user", "admin"}), 5);
    QCOMPARE(count({"--user", "adm%"}), 0);
    QCOMPARE(count({"--since", "1h"}), 6);
    QCOMPARE(count({"--until", "1h"}), 0);
    const QDateTime moment =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(newest["time"].toDouble() * 1000));
    QCOMPARE(count({"--since", moment.addDays(1).date().toString(Qt::ISODate)}), 0);
    QCOMPARE(count({"--until", moment.addDays(1).date().toString(Qt::ISODate)}), 6);
    QCOMPARE(count({"--until", moment.addSecs(2).toUTC().toString(Qt::ISODate)}), 6);
}

void TestAdminHistory::theKeyOfAFileFindsItsContentsToo() {
    const QString folder = "Документы";
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuResourceFolder\" (\"KeyLink\", \"caption\", "
                          "\"type_\") VALUES ('docs', 'Документы', 4);"));
    for (const char* text : {"one", "another", "and the third"})
        ORVO_DONE(run({"put", "file", m_admin->write("src/aaa.txt", text), "--path", folder}));
    QByteArray key;
    QVERIFY(m_kind.byHand("SELECT \"KeyLink\" FROM \"MenuResource\";", &key));
    const QStringList lines = run({"history", "--key", QString::fromUtf8(key.trimmed())})
                                  .lines()
                                  .filter(QRegularExpression("^[0-9]"));
    QCOMPARE(lines.size(), 3);
    for (const QString& line : {lines[0], lines[1]})
        QVERIFY2(line.endsWith("  Изменено содержимое файла «aaa.txt»  (Документы)"),
                 qPrintable(line));
    QVERIFY2(lines[2].endsWith("  Создан файл «aaa.txt»  (Документы)"), qPrintable(lines[2]));
    QCOMPARE(run({"history", "--json", "--key", QString::fromUtf8(key.trimmed())}).lines().size(),
             4);
}

void TestAdminHistory::aDryRunTellsWhereItsRecordsStand() {
    QVERIFY(m_kind.byHand(
        "INSERT INTO \"MenuFolder\" (\"KeyLink\", \"caption\") VALUES ('d', 'Стол');"
        "INSERT INTO \"Menu\" (\"KeyLink\", \"caption\", \"FolderKey\", \"parent\") VALUES "
        "('a', 'А', 'd', NULL), ('b', 'Б', 'd', 'a');"));
    QVERIFY(m_kind.byHand("DELETE FROM \"Menu\" WHERE \"KeyLink\" = 'b';"));
    const QString number = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    const AdminResult dry = run({"undo", number, "--dry-run"});
    QCOMPARE(dry.lines().value(0), QString("  Создан элемент меню «Б»  (Стол / А)"));
}

void TestAdminHistory::aDryRunTellsTheValuesOfEachField() {
    QVERIFY(m_kind.byHand("INSERT INTO \"Menu\" (\"KeyLink\", \"caption\", \"params\") VALUES "
                          "('a', 'А', 'x=1');"));
    QTest::qWait(5); // another statement
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"params\" = 'x=2';"));
    const QString number = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    const QStringList told = {"  Изменён элемент меню «А»", "      Параметры: «x=2» -> «x=1»"};
    QCOMPARE(run({"undo", number, "--dry-run"}).lines().mid(0, 2), told);
    QCOMPARE(run({"undo", number}).lines().mid(0, 2), told);
}

void TestAdminHistory::peopleAreCalledByTheirNames() {
    ORVO_DONE(run({"user", "add", "anna_n", "--last", "Иванова", "--first", "Анна"}));
    orvo::store::Status status;
    const auto anna = orvo::store::openMaintained(m_kind.url(), {"anna_n", false}, &status);
    QVERIFY2(anna, status.text.c_str());
    using orvo::store::test::Batch;
    QVERIFY(Batch("Menu").insert("a", {{"caption", "А"}}).send(*anna).ok());
    const auto newest = [&] { return run({"history", "--limit", "1"}).out; };
    const QString made = newest().section(' ', 0, 0);
    QVERIFY2(newest().section('\n', 0, 0).endsWith("  Иванова А.  Создан элемент меню «А»"),
             qPrintable(newest()));
    const QJsonObject change =
        QJsonDocument::fromJson(run({"history", "--json", "--limit", "1"}).out.toUtf8()).object();
    QCOMPARE(change["login"].toString(), QString("anna_n"));
    QCOMPARE(change["name"].toString(), QString("Иванова А."));
    // So are those whose work is left.
    ORVO_DONE(run({"undo", made}));
    const QString undone = newest().section(' ', 0, 0);
    ORVO_DONE(run({"undo", undone}));
    QVERIFY(Batch("Menu").insert("b", {{"caption", "Б"}, {"parent", "a"}}).send(*anna).ok());
    const AdminResult asking = run({"undo", made, "--dry-run"});
    QVERIFY2(asking.out.contains("на этом построено другое (Иванова А., "),
             qPrintable(asking.out + asking.err));
}

void TestAdminHistory::jsonIsAnObjectALine() {
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" VALUES ('k', 'a\"b');"));
    const QJsonObject object =
        QJsonDocument::fromJson(run({"history", "--json", "--limit", "1"}).out.toUtf8()).object();
    QCOMPARE(object["code"].toInt(), 601);
    QCOMPARE(object["table"].toString(), QString("MenuFileExt"));
    QCOMPARE(object["after"].toObject()["fileExt"].toString(), QString("a\"b"));
    QCOMPARE(object["group"].toInt(), object["id"].toInt());
    QCOMPARE(object["client"].toString(), QString(isPostgres() ? "psql" : ""));
    QCOMPARE(object["words"].toString(), QString("Создано расширение файлов «a\"b»"));
    QVERIFY(object["before"].toObject().isEmpty());
}

void TestAdminHistory::hostileFiltersAreData() {
    for (const char* text : {"' OR '1'='1", "\\' OR 1=1 --", "\";--", "%"}) {
        QCOMPARE(run({"history", "--user", text}).out, QString());
        const AdminResult byKey = run({"history", "--key", text});
        QCOMPARE(byKey.code, 0);
        QCOMPARE(byKey.out, QString());
    }
}

void TestAdminHistory::badFiltersAreRefused_data() {
    QTest::addColumn<QStringList>("filter");
    QTest::addColumn<QString>("message");
    QTest::newRow("table") << QStringList{"--table", "menu"} << "таблицы «menu» нет";
    QTest::newRow("no key") << QStringList{"--key", ""} << "--key «»";
    QTest::newRow("since") << QStringList{"--since", "вчера"} << "--since «вчера»";
    QTest::newRow("month 13") << QStringList{"--until", "2026-13-01"} << "--until";
    QTest::newRow("no age") << QStringList{"--since", "-5d"} << "--since";
    QTest::newRow("endless age") << QStringList{"--since", "99999999999999d"} << "--since";
    QTest::newRow("limit") << QStringList{"--limit", "0"} << "--limit";
}

void TestAdminHistory::badFiltersAreRefused() {
    QFETCH(QStringList, filter);
    QFETCH(QString, message);
    ORVO_REFUSED(run(QStringList{"history"} + filter), message);
}

void TestAdminHistory::pruningForgetsOnlyWhatIsOlder() {
    makeUser("anna_h");
    // The first three changes are old.
    QVERIFY(
        m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 864000 WHERE \"id\" <= 3;"));
    const QByteArray before = content();
    ORVO_REFUSED(run({"prune", "--older-than", "2999-01-01"}), "ещё не наступило");
    const AdminResult result = run({"prune", "--older-than", "9d"});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.endsWith(": 3, забыты\n"), qPrintable(result.out));
    QCOMPARE(run({"history", "--json"}).lines().size(), 2);
    QVERIFY(run({"prune", "--older-than", "9d"}).out.endsWith(": 0, забывать нечего\n"));
    QCOMPARE(content(), before);
}

void TestAdminHistory::aRowDatedAheadKeepsNothingFromBeingForgotten() {
    makeUser("anna_h");
    // The first three changes are old, the second says that it is of next year.
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 864000 WHERE \"id\" <= 3;"
                          "UPDATE \"NciEvent\" SET \"time\" = \"time\" + 31536000 WHERE \"id\" = "
                          "2;"));
    const AdminResult result = run({"prune", "--older-than", "9d"});
    QVERIFY2(result.out.endsWith(": 3, забыты\n"), qPrintable(result.out + result.err));
    QCOMPARE(run({"history", "--json"}).lines().size(), 2);
}

void TestAdminHistory::pruningForgetsOldBytes() {
    for (const char* text : {"1", "22", "333"})
        ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", text)}));
    QVERIFY(m_kind.byHand("UPDATE \"NciVersion\" SET \"time\" = \"time\" - 864000 WHERE \"size\" = "
                          "1;"));
    QVERIFY(run({"prune"}).out.endsWith(": 0, забывать нечего\n"));
    QVERIFY(
        run({"prune", "--versions-older-than", "9d", "--dry-run"}).out.endsWith(": 1 (байт: 1)\n"));
    QVERIFY(run({"prune", "--versions-older-than", "9d"}).out.endsWith(": 1, забыты (байт: 1)\n"));
    QVERIFY(run({"prune", "--versions-limit", "0"}).out.endsWith(": 1, забыты (байт: 2)\n"));
    ORVO_REFUSED(run({"prune", "--versions-limit", "x"}), "--versions-limit «x»");
    ORVO_REFUSED(run({"prune", "--versions-older-than", "2999-01-01"}), "ещё не наступило");
}

void TestAdminHistory::theTimerPrunesAsTheCommandUnderstands() {
    const QString directory = qEnvironmentVariable("ORVO_SOURCE_DIR") + "/packaging/systemd/";
    QVERIFY(AdminRun::read(directory + "orvo-prune.timer").contains("OnCalendar="));
    const QString service = QString::fromUtf8(AdminRun::read(directory + "orvo-prune.service"));
    const auto command = QRegularExpression("^ExecStart=/usr/bin/orvo-admin --store "
                                            "\\$\\{ORVO_STORE\\} (.*)$",
                                            QRegularExpression::MultilineOption)
                             .match(service);
    QVERIFY(command.hasMatch());
    QVERIFY(m_kind.byHand("INSERT INTO \"Menu\" (\"KeyLink\") VALUES ('a');"));
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 80000000.0;"));
    QVERIFY(m_kind.byHand("INSERT INTO \"Menu\" (\"KeyLink\") VALUES ('b');"));
    const QByteArray before = content();
    ORVO_DONE(run(command.captured(1).split(' ')));
    QCOMPARE(content(), before);
    const QString history = run({"history", "--table", "Menu"}).out;
    QCOMPARE(history.count("Создан элемент меню"), 1);
}

void TestAdminHistory::deletedFormsComeBackWithTheirBytes() {
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "text")}));
    const QByteArray before = content();
    QVERIFY(m_kind.byHand("DELETE FROM \"MenuResource\";"));
    QVERIFY(content() != before);
    ORVO_DONE(run({"undo", run({"history", "--limit", "1"}).out.section(' ', 0, 0)}));
    QCOMPARE(content(), before);
    QCOMPARE(run({"check"}).code, 0);
}

void TestAdminHistory::aDryRunForgetsNothing() {
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 864000;"));
    QVERIFY(run({"prune", "--older-than", "9d", "--dry-run"}).out.endsWith(": 4\n"));
    QCOMPARE(run({"history", "--json"}).lines().size(), 4);
}

void TestAdminHistory::aReaderBehindThePrunedChangesNotices() {
    const auto reader = open();
    QVERIFY(reader);
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 864000;"));
    QVERIFY(!run({"history"}).out.contains("журнал уже не помнит"));
    const QString number = run({"history", "--limit", "1"}).out.section(' ', 0, 0);
    QCOMPARE(run({"prune", "--older-than", "9d"}).code, 0);
    QCOMPARE(run({"history"}).out, QString("более старое журнал уже не помнит\n"));
    ORVO_REFUSED(run({"undo", number}), "изменения " + number + " журнал уже не помнит");
    std::vector<orvo::store::Change> changes;
    QCOMPARE(reader->readLog(2, 10, &changes).code, int(orvo::store::LogPruned));
    QCOMPARE(reader->readLog(4, 10, &changes).code, int(orvo::store::Ok));
}

int main(int argc, char** argv) {
    return runOnAllKinds<TestAdminHistory>(argc, argv);
}
#include "tst_admin_history.moc"
