// The module library as a client loads it: its one entry, and the modules that it makes.
#include "frame/OrvoClient.h"
#include "frame/modules.h"

#include <QAction>
#include <QLibrary>
#include <QProcess>
#include <QTest>
#include <QTreeView>

class TestLibrary : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QLibrary library(m_path);
        QVERIFY2(library.load(), qPrintable(library.errorString()));
        m_make = reinterpret_cast<CppCliModuleFunction>(library.resolve("CppCliModule"));
        QVERIFY(m_make);
    }

    void exportsExactlyOneSymbol() {
        QProcess nm;
        nm.start("nm", {"-D", "--defined-only", "--format=posix", m_path});
        QVERIFY(nm.waitForFinished());
        QCOMPARE(nm.exitCode(), 0);
        QStringList symbols;
        for (const QByteArray& line : nm.readAllStandardOutput().split('\n'))
            if (!line.isEmpty())
                symbols << QString::fromLatin1(line).section(' ', 0, 1);
        QCOMPARE(symbols, QStringList{"CppCliModule T"});
    }

    void noNameMakesNoModule() {
        QVERIFY(!m_make(&m_app, nullptr));
        QVERIFY(!m_make(&m_app, ""));
    }

    void unknownNamesMakeNoModule_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("Russian") << QByteArray("\xCC\xE5\xED\xFE"); // "Меню" in Windows-1251
        QTest::newRow("leading blank") << QByteArray(" Menu");
        QTest::newRow("more") << QByteArray("Menus");
        QTest::newRow("class name") << QByteArray("OrvoMenu");
    }

    void unknownNamesMakeNoModule() {
        QFETCH(QByteArray, name);
        QVERIFY(!m_make(&m_app, name.constData()));
    }

    void theMenuEditorAnswersToItsNameInAnyCase_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("as it is") << QByteArray("Menu");
        QTest::newRow("capitals") << QByteArray("MENU");
        QTest::newRow("small") << QByteArray("menu");
    }

    void theMenuEditorAnswersToItsNameInAnyCase() {
        QFETCH(QByteArray, name);
        std::unique_ptr<COrvoCliMod> module(static_cast<COrvoCliMod*>(m_make(&m_app, name)));
        QVERIFY(module);
        QCOMPARE(module->metaObject()->className(), "OrvoMenu");
        QCOMPARE(module->objectName(), QString("OrvoMenu"));
        QVERIFY(module->m_moduleName.isEmpty());
    }

    // The application of this test has no session at all.
    void makingAModuleTouchesNoServer() {
        QVERIFY(!m_app.m_session);
        std::unique_ptr<COrvoCliMod> module(static_cast<COrvoCliMod*>(m_make(&m_app, "Menu")));
        for (const QTreeView* view : module->findChildren<QTreeView*>())
            QVERIFY(!view->model());
        for (const QAction* action : module->findChildren<QAction*>(QRegularExpression("^act")))
            QVERIFY2(!action->icon().isNull(), qPrintable(action->objectName()));
    }

private:
    QString m_path = qEnvironmentVariable("ORVO_MODULE_DIR") + "/libOrvoMenu.so";
    CppCliModuleFunction m_make = nullptr;
    COrvoCliApp m_app;
};

QTEST_MAIN(TestLibrary)
#include "tst_library.moc"
