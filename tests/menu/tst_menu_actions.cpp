// When the actions of the menu editor are switched on and off, and what the context menus hold.
#include "frame/Keys.h"
#include "frame/Kinds.h"
#include "models/Passport.h"
#include "tests/menu/MenuProbe.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QSet>
#include <QTimer>

#include <utility>

using namespace orvo::test;

namespace {

const QStringList desckActions = {"actAddDescktop",          "actAddFoldertvDesck",
                                  "actDeleteFromtvDesck",    "actChangeDescktopOrFolder",
                                  "actCopyDescktopOrFolder", "actPasteDescktopOrFolder"};
const QStringList newElementActions = {"actNewElemFolder", "actNewElemModul", "actNewElemFunction",
                                       "actNewElemFile"};
const QStringList menuActions =
    newElementActions + QStringList{"actDeleteElem",     "actCopyMenuElement",
                                    "actCutMenuElement", "actPasteMenuElement",
                                    "actMoveUp",         "actMoveDown"};

class ClipboardProbe : public MenuProbe {
public:
    using MenuProbe::MenuProbe;
    using OrvoMenu::m_clipboard;
};

void offer(const char* format) {
    auto* data = new QMimeData; // the clipboard's from now on
    data->setData(format, "x");
    QGuiApplication::clipboard()->setMimeData(data);
}

/// The texts of a menu in order, "-" for a separator, sub-menus as "text[a,b]".
QStringList describe(const QMenu* menu) {
    QStringList entries;
    for (const QAction* action : menu->actions()) {
        if (action->isSeparator())
            entries << "-";
        else if (action->menu())
            entries << action->text() + "[" + describe(action->menu()).join(",") + "]";
        else
            entries << action->objectName();
    }
    return entries;
}

} // namespace

class TestMenuActions : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    void everyKindThatStandsInAMenuHasAnActionAndAKeyOfItsOwn() {
        StartedPlant editor;
        QSet<const QAction*> actions;
        QSet<QString> keys;
        int expected = 0;
        for (const orvo::ResourceKind& kind : orvo::resourceKinds) {
            QCOMPARE(editor->creator(kind.number) != nullptr, kind.attribute != nullptr);
            if (!kind.attribute)
                continue;
            actions << editor->creator(kind.number);
            keys << orvo::keys::newOf(kind.number);
            ++expected;
        }
        QCOMPARE(actions.size(), expected);
        QCOMPARE(keys.size(), expected);
    }

    void whoMayOnlyReadCopiesAndNoMore() {
        PlantEditor editor;
        editor.host.m_mayWrite = false;
        QVERIFY(editor.start());
        QStringList seen;
        const auto look = [&](const QStringList& names) {
            for (const QString& name : enabled(editor, names).split(' ', Qt::SkipEmptyParts))
                if (!seen.contains(name))
                    seen << name;
        };
        for (const char* key : {"sklad", "armop"}) {
            clickRow(editor.view("tvDesck"), editor->desck(key));
            look(desckActions);
        }
        QTreeView* menu = editor.view("tvMenu");
        menu->expandAll();
        for (const QModelIndex& row :
             menu->model()->match(menu->model()->index(0, 0), Qt::DisplayRole, QString("*"), -1,
                                  Qt::MatchWildcard | Qt::MatchRecursive)) {
            clickRow(menu, row);
            look(menuActions);
            // No cell of the passport opens, by mouse or by key.
            QTreeView* passport = editor.view("tvProp");
            const QModelIndex value =
                findRow(*passport->model(), "Наименование").siblingAtColumn(1);
            if (!value.isValid())
                continue;
            QTest::mouseClick(passport->viewport(), Qt::LeftButton, {},
                              passport->visualRect(value).center());
            passport->setCurrentIndex(value.siblingAtRow(0));
            QTest::keyClick(passport, Qt::Key_Down);
            QTest::keyClick(passport, Qt::Key_F2);
            QVERIFY(!passport->indexWidget(value));
            QVERIFY(passport->viewport()->findChildren<QWidget*>().isEmpty());
        }
        seen.sort();
        QCOMPARE(seen, QStringList({"CopyDescktopOrFolder", "CopyMenuElement"}));
        QVERIFY(!menu->acceptDrops());
        QVERIFY(!menu->dragEnabled());
        QVERIFY(editor->ModEditText().isEmpty());
    }

    void desktopRowsSwitchTheirActions_data() {
        QTest::addColumn<QString>("expected");
        dataRow("mainnode", "AddFoldertvDesck");
        dataRow("ceh", "AddDescktop AddFoldertvDesck ChangeDescktopOrFolder "
                       "CopyDescktopOrFolder");
        dataRow("sklad", "AddDescktop AddFoldertvDesck DeleteFromtvDesck "
                         "ChangeDescktopOrFolder CopyDescktopOrFolder");
        dataRow("obshiy", "CopyDescktopOrFolder");
        dataRow("armop", "AddDescktop DeleteFromtvDesck ChangeDescktopOrFolder "
                         "CopyDescktopOrFolder");
        dataRow("armpech", "AddDescktop DeleteFromtvDesck ChangeDescktopOrFolder "
                           "CopyDescktopOrFolder");
    }

    void desktopRowsSwitchTheirActions() {
        QFETCH(QString, expected);
        StartedPlant editor;
        // By a change of the current row, from a row with everything else.
        for (const char* before : {"armop", "sklad"}) {
            editor.view("tvDesck")->setCurrentIndex(editor->desck(before));
            editor.view("tvDesck")->setCurrentIndex(editor->desck(QTest::currentDataTag()));
            QCOMPARE(enabled(editor, desckActions), expected);
        }
        // And by a click.
        for (const QString& name : desckActions)
            editor.action(qPrintable(name))
                ->setEnabled(!editor.action(qPrintable(name))->isEnabled());
        QVERIFY(enabled(editor, desckActions) != expected);
        editor.action("actPasteDescktopOrFolder")->setEnabled(false);
        clickRow(editor.view("tvDesck"), editor->desck(QTest::currentDataTag()));
        QCOMPARE(enabled(editor, desckActions), expected);
    }

    void menuRowsSwitchTheirActions_data() {
        QTest::addColumn<QString>("expected");
        const QString create = "NewElemFolder NewElemModul NewElemFunction NewElemFile";
        const QString edit = "DeleteElem CopyMenuElement CutMenuElement";
        dataRow("MenuRootNode", create);
        dataRow("grafiki", create + " " + edit + " MoveUp MoveDown");
        dataRow("glubzhe", create + " " + edit + " MoveUp");
        dataRow("trend", edit + " MoveDown");
        dataRow("calc", edit + " MoveUp MoveDown");
        dataRow("form", edit);
        dataRow("shema", edit + " MoveDown");
        // An element whose resource is gone is no folder.
        dataRow("propal", edit + " MoveUp");
    }

    void menuRowsSwitchTheirActions() {
        QFETCH(QString, expected);
        StartedPlant editor("armop");
        editor.view("tvMenu")->expandAll();
        for (const char* before : {"MenuRootNode", "grafiki", "form"}) {
            editor.view("tvMenu")->setCurrentIndex(editor->element(before));
            editor.view("tvMenu")->setCurrentIndex(editor->element(QTest::currentDataTag()));
            QCOMPARE(enabled(editor, menuActions), expected);
        }
        clickRow(editor.view("tvMenu"), editor->element("MenuRootNode"));
        clickRow(editor.view("tvMenu"), editor->element(QTest::currentDataTag()));
        QCOMPARE(enabled(editor, menuActions), expected);
    }

    void pasteFollowsTheClipboardOnFolders() {
        StartedPlant editor;
        offer("OrvoMenu/descktop");
        for (const char* key : {"ceh", "mainnode", "sklad"}) {
            editor.view("tvDesck")->setCurrentIndex(editor->desck(key));
            QVERIFY(editor.action("actPasteDescktopOrFolder")->isEnabled());
        }
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        for (const char* key : {"grafiki", "MenuRootNode"}) {
            editor.view("tvMenu")->setCurrentIndex(editor->element(key));
            QVERIFY(!editor.action("actPasteMenuElement")->isEnabled());
        }
        offer("OrvoMenu/menu");
        for (const char* key : {"grafiki", "MenuRootNode"}) {
            editor.view("tvMenu")->setCurrentIndex(editor->element(key));
            QVERIFY(editor.action("actPasteMenuElement")->isEnabled());
        }
        editor.view("tvDesck")->setCurrentIndex(editor->desck("ceh"));
        QVERIFY(!editor.action("actPasteDescktopOrFolder")->isEnabled());
    }

    void pasteKeepsItsStateOnOtherRows() {
        StartedPlant editor("armop");
        offer("OrvoMenu/menu");
        editor.view("tvMenu")->setCurrentIndex(editor->element("shema"));
        QVERIFY(!editor.action("actPasteMenuElement")->isEnabled());
        editor.view("tvMenu")->setCurrentIndex(editor->element("grafiki"));
        QGuiApplication::clipboard()->clear();
        editor.view("tvMenu")->setCurrentIndex(editor->element("shema"));
        QVERIFY(editor.action("actPasteMenuElement")->isEnabled());
    }

    void desktopPasteKeepsItsStateOnDesktops() {
        StartedPlant editor("ceh");
        offer("OrvoMenu/descktop");
        for (const char* key : {"armop", "obshiy"}) {
            editor.view("tvDesck")->setCurrentIndex(editor->desck(key));
            QVERIFY(!editor.action("actPasteDescktopOrFolder")->isEnabled());
        }
        editor.view("tvDesck")->setCurrentIndex(editor->desck("ceh"));
        QGuiApplication::clipboard()->clear();
        for (const char* key : {"armop", "obshiy"}) {
            editor.view("tvDesck")->setCurrentIndex(editor->desck(key));
            QVERIFY(editor.action("actPasteDescktopOrFolder")->isEnabled());
        }
    }

    void anInvalidRowChangesNothing() {
        StartedPlant editor("armop", "trend");
        const QString desck = enabled(editor, desckActions);
        const QString menu = enabled(editor, menuActions);
        editor.view("tvMenu")->setCurrentIndex(QModelIndex());
        QCOMPARE(enabled(editor, menuActions), menu);
        editor.view("tvDesck")->setCurrentIndex(QModelIndex());
        QCOMPARE(enabled(editor, desckActions), desck);
    }

    void losingTheFocusSwitchesElementActionsOff() {
        StartedPlant editor;
        editor->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(editor.module.get()));
        editor.view("tvDesck")->setFocus();
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        editor.view("tvMenu")->setFocus();
        offer("OrvoMenu/menu");
        editor.view("tvMenu")->setCurrentIndex(editor->element("grafiki"));
        QCOMPARE(enabled(editor, menuActions).split(' ').size(), 10);
        editor.view("tvProp")->setFocus();
        QCOMPARE(enabled(editor, menuActions), QString());
        // Coming back does not switch them on.
        editor.view("tvMenu")->setFocus();
        QCOMPARE(enabled(editor, menuActions), QString());
        editor.view("tvMenu")->setCurrentIndex(editor->element("shema"));
        QVERIFY(editor.action("actDeleteElem")->isEnabled());
    }

    void losingTheFocusSwitchesDesktopActionsOff() {
        StartedPlant editor;
        editor->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(editor.module.get()));
        editor.view("tvDesck")->setFocus();
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        editor.view("tvMenu")->setCurrentIndex(editor->element("trend"));
        QVERIFY(!enabled(editor, desckActions).isEmpty());
        const QString menu = enabled(editor, menuActions);
        editor.view("tvMenu")->setFocus();
        QCOMPARE(enabled(editor, desckActions), QString());
        QCOMPARE(enabled(editor, menuActions), menu);
        // A view that is none of the two switches nothing.
        editor.view("tvProp")->setFocus();
        editor.view("tvMenu")->setCurrentIndex(editor->element("shema"));
        const QString again = enabled(editor, menuActions);
        QVERIFY(!again.isEmpty());
        editor.view("tvDesck")->setFocus();
        QCOMPARE(enabled(editor, menuActions), again);
    }

    void whereTheFocusGoesMakesNoDifference() {
        StartedPlant editor;
        QTreeView* const desck = editor.view("tvDesck");
        QTreeView* const menu = editor.view("tvMenu");
        QWidget elsewhere;
        desck->setCurrentIndex(editor->desck("armop"));
        for (QWidget* now : {static_cast<QWidget*>(nullptr), &elsewhere,
                             static_cast<QWidget*>(desck), static_cast<QWidget*>(menu)}) {
            menu->setCurrentIndex(editor->element("grafiki"));
            menu->setCurrentIndex(editor->element("calc"));
            emit menu->clicked(editor->element("calc"));
            emit desck->clicked(editor->desck("armop"));
            const QString menuOn = enabled(editor, menuActions);
            const QString desckOn = enabled(editor, desckActions);
            QVERIFY(!menuOn.isEmpty() && !desckOn.isEmpty());
            // Coming from elsewhere, also to one of the two, switches nothing.
            emit qApp->focusChanged(&elsewhere, now);
            emit qApp->focusChanged(nullptr, now);
            QCOMPARE(enabled(editor, menuActions), menuOn);
            QCOMPARE(enabled(editor, desckActions), desckOn);
            emit qApp->focusChanged(desck, now);
            QCOMPARE(enabled(editor, menuActions), menuOn);
            QCOMPARE(enabled(editor, desckActions), QString());
            emit qApp->focusChanged(menu, now);
            QCOMPARE(enabled(editor, menuActions), QString());
        }
    }

    void aClickSwitchesThemOnAgain() {
        StartedPlant editor;
        editor->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(editor.module.get()));
        clickRow(editor.view("tvDesck"), editor->desck("ceh"));
        editor.view("tvDesck")->expandAll();
        clickRow(editor.view("tvDesck"), editor->desck("armop"));
        clickRow(editor.view("tvMenu"), editor->element("MenuRootNode"));
        QCOMPARE(enabled(editor, desckActions), QString());
        QCOMPARE(enabled(editor, menuActions),
                 QString("NewElemFolder NewElemModul NewElemFunction NewElemFile"));
        clickRow(editor.view("tvDesck"), editor->desck("armop"));
        QCOMPARE(enabled(editor, menuActions), QString());
        QVERIFY(editor.action("actCopyDescktopOrFolder")->isEnabled());
        // In any column.
        QTreeView* menu = editor.view("tvMenu");
        const QModelIndex word =
            editor->element("shema").sibling(editor->element("shema").row(), 1);
        QTest::mouseClick(menu->viewport(), Qt::LeftButton, {}, menu->visualRect(word).center());
        QCOMPARE(enabled(editor, menuActions), QString("DeleteElem CopyMenuElement CutMenuElement "
                                                       "MoveDown"));
    }

    void clicksDoNothingWhileSomethingIsEdited() {
        StartedPlant editor("armop", "grafiki");
        const auto click = [&](const char* view, const QModelIndex& row) {
            emit editor.view(view)->clicked(row);
        };
        for (const char* begin : {"on_actAddDescktop_triggered", "on_actNewElemFolder_triggered",
                                  "on_actChangeDescktopOrFolder_triggered", ""}) {
            if (*begin)
                QVERIFY(QMetaObject::invokeMethod(editor.module.get(), begin));
            else
                orvo::editPassportValue(*editor->m_propModel, "name", "Иное");
            QVERIFY(editor->m_editMode != MenuProbe::NoEdit);
            for (const QString& action : desckActions + menuActions)
                editor.action(qPrintable(action))->setEnabled(false);
            click("tvDesck", editor->desck("ceh"));
            click("tvMenu", editor->element("grafiki"));
            QCOMPARE(enabled(editor, desckActions), QString());
            QCOMPARE(enabled(editor, menuActions), QString());
            QVERIFY(QMetaObject::invokeMethod(editor.module.get(), "on_cancel_pressed"));
            click("tvDesck", editor->desck("ceh"));
            click("tvMenu", editor->element("grafiki"));
            QVERIFY(editor.action("actAddDescktop")->isEnabled());
            QVERIFY(editor.action("actDeleteElem")->isEnabled());
            // Cancelling has made other rows current.
            editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
            editor.view("tvMenu")->setCurrentIndex(editor->element("grafiki"));
        }
    }

    void desktopContextMenu() {
        StartedPlant editor("armop");
        editor.action("actAddDescktop")->setEnabled(false);
        bool hasIcon = false;
        QCOMPARE(
            shownMenu(editor, "tvDesck", "Создать", &hasIcon),
            QStringList({"Создать[actAddDescktop,actAddFoldertvDesck]", "actChangeDescktopOrFolder",
                         "-", "actCopyDescktopOrFolder", "actPasteDescktopOrFolder", "-",
                         "actDeleteFromtvDesck", "-", "previewDesktop"}));
        QVERIFY(hasIcon);
        // The states are those of the current row again.
        QVERIFY(editor.action("actAddDescktop")->isEnabled());

        editor.view("tvDesck")->setCurrentIndex(QModelIndex());
        editor.action("actAddDescktop")->setEnabled(false);
        QVERIFY(!shownMenu(editor, "tvDesck", "Создать", &hasIcon).isEmpty());
        QVERIFY(!editor.action("actAddDescktop")->isEnabled());
    }

    void menuContextMenuLeavesTheActionsAsTheyAre() {
        StartedPlant editor("armop", "grafiki");
        editor.action("actDeleteElem")->setEnabled(false);
        bool hasIcon = false;
        QCOMPARE(shownMenu(editor, "tvMenu", "Новый элемент", &hasIcon),
                 QStringList({"Новый элемент[actNewElemFolder,actNewElemModul,actNewElemFunction,"
                              "actNewElemFile]",
                              "-", "actCutMenuElement", "actCopyMenuElement", "actPasteMenuElement",
                              "-", "actDeleteElem"}));
        QVERIFY(hasIcon);
        QVERIFY(!editor.action("actDeleteElem")->isEnabled());
    }

    void onlyOfferedFormatsAreThere() {
        TestStore store;
        TestHost host(store);
        EditorUnderTest<ClipboardProbe> editor(host, "Menu");
        QVERIFY(!editor->checkMimeType("OrvoMenu/menu"));
        offer("OrvoMenu/menu");
        QVERIFY(editor->checkMimeType("OrvoMenu/menu"));
        QVERIFY(!editor->checkMimeType("OrvoMenu/descktop"));
        QClipboard* clipboard = std::exchange(editor->m_clipboard, nullptr);
        QVERIFY(!editor->checkMimeType("OrvoMenu/menu"));
        editor->m_clipboard = clipboard;
    }

private:
    /// The enabled ones, joined by blanks, without their prefix.
    QString enabled(MenuEditor& editor, const QStringList& names) const {
        QStringList on;
        for (const QString& name : names)
            if (editor.action(qPrintable(name))->isEnabled())
                on << name.mid(3);
        return on.join(' ');
    }

    /// Opens the context menu of a view and closes it again.
    QStringList shownMenu(MenuEditor& editor, const char* view, const char* iconOf, bool* hasIcon) {
        QStringList entries;
        QPoint menuPosition;
        // This platform lets a pop-up menu take the focus, which no window system does: the view
        // must not have it.
        editor.view("tvProp")->setFocus();
        QTimer::singleShot(0, this, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            entries = describe(menu);
            menuPosition = menu->pos();
            for (const QAction* action : menu->actions())
                if (action->text() == iconOf)
                    *hasIcon = !action->icon().isNull();
            menu->close();
        });
        const QPoint point(5, 5);
        emit editor.view(view)->customContextMenuRequested(point);
        if (menuPosition != editor.view(view)->viewport()->mapToGlobal(point))
            qFatal("the menu stands at %d, %d", menuPosition.x(), menuPosition.y());
        return entries;
    }
};

QTEST_MAIN(TestMenuActions)
#include "tst_menu_actions.moc"
