// Fields.h: the columns of the resource tree with the fields of the two records behind its rows, a
// resource's and a folder's. Filling a row, its passport, saving and merging go through them.
#ifndef ORVO_RESOURCES_FIELDS_H
#define ORVO_RESOURCES_FIELDS_H

#include "editor/RecordRows.h"

namespace orvo::resources {

/// Of `MenuResource`. They name all columns of the tree.
const editor::RecordFields& itemFields();
/// Of `MenuResourceFolder`.
const editor::RecordFields& folderFields();
/// Those behind a row.
const editor::RecordFields& fieldsOf(const QModelIndex& row);

/// What the row of a resource shows that nobody has locked, and that of a folder.
const editor::RecordRows& itemRows();
const editor::RecordRows& folderRows();

} // namespace orvo::resources

#endif
