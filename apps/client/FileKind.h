// FileKind.h: whether a stored file can be shown to an operator, or only be given to him.
#ifndef ORVO_APPS_CLIENT_FILEKIND_H
#define ORVO_APPS_CLIENT_FILEKIND_H

#include "platform/store/Store.h"

namespace orvo::app {

/// Whether the viewer of files (FormViewer.h) has more to show of it than its bytes: a picture, by
/// its name; a PDF or a text, by its bytes. Nothing here trusts the bytes or reads far into them.
bool canBeShown(const store::StoredFile& file);

} // namespace orvo::app

#endif
