// TreeSearchBar.h: a search field over the corner of a tree, for trees without one in their window.
// What is typed is found at once; Return and F3 go on, Shift with them back, Esc closes it. It
// never covers the row that was found: that is scrolled, or the bar goes to the lower corner.
#ifndef ORVO_MODELS_TREESEARCHBAR_H
#define ORVO_MODELS_TREESEARCHBAR_H

#include "models/TreeSearch.h"

#include <QWidget>

#include <vector>

class QComboBox;
class QKeyEvent;
class QLineEdit;
class QToolButton;

namespace orvo {

/// A child of its view. The model is the view's, and outlives it.
class TreeSearchBar : public QWidget {
    Q_OBJECT
public:
    struct Column {
        int number;
        QString title;
    };
    /// `columns` can be searched, the first at first; `keyColumn` is what the model's
    /// findIndexByKey compares.
    TreeSearchBar(QTreeView* view, const TreeModelCore<TabRec>& model, int keyColumn,
                  const std::vector<Column>& columns);

    /// Whether a letter that is typed in the tree opens it.
    void setOpensOnTyping(bool on) { m_opensOnTyping = on; }
    /// Whether Enter in the field is a choice of the current row, and not the way to the next hit.
    /// Nothing is chosen by a text that was not found; one that was is selected afterwards.
    void setReturnChooses(bool on) { m_returnChooses = on; }
    /// Whether a text that the column in use does not hold is looked for in the others that are
    /// shown; the one that holds it is in use then.
    void setTriesAllColumns(bool on) { m_triesAllColumns = on; }
    /// Opens it with the letter that was typed; false if it is none that begins a search.
    bool openOn(const QKeyEvent& key);
    /// Shows it with its text selected, or with that text, and gives it the focus.
    void open(const QString& text = {});
    /// Opens it on the next of the columns that it can search, after the last on the first; with
    /// what was typed there.
    void searchByNext();
    bool hasColumns() const { return m_columns.size() > 1; }
    /// Hides it, and gives the focus to the tree if it has it.
    void dismiss();
    /// Goes to the next hit (1) or the one before (-1), if there is one; opens it if nothing was
    /// looked for.
    void step(int by);

signals:
    /// Enter, see setReturnChooses.
    void chosen();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void find();
    bool findIn(int column);
    void colour();
    void updateButtons();
    void place();
    bool isOverCurrent() const;
    void uncoverCurrent();
    bool takeKey(int key, bool shift);
    void choose();

    QTreeView& m_view;
    const std::vector<Column> m_columns;
    RowSearch m_hits;
    int32_t m_position = 0;
    QLineEdit* m_text; // these: children
    QToolButton* m_down;
    QToolButton* m_up;
    QComboBox* m_column;
    bool m_isLow = false; ///< in the lower corner
    bool m_opensOnTyping = false;
    bool m_returnChooses = false;
    bool m_triesAllColumns = false;
};

} // namespace orvo

#endif
