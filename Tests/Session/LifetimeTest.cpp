#include "SessionFixture.h"

/// Every operation, timer and callback may end after its session is gone. The address sanitizer watches.
namespace orvia::test {

using namespace std::chrono_literals;

struct Operation {
    const char* name;
    const char* method;
    const char* path; ///< of the request at which the operation is left hanging
    std::function<QCoro::Task<void>(Session&)> start;
    int skip = 0; ///< requests of that kind to let through first
};

QCoro::Task<void> ignoreResult(QCoro::Task<std::vector<CannedResponse>> task)
{
    co_await task;
}

QCoro::Task<void> ignoreResult(QCoro::Task<std::vector<Conversation>> task)
{
    co_await task;
}

class LifetimeTest : public SessionFixture, public testing::WithParamInterface<Operation> {};

/// Destroys the session while the operation waits, then lets the wait end in @p answer.
TEST_P(LifetimeTest, EndsQuietlyWhenTheSessionIsGone)
{
    const Operation operation = GetParam();
    for (const bool succeeds : {true, false}) {
        scriptInbox({makeConversation(u"c1"_s)});
        Session& made = signIn();
        PushManager::shared().deviceToken = u"00"_s;
        for (int i = 0; i < operation.skip; ++i)
            service.answer(operation.method, operation.path, answerOf(ConversationsResponse{}));
        auto held = service.hold(operation.method, operation.path);
        const auto outcome = startTask(operation.start(made));
        ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); })) << operation.name;
        session.reset();
        held->answer(succeeds ? ScriptedAnswer::json("{}") : refusal(500, "late"));
        EXPECT_TRUE(waitUntil([&] { return outcome->finished(); })) << operation.name;
        PushManager::shared().deviceToken.reset();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Operations, LifetimeTest,
    testing::Values(Operation{"login", "POST", "/v1/agent/login",
                              [](Session& s) { return s.login(u"a"_s, u"b"_s); }},
                    Operation{"refresh", "GET", "/v1/agent/conversations",
                              [](Session& s) { return s.refreshConversations(); }},
                    Operation{"refresh, second page", "GET", "/v1/agent/conversations",
                              [](Session& s) { return s.refreshConversations(); }, 1},
                    Operation{"teammates", "GET", "/v1/agent/teammates",
                              [](Session& s) { return s.loadAssignableAgents(); }},
                    Operation{"detail", "GET", "/v1/agent/conversations/c1",
                              [](Session& s) { return s.loadConversation(u"c1"_s); }},
                    Operation{"canned", "GET", "/v1/agent/canned",
                              [](Session& s) { return ignoreResult(s.loadCanned(u"p1"_s)); }},
                    Operation{"message", "POST", "/v1/agent/conversations/c1/messages",
                              [](Session& s) { return s.sendMessage(u"c1"_s, u"x"_s, true, {}); }},
                    Operation{"assign", "POST", "/v1/agent/conversations/c1/assign",
                              [](Session& s) { return s.assign(u"c1"_s, std::nullopt); }},
                    Operation{"close", "POST", "/v1/agent/conversations/c1/close",
                              [](Session& s) { return s.setStatus(ConversationStatus::closed, u"c1"_s); }},
                    Operation{"history", "GET", "/v1/agent/visitors/conversations",
                              [](Session& s) { return ignoreResult(s.visitorConversations(u"a@b"_s)); }},
                    Operation{"mode", "PATCH", "/v1/agent/me/preferences",
                              [](Session& s) { return s.setNotifyMode(NotifyMode::mine); }},
                    Operation{"mute", "POST", "/v1/agent/conversations/c1/mute",
                              [](Session& s) { return s.setMuted(u"c1"_s, true); }}),
    [](const auto& parameter) {
        std::string name = parameter.param.name;
        std::erase_if(name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); });
        return name;
    });

TEST_F(SessionFixture, TheEstablishingSequenceStopsAtEveryStep)
{
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    const std::pair<QByteArray, QByteArray> steps[] = {
        {"GET", "/v1/agent/me"},
        {"GET", "/v1/agent/conversations"},
        {"GET", "/v1/agent/teammates"},
        {"POST", "/v1/agent/devices"},
    };
    scriptInbox({});
    scriptEstablishing();
    for (const auto& [method, path] : steps) {
        PushManager::shared().deviceToken = u"00"_s;
        auto held = service.hold(method, path);
        const auto outcome = startTask(makeSession().bootstrap());
        ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); })) << path.toStdString();
        const std::size_t before = service.requests().size();
        session.reset();
        held->answer(path == "/v1/agent/me" ? answerOf(MeResponse{self, {products}})
                                            : ScriptedAnswer::json("{}"));
        EXPECT_TRUE(waitUntil([&] { return outcome->finished(); }));
        spinFor(20ms);
        EXPECT_LE(service.requests().size(), before + 1)
            << "nothing more is asked for a session that is gone";
    }
}

TEST_F(SessionFixture, TimersAndCallbacksOfASessionThatIsGoneDoNothing)
{
    scriptInbox({});
    Session& made = connectLive();
    made.showBanner(u"x"_s);
    made.setSearchText(u"query"_s);
    deliverTyping(u"c1"_s, u"x"_s);
    const auto channel = service.channel();
    session.reset();
    channel->sendText(uR"({"type":"viewers","conversationId":"c1"})"_s);
    PushManager::shared().received("x");
    PushManager::shared().handleTap({{u"conversationId"_s, u"c1"_s}});
    spinFor(timings.previewClear * 2);
    EXPECT_TRUE(service.requests("GET", "/v1/agent/search").empty());
}

} // namespace orvia::test
