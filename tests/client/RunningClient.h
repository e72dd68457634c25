// RunningClient.h: the client in this process, on a store of its own, and what its user and others
// do in it.
#ifndef ORVO_TESTS_CLIENT_RUNNINGCLIENT_H
#define ORVO_TESTS_CLIENT_RUNNINGCLIENT_H

#include "apps/client/Client.h"
#include "apps/client/LogPane.h"
#include "apps/client/MainWindow.h"
#include "apps/client/StatusLine.h"
#include "tests/client/HostFixture.h"

#include <QAction>
#include <QMenu>
#include <QTreeView>
#include <QtTest>

#include <memory>

namespace orvo::test {

/// A desktop "desk" with the elements а, б below а, в below б, and г. The host of the fixture is
/// another engineer, "petrov"; the client is that of "engineer".
struct RunningClient {
    Host host{"petrov"};
    std::unique_ptr<app::Client> client;

    /// `picture`: the file for a picture of the window (--screenshot); empty: none is taken.
    explicit RunningClient(const QString& picture = {}) {
        otherWrites(MDX_INSERT,
                    {{"KeyLink", "u1"},
                     {"login_", "petrov"},
                     {"lastName", "Петров"},
                     {"firstName", "Пётр"}},
                    "Users");
        otherWrites(MDX_INSERT, {{"KeyLink", "desk"}, {"caption", "КС-1"}, {"order_", "2000"}},
                    "MenuFolder");
        add("a", "а", {});
        add("b", "б", "a");
        add("c", "в", "b");
        add("d", "г", {});
        start(picture);
    }
    ~RunningClient() { stop(); }

    void start(const QString& picture = {}) {
        app::Options options;
        options.screenshot = picture;
        options.store = QString::fromStdString(host.url);
        options.login = "engineer";
        options.workDir = host.dir.path() + "/workdir/";
        options.modules = QStringList{"Menu", "Resources"};
        client = std::make_unique<app::Client>(options);
        QString error;
        if (!client->open(&error))
            qFatal("%s", qPrintable(error));
        client->show();
        openDesktop("КС-1");
    }
    void stop() {
        if (client)
            client->window()->closeNow();
        client.reset();
    }

    // What another engineer does; each call is an action.
    void add(const char* key, const char* caption, const char* parent) {
        Fields fields = {
            {"KeyLink", key}, {"FolderKey", "desk"}, {"caption", caption}, {"order_", "1000"}};
        if (parent)
            fields.emplace_back("parent", parent);
        otherWrites(MDX_INSERT, fields);
    }
    void otherWrites(uint32_t flag, const Fields& fields, const char* table = "Menu") {
        if (host.write(table, flag, fields) == 0)
            qFatal("not written: %s", qPrintable(host.failures.join('\n')));
        endAction();
    }
    // What the engineer does, as his module writes it; each call is an action.
    void writes(uint32_t flag, const std::vector<Fields>& records, const char* table = "Menu") {
        CMDArray array;
        store::makeStructure(*store::findTable(table), array.array);
        array.KeyAdd("KeyLink", MDX_KEY_MULTI);
        for (const Fields& fields : records)
            addRecord(array, flag, fields);
        if (module("Menu")->m_app->m_session->SqlUpdate(table, array.array, true, nullptr) == 0)
            qFatal("the client did not write");
        endAction();
    }
    /// The next write is another action.
    static void endAction() { QTest::qWait(1); }
    void renames(const char* key, const char* caption) {
        writes(MDX_UPDATE, {{{"KeyLink", key}, {"caption", caption}}});
    }

    COrvoCliMod* module(const QString& name) const {
        for (const auto& one : client->modules().modules(client::ModuleState::Running))
            if (one->m_moduleName == name)
                return one;
        qFatal("no module");
    }
    QTreeView* view(const char* name) const {
        return client->window()->findChild<QTreeView*>(QString::fromLatin1(name));
    }
    QAction* action(const char* name) const {
        for (QAction* one : client->window()->editMenu()->actions())
            if (one->objectName() == QLatin1String(name))
                return one;
        return client->window()->findChild<QAction*>(QString::fromLatin1(name));
    }
    void openDesktop(const QString& caption) const {
        const QAbstractItemModel* model = view("tvDesck")->model();
        const QModelIndexList found = model->match(model->index(0, 0), Qt::DisplayRole, caption, 1,
                                                   Qt::MatchExactly | Qt::MatchRecursive);
        if (found.isEmpty())
            qFatal("no such desktop among %s", qPrintable(below(*model, {})));
        view("tvDesck")->setCurrentIndex(found.first());
    }
    /// The menu of the desktop on one line: "а(б(в)) г".
    QString menu() const {
        const QAbstractItemModel* model = view("tvMenu")->model();
        return below(*model, model->index(0, 0));
    }
    static QString below(const QAbstractItemModel& model, const QModelIndex& parent) {
        QStringList all;
        for (int row = 0; row < model.rowCount(parent); ++row) {
            const QModelIndex index = model.index(row, 0, parent);
            const QString inner = below(model, index);
            all << index.data().toString() + (inner.isEmpty() ? QString() : '(' + inner + ')');
        }
        return all.join(' ');
    }
    QString undoText() const { return action("actUndo")->text(); }
    QString redoText() const { return action("actRedo")->text(); }
    QString failure() const { return client->window()->statusLine()->failure(); }
    /// Lines of the log with that text.
    int logged(const QString& text) const {
        const app::LogPane* log = client->window()->logPane();
        int count = 0;
        for (int i = 0; i < log->topLevelItemCount(); ++i)
            for (int column = 0; column < log->columnCount(); ++column)
                count += log->topLevelItem(i)->text(column).contains(text);
        return count;
    }
    template <class T>
    T* child(const char* name) const {
        return client->window()->findChild<T*>(QString::fromLatin1(name));
    }
};

} // namespace orvo::test

#endif
