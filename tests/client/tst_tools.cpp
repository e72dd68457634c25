// The tools on stored forms and files, and the seek by key.
#include "platform/mdx/MdxBuild.h"
#include "tests/client/HostFixture.h"

#include <QtTest>

#include <cstdlib>
#include <limits>
#include <memory>

using namespace orvo;
using namespace orvo::test;

namespace {

/// The rows of a result in key 0 order: "name:size:content".
QStringList rowsOf(const CMDArray& result) {
    QStringList rows;
    const MDArray* array = result.array;
    for (uint32_t i = 0; array->keyCount && i < array->recordCount; ++i) {
        MDRData* record = MDARec(array, 0, int(i));
        int32_t size = -1;
        MDRGetAsInt32(MDRFldByNum(array, 2), record, &size);
        MDRVar data{};
        MDRGetVal(MDRFldByNum(array, 3), record, &data);
        rows << QStringLiteral("%1:%2:%3")
                    .arg(textOf(array, record, "name"))
                    .arg(size)
                    .arg(data.null ? QStringLiteral("NULL")
                                   : QString::fromUtf8(data.value.text.pointer,
                                                       int(data.value.text.length)));
    }
    return rows;
}

struct Fixture : Host {
    Module module{&app};
    Fixture() {
        write("MenuResourceFolder", 1,
              {{"KeyLink", "f3"}, {"type_", "3"}, {"caption", "формы отображения"}});
        write("MenuResourceFolder", 1,
              {{"KeyLink", "f31"}, {"ParentKey", "f3"}, {"type_", "3"}, {"caption", "Цех"}});
        write("MenuResourceFolder", 1, {{"KeyLink", "f4"}, {"type_", "4"}, {"caption", "icons"}});
    }
    void putForm(const QString& folder, const QList<QPair<QString, QByteArray>>& files) {
        CToolFormPut tool(&module);
        tool.formPath = folder;
        for (const auto& [name, bytes] : files)
            tool.AddFile(name, bytes.constData(), bytes.size(), 1000.5);
        tool.Perform(false);
    }
    void putFile(const QString& folder, const QString& name, const QByteArray& bytes) {
        CToolFilePut tool(&module);
        tool.AddFile(folder, name, bytes.constData(), bytes.size(), 1000.5);
        tool.Perform(false);
    }
    QStringList getFile(const QString& folder, const QString& name) {
        CToolFileGet tool(&module);
        tool.path = folder;
        tool.name = name;
        tool.Perform(false);
        return rowsOf(tool.result);
    }
};

} // namespace

class TestTools : public QObject {
    Q_OBJECT
private slots:
    void toolsAreNamed() {
        Fixture fixture;
        COrvoCliMod* m = &fixture.module;
        QCOMPARE(CToolRecByKey(m).objectName(), QString("RecByKey"));
        QCOMPARE(CToolFormGet(m).objectName(), QString("FormGet"));
        QCOMPARE(CToolFileList(m).objectName(), QString("FileList"));
        QCOMPARE(CToolFileGet(m).objectName(), QString("FileGet"));
        QCOMPARE(CToolFormDel(m).objectName(), QString("FormDel"));
        QCOMPARE(CToolFileDel(m).objectName(), QString("FileDel"));
        QVERIFY(!CToolFormPut(m).objectName().isEmpty());
        QVERIFY(!CToolFilePut(m).objectName().isEmpty());
    }

    void toolsStartAsTheirCallersCountOn() {
        Fixture fixture;
        const CToolFormGet form(&fixture.module);
        QVERIFY(!form.withData);
        QVERIFY(!CToolFileList(&fixture.module).reserved);
        const CToolRecByKey records(&fixture.module);
        QCOMPARE(records.keyBits, QBitArray(6));
        QVERIFY(records.keyValues.isEmpty());
        for (const CMDArray* result : {&form.result, &records.result}) {
            QVERIFY(result->array);
            QCOMPARE(result->array->keyCount, 0u);
        }
    }

    void aFormGoesInAndComesOutInNameOrder() {
        Fixture fixture;
        fixture.putForm("Цех", {{"котёл_b.png", "BB"}, {"котёл", "form"}, {"котёл_a", ""}});
        QVERIFY2(fixture.failures.isEmpty(), qPrintable(fixture.failures.join('\n')));
        CToolFormGet tool(&fixture.module);
        tool.formName = "котёл";
        tool.withData = true;
        tool.Perform(false);
        QCOMPARE(rowsOf(tool.result),
                 QStringList({"котёл:4:form", "котёл_a:0:NULL", "котёл_b.png:2:BB"}));
        MDRVar time{};
        MDRGetVal(MDRFldByNum(tool.result.array, 1), MDARec(tool.result.array, 0, 0), &time);
        QCOMPARE(int(time.type), int(MDX_DATE));
        QCOMPARE(double(time.value.date), 1000.5);

        tool.withData = false;
        tool.Perform(false);
        QCOMPARE(rowsOf(tool.result),
                 QStringList({"котёл:4:NULL", "котёл_a:0:NULL", "котёл_b.png:2:NULL"}));
        tool.formName = "нет такой";
        tool.Perform(false);
        QCOMPARE(rowsOf(tool.result), QStringList());
    }

    void filesAreListedAndFetched() {
        Fixture fixture;
        fixture.putFile("icons", "b.png", "bytes");
        fixture.putFile("icons", "a.png", QByteArray("\0x", 2));
        fixture.putFile("", "root.txt", "r");
        QVERIFY2(fixture.failures.isEmpty(), qPrintable(fixture.failures.join('\n')));
        QCOMPARE(fixture.getFile("icons", "b.png"), QStringList("b.png:5:bytes"));
        QCOMPARE(fixture.getFile("", "root.txt"), QStringList("root.txt:1:r"));
        QCOMPARE(fixture.getFile("icons", "none"), QStringList());
        CToolFileList list(&fixture.module);
        list.path = "icons";
        list.Perform(false);
        QCOMPARE(rowsOf(list.result), QStringList({"a.png:2:NULL", "b.png:5:NULL"}));
        list.name = "b.png";
        list.Perform(false);
        QCOMPARE(rowsOf(list.result), QStringList("b.png:5:NULL"));
    }

    void formsAndFilesAreDeleted() {
        Fixture fixture;
        fixture.putForm("", {{"scheme", "x"}});
        fixture.putFile("icons", "a.png", "a");
        CToolFormDel forms(&fixture.module);
        forms.names = QStringList{"scheme", "never was"};
        forms.Perform(false);
        CToolFileDel files(&fixture.module);
        files.files = {{"icons", "a.png"}, {"icons", "never was"}};
        files.Perform(false);
        QVERIFY2(fixture.failures.isEmpty(), qPrintable(fixture.failures.join('\n')));
        CToolFormGet get(&fixture.module);
        get.formName = "scheme";
        get.Perform(false);
        QCOMPARE(rowsOf(get.result), QStringList());
        QCOMPARE(fixture.getFile("icons", "a.png"), QStringList());
    }

    void hostileFileNamesAreRefusedAtTheDoor_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"../evil", "a/b", ".", "..", "", "/etc/passwd", "line\nbreak"})
            QTest::newRow(name) << QString(name);
    }
    void hostileFileNamesAreRefusedAtTheDoor() {
        QFETCH(QString, name);
        Fixture fixture;
        fixture.putFile("icons", name, "x");
        QCOMPARE(fixture.failures.size(), 1);
        fixture.putForm("Цех", {{"good", "x"}, {name, "x"}});
        QCOMPARE(fixture.failures.size(), 2);
        CToolFormGet get(&fixture.module);
        get.formName = "good";
        get.Perform(false);
        QCOMPARE(rowsOf(get.result), QStringList()); // all or none
    }

    void impossibleSizesAndBuffersAreRefused() {
        Fixture fixture;
        CToolFilePut negative(&fixture.module);
        negative.AddFile("icons", "a", "x", -1, 0);
        negative.Perform(false);
        CToolFormPut null(&fixture.module);
        null.AddFile("a", nullptr, 10, 0);
        null.Perform(false);
        QCOMPARE(fixture.failures.size(), 2);
        CToolFilePut empty(&fixture.module);
        empty.AddFile("icons", "empty", nullptr, 0, std::numeric_limits<double>::quiet_NaN());
        empty.Perform(false);
        QCOMPARE(fixture.failures.size(), 2);
        QCOMPARE(fixture.getFile("icons", "empty"), QStringList("empty:0:NULL"));
    }

    void anUnknownFolderIsRefusedAndReported() {
        Fixture fixture;
        fixture.putForm("нет/такой", {{"scheme", "x"}});
        QCOMPARE(fixture.failures.size(), 1);
        QVERIFY(fixture.failures.first().contains("scheme"));
    }

    void aFileThatNoRecordCarriesIsNamedAsSuch() {
        Fixture fixture;
        constexpr size_t size = 256u << 20;
        // Pages of zeros that take no memory as long as nobody writes to them.
        const std::unique_ptr<void, decltype(&std::free)> zeros(std::calloc(size, 1), &std::free);
        QVERIFY(zeros);
        const auto named = [&](int count) {
            return fixture.failures.size() == count && fixture.failures.last().contains("large") &&
                   fixture.failures.last().contains("МиБ") &&
                   fixture.failures.last().contains("orvo-admin");
        };
        CToolFilePut file(&fixture.module);
        file.AddFile("icons", "large.bin", zeros.get(), size, 1000.5);
        file.AddFile("icons", "small.bin", zeros.get(), 10, 1000.5);
        file.Perform(false);
        QVERIFY2(named(1), qPrintable(fixture.failures.join('\n')));
        CToolFormPut form(&fixture.module);
        form.AddFile("form", zeros.get(), 10, 1000.5);
        form.AddFile("form.large", zeros.get(), size, 1000.5);
        form.Perform(false);
        QVERIFY2(named(2), qPrintable(fixture.failures.join('\n')));
        CToolFileList list(&fixture.module);
        list.path = "icons";
        list.Perform(false);
        QCOMPARE(rowsOf(list.result), QStringList());

        // What came in by another door is listed, and says what it is.
        store::FileToPut put;
        put.path = "icons";
        put.name = "large.bin";
        put.bytes = {static_cast<const char*>(zeros.get()), size};
        QVERIFY(fixture.store().filePut({put}).ok());
        list.Perform(false);
        QCOMPARE(rowsOf(list.result), QStringList("large.bin:268435456:NULL"));
        QCOMPARE(fixture.getFile("icons", "large.bin"), QStringList());
        QVERIFY2(named(3), qPrintable(fixture.failures.join('\n')));
    }

    void putWithoutFilesDoesNothing() {
        Fixture fixture;
        CToolFormPut(&fixture.module).Perform(false);
        CToolFilePut(&fixture.module).Perform(false);
        QVERIFY(fixture.failures.isEmpty());
    }

    void recordsAreFoundByResourceKey() {
        Fixture fixture;
        fixture.write("Menu", 1, {{"KeyLink", "2"}, {"MenuResourceKey", "res"}, {"caption", "б"}});
        fixture.write("Menu", 1, {{"KeyLink", "1"}, {"MenuResourceKey", "res"}, {"caption", "а"}});
        fixture.write("Menu", 1, {{"KeyLink", "3"}, {"MenuResourceKey", "other"}});
        fixture.write("Menu", 1, {{"KeyLink", "4"}});
        CToolRecByKey tool(&fixture.module);
        const std::string key = "res";
        tool.tableName = "Menu";
        tool.keyNumber = 2;
        tool.keyValues = {textValue(key)};
        tool.keyBits.setBit(0);
        tool.Perform(false);
        QCOMPARE(tool.result.array->recordCount, 2u);
        QCOMPARE(int(tool.result.array->fieldCount), 10);
        QCOMPARE(textOf(tool.result.array, MDARec(tool.result.array, 0, 0), "caption"),
                 QString("а"));
        MDRVar null{};
        null.null = 1;
        tool.keyValues = {null};
        tool.Perform(false);
        QCOMPARE(tool.result.array->recordCount, 1u);
        QCOMPARE(textOf(tool.result.array, MDARec(tool.result.array, 0, 0), "KeyLink"),
                 QString("4"));
    }

    void recordsAreFoundInWhateverCaseTheReferenceIsWritten() {
        Fixture fixture;
        fixture.write("Menu", 1, {{"KeyLink", "1"}, {"MenuResourceKey", "ReS"}, {"parent", "Up"}});
        fixture.write("Menu", 1, {{"KeyLink", "2"}, {"MenuResourceKey", "resx"}});
        CToolRecByKey tool(&fixture.module);
        const std::string key = "rEs";
        tool.tableName = "Menu";
        tool.keyNumber = 2;
        tool.keyValues = {textValue(key)};
        tool.keyBits.setBit(0);
        tool.Perform(false);
        QCOMPARE(tool.result.array->recordCount, 1u);
        QCOMPARE(textOf(tool.result.array, MDARec(tool.result.array, 0, 0), "KeyLink"),
                 QString("1"));
    }

    void aFieldThatIsNoKeyIsComparedAsKeysAreSorted() {
        Fixture fixture;
        fixture.write("MenuResource", 1, {{"KeyLink", "1"}, {"type_", "3"}, {"name_", "Схема Ё"}});
        fixture.write("MenuResource", 1, {{"KeyLink", "2"}, {"type_", "3"}, {"name_", "Схема"}});
        fixture.write("MenuResource", 1, {{"KeyLink", "3"}, {"type_", "4"}, {"name_", "схема ё"}});
        CToolRecByKey tool(&fixture.module);
        const std::string name = orvo::mdx::toCp1251("схема ё");
        MDRVar type{};
        type.type = MDX_INTEGER;
        type.value.integer = 3;
        tool.tableName = "MenuResource";
        tool.keyNumber = 2;
        tool.keyValues = {type, textValue(name)};
        tool.keyBits.setBit(0);
        tool.keyBits.setBit(1);
        tool.Perform(false);
        QCOMPARE(tool.result.array->recordCount, 1u);
        QCOMPARE(textOf(tool.result.array, MDARec(tool.result.array, 0, 0), "KeyLink"),
                 QString("1"));
    }

    void severalKeyValuesNarrowTheSearch() {
        Fixture fixture;
        fixture.write("Menu", 1, {{"KeyLink", "1"}, {"parent", "p"}, {"order_", "1000"}});
        fixture.write("Menu", 1, {{"KeyLink", "2"}, {"parent", "p"}, {"order_", "2000"}});
        CToolRecByKey tool(&fixture.module);
        const std::string parent = "p";
        MDRVar order{};
        order.type = MDX_INTEGER;
        order.value.integer = 2000;
        tool.tableName = "Menu";
        tool.keyNumber = 1;
        tool.keyValues = {textValue(parent), order};
        tool.keyBits.setBit(0);
        tool.Perform(false);
        QCOMPARE(tool.result.array->recordCount, 2u);
        tool.keyBits.setBit(1);
        tool.Perform(false);
        QCOMPARE(tool.result.array->recordCount, 1u);
        QCOMPARE(textOf(tool.result.array, MDARec(tool.result.array, 0, 0), "KeyLink"),
                 QString("2"));
    }

    void anUnknownKeyLeavesAnEmptyResultAndAReport() {
        Fixture fixture;
        CToolRecByKey tool(&fixture.module);
        tool.tableName = "Menu";
        for (const int key : {-1, 99, std::numeric_limits<int>::max()}) {
            tool.keyNumber = key;
            tool.Perform(false);
            QCOMPARE(tool.result.array->keyCount, 0u);
        }
        tool.tableName = "Нет";
        tool.keyNumber = 0;
        tool.Perform(false);
        QCOMPARE(fixture.failures.size(), 4);
    }

    void aFailedJobEmptiesTheResultOfTheOneBefore() {
        Fixture fixture;
        fixture.write("Menu", 1, {{"KeyLink", "1"}});
        CToolRecByKey tool(&fixture.module);
        tool.tableName = "Menu";
        tool.Perform(false);
        QCOMPARE(tool.result.array->recordCount, 1u);
        tool.tableName = "Nowhere";
        tool.Perform(false);
        QVERIFY(tool.result.array);
        QCOMPARE(tool.result.array->recordCount, 0u);
    }

    void aToolWithoutASessionDoesNothing() {
        App app;
        Module module(&app);
        CToolFormGet tool(&module);
        tool.formName = "x";
        tool.Perform(false);
        QCOMPARE(tool.result.array->recordCount, 0u);
        CToolFormGet orphan(nullptr);
        orphan.Perform(false);
    }
};

QTEST_MAIN(TestTools)
#include "tst_tools.moc"
