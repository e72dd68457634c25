// Writes whose connection went at the commit, with nobody there to be asked: kept as unknown, and
// told for what they became as soon as the server is back.
#include "platform/client/UnwrittenList.h"
#include "platform/store/Maintenance.h"
#include "tests/client/HostFixture.h"
#include "tests/store/PostgresProxy.h"
#include "tests/store/PostgresTest.h"

using namespace orvo;
using namespace orvo::test;
using namespace orvo::store::test;
using client::UnwrittenEntry;
using client::UnwrittenList;

class TestUnwrittenOutcome : public PostgresTest {
    Q_OBJECT
private slots:
    void init() {
        PostgresTest::init();
        m_proxy = std::make_unique<PostgresProxy>(m_cluster->directory());
        store::Status status;
        auto through = store::open("postgresql://postgres@/" + m_database.toStdString() +
                                       "?host=" + m_proxy->directory(),
                                   {}, &status);
        QVERIFY2(through, status.text.c_str());
        m_session = client::makeSession(std::move(through), &status);
        QVERIFY2(m_session, status.text.c_str());
        m_list = std::make_unique<UnwrittenList>(client::sessionStore(*m_session));
        client::setUnwritten(*m_session, m_list.get());
        m_told.clear();
        connect(m_list.get(), &UnwrittenList::told, this,
                [this](const QString& text) { m_told << text; });
    }

    void cleanup() {
        if (m_session)
            client::setUnwritten(*m_session, nullptr);
        m_list.reset();
        m_session.reset();
        m_proxy.reset();
        PostgresTest::cleanup();
    }

    void savedWriteLeavesTheList() {
        writeIntoNothing(PostgresProxy::LoseAnswers);
        m_proxy->setOpen(true);
        m_list->connectionReturned();
        QVERIFY(m_list->isEmpty());
        QCOMPARE(m_told, QStringList{"Связь терялась при записи, но записано: Создан рабочий стол "
                                     "«КС-3»"});
        QVERIFY2(stored().contains("КС-3"), qPrintable(stored()));
    }

    void writeThatNeverArrivedIsRepeated() {
        writeIntoNothing(PostgresProxy::LoseRequest);
        m_proxy->setOpen(true);
        m_list->connectionReturned();
        QCOMPARE(m_list->entries().size(), size_t(1));
        const UnwrittenEntry& entry = m_list->entries().front();
        QCOMPARE(entry.state, UnwrittenEntry::Refused);
        QCOMPARE(entry.why, QString("связь потеряна при записи; в хранилище этого нет"));
        QCOMPARE(m_told, QStringList());
        QVERIFY(m_list->repeat(QString(entry.id)));
        QVERIFY(m_list->isEmpty());
        QVERIFY2(stored().contains("КС-3"), qPrintable(stored()));
    }

    void writeThatTheLogNoLongerTellsOfStays() {
        writeIntoNothing(PostgresProxy::LoseAnswers);
        ORVO_OK(Batch("MenuFileExt").insert("x").send(*m_store));
        store::Status status;
        const auto boss = store::openMaintained(m_cluster->url(m_database.toStdString()),
                                                {"boss", false}, &status);
        QVERIFY2(boss, status.text.c_str());
        ORVO_OK(boss->pruneLog(1000));
        m_proxy->setOpen(true);
        m_list->connectionReturned();
        QCOMPARE(m_list->entries().size(), size_t(1));
        QVERIFY2(m_list->entries().front().why.contains("узнать исход уже нельзя"),
                 qPrintable(m_list->entries().front().why));
        QVERIFY(!m_list->repeat(QString(m_list->entries().front().id))); // it is there
        QVERIFY2(stored().contains("КС-3"), qPrintable(stored()));
    }

    void itIsAskedForAfterTheEndOfTheProgram() {
        QString error;
        QVERIFY2(m_list->keepIn(m_work.path(), &error), qPrintable(error));
        writeIntoNothing(PostgresProxy::LoseAnswers);
        client::setUnwritten(*m_session, nullptr);
        m_list = std::make_unique<UnwrittenList>(client::sessionStore(*m_session));
        connect(m_list.get(), &UnwrittenList::told, this,
                [this](const QString& text) { m_told << text; });
        m_proxy->setOpen(true);
        QVERIFY2(m_list->keepIn(m_work.path(), &error), qPrintable(error));
        QVERIFY(m_list->isEmpty());
        QCOMPARE(m_told.size(), 1);
    }

private:
    /// Writes a desktop; the connection goes with the request or with the answer.
    void writeIntoNothing(PostgresProxy::Mode loses, const char* key = "k") {
        CMDArray array;
        store::makeStructure(*store::findTable("MenuFolder"), array.array);
        addRecord(array, 1, {{"KeyLink", key}, {"caption", "КС-3"}});
        m_proxy->setOpen(false);
        m_proxy->next(loses);
        QVERIFY(!m_session->SqlUpdate("MenuFolder", array.array, true, nullptr));
        QCOMPARE(m_list->entries().size(), size_t(1));
        QCOMPARE(m_list->entries().front().state, UnwrittenEntry::Unknown);
        // Nobody can tell yet, and a repetition could write it twice.
        m_list->connectionReturned();
        QVERIFY(!m_list->repeat(m_list->entries().front().id));
        QCOMPARE(m_list->entries().front().state, UnwrittenEntry::Unknown);
        QCOMPARE(m_told, QStringList());
    }

    QString stored() { return dump(*m_store, "MenuFolder"); }

    std::unique_ptr<PostgresProxy> m_proxy;
    std::unique_ptr<COrvoCliSes> m_session;
    std::unique_ptr<UnwrittenList> m_list;
    QTemporaryDir m_work;
    QStringList m_told;
};

QTEST_MAIN(TestUnwrittenOutcome)
#include "tst_unwritten_outcome.moc"
