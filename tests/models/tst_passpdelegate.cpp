// The cells of the property grid: editors in a real tree view, geometry, and painting.
#include "TreeText.h"

#include "models/MyButtonEdit.h"
#include "models/PasspDelegate.h"
#include "models/PropModel.h"

#include <QApplication>
#include <QCheckBox>
#include <QPainter>
#include <QProxyStyle>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStyle>
#include <QStyleFactory>
#include <QStyleOptionButton>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

using namespace treetext;

namespace {

/// A passport in a view that opens editors by any trigger, as in both windows.
struct Fixture {
    Watched<PropModel> model{headers(6), QString("icons/")};
    PasspDelegate delegate{&model, nullptr};
    QTreeView view;
    QWidget window;

    Fixture() {
        model.AddCategoryRow("properties", "Свойства", QModelIndex());
        const QModelIndex category = model.index(0, 0);
        model.AddEditorRow("type", "Тип", MyEditorLine, category, true);
        model.AddEditorRow("name", "Наименование", MyEditorLine, category, false);
        model.AddEditorRow("copy", "Одна копия", MyEditorCheck, category, false);
        model.AddEditorRow("separator", "Разделитель", MyEditorCheck, category, true);
        model.AddEditorRow("icon", "Иконка", MyEditorButton, category, false);
        model.AddEditorRow("kind", "Вид", MyEditorCombo, category, false);
        model.AddEditorRow("odd", "Странное", static_cast<MyEditorType>(7), category, false);
        model.setRowValue("name", "alpha");
        model.setRowValue("type", "папка");
        view.setModel(&model);
        view.setItemDelegate(&delegate);
        view.setEditTriggers(QAbstractItemView::AllEditTriggers);
        view.expandAll();
        view.resize(500, 300);
        view.show();
    }
    QModelIndex cell(const QString& name, int column = 1) const {
        return model.findIndexByKey(name).siblingAtColumn(column);
    }
    template <class Editor>
    Editor* open(const QString& name) {
        view.setCurrentIndex(cell(name));
        return qobject_cast<Editor*>(view.indexWidget(cell(name)));
    }
    template <class Editor>
    Editor* create(const QString& name) {
        return qobject_cast<Editor*>(delegate.createEditor(&window, {}, cell(name)));
    }
    QStyleOptionViewItem option(const QRect& rect) const {
        QStyleOptionViewItem o;
        o.initFrom(&view);
        o.widget = &view;
        o.rect = rect;
        o.state |= QStyle::State_Enabled;
        return o;
    }
};

template <class Draw>
QImage painted(const QSize& size, Draw draw) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    draw(painter);
    return image;
}

/// The application's style while it lives; keeps what is asked of it for buttons.
class ButtonsAsked {
public:
    struct Asked {
        QStyle::ControlElement element;
        QStyle::State state;
        QRect rect;
        QString text;
        const QWidget* widget;
    };
    ButtonsAsked() : m_before(QApplication::style()->objectName()) {
        QApplication::setStyle(new Style(*this, m_before)); // the application's
    }
    ~ButtonsAsked() { QApplication::setStyle(QStyleFactory::create(m_before)); }
    std::vector<Asked> asked;

private:
    class Style : public QProxyStyle {
    public:
        Style(ButtonsAsked& owner, const QString& base) : QProxyStyle(base), m_owner(owner) {}
        void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                         const QWidget* widget) const override {
            const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
            if (button && (element == CE_CheckBox || element == CE_PushButton))
                m_owner.asked.push_back(
                    {element, button->state, button->rect, button->text, widget});
            QProxyStyle::drawControl(element, option, painter, widget);
        }

    private:
        ButtonsAsked& m_owner;
    };
    const QString m_before;
};

QRect checkIndicator() {
    const QStyleOptionButton plain;
    return QApplication::style()->subElementRect(QStyle::SE_CheckBoxIndicator, &plain, nullptr);
}

} // namespace

class PasspDelegateTest : public QObject {
    Q_OBJECT
private slots:
    // Which cells have an editor
    void onlyValueCellsOfEditorRowsHaveAnEditor() {
        Fixture fixture;
        for (const char* name : {"name", "copy", "icon", "kind"}) {
            for (const int column : {0, 2, 3, 4, 5})
                QVERIFY(!fixture.delegate.createEditor(&fixture.window, {},
                                                       fixture.cell(name, column)));
        }
        for (int column = 0; column < 6; ++column) {
            QVERIFY(fixture.model.flags(fixture.cell("properties", column)) & Qt::ItemIsEditable);
            QVERIFY(!fixture.delegate.createEditor(&fixture.window, {},
                                                   fixture.cell("properties", column)));
        }
        QVERIFY(!fixture.delegate.createEditor(&fixture.window, {}, QModelIndex()));
        QVERIFY(fixture.create<QLineEdit>("name"));
    }

    void anUnknownTypeHasNoEditor() {
        Fixture fixture;
        QVERIFY(!fixture.delegate.createEditor(&fixture.window, {}, fixture.cell("odd")));
    }

    void theDelegateHasNoParentObject() {
        Fixture fixture;
        PasspDelegate delegate(&fixture.model, this);
        QVERIFY(!delegate.parent());
    }

    // Lines
    // ---------------------------------------------------------------------------------------------
    // Lines

    void aLineWritesTheModelAtEachKeyAndKeepsItsCursor() {
        Fixture fixture;
        QSignalSpy reported(&fixture.model, &PropModel::editorRowValueChanged);
        auto* line = fixture.open<QLineEdit>("name");
        QVERIFY(line);
        QCOMPARE(line->text(), QString("alpha"));
        line->deselect();
        line->setCursorPosition(2);
        QTest::keyClicks(line, "__");
        QCOMPARE(fixture.model.getRowValue("name"), QVariant("al__pha"));
        QCOMPARE(line->cursorPosition(), 4);
        QCOMPARE(reported.count(), 2);
        QCOMPARE(reported.at(0).at(0).toString(), QString("name"));
        QCOMPARE(reported.at(0).at(1).value<QVariant>(), QVariant("al_pha"));
    }

    void deletingAtTheStartOfALineKeepsTheCursorThere() {
        Fixture fixture;
        auto* line = fixture.open<QLineEdit>("name");
        line->deselect();
        line->setCursorPosition(0);
        QTest::keyClick(line, Qt::Key_Delete);
        QCOMPARE(fixture.model.getRowValue("name"), QVariant("lpha"));
        QCOMPARE(line->cursorPosition(), 0);
        QTest::keyClick(line, Qt::Key_Delete);
        QCOMPARE(fixture.model.getRowValue("name"), QVariant("pha"));
        QCOMPARE(line->cursorPosition(), 0);
    }

    // The owner may show another passport already.
    void rowsClearedUnderAnOpenEditorTakeNothingItSays() {
        Fixture fixture;
        QSignalSpy reported(&fixture.model, &PropModel::editorRowValueChanged);
        auto* line = fixture.open<QLineEdit>("name");
        QVERIFY(line);
        bool taken = true;
        QObject::connect(&fixture.model, &QAbstractItemModel::rowsAboutToBeRemoved, line, [&] {
            line->setText("of one element"); // the delegate commits each letter
            taken = fixture.model.setData(fixture.cell("name"), "of one element");
        });
        QVERIFY(fixture.model.clearRows());
        QVERIFY(!taken);
        QCOMPARE(reported.count(), 0);
        QCOMPARE(fixture.model.rowCount(), 0);
        // Rows that come afterwards are edited as ever.
        fixture.model.AddEditorRow("name", "Наименование", MyEditorLine, QModelIndex(), false);
        QVERIFY(fixture.model.setData(fixture.cell("name"), "typed"));
        QCOMPARE(reported.count(), 1);
    }

    void aReadOnlyLineCannotBeTyped() {
        Fixture fixture;
        auto* line = fixture.open<QLineEdit>("type");
        QVERIFY(line->isReadOnly());
        QTest::keyClicks(line, "x");
        QCOMPARE(fixture.model.getRowValue("type"), QVariant("папка"));
        QVERIFY(!fixture.open<QLineEdit>("name")->isReadOnly());
    }

    // Checks
    // ---------------------------------------------------------------------------------------------
    // Checks

    void aClickTurnsACheckOver() {
        Fixture fixture;
        fixture.model.setRowValue("copy", true);
        QSignalSpy reported(&fixture.model, &PropModel::editorRowValueChanged);
        const QPoint middle = fixture.view.visualRect(fixture.cell("copy")).center();
        QTest::mouseClick(fixture.view.viewport(), Qt::LeftButton, {}, middle);
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(false));
        QCOMPARE(reported.count(), 1);
        QCOMPARE(reported.at(0).at(0).toString(), QString("copy"));
        QCOMPARE(reported.at(0).at(1).value<QVariant>(), QVariant(false));
    }

    void reachingACheckByKeyboardTurnsItOver() {
        Fixture fixture;
        fixture.model.setRowValue("copy", true);
        QTest::keyClick(fixture.open<QLineEdit>("name"), Qt::Key_Tab);
        QCOMPARE(fixture.view.currentIndex(), fixture.cell("copy"));
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(false));
    }

    void anUnsetCheckOpensTrue() {
        Fixture fixture;
        auto* check = fixture.open<QCheckBox>("copy");
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(true));
        QCOMPARE(check->checkState(), Qt::Checked);
    }

    void aReadOnlyCheckTurnsOverAllTheSame() {
        Fixture fixture;
        fixture.model.setRowValue("separator", false);
        auto* check = fixture.open<QCheckBox>("separator");
        QVERIFY(check->isEnabled());
        QCOMPARE(fixture.model.getRowValue("separator"), QVariant(true));
    }

    void eachOpeningTurnsOverOnce() {
        Fixture fixture;
        fixture.model.setRowValue("copy", false);
        QSignalSpy reported(&fixture.model, &PropModel::editorRowValueChanged);
        fixture.open<QCheckBox>("copy");
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(true));
        fixture.view.setCurrentIndex(fixture.cell("name", 0));
        fixture.open<QCheckBox>("copy");
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(false));
        QCOMPARE(reported.count(), 2);
    }

    void aCheckWhoseOwnerClearsTheGridOpensNoEditor() {
        Fixture fixture;
        connect(&fixture.model, &PropModel::editorRowValueChanged, &fixture.model,
                [&] { fixture.model.clearRows(); });
        fixture.view.setCurrentIndex(fixture.cell("copy"));
        QCOMPARE(fixture.model.rowCount(), 0);
        QVERIFY(fixture.view.findChildren<QCheckBox*>().isEmpty());
        QCoreApplication::processEvents();
    }

    void aClickIntoAnOpenCheckWritesTheModel() {
        Fixture fixture;
        fixture.model.setRowValue("copy", false);
        auto* check = fixture.open<QCheckBox>("copy");
        check->click();
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(false));
        check->click();
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(true));
    }

    void anUnsetValueIsPartiallyChecked() {
        Fixture fixture;
        QCheckBox check;
        fixture.delegate.setEditorData(&check, fixture.cell("copy"));
        QCOMPARE(check.checkState(), Qt::PartiallyChecked);
        fixture.model.setRowValue("copy", true);
        fixture.delegate.setEditorData(&check, fixture.cell("copy"));
        QCOMPARE(check.checkState(), Qt::Checked);
        fixture.model.setRowValue("copy", false);
        fixture.delegate.setEditorData(&check, fixture.cell("copy"));
        QCOMPARE(check.checkState(), Qt::Unchecked);
    }

    void partiallyCheckedWritesAnUnsetValue() {
        Fixture fixture;
        QCheckBox check;
        check.setTristate();
        fixture.model.setRowValue("copy", true);
        check.setCheckState(Qt::PartiallyChecked);
        fixture.delegate.setModelData(&check, &fixture.model, fixture.cell("copy"));
        QVERIFY(!fixture.model.getRowValue("copy").isValid());
        check.setCheckState(Qt::Checked);
        fixture.delegate.setModelData(&check, &fixture.model, fixture.cell("copy"));
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(true));
        check.setCheckState(Qt::Unchecked);
        fixture.delegate.setModelData(&check, &fixture.model, fixture.cell("copy"));
        QCOMPARE(fixture.model.getRowValue("copy"), QVariant(false));
    }

    // Combo boxes
    // ---------------------------------------------------------------------------------------------
    // Combo boxes

    void aComboTakesTheEntriesOfTheRowsBox() {
        Fixture fixture;
        QComboBox box;
        box.addItem(QIcon(":/res/menu1.png"), "one", 11);
        box.addItem("two", 22);
        fixture.model.setComboBox("kind", &box);
        auto* combo = fixture.create<QComboBox>("kind");
        QCOMPARE(combo->count(), 2);
        QCOMPARE(combo->itemText(0), QString("one"));
        QCOMPARE(combo->itemData(1).toInt(), 22);
        QVERIFY(combo->itemIcon(0).isNull());
        QVERIFY(!combo->isEditable());
    }

    void aComboWithAValueOpensOnTheFirstEntry() {
        Fixture fixture;
        QComboBox box;
        box.addItems({"one", "two"});
        fixture.model.setComboBox("kind", &box);
        fixture.model.setRowValue("kind", "two");
        auto* combo = fixture.open<QComboBox>("kind");
        QCOMPARE(combo->currentIndex(), 0);
        QCOMPARE(fixture.model.getRowValue("kind"), QVariant("two"));
    }

    void aComboWithoutValueOpensOnNone() {
        Fixture fixture;
        QComboBox box;
        box.addItems({"one", "two"});
        fixture.model.setComboBox("kind", &box);
        QCOMPARE(fixture.open<QComboBox>("kind")->currentIndex(), -1);
        QVERIFY(!fixture.model.getRowValue("kind").isValid());
    }

    void choosingAnEntryWritesTheModel() {
        Fixture fixture;
        QComboBox box;
        box.addItems({"one", "two"});
        fixture.model.setComboBox("kind", &box);
        auto* combo = fixture.open<QComboBox>("kind");
        combo->setCurrentIndex(1);
        QCOMPARE(fixture.model.getRowValue("kind"), QVariant("two"));
        QCOMPARE(combo->currentIndex(), 1);
    }

    void aComboWithoutBoxIsEmpty() {
        Fixture fixture;
        QCOMPARE(fixture.create<QComboBox>("kind")->count(), 0);
    }

    // Button edits
    // ---------------------------------------------------------------------------------------------
    // Button edits

    void aButtonEditShowsItsValueReadOnly() {
        Fixture fixture;
        fixture.model.setRowValue("icon", "pump.png");
        auto* edit = fixture.open<MyButtonEdit>("icon");
        QVERIFY(edit);
        QCOMPARE(edit->text(), QString("pump.png"));
        QVERIFY(edit->isReadOnly());
        QCOMPARE(edit->button()->text(), QString("..."));
        QTest::keyClicks(edit, "x");
        edit->Clear();
        QCOMPARE(edit->text(), QString("pump.png"));
    }

    void theButtonReportsTheRowName() {
        Fixture fixture;
        QSignalSpy pressed(&fixture.delegate, &PasspDelegate::buttonPressed);
        auto* edit = fixture.open<MyButtonEdit>("icon");
        QTest::mouseClick(edit->button(), Qt::LeftButton);
        QCOMPARE(pressed.count(), 1);
        QCOMPARE(pressed.at(0).at(0).toString(), QString("icon"));
    }

    void returnOnAFilledFieldReportsTheRowName() {
        Fixture fixture;
        fixture.model.setRowValue("icon", "pump.png");
        QSignalSpy returned(&fixture.delegate, &PasspDelegate::returnPressed);
        QSignalSpy pressed(&fixture.delegate, &PasspDelegate::buttonPressed);
        QTest::keyClick(fixture.open<MyButtonEdit>("icon"), Qt::Key_Return);
        QCOMPARE(returned.count(), 1);
        QCOMPARE(returned.at(0).at(0).toString(), QString("icon"));
        QCOMPARE(pressed.count(), 0);
    }

    void returnOnAnEmptyFieldReportsNothing() {
        Fixture fixture;
        QSignalSpy returned(&fixture.delegate, &PasspDelegate::returnPressed);
        QTest::keyClick(fixture.open<MyButtonEdit>("icon"), Qt::Key_Return);
        QCOMPARE(returned.count(), 0);
    }

    void aButtonEditNeverWritesTheModel() {
        Fixture fixture;
        auto* edit = fixture.create<MyButtonEdit>("icon");
        edit->setText("typed");
        fixture.delegate.setModelData(edit, &fixture.model, fixture.cell("icon"));
        QVERIFY(!fixture.model.getRowValue("icon").isValid());
    }

    void aButtonWhoseRowIsGoneReportsNothing() {
        Fixture fixture;
        QSignalSpy pressed(&fixture.delegate, &PasspDelegate::buttonPressed);
        QSignalSpy returned(&fixture.delegate, &PasspDelegate::returnPressed);
        auto* edit = fixture.create<MyButtonEdit>("icon");
        edit->setText("x");
        fixture.model.clearRows();
        edit->button()->click();
        edit->OnReturnPressed();
        QCOMPARE(pressed.count() + returned.count(), 0);
    }

    void aButtonEditIsAPlainChild() {
        Fixture fixture;
        auto* edit = fixture.create<MyButtonEdit>("icon");
        QVERIFY(!edit->isWindow());
        QCOMPARE(edit->parentWidget(), &fixture.window);
        QCOMPARE(edit->button()->parentWidget(), edit);
    }

    // Foreign widgets
    // ---------------------------------------------------------------------------------------------
    // Foreign widgets

    void aWidgetOfAnotherKindIsLeftAlone() {
        Fixture fixture;
        QWidget plain;
        for (const char* name : {"name", "copy", "icon", "kind", "odd"}) {
            fixture.delegate.setEditorData(&plain, fixture.cell(name));
            fixture.delegate.setModelData(&plain, &fixture.model, fixture.cell(name));
            fixture.delegate.updateEditorGeometry(&plain, fixture.option({1, 2, 30, 20}),
                                                  fixture.cell(name));
        }
        QCOMPARE(fixture.model.getRowValue("name"), QVariant("alpha"));
        QVERIFY(!fixture.model.getRowValue("copy").isValid());
    }

    void categoryRowsAreNeitherReadNorWritten() {
        Fixture fixture;
        QLineEdit line("text");
        fixture.delegate.setEditorData(&line, fixture.cell("properties"));
        QCOMPARE(line.text(), QString("text"));
        fixture.delegate.setModelData(&line, &fixture.model, fixture.cell("properties"));
        QVERIFY(!fixture.cell("properties").data().isValid());
        fixture.delegate.setModelData(&line, &fixture.model, fixture.cell("name", 0));
        QCOMPARE(fixture.cell("name", 0).data().toString(), QString("Наименование"));
        fixture.delegate.setEditorData(&line, QModelIndex());
        fixture.delegate.setModelData(&line, &fixture.model, QModelIndex());
        QCOMPARE(line.text(), QString("text"));
    }

    void onlyACheckHearsOfItsFilling() {
        Fixture fixture;
        fixture.model.setRowValue("kind", "two");
        QLineEdit line;
        QComboBox combo;
        combo.addItems({"one", "two"});
        QCheckBox check;
        QSignalSpy texts(&line, &QLineEdit::textChanged);
        QSignalSpy choices(&combo, qOverload<int>(&QComboBox::currentIndexChanged));
        QSignalSpy states(&check, &QCheckBox::stateChanged);
        fixture.delegate.setEditorData(&line, fixture.cell("name"));
        fixture.delegate.setEditorData(&combo, fixture.cell("kind"));
        QCOMPARE(combo.currentIndex(), 0); // the text moves no selection
        fixture.model.setRowValue("kind", QVariant());
        fixture.delegate.setEditorData(&combo, fixture.cell("kind"));
        QCOMPARE(combo.currentIndex(), -1);
        fixture.delegate.setEditorData(&check, fixture.cell("copy"));
        QCOMPARE(line.text(), QString("alpha"));
        QCOMPARE(texts.count(), 0);
        QCOMPARE(choices.count(), 0);
        QCOMPARE(states.count(), 1);
    }

    void readOnlyConcernsLinesAlone() {
        Fixture fixture;
        for (const char* name : {"name", "copy", "icon", "kind"})
            fixture.model.setData(fixture.cell(name, 3), true);
        QVERIFY(fixture.create<QLineEdit>("name")->isReadOnly());
        for (const char* name : {"copy", "icon", "kind"})
            QVERIFY(fixture.create<QWidget>(name)->isEnabled());
        QVERIFY(fixture.create<MyButtonEdit>("icon")->button()->isEnabled());
    }

    // Geometry
    // ---------------------------------------------------------------------------------------------
    // Geometry

    void aCheckEditorStandsInTheMiddle_data() {
        QTest::addColumn<QRect>("cell");
        QTest::newRow("even") << QRect(10, 5, 100, 20);
        QTest::newRow("odd") << QRect(13, 0, 101, 23);
        QTest::newRow("narrow") << QRect(40, 7, 9, 20);
    }

    void aCheckEditorStandsInTheMiddle() {
        QFETCH(QRect, cell);
        Fixture fixture;
        auto* check = fixture.create<QCheckBox>("copy");
        fixture.delegate.updateEditorGeometry(check, fixture.option(cell), fixture.cell("copy"));
        const int left = cell.left() + cell.width() / 2 - checkIndicator().width() / 2;
        QCOMPARE(check->geometry(), QRect(left, cell.top(), cell.width(), cell.height()));
    }

    void theButtonStandsAtTheRightEnd() {
        Fixture fixture;
        auto* edit = fixture.create<MyButtonEdit>("icon");
        fixture.delegate.updateEditorGeometry(edit, fixture.option({10, 5, 120, 24}),
                                              fixture.cell("icon"));
        QCOMPARE(edit->geometry(), QRect(10, 5, 120, 24));
        const QRect button = edit->button()->geometry();
        QCOMPARE(button.left(), 120 - 24 - 1);
        QCOMPARE(button.top(), 1);
        QCOMPARE(button.width(), 23);
        QCOMPARE(button.height(), 22);
        QCOMPARE(button.right(), 120 - 3);
    }

    void otherEditorsFillTheirCell() {
        Fixture fixture;
        const QRect cell(10, 5, 120, 24);
        for (const char* name : {"name", "kind"}) {
            auto* editor = fixture.create<QWidget>(name);
            fixture.delegate.updateEditorGeometry(editor, fixture.option(cell), fixture.cell(name));
            QCOMPARE(editor->geometry(), cell);
        }
        QWidget plain;
        for (const QModelIndex& index : {fixture.cell("odd"), fixture.cell("copy", 0),
                                         fixture.cell("properties"), QModelIndex()}) {
            plain.setGeometry(QRect());
            fixture.delegate.updateEditorGeometry(&plain, fixture.option(cell), index);
            QCOMPARE(plain.geometry(), cell);
        }
    }

    // Painting
    // ---------------------------------------------------------------------------------------------
    // Painting

    void theTextOfAButtonCellEndsBeforeTheButton() {
        Fixture fixture;
        fixture.model.setRowValue("icon", "Однолинейная схема 10 кВ.png");
        const QRect cell(7, 3, 121, 25);
        const auto beside = [&](const QImage& image) {
            return image.copy(0, 0, cell.right() - cell.height() - 1, 32);
        };
        QStyleOptionViewItem option = fixture.option(cell);
        option.textElideMode = Qt::ElideNone; // as in both windows
        const QImage shown = painted({140, 32}, [&](QPainter& painter) {
            fixture.delegate.paint(&painter, option, fixture.cell("icon"));
        });
        const QImage expected = painted({140, 32}, [&](QPainter& painter) {
            option.rect.setRight(cell.right() - cell.height() - 1);
            option.textElideMode = Qt::ElideRight;
            QStyledItemDelegate().paint(&painter, option, fixture.cell("icon"));
        });
        QCOMPARE(beside(shown), beside(expected));
    }

    void aCheckCellPaintsItsIndicatorWithoutText_data() {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("on");
        QTest::newRow("true") << QVariant(true) << true;
        QTest::newRow("false") << QVariant(false) << false;
        QTest::newRow("unset") << QVariant() << false;
    }

    void aCheckCellPaintsItsIndicatorWithoutText() {
        QFETCH(QVariant, value);
        QFETCH(bool, on);
        Fixture fixture;
        fixture.model.setRowValue("copy", value);
        const QRect cell(7, 3, 121, 25);
        const QSize size(140, 32);
        const QImage shown = painted(size, [&](QPainter& painter) {
            fixture.delegate.paint(&painter, fixture.option(cell), fixture.cell("copy"));
        });
        const QImage expected = painted(size, [&](QPainter& painter) {
            // A cell that has no text at all, and the indicator in its middle.
            QStandardItemModel blank(1, 1);
            QStyledItemDelegate().paint(&painter, fixture.option(cell), blank.index(0, 0));
            QStyleOptionButton check;
            check.rect =
                QRect(QPoint(cell.left() + 121 / 2 - checkIndicator().width() / 2, cell.top()),
                      cell.bottomRight());
            check.state = QStyle::State_Enabled | (on ? QStyle::State_On : QStyle::State_Off);
            QApplication::style()->drawControl(QStyle::CE_CheckBox, &check, &painter, nullptr);
        });
        QCOMPARE(shown, expected);
        // Nothing stands left and right of the indicator.
        const QImage background = painted(size, [](QPainter&) {});
        const QRect indicator = checkIndicator().translated(cell.center().x() - 10, cell.top());
        QCOMPARE(shown.copy(0, 0, indicator.left() - 10, size.height()),
                 background.copy(0, 0, indicator.left() - 10, size.height()));
        QVERIFY(shown != background);
    }

    void aSelectedCheckCellPaintsTheSelection_data() {
        QTest::addColumn<bool>("inAView");
        QTest::newRow("in a view, with its style") << true;
        QTest::newRow("by itself, with the application's") << false;
    }

    void aSelectedCheckCellPaintsTheSelection() {
        QFETCH(bool, inAView);
        Fixture fixture;
        fixture.model.setRowValue("copy", true);
        QStyleOptionViewItem option = fixture.option({7, 3, 121, 25});
        option.state |= QStyle::State_Selected | QStyle::State_Active;
        option.showDecorationSelected = true; // the whole row, as a tree shows it
        if (!inAView)
            option.widget = nullptr;
        QStandardItemModel empty(1, 1);
        empty.setData(empty.index(0, 0), QString(""));
        const QImage cell = painted({140, 32}, [&](QPainter& painter) {
            fixture.delegate.drawStyleSheet(&painter, option, fixture.cell("copy"));
        });
        const QImage expected = painted({140, 32}, [&](QPainter& painter) {
            QStyledItemDelegate().paint(&painter, option, empty.index(0, 0));
        });
        QCOMPARE(cell, expected);
        option.state &= ~QStyle::State_Selected;
        const QImage unselected = painted({140, 32}, [&](QPainter& painter) {
            fixture.delegate.drawStyleSheet(&painter, option, fixture.cell("copy"));
        });
        QVERIFY(cell != unselected);
    }

    void aButtonCellPaintsTextAndButton() {
        Fixture fixture;
        fixture.model.setRowValue("icon", "pump.png");
        const QRect cell(7, 3, 121, 25);
        const QSize size(140, 32);
        const QImage shown = painted(size, [&](QPainter& painter) {
            fixture.delegate.paint(&painter, fixture.option(cell), fixture.cell("icon"));
        });
        const QImage expected = painted(size, [&](QPainter& painter) {
            QStyledItemDelegate().paint(&painter, fixture.option(cell), fixture.cell("icon"));
            QStyleOptionButton button;
            // As wide as the cell is high, plus one.
            button.rect = QRect(cell.right() - 25, cell.top(), 26, 25);
            button.state = QStyle::State_Enabled;
            button.text = "...";
            QApplication::style()->drawControl(QStyle::CE_PushButton, &button, &painter, nullptr);
        });
        QCOMPARE(shown, expected);
        const QImage textOnly = painted(size, [&](QPainter& painter) {
            QStyledItemDelegate().paint(&painter, fixture.option(cell), fixture.cell("icon"));
        });
        QVERIFY(shown != textOnly);
    }

    void paintedButtonsAreEnabledOnes() {
        Fixture fixture;
        fixture.model.setRowValue("copy", true);
        QStyleOptionViewItem option = fixture.option({7, 3, 121, 25});
        option.state &= ~QStyle::State_Enabled; // of the view, not of the button
        ButtonsAsked style;
        painted({140, 32}, [&](QPainter& painter) {
            fixture.delegate.paint(&painter, option, fixture.cell("copy"));
            fixture.delegate.paint(&painter, option, fixture.cell("separator"));
            fixture.delegate.paint(&painter, option, fixture.cell("icon"));
        });
        QCOMPARE(style.asked.size(), size_t(3));
        const QStyle::State enabled = QStyle::State_Enabled;
        QCOMPARE(style.asked[0].element, QStyle::CE_CheckBox);
        QCOMPARE(style.asked[0].state, enabled | QStyle::State_On);
        QCOMPARE(style.asked[1].state, enabled | QStyle::State_Off);
        QCOMPARE(style.asked[2].element, QStyle::CE_PushButton);
        QCOMPARE(style.asked[2].state, enabled);
        QCOMPARE(style.asked[2].text, QString("..."));
        for (const ButtonsAsked::Asked& button : style.asked) {
            QCOMPARE(button.rect.right(), option.rect.right());
            QVERIFY(!button.widget);
        }
    }

    void otherCellsArePaintedByTheBaseClass() {
        Fixture fixture;
        fixture.model.setData(fixture.cell("properties"), true);
        fixture.model.setData(fixture.cell("properties", 2), int(MyEditorCheck));
        fixture.model.setRowValue("odd", true);
        for (const QModelIndex& index :
             {fixture.cell("name"), fixture.cell("type"), fixture.cell("kind"), fixture.cell("odd"),
              fixture.cell("copy", 0), fixture.cell("copy", 2), fixture.cell("properties"),
              fixture.cell("properties", 0)}) {
            const auto paint = [&](const QStyledItemDelegate& delegate) {
                return painted({140, 32}, [&](QPainter& painter) {
                    delegate.paint(&painter, fixture.option({7, 3, 121, 25}), index);
                });
            };
            QCOMPARE(paint(fixture.delegate), paint(QStyledItemDelegate()));
        }
    }

    void anOpenEditorCoversThePaintedIndicator() {
        Fixture fixture;
        auto* check = fixture.open<QCheckBox>("copy");
        const QRect cell = fixture.view.visualRect(fixture.cell("copy"));
        const int painted = cell.left() + cell.width() / 2 - checkIndicator().width() / 2;
        QCOMPARE(check->geometry().left(), painted);
        QCOMPARE(check->geometry().top(), cell.top());
        QCOMPARE(check->geometry().bottom(), cell.bottom());
    }

    void theSignalDataChangedIsSilent() {
        Fixture fixture;
        QSignalSpy silent(&fixture.delegate, &PasspDelegate::dataChanged);
        QTest::keyClicks(fixture.open<QLineEdit>("name"), "x");
        fixture.open<QCheckBox>("copy");
        QCOMPARE(silent.count(), 0);
    }
};

QTEST_MAIN(PasspDelegateTest)
#include "tst_passpdelegate.moc"
