#include "Support/ServerChannel.h"

#include "Support/DeadEnd.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <gtest/gtest.h>

namespace orvia::test {

namespace {

QByteArray upgradeAnswer(const ReceivedRequest& request)
{
    const QByteArray key = request.header("Sec-WebSocket-Key").value_or(QByteArray());
    const QByteArray digest =
        QCryptographicHash::hash(key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11", QCryptographicHash::Sha1);
    return "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Accept: "
           + digest.toBase64() + "\r\n\r\n";
}

} // namespace

ServerChannel::ServerChannel(QTcpSocket* socket, ReceivedRequest request, bool answersPings)
    : m_socket(socket)
    , m_request(std::move(request))
    , m_answersPings(answersPings)
{
    m_socket->setParent(this);
    connect(m_socket, &QTcpSocket::readyRead, this, &ServerChannel::receive);
    m_socket->write(upgradeAnswer(m_request));
}

bool ServerChannel::isOpen() const
{
    return m_socket && m_socket->state() == QAbstractSocket::ConnectedState;
}

void ServerChannel::sendText(const QString& message)
{
    sendFrame(text, message.toUtf8());
}

void ServerChannel::sendBinary(const QByteArray& message)
{
    sendFrame(binary, message);
}

void ServerChannel::sendFrame(Opcode opcode, const QByteArray& payload, bool final)
{
    sendRaw(frameHead(opcode, static_cast<quint64>(payload.size()), final) + payload);
}

void ServerChannel::sendRaw(const QByteArray& bytes)
{
    if (isOpen())
        m_socket->write(bytes);
}

void ServerChannel::hangUp()
{
    if (m_socket)
        m_socket->disconnectFromHost();
}

void ServerChannel::reset()
{
    if (m_socket)
        m_socket->abort();
}

void ServerChannel::vanish() const
{
    if (m_socket)
        dropEverythingReceived(*m_socket);
}

QByteArray ServerChannel::frameHead(Opcode opcode, quint64 length, bool final)
{
    QByteArray head(1, static_cast<char>((final ? 0x80 : 0x00) | opcode));
    if (length < 126) {
        head += static_cast<char>(length);
    } else if (length <= 0xFFFF) {
        const quint16 bigEndian = qToBigEndian(static_cast<quint16>(length));
        head += char(126);
        head.append(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
    } else {
        const quint64 bigEndian = qToBigEndian(length);
        head += char(127);
        head.append(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
    }
    return head;
}

void ServerChannel::receive()
{
    m_input += m_socket->readAll();
    while (takeFrame()) {
    }
}

/// Takes one whole frame from the input, if there is one.
bool ServerChannel::takeFrame()
{
    if (m_input.size() < 2)
        return false;
    const auto byte = [this](qsizetype index) { return static_cast<quint8>(m_input.at(index)); };
    EXPECT_TRUE(byte(1) & 0x80) << "a client must mask its frames";
    EXPECT_TRUE(byte(0) & 0x80) << "the console's frames are short enough for one piece";

    qsizetype head = 2;
    quint64 length = byte(1) & 0x7F;
    if (length >= 126) {
        const qsizetype width = length == 126 ? 2 : 8;
        if (m_input.size() < head + width)
            return false;
        length = 0;
        for (qsizetype i = 0; i < width; ++i)
            length = length << 8 | byte(head + i);
        head += width;
    }
    const qsizetype size = static_cast<qsizetype>(length);
    if (m_input.size() < head + 4 + size)
        return false;

    QByteArray payload = m_input.mid(head + 4, size);
    for (qsizetype i = 0; i < size; ++i)
        payload[i] = static_cast<char>(payload.at(i) ^ m_input.at(head + i % 4));
    const quint8 opcode = byte(0) & 0x0F;
    m_input.remove(0, head + 4 + size);
    handle(opcode, payload);
    return true;
}

void ServerChannel::handle(quint8 opcode, const QByteArray& payload)
{
    switch (opcode) {
    case text:
        m_texts.append(QString::fromUtf8(payload));
        break;
    case ping:
        ++m_pingCount;
        if (m_answersPings)
            sendFrame(pong, payload);
        break;
    case pong:
        break;
    case closing:
        if (payload.size() >= 2) {
            m_closeCode = qFromBigEndian<quint16>(payload.constData());
            m_closeReason = payload.mid(2);
        }
        if (m_socket)
            m_socket->disconnectFromHost();
        break;
    default:
        ADD_FAILURE() << "unexpected frame of opcode " << int(opcode);
    }
}

} // namespace orvia::test
