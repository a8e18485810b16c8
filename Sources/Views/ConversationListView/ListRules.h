#pragma once

#include "Models/Agent.h"
#include "Models/Enums.h"
#include "Platform/UnicodeText.h"

#include <QString>

#include <optional>
#include <vector>

/// The texts of the inbox column as pure functions.
namespace orvia::ListRules {

/// Who looks at a conversation: the name of the only one, or how many. Nameless viewers do not count.
std::optional<QString> viewingCaption(const std::vector<ViewerAgent>& viewers);

/// What an empty inbox says.
QString emptyTitle(InboxQueue queue, ConversationStatus status);

/// Where the query occurs in a snippet, letter case aside, from the start and without overlap.
std::vector<UnicodeText::Range> highlighted(const QString& snippet, const QString& query);

} // namespace orvia::ListRules
