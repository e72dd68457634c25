// Copying and cutting menu elements.
#include "tests/menu/MenuClipboardTest.h"

// Pasting

class TestMenuClipboard : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    // Copying

    void theCopiedBytes() {
        PlantOperations editor("armop");
        editor.selectElements({"calc", "trend", "glubzhe"});
        editor.action("actCopyMenuElement")->trigger();
        QCOMPARE(QGuiApplication::clipboard()->mimeData()->formats(), QStringList(menuMime));
        QStringList keys;
        for (const QModelIndex& row : editor.view("tvMenu")->selectionModel()->selectedRows(0))
            keys << editor->m_menuModel->getItemKeyLink(row);
        QCOMPARE(keys.size(), 3);
        const QByteArray head = "0\n" + keys.join(';').toUtf8() + ";\n";
        QVERIFY(payload().startsWith(head));
        // What follows is one whole packed table.
        const QByteArray image = payload().mid(head.size());
        CMDArray table;
        QCOMPARE(MDAUnpackN(table.array, image.constData(), uint32_t(image.size())), int(MDX_OK));
        QVERIFY(MDAUnpackN(table.array, image.constData(), uint32_t(image.size() - 1)) != MDX_OK);
        QVERIFY(!editor->m_cutPending);
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void theCutBytes() {
        PlantOperations editor("armop");
        editor.selectElements({"form"});
        editor.action("actCutMenuElement")->trigger();
        QVERIFY(payload().startsWith("1\nform;\n"));
    }

    void thePackedTableHasTheRecordsWithTwoKeys() {
        PlantOperations editor("armop");
        editor.selectElements({"grafiki", "shema"});
        editor->on_actCopyMenuElement_triggered();
        const QByteArray image = payload().mid(payload().indexOf('\n', 2) + 1);
        CMDArray table;
        QCOMPARE(MDAUnpack(table.array, image.constData()), int(MDX_OK));
        QCOMPARE(table.array->keyCount, 2u);
        QCOMPARE(table.array->fieldCount, editor->m_tabMenu.array->fieldCount);
        QCOMPARE(keysInOrder(table.array, 0),
                 QStringList({"calc", "form", "glubzhe", "grafiki", "shema", "trend"}));
        QCOMPARE(keysInOrder(table.array, 1),
                 QStringList({"shema", "grafiki", "form", "trend", "calc", "glubzhe"}));
        // Key 0 is unique, key 1 is not.
        CMDArray twin;
        QCOMPARE(MDAUnpack(twin.array, image.constData()), int(MDX_OK));
        MDRData* record = MDARecNew(twin.array);
        twin.SetValF(record, "KeyLink", orvo::textVar("calc"));
        QCOMPARE(twin.RecPost(record), 0u);
        twin.SetValF(record, "KeyLink", orvo::textVar("calc2"));
        twin.SetValF(record, "parent", orvo::textVar("grafiki"));
        twin.SetValF(record, "order_", orvo::integerVar(1000));
        QCOMPARE(twin.RecPost(record), 1u);
    }

    void thePackedRecordsAreWholeAndUnflagged() {
        TestStore store;
        fillPlant(store);
        store.insert("Menu", {{"KeyLink", QString("full")},
                              {"parent", QString("grafiki")},
                              {"FolderKey", QString("armop")},
                              {"caption", QString("Полный")},
                              {"order_", 7000},
                              {"ico", QString("pump.png")},
                              {"separator", true},
                              {"oneCopy", false},
                              {"MenuResourceKey", QString("rcalc")},
                              {"params", QString("-x 1")}});
        OperationsOn editor(store, "armop");
        editor.selectElements({"full", "trend"});
        editor->on_actCopyMenuElement_triggered();
        MenuPayload read;
        QVERIFY(read.read(payload()));
        for (const char* key : {"full", "trend"}) {
            const MDRData* source = orvo::seekKey(editor->m_tabMenu, key);
            const MDRData* copy = orvo::seekKey(read.table, key);
            QVERIFY(source && copy);
            for (int field = 0; field < read.table.array->fieldCount; ++field) {
                QCOMPARE(orvo::isNull(copy, field), orvo::isNull(source, field));
                QCOMPARE(orvo::textOf(copy, field), orvo::textOf(source, field));
                QCOMPARE(orvo::integerOf(copy, field), orvo::integerOf(source, field));
                uint8_t user = 0;
                QCOMPARE(MDRIsUser(MDRFldByNum(read.table.array, field), copy, &user), int(MDX_OK));
                QCOMPARE(int(user), 1);
            }
            QCOMPARE(orvo::mdx::recordFlags(copy), 0u);
        }
    }

    void aFolderBringsAllBelowIt() {
        PlantOperations editor("armop");
        editor.selectElements({"grafiki"});
        editor->on_actCopyMenuElement_triggered();
        MenuPayload read;
        QVERIFY(read.read(payload()));
        QCOMPARE(read.keys, QStringList("grafiki"));
        // Folders precede what they hold; siblings stand in their order.
        QStringList entered;
        for (uint32_t i = 0; i < orvo::mdx::postedCount(read.table.array); ++i)
            entered << orvo::textOf(orvo::mdx::postedRecord(read.table.array, i), "KeyLink");
        QCOMPARE(entered, QStringList({"grafiki", "trend", "calc", "glubzhe", "form"}));
    }

    void copyingTheRootRowLeavesTheClipboard() {
        PlantOperations editor("armop");
        QGuiApplication::clipboard()->setText("before");
        editor.selectElements({"MenuRootNode"});
        editor->on_actCopyMenuElement_triggered();
        editor->on_actCutMenuElement_triggered();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
        QVERIFY(!editor->m_cutPending);
    }

    void withoutASelectionTheClipboardStays() {
        PlantOperations editor("armop");
        QGuiApplication::clipboard()->setText("before");
        editor.selectElements({});
        editor->on_actCutMenuElement_triggered();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
        QVERIFY(!editor->m_cutPending);
    }

    void aRowWithoutARecordGivesItsKeyAlone() {
        PlantOperations editor("armop");
        editor->m_tabMenu.RecDel(orvo::seekKey(editor->m_tabMenu, "calc"));
        QGuiApplication::clipboard()->setText("before");
        editor.selectElements({"calc"});
        editor->on_actCopyMenuElement_triggered();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
        editor.selectElements({"calc", "trend"});
        editor->on_actCopyMenuElement_triggered();
        MenuPayload read;
        QVERIFY(read.read(payload()));
        QCOMPARE(read.keys.size(), 2);
        QCOMPARE(orvo::recordCount(read.table), 1);
        editor.makeCurrent("glubzhe");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 1);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 1);
    }

    void aFolderWithoutARecordGivesWhatLiesBelowAlone() {
        PlantOperations editor("armop");
        editor->m_tabMenu.RecDel(orvo::seekKey(editor->m_tabMenu, "glubzhe"));
        editor.selectElements({"glubzhe"});
        editor->on_actCutMenuElement_triggered();
        MenuPayload read;
        QVERIFY(read.read(payload()));
        QCOMPARE(read.keys, QStringList("glubzhe"));
        QCOMPARE(keysInOrder(read.table.array, 0), QStringList("form"));
        // Its key is skipped, and nothing leads to what lies below: neither pasted nor deleted.
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void aKeyThatReadsAsOthersIsLeftOut() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "trend;calc", "", "Чужой", 9000, "rcalc");
        OperationsOn editor(store, "armop");
        editor.selectElements({"trend;calc"});
        editor->on_actCutMenuElement_triggered();
        QCOMPARE(payload(), QByteArray());
        editor.selectElements({"trend;calc", "shema"});
        editor->on_actCopyMenuElement_triggered();
        QVERIFY(payload().startsWith("0\nshema;\n"));
        MenuPayload read;
        QVERIFY(read.read(payload()));
        QCOMPARE(orvo::recordCount(read.table), 1);
    }

    void aCircleInTheTableIsCopiedOnce() {
        PlantOperations editor("armop");
        // Known to the table before the tree: the upper folder now hangs below the lower one.
        MDRData* record = editor->m_tabMenu.RecEdit(orvo::seekKey(editor->m_tabMenu, "grafiki"));
        editor->m_tabMenu.SetValF(record, "parent", orvo::textVar("glubzhe"));
        QCOMPARE(editor->m_tabMenu.RecPost(record), 1u);
        editor.selectElements({"grafiki"});
        editor->on_actCopyMenuElement_triggered();
        MenuPayload read;
        QVERIFY(read.read(payload()));
        QCOMPARE(keysInOrder(read.table.array, 0),
                 QStringList({"calc", "form", "glubzhe", "grafiki", "trend"}));
        // The circle is pasted once too.
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 1);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 5);
    }

    void aCutChangesNothing() {
        PlantOperations editor("armop");
        const QString before = shownMenu(editor);
        editor.selectElements({"grafiki"});
        editor->on_actCutMenuElement_triggered();
        editor.host.deliver(*editor.module);
        QCOMPARE(shownMenu(editor), before);
        QCOMPARE(editor.host.writes().take(), QString());
    }

    // A cut on the clipboard

    void theFirstCutSurvivesInItsEditor() {
        PlantOperations editor("armop");
        QVERIFY(!editor->m_cutPending);
        editor.selectElements({"form"});
        editor->on_actCutMenuElement_triggered();
        QCoreApplication::processEvents();
        QVERIFY(payload().startsWith("1\nform;\n"));
        // The change has been seen, so the next cut that comes along is a foreign one.
        QVERIFY(!editor->m_cutPending);
    }

    void theNextCutSurvivesToo() {
        PlantOperations editor("armop");
        for (const char* key : {"form", "trend", "form"}) {
            editor.selectElements({key});
            editor->on_actCutMenuElement_triggered();
            QCoreApplication::processEvents();
            QVERIFY(payload().startsWith("1\n" + QByteArray(key) + ";\n"));
        }
    }

    void aSecondEditorTakesACutAway() {
        PlantOperations editor;
        TestHost otherHost(editor.store);
        OperationsEditor other(otherHost);
        editor.openDesck("armop");
        editor.selectElements({"form"});
        editor->on_actCutMenuElement_triggered();
        QCoreApplication::processEvents();
        QVERIFY(payload().isEmpty());
        other.openDesck("armop");
        other.makeCurrent("grafiki");
        other->on_actPasteMenuElement_triggered();
        QCOMPARE(otherHost.writes().take(), QString());
        QVERIFY(editor->element("form").isValid());
    }

    void aCopyIsLeftAlone() {
        PlantOperations editor;
        TestHost otherHost(editor.store);
        OperationsEditor other(otherHost);
        editor.openDesck("armop");
        editor.selectElements({"form"});
        editor->on_actCopyMenuElement_triggered();
        QCoreApplication::processEvents();
        QVERIFY(payload().startsWith("0\nform;\n"));
        putAgain();
        QCoreApplication::processEvents();
        QVERIFY(payload().startsWith("0\nform;\n"));
    }

    void aCutOfAnotherProgramIsTakenAway_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("taken");
        dataRow("a cut", QByteArray("1\nform;\nX"), true);
        dataRow("any other number", QByteArray("7\nform;\nX"), true);
        dataRow("a negative number", QByteArray("-1\nform;\nX"), true);
        dataRow("a number without a line", QByteArray("1"), true);
        dataRow("a copy", QByteArray("0\nform;\nX"), false);
        dataRow("no number", QByteArray("one\nform;\nX"), false);
        dataRow("an empty line", QByteArray("\nform;\nX"), false);
        dataRow("a number that is none", QByteArray("99999999999999999999\nform;\nX"), false);
        dataRow("a cut on the second line", QByteArray("0\n1\nX"), false);
    }

    void aCutOfAnotherProgramIsTakenAway() {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, taken);
        TestStore store;
        OperationsOn editor(store);
        putOnClipboard(bytes);
        QCoreApplication::processEvents();
        QCOMPARE(payload(), taken ? QByteArray() : bytes);
    }

    void otherFormatsAreLeftAlone() {
        PlantOperations editor("armop");
        editor.selectElements({"form"});
        {
            // A platform that reports the cut later than the text that replaces it.
            const QSignalBlocker untold(QGuiApplication::clipboard());
            editor->on_actCutMenuElement_triggered();
        }
        QVERIFY(editor->m_cutPending);
        QGuiApplication::clipboard()->setText("1\nform;\n");
        QCoreApplication::processEvents();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("1\nform;\n"));
        QVERIFY(editor->m_cutPending); // only a cut that it sees uses this up
    }

    void anotherContentLosesTheCut() {
        PlantOperations editor("armop");
        editor.selectElements({"form"});
        editor->on_actCutMenuElement_triggered();
        QGuiApplication::clipboard()->setText("else");
        editor.makeCurrent("grafiki");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
        QVERIFY(editor->element("form").isValid());
    }
};

QTEST_MAIN(TestMenuClipboard)
#include "tst_menu_clipboard.moc"
