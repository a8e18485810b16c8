#pragma once

#include "Support/ScriptedService.h"

namespace orvia::test {

/// One accepted connection: reads requests one after the other and writes what the service decides.
class HTTPConnection : public QObject {
    Q_OBJECT

public:
    HTTPConnection(QTcpSocket* socket, ScriptedService* service);

    void send(const ScriptedAnswer& answer);
    /// Hands the socket over to a WebSocket.
    QTcpSocket* releaseSocket();

private:
    void receive();

    ScriptedService* m_service;
    QTcpSocket* m_socket;
    QByteArray m_input;
    bool m_busy = false; ///< a request waits for its answer
};

} // namespace orvia::test
