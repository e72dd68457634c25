// The window of the menu editor: its form, its start, the arrangement of the views.
#include "tests/menu/MenuProbe.h"
#include "tests/menu/RowMarks.h"

#include "frame/WindowParts.h"

#include <QHeaderView>
#include <QLayout>
#include <QMenu>
#include <QRegularExpression>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>
#include <QTranslator>

using namespace orvo::test;

namespace {
int warnings = 0;
void countWarnings(QtMsgType, const QMessageLogContext&, const QString&) {
    ++warnings;
}
} // namespace

namespace {

struct Receivers : QTreeView {
    static constexpr auto count = &Receivers::receivers; ///< protected, but only asked
};

} // namespace

namespace {

/// Marks every text of ours that is asked for.
class Marking : public QTranslator {
public:
    QString translate(const char* context, const char* text, const char*, int) const override {
        const bool ours = qstrcmp(context, "OrvoMenu") == 0 || qstrcmp(context, "orvo") == 0;
        return ours ? "<" + QString::fromUtf8(text) + ">" : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

class TestMenuWindow : public QObject {
    Q_OBJECT
private slots:
    void anothersOpenEditIsMarkedInBothTrees() {
        TestStore store;
        fillPlant(store);
        MarkingHost host(store);
        MenuEditor editor(host, "Menu");
        QVERIFY(editor.start());
        QTreeView* desktops = editor.view("tvDesck");
        desktops->expandAll();
        QCOMPARE(wrongMark(host, desktops, "MenuFolder", editor->desck("armop"),
                           editor->desck("armpech")),
                 QString());
        desktops->setCurrentIndex(editor->desck("armop"));
        QTreeView* menu = editor.view("tvMenu");
        menu->expandAll();
        QCOMPARE(wrongMark(host, menu, "Menu", editor->element("trend"), editor->element("calc")),
                 QString());
    }

    void aNameEndsInAnEllipsisBeforeTheMark() {
        struct Access : orvo::RowDelegate {
            /// As it is drawn in a cell of that width.
            static QString drawn(QTreeView* view, const QModelIndex& row, int width) {
                QStyleOptionViewItem option;
                option.initFrom(view);
                option.widget = view;
                option.rect = QRect(0, 0, width, 20);
                const auto init = &Access::initStyleOption;
                (static_cast<orvo::RowDelegate*>(view->itemDelegate())->*init)(&option, row);
                return option.text;
            }
        };
        TestStore store;
        fillPlant(store);
        MarkingHost host(store);
        MenuEditor editor(host, "Menu");
        QVERIFY(editor.start());
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        QTreeView* menu = editor.view("tvMenu");
        const QModelIndex row = editor->element("trend");
        const QString name = row.data().toString();
        const int narrow = menu->fontMetrics().horizontalAdvance(name) + 50;
        host.table = "Menu";
        host.key = "calc";
        QCOMPARE(Access::drawn(menu, row, narrow), name);
        host.key = "trend";
        QVERIFY(Access::drawn(menu, row, narrow).endsWith(QChar(0x2026)));
        QCOMPARE(Access::drawn(menu, row, narrow + 300), name);
    }

    void actionsHaveTheirTexts_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("toolTip");
        QTest::addColumn<QString>("image");
        dataRow("actAddFoldertvDesck", "Папку", "Создать папку", "closedfolder1");
        dataRow("actAddDescktop", "Рабочий стол", "Рабочий стол", "descktop1");
        dataRow("actMoveUp", "", "Переместить вверх", "up1");
        dataRow("actMoveDown", "", "Переместить вниз", "down1");
        dataRow("actNewElemFolder", "Папка", "Новая папка", "closedfolder1");
        dataRow("actNewElemModul", "Модуль", "Новый модуль", "modul1");
        dataRow("actNewElemFunction", "Функция", "Новая функция", "function1");
        dataRow("actNewElemFile", "Файл", "Новый файл", "file1");
        dataRow("actDeleteFromtvDesck", "Удалить", "Удалить папку или рабочий стол", "delete1");
        dataRow("actDeleteElem", "Удалить элемент", "Удалить элемент", "delelem1");
        dataRow("actCopyDescktopOrFolder", "Копировать", "Копировать", "copy1");
        dataRow("actPasteDescktopOrFolder", "Вставить", "Вставить", "paste1");
        dataRow("actChangeDescktopOrFolder", "Изменить", "Изменить", "edit1");
        dataRow("actCutMenuElement", "Вырезать", "Вырезать", "cut1");
        dataRow("actCopyMenuElement", "Копировать", "Копировать", "copy1");
        dataRow("actPasteMenuElement", "Вставить", "Вставить", "paste1");
    }

    void actionsHaveTheirTexts() {
        QFETCH(QString, text);
        QFETCH(QString, toolTip);
        QFETCH(QString, image);
        TestStore store;
        TestHost host(store);
        MenuEditor editor(host, "Menu");
        const QAction* action = editor.action(QTest::currentDataTag());
        QCOMPARE(action->text(), text);
        QCOMPARE(action->toolTip(), toolTip);
        QCOMPARE(action->icon().pixmap(16, 16).toImage(),
                 orvo::image(qPrintable(image)).pixmap(16, 16).toImage());
    }

    // Actions reach their slots by name alone, and nothing is said when a name does not match.
    void everyActionHasItsSlot() {
        TestStore store;
        TestHost host(store);
        MenuProbe window(&host);
        const auto actions = window.findChildren<QAction*>(QRegularExpression("^act"));
        QCOMPARE(actions.size(), 16);
        for (const QAction* action : actions) {
            const QByteArray slot = "on_" + action->objectName().toLatin1() + "_triggered()";
            QVERIFY2(window.metaObject()->indexOfSlot(slot) >= 0, slot);
        }
    }

    void theViewsStandInTheirPanes() {
        TestStore store;
        TestHost host(store);
        MenuProbe window(&host);
        QCOMPARE(window.objectName(), QString("OrvoMenu"));
        QCOMPARE(window.size(), QSize(1146, 825));
        QCOMPARE(window.windowTitle(), QString("MainWindow"));
        QCOMPARE(window.centralWidget()->objectName(), QString("centWidget"));
        const auto* splitter = window.findChild<QSplitter*>("splitter");
        const auto* inner = window.findChild<QSplitter*>("splitter_2");
        QCOMPARE(splitter->orientation(), Qt::Horizontal);
        QCOMPARE(splitter->widget(0)->objectName(), QString("tvDesck"));
        QCOMPARE(splitter->widget(1)->objectName(), QString("rightw"));
        QCOMPARE(inner->orientation(), Qt::Horizontal);
        QCOMPARE(inner->widget(0)->objectName(), QString("tvMenu"));
        QCOMPARE(inner->widget(1)->objectName(), QString("propw"));
        for (const char* name : {"tvDesck", "tvMenu", "tvProp"}) {
            const auto* view = window.findChild<QTreeView*>(name);
            QVERIFY(view);
            QCOMPARE(view->font().family(), QString("Calibri"));
            QCOMPARE(view->font().pointSize(), 12);
            QVERIFY(!view->model());
        }
        for (const char* name : {"verticalLayout", "horizontalLayout"}) {
            const auto* layout = window.findChild<QLayout*>(name);
            QCOMPARE(layout->spacing(), 0);
            QCOMPARE(layout->contentsMargins(), QMargins());
        }
    }

    void theToolBarKeepsItsOrder() {
        TestStore store;
        TestHost host(store);
        MenuProbe window(&host);
        auto* bar = window.findChild<QToolBar*>("toolBar");
        QCOMPARE(bar->windowTitle(), QString("toolBar"));
        QCOMPARE(window.toolBarArea(bar), Qt::TopToolBarArea);
        QCOMPARE(bar->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
        QStringList found;
        QList<QImage> images;
        for (QAction* action : bar->actions()) {
            const auto* button = qobject_cast<QToolButton*>(bar->widgetForAction(action));
            if (action->isSeparator()) {
                found << "-";
            } else if (!action->objectName().isEmpty()) {
                found << action->objectName();
            } else {
                found << button->text();
                QCOMPARE(button->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
                images << button->icon().pixmap(16, 16).toImage();
            }
        }
        QCOMPARE(images.size(), 4);
        int number = 0;
        for (const char* name : {"new1", "checkin1", "cancel1", "newelem1"})
            QCOMPARE(images[number++], orvo::image(name).pixmap(16, 16).toImage());
        QCOMPARE(found, QStringList({"Создать", "actDeleteFromtvDesck", "-", "Сохранить",
                                     "Не сохранять", "-", "actMoveUp", "actMoveDown", "-",
                                     "Новый элемент", "actDeleteElem"}));
    }

    void popUpsHoldTheirActions() {
        TestStore store;
        TestHost host(store);
        MenuProbe window(&host);
        QMap<QString, QStringList> popUps;
        for (const QToolButton* button : window.findChildren<QToolButton*>()) {
            if (!button->menu())
                continue;
            QCOMPARE(button->popupMode(), QToolButton::InstantPopup);
            for (const QAction* action : button->menu()->actions())
                popUps[button->text()] << action->objectName();
        }
        QCOMPARE(popUps.size(), 2);
        QCOMPARE(popUps["Создать"], QStringList({"actAddFoldertvDesck", "actAddDescktop"}));
        QCOMPARE(popUps["Новый элемент"], QStringList({"actNewElemFolder", "actNewElemModul",
                                                       "actNewElemFunction", "actNewElemFile"}));
    }

    // Other messages still get through afterwards.
    void theFormWarnsOfNothing() {
        TestStore store;
        TestHost host(store);
        warnings = 0;
        const QtMessageHandler previous = qInstallMessageHandler(countWarnings);
        { MenuProbe window(&host); }
        const int whileMaking = warnings;
        qWarning("QMetaObject::connectSlotsByName: No matching signal, said by someone else");
        qInstallMessageHandler(previous);
        QCOMPARE(whileMaking, 0);
        QCOMPARE(warnings, 1);
    }

    void aWindowIsNamedAfterItsClass() {
        TestStore store;
        TestHost host(store);
        MenuEditor editor(host, "Menu");
        QCOMPARE(editor->objectName(), QString("OrvoMenu"));
    }

    void thePanesShareTheWidth() {
        TestStore store;
        MenuOn editor(store);
        const QList<int> sizes = editor.child<QSplitter>("splitter")->sizes();
        QCOMPARE(sizes.size(), 2);
        const double ratio = double(sizes[0]) / sizes[1];
        QVERIFY2(qAbs(ratio - 120.0 / 400) < 0.02, qPrintable(QString::number(ratio)));
    }

    // By name, as every slot, and once more with the arrangement of the views: the slots only say
    // what is switched on, and say it again.
    void clicksReachTheirSlotsTwice() {
        PlantEditor editor;
        const char* const clicked = SIGNAL(clicked(QModelIndex));
        const auto connected = [&](const char* name) {
            return (editor.view(name)->*Receivers::count)(clicked);
        };
        const int byName = connected("tvDesck") - connected("tvProp");
        QCOMPARE(byName, 1);
        QCOMPARE(connected("tvMenu") - connected("tvProp"), 1);
        QVERIFY(editor.start());
        QCOMPARE(connected("tvDesck") - connected("tvProp"), 2);
        QCOMPARE(connected("tvMenu") - connected("tvProp"), 2);
    }

    void everyTextCanBeTranslated() {
        Marking marking;
        QVERIFY(qApp->installTranslator(&marking));
        StartedPlant editor("armop");
        QStringList texts = editor.host.titles.mid(0, 1);
        for (const QAction* action : editor->findChildren<QAction*>(QRegularExpression("^act")))
            texts << action->text() << action->toolTip();
        for (const QToolButton* button :
             editor.child<QToolBar>("toolBar")->findChildren<QToolButton*>())
            texts << button->text();
        texts << editor->desck("mainnode").data().toString()
              << editor->element("MenuRootNode").data().toString();
        for (int column : {orvo::menu::MenuColumn::Type, orvo::menu::MenuColumn::Command})
            texts << editor->m_menuModel->headerData(column, Qt::Horizontal).toString();
        for (const char* element : {"grafiki", "trend"}) {
            editor.view("tvMenu")->setCurrentIndex(editor->element(element));
            const PropModel& passport = *editor->m_propModel;
            const QModelIndex category = passport.index(0, 0);
            texts << category.data().toString();
            for (int row = 0; row < passport.rowCount(category); ++row)
                texts << passport.index(row, 0, category).data().toString();
        }
        qApp->removeTranslator(&marking);
        QVERIFY(texts.size() > 40);
        for (const QString& text : texts)
            QVERIFY2(text.isEmpty() || (text.startsWith('<') && text.endsWith('>')),
                     qPrintable(text));
    }

    void startSetsTheTitle() {
        TestStore store;
        TestHost host(store);
        MenuEditor editor(host, "Menu");
        QVERIFY(host.titles.isEmpty());
        QVERIFY(editor.start());
        QCOMPARE(host.titles, QStringList({"Редактор меню", ""}));
        QVERIFY(host.logLines.isEmpty());
        QVERIFY(host.failures.isEmpty());
        QCOMPARE(editor.watchedModels(), 3);
    }

    void startSwitchesSaveAndCancelOff() {
        TestStore store;
        TestHost host(store);
        MenuEditor editor(host, "Menu");
        editor->m_skipDesckChange = true;
        QVERIFY(editor.start());
        for (const QToolButton* button : editor->findChildren<QToolButton*>())
            if (button->text() == "Сохранить" || button->text() == "Не сохранять")
                QVERIFY(!button->isEnabled());
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NoEdit));
        QVERIFY(!editor->m_skipDesckChange);
    }

    void startArrangesTheDesktops() {
        TestStore store;
        MenuOn editor(store);
        const QTreeView* view = editor.view("tvDesck");
        QCOMPARE(view->styleSheet(), orvo::treeStyleSheet());
        QCOMPARE(view->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(view->isHeaderHidden());
        QCOMPARE(view->textElideMode(), Qt::ElideNone);
        QCOMPARE(view->contextMenuPolicy(), Qt::CustomContextMenu);
        QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view->selectionMode(), QAbstractItemView::SingleSelection);
        QStringList titles;
        for (int column = 0; column < view->model()->columnCount(); ++column) {
            titles << view->model()->headerData(column, Qt::Horizontal).toString();
            QCOMPARE(view->isColumnHidden(column), column >= 1);
        }
        QCOMPARE(titles,
                 QStringList({"Name", "KeyLink", "ParentKey", "Order", "IsFolder", "IsNew"}));
        QVERIFY(qobject_cast<DesckDelegate*>(view->itemDelegate()));
    }

    void startArrangesTheMenu() {
        TestStore store;
        MenuOn editor(store);
        const QTreeView* view = editor.view("tvMenu");
        QCOMPARE(view->styleSheet(), orvo::treeStyleSheet());
        QCOMPARE(view->editTriggers(), QAbstractItemView::NoEditTriggers);
        QCOMPARE(view->textElideMode(), Qt::ElideNone);
        QCOMPARE(view->contextMenuPolicy(), Qt::CustomContextMenu);
        QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view->selectionMode(), QAbstractItemView::ExtendedSelection);
        QVERIFY(view->dragEnabled() && view->acceptDrops() && view->showDropIndicator());
        QStringList titles;
        for (int column = 0; column < view->model()->columnCount(); ++column) {
            titles << view->model()->headerData(column, Qt::Horizontal).toString();
            QCOMPARE(view->isColumnHidden(column), column >= 3);
        }
        QCOMPARE(titles,
                 QStringList({" ", "тип", "команда", "FolderKey", "Icon", "KeyLink", "MenuResKey",
                              "OneCopy", "order", "Params", "ParentKey", "Separator", "IsNew"}));
        QCOMPARE(view->columnWidth(0), 300);
    }

    void startArrangesThePassport() {
        TestStore store;
        MenuOn editor(store);
        const QTreeView* view = editor.view("tvProp");
        QCOMPARE(view->editTriggers(), QAbstractItemView::AllEditTriggers);
        QVERIFY(view->isHeaderHidden());
        QStringList titles;
        for (int column = 0; column < view->model()->columnCount(); ++column) {
            titles << view->model()->headerData(column, Qt::Horizontal).toString();
            QCOMPARE(view->isColumnHidden(column), column >= 2);
        }
        QCOMPARE(titles,
                 QStringList({"caption", "value", "editor", "readonly", "name", "iseditrow"}));
        QCOMPARE(view->columnWidth(0), 200);
        QVERIFY(qobject_cast<PasspDelegate*>(view->itemDelegate()));
    }

    void expandingAFolderOpensItsIcon() {
        StartedPlant editor;
        const auto iconOf = [](const QModelIndex& row) {
            return row.data(Qt::DecorationRole).value<QIcon>().pixmap(16, 16).toImage();
        };
        const QImage closed = orvo::image("closedfolder1").pixmap(16, 16).toImage();
        const QImage open = orvo::image("openfolder1").pixmap(16, 16).toImage();
        QCOMPARE(iconOf(editor->desck("ceh")), closed);
        editor.view("tvDesck")->expand(editor->desck("ceh"));
        QCOMPARE(iconOf(editor->desck("ceh")), open);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        QCOMPARE(iconOf(editor->element("grafiki")), closed);
        editor.view("tvMenu")->expand(editor->element("grafiki"));
        QCOMPARE(iconOf(editor->element("grafiki")), open);
        editor.view("tvMenu")->collapse(editor->element("grafiki"));
        QCOMPARE(iconOf(editor->element("grafiki")), closed);
        // The passport's category has no icon to show it.
        editor.view("tvMenu")->setCurrentIndex(editor->element("grafiki"));
        const QModelIndex category = editor->m_propModel->index(0, 0);
        QVERIFY(editor->m_propModel->getItem(category)->isExpanded());
        editor.view("tvProp")->collapse(category);
        QVERIFY(!editor->m_propModel->getItem(category)->isExpanded());
    }

    void aTableThatCannotBeFetchedEndsTheStart_data() {
        QTest::addColumn<QString>("place");
        dataRow("MenuResource", "OrvoMenu::loadTables->MenuResource");
        dataRow("MenuFolder", "OrvoMenu::loadTables->MenuFolder");
        // The other editor's name stands in this place of this one.
        dataRow("MenuResourceFolder", "OrvoResources::loadTables->MenuResourceFolder");
    }

    void aTableThatCannotBeFetchedEndsTheStart() {
        QFETCH(QString, place);
        TestStore store;
        fillPlant(store);
        TestHost host(store);
        store.sql(qPrintable(
            QString("ALTER TABLE \"%1\" RENAME TO \"gone\"").arg(QTest::currentDataTag())));
        MenuEditor editor(host, "Menu");
        QVERIFY(!editor.start());
        QCOMPARE(host.logLines.size(), 1);
        QCOMPARE(host.logLines[0].level, 5);
        QCOMPARE(host.logLines[0].place, place);
        QVERIFY2(host.logLines[0].text.startsWith("Ошибка -> "), qPrintable(host.logLines[0].text));
        QCOMPARE(host.titles, QStringList({"Редактор меню", ""}));
        QVERIFY(!editor->m_popMessageBox);
        for (const char* name : {"tvDesck", "tvMenu", "tvProp"})
            QVERIFY(!editor.view(name)->model());
    }

    void aModuleThatDidNotStartSurvivesNotifications() {
        TestStore store;
        fillPlant(store);
        TestHost host(store);
        store.sql("ALTER TABLE \"MenuFolder\" RENAME TO \"gone\"");
        MenuEditor editor(host, "Menu");
        QVERIFY(!editor.start());
        store.sql("ALTER TABLE \"gone\" RENAME TO \"MenuFolder\"");
        addDesck(store, "novyi", "", "Новый", false);
        addElement(store, "armop", "eshe", "", "Ещё", 5000);
        store.update("MenuFolder", {{"KeyLink", "ceh"}, {"caption", "Цех 2"}});
        store.remove("Menu", "trend");
        editor->m_focusKey = "eshe";
        host.deliver(*editor.module);
        QCOMPARE(editor->m_focusKey, QString("eshe"));
        QVERIFY(!editor.view("tvDesck")->model());
    }

    void theLastTableKeepsTheKeysItCameWith() {
        StartedPlant editor;
        QCOMPARE(editor->m_tabResource.array->keyCount, 2u);
        QCOMPARE(editor->m_tabFolder.array->keyCount, 4u);
        QCOMPARE(editor->m_tabFolder.array->recordCount, 6u);
        CMDArray fetched;
        QVERIFY(editor.host.ownStore().fetch("MenuResourceFolder", fetched.array).ok());
        QCOMPARE(editor->m_tabResFolder.array->keyCount, fetched.array->keyCount);
        QCOMPARE(editor->m_tabMenu.array->fieldCount, uint8_t(0));
    }

    void theFocusKeyWaitsForItsRow() {
        StartedPlant editor;
        editor->m_focusKey = "TREND";
        editor->MessageOn();
        QCOMPARE(editor->m_focusKey, QString("TREND"));
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        editor->MessageOn();
        QCOMPARE(editor.view("tvMenu")->currentIndex(), editor->element("trend"));
        QVERIFY(editor->m_focusKey.isNull());
        // Without a key nothing moves.
        editor.view("tvMenu")->setCurrentIndex(editor->element("shema"));
        editor->MessageOn();
        QCOMPARE(editor.view("tvMenu")->currentIndex(), editor->element("shema"));
    }

    void closingAndStoppingIsQuiet() {
        TestStore store;
        fillPlant(store);
        TestHost host(store);
        auto window = std::make_unique<MenuProbe>(&host);
        QVERIFY(window->ModuleStart());
        window->show();
        window->close();
        window->ModuleStop();
        window.reset();
        QVERIFY(host.logLines.isEmpty());
    }

    void theWindowMayGoWhileAViewHasTheFocus() {
        TestStore store;
        fillPlant(store);
        TestHost host(store);
        for (const char* name : {"tvDesck", "tvMenu", "tvProp"}) {
            auto window = std::make_unique<MenuProbe>(&host);
            QVERIFY(window->ModuleStart());
            window->show();
            window->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(window.get()));
            auto* desck = window->findChild<QTreeView*>("tvDesck");
            desck->setCurrentIndex(window->desck("armop"));
            window->findChild<QTreeView*>("tvMenu")->setCurrentIndex(window->element("trend"));
            window->findChild<QTreeView*>(name)->setFocus();
            window.reset();
        }
    }
};

QTEST_MAIN(TestMenuWindow)
#include "tst_menu_window.moc"
