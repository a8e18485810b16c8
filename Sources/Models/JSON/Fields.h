#pragma once

#include <QList>

#include <array>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

/// The vocabulary in which a record declares its JSON members, once, for decoding, encoding and hashing.
namespace orvia::json {

/// What decoding does when a member is missing, null or of the wrong type.
enum class FieldKind {
    required,  ///< each of the three fails the record
    optional,  ///< missing and null give an absent value, the wrong type fails the record
    lenient,   ///< each of the three gives an absent value
    defaulted, ///< missing and null give the default value, the wrong type fails the record
    nullable,  ///< decodes like `optional`; an absent value is written as an explicit null
};

template <class Record, class Value>
struct Field {
    std::string_view key;
    Value Record::*member;
    FieldKind kind;
};

template <class Record, class Value>
constexpr Field<Record, Value> required(std::string_view key, Value Record::*member)
{
    return {key, member, FieldKind::required};
}

template <class Record, class Value>
constexpr Field<Record, Value> optional(std::string_view key, Value Record::*member)
{
    return {key, member, FieldKind::optional};
}

template <class Record, class Value>
constexpr Field<Record, Value> lenient(std::string_view key, Value Record::*member)
{
    return {key, member, FieldKind::lenient};
}

template <class Record, class Value>
constexpr Field<Record, Value> defaulted(std::string_view key, Value Record::*member)
{
    return {key, member, FieldKind::defaulted};
}

template <class Record, class Value>
constexpr Field<Record, Value> nullable(std::string_view key, Value Record::*member)
{
    return {key, member, FieldKind::nullable};
}

/// A struct whose static `fields()` answers the tuple of its JSON members.
template <class T>
concept Record = requires
{
    std::tuple_size<decltype(T::fields())>::value;
};

template <Record T>
inline constexpr std::size_t fieldCount = std::tuple_size_v<decltype(T::fields())>;

/// The texts of an enumeration, in the order of its enumerators, which count from 0.
/// Specialise with a `static constexpr std::array<std::string_view, N> values`.
template <class Enum>
struct EnumTexts;

template <class T>
concept TextEnum = std::is_enum_v<T> && requires
{
    EnumTexts<T>::values.size();
};

/// The plain lists of a record's members: one bad element fails them, unlike @c Lossy.
template <class T>
inline constexpr bool isStrictList = false;
template <class Item>
inline constexpr bool isStrictList<std::vector<Item>> = true;
template <class Item>
inline constexpr bool isStrictList<QList<Item>> = true;

template <class T>
concept StrictList = isStrictList<T>;

} // namespace orvia::json
