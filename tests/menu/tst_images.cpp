// The image collections, as they are after the module library has been loaded.
#include <QFile>
#include <QImage>
#include <QLibrary>
#include <QTest>

namespace {

const char* const names[] = {
    "blocked1",
    "blocked2",
    "blocked3",
    "blocked4",
    "blocked5",
    "branch_end",
    "branch_more",
    "cancel1",
    "checkin1",
    "closedfolder1",
    "copy1",
    "cut1",
    "delelem1",
    "delete1",
    "descktop1",
    "down1",
    "down2",
    "edit1",
    "exportfiles1",
    "file1",
    "folders1",
    "function1",
    "load1",
    "menu1",
    "modul1",
    "new1",
    "newelem1",
    "node_branch_close",
    "node_branch_close1",
    "node_branch_open",
    "node_branch_open1",
    "openfolder1",
    "paste1",
    "search1",
    "showscheme1",
    "unblock1",
    "up1",
    "up2",
    "vline",
};

QImage load(const QString& path) {
    return QImage(path).convertToFormat(QImage::Format_ARGB32);
}

int visiblePixels(const QImage& image) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += qAlpha(image.pixel(x, y)) > 127;
    return count;
}

} // namespace

class TestImages : public QObject {
    Q_OBJECT
private slots:
    void theCollectionsComeWithTheLibrary() {
        QVERIFY(!QFile::exists(":/res/up1.png"));
        QLibrary library(qEnvironmentVariable("ORVO_MODULE_DIR") + "/libOrvoMenu.so");
        QVERIFY2(library.load(), qPrintable(library.errorString()));
        QVERIFY(QFile::exists(":/res/up1.png"));
        QVERIFY(QFile::exists(":/color.png"));
    }

    void everyImageHasItsSizes_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : names)
            QTest::newRow(name) << QString(name);
        QCOMPARE(int(std::size(names)), 39);
    }

    void everyImageHasItsSizes() {
        QFETCH(QString, name);
        const QImage image = load(":/res/" + name + ".png");
        QCOMPARE(image.size(), QSize(16, 16));
        QVERIFY(visiblePixels(image) >= 8);
        const QImage twice = load(":/res/" + name + "@2x.png");
        QCOMPARE(twice.size(), QSize(32, 32));
        QVERIFY(visiblePixels(twice) >= 32);
    }
    void thePrintCollectionHasItsImage() { QCOMPARE(load(":/color.png").size(), QSize(48, 48)); }

    // The vertical line must leave a row where it enters the next.
    void treeLinesTileFromRowToRow() {
        const auto lineAt = [](const char* name, int y) {
            QList<int> columns;
            const QImage image = load(QString(":/res/%1.png").arg(name));
            for (int x = 0; x < 16; ++x)
                if (qAlpha(image.pixel(x, y)) > 127)
                    columns << x;
            return columns;
        };
        const QList<int> line = lineAt("vline", 0);
        QCOMPARE(line.size(), 1);
        for (const char* through :
             {"vline", "branch_more", "node_branch_close", "node_branch_open"}) {
            QCOMPARE(lineAt(through, 0), line);
            QCOMPARE(lineAt(through, 15), line);
        }
        for (const char* last : {"branch_end", "node_branch_close1", "node_branch_open1"}) {
            QCOMPARE(lineAt(last, 0), line);
            QCOMPARE(lineAt(last, 15), QList<int>());
        }
    }
};

QTEST_GUILESS_MAIN(TestImages)
#include "tst_images.moc"
