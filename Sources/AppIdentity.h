#pragma once

#include <QLatin1String>

namespace orvia::AppIdentity {

/// The application's reverse-domain identifier. It is the name under which secrets are filed, the name on the
/// session bus and the name of the desktop entry, so it must never change.
inline constexpr QLatin1String identifier("io.tessaly.Orvia");

/// The name under which the application keeps its files in the XDG directories.
inline constexpr QLatin1String directory("orvia");

/// The application's name on the screen.
inline constexpr QLatin1String displayName("Orvia");

} // namespace orvia::AppIdentity
