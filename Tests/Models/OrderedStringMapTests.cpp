#include "RecordChecks.h"

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
    // Each key is the text that its number becomes.
    const Pairs pairs = pairsIn(R"({
        "42":42, "-7":-7, "1200":12e2, "-3":-3.0, "3.5":3.5, "0.1":0.10, "-0.25":-0.25, "1e-07":1e-7,
        "999999999999999":999999999999999, "-999999999999999":-999999999999999, "1e+15":1000000000000000,
        "-1e+15":-1e15, "1e+20":100000000000000000000, "-1e+20":-100000000000000000000,
        "1.2345678901234568e+24":1234567890123456789012345, "5e-324":5e-324,
        "1.7976931348623157e+308":1.7976931348623157e308})");
    EXPECT_EQ(pairs.size(), 17U);
    for (const auto& [expected, text] : pairs)
        EXPECT_EQ(text, expected);
    for (const std::string zero : {"0", "-0", "-0.0", "1e-400"})
        EXPECT_EQ(pairsIn(R"({"n":)" + zero + "}"), (Pairs{{"n", "0"}})) << zero;
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

TEST(OrderedStringMaps, EncodeCompareAndHashInPairOrder)
{
    const OrderedStringMap map{{{u"z"_s, u"1"_s}, {u"a"_s, u"\"q\""_s}, {u"m\n"_s, u""_s}}};
    OrderedStringMap reversed = map;
    std::reverse(reversed.pairs.begin(), reversed.pairs.end());
    EXPECT_EQ(encoded(map), R"({"z":"1","a":"\"q\"","m\n":""})");
    EXPECT_NE(map, reversed);
    EXPECT_NE(qHash(map, 0), qHash(reversed, 0));
}

} // namespace orvia
