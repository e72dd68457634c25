#include "editor/PassportKeys.h"

#include "models/PropModel.h"

#include <QKeyEvent>
#include <QTreeView>

namespace orvo::editor {
namespace {

constexpr int valueColumn = 1;
constexpr int editorColumn = 2;

bool movesTheCurrentRow(int key) {
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        return true;
    default:
        return false;
    }
}

class MoveKeys : public QObject {
public:
    explicit MoveKeys(QTreeView* view) : QObject(view) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* view = qobject_cast<QTreeView*>(watched);
        if (!view || event->type() != QEvent::KeyPress ||
            !movesTheCurrentRow(static_cast<QKeyEvent*>(event)->key()))
            return false;
        const QModelIndex before = view->currentIndex();
        const QAbstractItemView::EditTriggers triggers = view->editTriggers();
        view->setEditTriggers(triggers & ~QAbstractItemView::CurrentChanged);
        watched->event(event);
        view->setEditTriggers(triggers);
        const QModelIndex now = view->currentIndex();
        if (triggers != QAbstractItemView::NoEditTriggers && now != before &&
            now.column() == valueColumn && now.siblingAtColumn(editorColumn).data().isValid() &&
            now.siblingAtColumn(editorColumn).data().toInt() != MyEditorCheck)
            view->edit(now);
        return true;
    }
};

} // namespace

void passFlagsByKeys(QTreeView* passport) {
    passport->installEventFilter(new MoveKeys(passport)); // the view's child
}

} // namespace orvo::editor
