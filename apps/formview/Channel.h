// Channel.h: the messages between a window of the client and the process that shows a form in it.
//
// A message is its kind (1 byte), the size of its body (4 bytes, big-endian), and the body, which a
// QDataStream of Qt 5.15 wrote. Bodies, all numbers in pixels of the view:
//
//   client to viewer
//     Show    Document; the first message, and only once
//     Resize  QSize
//     Mouse   qint32 QEvent::Type, QPoint, quint32 button, quint32 buttons, quint32 modifiers
//     Wheel   QPoint, QPoint pixels, QPoint angle, quint32 buttons, quint32 modifiers
//     Key     qint32 QEvent::Type, qint32 key, quint32 modifiers, QString text, bool autoRepeat
//     Focus   bool whether the view has it
//     Ping    quint32 number
//   viewer to client
//     Shown   QString notice, QSize sizeHint, bool isDamaged; once, when the document is built
//     Frame   QSize of the view, QRect, qreal ratio of device pixels, QByteArray of 32-bit pixels,
//             row by row
//     Cursor  qint32 Qt::CursorShape
//     Copied  QString, what the form has put on its clipboard
//     Pong    quint32 number, from the event loop
//
// Neither side trusts the other: a size beyond the limit, an unknown kind or a body that does not
// read to its end breaks the channel.
#ifndef ORVO_APPS_FORMVIEW_CHANNEL_H
#define ORVO_APPS_FORMVIEW_CHANNEL_H

#include <QByteArray>
#include <QDataStream>
#include <QFont>
#include <QLocalSocket>
#include <QObject>
#include <QPair>
#include <QPalette>
#include <QSize>
#include <QVector>

#include <utility>

namespace orvo::formview {

enum class Message : quint8 {
    Show = 1,
    Resize,
    Mouse,
    Wheel,
    Key,
    Focus,
    Ping,
    Shown,
    Frame,
    Cursor,
    Copied,
    Pong
};

constexpr int largestFile = 64 << 20; ///< of a file that is sent to be shown
constexpr int largestCopy = 1 << 16;  ///< letters
constexpr int largestFrame = 4 << 20; ///< bytes of pixels in one message
constexpr int largestSide = 4096;     ///< pixels of a view
constexpr QDataStream::Version streamVersion = QDataStream::Qt_5_15;

/// What is to be shown, and how the client looks.
struct Document {
    QString name;      ///< of the file
    QByteArray bytes;  ///< at most `largestFile`
    qint64 size = 0;   ///< of the whole file
    QString directory; ///< with the files stored beside it; ends with the process
    QVector<QPair<QString, QString>> parameters; ///< of a form: names and values
    bool isFitted = false; ///< a picture, or a form that has no layout, is as large as the view
    QString style, locale;
    QFont font;
    QPalette palette;
    QSize view;
};
QDataStream& operator<<(QDataStream& out, const Document& document);
QDataStream& operator>>(QDataStream& in, Document& document);

class Channel : public QObject {
    Q_OBJECT
public:
    /// Owns the descriptor of the socket from here on. `largest`: of a body that comes in.
    Channel(int socket, int largest, QObject* parent = nullptr);

    template <class... Parts>
    void send(Message message, const Parts&... parts) {
        QByteArray body;
        QDataStream out(&body, QIODevice::WriteOnly);
        out.setVersion(streamVersion);
        (out << ... << parts);
        write(message, body);
    }
    /// Bytes that the other side has not taken yet.
    qint64 pending() const { return m_socket.bytesToWrite(); }

signals:
    void received(orvo::formview::Message message, const QByteArray& body);
    /// The other side has taken all that was sent.
    void drained();
    /// Nothing comes or goes any more.
    void broken();

private:
    void write(Message message, const QByteArray& body);
    void read();

    const int m_largest;
    QLocalSocket m_socket;
    bool m_isBroken = false;
};

/// Takes a body apart. False if it is not of these parts exactly.
template <class... Parts>
bool unpack(const QByteArray& body, Parts*... parts) {
    QDataStream in(body);
    in.setVersion(streamVersion);
    (in >> ... >> *parts);
    return in.status() == QDataStream::Ok && in.atEnd();
}

} // namespace orvo::formview

#endif
