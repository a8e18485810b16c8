#pragma once

#include "Models/APIJSON.h"
#include "Models/Deferred.h"
#include "Models/Enums.h"
#include "Models/Instant.h"
#include "Models/JSON/Fields.h"
#include "Models/Lossy.h"
#include "Models/OrderedStringMap.h"

#include <QList>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <optional>
#include <vector>

/// How declared records are written. Included only where a record's encoder is instantiated.
namespace orvia::json {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

inline void writeText(Writer& writer, std::string_view text)
{
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

inline void writeValue(Writer& writer, const QString& value)
{
    const QByteArray utf8 = value.toUtf8();
    writeText(writer, {utf8.constData(), static_cast<std::size_t>(utf8.size())});
}

inline void writeValue(Writer& writer, bool value)
{
    writer.Bool(value);
}

inline void writeValue(Writer& writer, qint64 value)
{
    writer.Int64(value);
}

inline void writeValue(Writer& writer, const Instant& value)
{
    writeText(writer, iso8601FromInstant(value));
}

template <TextEnum Enum>
void writeValue(Writer& writer, const Enum& value)
{
    writeText(writer, EnumTexts<Enum>::values[static_cast<std::size_t>(value)]);
}

inline void writeValue(Writer& writer, const OrderedStringMap& map)
{
    writer.StartObject();
    for (const auto& pair : map.pairs) {
        writeValue(writer, pair.key);
        writeValue(writer, pair.value);
    }
    writer.EndObject();
}

inline void writeValue(Writer& writer, const JSONValueIgnored&)
{
    writer.StartObject();
    writer.EndObject();
}

/// As it is: what was written before needs no writing.
template <class T>
void writeValue(Writer& writer, const Deferred<T>& record)
{
    const QByteArrayView json = record.json();
    writer.RawValue(json.data(), static_cast<std::size_t>(json.size()), rapidjson::kObjectType);
}

template <Record T>
void writeValue(Writer& writer, const T& record);

template <StrictList List>
void writeValue(Writer& writer, const List& list)
{
    writer.StartArray();
    for (const auto& item : list)
        writeValue(writer, item);
    writer.EndArray();
}

template <class Item>
void writeValue(Writer& writer, const Lossy<Item>& list)
{
    writeValue(writer, list.wrappedValue);
}

template <class T, class Value>
void writeField(Writer& writer, const T& record, const Field<T, Value>& field)
{
    const Value& member = record.*(field.member);
    if constexpr (requires { member.has_value(); }) {
        if (!member.has_value() && field.kind != FieldKind::nullable)
            return;
        writeText(writer, field.key);
        if (member.has_value())
            writeValue(writer, *member);
        else
            writer.Null();
    } else {
        writeText(writer, field.key);
        writeValue(writer, member);
    }
}

template <Record T>
void writeValue(Writer& writer, const T& record)
{
    writer.StartObject();
    std::apply([&](const auto&... field) { (writeField(writer, record, field), ...); }, T::fields());
    writer.EndObject();
}

template <class T>
QByteArray encode(const T& record)
{
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writeValue(writer, record);
    return QByteArray(buffer.GetString(), static_cast<qsizetype>(buffer.GetSize()));
}

} // namespace orvia::json

namespace orvia {

template <class T>
QByteArray APIJSON::Encoder::encode(const T& record) const
{
    return json::encode(record);
}

} // namespace orvia
