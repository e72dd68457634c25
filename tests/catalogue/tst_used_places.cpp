// Where something is used is told as the records say it, also when what they name is gone.
#include "tests/store/StoreTest.h"

#include "catalogue/Uses.h"

using namespace orvo;
using namespace orvo::store;
using namespace orvo::store::test;
using namespace orvo::catalogue;

class TestUses : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void aResourceIsUsedByTheElementsThatOpenIt() {
        fill();
        QCOMPARE(
            words(uses("MenuResource", "F")),
            QString("форма «Насосы»; 2 элемента меню на 2 рабочих столах; элемент меню «Насосы» "
                    "(КС-1 / Схемы); элемент меню «Насосная» (КС-2)"));
        QCOMPARE(words(uses("MenuResource", "P")),
                 QString("файл «pump.png»; нигде не используется"));
    }

    void anIconIsUsedByTheElementsThatBearIt() {
        fill();
        QCOMPARE(
            words(uses("MenuResource", "i")),
            QString("файл «pump.png»; 2 элемента меню на 1 рабочем столе; элемент меню «Схемы» "
                    "(КС-1); элемент меню «Насосы» (КС-1 / Схемы)"));
    }

    void anElementStandsForItsResourceElseForItsIcon() {
        fill();
        QCOMPARE(words(uses("Menu", "E2")), words(uses("MenuResource", "F")));
        QVERIFY(words(uses("Menu", "E1")).startsWith("иконка «Pump.PNG»; 2 элемента меню"));
        QCOMPARE(words(uses("Menu", "E4")),
                 QString("элемент меню «Пустая»; нигде не используется"));
    }

    void aPersonHoldsLocks() {
        fill();
        const QString held = "; заблокирован 1 ресурс; форма «Насосы» (формы отображения)";
        QVERIFY(words(uses("Users", "U")).endsWith(held));
        QVERIFY(words(uses({{"Users", {}, "PETROV"}})).endsWith(held));
    }

    void whatIsGoneIsStillNamed() {
        fill();
        ORVO_OK(Batch("MenuResource").remove("F").send(*m_store));
        const Uses gone = uses("MenuResource", "F");
        QVERIFY(!gone.exists);
        QCOMPARE(gone.count, 2);
        QCOMPARE(uses("Menu", "E3").count, 2);
        QCOMPARE(uses("Menu", "E3").meant.key, QString("F"));
        QCOMPARE(uses("Menu", "none").count, 0);
        QCOMPARE(uses("Nonsense", "F").count, 0);
    }

    void severalAreCountedOnce() {
        fill();
        const Uses all = uses({{"MenuResource", "F", {}}, {"MenuResource", "I", {}}});
        QCOMPARE(all.count, 3);
        QCOMPARE(all.desktops, 2);
    }

    void allAreCountedThoughFewAreTold() {
        fill();
        const Uses one = uses({{"MenuResource", "F", {}}}, 1);
        QCOMPARE(one.count, 2);
        QCOMPARE(one.desktops, 2);
        QCOMPARE(one.places.size(), 1);
    }

private:
    void fill() {
        ORVO_OK(
            Batch("Users")
                .insert("U", {{"login_", "petrov"}, {"lastName", "Петров"}, {"firstName", "Пётр"}})
                .send(*m_store));
        ORVO_OK(Batch("MenuFolder")
                    .insert("D1", {{"caption", "КС-1"}, {"order_", "2000"}})
                    .insert("D2", {{"caption", "КС-2"}, {"order_", "2000"}})
                    .send(*m_store));
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("GF", {{"caption", "формы отображения"}, {"type_", 3}})
                    .insert("GI", {{"caption", "Icons"}, {"type_", 4}})
                    .insert("GD", {{"caption", "Документы"}, {"type_", 4}})
                    .send(*m_store));
        ORVO_OK(
            Batch("MenuResource")
                .insert("F", {{"caption", "Насосы"},
                              {"name_", "pumps.ui"},
                              {"type_", 3},
                              {"UsersKey", "u"},
                              {"MenuResourceFolderKey", "GF"}})
                .insert("I", {{"name_", "pump.png"}, {"type_", 4}, {"MenuResourceFolderKey", "gi"}})
                .insert("P", {{"name_", "pump.png"}, {"type_", 4}, {"MenuResourceFolderKey", "GD"}})
                .send(*m_store));
        ORVO_OK(
            Batch("Menu")
                .insert("E1", {{"caption", "Схемы"}, {"FolderKey", "D1"}, {"ico", "Pump.PNG"}})
                .insert("E2", {{"caption", "Насосы"},
                               {"FolderKey", "D1"},
                               {"parent", "E1"},
                               {"ico", "pump.png"},
                               {"MenuResourceKey", "f"}})
                .insert("E3",
                        {{"caption", "Насосная"}, {"FolderKey", "d2"}, {"MenuResourceKey", "F"}})
                .insert("E4", {{"caption", "Пустая"}, {"FolderKey", "D2"}})
                .send(*m_store));
    }

    Uses uses(const std::vector<Subject>& subjects, int most = 100) {
        Catalogue catalogue;
        const Status status = catalogue.load(*m_store);
        if (!status.ok())
            qFatal("%s", status.text.c_str());
        return usesOf(catalogue, subjects, most);
    }

    Uses uses(const char* table, const char* key) {
        return uses(std::vector<Subject>{{table, key, {}}});
    }

    static QString words(const Uses& uses) {
        QStringList all{uses.what, usesWords(uses)};
        for (const Found& place : uses.places)
            all << placeWords(place);
        return all.join(QStringLiteral("; "));
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestUses>(argc, argv);
}

#include "tst_used_places.moc"
