#include "platform/client/ActionGroup.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>
#include <QThread>

namespace orvo::client {

namespace {

bool inBareLoop() {
    return QThread::currentThread()->loopLevel() <= 1;
}

} // namespace

void ActionGroup::wrote(int64_t first) {
    if (m_group != 0 || first <= 0)
        return;
    m_group = first;
    if (m_watching || !QCoreApplication::instance())
        return;
    m_watching = true;
    QCoreApplication::instance()->installEventFilter(this);
    // A loop that asks something inside of the action has its own turns.
    const QAbstractEventDispatcher* loop = QAbstractEventDispatcher::instance();
    connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, &ActionGroup::turn);
    connect(loop, &QAbstractEventDispatcher::awake, this, &ActionGroup::turn);
}

void ActionGroup::turn() {
    if (m_group != 0 && inBareLoop())
        m_group = 0;
}

/// Several keys may be waiting, and are then handled without anything between them.
bool ActionGroup::eventFilter(QObject* object, QEvent* event) {
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (m_group != 0 && event->spontaneous() && inBareLoop())
            m_group = 0;
        break;
    default:
        break;
    }
    return QObject::eventFilter(object, event);
}

} // namespace orvo::client
