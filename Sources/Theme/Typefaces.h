#pragma once

#include <QStringList>

namespace orvia {

/// What the system has, for a user of this language.
struct Typefaces {
    /// The typeface that "Sans Serif" stands for; empty when there is none at all.
    QString general;
    /// The ones for what messages have and a text face often lacks: emoji and the scripts of the world, as
    /// far as one is installed. A font that names them finds a missing letter at once; otherwise the toolkit
    /// asks the system about every typeface there is, once for each font and script.
    QStringList fallbacks;

    /// Takes some milliseconds. Thread-safe.
    static Typefaces search();
};

} // namespace orvia
