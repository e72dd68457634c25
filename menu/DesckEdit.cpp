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

void DesckEdit::beginNew(const QModelIndex& placeholder, const QString& key) {
    Q_ASSERT(m_open.m_mode == NoEdit);
    m_open.m_mode = NewDesck;
    RecordEdit::beginNew(placeholder, key);
}

void DesckEdit::begin(const QModelIndex& row, const QString& key) {
    Q_ASSERT(m_open.m_mode == NoEdit);
    m_open.m_mode = RenameDesck;
    m_shown = row.siblingAtColumn(DesckColumn::Name).data().toString();
    RecordEdit::begin(row, key);
}

void DesckEdit::type(const QString& name) {
    if (state() == EditRow)
        typed().type(DesckColumn::Name, name, m_shown);
}

std::vector<editor::Replaced> DesckEdit::merge(DesckTreeModel& model, const QModelIndex& row,
                                               const Notification& change, const MDRData* record) {
    if (isNew())
        return {};
    return RecordEdit::merge(model, row, change, record, m_fields);
}

void DesckEdit::end() {
    if (isOpen())
        m_open.m_mode = NoEdit;
    RecordEdit::end();
    forgetKey();
    m_shown.clear();
    check();
}

void DesckEdit::write(RowWriter& record) {
    Q_ASSERT(isOpen() && index().isValid());
    const auto textAt = [this](int column) {
        return index().sibling(index().row(), column).data().toString();
    };
    if (!isNew()) {
        record.text(orvo::field::KeyLink, textAt(DesckColumn::KeyLink))
            .text(orvo::field::caption, textAt(DesckColumn::Name));
        return;
    }
    markSent();
    const QString parent = textAt(DesckColumn::ParentKey);
    if (sameText(parent, QString::fromLatin1(desckRootKey)))
        record.null(orvo::field::ParentKey);
    else
        record.text(orvo::field::ParentKey, parent);
    m_fields.write(record, index(), editor::AllRows);
}

void DesckEdit::check() const {
    Q_ASSERT(isOpen() == (m_open.m_mode == NewDesck || m_open.m_mode == RenameDesck)); // 1
    Q_ASSERT(isOpen() || key().isEmpty());                                             // 2
}

} // namespace orvo::menu
