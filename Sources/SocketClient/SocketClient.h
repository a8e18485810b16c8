#pragma once

#include "SocketClient/InboundFrames.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QWebSocket;

namespace orvia {

/// The waits of the live channel; tests shorten them.
struct SocketTimings {
    std::chrono::milliseconds pingInterval = std::chrono::seconds(25);
    std::chrono::milliseconds handshakeTimeout = std::chrono::seconds(60);
    /// How long sent bytes, pings included, may stay without the acknowledgement of the peer's machine.
    std::chrono::milliseconds acknowledgementTimeout = std::chrono::seconds(60);
    std::chrono::milliseconds firstReconnectDelay = std::chrono::seconds(1); ///< doubles with each failure
    std::chrono::milliseconds longestReconnectDelay = std::chrono::seconds(30);
};

/// The wait before the reconnect that follows @p attempt reconnects without a sign of life: 1, 2, 4, 8, 16,
/// 30, 30, ... times the first delay with the default timings.
std::chrono::milliseconds reconnectDelay(qint64 attempt, const SocketTimings& timings);

/// One WebSocket (RFC 6455) to the service that decodes inbound frames, sends small JSON text frames, keeps
/// itself alive with pings and reconnects after every failure until it is closed by hand. Never reports an
/// error: its owner learns whether the channel is up, and nothing else. Main thread only.
class SocketClient : public QObject {
    Q_OBJECT

public:
    explicit SocketClient(SocketTimings timings = {}, QObject* parent = nullptr);
    ~SocketClient() override;

    std::function<void(const SocketEvent&)> onEvent;
    /// True with every sign of life (so repeatedly), false when the channel is closed or lost.
    std::function<void(bool)> onConnectionChange;
    /// Sees the text of every outgoing frame before it is sent, connection or not.
    std::function<void(const QString&)> onSend;

    /// Opens the channel to the service at @p baseURL: path /ws, @p token in the query, wss for https. Does
    /// nothing when @p baseURL is not a URL.
    void connect(const QUrl& baseURL, const QString& token);
    /// Closes the channel for good (until the next connect) with close code 1001 and reports false.
    void disconnect();

    /// @p preview is cut to its first 500 user-perceived characters.
    void sendTyping(const QString& conversationId, const QString& preview);
    void sendRead(const QString& conversationId);
    /// An absent id says that the agent views no conversation.
    void sendViewing(const std::optional<QString>& conversationId);

    /// The whole wait of the reconnect that is pending; none when no reconnect is.
    std::optional<std::chrono::milliseconds> pendingReconnect() const;

    /// The address that @p baseURL and @p token give, or none when they form no URL.
    static std::optional<QUrl> socketURL(const QUrl& baseURL, const QString& token);

    /// Inbound messages beyond this many bytes end the connection.
    static constexpr quint64 maxMessageBytes = 4 * 1024 * 1024;

private:
    class SignalScope;
    enum class Farewell { none, goingAway };

    void deliver(const QString& text);
    void open();
    void listenTo(QWebSocket* socket);
    void opened();
    void receive(const std::optional<SocketEvent>& event);
    void lost();
    void scheduleReconnect();
    /// Lets go of the current connection, after a close frame with code 1001 where one is wanted and it is
    /// up.
    void dropConnection(Farewell farewell);
    void report(bool connected);

    SocketTimings m_timings;
    std::optional<QUrl> m_url;
    qint64 m_attempt = 0; ///< reconnects scheduled since the last sign of life
    bool m_manuallyClosed = false;

    QWebSocket* m_socket = nullptr; ///< the one connection that counts
    bool m_awaitsFirstPong = false;
    QStringList m_waitingTexts; ///< frames sent while the connection was being opened
    InboundFrames m_inboundFrames;
    int m_signalDepth = 0; ///< how many signals of connections are being handled
    QTimer m_pingTimer;
    QTimer m_handshakeTimer;
    QTimer m_reconnectTimer;
};

} // namespace orvia
