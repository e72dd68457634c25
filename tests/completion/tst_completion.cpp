// The shells complete what --help shows. Each runs here if it is installed.
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Output {
    int code = -1;
    QString out, err;
};

Output run(const QString& program, const QStringList& arguments, const QByteArray& input = {}) {
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert("LC_ALL", "C.UTF-8");
    // The shells look for their own files in the home directory; sanitizers are none of their
    // business.
    variables.insert("HOME", QDir::tempPath());
    process.setProcessEnvironment(variables);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    Output output;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit)
        output.code = process.exitCode();
    output.out = QString::fromUtf8(process.readAllStandardOutput());
    output.err = QString::fromUtf8(process.readAllStandardError());
    return output;
}

QString command(const QString& name) {
    return qEnvironmentVariable("ORVO_BIN_DIR") + '/' + name;
}

QStringList sorted(QStringList words) {
    words.sort();
    return words;
}

} // namespace

class TestCompletion : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

    QString script(const QString& program, const QString& shell) {
        const QString path = m_dir.filePath(program + '.' + shell);
        QFile file(path);
        if (!file.exists() && file.open(QIODevice::WriteOnly))
            file.write(run(command(program), {"--completion", shell}).out.toUtf8());
        return path;
    }
    /// What bash offers for the last of the words.
    QStringList offered(const QString& program, const QStringList& words) {
        const QString function = '_' + QString(program).replace('-', '_');
        QString text = ". '" + script(program, "bash") + "'\ncompopt() { :; }\nCOMP_WORDS=(";
        for (const QString& word : QStringList(program) + words)
            text += "'" + word + "' ";
        text += QString(")\nCOMP_CWORD=%1\n%2\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n")
                    .arg(words.size())
                    .arg(function);
        const Output output = run("bash", {"--norc"}, text.toUtf8());
        if (!output.err.isEmpty())
            qWarning("%s", qPrintable(output.err));
        return output.out.split('\n', Qt::SkipEmptyParts);
    }

private slots:
    void verbsAndTheirSecondWords() {
        const QStringList verbs = offered("orvo-admin", {""});
        for (const char* verb : {"init", "user", "ext", "put", "backup"})
            QVERIFY2(verbs.contains(verb), verb);
        QCOMPARE(verbs.count("user"), 1);
        QCOMPARE(offered("orvo-admin", {"re"}), QStringList("restore"));
        QCOMPARE(sorted(offered("orvo-admin", {"--store", "x.db", "user", ""})),
                 QStringList({"add", "change", "list", "login", "remove"}));
    }

    void optionsOfTheVerb() {
        QCOMPARE(offered("orvo-admin", {"user", "add", "--pr"}), QStringList("--program"));
        QCOMPARE(offered("orvo-admin", {"user", "list", "--j"}), QStringList("--json"));
        QVERIFY(!offered("orvo-admin", {"init", "-"}).contains("--json"));
        QVERIFY(offered("orvo-admin", {"user", "add", "anna", "--last", "x", "-"})
                    .contains("--viewer"));
    }

    void filesDirectoriesAndChoices() {
        QVERIFY(QDir(m_dir.path()).mkpath("a dir"));
        QFile file(m_dir.filePath("a file.db"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QString begin = m_dir.filePath("a");
        QCOMPARE(sorted(offered("orvo-admin", {"--store", begin})),
                 QStringList({m_dir.filePath("a dir"), m_dir.filePath("a file.db")}));
        QCOMPARE(offered("orvo-admin", {"restore", begin + " f"}),
                 QStringList(m_dir.filePath("a file.db")));
        QCOMPARE(offered("orvo-client", {"--work-dir", begin}),
                 QStringList(m_dir.filePath("a dir")));
        QCOMPARE(offered("orvo-client", {"--module", "M"}), QStringList("Menu"));
        QVERIFY(offered("orvo-client", {"--login", ""}).isEmpty());
    }

    void everyOptionOfTheHelpIsOffered() {
        const QString help = run(command("orvo-client"), {"--help"}).out;
        const QStringList all = offered("orvo-client", {"--"});
        auto options = QRegularExpression("--[a-z-]+").globalMatch(help);
        QVERIFY(options.hasNext());
        while (options.hasNext()) {
            const QString option = options.next().captured();
            QVERIFY2(all.contains(option), qPrintable(option));
        }
    }

    void theScriptsAreWellFormed_data() {
        QTest::addColumn<QString>("shell");
        QTest::addColumn<QString>("program");
        for (const char* shell : {"bash", "zsh", "fish"})
            for (const char* program : {"orvo-admin", "orvo-client"})
                QTest::addRow("%s, %s", shell, program) << QString(shell) << QString(program);
    }
    void theScriptsAreWellFormed() {
        QFETCH(QString, shell);
        QFETCH(QString, program);
        if (QStandardPaths::findExecutable(shell).isEmpty())
            QSKIP(qPrintable(shell + " is not installed"));
        const Output output = run(shell, {"-n", script(program, shell)});
        QVERIFY2(output.code == 0 && output.err.isEmpty(), qPrintable(output.err));
    }

    void fishOffersTheSame() {
        if (QStandardPaths::findExecutable("fish").isEmpty())
            QSKIP("fish is not installed");
        const auto offers = [&](const QString& line) {
            const Output output = run("fish", {"--no-config", "-c",
                                               "source '" + script("orvo-admin", "fish") +
                                                   "'; complete -C '" + line + "'"});
            QStringList words;
            for (const QString& one : output.out.split('\n', Qt::SkipEmptyParts))
                words << one.section('\t', 0, 0);
            return sorted(words);
        };
        QCOMPARE(offers("orvo-admin --store x user "),
                 QStringList({"add", "change", "list", "login", "remove"}));
        QCOMPARE(offers("orvo-admin user add --pr"), QStringList("--program"));
        QCOMPARE(offers("orvo-admin check --a"), QStringList("--all"));
        QVERIFY(!offers("orvo-admin history --").contains("--progress"));
    }

    void anUnknownShellIsRefused() {
        for (const char* program : {"orvo-admin", "orvo-client"}) {
            const Output output = run(command(program), {"--completion", "tcsh"});
            QCOMPARE(output.code, 2);
            QCOMPARE(output.err.count('\n'), 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestCompletion)
#include "tst_completion.moc"
