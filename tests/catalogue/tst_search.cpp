// Records are found by what somebody remembers of them, and by what they are now.
#include "tests/store/StoreTest.h"

#include "catalogue/LiveCatalogue.h"
#include "catalogue/Search.h"
#include "frame/Vocabulary.h"

#include <QRandomGenerator>

using namespace orvo;
using namespace orvo::store;
using namespace orvo::store::test;
using namespace orvo::catalogue;

class TestSearch : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void wordsAreFoundInAnyOrderAndCase_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("keys");
        const auto row = [](const char* text, const QStringList& keys) {
            QTest::newRow(text) << QString(text) << keys;
        };
        row("НАСОС", {"E-1", "E-2"}); // at the beginning of a name before inside of one
        row("подпит насос", {"E-1"});
        row("  насос   подпит ", {"E-1"});
        row("емкости", {"P"});
        row("ЁМКОСТИ", {"P"});
        row("петр", {"U"});
        row("PETROV", {"U"});
        row("scheme", {"R", "E-1"}); // an element by its object
        row("10%", {"R"});
        row("%", {"R"});
        row("_*", {"R"});
        row(".*", {});
        row("(общая)", {"R"});
        row("e-2", {"E-2"});
        row("насос кс-3", {"E-2", "E-1"}); // by what it stands in
        row("цех емк подп", {"E-1"});
        row("ц е х к с п о д п", {"E-1"});
        row("ц е х к с п о д п ж", {}); // the tenth counts as the first does
        row("цех кс", {"D"});
        row("нет такого", {});
        row("насос\u4e16", {});
        row("\\", {});
        row("", {});
        row("   ", {});
    }

    void wordsAreFoundInAnyOrderAndCase() {
        QFETCH(QString, text);
        QFETCH(QStringList, keys);
        fill();
        load();
        QCOMPARE(find(text), keys);
    }

    void whatIsFoundTellsWhereItStands() {
        fill();
        load();
        const std::atomic<bool> stop = false;
        const Found found = m_search->find(*m_catalogue, "подпиточный", 10, stop).best.value(0);
        QCOMPARE(found.table, QString("Menu"));
        QCOMPARE(found.name, QString("Насос подпиточный"));
        QCOMPARE(found.path, QString("Цех / КС-3 / Ёмкости"));
        QCOMPARE(found.object, QString("scheme.ui"));
        QCOMPARE(found.noun, QString("элемент меню"));
        QCOMPARE(found.kind, int(Kind::Form));
        const Found person = m_search->find(*m_catalogue, "пётр", 10, stop).best.value(0);
        QCOMPARE(person.name, QString("Петров Пётр"));
        QCOMPARE(person.login, QString("petrov"));
    }

    void theBestComesFirst() {
        ORVO_OK(Batch("Menu")
                    .insert("in-text", {{"caption", "Я"}, {"params", "ток"}})
                    .insert("in-name", {{"caption", "Исток"}})
                    .insert("word", {{"caption", "Датчик тока"}})
                    .insert("begins", {{"caption", "Токовая"}})
                    .insert("whole", {{"caption", "ТОК"}})
                    .send(*m_store));
        load();
        QCOMPARE(find("ток"), (QStringList{"whole", "begins", "word", "in-name", "in-text"}));
    }

    void noMoreThanWantedIsShownButAllIsCounted() {
        Batch batch("Menu");
        for (int i = 0; i < 3000; ++i)
            batch.insert(qPrintable(QString("k%1").arg(i)),
                         {{"caption", QString("Насос %1").arg(i)}});
        ORVO_OK(batch.send(*m_store));
        load();
        const std::atomic<bool> stop = false;
        const Findings findings = m_search->find(*m_catalogue, "насос", 20, stop);
        QCOMPARE(findings.count, 3000);
        QCOMPARE(findings.best.size(), 20);
        QVERIFY(findings.whole);
        QCOMPARE(find("насос 2999"), QStringList{"k2999"});
    }

    void aSearchThatIsStoppedIsNotWhole() {
        fill();
        load();
        const std::atomic<bool> stop = true;
        QVERIFY(!m_search->find(*m_catalogue, "насос", 20, stop).whole);
    }

    void renamedMovedAndDeletedRecordsAreFoundAsTheyAre() {
        fill();
        load();
        QCOMPARE(find("scheme подпит"), QStringList{"E-1"});
        ORVO_OK(Batch("MenuResource").update("R", {{"name_", "plan.ui"}}).send(*m_store));
        ORVO_OK(Batch("MenuFolder").update("D", {{"caption", "КС-4"}}).send(*m_store));
        ORVO_OK(
            Batch("Menu").update("E-2", {{"caption", "Клапан"}, {"parent", "P"}}).send(*m_store));
        follow();
        QCOMPARE(find("scheme"), QStringList());
        QCOMPARE(find("plan подпит"), QStringList{"E-1"});
        QCOMPARE(find("кс-3 подпит"), QStringList());
        QCOMPARE(find("кс-4 клапан емкости"), QStringList{"E-2"});
        ORVO_OK(Batch("MenuResource").remove("R").send(*m_store));
        ORVO_OK(Batch("Menu").remove("E-2").insert("N", {{"caption", "Новый"}}).send(*m_store));
        follow();
        QCOMPARE(find("клапан"), QStringList());
        QCOMPARE(find("plan"), QStringList());
        QCOMPARE(find("новый"), QStringList{"N"});
    }

    void afterRandomChangesBlocksAreAsMadeAnew() {
        fill();
        load();
        QRandomGenerator random(7);
        for (int act = 0; act < 200; ++act) {
            const QByteArray key = QByteArray("k") + QByteArray::number(random.bounded(10));
            const QByteArray link = QByteArray("k") + QByteArray::number(random.bounded(10));
            const bool isMenu = random.bounded(2) == 0;
            Batch batch(isMenu ? "Menu" : "MenuResource");
            const int what = random.bounded(3);
            batch.add(what == 0 ? MDX_INSERT : what == 1 ? MDX_UPDATE : MDX_DELETE, key, {});
            if (what != 2) {
                batch.set("caption", QString("имя %1").arg(random.bounded(5)));
                if (isMenu)
                    batch.set("MenuResourceKey", QString(link)).set("parent", QString(link));
                else
                    batch.set("name_", QString("res%1").arg(random.bounded(1000)));
            }
            const Status status = batch.send(*m_store); // many are refused
            Q_UNUSED(status);
            follow();
            if (act % 10 == 0)
                find("имя");
        }
        Search fresh;
        fresh.loaded(*m_catalogue);
        fresh.settled(*m_catalogue);
        const std::atomic<bool> stop = false;
        for (const char* text : {"имя", "имя 3 res", "res1", "k1"})
            QCOMPARE(m_search->find(*m_catalogue, text, 100, stop).count,
                     fresh.find(*m_catalogue, text, 100, stop).count);
    }

    void aLiveCatalogueFollowsWhatItIsTold() {
        fill();
        LiveCatalogue live(
            [this](Status* status) { return open(m_kind.url(), {"tester"}, status); });
        const auto search = std::make_shared<Search>();
        live.addListener(search);
        QObject context;
        int answered = 0;
        QStringList found;
        const auto ask = [&](const QString& text) {
            const auto findings = std::make_shared<Findings>();
            live.run(
                &context,
                [search, findings, text](const Catalogue& catalogue) {
                    const std::atomic<bool> stop = false;
                    *findings = search->find(catalogue, text, 10, stop);
                },
                [&, findings] {
                    ++answered;
                    found.clear();
                    for (const Found& one : findings->best)
                        found << one.key;
                });
        };
        ask("емкости"); // before anything is loaded
        int64_t cursor = position();
        live.start();
        ORVO_OK(Batch("Menu").insert("L", {{"caption", "Поздний"}}).send(*m_store));
        QTRY_COMPARE(answered, 1);
        QCOMPARE(found, QStringList{"P"});
        QTRY_VERIFY(live.isLoaded());
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(cursor, 100, &changes));
        for (const Change& change : changes)
            live.changed(change);
        ask("поздний");
        QTRY_COMPARE(answered, 2);
        QCOMPARE(found, QStringList{"L"});
        ORVO_OK(Batch("Menu").remove("L").send(*m_store));
        live.reload();
        QVERIFY(!live.isLoaded());
        ask("поздний");
        QTRY_COMPARE(answered, 3);
        QCOMPARE(found, QStringList());
    }

    void loadingIsTriedAgainUntilTheStoreAnswers() {
        fill();
        std::atomic<bool> isThere = false;
        LiveCatalogue live([&](Status* status) -> std::unique_ptr<Store> {
            if (isThere)
                return open(m_kind.url(), {"tester"}, status);
            *status = {CannotConnect, "Сервер не отвечает."};
            return nullptr;
        });
        QSignalSpy failed(&live, &LiveCatalogue::failed), loaded(&live, &LiveCatalogue::loaded);
        live.start();
        QTRY_COMPARE(failed.size(), 1);
        isThere = true;
        live.reload(); // no need to wait for the next try
        QTRY_COMPARE(loaded.size(), 1);
        QVERIFY(live.isLoaded());
    }

private:
    void fill() {
        ORVO_OK(
            Batch("Users")
                .insert("U", {{"login_", "petrov"}, {"lastName", "Петров"}, {"firstName", "Пётр"}})
                .send(*m_store));
        ORVO_OK(Batch("MenuFolder")
                    .insert("F", {{"caption", "Цех"}, {"order_", "1000"}, {"isFolder", true}})
                    .insert("D", {{"caption", "КС-3"}, {"order_", "2000"}, {"ParentKey", "F"}})
                    .send(*m_store));
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("G", {{"caption", "модули"}, {"type_", 1}})
                    .send(*m_store));
        ORVO_OK(Batch("MenuResource")
                    .insert("R", {{"caption", "Схема (общая)"},
                                  {"name_", "scheme.ui"},
                                  {"type_", 3},
                                  {"params", "-v 10%_*"}})
                    .send(*m_store));
        ORVO_OK(Batch("Menu")
                    .insert("P", {{"caption", "Ёмкости"}, {"FolderKey", "D"}})
                    .insert("E-1", {{"caption", "Насос подпиточный"},
                                    {"FolderKey", "D"},
                                    {"parent", "P"},
                                    {"MenuResourceKey", "R"}})
                    .insert("E-2", {{"caption", "Аварийный насос"}, {"FolderKey", "D"}})
                    .send(*m_store));
    }

    void load() {
        m_catalogue = std::make_unique<Catalogue>();
        m_search = std::make_unique<Search>();
        m_catalogue->addListener(m_search.get());
        m_cursor = position();
        ORVO_OK(m_catalogue->load(*m_store));
    }

    void follow() {
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(m_cursor, 100000, &changes));
        for (const Change& change : changes)
            m_catalogue->apply(change);
        if (!changes.empty())
            m_cursor = changes.back().id;
        QCOMPARE(m_search->check(*m_catalogue), static_cast<const char*>(nullptr));
    }

    QStringList find(const QString& text) {
        const std::atomic<bool> stop = false;
        const Findings findings = m_search->find(*m_catalogue, text, 100, stop);
        QStringList keys;
        for (const Found& found : findings.best)
            keys << found.key;
        if (!findings.whole || findings.count != keys.size())
            keys << "?";
        return keys;
    }

    std::unique_ptr<Catalogue> m_catalogue;
    std::unique_ptr<Search> m_search;
    int64_t m_cursor = 0;
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestSearch>(argc, argv);
}

#include "tst_search.moc"
