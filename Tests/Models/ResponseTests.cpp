#include "RecordChecks.h"

#include "Models/Responses.h"

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

const std::string agentText = R"({"_id":"a","name":"A","email":"","role":"agent"})";
const std::string productText = R"({"_id":"p","name":"P","slug":"s"})";
const std::string conversationText =
    R"({"_id":"c","productId":"p","visitor":{"name":"V","email":"v"},"status":"open"})";
const std::string messageText = R"({"_id":"m","conversationId":"c","sender":"agent","body":"b"})";
const std::string cannedText = R"({"_id":"r","shortcut":"s","body":"b"})";

const Agent agent{.id = u"a"_s, .name = u"A"_s, .role = AgentRole::agent};
const Product product{.id = u"p"_s, .name = u"P"_s, .slug = u"s"_s};
const Conversation conversation{.id = u"c"_s,
                                .productId = u"p"_s,
                                .visitor = {.name = u"V"_s, .email = u"v"_s, .meta = std::nullopt},
                                .status = ConversationStatus::open};
const Message message{.id = u"m"_s, .conversationId = u"c"_s, .sender = MessageSender::agent, .body = u"b"_s};
const CannedResponse canned{.id = u"r"_s, .productId = std::nullopt, .shortcut = u"s"_s, .body = u"b"_s};

Member record(std::string key, std::string value)
{
    return {std::move(key), Rule::required, std::move(value), {"1", "[]", "{}"}};
}

Member list(std::string key, const std::string& element)
{
    return {std::move(key), Rule::required, "[" + element + "]", {"1", "{}", "\"\""}};
}

} // namespace

TEST(Responses, EveryMemberIsRequired)
{
    checkRecord(LoginResponse{.token = u"t"_s, .agent = agent},
                {{"token", Rule::required, R"("t")", {"1", "[]"}}, record("agent", agentText)});
    checkRecord(MeResponse{.agent = agent, .products = {{product}}},
                {record("agent", agentText), list("products", productText)});
    checkRecord(AgentResponse{.agent = agent}, {record("agent", agentText)});
    checkRecord(AgentsResponse{.agents = {{agent}}}, {list("agents", agentText)});
    checkRecord(ProductsResponse{.products = {{product}}}, {list("products", productText)});
    checkRecord(ConversationsResponse{.conversations = {{conversation}}},
                {list("conversations", conversationText)});
    checkRecord(ConversationResponse{.conversation = conversation},
                {record("conversation", conversationText)});
    checkRecord(ConversationDetailResponse{.conversation = conversation, .messages = {{message}}},
                {record("conversation", conversationText), list("messages", messageText)});
    checkRecord(MessageResponse{.message = message}, {record("message", messageText)});
    checkRecord(CannedResponsesResponse{.canned = {{canned}}}, {list("canned", cannedText)});
    checkRecord(SearchResponse{.results = {{SearchResult{conversation, u"s"_s, std::nullopt}}}},
                {list("results", R"({"conversation":)" + conversationText + R"(,"snippet":"s"})")});
}

TEST(Responses, AThreadDropsTheMessagesThatFail)
{
    const auto otherMessage = [](const std::string& member) {
        return R"({"_id":"x","conversationId":"c","sender":"agent","body":"b",)" + member + "}";
    };
    const auto detail = decoded<ConversationDetailResponse>(
        R"({"conversation":)" + conversationText + R"(,"messages":[)" + otherMessage(R"("sender":"robot")")
        + "," + otherMessage(R"("via":"fax")") + "," + otherMessage(R"("createdAt":"yesterday")") + ","
        + messageText + "]}");
    ASSERT_TRUE(detail);
    EXPECT_EQ(detail->messages.wrappedValue, std::vector{message});
}

TEST(Responses, TheIgnoredAnswerIsAnyDocument)
{
    for (const std::string document : {"17", "null", "true", "\"x\"", "[]", "{}", " {\"ok\": [1, 2]} "})
        EXPECT_TRUE(decoded<JSONValueIgnored>(document)) << document;
    for (const std::string document : {"", " ", "{", "<html>", "1 2"})
        EXPECT_FALSE(decoded<JSONValueIgnored>(document)) << document;
}

} // namespace orvia
