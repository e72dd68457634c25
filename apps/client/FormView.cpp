#include "apps/client/FormView.h"

#include "frame/Text.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <cstring>

namespace orvo::app {

using formview::Message;

namespace {

constexpr qint64 mostPending = 1 << 16; ///< of input that a busy process has not taken

QLabel* makeNotice(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMargin(8);
    label->hide();
    return label;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// FormCanvas

FormCanvas::FormCanvas(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("formCanvas"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void FormCanvas::setChannel(formview::Channel* channel) {
    m_channel = channel;
}

bool FormCanvas::setFrame(const QByteArray& body) {
    constexpr int pixelBytes = 4;
    QSize size;
    QRect part;
    qreal ratio = 0;
    QByteArray pixels;
    const int side = formview::largestSide * 4; // of device pixels
    if (!formview::unpack(body, &size, &part, &ratio, &pixels) || size.isEmpty() ||
        size.width() > side || size.height() > side || !QRect(QPoint(), size).contains(part) ||
        !(ratio >= 0.5 && ratio <= 8) ||
        pixels.size() != qint64{part.width()} * part.height() * pixelBytes)
        return false;
    // Of another size than the view: the view has been resized since, and the next frame comes.
    if (m_image.size() != size) {
        m_image = QImage(size, QImage::Format_RGB32);
        m_image.fill(palette().color(QPalette::Window));
    }
    m_image.setDevicePixelRatio(ratio);
    const int row = part.width() * pixelBytes;
    for (int y = 0; y < part.height(); ++y)
        std::memcpy(m_image.scanLine(part.top() + y) + part.left() * pixelBytes,
                    pixels.constData() + y * row, static_cast<size_t>(row));
    update();
    return true;
}

bool FormCanvas::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonDblClick: // the process sees two presses and finds out itself
        sendMouse(static_cast<QMouseEvent*>(event));
        return true;
    case QEvent::ShortcutOverride: {
        // The form takes keys first, as any widget with the focus does; but Ctrl+letter beyond
        // those of texts, and F1 to F35, belong to the window.
        auto* key = static_cast<QKeyEvent*>(event);
        if ((key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) ||
            (key->key() >= Qt::Key_F1 && key->key() <= Qt::Key_F35))
            break;
        event->accept();
        return true;
    }
    case QEvent::KeyPress: // Tab and Backtab too
    case QEvent::KeyRelease: {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool isTab = key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab;
        if (isTab && (key->modifiers() & Qt::ControlModifier))
            break; // to the tabs of the window
        sendKey(key);
        return true;
    }
    case QEvent::Leave:
        unsetCursor();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void FormCanvas::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    if (!m_image.isNull())
        painter.drawImage(0, 0, m_image);
}

void FormCanvas::resizeEvent(QResizeEvent*) {
    if (m_channel)
        m_channel->send(Message::Resize, size());
}

void FormCanvas::sendMouse(QMouseEvent* event) {
    if (!m_channel || m_channel->pending() > mostPending)
        return;
    const QEvent::Type type =
        event->type() == QEvent::MouseButtonDblClick ? QEvent::MouseButtonPress : event->type();
    m_channel->send(Message::Mouse, qint32{type}, event->pos(),
                    static_cast<quint32>(event->button()), static_cast<quint32>(event->buttons()),
                    static_cast<quint32>(event->modifiers()));
}

void FormCanvas::wheelEvent(QWheelEvent* event) {
    if (!m_channel || m_channel->pending() > mostPending)
        return;
    m_channel->send(Message::Wheel, event->position().toPoint(), event->pixelDelta(),
                    event->angleDelta(), static_cast<quint32>(event->buttons()),
                    static_cast<quint32>(event->modifiers()));
    event->accept();
}

void FormCanvas::sendKey(QKeyEvent* event) {
    if (m_channel && m_channel->pending() <= mostPending)
        m_channel->send(Message::Key, qint32{event->type()}, qint32{event->key()},
                        static_cast<quint32>(event->modifiers()), event->text(),
                        event->isAutoRepeat());
}

void FormCanvas::focusInEvent(QFocusEvent*) {
    if (m_channel)
        m_channel->send(Message::Focus, true);
}

void FormCanvas::focusOutEvent(QFocusEvent*) {
    if (m_channel)
        m_channel->send(Message::Focus, false);
}

// ---------------------------------------------------------------------------------------------
// FormView

FormView::FormView(QString program, formview::Document document, const ProcessLimits& limits,
                   QWidget* parent)
    : QWidget(parent)
    , m_program(std::move(program))
    , m_document(std::move(document))
    , m_limits(limits)
    , m_notice(makeNotice("damageLabel", this))
    , m_failure(makeNotice("failureLabel", this))
    , m_again(new QPushButton(Text::tr("Показать снова"), this))
    , m_canvas(new FormCanvas(this)) {
    for (QLabel* label : {m_notice, m_failure})
        label->setStyleSheet(QStringLiteral("background:#fbe9e7;color:#9c2a20"));
    m_again->hide();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_notice);
    column->addWidget(m_failure);
    column->addWidget(m_again, 0, Qt::AlignLeft);
    column->addWidget(m_canvas, 1);
    setFocusProxy(m_canvas);
    connect(m_again, &QPushButton::clicked, this, &FormView::start);
}

FormView::~FormView() {
    m_canvas->setChannel(nullptr);
}

void FormView::showEvent(QShowEvent*) {
    if (!m_process && m_state == State::Waiting)
        start();
}

void FormView::start() {
    m_state = State::Waiting;
    m_failure->hide();
    m_again->hide();
    m_canvas->show();
    layout()->activate();
    m_canvas->setCursor(Qt::WaitCursor);
    m_document.style = QApplication::style()->objectName();
    m_document.locale = QLocale().name();
    m_document.font = QApplication::font();
    m_document.palette = QApplication::palette();
    m_document.view = m_canvas->size();
    m_process = std::make_unique<FormProcess>(m_limits);
    connect(m_process.get(), &FormProcess::ended, this, &FormView::fail);
    m_process->show(m_program, m_document, devicePixelRatioF(), logicalDpiX());
    formview::Channel* channel = m_process ? m_process->channel() : nullptr;
    if (channel) {
        connect(channel, &formview::Channel::received, this, &FormView::received);
        m_canvas->setChannel(channel);
    }
}

void FormView::received(Message message, const QByteArray& body) {
    bool isGood = true;
    switch (message) {
    case Message::Shown: {
        constexpr int longestNotice = 500;
        QString notice;
        bool isDamaged = false;
        isGood = formview::unpack(body, &notice, &m_hint, &isDamaged);
        if (!isGood)
            break;
        m_state = State::Shown;
        m_canvas->unsetCursor();
        m_notice->setText(notice.left(longestNotice));
        m_notice->setVisible(!notice.isEmpty());
        if (isDamaged)
            emit problem(notice.left(longestNotice));
        emit shown();
        break;
    }
    case Message::Frame:
        isGood = m_canvas->setFrame(body);
        break;
    case Message::Cursor: {
        qint32 shape = 0;
        isGood = formview::unpack(body, &shape) && shape >= 0 && shape <= Qt::LastCursor;
        if (isGood && shape == Qt::ArrowCursor)
            m_canvas->unsetCursor();
        else if (isGood && shape != Qt::BlankCursor)
            m_canvas->setCursor(static_cast<Qt::CursorShape>(shape));
        break;
    }
    case Message::Copied: {
        QString text;
        isGood = formview::unpack(body, &text) && text.size() <= formview::largestCopy;
        // Of the user's own doing, that is.
        if (isGood && m_canvas->hasFocus())
            QGuiApplication::clipboard()->setText(text);
        break;
    }
    case Message::Pong:
        break;
    default:
        isGood = false;
    }
    if (!isGood)
        fail(Text::tr("просмотр прислал негодный ответ"));
}

void FormView::fail(const QString& why) {
    if (m_state == State::Failed)
        return;
    m_state = State::Failed;
    m_canvas->setChannel(nullptr);
    m_canvas->hide();
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        m_process.release()->deleteLater(); // it may be the sender
    }
    const QString text = Text::tr("Файл «%1» показать нельзя: %2.").arg(m_document.name, why);
    m_failure->setText(text);
    m_failure->show();
    m_again->show();
    emit problem(text);
}

} // namespace orvo::app
