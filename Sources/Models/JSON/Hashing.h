#pragma once

#include "Models/Instant.h"
#include "Models/JSON/Fields.h"
#include "Models/OrderedStringMap.h"

#include <QHash>

namespace orvia {

namespace json {

inline size_t hashValue(const Instant& instant, size_t seed)
{
    return qHash(instant.time_since_epoch().count(), seed);
}

inline size_t hashValue(const OrderedStringMap& map, size_t seed)
{
    for (const auto& pair : map.pairs)
        seed = qHashMulti(seed, pair.key, pair.value);
    return seed;
}

template <class T>
size_t hashValue(const T& value, size_t seed)
{
    if constexpr (requires { value.has_value(); }) {
        return value ? hashValue(*value, qHash(1, seed)) : qHash(0, seed);
    } else if constexpr (TextEnum<T>) {
        return qHash(static_cast<int>(value), seed);
    } else if constexpr (Record<T>) {
        std::apply([&](const auto&... field) { ((seed = hashValue(value.*(field.member), seed)), ...); },
                   T::fields());
        return seed;
    } else if constexpr (requires { value.json(); }) {
        return hashValue(*value.value(), seed);
    } else if constexpr (requires { value.wrappedValue; }) {
        return hashValue(value.wrappedValue, seed);
    } else if constexpr (StrictList<T>) {
        for (const auto& item : value)
            seed = hashValue(item, seed);
        return seed;
    } else {
        return qHash(value, seed);
    }
}

} // namespace json

/// A hash over every field of a record, in agreement with its equality. The seed has no default, because Qt
/// would take that for a second, equally good overload.
template <json::Record T>
size_t qHash(const T& record, size_t seed)
{
    return json::hashValue(record, seed);
}

inline size_t qHash(const OrderedStringMap& map, size_t seed)
{
    return json::hashValue(map, seed);
}

} // namespace orvia
