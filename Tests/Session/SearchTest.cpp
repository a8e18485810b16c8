#include "SessionFixture.h"

namespace orvia::test {

using testing::ElementsAre;

class SearchTest : public SessionFixture {
protected:
    Session& start()
    {
        scriptInbox({makeConversation(u"c1"_s)});
        return signIn();
    }

    static SearchResult hit(Conversation conversation)
    {
        return {std::move(conversation), u"the grinder"_s, std::nullopt};
    }

    std::vector<QByteArray> queries() const
    {
        std::vector<QByteArray> all;
        for (const ReceivedRequest& request : service.requests("GET", "/v1/agent/search"))
            all.push_back(request.query());
        return all;
    }
};

TEST_F(SearchTest, AsksOnceAfterTheLastKeystroke)
{
    Session& made = start();
    service.answer("GET", "/v1/agent/search", answerOf(SearchResponse{{{hit(makeConversation(u"c1"_s))}}}));
    made.setSearchText(u"g"_s);
    EXPECT_FALSE(made.isSearching());
    made.setSearchText(u"gr"_s);
    EXPECT_TRUE(made.isSearching());
    made.setSearchText(u"gri"_s);
    made.setSearchText(u" gri\n"_s);
    EXPECT_TRUE(waitUntil([&] { return !made.isSearching(); }));
    EXPECT_THAT(queries(), ElementsAre("q=gri&limit=30"));
    EXPECT_EQ(made.searchResults().size(), 1U);

    made.setSearchText(u" g "_s);
    EXPECT_TRUE(made.searchResults().empty()) << "a text that became too short has no results";
    made.setSearchText(u"\U0001F469\u200D\U0001F4BB"_s);
    EXPECT_FALSE(made.isSearching()) << "an emoji of three code points is one character";
    spinFor(timings.searchDebounce * 3);
    EXPECT_EQ(queries().size(), 1U);
}

TEST_F(SearchTest, DropsAnAnswerThatCameTooLate)
{
    Session& made = start();
    auto first = service.hold("GET", "/v1/agent/search");
    auto second = service.hold("GET", "/v1/agent/search");
    made.setSearchText(u"old"_s);
    ASSERT_TRUE(waitUntil([&] { return first->isWaiting(); }));
    made.setSearchText(u"new"_s);
    ASSERT_TRUE(waitUntil([&] { return second->isWaiting(); }));
    first->answer(refusal(500, "late"));
    spinFor(std::chrono::milliseconds(30));
    EXPECT_TRUE(made.isSearching());
    EXPECT_EQ(made.banner(), std::nullopt);
    second->answer(answerOf(SearchResponse{{{hit(makeConversation(u"c1"_s))}}}));
    EXPECT_TRUE(waitUntil([&] { return !made.isSearching(); }));
    EXPECT_EQ(made.searchResults().size(), 1U);
}

TEST_F(SearchTest, OpeningAHitMakesItVisible)
{
    Session& made = start();
    made.setQueue(InboxQueue::mine);
    made.setProductFilter(u"p1"_s);
    made.setSearchText(u"grinder"_s);
    Conversation closed = makeConversation(u"c7"_s);
    closed.status = ConversationStatus::closed;
    closed.productId = u"p2"_s;
    closed.assigneeId = u"a2"_s;
    made.openSearchResult(hit(closed));
    EXPECT_EQ(made.statusFilter(), ConversationStatus::closed);
    EXPECT_EQ(made.productFilter(), std::nullopt);
    EXPECT_EQ(made.queue(), InboxQueue::all);
    EXPECT_EQ(made.selectedConversationId(), u"c7"_s);
    EXPECT_EQ(listedIds(made), QStringList{u"c7"_s});
    EXPECT_TRUE(made.searchText().isEmpty());
    EXPECT_FALSE(made.isSearching());
    spinFor(timings.searchDebounce * 3);
    EXPECT_TRUE(queries().empty());

    made.setQueue(InboxQueue::mine);
    Conversation own = makeConversation(u"c8"_s);
    own.assigneeId = self.id;
    made.openSearchResult(hit(own));
    EXPECT_EQ(made.queue(), InboxQueue::mine) << "a queue that holds the hit stays";
}

} // namespace orvia::test
