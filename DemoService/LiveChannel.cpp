#include "DemoService/LiveChannel.h"

#include "DemoService/WireEncoding.h"

#include <algorithm>

namespace orvia::demo {

namespace {

/// A reader that falls this far behind is cut off, so that it cannot make the service's memory grow for ever.
constexpr qint64 mostPendingBytes = 64 * 1024 * 1024;
constexpr quint64 longestFrame = 1024 * 1024;

} // namespace

LiveChannel::LiveChannel(QObject* parent)
    : QObject(parent)
{
}

LiveChannel::~LiveChannel()
{
    for (const Peer& peer : m_peers)
        peer.socket->disconnect(this);
}

void LiveChannel::add(std::unique_ptr<QWebSocket> socket, const QString& agentId)
{
    QWebSocket* const channel = socket.get();
    channel->setParent(nullptr);
    channel->setMaxAllowedIncomingMessageSize(longestFrame);
    connect(channel, &QWebSocket::textMessageReceived, this,
            [this, channel](const QString& text) { receive(channel, text.toUtf8()); });
    connect(channel, &QWebSocket::binaryMessageReceived, this,
            [this, channel](const QByteArray& bytes) { receive(channel, bytes); });
    connect(channel, &QWebSocket::disconnected, this, [this, channel] { drop(channel); });
    m_peers.push_back({std::move(socket), agentId});
    if (onOpened)
        onOpened(agentId);
}

void LiveChannel::send(const SocketEvent& event, const Audience& audience)
{
    ++m_eventCount;
    if (!m_peers.empty())
        sendRaw(wire::encoded(event), audience);
}

void LiveChannel::sendRaw(const QByteArray& frame, const Audience& audience, bool binary)
{
    const QString text = binary ? QString() : QString::fromUtf8(frame);
    std::vector<QWebSocket*> laggards;
    for (const Peer& peer : m_peers) {
        if (!audience(peer.agentId))
            continue;
        if (binary)
            peer.socket->sendBinaryMessage(frame);
        else
            peer.socket->sendTextMessage(text);
        if (peer.socket->bytesToWrite() > mostPendingBytes)
            laggards.push_back(peer.socket.get());
    }
    for (QWebSocket* socket : laggards)
        socket->abort();
}

void LiveChannel::setViewing(const QString& agentId, const std::optional<QString>& conversationId)
{
    move(m_current, agentId, conversationId);
}

QStringList LiveChannel::viewers(const QString& conversationId) const
{
    QStringList agents;
    for (const Sighting& sighting : m_sightings.value(conversationId)) {
        if (!agents.contains(sighting.agentId))
            agents.push_back(sighting.agentId);
    }
    return agents;
}

QStringList LiveChannel::viewedConversations() const
{
    QStringList conversations = m_sightings.keys();
    conversations.sort();
    return conversations;
}

bool LiveChannel::hasChannel(const QString& agentId) const
{
    return std::any_of(m_peers.begin(), m_peers.end(),
                       [&](const Peer& peer) { return peer.agentId == agentId; });
}

void LiveChannel::closeAll(QWebSocketProtocol::CloseCode code)
{
    // Closing may report at once, which shortens the list.
    std::vector<QWebSocket*> sockets;
    for (const Peer& peer : m_peers)
        sockets.push_back(peer.socket.get());
    for (QWebSocket* socket : sockets)
        socket->close(code);
}

void LiveChannel::abortAll()
{
    std::vector<QWebSocket*> sockets;
    for (const Peer& peer : m_peers)
        sockets.push_back(peer.socket.get());
    for (QWebSocket* socket : sockets)
        socket->abort();
}

void LiveChannel::receive(QWebSocket* socket, const QByteArray& frame)
{
    const auto peer = peerOf(socket);
    if (peer == m_peers.end() || !onFrame)
        return;
    m_current = socket;
    onFrame(QString(peer->agentId), frame);
    m_current = nullptr;
}

void LiveChannel::drop(QWebSocket* socket)
{
    const auto peer = peerOf(socket);
    if (peer == m_peers.end())
        return;
    const QString agentId = peer->agentId;
    // The socket is still emitting: it goes when control is back in the event loop.
    peer->socket.release()->deleteLater();
    m_peers.erase(peer);
    move(socket, agentId, std::nullopt);
}

std::vector<LiveChannel::Peer>::iterator LiveChannel::peerOf(const QWebSocket* socket)
{
    return std::find_if(m_peers.begin(), m_peers.end(),
                        [socket](const Peer& peer) { return peer.socket.get() == socket; });
}

void LiveChannel::move(const QWebSocket* socket, const QString& agentId,
                       const std::optional<QString>& conversationId)
{
    const auto isSame = [&](const Sighting& sighting) {
        return sighting.socket == socket && sighting.agentId == agentId;
    };
    QStringList changed;
    for (const QString& viewed : viewedConversations()) {
        QList<Sighting>& sightings = m_sightings[viewed];
        const QStringList before = viewers(viewed);
        if (viewed == conversationId && std::any_of(sightings.cbegin(), sightings.cend(), isSame))
            return;
        sightings.removeIf(isSame);
        if (viewers(viewed) != before)
            changed.push_back(viewed);
        if (sightings.isEmpty())
            m_sightings.remove(viewed);
    }
    if (conversationId) {
        const QStringList before = viewers(*conversationId);
        m_sightings[*conversationId].push_back({socket, agentId});
        if (viewers(*conversationId) != before)
            changed.push_back(*conversationId);
    }
    if (!onViewersChanged)
        return;
    for (const QString& id : changed)
        onViewersChanged(id);
}

} // namespace orvia::demo
