// TreeView.h: a tree view in which a change of rows costs what it changes, not what is open.
#ifndef ORVO_FRAME_TREEVIEW_H
#define ORVO_FRAME_TREEVIEW_H

#include <QTreeView>

#include <memory>

namespace orvo {

/// A QTreeView that looks and acts like one. With a million rows open QTreeView lays all of them
/// out again after each row that is inserted or removed: it asks the model for every one of them.
/// This one notes below which rows something has changed, and when the rows are laid out asks for
/// the rows below those alone; the others keep their places in the view's list, or move within it.
///
/// The list is a member of Qt's private class. Built without Qt's private headers, or run with
/// another Qt than it was built with, the view is a plain QTreeView; so it is with hidden or
/// spanning rows, with animations, and where an indentation is not set.
///
/// Invariants; 1 is asserted in debug builds:
///  1. While changes are noted the list is kept aside and the view has an empty one, as QTreeView
///     after a removal; nobody meets an index of a row that is gone. A layout is then pending.
///  2. What is noted leads from the list kept aside to what the model has now: every parent whose
///     rows, or whose being open, changed since.
///  3. Whatever else changes (the order of rows, columns, the model) drops the list kept aside, and
///     the next layout is QTreeView's.
///
/// For models whose indexes of one row have the same internal id in all columns.
class TreeView : public QTreeView {
    Q_OBJECT
public:
    explicit TreeView(QWidget* parent = nullptr);
    ~TreeView() override;

    void setModel(QAbstractItemModel* model) override;
    void doItemsLayout() override;
    void reset() override;
    QRect visualRect(const QModelIndex& index) const override;

    /// Whether changes are laid out as said above; for tests and benchmarks.
    static bool isIncremental();

protected slots:
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QVector<int>& roles = QVector<int>()) override;
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
    /// Instead of QTreeView's, which connects it by its name.
    void rowsRemoved(const QModelIndex& parent, int first, int last);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace orvo

#endif
