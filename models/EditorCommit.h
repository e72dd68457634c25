// EditorCommit.h: how both delegates write the model at each keystroke.
#ifndef ORVO_MODELS_EDITORCOMMIT_H
#define ORVO_MODELS_EDITORCOMMIT_H

class QAbstractItemDelegate;
class QObject;

namespace orvo {

/// Commits the editor that sent a signal. The view answers by setting the text anew, which would
/// move a line edit's cursor to the end: it is put back. Nothing happens for a sender that is no
/// widget.
void commitEditor(QAbstractItemDelegate& delegate, QObject* sender);

} // namespace orvo

#endif
