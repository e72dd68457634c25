// Texts of rows as they are painted.
#include "frame/RowDelegate.h"

#include <QElapsedTimer>
#include <QPainter>
#include <QPixmap>
#include <QStandardItemModel>
#include <QTextDocument>
#include <QtTest>

using orvo::displayLine;
using orvo::plainToolTip;
using orvo::RowDelegate;

class TestRowDelegate : public QObject {
    Q_OBJECT
private slots:
    void aTextIsOneLine_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("line");
        QTest::newRow("plain") << "Насос 1"
                               << "Насос 1";
        QTest::newRow("markup") << "<b>a</b>&amp;"
                                << "<b>a</b>&amp;";
        QTest::newRow("lines") << "a\r\nb\tc"
                               << "a  b c";
        QTest::newRow("separators") << QString("a") + QChar(0x2028) + QChar(0x2029) << "a  ";
        QTest::newRow("control characters") << QString("a\x01\x1b[31m") + QChar(0) << "a  [31m ";
        QTest::newRow("empty") << ""
                               << "";
        const QString longest(RowDelegate::longestLine, 'x');
        QTest::newRow("longest") << longest << longest;
        QTest::newRow("too long") << longest + "yz" << longest + QChar(0x2026);
    }

    void aTextIsOneLine() {
        QFETCH(QString, text);
        QFETCH(QString, line);
        QCOMPARE(displayLine(text), line);
        QCOMPARE(RowDelegate().displayText(text, QLocale()), line);
    }

    void aToolTipShowsATextAsItIs_data() {
        QTest::addColumn<QString>("text");
        for (const char* text : {"Насос 1", "A & B \"всё\"", "<b>a</b>&amp;", "a\nb", "  %1 %2  "})
            QTest::newRow(text) << QString::fromUtf8(text);
    }

    void aToolTipShowsATextAsItIs() {
        QFETCH(QString, text);
        const QString tip = plainToolTip(text);
        QVERIFY(Qt::mightBeRichText(tip)); // else its letters would be shown as they stand
        QTextDocument shown;
        shown.setHtml(tip);
        QCOMPARE(shown.toPlainText(), text);
    }

    void aToolTipOfNothingIsNone() { QCOMPARE(plainToolTip({}), QString()); }

    void aToolTipOfAMillionLettersIsShort() {
        QVERIFY(plainToolTip(QString(1'000'000, 'W')).size() < 3000);
    }

    void otherValuesAreShownAsAlways() {
        const QLocale locale(QLocale::Russian);
        QCOMPARE(RowDelegate().displayText(1.5, locale),
                 QStyledItemDelegate().displayText(1.5, locale));
    }

    void whatDoesNotFitEndsInAnEllipsis() {
        QStandardItemModel model(1, 1);
        model.setItem(0, 0, new QStandardItem("Нормальный останов агрегата"));
        const auto painted = [&](const QStyledItemDelegate& delegate, Qt::TextElideMode mode) {
            QImage image(100, 20, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::white);
            QPainter painter(&image);
            QStyleOptionViewItem option;
            option.rect = image.rect();
            option.textElideMode = mode;
            delegate.paint(&painter, option, model.index(0, 0));
            return image;
        };
        const QStyledItemDelegate plain;
        QVERIFY(painted(plain, Qt::ElideNone) != painted(plain, Qt::ElideRight));
        QCOMPARE(painted(RowDelegate(), Qt::ElideNone), painted(plain, Qt::ElideRight));
        QCOMPARE(painted(RowDelegate(), Qt::ElideMiddle), painted(plain, Qt::ElideMiddle));
    }

    void aMillionLettersArePaintedAtOnce() {
        QStandardItemModel model(1, 1);
        model.setItem(0, 0, new QStandardItem(QString(1'000'000, 'W')));
        QPixmap pixels(300, 20);
        QPainter painter(&pixels);
        QStyleOptionViewItem option;
        option.rect = pixels.rect();
        const RowDelegate delegate;
        delegate.paint(&painter, option, model.index(0, 0)); // fonts are loaded
        QElapsedTimer clock;
        clock.start();
        delegate.paint(&painter, option, model.index(0, 0));
        delegate.sizeHint(option, model.index(0, 0));
        QVERIFY2(clock.elapsed() < 50, qPrintable(QString::number(clock.elapsed())));
    }
};

QTEST_MAIN(TestRowDelegate)
#include "tst_rowdelegate.moc"
