#include "RecordChecks.h"

#include "Models/OrderedStringMap.h"

namespace orvia {

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs pairsIn(const std::string& document)
{
    Pairs result;
    const auto map = decoded<OrderedStringMap>(document);
    for (const auto& [key, value] : map.value().pairs)
        result.emplace_back(key.toStdString(), value.toStdString());
    return result;
}

} // namespace

TEST(OrderedStringMaps, KeepTextsFlagsAndNumbersInTheOrderOfTheService)
{
    EXPECT_TRUE(decoderPreservesKeyOrder());
    EXPECT_EQ(
        pairsIn(R"({"plan":"pro","seats":12,"trial":false,"tags":["a"],"extra":null,
                          "nested":{"a":1},"Active":true,"":"empty"})"),
        (Pairs{{"plan", "pro"}, {"seats", "12"}, {"trial", "false"}, {"Active", "true"}, {"", "empty"}}));
    EXPECT_EQ(pairsIn(R"({"a":"1","b":"2","a":"3"})"), (Pairs{{"a", "3"}, {"b", "2"}}));
    EXPECT_EQ(pairsIn(R"({"a":"1","b":"2","a":null})"), (Pairs{{"b", "2"}}));
}

TEST(OrderedStringMaps, WriteNumbersAsWholeNumbersOrInTheShortestForm)
{
    // Each key is the text that its number becomes.
    const Pairs pairs = pairsIn(R"({
        "-7":-7, "1200":12e2, "-3":-3.0, "3.5":3.5, "0.1":0.10, "1e-07":1e-7, "0.0001":1e-4, "-0.0005":-5e-4,
        "999999999999999":999999999999999, "-999999999999999":-999999999999999, "1e+15":1000000000000000,
        "-1e+15":-1e15, "1e+20":100000000000000000000, "1.2345678901234568e+24":1234567890123456789012345,
        "0.12345678901234568":0.12345678901234567890123456789, "5e-324":5e-324, "1.7976931348623157e+308":1.7976931348623157e308})");
    EXPECT_EQ(pairs.size(), 17U);
    for (const auto& [expected, text] : pairs)
        EXPECT_EQ(text, expected);
    for (const std::string zero : {"0", "-0", "-0.0", "1e-400"})
        EXPECT_EQ(pairsIn(R"({"n":)" + zero + "}"), (Pairs{{"n", "0"}})) << zero;
}

TEST(OrderedStringMaps, LeaveOutANumberThatNoDoubleHoldsAndNothingElse)
{
    EXPECT_EQ(pairsIn(R"({"a":1,"huge":1e400,"b":-1e400,"c":"\\","text":"1e400 \"1e400",
                          "long":123456789012345678901,"d":999999999999999,"e":0.5})"),
              (Pairs{{"a", "1"},
                     {"c", "\\"},
                     {"text", "1e400 \"1e400"},
                     {"long", "123456789012345683968"},
                     {"d", "999999999999999"},
                     {"e", "0.5"}}));
    EXPECT_EQ(pairsIn(R"({"digits":)" + std::string(400, '9') + R"(,"b":2})"), (Pairs{{"b", "2"}}));
}

} // namespace orvia
