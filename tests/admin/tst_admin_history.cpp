// Who changed what, and how the log forgets.
#include "AdminTest.h"

class TestAdminHistory : public AdminTest {
    Q_OBJECT
public:
    using AdminTest::AdminTest;

private slots:
    void aChangeTellsWhoWhatAndFromWhatToWhat();
    void changesByHandAreTold();
    void theNewestComesFirst();
    void filtersLeaveWhatIsAskedFor();
    void jsonIsAnObjectALine();
    void hostileFiltersAreData();
    void badFiltersAreRefused_data();
    void badFiltersAreRefused();
    void pruningForgetsOnlyWhatIsOlder();
    void aDryRunForgetsNothing();
    void aReaderBehindThePrunedChangesNotices();

private:
    void makeUser(const char* login) const {
        QCOMPARE(run({"user", "add", login, "--last", "Иванов"}).code, 0);
    }
};

void TestAdminHistory::aChangeTellsWhoWhatAndFromWhatToWhat() {
    ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "text")}));
    makeUser("anna_h");
    ORVO_DONE(run({"lock", "a.ui", "--login", "anna_h"}));
    const AdminResult result = run({"history", "--limit", "1"});
    QCOMPARE(result.code, 0);
    const QStringList lines = result.lines();
    QCOMPARE(lines.size(), 3);
    const QRegularExpression head(
        "^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d(Z|[+-]\\d\\d:\\d\\d)  "
        "admin  изменено  MenuResource  \\S+");
    QVERIFY2(head.match(lines[0]).hasMatch(), qPrintable(result.out));
    QVERIFY2(lines[1].startsWith("    UsersKey: пусто -> «"), qPrintable(lines[1]));
    QVERIFY2(lines[2].startsWith("    dateTimeEdit: пусто -> 20"), qPrintable(lines[2]));

    ORVO_DONE(run({"unlock", "a.ui"}));
    QVERIFY(run({"history", "--limit", "1"}).lines().value(1).endsWith("» -> пусто"));
}

void TestAdminHistory::changesByHandAreTold() {
    QVERIFY(
        m_kind.byHand("INSERT INTO \"MenuFolder\" (\"KeyLink\", \"caption\", \"isFolder\") VALUES "
                      "('k', 'Стол', "
                      "'1');"));
    QVERIFY(m_kind.byHand("UPDATE \"MenuFolder\" SET \"caption\" = 'Пульт';"));
    QVERIFY(m_kind.byHand("DELETE FROM \"MenuFolder\";"));
    const QString login = isPostgres() ? "postgres" : "(вручную)";
    const QStringList lines = run({"history", "--table", "MenuFolder"}).lines();
    QCOMPARE(lines.size(), 8);
    QVERIFY(lines[0].endsWith("  " + login + "  удалено  MenuFolder  k  «Пульт»"));
    QCOMPARE(lines[1], QString("    caption: «Пульт»"));
    QCOMPARE(lines[2], QString("    isFolder: да"));
    QVERIFY(lines[3].endsWith("  " + login + "  изменено  MenuFolder  k  «Пульт»"));
    QCOMPARE(lines[4], QString("    caption: «Стол» -> «Пульт»"));
    QVERIFY(lines[5].endsWith("  " + login + "  добавлено  MenuFolder  k  «Стол»"));
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

void TestAdminHistory::jsonIsAnObjectALine() {
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" VALUES ('k', 'a\"b');"));
    const QJsonObject object =
        QJsonDocument::fromJson(run({"history", "--json", "--limit", "1"}).out.toUtf8()).object();
    QCOMPARE(object["code"].toInt(), 601);
    QCOMPARE(object["table"].toString(), QString("MenuFileExt"));
    QCOMPARE(object["after"].toObject()["fileExt"].toString(), QString("a\"b"));
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
    ORVO_REFUSED(run({"prune"}), "--older-than");
    ORVO_REFUSED(run({"prune", "--older-than", "2999-01-01"}), "ещё не наступило");
    const AdminResult result = run({"prune", "--older-than", "9d"});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.endsWith(": 3, забыты\n"), qPrintable(result.out));
    QCOMPARE(run({"history", "--json"}).lines().size(), 2);
    QVERIFY(run({"prune", "--older-than", "9d"}).out.endsWith(": 0, забывать нечего\n"));
    QCOMPARE(content(), before);
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
    QCOMPARE(run({"prune", "--older-than", "9d"}).code, 0);
    std::vector<orvo::store::Change> changes;
    QCOMPARE(reader->readLog(2, 10, &changes).code, int(orvo::store::LogPruned));
    QCOMPARE(reader->readLog(4, 10, &changes).code, int(orvo::store::Ok));
}

int main(int argc, char** argv) {
    return runOnAllKinds<TestAdminHistory>(argc, argv);
}
#include "tst_admin_history.moc"
