#pragma once

#include "Models/Instant.h"

#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orvia {

/// When which positions of the inbox stop being snoozed, the earliest first. Setting, taking and asking for
/// the next one cost no more than the logarithm of how many are snoozed.
class SnoozeExpiries {
public:
    void clear();
    /// Notes that @p position is snoozed until @p until; absent, or not after @p now, that it is not.
    void set(qsizetype position, std::optional<Instant> until, Instant now);
    /// The earliest end of a snooze, or none.
    std::optional<Instant> next() const;
    /// Removes and answers the positions whose snooze has ended at @p now.
    std::vector<qsizetype> takeExpired(Instant now);

private:
    std::set<std::pair<Instant, qsizetype>> m_order;
    std::unordered_map<qsizetype, Instant> m_ends;
};

} // namespace orvia
