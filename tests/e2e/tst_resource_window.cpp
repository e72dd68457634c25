// An engineer in the resource editor with mouse and keyboard: a file goes up, is found by typing,
// cut and pasted into another folder; resources are dragged to where they may go and to where they
// may not. What is done is what is stored. The functions are one story, in this order.
#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"

#include <QFile>
#include <QtTest>

using namespace orvo::test;

#define DO(act) QVERIFY2(act, m_scene->why())
#define DONE(condition)                                                                            \
    QVERIFY2(m_scene->waitFor(#condition, [&] { return condition; }), m_scene->why())

class TestResourceWindow : public QObject {
    Q_OBJECT
    std::unique_ptr<Scene> m_scene;
    QTemporaryDir m_local;

    const QString m_documents = QStringLiteral("Документы");
    const QString m_reports = QStringLiteral("Сводки");
    const QString m_file = QStringLiteral("uploaded.txt");

    ClientProcess& client() { return m_scene->left(); }
    QString value(const QString& sql) const { return m_scene->store().value(sql); }
    /// The caption of the folder that the store has the file in; null without such a file.
    QString storedIn() const {
        return value("select f.caption from MenuResource r join MenuResourceFolder f on "
                     "f.KeyLink = r.MenuResourceFolderKey where r.name_ = " +
                     quoted(m_file));
    }
    /// The same in the tree on the screen.
    QString shownIn() {
        const Tree tree = client().tree("tvRes");
        const int row = tree.find(m_file);
        const int parent = row < 0 ? -1 : tree.parentOf(row);
        return parent < 0 ? QString() : tree.rows[static_cast<size_t>(parent)].cells[0];
    }
    QString current() {
        const Tree tree = client().tree("tvRes");
        return tree.current() < 0 ? QString()
                                  : tree.rows[static_cast<size_t>(tree.current())].cells[0];
    }
    /// The newest change of the store.
    QString lastChange() const { return value("select max(id) from NciEvent"); }
    /// What was written after a change: code, table, caption of the resource and the fields.
    QStringList changesAfter(const QString& id) const {
        QStringList lines;
        for (const QStringList& row : m_scene->store().rows(
                 "select e.code, e.tableName, r.caption, e.login, e.after from NciEvent e left "
                 "join MenuResource r on r.KeyLink = e.key where e.id > " +
                 id + " order by e.id"))
            lines << row.join(' ');
        return lines;
    }
    QString keyOfFolder(const QString& caption) const {
        return value("select KeyLink from MenuResourceFolder where caption = " + quoted(caption));
    }
    QString folderOf(const QString& resource) const {
        return value("select f.caption from MenuResource r join MenuResourceFolder f on "
                     "f.KeyLink = r.MenuResourceFolderKey where r.caption = " +
                     quoted(resource));
    }
    /// Drags a row onto the middle of another, both brought into view.
    bool drag(const QString& from, const QString& to) {
        if (!m_scene->reveal(client(), "tvRes", from) || !m_scene->reveal(client(), "tvRes", to))
            return false;
        // Opening and scrolling to the second may have moved the first.
        const auto start = m_scene->reveal(client(), "tvRes", from);
        const Tree tree = client().tree("tvRes");
        const int target = tree.find(to);
        if (!start || target < 0 || tree.rows[static_cast<size_t>(target)].rects.empty())
            return false;
        const QRect end = tree.rows[static_cast<size_t>(target)].rects[0];
        return hands::drag({start->left() + 30, start->center().y()},
                           {end.left() + 30, end.center().y()});
    }
    /// A drop has been dealt with when the next click has.
    bool restOn(const QString& row) {
        return m_scene->clickRow(client(), "tvRes", row) &&
               m_scene->waitFor("the client rests", [this] { return client().settled(); });
    }
    QJsonObject focus() { return client().ask("windows")["focus"].toObject(); }

private slots:
    void initTestCase() {
        m_scene = std::make_unique<Scene>();
        // High enough for rows of both areas at once.
        DO(m_scene->startLeft({"Resources"}, "left", {5, 5, 1385, 1560}));
    }

    void cleanup() {
        const QString picture = qEnvironmentVariable("ORVO_E2E_PICTURE");
        if (QTest::currentTestFailed() && !picture.isEmpty())
            QProcess::execute("import", {"-window", "root", picture});
    }

    void aFileGoesUp() {
        QFile file(m_local.filePath(m_file));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("from the disk");
        file.close();
        DO(m_scene->clickRow(client(), "tvRes", m_documents));
        DO(m_scene->press(client(), "actLoadFiles"));
        DONE(focus()["name"].toString() == "fileNameEdit");
        QVERIFY(hands::type(file.fileName()));
        QVERIFY(hands::key("Return"));
        DONE(storedIn() == m_documents);
        DONE(shownIn() == m_documents);
        QCOMPARE(value("select c.data from MenuResourceFile c where c.name_ = " + quoted(m_file)),
                 QString("from the disk"));
    }

    void typingFindsIt() {
        DO(m_scene->clickRow(client(), "tvRes", m_reports));
        QVERIFY(hands::key("ctrl+f"));
        DONE(focus()["class"].toString() == "QLineEdit");
        QVERIFY(hands::type("uploaded"));
        DONE(current() == m_file);
        QVERIFY(hands::type("x"));
        QTest::qWait(200);
        QCOMPARE(current(), m_file);
    }

    void aCutIsPasted() {
        DO(m_scene->clickRow(client(), "tvRes", m_file, {}, 3));
        DO(m_scene->press(client(), "actCut"));
        QCOMPARE(storedIn(), m_documents);
        DO(m_scene->clickRow(client(), "tvRes", m_reports));
        DO(m_scene->clickRow(client(), "tvRes", m_reports, {}, 3));
        DO(m_scene->press(client(), "actPaste"));
        DONE(storedIn() == m_reports);
        DONE(shownIn() == m_reports);
        DONE(current() == m_file);
    }

    void aModuleIsDraggedIntoAnotherFolder_data() {
        QTest::addColumn<QString>("onto");
        QTest::addColumn<QString>("folder");
        QTest::newRow("onto the folder") << "Отчёты"
                                         << "Отчёты";
        // A drop on a resource goes into that resource's folder.
        QTest::newRow("onto a module") << "Плакаты и пометки"
                                       << "Оперативная работа";
    }
    void aModuleIsDraggedIntoAnotherFolder() {
        QFETCH(QString, onto);
        QFETCH(QString, folder);
        const QString module = QStringLiteral("Журнал событий");
        const QString before = lastChange();
        DO(drag(module, onto));
        DONE(folderOf(module) == folder);
        DONE(current() == module);
        DO(m_scene->waitFor("the client rests", [this] { return client().settled(); }));
        QCOMPARE(changesAfter(before),
                 QStringList("602 MenuResource " + module + " left {\"MenuResourceFolderKey\":\"" +
                             keyOfFolder(folder) + "\"}"));
        const Tree tree = client().tree("tvRes");
        QCOMPARE(tree.rows[static_cast<size_t>(tree.parentOf(tree.find(module)))].cells[0], folder);
    }

    void aDropThatMayNotBeChangesNothing_data() {
        QTest::addColumn<QString>("onto");
        QTest::newRow("onto its own folder") << "Оперативная работа";
        QTest::newRow("onto a folder of functions") << "Вызовы";
        QTest::newRow("onto a function") << "Проверка табло";
        QTest::newRow("onto a folder of files") << m_documents;
        QTest::newRow("onto the top of the menu area") << "Ресурсы меню";
    }
    void aDropThatMayNotBeChangesNothing() {
        QFETCH(QString, onto);
        const QString module = QStringLiteral("Журнал событий");
        const QString folder = folderOf(module);
        QCOMPARE(folder, QString("Оперативная работа"));
        const QString before = lastChange();
        DO(drag(module, onto));
        // The drag began all the same: a press makes the row current.
        DONE(current() == module);
        DO(restOn("Тренды параметров"));
        QCOMPARE(changesAfter(before), QStringList());
        QCOMPARE(folderOf(module), folder);
        const Tree tree = client().tree("tvRes");
        QCOMPARE(tree.rows[static_cast<size_t>(tree.parentOf(tree.find(module)))].cells[0], folder);
    }

    void theClientSaidNothing() {
        QCOMPARE(client().failure(), QString());
        QVERIFY(client().isRunning());
        QCOMPARE(m_scene->admin({"check"}), 0);
    }

    void cleanupTestCase() { m_scene.reset(); }
};

QTEST_MAIN(TestResourceWindow)
#include "tst_resource_window.moc"
