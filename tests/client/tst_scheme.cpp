// Light and dark: whom the program follows, and that everything on its windows can be read in both.
#include "apps/client/LogPane.h"
#include "apps/client/Scheme.h"
#include "frame/Contrast.h"
#include "tests/client/RunningClient.h"

#include <QAbstractButton>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>

using namespace orvo;
using namespace orvo::test;
using app::Scheme;
using app::SchemeKeeper;

namespace {

/// What stands for the settings of a desktop on the session bus of this test.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
public:
    uint wish = 0;
    bool appear() {
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "desktop");
        return bus.registerService("org.freedesktop.portal.Desktop") &&
               bus.registerObject("/org/freedesktop/portal/desktop", this,
                                  QDBusConnection::ExportAllSlots |
                                      QDBusConnection::ExportAllSignals);
    }
    void change(uint value) {
        wish = value;
        QDBusMessage signal = QDBusMessage::createSignal(
            "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
        signal << "org.freedesktop.appearance"
               << "color-scheme" << QVariant::fromValue(QDBusVariant(value));
        QDBusConnection("desktop").send(signal);
    }
public slots:
    QDBusVariant Read(const QString& group, const QString& name) {
        const bool isMeant = group == "org.freedesktop.appearance" && name == "color-scheme";
        return QDBusVariant(QVariant::fromValue(QDBusVariant(isMeant ? wish : 99U)));
    }
};

bool looksDark() {
    return isDark(qApp->palette());
}

QHash<QRgb, int> coloursIn(const QImage& picture, const QRect& part) {
    QHash<QRgb, int> colours;
    const QRect inside = part & picture.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            ++colours[picture.pixel(x, y)];
    return colours;
}

/// The most frequent colour of a part of the picture.
QColor behindIn(const QImage& picture, const QRect& part) {
    const QHash<QRgb, int> colours = coloursIn(picture, part);
    QRgb behind = 0;
    for (auto it = colours.cbegin(); it != colours.cend(); ++it)
        if (it.value() > colours.value(behind))
            behind = it.key();
    return QColor(behind);
}

/// The greatest contrast that a part of the picture has to its most frequent colour.
double contrastIn(const QImage& picture, const QRect& part) {
    const QHash<QRgb, int> colours = coloursIn(picture, part);
    const QColor behind = behindIn(picture, part);
    double best = 1;
    for (auto it = colours.cbegin(); it != colours.cend(); ++it)
        best = std::max(best, contrastOf(QColor(it.key()), behind));
    return best;
}

/// A part of a widget in the picture of its window.
QRect partOf(const QImage& picture, const QWidget& widget, const QRect& part) {
    const double scale = picture.devicePixelRatio();
    const QPoint corner = widget.mapTo(widget.window(), part.topLeft());
    return {(QPointF(corner) * scale).toPoint(), part.size() * scale};
}

/// A picture alone, whose words are for screen readers.
bool showsPictureOnly(const QAbstractButton& button) {
    const auto* tool = qobject_cast<const QToolButton*>(&button);
    return tool && tool->toolButtonStyle() == Qt::ToolButtonIconOnly && !tool->icon().isNull();
}

/// The places of a window where something is written, with what it is.
std::vector<std::pair<QRect, QString>> textsOn(QWidget& window) {
    std::vector<std::pair<QRect, QString>> all;
    const auto add = [&](const QWidget* widget, const QRect& place, const QString& text) {
        const QRect seen = place & widget->rect();
        if (!text.trimmed().isEmpty() && seen.width() > 4 && seen.height() > 4 &&
            widget->visibleRegion().contains(seen.center()))
            all.emplace_back(QRect(widget->mapTo(&window, seen.topLeft()), seen.size()),
                             widget->objectName() + ": " + text);
    };
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible() || !widget->isEnabled())
            continue;
        if (const auto* label = qobject_cast<QLabel*>(widget))
            add(label, label->rect(), label->text());
        else if (const auto* button = qobject_cast<QAbstractButton*>(widget))
            add(button, button->rect(), showsPictureOnly(*button) ? QString() : button->text());
        else if (const auto* tabs = qobject_cast<QTabBar*>(widget))
            for (int i = 0; i < tabs->count(); ++i)
                add(tabs, tabs->tabRect(i).adjusted(6, 4, -6, -4), tabs->tabText(i));
        else if (const auto* bar = qobject_cast<QMenuBar*>(widget))
            for (QAction* action : bar->actions())
                add(bar, bar->actionGeometry(action), action->text());
        else if (const auto* tree = qobject_cast<QTreeView*>(widget))
            for (QModelIndex row = tree->indexAt({0, 0}); row.isValid();
                 row = tree->indexBelow(row))
                for (int column = 0; column < tree->model()->columnCount(); ++column) {
                    const QModelIndex cell = row.siblingAtColumn(column);
                    // On light these colours are what they were asked to be.
                    if (!isDark(tree->palette()) && !cell.data(Qt::ForegroundRole).isNull())
                        continue;
                    const bool hasImage = !cell.data(Qt::DecorationRole).isNull();
                    add(tree->viewport(),
                        tree->visualRect(cell).adjusted(hasImage ? 26 : 2, 1, -2, -1),
                        cell.data().toString());
                }
    }
    return all;
}

} // namespace

class TestScheme : public QObject {
    Q_OBJECT
    Portal m_portal;

    std::unique_ptr<QTemporaryDir> m_dir;

private slots:
    void initTestCase() { QVERIFY(m_portal.appear()); }
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_dir->path());
        m_portal.wish = 0;
    }

    void aColourIsKeptOrMovedUntilItCanBeRead() {
        QCOMPARE(contrastOf(Qt::black, Qt::white), 21.0);
        QCOMPARE(readable(Qt::black, Qt::white), QColor(Qt::black));
        for (int hue = 0; hue < 360; hue += 15)
            for (const QColor& behind : {QColor(Qt::white), QColor(0xf4f6f8), QColor(0x1c2025),
                                         QColor(0x30363d), QColor(Qt::black)}) {
                const QColor found = readable(QColor::fromHsl(hue, 200, 120), behind);
                QVERIFY2(contrastOf(found, behind) >= leastContrast, qPrintable(found.name()));
            }
        QCOMPARE(ground(QColor(235, 235, 235), app::lightPalette()), QColor(235, 235, 235));
        QVERIFY(luminanceOf(ground(QColor(235, 235, 235), app::darkPalette())) < 0.1);
    }

    void theDesktopsWishIsFollowedWhileTheProgramRuns() {
        m_portal.wish = 1;
        const SchemeKeeper keeper;
        QTRY_VERIFY(looksDark());
        m_portal.change(2);
        QTRY_VERIFY(!looksDark());
        m_portal.change(1);
        QTRY_VERIFY(looksDark());
        m_portal.change(0); // no wish: as Qt found it
        QTRY_VERIFY(!looksDark());
    }

    void theUsersChoiceCountsMoreAndIsKept() {
        {
            SchemeKeeper keeper;
            QMenu menu;
            keeper.addMenu(&menu);
            menu.findChild<QAction*>("actScheme-dark")->trigger();
            QVERIFY(looksDark());
            m_portal.change(2);
            m_portal.change(1);
            QTest::qWait(200);
            m_portal.change(2);
            QTest::qWait(200);
            QVERIFY(looksDark());
        }
        qApp->setPalette(app::lightPalette());
        SchemeKeeper later;
        QVERIFY(later.scheme() == Scheme::Dark);
        QVERIFY(looksDark());
        later.choose(Scheme::Light);
        QVERIFY(!looksDark());
    }

    void whatStandsInTheSettingsIsOnlyAWish() {
        QSettings(QSettings::IniFormat, QSettings::UserScope, "Orvo", "orvo-client")
            .setValue("look/scheme", "purple");
        QVERIFY(SchemeKeeper().scheme() == Scheme::Desktop);
    }

    void everythingThatIsWrittenCanBeRead_data() {
        QTest::addColumn<bool>("dark");
        QTest::addColumn<bool>("switched");
        QTest::newRow("light") << false << false;
        QTest::newRow("dark") << true << false;
        QTest::newRow("light, while running") << false << true;
        QTest::newRow("dark, while running") << true << true;
    }
    void everythingThatIsWrittenCanBeRead() {
        QFETCH(bool, dark);
        QFETCH(bool, switched);
        SchemeKeeper keeper;
        const auto choose = [&](bool one) { keeper.choose(one ? Scheme::Dark : Scheme::Light); };
        choose(dark != switched);
        RunningClient running;
        app::MainWindow* window = running.client->window();
        window->setMinimumSize(1366, 900); // however small the screen is
        window->logPane()->add(app::LogError, "место", "Ошибка");
        window->logPane()->add(app::LogWarning, "место", "Внимание");
        window->statusLine()->setFailure("Не сохранено");
        choose(dark);
        int looked = 0;
        for (int page = 0; page < 2; ++page) {
            window->findChild<QTabWidget*>()->setCurrentIndex(page);
            QTest::qWait(50); // painted as it will stay
            const QImage picture = window->grab().toImage();
            const double scale = picture.devicePixelRatio();
            for (const auto& [place, text] : textsOn(*window)) {
                const QRect part((QPointF(place.topLeft()) * scale).toPoint(),
                                 place.size() * scale);
                const double contrast = contrastIn(picture, part);
                QVERIFY2(contrast >= leastContrast,
                         qPrintable(QString("%1: %2 (%3)").arg(text).arg(contrast).arg(page)));
                ++looked;
            }
        }
        QVERIFY2(looked > 40, qPrintable(QString::number(looked)));
    }

    void everyTreeAndListTurnsWhileTheProgramRuns() {
        SchemeKeeper keeper;
        keeper.choose(Scheme::Light);
        RunningClient running;
        app::MainWindow* window = running.client->window();
        for (const bool dark : {true, false}) {
            keeper.choose(dark ? Scheme::Dark : Scheme::Light);
            int looked = 0;
            for (int page = 0; page < 2; ++page) {
                window->findChild<QTabWidget*>()->setCurrentIndex(page);
                QTest::qWait(50); // painted as it will stay
                const QImage picture = window->grab().toImage();
                for (const QTreeView* tree : window->findChildren<QTreeView*>()) {
                    if (!tree->isVisible())
                        continue;
                    const QWidget* rows = tree->viewport();
                    const QColor behind = behindIn(picture, partOf(picture, *rows, rows->rect()));
                    QVERIFY2((luminanceOf(behind) < 0.18) == dark,
                             qPrintable(tree->objectName() + ' ' + behind.name()));
                    ++looked;
                }
            }
            QVERIFY(looked >= 5);
        }
    }

    void anEntryThatIsOffIsWrittenOnce_data() {
        QTest::addColumn<bool>("dark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }
    void anEntryThatIsOffIsWrittenOnce() {
        QFETCH(bool, dark);
        SchemeKeeper keeper;
        keeper.choose(dark ? Scheme::Dark : Scheme::Light);
        QMenu menu;
        QAction* off = menu.addAction("Вставить");
        off->setEnabled(false);
        menu.popup(QPoint(20, 20));
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
        const QImage picture = menu.grab().toImage();
        const QRect place = partOf(picture, menu, menu.actionGeometry(off));
        const QColor behind = behindIn(picture, place);
        const QRgb letters = menu.palette().color(QPalette::Disabled, QPalette::Text).rgb();
        QVERIFY(coloursIn(picture, place).contains(letters));
        constexpr double hardlySeen = 1.15;
        const double shadow =
            contrastOf(menu.palette().color(QPalette::Disabled, QPalette::Light), behind);
        QVERIFY2(shadow < hardlySeen, qPrintable(QString::number(shadow)));
    }

    void aMenuHigherThanTheScreenHasOneColumn() {
        const SchemeKeeper keeper;
        QMenu menu;
        for (int i = 0; i < 100; ++i)
            menu.addAction(QString("Строка %1").arg(i));
        menu.popup(QPoint(20, 20));
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
        QVERIFY(menu.height() <= QGuiApplication::primaryScreen()->geometry().height());
        for (QAction* action : menu.actions())
            QCOMPARE(menu.actionGeometry(action).left(),
                     menu.actionGeometry(menu.actions().first()).left());
    }

    void aCheckBoxThatIsOffIsSeen_data() {
        QTest::addColumn<bool>("dark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }
    void aCheckBoxThatIsOffIsSeen() {
        constexpr double leastOfShapes = 3; // as the guidelines have it for what is no text
        QFETCH(bool, dark);
        SchemeKeeper keeper;
        keeper.choose(dark ? Scheme::Dark : Scheme::Light);
        RunningClient running;
        QTreeView* menu = running.view("tvMenu");
        const QModelIndex top = menu->model()->index(0, 0);
        QTRY_VERIFY(menu->model()->rowCount(top) > 0);
        menu->setCurrentIndex(menu->model()->index(0, 0, top));
        QTest::qWait(50);
        QTreeView* passport = running.module("Menu")->findChild<QTreeView*>("tvProp");
        QModelIndex row = passport->model()->index(0, 0);
        while (row.isValid() && row.data().toString() != QStringLiteral("Разделитель"))
            row = passport->indexBelow(row);
        QVERIFY(row.isValid());
        running.client->window()->resize(1300, 900);
        passport->scrollTo(row.siblingAtColumn(1));
        const QImage picture = running.client->window()->grab().toImage();
        const QRect cell = passport->visualRect(row.siblingAtColumn(1)).adjusted(2, 2, -2, -2);
        QVERIFY(passport->viewport()->rect().contains(cell));
        const double contrast = contrastIn(picture, partOf(picture, *passport->viewport(), cell));
        QVERIFY2(contrast >= leastOfShapes, qPrintable(QString::number(contrast)));
    }
};

int main(int argc, char* argv[]) {
    // A session bus of the test's own, known before Qt looks for one.
    QProcess bus;
    bus.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
    if (!bus.waitForStarted() || !bus.waitForReadyRead())
        qFatal("no dbus-daemon");
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.readLine().trimmed());
    qputenv("QT_SCALE_FACTOR", "3"); // letters are thicker than their smoothed edges
    int result = 0;
    {
        QApplication application(argc, argv);
        TestScheme test;
        result = QTest::qExec(&test, argc, argv);
    }
    bus.kill();
    bus.waitForFinished();
    return result;
}
#include "tst_scheme.moc"
