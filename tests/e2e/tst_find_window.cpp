// An engineer who finds things by the keyboard alone, under a Latin and under a Russian layout. The
// functions are one story, in this order.
#include "tests/e2e/SceneTest.h"

using namespace orvo::test;

class TestFindWindow : public SceneTest {
    Q_OBJECT
    static bool layout(const char* name) {
        return QProcess::execute("setxkbmap", {QString::fromLatin1(name)}) == 0;
    }
    QStringList found() {
        QStringList names;
        for (const TreeRow& row : left().tree("findList").rows)
            names << row.cells.value(0);
        return names;
    }
    /// Keys by their places on the keyboard, whatever letters the layout has there.
    static bool keys(const QStringList& codes) {
        return hands::xdotool(QStringList{"key", "--delay", "30"} + codes);
    }

private slots:
    void initTestCase() {
        m_scene = std::make_unique<Scene>();
        DO(m_scene->startLeft({"Menu", "Resources"}));
        DO(m_scene->clickRow(left(), "tvDesck", station));
        SOON(left().settled());
    }

    void whatIsTypedIsFoundAndReturnGoesThere() {
        DO(hands::key("ctrl+k"));
        SOON(isUp("findNote"));
        DO(hands::type("GRS instr"));
        SOON(found().contains("Инструкция оператора ГРС"));
        take("find");
        DO(hands::key("Return"));
        SOON(current(left(), "tvRes") == "Инструкция оператора ГРС");
        QVERIFY(!isUp("findNote"));
    }

    void underARussianLayoutTheSameKeysOpenIt() {
        DO(layout("ru"));
        DO(keys({"ctrl+45"})); // the key of K and of Л
        SOON(isUp("findNote"));
        DO(keys({"27", "43", "41", "29"})); // кран
        SOON(found().contains("Крановая обвязка"));
        take("find-russian");
        DO(hands::key("Escape"));
        SOON(!isUp("findNote"));
    }

    void theTreeWithTheFocusIsSearchedByItsOwnKey() {
        DO(keys({"ctrl+45"}));
        SOON(isUp("findNote"));
        DO(keys({"27", "43", "41", "29"}));
        SOON(!found().isEmpty());
        DO(hands::key("Return"));
        SOON(left().tree("tvMenu").focus || left().tree("tvDesck").focus ||
             current(left(), "tvMenu").startsWith("Кран"));
        DO(m_scene->clickRow(left(), "tvMenu", menuTop));
        DO(keys({"ctrl+41"})); // the key of F and of А
        DO(keys({"27", "43", "41", "29"}));
        SOON(current(left(), "tvMenu").startsWith("Кран"));
        take("tree-search");
        DO(hands::key("Escape"));
        SOON(left().tree("tvMenu").focus);
        DO(layout("us"));
    }

    void whereAFormIsUsedIsListedAndEachPlaceIsAStepAway() {
        DO(hands::key("ctrl+k"));
        SOON(isUp("findNote"));
        DO(hands::type("lch_krany 0-118"));
        SOON(found().contains("Крановые узлы км 0-118"));
        DO(m_scene->clickRow(left(), "findList", "Крановые узлы км 0-118"));
        DO(hands::key("Return"));
        SOON(current(left(), "tvRes") == "Крановые узлы км 0-118");
        SOON(left().tree("tvRes").focus);
        DO(hands::key("F9"));
        SOON(left().tree("usesList").rows.size() == 4);
        SOON(left().tree("usesList").focus);
        take("uses");
        DO(hands::key("End"));
        DO(hands::key("Return"));
        SOON(current(left(), "tvMenu") == "Крановые узлы");
        DO(hands::key("F9")); // of the element, too
        SOON(left().tree("usesList").focus);
        QCOMPARE(left().tree("usesList").rows.size(), size_t(4));
        QVERIFY(
            another("delete from Menu where caption = " + quoted(QStringLiteral("Крановые узлы"))));
        SOON(left().tree("usesList").rows.empty());
    }

    void theClientSaidNothing() {
        QCOMPARE(left().failure(), QString());
        QVERIFY(left().isRunning());
    }
};

QTEST_MAIN(TestFindWindow)

#include "tst_find_window.moc"
