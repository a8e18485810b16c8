#pragma once

#include <QString>

#include <optional>

namespace orvia {

/// Keeps secret texts by key. Calls are synchronous and never throw. Any thread; what is written in several
/// at once is written in some order.
class TokenStore {
public:
    virtual ~TokenStore() = default;

    /// The stored text, or none.
    virtual std::optional<QString> string(const QString& key) = 0;
    /// Stores @p value under @p key, replacing an older one; an absent value deletes the entry. Answers
    /// whether it succeeded, which callers may ignore.
    virtual bool set(const std::optional<QString>& value, const QString& key) = 0;
};

} // namespace orvia
