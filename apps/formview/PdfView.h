// PdfView.h: a PDF, its pages one below the other, as wide as the view; Ctrl and the wheel change
// that. Pages are drawn when they come into view.
#ifndef ORVO_APPS_FORMVIEW_PDFVIEW_H
#define ORVO_APPS_FORMVIEW_PDFVIEW_H

#include <QAbstractScrollArea>
#include <QCache>
#include <QImage>

#include <memory>
#include <vector>

namespace Poppler {
class Document;
}

namespace orvo::formview {

/// By its first bytes.
bool looksLikePdf(const QByteArray& bytes);

class PdfView : public QAbstractScrollArea {
    Q_OBJECT
public:
    PdfView();
    ~PdfView() override;

    /// Called once. False, with the reason in Russian, if no page can be shown.
    bool open(const QByteArray& bytes, QString* error);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    struct Page {
        QSizeF size; ///< in points
        QRect place; ///< in the whole, of which the view shows a part
    };
    void arrange();
    const QImage* drawn(int number);

    std::unique_ptr<Poppler::Document> m_document;
    std::vector<Page> m_pages;
    QCache<int, QImage> m_images; ///< by the number of the page; the cost is in pixels
    qreal m_zoom = 1;             ///< of the width of the view
};

} // namespace orvo::formview

#endif
