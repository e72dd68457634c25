#include "resources/DeletionChecks.h"

#include "editor/EditorWindow.h"
#include "frame/Records.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"
#include "resources/ResourceNames.h"

namespace orvo::resources {
namespace {

// Keys of the server
constexpr int menuResourceKey = 2;   ///< of `Menu` by `MenuResourceKey`
constexpr int resourceFolderKey = 3; ///< of `MenuResource` by `MenuResourceFolderKey`
constexpr int folderParentKey = 3;   ///< of `MenuResourceFolder` by `ParentKey`

} // namespace

DeletionChecks::DeletionChecks(editor::EditorWindow& window, const ResourceNames& names,
                               const CMDArray& resources, const CMDArray& folders)
    : m_window(window)
    , m_names(names)
    , m_resources(resources)
    , m_folders(folders) {}

bool DeletionChecks::isEmptyFolder(const QModelIndex& folder) const {
    const QString key = textAt(folder, ResColumn::KeyLink);
    const auto holds = [&](const CMDArray& table, const char* link) {
        bool found = false;
        walkGroup(table, 3, KeyValues().text(key), [&](const MDRData* record) {
            found = holdsText(record, link, key);
            return false;
        });
        return found;
    };
    return folder.model()->rowCount(folder) == 0 && !holds(m_folders, field::ParentKey) &&
           !holds(m_resources, field::MenuResourceFolderKey) &&
           !hasRecords(table::MenuResourceFolder, folderParentKey, key) &&
           !hasRecords(table::MenuResource, resourceFolderKey, key);
}

bool DeletionChecks::isInMenus(const QModelIndex& row) const {
    QStringList elements;
    lookUp(table::Menu, menuResourceKey, textAt(row, ResColumn::KeyLink),
           [&](const CMDArray& found) {
               walkAll(found, 0, [&](const MDRData* record) {
                   elements << Text::tr("«%1»").arg(textOf(record, field::caption));
                   return true;
               });
           });
    if (!elements.isEmpty())
        m_window.m_app->m_logModule->LogFile(
            5, QStringLiteral("OrvoResources::removeResourceMessage"),
            tr("%1: ссылаются элементы меню: %2")
                .arg(m_names.describe(row), nameLines(elements).replace('\n', ", ")));
    return !elements.isEmpty();
}

bool DeletionChecks::hasRecords(const char* table, int keyNumber, const QString& key) const {
    bool found = false;
    lookUp(table, keyNumber, key,
           [&](const CMDArray& records) { found = recordCount(records) > 0; });
    return found;
}

void DeletionChecks::lookUp(const char* table, int keyNumber, const QString& key,
                            const std::function<void(const CMDArray& found)>& use) const {
    const QByteArray bytes = toRecord(key); // outlives the tool's run
    CToolRecByKey tool(&m_window);
    tool.tableName = table;
    tool.keyNumber = keyNumber;
    tool.keyValues.append(textVar(bytes));
    tool.keyBits.setBit(0);
    tool.Perform(false);
    use(tool.result);
}

} // namespace orvo::resources
