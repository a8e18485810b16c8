#include "SessionFixture.h"

namespace orvia::test {

using testing::ElementsAre;

class OperationsTest : public SessionFixture {
protected:
    Session& start()
    {
        Conversation conversation = makeConversation(u"c1"_s);
        conversation.agentUnread = 3;
        scriptInbox({conversation});
        return connectLive();
    }
};

TEST_F(OperationsTest, LoadingReplacesTheThreadWholeAndResetsTheUnreadCount)
{
    Session& made = start();
    made.append(makeMessage(u"live"_s, u"c1"_s), u"c1"_s);
    Conversation answered = makeConversation(u"c1"_s, 0);
    answered.agentUnread = 3;
    service.answer("GET", "/v1/agent/conversations/c1",
                   answerOf(ConversationDetailResponse{
                       answered, {{makeMessage(u"m2"_s, u"c1"_s), makeMessage(u"m1"_s, u"c1"_s)}}}));
    QStringList sent;
    made.socket().onSend = [&](const QString& text) { sent.append(text); };
    runTask(made.loadConversation(u"c1"_s));
    const auto& thread = made.messages().thread(u"c1"_s);
    ASSERT_EQ(thread.size(), 2U);
    EXPECT_EQ(thread[0].id, u"m2"_s) << "server order, and the live message is gone";
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) { return c.agentUnread == 0; }));
    EXPECT_TRUE(sent.isEmpty()) << "opening sends no read frame";
}

TEST_F(OperationsTest, TellsOnlyWhatMattersAndCachesCannedResponsesByProduct)
{
    Session& made = start();
    CannedResponse hello;
    hello.id = u"r1"_s;
    hello.shortcut = u"hi"_s;
    hello.body = u"Hello!"_s;
    // That there are no earlier conversations to show is nothing to tell the agent.
    service.answer("GET", "/v1/agent/visitors/conversations", refusal(500, "no"));
    EXPECT_TRUE(runTask(made.visitorConversations({})).value->empty());
    EXPECT_TRUE(runTask(made.visitorConversations(u"a@example.com"_s)).value->empty());
    EXPECT_EQ(made.banner(), std::nullopt);

    service.answer("GET", "/v1/agent/canned", refusal(500, "busy"));
    EXPECT_TRUE(runTask(made.loadCanned(u"p1"_s)).value->empty());
    EXPECT_EQ(made.banner(), u"busy"_s);

    service.answer("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{{{hello}}}));
    service.answer("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{}));
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(runTask(made.loadCanned(u"p1"_s)).value->size(), 1U);
        EXPECT_TRUE(runTask(made.loadCanned(std::nullopt)).value->empty());
    }
    EXPECT_EQ(service.requests("GET", "/v1/agent/canned").size(), 3U) << "an empty list is cached too";
}

TEST_F(OperationsTest, SendsTheTrimmedTextAndMergesTheMessageOnce)
{
    Session& made = start();
    const QByteArray path = "/v1/agent/conversations/c1/messages";
    const Message reply = makeMessage(u"m1"_s, u"c1"_s, MessageSender::agent, u"It does."_s);
    service.answer("POST", path, answerOf(MessageResponse{reply}));
    Notifications appended(made, &Session::messageAppended);
    runTask(made.sendMessage(u"c1"_s, u" \n\t\u2028 "_s, false, {}));
    runTask(made.sendMessage(u"c1"_s, u"\n It does. \n"_s, false, {}));
    ASSERT_EQ(service.requests("POST", path).size(), 1U) << "blanks are not sent";
    EXPECT_EQ(bodyOf(service.requests("POST", path)), R"({"body":"It does."})");
    deliver(reply);
    EXPECT_EQ(appended.count, 1);
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) {
        return c.lastMessagePreview == u"It does."_s;
    })) << "the inbox entry still takes the event";
}

TEST_F(OperationsTest, AChangeIsWhatTheServiceAnswersAndWhenItDoes)
{
    Session& made = start();
    const std::pair<const char*, std::function<QCoro::Task<void>()>> changes[] = {
        {"assign", [&] { return made.assign(u"c1"_s, u"a2"_s); }},
        {"snooze", [&] { return made.snooze(u"c1"_s, std::nullopt); }},
        {"close", [&] { return made.setStatus(ConversationStatus::closed, u"c1"_s); }},
        {"open", [&] { return made.setStatus(ConversationStatus::open, u"c1"_s); }},
    };
    Conversation shown = *made.conversations().find(u"c1"_s);
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        const auto held = service.hold("POST", QByteArray("/v1/agent/conversations/c1/") + name);
        const auto outcome = startTask(change());
        ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
        EXPECT_EQ(*made.conversations().find(u"c1"_s), shown);
        shown.lastMessagePreview = QString::fromLatin1(name);
        held->answer(answerOf(ConversationResponse{shown}));
        ASSERT_TRUE(waitUntil([&] { return outcome->finished(); }));
        EXPECT_EQ(*made.conversations().find(u"c1"_s), shown);
    }
}

TEST_F(OperationsTest, PreferencesSurviveARestart)
{
    self.mutedConversationIds = QStringList{u"c1"_s, u"c2"_s, u"c1"_s};
    Session& made = start();
    Agent answered = self;
    answered.notifyMode = NotifyMode::mentions;
    answered.name = u"Mara E."_s;
    service.answer("PATCH", "/v1/agent/me/preferences", answerOf(AgentResponse{answered}));
    runTask(made.setNotifyMode(NotifyMode::mentions));
    EXPECT_EQ(made.agent(), answered) << "what the service says, not what was asked for";

    const QByteArray path = "/v1/agent/conversations/c1/mute";
    service.always("POST", path, ScriptedAnswer::json("{}"));
    runTask(made.setMuted(u"c1"_s, true));
    EXPECT_THAT(*made.agent()->mutedConversationIds, ElementsAre(u"c2"_s, u"c1"_s));
    runTask(made.setMuted(u"c1"_s, false));
    EXPECT_EQ(bodyOf(service.requests("POST", path), 1), R"({"muted":false})");
    answered.mutedConversationIds = QStringList{u"c2"_s};
    EXPECT_EQ(makeSession().agent(), answered);
}

TEST_F(OperationsTest, OverlappingMutesBothSurvive)
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

} // namespace orvia::test
