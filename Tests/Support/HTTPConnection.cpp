#include "Support/HTTPConnection.h"

#include "Support/DeadEnd.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <sys/socket.h>

namespace orvia::test {

namespace {

/// Without the option, closing a socket whose input was read says goodbye in an orderly way.
void abortWithReset(QTcpSocket& socket)
{
    const linger none{.l_onoff = 1, .l_linger = 0};
    setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &none, sizeof none);
    socket.abort();
}

} // namespace

HTTPConnection::HTTPConnection(QTcpSocket* socket, ScriptedService* service)
    : QObject(service)
    , m_service(service)
    , m_socket(socket)
{
    m_socket->setParent(this);
    connect(m_socket, &QTcpSocket::readyRead, this, &HTTPConnection::receive);
    connect(m_socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    // What arrived before the signal was connected; not at once, because the service is still accepting.
    QMetaObject::invokeMethod(this, &HTTPConnection::receive, Qt::QueuedConnection);
}

QTcpSocket* HTTPConnection::releaseSocket()
{
    QTcpSocket* socket = std::exchange(m_socket, nullptr);
    socket->disconnect(this);
    deleteLater();
    return socket;
}

void HTTPConnection::receive()
{
    if (!m_socket)
        return;
    m_input += m_socket->readAll();
    const qsizetype headEnd = m_input.indexOf("\r\n\r\n");
    if (m_busy || headEnd < 0)
        return;
    auto request = ReceivedRequest::fromHead(m_input.left(headEnd));
    if (!request) {
        ADD_FAILURE() << "not an HTTP request: " << m_input.constData();
        m_socket->abort();
        return;
    }
    const qsizetype length = request->announcedLength();
    if (m_input.size() < headEnd + 4 + length)
        return;
    request->body = m_input.mid(headEnd + 4, length);
    m_input.remove(0, headEnd + 4 + length);
    m_busy = true;

    if (const auto step = m_service->stepFor(*request))
        step->arrived(this);
    else
        m_service->upgrade(*this, *request);
}

void HTTPConnection::send(const ScriptedAnswer& answer)
{
    m_output = answer.bytes();
    m_ending = answer.ending;
    m_pause = answer.pause;
    if (m_pause.count() > 0) {
        m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        const qsizetype head = m_output.indexOf("\r\n\r\n") + 4;
        m_socket->write(m_output.left(head));
        m_output.remove(0, head);
        sendNextByte();
        return;
    }
    m_socket->write(m_output);
    end();
}

void HTTPConnection::sendNextByte()
{
    if (m_output.isEmpty()) {
        end();
        return;
    }
    m_socket->write(m_output.left(1));
    m_socket->flush();
    m_output.remove(0, 1);
    // The turn in between lets the client read.
    QTimer::singleShot(m_pause, this, &HTTPConnection::sendNextByte);
}

void HTTPConnection::end()
{
    m_busy = m_ending != ScriptedAnswer::Ending::keepOpen;
    switch (m_ending) {
    case ScriptedAnswer::Ending::keepOpen:
        QMetaObject::invokeMethod(this, &HTTPConnection::receive, Qt::QueuedConnection);
        break;
    case ScriptedAnswer::Ending::close:
        m_socket->disconnectFromHost();
        break;
    case ScriptedAnswer::Ending::reset:
        m_socket->flush();
        abortWithReset(*m_socket);
        break;
    case ScriptedAnswer::Ending::stall:
        break;
    case ScriptedAnswer::Ending::endless:
        connect(m_socket, &QTcpSocket::bytesWritten, this, [this](qint64 bytes) {
            m_service->m_endlessBytes += bytes;
            m_sentWithoutEnd += bytes;
            if (m_sentWithoutEnd < ScriptedService::endlessEnough)
                m_socket->write(m_output.right(1024).repeated(64));
        });
        break;
    }
}

void HTTPConnection::vanish() const
{
    if (m_socket)
        dropEverythingReceived(*m_socket);
}

} // namespace orvia::test
