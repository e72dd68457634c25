// Filling the picker's tree from its copies of the tables: one seek for the sub-folders and one for
// the resources of each folder, siblings in the order of the keys.
#include "picker/PopObjectList.h"

#include "frame/FolderWalk.h"
#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "picker/ObjectListOwner.h"
#include "ui_PopObjectList.h"

#include <QComboBox>
#include <QFileInfo>
#include <QItemSelectionModel>

#include <vector>

using orvo::KeyValues;
using orvo::Kind;
using orvo::PickColumn;

namespace {

QVector<QVariant> rowValues(const QString& name, const QVariant& caption, const QString& key,
                            bool isFolder) {
    return {name, caption, QVariant(), QVariant(), key, isFolder, QVariant()};
}

/// Calls `each` for the records of that kind whose link field, field 2 of key 1, holds `key`; a
/// null key stands for the top.
template <class Each>
void walkChildren(const CMDArray& table, const char* link, int type, const QString& key,
                  Each&& each) {
    KeyValues values;
    values.integer(type);
    if (key.isNull())
        values.null();
    else
        values.text(key);
    orvo::walkGroup(table, 1, values, [&](const MDRData* record) {
        if (orvo::integerOf(record, orvo::field::type_) != type ||
            !orvo::holdsText(record, link, key))
            return false;
        each(record);
        return true;
    });
}

QModelIndex parentRow(const PopTreeModel& model, const QString& key) {
    return key.isNull() ? QModelIndex() : model.findIndexByKey(key);
}

} // namespace

void CPopObjectList::loadFoldersOf(int type, const QString& key) {
    orvo::walkFolders(
        key, [](const QString& folder) { return folder; },
        [&](const QString& folder) {
            std::vector<QString> below;
            const QModelIndex parent = parentRow(*treeModel, folder);
            auto rows = treeModel->newRows(parent);
            walkChildren(folderTable, orvo::field::ParentKey, type, folder,
                         [&](const MDRData* record) {
                             below.push_back(orvo::textOf(record, orvo::field::KeyLink));
                             rows.add(rowValues(orvo::textOf(record, orvo::field::caption),
                                                QVariant(), below.back(), true));
                         });
            treeModel->insertFilledRows(treeModel->rowCount(parent), std::move(rows), parent);
            // The resources of the folder asked for are the caller's to load.
            if (folder != key)
                loadItemsOf(type, folder, type != Kind::File);
            return below;
        });
}

void CPopObjectList::loadItemsOf(int type, const QString& key, bool withCaption) {
    const QModelIndex parent = parentRow(*treeModel, key);
    auto rows = treeModel->newRows(parent);
    walkChildren(resourceTable, orvo::field::MenuResourceFolderKey, type, key,
                 [&](const MDRData* record) {
                     rows.add(rowValues(orvo::textOf(record, orvo::field::name_),
                                        withCaption ? orvo::textOf(record, orvo::field::caption)
                                                    : QVariant(),
                                        orvo::textOf(record, orvo::field::KeyLink), false));
                 });
    treeModel->insertFilledRows(treeModel->rowCount(parent), std::move(rows), parent);
}

void CPopObjectList::load() {
    refreshTables();
    clearModel();
    treeModel->setShowFileIcons(false);
    m_shown.clear();
    const orvo::ResourceKind* kind = orvo::resourceKind(objectType);
    if (!kind)
        return;
    const bool files = kind->topFolder == nullptr;
    m_ui->tvObj->setSelectionMode(multipleChoice && !files ? QAbstractItemView::ExtendedSelection
                                                           : QAbstractItemView::SingleSelection);
    m_ui->tvObj->setColumnHidden(PickColumn::Caption, files);
    orvo::hideColumns(m_ui->tvObj, PickColumn::UserBlock, PickColumn::Blocked);
    treeModel->setObjectType(objectType);
    showTitle();
    if (m_kinds)
        m_kinds->setCurrentIndex(m_kinds->findData(objectType));
    if (files) {
        treeModel->setShowFileIcons(
            orvo::sameText(sourceName, QString::fromLatin1(orvo::iconFolder)));
        treeModel->setInitialFolder(sourceName);
        loadSysFiles();
    } else {
        loadTop(objectType);
    }
    openRemembered();
}

void CPopObjectList::refreshTables() {
    const auto* module = qobject_cast<const COrvoCliMod*>(parent());
    const auto* owner = dynamic_cast<const orvo::ObjectListOwner*>(parent());
    if (!module || !owner)
        return;
    if (!orvo::sameText(module->m_moduleName, QStringLiteral("Menu")) &&
        !orvo::sameText(module->m_moduleName, QStringLiteral("Resources")))
        return;
    const auto copy = [](CMDArray& own, const CMDArray* theirs,
                         std::initializer_list<const char*> keys) {
        if (!theirs || !theirs->array) {
            own.status = MDX_E_SELF;
            return;
        }
        const int status = MDACopy(own.array, theirs->array, 1);
        orvo::setKeys(own, keys);
        own.status = status;
    };
    copy(resourceTable, owner->resourceTable(), orvo::keylist::MenuResource);
    copy(folderTable, owner->resourceFolderTable(), orvo::keylist::MenuResourceFolder);
}

void CPopObjectList::clearModel() {
    if (const int rows = treeModel->rowCount(QModelIndex()))
        treeModel->removeRows(0, rows, QModelIndex());
}

void CPopObjectList::loadModules() {
    loadTop(Kind::Module);
}

void CPopObjectList::loadFunctions() {
    loadTop(Kind::Function);
}

void CPopObjectList::loadForms() {
    loadTop(Kind::Form);
}

void CPopObjectList::loadTop(int32_t kind) {
    loadRoot(kind, QString::fromUtf8(orvo::resourceKind(kind)->topFolder));
}

void CPopObjectList::loadFolders(const QString& key) {
    loadFoldersOf(objectType, key);
}

void CPopObjectList::loadItems(const QString& key) {
    loadItemsOf(objectType, key, true);
}

void CPopObjectList::loadSysFolders(const QString& key) {
    loadFoldersOf(Kind::File, key);
}

void CPopObjectList::loadSysItems(const QString& key) {
    loadItemsOf(Kind::File, key, false);
}

void CPopObjectList::loadSysFiles() {
    if (sourceName.isEmpty()) {
        loadSysFolders(QString());
        loadSysItems(QString());
    }
    bool found = false;
    const QString key = rootFolder(Kind::File, sourceName, &found);
    if (!found)
        return;
    if (!key.isNull()) {
        // The disk may tell case apart where captions do not: the area bears the folder's caption.
        if (!QFileInfo::exists(treeModel->initialFolderPath()))
            treeModel->setInitialFolder(
                orvo::textOf(orvo::seekKey(folderTable, key), orvo::field::caption));
        loadSysFolders(key);
        loadSysItems(key);
    }
    if (chosenName.isEmpty())
        return;
    chosenKey = QString();
    preselect(Kind::File);
}

void CPopObjectList::loadRoot(int type, const QString& caption) {
    bool found = false;
    const QString key = rootFolder(type, caption, &found);
    if (!found)
        return;
    if (!key.isNull()) {
        loadFolders(key);
        loadItems(key);
    }
    chosenKey = QString();
    if (treeModel->rowCount(QModelIndex()) > 0)
        preselect(type);
}

QString CPopObjectList::rootFolder(int type, const QString& caption, bool* found) const {
    const int32_t position =
        orvo::seekPosition(folderTable, 1, KeyValues().integer(type).null().text(caption));
    *found = position >= 0;
    QString key;
    orvo::walkFrom(folderTable, 1, position, [&](MDRData* record) {
        if (orvo::integerOf(record, orvo::field::type_) != type)
            return false;
        if (!orvo::holdsText(record, orvo::field::caption, caption))
            return true;
        key = orvo::textOf(record, orvo::field::KeyLink);
        return false;
    });
    return key;
}

void CPopObjectList::preselect(int type) {
    orvo::walkGroup(resourceTable, 2, KeyValues().integer(type).text(chosenName),
                    [&](MDRData* record) {
                        if (orvo::integerOf(record, orvo::field::type_) != type)
                            return false;
                        if (!orvo::holdsText(record, orvo::field::name_, chosenName))
                            return true;
                        const QString key = orvo::textOf(record, orvo::field::KeyLink);
                        const QModelIndex row = treeModel->findIndexByKey(key);
                        if (!row.isValid())
                            return true;
                        chosenKey = key;
                        m_ui->tvObj->scrollTo(row, QAbstractItemView::EnsureVisible);
                        m_ui->tvObj->selectionModel()->setCurrentIndex(
                            row, QItemSelectionModel::NoUpdate); // keys go on from there
                        m_ui->tvObj->selectionModel()->select(row, QItemSelectionModel::Select |
                                                                       QItemSelectionModel::Rows);
                        return false;
                    });
}
