#include "DemoFixture.h"

namespace orvia::test {

namespace {

struct Endpoint {
    const char* method;
    const char* path;
};

constexpr Endpoint agentEndpoints[] = {
    {"GET", "/v1/agent/me"},
    {"PATCH", "/v1/agent/me/preferences"},
    {"POST", "/v1/agent/devices"},
    {"GET", "/v1/agent/teammates"},
    {"GET", "/v1/agent/canned"},
    {"GET", "/v1/agent/search?q=a"},
    {"GET", "/v1/agent/conversations"},
    {"GET", "/v1/agent/visitors/conversations?email=a@b"},
    {"GET", "/v1/agent/conversations/helen-brandt"},
    {"POST", "/v1/agent/conversations/helen-brandt/close"},
    {"POST", "/v1/agent/conversations/helen-brandt/open"},
    {"POST", "/v1/agent/conversations/helen-brandt/assign"},
    {"POST", "/v1/agent/conversations/helen-brandt/snooze"},
    {"POST", "/v1/agent/conversations/helen-brandt/mute"},
    {"POST", "/v1/agent/conversations/helen-brandt/messages"},
    {"POST", "/v1/agent/conversations/helen-brandt/attachments"},
};

constexpr Endpoint adminEndpoints[] = {
    {"GET", "/v1/admin/agents"},
    {"POST", "/v1/admin/agents"},
    {"PATCH", "/v1/admin/agents/dana"},
    {"GET", "/v1/admin/products"},
    {"POST", "/v1/admin/products"},
    {"PATCH", "/v1/admin/products/larkspur"},
    {"GET", "/v1/admin/canned"},
    {"POST", "/v1/admin/canned"},
    {"DELETE", "/v1/admin/canned/canned-greet"},
};

} // namespace

using AccessTest = DemoTest;

TEST_F(AccessTest, SignsInWithTheRightPasswordOnly)
{
    const APIClient anonymous(service.origin(), std::nullopt, &session);
    const auto refused = runTask(anonymous.login(u"dana@tessaly.example"_s, u"Demo"_s));
    EXPECT_EQ(refused.error, APIError(u"Invalid email or password"_s, 401));
    const auto unknown = runTask(anonymous.login(u"nobody@tessaly.example"_s, u"demo"_s));
    EXPECT_EQ(unknown.error, refused.error) << "the answer must not tell which addresses exist";

    const auto login = runTask(anonymous.login(u" DANA@tessaly.example"_s, u"demo"_s));
    ASSERT_TRUE(login.value) << login.errorMessage().toStdString();
    EXPECT_EQ(login.value->agent.id, u"dana"_s);
    const auto me = runTask(APIClient(service.origin(), login.value->token, &session).me());
    ASSERT_TRUE(me.value);
    EXPECT_EQ(me.value->agent, login.value->agent);
    ASSERT_EQ(me.value->products.wrappedValue.size(), 2U) << "Dana does not serve the garden";
    EXPECT_EQ(me.value->products.wrappedValue[1].name, u"Halden Cycles"_s);
}

TEST_F(AccessTest, EveryEndpointNeedsAToken)
{
    const auto expectRefusal = [this](const Endpoint& endpoint) {
        const auto answer = request(endpoint.method, QString::fromLatin1(endpoint.path), std::nullopt, {});
        EXPECT_EQ(answer.status, 401) << endpoint.method << endpoint.path;
        EXPECT_FALSE(errorOf(answer).isEmpty()) << endpoint.path;
    };
    for (const Endpoint& endpoint : agentEndpoints)
        expectRefusal(endpoint);
    for (const Endpoint& endpoint : adminEndpoints)
        expectRefusal(endpoint);

    const auto forged = runTask(APIClient(service.origin(), u"forged"_s, &session).me());
    EXPECT_EQ(forged.error->status, 401);
    const QString token = service.tokenOf(u"dana"_s);
    service.store().revokeTokens();
    EXPECT_EQ(runTask(APIClient(service.origin(), token, &session).me()).error->status, 401);
}

TEST_F(AccessTest, AdministrationIsForAdministrators)
{
    for (const Endpoint& endpoint : adminEndpoints) {
        const auto answer =
            request(endpoint.method, QString::fromLatin1(endpoint.path), std::nullopt, u"dana"_s);
        EXPECT_EQ(answer.status, 403) << endpoint.method << endpoint.path;
        EXPECT_EQ(errorOf(answer), u"Only administrators may do this."_s);
    }
    EXPECT_EQ(service.store().canned().size(), 6U);
}

TEST_F(AccessTest, WhatAnAgentDoesNotServeDoesNotExist)
{
    for (const char* suffix : {"", "/close", "/assign", "/messages"}) {
        const QByteArray method = *suffix ? "POST" : "GET";
        const auto answer = request(method, u"/v1/agent/conversations/helen-brandt"_s + QLatin1String(suffix),
                                    "{}", u"tomas"_s);
        EXPECT_EQ(answer.status, 404) << suffix;
    }
    EXPECT_EQ(
        request("GET", u"/v1/agent/conversations?productId=larkspur"_s, std::nullopt, u"tomas"_s).status,
        404);
    EXPECT_EQ(request("GET", u"/v1/agent/canned?productId=larkspur"_s, std::nullopt, u"tomas"_s).status, 404);
    EXPECT_EQ(runTask(client(u"tomas"_s).search(u"grinder"_s, 20)).value->size(), 0U);
}

TEST_F(AccessTest, UnknownAddressesAndMethodsAreToldApart)
{
    EXPECT_EQ(request("GET", u"/v1/agent/nothing"_s).status, 404);
    EXPECT_EQ(request("GET", u"/v1/agent/conversations/helen-brandt/assign"_s).status, 405);
    EXPECT_EQ(request("DELETE", u"/v1/agent/me"_s).status, 405);
    EXPECT_EQ(request("GET", u"/files/f999/none.png"_s).status, 404);
}

} // namespace orvia::test
