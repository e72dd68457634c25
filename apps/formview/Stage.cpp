#include "apps/formview/Stage.h"

#include "apps/formview/Content.h"

#include <QApplication>
#include <QBackingStore>
#include <QClipboard>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStyleFactory>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QWindow>

#include <cstring>
#include <sys/resource.h>
#include <sys/time.h>

// How the tests of Qt's own users work windows: the events take the way of those of a display, with
// focus, shortcuts, pop-ups and double clicks.
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons state, Qt::MouseButton button,
                                      QEvent::Type type, Qt::KeyboardModifiers mods, int timestamp);
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers mods, const QString& text, bool autorep,
                                    ushort count);

namespace orvo::formview {

namespace {

constexpr int frameMs = 15;

/// A form that works without end is ended by the system even if nobody watches it any more.
void renewProcessorTime() {
    constexpr rlim_t seconds = 30;
    rusage usage = {};
    rlimit limit = {};
    if (getrusage(RUSAGE_SELF, &usage) != 0 || getrlimit(RLIMIT_CPU, &limit) != 0)
        return;
    limit.rlim_cur = static_cast<rlim_t>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + seconds;
    setrlimit(RLIMIT_CPU, &limit);
}

QImage pixelsOf(const QWidget& window) {
    QBackingStore* store = window.backingStore();
    QPaintDevice* device = store ? store->paintDevice() : nullptr;
    if (!device || device->devType() != QInternal::Image)
        return {};
    return *static_cast<QImage*>(device);
}

/// Whether a window is one beside that of the document: what is scaled is a window to Qt, too, and
/// painted by the view that it is in.
bool isBeside(const QWidget& window) {
    return window.isWindow() && !window.graphicsProxyWidget();
}

/// The rows in which two images of one size differ, over their whole width.
QRect difference(const QImage& before, const QImage& now) {
    const auto isSame = [&](int row) {
        return std::memcmp(before.constScanLine(row), now.constScanLine(row),
                           static_cast<size_t>(now.bytesPerLine())) == 0;
    };
    int top = 0, bottom = now.height() - 1;
    while (top <= bottom && isSame(top))
        ++top;
    while (bottom >= top && isSame(bottom))
        --bottom;
    return {0, top, now.width(), bottom - top + 1};
}

} // namespace

Stage::Stage(Channel& channel) : m_channel(channel) {
    m_clock.start();
    m_frame.setSingleShot(true);
    m_frame.setInterval(frameMs);
    connect(&m_frame, &QTimer::timeout, this, &Stage::sendFrame);
    connect(&m_channel, &Channel::received, this, &Stage::take);
    connect(&m_channel, &Channel::broken, qApp, &QCoreApplication::quit);
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, [this] {
        m_channel.send(Message::Copied, QGuiApplication::clipboard()->text().left(largestCopy));
    });
    qApp->installEventFilter(this);
    renewProcessorTime();
}

Stage::~Stage() = default;

void Stage::take(Message message, const QByteArray& body) {
    switch (message) {
    case Message::Show: {
        Document document;
        if (!m_window && unpack(body, &document))
            show(document);
        break;
    }
    case Message::Resize: {
        QSize size;
        if (unpack(body, &size))
            resize(size);
        break;
    }
    case Message::Mouse:
        mouse(body);
        break;
    case Message::Wheel:
        wheel(body);
        break;
    case Message::Key:
        key(body);
        break;
    case Message::Focus: {
        bool hasFocus = false;
        if (unpack(body, &hasFocus))
            QApplication::setActiveWindow(hasFocus ? m_window.get() : nullptr);
        break;
    }
    case Message::Ping: {
        quint32 number = 0;
        if (unpack(body, &number))
            m_channel.send(Message::Pong, number);
        renewProcessorTime();
        break;
    }
    default:
        QCoreApplication::exit(1);
    }
}

void Stage::show(const Document& document) {
    const QLocale locale(document.locale);
    m_speaker.emplace(language::codeOf(locale));
    QLocale::setDefault(locale);
    if (QStyle* style = QStyleFactory::create(document.style))
        QApplication::setStyle(style);
    QApplication::setPalette(document.palette);
    QApplication::setFont(document.font);

    Content content = makeContent(document);
    m_window = std::make_unique<QWidget>(nullptr, Qt::FramelessWindowHint);
    auto* fill = new QVBoxLayout(m_window.get());
    fill->setContentsMargins(0, 0, 0, 0);
    const QSize hint = content.widget->sizeHint();
    fill->addWidget(content.widget.release());
    resize(document.view);
    m_window->show();
    m_channel.send(Message::Shown, content.notice, hint, content.isDamaged);
}

void Stage::resize(const QSize& size) {
    if (m_window && !size.isEmpty())
        m_window->setFixedSize(size.boundedTo({largestSide, largestSide}));
}

// ---------------------------------------------------------------------------------------------
// Input

void Stage::mouse(const QByteArray& body) {
    qint32 type = 0;
    QPoint at;
    quint32 button = 0, buttons = 0, modifiers = 0;
    if (!unpack(body, &type, &at, &button, &buttons, &modifiers) || !m_window)
        return;
    const auto kind = static_cast<QEvent::Type>(type);
    if (kind != QEvent::MouseButtonPress && kind != QEvent::MouseButtonRelease &&
        kind != QEvent::MouseMove)
        return;
    QWidget* target = QApplication::activePopupWidget();
    // Qt keeps pop-ups on its screen, which is small here: the screen goes where the mouse is.
    if (!target && kind == QEvent::MouseButtonPress)
        m_window->move(m_window->screen()->geometry().center() - at);
    const QPoint global = m_window->pos() + at;
    if (!target || !target->geometry().contains(global))
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window != m_window.get() && window->isVisible() &&
                window->windowType() == Qt::Popup && window->geometry().contains(global))
                target = window;
    if (!target)
        target = m_window.get();
    qt_handleMouseEvent(target->windowHandle(), global - target->pos(), global,
                        Qt::MouseButtons(QFlag(static_cast<int>(buttons))),
                        static_cast<Qt::MouseButton>(button), kind,
                        Qt::KeyboardModifiers(QFlag(static_cast<int>(modifiers))),
                        static_cast<int>(m_clock.elapsed()));
    const QWidget* under = m_window->childAt(at);
    const int shape = (under ? under : m_window.get())->cursor().shape();
    if (shape != m_cursor && shape <= Qt::LastCursor) {
        m_cursor = shape;
        m_channel.send(Message::Cursor, qint32{shape});
    }
}

void Stage::wheel(const QByteArray& body) {
    QPoint at, pixels, angle;
    quint32 buttons = 0, modifiers = 0;
    if (!unpack(body, &at, &pixels, &angle, &buttons, &modifiers) || !m_window)
        return;
    QWidget* target = QApplication::activePopupWidget();
    if (!target)
        target = m_window.get();
    const QPoint global = m_window->pos() + at;
    QWheelEvent event(global - target->pos(), global, pixels, angle,
                      Qt::MouseButtons(QFlag(static_cast<int>(buttons))),
                      Qt::KeyboardModifiers(QFlag(static_cast<int>(modifiers))), Qt::NoScrollPhase,
                      false);
    QCoreApplication::sendEvent(target->windowHandle(), &event);
}

void Stage::key(const QByteArray& body) {
    qint32 type = 0, key = 0;
    quint32 modifiers = 0;
    QString text;
    bool isRepeated = false;
    if (!unpack(body, &type, &key, &modifiers, &text, &isRepeated) || !m_window)
        return;
    if (type != QEvent::KeyPress && type != QEvent::KeyRelease)
        return;
    QWidget* target = QApplication::activePopupWidget();
    if (!target)
        target = m_window.get();
    qt_handleKeyEvent(target->windowHandle(), static_cast<QEvent::Type>(type), key,
                      Qt::KeyboardModifiers(QFlag(static_cast<int>(modifiers))), text, isRepeated,
                      1);
}

// ---------------------------------------------------------------------------------------------
// Output

bool Stage::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::Show:
    case QEvent::Hide:
        if (auto* widget = qobject_cast<QWidget*>(watched);
            widget && isBeside(*widget) && widget != m_window.get()) {
            if (event->type() == QEvent::Show)
                placePopup(widget);
            m_frame.start();
        }
        break;
    case QEvent::Paint:
    case QEvent::UpdateRequest:
        if (!m_frame.isActive())
            m_frame.start();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void Stage::placePopup(QWidget* popup) const {
    if (!m_window)
        return;
    const QRect view = m_window->geometry();
    QRect place = popup->geometry();
    place.moveRight(std::min(place.right(), view.right()));
    place.moveBottom(std::min(place.bottom(), view.bottom()));
    place.moveLeft(std::max(place.left(), view.left()));
    place.moveTop(std::max(place.top(), view.top()));
    popup->move(place.topLeft());
}

QImage Stage::compose() const {
    const QImage base = pixelsOf(*m_window);
    const qreal ratio = m_window->devicePixelRatioF();
    if (base.isNull() || base.size() != m_window->size() * ratio)
        return {}; // not painted in its present size yet
    QImage image = base.convertToFormat(QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    for (const QWidget* window : QApplication::topLevelWidgets())
        if (window != m_window.get() && window->isVisible() && isBeside(*window)) {
            QImage pixels = pixelsOf(*window);
            pixels.setDevicePixelRatio(ratio);
            painter.drawImage(window->pos() - m_window->pos(), pixels);
        }
    return image;
}

void Stage::sendFrame() {
    if (!m_window)
        return;
    if (m_channel.pending() > 0) { // the client shall not be flooded
        m_frame.start();
        return;
    }
    const QImage image = compose();
    if (image.isNull())
        return;
    QRect changed(QPoint(), image.size());
    if (m_sent.size() == image.size())
        changed = difference(m_sent, image);
    const int rowsAtOnce = std::max(1, largestFrame / static_cast<int>(image.bytesPerLine()));
    for (int top = changed.top(); top <= changed.bottom(); top += rowsAtOnce) {
        const QRect part(0, top, image.width(), std::min(rowsAtOnce, changed.bottom() - top + 1));
        const QByteArray pixels(reinterpret_cast<const char*>(image.constScanLine(top)),
                                static_cast<int>(image.bytesPerLine()) * part.height());
        m_channel.send(Message::Frame, image.size(), part, image.devicePixelRatioF(), pixels);
    }
    m_sent = image;
}

} // namespace orvo::formview
