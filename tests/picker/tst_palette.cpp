// The picker beside the menu editor: as a palette it stays, and what is dragged out of it becomes
// elements of the menu.
#include "tests/menu/MenuProbe.h"
#include "tests/menu/WindowHands.h"
#include "tests/resources/ResProbe.h"

#include "picker/PopObjectList.h"

#include <QComboBox>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

using namespace orvo::test;

namespace {

void fillPalette(TestStore& store) {
    fillPlant(store);
    addFolder(store, "fmod", 1, nullptr, "модули");
    addFolder(store, "fsub", 1, "fmod", "Внутри");
    addFolder(store, "ffun", 2, nullptr, "функции");
    addFolder(store, "ffrm", 3, nullptr, "формы отображения");
    addFolder(store, "ficons", 4, nullptr, "icons");
    addItem(store, "m1", 1, "fsub", "One", "Первый");
    addItem(store, "m2", 1, "fmod", "Two", "Второй");
    addItem(store, "f1", 2, "ffun", "Sum", "Сумма");
}

class Menu : public HostOnFilledStore, public MenuEditor {
public:
    Menu() : HostOnFilledStore(fillPalette), MenuEditor(host, "Menu") {}
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
    CPopObjectList* palette() const { return list(true); }
    /// That for one answer.
    CPopObjectList* picker() const { return list(false); }
    CPopObjectList* list(bool isPalette) const {
        for (CPopObjectList* list : module->findChildren<CPopObjectList*>())
            if (list->isPalette() == isPalette)
                return list;
        return nullptr;
    }
    /// Asks for the icons, from the passport.
    void chooseIcon() {
        view("tvProp")->setFocus(Qt::ShortcutFocusReason);
        view("tvProp")->setCurrentIndex((*this)->m_propModel->findIndexByKey("icon"));
        QTest::keyClick(view("tvProp"), Qt::Key_Down, Qt::AltModifier);
    }
    /// It has the keyboard.
    bool isInPalette() const {
        palette()->activateWindow();
        return QTest::qWaitFor([this] { return QApplication::activeWindow() == palette(); });
    }
    /// The palette, for that row; it has the keyboard.
    bool enterPalette(const char* row) {
        view("tvMenu")->setCurrentIndex(module->element(row));
        press(Qt::Key_F7);
        return isInPalette();
    }
    /// Where a row of the palette has its button.
    QRect plusOf(const char* key) const { return plusOf(key, palette()); }
    static QRect plusOf(const char* key, const CPopObjectList* list) {
        QRect cell =
            list->tvObj()->visualRect(list->treeModel->findIndexByKey(QString::fromLatin1(key)));
        cell.setLeft(cell.right() - cell.height());
        return cell;
    }
    void press(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) const {
        module->activateWindow();
        view("tvMenu")->setFocus(Qt::ShortcutFocusReason);
        QTest::keyClick(view("tvMenu"), key, with);
    }
    /// Lets go over a row what a drag out of the palette bears; whether it was taken.
    bool drop(const char* row, const QByteArray& keys, const char* format = pickedMime,
              Qt::DropAction action = Qt::CopyAction) {
        return drop(view("tvMenu")->visualRect(module->element(row)).center(), keys, format,
                    action);
    }
    /// The same out of the tree of the resource editor; whether it could be dropped there.
    bool dropResources(const char* row, const QByteArray& keys, const char* format) {
        const QString before = resourcesOf(row);
        // A drop that was accepted would take the rows out of the tree that they come from.
        return !drop(row, keys, format, Qt::MoveAction) && resourcesOf(row) != before;
    }
    bool drop(const QPoint& at, const QByteArray& keys, const char* format = pickedMime,
              Qt::DropAction action = Qt::CopyAction) {
        QTreeView* menu = view("tvMenu");
        QMimeData dragged;
        dragged.setData(QLatin1String(format), keys);
        QDragEnterEvent enter(at, action, &dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(menu->viewport(), &enter);
        if (!enter.isAccepted())
            return false;
        QDragMoveEvent move(at, action, &dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(menu->viewport(), &move);
        if (!move.isAccepted()) {
            QDragLeaveEvent leave;
            QApplication::sendEvent(menu->viewport(), &leave);
            return false;
        }
        QDropEvent drop(at, action, &dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(menu->viewport(), &drop);
        host.deliver(*module);
        return drop.isAccepted();
    }
    /// The resources of the elements of a folder, in their order.
    QString resourcesOf(const char* folder) const {
        using orvo::menu::MenuColumn;
        QStringList keys;
        const QModelIndex parent = module->element(folder);
        for (int row = 0; row < parent.model()->rowCount(parent); ++row) {
            const QModelIndex child = parent.model()->index(row, MenuColumn::MenuResKey, parent);
            if (!child.data().toString().isEmpty())
                keys << child.data().toString();
        }
        return keys.join(' ');
    }
};

} // namespace

class TestPalette : public QObject {
    Q_OBJECT
private slots:
    void whatIsDraggedOntoAFolderBecomesItsElements() {
        Menu menu;
        QVERIFY(menu.open());
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform"));
        const int writes = int(menu.host.writes().calls.size());
        QVERIFY(menu.drop("glubzhe", "m2;m1;"));
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2 m1"));
        QCOMPARE(int(menu.host.writes().calls.size()), writes + 1);
    }

    /// The two editors can stand side by side.
    void whatIsDraggedOutOfTheResourceEditorBecomesElements() {
        Menu menu;
        QVERIFY(menu.open());
        QVERIFY(menu.dropResources("glubzhe", "m2;m1", "OrvoResources/modres/dragdrop"));
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2 m1"));
        QVERIFY(menu.dropResources("glubzhe", "rform", "OrvoResources/menures/dragdrop"));
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2 m1 rform"));
        // A folder and a stored file stand in no menu.
        QVERIFY(!menu.dropResources("glubzhe", "mod", "OrvoResources/modres/dragdrop"));
        QVERIFY(!menu.dropResources("glubzhe", "m1", "OrvoResources/sysres/dragdrop"));
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2 m1 rform"));
    }

    void inASmallWindowItLeavesTheMenuInSight() {
        Menu menu;
        QVERIFY(menu.open());
        menu.module->resize(1000, 600);
        menu.press(Qt::Key_F7);
        QVERIFY(menu.isInPalette());
        CPopObjectList* palette = menu.palette();
        const QTreeView* tree = menu.view("tvMenu");
        const QRect rows(tree->mapToGlobal(QPoint()), tree->size());
        QVERIFY(palette->geometry().left() > rows.center().x());
        QVERIFY(palette->geometry().bottom() <= palette->screen()->availableGeometry().bottom());
    }

    void oneClickOnThePlusOfARowAddsIt() {
        Menu menu;
        QVERIFY(menu.open());
        QVERIFY(menu.enterPalette("glubzhe"));
        CPopObjectList* palette = menu.palette();
        const auto clickAtEnd = [&](const char* key) {
            QTest::mouseClick(palette->tvObj()->viewport(), Qt::LeftButton, Qt::NoModifier,
                              menu.plusOf(key).center());
            menu.host.deliver(*menu.module);
        };
        clickAtEnd("m2");
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2"));
        clickAtEnd("m1");
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2 m1"));
        clickAtEnd("fsub"); // a folder has none
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2 m1"));
        QVERIFY(palette->isVisible());
        // Nor has a list for one choice.
        palette->hide();
        menu.press(Qt::Key_1, Qt::ControlModifier);
        QTest::mouseClick(menu.picker()->tvObj()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          menu.plusOf("m2", menu.picker()).center());
        QVERIFY(menu.picker()->isVisible());
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2 m1"));
    }

    void thePlusIsDrawnOnTheRowUnderTheMouse() {
        Menu menu;
        QVERIFY(menu.open());
        menu.press(Qt::Key_F7);
        QVERIFY(menu.isInPalette());
        QWidget* rows = menu.palette()->tvObj()->viewport();
        const auto picture = [&](const char* key) { // without the button of that row
            return rows->grab(menu.plusOf(key)).toImage();
        };
        // To this window, whichever others have that point, too.
        const auto moveTo = [&](const QPoint& at) {
            QTest::mouseMove(menu.palette()->windowHandle(), rows->mapTo(menu.palette(), at));
        };
        const QPoint beside = rows->rect().bottomRight() - QPoint(5, 5);
        moveTo(beside);
        const QImage one = picture("m1"), two = picture("m2");
        for (const auto& [over, on, off] : {std::tuple("m1", "m1", "m2"), {"m2", "m2", "m1"}}) {
            moveTo(menu.plusOf(over).center() - QPoint(60, 0));
            QTRY_VERIFY(picture(on) != (on == QByteArray("m1") ? one : two));
            QVERIFY(picture(off) == (off == QByteArray("m1") ? one : two));
        }
        moveTo(beside);
        QTRY_VERIFY(picture("m2") == two);
    }

    void aDoubleClickOnThePlusAddsOnce() {
        Menu menu;
        QVERIFY(menu.open());
        QVERIFY(menu.enterPalette("glubzhe"));
        QWidget* rows = menu.palette()->tvObj()->viewport();
        const QPoint plus = menu.plusOf("m2").center();
        QTest::mouseClick(rows, Qt::LeftButton, Qt::NoModifier, plus);
        QTest::mouseDClick(rows, Qt::LeftButton, Qt::NoModifier, plus);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m2"));
    }

    void thePlusAddsOneOfSeveralSelectedRows() {
        Menu menu;
        QVERIFY(menu.open());
        QVERIFY(menu.enterPalette("glubzhe"));
        QTreeView* list = menu.palette()->tvObj();
        for (const char* key : {"m1", "m2"})
            QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                              menu.plusOf(key).center() - QPoint(60, 0));
        QCOMPARE(list->selectionModel()->selectedRows().size(), 2);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                          menu.plusOf("m1").center());
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m1"));
        QCOMPARE(list->selectionModel()->selectedRows().size(), 1);
    }

    void aTextIsFoundInTheNameAndInTheCaption() {
        Menu menu;
        QVERIFY(menu.open());
        menu.press(Qt::Key_F7);
        QVERIFY(menu.isInPalette());
        QTreeView* list = menu.palette()->tvObj();
        list->setFocus();
        typeText(list, QStringLiteral("П"));
        auto* text = list->findChild<QLineEdit*>("treeSearchText");
        const auto* column = text->parentWidget()->findChild<QComboBox*>();
        QVERIFY(text->isVisible());
        typeText(text, QStringLiteral("ерв"));
        QCOMPARE(list->currentIndex().siblingAtColumn(0).data().toString(), QString("One"));
        text->setText("Tw"); // and back
        QCOMPARE(list->currentIndex().siblingAtColumn(0).data().toString(), QString("Two"));
        QCOMPARE(column->currentIndex(), 0);
        QTest::keyClick(text, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(column->currentIndex(), 1); // what is chosen stays, though nothing is there
        text->setText("none");
        QCOMPARE(column->currentIndex(), 1);
    }

    void onARowThatIsNoFolderItGoesIntoItsFolder() {
        Menu menu;
        QVERIFY(menu.open());
        QVERIFY(menu.drop("form", "f1;"));
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform f1"));
    }

    void whatIsGoneOrBesideTheRowsMakesNothing() {
        Menu menu;
        QVERIFY(menu.open());
        const int writes = int(menu.host.writes().calls.size());
        menu.drop("glubzhe", "gone;;");
        QTreeView* view = menu.view("tvMenu");
        const QPoint beside = view->viewport()->rect().bottomLeft() + QPoint(20, -5);
        QVERIFY(!view->indexAt(beside).isValid());
        QVERIFY(!menu.drop(beside, "m1;"));
        QCOMPARE(int(menu.host.writes().calls.size()), writes);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform"));
    }

    void whoMayOnlyReadDropsNothing() {
        Menu menu;
        menu.host.m_mayWrite = false;
        QVERIFY(menu.open());
        QVERIFY(!menu.drop("glubzhe", "m1;"));
        QVERIFY(menu.host.writes().calls.isEmpty());
    }

    void anOpenEditIsSavedBeforeADrop() {
        Menu menu;
        QVERIFY(menu.open());
        menu.press(Qt::Key_Home);
        menu.view("tvMenu")->setCurrentIndex(menu->element("grafiki"));
        menu.press(Qt::Key_Insert, Qt::ShiftModifier);
        QCOMPARE(menu->m_editMode, int(MenuProbe::NewElement));
        QVERIFY(menu.drop("glubzhe", "m1;"));
        QCOMPARE(menu->m_editMode, 0);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m1"));
    }

    void f7OpensAPaletteThatStaysAndClosesIt() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        menu.press(Qt::Key_F7);
        CPopObjectList* palette = menu.palette();
        QVERIFY(palette && palette->isVisible() && palette->isPalette());
        for (const char* key : {"m1", "m2"}) {
            palette->tvObj()->setCurrentIndex(palette->treeModel->findIndexByKey(QString(key)));
            QTest::keyClick(palette->tvObj(), Qt::Key_Return);
            menu.host.deliver(*menu.module);
            QVERIFY(palette->isVisible());
            menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        }
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m1 m2"));
        menu.press(Qt::Key_F7);
        QVERIFY(!palette->isVisible());
        // From then on a choice closes the list again.
        menu.press(Qt::Key_1, Qt::ControlModifier);
        QVERIFY(!palette->isVisible());
        QVERIFY(menu.picker()->isVisible() && !menu.picker()->isPalette());
    }

    void aNewFolderIsWrittenBeforeWhatThePaletteAddsToIt() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        menu.press(Qt::Key_F7);
        menu.press(Qt::Key_Insert, Qt::ShiftModifier);
        QCOMPARE(menu->m_editMode, int(MenuProbe::NewElement));
        const QByteArray folder = menu->m_editMenuKey.toLatin1();
        QVERIFY(menu.isInPalette());
        CPopObjectList* palette = menu.palette();
        palette->tvObj()->setCurrentIndex(palette->treeModel->findIndexByKey("m1"));
        QTest::keyClick(palette->tvObj(), Qt::Key_Return);
        QCOMPARE(menu->m_editMode, 0);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.resourcesOf(folder), QString("m1"));
        const auto& calls = menu.host.writes().calls;
        QCOMPARE(calls[calls.size() - 2].records.value(0).section(QChar(32), 0, 0),
                 QString("+" + folder));
    }

    void whatOthersAddMovesNoTargetOfThePalette() {
        Menu menu;
        QVERIFY(menu.open());
        QVERIFY(menu.enterPalette("glubzhe"));
        addElement(menu.store, "armop", "new", "grafiki", "Чужой", 3000, "rcalc");
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.view("tvMenu")->currentIndex().siblingAtColumn(0), menu->element("new"));
        CPopObjectList* palette = menu.palette();
        for (const char* key : {"m1", "m2"}) {
            palette->tvObj()->setCurrentIndex(palette->treeModel->findIndexByKey(QString(key)));
            QTest::keyClick(palette->tvObj(), Qt::Key_Return);
            menu.host.deliver(*menu.module);
        }
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m1 m2"));
        // Back in the menu the user chooses another one.
        menu.module->activateWindow();
        QVERIFY(QTest::qWaitFor([&] { return QApplication::activeWindow() == menu.module.get(); }));
        menu.view("tvMenu")->setCurrentIndex(menu->element("grafiki"));
        QVERIFY(menu.isInPalette());
        palette->tvObj()->setCurrentIndex(palette->treeModel->findIndexByKey("m1"));
        QTest::keyClick(palette->tvObj(), Qt::Key_Return);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.resourcesOf("grafiki"), QString("rtrend rcalc rcalc m1"));
    }

    void whatOthersHaveDeletedIsRefusedInWords() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        menu.store.remove("MenuResource", "m2");
        menu.host.deliver(*menu.module);
        const int writes = int(menu.host.writes().calls.size());
        menu.press(Qt::Key_F7);
        CPopObjectList* palette = menu.palette();
        palette->tvObj()->setCurrentIndex(palette->treeModel->findIndexByKey("m2"));
        QTest::keyClick(palette->tvObj(), Qt::Key_Return);
        menu.host.deliver(*menu.module);
        QCOMPARE(boxText(*menu.module),
                 QString("Ошибка\nНе взято: этого ресурса больше нет, его удалили.\nВторой"));
        // The palette would cover the box, which has the keyboard, and takes no other choice.
        QVERIFY(!palette->isVisible());
        QTRY_VERIFY(menu.module->m_popMessageBox->isAncestorOf(QApplication::focusWidget()));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        // Then it is back as it was.
        QTRY_VERIFY(palette->isVisible());
        QTRY_VERIFY(palette->isAncestorOf(QApplication::focusWidget()));
        QCOMPARE(palette->tvObj()->currentIndex().siblingAtColumn(0).data().toString(),
                 QString("Two"));
        QCOMPARE(int(menu.host.writes().calls.size()), writes);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform"));
    }

    void howeverThePaletteIsClosedTheNextListIsNone() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        for (const bool byKey : {false, true}) {
            menu.press(Qt::Key_F7);
            CPopObjectList* palette = menu.palette();
            QVERIFY(palette->isVisible() && palette->isPalette());
            QVERIFY(menu.isInPalette());
            if (byKey)
                QTest::keyClick(palette->tvObj(), Qt::Key_F7);
            else
                palette->hide();
            QVERIFY(!palette->isVisible());
            menu.press(Qt::Key_1, Qt::ControlModifier);
            QVERIFY(!palette->isVisible() && menu.picker()->isVisible());
            menu.picker()->hide();
        }
    }

    void enterAddsNothingThatWasNotFound() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        menu.press(Qt::Key_F7);
        CPopObjectList* palette = menu.palette();
        QTest::keyClick(palette->findChild<QPushButton*>("btnCancel"), 'O');
        auto* text = palette->findChild<QLineEdit*>("treeSearchText");
        QTest::keyClicks(text, "ne");
        QTest::keyClick(text, Qt::Key_Return);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m1"));
        QCOMPARE(text->selectedText(), QString("One")); // the next word replaces it
        QTest::keyClicks(text, "Onex");
        QTest::keyClick(text, Qt::Key_Return);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m1"));
        QTest::keyClick(text, Qt::Key_Backspace);
        QTest::keyClick(text, Qt::Key_Return);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform m1 m1"));
    }

    void keysAndASelectorListAnotherKind() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        menu.press(Qt::Key_F7);
        CPopObjectList* palette = menu.palette();
        auto* kinds = palette->findChild<QComboBox*>("paletteKind");
        QVERIFY(kinds && kinds->isVisible());
        const auto lists = [&](const char* key) {
            return palette->treeModel->findIndexByKey(QString(key)).isValid();
        };
        QVERIFY(menu.isInPalette());
        palette->tvObj()->setFocus();
        QVERIFY(lists("m2") && kinds->currentText().startsWith("Модули"));
        QTest::keyClick(palette->tvObj(), Qt::Key_2, Qt::ControlModifier);
        QVERIFY(lists("f1") && !lists("m2") && kinds->currentText().startsWith("Функции"));
        QVERIFY(palette->isVisible() && palette->isPalette());
        QTest::keyClick(palette->tvObj(), 'S'); // and from the field of the search
        QTest::keyClick(palette->findChild<QLineEdit*>("treeSearchText"), Qt::Key_1,
                        Qt::ControlModifier);
        QVERIFY(lists("m2"));
        kinds->setCurrentIndex(1);
        emit kinds->activated(1);
        palette->tvObj()->setCurrentIndex(palette->treeModel->findIndexByKey("f1"));
        QTest::keyClick(palette->tvObj(), Qt::Key_Return);
        menu.host.deliver(*menu.module);
        QCOMPARE(menu.resourcesOf("glubzhe"), QString("rform f1"));
        // A picker for one choice has neither.
        palette->hide();
        menu.press(Qt::Key_1, Qt::ControlModifier);
        CPopObjectList* picker = menu.picker();
        QVERIFY(!picker->findChild<QComboBox*>("paletteKind"));
        QTest::keyClick(picker->tvObj(), Qt::Key_2, Qt::ControlModifier);
        QVERIFY(picker->treeModel->findIndexByKey("m2").isValid());
    }

    void whoComesToTheListByKeyFindsARowChosen() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        for (int round = 0; round < 2; ++round) { // Qt's view looks for a row once only
            menu.press(Qt::Key_F7);
            QVERIFY(menu.isInPalette());
            const QTreeView* list = menu.palette()->tvObj();
            QVERIFY(!list->currentIndex().isValid());
            menu.palette()->tvObj()->setFocus(Qt::ShortcutFocusReason);
            QCOMPARE(list->currentIndex(), list->model()->index(0, 0));
            QVERIFY(list->selectionModel()->isSelected(list->currentIndex()));
            menu.press(Qt::Key_F7);
            menu.palette()->hide();
        }
    }

    void aBoxOfTheEditorHidesThePaletteUntilItIsAnswered() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        menu.press(Qt::Key_F7);
        CPopObjectList* palette = menu.palette();
        QVERIFY(menu.isInPalette());
        palette->move(palette->pos() - QPoint(30, -40));
        const QPoint place = palette->pos();
        QTest::keyClick(palette->tvObj(), Qt::Key_2, Qt::ControlModifier);
        menu.module->activateWindow();
        QVERIFY(QTest::qWaitFor([&] { return QApplication::activeWindow() == menu.module.get(); }));
        menu.press(Qt::Key_Delete); // asks
        QTRY_VERIFY(menu.module->m_popMessageBox && menu.module->m_popMessageBox->isVisible());
        QVERIFY(!palette->isVisible());
        QTest::keyClick(menu.module->m_popMessageBox, Qt::Key_Escape);
        QTRY_VERIFY(palette->isVisible());
        QCOMPARE(palette->pos(), place);
        QVERIFY(palette->treeModel->findIndexByKey("f1").isValid());
        QTRY_COMPARE(QApplication::focusWidget(), menu.view("tvMenu"));
    }

    void anIconIsChosenInAPickerOfItsOwnWhileAPaletteIsOpen() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        menu.press(Qt::Key_F7);
        CPopObjectList* palette = menu.palette();
        QVERIFY(menu.isInPalette());
        QTest::keyClick(palette->tvObj(), Qt::Key_2, Qt::ControlModifier);
        menu.module->activateWindow();
        QVERIFY(QTest::qWaitFor([&] { return QApplication::activeWindow() == menu.module.get(); }));
        menu.chooseIcon();
        QVERIFY(menu.picker()->isVisible() && menu.picker() != palette);
        QVERIFY(!palette->isVisible());
        menu.picker()->hide();
        QTRY_VERIFY(palette->isVisible());
        QVERIFY(palette->treeModel->findIndexByKey("f1").isValid());
        QVERIFY(palette->isPalette());
        // Whoever closes it finds the kind again.
        menu.press(Qt::Key_F7);
        QVERIFY(!palette->isVisible());
        menu.press(Qt::Key_F7);
        QVERIFY(palette->treeModel->findIndexByKey("f1").isValid());
    }

    void whoHasNoMenuOpenIsToldSo() {
        Menu menu;
        QVERIFY(menu.open());
        menu.press(Qt::Key_F7);
        CPopObjectList* palette = menu.palette();
        menu.view("tvDesck")->setCurrentIndex(menu.view("tvDesck")->model()->index(0, 0));
        QVERIFY(menu.isInPalette());
        QCOMPARE(palette->findChild<QPushButton*>("btnCancel")->text(), QString("Закрыть"));
        palette->tvObj()->setCurrentIndex(palette->treeModel->findIndexByKey("m2"));
        QTest::keyClick(palette->tvObj(), Qt::Key_Return);
        QVERIFY(boxText(*menu.module).contains("Добавить некуда"));
    }

    void aFolderThatAnotherDeletesWhileOneAddsToItIsNotReplacedUnasked() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        menu.press(Qt::Key_F7);
        CPopObjectList* palette = menu.palette();
        QVERIFY(menu.isInPalette());
        palette->tvObj()->setCurrentIndex(palette->treeModel->findIndexByKey("m2"));
        menu.store.sql("DELETE FROM \"Menu\" WHERE \"parent\" = 'glubzhe'");
        menu.store.sql("DELETE FROM \"Menu\" WHERE \"KeyLink\" = 'glubzhe'");
        menu.host.deliver(*menu.module);
        QVERIFY(!menu->element("glubzhe").isValid());
        menu.host.writes().take();
        QTest::keyClick(palette->tvObj(), Qt::Key_Return);
        QVERIFY(menu.module->m_popMessageBox && menu.module->m_popMessageBox->isVisible());
        QVERIFY2(boxText(*menu.module).contains("больше нет"), qPrintable(boxText(*menu.module)));
        QCOMPARE(menu.host.writes().take(), QString());
        // The box has named where it goes now.
        QTest::keyClick(menu.module->m_popMessageBox, Qt::Key_Return);
        QTest::keyClick(palette->tvObj(), Qt::Key_Return);
        QVERIFY(menu.host.writes().take().contains("MenuResourceKey='m2'"));
    }

    void eachKindHasItsTitleAndWhatWasOpen() {
        Menu menu;
        QVERIFY(menu.open());
        menu.view("tvMenu")->setCurrentIndex(menu->element("glubzhe"));
        const std::pair<Qt::Key, const char*> kinds[] = {{Qt::Key_1, "Выбор модулей АРМ"},
                                                         {Qt::Key_2, "Выбор функций АРМ"},
                                                         {Qt::Key_3, "Выбор форм отображения АРМ"}};
        for (const auto& [key, title] : kinds) {
            menu.press(key, Qt::ControlModifier);
            QVERIFY(menu.picker()->isVisible());
            QCOMPARE(menu.picker()->windowHandle()->title(), QString(title));
            menu.picker()->hide();
        }
        const auto folder = [&] {
            return menu.picker()->treeModel->findIndexByKey(QString("fsub"));
        };
        menu.press(Qt::Key_1, Qt::ControlModifier);
        QVERIFY(menu.picker()->tvObj()->isExpanded(folder())); // few rows: all at first
        menu.picker()->tvObj()->collapse(folder());
        menu.picker()->hide();
        menu.press(Qt::Key_2, Qt::ControlModifier);
        menu.picker()->hide();
        menu.press(Qt::Key_1, Qt::ControlModifier);
        QVERIFY(!menu.picker()->tvObj()->isExpanded(folder()));
        menu.picker()->hide();
        // The icon of the current row, from its passport.
        menu.chooseIcon();
        QCOMPARE(menu.picker()->windowHandle()->title(), QString("Выбор иконок АРМ"));
    }
};

QTEST_MAIN(TestPalette)
#include "tst_palette.moc"
