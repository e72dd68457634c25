// ProblemsModel.h: what is wrong with the installation, a row each.
//
// Invariant, asserted in debug builds: the rows stand in the order of table, key and kind.
#ifndef ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSMODEL_H
#define ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSMODEL_H

#include "checks/Finding.h"

#include <QAbstractTableModel>

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
    enum Role {
        SortRole = Qt::UserRole, ///< a text
        IsErrorRole,
    };

    using QAbstractTableModel::QAbstractTableModel;

    /// These are all there are.
    void setAll(std::vector<RecordProblems> records);
    /// These records are different now.
    void update(std::vector<RecordProblems> records);

    const ProblemRow& row(int number) const { return m_rows[static_cast<size_t>(number)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void replace(RecordProblems& record);
    void check() const;

    std::vector<ProblemRow> m_rows;
};

} // namespace orvo::app

#endif
