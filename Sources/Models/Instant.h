#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <string_view>

namespace orvia {

/// An absolute point in time, with millisecond resolution.
using Instant = std::chrono::sys_time<std::chrono::milliseconds>;

/// The system clock's current instant.
Instant currentInstant();

/// Reads an ISO 8601 internet date-time (RFC 3339 with an upper-case T): full date, time with seconds, an
/// optional fraction of a second, and a zone written as Z or as a signed hours:minutes offset. Digits of the
/// fraction beyond the millisecond are dropped. Anything else, dates that do not exist and instants outside
/// the years 0000 to 9999 of UTC included, gives none.
std::optional<Instant> instantFromISO8601(std::string_view text);

/// Writes @p instant in UTC without a fraction of a second, for example 2024-05-01T12:30:45Z.
/// The fraction is dropped, not rounded.
std::string iso8601FromInstant(Instant instant);

} // namespace orvia
