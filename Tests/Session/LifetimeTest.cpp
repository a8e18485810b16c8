#include "SessionFixture.h"

/// Every operation, timer and callback may end after its session is gone. The address sanitizer watches.
namespace orvia::test {

using namespace std::chrono_literals;

using LifetimeTest = SessionFixture;

QCoro::Task<void> openConversation(Session& session)
{
    co_await session.loadConversation(u"c1"_s);
}

TEST_F(LifetimeTest, AnOperationEndsQuietlyWhenTheSessionIsGone)
{
    struct Operation {
        const char* method;
        QByteArray path; ///< of the request at which the operation is left hanging
        std::function<QCoro::Task<void>(Session&)> start;
        ScriptedAnswer answer;
    };
    const Operation operations[] = {
        {"POST", "/v1/agent/login", [](Session& s) { return s.login(u"a"_s, u"b"_s); },
         answerOf(LoginResponse{u"t"_s, self})},
        {"GET", "/v1/agent/conversations/c1", openConversation,
         answerOf(ConversationDetailResponse{makeConversation(u"c1"_s), {}})},
        {"POST", "/v1/agent/conversations/c1/assign",
         [](Session& s) { return s.assign(u"c1"_s, std::nullopt); }, refusal(500, "late")},
        {"POST", "/v1/agent/conversations/c1/mute", [](Session& s) { return s.setMuted(u"c1"_s, true); },
         ScriptedAnswer::json("{}")},
    };
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.path.toStdString());
        scriptInbox({makeConversation(u"c1"_s)});
        Session& made = signIn();
        auto held = service.hold(operation.method, operation.path);
        const auto outcome = startTask(operation.start(made));
        ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
        session.reset();
        held->answer(operation.answer);
        EXPECT_TRUE(waitUntil([&] { return outcome->finished(); }));
    }
}

TEST_F(LifetimeTest, TheEstablishingSequenceStopsAtEveryStep)
{
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    scriptInbox({});
    scriptEstablishing();
    PushManager::shared().deviceToken = u"00"_s;
    for (const QByteArray& path : {QByteArray("/v1/agent/me"), QByteArray("/v1/agent/conversations"),
                                   QByteArray("/v1/agent/teammates"), QByteArray("/v1/agent/devices")}) {
        SCOPED_TRACE(path.toStdString());
        auto held = service.hold(path.endsWith("devices") ? "POST" : "GET", path);
        const auto outcome = startTask(makeSession().bootstrap());
        ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
        const std::size_t before = service.requests().size();
        session.reset();
        held->answer(path.endsWith("me") ? answerOf(MeResponse{self, {products}})
                                         : ScriptedAnswer::json("{}"));
        EXPECT_TRUE(waitUntil([&] { return outcome->finished(); }));
        spinFor(20ms);
        EXPECT_LE(service.requests().size(), before + 1)
            << "nothing more is asked for a session that is gone";
    }
}

TEST_F(LifetimeTest, TimersAndCallbacksOfASessionThatIsGoneDoNothing)
{
    scriptInbox({});
    Session& made = connectLive();
    made.showBanner(u"x"_s);
    auto search = service.hold("GET", "/v1/agent/search");
    made.setSearchText(u"query"_s);
    ASSERT_TRUE(waitUntil([&] { return search->isWaiting(); }));
    made.setSearchText(u"another"_s);
    deliverTyping(u"c1"_s, u"x"_s);
    const auto channel = service.channel();
    session.reset();
    search->answer(refusal(500, "late"));
    channel->sendText(uR"({"type":"viewers","conversationId":"c1"})"_s);
    PushManager::shared().received("x");
    PushManager::shared().handleTap({{u"conversationId"_s, u"c1"_s}});
    spinFor(timings.previewClear * 2);
    EXPECT_EQ(service.requests("GET", "/v1/agent/search").size(), 1U);
}

} // namespace orvia::test
