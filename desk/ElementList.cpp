#include "desk/ElementList.h"

#include "desk/DeskView.h"
#include "frame/RowDelegate.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScroller>
#include <QStandardItemModel>

namespace orvo::desk {

ElementList::ElementList(const DeskModel& model, const QString& name, QWidget* parent)
    : QListView(parent)
    , m_menu(model)
    , m_rows(new QStandardItemModel(this)) {
    setObjectName(name);
    setEditTriggers(NoEditTriggers);
    setItemDelegate(new DeskDelegate(this));
    setIconSize({DeskDelegate::iconSize, DeskDelegate::iconSize});
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setUniformItemSizes(true);
    setModel(m_rows);
    QScroller::grabGesture(viewport(), QScroller::TouchGesture);
    connect(this, &QListView::clicked, this, [this](const QModelIndex& row) {
        if (!m_isSwiped)
            emit chosen(row.data(KeyRole).toString());
    });
}

void ElementList::show(const std::vector<Hit>& hits, bool choose) {
    m_rows->clear();
    for (const Hit& hit : hits) {
        const QModelIndex row = m_menu.findIndexByKey(hit.key);
        if (!row.isValid())
            continue;
        const QString text =
            hit.path.isEmpty() ? hit.caption : QStringLiteral("%1 — %2").arg(hit.caption, hit.path);
        auto* item = new QStandardItem(row.data(Qt::DecorationRole).value<QIcon>(), text);
        item->setData(hit.key, KeyRole);
        item->setData(row.data(DeskModel::BrokenRole), DeskModel::BrokenRole);
        item->setData(row.data(DeskModel::OwnIconRole), DeskModel::OwnIconRole);
        item->setToolTip(plainToolTip(text));
        item->setEditable(false);
        m_rows->appendRow(item); // owned by the model
    }
    if (choose && m_rows->rowCount() > 0)
        setCurrentIndex(m_rows->index(0, 0));
    updateGeometry();
}

int ElementList::count() const {
    return m_rows->rowCount();
}

QSize ElementList::sizeHint() const {
    return {QListView::sizeHint().width(),
            count() * std::max(DeskDelegate::rowHeight, fontMetrics().height() + 2) +
                2 * frameWidth()};
}

void ElementList::mousePressEvent(QMouseEvent* event) {
    m_press.begin(*this, event->pos());
    QListView::mousePressEvent(event);
}

void ElementList::mouseReleaseEvent(QMouseEvent* event) {
    m_isSwiped = m_press.isSwipe(*this, event->pos());
    QListView::mouseReleaseEvent(event);
}

void ElementList::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!enter)
        QListView::keyPressEvent(event);
    else if (currentIndex().isValid() && !event->isAutoRepeat())
        emit chosen(currentIndex().data(KeyRole).toString());
}

} // namespace orvo::desk
