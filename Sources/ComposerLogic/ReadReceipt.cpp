#include "ComposerLogic/ReadReceipt.h"

#include <algorithm>

namespace orvia::ReadReceipt {

std::optional<QString> seenMessageId(const std::vector<Message>& messages,
                                     const std::optional<Instant>& visitorLastReadAt)
{
    if (!visitorLastReadAt)
        return std::nullopt;
    const auto seen = std::find_if(messages.crbegin(), messages.crend(), [&](const Message& message) {
        return message.sender == MessageSender::agent && message.createdAt
               && *message.createdAt <= *visitorLastReadAt;
    });
    return seen == messages.crend() ? std::nullopt : std::optional(seen->id);
}

} // namespace orvia::ReadReceipt
