// Which libraries of modules the client takes, and what it does with those that it does not.
#include "apps/client/ModuleLibraries.h"
#include "frame/Launch.h"
#include "tests/client/HostFixture.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <cstring>
#include <dlfcn.h>
#include <sys/stat.h>

using namespace orvo;
using namespace orvo::app;
using namespace orvo::test;

namespace {

struct Libraries : Host {
    QString own = dir.path() + "/own";
    QString further = dir.path() + "/further";
    ModuleLibraries all;

    Libraries() {
        QDir().mkpath(own);
        QDir().mkpath(further);
    }
    static void put(const QString& directory, const char* name = "/libOrvoTest.so") {
        const QString from = QCoreApplication::applicationDirPath() + "/libOrvoTestModules.so";
        if (!QFile::copy(from, directory + name))
            qFatal("no library at %s", qUtf8Printable(from));
    }
    static void putText(const QString& path) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write("no library") < 0)
            qFatal("%s", qUtf8Printable(path));
    }
    bool has(const char* name) {
        return std::unique_ptr<COrvoCliMod>(all.create(&app, name)) != nullptr;
    }
    QString problem() const { return all.problems().value(0); }
};

} // namespace

class TestModuleLibraries : public QObject {
    Q_OBJECT
private slots:
    void librariesOfAllDirectoriesAreAskedForAName() {
        Libraries libraries;
        libraries.put(libraries.further);
        libraries.all.load(libraries.own, {libraries.further});
        QVERIFY2(libraries.all.problems().isEmpty(), qPrintable(libraries.problem()));
        QVERIFY(libraries.has("Menu"));
        QVERIFY(libraries.has("RESOURCES"));
        QVERIFY(!libraries.has("Trends"));
        QVERIFY(libraries.all.knows(&libraries.app, "menu"));
        QVERIFY(!libraries.all.knows(&libraries.app, "Trends"));
        QVERIFY(libraries.all.hasFunctions());
    }

    void theFirstByItsNameAnswers() {
        Libraries libraries;
        libraries.put(libraries.own, "/libOrvoB.so");
        libraries.put(libraries.own, "/libOrvoA.so");
        libraries.put(libraries.further, "/libOrvo0.so"); // its directory comes later
        libraries.all.load(libraries.own, {libraries.further});
        const std::unique_ptr<COrvoCliMod> made(libraries.all.create(&libraries.app, "Menu"));
        QVERIFY(made);
        const void* table = nullptr; // of its virtual functions, in the library that made it
        std::memcpy(&table, static_cast<const void*>(made.get()), sizeof table);
        Dl_info info{};
        QVERIFY(dladdr(table, &info) != 0);
        QVERIFY2(QByteArray(info.dli_fname).endsWith("/own/libOrvoA.so"), info.dli_fname);
    }

    void aLibraryThatIsNoneIsToldAndTheOthersWork() {
        Libraries libraries;
        libraries.putText(libraries.own + "/libOrvoBad.so");
        libraries.put(libraries.own);
        libraries.all.load(libraries.own, {});
        QCOMPARE(libraries.all.problems().size(), 1);
        QVERIFY(libraries.problem().contains("libOrvoBad.so"));
        QVERIFY(libraries.has("Menu"));
    }

    void onlyLibrariesOfOurNamesAreLoaded() {
        Libraries libraries;
        libraries.put(libraries.own, "/libother.so");
        libraries.all.load(libraries.own, {});
        QVERIFY(libraries.all.isEmpty());
        QVERIFY(libraries.problem().contains(libraries.own));
    }

    void whatOthersMayWriteIsNotTaken_data() {
        QTest::addColumn<QString>("what");
        QTest::addColumn<int>("mode");
        QTest::newRow("the library, its group") << "/further/libOrvoTest.so" << 0775;
        QTest::newRow("the library, everybody") << "/further/libOrvoTest.so" << 0757;
        QTest::newRow("the directory") << "/further" << 0777;
        QTest::newRow("a directory above") << "" << 0777;
    }
    void whatOthersMayWriteIsNotTaken() {
        QFETCH(QString, what);
        QFETCH(int, mode);
        Libraries libraries;
        libraries.put(libraries.further);
        const QByteArray path = QFile::encodeName(libraries.dir.path() + what);
        QCOMPARE(::chmod(path.constData(), static_cast<mode_t>(mode)), 0);
        libraries.all.load(libraries.own, {libraries.further});
        QCOMPARE(::chmod(path.constData(), 0700), 0);
        QVERIFY(libraries.all.isEmpty());
        QVERIFY2(libraries.problem().contains("другие"), qPrintable(libraries.problem()));
    }

    void aDirectoryOfAnotherUserIsNotTaken() {
        if (::geteuid() != 0)
            QSKIP("only root gives files away");
        Libraries libraries;
        libraries.put(libraries.further);
        QCOMPARE(::chown(QFile::encodeName(libraries.further).constData(), 65534, 65534), 0);
        libraries.all.load(libraries.own, {libraries.further});
        QVERIFY(libraries.all.isEmpty());
        QVERIFY(libraries.problem().contains("другому"));
    }

    void aLinkToWhatOthersMayWriteIsNotTaken() {
        Libraries libraries;
        libraries.put(libraries.own);
        QVERIFY(QFile::link(libraries.own + "/libOrvoTest.so", libraries.further + "/libOrvoA.so"));
        QCOMPARE(::chmod(QFile::encodeName(libraries.own).constData(), 0777), 0);
        libraries.all.load(libraries.dir.path() + "/nothing", {libraries.further});
        QVERIFY(libraries.all.isEmpty());
    }

    void whatALibraryThrowsIsLogged() {
        Libraries libraries;
        libraries.put(libraries.own);
        libraries.all.load(libraries.own, {});
        QVERIFY(!libraries.has("Throwing"));
        QVERIFY(libraries.app.logs.join('\n').contains("no module today"));
    }

    void parametersArePairsAndACommand_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("pairs");
        QTest::addColumn<QString>("command");
        const auto row = [](const char* text, const char* pairs, const char* command) {
            QTest::newRow(*text ? text : "empty")
                << QString(text) << QString(pairs) << QString(command);
        };
        row("", "", "");
        row("Узел=КС3;Режим=Просмотр", "Узел→КС3|Режим→Просмотр", "");
        row(" Узел = КС3 ; открыть ; Окно=2ч;печать", "Узел→КС3|Окно→2ч", "открыть;печать");
        row("a=b=c", "a→b=c", "");
        row("a=", "a→", "");
        row("=b", "", "=b");
        row(";;;", "", "");
        row("a=\"x;y=\"\"z\"\"\";b=1", "a→x;y=\"z\"|b→1", "");
        row("\"a=b\"", "", "\"a=b\"");
        row("a=\"open", "a→open", "");
        row("sql=select 1 <>&%1", "sql→select 1 <>&%1", "");
    }
    void parametersArePairsAndACommand() {
        QFETCH(QString, text);
        QFETCH(QString, pairs);
        QFETCH(QString, command);
        const LaunchParameters parameters = parseLaunchParameters(text);
        QStringList found;
        for (const auto& [name, value] : parameters.pairs)
            found << name + "→" + value;
        QCOMPARE(found.join('|'), pairs);
        QCOMPARE(parameters.command, command);
    }

    void theLastPairOfANameCounts() {
        const LaunchParameters parameters = parseLaunchParameters("a=1;b=\"x;a=2\";a=3");
        QCOMPARE(parameters.value("a"), QString("3"));
        QCOMPARE(parameters.value("b"), QString("x;a=2"));
        QVERIFY(parameters.value("c").isNull());
    }
};

QTEST_MAIN(TestModuleLibraries)
#include "tst_module_libraries.moc"
