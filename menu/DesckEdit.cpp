#include "menu/DesckEdit.h"

#include "editor/RecordFields.h"
#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "models/DesckTreeModel.h"

namespace orvo::menu {

DesckEdit::DesckEdit(OpenEdit& open, const editor::RecordFields& fields)
    : m_open(open)
    , m_fields(fields) {}

bool DesckEdit::isOpen() const {
    return m_open.m_mode == NewDesck || m_open.m_mode == RenameDesck;
}

void DesckEdit::beginNew(const QModelIndex& placeholder, const QString& key) {
    Q_ASSERT(m_open.m_mode == NoEdit);
    m_open.m_mode = NewDesck;
    takePlaceholder(placeholder, key);
}

void DesckEdit::beginRename(const QModelIndex& row, const QString& key) {
    Q_ASSERT(m_open.m_mode == NoEdit);
    m_open.m_mode = RenameDesck;
    m_row = row;
    m_key = key;
    m_shown = row.siblingAtColumn(DesckColumn::Name).data().toString();
    check();
}

void DesckEdit::takePlaceholder(const QModelIndex& placeholder, const QString& key) {
    Q_ASSERT(isNew());
    m_row = placeholder;
    m_key = key;
    check();
}

void DesckEdit::type(const QString& name) {
    if (m_open.m_mode == RenameDesck)
        m_typed.type(DesckColumn::Name, name, m_shown);
}

void DesckEdit::merge(DesckTreeModel& model, const QModelIndex& row, const MDRData* record,
                      const Notification& change) {
    if (m_open.m_mode != RenameDesck || !sameText(change.key(), m_key))
        return;
    m_typed.merge(change, record, m_fields);
    m_typed.show(model, row);
}

void DesckEdit::end() {
    if (isOpen())
        m_open.m_mode = NoEdit;
    m_row = QModelIndex();
    m_key.clear();
    m_shown.clear();
    m_typed.clear();
    check();
}

void DesckEdit::write(RowWriter& record) {
    Q_ASSERT(isOpen() && m_row.isValid());
    const auto textAt = [this](int column) {
        return m_row.sibling(m_row.row(), column).data().toString();
    };
    if (!isNew()) {
        record.text(orvo::field::KeyLink, textAt(DesckColumn::KeyLink))
            .text(orvo::field::caption, textAt(DesckColumn::Name));
        return;
    }
    m_sent.insert(m_key.toCaseFolded());
    const QString parent = textAt(DesckColumn::ParentKey);
    if (sameText(parent, QString::fromLatin1(desckRootKey)))
        record.null(orvo::field::ParentKey);
    else
        record.text(orvo::field::ParentKey, parent);
    for (const editor::RecordField& field : m_fields)
        if (field.saved != editor::NoRows)
            field.write(record, m_row.sibling(m_row.row(), field.column).data());
}

void DesckEdit::check() const {
    Q_ASSERT(isOpen() == !m_key.isEmpty());
    Q_ASSERT(isOpen() || (!m_row.isValid() && m_typed.isEmpty()));
}

} // namespace orvo::menu
