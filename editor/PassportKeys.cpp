#include "editor/PassportKeys.h"

#include "frame/Keys.h"
#include "models/MyButtonEdit.h"
#include "models/PropModel.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QMouseEvent>
#include <QTreeView>

namespace orvo::editor {
namespace {

bool movesTheCurrentRow(int key) {
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        return true;
    default:
        return false;
    }
}

bool isPlain(const QKeyEvent& event) {
    return !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
}

bool isByKey(const QFocusEvent& event) {
    return event.reason() == Qt::TabFocusReason || event.reason() == Qt::BacktabFocusReason ||
           event.reason() == Qt::ShortcutFocusReason;
}

bool hasEditor(const QModelIndex& value) {
    return value.isValid() && value.siblingAtColumn(PropColumn::Editor).data().isValid();
}

} // namespace

PassportKeys::PassportKeys(QTreeView* passport)
    : QObject(passport)
    , m_view(passport)
    , m_viewport(passport->viewport()) {
    passport->installEventFilter(this);
    passport->viewport()->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, &PassportKeys::getKeysFirst);
    // A view that has taken a field's text makes its delegate the first to get the keys again.
    connect(passport->itemDelegate(), &QAbstractItemDelegate::commitData, this,
            &PassportKeys::getKeysFirst);
    connect(passport->model(), &QAbstractItemModel::rowsAboutToBeRemoved, this,
            &PassportKeys::rememberRow);
    // Queued: the rows have their values and are expanded then.
    connect(passport->model(), &QAbstractItemModel::rowsInserted, this, &PassportKeys::returnToRow,
            Qt::QueuedConnection);
}

bool PassportKeys::hasFocus() const {
    return m_view->hasFocus() || openField();
}

void PassportKeys::rememberRow() {
    const QModelIndex value = currentValue();
    if (hasFocus() && hasEditor(value))
        m_row = value.siblingAtColumn(PropColumn::Name).data().toString();
    else if (!hasFocus())
        m_row.clear();
}

void PassportKeys::returnToRow() {
    const auto* model = qobject_cast<const PropModel*>(m_view->model());
    if (m_row.isEmpty() || !model || !m_view->hasFocus() || hasEditor(currentValue()))
        return;
    const QModelIndex row = model->findIndexByKey(m_row);
    if (row.isValid())
        goTo(row.siblingAtColumn(PropColumn::Value), false);
    m_row.clear();
}

QWidget* PassportKeys::openField() const {
    QWidget* focused = QApplication::focusWidget();
    return focused && focused->parentWidget() == m_viewport ? focused : nullptr;
}

void PassportKeys::closeField() {
    if (openField())
        m_view->setFocus();
}

void PassportKeys::getKeysFirst() {
    QWidget* field = openField();
    if (!field)
        return;
    field->removeEventFilter(this);
    field->installEventFilter(this);
}

bool PassportKeys::isOfType(const QModelIndex& value, int type) {
    return hasEditor(value) && value.siblingAtColumn(PropColumn::Editor).data().toInt() == type;
}

bool PassportKeys::mayWrite() const {
    return m_view->editTriggers() != QAbstractItemView::NoEditTriggers;
}

QModelIndex PassportKeys::currentValue() const {
    return m_view->currentIndex().siblingAtColumn(PropColumn::Value);
}

bool PassportKeys::mayEdit() const {
    return hasEditor(currentValue()) && mayWrite() && !mayToggle();
}

QModelIndex PassportKeys::nextValue(const QModelIndex& from, int by) const {
    const auto isWanted = [](const QModelIndex& value) {
        return hasEditor(value) && !value.siblingAtColumn(PropColumn::ReadOnly).data().toBool();
    };
    QModelIndex row = from.siblingAtColumn(0);
    if (!row.isValid() && m_view->model())
        row = m_view->model()->index(0, 0);
    else
        row = by > 0 ? m_view->indexBelow(row) : m_view->indexAbove(row);
    while (row.isValid() && !isWanted(row.siblingAtColumn(PropColumn::Value)))
        row = by > 0 ? m_view->indexBelow(row) : m_view->indexAbove(row);
    return row.siblingAtColumn(PropColumn::Value);
}

bool PassportKeys::step(int by) {
    const QModelIndex next = nextValue(currentValue(), by);
    if (!next.isValid())
        return false;
    goTo(next, true);
    return true;
}

void PassportKeys::goTo(const QModelIndex& value, bool opens) {
    const QPersistentModelIndex wanted = value;
    const QAbstractItemView::EditTriggers triggers = m_view->editTriggers();
    m_view->setEditTriggers(triggers & ~QAbstractItemView::CurrentChanged);
    m_view->setFocus(); // out of an open field, whose text is taken
    m_view->setCurrentIndex(wanted);
    m_view->setEditTriggers(triggers);
    if (opens && wanted.isValid() && mayEdit())
        m_view->edit(wanted);
}

void PassportKeys::editValue() {
    if (mayEdit())
        goTo(currentValue(), true);
}

void PassportKeys::editRow(const QString& rowName) {
    const auto* model = qobject_cast<const PropModel*>(m_view->model());
    const QModelIndex row = model ? model->findIndexByKey(rowName) : QModelIndex();
    if (row.isValid() && mayWrite())
        goTo(row.siblingAtColumn(PropColumn::Value), true);
}

void PassportKeys::chooseValue() {
    if (!mayChoose())
        return;
    editValue();
    if (auto* edit = qobject_cast<MyButtonEdit*>(m_view->indexWidget(currentValue())))
        edit->pressButton();
}

void PassportKeys::toggleValue() {
    const QModelIndex value = currentValue();
    if (mayToggle())
        m_view->model()->setData(value, !value.data().toBool(), Qt::EditRole);
}

// -------------------------------------------------------------------------------------------------

bool PassportKeys::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_view) {
        if (event->type() == QEvent::KeyPress)
            return viewKey(*static_cast<QKeyEvent*>(event));
        if (event->type() == QEvent::FocusIn && isByKey(*static_cast<QFocusEvent*>(event)) &&
            !hasEditor(currentValue())) {
            const QModelIndex first = nextValue({}, 1);
            if (first.isValid())
                goTo(first, false);
        }
        return false;
    }
    if (watched == m_viewport) {
        if (event->type() == QEvent::MouseButtonPress) {
            const auto* press = static_cast<QMouseEvent*>(event);
            const QModelIndex at = m_view->indexAt(press->pos());
            const QRect cell = m_view->visualRect(at);
            const bool onButton = at.column() == PropColumn::Value &&
                                  isOfType(at, MyEditorButton) &&
                                  press->button() == Qt::LeftButton && mayWrite() &&
                                  press->pos().x() >= cell.right() - cell.height();
            m_pressed = onButton ? at : QModelIndex();
        } else if (event->type() == QEvent::MouseButtonRelease && m_pressed.isValid()) {
            const QPersistentModelIndex pressed = std::exchange(m_pressed, QPersistentModelIndex());
            if (m_view->indexAt(static_cast<QMouseEvent*>(event)->pos()) == pressed)
                if (auto* edit = qobject_cast<MyButtonEdit*>(m_view->indexWidget(pressed)))
                    edit->pressButton();
        }
        return false;
    }
    // A field that goes with its row, as at the echo of a save, leaves the focus in the passport.
    if (event->type() == QEvent::Hide && m_view->isVisible() &&
        qobject_cast<const QWidget*>(watched)->hasFocus())
        m_view->setFocus();
    return event->type() == QEvent::KeyPress && editorKey(*static_cast<QKeyEvent*>(event));
}

bool PassportKeys::viewKey(QKeyEvent& event) {
    const int key = event.key();
    if (movesTheCurrentRow(key) && isPlain(event)) {
        moveCurrent(event);
        return true;
    }
    if (key == Qt::Key_Tab || key == Qt::Key_Backtab)
        return isPlain(event) && step(key == Qt::Key_Tab ? 1 : -1);
    const bool isEnter = (key == Qt::Key_Return || key == Qt::Key_Enter) && isPlain(event);
    if (isEnter && openField()) // it comes from there, and ends it
        return true;
    if (key == Qt::Key_F2 || isEnter) {
        editValue();
        return true;
    }
    if (!isPlain(event) || event.text().isEmpty() || !event.text().at(0).isPrint())
        return false;
    // A letter opens the field and is its first one, wherever in the row the cursor is.
    if (mayEdit() && m_view->currentIndex().column() != PropColumn::Value)
        goTo(currentValue(), false);
    return !mayEdit();
}

void PassportKeys::moveCurrent(QKeyEvent& event) {
    const QModelIndex before = m_view->currentIndex();
    const QAbstractItemView::EditTriggers triggers = m_view->editTriggers();
    m_view->setEditTriggers(triggers & ~QAbstractItemView::CurrentChanged);
    static_cast<QObject*>(m_view)->event(&event);
    m_view->setEditTriggers(triggers);
    const QModelIndex now = m_view->currentIndex();
    if (now != before && now.column() == PropColumn::Value && mayEdit())
        m_view->edit(now);
}

bool PassportKeys::editorKey(QKeyEvent& event) {
    if (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab) {
        // Out of the last field into the row itself: the next Tab leaves.
        if (isPlain(event) && !step(event.key() == Qt::Key_Tab ? 1 : -1))
            goTo(currentValue(), false);
        return isPlain(event);
    }
    if (mayChoose() && keys::matches(event, *keys::command(QLatin1String(keys::choose)))) {
        chooseValue();
        return true;
    }
    return false;
}

} // namespace orvo::editor
