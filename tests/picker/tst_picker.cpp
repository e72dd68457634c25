// The object picker in a real window over the tables of a real store.
#include "tests/menu/MenuProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"
#include "frame/WindowParts.h"
#include "picker/PopObjectList.h"

#include <QAction>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QWindow>

using namespace orvo::test;

namespace {

void folder(TestStore& store, const char* key, int type, const char* parent, const char* caption) {
    store.insert("MenuResourceFolder", {{"KeyLink", QString(key)},
                                        {"type_", type},
                                        {"ParentKey", parent ? QString(parent) : QString()},
                                        {"caption", QString(caption)}});
}

void resource(TestStore& store, const char* key, int type, const char* in, const char* name,
              const char* caption) {
    store.insert("MenuResource", {{"KeyLink", QString(key)},
                                  {"type_", type},
                                  {"MenuResourceFolderKey", in ? QString(in) : QString()},
                                  {"name_", QString(name)},
                                  {"caption", QString(caption)}});
}

/// Folders in folders, names that occur twice, and a kind without a root folder.
void fillCatalogue(TestStore& store) {
    folder(store, "fmod", 1, nullptr, "Модули");
    folder(store, "farch", 1, "fmod", "Архив");
    folder(store, "fdeep", 1, "farch", "Глубже");
    folder(store, "fzeta", 1, "fmod", "Яма");
    folder(store, "ffun", 2, nullptr, "функции");
    folder(store, "ffrm", 3, nullptr, "ФОРМЫ ОТОБРАЖЕНИЯ");
    folder(store, "ficons", 4, nullptr, "icons");
    folder(store, "fpumps", 4, "ficons", "насосы");
    folder(store, "fdocs", 4, nullptr, "docs");
    resource(store, "m1", 1, "fmod", "Trend", "Тренды");
    resource(store, "m2", 1, "fmod", "Archive", "Архив");
    resource(store, "m3", 1, "farch", "Same", "Первый");
    resource(store, "m4", 1, "fzeta", "Same", "Второй");
    resource(store, "m5", 1, "fdeep", "Deep", "Глубоко");
    resource(store, "m0", 1, nullptr, "Loose", "Вне папок");
    resource(store, "f1", 2, "ffun", "Sum", "Сумма");
    resource(store, "r1", 3, "ffrm", "Boiler", "Котёл");
    resource(store, "i1", 4, "ficons", "pump.png", "Насос");
    resource(store, "i2", 4, "ficons", "tank.png", "");
    resource(store, "i3", 4, "fpumps", "small.png", "");
    resource(store, "d1", 4, "fdocs", "manual.pdf", "");
    resource(store, "d2", 4, nullptr, "loose.txt", "");
}

/// A picker of a menu editor that has started over the catalogue.
struct Picker {
    explicit Picker(const char* moduleName = "Menu") : host(prepared()), editor(host, moduleName) {
        if (!editor.start())
            qFatal("the editor did not start");
        list = std::make_unique<CPopObjectList>(editor.module.get());
        watch = std::make_unique<ModelWatch>(list->treeModel);
        picked = std::make_unique<QSignalSpy>(list.get(), &CPopObjectList::btnOK_pressed);
    }
    ~Picker() { watch.reset(); }

    CPopObjectList* operator->() { return list.get(); }
    void show(int kind, const char* name = nullptr, bool multiple = false) {
        list->objectType = kind;
        list->multipleChoice = multiple;
        list->chosenName = name ? QString(name) : QString();
        list->hide();
        list->show();
        QVERIFY(QTest::qWaitForWindowExposed(list.get()));
    }
    void showFiles(const char* source, const char* name = nullptr, bool multiple = false) {
        list->sourceName = source ? QString(source) : QString();
        show(orvo::Kind::File, name, multiple);
    }
    /// The tree as text: names and captions.
    QString text() { return treetext::print(*list->treeModel, 4, {1}).replace(" 1=\n", "\n"); }
    QStringList selected() {
        QStringList keys;
        for (const QModelIndex& row : list->tvObj()->selectionModel()->selectedRows(4))
            keys << row.data().toString();
        return keys;
    }
    void click(const char* key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        list->tvObj()->expandAll();
        clickRow(list->tvObj(), list->treeModel->findIndexByKey(QString(key)), modifiers);
    }
    void ok() { QTest::mouseClick(button("btnOK"), Qt::LeftButton); }
    void cancel() { QTest::mouseClick(button("btnCancel"), Qt::LeftButton); }
    QPushButton* button(const char* name) { return list->findChild<QPushButton*>(QString(name)); }

    TestStore store;
    TestHost host;
    MenuEditor editor;
    std::unique_ptr<CPopObjectList> list;
    std::unique_ptr<ModelWatch> watch;
    std::unique_ptr<QSignalSpy> picked;

private:
    TestStore& prepared() {
        fillCatalogue(store);
        return store;
    }
};

const char modulesText[] = "Архив #farch\n"
                           "  Глубже #fdeep\n"
                           "    Deep #m5 1=Глубоко\n"
                           "  Same #m3 1=Первый\n"
                           "Яма #fzeta\n"
                           "  Same #m4 1=Второй\n"
                           "Archive #m2 1=Архив\n"
                           "Trend #m1 1=Тренды\n";

} // namespace

class TestPicker : public QObject {
    Q_OBJECT
private slots:
    void theFormIsAsDesigned() {
        Picker picker;
        QCOMPARE(picker->objectName(), QString("CPopObjectList"));
        QCOMPARE(picker->size(), QSize(784, 656));
        QCOMPARE(picker->windowTitle(), QString("Выбор ресурса"));
        QCOMPARE(picker->windowModality(), Qt::NonModal);
        QCOMPARE(picker->contextMenuPolicy(), Qt::CustomContextMenu);
        QCOMPARE(picker.button("btnOK")->text(), QString("ОК"));
        QCOMPARE(picker.button("btnCancel")->text(), QString("Отмена"));
        const auto action = [&](const char* name) {
            return picker->findChild<QAction*>(QString(name));
        };
        QCOMPARE(action("actProp")->text(), QString("Свойства"));
        QCOMPARE(action("actProp")->toolTip(), QString("Свойства таблицы"));
        QCOMPARE(action("actNew")->text(), QString("Новая таблица"));
        QCOMPARE(action("actNew")->toolTip(), QString("Новая таблица"));
        QCOMPARE(action("actDel")->text(), QString("Удалить"));
        QCOMPARE(action("actDel")->toolTip(), QString("Удалить таблицу"));
        for (const char* name : {"actProp", "actNew", "actDel"})
            QVERIFY(action(name)->associatedWidgets().isEmpty());
        const QLayout* layout = picker->layout();
        QCOMPARE(layout->objectName(), QString("verticalLayout"));
        QCOMPARE(layout->count(), 2);
        QCOMPARE(layout->itemAt(0)->widget()->objectName(), QString("tvObj"));
        const QLayout* row = layout->itemAt(1)->layout();
        QCOMPARE(row->objectName(), QString("hl"));
        QCOMPARE(row->count(), 3);
        QCOMPARE(row->itemAt(0)->spacerItem()->sizeHint(), QSize(40, 20));
        QCOMPARE(row->itemAt(1)->widget(), static_cast<QWidget*>(picker.button("btnOK")));
        QCOMPARE(row->itemAt(2)->widget(), static_cast<QWidget*>(picker.button("btnCancel")));
        QTreeView* tree = picker->tvObj();
        QCOMPARE(tree->textElideMode(), Qt::ElideNone);
        QCOMPARE(tree->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(tree->editTriggers(), QTreeView().editTriggers());
        QCOMPARE(tree->columnWidth(0), 300);
        QVERIFY(tree->styleSheet().contains("branch"));
        QStringList headers;
        for (int column = 0; column < picker->treeModel->columnCount(); ++column)
            headers << picker->treeModel->headerData(column, Qt::Horizontal).toString();
        QCOMPARE(headers, (QStringList{"Имя", "Описание", "UserBlock", "DateBlock", "KeyLink",
                                       "IsFolder", "Blocked"}));
    }

    void aNewPickerIsEmpty() {
        Picker picker;
        QVERIFY(picker->chosenKey.isNull());
        QVERIFY(picker->chosenName.isNull());
        QVERIFY(picker->sourceName.isNull());
        QCOMPARE(picker->treeModel->rowCount(), 0);
        QCOMPARE(picker->treeModel, picker->tvObj()->model());
        QVERIFY(picker->resourceTable.array);
        QVERIFY(picker->folderTable.array);
        QVERIFY(!picker->isVisible());
    }

    void modulesAreListedWithTheirFolders() {
        Picker picker;
        picker.show(1);
        QCOMPARE(picker.text(), QString(modulesText));
        QVERIFY(picker->treeModel->itemIsFolder(picker->treeModel->findIndexByKey("farch")));
        QVERIFY(!picker->treeModel->itemIsFolder(picker->treeModel->findIndexByKey("m3")));
        QCOMPARE(QWidget::keyboardGrabber(), nullptr);
        QCOMPARE(picker->focusWidget(), static_cast<QWidget*>(picker.button("btnCancel")));
    }

    void functionsAndFormsAreListedFromTheirRoots() {
        Picker picker;
        picker.show(2);
        QCOMPARE(picker.text(), QString("Sum #f1 1=Сумма\n"));
        picker.show(3);
        QCOMPARE(picker.text(), QString("Boiler #r1 1=Котёл\n"));
    }

    void otherKindsListNothing() {
        Picker picker;
        picker.show(1, nullptr, true);
        for (const int kind : {0, 5, -1, 1000}) {
            picker.show(kind, "Trend");
            QCOMPARE(picker.text(), QString());
            QCOMPARE(picker->tvObj()->selectionMode(), QAbstractItemView::ExtendedSelection);
        }
    }

    void aKindWithoutARootFolderIsEmptyAndPreselectsNothing() {
        Picker picker;
        picker.show(1, "Trend");
        QCOMPARE(picker->chosenKey, QString("m1"));
        picker.store.remove("MenuResourceFolder", "fmod");
        picker.editor->m_tabResFolder.RecDel(orvo::seekKey(picker.editor->m_tabResFolder, "fmod"));
        picker.show(1, "Trend");
        QCOMPARE(picker.text(), QString());
        QVERIFY(picker->chosenKey.isNull());
        QVERIFY(picker.selected().isEmpty());
    }

    void kindsWithoutAnyFolderLeaveTheChoice() {
        Picker picker;
        picker.show(1, "Trend");
        // No folder of the kind or of a later one: the search gives no position.
        CMDArray& folders = picker.editor->m_tabResFolder;
        while (orvo::recordCount(folders) > 0)
            folders.RecDel(MDARec(folders.array, 0, 0));
        picker.show(1, "Trend");
        QCOMPARE(picker.text(), QString());
        QCOMPARE(picker->chosenKey, QString("m1"));
        picker.showFiles("icons", "pump.png");
        QCOMPARE(picker.text(), QString());
        QCOMPARE(picker->chosenKey, QString("m1"));
    }

    void iconsAreListedFromTheirFolder() {
        Picker picker;
        for (const char* source : {"icons", "ICONS"}) {
            picker.showFiles(source);
            QCOMPARE(picker.text(), QString("насосы #fpumps\n"
                                            "  small.png #i3\n"
                                            "pump.png #i1\n"
                                            "tank.png #i2\n"));
        }
    }

    void anotherTopFolderIsListed() {
        Picker picker;
        picker.showFiles("docs");
        QCOMPARE(picker.text(), QString("manual.pdf #d1\n"));
    }

    void anUnknownTopFolderListsNothing() {
        Picker picker;
        picker.showFiles("nosuch", "pump.png");
        QCOMPARE(picker.text(), QString());
        QVERIFY(picker->chosenKey.isNull());
    }

    void withoutASourceTheWholeAreaIsListed() {
        Picker picker;
        for (const char* source : {static_cast<const char*>(nullptr), ""}) {
            picker.showFiles(source, "tank.png");
            QCOMPARE(picker.text(), QString("docs #fdocs\n"
                                            "  manual.pdf #d1\n"
                                            "icons #ficons\n"
                                            "  насосы #fpumps\n"
                                            "    small.png #i3\n"
                                            "  pump.png #i1\n"
                                            "  tank.png #i2\n"
                                            "loose.txt #d2\n"));
            QCOMPARE(picker.selected(), QStringList("i2"));
        }
    }

    void columnsAndSelectionFollowTheKind() {
        Picker picker;
        const auto hidden = [&] {
            QString columns;
            for (int column = 0; column < 7; ++column)
                columns += picker->tvObj()->isColumnHidden(column) ? '-' : '+';
            return columns;
        };
        for (const int kind : {1, 2, 3}) {
            picker.show(kind, nullptr, true);
            QCOMPARE(picker->tvObj()->selectionMode(), QAbstractItemView::ExtendedSelection);
            QCOMPARE(hidden(), QString("++-----"));
            picker.showFiles("icons", nullptr, true);
            QCOMPARE(picker->tvObj()->selectionMode(), QAbstractItemView::SingleSelection);
            QCOMPARE(hidden(), QString("+------"));
            picker.show(kind, nullptr, false);
            QCOMPARE(picker->tvObj()->selectionMode(), QAbstractItemView::SingleSelection);
            QCOMPARE(hidden(), QString("++-----"));
        }
    }

    void iconFilesShowThemselves() {
        Picker picker;
        QImage red(16, 16, QImage::Format_RGB32);
        red.fill(Qt::red);
        QVERIFY(red.save(picker.host.m_workDir + "files/icons/pump.png"));
        const auto colour = [&](const char* key) {
            const QIcon icon = picker->treeModel->findIndexByKey(QString(key))
                                   .data(Qt::DecorationRole)
                                   .value<QIcon>();
            return icon.isNull() ? QColor() : icon.pixmap(16).toImage().pixelColor(8, 8);
        };
        for (const char* source : {"icons", "Icons"}) {
            picker.showFiles(source);
            QCOMPARE(colour("i1"), QColor(Qt::red));
        }
        picker.showFiles("docs");
        QVERIFY(colour("d1") != QColor(Qt::red));
        picker.showFiles(nullptr);
        QVERIFY(colour("i1") != QColor(Qt::red));
        // A showing of another kind forgets it.
        picker.showFiles("icons");
        picker.show(1);
        QVERIFY(colour("m1") != QColor(Qt::red));
    }

    void iconsTellTheKind_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QByteArray>("image");
        QTest::newRow("modules") << 1 << "m1" << QByteArray("modul1");
        QTest::newRow("functions") << 2 << "f1" << QByteArray("function1");
        QTest::newRow("forms") << 3 << "r1" << QByteArray("file1");
        QTest::newRow("files") << 4 << "d1" << QByteArray("file1");
        QTest::newRow("folder of modules") << 1 << "farch" << QByteArray("closedfolder1");
        QTest::newRow("folder of files") << 4 << "fdocs" << QByteArray("closedfolder1");
    }

    void iconsTellTheKind() {
        QFETCH(int, kind);
        QFETCH(QString, key);
        QFETCH(QByteArray, image);
        Picker picker;
        picker.show(kind);
        // Folders show closed also when they are open.
        picker->tvObj()->expandAll();
        const QModelIndex row = picker->treeModel->findIndexByKey(key);
        QVERIFY(row.isValid());
        QCOMPARE(row.data(Qt::DecorationRole).value<QIcon>().pixmap(16, 16).toImage(),
                 orvo::image(image.constData()).pixmap(16, 16).toImage());
        QVERIFY(!row.siblingAtColumn(1).data(Qt::DecorationRole).isValid());
    }

    void theNameGivenIsPreselected() {
        Picker picker;
        picker.show(1, "Deep");
        QCOMPARE(picker.selected(), QStringList("m5"));
        QCOMPARE(picker->chosenKey, QString("m5"));
        QCOMPARE(picker->chosenName, QString("Deep"));
        // In sight, though its folders were closed.
        const QModelIndex row = picker->treeModel->findIndexByKey("m5");
        QVERIFY(picker->tvObj()->isExpanded(row.parent()));
        QVERIFY(picker->tvObj()->viewport()->rect().intersects(picker->tvObj()->visualRect(row)));
        // The whole row, so that OK delivers it.
        picker.ok();
        QCOMPARE(picker.picked->size(), 1);
        QCOMPARE(picker->chosenKey, QString("m5"));
    }

    void aNameOfTwoFoldersSelectsTheFirstInTheTree() {
        Picker picker;
        // A record that is no row of the tree does not end the search.
        resource(picker.store, "a0", 1, "nosuch", "Same", "Нигде");
        picker.host.deliver(*picker.editor.module);
        picker.show(1, "Same");
        QString first;
        QStringList named;
        orvo::walkAll(picker->resourceTable, 2, [&](const MDRData* record) {
            const QString key = orvo::textOf(record, "KeyLink");
            if (orvo::holdsText(record, "name_", "Same")) {
                named << key;
                if (first.isEmpty() && picker->treeModel->findIndexByKey(key).isValid())
                    first = key;
            }
            return true;
        });
        QCOMPARE(named, (QStringList{"a0", "m3", "m4"}));
        QCOMPARE(first, QString("m3"));
        QCOMPARE(picker.selected(), QStringList(first));
        QCOMPARE(picker->chosenKey, first);
    }

    void aNameThatIsNowhereSelectsNothing() {
        Picker picker;
        picker.show(1, "Trend");
        for (const char* name : {"Nowhere", "Loose", "Sum", "", "zzz"}) {
            picker.show(1, name);
            QVERIFY(picker.selected().isEmpty());
            QVERIFY(picker->chosenKey.isNull());
        }
        picker.show(1, nullptr);
        QVERIFY(picker.selected().isEmpty());
        QVERIFY(picker->chosenKey.isNull());
    }

    void namesCompareWithoutCase() {
        Picker picker;
        picker.show(1, "tREND");
        QCOMPARE(picker.selected(), QStringList("m1"));
        QCOMPARE(picker->chosenKey, QString("m1"));
    }

    void filesWithoutANameKeepTheChoice() {
        Picker picker;
        picker.showFiles("icons");
        picker.click("i2");
        picker.ok();
        QCOMPARE(picker->chosenKey, QString("i2"));
        picker.showFiles("icons");
        QVERIFY(picker.selected().isEmpty());
        QCOMPARE(picker->chosenKey, QString("i2"));
        picker.showFiles("icons", "");
        QCOMPARE(picker->chosenKey, QString("i2"));
        // The other kinds forget it.
        picker.show(1, nullptr);
        QVERIFY(picker->chosenKey.isNull());
    }

    void aFileIsPreselected() {
        Picker picker;
        picker.showFiles("icons", "small.png");
        QCOMPARE(picker.selected(), QStringList("i3"));
        QCOMPARE(picker->chosenKey, QString("i3"));
        picker.showFiles("icons", "manual.pdf");
        QVERIFY(picker.selected().isEmpty());
        QVERIFY(picker->chosenKey.isNull());
    }

    void okReportsTheFirstOfSeveral() {
        Picker picker;
        picker.show(1, nullptr, true);
        picker.click("m1");
        picker.click("m2", Qt::ControlModifier);
        picker.click("m5", Qt::ControlModifier);
        QCOMPARE(picker.selected().size(), 3);
        const QModelIndex first = picker->tvObj()->selectionModel()->selectedIndexes().first();
        const QString key = first.siblingAtColumn(4).data().toString();
        const QString name = first.siblingAtColumn(0).data().toString();
        picker.ok();
        QCOMPARE(picker.picked->size(), 1);
        QCOMPARE(picker->chosenKey, key);
        QCOMPARE(picker->chosenName, name);
        QVERIFY(!picker->isVisible());
    }

    void okReportsAFolderToo() {
        Picker picker;
        picker.show(1);
        picker.click("farch");
        picker.ok();
        QCOMPARE(picker.picked->size(), 1);
        QCOMPARE(picker->chosenKey, QString("farch"));
        QCOMPARE(picker->chosenName, QString("Архив"));
    }

    void okWithoutASelectionHidesSilently() {
        Picker picker;
        picker.show(1, "Nowhere");
        picker.ok();
        QCOMPARE(picker.picked->size(), 0);
        QVERIFY(!picker->isVisible());
        QVERIFY(picker->chosenKey.isNull());
        QCOMPARE(picker->chosenName, QString("Nowhere"));
    }

    void theSelectionStandsWhileTheSignalRuns() {
        Picker picker;
        picker.show(1, nullptr, true);
        QStringList seen;
        bool visible = false;
        connect(picker.list.get(), &CPopObjectList::btnOK_pressed, this, [&] {
            seen = picker.selected();
            visible = picker->isVisible();
        });
        picker.click("m2");
        picker.click("m1", Qt::ControlModifier);
        picker.ok();
        QCOMPARE(seen, (QStringList{"m2", "m1"}));
        QVERIFY(visible);
    }

    void cancelLeavesTheResult() {
        Picker picker;
        picker.show(1);
        picker.click("m2");
        picker.ok();
        picker.show(1, "Trend");
        picker.click("m2");
        picker.cancel();
        QVERIFY(!picker->isVisible());
        QCOMPARE(picker.picked->size(), 1);
        QCOMPARE(picker->chosenKey, QString("m1"));
        QCOMPARE(picker->chosenName, QString("Trend"));
    }

    void theTitleStays() {
        Picker picker;
        picker->setWindowTitle("Своё");
        picker.show(1);
        picker.cancel();
        picker.showFiles("icons");
        QCOMPARE(picker->windowTitle(), QString("Своё"));
    }

    void aNewResourceIsListedAtTheNextShow() {
        Picker picker;
        picker.show(2);
        resource(picker.store, "f2", 2, "ffun", "Avg", "Среднее");
        picker.host.deliver(*picker.editor.module);
        QCOMPARE(picker.text(), QString("Sum #f1 1=Сумма\n"));
        // The server is not asked.
        picker.store.sql("ALTER TABLE \"MenuResource\" RENAME TO \"gone\"");
        picker.show(2);
        QCOMPARE(picker.text(), QString("Avg #f2 1=Среднее\nSum #f1 1=Сумма\n"));
        QVERIFY(picker.host.failures.isEmpty());
    }

    void theTablesOfTheOwnerAreOnlyRead() {
        Picker picker;
        const uint32_t keys = picker.editor->m_tabResFolder.array->keyCount;
        const int records = orvo::recordCount(picker.editor->m_tabResource);
        picker.show(1);
        picker.showFiles("icons");
        QCOMPARE(picker.editor->m_tabResource.array->keyCount, 2u);
        QCOMPARE(picker.editor->m_tabResFolder.array->keyCount, keys);
        QCOMPARE(orvo::recordCount(picker.editor->m_tabResource), records);
        picker->resourceTable.RecDel(orvo::seekKey(picker->resourceTable, "m1"));
        QVERIFY(orvo::seekKey(picker.editor->m_tabResource, "m1"));
    }

    void theCopiesHaveTheirKeys() {
        Picker picker;
        picker.show(1);
        picker.show(2);
        QCOMPARE(picker->resourceTable.array->keyCount, 4u);
        QCOMPARE(picker->folderTable.array->keyCount, 4u);
        QCOMPARE(picker->resourceTable.status, MDX_OK);
        const auto keysBy = [](const CMDArray& table, int key) {
            QStringList keys;
            orvo::walkAll(table, key, [&](const MDRData* record) {
                keys << orvo::textOf(record, "KeyLink");
                return true;
            });
            return keys.join(' ');
        };
        QCOMPARE(keysBy(picker->folderTable, 0),
                 QString("farch fdeep fdocs ffrm ffun ficons fmod fpumps fzeta"));
        QCOMPARE(keysBy(picker->folderTable, 2),
                 QString("farch fdeep fmod fzeta ffun ffrm fdocs ficons fpumps"));
        QCOMPARE(keysBy(picker->folderTable, 1),
                 QString("fmod fdeep farch fzeta ffun ffrm fdocs ficons fpumps"));
        QCOMPARE(keysBy(picker->folderTable, 3),
                 QString("fdocs ffrm ffun ficons fmod fdeep fpumps farch fzeta"));
        QCOMPARE(orvo::recordCount(picker->resourceTable), 13);
        QCOMPARE(keysBy(picker->resourceTable, 0),
                 QString("d1 d2 f1 i1 i2 i3 m0 m1 m2 m3 m4 m5 r1"));
        QCOMPARE(keysBy(picker->resourceTable, 1),
                 QString("m0 m3 m5 m2 m1 m4 f1 r1 d2 d1 i1 i2 i3"));
        QCOMPARE(keysBy(picker->resourceTable, 2),
                 QString("m2 m5 m0 m3 m4 m1 f1 r1 d2 d1 i1 i3 i2"));
        QCOMPARE(keysBy(picker->resourceTable, 3),
                 QString("d2 m0 m3 m5 d1 r1 f1 i1 i2 m1 m2 i3 m4"));
    }

    void anotherModuleGivesNoTables() {
        Picker picker("Other");
        picker.show(1, "Trend");
        QCOMPARE(picker.text(), QString());
        QCOMPARE(orvo::recordCount(picker->resourceTable), 0);
    }

    void theModuleNameComparesWithoutCase() {
        for (const char* name : {"mENU", "Resources", "RESOURCES"}) {
            Picker picker(name);
            picker.show(1);
            QCOMPARE(picker.text(), QString(modulesText));
        }
    }

    void aMissingTableKeepsTheLastCopy() {
        Picker picker;
        picker.show(1);
        MDArray* folders = picker.editor->m_tabResFolder.array;
        picker.editor->m_tabResFolder.array = nullptr;
        picker.show(1, "Trend");
        picker.editor->m_tabResFolder.array = folders;
        QCOMPARE(picker->folderTable.status, -3);
        QCOMPARE(picker->resourceTable.status, MDX_OK);
        QCOMPARE(picker.text(), QString(modulesText));
        QCOMPARE(picker.selected(), QStringList("m1"));
        picker.show(1);
        QCOMPARE(picker->folderTable.status, MDX_OK);
    }

    void anEditedNameIsForgotten() {
        Picker picker;
        picker.show(2);
        const QModelIndex row = picker->treeModel->findIndexByKey("f1");
        QTest::mouseDClick(picker->tvObj()->viewport(), Qt::LeftButton, Qt::NoModifier,
                           picker->tvObj()->visualRect(row).center());
        picker->treeModel->setData(row, "Иное");
        picker.show(2);
        QCOMPARE(picker.text(), QString("Sum #f1 1=Сумма\n"));
    }

    void aCircleOfFoldersEnds() {
        Picker picker;
        picker.cancel();
        CMDArray& folders = picker.editor->m_tabResFolder;
        MDRData* root = folders.RecEdit(orvo::seekKey(folders, "fmod"));
        folders.SetValF(root, "ParentKey", orvo::textVar("fdeep"));
        folders.RecPost(root);
        picker.show(1);
        // The circle is shown up to the folder that is its own ancestor.
        QCOMPARE(picker->treeModel->findIndexByKey("fmod").parent(),
                 picker->treeModel->findIndexByKey("fdeep"));
        // Its resources are still on offer.
        for (const char* key : {"m1", "m2", "m3", "m4", "m5"})
            QVERIFY(picker->treeModel->findIndexByKey(key).isValid());
    }

    void aVeryDeepFolderIsListed() {
        Picker picker;
        CMDArray& folders = picker.editor->m_tabResFolder;
        QByteArray parent = "ffun";
        for (int level = 0; level < 3000; ++level) {
            const QByteArray key = "deep" + QByteArray::number(level);
            MDRData* record = MDARecNew(folders.array);
            folders.SetValF(record, "KeyLink", orvo::textVar(key));
            folders.SetValF(record, "type_", orvo::integerVar(2));
            folders.SetValF(record, "ParentKey", orvo::textVar(parent));
            folders.SetValF(record, "caption", orvo::textVar(key));
            folders.RecPost(record);
            parent = key;
        }
        picker->objectType = 2;
        picker->refreshTables();
        picker.watch.reset(); // looks at every level of the tree for every row
        picker->clearModel();
        picker->loadFunctions();
        QVERIFY(picker->treeModel->findIndexByKey("deep2999").isValid());
        QCOMPARE(picker->treeModel->rowCount(), 2);
    }

    void aLetterTypedInTheListSearchesIt() {
        Picker picker;
        picker.show(orvo::Kind::Module);
        QTreeView* list = picker->tvObj();
        list->setFocus();
        QTest::keyClick(list, 'd');
        auto* text = list->findChild<QLineEdit*>("treeSearchText");
        QVERIFY(text && text->isVisible());
        QTest::keyClicks(text, "ee");
        QCOMPARE(list->currentIndex().siblingAtColumn(0).data().toString(), QString("Deep"));
        QTest::keyClick(text, Qt::Key_Escape);
        QVERIFY(!text->isVisible() && picker->isVisible());
        QTest::keyClick(list, Qt::Key_F, Qt::ControlModifier);
        QVERIFY(text->isVisible());
        picker.show(orvo::Kind::Module);
        QVERIFY(!text->isVisible());
    }

    void aParentThatIsNoModuleGivesAnEmptyPicker() {
        QMainWindow window;
        CPopObjectList list(&window);
        const ModelWatch watch(list.treeModel);
        for (const int kind : {1, 4}) {
            list.objectType = kind;
            list.sourceName = "icons";
            list.hide();
            list.show();
            QCOMPARE(list.treeModel->rowCount(), 0);
        }
    }

    // ---------------------------------------------------------------------------------------------
    // What saves clicks

    void aDoubleClickChooses() {
        Picker picker;
        picker.show(orvo::Kind::Module);
        QTreeView* tree = picker->tvObj();
        const auto doubleClick = [&](const char* key) {
            const QModelIndex row = picker->treeModel->findIndexByKey(QString(key));
            tree->scrollTo(row);
            const QPoint at = tree->visualRect(row).center();
            QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, at);
            QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, at);
        };
        doubleClick("fzeta"); // a folder opens and closes
        QCOMPARE(picker.picked->size(), 0);
        QVERIFY(picker->isVisible());
        doubleClick("m1");
        QCOMPARE(picker.picked->size(), 1);
        QCOMPARE(picker->chosenKey, QString("m1"));
        QVERIFY(!picker->isVisible());
    }

    void keysWalkFromTheButtonIntoTheListAndChoose() {
        Picker picker;
        picker.show(orvo::Kind::Module);
        QPushButton* cancel = picker.button("btnCancel");
        QTest::keyClick(cancel, Qt::Key_Down);
        QTreeView* tree = picker->tvObj();
        QCOMPARE(picker->treeModel->getItemKeyLink(tree->currentIndex()), QString("farch"));
        for (const char* below : {"fdeep", "m5"}) {
            QTest::keyClick(tree, Qt::Key_Down);
            QCOMPARE(picker->treeModel->getItemKeyLink(tree->currentIndex()), QString(below));
        }
        QTest::keyClick(tree, Qt::Key_Return);
        QCOMPARE(picker.picked->size(), 1);
        QCOMPARE(picker->chosenKey, QString("m5"));
    }

    void whoTypesAtOnceFindsAndChoosesByEnter() {
        Picker picker;
        picker.show(orvo::Kind::Module);
        QTest::keyClick(picker.button("btnCancel"), 'd');
        auto* text = picker->tvObj()->findChild<QLineEdit*>("treeSearchText");
        QVERIFY(text && text->isVisible());
        QTest::keyClicks(text, "eex");
        QTest::keyClick(text, Qt::Key_Return);
        QCOMPARE(picker.picked->size(), 0); // there is no such row
        QTest::keyClick(text, Qt::Key_Backspace);
        QTest::keyClick(text, Qt::Key_Return);
        QCOMPARE(picker.picked->size(), 1);
        QCOMPARE(picker->chosenKey, QString("m5"));
    }

    void enterTakesWhatIsOffered() {
        Picker picker;
        picker.show(orvo::Kind::Module, "Trend");
        QTest::keyClick(picker.button("btnCancel"), Qt::Key_Return);
        QCOMPARE(picker->chosenKey, QString("m1"));
        QCOMPARE(picker.picked->size(), 1);
        // Who has gone to a button by Tab means that button.
        picker.show(orvo::Kind::Module, "Trend");
        QTest::keyClick(picker.button("btnOK"), Qt::Key_Tab);
        QTest::keyClick(picker.button("btnCancel"), Qt::Key_Return);
        QCOMPARE(picker.picked->size(), 1);
        QVERIFY(!picker->isVisible());
    }

    void foldersThatWereOpenAreOpenAgain() {
        Picker picker;
        picker.show(orvo::Kind::Module);
        const auto open = [&] {
            QStringList keys;
            for (const char* key : {"farch", "fdeep", "fzeta"})
                if (picker->tvObj()->isExpanded(picker->treeModel->findIndexByKey(QString(key))))
                    keys << key;
            return keys.join(' ');
        };
        QCOMPARE(open(), QString("farch fdeep fzeta")); // few rows: all at first
        picker->tvObj()->collapse(picker->treeModel->findIndexByKey("fzeta"));
        picker.show(orvo::Kind::Function);
        picker.show(orvo::Kind::Module);
        QCOMPARE(open(), QString("farch fdeep"));
    }

    void theTitleOnTheScreenIsThatOfTheKind() {
        Picker picker;
        const std::pair<int, const char*> kinds[] = {
            {orvo::Kind::Module, "Выбор модулей АРМ"},
            {orvo::Kind::Function, "Выбор функций АРМ"},
            {orvo::Kind::Form, "Выбор форм отображения АРМ"}};
        for (const auto& [kind, title] : kinds) {
            picker.show(kind);
            QCOMPARE(picker->windowHandle()->title(), QString(title));
            QCOMPARE(picker->windowTitle(), QString("Выбор ресурса")); // the owner's to set
        }
    }

    void aPaletteStaysAndListsWhatIsNew() {
        Picker picker;
        picker->becomePalette();
        picker.show(orvo::Kind::Module);
        picker.click("m1");
        picker.ok();
        QCOMPARE(picker.picked->size(), 1);
        QVERIFY(picker->isVisible());
        picker.cancel();
        QVERIFY(!picker->isVisible());
    }
};

QTEST_MAIN(TestPicker)
#include "tst_picker.moc"
