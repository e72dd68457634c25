// The tree of folders and resources. Its order is not computed here: it comes from key 1 of the two
// tables, so that each level is one run of records. A row's path in the stores is read off it.
#include "resources/OrvoResources.h"

#include "frame/Text.h"
#include "ui_OrvoResources.h"

#include "frame/CommonFunctions.h"
#include "frame/FolderWalk.h"
#include "frame/Kinds.h"
#include "frame/Notification.h"
#include "frame/Siblings.h"
#include "frame/ViewRows.h"
#include "resources/Columns.h"
#include "resources/Fields.h"

#include <QTreeView>

using orvo::KeyValues;
using orvo::Kind;
using orvo::resources::ResColumn;

namespace {

constexpr auto& folderParent = orvo::field::ParentKey;
constexpr auto& resourceParent = orvo::field::MenuResourceFolderKey;

QString captionOf(const QModelIndex& index) {
    return orvo::resources::textAt(index, ResColumn::Caption);
}

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
        return orvo::integerOf(record, orvo::field::type_) == type &&
               orvo::holdsText(record, parentField, parentKey);
    }
};

/// Calls visit(record) for the records of the group in order.
template <class Visit>
void walkRecords(const CMDArray& table, const Group& group, Visit visit) {
    orvo::walkGroup(table, 1, group.start(), [&](const MDRData* record) {
        if (!group.holds(record))
            return false;
        visit(record);
        return true;
    });
}

int32_t positionOf(const CMDArray& table, const QString& key, const Group& group,
                   const char* nameField) {
    const MDRData* own = orvo::seekKey(table, key);
    if (!own || !group.holds(own))
        return -1;
    KeyValues exact;
    for (const char* field : {orvo::field::type_, group.parentField, nameField})
        orvo::addField(exact, own, field);
    return orvo::siblingPosition(table, 1, group.start(), key, own, exact,
                                 [&](const MDRData* record) { return group.holds(record); });
}

} // namespace

void OrvoResources::loadResTreeUpper() {
    const QModelIndex root =
        addFixedRow(QModelIndex(), orvo::rowkey::resources, tr("Ресурсы меню"), Kind::None);
    const QModelIndex files =
        addFixedRow(QModelIndex(), orvo::rowkey::files, tr("Файловые ресурсы"), Kind::File);
    // The folders of these kinds come from the server. A catalogue without one of them is not
    // whole, and what would follow stays away.
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (kind.topFolder && !appendFolders(kind.number, QString(), root))
            return;
    appendOrphans(root);
    loadSysRootFolders(files);
    loadSysRootItems(files);
    m_ui->tvRes->expand(root);
    m_ui->tvRes->expand(files);
}

QModelIndex OrvoResources::addFixedRow(const QModelIndex& parent, const char* key,
                                       const QString& caption, int type) {
    auto rows = m_resModel->newRows(parent);
    TabRec* row = rows.add();
    row->setData(ResColumn::KeyLink, QString::fromLatin1(key));
    row->setData(ResColumn::Caption, caption);
    row->setData(ResColumn::IsFolder, true);
    row->setData(ResColumn::Type, type);
    const int number = m_resModel->rowCount(parent);
    m_resModel->insertFilledRows(number, std::move(rows), parent);
    return m_resModel->index(number, 0, parent);
}

void OrvoResources::appendOrphans(const QModelIndex& parent) {
    if (orvo::recordCount(m_tabOrphans) == 0)
        return;
    const QModelIndex folder =
        addFixedRow(parent, orvo::rowkey::orphans, tr("Непривязанные объекты"), Kind::Orphans);
    auto rows = m_resModel->newRows(folder);
    orvo::walkAll(m_tabOrphans, 0, [&](const MDRData* record) {
        TabRec* row = rows.add();
        row->setData(ResColumn::IsFolder, false);
        row->setData(ResColumn::KeyLink, orvo::textOf(record, orvo::field::KeyLink));
        row->setData(ResColumn::Type, orvo::integerOf(record, orvo::field::type_));
        row->setData(ResColumn::Caption, orvo::textOf(record, orvo::field::caption));
        row->setData(ResColumn::Params, orvo::textOf(record, orvo::field::params));
        row->setData(ResColumn::Name, orvo::textOf(record, orvo::field::name_));
        row->setData(ResColumn::FolderKey, orvo::textOf(record, resourceParent));
        return true;
    });
    m_resModel->insertFilledRows(0, std::move(rows), folder);
}

std::vector<TabRec*> OrvoResources::addFolderRows(ResTreeModel::Batch& rows, TabRec* parent,
                                                  int type, const QString& parentKey) const {
    std::vector<TabRec*> added;
    walkRecords(m_tabResFolder, {type, folderParent, parentKey}, [&](const MDRData* record) {
        added.push_back(rows.add(orvo::resources::folderRows(), record, parent));
    });
    return added;
}

void OrvoResources::addItemRows(ResTreeModel::Batch& rows, TabRec* parent, int type,
                                const QString& folderKey) const {
    walkRecords(m_tabResource, {type, resourceParent, folderKey},
                [&](const MDRData* record) { addItemRow(rows, record, parent); });
}

void OrvoResources::addItemRow(ResTreeModel::Batch& rows, const MDRData* record,
                               TabRec* parent) const {
    if (mayBeLocked(record))
        rows.add(itemValues(record), parent);
    else
        rows.add(orvo::resources::itemRows(), record, parent);
}

bool OrvoResources::appendFolders(int type, const QString& parentKey, const QModelIndex& parent) {
    auto rows = m_resModel->newRows(parent);
    const std::vector<TabRec*> folders = addFolderRows(rows, nullptr, type, parentKey);
    for (TabRec* folder : folders)
        orvo::walkFolders(folder, keyOf, [&](TabRec* row) {
            std::vector<TabRec*> below = addFolderRows(rows, row, type, keyOf(row));
            addItemRows(rows, row, type, keyOf(row));
            return below;
        });
    m_resModel->insertFilledRows(m_resModel->rowCount(parent), std::move(rows), parent);
    return !folders.empty();
}

void OrvoResources::appendItems(int type, const QString& folderKey, const QModelIndex& parent) {
    auto rows = m_resModel->newRows(parent);
    addItemRows(rows, nullptr, type, folderKey);
    m_resModel->insertFilledRows(m_resModel->rowCount(parent), std::move(rows), parent);
}

void OrvoResources::loadFolders(int type, QModelIndex parent) {
    appendFolders(type, m_resModel->getItemKeyLink(parent), parent);
}

void OrvoResources::loadItems(int type, QModelIndex parent) {
    appendItems(type, m_resModel->getItemKeyLink(parent), parent);
}

void OrvoResources::loadSysRootFolders(const QModelIndex& parent) {
    appendFolders(Kind::File, QString(), parent);
}

void OrvoResources::loadSysRootItems(const QModelIndex& parent) {
    appendItems(Kind::File, QString(), parent);
}

void OrvoResources::loadResFolderRow(const QModelIndex& parent, int row, MDRData* rec) {
    const QModelIndex index = m_resModel->index(row, 0, parent);
    orvo::setRow(*m_resModel, index, orvo::resources::folderRows().values(rec));
    m_resModel->shareValues(index, orvo::resources::folderRows(), rec);
}

void OrvoResources::loadResItemRow(const QModelIndex& parent, int row, MDRData* rec) {
    const QModelIndex index = m_resModel->index(row, 0, parent);
    orvo::setRow(*m_resModel, index, itemValues(rec));
    if (!mayBeLocked(rec))
        m_resModel->shareValues(index, orvo::resources::itemRows(), rec);
}

bool OrvoResources::mayBeLocked(const MDRData* record) {
    return orvo::integerOf(record, orvo::field::type_) == Kind::Form &&
           !orvo::isEmptyText(record, orvo::field::UsersKey);
}

QVector<QVariant> OrvoResources::itemValues(const MDRData* record) const {
    QVector<QVariant> values = orvo::resources::itemRows().values(record);
    if (mayBeLocked(record))
        addLock(record, values);
    return values;
}

void OrvoResources::keepFolderRows(const orvo::Notification& change) {
    m_resModel->keepValues(orvo::resources::folderRows(),
                           orvo::findRecord(change.event(), &m_tabResFolder));
}

void OrvoResources::keepItemRows(const orvo::Notification& change) {
    m_resModel->keepValues(orvo::resources::itemRows(),
                           orvo::findRecord(change.event(), &m_tabResource));
}

const orvo::editor::RecordFields& OrvoResources::fieldsOf(const QModelIndex& row) const {
    return orvo::resources::isFolder(row) ? orvo::resources::folderFields()
                                          : orvo::resources::itemFields();
}

QString OrvoResources::describe(const QModelIndex& row) const {
    QString caption = orvo::resources::textAt(row, ResColumn::Caption);
    const QString name = orvo::resources::textAt(row, ResColumn::Name);
    if (caption.isEmpty() && name.isEmpty()) // typed away: it is known by what it was
        caption = orvo::textOf(orvo::seekKey(m_tabResFolder, m_resModel->getItemKeyLink(row)),
                               orvo::field::caption);
    const auto word = [&] {
        if (orvo::resources::isFolder(row))
            return tr("папка");
        const orvo::ResourceKind* kind = orvo::resourceKind(orvo::resources::kindOf(row));
        return kind ? orvo::Text::tr(kind->one) : tr("ресурс");
    };
    const QString text = word() + orvo::Text::tr(" «%1»").arg(caption.isEmpty() ? name : caption);
    return name.isEmpty() || caption.isEmpty() || orvo::sameText(name, caption)
               ? text
               : text + QStringLiteral(" (%1)").arg(name);
}

void OrvoResources::addLock(const MDRData* record, QVector<QVariant>& values) const {
    MDRData* user = orvo::seekKey(m_tabUsers, orvo::textOf(record, orvo::field::UsersKey));
    if (!user)
        return;
    const QString caption = getUserCaption(user, &m_tabUsers);
    values.replace(ResColumn::Lock, caption);
    if (caption.isEmpty())
        return;
    const QString time = timeText(record, orvo::fieldOf(record, orvo::field::dateTimeEdit),
                                  QStringLiteral("dd.MM.yyyy hh:mm:ss"));
    if (!time.isEmpty())
        values.replace(ResColumn::LockTime, time);
    const bool ours = orvo::holdsText(user, orvo::field::login_, m_userLogin);
    values.replace(ResColumn::Blocked,
                   ours ? orvo::resources::LockedHere : orvo::resources::LockedElsewhere);
}

int32_t OrvoResources::getResFolderPosition(const QString& key, const QString& parentKey,
                                            int type) const {
    return positionOf(m_tabResFolder, key, {type, folderParent, parentKey}, orvo::field::caption);
}

int32_t OrvoResources::getResItemPosition(const QString& key, const QString& folderKey,
                                          int type) const {
    return positionOf(m_tabResource, key, {type, resourceParent, folderKey}, orvo::field::name_);
}

QModelIndex OrvoResources::folderRow(const QString& key) const {
    return m_resModel->findIndexByKey(key.isEmpty() ? QString::fromLatin1(orvo::rowkey::files)
                                                    : key);
}

int OrvoResources::getFolderCount(const QString& key) const {
    const QModelIndex parent = folderRow(key);
    const int rows = m_resModel->rowCount(parent);
    int count = 0;
    while (count < rows && orvo::resources::isFolder(m_resModel->index(count, 0, parent)))
        ++count;
    return count;
}

QString OrvoResources::getFormPath(const QModelIndex& index) const {
    if (m_resModel->getItemLevel(index) == 1)
        return {};
    QString path = captionOf(index);
    for (QModelIndex at = index; m_resModel->getItemLevel(at) >= 3;) {
        at = at.parent();
        path.prepend(captionOf(at) + QLatin1Char('/'));
    }
    return path;
}

QString OrvoResources::getFilePath(const QModelIndex& index) const {
    QString path;
    const auto join = [](const QString& above, const QString& below) {
        return below.isEmpty() ? above : above + QLatin1Char('/') + below;
    };
    for (QModelIndex at = index; m_resModel->getItemLevel(at) > 1;) {
        at = at.parent();
        path = join(captionOf(at), path);
    }
    if (orvo::resources::isFolder(index) && m_resModel->getItemLevel(index) > 0)
        path = path.isEmpty() ? captionOf(index) : path + QLatin1Char('/') + captionOf(index);
    return path;
}
