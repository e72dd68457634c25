#include "apps/client/history/HistoryModel.h"

#include "apps/client/Look.h"
#include "frame/Text.h"

#include <QBrush>
#include <QColor>
#include <QDateTime>
#include <QFont>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace orvo::app {

namespace {

constexpr int longestActionLine = 500;

QDateTime momentOf(double time) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(time * 1000.0));
}

QString shortTime(double time) {
    const QDateTime moment = momentOf(time);
    return moment.toString(moment.date() == QDate::currentDate() ? QStringLiteral("HH:mm:ss")
                                                                 : Text::tr("dd.MM.yyyy HH:mm:ss"));
}

} // namespace

struct HistoryModel::Node {
    Node* parent = nullptr;
    int64_t number = 0; ///< of a row at the top; else its row
    // At the top:
    int64_t group = 0;
    int64_t newest = 0;                    ///< its last change
    std::unique_ptr<HistoryAction> action; ///< null: too far away
    // Below it:
    std::unique_ptr<HistoryAction::Detail> detail; ///< without its fields
    std::vector<std::unique_ptr<Node>> children;
    bool detailed = false; ///< its children are there
    bool asked = false;    ///< for them
    bool waits = false;    ///< for its texts
};

HistoryModel::HistoryModel(QObject* parent) : QAbstractItemModel(parent) {
    m_askSoon.setSingleShot(true);
    m_askSoon.setInterval(0);
    connect(&m_askSoon, &QTimer::timeout, this,
            [this] { emit textsWanted(std::exchange(m_textless, {})); });
}

HistoryModel::~HistoryModel() = default;

// Filling ----------------------------------------------------------------------------------------

void HistoryModel::clear() {
    beginResetModel();
    m_rows.clear();
    m_byGroup.clear();
    m_textless.clear();
    m_first = m_lookedAt = 0;
    m_full = 0;
    m_atEnd = false;
    m_asked = false;
    endResetModel();
}

void HistoryModel::append(const std::vector<HistoryAction>& actions, bool atEnd) {
    m_asked = false;
    m_atEnd = atEnd;
    std::vector<const HistoryAction*> fresh;
    for (const HistoryAction& action : actions)
        if (m_byGroup.count(action.group) == 0)
            fresh.push_back(&action);
    if (fresh.empty())
        return;
    const int first = count();
    beginInsertRows({}, first, first + static_cast<int>(fresh.size()) - 1);
    for (const HistoryAction* action : fresh) {
        auto node = std::make_unique<Node>();
        node->number = m_first + count();
        setAction(node.get(), *action);
        m_byGroup[action->group] = node.get();
        m_rows.push_back(std::move(node));
    }
    endInsertRows();
    Q_ASSERT(m_byGroup.size() == m_rows.size());
    dropFarTexts();
}

void HistoryModel::setAction(Node* node, const HistoryAction& action) {
    m_full += node->action ? 0 : 1;
    node->group = action.group;
    node->newest = action.newest;
    node->action = std::make_unique<HistoryAction>(action);
    node->waits = false;
}

void HistoryModel::prepend(const std::vector<HistoryAction>& actions) {
    std::vector<const HistoryAction*> fresh;
    for (const HistoryAction& action : actions) {
        const auto known = m_byGroup.find(action.group);
        if (known == m_byGroup.end()) {
            fresh.push_back(&action);
            continue;
        }
        Node* node = known->second;
        if (node->newest != action.newest) { // it has grown
            if (!node->children.empty()) {
                beginRemoveRows(indexOf(node), 0, static_cast<int>(node->children.size()) - 1);
                node->children.clear();
                endRemoveRows();
            }
            node->detailed = node->asked = false;
        }
        setAction(node, action);
        showAgain(node);
    }
    if (fresh.empty())
        return;
    beginInsertRows({}, 0, static_cast<int>(fresh.size()) - 1);
    for (auto action = fresh.rbegin(); action != fresh.rend(); ++action) {
        auto node = std::make_unique<Node>();
        node->number = --m_first;
        setAction(node.get(), **action);
        m_byGroup[node->group] = node.get();
        m_rows.push_front(std::move(node));
    }
    endInsertRows();
    Q_ASSERT(m_byGroup.size() == m_rows.size() && m_rows.front()->number == m_first);
    removeTail();
    dropFarTexts();
}

// Memory -----------------------------------------------------------------------------------------

void HistoryModel::dropFarTexts() {
    if (m_full <= m_limits.full + m_limits.full / 4)
        return;
    for (const auto& node : m_rows) {
        if (!node->action || std::abs(node->number - m_lookedAt) <= m_limits.full / 2 ||
            !node->children.empty() || node->asked) // unfolded, or about to be
            continue;
        node->action.reset();
        node->detailed = false;
        --m_full;
    }
    Q_ASSERT(m_full == std::count_if(m_rows.begin(), m_rows.end(),
                                     [](const auto& node) { return node->action != nullptr; }));
}

/// Never those that the view looks at, nor many above them.
void HistoryModel::removeTail() {
    const int64_t looked = m_lookedAt - m_first;
    const int keep = std::max(m_limits.rows * 3 / 4, static_cast<int>(looked) + m_limits.full);
    if (count() <= m_limits.rows || keep >= count())
        return;
    beginRemoveRows({}, keep, count() - 1);
    while (count() > keep) {
        m_full -= m_rows.back()->action ? 1 : 0;
        m_byGroup.erase(m_rows.back()->group);
        m_rows.pop_back();
    }
    m_atEnd = m_asked = false;
    endRemoveRows();
    emit tailRemoved();
}

void HistoryModel::askForTexts(Node* node) const {
    if (node->waits)
        return;
    node->waits = true;
    m_textless.push_back(node->group);
    m_askSoon.start();
}

void HistoryModel::fill(const std::vector<HistoryAction>& actions) {
    for (const HistoryAction& action : actions)
        if (const auto known = m_byGroup.find(action.group); known != m_byGroup.end()) {
            setAction(known->second, action);
            showAgain(known->second);
        }
    dropFarTexts();
}

void HistoryModel::askAgain() {
    for (const auto& node : m_rows)
        node->waits = false;
}

std::set<int64_t> HistoryModel::groups() const {
    std::set<int64_t> all;
    for (const auto& node : m_rows)
        all.insert(all.end(), node->group);
    return all;
}

int64_t HistoryModel::lastShown() const {
    return m_rows.empty() ? 0 : m_rows.back()->newest;
}

// Below a row ------------------------------------------------------------------------------------

void HistoryModel::add(Node* parent, const std::vector<HistoryAction::Detail>& details) {
    for (const HistoryAction::Detail& detail : details) {
        auto node = std::make_unique<Node>();
        node->parent = parent;
        node->number = static_cast<int64_t>(parent->children.size());
        node->detail = std::make_unique<HistoryAction::Detail>(
            HistoryAction::Detail{detail.what, detail.before, detail.after, detail.record, {}});
        node->detailed = true;
        add(node.get(), detail.fields);
        parent->children.push_back(std::move(node));
    }
}

void HistoryModel::setDetails(int64_t group, const std::vector<HistoryAction::Detail>& details) {
    const auto found = m_byGroup.find(group);
    if (found == m_byGroup.end() || found->second->detailed)
        return;
    Node* node = found->second;
    node->detailed = true;
    node->asked = false;
    if (details.empty())
        return;
    beginInsertRows(indexOf(node), 0, static_cast<int>(details.size()) - 1);
    add(node, details);
    endInsertRows();
}

// What is told of all rows: those without texts learn it with them.

void HistoryModel::setUndone(const std::set<int64_t>& groups) {
    for (const auto& node : m_rows) {
        const bool undone = groups.count(node->group) != 0;
        if (!node->action || node->action->undone == undone)
            continue;
        node->action->undone = undone;
        showAgain(node.get());
    }
}

void HistoryModel::setOldest(int64_t change) {
    for (const auto& node : m_rows)
        if (node->action && !node->action->forgotten && node->newest < change) {
            node->action->forgotten = true;
            showAgain(node.get());
        }
}

void HistoryModel::setNames(const history::PersonNames& names) {
    for (const auto& node : m_rows) {
        const auto name = node->action ? names.find(node->action->login) : names.end();
        if (name == names.end() || name->second == node->action->who)
            continue;
        node->action->who = name->second;
        showAgain(node.get());
    }
}

void HistoryModel::showAgain(Node* node) {
    emit dataChanged(indexOf(node), indexOf(node, ColumnCount - 1));
}

int64_t HistoryModel::oldestGroup() const {
    int64_t oldest = 0;
    for (const auto& node : m_rows)
        oldest = oldest == 0 ? node->group : std::min(oldest, node->group);
    return oldest;
}

// Rows -------------------------------------------------------------------------------------------

HistoryModel::Node* HistoryModel::nodeOf(const QModelIndex& index) const {
    return index.isValid() ? static_cast<Node*>(index.internalPointer()) : nullptr;
}

QModelIndex HistoryModel::indexOf(const Node* node, int column) const {
    const int64_t row = node->parent ? node->number : node->number - m_first;
    return createIndex(static_cast<int>(row), column, const_cast<Node*>(node));
}

const HistoryAction* HistoryModel::actionAt(const QModelIndex& index) const {
    const Node* node = nodeOf(index);
    while (node && node->parent)
        node = node->parent;
    return node ? node->action.get() : nullptr;
}

HistoryRecord HistoryModel::recordAt(const QModelIndex& index) const {
    for (const Node* node = nodeOf(index); node; node = node->parent) {
        const HistoryRecord* record = node->parent   ? &node->detail->record
                                      : node->action ? &node->action->record
                                                     : nullptr;
        if (record && !record->key.empty())
            return *record;
    }
    return {};
}

QModelIndex HistoryModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent))
        return {};
    const Node* node = nodeOf(parent);
    return createIndex(row, column,
                       node ? node->children[static_cast<size_t>(row)].get()
                            : m_rows[static_cast<size_t>(row)].get());
}

QModelIndex HistoryModel::parent(const QModelIndex& child) const {
    const Node* node = nodeOf(child);
    return node && node->parent ? indexOf(node->parent) : QModelIndex();
}

int HistoryModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0)
        return 0;
    const Node* node = nodeOf(parent);
    return node ? static_cast<int>(node->children.size()) : count();
}

int HistoryModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

bool HistoryModel::hasChildren(const QModelIndex& parent) const {
    if (parent.column() > 0)
        return false;
    const Node* node = nodeOf(parent);
    return node ? !node->detailed || !node->children.empty() : !m_rows.empty();
}

bool HistoryModel::canFetchMore(const QModelIndex& parent) const {
    if (parent.column() > 0)
        return false;
    const Node* node = nodeOf(parent);
    return node ? !node->detailed && !node->asked : m_rows.empty() && !m_atEnd && !m_asked;
}

void HistoryModel::fetchMore(const QModelIndex& parent) {
    if (!canFetchMore(parent))
        return;
    if (Node* node = nodeOf(parent)) {
        node->asked = true;
        emit detailsWanted(node->group);
    } else {
        wantMore();
    }
}

void HistoryModel::wantMore() {
    if (m_atEnd || m_asked)
        return;
    m_asked = true;
    emit moreWanted();
}

// Texts ------------------------------------------------------------------------------------------

QString HistoryModel::textOf(const Node& node, int column) const {
    if (node.parent)
        return column == What     ? node.detail->what
               : column == Before ? node.detail->before
               : column == After  ? node.detail->after
                                  : QString();
    if (!node.action)
        return column == What ? QStringLiteral("…") : QString();
    const HistoryAction& action = *node.action;
    switch (column) {
    case When:
        return shortTime(action.time);
    case Who:
        return action.who;
    case What:
        return action.what;
    case Before:
        return action.before;
    case After:
        return action.after;
    default:
        return action.place;
    }
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const {
    Node* node = nodeOf(index);
    if (!node)
        return {};
    if (role == Qt::DisplayRole && !node->parent) {
        m_lookedAt = node->number;
        if (!node->action)
            askForTexts(node);
    }
    const QString text = textOf(*node, index.column());
    if (role == Qt::DisplayRole)
        return oneLine(text, longestActionLine);
    if (role == Qt::ToolTipRole) {
        if (!node->action || text.isEmpty())
            return plainToolTip(clipped(text));
        const HistoryAction& action = *node->action;
        QStringList more;
        if (index.column() == When)
            more << momentOf(action.time).toString(Text::tr("dd.MM.yyyy HH:mm:ss"));
        if (index.column() == Who)
            more << QString::fromStdString(action.login) << action.machine;
        if (action.undone)
            more << Text::tr("Отменено");
        if (action.forgotten)
            more << Text::tr("Журнал изменений этого уже не помнит");
        more.removeAll(QString());
        return plainToolTip(clipped(text), more.join(QStringLiteral(", ")));
    }
    const bool faint = node->action && (node->action->undone || node->action->forgotten);
    if (role == Qt::ForegroundRole && faint)
        return QBrush(QColor(0x8a, 0x8a, 0x8a));
    if (role == Qt::FontRole && faint && node->action->undone) {
        QFont font;
        font.setStrikeOut(true);
        return font;
    }
    return {};
}

QVariant HistoryModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const char* const titles[] = {
        QT_TRANSLATE_NOOP("orvo", "Когда"),       QT_TRANSLATE_NOOP("orvo", "Кто"),
        QT_TRANSLATE_NOOP("orvo", "Что сделано"), QT_TRANSLATE_NOOP("orvo", "Было"),
        QT_TRANSLATE_NOOP("orvo", "Стало"),       QT_TRANSLATE_NOOP("orvo", "Где")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= ColumnCount)
        return {};
    return Text::tr(titles[section]);
}

} // namespace orvo::app
