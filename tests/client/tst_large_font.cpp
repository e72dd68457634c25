// The window with letters of 20 points, as somebody sets them who sees little: it fits a small
// screen all the same, and its columns have room for what they are for.
#include "tests/client/RunningClient.h"

#include <QDockWidget>
#include <QFont>
#include <QLayout>

using namespace orvo;
using namespace orvo::test;

namespace {

constexpr QSize smallScreen(1024, 700);

/// What needs more width than that, from the outside in.
QString wideParts(const QWidget& of, int width) {
    QString parts;
    for (const QWidget* part : of.findChildren<QWidget*>())
        if (!part->isHidden() && part->minimumSizeHint().width() > width)
            parts += QString("\n%1 %2: %3")
                         .arg(part->metaObject()->className(), part->objectName())
                         .arg(part->minimumSizeHint().width());
    return parts;
}

} // namespace

class TestLargeFont : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QFont large = QApplication::font();
        large.setPointSize(20);
        QApplication::setFont(large);
    }

    void timesAreShownWhole() {
        const RunningClient running;
        for (const char* name : {"logPane", "historyTree"}) {
            const QTreeView* tree = running.view(name);
            QVERIFY2(tree, name);
            QVERIFY2(tree->columnWidth(0) > tree->fontMetrics().horizontalAdvance("00:00:00"),
                     name);
        }
    }

    void theWindowFitsASmallScreen() {
        RunningClient running;
        QWidget& window = *running.client->window();
        for (QDockWidget* dock : window.findChildren<QDockWidget*>()) {
            dock->show();
            dock->raise();
        }
        QTRY_VERIFY(running.client->settled());
        const QSize least = window.layout()->totalMinimumSize();
        QVERIFY2(least.width() <= smallScreen.width() && least.height() <= smallScreen.height(),
                 qPrintable(QString("%1x%2%3")
                                .arg(least.width())
                                .arg(least.height())
                                .arg(wideParts(window, 700))));
    }
};

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    TestLargeFont test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_large_font.moc"
