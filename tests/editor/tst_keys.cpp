// The keys of both editors: every action has one and stands in a menu, the same key means the same
// in both, a Russian keyboard types them too, and the guide lists them.
#include "tests/menu/MenuProbe.h"
#include "tests/menu/WindowHands.h"
#include "tests/resources/ResProbe.h"

#include "editor/Commands.h"
#include "frame/Keys.h"
#include "frame/QtCompat.h"
#include "models/Passport.h"

#include <QCheckBox>
#include <QFile>
#include <QLibraryInfo>
#include <QMenu>
#include <QSet>
#include <QTimer>
#include <QToolButton>
#include <QTranslator>
#include <QWindow>

using namespace orvo::test;
namespace keys = orvo::keys;

namespace {

void fillCatalogue(TestStore& store) {
    fillPlant(store);
    addFolder(store, "fmod", 1, nullptr, "модули");
    addFolder(store, "fsub", 1, "fmod", "Внутри");
    addFolder(store, "ffun", 2, nullptr, "функции");
    addFolder(store, "ffrm", 3, nullptr, "формы отображения");
    addItem(store, "m1", 1, "fsub", "One", "Первый");
}

class Menu : public HostOnFilledStore, public MenuEditor {
public:
    Menu() : HostOnFilledStore(fillCatalogue), MenuEditor(host, "Menu") {}
    bool open() {
        if (!start())
            return false;
        module->activateWindow();
        if (!QTest::qWaitForWindowActive(module.get()))
            return false;
        view("tvDesck")->setFocus();
        view("tvDesck")->setCurrentIndex(module->desck("armop"));
        view("tvMenu")->expandAll();
        return true;
    }
    /// The focus as F6 gives it, and a row.
    QTreeView* at(const char* row) {
        QTreeView* menu = view("tvMenu");
        menu->setCurrentIndex(module->element(row)); // before the focus chooses the first one
        menu->setFocus(Qt::ShortcutFocusReason);
        return menu;
    }
    /// The passport of a row, with the focus as F6 gives it.
    QTreeView* passportOf(const char* row) {
        at(row);
        view("tvProp")->setFocus(Qt::ShortcutFocusReason);
        return view("tvProp");
    }
    /// The open field of the passport's current row, or null.
    QWidget* field() const {
        const QTreeView* passport = view("tvProp");
        return passport->indexWidget(passport->currentIndex());
    }
    QString parentOf(const char* row) {
        return module->m_menuModel->getItemKeyLink(module->element(row).parent());
    }
};

class Resources : public HostOnFilledStore, public ResEditor {
public:
    Resources() : HostOnFilledStore(fillCatalogue), ResEditor(host, "Resources") {}
};

/// What a client puts into its menus for a window.
QSet<QString> menuEntries(const QWidget& window) {
    QSet<QString> ids;
    for (const QAction* action : window.findChildren<QAction*>())
        if (action->property(orvo::editor::menuProperty).isValid())
            ids << (action->objectName().startsWith("entry_")
                        ? action->objectName().mid(6)
                        : action->property(orvo::editor::commandProperty).toString());
    return ids;
}

/// The actions of a window that have no key, or none that a menu shows.
QStringList withoutKey(const QWidget& window) {
    const QSet<QString> entries = menuEntries(window);
    QStringList bare;
    for (const QAction* action : window.findChildren<QAction*>()) {
        const QString name = action->objectName();
        if (!name.startsWith("act") && name != "previewDesktop")
            continue;
        const QStringList ids =
            action->property(orvo::editor::commandProperty).toString().split(' ');
        bool good = !ids.first().isEmpty() && !action->shortcut().isEmpty();
        for (const QString& id : ids)
            good = good && entries.contains(id);
        if (!good)
            bare << name;
    }
    return bare;
}

QString guidesTable() {
    QString table = QStringLiteral("| Клавиша | Команда | Что делает |\n| --- | --- | --- |\n");
    for (const keys::Command& one : keys::commands) {
        QStringList shown;
        for (const QString& key : QString(one.keys).split(' '))
            shown << QKeySequence::fromString(key).toString(QKeySequence::NativeText);
        table += QStringLiteral("| %1 | %2 | %3 |\n")
                     .arg(shown.join(", "), keys::text(one), QString::fromUtf8(one.use));
    }
    return table;
}

} // namespace

class TestKeys : public QObject {
    Q_OBJECT
private slots:
    void everyActionHasAKeyAndAMenuEntry() {
        Menu menu;
        QVERIFY(menu.start());
        QCOMPARE(withoutKey(*menu.module), QStringList());
        Resources resources;
        QVERIFY(resources.start());
        // Copying resources is no operation: the action does nothing.
        QCOMPARE(withoutKey(*resources.module), QStringList("actCopy"));
    }

    void theListIsSound() {
        QSet<QString> ids;
        for (const keys::Command& one : keys::commands) {
            QVERIFY2(!ids.contains(one.id), one.id);
            ids << one.id;
            for (const QKeySequence& sequence : keys::sequences(one)) {
                const int key = orvo::qt::onlyKey(sequence);
                QVERIFY2(key != 0 && key != Qt::Key_unknown, one.id);
            }
        }
    }

    void aRussianKeyboardTypesLatinLetters() {
        const keys::Command& copy = *keys::command(keys::copy);
        // The key "C" of a keyboard that has the Russian layout alone.
        QVERIFY(keys::matches(QKeyEvent(QEvent::KeyPress, 0x0421, Qt::ControlModifier), copy));
        QVERIFY(keys::matches(QKeyEvent(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier), copy));
        QVERIFY(!keys::matches(QKeyEvent(QEvent::KeyPress, 0x0421, Qt::NoModifier), copy));
        QVERIFY(!keys::matches(QKeyEvent(QEvent::KeyPress, 0x042F, Qt::ControlModifier), copy));
        QCOMPARE(keys::sequences("Ctrl+S"),
                 QList<QKeySequence>({QKeySequence("Ctrl+S"), QKeySequence(Qt::CTRL | 0x042B)}));
        QCOMPARE(keys::sequences("F4"), QList<QKeySequence>({QKeySequence("F4")}));
    }

    void theGuideListsThem() {
        QTranslator russian; // the client's menus show the keys by it
        QVERIFY(russian.load("qtbase_ru", QLibraryInfo::location(QLibraryInfo::TranslationsPath)));
        QVERIFY(QCoreApplication::installTranslator(&russian));
        QFile guide(qEnvironmentVariable("ORVO_SOURCE_DIR") + "/docs/user-guide.md");
        QVERIFY(guide.open(QIODevice::ReadWrite));
        QString text = QString::fromUtf8(guide.readAll());
        const int from = text.indexOf("| Клавиша | Команда |");
        QVERIFY(from >= 0);
        const int to = text.indexOf("\n\n", from) + 1;
        if (qEnvironmentVariableIsSet("ORVO_WRITE_GUIDE")) {
            text.replace(from, to - from, guidesTable());
            guide.resize(0);
            guide.write(text.toUtf8());
        } else {
            QCOMPARE(text.mid(from, to - from), guidesTable());
        }
    }

    // ---------------------------------------------------------------------------------------------
    // The menu editor

    void keysActWhereTheFocusCameBackByKey() {
        Menu menu;
        QVERIFY(menu.open());
        menu.at("trend");
        menu.view("tvProp")->setFocus();
        QVERIFY(!menu.action("actCopyMenuElement")->isEnabled());
        menu.view("tvMenu")->setFocus(Qt::ShortcutFocusReason);
        QTest::keyClick(menu.view("tvMenu"), Qt::Key_C, Qt::ControlModifier);
        QVERIFY(QGuiApplication::clipboard()->mimeData()->hasFormat("OrvoMenu/menu"));
    }

    void theCyrillicLetterOfAKeyWorks() {
        Menu menu;
        QVERIFY(menu.open());
        QGuiApplication::clipboard()->clear();
        QTreeView* view = menu.at("trend");
        QTest::sendKeyEvent(QTest::Click, view, Qt::Key(0x0421), QString(), Qt::ControlModifier);
        QVERIFY(QGuiApplication::clipboard()->mimeData()->hasFormat("OrvoMenu/menu"));
    }

    void insertMakesANewFolderOrOffersModules() {
        Menu menu;
        QVERIFY(menu.open());
        // Not on a folder: into the folder in which the row stands.
        QTest::keyClick(menu.at("trend"), Qt::Key_Insert, Qt::ShiftModifier);
        QCOMPARE(menu->m_editMode, int(MenuProbe::NewElement));
        QCOMPARE(menu->m_menuModel->getItemKeyLink(menu.view("tvMenu")->currentIndex().parent()),
                 QString("grafiki"));
        // Never saved, so there is nothing to ask.
        QTest::keyClick(menu.view("tvMenu"), Qt::Key_Delete);
        QCOMPARE(menu->m_editMode, 0);
        QVERIFY(!boxStands(*menu.module));

        QTest::keyClick(menu.at("trend"), Qt::Key_Insert);
        auto* pop = menu.module->findChild<CPopTemplate*>();
        QVERIFY(pop && pop->isVisible());
        pop->hide();
    }

    void newDesktopsAreMadeAndNamedByKeys() {
        Menu menu;
        QVERIFY(menu.open());
        QTreeView* desck = menu.view("tvDesck");
        desck->setFocus(Qt::ShortcutFocusReason);
        desck->setCurrentIndex(menu->desck("sklad"));
        QTest::keyClick(desck, Qt::Key_Insert);
        QCOMPARE(menu->m_editMode, int(MenuProbe::NewDesck));
        QTest::keyClick(desck, Qt::Key_F2);
        QWidget* editor = desck->indexWidget(desck->currentIndex());
        QVERIFY(editor);
        QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
        typeText(editor, QStringLiteral("Новый пост"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTest::keyClick(desck, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(menu->m_editMode, 0);
        menu.host.deliver(*menu.module);
        QVERIFY(findRow(*desck->model(), "Новый пост").isValid() ||
                !desck->model()
                     ->match(desck->model()->index(0, 0), Qt::DisplayRole, "Новый пост", 1,
                             Qt::MatchExactly | Qt::MatchRecursive)
                     .isEmpty());
    }

    void altMovesElementsUpDownInAndOut() {
        Menu menu;
        QVERIFY(menu.open());
        const auto press = [&](const char* row, Qt::Key key) {
            QTest::keyClick(menu.at(row), key, Qt::AltModifier);
            menu.host.deliver(*menu.module);
        };
        press("calc", Qt::Key_Up);
        QCOMPARE(menu->element("calc").row(), 0);
        press("calc", Qt::Key_Down);
        QCOMPARE(menu->element("calc").row(), 1);
        press("propal", Qt::Key_Right);
        QCOMPARE(menu.parentOf("propal"), QString("grafiki"));
        QVERIFY(menu->element("propal").row() > menu->element("calc").row());
        press("form", Qt::Key_Left);
        QCOMPARE(menu.parentOf("form"), QString("grafiki"));
        QCOMPARE(menu->element("form").row(), menu->element("glubzhe").row() + 1);
    }

    void anElementThatCannotBeMovedStaysCurrent() {
        Menu menu;
        QVERIFY(menu.open());
        const QModelIndex top = menu.view("tvMenu")->model()->index(0, 0);
        const QModelIndex first = top.model()->index(0, 0, top);
        const int last = first.model()->rowCount(top) - 1;
        const auto stays = [&](const QModelIndex& row, Qt::Key key) {
            QTreeView* view = menu.view("tvMenu");
            view->setFocus();
            view->setCurrentIndex(row);
            QTest::keyClick(view, key, Qt::AltModifier);
            menu.host.deliver(*menu.module);
            return view->currentIndex() == row;
        };
        QVERIFY(stays(menu->element("shema"), Qt::Key_Left)); // no folder, which closes first
        QVERIFY(stays(first, Qt::Key_Left));
        QVERIFY(stays(first, Qt::Key_Right));
        QVERIFY(stays(first, Qt::Key_Up));
        QVERIFY(stays(first.siblingAtRow(last), Qt::Key_Down));
        for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right})
            QVERIFY(stays(top, key));
        QVERIFY(menu.host.writes().calls.isEmpty());
    }

    void aMenuOpenedByKeyKeepsItsActions() {
        Menu menu;
        QVERIFY(menu.open());
        QTreeView* view = menu.at("trend");
        menu.view("tvProp")->setFocus();
        view->setFocus();
        QVERIFY(!menu.action("actDeleteElem")->isEnabled());
        bool wasOn = false, isOn = false;
        QTimer::singleShot(0, this, [&] {
            auto* pop = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!pop)
                return;
            wasOn = menu.action("actDeleteElem")->isEnabled();
            // Keys that walk through the menu take the focus into it.
            QTest::keyClick(pop, Qt::Key_Down);
            QTest::keyClick(pop, Qt::Key_Down);
            isOn = menu.action("actDeleteElem")->isEnabled();
            pop->close();
        });
        QTest::keyClick(view, Qt::Key_F10, Qt::ShiftModifier);
        QVERIFY(wasOn);
        QVERIFY(isOn);
    }

    void whoMayOnlyReadChangesNothingByKeys() {
        Menu menu;
        menu.host.m_mayWrite = false;
        QVERIFY(menu.open());
        for (const Qt::Key key : {Qt::Key_Insert, Qt::Key_Delete, Qt::Key_F2})
            for (const Qt::KeyboardModifier with : {Qt::NoModifier, Qt::ShiftModifier}) {
                QTest::keyClick(menu.at("trend"), key, with);
                QTest::keyClick(menu.view("tvDesck"), key, with);
            }
        for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right})
            QTest::keyClick(menu.at("calc"), key, Qt::AltModifier);
        QCOMPARE(menu->m_editMode, 0);
        QVERIFY(!boxStands(*menu.module));
        QVERIFY(menu.host.writes().calls.isEmpty());
    }

    // ---------------------------------------------------------------------------------------------
    // The passport

    void thePassportIsWalkedAndTypedIn() {
        Menu menu;
        QVERIFY(menu.open());
        QTest::keyClick(menu.at("trend"), Qt::Key_F2);
        QTreeView* passport = menu.view("tvProp");
        const auto field = [&] { return passport->indexWidget(passport->currentIndex()); };
        const auto row = [&] {
            return passport->currentIndex().siblingAtColumn(4).data().toString();
        };
        QCOMPARE(row(), QString("name"));
        QVERIFY(field());
        QTest::keyClick(field(), Qt::Key_A, Qt::ControlModifier);
        typeText(field(), QStringLiteral("Кривая"));
        QStringList walked;
        for (int i = 0; i < 6; ++i) {
            QTest::keyClick(field() ? field() : passport, Qt::Key_Tab);
            walked << row();
        }
        QCOMPARE(walked.join(' '), QString("object params onecopy icon separator separator"));
        // Walking changed what was typed and nothing else.
        QCOMPARE(menu->m_propModel->getRowValue("name").toString(), QString("Кривая"));
        QVERIFY(!menu->m_propModel->getRowValue("onecopy").toBool());
        QVERIFY(!menu->m_propModel->getRowValue("separator").toBool());

        // Only the blank turns a check box over.
        for (const Qt::Key key : {Qt::Key_F2, Qt::Key_Return, Qt::Key_X})
            QTest::keyClick(passport, key);
        QVERIFY(!menu->m_propModel->getRowValue("separator").toBool());
        QTest::keyClick(passport, Qt::Key_Space);
        QVERIFY(menu->m_propModel->getRowValue("separator").toBool());

        QTest::keyClick(passport, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(menu->m_editMode, 0);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu->element("trend").data().toString(), QString("Кривая"));
    }

    void theRowOfThePassportIsCurrentAfterASave() {
        Menu menu;
        QVERIFY(menu.open());
        QTreeView* passport = menu.passportOf("trend");
        passport->setCurrentIndex(menu->m_propModel->findIndexByKey("params").siblingAtColumn(1));
        QVERIFY(menu.field());
        typeText(menu.field(), QStringLiteral("7"));
        QTest::keyClick(menu.field(), Qt::Key_Return);
        QTRY_VERIFY(!menu.field());
        QCOMPARE(menu->m_editMode, int(MenuProbe::EditElement));
        QTest::keyClick(passport, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(menu->m_editMode, 0);
        const QPersistentModelIndex before = passport->currentIndex();
        menu.host.deliver(*menu.module);
        QVERIFY(!before.isValid()); // the rows are others
        QTRY_COMPARE(passport->currentIndex().siblingAtColumn(4).data().toString(),
                     QString("params"));
        QVERIFY(passport->hasFocus());
    }

    void enterTakesAFieldAndClosesIt() {
        Menu menu;
        QVERIFY(menu.open());
        menu.at("trend");
        QTreeView* passport = menu.view("tvProp");
        passport->setFocus(Qt::ShortcutFocusReason);
        const auto field = [&] { return passport->indexWidget(passport->currentIndex()); };
        QTest::keyClick(passport, Qt::Key_Return);
        QVERIFY(field());
        typeText(field(), QStringLiteral("Кривая"));
        QTest::keyClick(field(), Qt::Key_Return);
        QTRY_VERIFY(!field());
        QVERIFY(passport->hasFocus());
        QCOMPARE(menu->m_editMode, int(MenuProbe::EditElement));
        // Again it opens.
        QTest::keyClick(passport, Qt::Key_Return);
        QVERIFY(field());
    }

    /// It would hold back what others write as long as the engineer is away.
    void aSavedFieldDoesNotStayOpen() {
        Menu menu;
        QVERIFY(menu.open());
        menu.at("trend");
        QTreeView* passport = menu.view("tvProp");
        passport->setFocus(Qt::ShortcutFocusReason);
        const auto field = [&] { return passport->indexWidget(passport->currentIndex()); };
        QTest::keyClick(passport, Qt::Key_F2);
        typeText(field(), QStringLiteral("Кривая"));
        QTest::keyClick(field(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(menu->m_editMode, 0);
        QTRY_VERIFY(!field());
        QVERIFY(passport->hasFocus());
        QCOMPARE(menu->m_editMode, 0);
    }

    void tabOutOfATypedFieldTurnsNoCheckBoxOver() {
        Menu menu;
        QVERIFY(menu.open());
        QTreeView* passport = menu.view("tvProp");
        const auto row = [&] {
            return passport->currentIndex().siblingAtColumn(4).data().toString();
        };
        // Onto the one below the field, and onto the one above the other field.
        for (const auto& [key, check] :
             {std::pair(Qt::Key_Tab, "onecopy"), std::pair(Qt::Key_Backtab, "object")}) {
            QTest::keyClick(menu.at("trend"), Qt::Key_F2);
            passport->setCurrentIndex(
                menu->m_propModel->findIndexByKey("params").siblingAtColumn(1));
            QWidget* field = passport->indexWidget(passport->currentIndex());
            QVERIFY(field);
            typeText(field, "7");
            QTest::keyClick(field, key);
            QCOMPARE(row(), QString(check));
            QVERIFY(!menu->m_propModel->getRowValue("onecopy").toBool());
            QTest::keyClick(passport, Qt::Key_Escape);
            QTest::keyClick(passport, Qt::Key_Escape);
            QCOMPARE(menu->m_editMode, 0);
        }
    }

    void aSaveLeavesTheFocusInThePassport() {
        Menu menu;
        QVERIFY(menu.open());
        QTest::keyClick(menu.at("trend"), Qt::Key_F2);
        QTreeView* passport = menu.view("tvProp");
        QWidget* field = passport->indexWidget(passport->currentIndex());
        QVERIFY(field && field->hasFocus());
        typeText(field, "7");
        QTest::keyClick(field, Qt::Key_S, Qt::ControlModifier);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu->m_editMode, 0);
        QVERIFY(passport->hasFocus() || passport->isAncestorOf(QApplication::focusWidget()));
        // And what the row permits is on.
        QTRY_VERIFY(menu.action("actDeleteElem")->isEnabled());
    }

    void keysHeldDownDoNotChangeWhatIsSelected() {
        Menu menu;
        QVERIFY(menu.open());
        QTreeView* view = menu.at("trend");
        const auto selected = [&] {
            QStringList keys;
            for (const QModelIndex& row : view->selectionModel()->selectedRows())
                keys << menu->m_menuModel->getItemKeyLink(row);
            return keys.join(' ');
        };
        QWindow* window = menu.module->windowHandle();
        for (const auto& [key, with] : {std::pair(Qt::Key_Control, Qt::ControlModifier),
                                        std::pair(Qt::Key_Shift, Qt::ShiftModifier)}) {
            QTest::keyPress(window, key, with);
            QVERIFY(QGuiApplication::keyboardModifiers() & with);
            menu.store.update("Menu", {{"KeyLink", "trend"}, {"params", QString("1")}});
            menu.host.deliver(*menu.module);
            QCOMPARE(selected(), QString("trend"));
            menu.store.insert("Menu", {{"KeyLink", QString("new%1").arg(with)},
                                       {"FolderKey", QString("armop")},
                                       {"parent", QString("grafiki")},
                                       {"caption", QString("Новый")},
                                       {"order_", 9000}});
            menu.host.deliver(*menu.module);
            QCOMPARE(selected(), QString("new%1").arg(with));
            QTest::keyRelease(window, key);
            view->setCurrentIndex(menu->element("trend"));
        }
    }

    void aLetterOpensTheFieldFromAnywhereInTheRow() {
        Menu menu;
        QVERIFY(menu.open());
        menu.at("trend");
        QTreeView* passport = menu.view("tvProp");
        passport->setFocus(Qt::ShortcutFocusReason);
        passport->setCurrentIndex(menu->m_propModel->findIndexByKey("params"));
        typeText(passport, "7");
        QCOMPARE(menu->m_propModel->getRowValue("params").toString(), QString("7"));
        QTest::keyClick(passport->indexWidget(passport->currentIndex()), Qt::Key_Escape);
        QTest::keyClick(passport, Qt::Key_Escape);
        QCOMPARE(menu->m_editMode, 0);
        QCOMPARE(menu->m_propModel->getRowValue("params").toString(), QString());
    }

    void inAFieldWhatWasTypedIsTakenBackAndDoneAgain() {
        Menu menu;
        QVERIFY(menu.open());
        QTest::keyClick(menu.at("trend"), Qt::Key_F2);
        QTreeView* passport = menu.view("tvProp");
        auto* field = qobject_cast<QLineEdit*>(passport->indexWidget(passport->currentIndex()));
        QVERIFY(field);
        const QString before = field->text();
        const auto shown = [&] { return menu->m_propModel->getRowValue("name").toString(); };
        typeText(field, QStringLiteral("Новое"));
        QCOMPARE(shown(), QStringLiteral("Новое"));
        while (field->isUndoAvailable())
            QTest::keyClick(field, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(field->text(), before);
        QCOMPARE(shown(), before);
        while (field->isRedoAvailable())
            QTest::keyClick(field, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(shown(), QStringLiteral("Новое"));
    }

    void altDownAndOneClickOpenThePicker() {
        Menu menu;
        QVERIFY(menu.open());
        menu.at("trend");
        QTreeView* passport = menu.view("tvProp");
        const QModelIndex icon = menu->m_propModel->findIndexByKey("icon").siblingAtColumn(1);
        passport->setFocus(Qt::ShortcutFocusReason);
        QTest::keyClick(passport, Qt::Key_Down);
        passport->setCurrentIndex(icon.siblingAtColumn(0));
        QTest::keyClick(passport, Qt::Key_Down, Qt::AltModifier);
        auto* pop = menu.module->findChild<CPopTemplate*>();
        QVERIFY(pop && pop->isVisible());
        pop->hide();

        passport->setCurrentIndex(menu->m_propModel->findIndexByKey("name"));
        const QRect cell = passport->visualRect(icon);
        QTest::mouseClick(passport->viewport(), Qt::LeftButton, {},
                          QPoint(cell.right() - 5, cell.center().y()));
        QVERIFY(pop->isVisible());
        pop->hide();
        // Beside the button a click opens the field as before.
        passport->setCurrentIndex(menu->m_propModel->findIndexByKey("name"));
        QTest::mouseClick(passport->viewport(), Qt::LeftButton, {},
                          QPoint(cell.left() + 5, cell.center().y()));
        QVERIFY(!pop->isVisible());
    }

    void oneValueGoesIntoAllSelectedRows() {
        Menu menu;
        QVERIFY(menu.open());
        QTreeView* view = menu.at("trend");
        QTest::keyClick(view, Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(view->selectionModel()->selectedRows().size(), 2);
        QTreeView* passport = menu.view("tvProp");
        passport->setFocus(Qt::ShortcutFocusReason);
        passport->setCurrentIndex(menu->m_propModel->findIndexByKey("params").siblingAtColumn(1));
        QWidget* field = passport->indexWidget(passport->currentIndex());
        QVERIFY(field);
        typeText(field, "7");
        QTest::keyClick(field, Qt::Key_Return);
        QTest::keyClick(passport, Qt::Key_Return, Qt::ControlModifier);
        menu.host.deliver(*menu.module);
        for (const char* key : {"trend", "calc"})
            QCOMPARE(menu->element(key)
                         .siblingAtColumn(orvo::menu::MenuColumn::Params)
                         .data()
                         .toString(),
                     QString("7"));
        QCOMPARE(menu->element("calc").data().toString(), QStringLiteral("Расчёт"));
    }

    void thePassportOfSeveralRowsTellsWhereTheyDiffer() {
        Menu menu;
        menu.store.update("Menu", {{"KeyLink", "trend"}, {"params", QString("1")}});
        QVERIFY(menu.open());
        QTreeView* view = menu.at("trend");
        const auto isMixed = [&](const char* row) {
            return menu->m_propModel->isMixed(
                menu->m_propModel->findIndexByKey(QString(row)).siblingAtColumn(1));
        };
        QVERIFY(!isMixed("params"));
        QTest::keyClick(view, Qt::Key_Down, Qt::ShiftModifier);
        QTRY_VERIFY(isMixed("params"));
        QCOMPARE(menu->m_propModel->selectedCount(), 2);
        QVERIFY(!isMixed("separator")); // is off on both
        QVERIFY(!isMixed("name"));      // each has its own
        const QModelIndex value =
            menu->m_propModel->findIndexByKey(QString("params")).siblingAtColumn(1);
        QCOMPARE(value.data(Qt::AccessibleTextRole).toString(), QString("разные значения"));
        view->setCurrentIndex(menu->element("trend"));
        QTRY_VERIFY(!isMixed("params"));
        QCOMPARE(menu->m_propModel->selectedCount(), 1);
    }

    void anEditOfSeveralRowsIsWrittenToAllInOneCall() {
        Menu menu;
        QVERIFY(menu.open());
        QTreeView* view = menu.at("trend");
        QTest::keyClick(view, Qt::Key_Down, Qt::ShiftModifier);
        QTreeView* passport = menu.view("tvProp");
        passport->setFocus(Qt::ShortcutFocusReason);
        const auto edit = [&](const char* row, const QString& text) {
            passport->setCurrentIndex(
                menu->m_propModel->findIndexByKey(QString(row)).siblingAtColumn(1));
            QWidget* field = passport->indexWidget(passport->currentIndex());
            QVERIFY(field);
            QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
            typeText(field, text);
        };
        const auto value = [&](const char* key, int column) {
            return menu->element(key).siblingAtColumn(column).data().toString();
        };
        using orvo::menu::MenuColumn;
        const int writes = int(menu.host.writes().calls.size());
        edit("params", "7");
        edit("name", QStringLiteral("Обе"));
        QVERIFY(!menu->m_propModel->isMixed(
            menu->m_propModel->findIndexByKey(QString("params")).siblingAtColumn(1)));
        QTest::keyClick(passport->indexWidget(passport->currentIndex()), Qt::Key_Return);
        QTest::keyClick(passport, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(int(menu.host.writes().calls.size()), writes + 1);
        menu.host.deliver(*menu.module);
        QCOMPARE(value("trend", MenuColumn::Params), QString("7"));
        QCOMPARE(value("calc", MenuColumn::Params), QString("7"));
        QCOMPARE(view->selectionModel()->selectedRows().size(), 2); // for the next value
        QCOMPARE(view->currentIndex(), menu->element("calc"));
        QTRY_COMPARE(menu->m_propModel->selectedCount(), 2);
        // A name is of one row.
        QCOMPARE(value("calc", MenuColumn::Caption), QStringLiteral("Обе"));
        QCOMPARE(value("trend", MenuColumn::Caption), QStringLiteral("Тренд"));
        QCOMPARE(value("trend", MenuColumn::MenuResKey), QString("rtrend"));
    }

    void whatIsDroppedIsWrittenToNone() {
        Menu menu;
        QVERIFY(menu.open());
        QTreeView* view = menu.at("trend");
        QTest::keyClick(view, Qt::Key_Down, Qt::ShiftModifier);
        orvo::editPassportValue(*menu->m_propModel, QStringLiteral("params"), QString("7"));
        QTest::mousePress(menu->findChild<QToolButton*>("cancelButton"), Qt::LeftButton);
        QCOMPARE(menu->m_editMode, 0);
        // The next edit is of the row that is selected then.
        view->setCurrentIndex(menu->element("calc"));
        orvo::editPassportValue(*menu->m_propModel, QStringLiteral("params"), QString("8"));
        QTest::mousePress(menu->findChild<QToolButton*>("saveButton"), Qt::LeftButton);
        menu.host.deliver(*menu.module);
        const auto params = [&](const char* key) {
            return menu->element(key)
                .siblingAtColumn(orvo::menu::MenuColumn::Params)
                .data()
                .toString();
        };
        QCOMPARE(params("calc"), QString("8"));
        QCOMPARE(params("trend"), QString());
    }

    void actionsAreOnAfterASave() {
        Menu menu;
        QVERIFY(menu.open());
        QTest::keyClick(menu.at("grafiki"), Qt::Key_Insert, Qt::ShiftModifier);
        QVERIFY(!menu.action("actNewElemModul")->isEnabled());
        QTest::mousePress(menu->findChild<QToolButton*>("saveButton"), Qt::LeftButton);
        menu.host.deliver(*menu.module);
        QTRY_VERIFY(menu.action("actNewElemModul")->isEnabled());
        QVERIFY(menu.action("actDeleteElem")->isEnabled());
    }

    // ---------------------------------------------------------------------------------------------
    // The resource editor

    void resourcesAreMadeByTheSameKeys() {
        Resources editor;
        QVERIFY(editor.start());
        QTreeView* tree = editor.view("tvRes");
        tree->setFocus();
        tree->expandAll();
        tree->setCurrentIndex(editor->row("fmod"));
        QTest::keyClick(tree, Qt::Key_Insert);
        QCOMPARE(editor->m_editState, uint32_t(ResProbe::NewRow));
        QCOMPARE(tree->currentIndex().data().toString(), QString("новый модуль"));
        QTest::keyClick(tree, Qt::Key_Escape);
        QCOMPARE(editor->m_editState, uint32_t(ResProbe::Idle));
        tree->setCurrentIndex(editor->row("fmod"));
        QTest::keyClick(tree, Qt::Key_Insert, Qt::ShiftModifier);
        QCOMPARE(tree->currentIndex().data().toString(), QString("новая папка"));
        QTest::keyClick(tree, Qt::Key_Delete);
        QCOMPARE(editor->m_editState, uint32_t(ResProbe::Idle));
        tree->setCurrentIndex(editor->row("m1"));
        QTest::keyClick(tree, Qt::Key_F2);
        QTreeView* passport = editor.view("tvProp");
        QVERIFY(passport->indexWidget(passport->currentIndex()));
        QCOMPARE(passport->currentIndex().siblingAtColumn(4).data().toString(), QString("caption"));
    }

    void anEditOfSeveralResourcesIsWrittenToAll() {
        Resources editor;
        addItem(editor.store, "m2", 1, "fsub", "Two", "Второй");
        QVERIFY(editor.start());
        QTreeView* tree = editor.view("tvRes");
        tree->expandAll();
        tree->setCurrentIndex(editor->row("m1"));
        tree->selectionModel()->select(editor->row("m2"),
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QCOMPARE(tree->selectionModel()->selectedRows().size(), 2);
        orvo::editPassportValue(*editor->m_propModel, QStringLiteral("params"), QString("7"));
        orvo::editPassportValue(*editor->m_propModel, QStringLiteral("caption"), QString("Один"));
        QTest::mousePress(editor->findChild<QToolButton*>("saveButton"), Qt::LeftButton);
        editor.host.deliver(*editor.module);
        for (const char* key : {"m1", "m2"})
            QCOMPARE(editor->text(key, ResColumn::Params), QString("7"));
        QCOMPARE(tree->selectionModel()->selectedRows().size(), 2);
        QCOMPARE(editor->text("m1", ResColumn::Caption), QString("Один"));
        QCOMPARE(editor->text("m2", ResColumn::Caption), QString("Второй"));
    }

    void aLockSaysWhereItIsTakenOff() {
        Resources editor;
        addUser(editor.store, "u1", "petrova", "Петрова", "Анна");
        addItem(editor.store, "form", 3, "ffrm", "Boiler", "Котёл");
        editor.store.update("MenuResource", {{"KeyLink", "form"}, {"UsersKey", "u1"}});
        QVERIFY(editor.start());
        QTreeView* tree = editor.view("tvRes");
        tree->setFocus();
        tree->expandAll();
        tree->setCurrentIndex(editor->row("form"));
        const int writes = int(editor.host.writes().calls.size());
        QTest::keyClick(tree, Qt::Key_U, Qt::ControlModifier);
        QVERIFY(boxStands(*editor.module));
        QVERIFY(boxText(*editor.module).contains("Петрова"));
        QVERIFY(boxText(*editor.module).contains("orvo-admin unlock Boiler"));
        QVERIFY(!editor.module->m_popMessageBox->isQuestion());
        QCOMPARE(int(editor.host.writes().calls.size()), writes);
    }
};

QTEST_MAIN(TestKeys)
#include "tst_keys.moc"
