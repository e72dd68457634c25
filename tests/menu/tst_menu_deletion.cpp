// Deleting an element with all that lies below it.
#include "models/Passport.h"
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"

#include <QElapsedTimer>

using namespace orvo::test;

class TestMenuDeletion : public QObject {
    Q_OBJECT
private slots:
    void theQuestion_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("text");
        dataRow("folder", "grafiki",
                "Вы действительно хотите удалить папку \"Графики\" вместе со всеми "
                "входящими элементами из рабочего стола \"АРМ оператора\"?");
        dataRow("module", "trend",
                "Вы действительно хотите удалить модуль \"Тренд\" из рабочего стола "
                "\"АРМ оператора\"?");
        dataRow("function", "calc",
                "Вы действительно хотите удалить функцию \"Расчёт\" из рабочего "
                "стола \"АРМ оператора\"?");
        dataRow("file", "form",
                "Вы действительно хотите удалить файл \"Котёл\" из рабочего стола "
                "\"АРМ оператора\"?");
        dataRow("without its resource", "propal",
                "Вы действительно хотите удалить  \"Пропавший\" "
                "из рабочего стола \"АРМ оператора\"?");
    }

    void theQuestion() {
        QFETCH(QString, key);
        QFETCH(QString, text);
        PlantOperations editor("armop");
        editor.makeCurrent(qPrintable(key));
        editor.action("actDeleteElem")->trigger();
        QVERIFY(editor.isAsking());
        QCOMPARE(editor.question(), "Уведомление\n" + text);
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void theQuestionWithoutItsElement() {
        PlantOperations editor("armop");
        editor->m_currentMenuKey = "nosuch";
        editor->on_actDeleteElem_triggered();
        QVERIFY(editor.isAsking());
        QCOMPARE(editor.question(), QString("Уведомление\nВы действительно хотите удалить  \"\" из "
                                            "рабочего стола \"АРМ оператора\"?"));
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void theQuestionWithoutItsDesktop() {
        PlantOperations editor("armop", "form");
        editor->m_currentDesckKey = "nosuch";
        editor->on_actDeleteElem_triggered();
        QCOMPARE(editor.question(), QString("Уведомление\nВы действительно хотите удалить файл "
                                            "\"Котёл\" из рабочего стола \"\"?"));
    }

    void withoutBothThereIsNoQuestion() {
        PlantOperations editor;
        editor->m_currentMenuKey = "nosuch";
        editor->m_currentDesckKey = "nosuch";
        editor->on_actDeleteElem_triggered();
        QVERIFY(!editor.isAsking());
    }

    void aNegativeAnswerChangesNothing() {
        PlantOperations editor("armop", "grafiki");
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.No);
        QVERIFY(!editor.isAsking());
        editor->removeMenuMessage(nullptr);
        QCOMPARE(editor.host.writes().take(), QString());
        QVERIFY(editor->element("grafiki").isValid());
    }

    void anElementIsDeleted() {
        PlantOperations editor("armop", "calc");
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QVERIFY(!editor.isAsking());
        QCOMPARE(editor.host.writes().take(), QString("Menu\n  -calc\n"));
        QVERIFY(editor->element("calc").isValid());
        editor.host.deliver(*editor.module);
        QVERIFY(!editor->element("calc").isValid());
        QVERIFY(!orvo::seekKey(editor->m_tabMenu, "calc"));
        QCOMPARE(editor->m_currentMenuKey, QString("glubzhe"));
    }

    void aFolderIsDeletedInOneCall() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "dno", "glubzhe", "Дно", 500);
        addElement(store, "armop", "kamen", "dno", "Камень", 0, "rform");
        addElement(store, "armop", "posle", "grafiki", "После", 9000, "rform");
        OperationsOn editor(store, "armop", "grafiki");
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        // In depth: a folder before what it holds, all that before the next sibling.
        QCOMPARE(editor.host.writes().take(), QString("Menu\n"
                                                      "  -grafiki\n"
                                                      "  -trend\n"
                                                      "  -calc\n"
                                                      "  -glubzhe\n"
                                                      "  -form\n"
                                                      "  -dno\n"
                                                      "  -kamen\n"
                                                      "  -posle\n"));
        editor.host.deliver(*editor.module);
        QCOMPARE(treetext::print(*editor->m_menuModel, -1),
                 QString("Меню\n  Схема\n  Пропавший\n"));
        QCOMPARE(orvo::recordCount(editor->m_tabMenu), 2);
        QCOMPARE(editor.host.failures, QStringList());
    }

    void anEmptyFolderIsOneRecord() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "pusto", "", "Пусто", 5000);
        OperationsOn editor(store, "armop", "pusto");
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString("Menu\n  -pusto\n"));
    }

    void theAnswerAppliesToWhatIsCurrentThen() {
        PlantOperations editor("armop", "calc");
        editor->on_actDeleteElem_triggered();
        // Another client's deletion makes the next sibling current while the question stands.
        editor.store.remove("Menu", "calc");
        editor.host.deliver(*editor.module);
        QCOMPARE(editor->m_currentMenuKey, QString("glubzhe"));
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString("Menu\n  -glubzhe\n  -form\n"));
    }

    void anElementGoneMeanwhileIsLeft() {
        PlantOperations editor("armop", "calc");
        editor->on_actDeleteElem_triggered();
        editor->m_currentMenuKey = "nosuch";
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void anElementGoneFromTheTreeIsLeft() {
        PlantOperations editor("armop", "calc");
        editor->on_actDeleteElem_triggered();
        editor.store.remove("MenuFolder", "armop");
        editor.host.deliver(*editor.module);
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void aNewRowBelowIsNoRecord() {
        PlantOperations editor("armop", "glubzhe");
        editor->on_actNewElemFolder_triggered();
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NewElement));
        const QString placeholder = editor->m_currentMenuKey;
        editor->m_currentMenuKey = "glubzhe";
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString("Menu\n  -glubzhe\n  -form\n"));
        QVERIFY(editor->m_menuModel->findIndexByKey(placeholder).isValid());
    }

    void whatHasAnotherParentStays() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "sirota", "nosuch", "Сирота", 0, "rform");
        OperationsOn editor(store, "armop", "grafiki");
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QVERIFY(!editor.host.writes().take().contains("sirota"));
    }

    void childrenAreFoundWithoutCase() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "vnutri", "GlubZHE", "Внутри", 7, "rform");
        OperationsOn editor(store, "armop", "glubzhe");
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString("Menu\n  -glubzhe\n  -form\n  -vnutri\n"));
    }

    void aCircleIsDeletedOnce() {
        PlantOperations editor("armop", "grafiki");
        MDRData* record = editor->m_tabMenu.RecEdit(orvo::seekKey(editor->m_tabMenu, "grafiki"));
        editor->m_tabMenu.SetValF(record, "parent", orvo::textVar("GLUBZHE"));
        editor->m_tabMenu.RecPost(record);
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString("Menu\n"
                                                      "  -grafiki\n"
                                                      "  -trend\n"
                                                      "  -calc\n"
                                                      "  -glubzhe\n"
                                                      "  -form\n"));
    }

    void theRootRowDeletesNothing() {
        PlantOperations editor("armop");
        // Before any element was chosen nothing goes out; the root row's key is no record's.
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString());
        editor.makeCurrent("MenuRootNode");
        QVERIFY(!editor.action("actDeleteElem")->isEnabled());
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().take(), QString("Menu\n  -MenuRootNode\n"));
        QCOMPARE(editor.host.failures, QStringList());
        editor.host.deliver(*editor.module);
        QCOMPARE(orvo::recordCount(editor->m_tabMenu), 7);
    }

    void aRefusalLeavesTheRows() {
        PlantOperations editor("armop", "grafiki");
        editor.host.writes().refusedTable = "Menu";
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        editor.host.deliver(*editor.module);
        QVERIFY(editor->element("form").isValid());
        QVERIFY(!editor.isAsking());
    }

    void anOpenEditStays() {
        PlantOperations editor("armop", "calc");
        orvo::editPassportValue(*editor->m_propModel, "name", "Иное");
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::EditElement));
    }

    void aVeryDeepFolderIsDeleted() {
        constexpr int depth = 100000;
        PlantOperations editor("armop", "glubzhe");
        // Only the table is so deep: what comes by notification need not be in the tree.
        MDArray* table = editor->m_tabMenu.array;
        for (int i = 0; i < depth; ++i) {
            MDRData* record = MDARecNew(table);
            const QByteArray parent =
                i == 0 ? QByteArray("glubzhe") : "deep" + QByteArray::number(i - 1);
            editor->m_tabMenu.SetValF(record, "KeyLink",
                                      orvo::textVar("deep" + QByteArray::number(i)));
            editor->m_tabMenu.SetValF(record, "parent", orvo::textVar(parent));
            editor->m_tabMenu.RecPost(record);
        }
        editor->on_actDeleteElem_triggered();
        editor.answer(editor.Yes);
        QCOMPARE(editor.host.writes().calls.size(), 1);
        QCOMPARE(editor.host.writes().calls[0].records.size(), depth + 2);
        // And copied.
        editor.selectElements({"glubzhe"});
        editor->on_actCopyMenuElement_triggered();
        QVERIFY(editor->checkMimeType(orvo::menu::menuMime));
    }

    void aBigFolderIsDeletedInOneCall() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armpech", "big", "", "Большая", 0);
        store.sql(
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 9998) "
            "INSERT INTO \"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", "
            "\"order_\", \"MenuResourceKey\") "
            "SELECT 'e' || i, CASE WHEN i < 100 THEN 'big' ELSE 'e' || (i % 100) END, 'armpech', "
            "'Элемент ' || i, i * 1000, CASE WHEN i < 100 THEN NULL ELSE 'rtrend' END FROM n");
        OperationsOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armpech"));
        editor.makeCurrent("big");
        editor->on_actDeleteElem_triggered();
        QElapsedTimer timer;
        timer.start();
        editor.answer(editor.Yes);
        qInfo("a folder of 10,000 elements deleted in %lld ms", timer.elapsed());
        QVERIFY(timer.elapsed() < 20000);
        QCOMPARE(editor.host.writes().calls.size(), 1);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 10000);
        timer.start();
        editor.host.deliver(*editor.module);
        qInfo("its notifications taken in %lld ms", timer.elapsed());
        QVERIFY(timer.elapsed() < 60000);
        QCOMPARE(orvo::recordCount(editor->m_tabMenu), 0);
        QCOMPARE(editor.host.failures, QStringList());
    }
};

QTEST_MAIN(TestMenuDeletion)
#include "tst_menu_deletion.moc"
