// The search bar: what typing finds, the steps through the hits, and what becomes of them when the
// tree changes.
#include "tests/resources/WritingProbe.h"

#include "frame/Records.h"

#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>
#include <QToolButton>

using namespace orvo::test;

namespace {

/// The editor over the catalogue, with the current row "rlog".
struct Window : Writing {
    Window() {
        tree = view();
        makeCurrent("rlog");
        written();
    }
    void type(const QString& text) { editor->m_edSearch->setText(text); }
    QStringList hits() {
        QStringList keys;
        for (int i = 0; i < editor->m_searchHits->count(); ++i)
            keys << editor->m_resModel->getItemKeyLink(editor->m_searchHits->hit(i));
        return keys;
    }
    QColor textColour() { return editor->m_edSearch->palette().color(QPalette::Text); }
    /// The step buttons: "down", "up", "down up" or nothing.
    QString steps() const {
        QStringList enabled;
        if (editor.module->m_btnSearchDown->isEnabled())
            enabled << "down";
        if (editor.module->m_btnSearchUp->isEnabled())
            enabled << "up";
        return enabled.join(' ');
    }
    void down() { QTest::mouseClick(editor->m_btnSearchDown, Qt::LeftButton); }
    void up() { QTest::mouseClick(editor->m_btnSearchUp, Qt::LeftButton); }

    QTreeView* tree = nullptr;
};

} // namespace

class TestResSearch : public QObject {
    Q_OBJECT
private slots:
    void cleanupTestCase() { waitForFades(); }

    void theFirstHitBecomesCurrent() {
        Window window;
        window.type("тренд");
        QCOMPARE(window.hits(), QStringList({"trends", "rtrend"}));
        QCOMPARE(window.currentKey(), QString("trends"));
        QCOMPARE(window.editor->m_currentKey, QString("trends"));
        QCOMPARE(window.editor->m_searchPos, 0);
        QCOMPARE(window.steps(), QString("down"));
    }

    void everyLetterTypedSearchesAgain() {
        Window window;
        window.editor->m_cmbSearch->setCurrentIndex(1);
        QCOMPARE(window.currentKey(), QString("rlog"));
        QTest::keyClicks(window.editor->m_edSearch, "u");
        QCOMPARE(window.hits(), QStringList({"rburner", "rdrum", "rmanual", "rpump"}));
        QCOMPARE(window.currentKey(), QString("rburner"));
        QTest::keyClicks(window.editor->m_edSearch, "m");
        QCOMPARE(window.hits(), QStringList({"rdrum", "rpump"}));
        QTest::keyClicks(window.editor->m_edSearch, "p");
        QCOMPARE(window.currentKey(), QString("rpump"));
        QTest::keyClicks(window.editor->m_edSearch, "s");
        QCOMPARE(window.hits(), QStringList());
        QTest::keyClick(window.editor->m_edSearch, Qt::Key_Backspace);
        QCOMPARE(window.hits(), QStringList("rpump"));
    }

    void theFieldIsUsedByTheKeysOfEverySearchBar() {
        Window window;
        window.type("тренд");
        QLineEdit* field = window.editor->m_edSearch;
        window.editor->resize(1400, 800); // the field has room on the bar
        window.editor->show();
        QTRY_VERIFY(field->isVisible());
        QCOMPARE(window.currentKey(), QString("trends"));
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(window.currentKey(), QString("rtrend"));
        QTest::keyClick(field, Qt::Key_Up);
        QCOMPARE(window.currentKey(), QString("trends"));
        QTest::keyClick(field, Qt::Key_Down);
        QCOMPARE(window.currentKey(), QString("rtrend"));
        QTest::keyClick(field, Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(window.currentKey(), QString("trends"));
        window.editor->activateWindow();
        field->setFocus();
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(window.editor->focusWidget(), window.tree);
    }

    void oneHitLeavesNoSteps() {
        Window window;
        window.type("насос");
        QCOMPARE(window.currentKey(), QString("rpump"));
        QCOMPARE(window.steps(), QString());
    }

    void stepsEndAtBothEnds() {
        Window window;
        window.type("ар"); // аварии, архив, ... in display order
        const QStringList hits = window.hits();
        QVERIFY(hits.size() > 2);
        for (int i = 1; i < hits.size(); ++i) {
            window.down();
            QCOMPARE(window.currentKey(), hits[i]);
            QCOMPARE(window.steps(), QString(i + 1 < hits.size() ? "down up" : "up"));
        }
        window.down(); // switched off
        QCOMPARE(window.currentKey(), hits.last());
        for (int i = hits.size() - 2; i >= 0; --i) {
            window.up();
            QCOMPARE(window.currentKey(), hits[i]);
            QCOMPARE(window.steps(), QString(i > 0 ? "down up" : "down"));
        }
        window.up();
        QCOMPARE(window.currentKey(), hits.first());
    }

    void stepsBeyondTheEndsComeBack() {
        Window window;
        window.type("тренд");
        for (int i = 0; i < 5; ++i)
            window.editor->on_search_down_pressed();
        QCOMPARE(window.currentKey(), QString("rtrend"));
        QCOMPARE(window.editor->m_searchPos, 2);
        window.editor->on_search_up_pressed();
        QCOMPARE(window.editor->m_searchPos, 1);
        for (int i = 0; i < 5; ++i)
            window.editor->on_search_up_pressed();
        QCOMPARE(window.currentKey(), QString("trends"));
        QCOMPARE(window.editor->m_searchPos, -1);
        window.editor->on_search_down_pressed();
        QCOMPARE(window.editor->m_searchPos, 0);
    }

    void aNewSearchBeginsAtItsFirstHit() {
        Window window;
        window.type("а");
        for (int i = 0; i < 3; ++i)
            window.down();
        QCOMPARE(window.editor->m_searchPos, 3);
        window.type("ар");
        const QStringList hits = window.hits();
        QCOMPARE(window.currentKey(), hits[0]);
        QCOMPARE(window.editor->m_searchPos, 0);
        QCOMPARE(window.steps(), QString("down"));
        window.down();
        QCOMPARE(window.currentKey(), hits[1]);
    }

    void nothingFoundTurnsTheTextRed() {
        Window window;
        const QColor normal = window.textColour();
        window.type("нигде нет");
        for (const QPalette::ColorGroup group :
             {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            const QBrush brush = window.editor->m_edSearch->palette().brush(group, QPalette::Text);
            QCOMPARE(brush.color(), QColor("#DC143C"));
            QCOMPARE(brush.style(), Qt::SolidPattern);
        }
        QCOMPARE(window.currentKey(), QString("rlog"));
        QCOMPARE(window.steps(), QString());
        window.type("насос");
        QCOMPARE(window.textColour(), normal);
    }

    void clearingTheFieldTakesTheRedAway() {
        Window window;
        const QColor normal = window.textColour();
        window.type("нигде нет");
        window.type("");
        QCOMPARE(window.textColour(), normal);
        QCOMPARE(window.currentKey(), QString("rlog"));
    }

    void clearingTheFieldKeepsRowAndHits() {
        Window window;
        window.type("тренд");
        window.down();
        window.type("");
        QCOMPARE(window.currentKey(), QString("rtrend"));
        QCOMPARE(window.hits(), QStringList({"trends", "rtrend"}));
        QCOMPARE(window.editor->m_searchPos, 1);
        QCOMPARE(window.steps(), QString());
    }

    void theBoxTellsWhatIsSearched() {
        Window window;
        const QColor normal = window.textColour();
        window.type("manual");
        QCOMPARE(window.textColour(), QColor("#DC143C"));
        window.editor->m_cmbSearch->setCurrentIndex(1);
        QCOMPARE(window.currentKey(), QString("rmanual"));
        QCOMPARE(window.textColour(), normal);
        window.editor->m_cmbSearch->setCurrentIndex(0);
        QCOMPARE(window.textColour(), QColor("#DC143C"));
        QCOMPARE(window.currentKey(), QString("rmanual"));
    }

    void foldersHaveNoResource() {
        Window window;
        window.type("docs");
        QCOMPARE(window.currentKey(), QString("docs"));
        window.editor->m_cmbSearch->setCurrentIndex(1);
        QCOMPARE(window.hits(), QStringList());
    }

    void withoutAnEntryTheOldHitsStay() {
        Window window;
        window.type("тренд");
        window.down();
        window.editor->m_cmbSearch->setCurrentIndex(-1);
        window.type("насос");
        QCOMPARE(window.hits(), QStringList({"trends", "rtrend"}));
        QCOMPARE(window.currentKey(), QString("trends"));
        QCOMPARE(window.steps(), QString("down"));
    }

    void aHitInAClosedFolderIsOpened() {
        Window window;
        window.tree->collapseAll();
        window.type("насос");
        QCOMPARE(window.currentKey(), QString("rpump"));
        QVERIFY(window.tree->isExpanded(window.editor->row("icons")));
        QVERIFY(window.tree->isExpanded(window.editor->row("FileResources")));
        QVERIFY(window.tree->viewport()->rect().contains(
            window.tree->visualRect(window.tree->currentIndex()).center()));
    }

    void aHitThatIsCurrentAlreadyComesIntoView() {
        Window window;
        window.type("насос");
        window.tree->expandAll();
        window.tree->setFixedHeight(4 *
                                    window.tree->visualRect(window.tree->currentIndex()).height());
        window.tree->collapse(window.editor->row("FileResources"));
        window.tree->scrollToTop();
        window.type("насо");
        QCOMPARE(window.currentKey(), QString("rpump"));
        QVERIFY(window.tree->isExpanded(window.editor->row("FileResources")));
        const QRect row = window.tree->visualRect(window.tree->currentIndex());
        QVERIFY(row.isValid() && window.tree->viewport()->rect().contains(row.center()));
        // There is more above it than is seen.
        QVERIFY(window.tree->verticalScrollBar()->value() > 0);
    }

    void orphansAreFound() {
        Window window;
        window.type("потерян");
        QCOMPARE(window.currentKey(), QString("rlost"));
    }

    void theHitsAreThoseOfMatch_data() {
        QTest::addColumn<int>("entry");
        QTest::addColumn<QString>("text");
        int number = 0;
        for (const char* text : {"а", "Р", "тренд", " ", "котел", "котёл", "КОТЁЛ", "ресурс", "o",
                                 ".", "trend", "PNG", "\\", "[", "*", "猫"})
            for (int entry : {0, 1})
                QTest::addRow("%d", number++) << entry << QString::fromUtf8(text);
    }

    void theHitsAreThoseOfMatch() {
        QFETCH(int, entry);
        QFETCH(QString, text);
        Window window;
        window.editor->m_cmbSearch->setCurrentIndex(entry);
        window.type(text);
        const ResTreeModel& model = *window.editor->m_resModel;
        QStringList wanted;
        for (const QModelIndex& row : model.match(model.index(0, 0), entry == 0 ? 257 : 258, text,
                                                  -1, Qt::MatchContains | Qt::MatchRecursive))
            wanted << model.getItemKeyLink(row);
        QCOMPARE(window.hits(), wanted);
        QCOMPARE(window.currentKey(), wanted.value(0, "rlog"));
    }

    void oneEditIsSavedByTheSearch() {
        Window window;
        window.editor.view("tvRes")->setCurrentIndex(window.editor->row("rlog"));
        window.editor->on_editor_valueChanged("caption", QString("Журнал событий"));
        window.type("насос");
        QVERIFY2(window.host.writes().take().contains("~rlog"), "the open edit was not saved");
        QCOMPARE(window.currentKey(), QString("rpump"));
    }

    void hitsWithoutARowAreSkipped() {
        Window window;
        window.type("ар");
        const QStringList hits = window.hits();
        QVERIFY(hits.contains("rtable") && hits.first() != "rtable" && hits.last() != "rtable");
        while (window.editor->m_searchPos + 1 < hits.indexOf("rtable"))
            window.down();
        const QString before = window.currentKey();
        window.store.remove("MenuResource", "rtable");
        window.deliver();
        window.down();
        QCOMPARE(window.currentKey(), hits[hits.indexOf("rtable") + 1]);
        window.up();
        QCOMPARE(window.currentKey(), before);
    }

    void noHitIsLeft() {
        Window window;
        window.type("тренд");
        window.store.remove("MenuResource", "rtrend");
        window.deliver();
        QCOMPARE(window.currentKey(), QString("trends"));
        QCOMPARE(window.steps(), QString("down"));
        window.down();
        QCOMPARE(window.currentKey(), QString("trends"));
        window.store.remove("MenuResourceFolder", "trends");
        window.deliver();
        const QString current = window.currentKey();
        for (int i = 0; i < 3; ++i) {
            window.editor->on_search_up_pressed();
            window.editor->on_search_down_pressed();
        }
        QCOMPARE(window.currentKey(), current);
        QCOMPARE(window.hits(), QStringList({QString(), QString()}));
    }

    void hitsOfMovedRowsAreFollowed() {
        Window window;
        window.type("тренд");
        window.store.update("MenuResource",
                            {{"KeyLink", "rtrend"}, {"MenuResourceFolderKey", "alarms"}});
        window.deliver();
        QCOMPARE(window.editor->row("rtrend").parent(), window.editor->row("alarms"));
        window.down();
        QCOMPARE(window.currentKey(), QString("rtrend"));
        QCOMPARE(window.steps(), QString("up"));
    }

    void rowsThatComeLaterAreNoHits() {
        Window window;
        window.type("тренд");
        addItem(window.store, "rnew", 1, "trends", "New", "Ещё тренд");
        window.deliver();
        QCOMPARE(window.hits(), QStringList({"trends", "rtrend"}));
        window.type("ещё тренд");
        QCOMPARE(window.hits(), QStringList("rnew"));
    }

    void nothingIsWritten() {
        Window window;
        window.type("а");
        window.down();
        window.type("нет такого");
        QCOMPARE(window.host.writes().take(), QString());
        QVERIFY(!window.editor->m_popMessageBox);
    }

    void theButtonsStayInTheirPlace() {
        Window window;
        QCoreApplication::processEvents();
        const QRect before = window.editor->m_btnSearchDown->geometry();
        window.type("тренд"); // the button that clears the field appears
        waitForFades();
        QCOMPARE(window.editor->m_btnSearchDown->geometry(), before);
    }

    void anEmptyWindowFindsNothing() {
        TestStore store;
        fillCatalogue(store);
        TestHost host(store);
        EditorUnderTest<WritingProbe> editor(host, "Resources");
        store.sql("ALTER TABLE \"Users\" RENAME TO \"Away\"");
        QVERIFY(!editor.start());
        editor->m_edSearch->setText("а");
        editor->m_cmbSearch->setCurrentIndex(1);
        editor->on_search_down_pressed();
        editor->on_search_up_pressed();
        store.sql("ALTER TABLE \"Away\" RENAME TO \"Users\"");
    }
};

QTEST_MAIN(TestResSearch)
#include "tst_res_search.moc"
