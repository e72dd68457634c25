// The client on a store in which every text looks like markup, or never ends: all of it is shown
// letter by letter, in one line, and nothing waits for its layout.
#include "apps/client/Client.h"
#include "apps/client/LogPane.h"
#include "apps/client/MainWindow.h"
#include "apps/client/StatusLine.h"
#include "apps/client/history/HistoryModel.h"
#include "apps/client/history/VersionsDialog.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/client/HostFixture.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QDialog>
#include <QDockWidget>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTabBar>
#include <QTextDocument>
#include <QTreeWidget>
#include <QtTest>

#include <algorithm>
#include <ctime>
#include <functional>

using namespace orvo;
using namespace orvo::test;

namespace {

const QString mark = QStringLiteral("жирный");

QString hostileText() {
    return QStringLiteral("<img src=x><b>жирный</b>&amp;&Л\t\x01\x1b[31m\r\n");
}

/// Desktops, elements, resources and users, each text of them `text`, and a number where rows of
/// one name may not stand side by side.
void fill(Host& host, const QString& text) {
    const std::string bytes = text.toStdString();
    for (const char* type : {"1", "2", "3"}) {
        const std::string folder = std::string("folder") + type;
        host.write("MenuResourceFolder", 1,
                   {{"KeyLink", folder}, {"type_", type}, {"caption", bytes + type}});
        host.write("MenuResource", 1,
                   {{"KeyLink", std::string("res") + type},
                    {"type_", type},
                    {"MenuResourceFolderKey", folder},
                    {"name_", bytes + type},
                    {"caption", bytes},
                    {"params", bytes},
                    {"ico", bytes}});
    }
    host.write("MenuFolder", 1, {{"KeyLink", "desk"}, {"caption", bytes}, {"order_", "2000"}});
    for (const char* key : {"a", "b"})
        host.write("Menu", 1,
                   {{"KeyLink", key},
                    {"FolderKey", "desk"},
                    {"MenuResourceKey", "res1"},
                    {"caption", bytes},
                    {"params", bytes},
                    {"ico", bytes},
                    {"order_", "1000"}});
}

/// The client in this process, with both editors open.
struct Running {
    Host host;
    std::unique_ptr<app::Client> client;

    explicit Running(const QString& text) {
        fill(host, text);
        app::Options options;
        options.store = QString::fromStdString(host.url);
        options.login = "<b>engineer</b>";
        options.workDir = host.dir.path() + "/workdir/";
        options.modules = QStringList{"Menu", "Resources"};
        client = std::make_unique<app::Client>(options);
        QString error;
        if (!client->open(&error))
            qFatal("%s", qPrintable(error));
        client->show();
    }
    ~Running() { client->window()->closeNow(); }
    template <class T>
    QList<T> all(const QString& name = {}) const {
        return client->window()->findChildren<T>(name);
    }
};

/// "Не записано" with a refusal, and a conflict about two texts.
void fillUnwritten(const Running& running, const QString& text) {
    const std::string bytes = text.toStdString();
    const auto other = running.host.connectAgain("<b>other</b>");
    const auto changes = [](uint32_t flag, const Fields& fields, CMDArray& array) {
        store::makeStructure(*store::findTable("Menu"), array.array);
        array.KeyAdd("KeyLink", MDX_KEY_MULTI);
        addRecord(array, flag, fields);
    };
    CMDArray theirs, mine, made;
    changes(MDX_UPDATE, {{"KeyLink", "b"}, {"caption", "2" + bytes}, {"params", "2" + bytes}},
            theirs);
    const store::Status done = other->update("Menu", theirs.array);
    QVERIFY2(done.ok(), done.text.c_str());
    changes(MDX_UPDATE, {{"KeyLink", "b"}, {"caption", "1" + bytes}, {"params", "1" + bytes}},
            mine);
    changes(MDX_INSERT, {{"KeyLink", "a"}, {"caption", bytes}, {"params", bytes}}, made);
    const auto modules = running.client->modules().modules(client::ModuleState::Running);
    COrvoCliSes* session = modules.at(0)->m_app->m_session;
    session->SqlUpdate("Menu", mine.array, true, nullptr);
    session->SqlUpdate("Menu", made.array, true, nullptr);
    const auto* tree = running.all<QTreeWidget*>("unwrittenTree").value(0);
    QVERIFY(tree);
    QCOMPARE(tree->topLevelItemCount(), 2);
    QVERIFY(tree->topLevelItem(0)->childCount() > 1);
}

/// Opens the dialog of the desktops, that of the versions of a file, and a preview of what taking
/// the newest action back would write.
void openDialogs(const Running& running, const QString& text) {
    const auto press = [&](const char* name) {
        auto* button = running.all<QPushButton*>(name).value(0);
        QVERIFY2(button, name);
        QTRY_VERIFY2(button->isEnabled(), name);
        button->click();
    };
    // Modal dialogs hold up what the history follows.
    running.client->window()->bringUp(running.all<QDockWidget*>("historyDock").at(0));
    auto* history = running.all<QTreeView*>("historyTree").at(0);
    QTRY_VERIFY(history->model()->rowCount() > 1);
    history->setCurrentIndex({});
    for (int row = 0; row < history->model()->rowCount(); ++row)
        if (history->model()
                ->index(row, app::HistoryModel::What)
                .data()
                .toString()
                .contains("лемент меню"))
            history->setCurrentIndex(history->model()->index(row, 0));
    QVERIFY(history->currentIndex().isValid());
    press("historyRevert");
    QTRY_VERIFY(!running.all<QTreeWidget*>("revertWrites").isEmpty());
    QTRY_VERIFY(running.all<QTreeWidget*>("revertWrites").at(0)->topLevelItemCount() > 0);

    running.all<QAction*>("actDesktop").at(0)->trigger();
    QTRY_VERIFY(!running.all<QListWidget*>("desktopList").isEmpty());
    QVERIFY(running.all<QListWidget*>("desktopList").at(0)->count() > 0);

    const auto store = running.host.connectAgain("<b>other</b>");
    QString kept = text.left(40); // of what a name may hold
    kept.remove('/').remove(QRegularExpression("[[:cntrl:]]"));
    const std::string name = kept.toStdString() + ".txt";
    for (const std::string_view bytes : {"old", "new"}) {
        const store::Status put = store->filePut({{"", name, bytes, 1000.0}});
        QVERIFY2(put.ok(), put.text.c_str());
    }
    CMDArray rows;
    QVERIFY(store->fetchWhere("MenuResource", "name_", name, rows.array).ok());
    QMenu menu;
    running.client->modules()
        .modules(client::ModuleState::Running)
        .at(0)
        ->m_app->addRecordActions(&menu, "MenuResource",
                                  textOf(rows.array, mdx::postedRecord(rows.array, 0), "KeyLink"));
    for (QAction* action : menu.actions())
        if (action->text().startsWith("Прежние версии"))
            action->trigger();
    QTRY_VERIFY(!running.all<app::VersionsDialog*>("versionsDialog").isEmpty());
    auto* versions = running.all<app::VersionsDialog*>("versionsDialog").at(0);
    QTRY_COMPARE(versions->findChild<QTreeWidget*>("versionsList")->topLevelItemCount(), 1);
    versions->extractInto("/nowhere/" + text);
    const auto* note = versions->findChild<QLabel*>();
    QTRY_VERIFY2(note->text().startsWith("Не извлечено"), qPrintable(note->text().left(1000)));
}

bool isMarkup(const QString& text) {
    return text.contains(QLatin1String("<img")) && Qt::mightBeRichText(text);
}

/// What is wrong with the texts of a widget; empty if it shows them as they are.
QString wrongTexts(const QWidget& widget) {
    const QString where = QStringLiteral("%1 %2: ").arg(
        QLatin1String(widget.metaObject()->className()), widget.objectName());
    if (isMarkup(widget.toolTip()) || isMarkup(widget.whatsThis()))
        return where + widget.toolTip();
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        if (label->text().contains(mark) && label->textFormat() != Qt::PlainText)
            return where + label->text();
    const auto hasShortcut = [](const QString& text) {
        return QString(text).remove(QStringLiteral("&&")).contains(QLatin1Char('&'));
    };
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        if (button->text().contains(mark) && hasShortcut(button->text()))
            return where + button->text();
    if (const auto* box = qobject_cast<const QGroupBox*>(&widget))
        if (box->title().contains(mark) && hasShortcut(box->title()))
            return where + box->title();
    if (const auto* bar = qobject_cast<const QTabBar*>(&widget))
        for (int i = 0; i < bar->count(); ++i)
            if (isMarkup(bar->tabToolTip(i)) ||
                (bar->tabText(i).contains(mark) && hasShortcut(bar->tabText(i))))
                return where + bar->tabText(i);
    for (const QAction* action : widget.actions())
        if (isMarkup(action->toolTip()) ||
            (action->text().contains(mark) && hasShortcut(action->text())))
            return where + action->text();
    return {};
}

void walk(const QAbstractItemModel& model, const QModelIndex& parent,
          const std::function<void(const QModelIndex&)>& visit) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        for (int column = 0; column < model.columnCount(parent); ++column)
            visit(model.index(row, column, parent));
        walk(model, model.index(row, 0, parent), visit);
    }
}

/// Everything that is wrong anywhere in the client.
QStringList wrongTexts(const Running& running, int* seen) {
    QStringList wrong;
    for (const QWidget* widget : running.all<QWidget*>())
        if (const QString one = wrongTexts(*widget); !one.isEmpty())
            wrong << one;
    for (const QAbstractItemView* view : running.all<QAbstractItemView*>())
        if (view->model())
            walk(*view->model(), {}, [&](const QModelIndex& cell) {
                *seen += cell.data().toString().contains(mark);
                for (const int role : {Qt::ToolTipRole, Qt::StatusTipRole, Qt::WhatsThisRole})
                    if (isMarkup(cell.data(role).toString()))
                        wrong << view->objectName() + cell.data(role).toString();
            });
    return wrong;
}

/// Milliseconds of processor time that this thread spends on it: a busy machine is no fault of
/// ours.
qint64 workOf(const std::function<void()>& what) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return time.tv_sec * 1000LL + time.tv_nsec / 1'000'000;
    };
    const qint64 begin = now();
    what();
    return now() - begin;
}

} // namespace

class TestHostileTexts : public QObject {
    Q_OBJECT
private slots:
    void markupIsShownLetterByLetter() {
        const Running running(hostileText());
        QTRY_VERIFY_WITH_TIMEOUT(running.client->settled(), 20000);
        running.client->window()->statusLine()->setFailure(hostileText());
        running.client->window()->statusLine()->setConnected(true, hostileText());
        running.client->window()->logPane()->add(app::LogError, hostileText(), hostileText());
        int seen = 0;
        QStringList wrong = wrongTexts(running, &seen);
        // Each row becomes the current one: passports, menus of desktops.
        for (QTreeView* view : running.all<QTreeView*>()) {
            view->expandAll();
            QModelIndex row = view->model() ? view->model()->index(0, 0) : QModelIndex();
            for (int i = 0; row.isValid() && i < 50; ++i, row = view->indexBelow(row)) {
                view->setCurrentIndex(row);
                QCoreApplication::processEvents();
                wrong += wrongTexts(running, &seen);
            }
        }
        // Questions, and the picker.
        for (const char* name :
             {"actDeleteElem", "actDeleteFromtvDesck", "actDelete", "actNewElemModul"})
            for (QAction* action : running.all<QAction*>(name)) {
                action->setEnabled(true);
                action->trigger();
                QCoreApplication::processEvents();
                wrong += wrongTexts(running, &seen);
            }
        wrong.removeDuplicates();
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join("\n")));
        QVERIFY2(seen > 100, qPrintable(QString::number(seen)));
        int labels = 0;
        for (const QLabel* label : running.all<QLabel*>())
            labels += label->text().contains(mark);
        QVERIFY2(labels > 0, "no question names what it is about");
    }

    void dialogsShowMarkupLetterByLetter() {
        const Running running(hostileText());
        QTRY_VERIFY_WITH_TIMEOUT(running.client->settled(), 20000);
        fillUnwritten(running, hostileText());
        openDialogs(running, hostileText());
        if (QTest::currentTestFailed())
            return;
        int seen = 0;
        const QStringList wrong = wrongTexts(running, &seen);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join("\n")));
        for (const char* name : {"unwrittenTree", "desktopList", "versionsList", "revertWrites"}) {
            const auto* view = running.all<QAbstractItemView*>(name).value(0);
            int texts = 0;
            walk(*view->model(), {},
                 [&](const QModelIndex& cell) { texts += cell.data().toString().contains(mark); });
            QVERIFY2(texts > 0, name);
        }
    }

    void rowsAreOneLineHigh() {
        const Running running(hostileText() + "\n\n\n" + hostileText());
        QTRY_VERIFY_WITH_TIMEOUT(running.client->settled(), 20000);
        for (const QTreeView* view : running.all<QTreeView*>())
            for (QModelIndex row = view->indexAt({1, 1}); row.isValid();
                 row = view->indexBelow(row)) {
                const int height = view->visualRect(row).height();
                QVERIFY2(height < 3 * view->fontMetrics().height(),
                         qPrintable(QString("%1: %2").arg(view->objectName()).arg(height)));
            }
    }

    void aTextOfAMillionLettersHoldsUpNothing() {
        const QString text = QString("W").repeated(1'000'000);
        const Running running(text);
        QTRY_VERIFY_WITH_TIMEOUT(running.client->settled(), 60000);
        running.client->window()->statusLine()->setFailure(text);
        running.client->window()->logPane()->add(app::LogError, text, text);
        fillUnwritten(running, text);
        openDialogs(running, text);
        if (QTest::currentTestFailed())
            return;
        qint64 longest = 0;
        const auto measure = [&](const QWidget* what, const std::function<void()>& work) {
            const qint64 time = workOf(work);
            if (time > longest)
                qInfo("%s: %lld ms", qPrintable(what->objectName()), time);
            longest = std::max(longest, time);
        };
        for (QTreeView* view : running.all<QTreeView*>())
            view->expandAll();
        for (QAbstractItemView* view : running.all<QAbstractItemView*>())
            for (int i = 0; i < 5; ++i)
                measure(view, [&] { view->viewport()->grab(); });
        for (QDialog* dialog : running.all<QDialog*>())
            measure(dialog, [&] {
                dialog->resize(dialog->width() + 50, dialog->height());
                dialog->grab();
            });
        longest = std::max(longest, workOf([&] {
                               running.client->window()->statusLine()->repaint();
                               running.client->window()->resize(1200, 800);
                               QCoreApplication::processEvents();
                           }));
        qInfo("longest paint with texts of a million letters: %lld ms", longest);
        QVERIFY2(longest < 300, qPrintable(QString::number(longest)));
    }
};

QTEST_MAIN(TestHostileTexts)
#include "tst_hostile_texts.moc"
