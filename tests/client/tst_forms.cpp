// Stored forms shown in a window, by the process beside the client.
#include "apps/client/FormView.h"
#include "apps/client/FormViewer.h"
#include "apps/client/HostApp.h"
#include "apps/formview/Content.h"
#include "tests/client/FormFixture.h"

#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

#include <csignal>

using namespace orvo;
using namespace orvo::test;
using app::FormView;

namespace {

const char* const designerForm = R"(<?xml version="1.0" encoding="UTF-8"?>
<ui version="4.0"><class>Form</class><widget class="QWidget" name="Form">
<property name="geometry"><rect><x>0</x><y>0</y><width>320</width><height>200</height></rect></property>
<widget class="QCheckBox" name="start"><property name="geometry"><rect><x>10</x><y>10</y>
<width>100</width><height>30</height></rect></property></widget>
<widget class="QFrame" name="lamp"><property name="geometry"><rect><x>100</x><y>100</y>
<width>50</width><height>50</height></rect></property><property name="visible"><bool>false</bool></property>
<property name="styleSheet"><string>background:#ff00ff</string></property></widget>
<widget class="QLineEdit" name="edit"><property name="geometry"><rect><x>10</x><y>60</y>
<width>100</width><height>30</height></rect></property></widget>
<widget class="QComboBox" name="list"><property name="geometry"><rect><x>200</x><y>10</y>
<width>100</width><height>30</height></rect></property>
<property name="styleSheet"><string>QAbstractItemView { background:#00ffff }</string></property>
<item><property name="text"><string>a</string></property></item>
<item><property name="text"><string>b</string></property></item></widget>
</widget><connections><connection><sender>start</sender><signal>toggled(bool)</signal>
<receiver>lamp</receiver><slot>setVisible(bool)</slot></connection></connections></ui>)";

} // namespace

class TestForms : public QObject {
    Q_OBJECT
private slots:
    void aDesignerFormIsLive() {
        FormFixture forms;
        forms.put({{"котёл_", designerForm}, {"котёл.png", png(20, 10)}, {"котёл.txt", "текст"}});
        auto window = forms.open("котёл_");
        QVERIFY(window);
        QVERIFY(window->isVisible());
        QVERIFY(window->windowTitle().contains("котёл_"));
        QCOMPARE(window->tabs()->count(), 3);
        QCOMPARE(window->tabs()->tabText(0), QString("котёл_"));
        FormView* view = currentView(*window);
        QTRY_COMPARE_WITH_TIMEOUT(view->state(), FormView::State::Shown, timeoutMs);
        QTRY_VERIFY(!view->canvas()->image().isNull());
        QVERIFY(!hasColor(*view, Qt::magenta));
        QTest::mouseClick(canvasOf(*view), Qt::LeftButton, {}, {20, 25});
        QTRY_VERIFY(hasColor(*view, Qt::magenta)); // its lamp is on
        QTest::mouseClick(canvasOf(*view), Qt::LeftButton, {}, {20, 25});
        QTRY_VERIFY(!hasColor(*view, Qt::magenta));
    }

    void keysReachTheForm() {
        FormFixture forms;
        forms.put({{"a.ui", designerForm}});
        auto window = forms.open("a.ui");
        FormView* view = currentView(*window);
        QTRY_VERIFY_WITH_TIMEOUT(!view->canvas()->image().isNull(), timeoutMs);
        QTest::mouseClick(canvasOf(*view), Qt::LeftButton, {}, {20, 25});
        QTRY_VERIFY(hasColor(*view, Qt::magenta));
        QTest::keyClick(canvasOf(*view), Qt::Key_Space);
        QTRY_VERIFY(!hasColor(*view, Qt::magenta));
    }

    void whatIsCopiedInAFormIsOnTheClipboard() {
        FormFixture forms;
        forms.put({{"a.ui", designerForm}});
        auto window = forms.open("a.ui");
        FormView* view = currentView(*window);
        QTRY_VERIFY_WITH_TIMEOUT(!view->canvas()->image().isNull(), timeoutMs);
        QGuiApplication::clipboard()->setText("before");
        QWidget* canvas = canvasOf(*view);
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QTest::mouseClick(canvas, Qt::LeftButton, {}, {50, 75}); // its line
        QTest::keyClicks(canvas, "kotel 7");
        QTest::keyClick(canvas, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(canvas, Qt::Key_C, Qt::ControlModifier);
        QTRY_COMPARE(QGuiApplication::clipboard()->text(), QString("kotel 7"));
        // A form that nobody works in puts nothing there.
        QTest::keyClicks(canvas, "8");
        canvas->clearFocus();
        QTest::keyClick(canvas, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(canvas, Qt::Key_C, Qt::ControlModifier);
        QTest::qWait(500);
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("kotel 7"));
    }

    void aListOpensOverTheForm() {
        FormFixture forms;
        forms.put({{"a.ui", designerForm}});
        auto window = forms.open("a.ui");
        FormView* view = currentView(*window);
        QTRY_VERIFY_WITH_TIMEOUT(!view->canvas()->image().isNull(), timeoutMs);
        QVERIFY(!hasColor(*view, Qt::cyan));
        QTest::mouseClick(canvasOf(*view), Qt::LeftButton, {}, {250, 25});
        QTRY_VERIFY(hasColor(*view, Qt::cyan));
        QTest::keyClick(canvasOf(*view), Qt::Key_Escape);
        QTRY_VERIFY(!hasColor(*view, Qt::cyan));
    }

    void theFormFollowsTheSizeOfTheWindow() {
        FormFixture forms;
        forms.put({{"a.ui", designerForm}});
        auto window = forms.open("a.ui");
        FormView* view = currentView(*window);
        QTRY_VERIFY_WITH_TIMEOUT(!view->canvas()->image().isNull(), timeoutMs);
        window->resize(1000, 850);
        QTRY_COMPARE(view->canvas()->image().size(), view->canvas()->size());
        QCOMPARE(view->canvas()->size(), QSize(1000, 850));
    }

    void aFormLooksAsQtPaintsIt_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"panel.ui", "units.ui"})
            QTest::newRow(name) << name;
    }

    /// Forms of the demonstration, shown by the viewer and in this process.
    void aFormLooksAsQtPaintsIt() {
        QFETCH(QString, name);
        QFile file(qEnvironmentVariable("ORVO_SOURCE_DIR") + "/apps/admin/demo/data/forms/" + name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        formview::Document document;
        document.bytes = file.readAll();
        document.name = name;
        document.directory = QDir::currentPath();
        FormFixture forms;
        forms.put({{name, document.bytes}});
        auto window = forms.open(name);
        FormView* view = currentView(*window);
        QTRY_VERIFY_WITH_TIMEOUT(!view->canvas()->image().isNull(), timeoutMs);
        const formview::Content content = formview::makeContent(document);
        QVERIFY2(content.notice.isEmpty(), qPrintable(content.notice));
        const auto expected = [&] {
            content.widget->resize(view->canvas()->size());
            return content.widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
        };
        if (qEnvironmentVariableIsSet("ORVO_KEEP_PICTURES")) {
            QTest::qWait(2000);
            expected().save(name + ".expected.png");
            view->canvas()->image().save(name + ".shown.png");
        }
        QTRY_COMPARE(view->canvas()->image().convertToFormat(QImage::Format_RGB32), expected());
    }

    void aPictureIsShown() {
        FormFixture forms;
        forms.put({{"a.png", png(33, 22)}});
        auto window = forms.open("a.png");
        FormView* view = currentView(*window);
        QTRY_VERIFY_WITH_TIMEOUT(hasColor(*view, Qt::darkGreen), timeoutMs);
    }

    void aFormShowsThePicturesStoredBesideIt() {
        FormFixture forms;
        const QByteArray form = R"(<ui version="4.0"><widget class="QLabel" name="Form">
            <property name="pixmap"><pixmap>котёл.png</pixmap></property></widget></ui>)";
        forms.put({{"котёл_", form}, {"котёл.png", png(20, 10)}});
        auto window = forms.open("котёл_");
        FormView* view = currentView(*window);
        QTRY_VERIFY_WITH_TIMEOUT(hasColor(*view, Qt::darkGreen), timeoutMs);
        QVERIFY(view->findChild<QLabel*>("damageLabel")->isHidden());
    }

    void whatIsDamagedIsSaid_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("isDamaged");
        const QByteArray form(designerForm);
        QTest::newRow("form cut short") << "a_" << form.left(form.size() / 2) << true;
        QTest::newRow("form without its start") << "a.ui" << QByteArray("\x01\x02\x03", 3) << true;
        QTest::newRow("empty form") << "a.ui" << QByteArray() << true;
        QTest::newRow("picture cut short") << "a.png" << png(200, 200).left(40) << true;
        QTest::newRow("picture of zeros") << "a.png" << QByteArray(1000, '\0') << true;
        QTest::newRow("too large a picture") << "a.PNG" << png(20000, 1) << true;
        QTest::newRow("text that tells of forms")
            << "a.txt" << QByteArray("see <ui version=\"4.0\"> and so on") << false;
        QTest::newRow("anything") << "a.bin" << QByteArray("\x00\xff", 2) << false;
        QTest::newRow("whole form") << "a.ui" << form << false;
        QTest::newRow("whole picture") << "a.png" << png(20, 20) << false;
    }

    void whatIsDamagedIsSaid() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(bool, isDamaged);
        FormFixture forms;
        forms.put({{name, bytes}, {name + ".second", "whole"}});
        auto window = forms.open(name);
        QVERIFY(window);
        QCOMPARE(window->tabs()->count(), 2);
        QSignalSpy problems(window.get(), &app::FormWindow::problem);
        FormView* view = currentView(*window);
        QTRY_COMPARE_WITH_TIMEOUT(view->state(), FormView::State::Shown, timeoutMs);
        const auto* notice = view->findChild<QLabel*>("damageLabel");
        QCOMPARE(!notice->isHidden(), isDamaged);
        QCOMPARE(problems.count(), isDamaged ? 1 : 0);
        if (isDamaged) {
            QVERIFY2(notice->text().contains("«" + name + "»"), qPrintable(notice->text()));
            QVERIFY2(notice->text().size() > 40, qPrintable(notice->text())); // with the reason
            QVERIFY2(problems[0][0].toString().contains(name),
                     qPrintable(problems[0][0].toString()));
        }
    }

    void aViewerThatEndsIsSaidAndMayBeStartedAgain() {
        FormFixture forms;
        forms.put({{"a.ui", designerForm}});
        auto window = forms.open("a.ui");
        QSignalSpy problems(window.get(), &app::FormWindow::problem);
        FormView* view = currentView(*window);
        QTRY_COMPARE_WITH_TIMEOUT(view->state(), FormView::State::Shown, timeoutMs);
        ::kill(static_cast<pid_t>(view->processId()), SIGSEGV);
        QTRY_COMPARE(view->state(), FormView::State::Failed);
        QCOMPARE(problems.count(), 1);
        const auto* failure = view->findChild<QLabel*>("failureLabel");
        QVERIFY(failure->isVisible());
        QVERIFY2(failure->text().contains("a.ui"), qPrintable(failure->text()));
        view->findChild<QPushButton*>()->click();
        QTRY_COMPARE_WITH_TIMEOUT(view->state(), FormView::State::Shown, timeoutMs);
        QVERIFY(failure->isHidden());
        QTRY_VERIFY(!view->canvas()->image().isNull());
    }

    void aViewerThatStopsIsEnded() {
        FormFixture forms;
        forms.limits.answerMs = 1000;
        forms.put({{"a.txt", "text"}});
        auto window = forms.open("a.txt");
        FormView* view = currentView(*window);
        QTRY_COMPARE_WITH_TIMEOUT(view->state(), FormView::State::Shown, timeoutMs);
        ::kill(static_cast<pid_t>(view->processId()), SIGSTOP);
        QTRY_COMPARE(view->state(), FormView::State::Failed);
        QVERIFY(view->findChild<QLabel*>("failureLabel")->text().contains("не отвечает"));
    }

    void aViewerThatTakesTooMuchMemoryIsEnded() {
        FormFixture forms;
        forms.limits.memory = 4 << 20; // less than any needs
        forms.put({{"a.txt", "text"}});
        auto window = forms.open("a.txt");
        FormView* view = currentView(*window);
        QTRY_COMPARE_WITH_TIMEOUT(view->state(), FormView::State::Failed, timeoutMs);
        const QString text = view->findChild<QLabel*>("failureLabel")->text();
        // A build without sanitizers may end before Qt has started.
        QVERIFY2(text.contains("памяти") || text.contains("завершился"), qPrintable(text));
    }

    void aMissingViewerIsSaid() {
        FormFixture forms;
        forms.program = "/nowhere/orvo-form-view";
        forms.put({{"a.txt", "text"}});
        auto window = forms.open("a.txt");
        FormView* view = currentView(*window);
        QTRY_COMPARE(view->state(), FormView::State::Failed);
        QVERIFY(view->findChild<QLabel*>("failureLabel")->text().contains("не запускается"));
    }

    void theViewerEndsWithItsWindow() {
        FormFixture forms;
        forms.put({{"a.txt", "text"}});
        auto window = forms.open("a.txt");
        QTRY_COMPARE_WITH_TIMEOUT(currentView(*window)->state(), FormView::State::Shown, timeoutMs);
        const auto process = static_cast<pid_t>(currentView(*window)->processId());
        QCOMPARE(::kill(process, 0), 0);
        window.reset();
        QCOMPARE(::kill(process, 0), -1);
    }

    void titlesAreShownLetterByLetterInOneLine() {
        FormFixture forms;
        const QString name = "<b>&a;" + QString(5000, 'x');
        store::StoredFile file;
        file.name = name.toStdString();
        file.bytes = "text";
        const app::FormWindow window(forms.program, "a\nb" + name, {file}, {}, forms.limits,
                                     nullptr);
        QVERIFY(window.tabs()->tabText(0).startsWith("<b>&&a;"));
        QVERIFY(window.tabs()->tabText(0).size() < 200);
        QVERIFY(window.windowTitle().contains("a b<b>&a;"));
        QVERIFY(window.windowTitle().size() < 200);
    }

    void parametersAreCutFromTheName() {
        FormFixture forms;
        forms.put({{"a", "one"}});
        forms.put({{"a;b", "two"}});
        QVERIFY(forms.open("a;x=1;y=2")->windowTitle().endsWith("— a"));
        QVERIFY(forms.open("a;b;x=1")->windowTitle().endsWith("— a;b"));
    }

    void aMissingFormIsAClearMessage() {
        FormFixture forms;
        QString error;
        QVERIFY(!forms.open("нет такой;параметр", &error));
        QVERIFY(error.contains("«нет такой»"));
        QVERIFY(!forms.open("", &error));
        QVERIFY(!error.isEmpty());
    }

    void theModulesCommandIsUnderstoodAndOthersAreNot() {
        app::HostApp host;
        Module module(&host);
        QStringList requests;
        QStringList logged;
        connect(&host, &app::HostApp::formRequested, this,
                [&](const QString& request) { requests << request; });
        connect(&host, &app::HostApp::logged, this,
                [&](int, const QString&, const QString& text) { logged << text; });
        const void* block[3] = {nullptr, "RUN_FILE", "\xea\xee\xf2\xb8\xeb;p"};
        module.doCall(64, block);
        QCOMPARE(requests, QStringList("котёл;p"));
        const void* other[3] = {nullptr, "FORMAT", "c:"};
        const void* half[3] = {nullptr, "RUN_FILE", nullptr};
        module.doCall(64, other);
        module.doCall(64, half);
        module.doCall(64, nullptr);
        module.doCall(65, nullptr);
        QCOMPARE(requests.size(), 1);
        QCOMPARE(logged.size(), 4);
    }
};

QTEST_MAIN(TestForms)
#include "tst_forms.moc"
