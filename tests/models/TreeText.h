// TreeText.h: trees as indented text, for tests that build, act, print and compare.
//
// A line is a row: two blanks of indentation a level, the text of column 0, then, in any order,
// "#key" for the key column and "number=value" for other columns. Values "true", "false" and whole
// numbers become bools and ints.
#ifndef ORVO_TESTS_MODELS_TREETEXT_H
#define ORVO_TESTS_MODELS_TREETEXT_H

#include "ModelWatch.h"

#include <QAbstractItemModel>
#include <QStringList>

namespace treetext {

/// Appends the rows to what the model holds, row by row through insertRows and setData.
void fill(QAbstractItemModel& model, int keyColumn, const QString& text,
          const QModelIndex& parent = {});

/// The rows as lines: column 0, then "#key" if the key column holds a text, then the given columns
/// as "number=value".
QString print(const QAbstractItemModel& model, int keyColumn, const QList<int>& columns = {},
              const QModelIndex& parent = {}, int level = 0);

/// Headers "0", "1", ...
QStringList headers(int count);

/// The first hit of the match that findIndexByKey stands for.
QModelIndex matchKey(const QAbstractItemModel& model, const QString& key);

/// A model of type M that a fatal tester has watched since before it held anything.
template <class M>
struct Watched : M {
    template <class... Args>
    explicit Watched(Args&&... args) : M(std::forward<Args>(args)...) {}
    ModelWatch watch{this};
};

} // namespace treetext

#endif
