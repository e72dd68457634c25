// DesckEdit.h: the edit of a desktop or of a folder of desktops: a new one, which stands in the
// tree as a placeholder, or a new name for an existing one. The name is typed in the tree itself.
//
// Invariants, beside those of RecordEdit and asserted in debug builds:
// 1. It is open if, and only if, the mode is NewDesck or RenameDesck.
// 2. Closed, it has no key.
#ifndef ORVO_MENU_DESCKEDIT_H
#define ORVO_MENU_DESCKEDIT_H

#include "editor/RecordEdit.h"
#include "frame/OrvoMdx.h"
#include "menu/OpenEdit.h"

#include <QString>

class DesckTreeModel;

namespace orvo {
class RowWriter;
}

namespace orvo::menu {

class DesckEdit : public editor::RecordEdit {
public:
    /// Both outlive the edit.
    DesckEdit(OpenEdit& open, const editor::RecordFields& fields);

    // Transitions, as in RecordEdit.

    void beginNew(const QModelIndex& placeholder, const QString& key);
    void begin(const QModelIndex& row, const QString& key);
    /// The engineer has typed a name into the row.
    void type(const QString& name);
    /// The name of a new row stays as it is typed.
    std::vector<editor::Replaced> merge(DesckTreeModel& model, const QModelIndex& row,
                                        const Notification& change, const MDRData* record);
    void end();

    /// The record of the new row, or the new name of the existing one, on its way to the server.
    void write(RowWriter& record);

private:
    void check() const;

    OpenEdit& m_open;
    const editor::RecordFields& m_fields;
    QString m_shown; ///< the name that the row had at the beginning
};

} // namespace orvo::menu

#endif
