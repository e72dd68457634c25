// The list of columns and fields that an editor goes by.
#include "editor/RecordFields.h"
#include "frame/ScratchTable.h"
#include "tests/frame/Tables.h"

#include <QtTest>

using namespace orvo;
using namespace orvo::editor;

namespace {

const RecordFields& fields() {
    static const RecordFields all{
        {.column = 3, .title = "key", .name = "KeyLink", .saved = AllRows},
        {.column = 0,
         .title = "имя",
         .name = "caption",
         .saved = AllRows,
         .passport = {.row = "name", .caption = "Имя", .position = 2}},
        {.column = 1,
         .title = "word",
         .passport = {.row = "word", .caption = "Слово", .readOnly = true, .position = 1}},
        {.column = 4, .title = "order", .name = "order_", .type = FieldType::Integer},
        {.column = 5,
         .title = "flag",
         .name = "flag",
         .type = FieldType::Flag,
         .passport = {.row = "flag", .caption = "Знак", .position = 3, .on = ItemRows}},
    };
    return all;
}

} // namespace

class TestRecordFields : public QObject {
    Q_OBJECT

private slots:
    void titlesStandByColumn() {
        QCOMPARE(fields().titles(), QStringList({"имя", "word", "", "key", "order", "flag"}));
    }
    void namesAreThoseOfTheRecord() {
        QCOMPARE(fields().names(), QStringList({"KeyLink", "caption", "order_", "flag"}));
    }
    void aPassportIsInItsOwnOrderAndOfItsRows() {
        const auto rowsOn = [](Rows on) {
            QStringList rows;
            for (const RecordField* field : fields().passport(on))
                rows << field->passport.row;
            return rows;
        };
        QCOMPARE(rowsOn(ItemRows), QStringList({"word", "name", "flag"}));
        QCOMPARE(rowsOn(FolderRows), QStringList({"word", "name"}));
    }
    void onlyAnEditableRowHasAColumnToEdit() {
        QCOMPARE(fields().editedColumn("NAME"), 0);
        QCOMPARE(fields().editedColumn("word"), -1);
        QCOMPARE(fields().editedColumn("none"), -1);
    }
    void aRecordGivesTheValuesOfItsFields() {
        CMDArray table;
        tables::define(table);
        MDRData* record = tables::add(table, "k", QString(), "Печь", 7);
        table.SetValF(record, "flag", booleanVar(true));
        const QVector<QVariant> values = fields().values(record);
        QCOMPARE(values, QVector<QVariant>({"Печь", QVariant(), QVariant(), "k", 7, true}));
    }
    void aValueGoesIntoARecordByItsType() {
        CMDArray table;
        tables::define(table);
        MDRData* record = MDARecNew(table.array);
        {
            RowWriter row(table, record);
            for (const RecordField& field : fields())
                if (field.name)
                    field.write(row,
                                field.type == FieldType::Text ? QVariant("текст") : QVariant(1));
        }
        QCOMPARE(textOf(record, "caption"), QString("текст"));
        QCOMPARE(integerOf(record, "order_"), 1);
        QVERIFY(flagOf(record, "flag"));
    }
};

QTEST_APPLESS_MAIN(TestRecordFields)
#include "tst_record_fields.moc"
