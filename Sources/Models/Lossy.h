#pragma once

#include <optional>
#include <vector>

namespace orvia {

/// A list whose malformed elements are dropped while decoding instead of failing the list. Encodes as the
/// plain list. The JSON value itself must be an array.
template <class Element>
struct Lossy {
    /// One element decoded on its own: absent when it failed, whatever the reason.
    struct Failable {
        std::optional<Element> value;
    };

    std::vector<Element> wrappedValue;

    friend bool operator==(const Lossy&, const Lossy&) = default;
};

template <class T>
inline constexpr bool isLossy = false;
template <class Element>
inline constexpr bool isLossy<Lossy<Element>> = true;

} // namespace orvia
