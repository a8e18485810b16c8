#pragma once

#include "Models/Deferred.h"
#include "Models/Enums.h"
#include "Models/Instant.h"
#include "Models/JSON/Fields.h"
#include "Models/Lossy.h"
#include "Models/OrderedStringMap.h"

#include <QByteArray>
#include <QList>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <optional>
#include <vector>

/// How the service writes the shared records. It differs from what the console writes in two ways: instants
/// keep their milliseconds, so that order within a second survives, and custom data has numbers and booleans.
namespace orvia::demo::wire {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

inline void write(Writer& writer, std::string_view text)
{
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

inline void write(Writer& writer, const QString& value)
{
    const QByteArray utf8 = value.toUtf8();
    write(writer, std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

inline void write(Writer& writer, bool value)
{
    writer.Bool(value);
}

inline void write(Writer& writer, qint64 value)
{
    writer.Int64(value);
}

void write(Writer& writer, const Instant& value);
void write(Writer& writer, const OrderedStringMap& map);

template <json::TextEnum Enum>
void write(Writer& writer, const Enum& value)
{
    write(writer, json::EnumTexts<Enum>::values[static_cast<std::size_t>(value)]);
}

/// As @c deferred wrote it.
template <class T>
void write(Writer& writer, const Deferred<T>& record)
{
    const QByteArrayView json = record.json();
    writer.RawValue(json.data(), static_cast<std::size_t>(json.size()), rapidjson::kObjectType);
}

template <json::Record T>
void write(Writer& writer, const T& record);

template <class List>
requires(
    std::same_as<
        List,
        std::vector<
            typename List::
                value_type>> || std::same_as<List, QList<typename List::value_type>>) void write(Writer&
                                                                                                     writer,
                                                                                                 const List&
                                                                                                     list)
{
    writer.StartArray();
    for (const auto& item : list)
        write(writer, item);
    writer.EndArray();
}

template <class Item>
void write(Writer& writer, const Lossy<Item>& list)
{
    write(writer, list.wrappedValue);
}

template <class T, class Value>
void writeField(Writer& writer, const T& record, const json::Field<T, Value>& field)
{
    const Value& member = record.*(field.member);
    if constexpr (requires { member.has_value(); }) {
        if (!member)
            return;
        write(writer, field.key);
        write(writer, *member);
    } else {
        write(writer, field.key);
        write(writer, member);
    }
}

template <json::Record T>
void write(Writer& writer, const T& record)
{
    writer.StartObject();
    std::apply([&](const auto&... field) { (writeField(writer, record, field), ...); }, T::fields());
    writer.EndObject();
}

/// @p record as compact JSON; absent members are left out.
template <json::Record T>
QByteArray encoded(const T& record)
{
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    write(writer, record);
    return QByteArray(buffer.GetString(), static_cast<qsizetype>(buffer.GetSize()));
}

/// @p record as the service writes it, for a member that is written as it is.
template <json::Record T>
Deferred<T> deferred(const T& record)
{
    return Deferred<T>::fromJSON(encoded(record));
}

} // namespace orvia::demo::wire
