#include "RecordChecks.h"

#include "Models/JSON/DynamicKey.h"
#include "Models/JSON/Hashing.h"

#include <gmock/gmock.h>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs pairsOf(const std::vector<OrderedStringMap::Pair>& pairs)
{
    Pairs result;
    for (const auto& [key, value] : pairs)
        result.emplace_back(key.toStdString(), value.toStdString());
    return result;
}

Pairs pairsIn(const std::string& document)
{
    return pairsOf(decoded<OrderedStringMap>(document).value().pairs);
}

OrderedStringMap mapOf(std::vector<OrderedStringMap::Pair> pairs)
{
    OrderedStringMap map;
    map.pairs = std::move(pairs);
    return map;
}

} // namespace

TEST(OrderedStringMaps, KeepTextsFlagsAndNumbersInTheOrderOfTheService)
{
    EXPECT_TRUE(decoderPreservesKeyOrder());
    EXPECT_EQ(pairsIn(R"({"plan":"pro","seats":12,"ratio":0.25,"trial":false,"tags":["a"],"extra":null,
                          "nested":{"a":1},"Active":true,"":"empty"})"),
              (Pairs{{"plan", "pro"},
                     {"seats", "12"},
                     {"ratio", "0.25"},
                     {"trial", "false"},
                     {"Active", "true"},
                     {"", "empty"}}));
    EXPECT_EQ(pairsIn("{}"), Pairs());
}

TEST(OrderedStringMaps, WriteNumbersAsWholeNumbersOrInTheShortestForm)
{
    const Pairs cases{
        {"42", "42"},
        {"-7", "-7"},
        {"0", "0"},
        {"-0", "0"},
        {"-0.0", "0"},
        {"-3.0", "-3"},
        {"12e2", "1200"},
        {"3.5", "3.5"},
        {"0.1", "0.1"},
        {"0.10", "0.1"},
        {"-0.25", "-0.25"},
        {"1e-7", "1e-07"},
        {"999999999999999", "999999999999999"},
        {"-999999999999999", "-999999999999999"},
        {"1e15", "1e+15"},
        {"-1e15", "-1e+15"},
        {"1000000000000000", "1e+15"},
        {"1e20", "1e+20"},
        {"100000000000000000000", "1e+20"},
        {"-100000000000000000000", "-1e+20"},
        {"1234567890123456789012345", "1.2345678901234568e+24"},
        {"1.7976931348623157e308", "1.7976931348623157e+308"},
        {"5e-324", "5e-324"},
        {"1e-400", "0"},
    };
    for (const auto& [number, text] : cases)
        EXPECT_EQ(pairsIn(R"({"n":)" + number + "}"), (Pairs{{"n", text}})) << number;
}

TEST(OrderedStringMaps, LeaveOutANumberThatNoDoubleHoldsAndNothingElse)
{
    EXPECT_EQ(pairsIn(R"({"a":1,"huge":1e400,"b":-1e400,"c":2,"text":"1e400 \"1e400"})"),
              (Pairs{{"a", "1"}, {"c", "2"}, {"text", "1e400 \"1e400"}}));
    EXPECT_EQ(pairsIn(R"({"digits":)" + std::string(400, '9') + R"(,"b":2})"), (Pairs{{"b", "2"}}));
}

TEST(OrderedStringMaps, LongIntegersDoNotChangeTheirNeighbours)
{
    EXPECT_EQ(pairsIn(R"({"a":"1e400","b":123456789012345678901,"c":999999999999999,"d":"\\","e":0.5})"),
              (Pairs{{"a", "1e400"},
                     {"b", "123456789012345683968"},
                     {"c", "999999999999999"},
                     {"d", "\\"},
                     {"e", "0.5"}}));
}

TEST(OrderedStringMaps, ARepeatedKeyCountsOnceWithItsLastValue)
{
    EXPECT_EQ(pairsIn(R"({"a":"1","b":"2","a":"3"})"), (Pairs{{"a", "3"}, {"b", "2"}}));
    EXPECT_EQ(pairsIn(R"({"a":"1","b":"2","a":null})"), (Pairs{{"b", "2"}}));
}

TEST(OrderedStringMaps, SortByCodePointWhereTheParserLosesTheOrder)
{
    const std::vector<OrderedStringMap::Pair> received{
        {u"trial"_s, u"false"_s}, {u"\U0001F600"_s, u"1"_s}, {u"\uFFFD"_s, u"2"_s}, {u"plan"_s, u"pro"_s},
        {u"Plan"_s, u"x"_s},      {u"ratio"_s, u"0.25"_s},   {u"a"_s, u"second"_s}, {u"plans"_s, u"y"_s},
        {u""_s, u"0"_s},          {u"a"_s, u"first"_s}};
    EXPECT_EQ(OrderedStringMap::arranged(received, true), received);
    EXPECT_EQ(pairsOf(OrderedStringMap::arranged(received, false)), (Pairs{{"", "0"},
                                                                           {"Plan", "x"},
                                                                           {"a", "second"},
                                                                           {"a", "first"},
                                                                           {"plan", "pro"},
                                                                           {"plans", "y"},
                                                                           {"ratio", "0.25"},
                                                                           {"trial", "false"},
                                                                           {"\uFFFD", "2"},
                                                                           {"\U0001F600", "1"}}));
}

TEST(OrderedStringMaps, MustBeObjects)
{
    for (const std::string document : {"[]", "null", "1", "\"x\"", R"([["a","b"]])"})
        EXPECT_FALSE(decoded<OrderedStringMap>(document)) << document;
}

TEST(OrderedStringMaps, EncodeInPairOrder)
{
    EXPECT_EQ(encoded(mapOf({{u"z"_s, u"1"_s}, {u"a"_s, u"\"q\""_s}, {u"m\n"_s, u""_s}})),
              R"({"z":"1","a":"\"q\"","m\n":""})");
    EXPECT_EQ(encoded(OrderedStringMap()), "{}");
}

TEST(OrderedStringMaps, EqualityAndHashFollowTheOrder)
{
    const auto map = mapOf({{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}});
    const auto same = mapOf({{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}});
    const auto reversed = mapOf({{u"b"_s, u"2"_s}, {u"a"_s, u"1"_s}});
    EXPECT_EQ(map, same);
    EXPECT_EQ(qHash(map, 0), qHash(same, 0));
    EXPECT_NE(map, reversed);
    EXPECT_NE(qHash(map, 0), qHash(reversed, 0));
}

TEST(DynamicKeys, AreTextsAndNeverPositions)
{
    EXPECT_EQ(JSONDynamicKey(u"7"_s).stringValue, u"7"_s);
    EXPECT_EQ(JSONDynamicKey(QString()).stringValue, QString());
    EXPECT_FALSE(JSONDynamicKey::fromInteger(7));
}

} // namespace orvia
