// Paths in the stores, extraction to the disk, and opening a form in the host.
#include "tests/resources/ResProbe.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QTimer>

#include <cerrno>
#include <functional>
#include <sys/mount.h>

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
bool extract(ResEditor& editor, const QString& directory,
             const std::function<void()>& duringTheDialog = {}) {
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
        if (duringTheDialog)
            duringTheDialog();
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

/// A file system of its own over a directory, as an administrator of the machine may mount it.
class Mounted {
public:
    Mounted(const QString& at, const char* options) : m_at(at.toLocal8Bit()) {
        m_done = ::mount("tmpfs", m_at.constData(), "tmpfs", MS_NODEV | MS_NOSUID, options) == 0;
    }
    ~Mounted() {
        if (m_done)
            ::umount2(m_at.constData(), MNT_DETACH);
    }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;
    bool done() const { return m_done; }
    bool makeReadOnly() {
        return ::mount("tmpfs", m_at.constData(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

private:
    QByteArray m_at;
    bool m_done;
};

class CallingHost : public TestHost {
public:
    using TestHost::TestHost;
    static constexpr int openForm = 64;
    struct Call {
        const void* reserved;
        QByteArray command;
        QByteArray argument;
    };
    QVector<Call> calls; ///< those that open a form; other codes have other data
    void moduleCall(COrvoCliMod*, int code, void* data) override {
        if (code != openForm)
            return;
        const auto* words = static_cast<const char* const*>(data);
        calls.append({words[0], words[1], words[2]});
    }
};

} // namespace

class TestResExtraction : public QObject {
    Q_OBJECT
private slots:
    void pathsOfForms_data() {
        QTest::addColumn<QString>("path");
        dataRow("frm", "");
        dataRow("boilers", "Котлы");
        dataRow("old", "Котлы/Старые");
    }

    void pathsOfForms() {
        StartedCatalogue editor;
        QTEST(editor->getFormPath(editor->row(QTest::currentDataTag())), "path");
    }

    void pathsOfFiles_data() {
        QTest::addColumn<QString>("path");
        dataRow("FileResources", "");
        dataRow("rreadme", "");
        dataRow("docs", "docs");
        dataRow("rmanual", "docs");
        dataRow("deep", "docs/deep");
        dataRow("rdeep", "docs/deep");
    }

    void pathsOfFiles() {
        TestStore store;
        fillCatalogue(store);
        addItem(store, "rdeep", 4, "deep", "deep.txt", "Глубоко");
        ResourcesOn editor(store);
        QTEST(editor->getFilePath(editor->row(QTest::currentDataTag())), "path");
    }

    void pathsAreThoseOfTheRows() {
        TestStore store;
        fillCatalogue(store);
        addFolder(store, "bare", 4, "", "");
        addFolder(store, "inbare", 4, "bare", "low");
        addItem(store, "rinbare", 4, "bare", "x.txt", "X");
        addItem(store, "rlow", 4, "inbare", "y.txt", "Y");
        addFolder(store, "bareform", 3, "frm", "");
        addFolder(store, "inbareform", 3, "bareform", "low");
        ResourcesOn editor(store);
        // A folder without a caption leaves no slash of its own in a path of files.
        QCOMPARE(editor->getFilePath(editor->row("bare")), QString());
        QCOMPARE(editor->getFilePath(editor->row("rinbare")), QString());
        QCOMPARE(editor->getFilePath(editor->row("inbare")), QString("low"));
        QCOMPARE(editor->getFilePath(editor->row("rlow")), QString("/low"));
        QCOMPARE(editor->getFormPath(editor->row("inbareform")), QString("/low"));
        // As the rows show them, not as the table has them.
        editor->m_resModel->setData(editor->row("docs"), "бумаги", Qt::DisplayRole);
        QCOMPARE(editor->getFilePath(editor->row("deep")), QString("бумаги/deep"));
        editor->m_resModel->setData(editor->row("boilers"), "Печи", Qt::DisplayRole);
        QCOMPARE(editor->getFormPath(editor->row("old")), QString("Печи/Старые"));
    }

    void formsLandFlatInTheDirectory() {
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы", {file("", "Boiler", std::string_view("a\0b", 3)),
                                               file("", "Boiler.png", "png")}));
        put(store.connect()->formPut("Котлы", {file("", "Burner", "burn")}));
        ResourcesOn editor(store);
        QTemporaryDir target;
        select(editor, {"rboiler", "rburner"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(QDir(target.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList({"Boiler", "Boiler.png", "Burner"}));
        QCOMPARE(content(target.filePath("Boiler")), QByteArray("a\0b", 3));
        QCOMPARE(content(target.filePath("Burner")), QByteArray("burn"));
        QVERIFY(!editor.view("tvRes")->selectionModel()->hasSelection());
    }

    void filesAreWritten() {
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->filePut(
            {file("docs", "manual.txt", "read me"), file("", "readme.txt", "top")}));
        ResourcesOn editor(store);
        QTemporaryDir target;
        select(editor, {"rmanual"});
        QVERIFY(extract(editor, target.path()));
        select(editor, {"rreadme"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(content(target.filePath("manual.txt")), QByteArray("read me"));
        QCOMPARE(content(target.filePath("readme.txt")), QByteArray("top"));
    }

    // Two files of one name in two folders are two files.
    void severalFilesComeFromTheirPaths() {
        TestStore store;
        fillCatalogue(store);
        addItem(store, "rsame", 4, "deep", "manual.txt", "Руководство");
        addItem(store, "rnote", 4, "deep", "note.txt", "Заметка");
        put(store.connect()->filePut({file("docs", "manual.txt", "of docs"),
                                      file("docs/deep", "manual.txt", "of deep"),
                                      file("docs/deep", "note.txt", "note")}));
        ResourcesOn editor(store);
        QTemporaryDir target;
        select(editor, {"rsame", "rnote"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(content(target.filePath("manual.txt")), QByteArray("of deep"));
        QCOMPARE(content(target.filePath("note.txt")), QByteArray("note"));
        select(editor, {"rmanual"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(content(target.filePath("manual.txt")), QByteArray("of docs"));
    }

    void theLaterFormOverwritesTheEarlier() {
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы",
                                     {file("", "Boiler", "1"), file("", "Boiler.png", "x")}));
        put(store.connect()->formPut("Котлы",
                                     {file("", "Burner", "2"), file("", "Burner.png", "y")}));
        store.sql("UPDATE \"MenuResourceFile\" SET \"name_\" = 'common.png' WHERE \"name_\" LIKE "
                  "'%.png'");
        ResourcesOn editor(store);
        for (const auto& [first, second, last] :
             {std::tuple{"rboiler", "rburner", "y"}, std::tuple{"rburner", "rboiler", "x"}}) {
            QTemporaryDir target;
            select(editor, {first, second});
            QVERIFY(extract(editor, target.path()));
            QCOMPARE(QDir(target.path()).entryList(QDir::Files),
                     QStringList({"Boiler", "Burner", "common.png"}));
            QCOMPARE(content(target.filePath("common.png")), QByteArray(last));
        }
    }

    void emptyFilesAreNotCreated() {
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы",
                                     {file("", "Boiler", ""), file("", "Boiler.txt", "text")}));
        ResourcesOn editor(store);
        QTemporaryDir target;
        select(editor, {"rboiler"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(QDir(target.path()).entryList(QDir::Files), QStringList("Boiler.txt"));
        QCOMPARE(editor.host.logLines.size(), 1);
        QCOMPARE(editor.host.logLines.first().text,
                 QString("Файл «Boiler» не извлечён: файл пуст"));
    }

    void equalNamesOverwriteEachOther() {
        TestStore store;
        fillCatalogue(store);
        addItem(store, "rother", 4, "docs", "note.txt", "Другое");
        put(store.connect()->filePut({file("docs", "note.txt", "new")}));
        ResourcesOn editor(store);
        QTemporaryDir target;
        QFile old(target.filePath("note.txt"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("a longer old text");
        old.close();
        select(editor, {"rother"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(content(target.filePath("note.txt")), QByteArray("new"));
    }

    void aCancelledDialogWritesNothing() {
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы", {file("", "Boiler", "1")}));
        ResourcesOn editor(store);
        select(editor, {"rboiler"});
        QVERIFY(extract(editor, QString()));
        QVERIFY(!editor.view("tvRes")->selectionModel()->hasSelection());
    }

    void foldersAndModulesAskNothing_data() {
        QTest::addColumn<bool>("staysSelected");
        dataRow("boilers", true);
        dataRow("FileResources", true);
        dataRow("rlog", false);
    }

    void foldersAndModulesAskNothing() {
        StartedCatalogue editor;
        select(editor, {QTest::currentDataTag()});
        QVERIFY(!extract(editor, QString()));
        QTEST(editor.view("tvRes")->selectionModel()->hasSelection(), "staysSelected");
    }

    void namesThatLeaveTheDirectoryAreSkipped_data() {
        QTest::addColumn<QString>("name");
        dataRow("up", "../evil.txt");
        dataRow("below", "sub/evil.txt");
        dataRow("backslash", "..\\evil.txt");
        dataRow("dots", "..");
        dataRow("dot", ".");
        dataRow("none", "");
        dataRow("control", "evil\n.txt");
    }

    // The store refuses such names; a database may hold them all the same.
    void namesThatLeaveTheDirectoryAreSkipped() {
        QFETCH(QString, name);
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы",
                                     {file("", "Boiler", "good"), file("", "Boiler.bad", "evil")}));
        store.sql(qPrintable(
            QString(
                "UPDATE \"MenuResourceFile\" SET \"name_\" = '%1' WHERE \"name_\" = 'Boiler.bad'")
                .arg(name)));
        ResourcesOn editor(store);
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

    void whatCannotBeWrittenIsPassedOver() {
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы",
                                     {file("", "Boiler", "one"), file("", "Boiler.txt", "two")}));
        ResourcesOn editor(store);
        QTemporaryDir target;
        // A directory stands in the way of the first file.
        QDir(target.path()).mkpath("Boiler/inner");
        select(editor, {"rboiler"});
        QVERIFY(extract(editor, target.path()));
        QVERIFY(QDir(target.filePath("Boiler/inner")).exists());
        QCOMPARE(content(target.filePath("Boiler.txt")), QByteArray("two"));
        QCOMPARE(editor.host.logLines.size(), 1);
        QCOMPARE(editor.host.logLines.first().level, 5);
        QCOMPARE(editor.host.logLines.first().place,
                 QString("OrvoResources::on_actExtractFiles_triggered"));
        QVERIFY(editor.host.logLines.first().text.contains(target.filePath("Boiler")));
        QVERIFY(!editor->m_popMessageBox);
    }

    void aFullDiskLeavesWhatWasThere() {
        QTemporaryDir target;
        const Mounted small(target.path(), "size=64k");
        if (!small.done())
            QSKIP("a small file system can be mounted by the administrator only");
        TestStore store;
        fillCatalogue(store);
        const std::string large(200 << 10, 'x');
        put(store.connect()->formPut("Котлы",
                                     {file("", "Boiler", large), file("", "Boiler.txt", "two")}));
        ResourcesOn editor(store);
        QFile old(target.filePath("Boiler"));
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        select(editor, {"rboiler"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(content(target.filePath("Boiler")), QByteArray("old"));
        QCOMPARE(content(target.filePath("Boiler.txt")), QByteArray("two"));
        QCOMPARE(QDir(target.path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList({"Boiler", "Boiler.txt"}));
        QCOMPARE(editor.host.logLines.size(), 1);
        QVERIFY2(editor.host.logLines.first().text.contains(qt_error_string(ENOSPC)),
                 qPrintable(editor.host.logLines.first().text));
        QVERIFY(!editor->m_popMessageBox);
        QVERIFY(!editor.view("tvRes")->selectionModel()->hasSelection());
    }

    void aDirectoryThatTakesNothingIsNamedInTheLog() {
        QTemporaryDir target;
        QFile::setPermissions(target.path(), QFile::ReadOwner | QFile::ExeOwner);
        Mounted readOnly(target.path(), "size=64k");
        const bool mayWrite = QFileInfo(target.path()).isWritable(); // not of everybody
        if (mayWrite && !(readOnly.done() && readOnly.makeReadOnly()))
            QSKIP("no directory is unwritable here");
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы",
                                     {file("", "Boiler", "1"), file("", "Boiler.txt", "2")}));
        put(store.connect()->filePut({file("docs", "manual.txt", "3")}));
        ResourcesOn editor(store);
        select(editor, {"rboiler"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(editor.host.logLines.size(), 2);
        select(editor, {"rmanual"});
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(editor.host.logLines.size(), 3);
        QVERIFY(editor.host.logLines.last().text.contains("manual.txt"));
        QVERIFY(QDir(target.path()).isEmpty());
        QVERIFY(!editor->m_popMessageBox);
        QFile::setPermissions(target.path(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void aDirectoryThatVanishedIsNamedInTheLog() {
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы", {file("", "Boiler", "1")}));
        ResourcesOn editor(store);
        QTemporaryDir outer;
        const QString target = outer.filePath("target");
        QVERIFY(QDir().mkpath(target));
        select(editor, {"rboiler"});
        QVERIFY(extract(editor, target, [&] { QVERIFY(QDir().rmdir(target)); }));
        QCOMPARE(editor.host.logLines.size(), 1);
        QVERIFY(editor.host.logLines.first().text.contains("Boiler"));
        QVERIFY(QDir(outer.path()).isEmpty());
    }

    void whatVanishedFromTheStoreIsReported_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QByteArray>("key");
        dataRow("content of a form", "DELETE FROM \"MenuResourceFile\"", QByteArray("rboiler"));
        dataRow("form", "DELETE FROM \"MenuResource\" WHERE \"KeyLink\" = 'rboiler'",
                QByteArray("rboiler"));
        dataRow("content of a file", "DELETE FROM \"MenuResourceFile\"", QByteArray("rmanual"));
        dataRow("file", "DELETE FROM \"MenuResource\" WHERE \"KeyLink\" = 'rmanual'",
                QByteArray("rmanual"));
        dataRow("folder of a file", "DELETE FROM \"MenuResourceFolder\" WHERE \"KeyLink\" = 'docs'",
                QByteArray("rmanual"));
    }

    void whatVanishedFromTheStoreIsReported() {
        QFETCH(QString, sql);
        QFETCH(QByteArray, key);
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы", {file("", "Boiler", "1")}));
        put(store.connect()->filePut({file("docs", "manual.txt", "3")}));
        ResourcesOn editor(store);
        QTemporaryDir target;
        select(editor, {key.constData()});
        QVERIFY(extract(editor, target.path(), [&] { store.sql(qPrintable(sql)); }));
        QVERIFY(QDir(target.path()).isEmpty());
        QCOMPARE(editor.host.failures.size(), 1);
        QVERIFY(!editor->m_popMessageBox);
    }

    void extractionLeavesEditAndTreeAsTheyAre() {
        TestStore store;
        fillCatalogue(store);
        put(store.connect()->formPut("Котлы", {file("", "Boiler", "1")}));
        ResourcesOn editor(store);
        const QString before = editor->tableText("MenuResource");
        QTemporaryDir target;
        editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
        editor->on_editor_valueChanged("caption", QString("Иное"));
        QVERIFY(extract(editor, target.path()));
        QCOMPARE(editor->m_editState, uint32_t(ResProbe::EditRow));
        QCOMPARE(editor->tableText("MenuResource"), before);
        QVERIFY(editor->row("rboiler").isValid());
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void aFailedJobWritesNothing() {
        StartedCatalogue editor;
        editor.store.sql("ALTER TABLE \"MenuResourceFile\" RENAME TO \"Away\"");
        QTemporaryDir target;
        select(editor, {"rboiler"});
        QVERIFY(extract(editor, target.path()));
        QVERIFY(QDir(target.path()).isEmpty());
        QCOMPARE(editor.host.failures.size(), 1);
        editor.store.sql("ALTER TABLE \"Away\" RENAME TO \"MenuResourceFile\"");
    }

    void theHostOpensTheForm_data() {
        QTest::addColumn<QString>("params");
        QTest::addColumn<QByteArray>("argument");
        dataRow("without parameters", QString(), QByteArray("\xca\xee\xf2\xb8\xeb"));
        dataRow("with parameters", "p=1", QByteArray("\xca\xee\xf2\xb8\xeb;p=1"));
    }

    void theHostOpensTheForm() {
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
        QVERIFY(!host.calls.first().reserved);
        QCOMPARE(host.calls.first().command, QByteArray("RUN_FILE"));
        QTEST(host.calls.first().argument, "argument");
    }

    void withoutARecordTheHostHearsNothing() {
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
        QCOMPARE(host.calls.size(), 0);
    }
};

QTEST_MAIN(TestResExtraction)
#include "tst_res_extraction.moc"
