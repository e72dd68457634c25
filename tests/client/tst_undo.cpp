// The own actions are taken back and done again by two keys, and those of others stay.
#include "apps/client/history/RevertDialog.h"
#include "history/Inverse.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Maintenance.h"
#include "tests/client/RunningClient.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>

using namespace orvo;
using namespace orvo::test;

namespace {

struct Fixture : RunningClient {
    void undo() const { action("actUndo")->trigger(); }
    void redo() const { action("actRedo")->trigger(); }
    /// The colleague takes back what he did last.
    void otherUndoes() {
        store::Status status;
        const auto store = store::openMaintained(host.url, {"petrov", false, "test"}, &status);
        store::LogQuery query;
        query.login = "petrov";
        std::vector<store::Change> newest;
        history::Inverse done;
        if (status.ok())
            status = store->history(query, 1, &newest);
        if (status.ok() && !newest.empty())
            status = history::undo(*store, {newest.front().group}, {}, &done);
        QVERIFY2(done.written, status.text.c_str());
    }
    app::RevertDialog* dialog() const { return child<app::RevertDialog>("revertDialog"); }
    /// The dialog, once it shows a plan.
    bool hasPlan() const {
        return dialog() && dialog()->findChild<QLabel*>("revertHead")->text() != "Готовится…";
    }
    void press(const char* button) const {
        QTest::mouseClick(dialog()->findChild<QPushButton*>(button), Qt::LeftButton);
    }
    bool isEnabled(const char* button) const {
        return dialog() && dialog()->findChild<QPushButton*>(button)->isEnabled();
    }
    QStringList left() const {
        QStringList lines;
        const auto* list = dialog()->findChild<QListWidget*>("revertLeft");
        for (int i = 0; i < list->count(); ++i)
            lines << list->item(i)->text();
        return lines;
    }
};

} // namespace

class TestUndo : public QObject {
    Q_OBJECT
private slots:
    void theLastActionIsNamedTakenBackAndDoneAgain() {
        Fixture fixture;
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить"));
        QTRY_VERIFY(!fixture.action("actUndo")->isEnabled());
        fixture.renames("b", "Котельная & Ко");
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «Котельная && Ко»"));
        QTRY_COMPARE(fixture.menu(), QString("а(Котельная & Ко(в)) г"));
        fixture.undo();
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        QTRY_COMPARE(fixture.redoText(), QString("Повторить: переименовать «Котельная && Ко»"));
        QTRY_VERIFY(!fixture.action("actUndo")->isEnabled());
        QTRY_COMPARE(fixture.logged("Отменено: переименовать «Котельная & Ко» (1 запись)"), 1);
        fixture.redo();
        QTRY_COMPARE(fixture.menu(), QString("а(Котельная & Ко(в)) г"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «Котельная && Ко»"));
        QTRY_VERIFY(!fixture.action("actRedo")->isEnabled());
        QCOMPARE(fixture.failure(), QString());
    }

    void keysPressedInARowTakeStepAfterStep() {
        Fixture fixture;
        fixture.renames("a", "а1");
        fixture.renames("d", "г1");
        fixture.renames("a", "а2");
        fixture.client->window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(fixture.client->window()));
        fixture.view("tvMenu")->setFocus();
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(fixture.view("tvMenu"), Qt::Key_Z, Qt::ControlModifier);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(fixture.view("tvMenu"), Qt::Key_Z,
                            Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) г1"));
        QTRY_COMPARE(fixture.redoText(), QString("Повторить: переименовать «а2»"));
        // What is done now ends what could be done again.
        fixture.renames("c", "в1");
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «в1»"));
        QTRY_VERIFY(!fixture.action("actRedo")->isEnabled());
    }

    void anEditOfSeveralRowsIsTakenBackAtOnce() {
        Fixture fixture;
        QTreeView* menu = fixture.view("tvMenu");
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        const QModelIndex top = menu->model()->index(0, 0);
        menu->setCurrentIndex(menu->model()->index(0, 0, top));
        menu->selectionModel()->select(menu->model()->index(1, 0, top),
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QCOMPARE(menu->selectionModel()->selectedRows().size(), 2);
        const auto separators = [&] {
            constexpr int separatorColumn = 11;
            QString all;
            for (int row = 0; row < 2; ++row)
                all += menu->model()
                               ->index(row, separatorColumn, menu->model()->index(0, 0))
                               .data()
                               .toBool()
                           ? '1'
                           : '0';
            return all;
        };
        COrvoCliMod* editor = fixture.module("Menu");
        auto* passport = editor->findChild<QTreeView*>("tvProp");
        passport->setFocus();
        QAbstractItemModel* values = passport->model();
        const QModelIndexList rows =
            values->match(values->index(0, 0), Qt::AccessibleDescriptionRole, "separator", 1,
                          Qt::MatchExactly | Qt::MatchRecursive);
        QCOMPARE(rows.size(), 1);
        passport->setCurrentIndex(rows.first().siblingAtColumn(0));
        QTest::keyClick(passport, Qt::Key_Space);
        editor->findChild<QAction*>("saveEdit")->trigger();
        QTRY_COMPARE(separators(), QString("11"));
        QTRY_VERIFY(fixture.action("actUndo")->isEnabled());
        fixture.undo();
        QTRY_COMPARE(separators(), QString("00"));
        QTRY_VERIFY(!fixture.action("actUndo")->isEnabled());
        fixture.redo();
        QTRY_COMPARE(separators(), QString("11"));
    }

    void theActionsOfOthersAreNotOffered() {
        Fixture fixture;
        fixture.renames("a", "а1");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "чужое"}});
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) чужое"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «а1»"));
        fixture.undo();
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) чужое"));
        QTRY_VERIFY(!fixture.action("actUndo")->isEnabled());
    }

    void aFieldThatAnotherChangedSinceStaysAndIsNamed() {
        Fixture fixture;
        fixture.writes(MDX_UPDATE, {{{"KeyLink", "a"}, {"caption", "а1"}, {"params", "x=1"}}});
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а-чужое"}});
        QTRY_COMPARE(fixture.menu(), QString("а-чужое(б(в)) г"));
        QTRY_VERIFY(fixture.action("actUndo")->isEnabled());
        fixture.undo();
        QTRY_VERIFY2(fixture.failure().contains("Оставлено как есть: элемент меню «а-чужое»"),
                     qPrintable(fixture.failure()));
        QVERIFY(fixture.failure().contains("Петров П."));
        CMDArray rows;
        QVERIFY(fixture.host.store().fetchLinked("Menu", "KeyLink", "a", rows.array).ok());
        const MDRData* record = mdx::postedRecord(rows.array, 0);
        QCOMPARE(textOf(rows.array, record, "params"), QString());
        QCOMPARE(textOf(rows.array, record, "caption"), QString("а-чужое"));
    }

    void anActionOfWhichNothingIsLeftIsSaidAndPassedOver() {
        Fixture fixture;
        fixture.renames("d", "г1");
        fixture.renames("a", "а1");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "чужое"}});
        QTRY_COMPARE(fixture.menu(), QString("чужое(б(в)) г1"));
        fixture.undo();
        QTRY_VERIFY2(fixture.failure().contains("возвращать нечего"),
                     qPrintable(fixture.failure()));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «г1»"));
        fixture.undo();
        QTRY_COMPARE(fixture.menu(), QString("чужое(б(в)) г"));
    }

    void aDeletedBranchComesBackBelowItsParent() {
        Fixture fixture;
        fixture.writes(MDX_DELETE, {{{"KeyLink", "b"}}, {{"KeyLink", "c"}}});
        QTRY_COMPARE(fixture.menu(), QString("а г"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: удалить «б» со всем, что внутри"));
        fixture.undo();
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
    }

    void aDesktopAtTheTopIsInTheTreeAgain() {
        Fixture fixture;
        fixture.writes(MDX_DELETE, {{{"KeyLink", "desk"}}}, "MenuFolder");
        const auto desktops = [&] {
            return RunningClient::below(*fixture.view("tvDesck")->model(), {});
        };
        QTRY_COMPARE(desktops(), QString("Список рабочих столов"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: удалить «КС-1»"));
        fixture.undo();
        QTRY_COMPARE(desktops(), QString("Список рабочих столов(КС-1)"));
        fixture.openDesktop("КС-1");
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
    }

    void aFolderOfResourcesIsInTheTreeAgain() {
        Fixture fixture;
        fixture.stop();
        for (const char* kind : {"1", "2", "3"}) // a kind without a folder ends the tree
            fixture.otherWrites(MDX_INSERT, {{"KeyLink", kind}, {"type_", kind}, {"caption", kind}},
                                "MenuResourceFolder");
        fixture.otherWrites(MDX_INSERT,
                            {{"KeyLink", "docs"}, {"type_", "4"}, {"caption", "Документы"}},
                            "MenuResourceFolder");
        fixture.start();
        const auto resources = [&] {
            return RunningClient::below(*fixture.view("tvRes")->model(), {});
        };
        const QString before = resources();
        QVERIFY2(before.contains("Документы"), qPrintable(before));
        fixture.writes(MDX_DELETE, {{{"KeyLink", "docs"}}}, "MenuResourceFolder");
        QTRY_VERIFY(!resources().contains("Документы"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: удалить «Документы»"));
        fixture.undo();
        QTRY_COMPARE(resources(), before);
    }

    void aBranchWhoseParentIsGoneAsksWhereToGo() {
        Fixture fixture;
        fixture.writes(MDX_DELETE, {{{"KeyLink", "b"}}, {{"KeyLink", "c"}}});
        fixture.otherWrites(MDX_DELETE, {{"KeyLink", "a"}});
        QTRY_COMPARE(fixture.menu(), QString("г"));
        QTRY_VERIFY(fixture.action("actUndo")->isEnabled());
        fixture.undo();
        QTRY_VERIFY(fixture.hasPlan());
        QVERIFY(!fixture.isEnabled("revertOk"));
        QVERIFY2(fixture.left().join('\n').contains("нет места"),
                 qPrintable(fixture.left().join('\n')));
        auto* place = fixture.dialog()->findChild<QComboBox*>("revertPlace0");
        QVERIFY(place);
        const int other = place->findText("КС-1 / г");
        QStringList offered;
        for (int i = 0; i < place->count(); ++i)
            offered << place->itemText(i);
        QVERIFY2(other > 0, qPrintable(offered.join('\n')));
        place->setCurrentIndex(other);
        QTRY_VERIFY(fixture.isEnabled("revertOk"));
        QCOMPARE(fixture.dialog()->findChild<QTreeWidget*>("revertWrites")->topLevelItemCount(), 2);
        fixture.press("revertOk");
        QTRY_COMPARE(fixture.menu(), QString("г(б(в))"));
        QTRY_VERIFY(!fixture.dialog());
        // It was one action: done again, the branch goes as a whole.
        QTRY_VERIFY(fixture.action("actRedo")->isEnabled());
        fixture.redo();
        QTRY_COMPARE(fixture.menu(), QString("г"));
    }

    void whatIsGivenUpInTheDialogChangesNothing() {
        Fixture fixture;
        fixture.writes(MDX_DELETE, {{{"KeyLink", "b"}}, {{"KeyLink", "c"}}});
        fixture.otherWrites(MDX_DELETE, {{"KeyLink", "a"}});
        QTRY_COMPARE(fixture.menu(), QString("г"));
        QTRY_VERIFY(fixture.action("actUndo")->isEnabled());
        fixture.undo();
        QTRY_VERIFY(fixture.hasPlan());
        fixture.press("revertCancel");
        QTRY_VERIFY(!fixture.dialog());
        QCOMPARE(fixture.menu(), QString("г"));
        // The next key asks not the same again, until that which it asked about is taken back.
        QTRY_VERIFY(!fixture.action("actUndo")->isEnabled());
        QCOMPARE(fixture.logged("Оставлено: удалить «б» со всем, что внутри. Дальше отменяется то, "
                                "что было раньше; к этому вернёт история."),
                 1);
        fixture.otherUndoes();
        QTRY_COMPARE(fixture.menu(), QString("а г"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: удалить «б» со всем, что внутри"));
        fixture.undo();
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
    }

    void whatWasPassedOverComesAgainWhenItsHindranceIsTakenBack() {
        Fixture fixture;
        fixture.renames("a", "а1");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а2"}});
        QTRY_COMPARE(fixture.menu(), QString("а2(б(в)) г"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «а1»"));
        fixture.undo();
        QTRY_VERIFY(!fixture.action("actUndo")->isEnabled()); // nothing is left of it
        fixture.otherUndoes();
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) г"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «а1»"));
        fixture.undo();
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
    }

    void anInsertOnWhichAnotherHasBuiltAsksBeforeItGoes() {
        Fixture fixture;
        fixture.writes(
            MDX_INSERT,
            {{{"KeyLink", "x"}, {"FolderKey", "desk"}, {"caption", "х"}, {"order_", "9"}}});
        QTRY_VERIFY(fixture.menu().contains("х"));
        fixture.add("y", "у", "x");
        QTRY_VERIFY(fixture.menu().contains("х(у)"));
        QTRY_VERIFY(fixture.action("actUndo")->isEnabled());
        fixture.undo();
        QTRY_VERIFY(fixture.hasPlan());
        QVERIFY(!fixture.isEnabled("revertOk"));
        QVERIFY2(fixture.left().join('\n').contains("на этом построено другое (Петров П."),
                 qPrintable(fixture.left().join('\n')));
        fixture.dialog()->findChild<QCheckBox*>("revertOthers")->setChecked(true);
        QTRY_VERIFY(fixture.isEnabled("revertOk"));
        fixture.press("revertOk");
        QTRY_VERIFY(!fixture.menu().contains("х"));
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
    }

    void whatHasLostItsNameComesBackUnderAFreeOne() {
        Fixture fixture;
        const auto names = [&] {
            CMDArray rows;
            QStringList found;
            if (fixture.host.store().fetch("MenuResource", rows.array).ok())
                for (uint32_t i = 0; i < mdx::postedCount(rows.array); ++i)
                    found << textOf(rows.array, mdx::postedRecord(rows.array, i), "name_");
            found.sort();
            return found;
        };
        const QStringList before = names();
        fixture.writes(MDX_INSERT, {{{"KeyLink", "f1"}, {"name_", "Насос"}, {"type_", "2"}}},
                       "MenuResource");
        fixture.writes(MDX_DELETE, {{{"KeyLink", "f1"}}}, "MenuResource");
        fixture.otherWrites(MDX_INSERT, {{"KeyLink", "f2"}, {"name_", "насос"}, {"type_", "2"}},
                            "MenuResource");
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: удалить «Насос»"));
        fixture.undo();
        QTRY_VERIFY(fixture.hasPlan());
        QVERIFY(!fixture.isEnabled("revertOk"));
        QVERIFY2(fixture.left().join('\n').contains("имя «Насос» уже занято (Петров П."),
                 qPrintable(fixture.left().join('\n')));
        fixture.dialog()->findChild<QCheckBox*>("revertOtherNames")->setChecked(true);
        QTRY_VERIFY(fixture.isEnabled("revertOk"));
        fixture.press("revertOk");
        QTRY_COMPARE(names().size(), before.size() + 2);
        QVERIFY2(names().contains("Насос (2)"), qPrintable(names().join(' ')));
    }

    void stepsOutliveTheModulesAndTheProgram() {
        Fixture fixture;
        fixture.renames("a", "а1");
        fixture.renames("d", "г1");
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «г1»"));
        fixture.undo();
        QTRY_COMPARE(fixture.redoText(), QString("Повторить: переименовать «г1»"));
        fixture.stop();
        fixture.start();
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «а1»"));
        QTRY_COMPARE(fixture.redoText(), QString("Повторить: переименовать «г1»"));
        fixture.undo();
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        emit fixture.client->window()->reopenRequested();
        QTRY_COMPARE(fixture.redoText(), QString("Повторить: переименовать «а1»"));
        fixture.redo();
        QTRY_COMPARE(fixture.redoText(), QString("Повторить: переименовать «г1»"));
    }

    void anOpenEditIsAskedAboutAndTheNamedActionIsTakenBack() {
        Fixture fixture;
        fixture.renames("a", "а1");
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «а1»"));
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) г"));
        emit fixture.child<QAction>("actChangeDescktopOrFolder")->triggered();
        QVERIFY(!fixture.module("Menu")->ModEditText().isEmpty());
        fixture.undo();
        QTRY_VERIFY(fixture.child<QMessageBox>("closeQuestion"));
        auto* question = fixture.child<QMessageBox>("closeQuestion");
        QCOMPARE(question->windowTitle(), QString("Отменить: переименовать «а1»"));
        QTest::mouseClick(question->findChild<QPushButton*>("closeStay"), Qt::LeftButton);
        QTRY_VERIFY(!fixture.child<QMessageBox>("closeQuestion"));
        QVERIFY(!fixture.module("Menu")->ModEditText().isEmpty());
        fixture.undo();
        QTRY_VERIFY(fixture.child<QMessageBox>("closeQuestion"));
        question = fixture.child<QMessageBox>("closeQuestion");
        QTest::mouseClick(question->findChild<QPushButton*>("closeDrop"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        QVERIFY(fixture.module("Menu")->ModEditText().isEmpty());
    }

    /// Its name is the title of the question about an edit that is open then.
    void anUndoThatOpensTheModulesAnewSaysThatItDoes() {
        Fixture fixture;
        const Fields desktop{{"KeyLink", "top"}, {"caption", "КС-9"}, {"order_", "2000"}};
        fixture.writes(MDX_INSERT, {desktop}, "MenuFolder");
        fixture.writes(MDX_DELETE, {desktop}, "MenuFolder");
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: удалить «КС-9»"));
        const QSignalSpy asked(fixture.client->window(), &app::MainWindow::reopenRequested);
        fixture.undo();
        QTRY_COMPARE(asked.size(), 1);
        QCOMPARE(asked.first().first().toString(), QString("Отменить: удалить «КС-9»"));
        QTRY_VERIFY(RunningClient::below(*fixture.view("tvDesck")->model(), {}).contains("КС-9"));
    }

    void textThatIsTypedHasItsOwnUndo() {
        Fixture fixture;
        fixture.renames("a", "а1");
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) г"));
        QTRY_COMPARE(fixture.undoText(), QString("Отменить: переименовать «а1»"));
        auto* line = new QLineEdit(fixture.module("Menu"));
        line->show();
        fixture.client->window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(fixture.client->window()));
        line->setFocus();
        QTest::keyClicks(line, "abc");
        QTest::keyClick(line, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(line->text(), QString());
        QTest::qWait(200);
        QCOMPARE(fixture.menu(), QString("а1(б(в)) г"));
    }
};

QTEST_MAIN(TestUndo)
#include "tst_undo.moc"
