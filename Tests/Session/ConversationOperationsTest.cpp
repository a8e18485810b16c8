#include "SessionFixture.h"

namespace orvia::test {

using testing::ElementsAre;

class ConversationOperationsTest : public SessionFixture {
protected:
    Session& start()
    {
        Conversation conversation = makeConversation(u"c1"_s);
        conversation.agentUnread = 3;
        scriptInbox({conversation});
        return connectLive();
    }
};

TEST_F(ConversationOperationsTest, LoadingReplacesTheThreadWholeAndResetsTheUnreadCount)
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

    service.answer("GET", "/v1/agent/conversations/c1", refusal(401, "expired"));
    runTask(made.loadConversation(u"c1"_s));
    EXPECT_EQ(made.banner(), u"expired"_s);
    EXPECT_TRUE(made.token()) << "only the identity request signs out";
    EXPECT_EQ(made.messages().thread(u"c1"_s).size(), 2U);
}

TEST_F(ConversationOperationsTest, CachesCannedResponsesByProductAndNoFailure)
{
    Session& made = start();
    CannedResponse hello;
    hello.id = u"r1"_s;
    hello.shortcut = u"hi"_s;
    hello.body = u"Hello!"_s;
    service.answer("GET", "/v1/agent/canned", refusal(500, "busy"));
    EXPECT_TRUE(runTask(made.loadCanned(u"p1"_s)).value->empty());
    EXPECT_EQ(made.banner(), u"busy"_s);

    service.answer("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{{{hello}}}));
    service.answer("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{}));
    EXPECT_EQ(runTask(made.loadCanned(u"p1"_s)).value->size(), 1U);
    EXPECT_TRUE(runTask(made.loadCanned(std::nullopt)).value->empty());
    EXPECT_EQ(runTask(made.loadCanned(u"p1"_s)).value->size(), 1U);
    EXPECT_TRUE(runTask(made.loadCanned(std::nullopt)).value->empty()) << "an empty list is cached too";
    const auto requests = service.requests("GET", "/v1/agent/canned");
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[1].query(), "productId=p1");
    EXPECT_EQ(requests[2].query(), "");
}

TEST_F(ConversationOperationsTest, SendsTheTrimmedTextAndMergesTheMessageOnce)
{
    Session& made = start();
    const QByteArray path = "/v1/agent/conversations/c1/messages";
    Message reply = makeMessage(u"m1"_s, u"c1"_s, MessageSender::agent, u"It does."_s);
    reply.agentId = self.id;

    runTask(made.sendMessage(u"c1"_s, u" \n\t\u2028 "_s, false, {}));
    EXPECT_TRUE(service.requests("POST", path).empty());
    EXPECT_EQ(made.banner(), std::nullopt);

    service.answer("POST", path, answerOf(MessageResponse{reply}));
    Notifications appended(made, &Session::messageAppended);
    runTask(made.sendMessage(u"c1"_s, u"\n It does. \n"_s, false, {u"a2"_s}));
    EXPECT_EQ(bodyOf(service.requests("POST", path)), R"({"body":"It does."})");
    deliver(reply);
    EXPECT_EQ(appended.count, 1);
    EXPECT_EQ(made.messages().thread(u"c1"_s).size(), 1U);
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) {
        return c.lastMessagePreview == u"It does."_s;
    })) << "the inbox entry still takes the event";

    service.answer("POST", path,
                   answerOf(MessageResponse{makeMessage(u"m2"_s, u"c1"_s, MessageSender::note)}));
    runTask(made.sendMessage(u"c1"_s, u"@Dana look"_s, true, {u"a2"_s}));
    EXPECT_EQ(bodyOf(service.requests("POST", path), 1),
              R"({"body":"@Dana look","note":true,"mentions":["a2"]})");

    service.answer("POST", path, refusal(400, "Message is too long."));
    runTask(made.sendMessage(u"c1"_s, u"x"_s, false, {}));
    EXPECT_EQ(made.banner(), u"Message is too long."_s);
    EXPECT_EQ(made.messages().thread(u"c1"_s).size(), 2U);
}

struct Change {
    const char* suffix;
    const char* body;
    std::function<QCoro::Task<void>(Session&)> perform;
};

class ConversationChangeTest : public ConversationOperationsTest,
                               public testing::WithParamInterface<Change> {};

TEST_P(ConversationChangeTest, MergesTheAnswerAndNothingElse)
{
    const Change change = GetParam();
    Session& made = start();
    const QByteArray path = QByteArray("/v1/agent/conversations/c1/") + change.suffix;

    service.answer("POST", path, refusal(409, "Somebody was faster."));
    const Conversation before = *made.conversations().find(u"c1"_s);
    runTask(change.perform(made));
    EXPECT_EQ(made.banner(), u"Somebody was faster."_s);
    EXPECT_EQ(*made.conversations().find(u"c1"_s), before);

    Conversation answered = before;
    answered.status = ConversationStatus::closed;
    answered.assigneeId = u"a2"_s;
    auto held = service.hold("POST", path);
    const auto outcome = startTask(change.perform(made));
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    EXPECT_EQ(*made.conversations().find(u"c1"_s), before)
        << "nothing changes before the service has answered";
    held->answer(answerOf(ConversationResponse{answered}));
    ASSERT_TRUE(waitUntil([&] { return outcome->finished(); }));
    EXPECT_EQ(*made.conversations().find(u"c1"_s), answered);
    EXPECT_EQ(bodyOf(service.requests("POST", path), 1), change.body);
    EXPECT_TRUE(listedIds(made).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, ConversationChangeTest,
    testing::Values(
        Change{"assign", R"({"agentId":"a2"})", [](Session& s) { return s.assign(u"c1"_s, u"a2"_s); }},
        Change{"assign", R"({"agentId":null})", [](Session& s) { return s.assign(u"c1"_s, std::nullopt); }},
        Change{"snooze", R"({"until":"2030-01-02T03:04:05Z"})",
               [](Session& s) { return s.snooze(u"c1"_s, instantFromISO8601("2030-01-02T03:04:05.900Z")); }},
        Change{"snooze", R"({"until":null})", [](Session& s) { return s.snooze(u"c1"_s, std::nullopt); }},
        Change{"close", "", [](Session& s) { return s.setStatus(ConversationStatus::closed, u"c1"_s); }},
        Change{"open", "", [](Session& s) { return s.setStatus(ConversationStatus::open, u"c1"_s); }}));

TEST_F(ConversationOperationsTest, EarlierConversationsFailSilently)
{
    Session& made = start();
    EXPECT_TRUE(runTask(made.visitorConversations({})).value->empty());
    const QByteArray path = "/v1/agent/visitors/conversations";
    EXPECT_TRUE(service.requests("GET", path).empty());
    service.answer("GET", path, refusal(500, "no"));
    EXPECT_TRUE(runTask(made.visitorConversations(u"a+b@example.com"_s)).value->empty());
    EXPECT_EQ(made.banner(), std::nullopt);
    EXPECT_EQ(service.requests("GET", path).front().query(), "email=a%2Bb%40example.com");
}

} // namespace orvia::test
