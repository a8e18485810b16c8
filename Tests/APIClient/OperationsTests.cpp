#include "ClientFixture.h"

namespace orvia::test {
namespace {

/// Holds the result of every operation; the lists hold an element that is none.
const QByteArray anyAnswer =
    QByteArray(R"({"token":"new","products":[7],"agents":[7],"canned":[7],"results":[7],)") + R"("agent":)"
    + agentJSON + R"(,"teammates":[)" + agentJSON + R"(],"conversation":)" + conversationJSON
    + R"(,"conversations":[)" + conversationJSON + R"(,{"_id":7}],"message":)" + messageJSON
    + R"(,"messages":[{},)" + messageJSON + "]}";

class Operations : public ClientFixture {
protected:
    /// The result of @p task, which must send this request and no other; an empty body is none.
    template <class T>
    auto resultOf(QCoro::Task<T> task, const QByteArray& method, const QByteArray& target,
                  const QByteArray& body = {})
    {
        SCOPED_TRACE((method + ' ' + target + ' ' + body).toStdString());
        service.answer(method, target.split('?').first(), ScriptedAnswer::json(anyAnswer));
        const auto before = service.requests().size();
        const auto outcome = runTask(std::move(task));
        EXPECT_EQ(outcome.errorMessage(), QString());
        EXPECT_EQ(service.requests().size(), before + 1);
        const ReceivedRequest& request = service.requests().back();
        EXPECT_EQ(request.target, target);
        EXPECT_EQ(request.header("Accept"), "application/json");
        EXPECT_EQ(request.header("Authorization"), "Bearer t0k3n");
        EXPECT_EQ(request.body, body);
        EXPECT_EQ(request.header("Content-Type"),
                  body.isEmpty() ? std::nullopt : std::optional<QByteArray>("application/json"));
        EXPECT_EQ(request.header("Transfer-Encoding"), std::nullopt);
        if (method == "GET") {
            EXPECT_EQ(request.header("Content-Length"), std::nullopt);
        }
        return outcome.value.value_or(typename Outcome<T>::Value());
    }
};

TEST_F(Operations, OfAnAgentSendTheRequestThatTheServiceExpects)
{
    const LoginResponse login =
        resultOf(client().login(u"ada@x.example"_s, u"pä\"ss"_s), "POST", "/v1/agent/login",
                 R"({"email":"ada@x.example","password":"pä\"ss"})");
    EXPECT_EQ(login.token, u"new"_s);
    EXPECT_EQ(login.agent.id, u"a1"_s);
    resultOf(client().me(), "GET", "/v1/agent/me");
    resultOf(client().updatePreferences(NotifyMode::mentions), "PATCH", "/v1/agent/me/preferences",
             R"({"notifyMode":"mentions"})");
    resultOf(client().registerDevice(u"macos"_s, u"00ff"_s), "POST", "/v1/agent/devices",
             R"({"platform":"macos","apnsToken":"00ff"})");
    resultOf(client().teammates(), "GET", "/v1/agent/teammates");
    resultOf(client().canned({}), "GET", "/v1/agent/canned");
    resultOf(client().canned(u"p1"_s), "GET", "/v1/agent/canned?productId=p1");
    resultOf(client().search(u"größe = 5 & more?#"_s, 20), "GET",
             "/v1/agent/search?q=gr%C3%B6%C3%9Fe%20%3D%205%20%26%20more%3F%23&limit=20");
    resultOf(client().visitorConversations(u"vi+shop@x.example"_s), "GET",
             "/v1/agent/visitors/conversations?email=vi%2Bshop%40x.example");
    const auto page = resultOf(client().conversations({}, {}, {}, false), "GET", "/v1/agent/conversations");
    ASSERT_EQ(page.size(), 1U) << "the malformed conversation is dropped, the good one stays";
    EXPECT_EQ(page.front().id, u"c1"_s);
    resultOf(client().conversations(u"p&1"_s, ConversationStatus::closed, u"unassigned"_s, true), "GET",
             "/v1/agent/conversations?productId=p%261&status=closed&assignee=unassigned&includeSnoozed=true");
}

TEST_F(Operations, OnAConversationSendTheRequestThatTheServiceExpects)
{
    const QByteArray path = "/v1/agent/conversations/c1";
    EXPECT_EQ(resultOf(client().conversationDetail(u"c1"_s), "GET", path).messages.wrappedValue.size(), 1U);
    resultOf(client().closeConversation(u"c1"_s), "POST", path + "/close");
    resultOf(client().openConversation(u"c1"_s), "POST", path + "/open");
    resultOf(client().assign(u"c1"_s, u"a1"_s), "POST", path + "/assign", R"({"agentId":"a1"})");
    resultOf(client().assign(u"c1"_s, {}), "POST", path + "/assign", R"({"agentId":null})");
    const Instant noon{std::chrono::seconds(1'772'366'400)};
    resultOf(client().snooze(u"c1"_s, noon), "POST", path + "/snooze", R"({"until":"2026-03-01T12:00:00Z"})");
    resultOf(client().snooze(u"c1"_s, {}), "POST", path + "/snooze", R"({"until":null})");
    resultOf(client().setMuted(u"c1"_s, true), "POST", path + "/mute", R"({"muted":true})");
    // The mentions of a reply do not travel.
    const Message sent = resultOf(client().sendMessage(u"c1"_s, u"Hi\n/\\"_s, false, {u"a2"_s}), "POST",
                                  path + "/messages", R"({"body":"Hi\n/\\"})");
    EXPECT_EQ(sent.id, u"m1"_s);
    resultOf(client().sendMessage(u"c1"_s, u"Hi"_s, true, {}), "POST", path + "/messages",
             R"({"body":"Hi","note":true})");
    resultOf(client().sendMessage(u"c1"_s, u"Hi"_s, true, {u"a2"_s, u"a3"_s}), "POST", path + "/messages",
             R"({"body":"Hi","note":true,"mentions":["a2","a3"]})");
}

// What the forms send is checked with them.
TEST_F(Operations, OfAnAdministratorLeaveOutWhatDoesNotChange)
{
    resultOf(client().adminUpdateAgent(u"a1"_s, {}, {}, {}), "PATCH", "/v1/admin/agents/a1", "{}");
    resultOf(client().adminUpdateProduct(u"p1"_s, u"Store"_s, {}), "PATCH", "/v1/admin/products/p1",
             R"({"name":"Store"})");
    resultOf(client().adminDeleteCanned(u"r1"_s), "DELETE", "/v1/admin/canned/r1");
    resultOf(client().adminAgents(), "GET", "/v1/admin/agents");
    resultOf(client().adminProducts(), "GET", "/v1/admin/products");
    resultOf(client().adminCanned(), "GET", "/v1/admin/canned");
}

TEST_F(Operations, TeammatesFailAsAWholeOnOneMalformedAgent)
{
    service.answer("GET", "/v1/agent/teammates",
                   ScriptedAnswer::json(QByteArray(R"({"teammates":[)") + agentJSON + R"(,{"_id":"a2"}]})"));
    EXPECT_EQ(runTask(client().teammates()).errorMessage(), u"Could not decode server response"_s);
}

} // namespace
} // namespace orvia::test
