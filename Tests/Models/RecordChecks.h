#pragma once

#include "Models/APIJSON.h"
#include "Models/Instant.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace orvia {

inline QByteArray bytes(const std::string& text)
{
    return QByteArray::fromStdString(text);
}

/// The record in @p document, or none where it fails to decode.
template <class T>
std::optional<T> decoded(const std::string& document)
{
    try {
        return APIJSON::decoder.decode<T>(bytes(document));
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

/// How decoding @p document fails, or none where it does not.
template <class T>
std::optional<DecodingError> failureOf(const std::string& document)
{
    try {
        APIJSON::decoder.decode<T>(bytes(document));
    } catch (const DecodingError& error) {
        return error;
    }
    return std::nullopt;
}

template <class T>
std::string encoded(const T& record)
{
    return APIJSON::encoder.encode(record).toStdString();
}

} // namespace orvia
