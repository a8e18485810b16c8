#pragma once

#include "Support/ScriptedService.h"

namespace orvia::test {

/// One accepted connection: reads requests one after the other and writes what the service decides.
class HTTPConnection : public QObject {
    Q_OBJECT

public:
    HTTPConnection(QTcpSocket* socket, ScriptedService* service);

    void send(const ScriptedAnswer& answer);
    /// From now on nothing is received or acknowledged, and nobody learns of it.
    void vanish() const;
    /// Hands the socket over to a WebSocket.
    QTcpSocket* releaseSocket();

private:
    void receive();
    void sendNextByte();
    void end();

    ScriptedService* m_service;
    QTcpSocket* m_socket;
    QByteArray m_input;
    QByteArray m_output; ///< what is still to be sent byte by byte
    std::chrono::milliseconds m_pause{0};
    qint64 m_sentWithoutEnd = 0;
    ScriptedAnswer::Ending m_ending = ScriptedAnswer::Ending::keepOpen;
    bool m_busy = false; ///< a request waits for its answer
};

} // namespace orvia::test
