// The editor in the client's own loop: a burst of notifications while it is idle, and what holds
// notifications back. On a real display, where paint events and drags are those of the engineer.
#include "tests/menu/LiveProbe.h"

#include "platform/client/ModuleRegistry.h"
#include "platform/client/NotificationPump.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QLibrary>
#include <QLibraryInfo>
#include <QMenu>
#include <QMouseEvent>
#include <QTimer>

#include <ctime>
#include <functional>

using namespace orvo::test;
using orvo::client::ModuleRegistry;
using orvo::client::NotificationPump;
using orvo::menu::MenuColumn;

namespace {

constexpr int burst = 10000;
constexpr int folders = 20;
constexpr int beatMs = 10;
constexpr int frameMs = NotificationPump::frameMs;

/// Processor time of this process: what others do on the machine meanwhile does not count.
double processorMs() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// Counts the paint events of one widget.
class PaintCount : public QObject {
public:
    explicit PaintCount(QWidget* widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::Paint;
        return false;
    }
};

/// Runs the application's own loop (level 1), calls `inside` from it, and returns when that is
/// done.
void inMainLoop(const std::function<void()>& inside) {
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        inside();
        loop.quit();
    });
    loop.exec();
}

/// The editor as the client runs it. No fatal tester watches: it goes over the whole tree at every
/// row, which is what this test must not wait for; the models are watched everywhere else.
struct Client {
    using Fill = void (*)(TestStore&);

    explicit Client(Fill fill = nullptr) : host(prepared(fill)) {
        editor = new LiveProbe(&host); // the registry's
        registry.add(editor, QStringLiteral("Menu"));
        editor->resize(1146, 825);
        if (!registry.start(editor))
            qFatal("the editor did not start");
        editor->show();
        if (!QTest::qWaitForWindowExposed(editor))
            qFatal("no window");
        view("tvDesck")->expandAll();
        view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        view("tvMenu")->expandAll();
        pump =
            std::make_unique<NotificationPump>(*host.m_session, registry, store.connect("reader"));
        pump->start();
        settle();
    }

    QTreeView* view(const char* name) const {
        return editor->findChild<QTreeView*>(QString::fromLatin1(name));
    }
    QVariant caption(const char* element) { return editor->element(element).data(); }
    void rename(const char* element, const char* caption) {
        store.update("Menu", {{"KeyLink", QString(element)}, {"caption", QString(caption)}});
    }
    /// Until nothing is under way any more.
    void settle() {
        QTRY_VERIFY_WITH_TIMEOUT(pump->isIdle(), 60000);
        QTest::qWait(100);
    }

    TestStore store;
    TestHost host;
    ModuleRegistry registry;
    LiveProbe* editor = nullptr;
    std::unique_ptr<NotificationPump> pump;

private:
    TestStore& prepared(Fill fill) {
        fillPlant(store);
        if (fill)
            fill(store);
        return store;
    }
};

/// Folders for the elements of a burst.
void manyFolders(TestStore& store) {
    for (int i = 0; i < folders; ++i)
        addElement(store, "armop", qPrintable(QString("f%1").arg(i)), "",
                   qPrintable(QString("Участок %1").arg(i)), 10000 + i);
}

QString insertElements() {
    return QString("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                   "INSERT INTO \"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", "
                   "\"order_\", \"separator\", \"oneCopy\", \"MenuResourceKey\") "
                   "SELECT 'n' || i, 'f' || (i % %2), 'armop', 'Насос ' || i, i, 0, 0, 'rtrend' "
                   "FROM n")
        .arg(burst - 1)
        .arg(folders);
}

void manyElements(TestStore& store) {
    manyFolders(store);
    store.sql(insertElements().toUtf8().constData());
}

void manyDesktops(TestStore& store) {
    addElement(store, "d0", "first", "", "Первый", 0);
    store.sql(
        qPrintable(QString("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE "
                           "i < %1) INSERT INTO \"MenuFolder\" (\"KeyLink\", \"ParentKey\", "
                           "\"caption\", \"order_\", \"isFolder\") SELECT 'd' || i, 'sklad', "
                           "'Стол ' || i, '2000', 0 FROM n")
                       .arg(burst - 1)));
}

} // namespace

class TestMenuBurst : public QObject {
    Q_OBJECT
private slots:
    /// The plug-in of the display stays loaded to the end, so that the leak checker can name what
    /// its libraries keep.
    void initTestCase() {
        QLibrary plugin(QLibraryInfo::location(QLibraryInfo::PluginsPath) + "/platforms/libq" +
                        QGuiApplication::platformName());
        plugin.setLoadHints(QLibrary::PreventUnloadHint);
        QVERIFY2(plugin.load(), qPrintable(plugin.errorString()));
    }

    void aBurstLeavesTheWindowAnswering_data() {
        QTest::addColumn<int>("fill");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QByteArray>("tree");
        QTest::newRow("elements inserted") << 0 << insertElements() << QByteArray("tvMenu");
        QTest::newRow("elements changed")
            << 1
            << QString("UPDATE \"Menu\" SET \"caption\" = 'Новый ' || \"KeyLink\" "
                       "WHERE \"KeyLink\" LIKE 'n%'")
            << QByteArray("tvMenu");
        QTest::newRow("elements deleted")
            << 1 << QString("DELETE FROM \"Menu\" WHERE \"KeyLink\" LIKE 'n%'")
            << QByteArray("tvMenu");
        QTest::newRow("desktops changed")
            << 2
            << QString("UPDATE \"MenuFolder\" SET \"caption\" = \"caption\" "
                       "WHERE \"KeyLink\" LIKE 'd%'")
            << QByteArray("tvDesck");
    }

    void aBurstLeavesTheWindowAnswering() {
        QFETCH(int, fill);
        QFETCH(QString, sql);
        QFETCH(QByteArray, tree);
        static constexpr Client::Fill fills[] = {manyFolders, manyElements, manyDesktops};
        Client client(fills[fill]);
        client.view("tvMenu")->setCurrentIndex(client.editor->element("calc"));
        client.settle();

        int told = 0;
        connect(client.pump.get(), &NotificationPump::changed, this, [&] { ++told; });
        client.store.sql(sql.toUtf8().constData());

        PaintCount paints(client.view(tree)->viewport());
        QTimer beat;
        QElapsedTimer sinceBeat;
        QElapsedTimer total;
        qint64 longest = 0;
        double longestWork = 0;
        double lastWork = processorMs();
        connect(&beat, &QTimer::timeout, this, [&] {
            longest = qMax(longest, sinceBeat.restart());
            const double now = processorMs();
            longestWork = qMax(longestWork, now - lastWork);
            lastWork = now;
        });
        inMainLoop([] {});
        QEventLoop loop; // the bare loop of the application
        QTimer end;
        connect(&end, &QTimer::timeout, this, [&] {
            if (told == burst && client.pump->isIdle())
                loop.quit();
            if (total.elapsed() > 250000)
                loop.exit(1);
        });
        total.start();
        sinceBeat.start();
        beat.start(beatMs);
        end.start(1);
        QCOMPARE(loop.exec(), 0);
        const qint64 elapsed = total.elapsed();
        qInfo("%d notifications in %lld ms; longest wait for a timer of %d ms: %lld ms, %.0f ms of "
              "work; "
              "%d paints in %lld frames",
              told, elapsed, beatMs, longest, longestWork, paints.count, elapsed / frameMs);

        // One paint may be due from before, and one after the last frame.
        QVERIFY2(paints.count <= elapsed / frameMs + 2, qPrintable(QString::number(paints.count)));
        QVERIFY(paints.count > 0);
        QVERIFY2(longestWork < 100, qPrintable(QString::number(longestWork)));
        // Everything has arrived.
        if (tree == "tvDesck")
            return;
        const QModelIndex last = client.editor->element("n9999");
        const QString state = !last.isValid() ? QString("gone") : last.data().toString();
        QCOMPARE(state, sql.startsWith("DELETE")   ? QString("gone")
                        : sql.startsWith("UPDATE") ? QString("Новый n9999")
                                                   : QString("Насос 9999"));
    }

    void nothingComesInsideASlot() {
        Client client;
        holdsBack(client, [](const std::function<void()>& look) {
            QEventLoop loop; // a slot that waits for something in a loop of its own
            QTimer::singleShot(0, &loop, [&] {
                look();
                loop.quit();
            });
            loop.exec();
        });
    }

    void nothingComesWhileAContextMenuIsOpen_data() {
        QTest::addColumn<QByteArray>("tree");
        QTest::newRow("desktops") << QByteArray("tvDesck");
        QTest::newRow("elements") << QByteArray("tvMenu");
    }

    void nothingComesWhileAContextMenuIsOpen() {
        QFETCH(QByteArray, tree);
        Client client;
        holdsBack(client, [&](const std::function<void()>& look) {
            QTimer::singleShot(0, client.editor, [&] {
                QWidget* menu = QApplication::activePopupWidget();
                QVERIFY(menu);
                look();
                menu->close();
            });
            emit client.view(tree)->customContextMenuRequested(QPoint(5, 5));
        });
    }

    void nothingComesWhileADialogIsUp() {
        Client client;
        holdsBack(client, [&](const std::function<void()>& look) {
            QDialog dialog(client.editor);
            QTimer::singleShot(0, &dialog, [&] {
                look();
                dialog.reject();
            });
            dialog.exec();
        });
    }

    void nothingComesWhileAnElementIsDragged() {
        Client client;
        QTreeView* view = client.view("tvMenu");
        QWidget* viewport = view->viewport();
        const QPoint from = view->visualRect(client.editor->element("calc")).center();
        const auto mouse = [&](QEvent::Type type, const QPoint& at, Qt::MouseButton button) {
            QMouseEvent event(type, at, viewport->mapToGlobal(at), button, Qt::LeftButton,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(viewport, &event);
        };
        holdsBack(client, [&](const std::function<void()>& look) {
            bool dragging = false;
            QTimer::singleShot(0, client.editor, [&] {
                dragging = true;
                look();
                QTest::keyClick(client.editor, Qt::Key_Escape); // gives the drag up
            });
            mouse(QEvent::MouseButtonPress, from, Qt::LeftButton);
            // Returns when the drag has ended.
            for (int step = 1; step < 4 && !dragging; ++step)
                mouse(QEvent::MouseMove, from + QPoint(0, step * QApplication::startDragDistance()),
                      Qt::NoButton);
            QVERIFY(dragging);
            mouse(QEvent::MouseButtonRelease, from, Qt::LeftButton);
        });
        QCOMPARE(client.host.writes().calls.size(), 0);
    }

private:
    /// Changes an element in the store, looks that the window keeps the old caption while
    /// `occupied` lasts, and that the new one comes after it.
    void holdsBack(Client& client,
                   const std::function<void(const std::function<void()>&)>& occupy) {
        bool looked = false;
        inMainLoop([&] {
            occupy([&] {
                looked = true;
                client.rename("shema", "Новая");
                // Long enough for everything that looks again.
                QElapsedTimer clock;
                clock.start();
                while (clock.elapsed() < 200)
                    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
                QCOMPARE(client.caption("shema"), QVariant("Схема"));
                QVERIFY(!client.pump->isIdle());
            });
        });
        QVERIFY(looked);
        QTRY_COMPARE(client.caption("shema"), QVariant("Новая"));
    }
};

QTEST_MAIN(TestMenuBurst)
#include "tst_menu_burst.moc"
