#include "picker/AddButton.h"

#include "models/PopTreeModel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <QTreeView>

namespace orvo {

AddButton::AddButton(QTreeView* view) : RowDelegate(view), m_view(*view) {}

void AddButton::setShown(bool on) {
    m_isShown = on;
    // Without it no style tells which row is under the mouse, if it shows nothing there itself.
    m_view.viewport()->setAttribute(Qt::WA_Hover, on);
    m_view.viewport()->update();
}

QRect AddButton::placeOn(const QModelIndex& row) const {
    const QModelIndex name = row.siblingAtColumn(PickColumn::Name);
    if (!m_isShown || !name.isValid() || row.siblingAtColumn(PickColumn::IsFolder).data().toBool())
        return {};
    QRect place = m_view.visualRect(name).adjusted(0, 1, -2, -1);
    place.setLeft(place.right() - place.height() + 1);
    return place;
}

void AddButton::paint(QPainter* painter, const QStyleOptionViewItem& option,
                      const QModelIndex& index) const {
    RowDelegate::paint(painter, option, index);
    const QRect place = index.column() == PickColumn::Name ? placeOn(index) : QRect();
    if (place.isEmpty() || !(option.state & QStyle::State_MouseOver))
        return;
    const qreal arm = place.height() / 4.0;
    const QPointF middle = QRectF(place).center();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(option.palette.color(QPalette::Mid));
    painter->setBrush(option.palette.color(QPalette::Button));
    painter->drawRoundedRect(QRectF(place).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    painter->setPen(QPen(option.palette.color(QPalette::ButtonText), 2));
    painter->drawLine(middle - QPointF(arm, 0), middle + QPointF(arm, 0));
    painter->drawLine(middle - QPointF(0, arm), middle + QPointF(0, arm));
    painter->restore();
}

bool AddButton::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                          const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !placeOn(index).contains(event->pos()))
        return RowDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), tr("Добавить в меню (Enter)"), view);
    return true;
}

} // namespace orvo
