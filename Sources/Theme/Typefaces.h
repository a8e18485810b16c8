#pragma once

#include <QStringList>

#include <future>

namespace orvia {

namespace Typefaces {

/// The typefaces that the system chooses, for a user of this language, for what messages have and a text face
/// often lacks: emoji and the scripts of the world, as far as one is installed. Takes some milliseconds.
/// Thread-safe.
///
/// A font that names them finds a missing letter at once; otherwise the toolkit asks the system about every
/// typeface there is, once for each font and script.
QStringList fallbacks();

} // namespace Typefaces

/// The search for @c Typefaces::fallbacks in a thread of its own, whose end the destructor waits for.
class TypefaceSearch {
public:
    TypefaceSearch();
    TypefaceSearch(const TypefaceSearch&) = delete;
    TypefaceSearch& operator=(const TypefaceSearch&) = delete;
    ~TypefaceSearch() { m_families.wait(); }

    const std::shared_future<QStringList>& families() const { return m_families; }

private:
    std::shared_future<QStringList> m_families;
};

} // namespace orvia
