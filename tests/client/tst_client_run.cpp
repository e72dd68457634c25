// The program as a user starts it, with a module library of its own beside it.
#include "tests/client/HostFixture.h"
#include "tests/store/HostileUrls.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QtTest>

using namespace orvo::test;

namespace {

struct Result {
    int code = -1;
    bool crashed = false;
    QStringList errors; ///< lines of standard error
    QString output;
};

/// A place like an installation: the program, the libraries and, if asked for, the module library.
struct Place : Host {
    QString program = dir.path() + "/bin/orvo-client";
    QString modules = QDir::cleanPath(dir.path() + "/bin/" ORVO_MODULE_PATH);
    QString work = dir.path() + "/place/";

    explicit Place(bool withLibrary = true) {
        QDir().mkpath(dir.path() + "/bin");
        QDir().mkpath(modules);
        const QDir libraries(qEnvironmentVariable("ORVO_LIB_DIR"));
        for (const QString& name : libraries.entryList({"libOrvo*.so.*"}))
            QFile::link(libraries.filePath(name), dir.path() + "/lib/" + name);
        const QString binary = qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client";
        if (!QFile::copy(binary, program))
            qFatal("no program at %s", qUtf8Printable(binary));
        const QString library = QCoreApplication::applicationDirPath() + "/libOrvoTestModules.so";
        if (withLibrary && !QFile::copy(library, modules + "/libOrvoMenu.so"))
            qFatal("no library at %s", qUtf8Printable(library));
    }
    Result run(const QStringList& arguments, const QStringList& environment = {}) const {
        QProcess process;
        QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
        variables.insert("QT_QPA_PLATFORM", "offscreen");
        for (const QString& one : environment) {
            const int at = one.indexOf('=');
            if (at < 0)
                variables.remove(one);
            else
                variables.insert(one.left(at), one.mid(at + 1));
        }
        process.setProcessEnvironment(variables);
        process.start(program, arguments);
        Result result;
        if (!process.waitForFinished(90000)) {
            process.kill();
            process.waitForFinished();
            return result;
        }
        result.code = process.exitCode();
        result.crashed = process.exitStatus() != QProcess::NormalExit;
        result.output = QString::fromUtf8(process.readAllStandardOutput());
        const QString errors = QString::fromUtf8(process.readAllStandardError());
        for (const QString& line : errors.split('\n', Qt::SkipEmptyParts))
            if (!line.contains("propagateSizeHints")) // said by Qt's plugin without a display
                result.errors << line;
        return result;
    }
    QStringList usual(const QStringList& more = {}) const {
        return QStringList{"--store",    QString::fromStdString(url),
                           "--login",    "engineer",
                           "--work-dir", work} +
               more;
    }
};

QStringList linesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly)
               ? QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)
               : QStringList();
}

} // namespace

#define QVERIFY_ONE_LINE(result)                                                                   \
    QVERIFY(!(result).crashed);                                                                    \
    QVERIFY2((result).errors.size() == 1, qPrintable((result).errors.join('\n')));                 \
    QVERIFY((result).errors[0].startsWith("orvo-client: "))

class TestClientRun : public QObject {
    Q_OBJECT
private slots:
    void helpAndVersionNeedNoDisplay() {
        Place place;
        const QStringList bare{"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"};
        Result help = place.run({"--help"}, bare);
        QCOMPARE(help.code, 0);
        QVERIFY(help.output.contains("--screenshot"));
        Result version = place.run({"--version"}, bare);
        QCOMPARE(version.code, 0);
        QVERIFY(version.output.startsWith("orvo-client "));
    }

    void wrongCommandLinesAreOneLineAndCodeTwo() {
        Place place;
        for (const QStringList& arguments :
             {QStringList("--what"), QStringList({"--module", "Другой"}), QStringList("file"),
              QStringList("--store")}) {
            const Result result = place.run(arguments);
            QCOMPARE(result.code, 2);
            QVERIFY_ONE_LINE(result);
        }
    }

    void noPasswordOfAnAddressIsRepeated() {
        Place place;
        const QString work = place.dir.path() + "/none/";
        for (const char* text : orvo::store::test::hostileUrls) {
            const QString url = QString::fromUtf8(text);
            // Where it belongs, and where somebody forgot "--store".
            for (const QStringList& words :
                 {QStringList{"--store", url, "--work-dir", work}, QStringList{url}}) {
                const Result result = place.run(words);
                QVERIFY(result.code == 1 || result.code == 2);
                QVERIFY_ONE_LINE(result);
                for (const char* part : orvo::store::test::secretParts)
                    QVERIFY2(!result.errors[0].contains(part), qPrintable(result.errors[0]));
            }
        }
    }

    void withoutADisplayItSaysWhatToDo() {
        Place place;
        Result result = place.run(place.usual(), {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"});
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
        QVERIFY(result.errors[0].contains("DISPLAY"));
    }

    void aDisplayThatDoesNotAnswerIsNoCrash() {
        Place place;
        Result result = place.run(place.usual(), {"QT_QPA_PLATFORM=xcb", "DISPLAY=:4711"});
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
        QVERIFY(result.errors[0].contains(":4711"));
    }

    void aMissingStoreIsNamed() {
        Place place;
        Result result = place.run(
            {"--store", place.dir.path() + "/none.db", "--work-dir", place.work, "--login", "x"});
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
        QVERIFY(result.errors[0].contains("none.db"));
        QVERIFY(result.errors[0].contains("orvo-admin")); // what to do
        QVERIFY(!QFileInfo::exists(place.dir.path() + "/none.db"));
    }

    void theAdviceOnAMissingStoreWorks() {
        Place place;
        const QStringList rest{"--work-dir", place.work, "--login", "x"};
        const auto advice = [](const Result& result) {
            return result.errors.value(0).section("; ", -1);
        };
        QDir().mkpath(place.dir.path() + "/a b");
        const QString file = place.dir.path() + "/a b/new.db";
        const Result named = place.run(QStringList{"--store", file} + rest);
        QCOMPARE(advice(named), "новое хранилище делает orvo-admin --store '" + file + "' init");
        const Result mistyped =
            place.run(QStringList{"--store", place.dir.path() + "/c/new.db"} + rest);
        QCOMPARE(advice(mistyped), "каталога " + place.dir.path() + "/c нет");
        // Whoever wants a picture is not asked which store to open.
        const Result usual =
            place.run(rest + QStringList{"--screenshot", place.dir.path() + "/a.png"},
                      {"XDG_DATA_HOME=" + place.dir.path() + "/home"});
        QCOMPARE(advice(usual), QString("новое хранилище делает orvo-admin init"));
        QProcess admin;
        for (const QString& command : {advice(named), advice(usual)}) {
            admin.setProgram("/bin/sh");
            admin.setArguments({"-c", "PATH=" + qEnvironmentVariable("ORVO_BIN_DIR") +
                                          ":$PATH XDG_DATA_HOME='" + place.dir.path() + "/home' " +
                                          command.section("делает ", 1)});
            admin.start();
            QVERIFY(admin.waitForFinished(60000));
            QVERIFY2(admin.exitCode() == 0, admin.readAllStandardError().constData());
        }
    }

    void aFileThatIsNoStoreIsRefused() {
        Place place;
        QFile file(place.dir.path() + "/text.db");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("not a database at all, but quite some text in a file");
        file.close();
        Result result =
            place.run({"--store", file.fileName(), "--work-dir", place.work, "--login", "x"});
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
    }

    void aWorkDirectoryThatCannotBeIsNamed() {
        Place place;
        QFile file(place.dir.path() + "/file");
        QVERIFY(file.open(QIODevice::WriteOnly));
        Result result = place.run({"--store", QString::fromStdString(place.url), "--work-dir",
                                   file.fileName() + "/below", "--login", "x"});
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
        QVERIFY(result.errors[0].contains("below"));
    }

    void aMissingModuleLibraryIsNamed() {
        Place place(false);
        Result result = place.run(place.usual());
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
        QVERIFY(result.errors[0].contains(place.modules));
        QVERIFY(result.errors[0].contains("libOrvo*.so"));
    }

    void aLibraryWithoutTheEntryIsNamed() {
        Place place(false);
        // A library of the system that certainly has no such function.
        QFile maps("/proc/self/maps");
        QVERIFY(maps.open(QIODevice::ReadOnly));
        QString other;
        for (const QByteArray& line : maps.readAll().split('\n'))
            if (line.contains("libsqlite3.so"))
                other = QString::fromUtf8(line.mid(line.indexOf('/')));
        QVERIFY(!other.isEmpty());
        QVERIFY(QFile::copy(other, place.modules + "/libOrvoMenu.so"));
        Result result = place.run(place.usual());
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
        QVERIFY(result.errors[0].contains("CppCliModule"));
    }

    void theScreenshotShowsTheModulesAndMirrorsTheIcons() {
        Place place;
        place.write("MenuResourceFolder", 1,
                    {{"KeyLink", "f"}, {"type_", "4"}, {"caption", "icons"}});
        Module module(&place.app);
        CToolFilePut put(&module);
        put.AddFile("icons", "a.png", "abc", 3, 1);
        put.Perform(false);
        const QString shot = place.dir.path() + "/shot.png";
        Result result = place.run(place.usual({"--screenshot", shot}));
        QVERIFY2(result.errors.isEmpty(), qPrintable(result.errors.join('\n')));
        QVERIFY2(result.code == 0, qPrintable(result.errors.join(QChar(10))));
        const QImage image(shot);
        QVERIFY(image.width() > 600);
        QSet<QRgb> colours;
        for (int y = 0; y < image.height(); y += 7)
            for (int x = 0; x < image.width(); x += 7)
                colours.insert(image.pixel(x, y));
        QVERIFY(colours.size() > 4);
        QFile copy(place.work + "files/icons/a.png");
        QVERIFY(copy.open(QIODevice::ReadOnly));
        QCOMPARE(copy.readAll(), QByteArray("abc"));
    }

    void aScreenshotThatCannotBeWrittenFails() {
        Place place;
        Result result =
            place.run(place.usual({"--screenshot", place.dir.path() + "/no/such/dir/shot.png"}));
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
    }

    void aModuleThatDoesNotStartIsSaid() {
        Place place;
        const QString shot = place.dir.path() + "/shot.png";
        Result result = place.run(place.usual({"--module", "Menu", "--screenshot", shot}),
                                  {"ORVO_TEST_FAIL_START=1"});
        QCOMPARE(result.code, 1);
        QVERIFY_ONE_LINE(result);
        QVERIFY(QFileInfo::exists(shot));
    }

    void theWindowIsOnShowBeforeAModuleReadsItsTables() {
        Place place;
        const QString life = place.dir.path() + "/life";
        Result result =
            place.run(place.usual({"--module", "Menu"}),
                      {"ORVO_TEST_LIFE=" + life, "ORVO_TEST_WINDOW=1", "ORVO_TEST_CLOSE=Menu"});
        QVERIFY2(result.code == 0, qPrintable(result.errors.join(QChar(10))));
        QCOMPARE(linesOf(life).mid(0, 3),
                 QStringList({"Menu start", "Menu in a window on show",
                              "Menu told: Открываются модули: читаются таблицы…"}));
    }

    void closingTheWindowStopsTheModulesInOrder() {
        Place place;
        const QString life = place.dir.path() + "/life";
        Result result =
            place.run(place.usual(), {"ORVO_TEST_LIFE=" + life, "ORVO_TEST_CLOSE=Resources"});
        QVERIFY2(result.errors.isEmpty(), qPrintable(result.errors.join('\n')));
        QVERIFY2(result.code == 0, qPrintable(result.errors.join(QChar(10))));
        QCOMPARE(linesOf(life),
                 QStringList({"Menu start", "Resources start", "Resources close", "Resources stop",
                              "Resources gone", "Menu close", "Menu stop", "Menu gone"}));
    }

    void closingWhileAModuleShowsAMenuWaitsForItsSlot() {
        Place place;
        const QString life = place.dir.path() + "/life";
        Result result = place.run(place.usual({"--module", "Menu"}),
                                  {"ORVO_TEST_LIFE=" + life, "ORVO_TEST_CLOSE=Menu in a menu"});
        QVERIFY(!result.crashed);
        QVERIFY2(result.code == 0, qPrintable(result.errors.join(QChar(10))));
        QCOMPARE(linesOf(life), QStringList({"Menu start", "Menu menu left", "Menu close",
                                             "Menu stop", "Menu gone"}));
    }

    void aPrunedLogOpensTheModulesAgain() {
        Place place;
        const QString life = place.dir.path() + "/life";
        QProcess client;
        QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
        variables.insert("ORVO_TEST_LIFE", life);
        client.setProcessEnvironment(variables);
        client.start(place.program, place.usual({"--module", "Menu"}));
        QStringList expected{"Menu start"};
        QTRY_COMPARE_WITH_TIMEOUT(linesOf(life), expected, 60000);
        QVERIFY(place.byHand("insert into \"Menu\"(\"KeyLink\") values('a')"));
        expected << "Menu message";
        QTRY_COMPARE_WITH_TIMEOUT(linesOf(life), expected, 10000);
        // In one transaction, so that the client cannot have read what is pruned.
        QVERIFY(place.byHand(
            "begin; insert into \"Menu\"(\"KeyLink\") values('b'); delete from \"NciEvent\"; "
            "commit"));
        expected << "Menu close"
                 << "Menu stop"
                 << "Menu gone"
                 << "Menu start";
        QTRY_COMPARE_WITH_TIMEOUT(linesOf(life), expected, 10000);
        QVERIFY(place.byHand("insert into \"Menu\"(\"KeyLink\") values('c')"));
        expected << "Menu message";
        QTRY_COMPARE_WITH_TIMEOUT(linesOf(life), expected, 10000);
        client.kill();
        QVERIFY(client.waitForFinished());
    }

    void whatAModuleReportsShowsUntilItIsSeen() {
        Place place;
        QProcess client;
        QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
        variables.insert("QT_QPA_PLATFORM", "offscreen");
        variables.insert("ORVO_TEST_LOG", "Файл не извлечён: диск полон");
        client.setProcessEnvironment(variables);
        const QString at = place.dir.path() + "/inspect.sock";
        client.start(place.program, place.usual({"--module", "Menu", "--inspect", at}));
        QVERIFY(client.waitForStarted());
        QLocalSocket socket;
        const auto isUp = [&] {
            if (socket.state() != QLocalSocket::ConnectedState)
                socket.connectToServer(at);
            return socket.waitForConnected(100);
        };
        QTRY_VERIFY_WITH_TIMEOUT(isUp(), 20000);
        const auto state = [&] {
            socket.write("state\n");
            while (!socket.canReadLine() && socket.waitForReadyRead(5000)) {
            }
            return QJsonDocument::fromJson(socket.readLine()).object();
        };
        QTRY_COMPARE_WITH_TIMEOUT(state()["running"].toInt(), 1, 20000);
        QCOMPARE(state()["failure"].toString(), QString("Файл не извлечён: диск полон"));
        client.kill();
        QVERIFY(client.waitForFinished());
    }

    void aMissingFormIsNoReasonToStop() {
        Place place;
        const QString shot = place.dir.path() + "/shot.png";
        Result result = place.run(place.usual({"--module", "Menu", "--screenshot", shot}),
                                  {"ORVO_TEST_RUN_FILE=no such form"});
        QVERIFY2(result.code == 0, qPrintable(result.errors.join(QChar(10))));
    }
};

QTEST_MAIN(TestClientRun)
#include "tst_client_run.moc"
