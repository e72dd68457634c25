// CatalogueSearch.h: the search of the resource editor: finds rows while the user types into the
// field of the tool bar, and steps through what was found. No list of results, and no way around
// from the last hit to the first. While the tool bar has no room for its field, a bar over the tree
// is searched with.
//
// Invariants; 1 is asserted in debug builds:
// 1. There are widgets before there is a tree, and hits of that tree as soon as there is one.
// 2. Another text switches both buttons off, and its first hit that of the way down on; a step
//    switches off its own button at the last hit, and the other on.
#ifndef ORVO_RESOURCES_CATALOGUESEARCH_H
#define ORVO_RESOURCES_CATALOGUESEARCH_H

#include "models/RowSearch.h"
#include "models/TreeSearchBar.h"
#include "models/models.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>

class QComboBox;
class QKeyEvent;
class QLineEdit;
class QToolButton;
class QTreeView;
class QWidget;

namespace orvo::resources {

class CatalogueSearch : public QObject {
public:
    /// Children of the window, which outlive this. `choice` says by its entries what is searched:
    /// captions, names.
    struct Widgets {
        QLineEdit* field;
        QComboBox* choice;
        QToolButton* down;
        QToolButton* up;
    };

    explicit CatalogueSearch(QWidget& window) : m_window(window) {}

    /// Colours them for the window's palette, now and when that changes. The field's keys are for
    /// this as its event filter.
    void setWidgets(const Widgets& widgets);
    /// Searches that tree from now on, which outlives this and is to be the view's model.
    void setTree(QTreeView& view, const ResTreeModel& tree);
    /// Adds the bar over the tree, which is the view's model by now.
    void addBar(const ResTreeModel& tree);

    // Of this object, as long as it lives.
    const std::unique_ptr<RowSearch>& hits() const { return m_hits; } ///< null without a tree
    const int32_t& position() const { return m_position; } ///< may stand one place past either end

    /// Looks for a text from the first row on.
    void find(const QString& text);
    /// The buttons: to the next hit (1) or the one before (-1).
    void step(int by);
    /// The keys: shows the field, goes to a hit, searches by the other column.
    void open();
    void stepToHit(int by);
    void searchByNext();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    TreeSearch search();
    /// The search field and its choice in colours that suit the palette and what was found.
    void colour();
    void colourChoice();
    bool takeKey(const QKeyEvent& event);
    bool isInBar() const;

    QWidget& m_window;
    Widgets m_widgets = {};
    QTreeView* m_view = nullptr;
    std::unique_ptr<RowSearch> m_hits;
    int32_t m_position = 0;
    TreeSearchBar* m_bar = nullptr; ///< child of the view
};

} // namespace orvo::resources

#endif
