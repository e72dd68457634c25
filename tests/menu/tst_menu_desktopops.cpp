// Adding, renaming and deleting desktops and their folders.
#include "tests/menu/MenuDesktopOpsTest.h"

namespace {

/// A click opens one when it is sure to be no double click.
bool staysWithoutEditor(const QTreeView& view) {
    QTest::qWait(2 * QApplication::doubleClickInterval());
    return view.viewport()->findChildren<QLineEdit*>().isEmpty();
}

} // namespace

class TestMenuDesktopOps : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QApplication::setDoubleClickInterval(50); }
    void init() { QGuiApplication::clipboard()->clear(); }

    // Adding

    void aNewDesktopStandsAtTheEndOfItsFolder() {
        PlantOperations editor("ceh");
        editor->on_actAddDescktop_triggered();
        const QModelIndex row = editor.view("tvDesck")->currentIndex();
        QCOMPARE(row.parent(), editor->desck("ceh"));
        QCOMPARE(row.row(), 2);
        const QString key = row.sibling(row.row(), DesckColumn::KeyLink).data().toString();
        QCOMPARE(key.size(), 32);
        QCOMPARE(rowValues(row),
                 QVariantList({"новый рабочий стол", key, "ceh", "2000", false, true}));
        QVERIFY(editor.view("tvDesck")->selectionModel()->isSelected(row));
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void addingOnADesktopPlacesTheNewRowBesideIt() {
        PlantOperations editor("armpech");
        editor->on_actAddDescktop_triggered();
        const QModelIndex row = editor.view("tvDesck")->currentIndex();
        QCOMPARE(row.parent(), editor->desck("pech"));
        QCOMPARE(row.row(), 1);
        QCOMPARE(row.sibling(1, DesckColumn::ParentKey).data(), QVariant("pech"));
    }

    void aNewFolderAtTheTopGoesToTheEnd() {
        PlantOperations editor("mainnode");
        editor->on_actAddFoldertvDesck_triggered();
        const QModelIndex row = editor.view("tvDesck")->currentIndex();
        QCOMPARE(row.parent(), editor->desck("mainnode"));
        QCOMPARE(row.row(), 3); // behind the desktop "Общий"
        const QString key = row.sibling(3, DesckColumn::KeyLink).data().toString();
        QCOMPARE(rowValues(row),
                 QVariantList({"новая папка1", key, "mainnode", "1000", true, true}));
    }

    void aNewFolderBelowGoesBeforeTheFirstDesktop() {
        PlantOperations editor;
        editor.openDesck("armop"); // a desktop: its folder counts
        editor->on_actAddFoldertvDesck_triggered();
        const QModelIndex row = editor.view("tvDesck")->currentIndex();
        QCOMPARE(row.parent(), editor->desck("ceh"));
        QCOMPARE(row.row(), 1);
        QCOMPARE(editor->desck("armop").row(), 2);
        QCOMPARE(row.sibling(1, DesckColumn::Order).data(), QVariant("1000"));
    }

    void aNewFolderWithoutDesktopsGoesToTheEnd() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "ugol", "sklad", "Угол", true);
        OperationsOn editor(store, "sklad");
        editor->on_actAddFoldertvDesck_triggered();
        QCOMPARE(editor.view("tvDesck")->currentIndex().parent(), editor->desck("sklad"));
        QCOMPARE(editor.view("tvDesck")->currentIndex().row(), 1);
    }

    void addingOpensAnEditByNoEditor() {
        PlantOperations editor("ceh");
        editor->on_actAddDescktop_triggered();
        const QModelIndex row = editor.view("tvDesck")->currentIndex();
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NewDesck));
        QCOMPARE(QModelIndex(editor->m_editDesckIndex), row);
        QVERIFY(editor->m_btnSave->isEnabled());
        QVERIFY(editor->m_btnCancel->isEnabled());
        QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::AllEditTriggers);
        QVERIFY(editor.view("tvDesck")->viewport()->findChildren<QLineEdit*>().isEmpty());
        // The user starts one.
        QTest::keyClick(editor.view("tvDesck"), Qt::Key_F2);
        QCOMPARE(editor.view("tvDesck")->viewport()->findChildren<QLineEdit*>().size(), 1);
    }

    void addingWithoutACurrentRowDoesNothing() {
        PlantOperations editor;
        editor.view("tvDesck")->setCurrentIndex(QModelIndex());
        const QString before = shownDescks(editor);
        editor->on_actAddDescktop_triggered();
        editor->on_actAddFoldertvDesck_triggered();
        QCOMPARE(shownDescks(editor), before);
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NoEdit));
    }

    void aNewRowIsWrittenOnSaveAndComesBack() {
        PlantOperations editor("ceh");
        editor->on_actAddFoldertvDesck_triggered();
        const QString key = editor->m_currentDesckKey;
        editor->on_save_pressed();
        QCOMPARE(
            editor.host.writes().take(),
            QString("MenuFolder\n"
                    "  +#1 ParentKey='ceh' caption='новая папка1' order_='1000' isFolder=true\n"));
        QVERIFY(editor->m_desckModel->findIndexByKey(key).siblingAtColumn(5).data().toBool());
        editor.host.deliver(*editor.module);
        QVERIFY(!editor->m_desckModel->findIndexByKey(key).siblingAtColumn(5).data().toBool());
    }

    void aSecondNewRowSavesTheFirst() {
        PlantOperations editor("sklad");
        editor->on_actAddDescktop_triggered();
        const QString first = editor->m_currentDesckKey;
        editor->on_actAddDescktop_triggered();
        QCOMPARE(editor.host.writes().take(),
                 QString("MenuFolder\n"
                         "  +#1 ParentKey='sklad' caption='новый рабочий стол' "
                         "order_='2000' isFolder=false\n"));
        QVERIFY(editor->m_currentDesckKey != first);
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NewDesck));
        QCOMPARE(QModelIndex(editor->m_editDesckIndex), editor.view("tvDesck")->currentIndex());
        QVERIFY(editor->m_btnSave->isEnabled());
        editor->on_cancel_pressed();
        editor.host.deliver(*editor.module);
        QCOMPARE(editor->m_desckModel->rowCount(editor->desck("sklad")), 1);
    }

    void newRowsAreNotNumbered() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "papka1", "sklad", "новая папка1", true);
        OperationsOn editor(store, "sklad");
        for (int i = 0; i < 2; ++i) {
            editor->on_actAddFoldertvDesck_triggered();
            QCOMPARE(editor.view("tvDesck")->currentIndex().data(), QVariant("новая папка1"));
            editor->on_save_pressed();
            editor.host.deliver(*editor.module);
            editor.openDesck("sklad");
        }
        QCOMPARE(shownDescks(editor).count("новая папка1\n"), 3);
    }

    void leavingANewRowOpensNoEditorElsewhere() {
        PlantOperations editor("ceh");
        editor->on_actAddDescktop_triggered();
        clickRow(editor.view("tvDesck"), editor->desck("sklad"));
        QCOMPARE(editor.host.writes().calls.size(), 1);
        QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(staysWithoutEditor(*editor.view("tvDesck")));
    }

    // Renaming

    void renamingOpensAnEditor() {
        PlantOperations editor("armop");
        QVERIFY(editor.action("actChangeDescktopOrFolder")->isEnabled());
        editor->on_actChangeDescktopOrFolder_triggered();
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::RenameDesck));
        QCOMPARE(QModelIndex(editor->m_editDesckIndex), editor->desck("armop"));
        QVERIFY(editor->m_btnSave->isEnabled());
        QVERIFY(editor->m_btnCancel->isEnabled());
        QVERIFY(!editor.action("actChangeDescktopOrFolder")->isEnabled());
        QVERIFY(!editor.action("actDeleteFromtvDesck")->isEnabled());
        QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::AllEditTriggers);
        const auto editors = editor.view("tvDesck")->viewport()->findChildren<QLineEdit*>();
        QCOMPARE(editors.size(), 1);
        QCOMPARE(editors.first()->text(), QString("АРМ оператора"));
    }

    void renamingWritesTheCaptionAlone() {
        PlantOperations editor("armop");
        editor->on_actChangeDescktopOrFolder_triggered();
        editor.view("tvDesck")->viewport()->findChild<QLineEdit*>()->setText("Пульт");
        editor->on_save_pressed();
        QCOMPARE(editor.host.writes().take(), QString("MenuFolder\n  ~armop caption='Пульт'\n"));
        QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::NoEditTriggers);
    }

    void renamingSavesAPendingEdit() {
        PlantOperations editor("sklad");
        editor->on_actAddDescktop_triggered();
        editor->on_actChangeDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 1);
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::RenameDesck));
        editor.view("tvDesck")->viewport()->findChild<QLineEdit*>()->setText("Вдогонку");
        editor->on_save_pressed();
        editor.host.deliver(*editor.module);
        QVERIFY(shownDescks(editor).contains("\n  Склад\n    Вдогонку\n"));
    }

    void leavingARenamedRowOpensNoEditorElsewhere() {
        PlantOperations editor("armop");
        editor->on_actChangeDescktopOrFolder_triggered();
        editor.view("tvDesck")->viewport()->findChild<QLineEdit*>()->setText("Пульт");
        clickRow(editor.view("tvDesck"), editor->desck("sklad"));
        QCOMPARE(editor.host.writes().take(), QString("MenuFolder\n  ~armop caption='Пульт'\n"));
        QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(staysWithoutEditor(*editor.view("tvDesck")));
    }

    void renamingWithoutACurrentRowDoesNothing() {
        PlantOperations editor;
        editor.view("tvDesck")->setCurrentIndex(QModelIndex());
        editor->on_actChangeDescktopOrFolder_triggered();
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NoEdit));
        QVERIFY(!editor->m_btnSave->isEnabled());
    }

    // Deleting

    void anEmptyFolderIsDeletedWithoutAQuestion() {
        PlantOperations editor("sklad");
        editor.action("actDeleteFromtvDesck")->trigger();
        QVERIFY(!editor.isAsking());
        QCOMPARE(editor.host.writes().take(), QString("MenuFolder\n  -sklad\n"));
        QVERIFY(editor->desck("sklad").isValid());
        editor.host.deliver(*editor.module);
        QVERIFY(!editor->desck("sklad").isValid());
    }

    void aDesktopIsAskedAbout() {
        PlantOperations editor("armop");
        editor.action("actDeleteFromtvDesck")->trigger();
        QVERIFY(editor.isAsking());
        QCOMPARE(editor.question(),
                 QString("Уведомление\n"
                         "Вы действительно хотите удалить рабочий стол \"АРМ оператора\"?"));
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void aNegativeAnswerChangesNothing() {
        PlantOperations editor("armop");
        editor->on_actDeleteFromtvDesck_triggered();
        editor.answer(editor.No);
        QVERIFY(!editor.isAsking());
        QCOMPARE(editor.host.writes().take(), QString());
        QVERIFY(editor->element("calc").isValid());
        // Nor does a button of no box.
        editor->removeDesckTopMessage(nullptr);
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void aDeletedDesktopTakesItsElementsAlong() {
        PlantOperations editor("armop", "calc");
        editor->on_actDeleteFromtvDesck_triggered();
        editor.answer(editor.Yes);
        QVERIFY(!editor.isAsking());
        QCOMPARE(editor.host.writes().take(), QString("Menu\n"
                                                      "  -calc\n"
                                                      "  -form\n"
                                                      "  -glubzhe\n"
                                                      "  -grafiki\n"
                                                      "  -propal\n"
                                                      "  -shema\n"
                                                      "  -trend\n"
                                                      "MenuFolder\n"
                                                      "  -armop\n"));
        QVERIFY(editor->m_currentMenuKey.isNull());
        editor.host.deliver(*editor.module);
        QVERIFY(!editor->desck("armop").isValid());
        QCOMPARE(editor.host.failures, QStringList());
    }

    void aDesktopWithoutElementsIsDeletedInOneCall() {
        PlantOperations editor("armpech");
        editor->on_actDeleteFromtvDesck_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString("MenuFolder\n  -armpech\n"));
    }

    void onlyElementsOfTheDesktopAreDeleted() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armpech", "chuzhoy", "", "Чужой", 0);
        OperationsOn editor(store, "armop");
        // The next fetch fails, so the table still has the elements of the desktop before. Those
        // that go are asked for anew.
        store.sql("ALTER TABLE \"Menu\" RENAME TO \"gone\"");
        editor.openDesck("armpech");
        store.sql("ALTER TABLE \"gone\" RENAME TO \"Menu\"");
        editor.host.failures.clear();
        editor->on_actDeleteFromtvDesck_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(),
                 QString("Menu\n  -chuzhoy\nMenuFolder\n  -armpech\n"));
    }

    void theMenuEmptiesBeforeTheServerAnswers() {
        PlantOperations editor("armop", "calc");
        editor->on_actDeleteFromtvDesck_triggered();
        QVERIFY(editor->m_propModel->rowCount() > 0);
        editor.answer(editor.Yes);
        QCOMPARE(editor->m_menuModel->rowCount(), 0);
        QCOMPARE(editor->m_propModel->rowCount(), 0);
        QVERIFY(editor->desck("armop").isValid());
    }

    void aRefusedDeletionOfElementsLetsTheDesktopGo() {
        PlantOperations editor("armop");
        editor->on_actDeleteFromtvDesck_triggered();
        editor.host.writes().refusedTable = "Menu";
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().calls.size(), 2);
        editor.host.deliver(*editor.module);
        QVERIFY(!editor->desck("armop").isValid());
        QVERIFY(!editor.isAsking());
    }

    void deletingWithoutACurrentRowDoesNothing() {
        PlantOperations editor;
        editor.view("tvDesck")->setCurrentIndex(QModelIndex());
        editor->on_actDeleteFromtvDesck_triggered();
        QVERIFY(!editor.isAsking());
        QCOMPARE(editor.host.writes().take(), QString());
    }

    // Copying and pasting

    void copyingPutsTheBareKeyOnTheClipboard() {
        PlantOperations editor("armop");
        editor.action("actCopyDescktopOrFolder")->trigger();
        QCOMPARE(QGuiApplication::clipboard()->mimeData()->formats(), QStringList(desckMime));
        QCOMPARE(desckOnClipboard(), QByteArray("armop"));
        editor.openDesck("ceh");
        editor->on_actCopyDescktopOrFolder_triggered();
        QCOMPARE(desckOnClipboard(), QByteArray("ceh"));
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void copyingWithoutACurrentDesktopLeavesTheClipboard() {
        PlantOperations editor;
        putDesckOnClipboard("before");
        editor.view("tvDesck")->setCurrentIndex(QModelIndex());
        editor->on_actCopyDescktopOrFolder_triggered();
        editor->m_currentDesckKey = "nosuch";
        editor->on_actCopyDescktopOrFolder_triggered();
        QCOMPARE(desckOnClipboard(), QByteArray("before"));
    }
};

QTEST_MAIN(TestMenuDesktopOps)
#include "tst_menu_desktopops.moc"
