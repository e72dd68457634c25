// The records in memory are those of the store, whatever was written and by whom.
#include "tests/store/StoreTest.h"

#include "catalogue/Catalogue.h"
#include "frame/Vocabulary.h"

#include <QRandomGenerator>

using namespace orvo;
using namespace orvo::store;
using namespace orvo::store::test;
using orvo::catalogue::Catalogue;
using orvo::catalogue::Record;

namespace {

/// Every record with its values and where it stands, sorted.
QStringList textOf(const Catalogue& catalogue) {
    QStringList lines;
    for (uint32_t number = 0; number < catalogue.numberEnd(); ++number) {
        const Record record = catalogue.at(number);
        if (!record)
            continue;
        QString line = QString::fromLatin1(record.table().name);
        for (const auto& [field, value] : record.values()) {
            const auto* integer = std::get_if<int64_t>(&value);
            const auto* real = std::get_if<double>(&value);
            line += integer ? QString("|%1").arg(*integer)
                    : real  ? QString("|%1").arg(*real, 0, 'f', 6)
                    : record.isNull(field)
                        ? QString("|-")
                        : "|\"" + QString::fromStdString(store::textOf(value)) + '"';
        }
        QStringList links;
        catalogue.forEachLink(record.table(), record.key(), [&](const Record& namer, int field) {
            links << QString("%1.%2").arg(QString::fromStdString(namer.key())).arg(field);
            return true;
        });
        links.sort();
        lines << line + " <- " + links.join(',') + " in " + catalogue.path(record);
    }
    lines.sort();
    return lines;
}

QStringList keys(const Catalogue& catalogue, const char* table, const char* field,
                 const char* text) {
    QStringList all;
    catalogue.forEachWith(table, field, text, [&](const Record& record, int) {
        all << QString::fromStdString(record.key());
        return true;
    });
    all.sort();
    return all;
}

/// What a listener heard, a line each.
struct Heard : catalogue::Listener {
    QStringList lines;
    void recordChanged(const Catalogue&, const Record& before, const Record& after) override {
        lines << QString("%1>%2").arg(before.name(), after.name());
    }
    void loaded(const Catalogue&) override { lines << "loaded"; }
};

} // namespace

class TestCatalogue : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void aRecordIsFoundByItsKey() {
        fill();
        Catalogue catalogue;
        ORVO_OK(catalogue.load(*m_store));
        const Record element = catalogue.find("Menu", "e");
        QVERIFY(element);
        QCOMPARE(element.text("caption"), std::string("Насос"));
        QCOMPARE(element.name(), QString("Насос"));
        QVERIFY(element.isNull(element.table().find("order_")));
        QCOMPARE(catalogue.find("Menu", "P").integer("order_"), 1000);
        QCOMPARE(catalogue.find("MenuFolder", "F").integer("isFolder"), 1);
        QVERIFY(!catalogue.find("MenuFolder", "E"));
        QCOMPARE(catalogue.count(*findTable("Menu")), size_t(2));
    }

    void aPathNamesWhatARecordStandsIn() {
        fill();
        Catalogue catalogue;
        ORVO_OK(catalogue.load(*m_store));
        QCOMPARE(catalogue.path(catalogue.find("Menu", "E")), QString("Цех / Стол / Папка"));
        QCOMPARE(catalogue.path(catalogue.find("MenuFolder", "F")), QString());
    }

    void whoNamesARecordIsKnown() {
        fill();
        Catalogue catalogue;
        ORVO_OK(catalogue.load(*m_store));
        QCOMPARE(keys(catalogue, "Menu", "MenuResourceKey", "R"), QStringList{"E"});
        QCOMPARE(keys(catalogue, "Menu", "FolderKey", "D"), (QStringList{"E", "P"}));
        QCOMPARE(keys(catalogue, "Menu", "ico", "PUMP.svg"), QStringList{"E"});
        QCOMPARE(keys(catalogue, "MenuResource", "name_", "pump.SVG"), QStringList{"I"});
        QCOMPARE(keys(catalogue, "Menu", "parent", "nobody"), QStringList());
    }

    void deadLinksComeToLifeWithTheirRecord() {
        ORVO_OK(Batch("Menu").insert("E", {{"MenuResourceKey", "late"}}).send(*m_store));
        Catalogue catalogue;
        int64_t cursor = position();
        ORVO_OK(catalogue.load(*m_store));
        const int field = findTable("Menu")->find("MenuResourceKey");
        QVERIFY(!catalogue.linked(catalogue.find("Menu", "E"), field));
        ORVO_OK(Batch("MenuResource").insert("LATE", {{"name_", "x"}}).send(*m_store));
        follow(catalogue, &cursor);
        QCOMPARE(catalogue.linked(catalogue.find("Menu", "E"), field).key(), std::string("LATE"));
        ORVO_OK(Batch("MenuResource").remove("LATE").send(*m_store));
        follow(catalogue, &cursor);
        QVERIFY(!catalogue.linked(catalogue.find("Menu", "E"), field));
        QCOMPARE(keys(catalogue, "Menu", "MenuResourceKey", "Late"), QStringList{"E"});
    }

    void aListenerHearsOldAndNewValues() {
        fill();
        Catalogue catalogue;
        Heard heard;
        catalogue.addListener(&heard);
        int64_t cursor = position();
        ORVO_OK(catalogue.load(*m_store));
        ORVO_OK(Batch("Menu").update("E", {{"caption", "Помпа"}}).send(*m_store));
        ORVO_OK(Batch("Menu").remove("E").send(*m_store));
        ORVO_OK(Batch("Menu").insert("N", {{"caption", "Новый"}}).send(*m_store));
        follow(catalogue, &cursor);
        QCOMPARE(heard.lines, (QStringList{"loaded", "Насос>Помпа", "Помпа>", ">Новый"}));
        catalogue.removeListener(&heard);
        ORVO_OK(Batch("Menu").remove("N").send(*m_store));
        follow(catalogue, &cursor);
        QCOMPARE(heard.lines.size(), 4);
    }

    void keysSpelledOtherwiseNameTheSameRecord() {
        fill();
        ORVO_OK(Batch("Menu").insert("X", {{"FolderKey", "d"}, {"parent", "p"}}).send(*m_store));
        Catalogue catalogue;
        ORVO_OK(catalogue.load(*m_store));
        const Record x = catalogue.find("Menu", "X");
        QCOMPARE(x.text("FolderKey"), std::string("d"));
        QCOMPARE(catalogue.above(x).key(), std::string("P"));
        QCOMPARE(keys(catalogue, "Menu", "FolderKey", "D"), (QStringList{"E", "P", "X"}));
    }

    void writesByHandAreFollowed() {
        fill();
        Catalogue catalogue;
        int64_t cursor = position();
        ORVO_OK(catalogue.load(*m_store));
        QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"KeyLink\" = 'other' WHERE \"KeyLink\" = 'E'"));
        QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"KeyLink\" = 'p' WHERE \"KeyLink\" = 'P'"));
        QVERIFY(m_kind.byHand("DELETE FROM \"MenuResource\""));
        follow(catalogue, &cursor);
        Catalogue fresh;
        ORVO_OK(fresh.load(*m_store));
        QCOMPARE(textOf(catalogue), textOf(fresh));
    }

    void changesSeenByTheLoadingMayComeAgain() {
        int64_t cursor = position();
        fill();
        ORVO_OK(Batch("Menu").update("E", {{"parent", ""}}).remove("P").send(*m_store));
        Catalogue catalogue;
        ORVO_OK(catalogue.load(*m_store));
        const QStringList loaded = textOf(catalogue);
        follow(catalogue, &cursor);
        QCOMPARE(textOf(catalogue), loaded);
    }

    void randomChangesLeaveWhatLoadingAnewGives_data() {
        QTest::addColumn<int>("seed");
        for (int seed = 1; seed <= 3; ++seed)
            QTest::newRow(qPrintable(QString("seed %1").arg(seed))) << seed;
    }

    void randomChangesLeaveWhatLoadingAnewGives() {
        QFETCH(int, seed);
        QRandomGenerator random(static_cast<quint32>(seed));
        const auto key = [&] { return QString("k%1").arg(random.bounded(12)); };
        const auto value = [&](const FieldDef& field) -> QVariant {
            if (random.bounded(4) == 0)
                return {};
            if (field.type == MDX_TEXT)
                return field.link ? key()
                                  : QStringList{"Ж", "ж", "abc", "", "k1"}[random.bounded(5)];
            if (field.type == MDX_BOOLEAN)
                return random.bounded(2) == 1;
            if (field.type == MDX_DATE)
                return random.bounded(1000000) / 8.0;
            return random.bounded(-1000, 1000);
        };
        Catalogue catalogue;
        int64_t cursor = position();
        ORVO_OK(catalogue.load(*m_store));
        for (int act = 0; act < 300; ++act) {
            const TableDef& table = tables()[random.bounded(quint32(tables().size()))];
            const QByteArray name = key().toLatin1();
            Batch batch(table.name);
            const int what = random.bounded(3);
            batch.add(what == 0 ? MDX_INSERT : what == 1 ? MDX_UPDATE : MDX_DELETE, name, {});
            for (const FieldDef& field : table.fields)
                if (what != 2 && &field != &table.fields.front() && random.bounded(2) == 1)
                    batch.set(field.name, value(field));
            const Status status = batch.send(*m_store); // many are refused
            Q_UNUSED(status);
            if (act % 20 == 0)
                follow(catalogue, &cursor);
        }
        follow(catalogue, &cursor);
        Catalogue fresh;
        ORVO_OK(fresh.load(*m_store));
        QCOMPARE(textOf(catalogue), textOf(fresh));
        QVERIFY(fresh.count() > 5);
    }

private:
    void fill() {
        ORVO_OK(Batch("MenuFolder")
                    .insert("F", {{"caption", "Цех"}, {"order_", "1000"}, {"isFolder", true}})
                    .insert("D", {{"caption", "Стол"}, {"order_", "2000"}, {"ParentKey", "F"}})
                    .send(*m_store));
        ORVO_OK(Batch("MenuResource")
                    .insert("R", {{"caption", "Ёлка"}, {"name_", "tree"}, {"type_", 3}})
                    .insert("I", {{"name_", "pump.svg"}, {"type_", 4}})
                    .send(*m_store));
        ORVO_OK(Batch("Menu")
                    .insert("P", {{"caption", "Папка"}, {"FolderKey", "D"}, {"order_", 1000}})
                    .insert("E", {{"caption", "Насос"},
                                  {"FolderKey", "D"},
                                  {"parent", "P"},
                                  {"MenuResourceKey", "R"},
                                  {"ico", "pump.svg"}})
                    .send(*m_store));
    }

    void follow(Catalogue& catalogue, int64_t* cursor) {
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(*cursor, 100000, &changes));
        for (const Change& change : changes)
            catalogue.apply(change);
        if (!changes.empty())
            *cursor = changes.back().id;
        QCOMPARE(catalogue.check(), static_cast<const char*>(nullptr));
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestCatalogue>(argc, argv);
}

#include "tst_catalogue.moc"
