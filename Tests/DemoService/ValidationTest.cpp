#include "DemoFixture.h"

namespace orvia::test {

namespace {

struct Refused {
    const char* method;
    const char* path;
    const char* body;
    int status;
    const char* error; ///< part of the text
};

#define HELEN "/v1/agent/conversations/helen-brandt"

constexpr Refused refusedRequests[] = {
    // Any JSON body
    {"POST", HELEN "/messages", "", 400, "needs a JSON body"},
    {"POST", HELEN "/messages", R"({"body":)", 400, "Malformed JSON"},
    {"POST", HELEN "/messages", "[]", 400, "must be a JSON object"},
    {"POST", HELEN "/messages", R"({"body":"a","text":"b"})", 400, R"("text" is not a member)"},
    // Messages
    {"POST", HELEN "/messages", "{}", 400, R"("body" is missing)"},
    {"POST", HELEN "/messages", R"({"body":7})", 400, R"("body" must be a string)"},
    {"POST", HELEN "/messages", "{\"body\":\" \\n\"}", 400, R"("body" must not be empty)"},
    {"POST", HELEN "/messages", R"({"body":"a","note":1})", 400, R"("note" must be true or false)"},
    {"POST", HELEN "/messages", R"({"body":"a","mentions":["dana"]})", 400, "for internal notes only"},
    {"POST", HELEN "/messages", R"({"body":"a","note":true,"mentions":["x"]})", 400, "unknown agent: x"},
    {"POST", HELEN "/messages", R"({"body":"a","note":true,"mentions":[1]})", 400, "a list of strings"},
    // Actions
    {"POST", HELEN "/assign", "{}", 400, R"("agentId" is missing)"},
    {"POST", HELEN "/assign", R"({"agentId":"x"})", 404, "no such agent"},
    {"POST", HELEN "/assign", R"({"agentId":"tomas"})", 422, "does not serve this product"},
    {"POST", HELEN "/assign", R"({"agentId":false})", 400, "a string or null"},
    {"POST", HELEN "/snooze", "{}", 400, R"("until" is missing)"},
    {"POST", HELEN "/snooze", R"({"until":"2024-05-01"})", 400, "an ISO 8601 date or null"},
    {"POST", HELEN "/mute", R"({"muted":"yes"})", 400, R"("muted" must be true or false)"},
    {"POST", "/v1/agent/conversations/nobody/close", nullptr, 404, "no such conversation"},
    // Identity
    {"POST", "/v1/agent/login", R"({"email":"mara@tessaly.example"})", 400, R"("password" is missing)"},
    {"PATCH", "/v1/agent/me/preferences", R"({"notifyMode":"none"})", 400, "one of: all, mine, mentions"},
    {"POST", "/v1/agent/devices", R"({"platform":"macos","apnsToken":"AB"})", 400, "lower-case hexadecimal"},
    // Queries
    {"GET", "/v1/agent/conversations?status=snoozed", nullptr, 400, "one of: open, closed"},
    {"GET", "/v1/agent/conversations?assignee=nobody", nullptr, 400, "me, unassigned or the id"},
    {"GET", "/v1/agent/conversations?includeSnoozed=1", nullptr, 400, "true or false"},
    {"GET", "/v1/agent/conversations?productId=none", nullptr, 404, "no such product"},
    {"GET", "/v1/agent/search", nullptr, 400, R"("q" is missing)"},
    {"GET", "/v1/agent/search?q=a&limit=many", nullptr, 400, R"("limit" must be a number from 1 to 100)"},
    // Administration
    {"POST", "/v1/admin/agents",
     R"({"name":"A","email":"a@b","password":"p","role":"owner","productIds":[]})", 400,
     R"("role" must be one of: admin, agent)"},
    {"POST", "/v1/admin/agents", R"({"name":"A","email":"a","password":"p","role":"agent","productIds":[]})",
     400, "not an e-mail address"},
    {"POST", "/v1/admin/agents", R"({"name":"A","email":"a@b","password":"p","role":"agent"})", 400,
     R"("productIds" is missing)"},
    {"POST", "/v1/admin/agents",
     R"({"name":"A","email":"a@b","password":"p","role":"agent","productIds":["x"]})", 400,
     "unknown product: x"},
    {"POST", "/v1/admin/agents",
     R"({"name":"A","email":"Dana@Tessaly.example","password":"p","role":"agent","productIds":[]})", 409,
     "already exists"},
    {"PATCH", "/v1/admin/agents/nobody", "{}", 404, "no such agent"},
    {"PATCH", "/v1/admin/agents/dana", R"({"name":"D"})", 400, R"("name" is not a member)"},
    {"POST", "/v1/admin/products", R"({"name":"A","slug":"Big Shop"})", 400, R"("slug" may hold)"},
    {"POST", "/v1/admin/products", R"({"name":"A","slug":"halden-cycles"})", 409, "already exists"},
    {"PATCH", "/v1/admin/products/halden", R"({"widget":{"position":"top"}})", 400, "one of: right, left"},
    {"PATCH", "/v1/admin/products/halden", R"({"widget":{"greeting":{"delaySeconds":1.5}}})", 400,
     R"("widget.greeting.delaySeconds" must be a whole number)"},
    {"PATCH", "/v1/admin/products/halden", R"({"widget":{"greeting":{"delaySeconds":-1}}})", 422,
     "0 to 3600"},
    {"PATCH", "/v1/admin/products/halden", R"({"widget":{"accentColor":"red"}})", 422, "#c2410c"},
    {"PATCH", "/v1/admin/products/nothing", "{}", 404, "no such product"},
    {"POST", "/v1/admin/canned", R"({"shortcut":"a b","body":"c"})", 400, "neither white space nor a slash"},
    {"POST", "/v1/admin/canned", R"({"shortcut":"GREET","body":"c"})", 409, "already taken"},
    {"POST", "/v1/admin/canned", R"({"shortcut":"a","body":"c","productId":"x"})", 400, "unknown product"},
    {"DELETE", "/v1/admin/canned/none", nullptr, 404, "no such canned response"},
};

#undef HELEN

} // namespace

using ValidationTest = DemoTest;

TEST_F(ValidationTest, RefusesWithATextThatNamesTheFault)
{
    const auto before = runTask(client().conversationDetail(u"helen-brandt"_s));
    for (const Refused& refused : refusedRequests) {
        const auto body = refused.body ? std::optional(QByteArray(refused.body)) : std::nullopt;
        const auto answer = request(refused.method, QString::fromLatin1(refused.path), body);
        SCOPED_TRACE(std::string(refused.path) + ' ' + (refused.body ? refused.body : ""));
        EXPECT_EQ(answer.status, refused.status);
        EXPECT_TRUE(errorOf(answer).contains(QString::fromLatin1(refused.error)))
            << errorOf(answer).toStdString();
    }
    const auto after = runTask(client().conversationDetail(u"helen-brandt"_s));
    EXPECT_EQ(after.value, before.value) << "a refused request must not change anything";
}

TEST_F(ValidationTest, RefusesOtherMediaTypes)
{
    const QString path = u"/v1/agent/conversations/helen-brandt/messages"_s;
    EXPECT_EQ(request("POST", path, R"({"body":"a"})", u"mara"_s, "text/plain").status, 415);
    EXPECT_EQ(request("POST", path, R"({"body":"a"})", u"mara"_s, "application/json; charset=utf-8").status,
              200);
}

} // namespace orvia::test
