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
    {"POST", HELEN "/messages", "{\"body\":", 400, "Malformed JSON"},
    {"POST", HELEN "/messages", "[]", 400, "must be a JSON object"},
    {"POST", HELEN "/messages", "{\"body\":\"a\",\"text\":\"b\"}", 400, "\"text\" is not a member"},
    // Messages
    {"POST", HELEN "/messages", "{}", 400, "\"body\" is missing"},
    {"POST", HELEN "/messages", "{\"body\":7}", 400, "\"body\" must be a string"},
    {"POST", HELEN "/messages", "{\"body\":\" \\n\"}", 400, "\"body\" must not be empty"},
    {"POST", HELEN "/messages", "{\"body\":\"a\",\"note\":1}", 400, "\"note\" must be true or false"},
    {"POST", HELEN "/messages", "{\"body\":\"a\",\"mentions\":[\"dana\"]}", 400, "for internal notes only"},
    {"POST", HELEN "/messages", "{\"body\":\"a\",\"note\":true,\"mentions\":[\"x\"]}", 400,
     "unknown agent: x"},
    {"POST", HELEN "/messages", "{\"body\":\"a\",\"note\":true,\"mentions\":[1]}", 400, "a list of strings"},
    // Actions
    {"POST", HELEN "/assign", "{}", 400, "\"agentId\" is missing"},
    {"POST", HELEN "/assign", "{\"agentId\":\"x\"}", 404, "no such agent"},
    {"POST", HELEN "/assign", "{\"agentId\":\"tomas\"}", 422, "does not serve this product"},
    {"POST", HELEN "/assign", "{\"agentId\":false}", 400, "a string or null"},
    {"POST", HELEN "/snooze", "{}", 400, "\"until\" is missing"},
    {"POST", HELEN "/snooze", "{\"until\":\"2024-05-01\"}", 400, "an ISO 8601 date or null"},
    {"POST", HELEN "/snooze", "{\"until\":1714564800}", 400, "an ISO 8601 date or null"},
    {"POST", HELEN "/mute", "{\"muted\":\"yes\"}", 400, "\"muted\" must be true or false"},
    {"POST", "/v1/agent/conversations/nobody/close", nullptr, 404, "no such conversation"},
    // Identity
    {"POST", "/v1/agent/login", "{\"email\":\"mara@tessaly.example\"}", 400, "\"password\" is missing"},
    {"PATCH", "/v1/agent/me/preferences", "{\"notifyMode\":\"none\"}", 400, "one of: all, mine, mentions"},
    {"POST", "/v1/agent/devices", "{\"platform\":\"macos\",\"apnsToken\":\"AB\"}", 400,
     "lower-case hexadecimal"},
    {"POST", "/v1/agent/devices", "{\"platform\":\"macos\",\"apnsToken\":\"abc\"}", 400,
     "lower-case hexadecimal"},
    // Queries
    {"GET", "/v1/agent/conversations?status=snoozed", nullptr, 400, "one of: open, closed"},
    {"GET", "/v1/agent/conversations?assignee=nobody", nullptr, 400, "me, unassigned or the id"},
    {"GET", "/v1/agent/conversations?includeSnoozed=1", nullptr, 400, "true or false"},
    {"GET", "/v1/agent/conversations?productId=none", nullptr, 404, "no such product"},
    {"GET", "/v1/agent/search", nullptr, 400, "\"q\" is missing"},
    {"GET", "/v1/agent/search?q=a&limit=many", nullptr, 400, "\"limit\" must be a number from 1 to 100"},
    {"GET", "/v1/agent/search?q=a&limit=0", nullptr, 400, "\"limit\" must be a number from 1 to 100"},
    {"GET", "/v1/agent/visitors/conversations", nullptr, 400, "\"email\" is missing"},
    // Administration
    {"POST", "/v1/admin/agents",
     "{\"name\":\"A\",\"email\":\"a@b\",\"password\":\"p\",\"role\":\"owner\",\"productIds\":[]}", 400,
     "\"role\" must be one of: admin, agent"},
    {"POST", "/v1/admin/agents",
     "{\"name\":\"A\",\"email\":\"a\",\"password\":\"p\",\"role\":\"agent\",\"productIds\":[]}", 400,
     "not an e-mail address"},
    {"POST", "/v1/admin/agents", "{\"name\":\"A\",\"email\":\"a@b\",\"password\":\"p\",\"role\":\"agent\"}",
     400, "\"productIds\" is missing"},
    {"POST", "/v1/admin/agents",
     "{\"name\":\"A\",\"email\":\"a@b\",\"password\":\"p\",\"role\":\"agent\",\"productIds\":[\"x\"]}", 400,
     "unknown product: x"},
    {"POST", "/v1/admin/agents",
     "{\"name\":\"A\",\"email\":\"Dana@Tessaly.example\",\"password\":\"p\",\"role\":\"agent\","
     "\"productIds\":[]}",
     409, "already exists"},
    {"PATCH", "/v1/admin/agents/nobody", "{}", 404, "no such agent"},
    {"PATCH", "/v1/admin/agents/dana", "{\"name\":\"D\"}", 400, "\"name\" is not a member"},
    {"POST", "/v1/admin/products", "{\"name\":\"A\",\"slug\":\"Big Shop\"}", 400, "\"slug\" may hold"},
    {"POST", "/v1/admin/products", "{\"name\":\"A\",\"slug\":\"halden-cycles\"}", 409, "already exists"},
    {"PATCH", "/v1/admin/products/halden", "{\"widget\":{\"position\":\"top\"}}", 400, "one of: right, left"},
    {"PATCH", "/v1/admin/products/halden", "{\"widget\":{\"greeting\":{\"delaySeconds\":1.5}}}", 400,
     "\"widget.greeting.delaySeconds\" must be a whole number"},
    {"PATCH", "/v1/admin/products/halden", "{\"widget\":{\"greeting\":{\"delaySeconds\":-1}}}", 422,
     "0 to 3600"},
    {"PATCH", "/v1/admin/products/halden", "{\"widget\":{\"accentColor\":\"red\"}}", 422, "#c2410c"},
    {"PATCH", "/v1/admin/products/nothing", "{}", 404, "no such product"},
    {"POST", "/v1/admin/canned", "{\"shortcut\":\"a b\",\"body\":\"c\"}", 400,
     "neither white space nor a slash"},
    {"POST", "/v1/admin/canned", "{\"shortcut\":\"GREET\",\"body\":\"c\"}", 409, "already taken"},
    {"POST", "/v1/admin/canned", "{\"shortcut\":\"a\",\"body\":\"c\",\"productId\":\"x\"}", 400,
     "unknown product"},
    {"DELETE", "/v1/admin/canned/none", nullptr, 404, "no such canned response"},
};

#undef HELEN

} // namespace

class ValidationTest : public DemoTest {};

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
