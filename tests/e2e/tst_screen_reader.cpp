// What a screen reader finds: the tree of accessible objects that the running client offers on the
// bus, walked from its window down. Runs in a bus session of its own.
#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

#include <unistd.h>

#include <vector>

using namespace orvo::test;

struct Reference {
    QString service;
    QDBusObjectPath path;
};
Q_DECLARE_METATYPE(Reference)
Q_DECLARE_METATYPE(QList<Reference>)

static QDBusArgument& operator<<(QDBusArgument& argument, const Reference& one) {
    argument.beginStructure();
    argument << one.service << one.path;
    argument.endStructure();
    return argument;
}
static const QDBusArgument& operator>>(const QDBusArgument& argument, Reference& one) {
    argument.beginStructure();
    argument >> one.service >> one.path;
    argument.endStructure();
    return argument;
}

namespace {

constexpr char accessible[] = "org.a11y.atspi.Accessible";
constexpr int showing = 25; // of the states

struct Node {
    Reference at;
    QString role, name;
    bool isShown = false;
    bool isInComboBox = false; ///< which has the name
    QString path;              ///< roles and names from the window down
};

class Bus {
public:
    explicit Bus(const QString& address)
        : m_bus(QDBusConnection::connectToBus(address, "reader")) {}
    bool isUp() const { return m_bus.isConnected(); }

    QList<Reference> children(const Reference& of) const {
        QDBusReply<QList<Reference>> reply = call(of, "GetChildren");
        return reply.isValid() ? reply.value() : QList<Reference>();
    }
    QString role(const Reference& of) const {
        return QDBusReply<QString>(call(of, "GetRoleName")).value();
    }
    QString name(const Reference& of) const {
        QDBusMessage get = QDBusMessage::createMethodCall(of.service, of.path.path(),
                                                          "org.freedesktop.DBus.Properties", "Get");
        get << QString(accessible) << QString("Name");
        return QDBusReply<QVariant>(m_bus.call(get, QDBus::Block, 5000)).value().toString();
    }
    bool isShowing(const Reference& of) const {
        const QDBusReply<QList<uint>> reply = call(of, "GetState");
        const QList<uint> states = reply.value();
        return !states.isEmpty() && (states.first() >> showing & 1u);
    }

private:
    QDBusMessage call(const Reference& of, const char* method) const {
        return m_bus.call(
            QDBusMessage::createMethodCall(of.service, of.path.path(), accessible, method),
            QDBus::Block, 5000);
    }
    mutable QDBusConnection m_bus;
};

} // namespace

class TestScreenReader : public QObject {
    Q_OBJECT
    std::unique_ptr<Bus> m_bus;
    std::unique_ptr<Scene> m_scene;
    QVector<Node> m_nodes;

    /// All objects below one, the cells of a tree but for the first ones.
    void walk(const Reference& at, const QString& path, int depth, bool inComboBox = false) {
        constexpr int cells = 12;
        Node node{at, m_bus->role(at), m_bus->name(at), m_bus->isShowing(at), inComboBox, {}};
        node.path = path + '/' + node.role + ' ' + node.name;
        m_nodes << node;
        if (depth > 30)
            return;
        QList<Reference> children = m_bus->children(at);
        if (node.role.contains("tree"))
            children = children.mid(0, cells);
        for (const Reference& child : qAsConst(children))
            walk(child, node.path, depth + 1, inComboBox || node.role == "combo box");
    }
    bool look() {
        m_nodes.clear();
        for (const Reference& one : m_bus->children(
                 {"org.a11y.atspi.Registry", QDBusObjectPath("/org/a11y/atspi/accessible/root")}))
            if (m_bus->name(one).contains("orvo", Qt::CaseInsensitive))
                walk(one, {}, 0);
        return m_nodes.size() > 20;
    }
    QString named(const QString& role, const QString& name) const {
        for (const Node& node : m_nodes)
            if (node.role == role && node.name == name)
                return node.path;
        return {};
    }

    /// Paths of what is shown, can be used and has no name.
    QString nameless() const {
        const QSet<QString> wanted{"push button",
                                   "toggle button",
                                   "text",
                                   "combo box",
                                   "check box",
                                   "tree table",
                                   "tree",
                                   "table",
                                   "list",
                                   "page tab",
                                   "tool bar",
                                   "menu",
                                   "menu item",
                                   "column header",
                                   "frame",
                                   "dialog",
                                   "table column header",
                                   "button",
                                   "page tab list"};
        QStringList paths;
        for (const Node& node : qAsConst(m_nodes))
            if (wanted.contains(node.role) && node.name.trimmed().isEmpty() && node.isShown &&
                !node.isInComboBox)
                paths << node.path;
        return paths.join('\n');
    }

    /// Paths of what is shown and is called as in the program.
    QString internalNames() const {
        static const QRegularExpression identifier("^[a-z]+([A-Z][a-z]*)+$");
        QStringList paths;
        for (const Node& node : qAsConst(m_nodes))
            if (node.isShown && identifier.match(node.name).hasMatch())
                paths << node.path;
        return paths.join('\n');
    }
    bool isShown(const QString& role, const QString& name) {
        look();
        return std::any_of(m_nodes.begin(), m_nodes.end(), [&](const Node& node) {
            return node.role.startsWith(role) && node.isShown && !node.name.isEmpty() &&
                   node.name.contains(name);
        });
    }

private slots:
    void initTestCase() {
        qDBusRegisterMetaType<Reference>();
        qDBusRegisterMetaType<QList<Reference>>();
        QDBusInterface launcher("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus");
        const QDBusReply<QString> address = launcher.call("GetAddress");
        QVERIFY2(address.isValid(), qPrintable(address.error().message()));
        m_bus = std::make_unique<Bus>(address.value());
        QVERIFY(m_bus->isUp());
        qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        m_scene = std::make_unique<Scene>();
        QVERIFY2(m_scene->startLeft({"Menu", "Resources"}), m_scene->why());
        QVERIFY2(m_scene->waitFor(
                     "the client is on the bus", [this] { return look(); }, 30000),
                 m_scene->why());
    }

    void whatCanBeUsedHasAName() {
        QCOMPARE(nameless(), QString());
        // The other editor.
        QVERIFY(hands::key("ctrl+Next"));
        QVERIFY2(m_scene->waitFor(
                     "the search field of the catalogue is shown",
                     [this] {
                         look();
                         return std::any_of(m_nodes.begin(), m_nodes.end(), [](const Node& node) {
                             return node.isShown && node.name == "Поиск в каталоге";
                         });
                     }),
                 m_scene->why());
        QCOMPARE(nameless(), QString());
        QVERIFY(hands::key("ctrl+Prior"));
    }

    void treesHaveTheirNamesAndColumns() {
        QStringList found;
        for (const Node& node : qAsConst(m_nodes))
            if (node.role.startsWith("tree"))
                found << node.name;
        for (const char* name : {"Рабочие столы", "Меню рабочего стола", "Паспорт элемента",
                                 "Каталог ресурсов", "Паспорт ресурса", "Журнал"})
            QVERIFY2(found.contains(QString::fromUtf8(name)),
                     qPrintable(QString(name) + " is not among: " + found.join(", ")));
        bool hasColumn = false;
        const QRegularExpression latin("[A-Za-z]");
        for (const Node& node : qAsConst(m_nodes))
            QVERIFY2(!node.role.contains("header") || !node.name.contains(latin),
                     qPrintable(node.path));
        for (const Node& node : qAsConst(m_nodes))
            hasColumn = hasColumn || (node.role.contains("header") &&
                                      node.name == QStringLiteral("Наименование"));
        QVERIFY(hasColumn);
    }

    void theMenusAreFound() {
        for (const char* menu : {"Клиент", "Правка", "Вид", "Переход", "Справка"}) {
            bool found = false;
            for (const Node& node : qAsConst(m_nodes))
                found = found || (node.role.startsWith("menu") && node.name == QString(menu));
            QVERIFY2(found, menu);
        }
    }

    void toolBarsQuestionsAndPickersSayWhatTheyAre() {
        for (const Node& node : qAsConst(m_nodes))
            QVERIFY2(node.role != "tool bar" || !node.name.contains("toolBar"),
                     qPrintable(node.path));
        ClientProcess& client = m_scene->left();
        QVERIFY2(m_scene->clickRow(client, "tvDesck", "КС-1 «Верхнеозёрск»"), m_scene->why());
        QVERIFY2(m_scene->clickRow(client, "tvMenu", "Общая схема КС-1"), m_scene->why());
        QVERIFY(hands::key("Delete"));
        QVERIFY2(m_scene->waitFor("the question is an alert",
                                  [&] { return isShown("alert message", {}); }),
                 m_scene->why());
        QCOMPARE(nameless(), QString());
        QVERIFY(hands::key("Escape"));
        QVERIFY(hands::key("ctrl+1"));
        QVERIFY2(m_scene->waitFor("the picker is a dialog",
                                  [&] { return isShown("dialog", "Выбор модулей"); }),
                 m_scene->why());
        QCOMPARE(nameless(), QString());
        QCOMPARE(internalNames(), QString());
        QVERIFY(hands::key("Escape"));
    }

    void panesHaveNamesForWhatTheyShow_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("role");
        QTest::addColumn<QString>("name");
        QTest::newRow("history") << "F4"
                                 << "tree"
                                 << "История";
        QTest::newRow("problems") << "F8"
                                  << "tree"
                                  << "Проблемы";
        QTest::newRow("where it is used") << "F9"
                                          << "tree"
                                          << "Где используется";
        QTest::newRow("what was not written") << "shift+F8"
                                              << "tree"
                                              << "Не записано";
        QTest::newRow("preview") << "F5"
                                 << "text"
                                 << "Поиск в меню";
        QTest::newRow("all of it") << "ctrl+k"
                                   << "text"
                                   << "Что найти";
    }
    void panesHaveNamesForWhatTheyShow() {
        QFETCH(QString, key);
        QFETCH(QString, role);
        QFETCH(QString, name);
        QVERIFY(hands::key(key));
        QVERIFY2(m_scene->waitFor("the pane is shown", [&] { return isShown(role, name); }),
                 m_scene->why());
        QCOMPARE(nameless(), QString());
        QCOMPARE(internalNames(), QString());
    }

    void cleanupTestCase() {
        if (qEnvironmentVariableIsSet("ORVO_E2E_NODES"))
            for (const Node& node : qAsConst(m_nodes))
                qInfo().noquote() << node.isShown << node.path;
        m_scene.reset();
    }
};

/// On a bus of its own, which goes with it.
int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("ORVO_READER_BUS")) {
        qputenv("ORVO_READER_BUS", "1");
        std::vector<char*> command{const_cast<char*>("dbus-run-session"), const_cast<char*>("--")};
        command.insert(command.end(), argv, argv + argc);
        command.push_back(nullptr);
        execvp(command.front(), command.data());
        qFatal("dbus-run-session is not installed");
    }
    QCoreApplication app(argc, argv);
    TestScreenReader test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_screen_reader.moc"
