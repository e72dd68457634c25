// PassportKeys.h: moving through a passport by keys.
#ifndef ORVO_EDITOR_PASSPORTKEYS_H
#define ORVO_EDITOR_PASSPORTKEYS_H

class QTreeView;

namespace orvo::editor {

/// The keys that move the current row of a passport open no check box: its editor turns the value
/// over as it opens, so that going past it would change the record. The other rows open as before,
/// and a check box by a click, F2 or the space bar. The view shows a PropModel.
void passFlagsByKeys(QTreeView* passport);

} // namespace orvo::editor

#endif
