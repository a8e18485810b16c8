#include "Views/VisitorPanel/VisitorHelpers.h"

#include <gtest/gtest.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;

VisitorGeo geo(const std::optional<QString>& city, const std::optional<QString>& region,
               const std::optional<QString>& country, const std::optional<QString>& code)
{
    VisitorGeo made;
    made.city = city;
    made.region = region;
    made.country = country;
    made.countryCode = code;
    return made;
}

TEST(PlaceLine, JoinsWhatIsKnown)
{
    EXPECT_EQ(placeLine(std::nullopt), std::nullopt);
    struct Case {
        VisitorGeo geo;
        QString line;
    };
    const std::vector<Case> cases{
        {geo(u"Berlin"_s, u"Berlin"_s, u"Germany"_s, u"de"_s), u"Berlin, Germany (DE)"_s},
        {geo({}, {}, {}, u"us"_s), u"US"_s},
        {geo(u"Singapore"_s, {}, u"singapore"_s, {}), u"Singapore"_s},
        {geo(u"Singapore"_s, u""_s, u"SINGAPORE"_s, u""_s), u"Singapore"_s},
        {geo(u"York"_s, u"England"_s, u"York"_s, {}), u"York, England, York"_s}, // only neighbours are one
        {geo({}, {}, {}, {}), u""_s},
    };
    for (const Case& tried : cases)
        EXPECT_EQ(placeLine(tried.geo), tried.line);
}

TEST(NetworkLine, JoinsZoneAndOrganisation)
{
    VisitorGeo place;
    EXPECT_EQ(networkLine(std::nullopt), std::nullopt);
    EXPECT_EQ(networkLine(place), u""_s);
    place.org = u"Example Telecom"_s;
    EXPECT_EQ(networkLine(place), u"Example Telecom"_s);
    place.timezone = u"Europe/Berlin"_s;
    EXPECT_EQ(networkLine(place), u"Europe/Berlin \u00B7 Example Telecom"_s);
    place.org = u""_s;
    EXPECT_EQ(networkLine(place), u"Europe/Berlin"_s);
}

TEST(PageLabel, TakesTheFirstThatNamesThePage)
{
    struct Case {
        std::optional<QString> title;
        std::optional<QString> url;
        QString label;
    };
    const std::vector<Case> cases{
        {u"Cart"_s, u"https://h/cart"_s, u"Cart"_s},
        {u""_s, u"https://h/cart?x=1#y"_s, u"/cart"_s},
        {std::nullopt, u"https://h/"_s, u"h"_s},
        {std::nullopt, u"https://h"_s, u"h"_s},
        {std::nullopt, u"https://h/caf%C3%A9%20x"_s, u"/caf\u00E9 x"_s},
        {std::nullopt, u"https://h/a?b={c|d}"_s, u"/a"_s},
        {std::nullopt, u"/only/path"_s, u"/only/path"_s},
        {std::nullopt, u"http://[bad"_s, u"http://[bad"_s},
        {std::nullopt, u"about:"_s, u"about:"_s},
        {std::nullopt, u""_s, u"Untitled page"_s},
        {std::nullopt, std::nullopt, u"Untitled page"_s},
    };
    for (const Case& tried : cases)
        EXPECT_EQ(pageLabel({tried.url, tried.title, {}}), tried.label) << qPrintable(tried.label);
}

TEST(WebURL, IsHttpWithAHost)
{
    EXPECT_EQ(webURL(u"  HTTPS://Shop.Example/a \n"_s), QUrl(u"https://shop.example/a"_s));
    EXPECT_EQ(webURL(u"http://h"_s), QUrl(u"http://h"_s));
    for (const QString& text : {u"mailto:a@b.example"_s, u"ftp://h/a"_s, u"https://"_s, u"http:///path"_s,
                                u"https:h"_s, u"h.example"_s, u"http://exa mple/"_s, u""_s, u"DE-10418"_s})
        EXPECT_EQ(webURL(text), std::nullopt) << qPrintable(text);
}

TEST(OpenableURL, HasAScheme)
{
    EXPECT_EQ(openableURL(u"mailto:a@b.example"_s), QUrl(u"mailto:a@b.example"_s));
    for (const QString& text : {u"/cart"_s, u"//h/p"_s, u"http://[bad"_s, u"plain"_s, u""_s})
        EXPECT_EQ(openableURL(text), std::nullopt) << qPrintable(text);
}

TEST(CurrentPage, IsTheLatestVisitOfTheAddress)
{
    VisitorMeta meta;
    EXPECT_EQ(currentPage(meta), std::nullopt);
    meta.url = u""_s;
    EXPECT_EQ(currentPage(meta), std::nullopt);
    meta.url = u"https://h/a"_s;
    EXPECT_EQ(currentPage(meta), (VisitorPage{u"https://h/a"_s, {}, {}}));
    const Instant noon{std::chrono::hours(12)};
    meta.pages = {{u"https://h/a"_s, u"old"_s, {}},
                  {u"https://h/a"_s, u"new"_s, noon},
                  {u"https://h/A"_s, u"other"_s, {}}};
    EXPECT_EQ(currentPage(meta), meta.pages->at(1));
    meta.url = u"https://h/b"_s;
    EXPECT_EQ(currentPage(meta), (VisitorPage{u"https://h/b"_s, {}, {}}));
}

TEST(DeviceRows, ListWhatIsKnownInOrder)
{
    VisitorMeta meta;
    EXPECT_TRUE(deviceRows(meta).empty());
    meta.userAgent = u"curl/8"_s;
    meta.language = u""_s;
    meta.screen = u"2560x1440"_s;
    meta.referrer = u"not a url"_s;
    const std::vector<LabelledValue> rows{
        {u"Browser"_s, u"Unknown browser"_s}, {u"Screen"_s, u"2560x1440"_s}, {u"Referrer"_s, u"not a url"_s}};
    EXPECT_EQ(deviceRows(meta), rows);
    meta.language = u"de-DE"_s;
    EXPECT_EQ(deviceRows(meta).at(1), (LabelledValue{u"Language"_s, u"de-DE"_s}));
}

TEST(UserAgentInfo, NamesBrowserAndSystem)
{
    const std::vector<std::pair<QString, QString>> cases{
        {u"Mozilla/5.0 (Windows NT 10.0) AppleWebKit Chrome/120.0 Safari/537.36 Edg/120.0"_s,
         u"Edge on Windows"_s},
        {u"Mozilla/5.0 (Windows NT 10.0) Chrome/51 Safari/537 Edge/14"_s, u"Edge on Windows"_s},
        {u"Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15) Chrome/120 Safari/537 OPR/106"_s,
         u"Opera on macOS"_s},
        {u"Opera/9.80 (X11; Linux i686) Presto/2.12"_s, u"Opera on Linux"_s},
        {u"Mozilla/5.0 (X11; Linux x86_64; rv:120.0) Gecko Firefox/120.0"_s, u"Firefox on Linux"_s},
        {u"Mozilla/5.0 (Linux; Android 14) Chrome/120 Mobile Safari/537"_s, u"Chrome on Android"_s},
        {u"Mozilla/5.0 (iPhone; CPU iPhone OS 17_0 like Mac OS X) Version/17 Safari/604"_s,
         u"Safari on iOS"_s},
        {u"Mozilla/5.0 (iPad; CPU OS 16 like Mac OS X) CriOS/119 Safari/604"_s, u"Chrome on iOS"_s},
        {u"Mozilla/5.0 (Macintosh) Safari/1"_s, u"Safari on macOS"_s},
        {u"firefox/1 on linux"_s, u"Unknown browser"_s},
        {u"robot (Linux)"_s, u"Unknown browser on Linux"_s},
        {u"Firefox/%2"_s, u"Firefox"_s},
        {u"curl/8"_s, u"Unknown browser"_s},
    };
    for (const auto& [agent, text] : cases)
        EXPECT_EQ(UserAgentInfo::describe(agent), text) << qPrintable(agent);
}

} // namespace
} // namespace orvia
