#include "apps/client/FocusMark.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QCommandLinkButton>
#include <QEvent>
#include <QPainter>

namespace orvo::app {

namespace {

constexpr int thickness = 2;

/// The part that has the focus, itself or in one of its fields; null for buttons and the like,
/// which show it themselves. A button with a description does not in every style.
QWidget* partOf(QWidget* focus) {
    for (QWidget* up = focus; up && !up->isWindow(); up = up->parentWidget())
        if (qobject_cast<QAbstractScrollArea*>(up) || qobject_cast<QCommandLinkButton*>(up))
            return up;
    return nullptr;
}

} // namespace

void FocusMark::follow() {
    static QPointer<FocusMark> mark;
    QObject::connect(qApp, &QApplication::focusChanged, qApp, [](QWidget*, QWidget* now) {
        if (!now || now->windowType() == Qt::Popup)
            return; // the window or its menu; the focus comes back
        QWidget* part = partOf(now);
        if (mark && mark->parentWidget() == part)
            return;
        delete mark;
        if (part)
            mark = new FocusMark(part);
    });
}

FocusMark::FocusMark(QWidget* part) : QWidget(part) {
    setObjectName(QStringLiteral("focusMark"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    setGeometry(part->rect());
    part->installEventFilter(this);
    show();
    raise();
}

void FocusMark::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(QPen(QColor(0x2f, 0x6f, 0xb0), thickness));
    painter.drawRect(rect().adjusted(thickness / 2, thickness / 2, -thickness / 2, -thickness / 2));
}

bool FocusMark::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parent() && event->type() == QEvent::Resize) {
        setGeometry(parentWidget()->rect());
        raise();
    }
    return false;
}

} // namespace orvo::app
