#include "RecordChecks.h"

namespace orvia {

using namespace std::chrono;

namespace {

Instant at(int yearNumber, unsigned monthNumber, unsigned dayNumber, int hour = 0, int minute = 0,
           int second = 0, int millisecond = 0)
{
    return sys_days(year(yearNumber) / month(monthNumber) / day(dayNumber)) + hours(hour) + minutes(minute)
           + seconds(second) + milliseconds(millisecond);
}

} // namespace

TEST(Dates, Reading)
{
    const std::vector<std::pair<std::string, Instant>> cases{
        {"2024-05-01T12:30:45Z", at(2024, 5, 1, 12, 30, 45)},
        {"2024-05-01T12:30:45.5Z", at(2024, 5, 1, 12, 30, 45, 500)},
        {"2024-05-01T12:30:45.0009Z", at(2024, 5, 1, 12, 30, 45)},
        {"2024-05-01T12:30:45." + std::string(100'000, '1') + "Z", at(2024, 5, 1, 12, 30, 45, 111)},
        {"2024-05-01T07:00:45.250-05:30", at(2024, 5, 1, 12, 30, 45, 250)},
        {"2000-02-29T23:59:59.999Z", at(2000, 2, 29, 23, 59, 59, 999)},
        {"1969-12-31T23:59:59.250Z", at(1969, 12, 31, 23, 59, 59, 250)},
        {"0000-01-01T00:00:00Z", at(0, 1, 1)},
        {"9999-12-31T23:59:59.999Z", at(9999, 12, 31, 23, 59, 59, 999)},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(instantFromISO8601(text), expected) << text.substr(0, 60);
}

TEST(Dates, RefusedForms)
{
    // Separated by bars; the first one is empty.
    const QByteArray refused =
        "|2024-05-01|2024-05-01T12:30:45|2024-05-01T12:30Z|2024-05-01T12:30:45z"
        "|2024-05-01t12:30:45Z|2024-05-01 12:30:45Z|2024-05-01T12:30:45,5Z|2024-05-01T12:30:45.Z"
        "|2024-05-01T12:30:45.5|2024-05-01T12:30:45.-5Z|2024-05-01T12:30:45+0200"
        "|2024-05-01T12:30:45+02|2024-05-01T12:30:45+2:00|2024-05-01T12:30:45+24:00"
        "|2024-05-01T12:30:45+02:60|2024-05-01T12:30:45Z+02:00|2024-05-01T12:30:45Z "
        "| 2024-05-01T12:30:45Z|2024-05-01T12:30:45Zx|2024-05-01T24:00:00Z|2024-05-01T12:60:00Z"
        "|2024-05-01T12:30:60Z|2024-5-1T12:30:45Z|24-05-01T12:30:45Z|02024-05-01T12:30:45Z"
        "|-2024-05-01T12:30:45Z|+2024-05-01T12:30:45Z|20240501T123045Z|2024-W18-3T12:30:45Z"
        "|2024-122T12:30:45Z|2023-02-29T00:00:00Z|1900-02-29T00:00:00Z|2024-04-31T00:00:00Z"
        "|2024-00-01T00:00:00Z|2024-13-01T00:00:00Z|2024-05-00T00:00:00Z|2024-05-32T00:00:00Z"
        "|0000-01-01T00:00:00+00:01|9999-12-31T23:59:59-00:01|\u0662024-05-01T12:30:45Z";
    for (const QByteArray& each : refused.split('|')) {
        const std::string text = each.toStdString();
        EXPECT_EQ(instantFromISO8601(text), std::nullopt) << text;
    }
    EXPECT_EQ(instantFromISO8601(std::string("2024-05-01T12:30:45Z\0", 21)), std::nullopt);
}

TEST(Dates, Writing)
{
    const std::vector<std::pair<Instant, std::string>> cases{
        {at(2024, 5, 1, 12, 30, 45, 999), "2024-05-01T12:30:45Z"},
        {at(1969, 12, 31, 23, 59, 59, 1), "1969-12-31T23:59:59Z"},
        {at(0, 1, 1), "0000-01-01T00:00:00Z"},
        {at(9999, 12, 31, 23, 59, 59, 999), "9999-12-31T23:59:59Z"},
    };
    for (const auto& [instant, expected] : cases)
        EXPECT_EQ(iso8601FromInstant(instant), expected);
}

} // namespace orvia
