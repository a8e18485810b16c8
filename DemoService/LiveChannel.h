#pragma once

#include "Models/SocketEvent.h"

#include <QHash>
#include <QObject>
#include <QWebSocket>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvia::demo {

/// The open live channels of the agents and who looks at which conversation. Main thread.
class LiveChannel : public QObject {
    Q_OBJECT

public:
    /// Whether an agent is among those whom an event concerns.
    using Audience = std::function<bool(const QString& agentId)>;

    explicit LiveChannel(QObject* parent = nullptr);
    ~LiveChannel() override;

    /// Called with each frame of an agent, as it came.
    std::function<void(const QString& agentId, const QByteArray& frame)> onFrame;
    /// Called after the list of those who look at a conversation has changed.
    std::function<void(const QString& conversationId)> onViewersChanged;
    /// Called when a channel has been opened, before anything is sent on it.
    std::function<void(const QString& agentId)> onOpened;

    /// Takes over an open channel of @p agentId.
    void add(std::unique_ptr<QWebSocket> socket, const QString& agentId);

    void send(const SocketEvent& event, const Audience& audience);
    /// Sends @p frame as it is, malformed or not, as a text frame or as a binary frame.
    void sendRaw(const QByteArray& frame, const Audience& audience, bool binary = false);

    /// Notes that the agent looks at the conversation, or at none. For channels, the one that sends the frame
    /// now handled; for a teammate without a channel, all there is.
    void setViewing(const QString& agentId, const std::optional<QString>& conversationId);
    /// The agents who look at the conversation, each once, in the order in which they came.
    QStringList viewers(const QString& conversationId) const;
    /// The conversations at which somebody looks.
    QStringList viewedConversations() const;

    /// How many channels are open.
    std::size_t channelCount() const { return m_peers.size(); }
    bool hasChannel(const QString& agentId) const;
    /// How many events have been sent so far, whether or not anybody listened.
    qint64 eventCount() const { return m_eventCount; }
    void closeAll(QWebSocketProtocol::CloseCode code);
    /// Breaks every connection without a closing handshake.
    void abortAll();

private:
    struct Peer {
        std::unique_ptr<QWebSocket> socket;
        QString agentId;
    };
    struct Sighting {
        const QWebSocket* socket; ///< absent for teammates without a channel
        QString agentId;
    };

    void receive(QWebSocket* socket, const QByteArray& frame);
    void drop(QWebSocket* socket);
    std::vector<Peer>::iterator peerOf(const QWebSocket* socket);
    void move(const QWebSocket* socket, const QString& agentId, const std::optional<QString>& conversationId);

    std::vector<Peer> m_peers;
    QHash<QString, QList<Sighting>> m_sightings;
    qint64 m_eventCount = 0;
    const QWebSocket* m_current = nullptr; ///< whose frame is being handled
};

} // namespace orvia::demo
