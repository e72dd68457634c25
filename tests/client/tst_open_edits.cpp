// An open edit in the running client: what others write meanwhile waits, and counts all the same
// when the edit is saved; closing a tab asks about what is open in it.
#include "apps/client/PageDocks.h"
#include "apps/client/UnwrittenPane.h"
#include "frame/Launch.h"
#include "frame/Vocabulary.h"
#include "tests/client/RunningClient.h"
#include "tests/menu/WindowHands.h"

#include <QDockWidget>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeWidget>

using namespace orvo;
using namespace orvo::test;
using app::UnwrittenPane;

namespace {

/// Modules and folders, and the editors started over them.
struct Fixture : RunningClient {
    Fixture() {
        stop();
        folder("mod", 1, {}, "модули");
        folder("trends", 1, "mod", "Тренды");
        folder("alarms", 1, "mod", "Аварии");
        folder("fun", 2, {}, "функции");
        folder("frm", 3, {}, "формы отображения");
        folder("docs", 4, {}, "docs");
        folder("plans", 4, {}, "plans");
        start();
    }
    void folder(const char* key, int type, const char* parent, const char* caption) {
        Fields fields = {{"KeyLink", key}, {"type_", std::to_string(type)}, {"caption", caption}};
        if (parent)
            fields.emplace_back("ParentKey", parent);
        otherWrites(MDX_INSERT, fields, "MenuResourceFolder");
    }
    static QModelIndex find(const QTreeView* view, const QString& text) {
        const QAbstractItemModel* model = view->model();
        const QModelIndexList found = model->match(model->index(0, 0), Qt::DisplayRole, text, 1,
                                                   Qt::MatchExactly | Qt::MatchRecursive);
        if (found.isEmpty())
            qFatal("no row %s", qPrintable(text));
        return found.first();
    }
    /// Types over a value of the passport of an editor's current row.
    static void type(COrvoCliMod* editor, const QString& row, const QString& text) {
        auto* view = editor->findChild<QTreeView*>("tvProp");
        const QModelIndex value = find(view, row).siblingAtColumn(1);
        editor->activateWindow();
        view->setFocus();
        view->setCurrentIndex(value);
        if (!view->indexWidget(value))
            view->edit(value);
        auto* line = qobject_cast<QLineEdit*>(view->indexWidget(value));
        if (!line)
            qFatal("no editor");
        line->selectAll();
        typeText(line, text);
        QTest::keyClick(line, Qt::Key_Return);
    }
    void save() const {
        QVERIFY(QMetaObject::invokeMethod(module("Resources"), "on_save_pressed"));
    }
    int count(const char* table, const char* field, const char* value) {
        CMDArray rows;
        const store::Status status = host.store().fetchWhere(table, field, value, rows.array);
        int found = 0;
        while (status.ok() && MDARec(rows.array, 0, found))
            ++found;
        return status.ok() ? found : -1;
    }
    QTreeWidget* unwritten() const { return child<UnwrittenPane>("unwrittenPane")->tree(); }
    QMessageBox* question() const { return child<QMessageBox>("closeQuestion"); }
    void answer(const char* button) const {
        QTest::mouseClick(question()->findChild<QPushButton*>(button), Qt::LeftButton);
    }
};

} // namespace

class TestOpenEdits : public QObject {
    Q_OBJECT
private slots:
    void aRowThatShowsWhatIsNotWrittenSaysSo() {
        Fixture fixture;
        const auto mark = [&](const char* key) {
            return fixture.module("Menu")->m_app->recordMark("Menu", key);
        };
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        QVERIFY(fixture.host.write("Menu", MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "чужое"}}));
        fixture.renames("d", "своё"); // before that has been heard of
        QCOMPARE(mark("d").label, QString("не записано"));
        QVERIFY2(mark("d").tip.contains("Shift+F8"), qPrintable(mark("d").tip));
        QVERIFY(mark("a").label.isEmpty());
        QVERIFY(fixture.module("Menu")->m_app->hasRecordMarks());
        auto* giveUp = fixture.child<QPushButton>("unwrittenGiveUp");
        QTRY_VERIFY(giveUp->isEnabled());
        giveUp->click();
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) чужое"));
        QVERIFY(mark("d").label.isEmpty());
        QVERIFY(!fixture.module("Menu")->m_app->hasRecordMarks());
    }

    void theLastOneGivenUpByKeysLeadsBackToTheEditor() {
        Fixture fixture;
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        fixture.client->window()->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), fixture.client->window());
        QTreeView* menu = fixture.view("tvMenu");
        menu->setFocus();
        QVERIFY(fixture.host.write("Menu", MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "чужое"}}));
        fixture.renames("d", "своё"); // before that has been heard of
        QTRY_VERIFY(fixture.child<QPushButton>("unwrittenGiveUp")->isEnabled());
        fixture.unwritten()->setFocus();
        for (const char* next : {"unwrittenRepeat", "unwrittenGiveUp"}) { // as they stand
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget()->objectName(), QString(next));
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QTRY_VERIFY(!fixture.child<QDockWidget>("unwrittenDock")->isVisible());
        QTRY_COMPARE(QApplication::focusWidget(), menu);
    }

    void afterARefusalThePaneHasTheKeyboardAgain() {
        Fixture fixture;
        COrvoCliMod* editor = fixture.module("Resources");
        fixture.client->window()->showPage(editor);
        fixture.view("tvRes")->setCurrentIndex(Fixture::find(fixture.view("tvRes"), "Аварии"));
        fixture.action("actAddModule")->trigger(); // its object is missing
        fixture.view("tvRes")->setFocus();
        QTest::keyClick(fixture.client->window(), Qt::Key_F8);
        auto* problems = fixture.child<QTreeView>("problemsTree");
        QTRY_COMPARE(QApplication::focusWidget(), problems);
        QTest::keyClick(problems, Qt::Key_S, Qt::ControlModifier);
        const CPopMessageBox* box = nullptr;
        QTRY_VERIFY((box = editor->findChild<CPopMessageBox*>()) && box->isVisible());
        QTRY_VERIFY(box->isAncestorOf(QApplication::focusWidget()));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(!box->isVisible());
        QTRY_COMPARE(QApplication::focusWidget(), problems);
    }

    /// The editor's own look finds nothing: the other's record waits until the edit ends.
    void aNameThatAnotherTookMeanwhileIsRefused() {
        Fixture fixture;
        COrvoCliMod* editor = fixture.module("Resources");
        fixture.view("tvRes")->setCurrentIndex(Fixture::find(fixture.view("tvRes"), "Аварии"));
        fixture.action("actAddModule")->trigger();
        Fixture::type(editor, "Объект", "Mid");
        fixture.otherWrites(MDX_INSERT,
                            {{"KeyLink", "theirs"},
                             {"MenuResourceFolderKey", "trends"},
                             {"type_", "1"},
                             {"name_", "MID"},
                             {"caption", "Чужой"}},
                            "MenuResource");
        QTRY_COMPARE(fixture.client->window()->statusLine()->held(), QString("1 правка ждёт"));
        fixture.save();
        QCOMPARE(fixture.count("MenuResource", "name_", "Mid"), 0);
        QCOMPARE(fixture.unwritten()->topLevelItemCount(), 1);
        QTreeWidgetItem* row = fixture.unwritten()->topLevelItem(0);
        const QString why = row->text(UnwrittenPane::Why);
        QVERIFY2(why.contains("Имя \"Mid\"") && why.contains("petrov"), qPrintable(why));
        QVERIFY2(fixture.failure().contains("Имя \"Mid\""), qPrintable(fixture.failure()));
        // Again it is refused, and under another name it is written.
        QTest::mouseClick(fixture.child<QPushButton>("unwrittenRepeat"), Qt::LeftButton);
        QCOMPARE(fixture.count("MenuResource", "name_", "Mid"), 0);
        row = fixture.unwritten()->topLevelItem(0);
        for (int i = 0; i < row->childCount(); ++i)
            if (row->child(i)->text(UnwrittenPane::Mine) == "Mid")
                row->child(i)->setText(UnwrittenPane::Mine, "Middle");
        QCoreApplication::processEvents();
        QTest::mouseClick(fixture.child<QPushButton>("unwrittenRepeat"), Qt::LeftButton);
        QTRY_COMPARE(fixture.unwritten()->topLevelItemCount(), 0);
        QCOMPARE(fixture.count("MenuResource", "name_", "Middle"), 1);
    }

    void aCaptionThatAnotherTookMeanwhileIsRefused_data() {
        QTest::addColumn<bool>("renamed");
        QTest::newRow("new folder") << false;
        QTest::newRow("renamed one") << true;
    }
    void aCaptionThatAnotherTookMeanwhileIsRefused() {
        QFETCH(bool, renamed);
        Fixture fixture;
        fixture.view("tvRes")->setCurrentIndex(
            Fixture::find(fixture.view("tvRes"), renamed ? "docs" : "plans").parent());
        if (renamed)
            fixture.view("tvRes")->setCurrentIndex(Fixture::find(fixture.view("tvRes"), "docs"));
        else
            fixture.action("actAddFolder")->trigger();
        Fixture::type(fixture.module("Resources"), "Наименование", "Общее");
        fixture.folder("theirs", 4, nullptr, "ОБЩЕЕ");
        fixture.save();
        QCOMPARE(fixture.count("MenuResourceFolder", "caption", "Общее"), 0);
        QCOMPARE(fixture.unwritten()->topLevelItemCount(), 1);
        const QString why = fixture.unwritten()->topLevelItem(0)->text(UnwrittenPane::Why);
        QVERIFY2(why.contains("Имя \"Общее\"") && why.contains("такая папка"), qPrintable(why));
    }

    void aLogThatIsPrunedUnderAnEditLeavesItToItsEngineer() {
        Fixture fixture;
        fixture.view("tvMenu")->setCurrentIndex(Fixture::find(fixture.view("tvMenu"), "г"));
        Fixture::type(fixture.module("Menu"), "Наименование", "г2");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "чужое"}});
        QTRY_COMPARE(fixture.client->window()->statusLine()->held(), QString("1 правка ждёт"));
        int64_t position = 0;
        QVERIFY(fixture.host.store().logPosition(&position).ok());
        QVERIFY(fixture.host.store().pruneLog(position).ok());
        QVERIFY(QMetaObject::invokeMethod(fixture.module("Menu"), "on_save_pressed"));
        QCOMPARE(fixture.count("Menu", "caption", "чужое"), 1);
        QCOMPARE(fixture.unwritten()->topLevelItemCount(), 1);
        const QString why = fixture.unwritten()->topLevelItem(0)->text(UnwrittenPane::Why);
        QVERIFY2(why.contains("Журнал изменений тем временем сокращён"), qPrintable(why));
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) чужое"));
        QTest::mouseClick(fixture.child<QPushButton>("unwrittenRepeat"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г2"));
        QCOMPARE(fixture.unwritten()->topLevelItemCount(), 0);
    }

    void whatWaitsIsCountedInTheStatusBarAndComesInWhenTheEditEnds() {
        Fixture fixture;
        fixture.view("tvMenu")->setCurrentIndex(Fixture::find(fixture.view("tvMenu"), "г"));
        Fixture::type(fixture.module("Menu"), "Наименование", "г2");
        for (const char* caption : {"1", "2", "3", "4", "5"})
            fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", caption}});
        auto* line = fixture.client->window()->statusLine();
        QTRY_COMPARE(line->held(), QString("5 правок ждут"));
        QCOMPARE(fixture.menu(), QString("а(б(в)) г2"));
        QVERIFY(QMetaObject::invokeMethod(fixture.module("Menu"), "on_cancel_pressed"));
        QTRY_COMPARE(line->held(), QString());
        QTRY_COMPARE(fixture.menu(), QString("5(б(в)) г"));
    }

    void anEditWaitsWhileTheEditorBesideItWrites() {
        Fixture fixture;
        fixture.client->window()->pageDocks().takeOut(fixture.module("Menu"),
                                                      app::PageDocks::Place::Beside);
        fixture.view("tvMenu")->setCurrentIndex(Fixture::find(fixture.view("tvMenu"), "г"));
        Fixture::type(fixture.module("Menu"), "Наименование", "г2");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "чужое"}});
        auto* line = fixture.client->window()->statusLine();
        QTRY_COMPARE(line->held(), QString("1 правка ждёт"));
        fixture.view("tvRes")->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), fixture.view("tvRes"));
        fixture.view("tvRes")->setCurrentIndex(
            Fixture::find(fixture.view("tvRes"), "plans").parent());
        fixture.action("actAddFolder")->trigger();
        Fixture::type(fixture.module("Resources"), "Наименование", "Общее");
        fixture.view("tvRes")->setFocus();
        fixture.save();
        QCOMPARE(fixture.count("MenuResourceFolder", "caption", "Общее"), 1);
        QTRY_VERIFY(fixture.module("Resources")->ModEditText().isEmpty());
        const auto resources = [&] {
            return RunningClient::below(*fixture.view("tvRes")->model(), {});
        };
        QTRY_VERIFY(resources().contains("Общее"));
        fixture.otherWrites(MDX_DELETE, {{"KeyLink", "docs"}}, "MenuResourceFolder");
        QTRY_VERIFY(!resources().contains("docs")); // all that may come has come
        QVERIFY(line->held().contains("жд"));
        QCOMPARE(fixture.menu(), QString("а(б(в)) г2"));
        QVERIFY(QMetaObject::invokeMethod(fixture.module("Menu"), "on_cancel_pressed"));
        QTRY_COMPARE(fixture.menu(), QString("чужое(б(в)) г"));
    }

    void whatAModuleCouldNotDoShowsInTheStatusBar() {
        Fixture fixture;
        COrvoCliMod* editor = fixture.module("Menu");
        editor->m_app->m_logModule->LogFile(5, "Here", "Не вышло: насос «1»");
        QTRY_VERIFY(fixture.logged("Не вышло: насос «1»") == 1);
        QVERIFY2(fixture.failure().contains("Не вышло"), qPrintable(fixture.failure()));
    }

    /// An editor that a menu has opened is a page that can be closed; the others' edits stay.
    void closingATabAsksAboutItsOwnEdit() {
        Fixture fixture;
        LaunchRequest request;
        request.key = "element";
        request.caption = "Ресурсы";
        request.kind = Kind::Module;
        request.name = "Resources";
        fixture.module("Menu")->doCall(callLaunch, &request);
        QCOMPARE(request.refusal, QString());
        auto* tabs = fixture.client->window()->findChild<QTabWidget*>();
        const int tab = tabs->currentIndex();
        QPointer<COrvoCliMod> page = qobject_cast<COrvoCliMod*>(tabs->currentWidget());
        QVERIFY(page && page != fixture.module("Resources"));
        auto* tree = page->findChild<QTreeView*>("tvRes");
        tree->setCurrentIndex(Fixture::find(tree, "Аварии"));
        Fixture::type(page, "Наименование", "Тревоги");
        fixture.view("tvMenu")->setCurrentIndex(Fixture::find(fixture.view("tvMenu"), "г"));
        Fixture::type(fixture.module("Menu"), "Наименование", "г2");

        const auto close = [&] {
            tabs->setCurrentIndex(tab);
            QWidget* button = tabs->tabBar()->tabButton(tab, QTabBar::RightSide);
            QVERIFY(button);
            QTest::mouseClick(button, Qt::LeftButton);
            QTRY_VERIFY(fixture.question());
            QVERIFY2(fixture.question()->text().contains("Тревоги"),
                     qPrintable(fixture.question()->text()));
            QVERIFY2(!fixture.question()->text().contains("г2"),
                     qPrintable(fixture.question()->text()));
        };
        close();
        fixture.answer("closeStay");
        QTRY_VERIFY(!fixture.question());
        QVERIFY(page && !page->ModEditText().isEmpty());
        close();
        fixture.answer("closeSave");
        QTRY_VERIFY(page.isNull());
        QCOMPARE(fixture.count("MenuResourceFolder", "caption", "Тревоги"), 1);
        QVERIFY(!fixture.module("Menu")->ModEditText().isEmpty());
        QCOMPARE(fixture.count("Menu", "caption", "г2"), 0);
    }
};

QTEST_MAIN(TestOpenEdits)
#include "tst_open_edits.moc"
