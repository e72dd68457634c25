// Stored forms shown in a window.
#include "apps/client/FormViewer.h"
#include "apps/client/HostApp.h"
#include "tests/client/HostFixture.h"

#include <QBuffer>
#include <QImage>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

using namespace orvo;
using namespace orvo::test;

namespace {

const char* const designerForm = R"(<?xml version="1.0" encoding="UTF-8"?>
<ui version="4.0"><class>Form</class><widget class="QWidget" name="Form">
<property name="geometry"><rect><x>0</x><y>0</y><width>320</width><height>200</height></rect></property>
<widget class="QPushButton" name="start"><property name="geometry"><rect><x>10</x><y>10</y>
<width>100</width><height>30</height></rect></property>
<property name="text"><string>Пуск насоса</string></property></widget></widget></ui>)";

QByteArray png(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

struct Bench : Host {
    Module module{&app};
    Bench() {
        write("MenuResourceFolder", 1,
              {{"KeyLink", "f"}, {"type_", "3"}, {"caption", "формы отображения"}});
    }
    void put(const QList<QPair<QString, QByteArray>>& files) {
        CToolFormPut tool(&module);
        for (const auto& [name, bytes] : files)
            tool.AddFile(name, bytes.constData(), bytes.size(), 1);
        tool.Perform(false);
    }
    std::unique_ptr<QWidget> open(const QString& request, QString* error = nullptr) {
        QString ignored;
        std::unique_ptr<QWidget> window(
            app::openForm(store(), request, nullptr, error ? error : &ignored));
        if (window)
            window->setAttribute(Qt::WA_DeleteOnClose, false);
        return window;
    }
};

} // namespace

class TestForms : public QObject {
    Q_OBJECT
private slots:
    void aDesignerFormIsLive() {
        Bench bench;
        bench.put({{"котёл_", designerForm}, {"котёл.png", png(20, 10)}, {"котёл.txt", "текст"}});
        auto window = bench.open("котёл_");
        QVERIFY(window);
        QVERIFY(window->isVisible());
        QVERIFY(window->windowTitle().contains("котёл_"));
        auto* button = window->findChild<QPushButton*>("start");
        QVERIFY(button);
        QCOMPARE(button->text(), QString("Пуск насоса"));
        QSignalSpy clicked(button, &QPushButton::clicked);
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(clicked.count(), 1);
        auto* tabs = window->findChild<QTabWidget*>();
        QCOMPARE(tabs->count(), 3);
        QCOMPARE(tabs->tabText(0), QString("котёл_"));
    }

    void picturesAndTextsAreShownAsWhatTheyAre() {
        Bench bench;
        const QByteArray cp1251 = QByteArray("\xcf\xf0\xe8\xe2\xe5\xf2");
        bench.put({{"a", png(33, 22)},
                   {"a_utf8", "Привет"},
                   {"a_win", cp1251},
                   {"a_bin", QByteArray("\x7f\x00\x01", 3)},
                   {"a_bad.ui", "<ui version=\"4.0\"><widget class="}});
        auto window = bench.open("a");
        QVERIFY(window);
        auto* tabs = window->findChild<QTabWidget*>();
        QCOMPARE(tabs->count(), 5);
        QHash<QString, QString> texts;
        for (int i = 0; i < tabs->count(); ++i)
            if (auto* text = qobject_cast<QPlainTextEdit*>(tabs->widget(i)))
                texts[tabs->tabText(i)] = text->toPlainText();
            else if (auto* below = tabs->widget(i)->findChild<QPlainTextEdit*>())
                texts[tabs->tabText(i)] = below->toPlainText();
        QCOMPARE(texts.value("a_utf8"), QString("Привет"));
        QCOMPARE(texts.value("a_win"), QString("Привет"));
        QVERIFY(texts.value("a_bin").contains("7f 00 01"));
        QVERIFY(texts.value("a_bad.ui").startsWith("<ui"));
        QVERIFY(!texts.contains("a"));
        bool picture = false;
        for (QLabel* label : window->findChildren<QLabel*>())
            picture = picture || (label->pixmap(Qt::ReturnByValue).size() == QSize(33, 22));
        QVERIFY(picture);
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
        Bench bench;
        bench.put({{name, bytes}, {name + ".second", "whole"}});
        QString error;
        auto window = bench.open(name, &error);
        QVERIFY(window);
        QCOMPARE(window->findChild<QTabWidget*>()->count(), 2);
        const auto* notice = window->findChild<QLabel*>("damageLabel");
        QCOMPARE(notice != nullptr, isDamaged);
        QCOMPARE(!error.isEmpty(), isDamaged);
        if (isDamaged) {
            QVERIFY2(notice->text().contains("«" + name + "»"), qPrintable(notice->text()));
            QVERIFY2(notice->text().size() > 40, qPrintable(notice->text())); // with the reason
            QVERIFY2(error.contains(name), qPrintable(error));
        }
    }

    void parametersAreCutFromTheName() {
        Bench bench;
        bench.put({{"a", "one"}});
        bench.put({{"a;b", "two"}});
        QVERIFY(bench.open("a;x=1;y=2")->windowTitle().endsWith("— a"));
        QVERIFY(bench.open("a;b;x=1")->windowTitle().endsWith("— a;b"));
    }

    void aMissingFormIsAClearMessage() {
        Bench bench;
        QString error;
        QVERIFY(!bench.open("нет такой;параметр", &error));
        QVERIFY(error.contains("«нет такой»"));
        QVERIFY(!bench.open("", &error));
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
