// ElementEdit.h: the edit of a menu element: of a new folder, which stands in the tree as a
// placeholder, or of the values of an existing element. It owns what is edited and what was typed;
// the window tells it what the engineer and the server do.
//
// Invariants, asserted in debug builds:
// 1. It is open if, and only if, the mode is NewElement or EditElement; then the key is that of the
//    element, and not empty.
// 2. Closed, it has no row, no key, no typed values and no pending place.
// 3. Typed values and a pending place are an existing element's: what is typed for a new folder
//    stands in its placeholder alone.
#ifndef ORVO_MENU_ELEMENTEDIT_H
#define ORVO_MENU_ELEMENTEDIT_H

#include "editor/TypedValues.h"
#include "frame/OrvoMdx.h"
#include "menu/OpenEdit.h"

#include <QPersistentModelIndex>
#include <QSet>
#include <QString>

#include <optional>

class MenuTreeModel;

namespace orvo {
class Notification;
class RowWriter;
} // namespace orvo

namespace orvo::editor {
class RecordFields;
}

namespace orvo::menu {

class ElementEdit {
public:
    /// Both outlive the edit.
    ElementEdit(OpenEdit& open, const editor::RecordFields& fields);

    bool isOpen() const;
    bool isNew() const { return m_open.m_mode == NewElement; }
    /// Whether the row of that key was new and has been sent: until its record comes back it looks
    /// like a placeholder.
    bool wasSent(const QString& key) const { return m_sent.contains(key.toCaseFolded()); }
    /// Whether it is the edit of that existing element.
    bool changes(const QString& key) const;
    const QString& key() const { return m_key; }
    /// The row it began on; invalid once that is gone or was made anew in another place.
    const QPersistentModelIndex& index() const { return m_row; }
    /// The row of the element, wherever it is now; invalid if it is gone.
    QModelIndex row(const MenuTreeModel& model) const;

    // Transitions. begin: from no edit; the others but end() need an open one.

    /// A placeholder has been put into the tree.
    void beginNew(const QModelIndex& placeholder, const QString& key);
    void beginChange(const QModelIndex& row, const QString& key);
    /// Another placeholder has become current and is saved in place of the first.
    void takePlaceholder(const QModelIndex& placeholder, const QString& key);
    /// The engineer typed a value into the row of an existing element or of a placeholder.
    void change(MenuTreeModel& model, const QModelIndex& row, int column, const QVariant& value);
    /// An own write of the element's place is on its way. A save that goes out before it comes back
    /// writes the same, and no other edit is concerned.
    void sendsPlace(const QString& key, int order);
    void sendsPlace(const QString& key, int order, const QString& parent);
    /// A change of the element has entered the table, and its row has been written anew: what was
    /// typed and is not overtaken goes back into it. Nothing for any other element.
    void merge(MenuTreeModel& model, const QModelIndex& row, const MDRData* record,
               const Notification& change);
    /// Ends it; nothing is written. Also when none is open.
    void end();

    /// Every field of the element's row, on its way to the server.
    void write(const MenuTreeModel& model, const QModelIndex& row, RowWriter& record);

private:
    struct Place {
        int order;
        std::optional<QString> parent; ///< nothing: the one that it has
    };

    void writeParent(const MenuTreeModel& model, const QModelIndex& row, RowWriter& record) const;
    void check() const;

    OpenEdit& m_open;
    const editor::RecordFields& m_fields;
    QString m_key;
    QPersistentModelIndex m_row;
    editor::TypedValues m_typed;
    std::optional<Place> m_place; ///< sent, and not come back yet
    QSet<QString> m_sent;         ///< keys of new rows that were saved
};

} // namespace orvo::menu

#endif
