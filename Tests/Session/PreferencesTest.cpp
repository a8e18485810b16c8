#include "SessionFixture.h"

namespace orvia::test {

using testing::ElementsAre;

class PreferencesTest : public SessionFixture {
protected:
    Session& start()
    {
        scriptInbox({makeConversation(u"c1"_s)});
        return signIn();
    }
};

TEST_F(PreferencesTest, TheModeIsTheServicesAndSurvivesARestart)
{
    Session& made = start();
    service.answer("PATCH", "/v1/agent/me/preferences", refusal(500, "later"));
    runTask(made.setNotifyMode(NotifyMode::mentions));
    EXPECT_EQ(made.banner(), u"later"_s);
    EXPECT_EQ(made.agent()->notifyMode, std::nullopt);

    Agent answered = self;
    answered.notifyMode = NotifyMode::mentions;
    answered.name = u"Mara E."_s;
    service.answer("PATCH", "/v1/agent/me/preferences", answerOf(AgentResponse{answered}));
    runTask(made.setNotifyMode(NotifyMode::mentions));
    EXPECT_EQ(bodyOf(service.requests("PATCH", "/v1/agent/me/preferences")), R"({"notifyMode":"mentions"})");
    EXPECT_EQ(made.agent(), answered);
    EXPECT_EQ(makeSession().agent(), answered);
}

TEST_F(PreferencesTest, MutingKeepsOneEntryAndUnmutingNone)
{
    self.mutedConversationIds = QStringList{u"c1"_s, u"c2"_s, u"c1"_s};
    Session& made = start();
    const QByteArray path = "/v1/agent/conversations/c1/mute";
    service.always("POST", path, ScriptedAnswer::json("{}"));
    runTask(made.setMuted(u"c1"_s, true));
    EXPECT_THAT(*made.agent()->mutedConversationIds, ElementsAre(u"c2"_s, u"c1"_s));
    runTask(made.setMuted(u"c1"_s, false));
    EXPECT_FALSE(made.isMuted(u"c1"_s));
    EXPECT_TRUE(made.isMuted(u"c2"_s));
    EXPECT_EQ(bodyOf(service.requests("POST", path), 1), R"({"muted":false})");
    EXPECT_EQ(makeSession().agent()->mutedConversationIds, QStringList{u"c2"_s});
}

TEST_F(PreferencesTest, AFailedOrUnreadableMuteChangesNothing)
{
    Session& made = start();
    Notifications changes(made, &Session::agentChanged);
    service.answer("POST", "/v1/agent/conversations/c1/mute", refusal(404, "No such conversation."));
    service.answer("POST", "/v1/agent/conversations/c1/mute", ScriptedAnswer::json({}, 204));
    runTask(made.setMuted(u"c1"_s, true));
    EXPECT_EQ(made.banner(), u"No such conversation."_s);
    runTask(made.setMuted(u"c1"_s, true));
    EXPECT_EQ(made.banner(), u"Could not decode server response"_s);
    EXPECT_FALSE(made.isMuted(u"c1"_s));
    EXPECT_EQ(changes.count, 0);
}

TEST_F(PreferencesTest, OverlappingMutesBothSurvive)
{
    Session& made = start();
    auto one = service.hold("POST", "/v1/agent/conversations/c1/mute");
    auto two = service.hold("POST", "/v1/agent/conversations/c2/mute");
    const auto first = startTask(made.setMuted(u"c1"_s, true));
    const auto second = startTask(made.setMuted(u"c2"_s, true));
    ASSERT_TRUE(waitUntil([&] { return one->isWaiting() && two->isWaiting(); }));
    two->answer(ScriptedAnswer::json("{}"));
    ASSERT_TRUE(waitUntil([&] { return second->finished(); }));
    one->answer(ScriptedAnswer::json("{}"));
    ASSERT_TRUE(waitUntil([&] { return first->finished(); }));
    EXPECT_THAT(*made.agent()->mutedConversationIds, ElementsAre(u"c2"_s, u"c1"_s));
}

TEST_F(PreferencesTest, ALinkOpensAKnownConversationVisiblyAndSelectsAnUnknownOne)
{
    Conversation closed = makeConversation(u"c2"_s);
    closed.status = ConversationStatus::closed;
    closed.productId = u"p2"_s;
    scriptInbox({makeConversation(u"c1"_s)}, {closed});
    Session& made = signIn();
    made.setProductFilter(u"p1"_s);
    made.setQueue(InboxQueue::mine);
    made.openFromDeepLink(u"c9"_s);
    EXPECT_EQ(made.selectedConversationId(), u"c9"_s);
    EXPECT_EQ(made.productFilter(), u"p1"_s);
    EXPECT_EQ(made.queue(), InboxQueue::mine);
    made.setSearchText(u"x"_s);
    made.openFromDeepLink(u"c2"_s);
    EXPECT_EQ(made.selectedConversationId(), u"c2"_s);
    EXPECT_EQ(listedIds(made), QStringList{u"c2"_s});
    EXPECT_EQ(made.searchText(), u"x"_s) << "the search is left alone";
}

} // namespace orvia::test
