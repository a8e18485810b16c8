#include "SessionFixture.h"

namespace orvia::test {

using testing::ElementsAre;

class IdentityTest : public SessionFixture {
protected:
    void cacheIdentity()
    {
        defaults.setData("{\"agent\":" + APIJSON::encoder.encode(self) + ",\"products\":["
                             + APIJSON::encoder.encode(products.front()) + "]}",
                         u"cachedIdentity"_s);
    }
};

TEST_F(IdentityTest, RestoresTheCachedIdentityOnlyWithAToken)
{
    cacheIdentity();
    EXPECT_EQ(makeSession().agent(), std::nullopt);

    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    Session& made = makeSession();
    EXPECT_EQ(made.agent(), self);
    EXPECT_EQ(made.products(), products);
    EXPECT_TRUE(service.requests().empty()) << "construction must not touch the network";

    for (const char* damaged : {"{\"agent\":", "[]", "\xff", ""}) {
        defaults.setData(damaged, u"cachedIdentity"_s);
        EXPECT_EQ(makeSession().agent(), std::nullopt);
        EXPECT_EQ(session->banner(), std::nullopt);
    }
}

TEST_F(IdentityTest, EstablishesInOrderAndRegistersTheDevice)
{
    scriptInbox({makeConversation(u"c1"_s)});
    service.answer("POST", "/v1/agent/devices", refusal(422, "unknown platform"));
    service.answer("POST", "/v1/agent/devices", ScriptedAnswer::json("{}"));
    PushManager::shared().deviceToken = u"000aff"_s;
    Session& made = signIn();

    QList<QByteArray> paths;
    for (const ReceivedRequest& request : service.requests())
        paths.append(request.path());
    EXPECT_THAT(paths, ElementsAre("/v1/agent/me", "/v1/agent/conversations", "/v1/agent/conversations",
                                   "/v1/agent/teammates", "/v1/agent/devices"));
    EXPECT_EQ(bodyOf(service.requests("POST", "/v1/agent/devices")),
              R"({"platform":"macos","apnsToken":"000aff"})");
    EXPECT_EQ(made.banner(), u"Push registration failed: unknown platform"_s);
    EXPECT_EQ(made.assignableAgents(), teammates);
    EXPECT_EQ(listedIds(made), QStringList{u"c1"_s});
    EXPECT_TRUE(waitUntil([&] { return made.socketConnected(); }));

    runTask(made.bootstrap());
    EXPECT_EQ(service.requests().size(), 5U) << "bootstrap runs once";
    PushManager::shared().received(QByteArray::fromHex("00"));
    EXPECT_TRUE(waitUntil([&] { return service.requests("POST", "/v1/agent/devices").size() == 2; }));
}

TEST_F(IdentityTest, SignsInAndCachesTheIdentity)
{
    scriptInbox({});
    scriptEstablishing();
    Agent answered = self;
    answered.name = u"Somebody else"_s;
    service.answer("POST", "/v1/agent/login", answerOf(LoginResponse{u"t2"_s, answered}));

    Session& made = makeSession();
    runTask(made.bootstrap());
    EXPECT_TRUE(runTask(made.login(u"mara@orvia.example"_s, u"se cret"_s)).value);
    EXPECT_EQ(service.requests("GET", "/v1/agent/me").front().header("Authorization"), "Bearer t2");
    EXPECT_EQ(tokens.texts.value(u"agentToken"_s), u"t2"_s);
    EXPECT_EQ(made.agent(), self) << "the identity request decides, not the answer to the sign-in";
    runTask(made.restore(u"t1"_s));
    EXPECT_EQ(made.token(), u"t2"_s) << "whoever signs in wins over a token that was read meanwhile";
    EXPECT_EQ(makeSession().agent(), self);

    Session& read = makeSession();
    read.logout();
    runTask(read.restore(u"t1"_s));
    EXPECT_EQ(read.token(), std::nullopt) << "a token read before the sign-out is no longer one";
}

TEST_F(IdentityTest, ARejectedTokenSignsOutAndIsNotTriedAgain)
{
    std::size_t requests = 0;
    for (const int status : {401, 403}) {
        tokens.texts.insert(u"agentToken"_s, u"t1"_s);
        cacheIdentity();
        service.answer("GET", "/v1/agent/me", refusal(status, "nope"));
        Session& made = makeSession();
        runTask(made.bootstrap());
        EXPECT_EQ(made.token(), std::nullopt);
        EXPECT_EQ(made.agent(), std::nullopt);
        EXPECT_EQ(made.banner(), u"Session expired. Please sign in again."_s);
        EXPECT_FALSE(tokens.texts.contains(u"agentToken"_s));
        EXPECT_FALSE(defaults.data(u"cachedIdentity"_s));
        spinFor(timings.sessionRetry * 3);
        EXPECT_EQ(service.requests().size(), ++requests);
    }

    // Nor is one that another failure would have had tried again, once the agent has signed out.
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    service.answer("GET", "/v1/agent/me", refusal(404, "gone"));
    Session& made = makeSession();
    runTask(made.bootstrap());
    EXPECT_TRUE(made.token());
    made.logout();
    spinFor(timings.sessionRetry * 3);
    EXPECT_EQ(service.requests().size(), ++requests);
}

TEST_F(IdentityTest, ASequenceEndsWithTheSignOutOfItsAgent)
{
    scriptInbox({});
    scriptEstablishing();
    service.always("POST", "/v1/agent/login", answerOf(LoginResponse{u"t2"_s, self}));
    service.always("GET", "/v1/agent/visitors/conversations", answerOf(ConversationsResponse{}));
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    const auto held = service.hold("GET", "/v1/agent/conversations");
    Session& made = makeSession();
    const auto first = startTask(made.bootstrap());
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    made.logout();
    EXPECT_TRUE(runTask(made.login(u"b"_s, u"c"_s)).value);
    ASSERT_TRUE(waitUntil([&] { return made.socketConnected(); }));

    held->answer(answerOf(ConversationsResponse{}));
    ASSERT_TRUE(waitUntil([&] { return first->finished(); }));
    runTask(made.visitorConversations(u"a@example.com"_s));
    EXPECT_EQ(service.requests("GET", "/v1/agent/teammates").size(), 1U);
    EXPECT_EQ(service.channels().size(), 1U);
}

TEST_F(IdentityTest, AChannelThatTakesThePlaceOfAnotherAnnouncesTheSelection)
{
    scriptInbox({makeConversation(u"c1"_s)});
    cacheIdentity();
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    scriptEstablishing();
    service.answer("GET", "/v1/agent/me", refusal(502, "busy"));
    Session& made = makeSession();
    runTask(made.bootstrap());
    ASSERT_TRUE(waitUntil([&] { return made.socketConnected(); }));
    made.setSelectedConversationId(u"c1"_s);

    ASSERT_TRUE(waitUntil([&] { return service.channels().size() == 2; })) << "the sequence is tried again";
    EXPECT_TRUE(waitUntil([&] { return !service.channel()->texts().isEmpty(); }));
    EXPECT_TRUE(service.channel()->texts().value(0).contains(u"\"c1\""_s));
}

TEST_F(IdentityTest, SignOutEmptiesWhatItShouldAndKeepsTheFilters)
{
    scriptInbox({makeConversation(u"c1"_s)});
    Session& made = connectLive();
    made.setStatusFilter(ConversationStatus::closed);
    made.setProductFilter(u"p1"_s);
    made.setQueue(InboxQueue::mine);
    made.setSelectedConversationId(u"c1"_s);
    made.append(makeMessage(u"m1"_s, u"c1"_s), u"c1"_s);
    deliverTyping(u"c1"_s, u"Hel"_s);
    deliverViewers(u"c1"_s, {u"Dana"_s});
    made.setSearchText(u"x"_s);
    made.showBanner(u"still here"_s);
    Notifications threads(made, &Session::threadReset);
    Notifications inbox(made, &Session::conversationsReset);

    made.logout();

    EXPECT_FALSE(made.token() || made.agent() || made.selectedConversationId() || made.socketConnected());
    EXPECT_FALSE(defaults.data(u"cachedIdentity"_s) || tokens.texts.contains(u"agentToken"_s));
    EXPECT_TRUE(made.products().empty() && made.conversations().isEmpty() && made.assignableAgents().empty());
    EXPECT_TRUE(made.messages().conversationIds().isEmpty() && made.searchText().isEmpty());
    EXPECT_TRUE(made.typingPreviews().isEmpty() && made.viewers().isEmpty());
    EXPECT_EQ(threads.count, 1);
    EXPECT_EQ(inbox.count, 1);
    EXPECT_EQ(made.queue(), InboxQueue::all);
    EXPECT_EQ(made.statusFilter(), ConversationStatus::closed);
    EXPECT_EQ(made.productFilter(), u"p1"_s);
    EXPECT_EQ(made.banner(), u"still here"_s);
}

TEST_F(IdentityTest, SortsTheAgentsWhoServeAProduct)
{
    teammates = {makeAgent(u"a3"_s, u"émile"_s),
                 makeAgent(u"a4"_s, u"Zoe"_s, AgentRole::admin, std::nullopt),
                 makeAgent(u"a5"_s, u"Anna"_s, AgentRole::agent, QStringList{u"p2"_s}),
                 makeAgent(u"a6"_s, u"Dana"_s),
                 makeAgent(u"a7"_s, u"dana"_s),
                 makeAgent(u"a8"_s, u"Nobody"_s, AgentRole::agent, std::nullopt)};
    scriptInbox({});
    Session& made = signIn();
    QStringList names;
    for (const Agent& agent : made.agents(u"p1"_s))
        names.append(agent.name);
    EXPECT_THAT(names, ElementsAre(u"Dana"_s, u"dana"_s, u"émile"_s, u"Zoe"_s));

    service.answer("GET", "/v1/agent/teammates", ScriptedAnswer::json(R"({"teammates":[{"_id":"a2"}]})"));
    runTask(made.loadAssignableAgents());
    EXPECT_TRUE(made.assignableAgents().empty());
    EXPECT_EQ(made.banner(), std::nullopt) << "the empty list says it";
}

} // namespace orvia::test
