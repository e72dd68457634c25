// What was typed into a record's row, and changes of that record that arrive before it is saved.
#include "editor/RecordFields.h"
#include "editor/TypedValues.h"
#include "frame/Notification.h"
#include "tests/frame/Tables.h"

#include <QStandardItemModel>
#include <QtTest>

using namespace orvo;
using namespace orvo::editor;

namespace {

enum Column { Caption, Order, Flag };

/// A record "k" with the caption "Печь", the order 1 and no flag, and what was typed into its row.
struct Fixture {
    const RecordFields fields{
        {.column = Caption, .title = "caption", .name = "caption"},
        {.column = Order, .title = "order", .name = "order_", .type = FieldType::Integer},
        {.column = Flag, .title = "flag", .name = "flag", .type = FieldType::Flag},
    };
    CMDArray table;
    TypedValues typed;

    Fixture() {
        tables::define(table);
        setKeys(table);
        tables::add(table, "k", QString(), "Печь", 1);
    }
    /// A change that brings these fields comes in.
    void change(const QString& caption, int order = -1) {
        CMDArray source;
        tables::define(source);
        MDRData* changed = MDARecNew(source.array);
        const QByteArray bytes = toRecord(caption);
        if (!caption.isNull())
            source.SetValF(changed, "caption", textVar(bytes));
        if (order >= 0)
            source.SetValF(changed, "order_", integerVar(order));
        void* raw = nullptr;
        const uint32_t length = mdx::rawRecord(changed, &raw);
        std::vector<MdxType> types(10, MDX_INTEGER);
        types[4] = types[5] = MDX_TEXT;
        types[7] = MDX_BLOCK;
        const tables::ParamPtr block = tables::makeParam(types);
        mdx::paramSetInt(block.get(), 1, OrvoEventUpdate);
        mdx::paramSetText(block.get(), 4, "k");
        mdx::paramSetText(block.get(), 5, "NCI:Menu,1");
        mdx::paramSetBlock(block.get(), 7, raw, length);
        MDMemFree(raw);
        const Notification notification(block.get());
        typed.merge(notification, editAndMerge(notification.event(), &table), fields);
    }
};

} // namespace

class TestTypedValues : public QObject {
    Q_OBJECT

private slots:
    void aChangeOfAnotherFieldKeepsWhatWasTyped() {
        Fixture f;
        f.typed.type(Caption, "Печь 2", "Печь");
        f.change(QString(), 5);
        QCOMPARE(f.typed.value(Caption), QVariant("Печь 2"));
    }
    void aChangeOfTheTypedFieldTakesItsPlace() {
        Fixture f;
        f.typed.type(Caption, "Печь 2", "Печь");
        f.typed.type(Order, 3, 1);
        f.change("Котёл");
        QVERIFY(!f.typed.contains(Caption));
        QCOMPARE(f.typed.value(Order), QVariant(3));
    }
    void theEchoOfAnOwnSaveKeepsWhatWasTypedAfterIt() {
        Fixture f;
        f.typed.type(Caption, "Печь 2", "Печь");
        f.typed.clear(); // saved
        f.typed.type(Caption, "Печь 23", "Печь 2");
        f.change("Печь 2");
        QCOMPARE(f.typed.value(Caption), QVariant("Печь 23"));
    }
    void theBaseIsWhatTheRowShowedBeforeTheFirstKey() {
        Fixture f;
        f.typed.type(Caption, "П", "Печь");
        f.typed.type(Caption, "Пу", "П");
        f.change("Печь");
        QCOMPARE(f.typed.value(Caption), QVariant("Пу"));
        f.change("П");
        QVERIFY(f.typed.isEmpty());
    }
    void aRowWrittenAgainShowsWhatWasTypedAgain() {
        Fixture f;
        QStandardItemModel model(1, 3);
        f.typed.type(Flag, true, false);
        f.typed.show(model, model.index(0, 1));
        QCOMPARE(model.index(0, Flag).data(), QVariant(true));
        QVERIFY(!model.index(0, Caption).data().isValid());
    }
};

QTEST_APPLESS_MAIN(TestTypedValues)
#include "tst_typed_values.moc"
