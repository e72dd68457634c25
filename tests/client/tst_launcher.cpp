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
#include "tests/client/FormBench.h"

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

struct Bench : FormBench {
    QString libraryDir = dir.path() + "/modules";
    ModuleLibraries libraries;
    client::ModuleRegistry modules;
    MainWindow window{"store", "engineer"};
    CloseGuard guard;
    COrvoCliMod logModule{&app};
    std::unique_ptr<Launcher> launcher;
    QStringList problems;
    QStringList logs;

    Bench() {
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
    ~Bench() {
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
        Bench bench;
        QCOMPARE(bench.launch(Kind::Module, "Menu", "scale=2;open;depth=7"), QString());
        QCOMPARE(bench.life(), QStringList({"Menu param scale=2", "Menu param depth=7",
                                            "Menu command open", "Menu start"}));
        QCOMPARE(bench.tabs().count(), 1);
        QCOMPARE(bench.launcher->count(), 1);
        emit bench.tabs().tabCloseRequested(0);
        QCOMPARE(bench.tabs().count(), 0);
        QCOMPARE(bench.launcher->count(), 0);
        QCOMPARE(bench.life().mid(4), QStringList({"Menu close", "Menu stop", "Menu gone"}));
    }

    void oneCopyBringsTheFirstToTheFront() {
        Bench bench;
        QCOMPARE(bench.launch(Kind::Module, "Menu", "", true), QString());
        QCOMPARE(bench.launch(Kind::Module, "Menu", "", false, "", "e2"), QString());
        QCOMPARE(bench.tabs().currentIndex(), 1);
        QCOMPARE(bench.launch(Kind::Module, "Menu", "", true), QString());
        QCOMPARE(bench.tabs().count(), 2);
        QCOMPARE(bench.tabs().currentIndex(), 0);
        QCOMPARE(bench.launch(Kind::Module, "Menu", "", false), QString()); // no longer of one copy
        QCOMPARE(bench.tabs().count(), 3);
    }

    void whatIsNotHereIsNamed() {
        Bench bench;
        QVERIFY(bench.launch(Kind::Module, "Trends").contains("Trends"));
        QVERIFY(bench.launch(Kind::Module, "Throwing").contains("Throwing"));
        QVERIFY(bench.launch(Kind::Form, "Pump_").contains("Pump_"));
        QVERIFY(bench.launch(Kind::File, "plan.pdf", "", false, "docs").contains("plan.pdf"));
        QVERIFY(!bench.launch(9, "x").isEmpty());
        QCOMPARE(bench.tabs().count(), 0);
        QCOMPARE(bench.launch(Kind::Function, "Nothing"), QString());
        QTRY_COMPARE_WITH_TIMEOUT(bench.problems.size(), 1, timeoutMs);
        QVERIFY2(bench.problems[0].contains("Nothing"), qPrintable(bench.problems[0]));
    }

    void aModuleThatDoesNotStartLeavesNoTab() {
        Bench bench;
        qputenv("ORVO_TEST_FAIL_START", "1");
        const QString refusal = bench.launch(Kind::Module, "Menu");
        qunsetenv("ORVO_TEST_FAIL_START");
        QVERIFY(refusal.contains("Menu"));
        QCOMPARE(bench.tabs().count(), 0);
        QCOMPARE(bench.launcher->count(), 0);
    }

    void aFunctionRunsInAProcessOfItsOwn() {
        Bench bench;
        QCOMPARE(bench.launch(Kind::Function, "tell", "a=b;c"), QString());
        QTRY_COMPARE_WITH_TIMEOUT(bench.logs, QStringList("Tell: a=b;c"), timeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(bench.launcher->count(), 0, timeoutMs);
        QCOMPARE(bench.problems, QStringList());
    }

    void aFunctionThatFailsOrCrashesIsToldAndNothingElse() {
        Bench bench;
        for (const auto& [name, word] :
             {std::pair("Fail", "не выполнена"), std::pair("Throw", "не выполнена"),
              std::pair("Crash", "аварийно")}) {
            bench.problems.clear();
            QCOMPARE(bench.launch(Kind::Function, name), QString());
            QTRY_COMPARE_WITH_TIMEOUT(bench.problems.size(), 1, timeoutMs);
            QVERIFY2(bench.problems[0].contains(QString::fromUtf8(word)),
                     qPrintable(bench.problems[0]));
        }
        QVERIFY(bench.logs.join('\n').contains("no function today"));
        QCOMPARE(bench.launch(Kind::Function, "Tell", "still"), QString());
        QTRY_VERIFY_WITH_TIMEOUT(bench.logs.contains("Tell: still"), timeoutMs);
    }

    void aFunctionWithAWindowLivesUntilTheClientEnds() {
        Bench bench;
        QCOMPARE(bench.launch(Kind::Function, "Window", "", true), QString());
        QTRY_COMPARE_WITH_TIMEOUT(bench.logs, QStringList("Window: session"), timeoutMs);
        QCOMPARE(bench.launch(Kind::Function, "Window", "", true), QString());
        QCOMPARE(bench.launcher->count(), 1);
        // A process that is started later has come up; the first came forward.
        QCOMPARE(bench.launch(Kind::Function, "Tell", "later", false, "", "e3"), QString());
        QTRY_VERIFY_WITH_TIMEOUT(bench.logs.contains("Tell: later"), timeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(bench.launcher->count(), 1, timeoutMs);
        QCOMPARE(bench.logs.filter("Window").size(), 1);
        bench.launcher->setConnected(false);
        QCOMPARE(bench.launch(Kind::Function, "Window", "", false, "", "e2"), QString());
        QTRY_VERIFY_WITH_TIMEOUT(bench.logs.contains("Window: no session"), timeoutMs);
    }

    void aFormIsLiveScaledAndKnowsItsParameters() {
        Bench bench;
        bench.put({{"pump_", plainForm}});
        QCOMPARE(bench.launch(Kind::Form, "pump_", "mode=red;level=100"), QString());
        QTRY_COMPARE_WITH_TIMEOUT(bench.view()->state(), FormView::State::Shown, timeoutMs);
        QTRY_VERIFY(hasColor(*bench.view(), Qt::magenta));
        QTRY_VERIFY(hasColor(*bench.view(), Qt::cyan));
        // The lamp, 50 of 300 wide in the form, is as much of the view.
        const QImage& image = bench.view()->canvas()->image();
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
        Bench bench;
        const auto files = [&] {
            QStringList names;
            const auto* page = qobject_cast<FormWindow*>(bench.tabs().currentWidget());
            for (int i = 0; page && i < page->tabs()->count(); ++i)
                names << page->tabs()->tabText(i);
            return names;
        };
        bench.put({{"pump_", "note"},
                   {"pump.ui", plainForm},
                   {"pump.txt", "note"},
                   {"pump.png", png(40, 30)}});
        QCOMPARE(bench.launch(Kind::Form, "pump_"), QString());
        QCOMPARE(files(), QStringList("pump.ui"));
        bench.put({{"valve_", "text"}, {"valve.txt", "text"}}); // no form: all there is
        QCOMPARE(bench.launch(Kind::Form, "valve_"), QString());
        QCOMPARE(files(), QStringList({"valve.txt", "valve_"}));
    }

    void filesAreShownByTheirKind() {
        Bench bench;
        bench.putFile("a.png", png(40, 30));
        bench.putFile("a.txt", "текст\n");
        bench.putFile("a.pdf", pdf());
        for (const char* name : {"a.png", "a.txt", "a.pdf"}) {
            QCOMPARE(bench.launch(Kind::File, name, "", false, "docs"), QString());
            QTRY_COMPARE_WITH_TIMEOUT(bench.view()->state(), FormView::State::Shown, timeoutMs);
        }
        QCOMPARE(bench.tabs().count(), 3);
        QTRY_VERIFY(hasColor(*bench.view(), Qt::magenta)); // the page of the PDF
        QCOMPARE(bench.problems, QStringList());
    }

    void aFileThatCannotBeShownIsSavedWhereTheUserSays() {
        Bench bench;
        const QByteArray bytes("PK\x03\x04\0\0\0", 7);
        bench.putFile("a.zip", bytes);
        QCOMPARE(bench.launch(Kind::File, "a.zip", "", false, "docs"), QString());
        auto* dialog = bench.window.findChild<QFileDialog*>("saveFileDialog");
        QVERIFY(dialog && dialog->isVisible());
        QVERIFY(dialog->selectedFiles().value(0).endsWith("a.zip"));
        const QString place = bench.dir.path() + "/saved.zip";
        emit dialog->fileSelected(place);
        QFile file(place);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), bytes);
        dialog->close();
        QCOMPARE(bench.tabs().count(), 0);
    }

    void withoutTheStoreWhatWasReadBeforeOpens() {
        Bench bench;
        bench.put({{"pump_", plainForm}});
        QCOMPARE(bench.launch(Kind::Form, "pump_"), QString());
        bench.launcher->setConnected(false);
        QCOMPARE(bench.launch(Kind::Form, "pump_"), QString());
        QCOMPARE(bench.tabs().count(), 2);
        QVERIFY(!bench.launch(Kind::Form, "valve_").isEmpty());
        QVERIFY(!bench.launch(Kind::File, "a.txt", "", false, "docs").isEmpty());
        QDir().mkpath(bench.app.m_workDir + "files/docs");
        QFile copy(bench.app.m_workDir + "files/docs/a.txt");
        QVERIFY(copy.open(QIODevice::WriteOnly) && copy.write("text") == 4);
        copy.close();
        QCOMPARE(bench.launch(Kind::File, "a.txt", "", false, "docs"), QString());
        QVERIFY(!bench.launch(Kind::File, "life", "", false, "../..").isEmpty());
    }

    void whatChangesIsMarkedAndStays() {
        Bench bench;
        bench.put({{"pump_", plainForm}});
        QCOMPARE(bench.launch(Kind::Form, "pump_"), QString());
        const auto text = [&] { return bench.tabs().tabText(0); };
        bench.launcher->changed(change("Menu", "other"));
        bench.launcher->changed(change("MenuResourceFile", "x"));
        QTest::qWait(700);
        QVERIFY(!text().contains("●"));
        bench.put({{"pump_", QByteArray(plainForm) + "<!-- -->"}});
        bench.launcher->changed(change("MenuResourceFile", "x"));
        QTRY_VERIFY(text().contains("●"));
        QVERIFY(bench.tabs().tabToolTip(0).contains("Содержимое"));
        QCOMPARE(bench.launch(Kind::Module, "Menu"), QString());
        bench.launcher->changed(change("Menu", "E1", OrvoEventDelete));
        QVERIFY(bench.tabs().tabText(1).contains("●"));
        QVERIFY(bench.tabs().tabToolTip(1).contains("больше нет"));
        QCOMPARE(bench.tabs().count(), 2);
    }

    void modulesAreOpenedAnewAfterAReload() {
        Bench bench;
        QCOMPARE(bench.launch(Kind::Module, "Menu", "a=1"), QString());
        bench.launcher->rememberModules();
        bench.modules.stopAll();
        QCOMPARE(bench.launcher->count(), 0);
        bench.launcher->reopenModules();
        QCOMPARE(bench.launcher->count(), 1);
        QCOMPARE(bench.life().filter("param a=1").size(), 2);
    }

    void tabsOfAReloadAreWhereTheyWere() {
        Bench bench;
        bench.put({{"pump_", plainForm}});
        QCOMPARE(bench.launch(Kind::Module, "Menu"), QString());
        QCOMPARE(bench.launch(Kind::Form, "pump_"), QString());
        QCOMPARE(bench.launch(Kind::Module, "Resources"), QString());
        bench.window.setTitle(bench.tabs().widget(1), bench.tabs().widget(0)->windowTitle());
        const auto pages = [&] {
            QStringList all;
            for (int i = 0; i < bench.tabs().count(); ++i) {
                const auto* module = qobject_cast<COrvoCliMod*>(bench.tabs().widget(i));
                all << (module ? module->m_moduleName : "form");
            }
            return all;
        };
        const QStringList before = pages();
        QCOMPARE(before, QStringList({"Menu", "form", "Resources"}));
        for (const int current : {0, 1, 2}) {
            bench.tabs().setCurrentIndex(current);
            const ModuleTabs::Order tabs = bench.window.tabs()->order();
            bench.launcher->rememberModules();
            bench.modules.stopAll();
            bench.launcher->reopenModules();
            bench.window.tabs()->arrange(tabs);
            QCOMPARE(pages(), before);
            QCOMPARE(bench.tabs().currentIndex(), current);
        }
    }

    void whatCouldNotBeOpenedIsKnownBeforehand() {
        Bench bench;
        bench.put({{"pump_", plainForm}});
        const auto why = [&](int kind, const char* name) {
            LaunchRequest request;
            request.kind = kind;
            request.name = name;
            bench.launcher->check(&request);
            return request.refusal;
        };
        QCOMPARE(why(Kind::Module, "Menu"), QString());
        QVERIFY(why(Kind::Module, "Trends").contains("Trends"));
        QCOMPARE(why(Kind::Form, "pump_"), QString());
        QVERIFY(why(Kind::Form, "valve_").contains("valve_"));
        QVERIFY(why(Kind::File, "a.txt").contains("a.txt"));
        QCOMPARE(bench.tabs().count(), 0);
    }
};

QTEST_MAIN(TestLauncher)
#include "tst_launcher.moc"
