#include "resources/CatalogueRows.h"

#include "editor/EditorWindow.h"
#include "frame/CommonFunctions.h"
#include "frame/FolderWalk.h"
#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/Siblings.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "resources/Columns.h"
#include "resources/Fields.h"

#include <cassert>
#include <utility>

namespace orvo::resources {
namespace {

constexpr auto& folderParent = field::ParentKey;
constexpr auto& resourceParent = field::MenuResourceFolderKey;

QString keyOf(const TabRec* row) {
    return row->data(ResColumn::KeyLink).toString();
}

/// The records of one kind under one parent: a run of key 1 of either table.
struct Group {
    int type;
    const char* parentField;
    QString parentKey;

    KeyValues start() const { return KeyValues().integer(type).textOrNull(parentKey); }
    bool holds(const MDRData* record) const {
        return integerOf(record, field::type_) == type && holdsText(record, parentField, parentKey);
    }
};

/// Calls visit(record) for the records of the group in order.
template <class Visit>
void walkRecords(const CMDArray& table, const Group& group, Visit visit) {
    walkGroup(table, 1, group.start(), [&](const MDRData* record) {
        if (!group.holds(record))
            return false;
        visit(record);
        return true;
    });
}

int32_t positionOf(const CMDArray& table, const QString& key, const Group& group,
                   const char* nameField) {
    const MDRData* own = seekKey(table, key);
    if (!own || !group.holds(own))
        return -1;
    KeyValues exact;
    for (const char* field : {field::type_, group.parentField, nameField})
        addField(exact, own, field);
    return siblingPosition(table, 1, group.start(), key, own, exact,
                           [&](const MDRData* record) { return group.holds(record); });
}

/// Whether the row may show more than its record, from the table of users.
bool mayBeLocked(const MDRData* record) {
    return integerOf(record, field::type_) == Kind::Form && !isEmptyText(record, field::UsersKey);
}

} // namespace

CatalogueRows::CatalogueRows(const editor::EditorWindow& window, const CMDArray& resources,
                             const CMDArray& folders, const CMDArray& users, const QString& login,
                             const std::unique_ptr<ResTreeModel>& tree)
    : m_window(window)
    , m_resources(resources)
    , m_folders(folders)
    , m_users(users)
    , m_login(login)
    , m_tree(tree) {}

ResTreeModel& CatalogueRows::tree() const {
    assert(m_tree);
    return *m_tree;
}

QModelIndex CatalogueRows::addFixed(const QModelIndex& parent, const char* key,
                                    const QString& caption, int type) {
    auto rows = tree().newRows(parent);
    TabRec* row = rows.add();
    row->setData(ResColumn::KeyLink, QString::fromLatin1(key));
    row->setData(ResColumn::Caption, caption);
    row->setData(ResColumn::IsFolder, true);
    row->setData(ResColumn::Type, type);
    const int number = tree().rowCount(parent);
    tree().insertFilledRows(number, std::move(rows), parent);
    return tree().index(number, 0, parent);
}

void CatalogueRows::addOrphans(const CMDArray& orphans, const QModelIndex& parent) {
    auto rows = tree().newRows(parent);
    walkAll(orphans, 0, [&](const MDRData* record) {
        TabRec* row = rows.add();
        row->setData(ResColumn::IsFolder, false);
        row->setData(ResColumn::KeyLink, textOf(record, field::KeyLink));
        row->setData(ResColumn::Type, integerOf(record, field::type_));
        row->setData(ResColumn::Caption, textOf(record, field::caption));
        row->setData(ResColumn::Params, textOf(record, field::params));
        row->setData(ResColumn::Name, textOf(record, field::name_));
        row->setData(ResColumn::FolderKey, textOf(record, resourceParent));
        return true;
    });
    tree().insertFilledRows(0, std::move(rows), parent);
}

std::vector<TabRec*> CatalogueRows::addFolderRows(ResTreeModel::Batch& rows, TabRec* parent,
                                                  int type, const QString& parentKey) const {
    std::vector<TabRec*> added;
    walkRecords(m_folders, {type, folderParent, parentKey}, [&](const MDRData* record) {
        added.push_back(rows.add(folderRows(), record, parent));
    });
    return added;
}

void CatalogueRows::addItemRows(ResTreeModel::Batch& rows, TabRec* parent, int type,
                                const QString& folderKey) const {
    walkRecords(m_resources, {type, resourceParent, folderKey},
                [&](const MDRData* record) { addItemRow(rows, record, parent); });
}

void CatalogueRows::addItemRow(ResTreeModel::Batch& rows, const MDRData* record,
                               TabRec* parent) const {
    if (mayBeLocked(record))
        rows.add(itemValues(record), parent);
    else
        rows.add(itemRows(), record, parent);
}

bool CatalogueRows::addFolders(int type, const QString& parentKey, const QModelIndex& parent) {
    auto rows = tree().newRows(parent);
    const std::vector<TabRec*> folders = addFolderRows(rows, nullptr, type, parentKey);
    for (TabRec* folder : folders)
        walkFolders(folder, keyOf, [&](TabRec* row) {
            std::vector<TabRec*> below = addFolderRows(rows, row, type, keyOf(row));
            addItemRows(rows, row, type, keyOf(row));
            return below;
        });
    tree().insertFilledRows(tree().rowCount(parent), std::move(rows), parent);
    return !folders.empty();
}

bool CatalogueRows::insertItem(const MDRData* record, int number, const QModelIndex& parent) {
    auto rows = tree().newRows(parent);
    addItemRow(rows, record, nullptr);
    return tree().insertFilledRows(number, std::move(rows), parent);
}

void CatalogueRows::addItems(int type, const QString& folderKey, const QModelIndex& parent) {
    auto rows = tree().newRows(parent);
    addItemRows(rows, nullptr, type, folderKey);
    tree().insertFilledRows(tree().rowCount(parent), std::move(rows), parent);
}

void CatalogueRows::fillFolder(const QModelIndex& parent, int row, const MDRData* record) {
    const QModelIndex index = tree().index(row, 0, parent);
    setRow(tree(), index, folderRows().values(record));
    tree().shareValues(index, folderRows(), record);
}

void CatalogueRows::fillItem(const QModelIndex& parent, int row, const MDRData* record) {
    const QModelIndex index = tree().index(row, 0, parent);
    setRow(tree(), index, itemValues(record));
    if (!mayBeLocked(record))
        tree().shareValues(index, itemRows(), record);
}

QVector<QVariant> CatalogueRows::itemValues(const MDRData* record) const {
    QVector<QVariant> values = itemRows().values(record);
    if (mayBeLocked(record))
        addLock(record, values);
    return values;
}

void CatalogueRows::keepFolders(const Notification& change) {
    tree().keepValues(folderRows(), findRecord(change.event(), &m_folders));
}

void CatalogueRows::keepItems(const Notification& change) {
    tree().keepValues(itemRows(), findRecord(change.event(), &m_resources));
}

void CatalogueRows::addLock(const MDRData* record, QVector<QVariant>& values) const {
    MDRData* user = seekKey(m_users, textOf(record, field::UsersKey));
    if (!user)
        return;
    const QString caption = getUserCaption(user, &m_users);
    values.replace(ResColumn::Lock, caption);
    if (caption.isEmpty())
        return;
    const QString time = timeText(record, fieldOf(record, field::dateTimeEdit),
                                  QStringLiteral("dd.MM.yyyy hh:mm:ss"));
    if (!time.isEmpty())
        values.replace(ResColumn::LockTime, time);
    const bool ours = holdsText(user, field::login_, m_login);
    values.replace(ResColumn::Blocked, ours ? LockedHere : LockedElsewhere);
}

int32_t CatalogueRows::folderPosition(const QString& key, const QString& parentKey,
                                      int type) const {
    return positionOf(m_folders, key, {type, folderParent, parentKey}, field::caption);
}

int32_t CatalogueRows::itemPosition(const QString& key, const QString& folderKey, int type) const {
    return positionOf(m_resources, key, {type, resourceParent, folderKey}, field::name_);
}

QModelIndex CatalogueRows::folderRow(const QString& key) const {
    return tree().findIndexByKey(key.isEmpty() ? QString::fromLatin1(rowkey::files) : key);
}

int CatalogueRows::folderCount(const QString& key) const {
    const QModelIndex parent = folderRow(key);
    const int rows = tree().rowCount(parent);
    int count = 0;
    while (count < rows && isFolder(tree().index(count, 0, parent)))
        ++count;
    return count;
}

QString CatalogueRows::timeText(const MDRData* record, MDRField field,
                                const QString& format) const {
    const MDRVar time = valueOf(record, field);
    return time.type == MDX_DATE && !time.null
               ? m_window.m_app->m_session->MdxTimeToSesTime(time.value.date).toString(format)
               : QString();
}

} // namespace orvo::resources
