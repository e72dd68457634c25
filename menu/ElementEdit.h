// ElementEdit.h: the edit of a menu element: of a new folder, which is in the tree as a
// placeholder, or of the values of an existing element. Beside what every edit has it knows where
// an own move that has not come back yet puts the element.
//
// Invariants, beside those of RecordEdit and asserted in debug builds:
// 1. It is open if, and only if, the mode is NewElement or EditElement.
// 2. Closed, it has no key and no pending place.
// 3. Typed values and a pending place are an existing element's: what is typed for a new folder
//    is in its placeholder alone.
#ifndef ORVO_MENU_ELEMENTEDIT_H
#define ORVO_MENU_ELEMENTEDIT_H

#include "editor/RecordEdit.h"
#include "frame/OrvoMdx.h"
#include "menu/OpenEdit.h"

#include <QString>

#include <optional>

class MenuTreeModel;

namespace orvo {
class RowWriter;
}

namespace orvo::menu {

class ElementEdit : public editor::RecordEdit {
public:
    /// Both outlive the edit.
    ElementEdit(OpenEdit& open, const editor::RecordFields& fields);

    /// Whether it is the edit of that existing element.
    bool changes(const QString& key) const;
    /// The row of the element, wherever it is now; invalid if it is gone.
    QModelIndex row(const MenuTreeModel& model) const;

    // Transitions, as in RecordEdit.

    void beginNew(const QModelIndex& placeholder, const QString& key);
    void begin(const QModelIndex& row, const QString& key);
    /// The engineer typed a value into the row of an existing element or of a placeholder.
    void change(MenuTreeModel& model, const QModelIndex& row, int column, const QVariant& value);
    /// An own write of the element's place is on its way. A save that goes out before it comes back
    /// writes the same, and no other edit is concerned.
    void sendsPlace(const QString& key, int order);
    void sendsPlace(const QString& key, int order, const QString& parent);
    std::vector<editor::Replaced> merge(MenuTreeModel& model, const QModelIndex& row,
                                        const Notification& change, const MDRData* record);
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
    std::optional<Place> m_place; ///< sent, and not come back yet
};

} // namespace orvo::menu

#endif
