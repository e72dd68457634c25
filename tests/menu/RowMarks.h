// RowMarks.h: a host that shows another's open edit at one record, and whether a view paints it.
#ifndef ORVO_TESTS_MENU_ROWMARKS_H
#define ORVO_TESTS_MENU_ROWMARKS_H

#include "tests/menu/ModuleFixture.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QToolTip>

namespace orvo::test {

class MarkingHost : public TestHost {
public:
    using TestHost::TestHost;

    QString table, key; ///< of the record that is edited; empty: none is

    bool hasRecordMarks() const override { return !key.isEmpty(); }
    RecordMark recordMark(const QString& ofTable, const QString& ofKey) const override {
        return ofTable == table && ofKey == key ? RecordMark{"Петров", "Правит Петров"}
                                                : RecordMark();
    }
};

/// What a view shows of a row: its pixels, and the tool tip at the end of its first cell.
struct ShownRow {
    QImage picture;
    QString toolTip;
};

inline ShownRow shownRow(QTreeView* view, const QModelIndex& row) {
    view->scrollTo(row);
    const QRect place = view->visualRect(row);
    ShownRow shown{view->viewport()->grab(place).toImage(), {}};
    // A tip goes only after a while; another takes its place at once.
    QToolTip::showText(view->viewport()->mapToGlobal(place.center()), "-", view->viewport());
    for (int x = place.left(); x < place.right() && shown.toolTip.isEmpty(); x += 3) {
        const QPoint at(x, place.center().y());
        QHelpEvent event(QEvent::ToolTip, at, view->viewport()->mapToGlobal(at));
        QCoreApplication::sendEvent(view->viewport(), &event);
        if (QToolTip::text().contains("Правит"))
            shown.toolTip = QToolTip::text();
    }
    return shown;
}

/// How many cells of the view a screen reader reads with the mark.
inline int spokenMarks(QTreeView* view) {
    QAccessibleInterface* tree = QAccessible::queryAccessibleInterface(view);
    int count = 0;
    for (int i = 0; i < tree->childCount(); ++i)
        if (const QAccessibleInterface* cell = tree->child(i))
            count += cell->text(QAccessible::Name).contains("Правит Петров") ? 1 : 0;
    return count;
}

/// The first thing that is not as it should be when another begins and ends to edit the record of a
/// row; `other` is a row without a mark.
inline QString wrongMark(MarkingHost& host, QTreeView* view, const char* table,
                         const QModelIndex& row, const QModelIndex& other) {
    const QString key = row.data(KeyRole).toString();
    const QImage before = shownRow(view, row).picture;
    const QImage otherBefore = shownRow(view, other).picture;
    host.table = QString::fromLatin1(table);
    host.key = key;
    const ShownRow marked = shownRow(view, row);
    const ShownRow unmarked = shownRow(view, other);
    const int spoken = spokenMarks(view);
    host.key.clear();
    if (marked.picture == before)
        return "the row looks as without an edit";
    if (!marked.toolTip.contains("Правит Петров"))
        return "no tool tip tells of the edit";
    if (spoken != 1)
        return QString("a screen reader is told of %1 marks").arg(spoken);
    if (unmarked.picture != otherBefore || !unmarked.toolTip.isEmpty())
        return "another row is marked";
    return shownRow(view, row).picture == before ? QString() : "the mark stays";
}

} // namespace orvo::test

#endif
