// A field of a menu element that is named once, in the list of fields, and goes through every
// operation of the editor.
#include "tests/menu/OperationsProbe.h"

#include "menu/Fields.h"

#include <QClipboard>

using namespace orvo::test;
using orvo::menu::MenuColumn;

namespace {

/// Where no code but the list knows of it.
constexpr int hintColumn = MenuColumn::Count;

/// The list without its entry for `separator`, and that field as one that was added today.
orvo::editor::RecordFields withNewField() {
    orvo::editor::RecordFields fields{};
    for (const orvo::editor::RecordField& field : orvo::menu::elementFields())
        if (field.column != MenuColumn::Separator)
            fields.add(field);
    fields.add(
        {.column = hintColumn,
         .title = "Hint",
         .name = "separator",
         .type = orvo::editor::FieldType::Flag,
         .saved = orvo::editor::AllRows,
         .copied = orvo::editor::Copied::Value,
         .passport = {
             .row = "hint", .caption = "Подсказка", .editor = MyEditorCheck, .position = 9}});
    return fields;
}

class FieldsProbe : public OperationsProbe {
public:
    using OperationsProbe::OperationsProbe;
    using OrvoMenu::m_elementFields;
    using OrvoMenu::on_editor_valueChanged;
};

struct ListWithNewField : HostOnFilledStore {
    ListWithNewField() : HostOnFilledStore(fillPlant), editor(host, "Menu") {
        editor->m_elementFields = withNewField();
        if (!editor.start())
            qFatal("the editor did not start");
        editor.view("tvDesck")->expandAll();
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        editor.view("tvMenu")->expandAll();
    }
    FieldsProbe* operator->() { return editor.module.get(); }
    void select(const char* key) {
        editor.view("tvMenu")->selectionModel()->setCurrentIndex(
            editor->element(key), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    void deliver() { host.deliver(*editor.module); }
    QVariant cell(const char* key) {
        return editor->element(key).siblingAtColumn(hintColumn).data();
    }
    /// Gives an element the new field.
    void set(const char* key) {
        select(key);
        editor->on_editor_valueChanged("hint", true);
        editor->on_save_pressed();
    }
    QString written() { return host.writes().take(); }

    EditorUnderTest<FieldsProbe> editor;
};

} // namespace

class TestMenuFields : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    void aNewElementHasIt() {
        ListWithNewField f;
        f.select("grafiki");
        f->on_actNewElemFolder_triggered();
        QCOMPARE(f.editor.view("tvMenu")->currentIndex().siblingAtColumn(hintColumn).data(),
                 QVariant(false));
        f->on_save_pressed();
        QVERIFY(f.written().contains("separator=false"));
    }
    void anEditSavesItAndItsEchoShowsIt() {
        ListWithNewField f;
        f.set("calc");
        QVERIFY(f.written().contains("separator=true"));
        f.deliver();
        QCOMPARE(f.cell("calc"), QVariant(true));
        QCOMPARE(f->m_propModel->getRowValue("hint"), QVariant(true));
    }
    void aCancelledEditTakesItBack() {
        ListWithNewField f;
        f.select("calc");
        f->on_editor_valueChanged("hint", true);
        QCOMPARE(f.cell("calc"), QVariant(true));
        f->on_cancel_pressed();
        QCOMPARE(f.cell("calc"), QVariant(false));
    }
    void aChangeOfOthersShowsIt() {
        ListWithNewField f;
        f.store.update("Menu", {{"KeyLink", QString("calc")}, {"separator", true}});
        f.deliver();
        QCOMPARE(f.cell("calc"), QVariant(true));
    }
    void itStaysTypedWhileOthersChangeAnotherField() {
        ListWithNewField f;
        f.select("calc");
        f->on_editor_valueChanged("hint", true);
        f.store.update("Menu", {{"KeyLink", QString("calc")}, {"ico", QString("pump.png")}});
        f.editor.view("tvMenu")->selectionModel()->blockSignals(true);
        f.deliver();
        f.editor.view("tvMenu")->selectionModel()->blockSignals(false);
        QCOMPARE(f.cell("calc"), QVariant(true));
    }
    void copiesHaveIt_data() {
        QTest::addColumn<bool>("cut");
        dataRow("copied", false);
        dataRow("cut", true);
    }
    void copiesHaveIt() {
        QFETCH(bool, cut);
        ListWithNewField f;
        f.set("form");
        f.set("glubzhe");
        f.deliver();
        f.select("glubzhe");
        if (cut)
            f->on_actCutMenuElement_triggered();
        else
            f->on_actCopyMenuElement_triggered();
        f.select("MenuRootNode");
        f.written();
        f->on_actPasteMenuElement_triggered();
        QCOMPARE(f.written().count("separator=true"), 2);
    }
    void theCopyOfADesktopHasIt() {
        ListWithNewField f;
        f.set("form");
        f.deliver();
        f->on_actCopyDescktopOrFolder_triggered();
        f.editor.view("tvDesck")->setCurrentIndex(f->desck("sklad"));
        f.written();
        f->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(f.written().count("separator=true"), 1);
    }
    void theTableAsTextNamesIt() {
        ListWithNewField f;
        QVERIFY(f->tableText("Menu").section('\n', 0, 0).contains("separator"));
    }
};

QTEST_MAIN(TestMenuFields)
#include "tst_menu_fields.moc"
