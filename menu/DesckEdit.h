// DesckEdit.h: the edit of a desktop or of a folder of desktops: a new one, which stands in the
// tree as a placeholder, or a new name for an existing one. The name is typed in the tree itself.
//
// Invariants, asserted in debug builds:
// 1. It is open if, and only if, the mode is NewDesck or RenameDesck; then the key is that of the
//    row, and not empty.
// 2. Closed, it has no row, no key and no typed name.
#ifndef ORVO_MENU_DESCKEDIT_H
#define ORVO_MENU_DESCKEDIT_H

#include "editor/TypedValues.h"
#include "frame/OrvoMdx.h"
#include "menu/OpenEdit.h"

#include <QPersistentModelIndex>
#include <QSet>
#include <QString>

class DesckTreeModel;

namespace orvo {
class Notification;
class RowWriter;
} // namespace orvo

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
    /// Whether the row of that key was new and has been sent: until its record comes back it looks
    /// like a placeholder.
    bool wasSent(const QString& key) const { return m_sent.contains(key.toCaseFolded()); }

    // Transitions. begin: from no edit; the others but end() need an open one.

    /// A placeholder has been put into the tree.
    void beginNew(const QModelIndex& placeholder, const QString& key);
    void beginRename(const QModelIndex& row, const QString& key);
    /// Another placeholder has become current and is saved in place of the first.
    void takePlaceholder(const QModelIndex& placeholder, const QString& key);
    /// The engineer has typed a name into the row.
    void type(const QString& name);
    /// A change of the row's record has entered the table and been written into `row`: a typed name
    /// that it does not overtake goes back there. Nothing for any other record.
    void merge(DesckTreeModel& model, const QModelIndex& row, const MDRData* record,
               const Notification& change);
    /// Ends it; nothing is written. Also when none is open.
    void end();

    /// The record of the new row, or the new name of the existing one, on its way to the server.
    void write(RowWriter& record);

private:
    void check() const;

    OpenEdit& m_open;
    const editor::RecordFields& m_fields;
    QString m_key;
    QPersistentModelIndex m_row;
    QString m_shown; ///< the name that the row had at the beginning
    editor::TypedValues m_typed;
    QSet<QString> m_sent; ///< keys of new rows that were saved
};

} // namespace orvo::menu

#endif
