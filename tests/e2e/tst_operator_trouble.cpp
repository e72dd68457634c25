// What goes wrong at an operator's place, and what is odd there; what keys do.
#include "tests/e2e/OperatorTest.h"

#include <QFile>
#include <QJsonArray>

#include <sys/stat.h>
#include <unistd.h>

using namespace orvo::test;

namespace {

const char* const dispatcher = "Вызов диспетчера";
const char* const journal = "Журнал событий станции";
const char* const scheme = "Общая схема КС-1";

/// A directory of module libraries, each another kind of broken, and one that is not.
class BrokenLibraries {
public:
    BrokenLibraries() {
        const QString sample =
            qEnvironmentVariable("ORVO_BIN_DIR") + "/../examples/modules/libOrvoSample.so";
        write("libOrvoNoLibrary.so", "no library at all");
        copy(qEnvironmentVariable("ORVO_BIN_DIR") + "/../lib/libOrvoMdx.so.0", "libOrvoNothing.so");
        copy(sample, "libOrvoOpen.so");
        ::chmod(QFile::encodeName(path("libOrvoOpen.so")).constData(), 0777);
        if (::geteuid() == 0) {
            copy(sample, "libOrvoForeign.so");
            hasForeign =
                ::chown(QFile::encodeName(path("libOrvoForeign.so")).constData(), 65534, 0) == 0;
        }
        copy(sample, "libOrvoSample.so");
    }
    QString directory() const { return m_directory.path(); }
    bool hasForeign = false;

private:
    QString path(const char* name) const { return m_directory.filePath(name); }
    void copy(const QString& from, const char* name) const {
        if (!QFile::copy(QFileInfo(from).canonicalFilePath(), path(name)))
            qFatal("no %s", qUtf8Printable(from));
    }
    void write(const char* name, const QByteArray& bytes) const {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("%s is not written", name);
    }
    QTemporaryDir m_directory;
};

} // namespace

class TestOperatorTrouble : public OperatorTest {
    Q_OBJECT
    bool setParams(const QString& caption, const QString& params) {
        return another("update Menu set params = " + quoted(params) +
                       " where KeyLink = " + quoted(ofStation(caption)));
    }
    bool settles() {
        return m_scene->waitFor("the operator's client rests", [&] { return desk().settled(); });
    }

private slots:
    void initTestCase() {
        m_scene = std::make_unique<Scene>();
        DO(m_scene->startOperator(station, sample()));
    }

    void aFunctionOfOneCopyComesForwardInsteadOfStartingAgain() {
        QVERIFY(another("update Menu set oneCopy = true where KeyLink = " +
                        quoted(ofStation(dispatcher))));
        DO(settles());
        DO(clickOn(dispatcher));
        SOON(hands::windowCount("^Вызов диспетчера$") == 1);
        DO(clickOn("Справка")); // a window over it
        SOON(hands::isOnScreen("^Руководство$"));
        SOON(hands::activeWindow() != dispatcher);
        const int before = opened();
        DO(clickOn(dispatcher));
        SOON(hands::activeWindow() == dispatcher);
        DO(handlesAll());
        QCOMPARE(hands::windowCount("^Вызов диспетчера$"), 1);
        QCOMPARE(opened(), before);
        take("function-one-copy");
        QVERIFY(hands::key("Return")); // its button
        SOON(!hands::isOnScreen("^Вызов диспетчера$"));
        DO(clickOn(dispatcher)); // the first has gone, so there may be one again
        SOON(hands::windowCount("^Вызов диспетчера$") == 1);
        QVERIFY(hands::key("Return"));
        SOON(!hands::isOnScreen("^Вызов диспетчера$"));
        QVERIFY(closeWindow("^Руководство$"));
        SOON(opened() == 0);
    }

    void parametersMayHoldAnyCharacters_data() {
        QTest::addColumn<QString>("params");
        QTest::addColumn<QString>("line");
        QTest::newRow("quoted") << R"(Линия="1;2=""главная""";Ещё=3)"
                                << R"(1;2="главная")";
        const QString markup = "<b>&amp;</b> %1 %s \\ 'x' $(x) `x` №";
        QTest::newRow("markup") << "Линия=\"" + markup + "\"" << markup;
        QTest::newRow("lines") << "Линия=1\n\t2"
                               << "1 2"; // on one line in the log
        QTest::newRow("no end") << "Линия=\"1;2"
                                << "1;2";
        QTest::newRow("long") << "Линия=" + QString(1500, 'x') << QString(100, 'x');
    }
    void parametersMayHoldAnyCharacters() {
        QFETCH(QString, params);
        QFETCH(QString, line);
        QVERIFY(setParams(dispatcher, params));
        DO(settles());
        DO(clickOn(dispatcher));
        SOON(hands::isOnScreen("^Вызов диспетчера$"));
        SOON(logHas("Вызов по линии " + line));
        QVERIFY(hands::key("Return"));
        SOON(!hands::isOnScreen("^Вызов диспетчера$"));
    }

    void brokenIconsDoNotDisturb() {
        const QString icons = value("select KeyLink from MenuResourceFolder where caption = "
                                    "'icons'");
        QVERIFY(!icons.isEmpty());
        for (const char* icon : {"none.png", "../../../etc/passwd", "<b>.png", "instr_ks.txt"}) {
            QVERIFY(another("update Menu set ico = " + quoted(icon) +
                            " where KeyLink = " + quoted(ofStation(scheme))));
            DO(settles());
            QVERIFY(shows(scheme));
        }
        take("broken-icon");
        DO(clickOn(scheme));
        SOON(opened() == 1);
        QVERIFY2(desk().failure().isEmpty(), qPrintable(desk().failure()));
        QVERIFY(hands::key("ctrl+w"));
        SOON(opened() == 0);
    }

    void everyActHasItsKeys() {
        QVERIFY(another("update Menu set caption = 'Pumps' where KeyLink = " +
                        quoted(ofStation("Агрегаты"))));
        SOON(shows("Pumps"));
        DO(clickOn("Управление"));
        SOON(isOpen("Управление"));
        QVERIFY(hands::key("Left"));
        SOON(!isOpen("Управление"));
        QVERIFY(hands::key("Right"));
        SOON(isOpen("Управление"));
        QVERIFY(hands::key("Return"));
        SOON(!isOpen("Управление"));
        QVERIFY(hands::key("Home"));
        SOON(current(desk(), menu) == scheme);
        QVERIFY(hands::key("Return"));
        SOON(opened() == 1);
        SOON(focus() == "orvo::app::FormCanvas"); // its keys are the form's
        QVERIFY(hands::key("F6"));
        SOON(desk().tree(menu).focus);
        QVERIFY(hands::type("pum")); // to the search, and what it has found is opened
        SOON(focus() == "QLineEdit");
        take("search");
        QVERIFY(hands::key("Return"));
        SOON(opened() == 2);
        QVERIFY(hands::key("F1"));
        SOON(hands::isOnScreen("^Руководство$"));
        SOON(hands::activeWindow() == "Руководство");
        QVERIFY(hands::key("alt+F4"));
        SOON(!hands::isOnScreen("^Руководство$"));
        QVERIFY(hands::key("ctrl+w"));
        SOON(opened() == 1);
        QVERIFY(hands::key("ctrl+w"));
        SOON(opened() == 0);
        QVERIFY(hands::key("F6"));
        SOON(desk().tree(menu).focus);
        QVERIFY(hands::type("zzz"));
        SOON(label("deskNothing") == "Ничего не найдено.");
        QVERIFY(hands::key("Escape"));
        SOON(desk().tree(menu).focus);

        DO(clickOn(journal)); // the first of the last ones now
        SOON(opened() == 1);
        SOON(focus() == "QTreeWidget");
        QVERIFY(hands::key("F6"));
        SOON(desk().tree(menu).focus);
        QVERIFY(hands::key("Tab"));
        SOON(focus() == "orvo::desk::ElementList");
        QVERIFY(hands::key("Return"));
        SOON(opened() == 2);
        DO(clickOn(scheme));
        SOON(opened() == 3);
        SOON(focus() == "orvo::app::FormCanvas");
        QVERIFY(hands::key("ctrl+Tab"));
        SOON(focus() == "QTreeWidget");
        QVERIFY(hands::key("ctrl+shift+Tab"));
        SOON(focus() == "orvo::app::FormCanvas");
        for (int left = 2; left >= 0; --left) {
            QVERIFY(hands::key("ctrl+w"));
            SOON(opened() == left);
        }
    }

    void tabsAreClosedByAButtonThatAFingerHits() {
        DO(clickOn(journal));
        SOON(opened() == 1);
        const auto buttons = desk().controls("closePage");
        QCOMPARE(buttons.size(), size_t(1));
        QVERIFY(buttons[0].rect.width() >= 44 && buttons[0].rect.height() >= 44);
        DO(m_scene->press(desk(), "closePage"));
        SOON(opened() == 0);
    }

    void thousandsOfElementsInAFolder() {
        QVERIFY(another("insert into Menu (KeyLink, parent, FolderKey, caption, order_, "
                        "MenuResourceKey) select 'many' || i, " +
                        quoted(ofStation("Управление")) + ", " + quoted(desktop(station)) +
                        ", 'Element ' || i, 100000 + i, (select MenuResourceKey from Menu where "
                        "KeyLink = " +
                        quoted(ofStation(journal)) +
                        ") from (with recursive n(i) as (select 1 union all select i + 1 from n "
                        "where i < 10000) select i from n) many"));
        DO(m_scene->waitFor(
            "all are read", [&] { return desk().settled() && shows("Element 10000"); }, 60000));
        DO(clickOn("Управление"));
        SOON(isOpen("Управление"));
        take("many");
        QElapsedTimer timer;
        timer.start();
        QVERIFY(hands::type("9999"));
        SOON(focus() == "QLineEdit");
        QVERIFY(hands::key("Return"));
        SOON(opened() == 1);
        qInfo("one of 10,000 was found and opened in %lld ms", timer.elapsed());
        QVERIFY(hands::key("ctrl+w"));
        SOON(opened() == 0);
        QVERIFY(another("delete from Menu where KeyLink like 'many%'"));
        DO(m_scene->waitFor(
            "they are gone", [&] { return desk().settled() && !shows("Element 10000"); }, 60000));
    }

    void aDesktopThatIsRenamedMovedOrDeletedStaysInSight() {
        const QString key = desktop(station);
        const auto title = [&] {
            for (const QJsonValue& window : desk().ask("windows")["windows"].toArray())
                if (window.toObject()["name"].toString() == "clientWindow")
                    return window.toObject()["title"].toString();
            return QString();
        };
        QVERIFY(
            another("update MenuFolder set caption = 'Station' where KeyLink = " + quoted(key)));
        SOON(label("deskNotice") == "Рабочий стол теперь называется «Station».");
        SOON(title().contains("Station"));
        QVERIFY(another("update MenuFolder set ParentKey = null where KeyLink = " + quoted(key)));
        SOON(label("deskNotice") == "Рабочий стол теперь в другой папке.");
        take("moved");
        QVERIFY(another("delete from Menu where FolderKey = " + quoted(key) +
                        " and parent is not "
                        "null"));
        QVERIFY(another("delete from MenuFolder where KeyLink = " + quoted(key)));
        SOON(label("deskNotice").contains("удалён"));
        QVERIFY(shows(journal));
        DO(clickOn(journal));
        SOON(opened() == 1);
        SOON(!desk().tree("journalRows").rows.empty());
        QVERIFY(label("deskNotice").contains("удалён"));
        take("deleted");
    }

    void brokenModuleLibrariesAreNamedAndTheOthersWork() {
        const BrokenLibraries broken;
        DO(m_scene->startOperator(secondStation, {"--modules", broken.directory(), "--modules",
                                                  broken.directory() + "/nothing"}));
        QVERIFY(logHas("libOrvoNoLibrary.so"));
        QVERIFY(logHas("libOrvoNothing.so нет ни функции CppCliModule, ни CppCliFunction"));
        QVERIFY(logHas("libOrvoOpen.so не взята"));
        QVERIFY(logHas("/nothing не взят"));
        if (broken.hasForeign)
            QVERIFY(logHas("libOrvoForeign.so принадлежит другому пользователю"));
        QVERIFY(!desk().failure().isEmpty());
        take("broken-libraries");
        DO(clickOn(journal));
        SOON(opened() == 1);
        SOON(!desk().tree("journalRows").rows.empty());
    }
};

QTEST_MAIN(TestOperatorTrouble)
#include "tst_operator_trouble.moc"
