// DesckRows.h: rows of tvDesck from the records of `MenuFolder`. Their order is not computed here:
// it comes from the keys of the table, those of orvo::keylist::MenuFolder.
#ifndef ORVO_MENU_DESCKROWS_H
#define ORVO_MENU_DESCKROWS_H

#include "frame/OrvoMdx.h"
#include "models/models.h"

#include <QModelIndex>
#include <QString>

#include <cstdint>
#include <vector>

namespace orvo::menu {

/// The row of a record; invalid for the key of the root row, which stands for none.
QModelIndex desckRow(const DesckTreeModel& model, const QString& key);

/// All folders and desktops, as rows at the top of the batch and below.
void addAllDescks(const CMDArray& table, DesckTreeModel::Batch& rows);
/// Rows for the sub-folders or the desktops of `parentKey`, below `parent` or at the top of the
/// batch; gives the new rows.
std::vector<TabRec*> addDescks(const CMDArray& table, DesckTreeModel::Batch& rows, TabRec* parent,
                               const QString& parentKey, bool folders);
/// All that lies below a folder of the batch. A folder that is its own ancestor is shown and not
/// entered again.
void addDescksBelow(const CMDArray& table, DesckTreeModel::Batch& rows, TabRec* folder);

/// The place of a record among its siblings in table order, which is the row it must have. For a
/// key that is not among them that of the last sibling; -1 if there is no sibling.
int32_t desckPosition(const CMDArray& table, const QString& key, const QString& parentKey,
                      bool atTopLevel);

} // namespace orvo::menu

#endif
