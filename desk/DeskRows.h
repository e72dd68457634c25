// DeskRows.h: keeps the rows of the operator's menu in step with the records of its desktop.
#ifndef ORVO_DESK_DESKROWS_H
#define ORVO_DESK_DESKROWS_H

#include "desk/DeskModel.h"
#include "desk/DeskRecords.h"

namespace orvo::desk {

/// Invariants; 2 is asserted in debug builds:
/// 1. Whenever no function here runs, the tree shows every element that hangs below the top of the
///    desktop through folders, in the order of the records, and nothing else. An element whose
///    folder is missing, is no folder, or is part of a circle is not shown.
/// 2. An element that was followed is shown below its folder, or not at all if it has no record.
class DeskRows {
public:
    DeskRows(DeskModel& model, DeskRecords& records) : m_model(model), m_records(records) {}

    /// Removes all rows and makes them again.
    void fill();
    /// The element has come, changed, moved or gone: its row follows, with those below it. A row
    /// that has to move is made again.
    void follow(const QString& key);
    /// Texts and icons of the row; its place is not looked at.
    void refresh(const QString& key);

private:
    void insert(const QModelIndex& parent, int position, const QString& key);
    void fillBelow(DeskModel::Batch& rows, const QString& topKey, TabRec* top);
    void setValues(const QModelIndex& row, const QVector<QVariant>& values);

    DeskModel& m_model;
    DeskRecords& m_records;
};

} // namespace orvo::desk

#endif
