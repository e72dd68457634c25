// A palette beside the menu editor: real drags out of it onto the tree, one after the other.
#include "tests/e2e/SceneTest.h"

using namespace orvo::test;

class TestPaletteWindow : public SceneTest {
    Q_OBJECT

    const QString m_folder = QStringLiteral("Квитирование");

    int children(const QString& resource) {
        return number("select count(*) from Menu m join MenuResource r on r.KeyLink = "
                      "m.MenuResourceKey where r.name_ = " +
                      quoted(resource) + " and m.parent = " + quoted(element(m_folder)));
    }
    bool dragFrom(const QString& resource) {
        const auto from = m_scene->reveal(left(), "tvObj", resource);
        const auto to = m_scene->reveal(left(), "tvMenu", m_folder);
        return from && to &&
               hands::drag({from->left() + 20, from->center().y()},
                           {to->left() + 20, to->center().y()});
    }

private slots:
    void initTestCase() {
        m_scene = std::make_unique<Scene>();
        // One folder of that name is left, so that it is found by it.
        DO(m_scene->startLeft());
        QVERIFY(another("delete from Menu where FolderKey <> " + quoted(desktop(station))));
        DO(m_scene->clickRow(left(), "tvDesck", station));
        SOON(left().tree("tvMenu").find(m_folder) >= 0);
    }

    void f7OpensItBesideTheEditor() {
        QVERIFY(hands::key("F7"));
        SOON(isActive(left(), "CPopObjectList"));
        const auto row = m_scene->reveal(left(), "tvObj", QStringLiteral("Trends"));
        QVERIFY(row && hands::moveTo({row->left() + 20, row->center().y()}));
        take("palette");
    }

    void whatIsDraggedBecomesElementsAndThePaletteStays() {
        for (const QString& module : {QStringLiteral("Trends"), QStringLiteral("ShiftLog")}) {
            QCOMPARE(children(module), 0);
            QVERIFY2(dragFrom(module), m_scene->why());
            SOON(children(module) == 1);
            SOON(left().settled());
            QVERIFY(!left().tree("tvObj").rect.isNull());
        }
        take("palette-dragged");
    }

    void changesOfOthersComeInMeanwhile() {
        QVERIFY(another("update Menu set caption = 'of another' where KeyLink = " +
                        quoted(element(QStringLiteral("Справка")))));
        SOON(left().tree("tvMenu").find("of another") >= 0);
    }
};

QTEST_MAIN(TestPaletteWindow)
#include "tst_palette_window.moc"
