#include "Views/VisitorPanel/VisitorHelpers.h"

#include <gtest/gtest.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;

TEST(PlaceLine, JoinsWhatIsKnown)
{
    EXPECT_EQ(placeLine(std::nullopt), std::nullopt);
    const std::vector<std::pair<VisitorGeo, QString>> cases{
        {{u"Berlin"_s, u"Berlin"_s, u"Germany"_s, u"de"_s, {}, {}}, u"Berlin, Germany (DE)"_s},
        {{{}, {}, {}, u"us"_s, {}, {}}, u"US"_s},
        {{u"Singapore"_s, u""_s, u"SINGAPORE"_s, u""_s, {}, {}}, u"Singapore"_s},
        {{u"York"_s, u"England"_s, u"York"_s, {}, {}, {}},
         u"York, England, York"_s}, // only neighbours are one
        {{}, u""_s},
    };
    for (const auto& [geo, line] : cases)
        EXPECT_EQ(placeLine(geo), line);
}

TEST(PageLabel, TakesTheFirstThatNamesThePage)
{
    using Text = std::optional<QString>;
    const std::vector<std::tuple<Text, Text, QString>> cases{
        {u"Cart"_s, u"https://h/cart"_s, u"Cart"_s},
        {u""_s, u"https://h/cart?x=1#y"_s, u"/cart"_s},
        {std::nullopt, u"https://h/"_s, u"h"_s},
        {std::nullopt, u"https://h/caf%C3%A9%20x"_s, u"/caf\u00E9 x"_s},
        {std::nullopt, u"https://h/a?b={c|d}"_s, u"/a"_s},
        {std::nullopt, u"http://[bad"_s, u"http://[bad"_s},
        {std::nullopt, u"about:"_s, u"about:"_s},
        {std::nullopt, u""_s, u"Untitled page"_s},
        {std::nullopt, std::nullopt, u"Untitled page"_s},
    };
    for (const auto& [title, url, label] : cases)
        EXPECT_EQ(pageLabel({url, title, {}}), label) << qPrintable(label);
}

TEST(Addresses, OfTheWebAreHttpWithAHost)
{
    EXPECT_EQ(webURL(u"  HTTPS://Shop.Example/a \n"_s), QUrl(u"https://shop.example/a"_s));
    EXPECT_EQ(webURL(u"http://h"_s), QUrl(u"http://h"_s));
    for (const QString& text : {u"mailto:a@b.example"_s, u"ftp://h/a"_s, u"https://"_s, u"http:///path"_s,
                                u"https:h"_s, u"h.example"_s, u"http://exa mple/"_s, u""_s, u"DE-10418"_s})
        EXPECT_EQ(webURL(text), std::nullopt) << qPrintable(text);
    // Anything with a scheme can be opened.
    EXPECT_EQ(openableURL(u"mailto:a@b.example"_s), QUrl(u"mailto:a@b.example"_s));
    for (const QString& text : {u"/cart"_s, u"//h/p"_s, u"http://[bad"_s, u"plain"_s, u""_s})
        EXPECT_EQ(openableURL(text), std::nullopt) << qPrintable(text);
}

TEST(CurrentPage, IsTheLatestVisitOfTheAddress)
{
    VisitorMeta meta;
    meta.url = u"https://h/a"_s;
    meta.pages = {{u"https://h/a"_s, u"old"_s, {}},
                  {u"https://h/a"_s, u"new"_s, {}},
                  {u"https://h/A"_s, u"other"_s, {}}};
    EXPECT_EQ(currentPage(meta), meta.pages->at(1));
    meta.url = u"https://h/b"_s;
    EXPECT_EQ(currentPage(meta), (VisitorPage{u"https://h/b"_s, {}, {}}));
}

TEST(UserAgentInfo, NamesBrowserAndSystem)
{
    const std::vector<std::pair<QString, QString>> cases{
        {u"(Windows NT 10.0) AppleWebKit Chrome/120.0 Safari/537.36 Edg/120.0"_s, u"Edge on Windows"_s},
        {u"(Windows NT 10.0) Chrome/51 Safari/537 Edge/14"_s, u"Edge on Windows"_s},
        {u"(Macintosh; Intel Mac OS X 10_15) Chrome/120 Safari/537 OPR/106"_s, u"Opera on macOS"_s},
        {u"Opera/9.80 (X11; Linux i686) Presto/2.12"_s, u"Opera on Linux"_s},
        {u"(X11; Linux x86_64; rv:120.0) Gecko Firefox/120.0"_s, u"Firefox on Linux"_s},
        {u"(Linux; Android 14) Chrome/120 Mobile Safari/537"_s, u"Chrome on Android"_s},
        {u"(iPhone; CPU iPhone OS 17_0 like Mac OS X) Version/17 Safari/604"_s, u"Safari on iOS"_s},
        {u"(iPad; CPU OS 16 like Mac OS X) CriOS/119 Safari/604"_s, u"Chrome on iOS"_s},
        {u"robot (Linux)"_s, u"Unknown browser on Linux"_s},
        {u"Firefox/%2"_s, u"Firefox"_s},
    };
    for (const auto& [agent, text] : cases)
        EXPECT_EQ(UserAgentInfo::describe(agent), text) << qPrintable(agent);
}

} // namespace
} // namespace orvia
