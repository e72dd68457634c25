#include "tests/e2e/Scene.h"

#include "tests/e2e/Hands.h"

#include <QElapsedTimer>
#include <QMap>
#include <QThread>

namespace orvo::test {

namespace {

/// Columns of the trees.
enum { DesckKey = 1, DesckIsFolder = 4, DesckIsNew = 5, MenuKey = 5, MenuIsNew = 12 };

const QStringList folderFields{"KeyLink", "ParentKey", "caption", "order_", "isFolder"};
const QStringList menuFields{"KeyLink", "parent",    "FolderKey", "caption",         "order_",
                             "ico",     "separator", "oneCopy",   "MenuResourceKey", "params"};

/// The lines of one list that the other lacks.
QString lacking(const QStringList& wanted, const QStringList& present) {
    QStringList missing;
    for (const QString& line : wanted)
        if (!present.contains(line))
            missing << line;
    return missing.join('\n');
}

QString compareLines(const char* what, const QStringList& shown, const QStringList& stored) {
    if (shown == stored)
        return {};
    return QString("%1: stored but not shown:\n%2\nshown but not stored:\n%3")
        .arg(what, lacking(stored, shown), lacking(shown, stored));
}

QPoint pointIn(const QRect& cell) {
    return {cell.left() + std::min(40, cell.width() / 2), cell.center().y()};
}

} // namespace

Scene::Scene(std::unique_ptr<store::test::StoreKind> kind) {
    if (!kind->renew())
        qFatal("no store");
    m_store = std::make_unique<StoreView>(std::move(kind));
    m_adminUrl = m_store->url();
    if (admin({"demo"}) != 0)
        qFatal("orvo-admin demo failed");
}

bool Scene::startLeft(const QStringList& modules, const QString& login, const QRect& place) {
    m_left.reset();
    m_left =
        std::make_unique<ClientProcess>(m_directory.path(), m_store->url(), login, place, modules);
    return m_left->waitUp() || fail("the left client does not come up: " + m_left->errors());
}

bool Scene::startRight() {
    m_right = std::make_unique<ClientProcess>(m_directory.path(), m_store->url(), "right",
                                              QRect(1405, 5, 1385, 960));
    return m_right->waitUp() || fail("the right client does not come up: " + m_right->errors());
}

bool Scene::startOperator(const QString& desktop, const QStringList& more, const QRect& place) {
    return startOperatorOn(m_store->url(), "right", desktop, more, place);
}

bool Scene::startOperatorOn(const QString& url, const QString& login, const QString& desktop,
                            const QStringList& more, const QRect& place) {
    m_right.reset();
    m_right = std::make_unique<ClientProcess>(m_directory.path(), url, login, place, QStringList(),
                                              QStringList{"--desktop", desktop} + more);
    return m_right->waitUp() ||
           fail("the operator's desktop does not come up: " + m_right->errors());
}

int Scene::admin(const QStringList& arguments) const {
    return QProcess::execute(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin",
                             QStringList{"--store", m_adminUrl} + arguments);
}

bool Scene::fail(const QString& why) {
    m_why = why.toUtf8();
    return false;
}

bool Scene::waitFor(const char* what, const std::function<bool()>& condition, int ms) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > ms)
            return fail(QString("not in time: ") + what);
        QThread::msleep(15);
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Comparing

bool Scene::agree() {
    QElapsedTimer timer;
    timer.start();
    int inARow = 0;
    QString found;
    while (timer.elapsed() < longestMs) {
        found.clear();
        for (ClientProcess* client : {m_left.get(), m_right.get()}) {
            if (!client || !found.isEmpty())
                continue;
            found = client->settled() ? difference(*client) : "not at rest";
            if (!found.isEmpty())
                found = client->login + ": " + found;
        }
        inARow = found.isEmpty() ? inARow + 1 : 0;
        if (inARow == 2) // nothing was on its way
            return true;
        QThread::msleep(40);
    }
    return fail(found);
}

QString Scene::difference(ClientProcess& client) const {
    if (!client.failure().isEmpty())
        return "failure shown: " + client.failure();
    QString found = compareLines("MenuFolder", client.table("MenuFolder"),
                                 m_store->tableLines("MenuFolder", folderFields));
    if (!found.isEmpty())
        return found;
    const Tree desktops = client.tree("tvDesck");
    found = desckDifference(desktops);
    const int current = desktops.current();
    if (!found.isEmpty() || current < 0)
        return found;
    const TreeRow& row = desktops.rows[static_cast<size_t>(current)];
    if (row.cells.value(DesckIsFolder) == "true")
        return client.tree("tvMenu").rows.empty() ? QString() : "a folder shows a menu";
    return menuDifference(client, row.cells.value(DesckKey));
}

QString Scene::desckDifference(const Tree& tree) const {
    QStringList shown;
    for (size_t i = 1; i < tree.rows.size(); ++i) {
        const int up = tree.parentOf(static_cast<int>(i));
        const QStringList& cells = tree.rows[i].cells;
        if (cells.value(DesckIsNew) == "true")
            return "an unsaved desktop stands in the tree";
        shown << QStringList{cells[DesckKey],
                             up > 0 ? tree.rows[static_cast<size_t>(up)].cells[DesckKey] : "\\N",
                             cells[0], cells[DesckIsFolder] == "true" ? "1" : "0"}
                     .join('\t');
    }
    shown.sort();
    return compareLines(
        "tvDesck", shown,
        m_store->tableLines("MenuFolder", {"KeyLink", "ParentKey", "caption", "isFolder"}));
}

QString Scene::menuDifference(ClientProcess& client, const QString& desktop) const {
    const QString ofDesktop = "FolderKey = " + quoted(desktop);
    const QString found = compareLines("Menu", client.table("Menu"),
                                       m_store->tableLines("Menu", menuFields, ofDesktop));
    if (!found.isEmpty())
        return found;

    // The tree as the store means it: by order_, and by the key where that is equal.
    QMap<QString, QVector<QStringList>> children;
    for (const QStringList& row :
         m_store->rows("select KeyLink, coalesce(parent,''), caption, coalesce(ico,''), order_, "
                       "coalesce(params,''), coalesce(oneCopy,false), coalesce(separator,false), "
                       "coalesce(MenuResourceKey,'') from Menu where " +
                       ofDesktop + " order by order_ nulls first, KeyLink"))
        children[row[1]].append(row);
    QStringList stored;
    const std::function<void(const QString&, int)> walk = [&](const QString& parent, int depth) {
        for (const QStringList& row : children.value(parent)) {
            stored << QString(depth * 2, ' ') + row.join(" | ");
            walk(row[0], depth + 1);
        }
    };
    walk("", 1);

    const Tree tree = client.tree("tvMenu");
    QStringList shown;
    for (size_t i = 1; i < tree.rows.size(); ++i) {
        const QStringList& cells = tree.rows[i].cells;
        if (cells[MenuIsNew] == "true")
            return "an unsaved folder stands in the tree";
        const QString line = QStringList{cells[MenuKey],
                                         cells[10],
                                         cells[0],
                                         cells[4],
                                         cells[8],
                                         cells[9],
                                         cells[7] == "true" ? "1" : "0",
                                         cells[11] == "true" ? "1" : "0",
                                         cells[6]}
                                 .join(" | ");
        shown << QString(tree.rows[i].depth * 2, ' ') + line;
    }
    if (shown != stored)
        return "tvMenu shows\n" + shown.join('\n') + "\nstored is\n" + stored.join('\n');

    const int current = tree.current();
    const Tree passport = client.tree("tvProp");
    const int name = passport.find(QStringLiteral("Наименование"));
    if (current > 0 && name >= 0 &&
        passport.rows[static_cast<size_t>(name)].cells[1] !=
            tree.rows[static_cast<size_t>(current)].cells[0])
        return "the passport is of another row";
    return {};
}

// ---------------------------------------------------------------------------------------------
// Acts

std::optional<QRect> Scene::reveal(ClientProcess& client, const char* name, const QString& text,
                                   int column) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < longestMs) {
        const Tree tree = client.tree(name);
        const int found = tree.find(text);
        if (found < 0) {
            QThread::msleep(30);
            continue;
        }
        const std::vector<QRect>& rects = tree.rows[static_cast<size_t>(found)].rects;
        const auto at = static_cast<size_t>(column);
        if (at < rects.size() && rects[at].isValid())
            return rects[at];
        // The outermost closed folder above the row is opened at its branch sign, which moves no
        // current row.
        const TreeRow* closed = nullptr;
        for (int up = tree.parentOf(found); up >= 0; up = tree.parentOf(up))
            if (!tree.rows[static_cast<size_t>(up)].expanded)
                closed = &tree.rows[static_cast<size_t>(up)];
        if (closed && !closed->rects.empty()) {
            const QStringList cells = closed->cells;
            hands::click(QPoint(closed->rects[0].left() - 8, closed->rects[0].center().y()));
            waitFor(
                "the folder opens",
                [&] {
                    for (const TreeRow& row : client.tree(name).rows)
                        if (row.cells == cells && row.expanded)
                            return true;
                    return false;
                },
                3000);
        } else {
            bool above = true; // rows on the screen come before or behind the wanted one
            for (int row = 0; row < found; ++row)
                above = above && tree.rows[static_cast<size_t>(row)].rects.empty();
            hands::click(tree.rect.center(), above ? 4 : 5);
        }
        QThread::msleep(150);
    }
    fail(QString("%1 has no row \"%2\" on the screen:\n%3")
             .arg(name, text, client.tree(name).text()));
    return {};
}

bool Scene::clickRow(ClientProcess& client, const char* name, const QString& text,
                     const QString& modifier, int button) {
    const std::optional<QRect> cell = reveal(client, name, text);
    if (!cell)
        return false;
    hands::click(pointIn(*cell), button, modifier);
    return !modifier.isEmpty() || waitFor("the clicked row is current", [&] {
        const Tree tree = client.tree(name);
        const int current = tree.current();
        return current >= 0 && tree.rows[static_cast<size_t>(current)].cells[0] == text;
    });
}

bool Scene::press(ClientProcess& client, const QString& nameOrText) {
    QRect place;
    if (!waitFor(qUtf8Printable(nameOrText + " can be pressed"), [&] {
            const QRect before = place;
            place = QRect();
            for (const Control& control : client.controls(nameOrText))
                if (control.visible && control.enabled)
                    place = control.rect;
            return place.isValid() && place == before; // a new window is still being placed
        }))
        return false;
    return hands::click(place.center());
}

bool Scene::pressAll(ClientProcess& client, const QStringList& path) {
    for (const QString& one : path)
        if (!press(client, one))
            return false;
    return true;
}

bool Scene::fill(ClientProcess& client, const QString& caption, const QString& text) {
    const std::optional<QRect> cell = reveal(client, "tvProp", caption, 1);
    if (!cell)
        return false;
    hands::click(pointIn(*cell));
    if (!waitFor("the passport's editor has the focus", [&] {
            return client.ask("windows")["focus"].toObject()["class"].toString() == "QLineEdit";
        }))
        return false;
    hands::key("ctrl+a");
    hands::type(text);
    return waitFor("the passport holds what was typed", [&] {
        const Tree passport = client.tree("tvProp");
        const int row = passport.find(caption);
        return row >= 0 && passport.rows[static_cast<size_t>(row)].cells[1] == text;
    });
}

bool Scene::pick(ClientProcess& client, const QString& caption, const QString& name) {
    const std::optional<QRect> cell = reveal(client, "tvProp", caption, 1);
    if (!cell)
        return false;
    hands::click(pointIn(*cell));
    return press(client, "...") && clickRow(client, "tvObj", name) && press(client, "btnOK");
}

bool Scene::openDesktop(const QString& caption) {
    for (ClientProcess* client : {m_left.get(), m_right.get()}) {
        if (client != nullptr &&
            !(clickRow(*client, "tvDesck", caption) &&
              waitFor("the menu shows", [&] { return client->tree("tvMenu").rows.size() > 1; })))
            return false;
    }
    return agree();
}

} // namespace orvo::test
