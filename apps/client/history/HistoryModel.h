// HistoryModel.h: actions of the history, newest first, with their changes and fields below them.
//
// The model asks for what it lacks and is given it later; it never waits.
//
// Invariants, asserted in debug builds:
// 1. Each group has one row.
// 2. The number of the row in rows() is that of its node less that of the first.
#ifndef ORVO_APPS_CLIENT_HISTORY_HISTORYMODEL_H
#define ORVO_APPS_CLIENT_HISTORY_HISTORYMODEL_H

#include "apps/client/history/HistoryAction.h"
#include "history/Inverse.h"

#include <QAbstractItemModel>

#include <deque>
#include <memory>
#include <set>
#include <vector>

namespace orvo::app {

class HistoryModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { When, Who, What, Before, After, Where, ColumnCount };

    explicit HistoryModel(QObject* parent = nullptr);
    ~HistoryModel() override;

    // Filling
    /// No rows; more are wanted.
    void clear();
    /// Older actions; `atEnd`: these are the last.
    void append(const std::vector<HistoryAction>& actions, bool atEnd);
    /// Newer ones, newest first; those that are there already are shown anew.
    void prepend(const std::vector<HistoryAction>& actions);
    void setDetails(int64_t group, const std::vector<HistoryAction::Detail>& details);
    /// Which of the actions shown have been taken back.
    void setUndone(const std::set<int64_t>& groups);
    /// The log begins with that change now.
    void setOldest(int64_t change);
    /// How users are called, for all rows.
    void setNames(const history::PersonNames& names);

    /// Asks for older actions, unless there are none or they are on their way. A view that is not
    /// laid out yet asks for all there is: so it is only given the first by fetchMore.
    void wantMore();

    int count() const { return static_cast<int>(m_rows.size()); }
    bool isAtEnd() const { return m_atEnd; }
    /// The smallest id of a group shown; 0: none.
    int64_t oldestGroup() const;
    /// The action of a row or of what is below it; null for none.
    const HistoryAction* actionAt(const QModelIndex& index) const;
    /// The record that a row is about.
    HistoryRecord recordAt(const QModelIndex& index) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

signals:
    void moreWanted();
    void detailsWanted(qint64 group);

private:
    struct Node;
    QModelIndex indexOf(const Node* node, int column = 0) const;
    Node* nodeOf(const QModelIndex& index) const;
    void showAgain(Node* node);
    void add(Node* parent, const std::vector<HistoryAction::Detail>& details);
    QString textOf(const Node& node, int column) const;

    std::deque<std::unique_ptr<Node>> m_rows;
    int64_t m_first = 0; ///< number of the first row
    std::unordered_map<int64_t, Node*> m_byGroup;
    bool m_atEnd = false;
    bool m_asked = false; ///< for more
};

} // namespace orvo::app

#endif
