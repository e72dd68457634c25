// The menu of a desktop: how it is fetched and shown, and the passports of its elements.
#include "tests/menu/MenuProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"
#include "frame/Values.h"

#include <QRegularExpression>
#include <QSignalSpy>

using namespace orvo::test;
using orvo::menu::MenuColumn;

namespace {

/// The menu as text: captions, keys, and those of the columns that are not empty.
QString shown(const MenuEditor& editor, const QList<int>& columns = {}) {
    return treetext::print(*editor.module->m_menuModel, MenuColumn::KeyLink, columns)
        .remove(QRegularExpression(" \\d+=(?=[ \\n])"));
}

/// The passport as text: "name|caption|editor|read-only|value" a row, category rows in brackets.
QStringList passport(const MenuEditor& editor) {
    const PropModel& model = *editor.module->m_propModel;
    QStringList lines;
    for (int top = 0; top < model.rowCount(); ++top) {
        const QModelIndex category = model.index(top, 0);
        lines << QString("[%1|%2]").arg(category.sibling(top, 4).data().toString(),
                                        category.data().toString());
        for (int row = 0; row < model.rowCount(category); ++row) {
            const auto value = [&](int column) {
                return model.index(row, column, category).data().toString();
            };
            lines << QStringList{value(4), value(0), value(2), value(3), value(1)}.join('|');
        }
    }
    return lines;
}

} // namespace

class TestMenuElements : public QObject {
    Q_OBJECT
private slots:
    void aDesktopShowsItsMenuToTheFirstLevel() {
        StartedPlant editor("armop");
        QCOMPARE(shown(editor, {1, 2}), QString("Меню #MenuRootNode\n"
                                                "  Схема #shema 1=файл 2=Boiler\n"
                                                "  Графики #grafiki 1=папка\n"
                                                "    Тренд #trend 1=модуль 2=Trend\n"
                                                "    Расчёт #calc 1=функция 2=Calc\n"
                                                "    Глубже #glubzhe 1=папка\n"
                                                "      Котёл #form 1=файл 2=Boiler\n"
                                                "  Пропавший #propal\n"));
        QVERIFY(editor.view("tvMenu")->isExpanded(editor->element("MenuRootNode")));
        QVERIFY(!editor.view("tvMenu")->isExpanded(editor->element("grafiki")));
        QVERIFY(!editor.view("tvMenu")->currentIndex().isValid());
        QVERIFY(editor.host.failures.isEmpty());
    }

    void allColumnsAreFilled() {
        TestStore store;
        fillPlant(store);
        store.insert("Menu", {{"KeyLink", QString("full")},
                              {"parent", QString("grafiki")},
                              {"FolderKey", QString("armop")},
                              {"caption", QString("Полный")},
                              {"order_", 7000},
                              {"ico", QString("pump.png")},
                              {"separator", true},
                              {"oneCopy", true},
                              {"MenuResourceKey", QString("rcalc")},
                              {"params", QString("-x 1")}});
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        const auto row = [&](const char* key) {
            QVariantList values;
            const QModelIndex index = editor->element(key);
            for (int column = 0; column < MenuColumn::Count; ++column)
                values << index.sibling(index.row(), column).data();
            return values;
        };
        QCOMPARE(row("full"),
                 QVariantList({"Полный", "функция", "Calc", "armop", "pump.png", "full", "rcalc",
                               true, 7000, "-x 1", "grafiki", true, false}));
        const QVariantList bare = row("glubzhe");
        QCOMPARE(bare[MenuColumn::Command], QVariant());
        QVERIFY(orvo::isNull(bare[MenuColumn::Icon]));
        QVERIFY(bare[MenuColumn::MenuResKey].toString().isEmpty());
        QCOMPARE(bare[MenuColumn::OneCopy], QVariant(false));
        QCOMPARE(bare[MenuColumn::Separator], QVariant(false));
        QCOMPARE(bare[MenuColumn::IsNew], QVariant(false));
        QCOMPARE(bare[MenuColumn::Order], QVariant(2000));
    }

    void theRootRowHasNothingButCaptionAndKey() {
        StartedPlant editor("armop");
        const QModelIndex root = editor->element("MenuRootNode");
        for (int column = 0; column < MenuColumn::Count; ++column)
            QCOMPARE(root.sibling(0, column).data().isValid(),
                     column == MenuColumn::Caption || column == MenuColumn::KeyLink);
    }

    void anEmptyDesktopShowsACollapsedRoot() {
        StartedPlant editor("armpech");
        QCOMPARE(shown(editor), QString("Меню #MenuRootNode\n"));
        QVERIFY(!editor.view("tvMenu")->isExpanded(editor->element("MenuRootNode")));
    }

    void aFolderOfDesktopsShowsNoMenuAtAll() {
        StartedPlant editor("armop", "shema");
        QVERIFY(!passport(editor).isEmpty());
        editor.view("tvDesck")->setCurrentIndex(editor->desck("ceh"));
        QCOMPARE(shown(editor), QString());
        QCOMPARE(passport(editor), QStringList());
    }

    void keysCompareWithoutRegardToCase() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "unten", "GRAFIKI", "Внизу", 5000, "RForm");
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("ARMOP"));
        const QModelIndex row = editor->element("UNTEN");
        QVERIFY(row.isValid());
        QCOMPARE(row.parent(), editor->element("Grafiki"));
        QCOMPARE(row.sibling(row.row(), MenuColumn::Command).data(), QVariant("Boiler"));
        QCOMPARE(row.sibling(row.row(), MenuColumn::MenuResKey).data(), QVariant("RForm"));
        QCOMPARE(editor->getMenuElementPosition("Unten", "grafiki"), row.row());
    }

    void aFolderIsLoadedByItsKey() {
        StartedPlant editor("armop");
        const QString before = shown(editor, {1, 2, 10});
        const QModelIndex folder = editor->element("grafiki");
        editor->m_menuModel->removeRows(0, editor->m_menuModel->rowCount(folder), folder);
        editor->loadMenuFolder("GRAFIKI");
        QCOMPARE(shown(editor, {1, 2, 10}), before);
        // Without a row, or without records below it, nothing is shown.
        for (const char* key : {"nosuch", "calc"})
            editor->loadMenuFolder(key);
        QCOMPARE(shown(editor, {1, 2, 10}), before);
    }

    void elementsOfAMissingParentAreNotShown() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "lost", "nosuch", "Потерянный", 0);
        addElement(store, "armop", "lostbelow", "lost", "И ниже", 0, "rform");
        // The parent exists, but belongs to another desktop.
        addElement(store, "obshiy", "other", "", "Чужая папка", 0);
        addElement(store, "armop", "stray", "other", "Чужой", 0, "rform");
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        for (const char* key : {"lost", "lostbelow", "other", "stray"})
            QVERIFY(!editor->element(key).isValid());
        QVERIFY(editor->element("propal").isValid());
        QCOMPARE(orvo::recordCount(editor->m_tabMenu), 10);
    }

    void aDesktopWithOnlyLostElementsShowsAnEmptyMenu() {
        TestStore store;
        fillPlant(store);
        addElement(store, "obshiy", "lost", "nosuch", "Потерянный", 0);
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("obshiy"));
        QCOMPARE(shown(editor), QString("Меню #MenuRootNode\n"));
    }

    void aCircleOfFoldersIsNotShownAndDoesNotHang() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "a", "", "А", 0);
        addElement(store, "armop", "b", "a", "Б", 0);
        addElement(store, "armop", "self", "", "Сам", 0);
        store.moveBelow("Menu", "parent", "a", "b");
        store.moveBelow("Menu", "parent", "self", "SELF");
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        for (const char* key : {"a", "b", "self"})
            QVERIFY(!editor->element(key).isValid());
        QVERIFY(editor->element("form").isValid());
    }

    void aVeryDeepMenuIsLoaded() {
        TestStore store;
        fillPlant(store);
        constexpr int depth = 20000;
        store.sql(qPrintable(
            QString("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                    "INSERT INTO \"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", "
                    "\"order_\") SELECT 'k' || i, CASE i WHEN 0 THEN NULL ELSE 'k' || (i - 1) END, "
                    "'obshiy', 'n', 0 FROM n")
                .arg(depth - 1)));
        TestHost host(store);
        auto window = std::make_unique<MenuProbe>(&host);
        QVERIFY(window->ModuleStart());
        window->findChild<QTreeView*>("tvDesck")->setCurrentIndex(window->desck("obshiy"));
        QModelIndex row = window->m_menuModel->index(0, 0);
        int levels = 0;
        for (; window->m_menuModel->rowCount(row) == 1; ++levels)
            row = window->m_menuModel->index(0, 0, row);
        QCOMPARE(levels, depth);
        window->findChild<QTreeView*>("tvDesck")->setCurrentIndex(window->desck("armop"));
        QVERIFY(window->element("form").isValid());
    }

    void foldersAreWhatHasNoResource() {
        TestStore store;
        fillPlant(store);
        addResource(store, "rzero", 0, "Zero");
        addElement(store, "armop", "zero", "", "Ресурс вида 0", 3000, "rzero");
        addElement(store, "armop", "below", "zero", "Под ним", 0, "rform");
        addElement(store, "armop", "stored", "", "Файл", 4000, "rfile");
        addElement(store, "armop", "belowfile", "stored", "Под файлом", 0, "rform");
        addElement(store, "armop", "belowlost", "propal", "Под пропавшим", 0, "rform");
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        // The word in column 1 decides.
        const QModelIndex zero = editor->element("zero");
        QCOMPARE(zero.sibling(zero.row(), MenuColumn::Type).data(), QVariant("папка"));
        QCOMPARE(editor->element("below").parent(), zero);
        // A stored file has no word of its own, and no folder's.
        const QModelIndex file = editor->element("stored");
        QCOMPARE(file.sibling(file.row(), MenuColumn::Type).data().toString(), QString());
        QCOMPARE(file.sibling(file.row(), MenuColumn::Command).data().toString(),
                 QString("manual.pdf"));
        QVERIFY(!editor->element("belowfile").isValid());
        QVERIFY(!editor->element("belowlost").isValid());
    }

    void aFailedFetchShowsTheOldRowsAgain() {
        StartedPlant editor("armop");
        const QString before = shown(editor, {1, 2, 8});
        editor.store.sql("ALTER TABLE \"Menu\" RENAME TO \"gone\"");
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armpech"));
        QCOMPARE(shown(editor, {1, 2, 8}), before);
        QCOMPARE(editor->m_currentDesckKey, QString("armpech"));
        QCOMPARE(editor->m_tabMenu.array->keyCount, 2u);
        QVERIFY(editor.view("tvMenu")->isExpanded(editor->element("MenuRootNode")));
    }

    void aFailedFirstFetchShowsTheRootAlone() {
        StartedPlant editor;
        editor.store.sql("ALTER TABLE \"Menu\" RENAME TO \"gone\"");
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        QCOMPARE(shown(editor), QString("Меню #MenuRootNode\n"));
    }

    void keysWithQuotesReachTheServerWhole() {
        TestStore store;
        const char* const key = "d'1 or '1'='1 %1";
        addDesck(store, key, "", "Кавычки", false);
        addDesck(store, "other", "", "Другой", false);
        addElement(store, key, "e1", "", "Свой", 0);
        addElement(store, "other", "e2", "", "Чужой", 0);
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck(key));
        QCOMPARE(shown(editor), QString("Меню #MenuRootNode\n  Свой #e1\n"));
    }

    void comingBackFetchesAgain() {
        StartedPlant editor("armpech");
        addElement(editor.store, "armpech", "late", "", "Позже", 0);
        QVERIFY(!editor->element("late").isValid());
        editor.view("tvDesck")->setCurrentIndex(editor->desck("ceh"));
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armpech"));
        QVERIFY(editor->element("late").isValid());
    }

    void positionsFollowTheTable() {
        TestStore store;
        fillPlant(store);
        // Equal places are told apart by the key.
        addElement(store, "armop", "b", "glubzhe", "Второй", 0, "rform");
        addElement(store, "armop", "a", "glubzhe", "Первый", 0, "rform");
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        const auto position = [&](const char* key, const char* parent) {
            return editor->getMenuElementPosition(QString::fromUtf8(key),
                                                  QString::fromUtf8(parent));
        };
        for (const char* key : {"shema", "grafiki", "propal"})
            QCOMPARE(position(key, ""), editor->element(key).row());
        for (const char* key : {"trend", "calc", "glubzhe"})
            QCOMPARE(position(key, "GRAFIKI"), editor->element(key).row());
        for (const char* key : {"a", "b", "form"})
            QCOMPARE(position(key, "glubzhe"), editor->element(key).row());
        QCOMPARE(position("a", "glubzhe"), 0);
        QCOMPARE(position("FORM", "glubzhe"), 2);
    }

    void aKeyThatIsNoSiblingGetsTheLastPlace() {
        StartedPlant editor;
        QCOMPARE(editor->getMenuElementPosition("trend", ""), -1);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        QCOMPARE(editor->getMenuElementPosition("nosuch", ""), 2);
        QCOMPARE(editor->getMenuElementPosition("nosuch", "grafiki"), 2);
        QCOMPARE(editor->getMenuElementPosition("form", "grafiki"), 2);
        QCOMPARE(editor->getMenuElementPosition("trend", ""), 2);
        QCOMPARE(editor->getMenuElementPosition("nosuch", "calc"), -1);
        QCOMPARE(editor->getMenuElementPosition("nosuch", "zzz"), -1);
    }

    void anElementWithoutItsResourceKeepsItsWords() {
        StartedPlant editor("armop");
        const QModelIndex row = editor->element("propal");
        editor->m_menuModel->setData(row.sibling(row.row(), MenuColumn::Type), "слово");
        editor->m_menuModel->setData(row.sibling(row.row(), MenuColumn::Command), "имя");
        editor->m_menuModel->setData(row.sibling(row.row(), MenuColumn::IsNew), true);
        editor->loadMenuRow(row.parent(), row.row(), orvo::seekKey(editor->m_tabMenu, "propal"));
        QCOMPARE(row.sibling(row.row(), MenuColumn::Type).data(), QVariant("слово"));
        QCOMPARE(row.sibling(row.row(), MenuColumn::Command).data(), QVariant("имя"));
        QCOMPARE(row.sibling(row.row(), MenuColumn::IsNew).data(), QVariant(false));
    }

    void theFolderPassport() {
        TestStore store;
        fillPlant(store);
        store.update(
            "Menu",
            {{"KeyLink", QString("grafiki")}, {"ico", QString("trend.png")}, {"separator", true}});
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        editor.view("tvMenu")->setCurrentIndex(editor->element("grafiki"));
        QCOMPARE(passport(editor),
                 QStringList({"[properties|Свойства]", "type|Тип|0|true|папка",
                              "name|Наименование|0|false|Графики", "icon|Иконка|3|false|trend.png",
                              "separator|Разделитель|2|false|true"}));
    }

    // Nothing in it can be edited: no record stands behind the root row.
    void theRootRowShowsTheFolderPassport() {
        StartedPlant editor("armop", "MenuRootNode");
        QCOMPARE(passport(editor),
                 QStringList({"[properties|Свойства]", "type|Тип|0|true|папка",
                              "name|Наименование|0|true|Меню", "icon|Иконка|3|true|",
                              "separator|Разделитель|2|true|"}));
    }

    void theElementPassport() {
        TestStore store;
        fillPlant(store);
        store.update("Menu", {{"KeyLink", QString("calc")},
                              {"params", QString("/p")},
                              {"ico", QString("pump.png")},
                              {"oneCopy", true}});
        MenuOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        editor.view("tvMenu")->setCurrentIndex(editor->element("calc"));
        QCOMPARE(
            passport(editor),
            QStringList({"[properties|Свойства]", "keylink|Идентификатор|0|true|rcalc",
                         "type|Тип|0|true|функция", "name|Наименование|0|false|Расчёт",
                         "object|Объект|3|false|Calc", "params|Параметры|0|false|/p",
                         "onecopy|Один эжкземпляр|2|false|true", "icon|Иконка|3|false|pump.png",
                         "separator|Разделитель|2|false|false"}));
        // An element without its resource has an empty type and object.
        editor.view("tvMenu")->setCurrentIndex(editor->element("propal"));
        QCOMPARE(passport(editor).mid(1, 4),
                 QStringList({"keylink|Идентификатор|0|true|nosuch", "type|Тип|0|true|",
                              "name|Наименование|0|false|Пропавший", "object|Объект|3|false|"}));
    }

    void fillingAPassportIsNoEdit() {
        StartedPlant editor;
        QSignalSpy edits(editor->m_propModel.get(), &PropModel::editorRowValueChanged);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        for (const char* key : {"MenuRootNode", "grafiki", "shema", "propal"})
            editor.view("tvMenu")->setCurrentIndex(editor->element(key));
        QCOMPARE(edits.count(), 0);
        QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NoEdit));
    }

    void theCategoryIsOpenAndTheFlagsToggleInPlace() {
        StartedPlant editor("armop", "grafiki");
        QTreeView* view = editor.view("tvProp");
        QVERIFY(view->isExpanded(view->model()->index(0, 0)));
        QSignalSpy edits(editor->m_propModel.get(), &PropModel::editorRowValueChanged);
        const QModelIndex name = editor->m_propModel->findIndexByKey("separator");
        const QModelIndex value = name.sibling(name.row(), 1);
        QCOMPARE(value.data(), QVariant(false));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(value).center());
        QCOMPARE(edits.count(), 1);
        QCOMPARE(edits[0], QVariantList({"separator", true}));
        QCOMPARE(editor->m_propModel->getRowValue("separator"), QVariant(true));
    }
};

QTEST_MAIN(TestMenuElements)
#include "tst_menu_elements.moc"
