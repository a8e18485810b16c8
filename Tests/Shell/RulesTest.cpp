#include "LaunchOptions.h"
#include "Views/DeepLink.h"
#include "Views/SplitWidths.h"

#include <QTemporaryFile>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

std::string shown(const SplitWidths& widths)
{
    return std::to_string(widths.sidebar) + " " + std::to_string(widths.inbox) + " "
           + std::to_string(widths.conversation);
}

} // namespace

TEST(SplitWidthsTest, TheInboxGivesWayBeforeTheSidebar)
{
    struct Case {
        int total;
        int sidebar;
        int inbox;
        bool panel;
        const char* expected;
    };
    const Case cases[] = {
        {1080, 210, 320, false, "210 320 550"},
        {1080, 210, 320, true, "180 280 320"},
        {1110, 210, 320, true, "210 280 320"},
        {1120, 210, 320, true, "210 290 320"},
        {1150, 210, 320, true, "210 320 320"},
        {1380, 210, 320, true, "210 320 550"},
        {820, 210, 320, false, "210 290 320"},
        {820, 300, 400, false, "220 280 320"},
        {820, 10, 10, false, "180 280 360"},
        {780, 500, 500, false, "180 280 320"},
        // Smaller than every minimum: nothing turns negative.
        {400, 210, 320, true, "180 280 0"},
    };
    for (const Case& one : cases)
        EXPECT_EQ(shown(SplitWidths::fit(one.total, one.sidebar, one.inbox, one.panel)), one.expected)
            << one.total << " " << one.sidebar << " " << one.inbox << " " << one.panel;
    EXPECT_EQ(SplitWidths::minimumTotal(false), 780);
    EXPECT_EQ(SplitWidths::minimumTotal(true), 1080);
}

TEST(DeepLinkTest, OnlyConversationLinksNameAConversation)
{
    const std::pair<const char*, std::optional<QString>> links[] = {
        {"orvia://conversation/abc", u"abc"_s},
        {"ORVIA://Conversation/abc", u"abc"_s},
        {"orvia://conversation/inbox/abc", u"abc"_s},
        {"orvia://conversation/a%20b", u"a b"_s},
        {"orvia://conversation/a%2Fb", u"a/b"_s},
        {"orvia://conversation/abc?from=mail#top", u"abc"_s},
        {"orvia://conversation/", std::nullopt},
        {"orvia://conversation", std::nullopt},
        {"orvia:///abc", std::nullopt},
        {"orvia:conversation/abc", std::nullopt},
        {"orvia://settings/abc", std::nullopt},
        {"https://conversation/abc", std::nullopt},
        {"conversation/abc", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [link, id] : links)
        EXPECT_EQ(DeepLink::conversationId(QUrl(QString::fromLatin1(link))), id) << link;
}

TEST(LaunchOptionsTest, UnderstandsTheCommandLine)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    using Action = LaunchOptions::Action;
    const std::pair<QStringList, Action> lines[] = {
        {{}, Action::run},
        {{u"orvia://conversation/abc"_s}, Action::run},
        {{u"--config"_s, file.fileName()}, Action::run},
        {{u"--config="_s + file.fileName(), u"orvia://conversation/abc"_s}, Action::run},
        {{u"--help"_s}, Action::printHelp},
        {{u"--version"_s}, Action::printVersion},
        {{u"--config"_s}, Action::refuse},
        {{u"--config"_s, u"/no/such/file"_s}, Action::refuse},
        {{u"--config"_s, u"/"_s}, Action::refuse},
        {{u"--unknown"_s}, Action::refuse},
        {{u"orvia://conversation/a"_s, u"orvia://conversation/b"_s}, Action::refuse},
        {{u"https://example.org/"_s}, Action::run}, // a link, which opens nothing
        {{u"conversation"_s}, Action::refuse},
    };
    for (const auto& [arguments, action] : lines) {
        const LaunchOptions options = LaunchOptions::parse(QStringList{u"orvia"_s} + arguments);
        EXPECT_EQ(options.action, action) << arguments.join(u' ').toStdString();
        EXPECT_EQ(options.refusal.isEmpty(), action != Action::refuse);
        EXPECT_FALSE(options.refusal.contains(u'\n')) << "a refusal is one line";
    }
    const LaunchOptions both =
        LaunchOptions::parse({u"orvia"_s, u"--config"_s, file.fileName(), u"orvia://conversation/abc"_s});
    EXPECT_EQ(both.configurationFile, file.fileName());
    EXPECT_EQ(both.links, QList{QUrl(u"orvia://conversation/abc"_s)});
}

} // namespace orvia::test
