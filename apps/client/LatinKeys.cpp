#include "apps/client/LatinKeys.h"

#include "frame/Keys.h"

#include <QAction>
#include <QActionEvent>
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace orvo::app {

namespace {

void addTwins(QAction& action) {
    QList<QKeySequence> all = action.shortcuts();
    for (const QKeySequence& one : action.shortcuts())
        for (const QKeySequence& twin : keys::sequences(one.toString(QKeySequence::PortableText)))
            if (!all.contains(twin))
                all << twin;
    if (all != action.shortcuts())
        action.setShortcuts(all);
}

bool isTextField(const QObject* watched) {
    return qobject_cast<const QLineEdit*>(watched) || qobject_cast<const QTextEdit*>(watched) ||
           qobject_cast<const QPlainTextEdit*>(watched);
}

} // namespace

void LatinKeys::install() {
    qApp->installEventFilter(new LatinKeys(qApp));
}

bool LatinKeys::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::ActionAdded:
    case QEvent::ActionChanged:
        addTwins(*static_cast<QActionEvent*>(event)->action());
        return false;
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress: {
        const auto& key = *static_cast<QKeyEvent*>(event);
        const int latin = keys::latinKey(key.key());
        if (latin == key.key() || !(key.modifiers() & Qt::ControlModifier) || !isTextField(watched))
            return false;
        QKeyEvent same(key.type(), latin, key.modifiers(), QString(), key.isAutoRepeat(),
                       static_cast<ushort>(key.count()));
        same.setAccepted(key.isAccepted());
        QCoreApplication::sendEvent(watched, &same);
        event->setAccepted(same.isAccepted());
        return same.isAccepted();
    }
    default:
        return false;
    }
}

} // namespace orvo::app
