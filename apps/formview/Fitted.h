// Fitted.h: content of a fixed size in a view of another: scaled, and scrolled where it would
// become too small to read.
#ifndef ORVO_APPS_FORMVIEW_FITTED_H
#define ORVO_APPS_FORMVIEW_FITTED_H

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QImage>

namespace orvo::formview {

/// A form whose widgets have fixed places, live: as large as the view, between half and three times
/// its own size.
class FittedForm : public QGraphicsView {
    Q_OBJECT
public:
    /// Takes the form over.
    FittedForm(QWidget* form, const QSize& size);
    QSize sizeHint() const override { return m_size; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QGraphicsScene m_scene;
    const QSize m_size;
};

/// A picture, whole; never larger than it is.
class FittedPicture : public QWidget {
    Q_OBJECT
public:
    explicit FittedPicture(QImage image) : m_image(std::move(image)) {}
    QSize sizeHint() const override { return m_image.size(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QImage m_image;
};

} // namespace orvo::formview

#endif
