#pragma once

#include "Models/Conversation.h"

#include <QString>

#include <optional>

namespace orvia {

class Session;

/// What one search hit shows, as plain texts of any length.
struct SearchResultRow {
    QString name; ///< "Visitor" for a nameless one
    std::optional<Instant> lastMessageAt;
    QString snippet;
    QString query;       ///< whose occurrences in the snippet stand out
    QString productName; ///< empty when unknown

    /// The row of @p result for the session's present search text.
    static SearchResultRow of(const Session& session, const SearchResult& result);

    /// The time of the last message in words, or empty.
    QString time(Instant now) const;
    /// Everything that the row shows, in the order in which one reads it.
    QString accessibleText(Instant now) const;
};

} // namespace orvia
