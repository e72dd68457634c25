#include "models/EditorCommit.h"

#include <QAbstractItemDelegate>
#include <QLineEdit>
#include <QPointer>

namespace orvo {

void commitEditor(QAbstractItemDelegate& delegate, QObject* sender) {
    auto* editor = qobject_cast<QWidget*>(sender);
    if (!editor)
        return;
    // The commit may end in anything, the editor's own end included.
    const QPointer<QLineEdit> line = qobject_cast<QLineEdit*>(editor);
    const int cursor = line ? line->cursorPosition() : 0;
    emit delegate.commitData(editor);
    if (line)
        line->setCursorPosition(cursor);
}

} // namespace orvo
