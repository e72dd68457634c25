// The client while the file of its store is removed, moved, and replaced by another: it says so,
// saves nothing into what is left, and opens what stands there then when the engineer asks for it.
#include "tests/e2e/Scene.h"

#include "platform/store/StoreUrl.h"

#include <QFile>
#include <QtTest>

using namespace orvo;
using namespace orvo::test;

#define DO(act) QVERIFY2(act, m_scene->why())

namespace {

const QString station = QStringLiteral("КС-1 «Верхнеозёрск»");
const QString reopen = QStringLiteral("Открыть модули заново");
const QString isConnected = QStringLiteral("Подключено");

/// For a look at it: into the folder that ORVO_E2E_PICTURES names.
void take(const char* name) {
    const QString folder = qEnvironmentVariable("ORVO_E2E_PICTURES");
    if (!folder.isEmpty())
        QProcess::execute("import", {"-window", "root", folder + '/' + name + ".png"});
}

} // namespace

class TestMovedStore : public QObject {
    Q_OBJECT
    std::unique_ptr<Scene> m_scene;
    QString m_file;

    ClientProcess& client() { return m_scene->left(); }
    QString connection() { return client().ask("state")["connection"].toString(); }
    /// How many lines of the log contain the text.
    int logged(const QString& text) {
        int count = 0;
        for (const TreeRow& row : client().tree("logPane").rows)
            count += row.cells.value(2).contains(text) ? 1 : 0;
        return count;
    }
    bool askForStore() { return m_scene->pressAll(client(), {QStringLiteral("Клиент"), reopen}); }

private slots:
    void initTestCase() {
        m_scene = std::make_unique<Scene>();
        store::StoreUrl url;
        QVERIFY(url.parse(m_scene->store().url().toStdString()).ok());
        m_file = QString::fromStdString(url.file());
        QVERIFY(!m_file.isEmpty());
        QCOMPARE(m_scene->admin({"backup", m_file + ".copy"}), 0);
        DO(m_scene->startLeft());
        DO(m_scene->waitFor("the window", [this] { return client().settled(); }));
        QCOMPARE(connection(), isConnected);
    }

    void aStoreThatIsMovedAwayAndBackIsToldAndGoesOn() {
        QVERIFY(QFile::rename(m_file, m_file + ".away"));
        DO(m_scene->waitFor("the loss", [this] { return connection() != isConnected; }));
        DO(m_scene->waitFor("the words", [this] { return logged("удалён или перемещён") > 0; }));
        QVERIFY2(client().failure().contains("запись остановлена"), qPrintable(client().failure()));
        take("moved");
        DO(askForStore()); // nothing is there: the modules stay open with what they show
        DO(m_scene->waitFor("the refusal", [this] { return logged("Нет файла базы") > 0; }));
        QVERIFY(client().tree("tvDesck").find("КС", 0) >= -1);
        QVERIFY(!client().tree("tvDesck").rows.empty());
        QVERIFY(QFile::rename(m_file + ".away", m_file));
        DO(m_scene->waitFor(
            "the return", [this] { return connection() == isConnected; }, 40000));
    }

    void anotherStoreInThePlaceIsOpenedWhenTheEngineerAsks() {
        // A copy made before the client came, with one desktop less in name.
        QVERIFY(QFile::rename(m_file + ".copy", m_file + ".new"));
        QVERIFY(QFile::remove(m_file));
        QVERIFY(QFile::rename(m_file + ".new", m_file));
        DO(m_scene->waitFor("the loss", [this] { return connection() != isConnected; }));
        DO(m_scene->waitFor("the words", [this] {
            return logged("другой файл") + logged("удалён или перемещён") > 0;
        }));
        take("replaced");
        DO(askForStore());
        DO(m_scene->waitFor(
            "the store", [this] { return connection() == isConnected; }, 40000));
        DO(m_scene->waitFor("the modules", [this] { return client().settled(); }));
        take("reopened");
        // What others change in it comes.
        QCOMPARE(QProcess::execute("sqlite3", {m_file, "PRAGMA busy_timeout = 5000; UPDATE "
                                                       "MenuFolder SET caption = 'Новая станция' "
                                                       "WHERE caption LIKE 'КС-1%'"}),
                 0);
        DO(m_scene->waitFor("the change", [this] {
            return client().tree("tvDesck").text().contains("Новая станция");
        }));
    }
};

QTEST_MAIN(TestMovedStore)
#include "tst_moved_store.moc"
