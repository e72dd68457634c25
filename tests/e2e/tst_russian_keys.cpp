// A keyboard with the Russian layout and no other: the keys of the editor work as they do with
// Latin letters. Keys are pressed by their codes, as a keyboard sends them.
#include "tests/e2e/SceneTest.h"

using namespace orvo::test;

class TestRussianKeys : public SceneTest {
    Q_OBJECT

    // Codes of the keys that bear these Latin letters.
    static constexpr const char* a = "38";
    static constexpr const char* s = "39";
    static constexpr const char* c = "54";
    static constexpr const char* v = "55";

    static bool control(const char* key) { return hands::key(QString("ctrl+") + key); }
    QString focus() {
        const QJsonObject widget = left().ask("windows")["focus"].toObject();
        return widget["name"].toString().isEmpty() ? widget["class"].toString()
                                                   : widget["name"].toString();
    }
    int copies(const QString& caption) {
        return number("select count(*) from Menu where caption = " + quoted(caption));
    }

private slots:
    void lettersOfTheLayoutAreShortcuts() {
        m_scene = std::make_unique<Scene>();
        DO(m_scene->startLeft());
        QCOMPARE(QProcess::execute("setxkbmap", {"-layout", "ru"}), 0);
        DO(m_scene->clickRow(left(), "tvDesck", station));
        SOON(left().tree("tvMenu").rows.size() > 1);
        // F6 goes to the menu; what is current there is copied and pasted.
        QVERIFY(hands::key("F6"));
        SOON(focus() == "tvMenu");
        QVERIFY(hands::key("Home"));
        QVERIFY(hands::key("Down"));
        const QString caption = current(left(), "tvMenu");
        QVERIFY(!caption.isEmpty());
        const int before = copies(caption);
        QVERIFY(control(c));
        QVERIFY(control(v));
        SOON(copies(caption) == before + 1 || copies(caption + QStringLiteral("_копия")) == 1);
        SOON(left().settled());
    }

    void textFieldsKnowThemToo() {
        QVERIFY(hands::key("F2"));
        SOON(focus() == "QLineEdit");
        QVERIFY(control(a));
        QVERIFY(hands::key(a));
        QVERIFY(hands::key(s));
        QVERIFY(hands::key("Return"));
        QVERIFY(control(s));
        SOON(!element(QStringLiteral("фы")).isNull());
        take("russian-keys");
    }

    void cleanupTestCase() {
        QProcess::execute("setxkbmap", {"-layout", "us"});
        m_scene.reset();
    }
};

QTEST_MAIN(TestRussianKeys)
#include "tst_russian_keys.moc"
