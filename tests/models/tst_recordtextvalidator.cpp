// Letters that no record can hold, in the fields of both editors.
#include "TreeText.h"

#include "frame/RecordTextValidator.h"
#include "models/DesckDelegate.h"
#include "models/DesckTreeModel.h"
#include "models/PasspDelegate.h"
#include "models/PropModel.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QToolTip>
#include <QTreeView>
#include <QtTest>

using namespace treetext;
using orvo::RecordTextValidator;

namespace {

struct PassportField {
    Watched<PropModel> model{headers(6), QString("icons/")};
    PasspDelegate delegate{&model, nullptr};
    QTreeView view;

    PassportField() {
        model.AddCategoryRow("properties", "Свойства", QModelIndex());
        model.AddEditorRow("name", "Наименование", MyEditorLine, model.index(0, 0), false);
        model.setRowValue("name", "Насос");
        view.setModel(&model);
        view.setItemDelegate(&delegate);
        view.expandAll();
        view.show();
    }
    QLineEdit* open() {
        const QModelIndex cell = model.findIndexByKey("name").siblingAtColumn(1);
        view.setCurrentIndex(cell);
        view.edit(cell);
        return qobject_cast<QLineEdit*>(view.indexWidget(cell));
    }
    QString stored() const { return model.getRowValue("name").toString(); }
};

void typeText(QWidget* field, const QString& text) {
    QTest::sendKeyEvent(QTest::Click, field, Qt::Key_unknown, text, Qt::NoModifier);
}

} // namespace

class RecordTextValidatorTest : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { QToolTip::hideText(); }

    void lettersOfTheCodePageAreMissingNothing() {
        QCOMPARE(RecordTextValidator::missingLetters("Насос №1 «Ёж» – €?"), QStringList());
        QCOMPARE(RecordTextValidator::missingLetters(QString()), QStringList());
    }

    void missingLettersAreNamedOnce() {
        QCOMPARE(RecordTextValidator::missingLetters("mañana ☢ señor"), QStringList({"ñ", "☢"}));
        QCOMPARE(RecordTextValidator::missingLetters(QString::fromUtf8("насос 😀")),
                 QStringList("😀"));
        QCOMPARE(RecordTextValidator::missingLetters(QString("a") + QChar(0x200b)),
                 QStringList("U+200B"));
    }

    void aLetterThatRecordsLackIsRefusedAndNamed() {
        PassportField field;
        QLineEdit* line = field.open();
        line->end(false);
        typeText(line, "ñ");
        QCOMPARE(line->text(), QString("Насос"));
        QCOMPARE(field.stored(), QString("Насос"));
        QCOMPARE(QToolTip::text(), QString("Не введено: знака «ñ» нет в кодировке Windows-1251."));
        typeText(line, "ы");
        QCOMPARE(field.stored(), QString("Насосы"));
        QCOMPARE(line->cursorPosition(), 6);
    }

    void aPasteIsRefusedAsAWhole() {
        PassportField field;
        QLineEdit* line = field.open();
        line->end(false);
        QGuiApplication::clipboard()->setText(" mañana ☢");
        line->paste();
        QCOMPARE(field.stored(), QString("Насос"));
        QCOMPARE(QToolTip::text(),
                 QString("Не введено: знаков «ñ», «☢» нет в кодировке Windows-1251."));
        line->undo();
        QCOMPARE(line->text(), QString("Насос"));
    }

    // A line edit of itself keeps the first 32767 letters of what it is filled with.
    void aLongValueIsEditedWhole() {
        PassportField passport;
        const QString value = QString(40'000, 'a') + "end";
        passport.model.setRowValue("name", value);
        QLineEdit* field = passport.open();
        QVERIFY(field);
        QVERIFY(field->text() == value);
        QTest::keyClick(field, Qt::Key_End);
        typeText(field, "x");
        QVERIFY(passport.stored() == value + "x");
        QTest::keyClick(field, Qt::Key_Home);
        QTest::keyClick(field, Qt::Key_Delete);
        QVERIFY(passport.stored() == value.mid(1) + "x");
    }

    void aLongNameIsEditedWhole() {
        Watched<DesckTreeModel> model(headers(6));
        fill(model, 1, "top #t 4=true\n  alpha #a 4=false\n");
        DesckDelegate delegate(&model, nullptr);
        QTreeView view;
        view.setModel(&model);
        view.setItemDelegate(&delegate);
        view.expandAll();
        view.show();
        const QModelIndex name = model.findIndexByKey("a");
        const QString value(40'000, 'a');
        QVERIFY(model.setData(name, value));
        view.edit(name);
        auto* field = view.viewport()->findChild<QLineEdit*>();
        QVERIFY(field);
        QTest::keyClick(field, Qt::Key_End);
        typeText(field, "x");
        QVERIFY(name.data(Qt::EditRole).toString() == value + "x");
    }

    void aLongPasteIsTakenWholeOrRefusedWhole() {
        PassportField passport;
        QLineEdit* field = passport.open();
        const QString page(100'000, 'b');
        QApplication::clipboard()->setText(page);
        field->selectAll();
        field->paste();
        QVERIFY(passport.stored() == page);
        QApplication::clipboard()->setText(QString(RecordTextValidator::longest + 1, 'c'));
        field->selectAll();
        field->paste();
        QVERIFY(passport.stored() == page);
        QVERIFY(QToolTip::text().contains("больше"));
    }

    void aLetterInPartsIsPutTogether() {
        PassportField field;
        QLineEdit* line = field.open();
        line->selectAll();
        QGuiApplication::clipboard()->setText(
            QString::fromUtf8("Край").normalized(QString::NormalizationForm_D));
        line->paste();
        QCOMPARE(field.stored(), QString("Край"));
        QCOMPARE(line->cursorPosition(), 4);
        QCOMPARE(QToolTip::text(), QString());
    }

    void aDesktopNameRefusesThemToo() {
        Watched<DesckTreeModel> model{headers(6)};
        DesckDelegate delegate{&model, nullptr};
        QTreeView view;
        fill(model, 1, "top #t 4=true\n  alpha #a 4=false\n");
        view.setModel(&model);
        view.setItemDelegate(&delegate);
        view.expandAll();
        view.show();
        view.edit(model.findIndexByKey("a"));
        auto* line = view.viewport()->findChild<QLineEdit*>();
        QVERIFY(line);
        typeText(line, "ñ");
        QCOMPARE(model.findIndexByKey("a").data().toString(), QString("alpha"));
        QCOMPARE(QToolTip::text(), QString("Не введено: знака «ñ» нет в кодировке Windows-1251."));
    }
};

QTEST_MAIN(RecordTextValidatorTest)
#include "tst_recordtextvalidator.moc"
