// The search bar: what typing finds, the steps through the hits, and what becomes of them when the
// tree changes.
#include "tests/resources/ResProbe.h"

#include "frame/Records.h"

#include <QComboBox>
#include <QLineEdit>
#include <QToolButton>

using namespace orvo::test;

namespace {

class SearchProbe : public ResProbe {
public:
    using ResProbe::ResProbe;

    using OrvoResources::m_btnSearchDown;
    using OrvoResources::m_btnSearchUp;
    using OrvoResources::m_cmbSearch;
    using OrvoResources::m_editCaption;
    using OrvoResources::m_editKey;
    using OrvoResources::m_editObject;
    using OrvoResources::m_edSearch;
    using OrvoResources::m_searchHits;
    using OrvoResources::m_searchPos;
    using OrvoResources::on_search_down_pressed;
    using OrvoResources::on_search_up_pressed;

    QStringList hits() const {
        QStringList keys;
        for (int i = 0; i < m_searchHits->count(); ++i)
            keys << m_resModel->getItemKeyLink(m_searchHits->hit(i));
        return keys;
    }
    QColor textColour() const { return m_edSearch->palette().color(QPalette::Text); }
};

/// The editor over the catalogue, with the current row "rlog".
struct Window {
    Window() : host((fillCatalogue(store), store)), editor(host, "Resources") {
        if (!editor.start())
            qFatal("the editor did not start");
        tree = editor.view("tvRes");
        tree->setCurrentIndex(editor->row("rlog"));
        host.writes().take();
    }
    void type(const QString& text) { editor->m_edSearch->setText(text); }
    QString current() const {
        return editor.module->m_resModel->getItemKeyLink(tree->currentIndex());
    }
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
    void deliver() { host.deliver(*editor.module); }

    TestStore store;
    TestHost host;
    EditorUnderTest<SearchProbe> editor;
    QTreeView* tree = nullptr;
};

} // namespace

class TestResSearch : public QObject {
    Q_OBJECT
private slots:
    // The line edit's own fading button outlives it by some frames.
    void cleanupTestCase() { QTest::qWait(300); }

    void theFirstHitBecomesCurrent();
    void everyLetterTypedSearchesAnew();
    void oneHitLeavesNoSteps();
    void stepsEndAtBothEnds();
    void stepsBeyondTheEndsComeBack();
    void aNewSearchBeginsAtItsFirstHit();
    void nothingFoundTurnsTheTextRed();
    void clearingTheFieldTakesTheRedAway();
    void clearingTheFieldKeepsRowAndHits();
    void theBoxTellsWhatIsSearched();
    void foldersHaveNoResource();
    void withoutAnEntryTheOldHitsStay();
    void aHitInAClosedFolderIsOpened();
    void aHitThatIsCurrentAlreadyComesIntoView();
    void orphansAreFound();
    void theHitsAreThoseOfMatch_data();
    void theHitsAreThoseOfMatch();
    void oneEditIsSavedByTheSearch();
    void hitsWithoutARowAreSkipped();
    void noHitIsLeft();
    void hitsOfMovedRowsAreFollowed();
    void rowsThatComeLaterAreNoHits();
    void nothingIsWritten();
    void theButtonsStayInTheirPlace();
    void anEmptyWindowFindsNothing();
};

void TestResSearch::theFirstHitBecomesCurrent() {
    Window window;
    window.type("тренд");
    QCOMPARE(window.editor->hits(), QStringList({"trends", "rtrend"}));
    QCOMPARE(window.current(), QString("trends"));
    QCOMPARE(window.editor->m_currentKey, QString("trends"));
    QCOMPARE(window.editor->m_searchPos, 0);
    QCOMPARE(window.steps(), QString("down"));
}

void TestResSearch::everyLetterTypedSearchesAnew() {
    Window window;
    window.editor->m_cmbSearch->setCurrentIndex(1);
    QCOMPARE(window.current(), QString("rlog"));
    QTest::keyClicks(window.editor->m_edSearch, "u");
    QCOMPARE(window.editor->hits(), QStringList({"rburner", "rdrum", "rmanual", "rpump"}));
    QCOMPARE(window.current(), QString("rburner"));
    QTest::keyClicks(window.editor->m_edSearch, "m");
    QCOMPARE(window.editor->hits(), QStringList({"rdrum", "rpump"}));
    QTest::keyClicks(window.editor->m_edSearch, "p");
    QCOMPARE(window.current(), QString("rpump"));
    QTest::keyClicks(window.editor->m_edSearch, "s");
    QCOMPARE(window.editor->hits(), QStringList());
    QTest::keyClick(window.editor->m_edSearch, Qt::Key_Backspace);
    QCOMPARE(window.editor->hits(), QStringList("rpump"));
}

void TestResSearch::oneHitLeavesNoSteps() {
    Window window;
    window.type("насос");
    QCOMPARE(window.current(), QString("rpump"));
    QCOMPARE(window.steps(), QString());
}

void TestResSearch::stepsEndAtBothEnds() {
    Window window;
    window.type("ар"); // аварии, архив, ... in display order
    const QStringList hits = window.editor->hits();
    QVERIFY(hits.size() > 2);
    for (int i = 1; i < hits.size(); ++i) {
        window.down();
        QCOMPARE(window.current(), hits[i]);
        QCOMPARE(window.steps(), QString(i + 1 < hits.size() ? "down up" : "up"));
    }
    window.down(); // switched off
    QCOMPARE(window.current(), hits.last());
    for (int i = hits.size() - 2; i >= 0; --i) {
        window.up();
        QCOMPARE(window.current(), hits[i]);
        QCOMPARE(window.steps(), QString(i > 0 ? "down up" : "down"));
    }
    window.up();
    QCOMPARE(window.current(), hits.first());
}

void TestResSearch::stepsBeyondTheEndsComeBack() {
    Window window;
    window.type("тренд");
    for (int i = 0; i < 5; ++i)
        window.editor->on_search_down_pressed();
    QCOMPARE(window.current(), QString("rtrend"));
    QCOMPARE(window.editor->m_searchPos, 2);
    window.editor->on_search_up_pressed();
    QCOMPARE(window.editor->m_searchPos, 1);
    for (int i = 0; i < 5; ++i)
        window.editor->on_search_up_pressed();
    QCOMPARE(window.current(), QString("trends"));
    QCOMPARE(window.editor->m_searchPos, -1);
    window.editor->on_search_down_pressed();
    QCOMPARE(window.editor->m_searchPos, 0);
}

void TestResSearch::aNewSearchBeginsAtItsFirstHit() {
    Window window;
    window.type("а");
    for (int i = 0; i < 3; ++i)
        window.down();
    QCOMPARE(window.editor->m_searchPos, 3);
    window.type("ар");
    const QStringList hits = window.editor->hits();
    QCOMPARE(window.current(), hits[0]);
    QCOMPARE(window.editor->m_searchPos, 0);
    QCOMPARE(window.steps(), QString("down"));
    window.down();
    QCOMPARE(window.current(), hits[1]);
}

void TestResSearch::nothingFoundTurnsTheTextRed() {
    Window window;
    const QColor normal = window.editor->textColour();
    window.type("нигде нет");
    for (const QPalette::ColorGroup group :
         {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const QBrush brush = window.editor->m_edSearch->palette().brush(group, QPalette::Text);
        QCOMPARE(brush.color(), QColor("#DC143C"));
        QCOMPARE(brush.style(), Qt::SolidPattern);
    }
    QCOMPARE(window.current(), QString("rlog"));
    QCOMPARE(window.steps(), QString());
    window.type("насос");
    QCOMPARE(window.editor->textColour(), normal);
}

void TestResSearch::clearingTheFieldTakesTheRedAway() {
    Window window;
    const QColor normal = window.editor->textColour();
    window.type("нигде нет");
    window.type("");
    QCOMPARE(window.editor->textColour(), normal);
    QCOMPARE(window.current(), QString("rlog"));
}

void TestResSearch::clearingTheFieldKeepsRowAndHits() {
    Window window;
    window.type("тренд");
    window.down();
    window.type("");
    QCOMPARE(window.current(), QString("rtrend"));
    QCOMPARE(window.editor->hits(), QStringList({"trends", "rtrend"}));
    QCOMPARE(window.editor->m_searchPos, 1);
    QCOMPARE(window.steps(), QString());
}

void TestResSearch::theBoxTellsWhatIsSearched() {
    Window window;
    const QColor normal = window.editor->textColour();
    window.type("manual");
    QCOMPARE(window.editor->textColour(), QColor("#DC143C"));
    window.editor->m_cmbSearch->setCurrentIndex(1);
    QCOMPARE(window.current(), QString("rmanual"));
    QCOMPARE(window.editor->textColour(), normal);
    window.editor->m_cmbSearch->setCurrentIndex(0);
    QCOMPARE(window.editor->textColour(), QColor("#DC143C"));
    QCOMPARE(window.current(), QString("rmanual"));
}

void TestResSearch::foldersHaveNoResource() {
    Window window;
    window.type("docs");
    QCOMPARE(window.current(), QString("docs"));
    window.editor->m_cmbSearch->setCurrentIndex(1);
    QCOMPARE(window.editor->hits(), QStringList());
}

void TestResSearch::withoutAnEntryTheOldHitsStay() {
    Window window;
    window.type("тренд");
    window.down();
    window.editor->m_cmbSearch->setCurrentIndex(-1);
    window.type("насос");
    QCOMPARE(window.editor->hits(), QStringList({"trends", "rtrend"}));
    QCOMPARE(window.current(), QString("trends"));
    QCOMPARE(window.steps(), QString("down"));
}

void TestResSearch::aHitInAClosedFolderIsOpened() {
    Window window;
    window.tree->collapseAll();
    window.type("насос");
    QCOMPARE(window.current(), QString("rpump"));
    QVERIFY(window.tree->isExpanded(window.editor->row("icons")));
    QVERIFY(window.tree->isExpanded(window.editor->row("FileResources")));
    QVERIFY(window.tree->viewport()->rect().contains(
        window.tree->visualRect(window.tree->currentIndex()).center()));
}

void TestResSearch::aHitThatIsCurrentAlreadyComesIntoView() {
    Window window;
    window.type("насос");
    window.tree->collapse(window.editor->row("FileResources"));
    window.type("насо");
    QCOMPARE(window.current(), QString("rpump"));
    QVERIFY(window.tree->isExpanded(window.editor->row("FileResources")));
}

void TestResSearch::orphansAreFound() {
    Window window;
    window.type("потерян");
    QCOMPARE(window.current(), QString("rlost"));
}

void TestResSearch::theHitsAreThoseOfMatch_data() {
    QTest::addColumn<int>("entry");
    QTest::addColumn<QString>("text");
    int number = 0;
    for (const char* text : {"а", "Р", "тренд", " ", "котел", "котёл", "КОТЁЛ", "ресурс", "o", ".",
                             "trend", "PNG", "\\", "[", "*", "猫"})
        for (int entry : {0, 1})
            QTest::addRow("%d", number++) << entry << QString::fromUtf8(text);
}

void TestResSearch::theHitsAreThoseOfMatch() {
    QFETCH(int, entry);
    QFETCH(QString, text);
    Window window;
    window.editor->m_cmbSearch->setCurrentIndex(entry);
    window.type(text);
    const ResTreeModel& model = *window.editor->m_resModel;
    QStringList wanted;
    for (const QModelIndex& row : model.match(model.index(0, 0), entry == 0 ? 257 : 258, text, -1,
                                              Qt::MatchContains | Qt::MatchRecursive))
        wanted << model.getItemKeyLink(row);
    QCOMPARE(window.editor->hits(), wanted);
    QCOMPARE(window.current(), wanted.value(0, "rlog"));
}

void TestResSearch::oneEditIsSavedByTheSearch() {
    Window window;
    window.editor.view("tvRes")->setCurrentIndex(window.editor->row("rlog"));
    window.editor->on_editor_valueChanged("caption", QString("Журнал событий"));
    window.type("насос");
    QVERIFY2(window.host.writes().take().contains("~rlog"), "the open edit was not saved");
    QCOMPARE(window.current(), QString("rpump"));
}

void TestResSearch::hitsWithoutARowAreSkipped() {
    Window window;
    window.type("ар");
    const QStringList hits = window.editor->hits();
    QVERIFY(hits.contains("rtable") && hits.first() != "rtable" && hits.last() != "rtable");
    while (window.editor->m_searchPos + 1 < hits.indexOf("rtable"))
        window.down();
    const QString before = window.current();
    window.store.remove("MenuResource", "rtable");
    window.deliver();
    window.down();
    QCOMPARE(window.current(), hits[hits.indexOf("rtable") + 1]);
    window.up();
    QCOMPARE(window.current(), before);
}

void TestResSearch::noHitIsLeft() {
    Window window;
    window.type("тренд");
    window.store.remove("MenuResource", "rtrend");
    window.deliver();
    QCOMPARE(window.current(), QString("trends"));
    QCOMPARE(window.steps(), QString("down"));
    window.down();
    QCOMPARE(window.current(), QString("trends"));
    window.store.remove("MenuResourceFolder", "trends");
    window.deliver();
    const QString current = window.current();
    for (int i = 0; i < 3; ++i) {
        window.editor->on_search_up_pressed();
        window.editor->on_search_down_pressed();
    }
    QCOMPARE(window.current(), current);
    QCOMPARE(window.editor->hits(), QStringList({QString(), QString()}));
}

void TestResSearch::hitsOfMovedRowsAreFollowed() {
    Window window;
    window.type("тренд");
    window.store.update("MenuResource",
                        {{"KeyLink", "rtrend"}, {"MenuResourceFolderKey", "alarms"}});
    window.deliver();
    QCOMPARE(window.editor->row("rtrend").parent(), window.editor->row("alarms"));
    window.down();
    QCOMPARE(window.current(), QString("rtrend"));
    QCOMPARE(window.steps(), QString("up"));
}

void TestResSearch::rowsThatComeLaterAreNoHits() {
    Window window;
    window.type("тренд");
    addItem(window.store, "rnew", 1, "trends", "New", "Ещё тренд");
    window.deliver();
    QCOMPARE(window.editor->hits(), QStringList({"trends", "rtrend"}));
    window.type("ещё тренд");
    QCOMPARE(window.editor->hits(), QStringList("rnew"));
}

void TestResSearch::nothingIsWritten() {
    Window window;
    window.type("а");
    window.down();
    window.type("нет такого");
    QCOMPARE(window.host.writes().take(), QString());
    QVERIFY(!window.editor->m_popMessageBox);
}

void TestResSearch::theButtonsStayInTheirPlace() {
    Window window;
    QCoreApplication::processEvents();
    const QRect before = window.editor->m_btnSearchDown->geometry();
    window.type("тренд"); // the button that clears the field appears
    QTest::qWait(50);
    QCOMPARE(window.editor->m_btnSearchDown->geometry(), before);
}

void TestResSearch::anEmptyWindowFindsNothing() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    EditorUnderTest<SearchProbe> editor(host, "Resources");
    store.sql("ALTER TABLE \"Users\" RENAME TO \"Away\"");
    QVERIFY(!editor.start());
    editor->m_edSearch->setText("а");
    editor->m_cmbSearch->setCurrentIndex(1);
    editor->on_search_down_pressed();
    editor->on_search_up_pressed();
    store.sql("ALTER TABLE \"Away\" RENAME TO \"Users\"");
}

QTEST_MAIN(TestResSearch)
#include "tst_res_search.moc"
