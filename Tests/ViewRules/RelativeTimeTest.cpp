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
    const std::vector<std::pair<std::chrono::milliseconds, const char16_t*>> cases{
        {0s, u"now"},
        {-59s, u"now"},
        {59s, u"now"},
        {-60s, u"1 minute ago"},
        {-119s, u"1 minute ago"},
        {-4min, u"4 minutes ago"},
        {3min + 59s, u"in 3 minutes"},
        {-1h, u"1 hour ago"},
        {-2h, u"2 hours ago"},
        {-14h, u"14 hours ago"}, // still today
        {-16h, u"yesterday"},
        {-24h, u"yesterday"},
        {-39h, u"yesterday"},
        {-40h, u"2 days ago"},
        {-days(2), u"2 days ago"},
        {18h, u"tomorrow"}, // nine in the morning
        {8h, u"in 8 hours"},
        {days(3), u"in 3 days"},
        {-days(6), u"6 days ago"},
        {-days(7), u"last week"},
        {-days(20), u"2 weeks ago"},
        {days(8), u"next week"},
        {-days(31), u"last month"},
        {-days(100), u"3 months ago"},
        {-days(365), u"last year"},
        {-days(364), u"11 months ago"},
        {days(800), u"in 2 years"},
    };
    for (const auto& [distance, text] : cases)
        EXPECT_EQ(relativeTime(now + distance, now), QString::fromUtf16(text));
}

TEST_F(RelativeTime, CountsHoursAcrossMidnight)
{
    const Instant night = utc("2025-09-17T01:00:00Z");
    EXPECT_EQ(relativeTime(night - 3h, night), u"3 hours ago"_s);
    EXPECT_EQ(relativeTime(night - 12h, night), u"yesterday"_s);
    EXPECT_EQ(relativeTime(night + 20h, night), u"in 20 hours"_s);
}

TEST_F(RelativeTime, KnowsTheLocalDate)
{
    EXPECT_EQ(relativeTime(now - 15h - 1s, now), u"yesterday"_s);
    useZone("America/New_York");
    EXPECT_EQ(relativeTime(now - 18h, now), u"yesterday"_s);
    useZone("Pacific/Kiritimati"); // five in the morning
    EXPECT_EQ(relativeTime(now + 18h, now), u"in 18 hours"_s);
}

TEST_F(RelativeTime, SpeaksTheUsersLanguage)
{
    QLocale::setDefault(QLocale(u"de_DE"_s));
    EXPECT_EQ(relativeTime(now - 2h, now), u"vor 2 Stunden"_s);
    EXPECT_EQ(relativeTime(now - 24h, now), u"gestern"_s);
    QLocale::setDefault(QLocale::c());
    EXPECT_EQ(relativeTime(now - 2h, now), u"2 hours ago"_s);
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
    const std::vector<std::pair<std::chrono::milliseconds, std::chrono::milliseconds>> cases{
        {-10s, 50s},     {10s, 70s}, {-90s, 30s},    {90s, 30s + 1ms},
        {-90min, 30min}, {-9h, 1h},  {-days(1), 9h}, {10h + 30min, 30min + 1ms},
        {18h, 6h + 1ms},
    };
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
    EXPECT_EQ(Formats::date(utc("2025-09-14T23:59:59Z")), u"Sep 14, 2025"_s);
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

    const std::vector<std::pair<qint64, const char16_t*>> sizes{
        {-1, u""},
        {0, u"0 bytes"},
        {512, u"512 bytes"},
        {34'400, u"34 kB"},
        {999'499, u"999 kB"},
        {999'500, u"1.0 MB"},
        {1'200'000, u"1.2 MB"},
        {10'485'760, u"10.5 MB"},
        {999'960'000, u"1.00 GB"},
        {2'340'000'000, u"2.34 GB"},
    };
    for (const auto& [bytes, text] : sizes)
        EXPECT_EQ(Formats::fileSize(bytes), QString::fromUtf16(text)) << bytes;
}

} // namespace
} // namespace orvia
