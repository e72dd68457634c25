// The property grid's model: rows by name, values with and without signals, colours.
#include "TreeText.h"

#include "models/PropModel.h"

#include <QBrush>
#include <QSignalSpy>
#include <QtTest>

using namespace treetext;

namespace {

constexpr int Name = 4;

struct Model : Watched<PropModel> {
    Model() : Watched(headers(6), QString("icons/")) {
        AddCategoryRow("properties", "Свойства", QModelIndex());
        const QModelIndex category = index(0, 0);
        AddEditorRow("type", "Тип", MyEditorLine, category, true);
        AddEditorRow("name", "Наименование", MyEditorLine, category, false);
        AddEditorRow("copy", "Копия", MyEditorCheck, category, false);
        AddEditorRow("kind", "Вид", MyEditorCombo, category, false);
    }
    QModelIndex cell(const QString& name, int column) const {
        return findIndexByKey(name).siblingAtColumn(column);
    }
};

} // namespace

class PropTree : public QObject {
    Q_OBJECT
private slots:
    void rowsAreAddedAtTheEndWithTheirValues() {
        Model model;
        QCOMPARE(print(model, Name, {1, 2, 3, 5}),
                 QString("Свойства #properties 1= 2= 3= 5=false\n"
                         "  Тип #type 1= 2=0 3=true 5=true\n"
                         "  Наименование #name 1= 2=0 3=false 5=true\n"
                         "  Копия #copy 1= 2=2 3=false 5=true\n"
                         "  Вид #kind 1= 2=1 3=false 5=true\n"));
        QVERIFY(!model.cell("type", 1).data().isValid());
        QVERIFY(!model.cell("properties", 2).data().isValid());
        QVERIFY(!model.cell("properties", 3).data().isValid());
        QVERIFY(model.AddEditorRow("last", "x", MyEditorButton, QModelIndex(), false));
        QCOMPARE(model.findIndexByKey("last").row(), 1);
    }

    void aRowIsAnnouncedWithItsValuesInPlace() {
        Model model;
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy reported(&model, &PropModel::editorRowValueChanged);
        QString seen;
        connect(&model, &QAbstractItemModel::rowsInserted, this,
                [&] { seen = model.cell("late", 0).data().toString(); });
        QVERIFY(model.AddEditorRow("late", "Caption", MyEditorLine, model.index(0, 0), false));
        QCOMPARE(seen, QString("Caption"));
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(reported.count(), 0);
    }

    void nothingIsAddedBelowAnotherColumn() {
        Model model;
        QVERIFY(!model.AddEditorRow("x", "x", MyEditorLine, model.index(0, 1), false));
        QVERIFY(!model.AddCategoryRow("x", "x", model.index(0, 1)));
        QVERIFY(!model.findIndexByKey("x").isValid());
    }

    void valuesAreFilledInByNameWithoutAnySignal() {
        Model model;
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy reported(&model, &PropModel::editorRowValueChanged);
        QVERIFY(model.setRowValue("name", "Насос"));
        QCOMPARE(model.getRowValue("name"), QVariant("Насос"));
        QCOMPARE(model.cell("name", 1).data(), QVariant("Насос"));
        QCOMPARE(changed.count() + reported.count(), 0);
    }

    void categoryRowsHaveNoValue() {
        Model model;
        QVERIFY(!model.setRowValue("properties", 1));
        QVERIFY(!model.getRowValue("properties").isValid());
        model.setData(model.index(0, 1), "v");
        QVERIFY(!model.getRowValue("properties").isValid());
    }

    void namesCompareWithoutRegardToCase() {
        Model model;
        QVERIFY(model.setRowValue("NAME", 7));
        QCOMPARE(model.getRowValue("name"), QVariant(7));
        QCOMPARE(model.findIndexByKey("tYpE"), model.cell("type", 0));
    }

    void theFirstOfTwoRowsOfOneNameIsMeant() {
        Model model;
        model.AddEditorRow("NAME", "second", MyEditorLine, model.index(0, 0), false);
        QVERIFY(model.setRowValue("NAME", 7));
        QCOMPARE(model.index(1, 1, model.index(0, 0)).data(), QVariant(7));
        QVERIFY(!model.index(4, 1, model.index(0, 0)).data().isValid());
    }

    void anUnknownNameHasNoValue() {
        Model model;
        QVERIFY(!model.setRowValue("nobody", 1));
        QVERIFY(!model.setRowValue(QString(), 1));
        QVERIFY(!model.getRowValue("nobody").isValid());
        QVERIFY(!model.findIndexByKey("").isValid());
    }

    void anEditIsAnnouncedAndReported() {
        Model model;
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy reported(&model, &PropModel::editorRowValueChanged);
        QVERIFY(model.setData(model.cell("name", 1), "Насос", Qt::EditRole));
        QCOMPARE(changed.count(), 1);
        QVERIFY(changed.at(0).at(2).value<QVector<int>>().isEmpty());
        QCOMPARE(reported.count(), 1);
        QCOMPARE(reported.at(0).at(0).toString(), QString("name"));
        QCOMPARE(reported.at(0).at(1).value<QVariant>(), QVariant("Насос"));
    }

    void anUnchangedValueIsAnnouncedButNotReported() {
        Model model;
        model.setRowValue("name", "Насос");
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy reported(&model, &PropModel::editorRowValueChanged);
        QVERIFY(model.setData(model.cell("name", 1), "Насос"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(reported.count(), 0);
    }

    void aChangeOfAnyColumnIsReported() {
        Model model;
        QSignalSpy reported(&model, &PropModel::editorRowValueChanged);
        QVERIFY(model.setData(model.cell("name", 0), "Другое", Qt::DisplayRole));
        QCOMPARE(reported.count(), 1);
        QCOMPARE(reported.at(0).at(0).toString(), QString("name"));
        QCOMPARE(reported.at(0).at(1).value<QVariant>(), QVariant("Другое"));
        QVERIFY(model.setData(model.cell("name", Name), "title"));
        QCOMPARE(reported.at(1).at(0).toString(), QString("title"));
        QCOMPARE(model.cell("title", 0).data(), QVariant("Другое"));
    }

    void anUnacceptedRoleIsRefused() {
        Model model;
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy reported(&model, &PropModel::editorRowValueChanged);
        QVERIFY(!model.setData(model.cell("name", 1), "x", Qt::ToolTipRole));
        QVERIFY(!model.setData(model.index(0, 17), "x"));
        QVERIFY(!model.setData(QModelIndex(), "x"));
        QCOMPARE(changed.count() + reported.count(), 0);
    }

    void theReportSurvivesARowRemovedByTheAnnouncement() {
        Model model;
        connect(&model, &QAbstractItemModel::dataChanged, this, [&] { model.clearRows(); });
        QSignalSpy reported(&model, &PropModel::editorRowValueChanged);
        QVERIFY(model.setData(model.cell("name", 1), "x"));
        QCOMPARE(reported.count(), 1);
        QCOMPARE(reported.at(0).at(0).toString(), QString("name"));
    }

    void categoryRowsAreGrayAcrossTheLine() {
        Model model;
        for (int column = 0; column < 6; ++column) {
            const QVariant brush = model.cell("properties", column).data(Qt::BackgroundRole);
            QCOMPARE(brush.value<QBrush>(), QBrush(QColor("#ebebeb"), Qt::SolidPattern));
            QVERIFY(!model.cell("name", column).data(Qt::BackgroundRole).isValid());
        }
    }

    void readOnlyValuesAreGray() {
        Model model;
        QCOMPARE(model.cell("type", 1).data(Qt::ForegroundRole).value<QColor>(), QColor("#808080"));
        QVERIFY(!model.cell("type", 0).data(Qt::ForegroundRole).isValid());
        QVERIFY(!model.cell("name", 1).data(Qt::ForegroundRole).isValid());
        QVERIFY(!model.cell("properties", 1).data(Qt::ForegroundRole).isValid());
    }

    void rolesAnswerTheirColumns() {
        Model model;
        model.setRowValue("name", "v");
        const QModelIndex cell = model.cell("name", 1);
        QCOMPARE(cell.data(Qt::DisplayRole), QVariant("v"));
        QCOMPARE(cell.data(Qt::EditRole), QVariant("v"));
        QCOMPARE(cell.data(12), QVariant("name"));
        for (const int role : {1, 3, 4, 6, 7, 10, 11, 13, 257})
            QVERIFY(!cell.data(role).isValid());
    }

    void theKeyLinkOfARowIsItsValue() {
        Model model;
        model.setRowValue("name", "v");
        QCOMPARE(model.getItemKeyLink(model.cell("name", 0)), QString("v"));
        QVERIFY(model.getItemKeyLink(QModelIndex()).isNull());
    }

    void clearingRemovesAllRowsOnce() {
        Model model;
        model.AddCategoryRow("second", "x", QModelIndex());
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QVERIFY(model.clearRows());
        QCOMPARE(removed.count(), 1);
        QCOMPARE(model.rowCount(), 0);
        QVERIFY(!model.findIndexByKey("name").isValid());
        QVERIFY(!model.clearRows());
        QCOMPARE(removed.count(), 1);
    }

    void comboBoxesBelongToComboRowsOnly() {
        Model model;
        QComboBox box;
        model.setComboBox("KIND", &box);
        model.setComboBox("name", &box);
        model.setComboBox("properties", &box);
        model.setComboBox("nobody", &box);
        QCOMPARE(model.getComboBox(model.cell("kind", 1)), &box);
        QVERIFY(!model.getComboBox(model.cell("name", 1)));
        QVERIFY(!model.getComboBox(model.cell("properties", 1)));
        QVERIFY(!model.getComboBox(QModelIndex()));
        // The type alone decides, of whatever row.
        model.setData(model.cell("properties", 2), int(MyEditorCombo));
        QVERIFY(!model.getComboBox(model.cell("properties", 1)));
        model.setComboBox("properties", &box); // no editor row
        QVERIFY(!model.getComboBox(model.cell("properties", 1)));
        // A row that was no combo row when the box came has none later.
        model.setData(model.cell("name", 2), int(MyEditorCombo));
        QVERIFY(!model.getComboBox(model.cell("name", 1)));
        // Whatever the record holds, the type decides.
        model.setData(model.cell("kind", 2), int(MyEditorLine));
        QVERIFY(!model.getComboBox(model.cell("kind", 1)));
    }

    void aComboBoxThatIsGoneIsForgotten() {
        Model model;
        {
            QComboBox box;
            model.setComboBox("kind", &box);
        }
        QVERIFY(!model.getComboBox(model.cell("kind", 1)));
    }

    void editorRowsAreTold() {
        Model model;
        QVERIFY(model.isEditorRow(model.cell("name", 3)));
        QVERIFY(!model.isEditorRow(model.cell("properties", 0)));
        QVERIFY(!model.isEditorRow(QModelIndex()));
    }
};

QTEST_MAIN(PropTree)
#include "tst_propmodel.moc"
