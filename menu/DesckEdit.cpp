#include "menu/DesckEdit.h"

#include "editor/RecordFields.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "menu/Columns.h"

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
    check();
}

void DesckEdit::takePlaceholder(const QModelIndex& placeholder, const QString& key) {
    Q_ASSERT(isNew());
    m_row = placeholder;
    m_key = key;
    check();
}

void DesckEdit::end() {
    if (isOpen())
        m_open.m_mode = NoEdit;
    m_row = QModelIndex();
    m_key.clear();
    check();
}

void DesckEdit::write(RowWriter& record) const {
    Q_ASSERT(isOpen() && m_row.isValid());
    const auto textAt = [this](int column) {
        return m_row.sibling(m_row.row(), column).data().toString();
    };
    if (!isNew()) {
        record.text("KeyLink", textAt(DesckColumn::KeyLink))
            .text("caption", textAt(DesckColumn::Name));
        return;
    }
    const QString parent = textAt(DesckColumn::ParentKey);
    if (sameText(parent, QString::fromLatin1(desckRootKey)))
        record.null("ParentKey");
    else
        record.text("ParentKey", parent);
    for (const editor::RecordField& field : m_fields)
        if (field.saved != editor::NoRows)
            field.write(record, m_row.sibling(m_row.row(), field.column).data());
}

void DesckEdit::check() const {
    Q_ASSERT(isOpen() == !m_key.isEmpty());
    Q_ASSERT(isOpen() || !m_row.isValid());
}

} // namespace orvo::menu
