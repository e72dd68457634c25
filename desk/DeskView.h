// DeskView.h: shows the menu so that a finger hits it, and keeps what the operator has open, where
// he looks and what he has chosen while rows are made again.
#ifndef ORVO_DESK_DESKVIEW_H
#define ORVO_DESK_DESKVIEW_H

#include "desk/DeskModel.h"
#include "desk/Swipe.h"

#include <QElapsedTimer>
#include <QSet>
#include <QStyledItemDelegate>
#include <QTreeView>

namespace orvo::desk {

/// A row is as high as a fingertip, with room for a line above it where the menu has one; texts
/// that do not fit end in "…". For the tree and the lists beside it.
class DeskDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    static constexpr int rowHeight = 44;
    static constexpr int iconSize = 24;
    static constexpr int separatorHeight = 9;

    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QString displayText(const QVariant& value, const QLocale& locale) const override;
    /// The whole text of a row that does not show it.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

/// What is open is known by keys, so that a folder whose row is made again opens again by itself.
class DeskView : public QTreeView {
    Q_OBJECT
public:
    explicit DeskView(QWidget* parent = nullptr);
    /// The model outlives the view.
    void setDeskModel(DeskModel* model);

    /// While one lives the rows may change in any way: at its end what was open is open again, the
    /// current element is current if it is still there, and the row that was at the top of the view
    /// is where it was.
    class Keep {
    public:
        explicit Keep(DeskView& view);
        ~Keep();
        Keep(const Keep&) = delete;
        Keep& operator=(const Keep&) = delete;

    private:
        DeskView& m_view;
        QString m_current;
        QString m_top;
        int m_topY = 0;
    };

    /// Opens the folders above the element and makes it current.
    void showElement(const QString& key);

signals:
    /// A click, a touch or Enter on an element that is no folder.
    void chosen(const QString& key);
    /// Letters typed here belong to the search.
    void typed(const QString& text);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void open(const QModelIndex& row);
    void openKnown(const QModelIndex& parent);

    DeskModel* m_model = nullptr;
    QSet<QString> m_open; ///< keys of the open folders
    bool m_keeps = false;
    Swipe m_press;
    QElapsedTimer m_sinceClick;
    QPersistentModelIndex m_clicked; ///< when m_sinceClick began
};

} // namespace orvo::desk

#endif
