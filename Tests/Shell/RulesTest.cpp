#include "LaunchOptions.h"
#include "Views/DeepLink.h"
#include "Views/SplitWidths.h"

#include <QTemporaryFile>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

TEST(SplitWidthsTest, TheInboxGivesWayBeforeTheSidebar)
{
    struct Case {
        int total;
        int sidebar;
        int inbox;
        bool panel;
        SplitWidths expected;
    };
    const Case cases[] = {
        {1080, 210, 320, false, {210, 320, 550}}, {1080, 210, 320, true, {180, 280, 320}},
        {1110, 210, 320, true, {210, 280, 320}},  {1120, 210, 320, true, {210, 290, 320}},
        {1150, 210, 320, true, {210, 320, 320}},  {820, 300, 400, false, {220, 280, 320}},
        {820, 10, 10, false, {180, 280, 360}},    {780, 500, 500, false, {180, 280, 320}},
        {400, 210, 320, true, {180, 280, 0}}, // smaller than every minimum: nothing turns negative
    };
    for (const Case& one : cases)
        EXPECT_EQ(SplitWidths::fit(one.total, one.sidebar, one.inbox, one.panel), one.expected)
            << one.total << " " << one.sidebar << " " << one.inbox << " " << one.panel;
}

TEST(DeepLinkTest, OnlyConversationLinksNameAConversation)
{
    const std::pair<const char*, std::optional<QString>> links[] = {
        {"orvia://conversation/abc", u"abc"_s},       {"ORVIA://Conversation/abc", u"abc"_s},
        {"orvia://conversation/inbox/abc", u"abc"_s}, {"orvia://conversation/a%20b", u"a b"_s},
        {"orvia://conversation/a%2Fb", u"a/b"_s},     {"orvia://conversation/abc?from=mail#top", u"abc"_s},
        {"orvia://conversation/", std::nullopt},      {"orvia:///abc", std::nullopt},
        {"orvia:conversation/abc", std::nullopt},     {"orvia://settings/abc", std::nullopt},
        {"https://conversation/abc", std::nullopt},
    };
    for (const auto& [link, id] : links)
        EXPECT_EQ(DeepLink::conversationId(QUrl(QString::fromLatin1(link))), id) << link;
}

TEST(LaunchOptionsTest, NamesTheConfigurationAndTheLink)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    const LaunchOptions both =
        LaunchOptions::parse({u"orvia"_s, u"--config"_s, file.fileName(), u"orvia://conversation/abc"_s});
    EXPECT_EQ(both.action, LaunchOptions::Action::run);
    EXPECT_EQ(both.configurationFile, file.fileName());
    EXPECT_EQ(both.links, QList{QUrl(u"orvia://conversation/abc"_s)});
    EXPECT_FALSE(both.isInBackground);
    EXPECT_TRUE(LaunchOptions::parse({u"orvia"_s, u"--background"_s}).isInBackground);
    EXPECT_EQ(LaunchOptions::parse({u"orvia"_s, u"https://example.org/"_s}).action,
              LaunchOptions::Action::run)
        << "a link, which opens nothing";
}

} // namespace orvia::test
