#include "apps/client/problems/ProblemsModel.h"

#include "apps/client/Look.h"

#include <QApplication>
#include <QIcon>
#include <QStyle>

#include <algorithm>
#include <cassert>
#include <iterator>
#include <tuple>

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
    return isError ? "Ошибка" : "Замечание";
}

} // namespace

void ProblemsModel::setAll(std::vector<RecordProblems> records) {
    beginResetModel();
    m_rows.clear();
    for (RecordProblems& record : records)
        std::move(record.rows.begin(), record.rows.end(), std::back_inserter(m_rows));
    std::sort(m_rows.begin(), m_rows.end(), isBefore);
    endResetModel();
    check();
}

void ProblemsModel::update(std::vector<RecordProblems> records) {
    // As many signals would cost the views more than a new look at everything.
    constexpr size_t mostSingly = 500;
    if (records.size() <= mostSingly) {
        for (RecordProblems& record : records)
            replace(record);
        return check();
    }
    std::sort(records.begin(), records.end(), [](const auto& a, const auto& b) {
        return std::tie(a.table, a.key) < std::tie(b.table, b.key);
    });
    beginResetModel();
    const auto isReplaced = [&](const ProblemRow& row) {
        const auto found = std::lower_bound(
            records.begin(), records.end(), row.finding, [](const auto& record, const auto& one) {
                return std::tie(record.table, record.key) < std::tie(one.table, one.key);
            });
        return found != records.end() && found->table == row.finding.table &&
               found->key == row.finding.key;
    };
    m_rows.erase(std::remove_if(m_rows.begin(), m_rows.end(), isReplaced), m_rows.end());
    for (RecordProblems& record : records)
        std::move(record.rows.begin(), record.rows.end(), std::back_inserter(m_rows));
    std::sort(m_rows.begin(), m_rows.end(), isBefore);
    endResetModel();
    check();
}

void ProblemsModel::replace(RecordProblems& record) {
    std::sort(record.rows.begin(), record.rows.end(), isBefore);
    const auto isOf = [&](const ProblemRow& row) {
        return row.finding.table == record.table && row.finding.key == record.key;
    };
    const size_t place = placeOf(record.table);
    auto first = std::lower_bound(
        m_rows.begin(), m_rows.end(), record, [place](const ProblemRow& row, const auto& wanted) {
            return std::make_tuple(placeOf(row.finding.table), std::cref(row.finding.key)) <
                   std::make_tuple(place, std::cref(wanted.key));
        });
    const auto last = std::find_if_not(first, m_rows.end(), isOf);
    const auto begin = static_cast<int>(first - m_rows.begin());
    const auto had = static_cast<int>(last - first);
    const auto has = static_cast<int>(record.rows.size());
    const int common = std::min(had, has);
    // What stays in its place keeps its selection.
    for (int i = 0; i < common; ++i)
        m_rows[static_cast<size_t>(begin + i)] = record.rows[static_cast<size_t>(i)];
    if (common > 0)
        emit dataChanged(index(begin, 0), index(begin + common - 1, ColumnCount - 1));
    if (had > has) {
        beginRemoveRows({}, begin + has, begin + had - 1);
        m_rows.erase(m_rows.begin() + begin + has, m_rows.begin() + begin + had);
        endRemoveRows();
    } else if (has > had) {
        beginInsertRows({}, begin + had, begin + has - 1);
        m_rows.insert(m_rows.begin() + begin + had, record.rows.begin() + had, record.rows.end());
        endInsertRows();
    }
}

void ProblemsModel::check() const {
    assert(std::is_sorted(m_rows.begin(), m_rows.end(), isBefore));
}

int ProblemsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ProblemsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ProblemsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ProblemRow& row = this->row(index.row());
    const QString severity = QString::fromUtf8(severityWord(row.isError));
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case What:
            return oneLine(row.what);
        case Where:
            return oneLine(row.path);
        case Problem:
            return oneLine(row.words);
        default:
            return row.cure;
        }
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
    case SortRole:
        return index.column() == Where
                   ? row.sortKey
                   : row.sortKey.left(1) + data(index, Qt::DisplayRole).toString().toCaseFolded() +
                         row.sortKey;
    case IsErrorRole:
        return row.isError;
    default:
        return {};
    }
}

QVariant ProblemsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case What:
        return QStringLiteral("Запись");
    case Where:
        return QStringLiteral("Где");
    case Problem:
        return QStringLiteral("Что не так");
    case Cure:
        return QStringLiteral("Исправление");
    default:
        return {};
    }
}

} // namespace orvo::app
