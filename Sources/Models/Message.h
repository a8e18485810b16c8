#pragma once

#include "Models/Enums.h"
#include "Models/Instant.h"

#include <QStringList>

namespace orvia {

/// A file that belongs to a message.
struct Attachment {
    std::optional<QString> fileId;
    std::optional<QString> name;
    std::optional<QString> mime;
    std::optional<qint64> size; ///< bytes
    std::optional<AttachmentKind> kind;
    std::optional<QString> url; ///< where the file is fetched; may be relative to the service's origin

    friend bool operator==(const Attachment&, const Attachment&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::optional("fileId", &Attachment::fileId), json::optional("name", &Attachment::name),
            json::optional("mime", &Attachment::mime),     json::optional("size", &Attachment::size),
            json::optional("kind", &Attachment::kind),     json::optional("url", &Attachment::url),
        };
    }
};

struct Message {
    QString id;
    QString conversationId;
    MessageSender sender = MessageSender::visitor;
    std::optional<QString> agentId; ///< the writing agent of agent messages and notes
    std::optional<MessageVia> via;
    std::optional<QStringList> mentions; ///< identifiers of the agents that a note mentions
    QString body;
    std::optional<Attachment> attachment;
    std::optional<Instant> createdAt;

    friend bool operator==(const Message&, const Message&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("_id", &Message::id),
            json::required("conversationId", &Message::conversationId),
            json::required("sender", &Message::sender),
            json::optional("agentId", &Message::agentId),
            json::optional("via", &Message::via),
            json::optional("mentions", &Message::mentions),
            json::required("body", &Message::body),
            json::optional("attachment", &Message::attachment),
            json::optional("createdAt", &Message::createdAt),
        };
    }
};

} // namespace orvia
