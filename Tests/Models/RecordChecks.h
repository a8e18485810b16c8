#pragma once

#include "Models/APIJSON.h"
#include "Models/Instant.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace orvia {

/// What the service's contract says about a member that is missing, null or of the wrong type.
enum class Rule {
    required,  ///< each fails the record
    optional,  ///< missing and null are absent, the wrong type fails the record
    lenient,   ///< each is absent
    defaulted, ///< missing and null are written back as the empty text, the wrong type fails the record
};

/// One member of a record's wire form, in the order in which it is written.
struct Member {
    std::string key;
    Rule rule;
    std::string value;                  ///< as the encoder writes it
    std::vector<std::string> badValues; ///< values that the member does not decode from
};

inline QByteArray bytes(const std::string& text)
{
    return QByteArray::fromStdString(text);
}

inline Instant instant(std::string_view text)
{
    return instantFromISO8601(text).value();
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

/// An object of the given members; @p replaced stands instead of the value of the member at @p index, and an
/// empty one leaves the member out.
inline std::string object(const std::vector<Member>& members, std::optional<std::size_t> index = std::nullopt,
                          const std::string& replaced = {})
{
    std::string text;
    for (std::size_t i = 0; i < members.size(); ++i) {
        const std::string& value = i == index ? replaced : members[i].value;
        if (!value.empty())
            text += (text.empty() ? "\"" : ",\"") + members[i].key + "\":" + value;
    }
    return "{" + text + "}";
}

/// Holds a record to its wire form: all members together, and each one missing, null and of the wrong type.
template <class T>
void checkRecord(const T& full, const std::vector<Member>& members)
{
    const std::string document = object(members);
    EXPECT_EQ(decoded<T>(document), full) << document;
    EXPECT_EQ(encoded(full), document);
    EXPECT_EQ(decoded<T>(document.substr(0, document.size() - 1) + R"(,"later":{"addition":[1]}})"), full);

    for (std::size_t i = 0; i < members.size(); ++i) {
        const auto& [key, rule, value, badValues] = members[i];
        SCOPED_TRACE(key);
        const std::string without = object(members, i, rule == Rule::defaulted ? "\"\"" : "");
        const auto expectAbsent = [&](const std::string& text) {
            const auto record = decoded<T>(text);
            ASSERT_TRUE(record) << text;
            EXPECT_EQ(encoded(*record), without) << text;
        };
        const auto expectFailure = [](const std::string& text) { EXPECT_FALSE(decoded<T>(text)) << text; };

        for (const std::string& text : {object(members, i, ""), object(members, i, "null")}) {
            if (rule == Rule::required)
                expectFailure(text);
            else
                expectAbsent(text);
        }
        EXPECT_FALSE(badValues.empty());
        for (const std::string& bad : badValues) {
            if (rule == Rule::lenient)
                expectAbsent(object(members, i, bad));
            else
                expectFailure(object(members, i, bad));
        }
    }
    for (const std::string notAnObject : {"null", "[]", "\"text\"", "17", "true"})
        EXPECT_FALSE(decoded<T>(notAnObject)) << notAnObject;
}

} // namespace orvia
