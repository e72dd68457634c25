// Paths in the stores, extraction to the disk, and opening a form in the host.
#include "tests/resources/ResProbe.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QTimer>

using namespace orvo::test;

namespace {

orvo::store::FileToPut file(const char* path, const char* name, std::string_view bytes) {
    return {path, name, bytes, {}};
}

void put(const orvo::store::Status& status) {
    if (!status.ok())
        qFatal("not stored: %s", status.text.c_str());
}

void select(ResEditor& editor, std::initializer_list<const char*> keys) {
    QItemSelectionModel* selection = editor.view("tvRes")->selectionModel();
    selection->clearSelection();
    for (const char* key : keys)
        selection->select(editor->row(key),
                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

/// Extracts the selection into a directory; an empty one stands for Cancel. True if the dialog was
/// shown.
bool extract(ResEditor& editor, const QString& directory) {
    bool shown = false;
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        shown = true;
        if (dialog->fileMode() != QFileDialog::Directory ||
            !dialog->testOption(QFileDialog::ShowDirsOnly) ||
            dialog->parent() != editor.module.get())
            qFatal("not the dialog that asks for a directory");
        if (directory.isEmpty()) {
            dialog->reject();
            return;
        }
        dialog->selectFile(directory);
        static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
    });
    editor.action("actExtractFiles")->setEnabled(true);
    editor.action("actExtractFiles")->trigger();
    return shown;
}

QByteArray content(const QString& path) {
    QFile opened(path);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(none)");
}

class CallingHost : public TestHost {
public:
    using TestHost::TestHost;
    struct Call {
        int code;
        const void* reserved;
        QByteArray command;
        QByteArray argument;
    };
    QVector<Call> calls;
    void moduleCall(COrvoCliMod*, int code, void* data) override {
        const auto* words = static_cast<const char* const*>(data);
        calls.append({code, words[0], words[1], words[2]});
    }
};

} // namespace

class TestResExtraction : public QObject {
    Q_OBJECT
private slots:
    void pathsOfForms_data();
    void pathsOfForms();
    void pathsOfFiles_data();
    void pathsOfFiles();
    void formsLandFlatInTheDirectory();
    void filesAreWritten();
    void emptyFilesAreNotCreated();
    void equalNamesOverwriteEachOther();
    void aCancelledDialogWritesNothing();
    void foldersAndModulesAskNothing_data();
    void foldersAndModulesAskNothing();
    void namesThatLeaveTheDirectoryAreSkipped_data();
    void namesThatLeaveTheDirectoryAreSkipped();
    void whatCannotBeWrittenIsPassedOver();
    void aFailedJobWritesNothing();
    void theHostOpensTheForm_data();
    void theHostOpensTheForm();
    void withoutARecordTheHostHearsNothing();
};

void TestResExtraction::pathsOfForms_data() {
    QTest::addColumn<QString>("path");
    QTest::newRow("frm") << "";
    QTest::newRow("boilers") << "Котлы";
    QTest::newRow("old") << "Котлы/Старые";
}

void TestResExtraction::pathsOfForms() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    QTEST(editor->getFormPath(editor->row(QTest::currentDataTag())), "path");
}

void TestResExtraction::pathsOfFiles_data() {
    QTest::addColumn<QString>("path");
    QTest::newRow("FileResources") << "";
    QTest::newRow("rreadme") << "";
    QTest::newRow("docs") << "docs";
    QTest::newRow("rmanual") << "docs";
    QTest::newRow("deep") << "docs/deep";
    QTest::newRow("rdeep") << "docs/deep";
}

void TestResExtraction::pathsOfFiles() {
    TestStore store;
    fillCatalogue(store);
    addItem(store, "rdeep", 4, "deep", "deep.txt", "Глубоко");
    TestHost host(store);
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    QTEST(editor->getFilePath(editor->row(QTest::currentDataTag())), "path");
}

void TestResExtraction::formsLandFlatInTheDirectory() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    put(host.ownStore().formPut(
        "Котлы", {file("", "Boiler", std::string_view("a\0b", 3)), file("", "Boiler.png", "png")}));
    put(host.ownStore().formPut("Котлы", {file("", "Burner", "burn")}));
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    QTemporaryDir target;
    select(editor, {"rboiler", "rburner"});
    QVERIFY(extract(editor, target.path()));
    QCOMPARE(QDir(target.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList({"Boiler", "Boiler.png", "Burner"}));
    QCOMPARE(content(target.filePath("Boiler")), QByteArray("a\0b", 3));
    QCOMPARE(content(target.filePath("Burner")), QByteArray("burn"));
    QVERIFY(!editor.view("tvRes")->selectionModel()->hasSelection());
}

void TestResExtraction::filesAreWritten() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    put(host.ownStore().filePut(
        {file("docs", "manual.txt", "read me"), file("", "readme.txt", "top")}));
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    QTemporaryDir target;
    select(editor, {"rmanual"});
    QVERIFY(extract(editor, target.path()));
    select(editor, {"rreadme"});
    QVERIFY(extract(editor, target.path()));
    QCOMPARE(content(target.filePath("manual.txt")), QByteArray("read me"));
    QCOMPARE(content(target.filePath("readme.txt")), QByteArray("top"));
}

void TestResExtraction::emptyFilesAreNotCreated() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    put(host.ownStore().formPut("Котлы", {file("", "Boiler", ""), file("", "Boiler.txt", "text")}));
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    QTemporaryDir target;
    select(editor, {"rboiler"});
    QVERIFY(extract(editor, target.path()));
    QCOMPARE(QDir(target.path()).entryList(QDir::Files), QStringList("Boiler.txt"));
}

void TestResExtraction::equalNamesOverwriteEachOther() {
    TestStore store;
    fillCatalogue(store);
    addItem(store, "rother", 4, "docs", "note.txt", "Другое");
    TestHost host(store);
    put(host.ownStore().filePut({file("docs", "note.txt", "new")}));
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    QTemporaryDir target;
    QFile old(target.filePath("note.txt"));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("a longer old text");
    old.close();
    select(editor, {"rother"});
    QVERIFY(extract(editor, target.path()));
    QCOMPARE(content(target.filePath("note.txt")), QByteArray("new"));
}

void TestResExtraction::aCancelledDialogWritesNothing() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    put(host.ownStore().formPut("Котлы", {file("", "Boiler", "1")}));
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    select(editor, {"rboiler"});
    QVERIFY(extract(editor, QString()));
    QVERIFY(!editor.view("tvRes")->selectionModel()->hasSelection());
}

void TestResExtraction::foldersAndModulesAskNothing_data() {
    QTest::addColumn<bool>("staysSelected");
    QTest::newRow("boilers") << true;
    QTest::newRow("FileResources") << true;
    QTest::newRow("rlog") << false;
}

void TestResExtraction::foldersAndModulesAskNothing() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    select(editor, {QTest::currentDataTag()});
    QVERIFY(!extract(editor, QString()));
    QTEST(editor.view("tvRes")->selectionModel()->hasSelection(), "staysSelected");
}

void TestResExtraction::namesThatLeaveTheDirectoryAreSkipped_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("up") << "../evil.txt";
    QTest::newRow("below") << "sub/evil.txt";
    QTest::newRow("backslash") << "..\\evil.txt";
    QTest::newRow("dots") << "..";
    QTest::newRow("dot") << ".";
    QTest::newRow("none") << "";
    QTest::newRow("control") << "evil\n.txt";
}

// The store refuses such names; a database may hold them all the same.
void TestResExtraction::namesThatLeaveTheDirectoryAreSkipped() {
    QFETCH(QString, name);
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    put(host.ownStore().formPut("Котлы",
                                {file("", "Boiler", "good"), file("", "Boiler.bad", "evil")}));
    store.sql(qPrintable(
        QString("UPDATE \"MenuResourceFile\" SET \"name_\" = '%1' WHERE \"name_\" = 'Boiler.bad'")
            .arg(name)));
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    QTemporaryDir outer;
    QDir(outer.path()).mkpath("target/sub");
    select(editor, {"rboiler"});
    QVERIFY(extract(editor, outer.filePath("target")));
    QCOMPARE(content(outer.filePath("target/Boiler")), QByteArray("good"));
    QCOMPARE(QDir(outer.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList("target"));
    QCOMPARE(QDir(outer.filePath("target")).entryList(QDir::Files | QDir::Hidden),
             QStringList("Boiler"));
    QVERIFY(QDir(outer.filePath("target/sub")).isEmpty());
}

void TestResExtraction::whatCannotBeWrittenIsPassedOver() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    put(host.ownStore().formPut("Котлы",
                                {file("", "Boiler", "one"), file("", "Boiler.txt", "two")}));
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    QTemporaryDir target;
    // A directory stands in the way of the first file.
    QDir(target.path()).mkpath("Boiler/inner");
    select(editor, {"rboiler"});
    QVERIFY(extract(editor, target.path()));
    QVERIFY(QDir(target.filePath("Boiler/inner")).exists());
    QCOMPARE(content(target.filePath("Boiler.txt")), QByteArray("two"));
    QVERIFY(host.logLines.isEmpty());
    QVERIFY(!editor->m_popMessageBox);
}

void TestResExtraction::aFailedJobWritesNothing() {
    TestStore store;
    fillCatalogue(store);
    TestHost host(store);
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    store.sql("ALTER TABLE \"MenuResourceFile\" RENAME TO \"Away\"");
    QTemporaryDir target;
    select(editor, {"rboiler"});
    QVERIFY(extract(editor, target.path()));
    QVERIFY(QDir(target.path()).isEmpty());
    QCOMPARE(host.failures.size(), 1);
    store.sql("ALTER TABLE \"Away\" RENAME TO \"MenuResourceFile\"");
}

void TestResExtraction::theHostOpensTheForm_data() {
    QTest::addColumn<QString>("params");
    QTest::addColumn<QByteArray>("argument");
    QTest::newRow("without parameters") << QString() << QByteArray("\xca\xee\xf2\xb8\xeb");
    QTest::newRow("with parameters") << "p=1" << QByteArray("\xca\xee\xf2\xb8\xeb;p=1");
}

void TestResExtraction::theHostOpensTheForm() {
    QFETCH(QString, params);
    TestStore store;
    fillCatalogue(store);
    store.update(
        "MenuResource",
        {{"KeyLink", QString("rboiler")}, {"name_", QString("Котёл")}, {"params", params}});
    CallingHost host(store);
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
    editor.action("actOpenScheme")->trigger();
    QCOMPARE(host.calls.size(), 1);
    QCOMPARE(host.calls.first().code, 64);
    QVERIFY(!host.calls.first().reserved);
    QCOMPARE(host.calls.first().command, QByteArray("RUN_FILE"));
    QTEST(host.calls.first().argument, "argument");
}

void TestResExtraction::withoutARecordTheHostHearsNothing() {
    TestStore store;
    fillCatalogue(store);
    store.update("MenuResource", {{"KeyLink", QString("rboiler")}, {"name_", QString()}});
    CallingHost host(store);
    ResEditor editor(host, "Resources");
    QVERIFY(editor.start());
    for (const char* key : {"boilers", "rboiler", "MenuResources"}) {
        editor.view("tvRes")->setCurrentIndex(editor->row(key));
        editor.action("actOpenScheme")->setEnabled(true);
        editor.action("actOpenScheme")->trigger();
    }
    QVERIFY(host.calls.isEmpty());
}

QTEST_MAIN(TestResExtraction)
#include "tst_res_extraction.moc"
