#include "DemoFixture.h"

namespace orvia::test {

namespace {

struct Refused {
    const char* method;
    const char* path;
    const char* body;
    int status;
    const char* error; ///< part of the text
    const char* agentId = "mara";
};

#define HELEN "/v1/agent/conversations/helen-brandt"

constexpr Refused refusedRequests[] = {
    // Whoever is not signed in, and agents who are no administrators
    {"GET", "/v1/agent/me", nullptr, 401, "no bearer token", ""},
    {"GET", "/v1/agent/conversations", nullptr, 401, "no bearer token", ""},
    {"POST", HELEN "/messages", R"({"body":"a"})", 401, "no bearer token", ""},
    {"GET", "/v1/admin/agents", nullptr, 401, "no bearer token", ""},
    {"GET", "/v1/admin/agents", nullptr, 403, "Only administrators", "dana"},
    {"DELETE", "/v1/admin/canned/canned-greet", nullptr, 403, "Only administrators", "dana"},
    // What an agent does not serve does not exist for them
    {"GET", HELEN, nullptr, 404, "no such conversation", "tomas"},
    {"POST", HELEN "/close", nullptr, 404, "no such conversation", "tomas"},
    {"GET", "/v1/agent/conversations?productId=larkspur", nullptr, 404, "no such product", "tomas"},
    {"GET", "/v1/agent/canned?productId=larkspur", nullptr, 404, "no such product", "tomas"},
    {"GET", "/v1/agent/nothing", nullptr, 404, "nothing at this address"},
    {"DELETE", "/v1/agent/me", nullptr, 405, "not possible here"},
    // Any JSON body
    {"POST", HELEN "/messages", "", 400, "needs a JSON body"},
    {"POST", HELEN "/messages", R"({"body":)", 400, "Malformed JSON"},
    {"POST", HELEN "/messages", "[]", 400, "must be a JSON object"},
    {"POST", HELEN "/messages", R"({"body":"a","text":"b"})", 400, R"("text" is not a member)"},
    // Messages
    {"POST", HELEN "/messages", "{}", 400, R"("body" is missing)"},
    {"POST", HELEN "/messages", "{\"body\":\" \\n\"}", 400, R"("body" must not be empty)"},
    {"POST", HELEN "/messages", R"({"body":"a","mentions":["dana"]})", 400, "for internal notes only"},
    // Actions
    {"POST", HELEN "/assign", R"({"agentId":"tomas"})", 422, "does not serve this product"},
    {"POST", HELEN "/snooze", R"({"until":"2024-05-01"})", 400, "an ISO 8601 date or null"},
    // Identity
    {"PATCH", "/v1/agent/me/preferences", R"({"notifyMode":"none"})", 400, "one of: all, mine, mentions"},
    {"POST", "/v1/agent/devices", R"({"platform":"macos","apnsToken":"AB"})", 400, "lower-case hexadecimal"},
    // Queries
    {"GET", "/v1/agent/search?q=a&limit=many", nullptr, 400, R"("limit" must be a number from 1 to 100)"},
    // Administration
    {"PATCH", "/v1/admin/agents/mara", R"({"role":"agent"})", 422, "last administrator"},
    {"POST", "/v1/admin/agents",
     R"({"name":"A","email":"Dana@Tessaly.example","password":"p","role":"agent","productIds":[]})", 409,
     "already exists"},
    {"PATCH", "/v1/admin/products/halden", R"({"widget":{"greeting":{"delaySeconds":1.5}}})", 400,
     R"("widget.greeting.delaySeconds" must be a whole number)"},
    {"PATCH", "/v1/admin/products/halden", R"({"widget":{"accentColor":"red"}})", 422, "#c2410c"},
    {"POST", "/v1/admin/canned", R"({"shortcut":"a b","body":"c"})", 400, "neither white space nor a slash"},
};

#undef HELEN

} // namespace

using AccessTest = DemoTest;

TEST_F(AccessTest, SignsInWithTheRightPasswordOnly)
{
    const auto login = [this](const QString& email, const QString& password) {
        return runTask(APIClient(service.origin(), std::nullopt, &session).login(email, password));
    };
    const APIError refused(u"Invalid email or password"_s, 401);
    EXPECT_EQ(login(u"dana@tessaly.example"_s, u"Demo"_s).error, refused);
    EXPECT_EQ(login(u"nobody@tessaly.example"_s, u"demo"_s).error, refused)
        << "the answer must not tell which addresses exist";
    const auto welcome = login(u" DANA@tessaly.example"_s, u"demo"_s);
    ASSERT_TRUE(welcome.value) << welcome.errorMessage().toStdString();
    const auto me = runTask(APIClient(service.origin(), welcome.value->token, &session).me());
    ASSERT_TRUE(me.value);
    EXPECT_EQ(me.value->agent.id, u"dana"_s);
    EXPECT_EQ(me.value->products.wrappedValue.size(), 2U) << "Dana does not serve the garden";

    // A new password, which is all that the administrator sent.
    EXPECT_TRUE(runTask(client().adminUpdateAgent(u"dana"_s, {}, {}, u"new"_s)).value);
    EXPECT_EQ(login(u"dana@tessaly.example"_s, u"demo"_s).error, refused);
    EXPECT_EQ(login(u"dana@tessaly.example"_s, u"new"_s).value->agent, me.value->agent);
}

TEST_F(AccessTest, ARefusalNamesTheFaultAndChangesNothing)
{
    const auto before = runTask(client().conversationDetail(u"helen-brandt"_s));
    for (const Refused& refused : refusedRequests) {
        const auto body = refused.body ? std::optional(QByteArray(refused.body)) : std::nullopt;
        const auto answer = request(refused.method, QString::fromLatin1(refused.path), body,
                                    QString::fromLatin1(refused.agentId));
        SCOPED_TRACE(std::string(refused.path) + ' ' + (refused.body ? refused.body : ""));
        EXPECT_EQ(answer.status, refused.status);
        EXPECT_TRUE(errorOf(answer).contains(QString::fromLatin1(refused.error)))
            << errorOf(answer).toStdString();
    }
    const auto after = runTask(client().conversationDetail(u"helen-brandt"_s));
    EXPECT_EQ(after.value, before.value);
    EXPECT_EQ(service.store().canned().size(), 6U);
    EXPECT_TRUE(runTask(client(u"tomas"_s).search(u"grinder"_s, 20)).value->empty());

    const APIClient revoked = client();
    service.store().revokeTokens();
    EXPECT_EQ(runTask(revoked.me()).error, APIError(u"The token is not valid or has expired."_s, 401));
}

} // namespace orvia::test
