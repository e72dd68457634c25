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
    Q_ASSERT(!row().isValid() || sameText(textAt(row(), ResColumn::KeyLink), key()));    // 1
    Q_ASSERT(QModelIndex(m_newRow) == (isNew() ? QModelIndex(index()) : QModelIndex())); // 2
    Q_ASSERT(!isTyped(ResColumn::Name) || typed().value(ResColumn::Name).toString() == m_object);
    Q_ASSERT(!isTyped(ResColumn::Caption) ||
             typed().value(ResColumn::Caption).toString() == m_caption); // 3
}

void ResourceEdit::beginNew(const QModelIndex& row, const QString& key, const QString& object,
                            const QString& caption) {
    RecordEdit::beginNew(row.siblingAtColumn(0), key);
    m_newRow = index();
    m_object = object;
    m_caption = caption;
    check();
}

void ResourceEdit::begin(const QModelIndex& row, const QString& key) {
    RecordEdit::begin(row.siblingAtColumn(0), key);
    m_object.clear(); // 3
    m_caption.clear();
    check();
}

void ResourceEdit::change(QAbstractItemModel& model, int column, const QVariant& value) {
    if (isLost())
        return;
    if (column == ResColumn::Caption)
        m_caption = value.toString();
    else if (column == ResColumn::Name)
        m_object = value.toString();
    RecordEdit::change(model, column, value);
    check();
}

void ResourceEdit::saved() {
    Q_ASSERT(isOpen());
    Sent sent{key(), {}};
    const QModelIndex saved = row();
    for (int column : {ResColumn::Caption, ResColumn::Name, ResColumn::Params, ResColumn::Icon})
        sent.values[column] = saved.siblingAtColumn(column).data();
    m_expected.push_back(std::move(sent));
    if (m_expected.size() > mostExpected)
        m_expected.erase(m_expected.begin());
    end();
}

void ResourceEdit::end() {
    RecordEdit::end();
    m_newRow = QModelIndex();
    check();
}

bool ResourceEdit::takeEcho(const Notification& change, const MDRData* record,
                            const editor::RecordFields& fields) {
    const QString key = change.key();
    const auto matches = [&](const Sent& sent) {
        return sameText(sent.key, key) &&
               std::all_of(fields.begin(), fields.end(), [&](const editor::RecordField& field) {
                   return !field.isEditable() || !change.hasValueFor(field.name) ||
                          sent.values.value(field.column).toString() ==
                              field.read(record).toString();
               });
    };
    const auto echo = std::find_if(m_expected.begin(), m_expected.end(), matches);
    if (echo == m_expected.end())
        return false;
    // The log is in order: what was sent earlier has come, or was refused.
    m_expected.erase(std::remove_if(m_expected.begin(), echo,
                                    [&](const Sent& sent) { return sameText(sent.key, key); }),
                     echo + 1);
    return true;
}

std::vector<editor::Replaced> ResourceEdit::merge(QAbstractItemModel& model, const QModelIndex& row,
                                                  const Notification& change, const MDRData* record,
                                                  const editor::RecordFields& fields) {
    const bool own = takeEcho(change, record, fields);
    std::vector<editor::Replaced> replaced;
    if (!isOf(change.key()))
        return replaced;
    if (own)
        typed().show(model, row);
    else
        replaced = RecordEdit::merge(model, row, change, record, fields);
    check();
    return replaced;
}

void ResourceEdit::forget(const QString& key) {
    m_expected.erase(std::remove_if(m_expected.begin(), m_expected.end(),
                                    [&](const Sent& sent) { return sameText(sent.key, key); }),
                     m_expected.end());
}

void ResourceEdit::follow(const QModelIndex& row) {
    RecordEdit::follow(row);
    if (isNew())
        m_newRow = index();
    check();
}

std::vector<QString> ResourceEdit::expected() const {
    std::vector<QString> keys;
    for (const Sent& sent : m_expected)
        keys.push_back(sent.key);
    return keys;
}

} // namespace orvo::resources
