// TreeDifferences.h: a tree that has followed thousands of notifications beside one that was loaded
// anew. They may differ in what is required to differ; that is found by watching each single
// notification:
//
//  - lost: a record without a row, though loading would show one. It stays without a row until the
//    tree is loaded again.
//  - stray: a row that does not stand where its record says, or below one that is no folder.
//  - unsaved: a row of this editor alone, without a record.
//  - typed: a row that shows values which were typed and never stored.
//  - blurred: a parent that had any of these among its children. Positions are counted in the table
//    and rows in the tree, so the order below it is no longer that of the table.
#ifndef ORVO_TESTS_MENU_TREEDIFFERENCES_H
#define ORVO_TESTS_MENU_TREEDIFFERENCES_H

#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

namespace orvo::test {

/// One row of a tree, by its key.
struct TreeRow {
    QString parent; ///< key of the row above
    QString values;
    int place = 0; ///< among its siblings
    bool folder = false;
};
using TreeRows = QMap<QString, TreeRow>;

class Differences {
public:
    QSet<QString> lost, stray, unsaved, typed, blurred;
    int comparedRows = 0;
    int comparedFamilies = 0; ///< whose order was compared

    /// For a tree that was loaded anew.
    void clear() {
        lost.clear();
        stray.clear();
        unsaved.clear();
        typed.clear();
        blurred.clear();
    }

    /// Takes note of how table and tree stand to each other at this moment. `parents`: the parent
    /// of each record by its key, as loading would place it.
    void watch(const TreeRows& rows, const QMap<QString, QString>& parents,
               QSet<QString> placeholders) {
        unsaved = std::move(placeholders);
        for (auto record = parents.begin(); record != parents.end(); ++record) {
            if (!rows.contains(record.key())) {
                lost.insert(record.key());
                blurred.insert(record.value());
            }
        }
        for (auto row = rows.begin(); row != rows.end(); ++row) {
            const bool known = parents.contains(row.key());
            // Loading enters folders only.
            if (!row->parent.isEmpty() && !rows.value(row->parent).folder)
                stray.insert(row.key());
            if (!known || parents[row.key()] != row->parent) {
                blurred.insert(row->parent);
                if (known) {
                    blurred.insert(parents[row.key()]);
                    stray.insert(row.key());
                }
            }
        }
    }

    /// The first row whose leading values are not those of its record, though nothing was typed
    /// into it; empty if there is none. `stored`: the values of the records, by key.
    QString unlikeItsRecord(const TreeRows& rows, const QMap<QString, QString>& stored) const {
        for (auto record = stored.begin(); record != stored.end(); ++record) {
            const auto row = rows.find(record.key());
            if (row == rows.end() || typed.contains(record.key()))
                continue;
            const QString shown = row->values.section('|', 0, record->count('|'));
            if (shown != *record)
                return QString("%1 shows %2, and its record says %3")
                    .arg(record.key(), shown, *record);
        }
        return {};
    }

    /// The first difference that is not required; empty if there is none.
    QString compare(const TreeRows& live, const TreeRows& fresh) {
        for (auto row = fresh.begin(); row != fresh.end(); ++row) {
            if (!live.contains(row.key())) {
                if (!within(row.key(), fresh, lost) && !within(row.key(), fresh, stray))
                    return "not shown: " + row.key() + " " + row->values;
                continue;
            }
            if (live[row.key()].parent != row->parent && !stray.contains(row.key()))
                return QString("%1 stands below %2, not %3")
                    .arg(row.key(), live[row.key()].parent, row->parent);
            if (live[row.key()].values != row->values && !typed.contains(row.key()))
                return QString("%1 shows %2, not %3")
                    .arg(row.key(), live[row.key()].values, row->values);
            ++comparedRows;
        }
        for (auto row = live.begin(); row != live.end(); ++row) {
            if (!fresh.contains(row.key()) && !unsaved.contains(row.key()) &&
                !within(row.key(), live, stray) && !within(row.key(), live, unsaved))
                return "shown for nothing: " + row.key() + " " + row->values;
        }
        return compareOrder(live, fresh);
    }

private:
    static bool within(const QString& key, const TreeRows& rows, const QSet<QString>& set) {
        QSet<QString> seen;
        for (QString up = key; !up.isEmpty() && !seen.contains(up); up = rows.value(up).parent) {
            if (set.contains(up))
                return true;
            seen.insert(up);
        }
        return false;
    }
    static QMap<QString, QMap<int, QString>> familiesOf(const TreeRows& rows) {
        QMap<QString, QMap<int, QString>> families;
        for (auto row = rows.begin(); row != rows.end(); ++row)
            families[row->parent][row->place] = row.key();
        return families;
    }
    QString compareOrder(const TreeRows& live, const TreeRows& fresh) {
        const auto liveOrder = familiesOf(live);
        const auto freshOrder = familiesOf(fresh);
        for (auto family = freshOrder.begin(); family != freshOrder.end(); ++family) {
            if (blurred.contains(family.key()) || !liveOrder.contains(family.key()))
                continue;
            if (liveOrder[family.key()].values() != family->values())
                return QString("order below \"%1\": %2, not %3")
                    .arg(family.key(), QStringList(liveOrder[family.key()].values()).join(' '),
                         QStringList(family->values()).join(' '));
            ++comparedFamilies;
        }
        return {};
    }
};

} // namespace orvo::test

#endif
