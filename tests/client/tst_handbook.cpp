// The handbook: every pane has its chapter, and F1 shows it.
#include "apps/client/Handbook.h"
#include "apps/client/Installation.h"
#include "apps/client/MainWindow.h"
#include "apps/client/ModuleLibraries.h"
#include "tests/client/HostFixture.h"

#include <QAction>
#include <QDockWidget>
#include <QLineEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTreeView>
#include <QtTest>

using namespace orvo;
using namespace orvo::app;
using namespace orvo::test;

namespace {

QString pageText() {
    QFile file(installation::handbookPage("user-guide.html"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class TestHandbook : public QObject {
    Q_OBJECT
private slots:
    void everyChapterIsInTheGuide() {
        const QString page = pageText();
        QVERIFY2(!page.isEmpty(), qPrintable(installation::handbookPage("user-guide.html")));
        for (const PaneChapter& one : paneChapters())
            QVERIFY2(page.contains(QStringLiteral(" id=\"%1\">").arg(one.chapter)), one.chapter);
        QVERIFY(page.contains(" id=\"main\">"));
    }

    void picturesAndLinksOfTheHandbookAreThere() {
        for (const char* name : {"operator-guide.html", "user-guide.html", "administrator.html",
                                 "module-guide.html", "scale.html"}) {
            const QString path = installation::handbookPage(name);
            QFile file(path);
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
            const QString page = QString::fromUtf8(file.readAll());
            QVERIFY(!page.contains("|---")); // tables are tables
            auto links = QRegularExpression("(?:href|src)=\"([^\"#]+)").globalMatch(page);
            QVERIFY(links.hasNext());
            while (links.hasNext()) {
                const QString link = links.next().captured(1);
                QVERIFY2(QFileInfo::exists(QFileInfo(path).path() + '/' + link), qPrintable(link));
            }
            auto anchors = QRegularExpression("href=\"#([^\"]+)").globalMatch(page);
            while (anchors.hasNext()) {
                const QString anchor = anchors.next().captured(1);
                QVERIFY2(page.contains(" id=\"" + anchor + "\""), qPrintable(anchor));
            }
        }
    }

    void everyPaneOfTheEditorsIsKnown() {
        Host host;
        ModuleLibraries library;
        library.load(installation::moduleDirectory(), {});
        QVERIFY2(library.problems().isEmpty(), qPrintable(library.problems().join('\n')));
        const std::unique_ptr<COrvoCliMod> menu(library.create(&host.app, "Menu"));
        const std::unique_ptr<COrvoCliMod> resources(library.create(&host.app, "Resources"));
        const auto pane = [](const std::unique_ptr<COrvoCliMod>& module, const char* name) {
            return module->findChild<QWidget*>(name);
        };
        QCOMPARE(chapterOf(pane(menu, "tvDesck")), QString("desktop"));
        QCOMPARE(chapterOf(pane(menu, "tvMenu")), QString("order"));
        QCOMPARE(chapterOf(pane(menu, "tvProp")), QString("passport"));
        QCOMPARE(chapterOf(menu.get()), QString("menu"));
        QCOMPARE(chapterOf(pane(resources, "tvRes")), QString("resources"));
        QCOMPARE(chapterOf(pane(resources, "tvProp")), QString("modules"));
        QCOMPARE(chapterOf(resources->findChild<QLineEdit*>()), QString("search"));
        QCOMPARE(chapterOf(nullptr), QString("main"));
    }

    void helpShowsTheChapterOfTheFocusedPane() {
        MainWindow window("store", "engineer");
        auto* tree = new QTreeView;
        auto* around = new QWidget;
        around->setObjectName("OrvoMenu");
        tree->setObjectName("tvMenu");
        tree->setParent(around);
        window.addPane(around, "pane", "testDock")->show();
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        tree->setFocus();
        QTRY_VERIFY(tree->hasFocus());
        QTest::keyClick(tree, Qt::Key_F1);
        auto* handbook = window.findChild<Handbook*>();
        QVERIFY(handbook && handbook->isVisible());
        QCOMPARE(handbook->browser()->source().fragment(), QString("order"));
        QTRY_VERIFY(handbook->browser()->verticalScrollBar()->value() > 0);
        // What is at the top of the window is the heading.
        const QTextCursor top = handbook->browser()->cursorForPosition({40, 12});
        QVERIFY2(top.block().text().contains("Порядок"), qPrintable(top.block().text()));
    }

    void keysCloseTheHandbook() {
        MainWindow window("store", "engineer");
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QString error;
        for (const auto& [key, with] :
             {std::pair(Qt::Key_Escape, Qt::KeyboardModifiers()),
              std::pair(Qt::Key_W, Qt::KeyboardModifiers(Qt::ControlModifier))}) {
            QVERIFY2(window.showHandbook("user-guide", "order", &error), qPrintable(error));
            auto* handbook = window.findChild<Handbook*>();
            QVERIFY(QTest::qWaitForWindowActive(handbook));
            auto* text = handbook->findChild<QTextBrowser*>("handbookText");
            text->setFocus();
            QTest::keyClick(text, key, with);
            QVERIFY2(!handbook->isVisible(), qPrintable(QKeySequence(key).toString()));
            QVERIFY(window.isVisible());
            QTRY_VERIFY(window.isActiveWindow());
        }
    }
};

QTEST_MAIN(TestHandbook)
#include "tst_handbook.moc"
