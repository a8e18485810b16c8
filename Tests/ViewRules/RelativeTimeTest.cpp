#include "Platform/RelativeTime.h"
#include "Models/Instant.h"
#include "Platform/Formats.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <ctime>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::days;

Instant utc(const char* text)
{
    return *instantFromISO8601(text);
}

/// Afternoon of a Wednesday.
const Instant now = utc("2025-09-17T15:00:00Z");

class RelativeTime : public testing::Test {
protected:
    void SetUp() override { QLocale::setDefault(QLocale(u"en_US"_s)); }

    void TearDown() override
    {
        QLocale::setDefault(QLocale::system());
        useZone("UTC");
    }

    static void useZone(const char* name)
    {
        qputenv("TZ", name);
        tzset();
    }
};

TEST_F(RelativeTime, IsNamed)
{
    using namespace std::chrono;
    const auto named = [](milliseconds distance) { return relativeTime(now + distance, now); };
    EXPECT_EQ(named(59s), u"now"_s);
    EXPECT_EQ(named(-119s), u"1 minute ago"_s);
    EXPECT_EQ(named(3min + 59s), u"in 3 minutes"_s);
    EXPECT_EQ(named(-14h), u"14 hours ago"_s);
    EXPECT_EQ(named(-39h), u"yesterday"_s);
    EXPECT_EQ(named(-40h), u"2 days ago"_s);
    EXPECT_EQ(named(18h), u"tomorrow"_s);
    EXPECT_EQ(named(-days(6)), u"6 days ago"_s);
    EXPECT_EQ(named(-days(7)), u"last week"_s);
    EXPECT_EQ(named(days(8)), u"next week"_s);
    EXPECT_EQ(named(-days(100)), u"3 months ago"_s);
    EXPECT_EQ(named(-days(364)), u"11 months ago"_s);
    EXPECT_EQ(named(days(800)), u"in 2 years"_s);
}

TEST_F(RelativeTime, CountsHoursAcrossMidnightAndDaysByTheLocalDate)
{
    const Instant night = utc("2025-09-17T01:00:00Z");
    EXPECT_EQ(relativeTime(night - 3h, night), u"3 hours ago"_s);
    EXPECT_EQ(relativeTime(night - 12h, night), u"yesterday"_s);
    EXPECT_EQ(relativeTime(night + 20h, night), u"in 20 hours"_s);
    EXPECT_EQ(relativeTime(now - 15h - 1s, now), u"yesterday"_s);
    useZone("Pacific/Kiritimati"); // five in the morning
    EXPECT_EQ(relativeTime(now + 18h, now), u"in 18 hours"_s);
    QLocale::setDefault(QLocale(u"de_DE"_s));
    EXPECT_EQ(relativeTime(now - 24h, now), u"gestern"_s);
}

// Between now and the announced moment the text is the same, and it never announces a moment that has passed.
TEST_F(RelativeTime, AnnouncesItsNextChange)
{
    for (const char* zone : {"UTC", "Europe/Berlin"}) {
        useZone(zone);
        for (const Instant start : {now, utc("2025-10-25T20:10:00Z"), utc("2025-03-29T22:59:30Z")}) {
            for (auto distance = std::chrono::milliseconds(-days(2)); distance < days(2); distance += 613s) {
                const Instant then = start + distance;
                const Instant change = nextRelativeTimeChange(then, start);
                ASSERT_GT(change, start);
                ASSERT_LE(change, start + 26h);
                EXPECT_EQ(relativeTime(then, change - 1ms), relativeTime(then, start));
            }
        }
    }
}

TEST_F(RelativeTime, ChangesWhenItSaysSo)
{
    using Milliseconds = std::chrono::milliseconds;
    const std::vector<std::pair<Milliseconds, Milliseconds>> cases{
        {10s, 70s}, {-90s, 30s},    {90s, 30s + 1ms},           {-90min, 30min},
        {-9h, 1h},  {-days(1), 9h}, {10h + 30min, 30min + 1ms}, {18h, 6h + 1ms}};
    for (const auto& [distance, wait] : cases) {
        const Instant change = nextRelativeTimeChange(now + distance, now);
        EXPECT_EQ((change - now).count(), wait.count());
        EXPECT_NE(relativeTime(now + distance, change), relativeTime(now + distance, now));
    }
}

TEST_F(RelativeTime, FormatsTimesDatesAndSizes)
{
    const Instant afternoon = utc("2025-09-14T15:41:59Z");
    EXPECT_EQ(Formats::timeOfDay(afternoon), u"3:41 PM"_s);
    EXPECT_EQ(Formats::date(afternoon), u"Sep 14, 2025"_s);
    useZone("Asia/Tokyo");
    EXPECT_EQ(Formats::date(afternoon), u"Sep 15, 2025"_s);
    EXPECT_EQ(Formats::timeOfDay(afternoon), u"12:41 AM"_s);
    useZone("UTC");
    QLocale::setDefault(QLocale(u"en_GB"_s));
    EXPECT_EQ(Formats::date(afternoon), u"14 Sept 2025"_s);
    EXPECT_EQ(Formats::timeOfDay(afternoon), u"15:41"_s);
    QLocale::setDefault(QLocale::c());
    EXPECT_EQ(Formats::date(afternoon), u"14 Sep 2025"_s);
    EXPECT_EQ(Formats::timeOfDay(afternoon), u"3:41 PM"_s);

    EXPECT_EQ(Formats::fileSize(-1), QString());
    EXPECT_EQ(Formats::fileSize(0), u"0 bytes"_s);
    EXPECT_EQ(Formats::fileSize(999'499), u"999 kB"_s);
    EXPECT_EQ(Formats::fileSize(999'500), u"1.0 MB"_s);
    EXPECT_EQ(Formats::fileSize(10'485'760), u"10.5 MB"_s);
    EXPECT_EQ(Formats::fileSize(999'960'000), u"1.00 GB"_s);
}

} // namespace
} // namespace orvia
