// HistoryFixture.h: a running client and its pane "История".
#ifndef ORVO_TESTS_CLIENT_HISTORYFIXTURE_H
#define ORVO_TESTS_CLIENT_HISTORYFIXTURE_H

#include "apps/client/history/HistoryPane.h"
#include "apps/client/history/RevertDialog.h"
#include "apps/client/history/VersionsDialog.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/client/ContextMenus.h"
#include "tests/client/RunningClient.h"
#include "tests/menu/WindowHands.h"

#include <QDockWidget>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QTreeWidget>

namespace orvo::test {

struct HistoryFixture : RunningClient {
    app::HistoryPane* pane() const { return child<app::HistoryPane>("historyPane"); }
    QTreeView* tree() const { return pane()->view(); }
    QAbstractItemModel* model() const { return tree()->model(); }
    QDockWidget* dock() const { return child<QDockWidget>("historyDock"); }
    void open() const {
        client->window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(client->window()));
        QTest::keyClick(client->window(), Qt::Key_F4);
    }
    QString cell(int row, int column, const QModelIndex& parent = {}) const {
        return model()->index(row, column, parent).data().toString();
    }
    QString what(int row) const { return cell(row, app::HistoryModel::What); }
    QStringList all() const {
        QStringList lines;
        for (int row = 0; row < model()->rowCount(); ++row)
            lines << what(row);
        return lines;
    }
    int find(const QString& text) const {
        const QStringList lines = all();
        for (int row = 0; row < lines.size(); ++row)
            if (lines[row].contains(text))
                return row;
        return -1;
    }
    void choose(const QString& text) const {
        tree()->setCurrentIndex(model()->index(find(text), app::HistoryModel::What));
    }
    void press(const char* button) const {
        auto* found = child<QPushButton>(button);
        QVERIFY2(found && found->isEnabled(), button);
        QTest::mouseClick(found, Qt::LeftButton);
    }
    /// Chooses in the menu of "Вернуть всё до этого места".
    void revertBack(const QString& whose) const {
        QMenu* menu = child<QPushButton>("historyRevertBack")->menu();
        emit menu->aboutToShow();
        for (QAction* action : menu->actions())
            if (action->text().contains(whose)) {
                action->trigger();
                return;
            }
        QFAIL("no such scope");
    }
    app::RevertDialog* dialog() const { return child<app::RevertDialog>("revertDialog"); }
    bool isReady() const {
        return dialog() && dialog()->findChild<QPushButton*>("revertOk")->isEnabled();
    }
    QString note() const { return child<QLabel>("historyNote")->text(); }
    /// Opens "Прежние версии…" of a form or file.
    app::VersionsDialog* openVersions(const QString& key) const {
        QMenu menu;
        module("Resources")->m_app->addRecordActions(&menu, "MenuResource", key);
        for (QAction* action : menu.actions())
            if (action->text().startsWith("Прежние версии"))
                action->trigger();
        const auto find = [&] { return child<app::VersionsDialog>("versionsDialog"); };
        return QTest::qWaitFor([&] { return find() != nullptr; }) ? find() : nullptr;
    }
    QString keyOfResource(const char* name) {
        CMDArray rows;
        if (!host.store().fetchWhere("MenuResource", "name_", name, rows.array).ok() ||
            mdx::postedCount(rows.array) == 0)
            return {};
        return textOf(rows.array, mdx::postedRecord(rows.array, 0), "KeyLink");
    }
};

} // namespace orvo::test

#endif
