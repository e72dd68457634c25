// AddButton.h: the button "+" at the end of the row under the mouse in a palette, which adds the
// resource with one click. The keyboard has Enter for it.
#ifndef ORVO_PICKER_ADDBUTTON_H
#define ORVO_PICKER_ADDBUTTON_H

#include "frame/RowDelegate.h"

#include <QModelIndex>
#include <QRect>

class QTreeView;

namespace orvo {

/// The delegate of the picker's tree, and its child.
class AddButton : public RowDelegate {
    Q_OBJECT
public:
    explicit AddButton(QTreeView* view);

    /// Only a palette has the button.
    void setShown(bool on);
    /// Its place on a row of the list in the viewport; empty for a folder, and without buttons.
    QRect placeOn(const QModelIndex& row) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    QTreeView& m_view;
    bool m_isShown = false;
};

} // namespace orvo

#endif
