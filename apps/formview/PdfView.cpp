#include "apps/formview/PdfView.h"

#include "frame/Text.h"

#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#if __has_include(<poppler-qt6.h>) // the folder of one of them is searched
#include <poppler-qt6.h>
#else
#include <poppler-qt5.h>
#endif

#include <algorithm>
#include <cmath>

namespace orvo::formview {

namespace {

constexpr int gap = 8;               // between pages
constexpr int mostPages = 5000;      // more take too long to measure
constexpr int mostPixels = 16000000; // of a page; a larger one is drawn coarser
constexpr qreal pointsPerInch = 72;

} // namespace

bool looksLikePdf(const QByteArray& bytes) {
    return bytes.left(1024).contains("%PDF-"); // some writers put a line before it
}

PdfView::PdfView() : m_images(4 * mostPixels) {
    setFrameShape(NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Mid);
    viewport()->setAutoFillBackground(true);
}

PdfView::~PdfView() = default;

bool PdfView::open(const QByteArray& bytes, QString* error) {
    Poppler::setDebugErrorFunction([](const QString&, const QVariant&) {}, {});
    m_document = std::unique_ptr<Poppler::Document>(Poppler::Document::loadFromData(bytes));
    if (!m_document) {
        *error = Text::tr("это не PDF");
        return false;
    }
    if (m_document->isLocked()) {
        *error = Text::tr("PDF закрыт паролем");
        return false;
    }
    m_document->setRenderHint(Poppler::Document::Antialiasing);
    m_document->setRenderHint(Poppler::Document::TextAntialiasing);
    const int count = std::min(m_document->numPages(), mostPages);
    for (int i = 0; i < count; ++i) {
        const std::unique_ptr<Poppler::Page> page(m_document->page(i));
        const QSizeF size = page ? page->pageSizeF() : QSizeF();
        const bool isSound =
            size.width() >= 1 && size.height() >= 1 && size.width() < 1e5 && size.height() < 1e5;
        m_pages.push_back({isSound ? size : QSizeF(595, 842), {}});
    }
    if (m_pages.empty())
        *error = Text::tr("в PDF нет страниц");
    return !m_pages.empty();
}

QSize PdfView::sizeHint() const {
    return m_pages.empty() ? QSize(640, 480)
                           : (m_pages.front().size * 1.25).toSize().boundedTo({1280, 1280});
}

/// Places the pages; what stood at the top of the view stays there.
void PdfView::arrange() {
    QScrollBar& vertical = *verticalScrollBar();
    const qreal before = m_pages.empty() || m_pages.back().place.isEmpty()
                             ? 0
                             : qreal(vertical.value()) / (m_pages.back().place.bottom() + gap);
    const int width = std::max(50, static_cast<int>((viewport()->width() - 2 * gap) * m_zoom));
    int top = gap;
    for (Page& page : m_pages) {
        const qreal height = std::min(page.size.height() * width / page.size.width(), 1e5);
        page.place = QRect(gap, top, width, std::max(1, static_cast<int>(height)));
        top = page.place.bottom() + 1 + gap;
        if (top > 1000000000)
            top = 1000000000; // a number of pixels; nobody scrolls so far
    }
    vertical.setPageStep(viewport()->height());
    vertical.setSingleStep(40);
    vertical.setRange(0, std::max(0, top - viewport()->height()));
    vertical.setValue(static_cast<int>(before * top));
    QScrollBar& horizontal = *horizontalScrollBar();
    horizontal.setPageStep(viewport()->width());
    horizontal.setRange(0, std::max(0, width + 2 * gap - viewport()->width()));
    m_images.clear();
    viewport()->update();
}

const QImage* PdfView::drawn(int number) {
    if (const QImage* known = m_images.object(number))
        return known;
    const Page& page = m_pages[static_cast<size_t>(number)];
    const qreal ratio = devicePixelRatioF();
    qreal scale = page.place.width() * ratio / page.size.width();
    const qreal pixels = page.size.width() * page.size.height() * scale * scale;
    if (pixels > mostPixels)
        scale *= std::sqrt(mostPixels / pixels);
    const std::unique_ptr<Poppler::Page> source(m_document->page(number));
    QImage image =
        source ? source->renderToImage(pointsPerInch * scale, pointsPerInch * scale) : QImage();
    if (image.isNull()) {
        image = QImage(1, 1, QImage::Format_RGB32);
        image.fill(Qt::white);
    }
    const int cost = std::max(1, image.width() * image.height());
    auto* kept = new QImage(std::move(image)); // owned by the cache from here on
    return m_images.insert(number, kept, cost) ? kept : nullptr;
}

void PdfView::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QPoint offset(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const QRect view = viewport()->rect().translated(offset);
    const auto first = std::partition_point(m_pages.begin(), m_pages.end(), [&](const Page& page) {
        return page.place.bottom() < view.top();
    });
    for (auto page = first; page != m_pages.end() && page->place.top() <= view.bottom(); ++page) {
        const QRect place = page->place.translated(-offset);
        painter.fillRect(place, Qt::white);
        if (const QImage* image = drawn(static_cast<int>(page - m_pages.begin())))
            painter.drawImage(place, *image);
    }
}

void PdfView::resizeEvent(QResizeEvent*) {
    arrange();
}

void PdfView::wheelEvent(QWheelEvent* event) {
    if (!(event->modifiers() & Qt::ControlModifier))
        return QAbstractScrollArea::wheelEvent(event);
    m_zoom = std::clamp(m_zoom * (event->angleDelta().y() > 0 ? 1.25 : 0.8), 0.25, 4.0);
    arrange();
}

} // namespace orvo::formview
