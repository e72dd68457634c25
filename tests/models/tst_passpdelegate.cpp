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
struct Bench {
    Watched<PropModel> model{headers(6), QString("icons/")};
    PasspDelegate delegate{&model, nullptr};
    QTreeView view;
    QWidget window;

    Bench() {
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
    void onlyValueCellsOfEditorRowsHaveAnEditor();
    void anUnknownTypeHasNoEditor();
    void theDelegateHasNoParentObject();
    // Lines
    void aLineWritesTheModelAtEachKeyAndKeepsItsCursor();
    void deletingAtTheStartOfALineKeepsTheCursorThere();
    void rowsClearedUnderAnOpenEditorSayNothing();
    void aReadOnlyLineCannotBeTyped();
    // Checks
    void aClickTurnsACheckOver();
    void reachingACheckByKeyboardTurnsItOver();
    void anUnsetCheckOpensTrue();
    void aReadOnlyCheckTurnsOverAllTheSame();
    void eachOpeningTurnsOverOnce();
    void aCheckWhoseOwnerClearsTheGridOpensNoEditor();
    void aClickIntoAnOpenCheckWritesTheModel();
    void anUnsetValueIsPartiallyChecked();
    void partiallyCheckedWritesAnUnsetValue();
    // Combo boxes
    void aComboTakesTheEntriesOfTheRowsBox();
    void aComboWithAValueOpensOnTheFirstEntry();
    void aComboWithoutValueOpensOnNone();
    void choosingAnEntryWritesTheModel();
    void aComboWithoutBoxIsEmpty();
    // Button edits
    void aButtonEditShowsItsValueReadOnly();
    void theButtonReportsTheRowName();
    void returnOnAFilledFieldReportsTheRowName();
    void returnOnAnEmptyFieldReportsNothing();
    void aButtonEditNeverWritesTheModel();
    void aButtonWhoseRowIsGoneReportsNothing();
    void aButtonEditIsAPlainChild();
    // Foreign widgets
    void aWidgetOfAnotherKindIsLeftAlone();
    void categoryRowsAreNeitherReadNorWritten();
    void onlyACheckHearsOfItsFilling();
    void readOnlyConcernsLinesAlone();
    // Geometry
    void aCheckEditorStandsInTheMiddle_data();
    void aCheckEditorStandsInTheMiddle();
    void theButtonStandsAtTheRightEnd();
    void otherEditorsFillTheirCell();
    // Painting
    void aCheckCellPaintsItsIndicatorWithoutText_data();
    void aCheckCellPaintsItsIndicatorWithoutText();
    void aSelectedCheckCellPaintsTheSelection_data();
    void aSelectedCheckCellPaintsTheSelection();
    void aButtonCellPaintsTextAndButton();
    void paintedButtonsAreEnabledOnes();
    void otherCellsArePaintedByTheBaseClass();
    void anOpenEditorCoversThePaintedIndicator();
    void theSignalDataChangedIsSilent();
};

void PasspDelegateTest::onlyValueCellsOfEditorRowsHaveAnEditor() {
    Bench bench;
    for (const char* name : {"name", "copy", "icon", "kind"}) {
        for (const int column : {0, 2, 3, 4, 5})
            QVERIFY(!bench.delegate.createEditor(&bench.window, {}, bench.cell(name, column)));
    }
    for (int column = 0; column < 6; ++column) {
        QVERIFY(bench.model.flags(bench.cell("properties", column)) & Qt::ItemIsEditable);
        QVERIFY(!bench.delegate.createEditor(&bench.window, {}, bench.cell("properties", column)));
    }
    QVERIFY(!bench.delegate.createEditor(&bench.window, {}, QModelIndex()));
    QVERIFY(bench.create<QLineEdit>("name"));
}

void PasspDelegateTest::anUnknownTypeHasNoEditor() {
    Bench bench;
    QVERIFY(!bench.delegate.createEditor(&bench.window, {}, bench.cell("odd")));
}

void PasspDelegateTest::theDelegateHasNoParentObject() {
    Bench bench;
    PasspDelegate delegate(&bench.model, this);
    QVERIFY(!delegate.parent());
}

// ---------------------------------------------------------------------------------------------
// Lines

void PasspDelegateTest::aLineWritesTheModelAtEachKeyAndKeepsItsCursor() {
    Bench bench;
    QSignalSpy reported(&bench.model, &PropModel::editorRowValueChanged);
    auto* line = bench.open<QLineEdit>("name");
    QVERIFY(line);
    QCOMPARE(line->text(), QString("alpha"));
    line->deselect();
    line->setCursorPosition(2);
    QTest::keyClicks(line, "__");
    QCOMPARE(bench.model.getRowValue("name"), QVariant("al__pha"));
    QCOMPARE(line->cursorPosition(), 4);
    QCOMPARE(reported.count(), 2);
    QCOMPARE(reported.at(0).at(0).toString(), QString("name"));
    QCOMPARE(reported.at(0).at(1).value<QVariant>(), QVariant("al_pha"));
}

void PasspDelegateTest::deletingAtTheStartOfALineKeepsTheCursorThere() {
    Bench bench;
    auto* line = bench.open<QLineEdit>("name");
    line->deselect();
    line->setCursorPosition(0);
    QTest::keyClick(line, Qt::Key_Delete);
    QCOMPARE(bench.model.getRowValue("name"), QVariant("lpha"));
    QCOMPARE(line->cursorPosition(), 0);
    QTest::keyClick(line, Qt::Key_Delete);
    QCOMPARE(bench.model.getRowValue("name"), QVariant("pha"));
    QCOMPARE(line->cursorPosition(), 0);
}

// With the row the current index goes, and the view takes what the editor says: of another
// passport.
void PasspDelegateTest::rowsClearedUnderAnOpenEditorSayNothing() {
    Bench bench;
    bench.model.clearRows();
    bench.model.AddEditorRow("name", "Наименование", MyEditorLine, QModelIndex(), false);
    bench.model.setRowValue("name", "of one element");
    QSignalSpy reported(&bench.model, &PropModel::editorRowValueChanged);
    QVERIFY(bench.open<QLineEdit>("name"));
    bench.model.setRowValue("name", "of the next element");
    QVERIFY(bench.model.clearRows());
    QCOMPARE(reported.count(), 0);
    QCOMPARE(bench.model.rowCount(), 0);
    // Rows that come afterwards are edited as ever.
    bench.model.AddEditorRow("name", "Наименование", MyEditorLine, QModelIndex(), false);
    QVERIFY(bench.model.setData(bench.cell("name"), "typed"));
    QCOMPARE(reported.count(), 1);
}

void PasspDelegateTest::aReadOnlyLineCannotBeTyped() {
    Bench bench;
    auto* line = bench.open<QLineEdit>("type");
    QVERIFY(line->isReadOnly());
    QTest::keyClicks(line, "x");
    QCOMPARE(bench.model.getRowValue("type"), QVariant("папка"));
    QVERIFY(!bench.open<QLineEdit>("name")->isReadOnly());
}

// ---------------------------------------------------------------------------------------------
// Checks

void PasspDelegateTest::aClickTurnsACheckOver() {
    Bench bench;
    bench.model.setRowValue("copy", true);
    QSignalSpy reported(&bench.model, &PropModel::editorRowValueChanged);
    const QPoint middle = bench.view.visualRect(bench.cell("copy")).center();
    QTest::mouseClick(bench.view.viewport(), Qt::LeftButton, {}, middle);
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(false));
    QCOMPARE(reported.count(), 1);
    QCOMPARE(reported.at(0).at(0).toString(), QString("copy"));
    QCOMPARE(reported.at(0).at(1).value<QVariant>(), QVariant(false));
}

void PasspDelegateTest::reachingACheckByKeyboardTurnsItOver() {
    Bench bench;
    bench.model.setRowValue("copy", true);
    QTest::keyClick(bench.open<QLineEdit>("name"), Qt::Key_Tab);
    QCOMPARE(bench.view.currentIndex(), bench.cell("copy"));
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(false));
}

void PasspDelegateTest::anUnsetCheckOpensTrue() {
    Bench bench;
    auto* check = bench.open<QCheckBox>("copy");
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(true));
    QCOMPARE(check->checkState(), Qt::Checked);
}

void PasspDelegateTest::aReadOnlyCheckTurnsOverAllTheSame() {
    Bench bench;
    bench.model.setRowValue("separator", false);
    auto* check = bench.open<QCheckBox>("separator");
    QVERIFY(check->isEnabled());
    QCOMPARE(bench.model.getRowValue("separator"), QVariant(true));
}

void PasspDelegateTest::eachOpeningTurnsOverOnce() {
    Bench bench;
    bench.model.setRowValue("copy", false);
    QSignalSpy reported(&bench.model, &PropModel::editorRowValueChanged);
    bench.open<QCheckBox>("copy");
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(true));
    bench.view.setCurrentIndex(bench.cell("name", 0));
    bench.open<QCheckBox>("copy");
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(false));
    QCOMPARE(reported.count(), 2);
}

void PasspDelegateTest::aCheckWhoseOwnerClearsTheGridOpensNoEditor() {
    Bench bench;
    connect(&bench.model, &PropModel::editorRowValueChanged, &bench.model,
            [&] { bench.model.clearRows(); });
    bench.view.setCurrentIndex(bench.cell("copy"));
    QCOMPARE(bench.model.rowCount(), 0);
    QVERIFY(bench.view.findChildren<QCheckBox*>().isEmpty());
    QTest::qWait(1);
}

void PasspDelegateTest::aClickIntoAnOpenCheckWritesTheModel() {
    Bench bench;
    bench.model.setRowValue("copy", false);
    auto* check = bench.open<QCheckBox>("copy");
    check->click();
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(false));
    check->click();
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(true));
}

void PasspDelegateTest::anUnsetValueIsPartiallyChecked() {
    Bench bench;
    QCheckBox check;
    bench.delegate.setEditorData(&check, bench.cell("copy"));
    QCOMPARE(check.checkState(), Qt::PartiallyChecked);
    bench.model.setRowValue("copy", true);
    bench.delegate.setEditorData(&check, bench.cell("copy"));
    QCOMPARE(check.checkState(), Qt::Checked);
    bench.model.setRowValue("copy", false);
    bench.delegate.setEditorData(&check, bench.cell("copy"));
    QCOMPARE(check.checkState(), Qt::Unchecked);
}

void PasspDelegateTest::partiallyCheckedWritesAnUnsetValue() {
    Bench bench;
    QCheckBox check;
    check.setTristate();
    bench.model.setRowValue("copy", true);
    check.setCheckState(Qt::PartiallyChecked);
    bench.delegate.setModelData(&check, &bench.model, bench.cell("copy"));
    QVERIFY(!bench.model.getRowValue("copy").isValid());
    check.setCheckState(Qt::Checked);
    bench.delegate.setModelData(&check, &bench.model, bench.cell("copy"));
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(true));
    check.setCheckState(Qt::Unchecked);
    bench.delegate.setModelData(&check, &bench.model, bench.cell("copy"));
    QCOMPARE(bench.model.getRowValue("copy"), QVariant(false));
}

// ---------------------------------------------------------------------------------------------
// Combo boxes

void PasspDelegateTest::aComboTakesTheEntriesOfTheRowsBox() {
    Bench bench;
    QComboBox box;
    box.addItem(QIcon(":/res/menu1.png"), "one", 11);
    box.addItem("two", 22);
    bench.model.setComboBox("kind", &box);
    auto* combo = bench.create<QComboBox>("kind");
    QCOMPARE(combo->count(), 2);
    QCOMPARE(combo->itemText(0), QString("one"));
    QCOMPARE(combo->itemData(1).toInt(), 22);
    QVERIFY(combo->itemIcon(0).isNull());
    QVERIFY(!combo->isEditable());
}

void PasspDelegateTest::aComboWithAValueOpensOnTheFirstEntry() {
    Bench bench;
    QComboBox box;
    box.addItems({"one", "two"});
    bench.model.setComboBox("kind", &box);
    bench.model.setRowValue("kind", "two");
    auto* combo = bench.open<QComboBox>("kind");
    QCOMPARE(combo->currentIndex(), 0);
    QCOMPARE(bench.model.getRowValue("kind"), QVariant("two"));
}

void PasspDelegateTest::aComboWithoutValueOpensOnNone() {
    Bench bench;
    QComboBox box;
    box.addItems({"one", "two"});
    bench.model.setComboBox("kind", &box);
    QCOMPARE(bench.open<QComboBox>("kind")->currentIndex(), -1);
    QVERIFY(!bench.model.getRowValue("kind").isValid());
}

void PasspDelegateTest::choosingAnEntryWritesTheModel() {
    Bench bench;
    QComboBox box;
    box.addItems({"one", "two"});
    bench.model.setComboBox("kind", &box);
    auto* combo = bench.open<QComboBox>("kind");
    combo->setCurrentIndex(1);
    QCOMPARE(bench.model.getRowValue("kind"), QVariant("two"));
    QCOMPARE(combo->currentIndex(), 1);
}

void PasspDelegateTest::aComboWithoutBoxIsEmpty() {
    Bench bench;
    QCOMPARE(bench.create<QComboBox>("kind")->count(), 0);
}

// ---------------------------------------------------------------------------------------------
// Button edits

void PasspDelegateTest::aButtonEditShowsItsValueReadOnly() {
    Bench bench;
    bench.model.setRowValue("icon", "pump.png");
    auto* edit = bench.open<MyButtonEdit>("icon");
    QVERIFY(edit);
    QCOMPARE(edit->text(), QString("pump.png"));
    QVERIFY(edit->isReadOnly());
    QCOMPARE(edit->button()->text(), QString("..."));
    QTest::keyClicks(edit, "x");
    edit->Clear();
    QCOMPARE(edit->text(), QString("pump.png"));
}

void PasspDelegateTest::theButtonReportsTheRowName() {
    Bench bench;
    QSignalSpy pressed(&bench.delegate, &PasspDelegate::buttonPressed);
    auto* edit = bench.open<MyButtonEdit>("icon");
    QTest::mouseClick(edit->button(), Qt::LeftButton);
    QCOMPARE(pressed.count(), 1);
    QCOMPARE(pressed.at(0).at(0).toString(), QString("icon"));
}

void PasspDelegateTest::returnOnAFilledFieldReportsTheRowName() {
    Bench bench;
    bench.model.setRowValue("icon", "pump.png");
    QSignalSpy returned(&bench.delegate, &PasspDelegate::returnPressed);
    QSignalSpy pressed(&bench.delegate, &PasspDelegate::buttonPressed);
    QTest::keyClick(bench.open<MyButtonEdit>("icon"), Qt::Key_Return);
    QCOMPARE(returned.count(), 1);
    QCOMPARE(returned.at(0).at(0).toString(), QString("icon"));
    QCOMPARE(pressed.count(), 0);
}

void PasspDelegateTest::returnOnAnEmptyFieldReportsNothing() {
    Bench bench;
    QSignalSpy returned(&bench.delegate, &PasspDelegate::returnPressed);
    QTest::keyClick(bench.open<MyButtonEdit>("icon"), Qt::Key_Return);
    QCOMPARE(returned.count(), 0);
}

void PasspDelegateTest::aButtonEditNeverWritesTheModel() {
    Bench bench;
    auto* edit = bench.create<MyButtonEdit>("icon");
    edit->setText("typed");
    bench.delegate.setModelData(edit, &bench.model, bench.cell("icon"));
    QVERIFY(!bench.model.getRowValue("icon").isValid());
}

void PasspDelegateTest::aButtonWhoseRowIsGoneReportsNothing() {
    Bench bench;
    QSignalSpy pressed(&bench.delegate, &PasspDelegate::buttonPressed);
    QSignalSpy returned(&bench.delegate, &PasspDelegate::returnPressed);
    auto* edit = bench.create<MyButtonEdit>("icon");
    edit->setText("x");
    bench.model.clearRows();
    edit->button()->click();
    edit->OnReturnPressed();
    QCOMPARE(pressed.count() + returned.count(), 0);
}

void PasspDelegateTest::aButtonEditIsAPlainChild() {
    Bench bench;
    auto* edit = bench.create<MyButtonEdit>("icon");
    QVERIFY(!edit->isWindow());
    QCOMPARE(edit->parentWidget(), &bench.window);
    QCOMPARE(edit->button()->parentWidget(), edit);
}

// ---------------------------------------------------------------------------------------------
// Foreign widgets

void PasspDelegateTest::aWidgetOfAnotherKindIsLeftAlone() {
    Bench bench;
    QWidget plain;
    for (const char* name : {"name", "copy", "icon", "kind", "odd"}) {
        bench.delegate.setEditorData(&plain, bench.cell(name));
        bench.delegate.setModelData(&plain, &bench.model, bench.cell(name));
        bench.delegate.updateEditorGeometry(&plain, bench.option({1, 2, 30, 20}), bench.cell(name));
    }
    QCOMPARE(bench.model.getRowValue("name"), QVariant("alpha"));
    QVERIFY(!bench.model.getRowValue("copy").isValid());
}

void PasspDelegateTest::categoryRowsAreNeitherReadNorWritten() {
    Bench bench;
    QLineEdit line("text");
    bench.delegate.setEditorData(&line, bench.cell("properties"));
    QCOMPARE(line.text(), QString("text"));
    bench.delegate.setModelData(&line, &bench.model, bench.cell("properties"));
    QVERIFY(!bench.cell("properties").data().isValid());
    bench.delegate.setModelData(&line, &bench.model, bench.cell("name", 0));
    QCOMPARE(bench.cell("name", 0).data().toString(), QString("Наименование"));
    bench.delegate.setEditorData(&line, QModelIndex());
    bench.delegate.setModelData(&line, &bench.model, QModelIndex());
    QCOMPARE(line.text(), QString("text"));
}

void PasspDelegateTest::onlyACheckHearsOfItsFilling() {
    Bench bench;
    bench.model.setRowValue("kind", "two");
    QLineEdit line;
    QComboBox combo;
    combo.addItems({"one", "two"});
    QCheckBox check;
    QSignalSpy texts(&line, &QLineEdit::textChanged);
    QSignalSpy choices(&combo, qOverload<int>(&QComboBox::currentIndexChanged));
    QSignalSpy states(&check, &QCheckBox::stateChanged);
    bench.delegate.setEditorData(&line, bench.cell("name"));
    bench.delegate.setEditorData(&combo, bench.cell("kind"));
    QCOMPARE(combo.currentIndex(), 0); // the text moves no selection
    bench.model.setRowValue("kind", QVariant());
    bench.delegate.setEditorData(&combo, bench.cell("kind"));
    QCOMPARE(combo.currentIndex(), -1);
    bench.delegate.setEditorData(&check, bench.cell("copy"));
    QCOMPARE(line.text(), QString("alpha"));
    QCOMPARE(texts.count(), 0);
    QCOMPARE(choices.count(), 0);
    QCOMPARE(states.count(), 1);
}

void PasspDelegateTest::readOnlyConcernsLinesAlone() {
    Bench bench;
    for (const char* name : {"name", "copy", "icon", "kind"})
        bench.model.setData(bench.cell(name, 3), true);
    QVERIFY(bench.create<QLineEdit>("name")->isReadOnly());
    for (const char* name : {"copy", "icon", "kind"})
        QVERIFY(bench.create<QWidget>(name)->isEnabled());
    QVERIFY(bench.create<MyButtonEdit>("icon")->button()->isEnabled());
}

// ---------------------------------------------------------------------------------------------
// Geometry

void PasspDelegateTest::aCheckEditorStandsInTheMiddle_data() {
    QTest::addColumn<QRect>("cell");
    QTest::newRow("even") << QRect(10, 5, 100, 20);
    QTest::newRow("odd") << QRect(13, 0, 101, 23);
    QTest::newRow("narrow") << QRect(40, 7, 9, 20);
}

void PasspDelegateTest::aCheckEditorStandsInTheMiddle() {
    QFETCH(QRect, cell);
    Bench bench;
    auto* check = bench.create<QCheckBox>("copy");
    bench.delegate.updateEditorGeometry(check, bench.option(cell), bench.cell("copy"));
    const int left = cell.left() + cell.width() / 2 - checkIndicator().width() / 2;
    QCOMPARE(check->geometry(), QRect(left, cell.top(), cell.width(), cell.height()));
}

void PasspDelegateTest::theButtonStandsAtTheRightEnd() {
    Bench bench;
    auto* edit = bench.create<MyButtonEdit>("icon");
    bench.delegate.updateEditorGeometry(edit, bench.option({10, 5, 120, 24}), bench.cell("icon"));
    QCOMPARE(edit->geometry(), QRect(10, 5, 120, 24));
    const QRect button = edit->button()->geometry();
    QCOMPARE(button.left(), 120 - 24 - 1);
    QCOMPARE(button.top(), 1);
    QCOMPARE(button.width(), 23);
    QCOMPARE(button.height(), 22);
    QCOMPARE(button.right(), 120 - 3);
}

void PasspDelegateTest::otherEditorsFillTheirCell() {
    Bench bench;
    const QRect cell(10, 5, 120, 24);
    for (const char* name : {"name", "kind"}) {
        auto* editor = bench.create<QWidget>(name);
        bench.delegate.updateEditorGeometry(editor, bench.option(cell), bench.cell(name));
        QCOMPARE(editor->geometry(), cell);
    }
    QWidget plain;
    for (const QModelIndex& index :
         {bench.cell("odd"), bench.cell("copy", 0), bench.cell("properties"), QModelIndex()}) {
        plain.setGeometry(QRect());
        bench.delegate.updateEditorGeometry(&plain, bench.option(cell), index);
        QCOMPARE(plain.geometry(), cell);
    }
}

// ---------------------------------------------------------------------------------------------
// Painting

void PasspDelegateTest::aCheckCellPaintsItsIndicatorWithoutText_data() {
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("on");
    QTest::newRow("true") << QVariant(true) << true;
    QTest::newRow("false") << QVariant(false) << false;
    QTest::newRow("unset") << QVariant() << false;
}

void PasspDelegateTest::aCheckCellPaintsItsIndicatorWithoutText() {
    QFETCH(QVariant, value);
    QFETCH(bool, on);
    Bench bench;
    bench.model.setRowValue("copy", value);
    const QRect cell(7, 3, 121, 25);
    const QSize size(140, 32);
    const QImage shown = painted(size, [&](QPainter& painter) {
        bench.delegate.paint(&painter, bench.option(cell), bench.cell("copy"));
    });
    const QImage expected = painted(size, [&](QPainter& painter) {
        // A cell that has no text at all, and the indicator in its middle.
        QStandardItemModel blank(1, 1);
        QStyledItemDelegate().paint(&painter, bench.option(cell), blank.index(0, 0));
        QStyleOptionButton check;
        check.rect = QRect(QPoint(cell.left() + 121 / 2 - checkIndicator().width() / 2, cell.top()),
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

void PasspDelegateTest::aSelectedCheckCellPaintsTheSelection_data() {
    QTest::addColumn<bool>("inAView");
    QTest::newRow("in a view, with its style") << true;
    QTest::newRow("by itself, with the application's") << false;
}

void PasspDelegateTest::aSelectedCheckCellPaintsTheSelection() {
    QFETCH(bool, inAView);
    Bench bench;
    bench.model.setRowValue("copy", true);
    QStyleOptionViewItem option = bench.option({7, 3, 121, 25});
    option.state |= QStyle::State_Selected | QStyle::State_Active;
    option.showDecorationSelected = true; // the whole row, as a tree shows it
    if (!inAView)
        option.widget = nullptr;
    QStandardItemModel empty(1, 1);
    empty.setData(empty.index(0, 0), QString(""));
    const QImage cell = painted({140, 32}, [&](QPainter& painter) {
        bench.delegate.drawStyleSheet(&painter, option, bench.cell("copy"));
    });
    const QImage expected = painted({140, 32}, [&](QPainter& painter) {
        QStyledItemDelegate().paint(&painter, option, empty.index(0, 0));
    });
    QCOMPARE(cell, expected);
    option.state &= ~QStyle::State_Selected;
    const QImage unselected = painted({140, 32}, [&](QPainter& painter) {
        bench.delegate.drawStyleSheet(&painter, option, bench.cell("copy"));
    });
    QVERIFY(cell != unselected);
}

void PasspDelegateTest::aButtonCellPaintsTextAndButton() {
    Bench bench;
    bench.model.setRowValue("icon", "pump.png");
    const QRect cell(7, 3, 121, 25);
    const QSize size(140, 32);
    const QImage shown = painted(size, [&](QPainter& painter) {
        bench.delegate.paint(&painter, bench.option(cell), bench.cell("icon"));
    });
    const QImage expected = painted(size, [&](QPainter& painter) {
        QStyledItemDelegate().paint(&painter, bench.option(cell), bench.cell("icon"));
        QStyleOptionButton button;
        // As wide as the cell is high, plus one.
        button.rect = QRect(cell.right() - 25, cell.top(), 26, 25);
        button.state = QStyle::State_Enabled;
        button.text = "...";
        QApplication::style()->drawControl(QStyle::CE_PushButton, &button, &painter, nullptr);
    });
    QCOMPARE(shown, expected);
    const QImage textOnly = painted(size, [&](QPainter& painter) {
        QStyledItemDelegate().paint(&painter, bench.option(cell), bench.cell("icon"));
    });
    QVERIFY(shown != textOnly);
}

void PasspDelegateTest::paintedButtonsAreEnabledOnes() {
    Bench bench;
    bench.model.setRowValue("copy", true);
    QStyleOptionViewItem option = bench.option({7, 3, 121, 25});
    option.state &= ~QStyle::State_Enabled; // of the view, not of the button
    ButtonsAsked style;
    painted({140, 32}, [&](QPainter& painter) {
        bench.delegate.paint(&painter, option, bench.cell("copy"));
        bench.delegate.paint(&painter, option, bench.cell("separator"));
        bench.delegate.paint(&painter, option, bench.cell("icon"));
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

void PasspDelegateTest::otherCellsArePaintedByTheBaseClass() {
    Bench bench;
    bench.model.setData(bench.cell("properties"), true);
    bench.model.setData(bench.cell("properties", 2), int(MyEditorCheck));
    bench.model.setRowValue("odd", true);
    for (const QModelIndex& index :
         {bench.cell("name"), bench.cell("type"), bench.cell("kind"), bench.cell("odd"),
          bench.cell("copy", 0), bench.cell("copy", 2), bench.cell("properties"),
          bench.cell("properties", 0)}) {
        const auto paint = [&](const QStyledItemDelegate& delegate) {
            return painted({140, 32}, [&](QPainter& painter) {
                delegate.paint(&painter, bench.option({7, 3, 121, 25}), index);
            });
        };
        QCOMPARE(paint(bench.delegate), paint(QStyledItemDelegate()));
    }
}

void PasspDelegateTest::anOpenEditorCoversThePaintedIndicator() {
    Bench bench;
    auto* check = bench.open<QCheckBox>("copy");
    const QRect cell = bench.view.visualRect(bench.cell("copy"));
    const int painted = cell.left() + cell.width() / 2 - checkIndicator().width() / 2;
    QCOMPARE(check->geometry().left(), painted);
    QCOMPARE(check->geometry().top(), cell.top());
    QCOMPARE(check->geometry().bottom(), cell.bottom());
}

void PasspDelegateTest::theSignalDataChangedIsSilent() {
    Bench bench;
    QSignalSpy silent(&bench.delegate, &PasspDelegate::dataChanged);
    QTest::keyClicks(bench.open<QLineEdit>("name"), "x");
    bench.open<QCheckBox>("copy");
    QCOMPARE(silent.count(), 0);
}

QTEST_MAIN(PasspDelegateTest)
#include "tst_passpdelegate.moc"
