#include "SessionFixture.h"

namespace orvia::test {

using testing::ElementsAre;

using InboxTest = SessionFixture;

TEST_F(InboxTest, AsksForBothPagesByQueueAndSnooze)
{
    scriptInbox({});
    Session& made = signIn();
    const auto queriesAfter = [&](auto&& change) {
        const std::size_t before = service.requests().size();
        change();
        runTask(made.refreshConversations());
        QList<QByteArray> queries;
        for (std::size_t i = before; i < service.requests().size(); ++i)
            queries.append(service.requests()[i].query());
        std::sort(queries.begin(), queries.end());
        return queries;
    };
    EXPECT_THAT(queriesAfter([] {}), ElementsAre("status=closed&includeSnoozed=true", "status=open"));
    EXPECT_THAT(queriesAfter([&] { made.setQueue(InboxQueue::mine); }),
                ElementsAre("status=closed&assignee=me&includeSnoozed=true", "status=open&assignee=me"));
    EXPECT_THAT(queriesAfter([&] {
                    made.setQueue(InboxQueue::unassigned);
                    made.setShowSnoozed(true);
                    made.setProductFilter(u"p1"_s);
                }),
                ElementsAre("status=closed&assignee=unassigned&includeSnoozed=true",
                            "status=open&assignee=unassigned&includeSnoozed=true"));
}

TEST_F(InboxTest, DoesNothingWithoutAnAgent)
{
    Session& made = makeSession();
    Notifications loading(made, &Session::isLoadingListChanged);
    runTask(made.refreshConversations());
    EXPECT_EQ(loading.count, 0);
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(InboxTest, ShowsNoHalfOfAPage)
{
    scriptInbox({});
    Session& made = signIn();
    auto open = service.hold("GET", "/v1/agent/conversations");
    auto closed = service.hold("GET", "/v1/agent/conversations");
    Notifications resets(made, &Session::conversationsReset);
    const auto outcome = startTask(made.refreshConversations());
    ASSERT_TRUE(waitUntil([&] { return open->isWaiting() && closed->isWaiting(); }))
        << "both requests are under way together";
    EXPECT_TRUE(made.isLoadingList());
    closed->answer(answerOf(ConversationsResponse{{{makeConversation(u"c2"_s)}}}));
    spinFor(std::chrono::milliseconds(30));
    EXPECT_EQ(resets.count, 0);
    open->answer(answerOf(ConversationsResponse{{{makeConversation(u"c1"_s)}}}));
    ASSERT_TRUE(waitUntil([&] { return outcome->finished(); }));
    EXPECT_EQ(resets.count, 1);
    EXPECT_EQ(made.conversations().size(), 2);
    EXPECT_FALSE(made.isLoadingList());
}

TEST_F(InboxTest, AFailureOfEitherPageKeepsTheInboxAndTellsTheAgent)
{
    scriptInbox({makeConversation(u"c1"_s)});
    Session& made = signIn();
    for (const QByteArray& failing : {QByteArray("status=open"), QByteArray("status=closed")}) {
        service.always("GET", "/v1/agent/conversations", [failing](const ReceivedRequest& request) {
            return request.query().startsWith(failing) ? refusal(503, failing)
                                                       : answerOf(ConversationsResponse{});
        });
        runTask(made.refreshConversations());
        EXPECT_EQ(made.banner(), QString::fromLatin1(failing));
        EXPECT_EQ(made.conversations().size(), 1);
        EXPECT_FALSE(made.isLoadingList());
    }
}

TEST_F(InboxTest, FiltersAndSorts)
{
    Conversation newest = makeConversation(u"newest"_s, 1);
    Conversation tieOne = makeConversation(u"tieOne"_s, 5);
    Conversation tieTwo = makeConversation(u"tieTwo"_s, 5);
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
    scriptInbox({undated, tieOne, newest, tieTwo, mine, taken, other, snoozed, woken}, {closed});
    Session& made = signIn();

    EXPECT_THAT(listedIds(made), ElementsAre(u"newest"_s, u"woken"_s, u"tieOne"_s, u"tieTwo"_s, u"mine"_s,
                                             u"taken"_s, u"other"_s, u"undated"_s));
    made.setShowSnoozed(true);
    EXPECT_EQ(listedIds(made).indexOf(u"snoozed"_s), 1);
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

TEST_F(InboxTest, TellsWhatChangedAndStaysSilentWhenNothingDid)
{
    scriptInbox({makeConversation(u"c1"_s), makeConversation(u"c2"_s)});
    Session& made = signIn();
    Notifications resets(made, &Session::conversationsReset);
    Notifications inserts(made, &Session::conversationInserted);
    Notifications changes(made, &Session::conversationChanged);
    Notifications filters(made, &Session::statusFilterChanged);

    runTask(made.refreshConversations());
    made.setStatusFilter(ConversationStatus::open);
    EXPECT_EQ(resets.count + filters.count, 0) << "equal assignments notify nobody";

    deliver(makeConversation(u"c2"_s, 1));
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(changes.last.toLongLong(), 1);
    deliver(*made.conversations().find(u"c2"_s));
    EXPECT_EQ(changes.count, 1);
    Conversation closed = makeConversation(u"c3"_s, 0);
    closed.status = ConversationStatus::closed;
    deliver(closed);
    EXPECT_EQ(inserts.last.toLongLong(), 2);
    EXPECT_EQ(listedIds(made), (QStringList{u"c2"_s, u"c1"_s})) << "it joins the inbox but not the list";
    EXPECT_EQ(resets.count, 0);
}

} // namespace orvia::test
