#include "DemoFixture.h"

#include <algorithm>

namespace orvia::test {

using testing::Contains;
using testing::Not;

class ConversationTest : public DemoTest {
protected:
    std::vector<Conversation> page(const QString& agentId = u"mara"_s,
                                   const std::optional<QString>& productId = {},
                                   std::optional<ConversationStatus> status = {},
                                   const std::optional<QString>& assignee = {}, bool includeSnoozed = true)
    {
        return runTask(client(agentId).conversations(productId, status, assignee, includeSnoozed))
            .value.value();
    }
};

TEST_F(ConversationTest, AttachmentsHaveUpToTenMebibytes)
{
    const auto upload = [this](int size) {
        return runTask(client().uploadAttachment(u"helen-brandt"_s, u"file"_s, u"text/plain"_s,
                                                 QByteArray(size, 'x'), false));
    };
    for (const int size : {0, 10 * 1024 * 1024})
        EXPECT_EQ(upload(size).value->attachment->size, size);
    for (const int size : {10 * 1024 * 1024 + 1, 11 * 1024 * 1024})
        EXPECT_EQ(upload(size).error, APIError(u"Attachments are limited to 10MB."_s, 413));
}

TEST_F(ConversationTest, PagesAreFilteredAndInOrder)
{
    const auto all = page();
    EXPECT_EQ(all.size(), service.store().threadCount());
    EXPECT_TRUE(std::ranges::is_sorted(all, std::ranges::greater(), &Conversation::lastMessageAt));
    const auto those = [&all](const std::function<bool(const Conversation&)>& matches) {
        std::vector<Conversation> expected;
        std::ranges::copy_if(all, std::back_inserter(expected), matches);
        EXPECT_FALSE(expected.empty());
        return expected;
    };
    constexpr auto closed = ConversationStatus::closed;
    EXPECT_EQ(page(u"mara"_s, u"halden"_s), those([](const auto& c) { return c.productId == u"halden"_s; }));
    EXPECT_EQ(page(u"mara"_s, {}, closed), those([](const auto& c) { return c.status == closed; }));
    EXPECT_EQ(page(u"mara"_s, {}, {}, u"me"_s),
              those([](const auto& c) { return c.assigneeId == u"mara"_s; }));
    EXPECT_EQ(page(u"mara"_s, {}, {}, u"dana"_s),
              those([](const auto& c) { return c.assigneeId == u"dana"_s; }));
    EXPECT_EQ(page(u"mara"_s, {}, {}, u"unassigned"_s), those([](const auto& c) { return !c.assigneeId; }));
    EXPECT_EQ(page(u"dana"_s), those([](const auto& c) { return c.productId != u"fernhill"_s; }));
}

TEST_F(ConversationTest, PagesFollowEveryChange)
{
    const auto visible = [this] {
        QStringList ids;
        for (const Conversation& conversation : page(u"mara"_s, {}, ConversationStatus::open, {}, false))
            ids.append(conversation.id);
        return ids;
    };
    EXPECT_EQ(visible().first(), u"helen-brandt"_s);
    EXPECT_THAT(visible(), Not(Contains(u"amelia-prior"_s)));
    now += std::chrono::milliseconds(7);
    service.postAsVisitor(u"kenji-watanabe"_s, u"Still there?"_s);
    EXPECT_EQ(visible().first(), u"kenji-watanabe"_s);
    EXPECT_EQ(page().front().lastMessageAt, now) << "fractions of a second keep the order";
    now = *service.thread(u"amelia-prior"_s).conversation.snoozedUntil;
    EXPECT_THAT(visible(), Contains(u"amelia-prior"_s)) << "the page that was kept is out of date";
}

TEST_F(ConversationTest, SearchFindsNamesAddressesAndMessages)
{
    const auto results = [this](const QString& query, int limit = 20) {
        return *runTask(client().search(query, limit)).value;
    };
    EXPECT_EQ(results(u"REFUND"_s).size(), 5U);
    EXPECT_EQ(results(u"refund"_s, 2).size(), 2U);
    EXPECT_EQ(results(u"田中"_s),
              (std::vector{SearchResult{service.thread(u"hiro-tanaka"_s).conversation, u"田中 宏"_s, {}}}));
    EXPECT_EQ(results(u"example.se"_s).front().snippet, u"noah.lindgren@example.se"_s);
    EXPECT_TRUE(results(u"Conversation closed"_s).empty()) << "system messages are not searched";
    EXPECT_TRUE(results(u"  "_s).empty());
}

} // namespace orvia::test
