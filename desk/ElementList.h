// ElementList.h: a list of elements beside the tree: what a search has found, what was used last.
#ifndef ORVO_DESK_ELEMENTLIST_H
#define ORVO_DESK_ELEMENTLIST_H

#include "desk/Search.h"
#include "desk/Swipe.h"

#include <QListView>

class QStandardItemModel;

namespace orvo::desk {

class ElementList : public QListView {
    Q_OBJECT
public:
    ElementList(const DeskModel& model, const QString& name, QWidget* parent = nullptr);

    /// Shows these in place of what is shown, the first one current if `choose`; one that the menu
    /// does not have is left out. Icons are those of the menu.
    void show(const std::vector<Hit>& hits, bool choose);
    int count() const;
    /// As high as its rows.
    QSize sizeHint() const override;

signals:
    void chosen(const QString& key);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    const DeskModel& m_menu;
    QStandardItemModel* m_rows; ///< child
    Swipe m_press;
    bool m_isSwiped = false; ///< the press that ends now
};

} // namespace orvo::desk

#endif
