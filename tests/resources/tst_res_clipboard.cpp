// Rows on their way to another folder: cut and paste, drops, and bytes on the clipboard that no
// editor has put there.
#include "tests/menu/WindowHands.h"
#include "tests/resources/WritingProbe.h"

#include "frame/Records.h"
#include "tests/menu/Outage.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QItemSelectionModel>
#include <QMimeData>

using namespace orvo::test;
using orvo::resources::resourcesMime;

namespace {

QClipboard& clipboard() {
    return *QGuiApplication::clipboard();
}

void putOnClipboard(const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(resourcesMime, bytes);
    clipboard().setMimeData(mime);
}

/// The editor over the catalogue, all rows in sight.
struct Window : Writing {
    explicit Window(Fill fill = nullptr) : Writing(fill) {
        tree = view();
        tree->expandAll();
    }
    QString parentOf(const char* key) const {
        return editor.module->m_resModel->getItemKeyLink(editor.module->row(key).parent());
    }
    void paste(const QByteArray& bytes, const char* target) {
        makeCurrent(target);
        putOnClipboard(bytes);
        editor->on_actPaste_triggered();
    }

    QTreeView* tree = nullptr;
};

} // namespace

class TestResClipboard : public QObject {
    Q_OBJECT
private slots:
    void init() { clipboard().clear(); }

    // Cutting

    void aCutPutsTheKeysOnTheClipboard() {
        Window window;
        window.select({"rlog", "rtable"});
        window.editor->on_actCut_triggered();
        QCOMPARE(onClipboard(), QByteArray("1\nrlog;rtable;\n"));
        QCOMPARE(clipboard().mimeData()->formats(), QStringList(resourcesMime));
    }

    void aCutChangesNothing() {
        Window window;
        window.select({"rlog"});
        window.editor->on_actCut_triggered();
        QCOMPARE(window.written(), QString());
        QCOMPARE(window.parentOf("rlog"), QString("mod"));
        QVERIFY(window.editor->m_focusKey.isEmpty());
        QVERIFY(window.tree->selectionModel()->isSelected(window.editor->row("rlog")));
    }

    void aCutOfAFolderNamesItAlone() {
        Window window;
        window.select({"boilers"});
        window.editor->on_actCut_triggered();
        QCOMPARE(onClipboard(), QByteArray("3\nboilers;\n"));
    }

    void theTypeIsThatOfTheFirstRow() {
        Window window;
        window.select({"rpump"});
        window.editor->on_actCut_triggered();
        QCOMPARE(onClipboard(), QByteArray("4\nrpump;\n"));
        window.select({"rcalc"});
        window.editor->on_actCut_triggered();
        QCOMPARE(onClipboard(), QByteArray("2\nrcalc;\n"));
    }

    void aCutOfNothingLeavesTheClipboard() {
        Window window;
        clipboard().setText("before");
        window.tree->clearSelection();
        window.editor->on_actCut_triggered();
        QCOMPARE(clipboard().text(), QString("before"));
    }

    void aCutOfRowsWithoutRecordsLeavesTheClipboard_data() {
        QTest::addColumn<QByteArray>("key");
        for (const char* key : {"MenuResources", "FileResources", "WrongFolder", "unsaved"})
            dataRow(key, QByteArray(key));
    }

    void aCutOfRowsWithoutRecordsLeavesTheClipboard() {
        QFETCH(QByteArray, key);
        Window window;
        const QModelIndex folder = window.editor->row("mod");
        window.editor->m_resModel->insertRows(0, 1, folder);
        window.editor->m_resModel->setData(
            window.editor->m_resModel->index(0, ResColumn::KeyLink, folder), "unsaved");
        clipboard().setText("before");
        window.select({key.constData()});
        window.editor->on_actCut_triggered();
        QCOMPARE(clipboard().text(), QString("before"));
    }

    void aFolderKnownByItsContentsIsCut_data() {
        QTest::addColumn<QStringList>("gone");
        QTest::addColumn<bool>("isCut");
        const QStringList forms{"rboiler", "rburner"};
        dataRow("by resources and a folder", QStringList("boilers"), true);
        dataRow("by resources", QStringList({"boilers", "old"}), true);
        dataRow("by a folder", QStringList("boilers") + forms, true);
        dataRow("by nothing", QStringList({"boilers", "old"}) + forms, false);
    }

    void aFolderKnownByItsContentsIsCut() {
        QFETCH(QStringList, gone);
        Window window;
        for (const QString& key : gone)
            window.editor->forgetRecord(key);
        window.select({"boilers"});
        window.editor->on_actCut_triggered();
        QFETCH(bool, isCut);
        QCOMPARE(onClipboard(), isCut ? QByteArray("3\nboilers;\n") : QByteArray());
    }

    void aFolderInACircleIsCut() {
        Window window;
        window.store.moveBelow("MenuResourceFolder", "ParentKey", "docs", "deep");
        window.deliver();
        window.select({"deep"});
        window.editor->on_actCut_triggered();
        QCOMPARE(onClipboard(), QByteArray("4\ndeep;\n"));
    }

    void aCutWithoutAServerLeavesTheClipboard() {
        Window window;
        clipboard().setText("before");
        window.select({"rlog"});
        const StructureOutage outage;
        window.editor->on_actCut_triggered();
        QCOMPARE(clipboard().text(), QString("before"));
    }

    // Pasting

    void aPasteMovesTheRows() {
        Window window;
        window.select({"rlog", "rtable"});
        window.editor->on_actCut_triggered();
        window.makeCurrent("alarms");
        window.editor->on_actPaste_triggered();
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rlog MenuResourceFolderKey='alarms'\n"
                                           "  ~rtable MenuResourceFolderKey='alarms'\n"));
        // Nothing moves before the server says so.
        QCOMPARE(window.parentOf("rlog"), QString("mod"));
        QCOMPARE(window.currentKey(), QString("alarms"));
        QCOMPARE(window.editor->m_focusKey, QString("rtable"));
        window.deliver();
        QCOMPARE(window.parentOf("rlog"), QString("alarms"));
        QCOMPARE(window.parentOf("rtable"), QString("alarms"));
        QCOMPARE(window.currentKey(), QString("rtable"));
        QVERIFY(window.editor->m_focusKey.isNull());
    }

    void aPasteTakesTheCutOffTheClipboard() {
        Window window;
        window.select({"rlog"});
        window.editor->on_actCut_triggered();
        window.makeCurrent("alarms");
        window.editor->on_actPaste_triggered();
        QVERIFY(onClipboard().isEmpty());
        window.written();
        window.makeCurrent("trends");
        window.editor->on_actPaste_triggered();
        QCOMPARE(window.written(), QString());
    }

    void foldersGoOutBehindResources() {
        Window window;
        window.paste("1\ntrends;rlog;\n", "alarms");
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rlog MenuResourceFolderKey='alarms'\n"
                                           "MenuResourceFolder\n"
                                           "  ~trends ParentKey='alarms'\n"));
        window.deliver();
        QCOMPARE(window.parentOf("trends"), QString("alarms"));
        QCOMPARE(window.parentOf("rtrend"), QString("trends"));
    }

    void pastedAtTheTopOfTheFileAreaTheLinkIsNull() {
        Window window;
        window.paste("4\nrpump;deep;\n", "FileResources");
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rpump MenuResourceFolderKey=NULL\n"
                                           "MenuResourceFolder\n"
                                           "  ~deep ParentKey=NULL\n"));
        window.deliver();
        QCOMPARE(window.parentOf("rpump"), QString("FileResources"));
    }

    void pastedOnAResourceNothingHappens() {
        Window window;
        window.paste("1\nrlog;\n", "rtrend");
        QCOMPARE(window.written(), QString());
        QVERIFY(onClipboard().isEmpty());
        QVERIFY(window.editor->m_focusKey.isEmpty());
    }

    void withoutACurrentRowNothingIsPasted() {
        Window window;
        putOnClipboard("1\nrlog;\n");
        window.tree->setCurrentIndex(QModelIndex());
        window.editor->on_actPaste_triggered();
        QCOMPARE(window.written(), QString());
        QVERIFY(onClipboard().isEmpty());
    }

    void rowsThatAreGoneAreLeftOut() {
        Window window;
        window.paste("1\nrlog;gone;rtable;alsogone;\n", "alarms");
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rlog MenuResourceFolderKey='alarms'\n"
                                           "  ~rtable MenuResourceFolderKey='alarms'\n"));
        QCOMPARE(window.editor->m_focusKey, QString("rtable"));
    }

    void whatAnotherHasDeletedSinceTheCutIsNamed() {
        for (const bool all : {false, true}) {
            Window window;
            window.select({"rlog", "rtable"});
            window.editor->on_actCut_triggered();
            for (const char* key : all ? std::vector{"rlog", "rtable"} : std::vector{"rlog"})
                window.store.remove("MenuResource", key);
            window.deliver();
            window.makeCurrent("alarms");
            window.editor->on_actPaste_triggered();
            QCOMPARE(window.written(),
                     all ? QString()
                         : QString("MenuResource\n  ~rtable MenuResourceFolderKey='alarms'\n"));
            QCOMPARE(window.box(),
                     all ? QString("Ошибка\nНе вставлено. После вырезания удалено: модуль «Журнал» "
                                   "(Log), модуль «Архив» (Table).")
                         : QString("Ошибка\nВставлено не всё. После вырезания удалено: модуль "
                                   "«Журнал» (Log)."));
        }
    }

    void withoutAnyRowNothingGoesOut() {
        Window window;
        window.paste("1\ngone;\n", "alarms");
        QCOMPARE(window.host.writes().calls.size(), 0);
        QVERIFY(onClipboard().isEmpty());
    }

    void aRowNamedInAnotherCaseIsMoved() {
        Window window;
        window.paste("1\nRLog;\n", "alarms");
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~RLog MenuResourceFolderKey='alarms'\n"));
        window.deliver();
        QCOMPARE(window.parentOf("rlog"), QString("alarms"));
        QCOMPARE(window.currentKey().toLower(), QString("rlog"));
        QVERIFY(window.editor->m_focusKey.isNull());
        QCOMPARE(window.host.failures, QStringList());
    }

    void aKeyInForeignLettersMovesTheRowItFound() {
        Window window;
        addItem(window.store, "?", 1, "mod", "Question", "Вопрос");
        addItem(window.store, "disk", 1, "mod", "Disk", "Диск");
        window.deliver();
        // The Kelvin sign and the long s are a "k" and an "s" in another case.
        for (const char* key : {"dis\u212A", "di\u017Fk"}) {
            window.paste(QByteArray("1\n") + key + ";\n", "alarms");
            QCOMPARE(window.written(), QString("MenuResource\n"
                                               "  ~disk MenuResourceFolderKey='alarms'\n"));
            window.deliver();
            QCOMPARE(window.parentOf("disk"), QString("alarms"));
            QCOMPARE(window.currentKey(), QString("disk"));
            window.editor->on_res_dragdrop(window.editor->row("trends"), {QString::fromUtf8(key)});
            QCOMPARE(window.written(), QString("MenuResource\n"
                                               "  ~disk MenuResourceFolderKey='trends'\n"));
            window.deliver();
            QCOMPARE(window.parentOf("disk"), QString("trends"));
        }
        QCOMPARE(window.parentOf("?"), QString("mod"));
        QCOMPARE(window.host.failures, QStringList());
    }

    void whatWouldBeLostIsNotMoved_data() {
        QTest::addColumn<QByteArray>("row");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QString>("reason");
        const auto add = [](const char* name, const char* row, const char* target,
                            const char* why) {
            dataRow(name, QByteArray(row), QByteArray(target), QString(why));
        };
        add("a form among modules", "rboiler", "alarms", "Здесь место ресурсам другого вида");
        add("a module among functions", "rlog", "calc", "Здесь место ресурсам другого вида");
        add("among forms without a folder", "rboiler", "WrongFolder", "другого вида");
        add("a folder into itself", "docs", "docs", "Папку нельзя поместить в неё саму.");
        add("a folder below itself", "docs", "deep", "Папку нельзя поместить в неё саму.");
        add("a folder of menus below itself", "boilers", "old",
            "Папку нельзя поместить в неё саму.");
        add("the folder of a kind", "frm", "boilers", "Эта папка держит все ресурсы своего вида.");
        add("a file beside its namesake", "rtwin", "docs", "Такое имя там уже есть: папка «docs».");
        add("at the top", "rtop", "FileResources", "Такое имя там уже есть");
        add("beside one not shown", "rtwin2", "FileResources", "Такое имя там уже есть");
        add("a folder beside its namesake", "deep2", "docs",
            "Такое имя там уже есть: папка «docs».");
    }

    void whatWouldBeLostIsNotMoved() {
        QFETCH(QByteArray, row);
        QFETCH(QByteArray, target);
        QFETCH(QString, reason);
        const auto fill = [](TestStore& store) {
            addItem(store, "rtwin", 4, "icons", "manual.txt", "Другое руководство");
            addItem(store, "rtop", 4, "icons", "readme.txt", "Другое");
            addItem(store, "rtwin2", 4, "icons", "hidden.txt", "Ещё");
            addItem(store, "rhidden", 4, "FileResources", "hidden.txt", "Не видно");
            addFolder(store, "deep2", 4, "icons", "DEEP");
        };
        Window window(fill);
        const QByteArray kind =
            QByteArray::number(window.editor->row(row, ResColumn::Type).data().toInt());
        const QByteArray payload = kind + '\n' + row + ";\n";
        window.paste(payload, target);
        QCOMPARE(window.written(), QString());
        QVERIFY(boxStands(*window.editor.module));
        QVERIFY2(boxText(*window.editor.module).startsWith("Ошибка\nНе перемещено: "), "a title");
        QVERIFY2(boxText(*window.editor.module).contains(reason),
                 qPrintable(boxText(*window.editor.module)));
        QCOMPARE(onClipboard(), payload); // for a better place
        window.editor->on_common_error_message(nullptr);
        window.editor->on_res_dragdrop(window.editor->row(target), {QString(row)});
        QVERIFY(boxStands(*window.editor.module));
        QCOMPARE(window.written(), QString());
        QVERIFY(window.editor->m_focusKey.isEmpty());
    }

    void filesThatDifferInCaseAreNoNamesakes() {
        Window window([](TestStore& store) {
            addItem(store, "rtwin", 4, "icons", "Manual.txt", "Другое руководство");
        });
        window.paste("4\nrtwin;\n", "docs");
        QCOMPARE(window.written(),
                 QString("MenuResource\n  ~rtwin MenuResourceFolderKey='docs'\n"));
    }

    void aResourceAtTheTopTakesNoDrop() {
        Window window;
        addFolder(window.store, "late", 1, "mod", "Позже"); // has no row before the next start
        window.store.update("MenuResource", {{"KeyLink", QString("rlog")},
                                             {"MenuResourceFolderKey", QString("late")}});
        window.deliver();
        QVERIFY(!window.editor->row("rlog").parent().isValid());
        window.editor->on_res_dragdrop(window.editor->row("rlog"), {"rtable"});
        QCOMPARE(window.written(), QString());
        QVERIFY(boxText(*window.editor.module).contains("Это не папка: модуль «Журнал» (Log)."));
    }

    void theFolderOfAKindIsNotCut() {
        Window window;
        clipboard().setText("before");
        window.select({"frm"});
        window.editor.action("actCut")->setEnabled(true); // left switched on by another row
        window.editor.action("actCut")->trigger();
        QCOMPARE(clipboard().text(), QString("before"));
        QVERIFY(boxText(*window.editor.module)
                    .contains("Не вырезано: папка «формы отображения» держит все ресурсы"));
    }

    void pastedWhereItIsARowIsSelectedAgain() {
        Window window;
        window.paste("1\nrtable;rlog;\n", "mod");
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rtable MenuResourceFolderKey='mod'\n"
                                           "  ~rlog MenuResourceFolderKey='mod'\n"));
        window.deliver();
        QCOMPARE(window.currentKey(), QString("rlog"));
        QCOMPARE(window.parentOf("rlog"), QString("mod"));
    }

    void aRefusedPasteLeavesTheRows() {
        Window window;
        window.host.writes().refusedTable = "MenuResource";
        window.paste("1\nrlog;trends;\n", "alarms");
        window.deliver();
        QCOMPARE(window.parentOf("rlog"), QString("mod"));
        QCOMPARE(window.parentOf("trends"), QString("alarms")); // a call of its own
        QCOMPARE(window.currentKey(), QString("trends"));
        QVERIFY(!window.editor->m_popMessageBox);
        window.paste("1\nrlog;\n", "alarms");
        window.deliver();
        QCOMPARE(window.parentOf("rlog"), QString("mod"));
        QCOMPARE(window.currentKey(), QString("alarms")); // no change of it has come
    }

    void aPasteWithoutAServerLosesTheCut() {
        Window window;
        const StructureOutage outage;
        window.paste("1\nrlog;\n", "alarms");
        QCOMPARE(window.written(), QString());
        QVERIFY(onClipboard().isEmpty());
        QVERIFY(window.editor->m_focusKey.isEmpty());
    }

    void theActionsAreConnected() {
        Window window;
        window.select({"rtrend"});
        window.editor.action("actCut")->trigger();
        QCOMPARE(onClipboard(), QByteArray("1\nrtrend;\n"));
        window.makeCurrent("alarms");
        QVERIFY(window.editor.action("actPaste")->isEnabled());
        window.editor.action("actPaste")->trigger();
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rtrend MenuResourceFolderKey='alarms'\n"));
        window.select({"rtrend"});
        clipboard().setText("before");
        window.editor.action("actCopy")->setEnabled(true);
        window.editor.action("actCopy")->trigger();
        QCOMPARE(clipboard().text(), QString("before"));
    }

    // Foreign bytes

    void otherTypesStayOnTheClipboard_data() {
        QTest::addColumn<QByteArray>("type");
        for (const char* type : {"0", "5", "-1", "", "x", "1x", "99999999999999999999",
                                 "4294967297", "0x1", "1.0", "٣"})
            dataRow(type, QByteArray(type));
    }

    void otherTypesStayOnTheClipboard() {
        QFETCH(QByteArray, type);
        Window window;
        const QByteArray bytes = type + "\nrlog;\n";
        window.paste(bytes, "alarms");
        QCOMPARE(window.written(), QString());
        QCOMPARE(onClipboard(), bytes);
    }

    void hostileBytesWriteNothing_data() {
        QTest::addColumn<QByteArray>("bytes");
        dataRow("nothing", QByteArray(""));
        dataRow("no line feed", QByteArray("1"));
        dataRow("no second line feed", QByteArray("1\nrlog;"));
        dataRow("no keys", QByteArray("1\n\n"));
        dataRow("only separators", QByteArray("1\n;;;\n"));
        dataRow("line feeds", QByteArray("\n\n\n\n"));
        dataRow("keys first", QByteArray("rlog;\n1\n"));
        dataRow("no UTF-8", QByteArray("1\n\xff\xfe\xf0\x28;\xc3;\n"));
        dataRow("zero bytes", QByteArray("1\n\0rlog;rtable;\n", 16));
        dataRow("other separator", QByteArray("1\nrlog,rtable\n"));
        dataRow("quotes", QByteArray("1\n' OR 1=1 --;\n"));
        dataRow("separators without end",
                QByteArray("1\n") + QByteArray(8 << 20, ';') + QByteArray("\n"));
        dataRow("one endless key", QByteArray("1\n") + QByteArray(8 << 20, 'r') + ";\n");
    }

    void hostileBytesWriteNothing() {
        QFETCH(QByteArray, bytes);
        Window window;
        window.paste(bytes, "alarms");
        QCOMPARE(window.host.writes().calls.size(), 0);
        QVERIFY(window.editor->m_focusKey.isEmpty());
        QVERIFY(!window.editor->m_popMessageBox);
        window.makeCurrent("trends"); // looks at the clipboard
    }

    void aRowNamedTwiceGoesOutOnce() {
        Window window;
        window.paste("1\nrlog;RLOG;rlog;\n", "alarms");
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rlog MenuResourceFolderKey='alarms'\n"));
    }

    void manyUnknownKeysAreQuicklyPassedOver() {
        Window window;
        QByteArray bytes = "1\n";
        for (int i = 0; i < 200000; ++i)
            bytes += "rlog;unknown" + QByteArray::number(i) + ';';
        QElapsedTimer timer;
        timer.start();
        window.paste(bytes + '\n', "alarms");
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rlog MenuResourceFolderKey='alarms'\n"));
        QVERIFY2(timer.elapsed() < 20000, "the time grows faster than the keys");
    }

    void theClipboardsTypeIsTold() {
        Window window;
        window.select({"rlog"});
        window.editor->on_actCut_triggered();
        QVERIFY(window.editor->checkClipBoardType(1));
        QVERIFY(!window.editor->checkClipBoardType(3));
        clipboard().setText("1\nrlog;\n");
        QVERIFY(!window.editor->checkClipBoardType(1));
        putOnClipboard("x\nrlog;\n");
        QVERIFY(!window.editor->checkClipBoardType(0));
        clipboard().clear();
        QVERIFY(!window.editor->checkClipBoardType(0));
    }

    void foreignChangesOfTheClipboardAreIgnored() {
        Window window;
        window.select({"rlog"});
        window.editor->on_actCut_triggered();
        clipboard().setText("foreign");
        QCOMPARE(clipboard().text(), QString("foreign"));
        window.makeCurrent("alarms");
        window.editor->on_actPaste_triggered();
        QCOMPARE(clipboard().text(), QString("foreign"));
        QCOMPARE(window.written(), QString());
    }

    // Dropping

    void aDropMovesTheRows() {
        Window window;
        window.editor->on_res_dragdrop(window.editor->row("alarms"), {"rlog", "rtable"});
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rlog MenuResourceFolderKey='alarms'\n"
                                           "  ~rtable MenuResourceFolderKey='alarms'\n"));
        QCOMPARE(window.parentOf("rlog"), QString("mod"));
        QCOMPARE(window.editor->m_focusKey, QString("rtable"));
        window.deliver();
        QCOMPARE(window.parentOf("rlog"), QString("alarms"));
        QCOMPARE(window.currentKey(), QString("rtable"));
        QVERIFY(window.editor->m_focusKey.isNull());
    }

    void aDropAtTheTopWritesEmptyText_data() {
        QTest::addColumn<QByteArray>("target");
        dataRow("files", QByteArray("FileResources"));
        dataRow("menus", QByteArray("MenuResources"));
    }

    void aDropAtTheTopWritesEmptyText() {
        QFETCH(QByteArray, target);
        Window window;
        window.editor->on_res_dragdrop(window.editor->row(target), {"rpump", "deep"});
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rpump MenuResourceFolderKey=''\n"
                                           "MenuResourceFolder\n"
                                           "  ~deep ParentKey=''\n"));
        window.deliver();
        QCOMPARE(window.parentOf("rpump"), QString("FileResources"));
    }

    void aDropLeavesOutRowsThatAreGone() {
        Window window;
        window.editor->on_res_dragdrop(window.editor->row("alarms"), {"gone", "rlog", "lost"});
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rlog MenuResourceFolderKey='alarms'\n"));
        QCOMPARE(window.editor->m_focusKey, QString("rlog"));
        window.editor->on_res_dragdrop(window.editor->row("alarms"), {"gone"});
        window.editor->on_res_dragdrop(window.editor->row("alarms"), {});
        QCOMPARE(window.host.writes().calls.size(), 0);
    }

    void aDropOfFoldersAndResources() {
        Window window;
        window.editor->on_res_dragdrop(window.editor->row("icons"), {"deep", "rmanual", "rreadme"});
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rmanual MenuResourceFolderKey='icons'\n"
                                           "  ~rreadme MenuResourceFolderKey='icons'\n"
                                           "MenuResourceFolder\n"
                                           "  ~deep ParentKey='icons'\n"));
        window.deliver();
        QCOMPARE(window.parentOf("deep"), QString("icons"));
        QCOMPARE(window.currentKey(), QString("rreadme"));
    }

    void aDropThroughTheModel() {
        Window window;
        ResTreeModel& model = *window.editor->m_resModel;
        const std::unique_ptr<QMimeData> drag(
            model.mimeData({window.editor->row("rlog"), window.editor->row("rtable")}));
        QVERIFY(drag);
        const QModelIndex target = window.editor->row("alarms");
        QVERIFY(model.canDropMimeData(drag.get(), Qt::MoveAction, -1, 0, target));
        QVERIFY(!model.dropMimeData(drag.get(), Qt::MoveAction, -1, 0, target));
        QCOMPARE(window.written(), QString("MenuResource\n"
                                           "  ~rlog MenuResourceFolderKey='alarms'\n"
                                           "  ~rtable MenuResourceFolderKey='alarms'\n"));
    }

    void aDropWithoutAServerWritesNothing() {
        Window window;
        const StructureOutage outage;
        window.editor->on_res_dragdrop(window.editor->row("alarms"), {"rlog"});
        QCOMPARE(window.written(), QString());
        QVERIFY(window.editor->m_focusKey.isEmpty());
    }

    void theFocusWaitsForItsRow() {
        Window window;
        window.makeCurrent("rlog");
        window.editor->m_focusKey = "later";
        window.deliver();
        QCOMPARE(window.editor->m_focusKey, QString("later"));
        QCOMPARE(window.currentKey(), QString("rlog"));
        addItem(window.store, "later", 1, "mod", "Later", "Позже");
        window.deliver();
        QVERIFY(window.editor->m_focusKey.isNull());
        QCOMPARE(window.currentKey(), QString("later"));
    }
};

QTEST_MAIN(TestResClipboard)
#include "tst_res_clipboard.moc"
