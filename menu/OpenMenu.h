// OpenMenu.h: the menu that stands in tvMenu: the elements of one desktop, as records and as rows.
// Its order comes from the key "parent;order_" of `Menu`.
//
// It owns which desktop that is. The records, the catalogue, the fields and the tree are the
// window's and outlive it. There is a tree once the window has started; what works on rows needs
// it.
//
// Invariants; 1 and 2 are asserted in debug builds:
// 1. From the first fetch() that was answered on the records have the keys 0 KeyLink and
//    1 parent;order_, and no other.
// 2. No row is asked for before there is a tree.
// 3. The records change as a whole by fetch() alone, which remembers the desktop with them; after a
//    fetch that failed both stay what they were.
#ifndef ORVO_MENU_OPENMENU_H
#define ORVO_MENU_OPENMENU_H

#include "editor/RecordFields.h"
#include "frame/OrvoMdx.h"
#include "models/models.h"

#include <QModelIndex>
#include <QString>
#include <QVariant>
#include <QVector>

#include <cstdint>
#include <memory>
#include <vector>

namespace orvo::editor {
class EditorWindow;
}

namespace orvo::menu {

class OpenMenu {
public:
    /// All of these outlive it; `tree` may still be null, `currentDesck` is the key of the current
    /// row of tvDesck.
    OpenMenu(const editor::EditorWindow& window, CMDArray& records, const CMDArray& resources,
             const editor::RecordFields& fields, const std::unique_ptr<MenuTreeModel>& tree,
             const QString& currentDesck);

    const CMDArray& records() const { return m_records; }
    const CMDArray& resources() const { return m_resources; }
    const editor::RecordFields& fields() const { return m_fields; }
    bool hasTree() const { return m_tree != nullptr; }
    MenuTreeModel& tree() const;

    /// The desktop whose elements these are: the current one, as long as its elements came when it
    /// was made current and no new element kept the menu of another.
    QString desckKey() const;
    /// From now on it is the current one.
    void forgetDesck() { m_desckKey.clear(); }
    /// The elements of a desktop from the server, the caller's; null if it does not answer.
    MDArray* request(const QString& desckKey) const;
    /// Fetches the elements of a desktop in place of those that are here. The rows stay.
    void fetch(const QString& desckKey);

    /// The row of an element, the root row for its key; invalid for an empty key.
    QModelIndex elementRow(const QString& key) const;
    /// The row of a record; invalid for the key of the root row, which stands for none.
    QModelIndex recordRow(const QString& key) const;
    /// The columns of an element; invalid where a row keeps what it has.
    QVector<QVariant> values(const MDRData* record) const;
    /// Writes a record into an existing row.
    void fillRow(const QModelIndex& parent, int row, const MDRData* record);
    /// Rows for all elements, below the root row. False if there are none.
    bool addAll(const QModelIndex& root);
    /// Rows for the elements of the folder of that key, with all that lies below them.
    void addFolder(const QModelIndex& folder, const QString& key);

    /// The place of a record among its siblings in table order. For a key that is not among them
    /// that of the last sibling; -1 if there is no sibling.
    int32_t position(const QString& key, const QString& parentKey) const;
    /// The `order_` of the last child of a row; the null string is the top of the menu. 0 without
    /// children.
    int32_t lastOrder(const QString& parent) const;
    /// The `order_` of a new last row below that one.
    int nextOrder(const QModelIndex& parent) const;

private:
    struct Folder {
        TabRec* row; ///< null: the row that the batch will hang below
        QString key;
    };
    std::vector<Folder> addRows(MenuTreeModel::Batch& rows, const Folder& folder,
                                int32_t position) const;
    void addTree(const QModelIndex& parent, const QString& key, int32_t position);

    const editor::EditorWindow& m_window;
    CMDArray& m_records;
    const CMDArray& m_resources;
    const editor::RecordFields& m_fields;
    const std::unique_ptr<MenuTreeModel>& m_tree;
    const QString& m_currentDesck;
    QString m_desckKey; ///< null: the current one
};

} // namespace orvo::menu

#endif
