#include "apps/formview/Channel.h"

#include <QTimer>
#include <QtEndian>

namespace orvo::formview {

namespace {

constexpr int headSize = 5;

} // namespace

QDataStream& operator<<(QDataStream& out, const Document& document) {
    return out << document.name << document.bytes << document.size << document.directory
               << document.parameters << document.isFitted << document.style << document.locale
               << document.font << document.palette << document.view;
}

QDataStream& operator>>(QDataStream& in, Document& document) {
    return in >> document.name >> document.bytes >> document.size >> document.directory >>
           document.parameters >> document.isFitted >> document.style >> document.locale >>
           document.font >> document.palette >> document.view;
}

Channel::Channel(int socket, int largest, QObject* parent) : QObject(parent), m_largest(largest) {
    // More than this stays in the sender until it has been read.
    m_socket.setReadBufferSize(qint64{largest} + headSize);
    connect(&m_socket, &QLocalSocket::readyRead, this, &Channel::read);
    connect(&m_socket, &QLocalSocket::bytesWritten, this, [this] {
        if (m_socket.bytesToWrite() == 0)
            emit drained();
    });
    connect(&m_socket, &QLocalSocket::disconnected, this, [this] {
        if (!std::exchange(m_isBroken, true))
            emit broken();
    });
    m_socket.setSocketDescriptor(socket);
}

void Channel::write(Message message, const QByteArray& body) {
    if (m_isBroken)
        return;
    QByteArray head(headSize, Qt::Uninitialized);
    head[0] = static_cast<char>(message);
    qToBigEndian(static_cast<quint32>(body.size()), head.data() + 1);
    m_socket.write(head);
    m_socket.write(body);
    m_socket.flush();
}

void Channel::read() {
    constexpr int mostAtOnce = 32; // others have their turn in between
    for (int i = 0; i < mostAtOnce && !m_isBroken; ++i) {
        const QByteArray head = m_socket.peek(headSize);
        if (head.size() < headSize)
            return;
        const auto size = qFromBigEndian<quint32>(head.constData() + 1);
        if (size > static_cast<quint32>(m_largest)) {
            m_isBroken = true;
            m_socket.abort();
            emit broken();
            return;
        }
        if (m_socket.bytesAvailable() < qint64{headSize} + size)
            return;
        m_socket.skip(headSize);
        emit received(static_cast<Message>(head[0]), m_socket.read(size));
    }
    QTimer::singleShot(0, this, &Channel::read);
}

} // namespace orvo::formview
