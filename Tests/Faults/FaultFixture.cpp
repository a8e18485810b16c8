#include "FaultFixture.h"

namespace orvia::test {

using namespace std::chrono_literals;

FaultTest::FaultTest(ScriptedService::Transport transport)
    : SessionFixture(transport)
{
    timings.typingClear = timings.previewClear = 1h;
    timings.bannerDismiss = 1ms;
    timings.sessionRetry = 5ms;
    socketTimings.firstReconnectDelay = 1ms;
    socketTimings.longestReconnectDelay = 8ms;
    network = std::make_unique<NetworkSession>(NetworkSession::Limits{.maxBodyBytes = longestBody}, nullptr);
    open.agentUnread = other.agentUnread = 0;
    self.mutedConversationIds = QStringList();
    teammates.front() = self;
}

void FaultTest::repair()
{
    scriptInbox({open, other});
    scriptEstablishing();
    const ScriptedAnswer conversation = answerOf(ConversationResponse{open});
    service.always("GET", "/v1/agent/conversations/c1", answerOf(ConversationDetailResponse{open, {thread}}));
    service.always("POST", "/v1/agent/conversations/c1/messages", answerOf(MessageResponse{thread.back()}));
    service.always("POST", "/v1/agent/conversations/c1/close", conversation);
    service.always("POST", "/v1/agent/conversations/c1/mute", ScriptedAnswer::json("{}"));
    service.always("PATCH", "/v1/agent/me/preferences", answerOf(AgentResponse{self}));
    service.always("GET", "/v1/agent/visitors/conversations", answerOf(ConversationsResponse{}));
    service.always("GET", "/v1/agent/search", answerOf(SearchResponse{}));
    service.always("POST", "/v1/agent/login", answerOf(LoginResponse{u"t1"_s, self}));
}

Session& FaultTest::watched(Session& made)
{
    QObject::connect(&made, &Session::bannerChanged, &made, [this, &made] {
        if (made.banner())
            banners.append(*made.banner());
    });
    return made;
}

Session& FaultTest::goToWork()
{
    repair();
    Session& made = watched(connectLive());
    made.setSelectedConversationId(u"c1"_s);
    runTask(made.loadConversation(u"c1"_s));
    SocketEvent typing;
    typing.type = u"typing"_s;
    typing.conversationId = u"c1"_s;
    typing.from = u"visitor"_s;
    typing.preview = u"I was"_s;
    made.handle(typing);
    typing.from = u"agent"_s;
    typing.agentId = u"a2"_s;
    made.handle(typing);
    return made;
}

Workplace FaultTest::workplace() const
{
    const auto inbox = session->conversations().all();
    return {{inbox.begin(), inbox.end()},
            session->messages().thread(u"c1"_s),
            session->selectedConversationId(),
            session->typingPreviews(),
            session->agentPreviews(),
            session->assignableAgents(),
            session->agent(),
            session->token(),
            session->isLoadingList() || session->isSearching()};
}

QStringList FaultTest::takeBanners()
{
    EXPECT_TRUE(waitUntil([this] { return !session->banner(); })) << "the banner stays";
    return std::exchange(banners, {});
}

} // namespace orvia::test
