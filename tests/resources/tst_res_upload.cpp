// Files and forms on their way from the disk to the server's stores, and back by extraction.
#include "tests/resources/ResProbe.h"

#include "frame/Records.h"
#include "tests/menu/Outage.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QTimer>

#include <cstring>
#include <functional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace orvo::test;
using orvo::store::StoredFile;

namespace {

class UploadProbe : public ResProbe {
public:
    using ResProbe::ResProbe;

    using OrvoResources::loadFileToDB;
    using OrvoResources::loadFormToDB;
};

/// What the dialog was like when it was shown.
struct Shown {
    bool dialog = false;
    QStringList filters;
};

/// Sees the progress bar at work.
class BarWatch : public QObject {
public:
    BarWatch() { qApp->installEventFilter(this); }
    QStringList texts; ///< those that show
    QList<int> values;
    int from = -1, to = -1;
    bool isGreen = false;
    bool isThere() const { return m_bar; }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        auto* bar = qobject_cast<CPopProgressBar*>(object);
        if (bar && event->type() == QEvent::Show && !m_bar) {
            m_bar = bar;
            for (const QLabel* label : bar->findChildren<QLabel*>())
                if (!label->isHidden())
                    texts << label->text();
            auto* inner = bar->findChild<QProgressBar*>();
            CPopProgressBar green(bar->parentWidget());
            green.setColor(ProgressBarColorGreen);
            isGreen = inner->styleSheet() == green.findChild<QProgressBar*>()->styleSheet();
            from = inner->minimum();
            to = inner->maximum();
            connect(inner, &QProgressBar::valueChanged, this,
                    [this](int value) { values << value; });
        }
        return QObject::eventFilter(object, event);
    }

private:
    QPointer<CPopProgressBar> m_bar;
};

/// The editor over the catalogue, and a directory to upload from.
struct Window {
    explicit Window(std::initializer_list<const char*> extensions = {})
        : host((fill(store, extensions), store))
        , editor(host, "Resources") {
        if (!editor.start())
            qFatal("the editor did not start");
    }
    static void fill(TestStore& store, std::initializer_list<const char*> extensions) {
        fillCatalogue(store);
        int key = 0;
        for (const char* extension : extensions)
            store.insert("MenuFileExt", {{"KeyLink", QString("ext%1").arg(key++)},
                                         {"fileExt", QString::fromUtf8(extension)}});
    }

    /// A file of the local disk, last changed that many seconds after 2020.
    QString put(const QString& name, const QByteArray& bytes, int seconds = 0) const {
        const QString path = local.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("no local file %s", qPrintable(name));
        file.flush();
        file.setFileTime(QDateTime::fromSecsSinceEpoch(time0 + seconds),
                         QFileDevice::FileModificationTime);
        return path;
    }
    /// Uploads chosen files of the local directory; none stand for Cancel.
    Shown upload(const char* row, const QStringList& names) {
        editor.view("tvRes")->setCurrentIndex(editor->row(row));
        Shown shown;
        QTimer::singleShot(0, [&] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            shown = {true, dialog->nameFilters()};
            if (dialog->fileMode() != QFileDialog::ExistingFiles ||
                dialog->parent() != editor.module.get())
                qFatal("not the dialog that asks for existing files");
            if (names.isEmpty()) {
                dialog->reject();
                return;
            }
            dialog->setDirectory(local.path());
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText('"' + names.join("\" \"") + '"');
            if (duringTheDialog)
                duringTheDialog();
            static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
        });
        editor.action("actLoadFiles")->setEnabled(true);
        editor.action("actLoadFiles")->trigger();
        return shown;
    }
    /// "name=bytes@seconds after 2020" of each stored file of a form.
    QStringList form(const char* name) {
        std::vector<StoredFile> files;
        if (!host.ownStore().formGet(name, true, &files).ok())
            qFatal("no form");
        QStringList list;
        for (const StoredFile& file : files)
            list << shown(file);
        return list;
    }
    QStringList file(const char* path, const char* name) {
        std::vector<StoredFile> files;
        if (!host.ownStore().fileGet(path, name, true, &files).ok())
            qFatal("no file");
        QStringList list;
        for (const StoredFile& stored : files)
            list << shown(stored);
        return list;
    }
    static QString shown(const StoredFile& file) {
        return QString("%1=%2@%3")
            .arg(QString::fromStdString(file.name), QString::fromStdString(file.bytes))
            .arg(file.time ? qint64(*file.time) - time0 : -1);
    }
    /// How many changes the log has for a table since the last call.
    int changesOf(const char* table) {
        std::vector<orvo::store::Change> changes;
        if (!host.ownStore().readLog(cursor, 1 << 20, &changes).ok())
            qFatal("no log");
        int count = 0;
        for (const auto& change : changes) {
            cursor = change.id;
            count += change.table == table ? 1 : 0;
        }
        return count;
    }
    QString parentOf(const QString& key) const {
        const ResTreeModel& model = *editor.module->m_resModel;
        return model.getItemKeyLink(model.findIndexByKey(key).parent());
    }
    /// The key of the resource with that name; empty if there is none.
    QString resource(const QString& name) const {
        QString key;
        orvo::walkAll(editor.module->m_tabResource, 0, [&](const MDRData* record) {
            if (orvo::textOf(record, "name_") == name)
                key = orvo::textOf(record, "KeyLink");
            return true;
        });
        return key;
    }
    /// The names of the files stored since the last call, in the order in which they were.
    QStringList storedInOrder() {
        std::vector<orvo::store::Change> changes;
        if (!host.ownStore().readLog(cursor, 1 << 20, &changes).ok())
            qFatal("no log");
        QStringList names;
        for (const auto& change : changes) {
            cursor = change.id;
            if (change.table == "MenuResourceFile")
                names << QJsonDocument::fromJson(QByteArray::fromStdString(change.after))
                             .object()
                             .value("name_")
                             .toString();
        }
        return names;
    }
    void deliver() { host.deliver(*editor.module); }
    QStringList log() const {
        QStringList lines;
        for (const LogLine& line : host.logLines)
            lines << line.text;
        return lines;
    }

    static constexpr qint64 time0 = 1577836800;
    TestStore store;
    TestHost host;
    EditorUnderTest<UploadProbe> editor;
    QTemporaryDir local;
    int64_t cursor = 0;
    std::function<void()> duringTheDialog;
};

/// Extracts one row into a directory.
void extract(Window& window, const QString& key, const QString& directory) {
    QItemSelectionModel* selection = window.editor.view("tvRes")->selectionModel();
    selection->clearSelection();
    selection->select(window.editor->m_resModel->findIndexByKey(key),
                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        dialog->selectFile(directory);
        static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
    });
    window.editor.action("actExtractFiles")->setEnabled(true);
    window.editor.action("actExtractFiles")->trigger();
}

/// A socket in the file system that nobody listens to.
bool makeSocket(const QString& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, qPrintable(path), sizeof(address.sun_path) - 1);
    const int handle = socket(AF_UNIX, SOCK_STREAM, 0);
    if (handle < 0)
        return false;
    const auto* at = reinterpret_cast<const sockaddr*>(&address);
    const bool bound = bind(handle, at, sizeof address) == 0;
    close(handle);
    return bound;
}

QByteArray content(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

} // namespace

class TestResUpload : public QObject {
    Q_OBJECT
private slots:
    // The dialog
    // The dialog

    void otherFoldersShowNoDialog_data() {
        QTest::addColumn<bool>("shown");
        dataRow("MenuResources", false);
        dataRow("mod", false);
        dataRow("rlog", false);
        dataRow("calc", false);
        dataRow("WrongFolder", false);
        dataRow("rlost", false); // a form, in no folder of forms
        dataRow("frm", true);
        dataRow("rboiler", true);
        dataRow("FileResources", true);
        dataRow("rmanual", true);
        dataRow("none", false);
    }

    void otherFoldersShowNoDialog() {
        Window window;
        QTEST(window.upload(QTest::currentDataTag(), {}).dialog, "shown");
    }

    void theFilterNamesTheExtensions() {
        Window window({".frm", "_", ".svg"});
        QCOMPARE(window.upload("boilers", {}).filters, QStringList("Все файлы (*.frm *_ *.svg )"));
    }

    void withoutExtensionsTheFilterIsEmpty() {
        Window window;
        QCOMPARE(window.upload("boilers", {}).filters, QStringList("Все файлы ()"));
    }

    void filesHaveNoFilter() {
        Window window({".frm"});
        QCOMPARE(window.upload("docs", {}).filters, QFileDialog().nameFilters());
    }

    void aCancelledDialogUploadsNothing() {
        Window window;
        window.put("a.txt", "a");
        window.changesOf("");
        BarWatch bar;
        QVERIFY(window.upload("docs", {}).dialog);
        QVERIFY(window.upload("boilers", {}).dialog);
        QCOMPARE(window.changesOf("MenuResourceFile"), 0);
        QCOMPARE(window.host.writes().calls.size(), 0);
        QCOMPARE(bar.to, -1);
    }

    void aRowThatGoesDuringTheDialogHurtsNothing() {
        Window window;
        window.put("a.txt", "a");
        window.duringTheDialog = [&] {
            window.store.remove("MenuResourceFolder", "deep");
            window.deliver();
        };
        window.upload("deep", {"a.txt"});
        QCOMPARE(window.file("docs/deep", "a.txt"), QStringList());
        QCOMPARE(window.host.failures.size(), 1); // there is no such folder any more
        QVERIFY(window.host.failures.first().contains("a.txt"));
    }

    // Forms
    // Forms

    void aFormGoesUpWithItsGroup() {
        Window window;
        window.put("Турбина", "form", 1);
        window.put("Турбина.png", QByteArray("p\0ng", 4), 2);
        window.put("турбина-малая.svg", "svg", 3); // cases are equal
        window.put("Насос", "other");
        window.put("Малая Турбина", "other");
        window.upload("boilers", {"Турбина"});
        QCOMPARE(window.form("Турбина"),
                 QStringList({"Турбина=form@1", "турбина-малая.svg=svg@3",
                              QString("Турбина.png=p") + QChar(0) + "ng@2"}));
        window.deliver();
        const QString key = window.resource("Турбина");
        QCOMPARE(window.parentOf(key), QString("boilers"));
        QCOMPARE(window.host.writes().calls.size(), 0);
    }

    void theUnderscoreIsNoPartOfTheStem() {
        Window window;
        window.put("Turbine_", "form");
        window.put("Turbine.png", "png");
        window.put("Turbine__", "two");
        window.upload("boilers", {"Turbine_"});
        QCOMPARE(window.form("Turbine_").size(), 3);
        // Of two underscores one goes.
        Window other;
        other.put("Turbine__", "two");
        other.put("Turbine_.png", "png");
        other.put("Turbine.png", "png");
        other.upload("boilers", {"Turbine__"});
        QCOMPARE(other.form("Turbine__"), QStringList({"Turbine_.png=png@0", "Turbine__=two@0"}));
        Window third;
        for (const char* name : {"Pump", "Pump2_"})
            third.put(name, "pump");
        third.upload("boilers", {"Pump"});
        QCOMPARE(third.form("Pump"), QStringList({"Pump=pump@0", "Pump2_=pump@0"}));
    }

    void aSuffixStaysInTheStem() {
        Window window;
        window.put("Turbine", "form");
        window.put("Turbine.png", "png");
        window.put("Turbine.png.bak", "bak");
        window.upload("boilers", {"Turbine.png"});
        QCOMPARE(window.form("Turbine.png"),
                 QStringList({"Turbine.png=png@0", "Turbine.png.bak=bak@0"}));
        QCOMPARE(window.form("Turbine"), QStringList());
    }

    void membersGoUpFromTheLastToTheFirst() {
        Window window;
        for (const char* name : {"Turbine.b", "Turbine", "Turbine.c", "Turbine.a"})
            window.put(name, name);
        window.storedInOrder();
        window.upload("boilers", {"Turbine"});
        QCOMPARE(window.storedInOrder(),
                 QStringList({"Turbine.c", "Turbine.b", "Turbine.a", "Turbine"}));
    }

    void directoriesAreNoMembers() {
        Window window;
        window.put("Turbine", "form");
        QVERIFY(QDir(window.local.path()).mkdir("Turbine.d"));
        window.put("Turbine.d/Turbine.png", "png");
        window.upload("boilers", {"Turbine"});
        QCOMPARE(window.form("Turbine"), QStringList("Turbine=form@0"));
        QVERIFY(window.host.logLines.isEmpty());
    }

    void wildcardsInNamesAreLetters() {
        Window window;
        window.put("Turbine [1]", "form");
        window.put("Turbine [1].png", "png");
        window.put("Turbine 1", "other");
        window.put("Boiler*", "form");
        window.put("Boiler2", "other");
        window.put("Pump?", "form");
        window.put("Pump2", "other");
        window.upload("boilers", {"Turbine [1]", "Boiler*", "Pump?"});
        QCOMPARE(window.form("Turbine [1]").size(), 2);
        QCOMPARE(window.form("Boiler*").size(), 1);
        QCOMPARE(window.form("Pump?").size(), 1);
        QCOMPARE(window.form("Turbine 1"), QStringList());
    }

    void aFormGoesIntoItsFolder_data() {
        QTest::addColumn<QString>("folder");
        dataRow("frm", "frm"); // the empty path
        dataRow("boilers", "boilers");
        dataRow("old", "old");
        dataRow("rboiler", "boilers");
    }

    void aFormGoesIntoItsFolder() {
        Window window;
        window.put("Turbine", "form");
        window.upload(QTest::currentDataTag(), {"Turbine"});
        window.deliver();
        QTEST(window.parentOf(window.resource("Turbine")), "folder");
    }

    void anExistingFormIsMoved() {
        Window window;
        window.put("Boiler", "form", 5);
        window.upload("old", {"Boiler"});
        QCOMPARE(window.host.writes().take(), QString("MenuResource\n"
                                                      "  ~rboiler MenuResourceFolderKey='old'\n"));
        QCOMPARE(window.parentOf("rboiler"), QString("boilers"));
        window.deliver();
        QCOMPARE(window.parentOf("rboiler"), QString("old"));
        QCOMPARE(window.form("Boiler"), QStringList("Boiler=form@5"));
    }

    void aMovedFormIsFoundByTheChosenName() {
        Window window;
        addItem(window.store, "rscheme", 3, "boilers", "Scheme_", "Схема");
        window.deliver();
        window.put("Scheme_", "form");
        window.put("Scheme.png", "png");
        window.upload("old", {"Scheme_"});
        QCOMPARE(window.host.writes().take(), QString("MenuResource\n"
                                                      "  ~rscheme MenuResourceFolderKey='old'\n"));
        // Another handle to the same form names no record.
        window.upload("frm", {"Scheme.png"});
        QCOMPARE(window.host.writes().take(), QString());
    }

    void aNameThatIsRefusedMovesNoOtherForm() {
        Window window;
        // As the refused name reads where its arrow is not known.
        addItem(window.store, "rasked", 3, "boilers", "a?", "Вопрос");
        window.deliver();
        window.put("a→", "form");
        window.put("BOILER", "form");
        window.upload("old", {"a→", "BOILER"});
        QCOMPARE(window.host.failures.size(), 1);
        QCOMPARE(window.host.writes().take(), QString("MenuResource\n"
                                                      "  ~rboiler MenuResourceFolderKey='old'\n"));
        window.deliver();
        QCOMPARE(window.parentOf("rasked"), QString("boilers"));
        QCOMPARE(window.parentOf("rboiler"), QString("old"));
    }

    void aFormInItsFolderIsNotMoved() {
        Window window;
        window.put("Boiler", "form");
        window.upload("rboiler", {"Boiler"});
        QCOMPARE(window.host.writes().calls.size(), 0);
        QCOMPARE(window.form("Boiler"), QStringList("Boiler=form@0"));
    }

    void severalFilesOfAFormAreSentSeveralTimes() {
        Window window;
        window.put("Turbine", "form");
        window.put("Turbine.png", "png");
        window.changesOf("");
        window.upload("boilers", {"Turbine"});
        QCOMPARE(window.changesOf("MenuResourceFile"), 2);
        window.put("Turbine.a", "a");
        window.put("Turbine.ab", "ab");
        window.upload("boilers", {"Turbine", "Turbine.a"});
        QCOMPARE(window.changesOf("MenuResourceFile"), 4 + 2);
    }

    void severalFormsAreMovedInOneCall() {
        Window window;
        for (const char* name : {"Boiler", "Burner", "Drum", "New"})
            window.put(name, "form");
        window.upload("frm", {"Boiler", "Burner", "Drum", "New", "missing"});
        QCOMPARE(window.host.writes().take(), QString("MenuResource\n"
                                                      "  ~rboiler MenuResourceFolderKey='frm'\n"
                                                      "  ~rburner MenuResourceFolderKey='frm'\n"));
    }

    void withoutAStructureNoFormIsMoved() {
        Window window;
        window.put("Boiler", "form");
        {
            const StructureOutage outage;
            window.upload("old", {"Boiler"});
        }
        QCOMPARE(window.host.writes().calls.size(), 0);
        QCOMPARE(window.form("Boiler"), QStringList("Boiler=form@0"));
    }

    void theNameOfAFormIsReturned() {
        Window window;
        const QString path = window.put("Turbine_", "form");
        QCOMPARE(window.editor->loadFormToDB(path, "Котлы"), QString("Turbine_"));
        QCOMPARE(window.editor->loadFormToDB(path + "x", "Котлы"), QString());
        QCOMPARE(window.editor->loadFormToDB(QString(), "Котлы"), QString());
        QCOMPARE(window.editor->loadFormToDB(window.local.path(), "Котлы"), QString());
    }

    // Files
    // Files

    void filesGoUpOneByOne() {
        Window window;
        window.put("план цеха.txt", "plan", 1);
        window.put("план цеха.txt.bak", "bak", 2);
        window.put("схема", "scheme", 3);
        window.upload("deep", {"план цеха.txt", "схема"});
        QCOMPARE(window.file("docs/deep", "план цеха.txt"), QStringList("план цеха.txt=plan@1"));
        QCOMPARE(window.file("docs/deep", "схема"), QStringList("схема=scheme@3"));
        QCOMPARE(window.file("docs/deep", "план цеха.txt.bak"), QStringList());
        QCOMPARE(window.host.writes().calls.size(), 0);
        window.deliver();
        QCOMPARE(window.parentOf(window.resource("схема")), QString("deep"));
    }

    void aFileRowUploadsIntoItsFolder() {
        Window window;
        window.put("a.txt", "a");
        window.upload("rmanual", {"a.txt"});
        window.upload("rreadme", {"a.txt"});
        QCOMPARE(window.file("docs", "a.txt").size(), 1);
        QCOMPARE(window.file("", "a.txt").size(), 1);
    }

    void anExistingFileIsReplaced() {
        Window window;
        window.put("manual.txt", "old", 1);
        window.upload("docs", {"manual.txt"});
        window.put("manual.txt", "new", 2);
        window.upload("docs", {"manual.txt"});
        QCOMPARE(window.file("docs", "manual.txt"), QStringList("manual.txt=new@2"));
        window.deliver();
        QCOMPARE(window.resource("manual.txt"), QString("rmanual"));
    }

    void thePassportShowsWhatIsStoredThen() {
        Window window;
        window.put("manual.txt", "old", 1);
        window.upload("docs", {"manual.txt"});
        window.deliver();
        const auto stored = [&] {
            return window.editor->passport("filename0").toString() + ' ' +
                   window.editor->passport("filesize0").toString() + ' ' +
                   window.editor->passport("filedate0").toString();
        };
        window.editor.view("tvRes")->setCurrentIndex(window.editor->row("rmanual"));
        const QString before = stored();
        QVERIFY2(before.startsWith("manual.txt 3 "), qPrintable(before));
        window.editor->on_editor_valueChanged("caption", QString("Иное"));
        window.put("manual.txt", "longer", 3600);
        window.upload("rmanual", {"manual.txt"});
        QVERIFY2(stored().startsWith("manual.txt 6 "), qPrintable(stored()));
        QVERIFY(stored().section(' ', 2) != before.section(' ', 2));
        // What was typed is there still, and is saved.
        QCOMPARE(window.editor->passport("caption"), QVariant("Иное"));
        QCOMPARE(window.editor->m_editState, UploadProbe::EditRow);
    }

    void emptyFilesAreStored() {
        Window window;
        window.put("empty.txt", "", 7);
        window.upload("docs", {"empty.txt"});
        QCOMPARE(window.file("docs", "empty.txt"), QStringList("empty.txt=@7"));
        QVERIFY(window.host.logLines.isEmpty());
        QVERIFY(window.host.failures.isEmpty());
    }

    void hundredsOfFilesComeBackAsTheyWere() {
        Window window;
        QStringList names;
        QByteArray bytes;
        for (int i = 0; i < 300; ++i) {
            bytes += static_cast<char>(i * 7);
            names << (i % 3 == 0   ? QString("иконка №%1.png").arg(i)
                      : i % 3 == 1 ? QString("Документ с пробелами %1.pdf").arg(i)
                                   : QString("plain%1").arg(i));
            window.put(names.last(), bytes, i);
        }
        window.upload("deep", names);
        QVERIFY(window.host.failures.isEmpty());
        window.deliver();
        const QTemporaryDir target;
        for (int i = 0; i < names.size(); ++i) {
            if (i % 25 == 0)
                extract(window, window.resource(names[i]), target.path());
            std::vector<StoredFile> files;
            QVERIFY(window.host.ownStore()
                        .fileGet("docs/deep", names[i].toStdString(), true, &files)
                        .ok());
            QCOMPARE(files.size(), size_t(1));
            QCOMPARE(QByteArray::fromStdString(files[0].bytes),
                     content(window.local.filePath(names[i])));
            QCOMPARE(files[0].time.value_or(0), double(Window::time0 + i));
            if (i % 25 == 0)
                QCOMPARE(content(target.filePath(names[i])),
                         content(window.local.filePath(names[i])));
        }
    }

    void aLargeFileComesBackAsItWas() {
        Window window;
        QByteArray bytes(48 << 20, '\0');
        for (int i = 0; i < bytes.size(); i += 997)
            bytes[i] = static_cast<char>(i / 997);
        window.put("large.bin", bytes);
        window.upload("docs", {"large.bin"});
        window.deliver();
        const QTemporaryDir target;
        extract(window, window.resource("large.bin"), target.path());
        QVERIFY(content(target.filePath("large.bin")) == bytes);
    }

    // What does not go up
    // What does not go up

    void whatCannotBeReadIsNamedInTheLog() {
        Window window;
        window.put("good.txt", "good");
        window.put("last.txt", "last");
        QVERIFY(QDir(window.local.path()).mkdir("directory"));
        QVERIFY(QFile::link("/nonexistent/target", window.local.filePath("dangling")));
        QCOMPARE(mkfifo(qPrintable(window.local.filePath("pipe")), 0600), 0);
        QVERIFY(makeSocket(window.local.filePath("socket")));
        window.put("vanishes.txt", "gone");
        window.duringTheDialog = [&] { QFile::remove(window.local.filePath("vanishes.txt")); };
        window.upload("docs",
                      {"good.txt", "directory", "pipe", "socket", "vanishes.txt", "last.txt"});
        window.editor->loadFileToDB(window.local.filePath("dangling"), "docs");
        QCOMPARE(window.file("docs", "good.txt").size(), 1);
        QCOMPARE(window.file("docs", "last.txt").size(), 1);
        QVERIFY2(window.log().size() == 5, qPrintable(window.log().join(QChar(10))));
        for (int i = 0; i < 5; ++i) {
            const char* const names[] = {"directory", "pipe", "socket", "vanishes.txt", "dangling"};
            QVERIFY2(window.log()[i].contains(names[i]), names[i]);
            QCOMPARE(window.host.logLines[i].level, 5);
            QCOMPARE(window.file("docs", names[i]), QStringList());
        }
        QVERIFY(window.host.failures.isEmpty());
        QVERIFY(!window.editor->m_popMessageBox);
    }

    void aFormWithoutItsFileIsNotSent() {
        Window window;
        addItem(window.store, "rnameless", 3, "boilers", "", "Без имени");
        window.deliver();
        window.put("Boiler.png", "png");
        window.changesOf("");
        window.upload("old", {"Boiler"});
        QCOMPARE(window.changesOf("MenuResourceFile"), 0);
        QCOMPARE(window.host.writes().calls.size(), 0);
        QCOMPARE(window.log().size(), 1);
        QVERIFY(window.log().first().contains("Boiler"));
    }

    void aMemberThatCannotBeReadIsLeftOut() {
        if (!QFile::exists("/proc/self/mem"))
            QSKIP("no file that opens and cannot be read");
        Window window;
        window.put("Turbine", "form");
        QVERIFY(QFile::link("/proc/self/mem", window.local.filePath("Turbine.mem")));
        QVERIFY(QFile::link("/nonexistent/target", window.local.filePath("Turbine.png")));
        window.upload("boilers", {"Turbine"});
        QCOMPARE(window.form("Turbine"), QStringList("Turbine=form@0"));
        QVERIFY(window.log().join('\n').contains("Turbine.mem"));
    }

    void aFileThatEndsEarlyIsNotSent() {
        // The kernel tells a page for such files and gives less, as a file does that is cut
        // meanwhile.
        const QString path = "/sys/kernel/mm/transparent_hugepage/enabled";
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly) || file.size() <= file.readAll().size())
            QSKIP("no file that ends before its size");
        Window window;
        window.editor->loadFileToDB(path, "docs");
        QCOMPARE(window.file("docs", "enabled"), QStringList());
        QCOMPARE(window.log().size(), 1);
        QVERIFY(window.log().first().contains(path));
    }

    void namesThatTheStoreRefusesAreReported() {
        Window window;
        window.put("猫.txt", "cat");
        window.put("good.txt", "good");
        window.upload("docs", {"猫.txt", "good.txt"});
        QCOMPARE(window.file("docs", "good.txt").size(), 1);
        QCOMPARE(window.host.failures.size(), 1);
        QVERIFY(window.host.failures.first().contains("猫.txt"));
        // One member that is refused refuses the form: nothing of it is stored.
        window.put("Turbine", "form");
        window.put("Turbine猫", "cat");
        window.upload("boilers", {"Turbine"});
        QCOMPARE(window.host.failures.size(), 2);
        QCOMPARE(window.form("Turbine"), QStringList());
        window.deliver();
        QVERIFY(window.resource("Turbine").isEmpty());
    }

    void aFailedUploadLeavesNothing() {
        Window window;
        window.put("Turbine", "form");
        window.put("a.txt", "a");
        window.store.sql("CREATE TRIGGER refuse BEFORE INSERT ON MenuResourceFile BEGIN "
                         "SELECT RAISE(ABORT, 'disk full'); END");
        window.upload("boilers", {"Turbine"});
        window.upload("docs", {"a.txt"});
        QCOMPARE(window.host.failures.size(), 2);
        QVERIFY(window.host.failures[0].contains("Turbine"));
        QVERIFY(window.host.failures[1].contains("a.txt"));
        window.deliver();
        QVERIFY(window.resource("Turbine").isEmpty());
        QVERIFY(window.resource("a.txt").isEmpty());
        window.store.sql("DROP TRIGGER refuse");
        window.upload("docs", {"a.txt"});
        QCOMPARE(window.file("docs", "a.txt").size(), 1);
    }

    // ------------------------------------------------------------------------------------------------

    void theBarCountsTheFiles() {
        Window window;
        const QStringList names{"a", "b", "directory", "c"};
        for (const QString& name : names)
            if (name != "directory")
                window.put(name, "x");
        QVERIFY(QDir(window.local.path()).mkdir("directory")); // counts, though it does not go up
        {
            BarWatch bar;
            window.upload("docs", names);
            QCOMPARE(bar.texts, QStringList("Загрузка файлов в БД"));
            QVERIFY(bar.isGreen);
            QCOMPARE(bar.from, 0);
            QCOMPARE(bar.to, 4);
            QCOMPARE(bar.values, QList<int>({1, 2, 3})); // from 0 to one less than the top
            QVERIFY(!bar.isThere());
        }
        BarWatch bar;
        window.upload("boilers", {"a"});
        QCOMPARE(bar.texts, QStringList("Загрузка форм в БД"));
        QVERIFY(bar.isGreen);
        QCOMPARE(bar.to, 1);
        QVERIFY(!bar.isThere());
    }

    void anOpenEditStaysOpen() {
        Window window;
        window.put("a.txt", "a");
        window.editor.view("tvRes")->setCurrentIndex(window.editor->row("rmanual"));
        window.editor->on_editor_valueChanged("caption", QString("Иное"));
        window.upload("rmanual", {"a.txt"});
        QCOMPARE(window.file("docs", "a.txt").size(), 1);
        QCOMPARE(window.editor->m_editState, UploadProbe::EditRow);
        QCOMPARE(window.host.writes().calls.size(), 0);
    }

    void nothingChangesBeforeTheNotifications() {
        Window window;
        window.put("Turbine", "form");
        const int rows = window.editor->m_resModel->rowCount(window.editor->row("boilers"));
        window.upload("boilers", {"Turbine"});
        QCOMPARE(window.editor->m_resModel->rowCount(window.editor->row("boilers")), rows);
        QVERIFY(window.resource("Turbine").isEmpty());
        QCOMPARE(window.editor->m_currentKey, QString("boilers"));
        window.deliver();
        QCOMPARE(window.editor->m_resModel->rowCount(window.editor->row("boilers")), rows + 1);
    }
};

QTEST_MAIN(TestResUpload)
#include "tst_res_upload.moc"
