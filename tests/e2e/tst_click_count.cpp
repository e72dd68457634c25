// How many clicks an engineer needs to set up a desktop with a folder, five elements, an icon and a
// separator. Names are typed, and edits are saved by a key; all else is done by mouse. The count is
// printed, and is not to grow.
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

private slots:
    void fifteenAtMost() {
        constexpr int most = 15;
        const QStringList modules{"JournalAlarms", "JournalEvents", "Orders", "ShiftHandover",
                                  "ShiftLog"};
        m_scene = std::make_unique<Scene>();
        DO(m_scene->startLeft());
        const int before = hands::clicks();

        DO(m_scene->clickRow(left(), "tvDesck", QStringLiteral("Линейные управления")));
        DO(m_scene->pressAll(left(), {QStringLiteral("Создать"), QStringLiteral("Рабочий стол")}));
        DO(nameIt("Shift"));
        SOON(!desktop("Shift").isNull());
        DO(m_scene->clickRow(left(), "tvMenu", menuTop));
        DO(m_scene->pressAll(left(), {newElement, QStringLiteral("Папка")}));
        DO(nameIt("Pumps"));
        SOON(!element("Pumps").isNull());
        DO(m_scene->pressAll(left(), {newElement, QStringLiteral("Модуль")}));
        DO(m_scene->clickRow(left(), "tvObj", modules.first()));
        DO(m_scene->clickRow(left(), "tvObj", modules.last(), "shift"));
        DO(m_scene->press(left(), "btnOK"));
        SOON(number("select count(*) from Menu where parent = " + quoted(element("Pumps"))) == 5);
        SOON(left().settled());

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
        SOON(number("select count(*) from Menu where separator and ico = 'pump.png' and parent = " +
                    quoted(element("Pumps"))) == 1);

        const int clicks = hands::clicks() - before;
        qInfo("%d clicks set up a desktop with a folder, five elements, an icon and a separator",
              clicks);
        take("click-count");
        QVERIFY2(clicks <= most, qPrintable(QString::number(clicks)));
    }
};

QTEST_MAIN(TestClickCount)
#include "tst_click_count.moc"
