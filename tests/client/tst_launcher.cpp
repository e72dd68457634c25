// What the elements of a menu open in the client, and what comes of what cannot be opened.
#include "apps/client/CloseGuard.h"
#include "apps/client/FileKind.h"
#include "apps/client/FormView.h"
#include "apps/client/FormViewer.h"
#include "apps/client/Launcher.h"
#include "apps/client/MainWindow.h"
#include "apps/client/ModuleLibraries.h"
#include "apps/client/ModuleTabs.h"
#include "frame/Vocabulary.h"
#include "platform/client/ModuleRegistry.h"
#include "tests/client/FormFixture.h"

#include <QDir>
#include <QFileDialog>
#include <QPainter>
#include <QPdfWriter>
#include <QTabBar>
#include <QTabWidget>
#include <QtTest>

using namespace orvo;
using namespace orvo::app;
using namespace orvo::test;

namespace {

const char* const plainForm = R"(<?xml version="1.0" encoding="UTF-8"?>
<ui version="4.0"><class>Form</class><widget class="QWidget" name="Form">
<property name="geometry"><rect><x>0</x><y>0</y><width>300</width><height>200</height></rect></property>
<property name="styleSheet"><string>#Form[mode="red"] QFrame#lamp { background:#ff00ff }</string></property>
<widget class="QFrame" name="lamp"><property name="geometry"><rect><x>10</x><y>10</y>
<width>50</width><height>50</height></rect></property></widget>
<widget class="QProgressBar" name="level"><property name="geometry"><rect><x>10</x><y>100</y>
<width>200</width><height>30</height></rect></property>
<property name="styleSheet"><string>QProgressBar::chunk { background:#00ffff }</string></property>
<property name="value"><number>0</number></property></widget>
</widget></ui>)";

QByteArray pdf() {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    QPainter painter(&writer);
    painter.fillRect(0, 0, writer.width(), writer.height(), QColor(Qt::magenta));
    return bytes;
}

struct Fixture : FormFixture {
    QString libraryDir = dir.path() + "/modules";
    ModuleLibraries libraries;
    client::ModuleRegistry modules;
    MainWindow window{"store", "engineer"};
    CloseGuard guard;
    COrvoCliMod logModule{&app};
    std::unique_ptr<Launcher> launcher;
    QStringList problems;
    QStringList logs;

    Fixture() {
        qputenv("ORVO_TEST_LIFE", QFile::encodeName(dir.path() + "/life"));
        QDir().mkpath(libraryDir);
        QFile::copy(QCoreApplication::applicationDirPath() + "/libOrvoTestModules.so",
                    libraryDir + "/libOrvoTest.so");
        libraries.load(libraryDir, {});
        app.m_workDir = dir.path() + "/client/";
        app.m_logModule = &logModule;
        launcher = std::make_unique<Launcher>(
            Launcher::Context{store(),
                              libraries,
                              app,
                              modules,
                              window,
                              guard,
                              {qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client",
                               QString::fromStdString(url),
                               "engineer",
                               app.m_workDir,
                               {libraryDir}},
                              program});
        QObject::connect(
            launcher.get(), &Launcher::problem,
            [this](const QString& place, const QString& text) { problems << place + ": " + text; });
        QObject::connect(launcher.get(), &Launcher::logged,
                         [this](int, const QString& place, const QString& text) {
                             logs << place + ": " + text;
                         });
        window.resize(900, 700);
        window.show();
    }
    ~Fixture() {
        launcher.reset();
        modules.stopAll();
    }

    QString launch(int resourceKind, const char* name, const char* params = "",
                   bool oneCopy = false, const char* path = "", const char* key = "e1") {
        LaunchRequest request;
        request.key = key;
        request.caption = "Элемент";
        request.kind = resourceKind;
        request.name = name;
        request.params = params;
        request.oneCopy = oneCopy;
        request.path = path;
        request.resource = "r1";
        launcher->launch(&request);
        return request.refusal;
    }
    void putFile(const char* name, const QByteArray& bytes) {
        if (!hasFolder)
            write("MenuResourceFolder", 1,
                  {{"KeyLink", "docs"}, {"type_", "4"}, {"caption", "docs"}});
        hasFolder = true;
        CToolFilePut tool(&module);
        tool.AddFile("docs", name, bytes.constData(), bytes.size(), 1);
        tool.Perform(false);
    }
    QTabWidget& tabs() { return *window.findChild<QTabWidget*>("modules"); }
    QStringList life() const {
        QFile file(dir.path() + "/life");
        return file.open(QIODevice::ReadOnly)
                   ? QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)
                   : QStringList();
    }
    FormView* view() {
        auto* page = qobject_cast<FormWindow*>(tabs().currentWidget());
        return page ? currentView(*page) : nullptr;
    }

    bool hasFolder = false;
};

store::Change change(const char* table, const char* key, int code = OrvoEventUpdate) {
    store::Change one;
    one.table = table;
    one.key = key;
    one.code = code;
    return one;
}

} // namespace

class TestLauncher : public QObject {
    Q_OBJECT
private slots:
    void aModuleGetsItsParametersBeforeItStarts() {
        Fixture fixture;
        QCOMPARE(fixture.launch(Kind::Module, "Menu", "scale=2;open;depth=7"), QString());
        QCOMPARE(fixture.life(), QStringList({"Menu param scale=2", "Menu param depth=7",
                                              "Menu command open", "Menu start"}));
        QCOMPARE(fixture.tabs().count(), 1);
        QCOMPARE(fixture.launcher->count(), 1);
        emit fixture.tabs().tabCloseRequested(0);
        QCOMPARE(fixture.tabs().count(), 0);
        QCOMPARE(fixture.launcher->count(), 0);
        QCOMPARE(fixture.life().mid(4), QStringList({"Menu close", "Menu stop", "Menu gone"}));
    }

    void oneCopyBringsTheFirstToTheFront() {
        Fixture fixture;
        QCOMPARE(fixture.launch(Kind::Module, "Menu", "", true), QString());
        QCOMPARE(fixture.launch(Kind::Module, "Menu", "", false, "", "e2"), QString());
        QCOMPARE(fixture.tabs().currentIndex(), 1);
        QCOMPARE(fixture.launch(Kind::Module, "Menu", "", true), QString());
        QCOMPARE(fixture.tabs().count(), 2);
        QCOMPARE(fixture.tabs().currentIndex(), 0);
        QCOMPARE(fixture.launch(Kind::Module, "Menu", "", false),
                 QString()); // no longer of one copy
        QCOMPARE(fixture.tabs().count(), 3);
    }

    void whatIsNotHereIsNamed() {
        Fixture fixture;
        QVERIFY(fixture.launch(Kind::Module, "Trends").contains("Trends"));
        QVERIFY(fixture.launch(Kind::Module, "Throwing").contains("Throwing"));
        QVERIFY(fixture.launch(Kind::Form, "Pump_").contains("Pump_"));
        QVERIFY(fixture.launch(Kind::File, "plan.pdf", "", false, "docs").contains("plan.pdf"));
        QVERIFY(!fixture.launch(9, "x").isEmpty());
        QCOMPARE(fixture.tabs().count(), 0);
        QCOMPARE(fixture.launch(Kind::Function, "Nothing"), QString());
        QTRY_COMPARE_WITH_TIMEOUT(fixture.problems.size(), 1, timeoutMs);
        QVERIFY2(fixture.problems[0].contains("Nothing"), qPrintable(fixture.problems[0]));
    }

    void aModuleThatDoesNotStartLeavesNoTab() {
        Fixture fixture;
        qputenv("ORVO_TEST_FAIL_START", "1");
        const QString refusal = fixture.launch(Kind::Module, "Menu");
        qunsetenv("ORVO_TEST_FAIL_START");
        QVERIFY(refusal.contains("Menu"));
        QCOMPARE(fixture.tabs().count(), 0);
        QCOMPARE(fixture.launcher->count(), 0);
    }

    void aFunctionRunsInAProcessOfItsOwn() {
        Fixture fixture;
        QCOMPARE(fixture.launch(Kind::Function, "tell", "a=b;c"), QString());
        QTRY_COMPARE_WITH_TIMEOUT(fixture.logs, QStringList("Tell: a=b;c"), timeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(fixture.launcher->count(), 0, timeoutMs);
        QCOMPARE(fixture.problems, QStringList());
    }

    void aFunctionThatFailsOrCrashesIsToldAndNothingElse() {
        Fixture fixture;
        for (const auto& [name, word] :
             {std::pair("Fail", "не выполнена"), std::pair("Throw", "не выполнена"),
              std::pair("Crash", "аварийно")}) {
            fixture.problems.clear();
            QCOMPARE(fixture.launch(Kind::Function, name), QString());
            QTRY_COMPARE_WITH_TIMEOUT(fixture.problems.size(), 1, timeoutMs);
            QVERIFY2(fixture.problems[0].contains(QString::fromUtf8(word)),
                     qPrintable(fixture.problems[0]));
        }
        QVERIFY(fixture.logs.join('\n').contains("no function today"));
        QCOMPARE(fixture.launch(Kind::Function, "Tell", "still"), QString());
        QTRY_VERIFY_WITH_TIMEOUT(fixture.logs.contains("Tell: still"), timeoutMs);
    }

    void aFunctionWithAWindowLivesUntilTheClientEnds() {
        Fixture fixture;
        QCOMPARE(fixture.launch(Kind::Function, "Window", "", true), QString());
        QTRY_COMPARE_WITH_TIMEOUT(fixture.logs, QStringList("Window: session"), timeoutMs);
        QCOMPARE(fixture.launch(Kind::Function, "Window", "", true), QString());
        QCOMPARE(fixture.launcher->count(), 1);
        // A process that is started later has come up; the first came forward.
        QCOMPARE(fixture.launch(Kind::Function, "Tell", "later", false, "", "e3"), QString());
        QTRY_VERIFY_WITH_TIMEOUT(fixture.logs.contains("Tell: later"), timeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(fixture.launcher->count(), 1, timeoutMs);
        QCOMPARE(fixture.logs.filter("Window").size(), 1);
        fixture.launcher->setConnected(false);
        QCOMPARE(fixture.launch(Kind::Function, "Window", "", false, "", "e2"), QString());
        QTRY_VERIFY_WITH_TIMEOUT(fixture.logs.contains("Window: no session"), timeoutMs);
    }

    void aFormIsLiveScaledAndKnowsItsParameters() {
        Fixture fixture;
        fixture.put({{"pump_", plainForm}});
        QCOMPARE(fixture.launch(Kind::Form, "pump_", "mode=red;level=100"), QString());
        QTRY_COMPARE_WITH_TIMEOUT(fixture.view()->state(), FormView::State::Shown, timeoutMs);
        QTRY_VERIFY(hasColor(*fixture.view(), Qt::magenta));
        QTRY_VERIFY(hasColor(*fixture.view(), Qt::cyan));
        // The lamp, 50 of 300 wide in the form, is as much of the view.
        const QImage& image = fixture.view()->canvas()->image();
        int widest = 0;
        for (int y = 0; y < image.height(); ++y) {
            int run = 0;
            for (int x = 0; x < image.width(); ++x)
                run += image.pixelColor(x, y) == QColor(Qt::magenta) ? 1 : 0;
            widest = std::max(widest, run);
        }
        QVERIFY2(widest > 90, qPrintable(QString::number(widest)));
    }

    void whatLiesBesideAFormHasNoTab() {
        Fixture fixture;
        const auto files = [&] {
            QStringList names;
            const auto* page = qobject_cast<FormWindow*>(fixture.tabs().currentWidget());
            for (int i = 0; page && i < page->tabs()->count(); ++i)
                names << page->tabs()->tabText(i);
            return names;
        };
        fixture.put({{"pump_", "note"},
                     {"pump.ui", plainForm},
                     {"pump.txt", "note"},
                     {"pump.png", png(40, 30)}});
        QCOMPARE(fixture.launch(Kind::Form, "pump_"), QString());
        QCOMPARE(files(), QStringList("pump.ui"));
        fixture.put({{"valve_", "text"}, {"valve.txt", "text"}}); // no form: all there is
        QCOMPARE(fixture.launch(Kind::Form, "valve_"), QString());
        QCOMPARE(files(), QStringList({"valve.txt", "valve_"}));
    }

    void filesAreShownByTheirKind() {
        Fixture fixture;
        fixture.putFile("a.png", png(40, 30));
        fixture.putFile("a.txt", "текст\n");
        fixture.putFile("a.pdf", pdf());
        for (const char* name : {"a.png", "a.txt", "a.pdf"}) {
            QCOMPARE(fixture.launch(Kind::File, name, "", false, "docs"), QString());
            QTRY_COMPARE_WITH_TIMEOUT(fixture.view()->state(), FormView::State::Shown, timeoutMs);
        }
        QCOMPARE(fixture.tabs().count(), 3);
        QTRY_VERIFY(hasColor(*fixture.view(), Qt::magenta)); // the page of the PDF
        QCOMPARE(fixture.problems, QStringList());
    }

    void aFileThatCannotBeShownIsSavedWhereTheUserSays() {
        Fixture fixture;
        const QByteArray bytes("PK\x03\x04\0\0\0", 7);
        fixture.putFile("a.zip", bytes);
        QCOMPARE(fixture.launch(Kind::File, "a.zip", "", false, "docs"), QString());
        auto* dialog = fixture.window.findChild<QFileDialog*>("saveFileDialog");
        QVERIFY(dialog && dialog->isVisible());
        QVERIFY(dialog->selectedFiles().value(0).endsWith("a.zip"));
        const QString place = fixture.dir.path() + "/saved.zip";
        emit dialog->fileSelected(place);
        QFile file(place);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), bytes);
        dialog->close();
        QCOMPARE(fixture.tabs().count(), 0);
    }

    void withoutTheStoreWhatWasReadBeforeOpens() {
        Fixture fixture;
        fixture.put({{"pump_", plainForm}});
        QCOMPARE(fixture.launch(Kind::Form, "pump_"), QString());
        fixture.launcher->setConnected(false);
        QCOMPARE(fixture.launch(Kind::Form, "pump_"), QString());
        QCOMPARE(fixture.tabs().count(), 2);
        QVERIFY(!fixture.launch(Kind::Form, "valve_").isEmpty());
        QVERIFY(!fixture.launch(Kind::File, "a.txt", "", false, "docs").isEmpty());
        QDir().mkpath(fixture.app.m_workDir + "files/docs");
        QFile copy(fixture.app.m_workDir + "files/docs/a.txt");
        QVERIFY(copy.open(QIODevice::WriteOnly) && copy.write("text") == 4);
        copy.close();
        QCOMPARE(fixture.launch(Kind::File, "a.txt", "", false, "docs"), QString());
        QVERIFY(!fixture.launch(Kind::File, "life", "", false, "../..").isEmpty());
    }

    void whatChangesIsMarkedAndStays() {
        Fixture fixture;
        fixture.put({{"pump_", plainForm}});
        QCOMPARE(fixture.launch(Kind::Form, "pump_"), QString());
        const auto text = [&] { return fixture.tabs().tabText(0); };
        fixture.launcher->changed(change("Menu", "other"));
        fixture.launcher->changed(change("MenuResourceFile", "x"));
        QTest::qWait(700);
        QVERIFY(!text().contains("●"));
        fixture.put({{"pump_", QByteArray(plainForm) + "<!-- -->"}});
        fixture.launcher->changed(change("MenuResourceFile", "x"));
        QTRY_VERIFY(text().contains("●"));
        QVERIFY(fixture.tabs().tabToolTip(0).contains("Содержимое"));
        QCOMPARE(fixture.launch(Kind::Module, "Menu"), QString());
        fixture.launcher->changed(change("Menu", "E1", OrvoEventDelete));
        QVERIFY(fixture.tabs().tabText(1).contains("●"));
        QVERIFY(fixture.tabs().tabToolTip(1).contains("больше нет"));
        QCOMPARE(fixture.tabs().count(), 2);
    }

    void modulesAreOpenedAgainAfterAReload() {
        Fixture fixture;
        QCOMPARE(fixture.launch(Kind::Module, "Menu", "a=1"), QString());
        fixture.launcher->rememberModules();
        fixture.modules.stopAll();
        QCOMPARE(fixture.launcher->count(), 0);
        fixture.launcher->reopenModules();
        QCOMPARE(fixture.launcher->count(), 1);
        QCOMPARE(fixture.life().filter("param a=1").size(), 2);
    }

    void tabsOfAReloadAreWhereTheyWere() {
        Fixture fixture;
        fixture.put({{"pump_", plainForm}});
        QCOMPARE(fixture.launch(Kind::Module, "Menu"), QString());
        QCOMPARE(fixture.launch(Kind::Form, "pump_"), QString());
        QCOMPARE(fixture.launch(Kind::Module, "Resources"), QString());
        fixture.window.setTitle(fixture.tabs().widget(1), fixture.tabs().widget(0)->windowTitle());
        const auto pages = [&] {
            QStringList all;
            for (int i = 0; i < fixture.tabs().count(); ++i) {
                const auto* module = qobject_cast<COrvoCliMod*>(fixture.tabs().widget(i));
                all << (module ? module->m_moduleName : "form");
            }
            return all;
        };
        const QStringList before = pages();
        QCOMPARE(before, QStringList({"Menu", "form", "Resources"}));
        for (const int current : {0, 1, 2}) {
            fixture.tabs().setCurrentIndex(current);
            const ModuleTabs::Order tabs = fixture.window.tabs()->order();
            fixture.launcher->rememberModules();
            fixture.modules.stopAll();
            fixture.launcher->reopenModules();
            fixture.window.tabs()->arrange(tabs);
            QCOMPARE(pages(), before);
            QCOMPARE(fixture.tabs().currentIndex(), current);
        }
    }

    void whatCouldNotBeOpenedIsKnownBeforehand() {
        Fixture fixture;
        fixture.put({{"pump_", plainForm}});
        const auto why = [&](int kind, const char* name) {
            LaunchRequest request;
            request.kind = kind;
            request.name = name;
            fixture.launcher->check(&request);
            return request.refusal;
        };
        QCOMPARE(why(Kind::Module, "Menu"), QString());
        QVERIFY(why(Kind::Module, "Trends").contains("Trends"));
        QCOMPARE(why(Kind::Form, "pump_"), QString());
        QVERIFY(why(Kind::Form, "valve_").contains("valve_"));
        QVERIFY(why(Kind::File, "a.txt").contains("a.txt"));
        QCOMPARE(fixture.tabs().count(), 0);
    }
};

QTEST_MAIN(TestLauncher)
#include "tst_launcher.moc"
