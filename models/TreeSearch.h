// TreeSearch.h: the rows that a search has found as current rows of a view, one after the other: no
// list of them, and no way around from the last one to the first.
#ifndef ORVO_MODELS_TREESEARCH_H
#define ORVO_MODELS_TREESEARCH_H

#include "models/RowSearch.h"

#include <QPalette>

class QTreeView;
class QWidget;

namespace orvo {

/// Looks at the hits of a search and at a position among them, which are the caller's; made where
/// it is needed. The position may stand one place past either end, after a step beyond it. Hits
/// whose rows are gone are passed over.
class TreeSearch {
public:
    TreeSearch(QTreeView& view, const RowSearch& hits, int32_t& position)
        : m_view(view)
        , m_hits(hits)
        , m_position(position) {}

    /// After a search: makes the row of the first hit current. False, and nothing done, if there is
    /// none.
    bool showFirst();
    /// Goes to the next hit (1) or the one before (-1). False, and the row stays, if there is none.
    bool step(int by);
    bool mayStep(int by) const;
    /// Whether a hit still has its row.
    bool hasAny() const { return isHit(livingHit(0, 1)); }

private:
    bool isHit(int32_t number) const { return number >= 0 && number < m_hits.count(); }
    int32_t livingHit(int32_t from, int by) const;
    void show(int32_t number);

    QTreeView& m_view;
    const RowSearch& m_hits;
    int32_t& m_position;
};

class TreeSearchBar;
/// For a window without the commands of an editor: the keys of the search are those of this bar,
/// wherever in the window the focus is.
void onSearchKeys(QWidget& window, TreeSearchBar& bar);

/// The colours of a search field whose text was found, or was not: red, as far as that can be read
/// on its background.
QPalette searchColours(QPalette usual, bool found);

} // namespace orvo

#endif
