#pragma once

#include "Models/Enums.h"
#include "Models/Visitor.h"

namespace orvia {

/// The visitor's verdict on a conversation.
struct Rating {
    qint64 score = 0;
    std::optional<QString> comment;

    friend bool operator==(const Rating&, const Rating&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("score", &Rating::score),
            json::optional("comment", &Rating::comment),
        };
    }
};

/// One visitor's chat thread on one product.
struct Conversation {
    QString id;
    QString productId;
    Visitor visitor;
    ConversationStatus status = ConversationStatus::open;
    std::optional<QString> assigneeId; ///< the assigned agent; absent when unassigned
    std::optional<Instant> assignedAt;
    std::optional<Instant> snoozedUntil;
    std::optional<Instant> lastMessageAt;
    std::optional<QString> lastMessagePreview;
    std::optional<qint64> visitorUnread;
    std::optional<qint64> agentUnread;
    std::optional<Instant> visitorLastReadAt;
    std::optional<Instant> agentLastReadAt;
    std::optional<Rating> rating;
    std::optional<Instant> createdAt;

    friend bool operator==(const Conversation&, const Conversation&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("_id", &Conversation::id),
            json::required("productId", &Conversation::productId),
            json::required("visitor", &Conversation::visitor),
            json::required("status", &Conversation::status),
            json::optional("assigneeId", &Conversation::assigneeId),
            json::optional("assignedAt", &Conversation::assignedAt),
            json::optional("snoozedUntil", &Conversation::snoozedUntil),
            json::optional("lastMessageAt", &Conversation::lastMessageAt),
            json::optional("lastMessagePreview", &Conversation::lastMessagePreview),
            json::optional("visitorUnread", &Conversation::visitorUnread),
            json::optional("agentUnread", &Conversation::agentUnread),
            json::optional("visitorLastReadAt", &Conversation::visitorLastReadAt),
            json::optional("agentLastReadAt", &Conversation::agentLastReadAt),
            json::optional("rating", &Conversation::rating),
            json::optional("createdAt", &Conversation::createdAt),
        };
    }
};

/// A search hit. All hits in one conversation share the identity of that conversation.
struct SearchResult {
    Conversation conversation;
    QString snippet;                  ///< the matching text
    std::optional<QString> messageId; ///< absent when the hit is on the conversation itself

    const QString& id() const { return conversation.id; }

    friend bool operator==(const SearchResult&, const SearchResult&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("conversation", &SearchResult::conversation),
            json::required("snippet", &SearchResult::snippet),
            json::optional("messageId", &SearchResult::messageId),
        };
    }
};

} // namespace orvia
