// ModuleFixture.h: a module under test over a real store: a temporary store file with given rows, a
// session, a host application, and the way of notifications from the store to the module.
//
//     TestStore store;
//     store.insert("MenuFolder", {{"KeyLink", "d1"}, {"caption", "Цех"}, {"order_", "2000"}});
//     TestHost host(store);
//     EditorUnderTest<OrvoMenu> editor(host, "Menu");
//     QVERIFY(editor.start());
//     host.deliver(*editor.module);
#ifndef ORVO_TESTS_MENU_MODULEFIXTURE_H
#define ORVO_TESTS_MENU_MODULEFIXTURE_H

#include "frame/OrvoClient.h"
#include "platform/store/Store.h"
#include "tests/menu/WriteWatch.h"
#include "tests/models/ModelWatch.h"
#include "tests/store/StoreKinds.h"

#include <QAction>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>
#include <QVariant>

#include <initializer_list>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace orvo::test {

/// Fields of a record: bool, int, or QString (a null QString is NULL).
using Fields = std::initializer_list<std::pair<const char*, QVariant>>;

/// Sets fields of a record and marks them as set. A field that the table lacks ends the test.
void setFields(CMDArray& table, MDRData* record, Fields fields);

/// A store of its own, removed at the end: a file, or a database of a server if ORVO_STORE_KIND
/// says so. Writes go through the same door as a session's, or as SQL from a foreign hand.
class TestStore {
public:
    TestStore();
    /// One of the test's own making, already renewed.
    explicit TestStore(std::unique_ptr<store::test::StoreKind> kind);
    ~TestStore();

    QString directory() const { return m_directory.path(); }
    std::string url() const;
    /// Another connection to the store, as another client has it.
    std::unique_ptr<store::Store> connect(const char* login = "tester") const;

    void insert(const char* table, Fields fields);
    void update(const char* table, Fields fields);
    void remove(const char* table, const char* key);
    /// Sets the link of a record to its parent, a null QString for none. A circle of parents, which
    /// the store refuses, is written by a foreign hand.
    void moveBelow(const char* table, const char* link, const QString& key, const QString& parent);
    /// Executes SQL with the database's own shell, so in words that every kind of store knows.
    void sql(const char* statement);
    /// The login in the log of what was written so.
    QString handLogin() const;

private:
    store::Status tryWrite(const char* table, MdxRecordFlag flag, Fields fields);
    void write(const char* table, MdxRecordFlag flag, Fields fields);

    QTemporaryDir m_directory; ///< of the clients
    std::unique_ptr<store::test::StoreKind> m_kind;
    std::unique_ptr<store::Store> m_store;
};

/// What a module told its host.
struct LogLine {
    int level;
    QString place;
    QString text;
};

/// A host application with a session of its own.
class TestHost : public COrvoCliApp {
public:
    explicit TestHost(TestStore& store);
    ~TestHost() override;

    /// Hands the module all changes of the store since the last call, the module's own writes too,
    /// as the client does.
    void deliver(COrvoCliMod& module);
    store::Store& ownStore();
    /// What the module wrote, call by call.
    WriteWatch& writes() { return *m_writes; }

    QVector<LogLine> logLines;
    QStringList titles;   ///< title and second text of each SetModTitle
    QStringList failures; ///< what the session reported as failed

    void log(int level, const QString& place, const QString& text) override;
    void moduleTitle(COrvoCliMod* module, const QString& title, const QString& second) override;

private:
    struct Private;
    std::unique_ptr<Private> d;
    WriteWatch* m_writes = nullptr; ///< the session's
};

/// Puts a fatal tester on every model that a view below `window` is given, at the moment the view
/// gets it: before the model is filled. Ends before the window.
class ViewWatch : public QObject {
public:
    explicit ViewWatch(QWidget& window);
    int watchedCount() const { return static_cast<int>(m_watches.size()); }

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    std::map<const QAbstractItemModel*, std::unique_ptr<ModelWatch>> m_watches;
};

/// One editor in one host: made, named, watched and shown.
template <class Editor>
class EditorUnderTest {
public:
    EditorUnderTest(TestHost& host, const char* name)
        : module(std::make_unique<Editor>(&host))
        , m_watch(*module) {
        module->m_moduleName = QString::fromLatin1(name);
        module->resize(1146, 825);
    }
    ~EditorUnderTest() { module->close(); }

    /// For one that cannot but start.
    void startOrFail() {
        if (!start())
            qFatal("the editor did not start");
    }
    bool start() {
        const bool started = module->ModuleStart();
        module->show();
        return started && QTest::qWaitForWindowExposed(module.get());
    }
    Editor* operator->() { return module.get(); }
    QTreeView* view(const char* name) const { return child<QTreeView>(name); }
    QAction* action(const char* name) const { return child<QAction>(name); }
    template <class T>
    T* child(const char* name) const {
        T* found = module->template findChild<T*>(QString::fromLatin1(name));
        if (!found)
            qFatal("the window has no %s", name);
        return found;
    }
    int watchedModels() const { return m_watch.watchedCount(); }

    std::unique_ptr<Editor> module;

private:
    ViewWatch m_watch;
};

/// What an editor stands on: a store with the rows that `fill` writes, and a host of its own. The
/// first base of a fixture, so that it outlives the editor:
///     class PlantEditor : public HostOnFilledStore, public MenuEditor
struct HostOnFilledStore {
    explicit HostOnFilledStore(void (*fill)(TestStore& store)) : host(filled(store, fill)) {}
    TestStore store;
    TestHost host;

private:
    static TestStore& filled(TestStore& store, void (*fill)(TestStore& store)) {
        fill(store);
        return store;
    }
};

/// A host on a store that the test has filled: the first base of an editor that needs no other.
struct HostOnStore {
    explicit HostOnStore(TestStore& store) : host(store) {}
    TestHost host;
};

/// A row of test data: its name, then its values in the order of the columns.
template <class... Values>
void dataRow(const char* name, const Values&... values) {
    QTestData& row = QTest::newRow(name);
    ((row << values), ...);
}

/// The first row whose text in `column` is `text`; invalid if there is none.
QModelIndex findRow(const QAbstractItemModel& model, const QString& text, int column = 0);
/// Clicks on a row in column 0, scrolled into view.
void clickRow(QTreeView* view, const QModelIndex& row,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier);

} // namespace orvo::test

#endif
