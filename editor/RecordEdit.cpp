#include "editor/RecordEdit.h"

#include "editor/RecordFields.h"
#include "frame/Notification.h"
#include "frame/Records.h"

#include <QAbstractItemModel>

namespace orvo::editor {

bool RecordEdit::isOf(const QString& key) const {
    return isOpen() && sameText(key, m_key);
}

void RecordEdit::beginNew(const QModelIndex& placeholder, const QString& key) {
    Q_ASSERT(!isOpen());
    m_state = NewRow;
    takePlaceholder(placeholder, key);
}

void RecordEdit::begin(const QModelIndex& row, const QString& key) {
    Q_ASSERT(!isOpen());
    m_state = EditRow;
    m_row = row;
    m_key = key;
    check();
}

void RecordEdit::takePlaceholder(const QModelIndex& placeholder, const QString& key) {
    Q_ASSERT(isNew());
    m_row = placeholder;
    m_key = key;
    check();
}

void RecordEdit::follow(const QModelIndex& row) {
    if (isOpen())
        m_row = row;
    check();
}

void RecordEdit::change(QAbstractItemModel& model, int column, const QVariant& value) {
    Q_ASSERT(isOpen());
    const QModelIndex cell = m_row.sibling(m_row.row(), column);
    if (!cell.isValid())
        return;
    m_typed.type(column, value, cell.data());
    model.setData(cell, value, Qt::DisplayRole);
    check();
}

std::vector<Replaced> RecordEdit::merge(QAbstractItemModel& model, const QModelIndex& row,
                                        const Notification& change, const MDRData* record,
                                        const RecordFields& fields) {
    if (!isOf(change.key()))
        return {};
    std::vector<Replaced> replaced = m_typed.merge(change, record, fields);
    m_typed.show(model, row);
    check();
    return replaced;
}

void RecordEdit::markSent() {
    Q_ASSERT(isOpen());
    if (isNew())
        m_sent.insert(m_key.toCaseFolded());
}

void RecordEdit::end() {
    m_state = Idle;
    m_row = QModelIndex();
    m_typed.clear();
    check();
}

void RecordEdit::check() const {
    Q_ASSERT(isOpen() || (m_typed.isEmpty() && !m_row.isValid())); // 1
    Q_ASSERT(!isOpen() || !m_key.isEmpty());                       // 2
}

} // namespace orvo::editor
