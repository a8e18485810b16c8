#pragma once

#include "Models/Conversation.h"

#include <QString>

#include <optional>

namespace orvia {

class Session;

/// What one row of the inbox shows, as plain texts of any length.
struct ConversationRow {
    QString name;
    bool isClosed = false;
    QString countryCode; ///< upper case; empty when unknown
    std::optional<Instant> lastMessageAt;
    QString text;          ///< the second line: what the visitor is typing, else the last message
    bool isTyping = false; ///< which of the two it is
    QString rating;        ///< "4/5", or empty
    QString productName;   ///< empty when unknown
    bool isSnoozed = false;
    bool isUnread = false;
    QString viewingCaption; ///< empty when no teammate looks at the conversation

    /// The row of @p conversation as the session stands at @p now.
    static ConversationRow of(const Session& session, const Conversation& conversation, Instant now);

    /// The time of the last message in words, or empty.
    QString time(Instant now) const;
    /// Everything that the row shows, in the order in which one reads it.
    QString accessibleText(Instant now) const;

    friend bool operator==(const ConversationRow&, const ConversationRow&) = default;
};

} // namespace orvia
