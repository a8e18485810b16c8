#pragma once

#include "Models/Agent.h"
#include "Models/Conversation.h"
#include "Models/Message.h"

namespace orvia {

/// One event of the live channel. Which members matter depends on @c type: "message", "conversation",
/// "typing", "viewers" or "read"; any other type is without effect.
struct SocketEvent {
    QString type;
    std::optional<QString> conversationId;
    std::optional<Message> message;
    std::optional<Conversation> conversation;
    std::optional<QString> from;    ///< who is typing: "visitor" or "agent"
    std::optional<QString> preview; ///< the text typed so far
    std::optional<QString> by;      ///< who has read: "visitor" or another value
    std::optional<Instant> at;      ///< when it was read
    std::optional<QString> agentId; ///< the agent who is typing
    std::optional<QString> agentName;
    std::optional<std::vector<ViewerAgent>> agents; ///< the agents who now view the conversation

    friend bool operator==(const SocketEvent&, const SocketEvent&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("type", &SocketEvent::type),
            json::optional("conversationId", &SocketEvent::conversationId),
            json::optional("message", &SocketEvent::message),
            json::optional("conversation", &SocketEvent::conversation),
            json::optional("from", &SocketEvent::from),
            json::optional("preview", &SocketEvent::preview),
            json::optional("by", &SocketEvent::by),
            json::optional("at", &SocketEvent::at),
            json::optional("agentId", &SocketEvent::agentId),
            json::optional("agentName", &SocketEvent::agentName),
            json::optional("agents", &SocketEvent::agents),
        };
    }
};

} // namespace orvia
