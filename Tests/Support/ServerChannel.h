#pragma once

#include "Support/ReceivedRequest.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTcpSocket>

namespace orvia::test {

/// The service's end of one WebSocket (RFC 6455), written out frame by frame so that it can misbehave.
class ServerChannel : public QObject {
    Q_OBJECT

public:
    enum Opcode : quint8 {
        continuation = 0x0,
        text = 0x1,
        binary = 0x2,
        closing = 0x8,
        ping = 0x9,
        pong = 0xA
    };

    /// Takes @p socket, answers the upgrade that @p request asks for and speaks WebSocket from then on.
    ServerChannel(QTcpSocket* socket, ReceivedRequest request, bool answersPings);

    const ReceivedRequest& request() const { return m_request; }
    const QStringList& texts() const { return m_texts; }
    int pingCount() const { return m_pingCount; }
    /// The code of the close frame that the client sent.
    std::optional<quint16> closeCode() const { return m_closeCode; }
    /// The text behind the code in that frame.
    const QByteArray& closeReason() const { return m_closeReason; }
    bool isOpen() const;

    void sendText(const QString& message);
    void sendBinary(const QByteArray& message);
    void sendFrame(Opcode opcode, const QByteArray& payload, bool final = true);
    void sendRaw(const QByteArray& bytes);
    /// Ends the connection in order, but without a close frame.
    void hangUp();
    /// Tears the connection down without a close frame.
    void reset();
    /// From now on nothing is received or acknowledged, and nobody learns of it.
    void vanish() const;

    /// The head of an unmasked frame with a payload of @p length bytes.
    static QByteArray frameHead(Opcode opcode, quint64 length, bool final = true);

private:
    void receive();
    bool takeFrame();
    void handle(quint8 opcode, const QByteArray& payload);

    QPointer<QTcpSocket> m_socket;
    ReceivedRequest m_request;
    bool m_answersPings;
    QByteArray m_input;
    QStringList m_texts;
    int m_pingCount = 0;
    std::optional<quint16> m_closeCode;
    QByteArray m_closeReason;
};

} // namespace orvia::test
