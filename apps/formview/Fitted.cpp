#include "apps/formview/Fitted.h"

#include <QPainter>

#include <algorithm>

namespace orvo::formview {

FittedForm::FittedForm(QWidget* form, const QSize& size) : m_size(size) {
    form->resize(size);
    m_scene.addWidget(form);
    m_scene.setSceneRect(QRect(QPoint(), size));
    setScene(&m_scene);
    setFrameShape(QFrame::NoFrame);
    setBackgroundBrush(palette().window());
    setRenderHint(QPainter::SmoothPixmapTransform);
}

void FittedForm::resizeEvent(QResizeEvent* event) {
    constexpr qreal least = 0.5, most = 3;
    const QSizeF room = maximumViewportSize();
    if (!m_size.isEmpty()) {
        const qreal fit = std::min(room.width() / m_size.width(), room.height() / m_size.height());
        const qreal factor = std::clamp(fit, least, most);
        setTransform(QTransform::fromScale(factor, factor));
    }
    QGraphicsView::resizeEvent(event);
}

void FittedPicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QSize whole =
        m_image.size().scaled(size().boundedTo(m_image.size()), Qt::KeepAspectRatio);
    QRect place(QPoint(), whole);
    place.moveCenter(rect().center());
    painter.drawImage(place, m_image);
}

} // namespace orvo::formview
