// Icons of rows: whatever a record names and whatever the file holds, views stay fast and nothing
// outside of the folder of icons is opened.
#include "IconCheck.h"

#include "frame/IconCache.h"
#include "models/MenuTreeModel.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTreeView>
#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using orvo::IconCache;

namespace {

constexpr int blinkMs = 100; ///< what a user does not notice; a busy machine included

QByteArray picture(int width, int height, const char* format = "PNG") {
    QImage image(width, height, QImage::Format_Mono);
    image.fill(0);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QByteArray svg(const QByteArray& content) {
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
           "width=\"16\" height=\"16\">" +
           content + "</svg>";
}

/// An .ico whose directory tells of 16 x 16 pixels.
QByteArray ico(const QByteArray& png) {
    QByteArray bytes("\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0", 14);
    for (const quint32 number : {static_cast<quint32>(png.size()), 22U})
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>(number >> shift);
    return bytes + png;
}

/// A work directory: the folder "icons", and a picture beside it.
struct Files {
    QTemporaryDir dir;
    QString folder = dir.filePath("icons/");
    IconCache icons;

    Files() {
        QDir(dir.path()).mkdir("icons");
        put("good.png", picture(16, 16));
        put("../outside.png", picture(16, 16));
    }
    QString path(const QString& name) const { return folder + name; }
    void put(const QString& name, const QByteArray& bytes) const {
        QFile file(path(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    }
    void link(const QString& name, const QString& target) const { QFile::link(target, path(name)); }
    bool shows(const QString& name) { return !icons.file(folder, name).pixmap(16, 16).isNull(); }
};

/// A view of a menu with one element for each icon name.
struct View {
    MenuTreeModel model;
    QTreeView view;
    View(const QString& folder, const QStringList& names)
        : model(QStringList{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m"},
                folder) {
        model.insertRows(0, 1, {});
        const QModelIndex top = model.index(0, 0);
        model.insertRows(0, names.size(), top);
        for (int row = 0; row < names.size(); ++row) {
            model.setData(model.index(row, 0, top), names[row]);
            model.setData(model.index(row, 1, top), "модуль");
            model.setData(model.index(row, 4, top), names[row]);
        }
        view.setModel(&model);
        view.expandAll();
        view.resize(300, 400);
        view.show();
    }
    bool hasColor(const QColor& color) {
        const QImage image = view.viewport()->grab().toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) == color)
                    return true;
        return false;
    }
};

} // namespace

class Icons : public QObject {
    Q_OBJECT
private slots:
    void whatIsNoPictureOfTheFolderShowsNone_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes"); // null: no file of that name is made
        QTest::addColumn<QString>("target");   // of a link
        const QByteArray none;
        const QString up(QString("../").repeated(20));
        QTest::newRow("path up to a device") << up + "dev/ptmx" << none << "";
        QTest::newRow("path up to an endless device") << up + "dev/zero" << none << "";
        QTest::newRow("path up to a picture") << "../outside.png" << none << "";
        QTest::newRow("link to a device") << "a.png" << none << "/dev/ptmx";
        QTest::newRow("link to a picture outside") << "a.png" << none << "../outside.png";
        QTest::newRow("link to itself") << "a.png" << none << "a.png";
        QTest::newRow("directory") << "." << none << "";
        QTest::newRow("empty name") << "" << none << "";
        QTest::newRow("missing") << "gone.png" << none << "";
        QTest::newRow("name with a zero") << QString("good.png") + QChar(0) + "x" << none << "";
        QTest::newRow("name of a million letters") << QString(1'000'000, 'a') << none << "";
        QTest::newRow("empty file") << "a.png" << QByteArray("") << "";
        QTest::newRow("two MiB") << "a.png" << picture(16, 16) + QByteArray(2 << 20, 'x') << "";
        QTest::newRow("30000 x 30000") << "a.png" << picture(30000, 30000) << "";
        QTest::newRow("1025 x 1") << "a.png" << picture(1025, 1) << "";
        QTest::newRow("30000 x 30000 in an ico") << "a.ico" << ico(picture(30000, 30000)) << "";
        QTest::newRow("ico without its end") << "a.ico" << ico(picture(16, 16)).left(30) << "";
        QTest::newRow("picture cut short") << "a.png" << picture(16, 16).left(40) << "";
        QTest::newRow("JPEG of many scans")
            << "a.jpg" << picture(16, 16, "JPG") + QByteArray("\xff\xda").repeated(1000) << "";
        QTest::newRow("no picture") << "a.png" << QByteArray(1000, '\0') << "";
        QTest::newRow("SVG too large") << "a.svg" << svg("").replace("\"16\"", "\"100000\"") << "";
        QTest::newRow("SVG of many elements")
            << "a.svg" << svg(QByteArray("<g/>").repeated(10000)) << "";
        QTest::newRow("SVG nested deeply")
            << "a.svg" << svg(QByteArray("<g>").repeated(5000) + QByteArray("</g>").repeated(5000))
            << "";
        QTest::newRow("SVG that uses itself")
            << "a.svg" << svg("<g id=\"a\"><use xlink:href=\"#a\"/></g>") << "";
        QTest::newRow("SVG with a device as picture")
            << "a.svg" << svg("<image width=\"9\" height=\"9\" xlink:href=\"/dev/ptmx\"/>") << "";
        QTest::newRow("SVG with entities")
            << "a.svg"
            << "<!DOCTYPE svg [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;\">]>" +
                   svg("<text>&b;</text>")
            << "";
    }

    void whatIsNoPictureOfTheFolderShowsNone() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, target);
        Files files;
        if (!bytes.isNull())
            files.put(name, bytes);
        if (!target.isEmpty())
            files.link(name, target);
        QVERIFY(!files.shows(name));
        // The reader is not held up either.
        QVERIFY(files.shows("good.png"));
    }

    void picturesOfTheFolderAreShown_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("target");
        const QByteArray none;
        QTest::newRow("plain") << "good.png" << none << "";
        QTest::newRow("in a folder below") << "./good.png" << none << "";
        QTest::newRow("link within the folder") << "a.png" << none << "good.png";
        QTest::newRow("largest") << "a.png" << picture(1024, 1024) << "";
        QTest::newRow("JPEG") << "a.jpg" << picture(16, 16, "JPG") << "";
        QTest::newRow("ico") << "a.ico" << ico(picture(16, 16)) << "";
        QTest::newRow("SVG") << "a.svg" << svg("<rect width=\"16\" height=\"16\" fill=\"red\"/>")
                             << "";
        QTest::newRow("content tells the format") << "a.txt" << picture(16, 16) << "";
    }

    void picturesOfTheFolderAreShown() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, target);
        Files files;
        if (!bytes.isNull())
            files.put(name, bytes);
        if (!target.isEmpty())
            files.link(name, target);
        QVERIFY(files.shows(name));
    }

    void aPipeIsNeverOpened() {
        Files files;
        const QByteArray path = QFile::encodeName(files.path("pipe.png"));
        QCOMPARE(::mkfifo(path.constData(), 0600), 0);
        QVERIFY(!files.shows("pipe.png"));
        QVERIFY(files.shows("good.png"));
        // Somebody who reads would let a writer in.
        QCOMPARE(::open(path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC), -1);
    }

    void aHostileIconHoldsUpNoPaint() {
        Files files;
        QCOMPARE(::mkfifo(QFile::encodeName(files.path("pipe.png")).constData(), 0600), 0);
        files.put("large.png", picture(1024, 1024));
        files.put("huge.png", picture(30000, 30000));
        View shown(files.folder,
                   {QString("../").repeated(20) + "dev/ptmx", "pipe.png", "huge.png", "large.png"});
        QElapsedTimer clock;
        qint64 longest = 0;
        for (int i = 0; i < 50; ++i) {
            clock.start();
            shown.view.viewport()->repaint();
            QCoreApplication::processEvents();
            longest = std::max(longest, clock.elapsed());
            QTest::qWait(2);
        }
        qInfo("longest paint with hostile icons: %lld ms", longest);
        QVERIFY2(longest < blinkMs, qPrintable(QString::number(longest)));
    }

    void aPictureIsPaintedWhenItHasCome() {
        Files files;
        QVERIFY(makeImage(files.path("green.png"), Qt::green));
        View shown(files.folder, {"green.png"});
        QTRY_VERIFY(shown.hasColor(Qt::green));
    }

    void aChangedFileIsPaintedAgain() {
        Files files;
        QVERIFY(makeImage(files.path("a.png"), Qt::green));
        View shown(files.folder, {"a.png"});
        QTRY_VERIFY(shown.hasColor(Qt::green));
        QVERIFY(makeImage(files.path("new"), Qt::red));
        QVERIFY(QFile::remove(files.path("a.png")));
        QVERIFY(QFile::rename(files.path("new"), files.path("a.png")));
        shown.view.viewport()->update(); // what the client does when the file area has changed
        QTRY_VERIFY(shown.hasColor(Qt::red));
        QVERIFY(QFile::remove(files.path("a.png")));
        shown.view.viewport()->update();
        QTRY_VERIFY(!shown.hasColor(Qt::red));
    }

    void scrollingThroughThousandsOfIconsIsSmooth() {
        constexpr int count = 5000;
        Files files;
        QStringList names;
        for (int i = 0; i < count; ++i) {
            names << QString("%1.png").arg(i);
            files.put(names.last(), picture(32, 32));
        }
        QVERIFY(makeImage(files.path(names.last()), Qt::green));
        View shown(files.folder, names);
        QScrollBar* bar = shown.view.verticalScrollBar();
        QElapsedTimer clock;
        qint64 longest = 0, steps = 0;
        QElapsedTimer all;
        all.start();
        for (int value = 0; value < bar->maximum(); value += bar->pageStep(), ++steps) {
            clock.start();
            bar->setValue(value);
            shown.view.viewport()->repaint();
            longest = std::max(longest, clock.elapsed());
        }
        qInfo("%lld pages of icons: %lld ms, the longest %lld ms", steps, all.elapsed(), longest);
        QVERIFY2(longest < blinkMs, qPrintable(QString::number(longest)));
        // What is on the screen comes before what was scrolled away.
        bar->setValue(bar->maximum());
        clock.start();
        QTRY_VERIFY(shown.hasColor(Qt::green));
        qInfo("the last page was complete after %lld ms", clock.elapsed());
        QVERIFY(clock.elapsed() < 1000);
    }
};

QTEST_MAIN(Icons)
#include "tst_icons.moc"
