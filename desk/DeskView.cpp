#include "desk/DeskView.h"

#include "frame/RowDelegate.h"
#include "frame/Text.h"

#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QScroller>
#include <QToolTip>

namespace orvo::desk {

namespace {

/// The first of its siblings has nothing to be separated from.
bool isSeparated(const QModelIndex& row) {
    return row.row() > 0 && row.data(DeskModel::SeparatorRole).toBool();
}

} // namespace

QString DeskDelegate::displayText(const QVariant& value, const QLocale&) const {
    return displayLine(value.toString());
}

QSize DeskDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const int height = std::max(rowHeight, option.fontMetrics.height() + 2);
    return {0, height + (isSeparated(index) ? separatorHeight : 0)}; // as wide as the view
}

void DeskDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    QStyleOptionViewItem row = option;
    if (index.data(DeskModel::BrokenRole).toBool())
        row.state &= ~QStyle::State_Enabled; // grey, the icon too; it can be chosen all the same
    row.textElideMode = Qt::ElideRight;
    QStyledItemDelegate::paint(painter, row, index);
    // A file that is no picture, or not here yet, is looked at again with each paint.
    const auto icon = index.data(Qt::DecorationRole).value<QIcon>();
    if (icon.actualSize({iconSize, iconSize}).isEmpty())
        icon.paint(painter, {row.rect.topLeft(), QSize(iconSize, iconSize)});
}

/// Every icon has the same room, whatever its size, so that the captions stand below each other.
void DeskDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    const QSize size(iconSize, iconSize);
    if (option->icon.actualSize(size).isEmpty())
        option->icon = index.data(DeskModel::OwnIconRole).value<QIcon>();
    option->features |= QStyleOptionViewItem::HasDecoration;
    option->decorationSize = size;
}

bool DeskDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                             const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !index.data(Qt::ToolTipRole).toString().isEmpty())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    const QRect room = view->style()->subElementRect(QStyle::SE_ItemViewItemText, &row, view);
    const bool isCut = row.fontMetrics.horizontalAdvance(row.text) > room.width();
    QToolTip::showText(event->globalPos(), isCut ? plainToolTip(row.text) : QString(), view,
                       option.rect);
    return true;
}

DeskView::DeskView(QWidget* parent) : QTreeView(parent) {
    setObjectName(QStringLiteral("deskTree"));
    setAccessibleName(Text::tr("Меню рабочего стола"));
    setHeaderHidden(true);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setItemDelegate(new DeskDelegate(this));
    setIconSize({DeskDelegate::iconSize, DeskDelegate::iconSize});
    setExpandsOnDoubleClick(false); // a click opens already
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAnimated(false);
    QScroller::grabGesture(viewport(), QScroller::TouchGesture);
}

void DeskView::setDeskModel(DeskModel* model) {
    m_model = model;
    setModel(model);
    for (int column = 1; column < model->columnCount(); ++column)
        setColumnHidden(column, true);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(0, QHeaderView::Stretch);
    connect(this, &QTreeView::expanded, model, [this](const QModelIndex& row) {
        m_open.insert(row.data(KeyRole).toString());
        m_model->setRowExpanded(row, true);
    });
    connect(this, &QTreeView::collapsed, model, [this](const QModelIndex& row) {
        if (!m_keeps)
            m_open.remove(row.data(KeyRole).toString());
        m_model->setRowExpanded(row, false);
    });
}

DeskView::Keep::Keep(DeskView& view)
    : m_view(view)
    , m_current(view.currentIndex().data(KeyRole).toString()) {
    const QModelIndex top = view.indexAt({1, 1});
    m_top = top.data(KeyRole).toString();
    m_topY = top.isValid() ? view.visualRect(top).top() : 0;
    view.m_keeps = true;
    view.setUpdatesEnabled(false);
}

DeskView::Keep::~Keep() {
    m_view.openKnown({});
    m_view.m_keeps = false;
    // The view itself goes to a neighbour of a row that is removed: an operator's choice does not
    // wander, it comes back with the row or is gone.
    const QModelIndex current = m_view.m_model->findIndexByKey(m_current);
    if (m_view.currentIndex() != current) {
        const bool follows = m_view.hasAutoScroll();
        m_view.setAutoScroll(false);
        m_view.setCurrentIndex(current);
        m_view.setAutoScroll(follows);
    }
    const QModelIndex top = m_view.m_model->findIndexByKey(m_top);
    m_view.executeDelayedItemsLayout();
    if (top.isValid()) {
        QScrollBar& bar = *m_view.verticalScrollBar();
        bar.setValue(bar.value() + m_view.visualRect(top).top() - m_topY);
    }
    m_view.setUpdatesEnabled(true);
}

/// Rows that were made again are closed; only folders that the operator had opened are looked into.
void DeskView::openKnown(const QModelIndex& parent) {
    std::vector<QPersistentModelIndex> pending{parent};
    while (!pending.empty()) {
        const QModelIndex above = pending.back();
        pending.pop_back();
        for (int row = 0; row < m_model->rowCount(above); ++row) {
            const QModelIndex index = m_model->index(row, 0, above);
            if (!m_model->hasChildren(index) || !m_open.contains(index.data(KeyRole).toString()))
                continue;
            setExpanded(index, true);
            pending.emplace_back(index);
        }
    }
}

void DeskView::showElement(const QString& key) {
    const QModelIndex row = m_model->findIndexByKey(key);
    if (!row.isValid())
        return;
    for (QModelIndex up = row.parent(); up.isValid(); up = up.parent())
        expand(up);
    setCurrentIndex(row);
    scrollTo(row);
}

void DeskView::open(const QModelIndex& row) {
    if (DeskModel::isFolder(row))
        setExpanded(row, !isExpanded(row));
    else
        emit chosen(row.data(KeyRole).toString());
}

void DeskView::keyPressEvent(QKeyEvent* event) {
    const QModelIndex row = currentIndex().siblingAtColumn(0);
    const bool plain = (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == 0;
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (row.isValid() && !event->isAutoRepeat())
            open(row);
    } else if (plain && !event->text().isEmpty() && event->text().at(0).isPrint() &&
               event->key() != Qt::Key_Space) {
        emit typed(event->text());
    } else {
        QTreeView::keyPressEvent(event);
    }
}

/// The line is above all of the row, its branch sign included.
void DeskView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const {
    QStyleOptionViewItem row = option;
    if (isSeparated(index)) {
        QColor line = option.palette.color(QPalette::Text);
        line.setAlphaF(0.35);
        painter->fillRect(option.rect.left(), option.rect.top() + DeskDelegate::separatorHeight / 2,
                          option.rect.width(), 1, line);
        row.rect.setTop(option.rect.top() + DeskDelegate::separatorHeight);
    }
    QTreeView::drawRow(painter, row, index);
}

void DeskView::mousePressEvent(QMouseEvent* event) {
    m_press.begin(*this, event->pos());
    QTreeView::mousePressEvent(event);
}

void DeskView::mouseReleaseEvent(QMouseEvent* event) {
    const QModelIndex row = indexAt(event->pos());
    const bool onBranch = row.isValid() && event->pos().x() < visualRect(row).left();
    QTreeView::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton || !row.isValid() || onBranch || row != currentIndex() ||
        m_press.isSwipe(*this, event->pos()))
        return;
    // The second half of a double click would close what the first has opened.
    const bool second = m_clicked == row && m_sinceClick.isValid() &&
                        m_sinceClick.elapsed() < QApplication::doubleClickInterval();
    m_clicked = row;
    m_sinceClick.start();
    if (!second)
        open(row);
}

} // namespace orvo::desk
