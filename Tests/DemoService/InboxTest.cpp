#include "DemoFixture.h"

#include <algorithm>

namespace orvia::test {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class InboxTest : public DemoTest {
protected:
    std::vector<Conversation> page(const QString& agentId, std::optional<QString> productId,
                                   std::optional<ConversationStatus> status, std::optional<QString> assignee,
                                   bool includeSnoozed)
    {
        const auto outcome =
            runTask(client(agentId).conversations(productId, status, assignee, includeSnoozed));
        EXPECT_TRUE(outcome.value) << outcome.errorMessage().toStdString();
        return outcome.value.value_or(std::vector<Conversation>());
    }
};

TEST_F(InboxTest, FiltersByProductStatusAssigneeAndSnooze)
{
    const auto all = page(u"mara"_s, std::nullopt, std::nullopt, std::nullopt, true);
    EXPECT_EQ(all.size(), service.store().threadCount());
    EXPECT_TRUE(
        std::is_sorted(all.begin(), all.end(), [](const Conversation& left, const Conversation& right) {
            return left.lastMessageAt > right.lastMessageAt;
        }));

    struct Filter {
        QString agentId;
        std::optional<QString> productId;
        std::optional<ConversationStatus> status;
        std::optional<QString> assignee;
        std::function<bool(const Conversation&)> expected;
    };
    const std::vector<Filter> filters{
        {u"mara"_s, u"halden"_s, {}, {}, [](const auto& c) { return c.productId == u"halden"_s; }},
        {u"mara"_s,
         {},
         ConversationStatus::closed,
         {},
         [](const auto& c) { return c.status == ConversationStatus::closed; }},
        {u"mara"_s, {}, {}, u"me"_s, [](const auto& c) { return c.assigneeId == u"mara"_s; }},
        {u"mara"_s, {}, {}, u"unassigned"_s, [](const auto& c) { return !c.assigneeId; }},
        {u"mara"_s, {}, {}, u"dana"_s, [](const auto& c) { return c.assigneeId == u"dana"_s; }},
        {u"dana"_s, {}, {}, {}, [](const auto& c) { return c.productId != u"fernhill"_s; }},
        {u"dana"_s, u"larkspur"_s, ConversationStatus::open, u"me"_s, [](const auto&) { return false; }},
    };
    for (const Filter& filter : filters) {
        QStringList expected;
        for (const Conversation& conversation : all) {
            if (filter.expected(conversation))
                expected.push_back(conversation.id);
        }
        EXPECT_EQ(idsOf(page(filter.agentId, filter.productId, filter.status, filter.assignee, true)),
                  expected);
    }
}

TEST_F(InboxTest, SnoozedConversationsComeBackWhenTheirTimeIsUp)
{
    const auto visible = [this] { return idsOf(page(u"mara"_s, {}, ConversationStatus::open, {}, false)); };
    EXPECT_THAT(visible(), Not(Contains(u"amelia-prior"_s)));
    EXPECT_THAT(visible(), Not(Contains(u"lars-nygaard"_s)));
    now = *service.thread(u"amelia-prior"_s).conversation.snoozedUntil;
    EXPECT_THAT(visible(), Contains(u"amelia-prior"_s)) << "the page that was kept is out of date";
    EXPECT_THAT(visible(), Not(Contains(u"lars-nygaard"_s)));
}

TEST_F(InboxTest, PagesFollowEveryChange)
{
    const auto first = [this] { return page(u"mara"_s, {}, {}, {}, true).front(); };
    EXPECT_EQ(first().id, u"helen-brandt"_s);
    now += std::chrono::milliseconds(7);
    service.postAsVisitor(u"kenji-watanabe"_s, u"Still there?"_s);
    EXPECT_EQ(first().id, u"kenji-watanabe"_s);
    EXPECT_EQ(first().lastMessagePreview, u"Still there?"_s);
    EXPECT_EQ(first().lastMessageAt, now) << "fractions of a second keep the order";
}

TEST_F(InboxTest, SearchFindsNamesAddressesAndMessages)
{
    const auto results = [this](const QString& query, int limit = 20) {
        return *runTask(client().search(query, limit)).value;
    };
    const auto refunds = results(u"REFUND"_s);
    ASSERT_EQ(refunds.size(), 5U);
    EXPECT_EQ(refunds[0].id(), u"kenji-watanabe"_s);
    EXPECT_EQ(refunds[0].snippet,
              u"I was charged twice for order 19877, can I get a refund for the second one?"_s);
    EXPECT_EQ(refunds[0].messageId, service.thread(u"kenji-watanabe"_s).messages.front().id);
    EXPECT_EQ(refunds[1].id(), u"kenji-watanabe"_s);
    EXPECT_EQ(results(u"refund"_s, 2).size(), 2U);

    const auto names = results(u"田中"_s);
    ASSERT_EQ(names.size(), 1U);
    EXPECT_EQ(names.front().snippet, u"田中 宏"_s);
    EXPECT_FALSE(names.front().messageId);
    EXPECT_EQ(results(u"example.se"_s).front().snippet, u"noah.lindgren@example.se"_s);
    EXPECT_TRUE(results(u"Conversation closed"_s).empty()) << "system messages are not searched";
    EXPECT_TRUE(results(u"  "_s).empty());

    service.postAsVisitor(u"helen-brandt"_s,
                          u"word "_s.repeated(100) + u"needle"_s + u" word"_s.repeated(100));
    const QString snippet = results(u"needle"_s).front().snippet;
    EXPECT_TRUE(snippet.contains(u"needle"_s));
    EXPECT_TRUE(snippet.startsWith(u"…"_s) && snippet.endsWith(u"…"_s)) << snippet.toStdString();
    EXPECT_LT(snippet.size(), 160);
}

} // namespace orvia::test
