// An editor that is neither of the library's two, over a real store: what it has from EditorWindow
// works without a line of theirs.
#include "tests/editor/ExtensionEditor.h"
#include "tests/menu/ModuleFixture.h"
#include "tests/menu/WindowHands.h"

#include <QToolButton>
#include <QtTest>

using namespace orvo::test;

namespace {

class ExtensionProbe : public ExtensionEditor {
public:
    using ExtensionEditor::ExtensionEditor;
    using ExtensionEditor::m_btnCancel;
    using ExtensionEditor::m_btnSave;
    using ExtensionEditor::m_edit;
    using ExtensionEditor::m_model;
    using ExtensionEditor::m_propModel;
};

void fillExtensions(TestStore& store) {
    for (const char* name : {"pdf", "doc", "txt"})
        store.insert("MenuFileExt", {{"KeyLink", QString("k") + name}, {"fileExt", QString(name)}});
}

/// The extensions doc, pdf and txt in a started editor.
class Extensions : public HostOnFilledStore, public EditorUnderTest<ExtensionProbe> {
public:
    Extensions() : HostOnFilledStore(fillExtensions), EditorUnderTest(host, "Extensions") {
        if (!start())
            qFatal("the editor did not start");
    }
    QString list() const {
        QStringList rows;
        for (int row = 0; row < module->m_model->rowCount(); ++row)
            rows << module->m_model->index(row, 0).data().toString();
        return rows.join(' ');
    }
    void makeCurrent(const char* key) {
        view("tvExt")->setCurrentIndex(module->m_model->findIndexByKey(key));
    }
    QString current() const { return view("tvExt")->currentIndex().data().toString(); }
    QString passport() const { return module->m_propModel->getRowValue("ext").toString(); }
    bool buttonsEnabled() const {
        if (module->m_btnSave->isEnabled() != module->m_btnCancel->isEnabled())
            qFatal("the two buttons differ");
        return module->m_btnSave->isEnabled();
    }
    void type(const char* text) {
        QLineEdit* line = passportLine(view("tvProp"), *module->m_propModel, "ext");
        line->selectAll();
        typeText(line, text);
    }
    void press(QToolButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    QString written() { return host.writes().take(); }
    void deliver() { host.deliver(*module); }
};

} // namespace

class TestThirdEditor : public QObject {
    Q_OBJECT

private slots:
    void itListsItsTable() {
        Extensions f;
        QCOMPARE(f.list(), QString("doc pdf txt"));
        QVERIFY(!f.buttonsEnabled());
        f.makeCurrent("kpdf");
        QCOMPARE(f.passport(), QString("pdf"));
        QCOMPARE(f.watchedModels(), 2);
    }

    void aTableThatDoesNotComeIsLoggedUnderItsName() {
        TestStore store;
        TestHost host(store);
        EditorUnderTest<ExtensionProbe> editor(host, "Extensions");
        store.sql("DROP TABLE \"MenuFileExt\"");
        QVERIFY(!editor.module->ModuleStart());
        QCOMPARE(host.logLines.last().place,
                 QString("orvo::test::ExtensionEditor::loadTables->MenuFileExt"));
        host.deliver(*editor.module); // and what comes then does nothing
        QVERIFY(!editor->m_model);
    }

    void aNewOneIsSavedAndComesBack() {
        Extensions f;
        f->add();
        QVERIFY(f.buttonsEnabled());
        f.type("csv");
        f.press(f->m_btnSave);
        QVERIFY(!f.buttonsEnabled());
        QCOMPARE(f.written(), QString("MenuFileExt\n  +#1 fileExt='csv'\n"));
        f.deliver();
        QCOMPARE(f.list(), QString("csv doc pdf txt"));
        QCOMPARE(f.current(), QString("csv"));
    }

    void aNewOneIsDropped() {
        Extensions f;
        f->add();
        f.press(f->m_btnCancel);
        QCOMPARE(f.list(), QString("doc pdf txt"));
        QCOMPARE(f.written(), QString());
    }

    void aMoveAwaySavesAnotherName() {
        Extensions f;
        f.makeCurrent("kpdf");
        f.type("ps");
        QCOMPARE(f->ModEditText(), QString("расширение \"ps\""));
        f.makeCurrent("kdoc");
        QCOMPARE(f.written(), QString("MenuFileExt\n  ~kpdf fileExt='ps'\n"));
        f.deliver();
        QCOMPARE(f.list(), QString("doc ps txt"));
        QCOMPARE(f->ModEditText(), QString());
    }

    void aNameIsTakenBack() {
        Extensions f;
        f.makeCurrent("kpdf");
        f.type("ps");
        f.press(f->m_btnCancel);
        QCOMPARE(f.list(), QString("doc pdf txt"));
        QCOMPARE(f.passport(), QString("pdf"));
        QCOMPARE(f.written(), QString());
    }

    void changesOfOthersShowInTheirPlace() {
        Extensions f;
        f.makeCurrent("kpdf");
        f.store.insert("MenuFileExt", {{"KeyLink", "kzip"}, {"fileExt", "zip"}});
        f.store.update("MenuFileExt", {{"KeyLink", "kpdf"}, {"fileExt", "xps"}});
        f.store.remove("MenuFileExt", "kdoc");
        f.deliver();
        QCOMPARE(f.list(), QString("txt xps zip"));
        QCOMPARE(f.current(), QString("xps"));
        QCOMPARE(f.passport(), QString("xps"));
    }

    void aTypedNameGivesWayToAnothersOnly() {
        Extensions f;
        f.makeCurrent("kpdf");
        f.type("ps");
        f.store.update("MenuFileExt", {{"KeyLink", "kdoc"}, {"fileExt", "zip"}});
        f.deliver();
        QCOMPARE(f.list(), QString("ps txt zip"));
        f.store.update("MenuFileExt", {{"KeyLink", "kpdf"}, {"fileExt", "xps"}});
        f.deliver();
        QCOMPARE(f.list(), QString("txt xps zip"));
        QVERIFY(f.buttonsEnabled());
    }

    void itIsDeletedAfterAYes() {
        Extensions f;
        f.makeCurrent("kpdf");
        f->askToDelete();
        QCOMPARE(boxText(*f.module), QString("Уведомление\nУдалить расширение \"pdf\"?"));
        answerBox(*f.module, NoRole);
        QVERIFY(!boxStands(*f.module));
        QCOMPARE(f.written(), QString());
        f->askToDelete();
        answerBox(*f.module, YesRole);
        QCOMPARE(f.written(), QString("MenuFileExt\n  -kpdf\n"));
        f.deliver();
        QCOMPARE(f.list(), QString("doc txt"));
        QCOMPARE(f.current(), QString("txt"));
    }
};

QTEST_MAIN(TestThirdEditor)
#include "tst_third_editor.moc"
