// How many clicks an engineer needs to set up a desktop with a folder, five elements, an icon and a
// separator. Names are typed, and edits are saved by a key; the rest is done by mouse, or by mouse
// and by typing in the palette. Each button of the mouse that is pressed counts. The counts are
// printed, and are not to grow.
#include "tests/e2e/SceneTest.h"

using namespace orvo::test;

class TestClickCount : public SceneTest {
    Q_OBJECT

    /// As one types a name where F2 opens the field, and saves it.
    bool nameIt(const QString& name) {
        const auto inField = [this] {
            return left().ask("windows")["focus"].toObject()["class"].toString() == "QLineEdit";
        };
        hands::key("F2");
        if (!m_scene->waitFor("the field is open", inField))
            return false;
        hands::key("ctrl+a");
        hands::type(name);
        hands::key("Return");
        hands::key("ctrl+s");
        return m_scene->waitFor("the edit is saved",
                                [this] { return !left().isEnabled("saveEdit"); });
    }

    /// An entry in a submenu of the context menu of a row; the submenu opens below the mouse.
    bool chooseAtRow(const char* tree, const QString& row, const QString& submenu,
                     const QString& entry) {
        if (!m_scene->clickRow(left(), tree, row, {}, 3))
            return false;
        int moves = 0; // a menu passes over the first ones after it has opened
        const auto opened = [&] {
            for (const Control& control : left().controls(submenu))
                if (control.visible && control.type == "QAction")
                    hands::moveTo(control.rect.center() + QPoint(++moves % 2 * 4, 0));
            for (const Control& control : left().controls(entry))
                if (control.visible && control.enabled)
                    return true;
            return false;
        };
        return m_scene->waitFor("the submenu is open", opened) && m_scene->press(left(), entry);
    }

    /// Sets the desktop up with at most so many clicks; `addFive` puts five elements into the
    /// current folder.
    template <class AddFive>
    void setUp(const char* how, int most, const AddFive& addFive) {
        m_scene = std::make_unique<Scene>();
        DO(m_scene->startLeft());
        const int before = hands::clicks();

        DO(chooseAtRow("tvDesck", QStringLiteral("Линейные управления"), QStringLiteral("Создать"),
                       QStringLiteral("Рабочий стол")));
        DO(nameIt("Shift"));
        SOON(!desktop("Shift").isNull());
        DO(chooseAtRow("tvMenu", menuTop, newElement, QStringLiteral("Папка")));
        DO(nameIt("Pumps"));
        SOON(!element("Pumps").isNull());

        // The "..." at the end of the field, pressed at once.
        const auto icon = m_scene->reveal(left(), "tvProp", QStringLiteral("Иконка"), 1);
        QVERIFY(icon);
        QVERIFY(hands::click({icon->right() - 6, icon->center().y()}));
        const auto wanted = m_scene->reveal(left(), "tvObj", "pump.png");
        QVERIFY2(wanted, m_scene->why());
        QVERIFY(hands::doubleClick(wanted->center()));
        SOON(left().tree("tvObj").rect.isNull());
        const auto separator = m_scene->reveal(left(), "tvProp", QStringLiteral("Разделитель"), 1);
        QVERIFY(separator);
        QVERIFY(hands::click(separator->center()));
        hands::key("ctrl+s");
        SOON(
            number("select count(*) from Menu where separator and ico = 'pump.png' and KeyLink = " +
                   quoted(element("Pumps"))) == 1);
        SOON(left().settled());
        DO(addFive());
        SOON(number("select count(*) from Menu where parent = " + quoted(element("Pumps"))) == 5);

        const int clicks = hands::clicks() - before;
        qInfo(
            "%d clicks set up a desktop with a folder, five elements, an icon and a separator: %s",
            clicks, how);
        take("click-count");
        QVERIFY2(clicks <= most, qPrintable(QString::number(clicks)));
    }

    int elementsOf(const QString& resource) {
        return number("select count(*) from Menu m join MenuResource r on r.KeyLink = "
                      "m.MenuResourceKey where r.name_ = " +
                      quoted(resource) + " and m.parent = " + quoted(element("Pumps")));
    }

private slots:
    void fiveNeighboursOfOneList() {
        const QStringList modules{"JournalAlarms", "JournalEvents", "Orders", "ShiftHandover",
                                  "ShiftLog"};
        setUp("five neighbours of one list", 13, [&] {
            return m_scene->pressAll(left(), {newElement, QStringLiteral("Модуль")}) &&
                   m_scene->clickRow(left(), "tvObj", modules.first()) &&
                   m_scene->clickRow(left(), "tvObj", modules.last(), "shift") &&
                   m_scene->press(left(), "btnOK");
        });
    }

    /// The list that stays beside the menu, by mouse alone: the "+" of a row adds it.
    void fiveThatAreNoNeighbours() {
        const QStringList modules{"JournalAlarms", "Orders", "ShiftLog", "Trends", "Permissions"};
        setUp("modules that are no neighbours", 15, [&] {
            if (!m_scene->pressAll(left(),
                                   {QStringLiteral("Вид"), QStringLiteral("Выбор ресурсов рядом")}))
                return false;
            for (const QString& name : modules) {
                const auto row = m_scene->reveal(left(), "tvObj", name);
                if (!row || !hands::click({row->right() - row->height() / 2, row->center().y()}) ||
                    !m_scene->waitFor("the element", [&] { return elementsOf(name) == 1; }))
                    return false;
            }
            return true;
        });
    }

    /// The list that stays beside the menu: what one wants is typed as the names are, and Enter
    /// takes it.
    void fiveOfDifferentKinds() {
        const std::vector<std::pair<QString, QStringList>> kinds{
            {"ctrl+1", {"JournalAlarms", "Trends"}},
            {"ctrl+2", {"CmdPump", "CmdStopUnit"}},
            {"ctrl+3", {"el_shema.ui"}}};
        setUp("modules, functions and a form that are no neighbours", 8, [&] {
            if (!hands::key("F7") || !m_scene->waitFor("the palette", [this] {
                    return isActive(left(), "CPopObjectList");
                }))
                return false;
            for (const auto& [kind, names] : kinds) {
                hands::key(kind);
                for (const QString& name : names) {
                    if (!m_scene->waitFor("it is in the list",
                                          [&] { return left().tree("tvObj").find(name) >= 0; }))
                        return false;
                    hands::type(name);
                    hands::key("Return");
                    if (!m_scene->waitFor("the element", [&] { return elementsOf(name) == 1; }))
                        return false;
                }
            }
            hands::key("F7");
            return m_scene->waitFor("the palette is gone",
                                    [this] { return left().tree("tvObj").rect.isNull(); });
        });
    }
};

QTEST_MAIN(TestClickCount)
#include "tst_click_count.moc"
