#pragma once

#include "DemoService/Exchange.h"

#include <QAbstractHttpServer>
#include <QHttpServerResponder>
#include <QPointer>
#include <QTcpSocket>
#include <QWebSocket>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvia::demo {

/// HTTP/1.1 and, on the same port under /ws, WebSocket upgrades. Knows nothing of the interface: it turns
/// requests into Request values and sends what it is told to. Main thread.
class HTTPServer : public QAbstractHttpServer {
    Q_OBJECT

public:
    explicit HTTPServer(QObject* parent = nullptr);

    /// Answers a request.
    std::function<Answer(Request)> onRequest;
    /// Whether the bearer of @p token may open a live channel.
    std::function<bool(const QString& token)> mayUpgrade;
    /// Takes over a live channel that was opened with @p token.
    std::function<void(std::unique_ptr<QWebSocket> socket, const QString& token)> onUpgrade;

    /// While true, answers are worked out but kept back; false sends them in their order.
    void setHolding(bool holding);

protected:
    bool handleRequest(const QHttpServerRequest& request, QTcpSocket* socket) override;
    void missingHandler(const QHttpServerRequest& request, QTcpSocket* socket) override;

private:
    struct Held {
        QPointer<QTcpSocket> socket;
        QHttpServerResponder responder;
        Answer answer;
    };

    void acceptUpgrades();

    bool m_holding = false;
    std::vector<Held> m_held;
};

} // namespace orvia::demo
