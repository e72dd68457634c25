// Moving rows to another folder: cut and paste, and drops.
#include "resources/OrvoResources.h"

void OrvoResources::on_actCut_triggered() {}
void OrvoResources::on_actPaste_triggered() {}
void OrvoResources::on_res_dragdrop(const QModelIndex&, QStringList) {}
void OrvoResources::on_clipboardDataChanged() {}
