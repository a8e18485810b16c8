#include "SessionFixture.h"

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;

class IdentityTest : public SessionFixture {
protected:
    void cacheIdentity(const QByteArray& json) { defaults.setData(json, u"cachedIdentity"_s); }

    QByteArray identityOf(const Agent& agent) const
    {
        return "{\"agent\":" + APIJSON::encoder.encode(agent) + ",\"products\":["
               + APIJSON::encoder.encode(products.front()) + "]}";
    }
};

TEST_F(IdentityTest, RestoresTheCachedIdentityOnlyWithAToken)
{
    cacheIdentity(identityOf(self));
    EXPECT_EQ(makeSession().agent(), std::nullopt);

    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    Session& made = makeSession();
    EXPECT_EQ(made.agent(), self);
    EXPECT_EQ(made.products(), products);
    EXPECT_TRUE(service.requests().empty()) << "construction must not touch the network";

    for (const QByteArray& damaged :
         {QByteArray("{\"agent\":"), QByteArray("[]"), QByteArray("\xff"), QByteArray()}) {
        cacheIdentity(damaged);
        Session& clean = makeSession();
        EXPECT_EQ(clean.agent(), std::nullopt);
        EXPECT_EQ(clean.banner(), std::nullopt);
    }
}

TEST_F(IdentityTest, EstablishesInOrderAndRegistersTheDevice)
{
    scriptInbox({makeConversation(u"c1"_s)});
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
    EXPECT_EQ(made.agent(), self);
    EXPECT_EQ(made.assignableAgents(), teammates);
    EXPECT_EQ(listedIds(made), QStringList{u"c1"_s});
    EXPECT_TRUE(waitUntil([&] { return made.socketConnected(); }));
    EXPECT_EQ(service.channel()->request().query(), "token=t1");

    const auto before = service.requests().size();
    runTask(made.bootstrap());
    EXPECT_EQ(service.requests().size(), before) << "bootstrap runs once";
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
    const auto outcome = runTask(made.login(u"mara@orvia.example"_s, u"se cret"_s));
    EXPECT_TRUE(outcome.value);
    EXPECT_EQ(bodyOf(service.requests("POST", "/v1/agent/login")),
              R"({"email":"mara@orvia.example","password":"se cret"})");
    EXPECT_FALSE(service.requests("POST", "/v1/agent/login").front().header("Authorization"));
    EXPECT_EQ(service.requests("GET", "/v1/agent/me").front().header("Authorization"), "Bearer t2");
    EXPECT_EQ(tokens.texts.value(u"agentToken"_s), u"t2"_s);
    EXPECT_EQ(made.agent(), self) << "the identity request decides, not the answer to the sign-in";
    runTask(made.restore(u"t1"_s));
    EXPECT_EQ(made.token(), u"t2"_s) << "whoever signs in wins over a token that was read meanwhile";

    Session& restarted = makeSession();
    EXPECT_EQ(restarted.agent(), self);
}

class RejectedTokenTest : public IdentityTest, public testing::WithParamInterface<int> {};

TEST_P(RejectedTokenTest, SignsOutWithABannerThatSurvives)
{
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    cacheIdentity(identityOf(self));
    service.answer("GET", "/v1/agent/me", refusal(GetParam(), "nope"));
    Session& made = makeSession();
    runTask(made.bootstrap());
    EXPECT_EQ(made.token(), std::nullopt);
    EXPECT_EQ(made.agent(), std::nullopt);
    EXPECT_EQ(made.banner(), u"Session expired. Please sign in again."_s);
    EXPECT_FALSE(tokens.texts.contains(u"agentToken"_s));
    EXPECT_FALSE(defaults.data(u"cachedIdentity"_s));
    spinFor(timings.sessionRetry * 3);
    EXPECT_EQ(service.requests().size(), 1U) << "a rejected token is not tried again";
}

INSTANTIATE_TEST_SUITE_P(Statuses, RejectedTokenTest, testing::Values(401, 403));

TEST_F(IdentityTest, RetriesOtherFailuresOneAtATimeUntilOneSucceeds)
{
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    service.answer("GET", "/v1/agent/me", refusal(404, "gone"));
    service.answer("GET", "/v1/agent/me", ScriptedAnswer::json("<html>", 500));
    service.answer("GET", "/v1/agent/me", ScriptedAnswer::json("{}"));
    Session& made = makeSession();
    QStringList banners;
    QObject::connect(&made, &Session::bannerChanged, &made, [&] {
        if (made.banner())
            banners.append(*made.banner());
    });
    scriptInbox({});
    runTask(made.bootstrap());
    EXPECT_TRUE(made.token()) << "only 401 and 403 sign out";
    EXPECT_EQ(service.requests().size(), 1U) << "without an agent the sequence stops";

    scriptEstablishing();
    EXPECT_TRUE(waitUntil([&] { return made.socketConnected(); }));
    EXPECT_THAT(banners,
                ElementsAre(u"gone"_s, u"Request failed (500)"_s, u"Could not decode server response"_s));
    EXPECT_EQ(service.requests("GET", "/v1/agent/me").size(), 4U);
    spinFor(timings.sessionRetry * 3);
    EXPECT_EQ(service.requests("GET", "/v1/agent/me").size(), 4U) << "no retry after a success";
}

TEST_F(IdentityTest, ARestoredAgentCarriesOnWithoutANetwork)
{
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    cacheIdentity(identityOf(self));
    service.pause();
    Session& made = makeSession();
    Notifications loading(made, &Session::isLoadingListChanged);
    runTask(made.bootstrap());
    EXPECT_EQ(made.agent(), self);
    ASSERT_TRUE(made.banner());
    EXPECT_TRUE(made.banner()->startsWith("Network error: "_L1));
    EXPECT_EQ(loading.count, 2) << "the inbox was asked for although the identity failed";
    EXPECT_FALSE(made.isLoadingList());

    scriptInbox({makeConversation(u"c1"_s)});
    scriptEstablishing();
    service.resume();
    EXPECT_TRUE(waitUntil([&] { return made.socketConnected() && made.conversations().size() == 1; }));
}

TEST_F(IdentityTest, SignOutEmptiesWhatItShouldAndKeepsTheFilters)
{
    Conversation conversation = makeConversation(u"c1"_s);
    scriptInbox({conversation});
    Session& made = connectLive();
    made.setStatusFilter(ConversationStatus::closed);
    made.setProductFilter(u"p1"_s);
    made.setShowSnoozed(true);
    made.setShowVisitorPanel(true);
    made.setQueue(InboxQueue::mine);
    made.setSelectedConversationId(u"c1"_s);
    made.append(makeMessage(u"m1"_s, u"c1"_s), u"c1"_s);
    deliverTyping(u"c1"_s, u"Hel"_s);
    made.setSearchText(u"x"_s);
    made.showBanner(u"still here"_s);
    QStringList sent;
    made.socket().onSend = [&](const QString& text) { sent.append(text); };
    Notifications threads(made, &Session::threadReset);
    Notifications inbox(made, &Session::conversationsReset);

    made.logout();

    EXPECT_THAT(sent, ElementsAre(uR"({"type":"viewing","conversationId":null})"_s,
                                  uR"({"type":"viewing","conversationId":null})"_s));
    EXPECT_EQ(made.token(), std::nullopt);
    EXPECT_EQ(made.agent(), std::nullopt);
    EXPECT_TRUE(made.products().empty() && made.conversations().isEmpty() && made.assignableAgents().empty());
    EXPECT_TRUE(made.messages().thread(u"c1"_s).empty());
    EXPECT_TRUE(made.typingPreviews().isEmpty() && made.viewers().isEmpty()
                && made.agentPreviews().isEmpty());
    EXPECT_EQ(threads.count, 1);
    EXPECT_EQ(inbox.count, 1);
    EXPECT_EQ(made.selectedConversationId(), std::nullopt);
    EXPECT_EQ(made.queue(), InboxQueue::all);
    EXPECT_TRUE(made.searchText().isEmpty());
    EXPECT_FALSE(made.socketConnected());

    EXPECT_EQ(made.statusFilter(), ConversationStatus::closed);
    EXPECT_EQ(made.productFilter(), u"p1"_s);
    EXPECT_TRUE(made.showSnoozed() && made.showVisitorPanel());
    EXPECT_TRUE(made.typingConversations().contains(u"c1"_s)) << "its own timer clears it";
    EXPECT_EQ(made.banner(), u"still here"_s);
    EXPECT_TRUE(waitUntil([&] { return made.typingConversations().isEmpty(); }));

    service.answer("POST", "/v1/agent/login", answerOf(LoginResponse{u"t2"_s, self}));
    runTask(made.login(u"a"_s, u"b"_s));
    EXPECT_TRUE(waitUntil([&] { return made.socketConnected(); })) << "the handlers outlive a sign-out";
}

TEST_F(IdentityTest, TakesATokenThatWasReadAfterConstruction)
{
    scriptInbox({});
    scriptEstablishing();
    Session& made = makeSession();
    runTask(made.bootstrap());
    runTask(made.restore(u"t1"_s));
    EXPECT_EQ(made.agent(), self);
    EXPECT_EQ(service.requests("GET", "/v1/agent/me").front().header("Authorization"), "Bearer t1");

    made.logout();
    runTask(made.restore(u"t1"_s));
    EXPECT_EQ(made.token(), std::nullopt) << "a token read before the sign-out is no longer one";
}

TEST_F(IdentityTest, SignOutCancelsAPendingRetry)
{
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    service.answer("GET", "/v1/agent/me", refusal(500, "down"));
    Session& made = makeSession();
    runTask(made.bootstrap());
    made.logout();
    spinFor(timings.sessionRetry * 3);
    EXPECT_EQ(service.requests().size(), 1U);
}

TEST_F(IdentityTest, ANewBannerReplacesTheTextAndStartsItsTimeAnew)
{
    Session& made = makeSession();
    Notifications changes(made, &Session::bannerChanged);
    made.showBanner(u"one"_s);
    spinFor(timings.bannerDismiss / 2);
    made.showBanner(u"two"_s);
    made.showBanner(u"two"_s);
    EXPECT_EQ(changes.count, 2) << "an equal text notifies nobody";
    EXPECT_TRUE(waitUntil([&] { return !made.banner(); }));
    EXPECT_EQ(changes.count, 3);
}

TEST_F(IdentityTest, ReportsAFailedRegistrationAndTriesAgainWithTheNextToken)
{
    scriptInbox({});
    Session& made = signIn();
    service.answer("POST", "/v1/agent/devices", refusal(422, "unknown platform"));
    PushManager::shared().received(QByteArray::fromHex("000aff"));
    EXPECT_TRUE(waitUntil([&] { return made.banner() == u"Push registration failed: unknown platform"_s; }));
    service.answer("POST", "/v1/agent/devices", ScriptedAnswer::json("{}"));
    PushManager::shared().received(QByteArray::fromHex("00"));
    EXPECT_TRUE(waitUntil([&] { return service.requests("POST", "/v1/agent/devices").size() == 2; }));
}

TEST_F(IdentityTest, TheChannelsStateIsTakenOncePerChange)
{
    scriptInbox({});
    Session& made = connectLive();
    Notifications changes(made, &Session::socketConnectedChanged);
    QStringList sent;
    made.socket().onSend = [&](const QString& text) { sent.append(text); };
    made.socket().onConnectionChange(true);
    EXPECT_TRUE(sent.isEmpty());
    made.socket().onConnectionChange(false);
    made.setSelectedConversationId(u"c1"_s);
    sent.clear();
    made.socket().onConnectionChange(true);
    made.socket().onConnectionChange(true);
    EXPECT_THAT(sent, ElementsAre(uR"({"type":"viewing","conversationId":"c1"})"_s));
    EXPECT_EQ(changes.count, 2);
}

TEST_F(IdentityTest, LooksUpAgentsAndProducts)
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
    EXPECT_EQ(made.agentName(std::nullopt), std::nullopt);
    EXPECT_EQ(made.agentName(u"a1"_s), u"Mara Ellison"_s);
    EXPECT_EQ(made.agentName(u"a5"_s), u"Anna"_s);
    EXPECT_EQ(made.agentName(u"a9"_s), std::nullopt);
    ASSERT_TRUE(made.product(u"p1"_s));
    EXPECT_EQ(made.product(u"p9"_s), nullptr);
    EXPECT_FALSE(made.isAdmin());
}

TEST_F(IdentityTest, AMalformedTeammateEmptiesTheListSilently)
{
    scriptInbox({});
    Session& made = signIn();
    service.answer("GET", "/v1/agent/teammates", ScriptedAnswer::json(R"({"teammates":[{"_id":"a2"}]})"));
    runTask(made.loadAssignableAgents());
    EXPECT_TRUE(made.assignableAgents().empty());
    EXPECT_EQ(made.banner(), std::nullopt);
}

} // namespace orvia::test
