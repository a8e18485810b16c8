#pragma once

#include "Models/Message.h"

#include <optional>
#include <vector>

namespace orvia::ReadReceipt {

/// The id of the newest agent message that the visitor has read, or none. Messages stand oldest first; notes,
/// system messages and messages without a time never qualify.
std::optional<QString> seenMessageId(const std::vector<Message>& messages,
                                     const std::optional<Instant>& visitorLastReadAt);

} // namespace orvia::ReadReceipt
