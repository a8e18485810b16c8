#pragma once

#include <QString>

#include <chrono>

namespace orvia {

/// How far @p then is from @p now, in words of the user's language, named where a name exists: "now",
/// "4 minutes ago", "yesterday", "in 3 days".
///
/// Less than a minute either way is "now". Whole minutes count up to the hour and whole hours up to twelve of
/// them; up to a day they count only within one calendar day of the local time zone. From there on calendar
/// days count, so that "yesterday" and "tomorrow" mean the neighbouring date; a week on, whole weeks,
/// calendar months and years. Thread-safe.
QString relativeTime(std::chrono::sys_time<std::chrono::milliseconds> then,
                     std::chrono::sys_time<std::chrono::milliseconds> now);

/// The first moment after @p now at which that text may be a different one. It never lies after the moment at
/// which it is.
std::chrono::sys_time<std::chrono::milliseconds>
nextRelativeTimeChange(std::chrono::sys_time<std::chrono::milliseconds> then,
                       std::chrono::sys_time<std::chrono::milliseconds> now);

} // namespace orvia
