#include "ClientFixture.h"

namespace orvia::test {
namespace {

using AgentOperations = ClientFixture;

/// One call of an operation and the request that it must become.
struct Case {
    const char* name;
    std::function<bool(const APIClient&)> call;
    QByteArray method;
    QByteArray target;
    QByteArray body; ///< empty for a request without one
    QByteArray answer;
};

/// Whether @p task ends in success.
template <class T>
bool succeeds(QCoro::Task<T> task)
{
    const auto outcome = runTask(std::move(task));
    EXPECT_EQ(outcome.errorMessage(), QString());
    return outcome.value.has_value();
}

const Instant noon{std::chrono::seconds(1'772'366'400)};

const QByteArray conversations =
    wrapped("conversations", QByteArray("[") + conversationJSON + ",{\"_id\":7}]");
const QByteArray conversation = wrapped("conversation", conversationJSON);
const QByteArray message = wrapped("message", messageJSON);

std::vector<Case> cases()
{
    return {
        {"login", [](const APIClient& c) { return succeeds(c.login(u"ada@x.example"_s, u"pä\"ss"_s)); },
         "POST", "/v1/agent/login", "{\"email\":\"ada@x.example\",\"password\":\"pä\\\"ss\"}",
         QByteArray("{\"token\":\"new\",\"agent\":") + agentJSON + '}'},
        {"me", [](const APIClient& c) { return succeeds(c.me()); }, "GET", "/v1/agent/me", "",
         QByteArray("{\"products\":[],\"agent\":") + agentJSON + '}'},
        {"every conversation",
         [](const APIClient& c) { return succeeds(c.conversations({}, {}, {}, false)); }, "GET",
         "/v1/agent/conversations", "", conversations},
        {"open conversations of mine",
         [](const APIClient& c) {
             return succeeds(c.conversations({}, ConversationStatus::open, u"me"_s, false));
         },
         "GET", "/v1/agent/conversations?status=open&assignee=me", "", conversations},
        {"all conversation filters",
         [](const APIClient& c) {
             return succeeds(c.conversations(u"p&1"_s, ConversationStatus::closed, u"unassigned"_s, true));
         },
         "GET",
         "/v1/agent/conversations?productId=p%261&status=closed&assignee=unassigned&includeSnoozed=true", "",
         conversations},
        {"conversation detail", [](const APIClient& c) { return succeeds(c.conversationDetail(u"c1"_s)); },
         "GET", "/v1/agent/conversations/c1", "",
         QByteArray("{\"messages\":[],\"conversation\":") + conversationJSON + '}'},
        {"close", [](const APIClient& c) { return succeeds(c.closeConversation(u"c1"_s)); }, "POST",
         "/v1/agent/conversations/c1/close", "", conversation},
        {"open", [](const APIClient& c) { return succeeds(c.openConversation(u"c1"_s)); }, "POST",
         "/v1/agent/conversations/c1/open", "", conversation},
        {"assign", [](const APIClient& c) { return succeeds(c.assign(u"c1"_s, u"a1"_s)); }, "POST",
         "/v1/agent/conversations/c1/assign", "{\"agentId\":\"a1\"}", conversation},
        {"unassign", [](const APIClient& c) { return succeeds(c.assign(u"c1"_s, {})); }, "POST",
         "/v1/agent/conversations/c1/assign", "{\"agentId\":null}", conversation},
        {"snooze", [](const APIClient& c) { return succeeds(c.snooze(u"c1"_s, noon)); }, "POST",
         "/v1/agent/conversations/c1/snooze", "{\"until\":\"2026-03-01T12:00:00Z\"}", conversation},
        {"end a snooze", [](const APIClient& c) { return succeeds(c.snooze(u"c1"_s, {})); }, "POST",
         "/v1/agent/conversations/c1/snooze", "{\"until\":null}", conversation},
        {"mute", [](const APIClient& c) { return succeeds(c.setMuted(u"c1"_s, true)); }, "POST",
         "/v1/agent/conversations/c1/mute", "{\"muted\":true}", "17"},
        {"unmute", [](const APIClient& c) { return succeeds(c.setMuted(u"c1"_s, false)); }, "POST",
         "/v1/agent/conversations/c1/mute", "{\"muted\":false}", "{}"},
        {"reply, whose mentions do not travel",
         [](const APIClient& c) { return succeeds(c.sendMessage(u"c1"_s, u"Hi\n/\\"_s, false, {u"a2"_s})); },
         "POST", "/v1/agent/conversations/c1/messages", "{\"body\":\"Hi\\n/\\\\\"}", message},
        {"note", [](const APIClient& c) { return succeeds(c.sendMessage(u"c1"_s, u"Hi"_s, true, {})); },
         "POST", "/v1/agent/conversations/c1/messages", "{\"body\":\"Hi\",\"note\":true}", message},
        {"note with mentions",
         [](const APIClient& c) {
             return succeeds(c.sendMessage(u"c1"_s, u"Hi"_s, true, {u"a2"_s, u"a3"_s}));
         },
         "POST", "/v1/agent/conversations/c1/messages",
         "{\"body\":\"Hi\",\"note\":true,\"mentions\":[\"a2\",\"a3\"]}", message},
        {"canned responses", [](const APIClient& c) { return succeeds(c.canned({})); }, "GET",
         "/v1/agent/canned", "", "{\"canned\":[]}"},
        {"canned responses of a product", [](const APIClient& c) { return succeeds(c.canned(u"p1"_s)); },
         "GET", "/v1/agent/canned?productId=p1", "", "{\"canned\":[]}"},
        {"search", [](const APIClient& c) { return succeeds(c.search(u"größe = 5 & more?#"_s, 20)); }, "GET",
         "/v1/agent/search?q=gr%C3%B6%C3%9Fe%20%3D%205%20%26%20more%3F%23&limit=20", "", "{\"results\":[]}"},
        {"a visitor's conversations",
         [](const APIClient& c) { return succeeds(c.visitorConversations(u"vi+shop@x.example"_s)); }, "GET",
         "/v1/agent/visitors/conversations?email=vi%2Bshop%40x.example", "", conversations},
        {"teammates", [](const APIClient& c) { return succeeds(c.teammates()); }, "GET",
         "/v1/agent/teammates", "", wrapped("teammates", QByteArray("[") + agentJSON + ']')},
        {"preferences",
         [](const APIClient& c) { return succeeds(c.updatePreferences(NotifyMode::mentions)); }, "PATCH",
         "/v1/agent/me/preferences", "{\"notifyMode\":\"mentions\"}", wrapped("agent", agentJSON)},
        {"device", [](const APIClient& c) { return succeeds(c.registerDevice(u"macos"_s, u"00ff"_s)); },
         "POST", "/v1/agent/devices", "{\"platform\":\"macos\",\"apnsToken\":\"00ff\"}", "null"},
    };
}

TEST_F(AgentOperations, SendTheRequestThatTheServiceExpects)
{
    for (const Case& expected : cases()) {
        SCOPED_TRACE(expected.name);
        ScriptedService scripted;
        const QByteArray path = expected.target.split('?').first();
        scripted.answer(expected.method, path, ScriptedAnswer::json(expected.answer));
        EXPECT_TRUE(expected.call(APIClient(scripted.url(), u"t0k3n"_s, &session)));

        ASSERT_EQ(scripted.requests().size(), 1U);
        const ReceivedRequest& request = scripted.requests().front();
        EXPECT_EQ(request.target, expected.target);
        EXPECT_EQ(request.header("Accept"), "application/json");
        EXPECT_EQ(request.header("Authorization"), "Bearer t0k3n");
        EXPECT_EQ(request.body, expected.body);
        EXPECT_EQ(request.header("Content-Type"),
                  expected.body.isEmpty() ? std::nullopt : std::optional<QByteArray>("application/json"));
        EXPECT_EQ(request.header("Transfer-Encoding"), std::nullopt);
        if (expected.method == "GET") {
            EXPECT_EQ(request.header("Content-Length"), std::nullopt);
        }
    }
}

TEST_F(AgentOperations, UnwrapTheMemberThatCarriesTheResult)
{
    service.answer("POST", "/v1/agent/login",
                   ScriptedAnswer::json(QByteArray("{\"token\":\"new\",\"agent\":") + agentJSON + '}'));
    const auto login = runTask(client().login(u"e"_s, u"p"_s));
    ASSERT_TRUE(login.value);
    EXPECT_EQ(login.value->token, u"new"_s);
    EXPECT_EQ(login.value->agent.id, u"a1"_s);

    service.answer("POST", "/v1/agent/conversations/c1/messages", ScriptedAnswer::json(message));
    const auto sent = runTask(client().sendMessage(u"c1"_s, u"Hello"_s, false, {}));
    ASSERT_TRUE(sent.value);
    EXPECT_EQ(sent.value->id, u"m1"_s);

    service.answer("GET", "/v1/agent/conversations", ScriptedAnswer::json(conversations));
    const auto page = runTask(client().conversations({}, {}, {}, false));
    ASSERT_TRUE(page.value);
    ASSERT_EQ(page.value->size(), 1U) << "the malformed conversation is dropped, the good one stays";
    EXPECT_EQ(page.value->front().id, u"c1"_s);
}

TEST_F(AgentOperations, TeammatesFailAsAWholeOnOneMalformedAgent)
{
    service.answer(
        "GET", "/v1/agent/teammates",
        ScriptedAnswer::json(wrapped("teammates", QByteArray("[") + agentJSON + ",{\"_id\":\"a2\"}]")));
    EXPECT_EQ(runTask(client().teammates()).errorMessage(), u"Could not decode server response"_s);
}

} // namespace
} // namespace orvia::test
