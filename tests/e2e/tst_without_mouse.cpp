// Without a mouse: in an installation that has resources and no desktop yet, keys alone make the
// folders, the desktop and the menu that the demonstration has first. What is stored then is equal
// in every field that an engineer sets, in order and in depth.
#include "tests/e2e/SceneTest.h"

using namespace orvo::test;

namespace {

/// What an engineer sets of an element.
struct Element {
    QString caption, icon, params, resource;
    int kind = 0; ///< of the resource; 0: a folder
    bool oneCopy = false, separator = false;
    QString key;
};

// Columns of the menu's tree.
enum {
    MenuCaption = 0,
    MenuIcon = 4,
    MenuKey = 5,
    MenuOneCopy = 7,
    MenuParams = 9,
    MenuSeparator = 11
};
constexpr int passportRowName = 4;

} // namespace

class TestWithoutMouse : public SceneTest {
    Q_OBJECT

    QStringList m_wantedPath; ///< the desktop and the folders above it, from the top
    QStringList m_wanted;     ///< its menu
    QMap<QString, QVector<Element>> m_elements; ///< of it, by key of the folder
    int m_keys = 0;

    // ---------------------------------------------------------------------------------------------
    // What is stored

    QVector<QStringList> childrenOf(const QString& desktop, const QString& parent) const {
        return m_scene->store().rows(
            "select m.KeyLink, m.caption, m.order_, coalesce(m.ico,''), coalesce(m.params,''), "
            "coalesce(r.name_,''), coalesce(r.type_,0), coalesce(m.oneCopy,false), "
            "coalesce(m.separator,false) from Menu m left join MenuResource r on r.KeyLink = "
            "m.MenuResourceKey where m.FolderKey = " +
            quoted(desktop) + " and coalesce(m.parent,'') = " + quoted(parent) +
            " order by m.order_, m.KeyLink");
    }
    /// A line for each element but its key, indented by its depth.
    QStringList outline(const QString& desktop, const QString& parent = "", int depth = 0) const {
        QStringList lines;
        for (const QStringList& row : childrenOf(desktop, parent)) {
            lines << QString(depth * 2, ' ') + row.mid(1).join(" | ");
            lines += outline(desktop, row[0], depth + 1);
        }
        return lines;
    }
    void remember(const QString& desktop, const QString& parent) {
        for (const QStringList& row : childrenOf(desktop, parent)) {
            Element one{row[1],         row[3],        row[4],        row[5],
                        row[6].toInt(), row[7] == "1", row[8] == "1", row[0]};
            m_elements[parent] << one;
            remember(desktop, one.key);
        }
    }
    QStringList pathOf(QString desktop) const {
        QStringList path;
        while (!desktop.isEmpty()) {
            const QStringList row = m_scene->store()
                                        .rows("select caption, isFolder, order_, "
                                              "coalesce(ParentKey,'') from MenuFolder where "
                                              "KeyLink = " +
                                              quoted(desktop))
                                        .value(0);
            path.prepend(row.mid(0, 3).join(" | "));
            desktop = row.value(3);
        }
        return path;
    }

    // ---------------------------------------------------------------------------------------------
    // Keys

    bool press(const QStringList& keys) {
        m_keys += keys.size();
        return keys.isEmpty() || hands::xdotool(QStringList{"key"} + keys);
    }
    bool press(const char* key) { return press(QStringList{QLatin1String(key)}); }
    bool waitFor(const QString& what, const std::function<bool()>& condition) {
        return m_scene->waitFor(qUtf8Printable(what), condition, 20000);
    }
    QString focus() {
        const QJsonObject widget = left().ask("windows")["focus"].toObject();
        return widget["name"].toString().isEmpty() ? widget["class"].toString()
                                                   : widget["name"].toString();
    }
    bool isRowCurrent(const char* tree, int column, const QString& text) {
        const Tree shown = left().tree(tree);
        const int current = shown.current();
        return current >= 0 && shown.rows[size_t(current)].cells.value(column) == text;
    }
    bool goToPane(const QString& name) {
        for (int i = 0; i < 12; ++i) {
            const QString before = focus();
            if (before == name)
                return true;
            press("F6");
            if (!waitFor("F6 goes on from " + before, [&] { return focus() != before; }))
                return false;
        }
        return waitFor("F6 comes to " + name, [] { return false; });
    }
    /// Down or up to the row with that text in a column, opening the folders above it.
    bool walkTo(const char* name, int column, const QString& text) {
        const auto go = [&](int row) {
            const Tree tree = left().tree(name);
            const auto isShown = [&](int one) {
                for (int up = tree.parentOf(one); up >= 0; up = tree.parentOf(up))
                    if (!tree.rows[size_t(up)].expanded)
                        return false;
                return true;
            };
            const int from = tree.current();
            int steps = 0;
            for (int i = std::min(from, row); i < std::max(from, row); ++i)
                steps += isShown(i) ? 1 : 0;
            QStringList keys;
            if (from < 0)
                keys << "Home";
            while (steps-- > 0)
                keys << (from < row ? "Down" : "Up");
            press(keys);
            return waitFor(text + " is current",
                           [&] { return left().tree(name).current() == row; });
        };
        int wanted = -1;
        if (!waitFor(QString(name) + " has " + text,
                     [&] { return (wanted = left().tree(name).find(text, column)) >= 0; }))
            return false;
        for (;;) {
            const Tree tree = left().tree(name);
            int closed = -1;
            for (int up = tree.parentOf(wanted); up >= 0; up = tree.parentOf(up))
                if (!tree.rows[size_t(up)].expanded)
                    closed = up;
            if (closed < 0)
                return go(wanted);
            if (!go(closed) || !press("Right") || !waitFor("a folder opens", [&] {
                    return left().tree(name).rows[size_t(closed)].expanded;
                }))
                return false;
        }
    }
    /// Into the open field of a row, over what is there.
    bool typeOver(const QString& text) {
        if (!waitFor("a field is open", [&] { return focus() == "QLineEdit"; }))
            return false;
        press("ctrl+a");
        m_keys += text.size();
        return hands::type(text);
    }
    bool save(const char* tree) {
        press("ctrl+s");
        return waitFor("the edit is saved, and its row seen and selected", [&] {
            if (left().isEnabled("saveEdit") || !left().settled())
                return false;
            const Tree shown = left().tree(tree);
            const int current = shown.current();
            return current >= 0 && shown.rows[size_t(current)].selected;
        });
    }
    /// A new row of the desktops' tree, by that key.
    bool addDesckRow(const char* key, const QString& caption) {
        press(key);
        if (!waitFor("a new row stands", [&] { return left().isEnabled("saveEdit"); }))
            return false;
        press("F2");
        if (!typeOver(caption))
            return false;
        press("Return");
        return save("tvDesck") && waitFor(caption + " is stored and current", [&] {
                   return !desktop(caption).isNull() && isRowCurrent("tvDesck", 0, caption);
               });
    }
    bool choose(const QString& name) {
        if (!waitFor("the picker has the keys", [&] { return isActive(left(), "CPopObjectList"); }))
            return false;
        press("Down"); // from the button into the list
        if (!waitFor("the list has the keys", [&] { return left().tree("tvObj").focus; }) ||
            !walkTo("tvObj", 0, name))
            return false;
        press("Return");
        return waitFor("the picker is closed and the window active", [&] {
            return left().tree("tvObj").rect.isNull() && !isActive(left(), "CPopObjectList") &&
                   !focus().isEmpty();
        });
    }
    /// By Tab, from an open field on.
    bool tabTo(const QString& row) {
        for (int i = 0; i < 9; ++i) {
            if (isRowCurrent("tvProp", passportRowName, row))
                return true;
            const int before = left().tree("tvProp").current();
            press("Tab");
            if (!waitFor("Tab goes on", [&] { return left().tree("tvProp").current() != before; }))
                return false;
        }
        return waitFor("Tab comes to " + row, [] { return false; });
    }
    /// Makes the current element what is wanted.
    bool fill(const Element& shown, const Element& wanted) {
        press("F2");
        if (!waitFor("F2 opens the name", [&] {
                return focus() == "QLineEdit" && isRowCurrent("tvProp", passportRowName, "name");
            }))
            return false;
        if (shown.caption != wanted.caption && !typeOver(wanted.caption))
            return false;
        if (shown.params != wanted.params && !(tabTo("params") && typeOver(wanted.params)))
            return false;
        if (shown.oneCopy != wanted.oneCopy && !(tabTo("onecopy") && press("space")))
            return false;
        if (shown.icon != wanted.icon &&
            !(tabTo("icon") && press("alt+Down") && choose(wanted.icon) &&
              waitFor("the icon is taken", [&] {
                  return left()
                             .tree("tvProp")
                             .rows[size_t(left().tree("tvProp").current())]
                             .cells.value(1) == wanted.icon;
              })))
            return false;
        if (shown.separator != wanted.separator && !(tabTo("separator") && press("space")))
            return false;
        return save("tvMenu");
    }
    Element shownOf(const QString& key) {
        const Tree tree = left().tree("tvMenu");
        const int row = tree.find(key, MenuKey);
        if (row < 0)
            return {};
        const QStringList& cells = tree.rows[size_t(row)].cells;
        Element one;
        one.caption = cells[MenuCaption];
        one.icon = cells[MenuIcon];
        one.params = cells[MenuParams];
        one.oneCopy = cells[MenuOneCopy] == "true";
        one.separator = cells[MenuSeparator] == "true";
        return one;
    }
    bool build(const QString& desktop, const QString& from, const QString& into) {
        for (const Element& wanted : m_elements[from]) {
            if (!goToPane("tvMenu") ||
                !(into.isEmpty() ? walkTo("tvMenu", 0, menuTop) : walkTo("tvMenu", MenuKey, into)))
                return false;
            const int before = childrenOf(desktop, into).size();
            if (wanted.kind == 0) {
                press("shift+Insert");
                if (!waitFor("a new folder stands", [&] { return left().isEnabled("saveEdit"); }) ||
                    !fill(Element(), wanted))
                    return false;
            } else {
                press(QStringList{"ctrl+" + QString::number(wanted.kind)});
                if (!choose(wanted.resource))
                    return false;
            }
            if (!waitFor(wanted.caption + " is stored", [&] {
                    return childrenOf(desktop, into).size() == before + 1 && left().settled();
                }))
                return false;
            const QString key = childrenOf(desktop, into).last()[0];
            if (wanted.kind != 0) {
                const Element shown = shownOf(key);
                const bool isAsWanted =
                    shown.caption == wanted.caption && shown.icon == wanted.icon &&
                    shown.params == wanted.params && shown.oneCopy == wanted.oneCopy &&
                    shown.separator == wanted.separator;
                if (!isAsWanted &&
                    !(goToPane("tvMenu") && walkTo("tvMenu", MenuKey, key) && fill(shown, wanted)))
                    return false;
            }
            if (!build(desktop, wanted.key, key))
                return false;
        }
        return true;
    }

private slots:
    void initTestCase() {
        // Russian letters, and the quotation marks that Russian texts have.
        QCOMPARE(QProcess::execute("setxkbmap", {"-layout", "us,ru", "-option", "misc:typo"}), 0);
        m_scene = std::make_unique<Scene>();
        const QString first = desktop(QStringLiteral("КС-3 «Белый Мыс»"));
        m_wantedPath = pathOf(first);
        QCOMPARE(m_wantedPath.size(), 3);
        m_wanted = outline(first);
        QCOMPARE(m_wanted.size(), 25);
        remember(first, "");
        QVERIFY(another("delete from Menu; delete from MenuFolder"));
        DO(m_scene->startLeft());
        // Nobody touches it from now on.
        QVERIFY(hands::xdotool({"mousemove", "1399", "999"}));
    }

    void theFirstDesktopIsMadeFromNothing() {
        const int clicks = hands::clicks();
        const auto nameOf = [this](int at) { return m_wantedPath[at].section(" | ", 0, 0); };
        DO(goToPane("tvDesck"));
        DO(addDesckRow("shift+Insert", nameOf(0)));
        DO(addDesckRow("shift+Insert", nameOf(1)));
        DO(addDesckRow("Insert", nameOf(2)));
        const QString made = desktop(nameOf(2));
        QCOMPARE(pathOf(made), m_wantedPath);

        DO(build(made, "", ""));
        take("without-mouse");
        QCOMPARE(outline(made).join('\n'), m_wanted.join('\n'));
        QCOMPARE(number("select count(*) from Menu"), 25);
        QCOMPARE(number("select count(*) from MenuFolder"), 3);
        QCOMPARE(hands::clicks(), clicks);
        QCOMPARE(complaints(left()), QString());
        qInfo("%d keys", m_keys);
    }

    void cleanupTestCase() {
        QProcess::execute("setxkbmap", {"-layout", "us", "-option", ""});
        m_scene.reset();
    }
};

QTEST_MAIN(TestWithoutMouse)
#include "tst_without_mouse.moc"
