// Tables: fetching, writing, and what is refused.
#include "StoreTest.h"

#include "platform/mdx/MdxBuild.h"

#include <functional>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

/// Everything in all tables, and the end of the log.
QString wholeStore(Store& store) {
    QString text;
    for (const TableDef& table : tables())
        text += QString("[%1]\n%2\n").arg(table.name, dump(store, table.name));
    int64_t id = -1;
    const Status status = store.logPosition(&id);
    return text + (status.ok() ? QString::number(id) : QString::fromStdString(status.text));
}

} // namespace

class TestTables : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void everyTableHasItsStructureAndKeyZero() {
        for (const TableDef& table : tables()) {
            CMDArray array;
            ORVO_OK(m_store->fetch(table.name, array.array));
            QCOMPARE(size_t(array.array->fieldCount), table.fields.size());
            QCOMPARE(array.array->keyCount, 1u);
            QCOMPARE(array.array->recordCount, 0u);
            for (size_t i = 0; i < table.fields.size(); ++i) {
                const MDRField field = MDRFldByNum(array.array, int(i));
                QCOMPARE(orvo::mdx::fieldName(field), table.fields[i].name);
                QCOMPARE(orvo::mdx::fieldType(field), table.fields[i].type);
            }
        }
    }

    void valuesOfEveryTypeComeBackAsTheyWere() {
        ORVO_OK(Batch("MenuResource")
                    .insert("r1", {{"name_", "форма_"},
                                   {"type_", 2147483647},
                                   {"caption", ""},
                                   {"dateTimeEdit", 1700000000.1234567}})
                    .insert("r2", {{"type_", int(-2147483647 - 1)}, {"dateTimeEdit", -0.5}})
                    .send(*m_store));
        ORVO_OK(Batch("MenuFolder")
                    .insert("f1", {{"isFolder", true}})
                    .insert("f2", {{"isFolder", false}})
                    .send(*m_store));
        QCOMPARE(dump(*m_store, "MenuResource"), "r1|-|форма_|2147483647||-|-|-|" +
                                                     QString::number(1700000000.1234567, 'g', 17) +
                                                     "\nr2|-|-|-2147483648|-|-|-|-|-0.5");
        QCOMPARE(dump(*m_store, "MenuFolder", {"KeyLink", "isFolder"}), "f1|true\nf2|false");
    }

    void nullOfEveryFieldComesBackAsNull() {
        for (const TableDef& table : tables()) {
            Batch batch(table.name);
            batch.insert("k");
            ORVO_OK(batch.send(*m_store));
            Batch nulls(table.name);
            nulls.insert("n");
            MDRData* record = orvo::mdx::postedRecord(nulls.array.array, 0);
            MDRVar null{};
            null.null = 1;
            for (size_t i = 1; i < table.fields.size(); ++i)
                nulls.array.SetValF(record, int(i), null);
            ORVO_OK(nulls.send(*m_store));
            const QString rest = QString("|-").repeated(int(table.fields.size()) - 1);
            QCOMPARE(dump(*m_store, table.name), "k" + rest + "\nn" + rest);
        }
    }

    void everyCharacterOfTheCodePageComesBack() {
        std::string all;
        for (int c = 1; c < 256; ++c)
            all += char(c);
        Batch batch("Menu");
        batch.insert("k");
        MDRVar var{};
        var.type = MDX_TEXT;
        var.value.text.length = uint32_t(all.size());
        var.value.text.pointer = all.c_str();
        batch.array.SetValF(orvo::mdx::postedRecord(batch.array.array, 0), "caption", var);
        ORVO_OK(batch.send(*m_store));
        CMDArray read;
        ORVO_OK(m_store->fetch("Menu", read.array));
        const char* text = nullptr;
        MDRGetTextPtr(MDRFldByName(read.array, "caption"), MDARec(read.array, 0, 0), &text);
        QCOMPARE(QByteArray(text), QByteArray::fromStdString(all));
    }

    void updateWritesOnlyTheMarkedFields() {
        ORVO_OK(Batch("Menu")
                    .insert("k", {{"caption", "один"}, {"params", "п"}, {"order_", 5}})
                    .send(*m_store));
        Batch batch("Menu");
        batch.update("k", {{"caption", "два"}});
        // Set, but not marked: must not be written.
        MDRVar var{};
        var.type = MDX_INTEGER;
        var.value.integer = 9;
        MDRSetVal(MDRFldByName(batch.array.array, "order_"),
                  orvo::mdx::postedRecord(batch.array.array, 0), &var);
        ORVO_OK(batch.send(*m_store));
        QCOMPARE(dump(*m_store, "Menu", {"KeyLink", "caption", "params", "order_"}), "k|два|п|5");
        ORVO_OK(Batch("Menu").update("k", {{"params", QVariant()}}).send(*m_store));
        QCOMPARE(dump(*m_store, "Menu", {"KeyLink", "caption", "params", "order_"}), "k|два|-|5");
    }

    void emptyTextOfALinkBecomesNullAndOfOtherFieldsStays() {
        for (const TableDef& table : tables()) {
            for (size_t i = 1; i < table.fields.size(); ++i) {
                if (table.fields[i].type != MDX_TEXT)
                    continue;
                const char* name = table.fields[i].name;
                const QString empty = table.fields[i].link ? "-" : "";
                ORVO_OK(Batch(table.name).insert("k", {{name, ""}}).send(*m_store));
                QCOMPARE(dump(*m_store, table.name, {name}), empty);
                ORVO_OK(Batch(table.name).update("k", {{name, "x"}}).send(*m_store));
                QCOMPARE(dump(*m_store, table.name, {name}), "x");
                ORVO_OK(Batch(table.name).update("k", {{name, ""}}).send(*m_store));
                QCOMPARE(dump(*m_store, table.name, {name}), empty);
                ORVO_OK(Batch(table.name).remove("k").send(*m_store));
            }
        }
        const QStringList links = {"ParentKey", "parent", "MenuResourceKey",
                                   "MenuResourceFolderKey", "UsersKey"};
        for (const TableDef& table : tables()) {
            for (const FieldDef& field : table.fields)
                QCOMPARE(field.link, links.contains(field.name));
        }
    }

    void recordsAreAppliedInTheOrderOfTheirEntry() {
        const int64_t before = position();
        ORVO_OK(Batch("MenuFileExt")
                    .insert("k", {{"fileExt", "1"}})
                    .update("k", {{"fileExt", "2"}})
                    .remove("k")
                    .insert("k", {{"fileExt", "3"}})
                    .send(*m_store));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "k|3");
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(before, 10, &changes));
        QCOMPARE(changes.size(), size_t(4));
        QCOMPARE(changes[0].code, 601);
        QCOMPARE(changes[1].code, 602);
        QCOMPARE(changes[2].code, 603);
        QCOMPARE(changes[3].code, 601);
    }

    void insertOfAnExistingKeyRefusesTheWholeCall() {
        ORVO_OK(Batch("MenuFileExt").insert("K", {{"fileExt", "1"}}).send(*m_store));
        const QString before = wholeStore(*m_store);
        for (const char* key : {"K", "k"}) {
            ORVO_FAILS(Batch("MenuFileExt")
                           .insert("a", {{"fileExt", "2"}})
                           .insert(key, {{"fileExt", "3"}})
                           .insert("z", {{"fileExt", "4"}})
                           .send(*m_store),
                       Refused);
            QCOMPARE(wholeStore(*m_store), before);
        }
    }

    void updateAndDeleteOfAMissingKeyWriteNothing() {
        const int64_t before = position();
        ORVO_OK(Batch("MenuFileExt")
                    .update("no", {{"fileExt", "1"}})
                    .remove("neither")
                    .update("", {{"fileExt", "1"}})
                    .remove("")
                    .insert("yes", {{"fileExt", "2"}})
                    .send(*m_store));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "yes|2");
        QCOMPARE(position(), before + 1);
    }

    void keysAreFoundWithoutRegardToCase() {
        ORVO_OK(Batch("MenuFileExt").insert("AbC").send(*m_store));
        ORVO_OK(Batch("MenuFileExt").update("aBc", {{"fileExt", "1"}}).send(*m_store));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "AbC|1");
        ORVO_OK(Batch("MenuFileExt").remove("ABC").send(*m_store));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "");
    }

    void refusedCallsChangeNothing_data() {
        QTest::addColumn<QString>("table");
        QTest::addColumn<int>("flag");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QVariant>("value");
        QTest::newRow("unknown table") << "NoTable" << 1 << "k"
                                       << "" << QVariant();
        QTest::newRow("table in another case") << "menu" << 1 << "k"
                                               << "" << QVariant();
        QTest::newRow("table of the log") << "NciEvent" << 1 << "k"
                                          << "" << QVariant();
        QTest::newRow("table of contents") << "MenuResourceFile" << 1 << "k"
                                           << "" << QVariant();
        QTest::newRow("empty table name") << "" << 1 << "k"
                                          << "" << QVariant();
        QTest::newRow("hostile table name") << "Menu\"; DELETE FROM \"Menu\"; --" << 1 << "k"
                                            << "" << QVariant();
        QTest::newRow("flag 0") << "Menu" << 0 << "k"
                                << "" << QVariant();
        QTest::newRow("flag 3") << "Menu" << 3 << "k"
                                << "" << QVariant();
        QTest::newRow("empty key") << "Menu" << 1 << ""
                                   << "" << QVariant();
        QTest::newRow("key outside ASCII") << "Menu" << 1 << "ключ"
                                           << "" << QVariant();
        QTest::newRow("key with a line break") << "Menu" << 1 << "a\nb"
                                               << "" << QVariant();
        QTest::newRow("infinite date") << "MenuResource" << 1 << "k"
                                       << "dateTimeEdit" << QVariant(qInf());
        QTest::newRow("no date at all") << "MenuResource" << 1 << "k"
                                        << "dateTimeEdit" << QVariant(qQNaN());
    }

    void refusedCallsChangeNothing() {
        QFETCH(QString, table);
        QFETCH(int, flag);
        QFETCH(QString, key);
        QFETCH(QString, field);
        QFETCH(QVariant, value);
        ORVO_OK(Batch("Menu").insert("old", {{"caption", "c"}}).send(*m_store));
        const QString before = wholeStore(*m_store);
        const QByteArray name = table.toUtf8();
        const QByteArray fieldName = field.toUtf8();
        Batch batch(name.constData());
        batch.insert("first").update("old");
        if (field.isEmpty())
            batch.add(flag, key.toUtf8().constData(), {});
        else
            batch.add(flag, key.toUtf8().constData(), {{fieldName.constData(), value}});
        ORVO_FAILS(batch.send(*m_store), Refused);
        QCOMPARE(wholeStore(*m_store), before);
    }

    void aFieldTheTableLacksIsRefusedOnlyIfMarked() {
        CMDArray array;
        orvo::mdx::addField(array.array, "extra", MDX_TEXT);
        orvo::mdx::addField(array.array, "fileExt", MDX_TEXT);
        orvo::mdx::addField(array.array, "KeyLink", MDX_TEXT);
        MDRData* record = MDARecNew(array.array);
        MDRSetFlags(record, MDX_INSERT);
        MDRVar var{};
        var.type = MDX_TEXT;
        var.value.text = {1, "k"};
        array.SetValF(record, "KeyLink", var);
        array.SetValF(record, "fileExt", var);
        MDARecPost(record, nullptr);
        ORVO_OK(m_store->update("MenuFileExt", array.array));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "k|k");

        MDRSetFlags(record, MDX_UPDATE);
        array.SetValF(record, "extra", var);
        ORVO_FAILS(m_store->update("MenuFileExt", array.array), Refused);
        QCOMPARE(dump(*m_store, "MenuFileExt"), "k|k");

        CMDArray keyless;
        orvo::mdx::addField(keyless.array, "fileExt", MDX_TEXT);
        record = MDARecNew(keyless.array);
        MDRSetFlags(record, MDX_INSERT);
        MDARecPost(record, nullptr);
        ORVO_FAILS(m_store->update("MenuFileExt", keyless.array), Refused);
        ORVO_FAILS(m_store->update("MenuFileExt", nullptr), BadArguments);
    }

    void numbersConvertWhereTheyFit() {
        // As arrays of another make might have them: each value in a field of another type.
        const auto send = [&](const char* name, MdxType type, const MDRVar& value) {
            CMDArray array;
            orvo::mdx::addField(array.array, "KeyLink", MDX_TEXT);
            orvo::mdx::addField(array.array, name, type);
            MDRData* record = MDARecNew(array.array);
            MDRSetFlags(record, MDX_UPDATE);
            MDRVar key{};
            key.type = MDX_TEXT;
            key.value.text = {1, "k"};
            array.SetValF(record, 0, key);
            array.SetValF(record, 1, value);
            MDARecPost(record, nullptr);
            return m_store->update("Menu", array.array);
        };
        ORVO_OK(Batch("Menu").insert("k", {{"order_", 1}}).send(*m_store));
        MDRVar date{};
        date.type = MDX_DATE;
        date.value.date = 7;
        ORVO_OK(send("order_", MDX_DATE, date));
        ORVO_OK(send("separator", MDX_DATE, date));
        QCOMPARE(dump(*m_store, "Menu", {"order_", "separator"}), "7|true");
        date.value.date = 3e9;
        ORVO_FAILS(send("order_", MDX_DATE, date), Refused);
        ORVO_FAILS(send("caption", MDX_DATE, date), Refused);
        MDRVar text{};
        text.type = MDX_TEXT;
        text.value.text = {2, "12"};
        ORVO_FAILS(send("order_", MDX_TEXT, text), Refused);
        MDRVar block{};
        block.type = MDX_BLOCK;
        block.value.text = {2, "12"};
        ORVO_FAILS(send("caption", MDX_BLOCK, block), Refused);
        QCOMPARE(dump(*m_store, "Menu", {"order_", "separator", "caption"}), "7|true|-");
    }

    void fetchOfAnUnknownTableSaysSo() {
        CMDArray array;
        for (const char* name : {"NoTable", "", "menu", "NciEvent", "MenuResourceFile",
                                 "sqlite_master", "Menu\"", "Menu; --"}) {
            ORVO_FAILS(m_store->fetch(name, array.array), UnknownName);
            ORVO_FAILS(m_store->fetchWhere(name, "KeyLink", "k", array.array), UnknownName);
        }
        for (const char* field : {"NoField", "", "order_", "KeyLink\" OR 1=1 --"})
            ORVO_FAILS(m_store->fetchWhere("Menu", field, "k", array.array), UnknownName);
        QCOMPARE(int(array.array->fieldCount), 0);
    }

    void fetchNeedsAnEmptyArray() {
        CMDArray array;
        ORVO_OK(m_store->fetch("Menu", array.array));
        ORVO_FAILS(m_store->fetch("Menu", array.array), BadArguments);
        ORVO_FAILS(m_store->fetchWhere("Menu", "KeyLink", "k", array.array), BadArguments);
        ORVO_FAILS(m_store->fetch("Menu", nullptr), BadArguments);
        QCOMPARE(array.array->keyCount, 1u);
    }

    void fetchWhereComparesExactly() {
        ORVO_OK(
            Batch("Menu")
                .insert("1", {{"FolderKey", "abc"}, {"MenuResourceKey", "Abc"}, {"caption", "Ж"}})
                .insert("2", {{"FolderKey", "ABC"}, {"MenuResourceKey", "abc"}, {"caption", "ж"}})
                .insert("3", {{"FolderKey", "abc "}, {"caption", "жж"}})
                .insert("4", {{"FolderKey", ""}})
                .insert("5")
                .send(*m_store));
        const auto where = [&](const char* field, std::string_view value) {
            CMDArray array;
            const Status status = m_store->fetchWhere("Menu", field, value, array.array);
            return status.ok() ? dump(array.array, {"KeyLink"})
                               : QString::fromStdString(status.text);
        };
        QCOMPARE(where("FolderKey", "abc"), "1");
        QCOMPARE(where("folderkey", "ABC"), "2");
        QCOMPARE(where("FolderKey", "abc "), "3");
        QCOMPARE(where("FolderKey", ""), "4");
        QCOMPARE(where("MenuResourceKey", "abc"), "2");
        QCOMPARE(where("caption", "ж"), "2");
        QCOMPARE(where("KeyLink", "5"), "5");
        QCOMPARE(where("FolderKey", "ab"), "");
        QCOMPARE(where("FolderKey", "abc%"), "");
    }

    void fetchLinkedComparesWithoutRegardToCase() {
        ORVO_OK(Batch("Menu")
                    .insert("one", {{"MenuResourceKey", "Abc"}})
                    .insert("two", {{"MenuResourceKey", "aBC"}})
                    .insert("three", {{"MenuResourceKey", "abcd"}})
                    .insert("four")
                    .send(*m_store));
        const auto linked = [&](const char* field, std::string_view key) {
            CMDArray array;
            const Status status = m_store->fetchLinked("Menu", field, key, array.array);
            return status.ok() ? dump(array.array, {"KeyLink"})
                               : QString::fromStdString(status.text);
        };
        QCOMPARE(linked("MenuResourceKey", "ABC"), "one\ntwo");
        QCOMPARE(linked("KeyLink", "THREE"), "three");
        QCOMPARE(linked("MenuResourceKey", ""), "");
        QCOMPARE(linked("MenuResourceKey", "ab%"), "");
        CMDArray array;
        ORVO_FAILS(m_store->fetchLinked("Menu", "caption", "x", array.array), UnknownName);
        ORVO_FAILS(m_store->fetchLinked("Меню", "KeyLink", "x", array.array), UnknownName);
    }

    void fetchKeysGivesThoseThatAreThere() {
        ORVO_OK(Batch("Menu")
                    .insert("One", {{"caption", "Насос"}, {"order_", 7}, {"oneCopy", true}})
                    .insert("a \"\\,'%", {{"caption", ""}})
                    .insert("three")
                    .send(*m_store));
        const auto fetched = [&](const std::vector<std::string>& keys) {
            CMDArray array;
            const Status status = m_store->fetchKeys("Menu", keys, array.array);
            return status.ok() ? dump(array.array, {"KeyLink", "caption", "order_", "oneCopy"})
                               : QString::fromStdString(status.text);
        };
        QCOMPARE(fetched({"oNE", "ONE", "none", "A \"\\,'%"}), "a \"\\,'%||-|-\nOne|Насос|7|true");
        QCOMPARE(fetched({}), "");
        QCOMPARE(fetched({"", "ключ", "one\nthree"}), "");
        CMDArray array;
        ORVO_FAILS(m_store->fetchKeys("Меню", {"one"}, array.array), UnknownName);
        ORVO_OK(m_store->fetchKeys("Menu", {"one"}, array.array));
        ORVO_FAILS(m_store->fetchKeys("Menu", {"one"}, array.array), BadArguments);
    }

    void hostileValuesInFetchWhereAreData_data() {
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("quote") << QByteArray("' OR '1'='1");
        QTest::newRow("statement") << QByteArray("'; DELETE FROM \"Menu\"; --");
        QTest::newRow("backslash") << QByteArray("\\' OR 1=1 --");
        QTest::newRow("double quote") << QByteArray("\"; DROP TABLE \"Menu\"; --");
        QTest::newRow("parameter") << QByteArray("?1 :a $1 @b");
        QTest::newRow("10 kB") << QByteArray(10240, 'x');
        QTest::newRow("10 kB of quotes") << QByteArray(10240, '\'');
        QTest::newRow("percent") << QByteArray("%_%");
        QTest::newRow("Cyrillic") << QByteArray("Ключ'ё");
    }

    void hostileValuesInFetchWhereAreData() {
        QFETCH(QByteArray, value);
        ORVO_OK(Batch("Menu")
                    .insert("hit", {{"FolderKey", QString::fromUtf8(value)}})
                    .insert("miss", {{"FolderKey", "other"}})
                    .insert("null")
                    .send(*m_store));
        CMDArray found;
        ORVO_OK(m_store->fetchWhere("Menu", "FolderKey", value.toStdString(), found.array));
        QCOMPARE(dump(found.array, {"KeyLink"}), "hit");

        // A zero byte neither ends the value nor is passed over.
        for (const QByteArray& longer :
             {value + '\0', value + QByteArray("\0x", 2), '\0' + value}) {
            CMDArray none;
            ORVO_OK(m_store->fetchWhere("Menu", "FolderKey", longer.toStdString(), none.array));
            QCOMPARE(none.array->recordCount, 0u);
        }
        QCOMPARE(dump(*m_store, "Menu", {"KeyLink"}), "hit\nmiss\nnull");
    }

    void oneStoreObjectSeesTheWritesOfAnother() {
        const auto second = another("second");
        QVERIFY(second);
        ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
        QCOMPARE(dump(*second, "MenuFileExt"), "a|-");
        ORVO_OK(Batch("MenuFileExt").insert("b").send(*second));
        ORVO_FAILS(Batch("MenuFileExt").insert("b").send(*m_store), Refused);
        QCOMPARE(dump(*m_store, "MenuFileExt"), "a|-\nb|-");
        QCOMPARE(second->login(), std::string("second"));
    }

    void brokenTextWrittenByHandIsReadable() {
        QVERIFY(m_kind.byHand(
            "INSERT INTO \"Menu\" (\"KeyLink\", \"caption\", \"params\") VALUES ('k', "
            "'日本', '" +
            QByteArray(100000, 'x') + "');"));
        const int64_t before = position();
        QCOMPARE(dump(*m_store, "Menu", {"caption"}), "??");
        QByteArray words;
        if (m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = " + m_kind.rawText("a\xFFz\xD0") +
                              ", \"params\" = " + m_kind.rawText(QByteArray("b\0c", 3)) + ";",
                          &words)) {
            QCOMPARE(dump(*m_store, "Menu", {"caption", "params"}), "a?z?|b");
            std::vector<Change> changes;
            ORVO_OK(m_store->readLog(before, 10, &changes));
            QCOMPARE(QString::fromStdString(changes[0].after),
                     QString("{\"caption\":\"a?z?\",\"params\":\"b\\u0000c\"}"));
        } else {
            QVERIFY(!words.isEmpty()); // a database that keeps such bytes out is as good
        }
    }

    void valuesOfForeignTypesCannotBeWrittenByHand() {
        QVERIFY(m_kind.byHand("INSERT INTO \"Menu\" (\"KeyLink\") VALUES ('k');"));
        const QString before = wholeStore(*m_store);
        for (const char* set :
             {"\"order_\" = 'text'", "\"order_\" = 3000000000", "\"separator\" = 'text'",
              "\"KeyLink\" = NULL", "\"KeyLink\" = ''", "\"KeyLink\" = 'ключ'", "\"parent\" = ''"})
            QVERIFY2(!m_kind.byHand("UPDATE \"Menu\" SET " + QByteArray(set) + ";"), set);
        QCOMPARE(wholeStore(*m_store), before);
    }

    void usersAreAddedOnce() {
        ORVO_OK(m_store->userAdd({"ivanov", "Иванов", "Иван", "Иванович", false}));
        ORVO_OK(m_store->userAdd({"робот", "", "", "", true}));
        ORVO_FAILS(m_store->userAdd({"IVANOV", "", "", "", false}), Refused);
        ORVO_FAILS(m_store->userAdd({"РОБОТ", "", "", "", false}), Refused);
        ORVO_FAILS(m_store->userAdd({"", "Без имени", "", "", false}), Refused);
        ORVO_FAILS(m_store->userAdd({"日本", "", "", "", false}), Refused);
        QStringList users =
            dump(*m_store, "Users", {"login_", "lastName", "firstName", "midlName", "program"})
                .split("\n");
        users.sort();
        QCOMPARE(users.join("\n"), "ivanov|Иванов|Иван|Иванович|false\nробот||||true");
    }

    void manyRecordsGoInOneCall() {
        Batch batch("Menu");
        for (int i = 0; i < 5000; ++i)
            batch.insert(QString("k%1").arg(i, 5, 10, QChar('0')).toUtf8().constData(),
                         {{"caption", QString("Элемент %1").arg(i)}, {"order_", i}});
        const int64_t before = position();
        ORVO_OK(batch.send(*m_store));
        QCOMPARE(position(), before + 5000);
        CMDArray array;
        ORVO_OK(m_store->fetch("Menu", array.array));
        QCOMPARE(array.array->recordCount, 5000u);
        int32_t order = 0;
        MDRGetAsInt32(MDRFldByName(array.array, "order_"), MDARec(array.array, 0, 4321), &order);
        QCOMPARE(order, 4321);
    }

    void ofManyRecordsTheOneThatCannotBeIsNamed() {
        const auto many = [&](int flag, const char* odd) -> Status {
            Batch batch("MenuFileExt");
            for (int i = 0; i < 350; ++i) {
                const QByteArray key = i == 250 ? QByteArray(odd) : "k" + QByteArray::number(i);
                if (flag == MDX_INSERT)
                    batch.insert(key.constData(),
                                 {{"fileExt", i % 2 ? QString("%1\n").arg(i) : QVariant()}});
                else
                    batch.remove(key.constData());
            }
            return batch.send(*m_store);
        };
        ORVO_OK(Batch("MenuFileExt").insert("Here", {{"fileExt", "1"}}).send(*m_store));
        const QString before = wholeStore(*m_store);
        const Status refused = many(MDX_INSERT, "here");
        ORVO_FAILS(refused, Refused);
        QVERIFY2(refused.text.find("\"here\"") != std::string::npos, refused.text.c_str());
        QCOMPARE(wholeStore(*m_store), before);

        const int64_t since = position();
        ORVO_OK(many(MDX_INSERT, "k250"));
        ORVO_OK(many(MDX_DELETE, "missing"));
        QCOMPARE(dump(*m_store, "MenuFileExt", {"KeyLink", "fileExt"}), QString("Here|1\nk250|-"));
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(since, 1000, &changes));
        QCOMPARE(changes.size(), size_t(350 + 349));
        QCOMPARE(changes[17].key, std::string("k17"));
        QCOMPARE(changes[17].after, std::string(R"({"KeyLink":"k17","fileExt":"17\n"})"));
        for (size_t i = 0; i < changes.size(); ++i)
            QCOMPARE(changes[i].group, changes[i < 350 ? 0 : 350].id);
    }

    void manyRecordsKeepTheirValues() {
        const auto insert = [&](int from, int count) -> Status {
            Batch batch("MenuResource");
            for (int i = from; i < from + count; ++i) {
                const bool bare = i % 7 == 0; // of a run like its neighbours all the same
                batch.insert(qPrintable(QString("k%1").arg(i)),
                             {{"MenuResourceFolderKey", bare ? QVariant("") : QVariant("f")},
                              {"name_", bare ? QVariant() : QVariant(QString("Имя \"%1\"").arg(i))},
                              {"type_", bare ? QVariant() : QVariant(-i)},
                              {"caption", ""},
                              {"dateTimeEdit", bare ? QVariant() : QVariant(1.7e9 + i / 3.0)}});
            }
            return batch.send(*m_store);
        };
        constexpr int count = 350;
        ORVO_OK(insert(0, count));
        const QString atOnce = dump(*m_store, "MenuResource");
        QVERIFY(atOnce.contains("k1|f|Имя \"1\"|-1||") && atOnce.contains("k7|-|-|-||"));
        Batch gone("MenuResource");
        for (int i = 0; i < count; ++i)
            gone.remove(qPrintable(QString("k%1").arg(i)));
        ORVO_OK(gone.send(*m_store));
        QCOMPARE(dump(*m_store, "MenuResource"), QString());
        for (int i = 0; i < count; ++i)
            ORVO_OK(insert(i, 1));
        QCOMPARE(dump(*m_store, "MenuResource"), atOnce);
    }

    void nothingComesToLieBelowItself_data() {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QByteArray>("link");
        QTest::newRow("elements") << QByteArray("Menu") << QByteArray("parent");
        QTest::newRow("desktops") << QByteArray("MenuFolder") << QByteArray("ParentKey");
        QTest::newRow("resources") << QByteArray("MenuResourceFolder") << QByteArray("ParentKey");
    }

    void nothingComesToLieBelowItself() {
        QFETCH(QByteArray, table);
        QFETCH(QByteArray, link);
        const auto batch = [&] { return Batch(table.constData()); };
        ORVO_OK(batch()
                    .insert("a")
                    .insert("b", {{link, "a"}})
                    .insert("c", {{link, "B"}})
                    .insert("d")
                    .send(*m_store));
        const QString before = dump(*m_store, table);
        const int64_t end = position();
        const std::function<Status()> circles[] = {
            [&] {
                return batch().update("a", {{link, "a"}}).send(*m_store);
            },
            [&] {
                return batch().update("A", {{link, "c"}}).send(*m_store);
            },
            [&] {
                return batch()
                    .update("a", {{link, "C"}})
                    .update("d", {{"caption", "Д"}})
                    .send(*m_store);
            },
            // Each alone would do.
            [&] {
                return batch().update("d", {{link, "c"}}).update("a", {{link, "d"}}).send(*m_store);
            },
            [&] {
                return batch().insert("e", {{link, "e"}}).send(*m_store);
            },
            [&] {
                return batch().insert("e", {{link, "f"}}).insert("f", {{link, "e"}}).send(*m_store);
            },
        };
        for (const auto& circle : circles) {
            const Status status = circle();
            QCOMPARE(status.code, Refused);
            QVERIFY2(QString::fromStdString(status.text).contains("внутри самой себя"),
                     status.text.c_str());
            QCOMPARE(dump(*m_store, table), before);
            QCOMPARE(position(), end);
        }
        // What a later record of the same call takes apart is no circle, nor is another place.
        ORVO_OK(
            batch().update("b", {{link, QVariant()}}).update("a", {{link, "c"}}).send(*m_store));
        ORVO_OK(batch().update("d", {{link, "a"}}).update("nobody", {{link, "d"}}).send(*m_store));
        QCOMPARE(dump(*m_store, table, {"KeyLink", QString(link)}), "a|c\nb|-\nc|B\nd|a");
    }

    void aNewRecordClosesNoCircleThroughAStoredOne() {
        ORVO_OK(Batch("Menu").insert("top").insert("orphan", {{"parent", "new"}}).send(*m_store));
        Batch made("Menu");
        made.insert("new", {{"parent", "top"}}).insert("other");
        Batch closing("Menu");
        closing.insert("new", {{"parent", "top"}}).update("top", {{"parent", "orphan"}});
        QCOMPARE(closing.send(*m_store).code, Refused);
        ORVO_OK(made.send(*m_store));
        QCOMPARE(dump(*m_store, "Menu", {"KeyLink", "parent"}),
                 "new|top\norphan|new\nother|-\ntop|-");
    }

    void aCircleThatIsThereCanBeMended() {
        ORVO_OK(Batch("Menu").insert("a", {{"parent", "b"}}).insert("x").send(*m_store));
        // A record that comes back to one that names it closes a circle, as a foreign hand does.
        ORVO_OK(Batch("Menu").insert("b", {{"parent", "a"}}).send(*m_store));
        ORVO_OK(Batch("Menu").update("a", {{"parent", "B"}, {"caption", "А"}}).send(*m_store));
        ORVO_OK(Batch("Menu").update("x", {{"parent", "a"}}).send(*m_store));
        ORVO_OK(Batch("Menu").update("b", {{"parent", QVariant()}}).send(*m_store));
        QCOMPARE(Batch("Menu").update("b", {{"parent", "x"}}).send(*m_store).code, Refused);
        ORVO_OK(Batch("Menu").remove("a").send(*m_store));
        QCOMPARE(dump(*m_store, "Menu", {"KeyLink", "parent"}), "b|-\nx|a");
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestTables>(argc, argv);
}

#include "tst_store_tables.moc"
