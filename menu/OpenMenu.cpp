#include "menu/OpenMenu.h"

#include "editor/EditorWindow.h"
#include "frame/CommonFunctions.h"
#include "frame/FolderWalk.h"
#include "frame/Records.h"
#include "frame/Siblings.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"

#include <cassert>
#include <limits>

namespace orvo::menu {

OpenMenu::OpenMenu(const editor::EditorWindow& window, CMDArray& records, const CMDArray& resources,
                   const editor::RecordFields& fields, const std::unique_ptr<MenuTreeModel>& tree,
                   const QString& currentDesck)
    : m_window(window)
    , m_records(records)
    , m_resources(resources)
    , m_fields(fields)
    , m_tree(tree)
    , m_currentDesck(currentDesck) {}

MenuTreeModel& OpenMenu::tree() const {
    assert(m_tree);
    return *m_tree;
}

QString OpenMenu::desckKey() const {
    return m_desckKey.isNull() ? m_currentDesck : m_desckKey;
}

MDArray* OpenMenu::request(const QString& desckKey) const {
    const QByteArray sql =
        toRecord(QStringLiteral("select * from Menu where FolderKey = '%1'").arg(desckKey));
    return m_window.m_app->m_session->SqlRequest(sql.constData());
}

void OpenMenu::fetch(const QString& desckKey) {
    MDArray* fetched = request(desckKey);
    if (fetched)
        m_desckKey = desckKey;
    m_records.Attach(fetched);
    setKeys(m_records, keylist::Menu);
    assert(!fetched || m_records.array->keyCount == 2);
}

QModelIndex OpenMenu::elementRow(const QString& key) const {
    // The model answers an empty key with the root row, and with it the whole menu would go.
    return key.isEmpty() ? QModelIndex() : tree().findIndexByKey(key);
}

QModelIndex OpenMenu::recordRow(const QString& key) const {
    return sameText(key, QString::fromLatin1(menuRootKey)) ? QModelIndex() : elementRow(key);
}

QVector<QVariant> OpenMenu::values(const MDRData* record) const {
    QVector<QVariant> values = m_fields.values(record);
    const QString resourceKey = values[MenuColumn::MenuResKey].toString();
    values.replace(MenuColumn::IsNew, false);
    if (resourceKey.isEmpty()) {
        values.replace(MenuColumn::Type, convertMenuAttributes(0));
    } else if (const MDRData* resource = seekKey(m_resources, resourceKey)) {
        values.replace(MenuColumn::Type, convertMenuAttributes(integerOf(resource, field::type_)));
        values.replace(MenuColumn::Command, textOf(resource, field::name_));
    }
    return values;
}

void OpenMenu::fillRow(const QModelIndex& parent, int row, const MDRData* record) {
    setRow(tree(), tree().index(row, 0, parent), values(record));
}

bool OpenMenu::addAll(const QModelIndex& root) {
    const int32_t position = seekPosition(m_records, 1, KeyValues());
    if (position == -1)
        return false;
    addTree(root, QString(), position);
    return true;
}

void OpenMenu::addFolder(const QModelIndex& folder, const QString& key) {
    addTree(folder, key, seekPosition(m_records, 1, KeyValues().text(key)));
}

/// The elements of a folder with all that lies below them, as the content of the row `parent`.
void OpenMenu::addTree(const QModelIndex& parent, const QString& key, int32_t position) {
    auto rows = tree().newRows(parent);
    walkFolders(
        Folder{nullptr, key}, [](const Folder& folder) { return folder.key; },
        [&](const Folder& folder) {
            const bool isTop = !folder.row && folder.key == key;
            return addRows(rows, folder,
                           isTop ? position
                                 : seekPosition(m_records, 1, KeyValues().text(folder.key)));
        });
    tree().insertFilledRows(tree().rowCount(parent), std::move(rows), parent);
}

/// Rows for the elements of a folder, from that position of key 1 on; gives the folders among them.
std::vector<OpenMenu::Folder> OpenMenu::addRows(MenuTreeModel::Batch& rows, const Folder& folder,
                                                int32_t position) const {
    std::vector<Folder> folders;
    walkFrom(m_records, 1, position, [&](const MDRData* record) {
        if (!holdsText(record, field::parent, folder.key))
            return false;
        const QVector<QVariant> columns = values(record);
        TabRec* row = rows.add(columns, folder.row);
        if (sameText(columns[MenuColumn::Type].toString(), convertMenuAttributes(0)))
            folders.push_back({row, columns[MenuColumn::KeyLink].toString()});
        return true;
    });
    return folders;
}

int32_t OpenMenu::position(const QString& key, const QString& parentKey) const {
    const MDRData* own = seekKey(m_records, key);
    KeyValues exact;
    addField(exact, own, field::parent);
    addField(exact, own, field::order_);
    return siblingPosition(
        m_records, 1, KeyValues().textOrNull(parentKey), key, own, exact,
        [&](const MDRData* record) { return holdsText(record, field::parent, parentKey); });
}

int32_t OpenMenu::lastOrder(const QString& parent) const {
    KeyValues end;
    if (parent.isNull())
        end.null();
    else
        end.text(parent);
    end.integer(std::numeric_limits<int32_t>::max());
    const auto isChild = [&](const MDRData* record) {
        return parent.isNull() ? isNull(record, field::parent)
                               : holdsText(record, field::parent, parent);
    };
    // The key ends in `order_`: the last child stands before the first record behind the group.
    const int32_t behind = seekPosition(m_records, 1, end);
    int32_t last = (behind < 0 ? recordCount(m_records) : behind) - 1;
    walkFrom(m_records, 1, behind, [&](const MDRData* record) {
        const bool child = isChild(record); // of the highest order there is
        last += child ? 1 : 0;
        return child;
    });
    const MDRData* record = last < 0 ? nullptr : MDARec(m_records.array, 1, last);
    return record && isChild(record) ? integerOf(record, field::order_) : 0;
}

int OpenMenu::nextOrder(const QModelIndex& parent) const {
    const int children = tree().rowCount(parent);
    return children == 0
               ? 0
               : nextOrderAfter(
                     tree().index(children - 1, MenuColumn::Order, parent).data().toInt());
}

} // namespace orvo::menu
