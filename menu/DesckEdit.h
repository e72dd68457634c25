// DesckEdit.h: the edit of a desktop or of a folder of desktops: a new one, which stands in the
// tree as a placeholder, or a new name for an existing one. The name is typed in the tree itself.
//
// Invariants, asserted in debug builds:
// 1. It is open if, and only if, the mode is NewDesck or RenameDesck; then the key is that of the
//    row, and not empty.
// 2. Closed, it has no row and no key.
#ifndef ORVO_MENU_DESCKEDIT_H
#define ORVO_MENU_DESCKEDIT_H

#include "menu/OpenEdit.h"

#include <QPersistentModelIndex>
#include <QString>

namespace orvo {
class RowWriter;
}

namespace orvo::editor {
class RecordFields;
}

namespace orvo::menu {

class DesckEdit {
public:
    /// Both outlive the edit.
    DesckEdit(OpenEdit& open, const editor::RecordFields& fields);

    bool isOpen() const;
    bool isNew() const { return m_open.m_mode == NewDesck; }
    /// The row; invalid once it is gone.
    const QPersistentModelIndex& index() const { return m_row; }
    const QString& key() const { return m_key; }

    // Transitions. begin: from no edit; the others but end() need an open one.

    /// A placeholder has been put into the tree.
    void beginNew(const QModelIndex& placeholder, const QString& key);
    void beginRename(const QModelIndex& row, const QString& key);
    /// Another placeholder has become current and is saved in place of the first.
    void takePlaceholder(const QModelIndex& placeholder, const QString& key);
    /// Ends it; nothing is written. Also when none is open.
    void end();

    /// The record of the new row, or the new name of the existing one.
    void write(RowWriter& record) const;

private:
    void check() const;

    OpenEdit& m_open;
    const editor::RecordFields& m_fields;
    QString m_key;
    QPersistentModelIndex m_row;
};

} // namespace orvo::menu

#endif
