// What another breaks shows at once in the list of problems; the keys go there, to the record, and
// put it right, in the store and for everybody.
#include "tests/e2e/SceneTest.h"

using namespace orvo::test;

class TestProblemsWindow : public SceneTest {
    Q_OBJECT

    /// The row of the list about that record; -1 without one.
    int row(const QString& name) {
        const Tree tree = left().tree("problemsTree");
        for (size_t i = 0; i < tree.rows.size(); ++i)
            if (tree.rows[i].cells[0].contains(name))
                return static_cast<int>(i);
        return -1;
    }
    QString icon() const { return value("select ico from Menu where caption = " + quoted(what)); }
    QString counted() { return left().ask("state")["problems"].toString(); }

    const QString what = QStringLiteral("Общая схема КС-1");
    QString m_icon; ///< its own

private slots:
    void initTestCase() {
        m_scene = std::make_unique<Scene>();
        DO(m_scene->startLeft());
        SOON(left().ask("state")["problemsKnown"].toBool());
        // The demonstration has one form whose folder is gone.
        SOON(counted() == "Проблемы: 1");
        m_icon = icon();
        QVERIFY(!m_icon.isEmpty());
    }

    void whatAnotherBreaksIsCountedAndListed() {
        QVERIFY(another("update Menu set ico = 'gone.png' where caption = " + quoted(what)));
        SOON(counted() == "Проблемы: 2");
        QVERIFY(hands::key("F8"));
        SOON(left().tree("problemsTree").focus);
        SOON(row(what) >= 0);
        take("problems");
    }

    void enterGoesToTheRecord() {
        DO(m_scene->clickRow(left(), "problemsTree",
                             left().tree("problemsTree").rows[size_t(row(what))].cells[0]));
        QVERIFY(hands::key("Return"));
        SOON(current(left(), "tvMenu") == what);
        take("problems-shown");
    }

    void aCureIsWrittenAndTakenBackByKeys() {
        DO(m_scene->clickRow(left(), "problemsTree",
                             left().tree("problemsTree").rows[size_t(row(what))].cells[0]));
        QVERIFY(hands::key("ctrl+Return"));
        SOON(icon().isEmpty());
        SOON(row(what) < 0);
        SOON(counted() == "Проблемы: 1");
        SOON(left().isEnabled("actUndo"));
        QVERIFY(hands::key("ctrl+z"));
        SOON(icon() == "gone.png");
        SOON(row(what) >= 0);
    }

    void whatAnotherPutsRightGoes() {
        QVERIFY(another("update Menu set ico = " + quoted(m_icon) +
                        " where caption = " + quoted(what)));
        SOON(row(what) < 0);
        SOON(counted() == "Проблемы: 1");
    }
};

QTEST_MAIN(TestProblemsWindow)
#include "tst_problems_window.moc"
