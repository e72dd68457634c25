// ProblemsFixture.h: the running client with its pane "Проблемы".
#ifndef ORVO_TESTS_CLIENT_PROBLEMSFIXTURE_H
#define ORVO_TESTS_CLIENT_PROBLEMSFIXTURE_H

#include "apps/client/problems/ProblemsPane.h"
#include "tests/client/RunningClient.h"

#include <QDockWidget>

namespace orvo::test {

/// The elements а and г are in one place by their order, and the tops of the resources are missing.
struct ProblemsFixture : RunningClient {
    app::ProblemsPane* pane() const { return child<app::ProblemsPane>("problemsPane"); }
    QAbstractItemModel* model() const { return pane()->view()->model(); }
    QDockWidget* dock() const { return child<QDockWidget>("problemsDock"); }
    QString counted() const { return client->window()->statusLine()->problems(); }
    bool isKnown() const { return pane()->feed().isKnown(); }
    /// The rows about elements of the menu, "what|where|problem|cure".
    QStringList elements() const {
        QStringList lines;
        for (int row = 0; row < model()->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < app::ProblemsModel::ColumnCount; ++column)
                cells << model()->index(row, column).data().toString();
            if (cells[0].startsWith("элемент"))
                lines << cells.join('|');
        }
        return lines;
    }
    bool choose(const QString& what) const {
        for (int row = 0; row < model()->rowCount(); ++row)
            if (model()->index(row, 0).data().toString().contains(what)) {
                pane()->view()->setCurrentIndex(model()->index(row, 0));
                return true;
            }
        return false;
    }
    void open() const {
        client->window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(client->window()));
        QTest::keyClick(client->window(), Qt::Key_F8);
        QTRY_VERIFY(dock()->isVisible());
    }
    /// So many elements, on desktops of a hundred, each with an icon that is not there.
    void fillWithMissingIcons(int count) {
        stop();
        const QString numbers = QString("with recursive n(i) as (select 0 union all select i + 1 "
                                        "from n where i + 1 < %1) ");
        QVERIFY(host.byHand(numbers.arg((count + 99) / 100) +
                            R"(insert into "MenuFolder" ("KeyLink", "caption", "order_") )"
                            R"(select 'q' || i, 'Стол ' || i, '2000' from n)"));
        QVERIFY(host.byHand(
            numbers.arg(count) +
            R"(insert into "Menu" ("KeyLink", "FolderKey", "caption", "order_", "ico") )"
            R"(select 'p' || i, 'q' || (i / 100), 'Насос ' || i, i, 'нет.png' from n)"));
        start();
    }
    const QString sameOrder =
        "элемент меню «г»|КС-1|место по порядку то же, что у соседнего "
        "элемента «а» (a): 1000|дать соседним элементам разные места, сохранив "
        "порядок";
};

} // namespace orvo::test

#endif
