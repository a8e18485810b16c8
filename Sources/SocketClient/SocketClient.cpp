#include "SocketClient/SocketClient.h"

#include <QPointer>
#include <QTcpSocket>
#include <QWebSocket>

#include <cmath>

#include <netinet/in.h>
#include <netinet/tcp.h>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// Lets the kernel give up a connection whose other end has gone without a word: a machine that lost its
/// power, a changed address, a network left while this machine slept. Without the option that takes a quarter
/// of an hour (TCP_USER_TIMEOUT, RFC 5482). The pings see to it that something is always sent.
void boundSilence(const QWebSocket& socket, std::chrono::milliseconds limit)
{
    const auto* const transport = socket.findChild<QTcpSocket*>(QString(), Qt::FindDirectChildrenOnly);
    if (!transport || transport->socketDescriptor() < 0)
        return;
    const auto milliseconds = static_cast<unsigned int>(limit.count());
    setsockopt(static_cast<int>(transport->socketDescriptor()), IPPROTO_TCP, TCP_USER_TIMEOUT, &milliseconds,
               sizeof milliseconds);
}

} // namespace

std::chrono::milliseconds reconnectDelay(qint64 attempt, const SocketTimings& timings)
{
    constexpr qint64 largestExponent = 1000; // far beyond every limit, and still a finite number
    const double delay = std::ldexp(static_cast<double>(timings.firstReconnectDelay.count()),
                                    static_cast<int>(std::clamp<qint64>(attempt, 0, largestExponent)));
    const double longest = static_cast<double>(timings.longestReconnectDelay.count());
    return std::chrono::milliseconds(static_cast<qint64>(std::min(delay, longest)));
}

/// Marks that a connection's signal is on the stack, where that connection must not be destroyed. Knows
/// whether the client outlived what its callbacks did.
class SocketClient::SignalScope {
public:
    explicit SignalScope(SocketClient* client)
        : m_client(client)
    {
        ++client->m_signalDepth;
    }
    ~SignalScope()
    {
        if (m_client)
            --m_client->m_signalDepth;
    }
    SignalScope(const SignalScope&) = delete;
    SignalScope& operator=(const SignalScope&) = delete;

private:
    QPointer<SocketClient> m_client;
};

SocketClient::SocketClient(SocketTimings timings, QObject* parent)
    : QObject(parent)
    , m_timings(timings)
{
    m_pingTimer.setTimerType(Qt::PreciseTimer);
    m_pingTimer.setInterval(timings.pingInterval);
    QObject::connect(&m_pingTimer, &QTimer::timeout, this, [this] { m_socket->ping(); });

    m_handshakeTimer.setSingleShot(true);
    m_handshakeTimer.setInterval(timings.handshakeTimeout);
    QObject::connect(&m_handshakeTimer, &QTimer::timeout, this, &SocketClient::lost);

    m_reconnectTimer.setTimerType(Qt::PreciseTimer);
    m_reconnectTimer.setSingleShot(true);
    QObject::connect(&m_reconnectTimer, &QTimer::timeout, this, &SocketClient::open);
}

SocketClient::~SocketClient()
{
    dropConnection(Farewell::goingAway);
}

std::optional<QUrl> SocketClient::socketURL(const QUrl& baseURL, const QString& token)
{
    if (baseURL.isEmpty() || !baseURL.isValid())
        return std::nullopt;
    QUrl url = baseURL;
    url.setScheme(baseURL.scheme() == "https"_L1 ? u"wss"_s : u"ws"_s);
    url.setPath(u"/ws"_s);
    // Encoded here, because "+" would stay as it is otherwise and a service reads that as a space.
    url.setQuery(u"token="_s + QString::fromLatin1(QUrl::toPercentEncoding(token)), QUrl::StrictMode);
    url.setFragment(QString());
    return url.isValid() ? std::optional(url) : std::nullopt;
}

void SocketClient::connect(const QUrl& baseURL, const QString& token)
{
    if (baseURL.isEmpty() || !baseURL.isValid())
        return;
    m_url = socketURL(baseURL, token);
    m_manuallyClosed = false;
    m_attempt = 0;
    open();
}

void SocketClient::disconnect()
{
    m_manuallyClosed = true;
    m_reconnectTimer.stop();
    dropConnection(Farewell::goingAway);
    report(false);
}

std::optional<std::chrono::milliseconds> SocketClient::pendingReconnect() const
{
    return m_reconnectTimer.isActive() ? std::optional(m_reconnectTimer.intervalAsDuration()) : std::nullopt;
}

void SocketClient::open()
{
    if (!m_url || m_manuallyClosed)
        return;
    m_reconnectTimer.stop();
    dropConnection(Farewell::goingAway);

    m_socket = new QWebSocket(QString(), QWebSocketProtocol::VersionLatest);
    m_socket->setMaxAllowedIncomingFrameSize(maxMessageBytes);
    m_socket->setMaxAllowedIncomingMessageSize(maxMessageBytes);
    // Room for the longest frame and its head, and no more for a service that never ends its first line.
    constexpr qint64 longestFrameHead = 14;
    m_socket->setReadBufferSize(static_cast<qint64>(maxMessageBytes) + longestFrameHead);
    listenTo(m_socket);
    m_handshakeTimer.start();
    // The last statement: an address that cannot be used fails at once, with all that follows from it.
    m_socket->open(*m_url);
}

/// Each handler acts for the current connection only. A failure may be told by either of two signals, or by
/// both; the first one makes the connection no longer current.
void SocketClient::listenTo(QWebSocket* socket)
{
    const auto whileCurrent = [this, socket](auto handler) {
        return [this, socket, handler](const auto&... arguments) {
            if (socket != m_socket)
                return;
            const SignalScope scope(this);
            handler(arguments...);
        };
    };
    QObject::connect(socket, &QWebSocket::connected, this, whileCurrent([this] { opened(); }));
    QObject::connect(socket, qOverload<QAbstractSocket::SocketError>(&QWebSocket::error), this,
                     whileCurrent([this](const auto&) { lost(); }));
    QObject::connect(socket, &QWebSocket::disconnected, this, whileCurrent([this] { lost(); }));
    QObject::connect(socket, &QWebSocket::pong, this, whileCurrent([this](const auto&...) {
                         // Only the first ping of a connection asks whether it is alive.
                         if (!std::exchange(m_awaitsFirstPong, false))
                             return;
                         m_attempt = 0;
                         report(true);
                     }));
    QObject::connect(
        socket, &QWebSocket::binaryMessageReceived, this,
        whileCurrent([this](const QByteArray& message) { receive(m_inboundFrames.binaryFrame(message)); }));
    QObject::connect(
        socket, &QWebSocket::textMessageReceived, this,
        whileCurrent([this](const QString& message) { receive(m_inboundFrames.textFrame(message)); }));
}

void SocketClient::opened()
{
    m_handshakeTimer.stop();
    boundSilence(*m_socket, m_timings.acknowledgementTimeout);
    m_awaitsFirstPong = true;
    m_pingTimer.start();
    // Any write may find the connection broken, and then the owner may even destroy this client.
    const QPointer<SocketClient> self(this);
    const QStringList texts = std::exchange(m_waitingTexts, {});
    QWebSocket* const socket = m_socket;
    socket->ping();
    for (const QString& text : texts) {
        if (!self || socket != m_socket)
            return;
        socket->sendTextMessage(text);
    }
}

void SocketClient::receive(const std::optional<SocketEvent>& event)
{
    const QPointer<SocketClient> self(this);
    const QWebSocket* const socket = m_socket;
    m_attempt = 0;
    report(true);
    if (!event || !self || socket != m_socket || !onEvent)
        return;
    // A copy, so that the callback may replace itself or destroy this client.
    const auto callback = onEvent;
    callback(*event);
}

void SocketClient::lost()
{
    // Nobody is left to say goodbye to.
    dropConnection(Farewell::none);
    scheduleReconnect();
}

void SocketClient::scheduleReconnect()
{
    const QPointer<SocketClient> self(this);
    report(false);
    // The callback may have destroyed or closed this client, or opened the channel anew.
    if (!self || m_manuallyClosed || m_socket)
        return;
    m_reconnectTimer.start(reconnectDelay(m_attempt++, m_timings));
}

void SocketClient::dropConnection(Farewell farewell)
{
    m_pingTimer.stop();
    m_handshakeTimer.stop();
    m_waitingTexts.clear();
    m_awaitsFirstPong = false;
    QWebSocket* const socket = std::exchange(m_socket, nullptr);
    if (!socket)
        return;
    QObject::disconnect(socket, nullptr, this, nullptr);
    if (farewell == Farewell::goingAway && socket->state() == QAbstractSocket::ConnectedState)
        socket->close(QWebSocketProtocol::CloseCodeGoingAway);
    else
        socket->abort();
    if (m_signalDepth == 0)
        delete socket;
    else
        socket->deleteLater();
}

void SocketClient::report(bool connected)
{
    if (const auto callback = onConnectionChange)
        callback(connected);
}

} // namespace orvia
