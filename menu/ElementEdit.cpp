#include "menu/ElementEdit.h"

#include "editor/RecordFields.h"
#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "models/MenuTreeModel.h"

namespace orvo::menu {

ElementEdit::ElementEdit(OpenEdit& open, const editor::RecordFields& fields)
    : m_open(open)
    , m_fields(fields) {}

bool ElementEdit::changes(const QString& key) const {
    return state() == EditRow && isOf(key);
}

QModelIndex ElementEdit::row(const MenuTreeModel& model) const {
    if (index().isValid())
        return index();
    return isOpen() ? model.findIndexByKey(key()) : QModelIndex();
}

void ElementEdit::beginNew(const QModelIndex& placeholder, const QString& key) {
    Q_ASSERT(m_open.m_mode == NoEdit);
    m_open.m_mode = NewElement;
    RecordEdit::beginNew(placeholder, key);
}

void ElementEdit::begin(const QModelIndex& row, const QString& key) {
    Q_ASSERT(m_open.m_mode == NoEdit);
    m_open.m_mode = EditElement;
    RecordEdit::begin(row, key);
}

void ElementEdit::change(MenuTreeModel& model, const QModelIndex& row, int column,
                         const QVariant& value) {
    const QModelIndex cell = row.siblingAtColumn(column);
    if (changes(model.getItemKeyLink(row)))
        typed().type(column, value, cell.data());
    model.setData(cell, value, Qt::DisplayRole);
    check();
}

void ElementEdit::sendsPlace(const QString& key, int order) {
    if (!changes(key))
        return;
    m_place = Place{order, m_place ? m_place->parent : std::nullopt};
}

void ElementEdit::sendsPlace(const QString& key, int order, const QString& parent) {
    if (changes(key))
        m_place = Place{order, parent};
}

std::vector<editor::Replaced> ElementEdit::merge(MenuTreeModel& model, const QModelIndex& row,
                                                 const Notification& change,
                                                 const MDRData* record) {
    if (!changes(change.key()))
        return {};
    std::vector<editor::Replaced> replaced =
        RecordEdit::merge(model, row, change, record, m_fields);
    if (m_place && m_place->order == integerOf(record, orvo::field::order_) &&
        (!m_place->parent || holdsText(record, orvo::field::parent, *m_place->parent)))
        m_place.reset();
    check();
    return replaced;
}

void ElementEdit::end() {
    if (isOpen())
        m_open.m_mode = NoEdit;
    RecordEdit::end();
    forgetKey();
    m_place.reset();
    check();
}

void ElementEdit::write(const MenuTreeModel& model, const QModelIndex& row, RowWriter& record) {
    markSent();
    const editor::Rows kind = model.itemIsFolder(row) ? editor::FolderRows : editor::ItemRows;
    writeParent(model, row, record);
    for (const editor::RecordField& field : m_fields) {
        if ((field.saved & kind) == 0)
            continue;
        if (field.column == MenuColumn::Order && m_place)
            field.write(record, m_place->order);
        else
            field.write(record, row.siblingAtColumn(field.column).data());
    }
}

void ElementEdit::writeParent(const MenuTreeModel& model, const QModelIndex& row,
                              RowWriter& record) const {
    const QString parent = row.siblingAtColumn(MenuColumn::ParentKey).data().toString();
    const bool atTop = model.getItemLevel(row.parent()) == 0;
    if (m_place && m_place->parent)
        record.textOrNull(orvo::field::parent, *m_place->parent);
    else if (!atTop)
        record.text(orvo::field::parent, parent);
    else if (parent.isEmpty() || sameText(parent, QString::fromLatin1(menuRootKey)))
        record.null(orvo::field::parent);
    else // it was moved into a folder that has no row yet, and waits at the top
        record.text(orvo::field::parent, parent);
}

void ElementEdit::check() const {
    Q_ASSERT(isOpen() == (m_open.m_mode == NewElement || m_open.m_mode == EditElement)); // 1
    Q_ASSERT(isOpen() || (key().isEmpty() && !m_place));                                 // 2
    Q_ASSERT(!isNew() || (typed().isEmpty() && !m_place));                               // 3
}

} // namespace orvo::menu
