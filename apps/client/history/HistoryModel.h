// HistoryModel.h: actions of the history, newest first, with their changes and fields below them.
//
// The model asks for what it lacks and is given it later; it never waits.
//
// It may be open for weeks, so its memory is bounded: far from where the view looks a row keeps its
// place, but neither its texts nor, unless it is unfolded, what is below it, and asks for them when
// it is looked at again; of the rows that come while it is open the oldest are removed in the end.
//
// Invariants, asserted in debug builds:
// 1. Each group has one row.
// 2. The number of the row in rows() is that of its node less that of the first.
// 3. m_full is the number of rows with their texts.
#ifndef ORVO_APPS_CLIENT_HISTORY_HISTORYMODEL_H
#define ORVO_APPS_CLIENT_HISTORY_HISTORYMODEL_H

#include "apps/client/history/HistoryAction.h"
#include "history/Inverse.h"

#include <QAbstractItemModel>
#include <QTimer>

#include <deque>
#include <memory>
#include <set>
#include <unordered_map>
#include <vector>

namespace orvo::app {

class HistoryModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { When, Who, What, Before, After, Where, ColumnCount };

    explicit HistoryModel(QObject* parent = nullptr);
    ~HistoryModel() override;

    struct Limits {
        int full = 2000;  ///< rows that have their texts, give or take a quarter
        int rows = 20000; ///< beyond them the oldest are removed when newer ones are made
    };
    void setLimits(const Limits& limits) { m_limits = limits; }

    // Filling
    /// No rows; more are wanted.
    void clear();
    /// Older actions; `atEnd`: these are the last.
    void append(const std::vector<HistoryAction>& actions, bool atEnd);
    /// Newer ones, newest first; those that are there already are shown anew.
    void prepend(const std::vector<HistoryAction>& actions);
    /// Texts of rows that asked for them.
    void fill(const std::vector<HistoryAction>& actions);
    /// They could not be read: whoever looks asks again.
    void askAgain();
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
    /// How many of the rows have their texts.
    int fullCount() const { return m_full; }
    bool isAtEnd() const { return m_atEnd; }
    /// Whether older actions are on their way.
    bool isAsking() const { return m_asked; }
    /// The groups shown, and the last change of the last of them (0: none).
    std::set<int64_t> groups() const;
    int64_t lastShown() const;
    /// The smallest id of a group shown; 0: none.
    int64_t oldestGroup() const;
    /// The action of a row or of what is below it; null for none, or if the row waits for it.
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
    /// The texts of these rows are.
    void textsWanted(const std::vector<int64_t>& groups);
    /// The oldest rows were removed: what is wanted next is older than those that are left.
    void tailRemoved();

private:
    struct Node;
    QModelIndex indexOf(const Node* node, int column = 0) const;
    Node* nodeOf(const QModelIndex& index) const;
    void showAgain(Node* node);
    void setAction(Node* node, const HistoryAction& action);
    void askForTexts(Node* node) const;
    void dropFarTexts();
    void removeTail();
    void add(Node* parent, const std::vector<HistoryAction::Detail>& details);
    QString textOf(const Node& node, int column) const;

    std::deque<std::unique_ptr<Node>> m_rows;
    int64_t m_first = 0; ///< number of the first row
    std::unordered_map<int64_t, Node*> m_byGroup;
    Limits m_limits;
    int m_full = 0;
    bool m_atEnd = false;
    bool m_asked = false; ///< for more
    // What the view looks at tells by asking for it.
    mutable int64_t m_lookedAt = 0;          ///< number of the row that was looked at last
    mutable std::vector<int64_t> m_textless; ///< looked at, but without texts
    mutable QTimer m_askSoon;
};

} // namespace orvo::app

#endif
