// The manual pages: well-formed, and complete about the command.
#include "AdminRun.h"

#include <QDirIterator>
#include <QHash>
#include <QtTest>

class TestManPages : public QObject {
    Q_OBJECT

private slots:
    void pagesFormatWithoutWarnings_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("admin") << "orvo-admin.1";
        QTest::newRow("client") << "orvo-client.1";
    }

    void pagesFormatWithoutWarnings() {
        QFETCH(QString, name);
        if (QStandardPaths::findExecutable("man").isEmpty() ||
            QStandardPaths::findExecutable("groff").isEmpty())
            QSKIP("man or groff is not installed");
        QProcess man;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("LC_ALL", "C.UTF-8");
        environment.insert("MANWIDTH", "100");
        environment.insert("MANROFFOPT", "");
        man.setProcessEnvironment(environment);
        man.start("man", {"--warnings", "-E", "UTF-8", "-l", page(name)});
        QVERIFY(man.waitForFinished());
        QCOMPARE(QString::fromUtf8(man.readAllStandardError()), QString());
        QCOMPARE(man.exitCode(), 0);
        const QString text = QString::fromUtf8(man.readAllStandardOutput());
        QVERIFY2(text.contains("ИМЯ") && text.contains("КОДЫ ЗАВЕРШЕНИЯ"),
                 qPrintable(text.left(300)));
    }

    /// The last chapter but one of the administrator's page: what is promised, and by which tests
    /// it is held.
    void everyPromiseNamesATestThatThereIs() {
        const QString root = qEnvironmentVariable("ORVO_SOURCE_DIR");
        const QString text = QString::fromUtf8(AdminRun::read(root + "/docs/administrator.md"));
        const QString chapter =
            text.section("## Что обещано и чем проверено", 1).section("Не обещано:", 0, 0);
        const QStringList rows =
            chapter.split('\n').filter(QRegularExpression("^\\| (?!Обещано|---)"));
        QVERIFY(rows.size() >= 25);
        QHash<QString, QByteArray> tests;
        QDirIterator files(root + "/tests", {"tst_*.cpp", "*Test.h"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString file = files.next();
            tests[files.fileInfo().completeBaseName()] += AdminRun::read(file);
        }
        for (const QString& row : rows) {
            auto names = QRegularExpression("`([A-Za-z_]+)`").globalMatch(row.section('|', 2));
            QByteArray test;
            while (names.hasNext()) {
                const QString name = names.next().captured(1);
                if (name.startsWith("tst_"))
                    test = tests.value(name);
                QVERIFY2(!test.isEmpty(), qPrintable(name + " is no test: " + row));
                QVERIFY2(name.startsWith("tst_") || test.contains(name.toUtf8() + "()"),
                         qPrintable(name + " is no case: " + row));
            }
            QVERIFY2(!test.isEmpty(), qPrintable("without a test: " + row));
        }
    }

    void theAdminPageNamesEveryVerbAndOption() {
        QString text = QString::fromUtf8(AdminRun::read(page("orvo-admin.1")));
        QVERIFY(!text.isEmpty());
        text.replace("\\-", "-");
        const AdminRun admin;
        const QString help = admin.plain({"--help"}).out;
        const QStringList lines = help.section("Действия:\n", 1).section("\n\n", 0, 0).split('\n');
        QVERIFY(lines.size() >= 15);
        for (const QString& line : lines) {
            const QString verb = line.trimmed().section(QRegularExpression("\\s{2,}"), 0, 0);
            QVERIFY2(text.contains("\n.B " + verb) || text.contains("\n.BI \"" + verb),
                     qPrintable("not in the page: " + verb));
            const QString verbHelp = admin.plain(verb.split(' ') + QStringList("--help")).out;
            auto options = QRegularExpression("--[a-z-]+").globalMatch(verbHelp);
            while (options.hasNext()) {
                const QString option = options.next().captured();
                QVERIFY2(text.contains(option), qPrintable(verb + " " + option));
            }
        }
    }

private:
    static QString page(const QString& name) {
        return qEnvironmentVariable("ORVO_SOURCE_DIR") + "/docs/man/" + name;
    }
};

QTEST_GUILESS_MAIN(TestManPages)
#include "tst_man_pages.moc"
