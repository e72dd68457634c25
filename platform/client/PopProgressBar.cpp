#include "frame/OrvoClient.h"

#include "platform/client/PopOverlay.h"

#include <QProgressBar>
#include <QShowEvent>
#include <QVBoxLayout>

using orvo::client::PopOverlay;
using orvo::client::PopText;

struct CPopProgressBar::Private {
    PopOverlay* overlay; // this and what follows: children of the pop-up
    PopText* text;
    PopText* second;
    QProgressBar* bar;
};

CPopProgressBar::CPopProgressBar(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>()) {
    hide(); // a child of a visible window would appear with it
    d->overlay = new PopOverlay(this);
    QWidget* panel = d->overlay->column()->parentWidget();
    d->text = new PopText(panel, 1.1, true);
    d->second = new PopText(panel, 1.0, false);
    d->bar = new QProgressBar(panel);
    d->bar->setMinimumWidth(380);
    d->bar->setFixedHeight(22);
    d->bar->setAlignment(Qt::AlignCenter);
    d->overlay->column()->addWidget(d->text);
    d->overlay->column()->addWidget(d->second);
    d->overlay->column()->addWidget(d->bar);
    setText({}, {});
    setColor(ProgressBarColorDefault);
}

CPopProgressBar::~CPopProgressBar() = default;

void CPopProgressBar::setText(QString text, QString second) {
    d->text->setPlain(text);
    d->text->setHidden(text.isEmpty());
    d->second->setPlain(second);
    d->second->setHidden(second.isEmpty());
}

void CPopProgressBar::setRange(int from, int to) {
    d->bar->setRange(from, to);
    d->bar->setValue(from);
}

void CPopProgressBar::setColor(TProgressBarColor color) {
    const QString fill =
        color == ProgressBarColorGreen ? QStringLiteral("#3f9b5c") : QStringLiteral("#2f6fb5");
    d->bar->setStyleSheet(QStringLiteral("QProgressBar{border:1px solid #c3cad2;border-radius:6px;"
                                         "background:#eef1f4;color:#1f2933;text-align:center}"
                                         "QProgressBar::chunk{background:%1;border-radius:5px}")
                              .arg(fill));
}

void CPopProgressBar::setValue(int value) {
    d->bar->setValue(value);
    // The caller blocks the event loop, so the picture is brought up to date here.
    if (isVisible())
        repaint();
}

void CPopProgressBar::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous())
        d->overlay->cover();
}
