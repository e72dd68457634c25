// ProblemsModel.h: what is wrong with the installation, a row each.
//
// It sorts and filters by itself: a proxy asks for the texts of ten thousand rows so often that the
// window stands still.
//
// Invariants, asserted in debug builds:
// 1. The rows are in the order of sort().
// 2. Each problem that showOnlyErrors() and showOnlyThoseWith() let pass has one row.
#ifndef ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSMODEL_H
#define ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSMODEL_H

#include "checks/Finding.h"

#include <QAbstractTableModel>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvo::app {

struct ProblemRow {
    checks::Finding finding;
    bool isError = false;
    QString what;    ///< "элемент меню «Насос»"
    QString path;    ///< where it stands
    QString words;   ///< what is wrong
    QString cure;    ///< what «Исправить» does; empty: that is for people to decide
    QString desktop; ///< of an element
    QString sortKey; ///< errors first, then by place; made once: ten thousand are compared often

    bool operator==(const ProblemRow& other) const {
        return finding == other.finding && what == other.what && path == other.path &&
               words == other.words && cure == other.cure && desktop == other.desktop;
    }
};

/// The findings of one record.
struct RecordProblems {
    const store::TableDef* table = nullptr;
    std::string key;
    std::vector<ProblemRow> rows; ///< none: it is sound
};

class ProblemsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { What, Where, Problem, Cure, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    /// These are all there are.
    void setAll(std::vector<RecordProblems> records);
    /// These records are different now.
    void update(std::vector<RecordProblems> records);
    void showOnlyErrors(bool only);
    /// Only those whose texts have each of these words; none: all.
    void showOnlyThoseWith(const QString& words);
    /// By that column, then by place, then by table, key and kind; -1: by these alone.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    const ProblemRow& row(int number) const { return *m_shown[static_cast<size_t>(number)].row; }
    /// The row of that finding; -1 if it is not shown.
    int rowOf(const checks::Finding& finding) const;

    /// A mark stays with its finding when the model is reset. For a view's selection, which does
    /// not: put on before the reset, taken off after it.
    void mark(int first, int last);
    bool isMarked(int number) const { return m_shown[static_cast<size_t>(number)].isMarked; }
    void unmarkAll();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    using Id = std::pair<size_t, std::string>; ///< place of the table, key
    struct Shown {
        const ProblemRow* row;
        bool isMarked = false;
    };
    class Before;

    static Id idOf(const store::TableDef* table, const std::string& key);
    bool isShown(const ProblemRow& row) const;
    void replace(RecordProblems& record);
    void replaceMany(std::vector<RecordProblems>& records);
    void move(int number, const ProblemRow& now);
    void resetRows();
    std::vector<Shown>::iterator placeOf(const ProblemRow& row);
    void check() const;

    std::map<Id, std::vector<ProblemRow>> m_records; ///< the rows of each, by kind
    std::vector<Shown> m_shown;                      ///< rows of m_records
    int m_column = -1;
    Qt::SortOrder m_order = Qt::AscendingOrder;
    bool m_onlyErrors = false;
    QStringList m_words; ///< folded
};

} // namespace orvo::app

#endif
