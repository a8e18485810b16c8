#pragma once

#include <QStringList>

namespace orvia::Typefaces {

/// The typefaces that the system chooses, for a user of this language, for what messages have and a text face
/// often lacks: emoji and the scripts of the world, as far as one is installed. Takes some milliseconds.
/// Thread-safe.
///
/// A font that names them finds a missing letter at once; otherwise the toolkit asks the system about every
/// typeface there is, once for each font and script.
QStringList fallbacks();

} // namespace orvia::Typefaces
