#include "ClientFixture.h"

namespace orvia::test {
namespace {

using AdminOperations = ClientFixture;

/// One call of an operation without a result, and the request that it must become.
struct Case {
    const char* name;
    std::function<QCoro::Task<void>(const APIClient&)> call;
    QByteArray method;
    QByteArray target;
    QByteArray body; ///< empty for a request without one
};

/// What the forms do not send; what they do is checked with them.
std::vector<Case> changes()
{
    WidgetConfig widget;
    widget.greeting = WidgetGreeting{.enabled = true, .delaySeconds = {}, .text = {}};
    return {
        {"change a password",
         [](const APIClient& c) { return c.adminUpdateAgent(u"a1"_s, {}, {}, u"new"_s); }, "PATCH",
         "/v1/admin/agents/a1", R"({"password":"new"})"},
        {"take all products away",
         [](const APIClient& c) { return c.adminUpdateAgent(u"a1"_s, QStringList(), {}, {}); }, "PATCH",
         "/v1/admin/agents/a1", R"({"productIds":[]})"},
        {"change everything of an agent",
         [](const APIClient& c) {
             return c.adminUpdateAgent(u"a1"_s, QStringList{u"p1"_s}, AgentRole::agent, u"new"_s);
         },
         "PATCH", "/v1/admin/agents/a1", R"({"productIds":["p1"],"role":"agent","password":"new"})"},
        {"change nothing of an agent",
         [](const APIClient& c) { return c.adminUpdateAgent(u"a1"_s, {}, {}, {}); }, "PATCH",
         "/v1/admin/agents/a1", "{}"},
        {"rename a product", [](const APIClient& c) { return c.adminUpdateProduct(u"p1"_s, u"Store"_s, {}); },
         "PATCH", "/v1/admin/products/p1", R"({"name":"Store"})"},
        {"switch a greeting on",
         [widget](const APIClient& c) { return c.adminUpdateProduct(u"p1"_s, {}, widget); }, "PATCH",
         "/v1/admin/products/p1", R"({"widget":{"greeting":{"enabled":true}}})"},
        {"delete a canned response", [](const APIClient& c) { return c.adminDeleteCanned(u"r1"_s); },
         "DELETE", "/v1/admin/canned/r1", ""},
    };
}

TEST_F(AdminOperations, SendTheRequestThatTheServiceExpects)
{
    for (const Case& expected : changes()) {
        SCOPED_TRACE(expected.name);
        ScriptedService scripted;
        scripted.answer(expected.method, expected.target, ScriptedAnswer::json("17"));
        const auto outcome = runTask(expected.call(APIClient(scripted.url(), u"t0k3n"_s, &session)));
        EXPECT_EQ(outcome.errorMessage(), QString());
        ASSERT_EQ(scripted.requests().size(), 1U);
        const ReceivedRequest& request = scripted.requests().front();
        EXPECT_EQ(request.target, expected.target);
        EXPECT_EQ(request.header("Authorization"), "Bearer t0k3n");
        EXPECT_EQ(request.body, expected.body);
        EXPECT_EQ(request.header("Content-Type"),
                  expected.body.isEmpty() ? std::nullopt : std::optional<QByteArray>("application/json"));
    }
}

TEST_F(AdminOperations, LoadListsWithoutTheirMalformedElements)
{
    service.answer(
        "GET", "/v1/admin/agents",
        ScriptedAnswer::json(wrapped("agents", QByteArray("[{\"_id\":\"a0\"},") + agentJSON + ']')));
    service.answer("GET", "/v1/admin/products",
                   ScriptedAnswer::json(R"({"products":[{"_id":"p1","name":"Shop","slug":"shop"},null]})"));
    service.answer("GET", "/v1/admin/canned",
                   ScriptedAnswer::json(R"({"canned":[7,{"_id":"r1","shortcut":"hi","body":"Hello!"}]})"));
    const auto agents = runTask(client().adminAgents());
    const auto products = runTask(client().adminProducts());
    const auto canned = runTask(client().adminCanned());
    ASSERT_TRUE(agents.value && products.value && canned.value);
    ASSERT_EQ(agents.value->size(), 1U);
    EXPECT_EQ(agents.value->front().id, u"a1"_s);
    ASSERT_EQ(products.value->size(), 1U);
    EXPECT_EQ(products.value->front().slug, u"shop"_s);
    ASSERT_EQ(canned.value->size(), 1U);
    EXPECT_EQ(canned.value->front().shortcut, u"hi"_s);
    for (const ReceivedRequest& request : service.requests())
        EXPECT_EQ(request.query(), QByteArray());
}

} // namespace
} // namespace orvia::test
