// The window of the resource editor: its form, its start, the arrangement of the views.
#include "tests/resources/ResProbe.h"

#include "frame/Records.h"
#include "frame/WindowParts.h"
#include "frame/modules.h"
#include "tests/menu/Outage.h"
#include "tests/menu/RowMarks.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QRegularExpression>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>

#include <array>

using namespace orvo::test;

namespace {

QStringList messages;

void collect(QtMsgType, const QMessageLogContext&, const QString& text) {
    messages << text;
}

} // namespace

class TestResWindow : public QObject {
    Q_OBJECT
private slots:
    void anothersOpenEditIsMarked() {
        TestStore store;
        fillCatalogue(store);
        MarkingHost host(store);
        ResEditor editor(host, "Resources");
        QVERIFY(editor.start());
        QTreeView* tree = editor.view("tvRes");
        tree->expandAll();
        QCOMPARE(wrongMark(host, tree, "MenuResource", editor->row("rlog"), editor->row("rtable")),
                 QString());
        QCOMPARE(wrongMark(host, tree, "MenuResourceFolder", editor->row("alarms"),
                           editor->row("trends")),
                 QString());
    }

    void theFactoryMakesIt_data() {
        QTest::addColumn<QByteArray>("name");
        dataRow("as it is", QByteArray("Resources"));
        dataRow("capitals", QByteArray("RESOURCES"));
    }

    void theFactoryMakesIt() {
        QFETCH(QByteArray, name);
        COrvoCliApp app;
        const std::unique_ptr<COrvoCliMod> module(
            static_cast<COrvoCliMod*>(CppCliModule(&app, name.constData())));
        QVERIFY(module);
        QCOMPARE(module->metaObject()->className(), "OrvoResources");
        for (const QTreeView* view : module->findChildren<QTreeView*>())
            QVERIFY(!view->model());
    }

    void actionsHaveTheirTexts_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("toolTip");
        QTest::addColumn<QString>("image");
        const auto add = [](const char* name, const char* text, const char* tip,
                            const char* image) {
            dataRow(name, QString(text), QString(tip), QString(image));
        };
        add("actAddModule", "Модуль", "Создать модуль", "modul1");
        add("actAddFunction", "Функцию", "Создать функцию", "function1");
        add("actAddFolder", "Папку", "Создать папку", "closedfolder1");
        add("actLoadFiles", "Загрузить файлы", "Загрузить файлы", "load1");
        add("actExtractFiles", "Извлечь файлы", "Извлечь файлы", "exportfiles1");
        add("actDelete", "Удалить", "Удалить", "delete1");
        add("actCut", "Вырезать", "Вырезать", "cut1");
        add("actCopy", "Копировать", "Копировать", "copy1");
        add("actPaste", "Вставить", "Вставить", "paste1");
        add("actUnBlock", "Снять блокировку", "Снять блокировку", "blocked3");
        add("actOpenScheme", "Открыть схему", "Открыть схему", "blocked4");
    }

    void actionsHaveTheirTexts() {
        QFETCH(QString, text);
        QFETCH(QString, toolTip);
        QFETCH(QString, image);
        TestStore store;
        TestHost host(store);
        ResEditor editor(host, "Resources");
        const QAction* action = editor.action(QTest::currentDataTag());
        QCOMPARE(action->text(), text);
        QCOMPARE(action->toolTip(), toolTip);
        QCOMPARE(action->icon().pixmap(16, 16).toImage(),
                 orvo::image(qPrintable(image)).pixmap(16, 16).toImage());
    }

    // Copying and unlocking are shown and do nothing.
    void actionsButTwoHaveTheirSlots() {
        TestStore store;
        TestHost host(store);
        ResProbe window(&host);
        const auto actions = window.findChildren<QAction*>(QRegularExpression("^act"));
        QCOMPARE(actions.size(), 11);
        for (const QAction* action : actions) {
            const QByteArray slot = "on_" + action->objectName().toLatin1() + "_triggered()";
            const bool isMute =
                action->objectName() == "actCopy" || action->objectName() == "actUnBlock";
            QVERIFY2((window.metaObject()->indexOfSlot(slot) < 0) == isMute, slot);
        }
    }

    void theViewsStandInTheirPanes() {
        TestStore store;
        TestHost host(store);
        ResProbe window(&host);
        QCOMPARE(window.objectName(), QString("OrvoResources"));
        QCOMPARE(window.size(), QSize(977, 727));
        QCOMPARE(window.windowTitle(), QString("MainWindow"));
        QCOMPARE(window.centralWidget()->objectName(), QString("centw"));
        QCOMPARE(window.centralWidget()->layout()->objectName(), QString("verticalLayout"));
        const auto* splitter = window.findChild<QSplitter*>("splitter");
        QCOMPARE(splitter->orientation(), Qt::Horizontal);
        QCOMPARE(splitter->widget(0)->objectName(), QString("tvRes"));
        QCOMPARE(splitter->widget(1)->objectName(), QString("tvProp"));
        for (const char* name : {"tvRes", "tvProp"}) {
            const auto* view = window.findChild<QTreeView*>(name);
            QCOMPARE(view->font().family(), QString("Calibri"));
            QCOMPARE(view->font().pointSize(), 12);
            QVERIFY(!view->model());
        }
    }

    void theToolBarKeepsItsOrder() {
        TestStore store;
        TestHost host(store);
        ResProbe window(&host);
        const auto* bar = window.findChild<QToolBar*>("toolBar");
        QCOMPARE(window.toolBarArea(const_cast<QToolBar*>(bar)), Qt::TopToolBarArea);
        QCOMPARE(bar->windowTitle(), QString("toolBar"));
        QCOMPARE(bar->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
        QStringList order;
        for (QAction* action : bar->actions()) {
            const QWidget* widget = bar->widgetForAction(action);
            if (action->isSeparator())
                order << "|";
            else if (!action->objectName().isEmpty())
                order << action->objectName();
            else if (const auto* button = qobject_cast<const QToolButton*>(widget))
                order << (button->text().isEmpty() ? "step" : button->text());
            else
                order << widget->metaObject()->className();
        }
        QCOMPARE(order, QStringList({"Создать", "actLoadFiles", "actDelete", "actExtractFiles", "|",
                                     "Сохранить", "Не сохранять", "|", "QLineEdit", "step", "step",
                                     "QLabel", "QComboBox"}));
        const auto* create =
            qobject_cast<QToolButton*>(bar->widgetForAction(bar->actions().first()));
        QCOMPARE(create->popupMode(), QToolButton::InstantPopup);
        QStringList made;
        for (const QAction* action : create->menu()->actions())
            made << action->objectName();
        QCOMPARE(made, QStringList({"actAddModule", "actAddFunction", "actAddFolder"}));
    }

    void theSearchBarIsArranged() {
        TestStore store;
        TestHost host(store);
        ResProbe window(&host);
        const auto* bar = window.findChild<QToolBar*>("toolBar");
        const auto same = [](const QIcon& icon, const char* name) {
            return icon.pixmap(16, 16).toImage() == orvo::image(name).pixmap(16, 16).toImage();
        };
        const auto* edit = bar->findChild<QLineEdit*>();
        QVERIFY(edit->isClearButtonEnabled());
        QCOMPARE(edit->placeholderText(), QString("Поиск..."));
        QCOMPARE(edit->sizePolicy(), QSizePolicy());
        QVERIFY(same(edit->findChild<QToolButton*>()->icon(), "cancel1"));
        const auto leading = edit->actions();
        QVERIFY(std::any_of(leading.begin(), leading.end(), [&](const QAction* action) {
            return same(action->icon(), "search1");
        }));
        QList<QToolButton*> steps;
        for (QAction* action : bar->actions()) {
            auto* button = qobject_cast<QToolButton*>(bar->widgetForAction(action));
            if (button && button->toolButtonStyle() == Qt::ToolButtonIconOnly)
                steps << button;
        }
        QCOMPARE(steps.size(), 2);
        QVERIFY(same(steps[0]->icon(), "down2"));
        QVERIFY(same(steps[1]->icon(), "up2"));
        const auto* label = bar->findChild<QLabel*>();
        QCOMPARE(label->text(), QString(" Искать по: "));
        const auto* box = bar->findChild<QComboBox*>();
        QCOMPARE(box->styleSheet(), QString("QComboBox { background-color: white }"));
        QCOMPARE(box->focusPolicy(), Qt::NoFocus);
        QCOMPARE(box->currentIndex(), 0);
        QCOMPARE(box->count(), 2);
        QCOMPARE(box->itemText(0), QString("Наименование"));
        QCOMPARE(box->itemText(1), QString("Ресурс"));
        for (const QWidget* widget : std::array<const QWidget*, 2>{label, box})
            QCOMPARE(widget->font().family(), QString("Calibri"));
    }

    void theFormWarnsOfNothing() {
        TestStore store;
        TestHost host(store);
        messages.clear();
        const QtMessageHandler previous = qInstallMessageHandler(collect);
        { ResProbe window(&host); }
        qInstallMessageHandler(previous);
        QCOMPARE(messages, QStringList());
    }

    void startSetsTheTitleAndSwitchesEverythingOff() {
        StartedCatalogue editor;
        QCOMPARE(editor.host.titles, QStringList({"Редактор ресурсов", ""}));
        QVERIFY(editor.host.logLines.isEmpty());
        for (const QAction* action : editor->findChildren<QAction*>(QRegularExpression("^act")))
            QVERIFY2(!action->isEnabled(), qPrintable(action->objectName()));
        for (const QToolButton* button : editor->findChildren<QToolButton*>())
            if (button->text() == "Сохранить" || button->text() == "Не сохранять")
                QVERIFY(!button->isEnabled());
        QCOMPARE(editor->m_editState, 0u);
    }

    void startKnowsTheUser() {
        StartedCatalogue editor;
        QCOMPARE(editor->m_userLogin, QString("engineer"));
    }

    void startGivesTheTablesTheirKeys() {
        StartedCatalogue editor;
        QCOMPARE(editor->m_tabResource.array->keyCount, 4u);
        QCOMPARE(editor->m_tabResFolder.array->keyCount, 4u);
        QCOMPARE(editor->m_tabUsers.array->keyCount, 2u);
        QCOMPARE(editor->m_tabOrphans.array->keyCount, 1u);
        using orvo::KeyValues;
        QVERIFY(orvo::seek(editor->m_tabResource, 2, KeyValues().integer(1).text("trend")));
        QVERIFY(orvo::seek(editor->m_tabResource, 3, KeyValues().text("calc")));
        QVERIFY(orvo::seek(editor->m_tabResFolder, 2, KeyValues().integer(4).text("docs")));
        QVERIFY(orvo::seek(editor->m_tabResFolder, 3, KeyValues().text("docs")));
        QVERIFY(orvo::seek(editor->m_tabUsers, 1, KeyValues().text("petrova")));
        QCOMPARE(editor->resourceTable(), &editor->m_tabResource);
        QCOMPARE(editor->resourceFolderTable(), &editor->m_tabResFolder);
    }

    void startArrangesTheTree() {
        StartedCatalogue editor;
        const QTreeView* view = editor.view("tvRes");
        const QList<int> sizes = editor.child<QSplitter>("splitter")->sizes();
        const double share = sizes[0] / double(sizes[0] + sizes[1]);
        QVERIFY2(std::abs(share - 400.0 / 550) < 0.02, qPrintable(QString::number(share)));
        QStringList titles;
        for (int column = 0; column < view->model()->columnCount(); ++column) {
            titles << view->model()->headerData(column, Qt::Horizontal).toString();
            QCOMPARE(view->isColumnHidden(column), column >= 5);
        }
        QCOMPARE(titles, QStringList({"Наименование", "Ресурс", "Иконка", "Заблокировано",
                                      "Дата блокировки", "KeyLink", "type", "params", "FolderKey",
                                      "IsFolder", "Date", "Size", "Blocked", "IsNew"}));
        QCOMPARE(view->columnWidth(0), 350);
        QCOMPARE(view->columnWidth(1), 350);
        QCOMPARE(view->textElideMode(), Qt::ElideNone);
        QCOMPARE(view->contextMenuPolicy(), Qt::CustomContextMenu);
        QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view->selectionMode(), QAbstractItemView::ExtendedSelection);
        QVERIFY(view->dragEnabled());
        QVERIFY(view->acceptDrops());
        QVERIFY(view->showDropIndicator());
        QCOMPARE(
            view->styleSheet(),
            QString("QTreeView::branch:has-children:!has-siblings:closed{border-image: "
                    "none;image:url(:/res/node_branch_close1.png);}"
                    "QTreeView::branch:closed:has-children:has-siblings{border-image: "
                    "none;image:url(:/res/node_branch_close.png);}"
                    "QTreeView::branch:open:has-children:!has-siblings{border-image: none; "
                    "image:url(:/res/node_branch_open1.png);}"
                    "QTreeView::branch:open:has-children:has-siblings{border-image: none; "
                    "image:url(:/res/node_branch_open.png);}"
                    "QTreeView::branch:has-siblings:adjoins-item{border-image:url(:/res/"
                    "branch_more.png)}"
                    "QTreeView::branch:!has-children:!has-siblings:adjoins-item{border-image:url("
                    ":/res/branch_end.png)}"
                    "QTreeView::branch:has-siblings:!adjoins-item{border-image:url(:/res/"
                    "vline.png)}"));
    }

    void startArrangesThePassport() {
        StartedCatalogue editor;
        const QTreeView* view = editor.view("tvProp");
        for (int column = 0; column < 6; ++column)
            QCOMPARE(view->isColumnHidden(column), column >= 2);
        QCOMPARE(view->model()->columnCount(), 6);
        QCOMPARE(view->columnWidth(0), 200);
        QVERIFY(view->isHeaderHidden());
        QCOMPARE(static_cast<int>(view->editTriggers()), 31);
        QCOMPARE(view->styleSheet(),
                 QString("QTreeView::branch:has-children:!has-siblings:closed{border-image:none;"
                         "image:url(:/res/node_branch_close.png);}"
                         "QTreeView::branch:closed:has-children:has-siblings{border-image:none;"
                         "image:url(:/res/node_branch_close.png);}"
                         "QTreeView::branch:open:has-children:!has-siblings{border-image: none; "
                         "image:url(:/res/node_branch_open.png);}"
                         "QTreeView::branch:open:has-children:has-siblings{border-image: none; "
                         "image:url(:/res/node_branch_open.png);}"));
    }

    void aTableThatCannotBeFetchedEndsTheStart_data() {
        QTest::addColumn<QString>("place");
        for (const char* table : {"MenuResource", "MenuResourceFolder", "Users", "MenuFileExt"})
            dataRow(table, QString("OrvoResources::loadTables->%1").arg(table));
    }

    void aTableThatCannotBeFetchedEndsTheStart() {
        QFETCH(QString, place);
        TestStore store;
        fillCatalogue(store);
        TestHost host(store);
        store.sql(qPrintable(
            QString("ALTER TABLE \"%1\" RENAME TO \"Away\"").arg(QTest::currentDataTag())));
        ResEditor editor(host, "Resources");
        QVERIFY(!editor.start());
        QCOMPARE(host.logLines.size(), 1);
        QCOMPARE(host.logLines.first().level, 5);
        QCOMPARE(host.logLines.first().place, place);
        QVERIFY(!host.logLines.first().text.isEmpty());
        QVERIFY(!editor.view("tvRes")->model());
        QCOMPARE(host.titles.size(), 2);
    }

    void withoutAStructureTheStartEnds() {
        CatalogueEditor editor;
        {
            const StructureOutage outage;
            QVERIFY(!editor.start());
        }
        QCOMPARE(editor.host.logLines.size(), 1);
        QCOMPARE(editor.host.logLines.first().level, 5);
        QCOMPARE(editor.host.logLines.first().place,
                 QString("OrvoResources::loadTables->MenuResource"));
        QVERIFY(!editor->m_resModel);
        // What was loaded before stays.
        QVERIFY(orvo::seekKey(editor->m_tabResource, "rlog"));
        QCOMPARE(editor->m_userLogin, QString("engineer"));
    }

    void aModuleThatDidNotStartSurvivesWhatComes() {
        TestStore store;
        fillCatalogue(store);
        TestHost host(store);
        store.sql("ALTER TABLE \"Users\" RENAME TO \"Away\"");
        ResEditor editor(host, "Resources");
        QVERIFY(!editor.start());
        addItem(store, "later", 1, "mod", "Later", "Позже");
        editor->m_focusKey = "later";
        host.deliver(*editor.module);
        for (QAction* action : editor->findChildren<QAction*>(QRegularExpression("^act")))
            action->trigger();
        QVERIFY(!editor->m_resModel);
        QVERIFY(!orvo::seekKey(editor->m_tabResource, "later"));
    }

    void theFocusKeyWaitsForItsRow() {
        StartedCatalogue editor;
        editor->m_focusKey = "later";
        editor.host.deliver(*editor.module);
        QCOMPARE(editor->m_focusKey, QString("later"));
        QVERIFY(editor->m_currentKey != "later");
        addItem(editor.store, "later", 1, "mod", "Later", "Позже");
        editor.host.deliver(*editor.module);
        QVERIFY(editor->m_focusKey.isNull());
        QCOMPARE(editor->m_currentKey, QString("later"));
    }

    void anErrorBoxIsHidden() {
        StartedCatalogue editor;
        editor->on_common_error_message(nullptr);
        editor->refuse("Нет");
        QVERIFY(editor->m_popMessageBox->isVisible());
        QStringList texts;
        for (const QLabel* label : editor->m_popMessageBox->findChildren<QLabel*>())
            texts << label->text();
        QVERIFY(texts.contains("Ошибка") && texts.contains("Нет"));
        editor->on_common_error_message(nullptr);
        QVERIFY(!editor->m_popMessageBox->isVisible());
    }

    void theWindowMayGoWithACurrentRow() {
        StartedCatalogue editor;
        editor.view("tvRes")->setCurrentIndex(editor->row("rtrend"));
        editor.view("tvProp")->setFocus();
        editor->close();
        editor->ModuleStop();
        QCOMPARE(editor.host.failures, QStringList());
    }
};

QTEST_MAIN(TestResWindow)
#include "tst_res_window.moc"
