#include "SessionFixture.h"

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class InboxTest : public SessionFixture {
protected:
    ScriptedAnswer hits() const
    {
        return answerOf(SearchResponse{{{{makeConversation(u"c1"_s), u"the grinder"_s, std::nullopt}}}});
    }
};

TEST_F(InboxTest, AsksForBothPagesByQueueAndSnooze)
{
    scriptInbox({});
    Session& made = signIn();
    const auto queries = [&] {
        runTask(made.refreshConversations());
        QList<QByteArray> all;
        for (const ReceivedRequest& request : service.requests("GET", "/v1/agent/conversations"))
            all.append(request.query());
        return all.last(2);
    };
    EXPECT_THAT(queries(), UnorderedElementsAre("status=open", "status=closed&includeSnoozed=true"));
    made.setQueue(InboxQueue::mine);
    EXPECT_THAT(queries(), UnorderedElementsAre("status=open&assignee=me",
                                                "status=closed&assignee=me&includeSnoozed=true"));
    made.setQueue(InboxQueue::unassigned);
    made.setShowSnoozed(true);
    made.setProductFilter(u"p1"_s);
    EXPECT_THAT(queries(), UnorderedElementsAre("status=open&assignee=unassigned&includeSnoozed=true",
                                                "status=closed&assignee=unassigned&includeSnoozed=true"));
}

TEST_F(InboxTest, ShowsNoHalfOfTheTwoPages)
{
    scriptInbox({});
    Session& made = signIn();
    Notifications resets(made, &Session::conversationsReset);
    const ScriptedAnswer page = answerOf(ConversationsResponse{{{makeConversation(u"c1"_s)}}});
    const ScriptedAnswer failure = refusal(503, "busy");
    const std::pair<ScriptedAnswer, ScriptedAnswer> answers[] = {
        {page, page}, {failure, page}, {page, failure}};
    for (const auto& [first, second] : answers) {
        const int before = resets.count;
        auto open = service.hold("GET", "/v1/agent/conversations");
        auto closed = service.hold("GET", "/v1/agent/conversations");
        const auto outcome = startTask(made.refreshConversations());
        ASSERT_TRUE(waitUntil([&] { return open->isWaiting() && closed->isWaiting(); }))
            << "both requests are under way together";
        EXPECT_TRUE(made.isLoadingList());
        closed->answer(second);
        spinFor(30ms);
        EXPECT_EQ(resets.count, before);
        open->answer(first);
        ASSERT_TRUE(waitUntil([&] { return outcome->finished(); }));
        EXPECT_EQ(made.conversations().size(), 2);
        EXPECT_FALSE(made.isLoadingList());
    }
    EXPECT_EQ(resets.count, 1) << "a failure of either page keeps the inbox";
    EXPECT_EQ(made.banner(), u"busy"_s);
}

TEST_F(InboxTest, FiltersAndSorts)
{
    Conversation undated = makeConversation(u"undated"_s);
    undated.lastMessageAt.reset();
    Conversation mine = makeConversation(u"mine"_s, 7);
    mine.assigneeId = self.id;
    Conversation taken = makeConversation(u"taken"_s, 8);
    taken.assigneeId = u"a2"_s;
    Conversation other = makeConversation(u"other"_s, 9);
    other.productId = u"p2"_s;
    Conversation snoozed = makeConversation(u"snoozed"_s, 2);
    snoozed.snoozedUntil = minutesAgo(-1);
    Conversation woken = makeConversation(u"woken"_s, 3);
    woken.snoozedUntil = minutesAgo(1);
    Conversation closed = makeConversation(u"closed"_s, 4);
    closed.status = ConversationStatus::closed;
    closed.snoozedUntil = minutesAgo(-60);
    scriptInbox({undated, makeConversation(u"tieOne"_s, 5), makeConversation(u"tieTwo"_s, 5), mine, taken,
                 other, snoozed, woken},
                {closed});
    Session& made = signIn();

    EXPECT_THAT(listedIds(made), ElementsAre(u"woken"_s, u"tieOne"_s, u"tieTwo"_s, u"mine"_s, u"taken"_s,
                                             u"other"_s, u"undated"_s));
    made.setShowSnoozed(true);
    EXPECT_EQ(listedIds(made).indexOf(u"snoozed"_s), 0);
    made.setShowSnoozed(false);
    made.setProductFilter(u"p2"_s);
    EXPECT_THAT(listedIds(made), ElementsAre(u"other"_s));
    made.setProductFilter(std::nullopt);
    made.setQueue(InboxQueue::mine);
    EXPECT_THAT(listedIds(made), ElementsAre(u"mine"_s));
    made.setQueue(InboxQueue::unassigned);
    EXPECT_FALSE(listedIds(made).contains(u"mine"_s) || listedIds(made).contains(u"taken"_s));
    made.setQueue(InboxQueue::all);
    made.setStatusFilter(ConversationStatus::closed);
    EXPECT_THAT(listedIds(made), ElementsAre(u"closed"_s)) << "a snooze hides no closed conversation";
}

TEST_F(InboxTest, SearchAsksOnceAfterTheLastKeystroke)
{
    scriptInbox({});
    Session& made = signIn();
    service.answer("GET", "/v1/agent/search", hits());
    made.setSearchText(u"g"_s);
    EXPECT_FALSE(made.isSearching());
    made.setSearchText(u"gr"_s);
    EXPECT_TRUE(made.isSearching());
    made.setSearchText(u" gri\n"_s);
    EXPECT_TRUE(waitUntil([&] { return !made.isSearching(); }));
    EXPECT_EQ(made.searchResults().size(), 1U);

    made.setSearchText(u" g "_s);
    EXPECT_TRUE(made.searchResults().empty()) << "a text that became too short has no results";
    made.setSearchText(u"\U0001F469\u200D\U0001F4BB"_s);
    EXPECT_FALSE(made.isSearching()) << "an emoji of three code points is one character";
    spinFor(timings.searchDebounce * 3);
    const auto requests = service.requests("GET", "/v1/agent/search");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests.front().query(), "q=gri&limit=30");
}

TEST_F(InboxTest, SearchDropsAnAnswerThatCameTooLate)
{
    scriptInbox({});
    Session& made = signIn();
    auto first = service.hold("GET", "/v1/agent/search");
    auto second = service.hold("GET", "/v1/agent/search");
    made.setSearchText(u"old"_s);
    ASSERT_TRUE(waitUntil([&] { return first->isWaiting(); }));
    made.setSearchText(u"new"_s);
    ASSERT_TRUE(waitUntil([&] { return second->isWaiting(); }));
    first->answer(refusal(500, "late"));
    spinFor(30ms);
    EXPECT_TRUE(made.isSearching());
    EXPECT_EQ(made.banner(), std::nullopt);
    second->answer(hits());
    EXPECT_TRUE(waitUntil([&] { return !made.isSearching(); }));
    EXPECT_EQ(made.searchResults().size(), 1U);
}

TEST_F(InboxTest, SupersededSearchesGiveTheirConnectionsBack)
{
    scriptInbox({});
    Session& made = signIn();
    service.always("GET", "/v1/agent/search", ScriptedAnswer::stall());
    // More than the toolkit opens connections to one service.
    for (const QString& text : u"aa bb cc dd ee ff gg hh"_s.split(u' ')) {
        made.setSearchText(text);
        ASSERT_TRUE(waitUntil([&] {
            const auto searches = service.requests("GET", "/v1/agent/search");
            return !searches.empty() && searches.back().query().startsWith("q=" + text.toUtf8());
        })) << text.toStdString();
    }
    EXPECT_EQ(made.banner(), std::nullopt);
}

TEST_F(InboxTest, WhatIsOpenedShowsWhateverTheFiltersSay)
{
    SearchResult hit{makeConversation(u"c2"_s), u"the grinder"_s, std::nullopt};
    hit.conversation.status = ConversationStatus::closed;
    hit.conversation.productId = u"p2"_s;
    scriptInbox({}, {hit.conversation});
    Session& made = signIn();
    for (const bool isLink : {true, false}) {
        made.setStatusFilter(ConversationStatus::open);
        made.setProductFilter(u"p1"_s);
        made.setQueue(InboxQueue::mine);
        made.openFromDeepLink(u"unknown"_s);
        EXPECT_EQ(made.selectedConversationId(), u"unknown"_s);
        EXPECT_EQ(made.productFilter(), u"p1"_s);
        made.setSearchText(u"grinder"_s);
        if (isLink)
            made.openFromDeepLink(u"c2"_s);
        else
            made.openSearchResult(hit);
        EXPECT_EQ(made.selectedConversationId(), u"c2"_s);
        EXPECT_EQ(listedIds(made), QStringList{u"c2"_s});
        EXPECT_EQ(made.searchText(), isLink ? u"grinder"_s : QString()) << "a link leaves the search alone";
        made.setSearchText({});
    }

    made.setProductFilter(u"p1"_s);
    made.setQueue(InboxQueue::mine);
    hit.conversation = makeConversation(u"c8"_s);
    hit.conversation.assigneeId = self.id;
    made.openSearchResult(hit);
    EXPECT_EQ(made.queue(), InboxQueue::mine) << "filters that let the hit through stay";
    EXPECT_EQ(made.productFilter(), u"p1"_s);
    spinFor(timings.searchDebounce * 3);
    EXPECT_TRUE(service.requests("GET", "/v1/agent/search").empty());
}

} // namespace orvia::test
