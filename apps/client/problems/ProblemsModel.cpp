#include "apps/client/problems/ProblemsModel.h"

#include "apps/client/Look.h"
#include "frame/Text.h"

#include <QApplication>
#include <QIcon>
#include <QStyle>

#include <algorithm>
#include <cassert>
#include <iterator>
#include <tuple>
#include <unordered_set>

namespace orvo::app {

namespace {

size_t placeOf(const store::TableDef* table) {
    const auto& all = checks::checkedTables();
    return static_cast<size_t>(std::find(all.begin(), all.end(), table) - all.begin());
}

bool isBefore(const ProblemRow& a, const ProblemRow& b) {
    return std::make_tuple(placeOf(a.finding.table), std::cref(a.finding.key), a.finding.problem,
                           std::cref(a.finding.value)) <
           std::make_tuple(placeOf(b.finding.table), std::cref(b.finding.key), b.finding.problem,
                           std::cref(b.finding.value));
}

const char* severityWord(bool isError) {
    return isError ? QT_TRANSLATE_NOOP("orvo", "Ошибка") : QT_TRANSLATE_NOOP("orvo", "Замечание");
}

const QString& textOf(const ProblemRow& row, int column) {
    switch (column) {
    case ProblemsModel::What:
        return row.what;
    case ProblemsModel::Where:
        return row.path;
    case ProblemsModel::Problem:
        return row.words;
    default:
        return row.cure;
    }
}

/// What rows are compared by in a column: errors first, whichever it is.
QString keyOf(const ProblemRow& row, int column) {
    if (column < 0)
        return {};
    return column == ProblemsModel::Where
               ? row.sortKey
               : row.sortKey.left(1) + textOf(row, column).toCaseFolded();
}

} // namespace

/// The order of the rows, with keys that are made once for a row.
class ProblemsModel::Before {
public:
    struct Row {
        QString key;
        Shown shown;
    };
    explicit Before(const ProblemsModel& model)
        : m_column(model.m_column)
        , m_down(model.m_order == Qt::DescendingOrder) {}

    Row rowOf(const ProblemRow& row) const { return {keyOf(row, m_column), {&row}}; }
    bool operator()(const Row& a, const Row& b) const {
        return less(a.key, *a.shown.row, b.key, *b.shown.row);
    }
    bool operator()(const Shown& a, const Row& b) const {
        return less(keyOf(*a.row, m_column), *a.row, b.key, *b.shown.row);
    }
    bool operator()(const Row& a, const Shown& b) const {
        return less(a.key, *a.shown.row, keyOf(*b.row, m_column), *b.row);
    }

private:
    bool less(const QString& a, const ProblemRow& one, const QString& b,
              const ProblemRow& other) const {
        if (const int order = a.compare(b); order != 0)
            return m_down ? order > 0 : order < 0;
        if (m_column >= 0 && m_column != Where)
            if (const int order = one.sortKey.compare(other.sortKey); order != 0)
                return order < 0;
        return isBefore(one, other);
    }

    const int m_column;
    const bool m_down;
};

ProblemsModel::Id ProblemsModel::idOf(const store::TableDef* table, const std::string& key) {
    return {app::placeOf(table), key};
}

void ProblemsModel::setAll(std::vector<RecordProblems> records) {
    beginResetModel();
    m_shown.clear();
    m_records.clear();
    for (RecordProblems& record : records) {
        std::vector<ProblemRow>& rows =
            m_records.emplace_hint(m_records.end(), idOf(record.table, record.key), 0)->second;
        std::move(record.rows.begin(), record.rows.end(), std::back_inserter(rows));
        std::sort(rows.begin(), rows.end(), isBefore);
    }
    resetRows();
    endResetModel();
    check();
}

/// All rows from the records, in their order. Inside of a reset.
void ProblemsModel::resetRows() {
    const Before before(*this);
    std::unordered_set<const ProblemRow*> marked;
    for (const Shown& one : m_shown)
        if (one.isMarked)
            marked.insert(one.row);
    m_shown.clear();
    std::vector<Before::Row> rows;
    for (const auto& [id, all] : m_records)
        for (const ProblemRow& row : all)
            if (isShown(row))
                rows.push_back(before.rowOf(row));
    std::sort(rows.begin(), rows.end(), before);
    m_shown.reserve(rows.size());
    for (const Before::Row& row : rows)
        m_shown.push_back({row.shown.row, marked.count(row.shown.row) > 0});
}

void ProblemsModel::showOnlyErrors(bool only) {
    if (only == m_onlyErrors)
        return;
    beginResetModel();
    m_onlyErrors = only;
    resetRows();
    endResetModel();
    check();
}

void ProblemsModel::showOnlyThoseWith(const QString& words) {
    const QStringList wanted =
        alike(words).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (wanted == m_words)
        return;
    beginResetModel();
    m_words = wanted;
    resetRows();
    endResetModel();
    check();
}

bool ProblemsModel::isShown(const ProblemRow& row) const {
    if (m_onlyErrors && !row.isError)
        return false;
    if (m_words.isEmpty())
        return true;
    const QString texts =
        alike(QStringList{row.what, row.path, row.words, row.cure}.join(QLatin1Char('\n')));
    return std::all_of(m_words.begin(), m_words.end(),
                       [&texts](const QString& word) { return texts.contains(word); });
}

void ProblemsModel::sort(int column, Qt::SortOrder order) {
    if (column == m_column && order == m_order)
        return;
    beginResetModel();
    m_column = column;
    m_order = order;
    resetRows();
    endResetModel();
    check();
}

void ProblemsModel::update(std::vector<RecordProblems> records) {
    // As many signals would cost the view more than a new look at everything.
    constexpr size_t mostSingly = 20;
    if (records.size() > mostSingly)
        return replaceMany(records);
    for (RecordProblems& record : records)
        replace(record);
    check();
}

/// Takes the rows of these records out and merges the new ones in, with one reset.
void ProblemsModel::replaceMany(std::vector<RecordProblems>& records) {
    beginResetModel();
    const Before before(*this);
    std::unordered_set<const ProblemRow*> gone, marked;
    for (RecordProblems& record : records) { // from here on it holds what was
        std::sort(record.rows.begin(), record.rows.end(), isBefore);
        m_records[idOf(record.table, record.key)].swap(record.rows);
        for (const ProblemRow& row : record.rows)
            gone.insert(&row);
    }
    std::vector<Shown> kept;
    kept.reserve(m_shown.size());
    for (const Shown& one : m_shown) {
        if (gone.count(one.row) == 0)
            kept.push_back(one);
        else if (one.isMarked)
            marked.insert(one.row);
    }
    std::vector<Before::Row> added;
    for (const RecordProblems& record : records) {
        const auto known = m_records.find(idOf(record.table, record.key));
        for (const ProblemRow& row : known->second) {
            if (!isShown(row))
                continue;
            added.push_back(before.rowOf(row));
            for (const ProblemRow& old : record.rows)
                if (old.finding == row.finding && marked.count(&old) > 0)
                    added.back().shown.isMarked = true;
        }
        if (known->second.empty())
            m_records.erase(known);
    }
    std::sort(added.begin(), added.end(), before);
    m_shown.clear();
    auto old = kept.begin();
    for (const Before::Row& row : added) {
        const auto until = std::lower_bound(old, kept.end(), row, before);
        m_shown.insert(m_shown.end(), old, until);
        m_shown.push_back(row.shown);
        old = until;
    }
    m_shown.insert(m_shown.end(), old, kept.end());
    endResetModel();
    check();
}

/// Where the row is, or is to be.
std::vector<ProblemsModel::Shown>::iterator ProblemsModel::placeOf(const ProblemRow& row) {
    const Before before(*this);
    return std::lower_bound(m_shown.begin(), m_shown.end(), before.rowOf(row), before);
}

void ProblemsModel::replace(RecordProblems& record) {
    std::sort(record.rows.begin(), record.rows.end(), isBefore);
    std::vector<ProblemRow>& rows = m_records[idOf(record.table, record.key)];
    // What is still wrong keeps its selection, wherever its row goes.
    for (const ProblemRow& row : rows) {
        if (!isShown(row))
            continue;
        const auto place = placeOf(row);
        const auto number = static_cast<int>(place - m_shown.begin());
        const auto same =
            std::find_if(record.rows.begin(), record.rows.end(), [&](const ProblemRow& one) {
                return one.finding == row.finding && isShown(one);
            });
        if (same != record.rows.end()) {
            move(number, *same);
            continue;
        }
        beginRemoveRows({}, number, number);
        m_shown.erase(place);
        endRemoveRows();
    }
    rows.swap(record.rows); // the rows themselves stay where they are
    for (const ProblemRow& row : rows) {
        if (!isShown(row))
            continue;
        const auto place = placeOf(row);
        if (place != m_shown.end() && place->row == &row)
            continue;
        const auto number = static_cast<int>(place - m_shown.begin());
        beginInsertRows({}, number, number);
        m_shown.insert(place, {&row});
        endInsertRows();
    }
    if (rows.empty())
        m_records.erase(idOf(record.table, record.key));
}

/// The row is that one now, in its place.
void ProblemsModel::move(int number, const ProblemRow& now) {
    const auto from = m_shown.begin() + number;
    const auto to = static_cast<int>(placeOf(now) - m_shown.begin());
    int place = number;
    if (to != number && to != number + 1) {
        beginMoveRows({}, number, number, {}, to);
        if (to < number)
            std::rotate(m_shown.begin() + to, from, from + 1);
        else
            std::rotate(from, from + 1, m_shown.begin() + to);
        place = to < number ? to : to - 1;
        m_shown[static_cast<size_t>(place)].row = &now;
        endMoveRows();
    }
    m_shown[static_cast<size_t>(place)].row = &now;
    emit dataChanged(index(place, 0), index(place, ColumnCount - 1));
}

int ProblemsModel::rowOf(const checks::Finding& finding) const {
    const auto known = m_records.find(idOf(finding.table, finding.key));
    if (known == m_records.end())
        return -1;
    const Before before(*this);
    for (const ProblemRow& row : known->second) {
        if (!(row.finding == finding) || !isShown(row))
            continue;
        const auto place =
            std::lower_bound(m_shown.begin(), m_shown.end(), before.rowOf(row), before);
        return static_cast<int>(place - m_shown.begin());
    }
    return -1;
}

void ProblemsModel::mark(int first, int last) {
    for (int number = first; number <= last; ++number)
        m_shown[static_cast<size_t>(number)].isMarked = true;
}

void ProblemsModel::unmarkAll() {
    for (Shown& one : m_shown)
        one.isMarked = false;
}

void ProblemsModel::check() const {
#ifndef NDEBUG
    const Before before(*this);
    for (size_t i = 1; i < m_shown.size(); ++i)
        assert(before(before.rowOf(*m_shown[i - 1].row), before.rowOf(*m_shown[i].row)));
    size_t count = 0;
    for (const auto& [id, rows] : m_records)
        count += static_cast<size_t>(std::count_if(
            rows.begin(), rows.end(), [this](const ProblemRow& row) { return isShown(row); }));
    assert(count == m_shown.size());
#endif
}

int ProblemsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

int ProblemsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ProblemsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ProblemRow& row = this->row(index.row());
    const QString severity = Text::tr(severityWord(row.isError));
    switch (role) {
    case Qt::DisplayRole:
        return index.column() == Cure ? row.cure : oneLine(textOf(row, index.column()));
    case Qt::DecorationRole:
        if (index.column() != What)
            return {};
        return QApplication::style()->standardIcon(row.isError ? QStyle::SP_MessageBoxCritical
                                                               : QStyle::SP_MessageBoxWarning);
    case Qt::ToolTipRole:
        return plainToolTip(QStringLiteral("%1: %2\n%3\n%4 %5")
                                .arg(severity, row.what, row.words,
                                     QLatin1String(row.finding.table->name),
                                     QString::fromStdString(row.finding.key)));
    case Qt::AccessibleTextRole:
        return index.column() == What ? QStringLiteral("%1: %2").arg(severity, oneLine(row.what))
                                      : data(index, Qt::DisplayRole);
    default:
        return {};
    }
}

QVariant ProblemsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case What:
        return Text::tr("Запись", "столбец");
    case Where:
        return Text::tr("Где");
    case Problem:
        return Text::tr("Что не так");
    case Cure:
        return Text::tr("Исправление");
    default:
        return {};
    }
}

} // namespace orvo::app
