#include "resources/ResourceEdit.h"

#include "editor/RecordFields.h"
#include "frame/Notification.h"
#include "resources/Columns.h"

#include <QAbstractItemModel>

#include <algorithm>

namespace orvo::resources {

namespace {

/// Saves whose echo is late; older ones were refused, and none will come.
constexpr size_t mostExpected = 64;

} // namespace

void ResourceEdit::check() const {
    Q_ASSERT(m_state != Idle || (m_typed.isEmpty() && !m_row.isValid() && !m_newRow.isValid()));
    Q_ASSERT(m_state == Idle || !m_key.isEmpty());
    Q_ASSERT(!row().isValid() || sameText(textAt(row(), ResColumn::KeyLink), m_key));
    Q_ASSERT(m_state == NewRow || !m_newRow.isValid());
}

void ResourceEdit::beginNew(const QModelIndex& row, const QString& key, const QString& object,
                            const QString& caption) {
    Q_ASSERT(!isOpen());
    m_state = NewRow;
    m_key = key;
    m_newRow = row.siblingAtColumn(0);
    m_object = object;
    m_caption = caption;
    check();
}

void ResourceEdit::begin(const QModelIndex& row, const QString& key) {
    Q_ASSERT(!isOpen());
    m_state = EditRow;
    m_key = key;
    m_row = row.siblingAtColumn(0);
    m_object.clear();
    m_caption.clear();
    check();
}

void ResourceEdit::change(QAbstractItemModel& model, int column, const QVariant& value) {
    Q_ASSERT(isOpen());
    const QModelIndex cell = row().siblingAtColumn(column);
    if (!cell.isValid())
        return;
    m_typed.type(column, value, cell.data());
    if (column == ResColumn::Caption)
        m_caption = value.toString();
    else if (column == ResColumn::Name)
        m_object = value.toString();
    model.setData(cell, value, Qt::DisplayRole);
    check();
}

void ResourceEdit::saved() {
    Q_ASSERT(isOpen());
    Sent sent{m_key, {}};
    const QModelIndex saved = row();
    for (int column : {ResColumn::Caption, ResColumn::Name, ResColumn::Params, ResColumn::Icon})
        sent.values[column] = saved.siblingAtColumn(column).data();
    m_sent.push_back(std::move(sent));
    if (m_sent.size() > mostExpected)
        m_sent.erase(m_sent.begin());
    end();
}

void ResourceEdit::end() {
    m_state = Idle;
    m_typed.clear();
    m_row = QModelIndex();
    m_newRow = QModelIndex();
    check();
}

bool ResourceEdit::takeEcho(const Notification& change, const MDRData* record,
                            const editor::RecordFields& fields) {
    const QString key = change.key();
    const auto matches = [&](const Sent& sent) {
        return sameText(sent.key, key) &&
               std::all_of(fields.begin(), fields.end(), [&](const editor::RecordField& field) {
                   return !field.isEditable() || !change.brings(field.name) ||
                          sent.values.value(field.column).toString() ==
                              field.read(record).toString();
               });
    };
    const auto echo = std::find_if(m_sent.begin(), m_sent.end(), matches);
    if (echo == m_sent.end())
        return false;
    // The log is in order: what was sent earlier has come, or was refused.
    m_sent.erase(std::remove_if(m_sent.begin(), echo,
                                [&](const Sent& sent) { return sameText(sent.key, key); }),
                 echo + 1);
    return true;
}

std::vector<ResourceEdit::Replaced>
ResourceEdit::merge(QAbstractItemModel& model, const QModelIndex& row, const Notification& change,
                    const MDRData* record, const editor::RecordFields& fields) {
    const bool own = takeEcho(change, record, fields);
    std::vector<Replaced> replaced;
    if (!isOf(change.key()))
        return replaced;
    if (!own) {
        const editor::TypedValues before = m_typed;
        m_typed.merge(change, record, fields);
        for (const editor::RecordField& field : fields)
            if (before.contains(field.column) && !m_typed.contains(field.column))
                replaced.push_back({field.column, before.value(field.column)});
    }
    m_typed.show(model, row);
    check();
    return replaced;
}

void ResourceEdit::forget(const QString& key) {
    m_sent.erase(std::remove_if(m_sent.begin(), m_sent.end(),
                                [&](const Sent& sent) { return sameText(sent.key, key); }),
                 m_sent.end());
}

bool ResourceEdit::isOf(const QString& key) const {
    return isOpen() && sameText(key, m_key);
}

void ResourceEdit::follow(const QModelIndex& row) {
    if (m_state == NewRow)
        m_newRow = row;
    else if (m_state == EditRow)
        m_row = row;
    check();
}

std::vector<QString> ResourceEdit::expected() const {
    std::vector<QString> keys;
    for (const Sent& sent : m_sent)
        keys.push_back(sent.key);
    return keys;
}

} // namespace orvo::resources
