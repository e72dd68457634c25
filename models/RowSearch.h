// RowSearch.h: finding rows of a big tree by a part of their text while the user types.
#ifndef ORVO_MODELS_ROWSEARCH_H
#define ORVO_MODELS_ROWSEARCH_H

#include "models/TabRec.h"
#include "models/TreeModelCore.h"

#include <QModelIndex>
#include <QObject>
#include <QString>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvo {

/// Finds the rows of a model that QAbstractItemModel::match would find from the first row of the
/// tree with the flags MatchContains and MatchRecursive and without a limit: a part of the text of
/// a column, without regard to case, in display order. At a fraction of its cost, and it keeps the
/// hits. (MatchFixedString must not be added: since Qt 5.15 it makes of MatchContains a
/// MatchRegularExpression, which bears the number of both together, and "." would find every row.)
///
/// The texts are searched in a copy, one byte for each letter with the cases made equal, in blocks
/// of sibling rows. A column's copy is made by its first search (about as dear as one match), takes
/// the text's own length plus some bytes a row, and follows the model: a change drops the blocks it
/// falls into, and the next search makes those anew.
///
/// The hits are the records themselves as long as no row is removed; before the first removal they
/// become the rows' keys. So a keystroke that finds half a million rows costs no half million
/// persistent indexes, of which every change of rows would have to care for each; and a hit never
/// dangles: a row that is gone is no hit any more, one that was taken out and put in elsewhere is
/// found at its new place.
///
/// Outside the calls, and outside the model's changes, all of this holds; check() looks at it.
///
///  1. The hits are in m_hits, and then no row has been removed or moved since they were found, or
///     in m_hitKeys: never in both.
///  2. m_columns has blocks only for rows of the model that have rows below them or had them, and
///     not more than those fill.
///  3. A block that counts as made holds what making it now would give.
class RowSearch {
public:
    /// `model` must outlive this object; `keyColumn` is what its findIndexByKey compares.
    RowSearch(const TreeModelCore<TabRec>& model, int keyColumn);
    RowSearch(const RowSearch&) = delete;
    RowSearch& operator=(const RowSearch&) = delete;

    /// Replaces the hits by the rows whose text in `column` contains `text`.
    void find(int column, const QString& text);
    /// Hits of the last search, those included whose rows are gone since.
    int count() const;
    /// Column 0 of the row of a hit; invalid if the row is gone, and for a number out of range.
    QModelIndex hit(int number) const;
    /// The first invariant that does not hold; null if all do. For tests: it makes every block
    /// anew.
    const char* check() const;

private:
    /// Up to `blockSize` rows of one parent.
    struct Block {
        std::string text;              ///< letter codes of each row, each ended by a separator
        std::vector<uint32_t> ends;    ///< where the next row's letters begin
        std::vector<uint16_t> others;  ///< rows with letters that have no code
        std::vector<uint16_t> folders; ///< rows with rows below them
        bool made = false;

        bool operator==(const Block&) const = default;
    };
    using Blocks = std::vector<Block>;
    using Column = std::unordered_map<const TabRec*, Blocks>; ///< by parent
    class Walk;

    void make(Block& block, const TabRec& parent, int first, int column) const;
    const TabRec* record(const QModelIndex& index) const { return m_model.getItem(index); }
    QModelIndex indexOf(const TabRec* row) const;
    /// Drops the blocks of the rows from `first` to `last` in these columns.
    void drop(const QModelIndex& parent, int first, int last, int firstColumn, int lastColumn);
    void dropAll() { m_columns.clear(); }
    void onRowsInserted(const QModelIndex& parent, int first, int last);
    void onRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last);
    void onRowsRemoved(const QModelIndex& parent, int first);
    /// The rows of `parent` from `first` on have other numbers now; `whole`: it has become a parent
    /// or is none any more.
    void rowsShifted(const QModelIndex& parent, int first, bool whole);
    void keepKeys();

    const TreeModelCore<TabRec>& m_model;
    const int m_keyColumn;
    std::unordered_map<int, Column> m_columns; ///< those searched
    std::vector<const TabRec*> m_hits;         ///< the model's; empty once there are keys
    std::vector<QString> m_hitKeys;
    QObject m_context; ///< ends the connections to the model
};

} // namespace orvo

#endif
