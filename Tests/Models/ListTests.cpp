#include "RecordChecks.h"

#include "Models/Responses.h"

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

const std::string agent = R"({"_id":"a","name":"A","email":"","role":"agent"})";
const std::string conversation =
    R"({"_id":"c","productId":"p","visitor":{"name":"V","email":"v"},"status":"open"})";

std::string replaced(std::string text, const std::string& part, const std::string& replacement)
{
    return text.replace(text.find(part), part.size(), replacement);
}

/// Holds the list of an answer, which stands behind @p others, to drop what is no element and keep the order.
template <class T>
void checkList(const std::string& key, const std::string& element, const std::string& others = {})
{
    const std::string head = "{" + others + "\"" + key + "\":";
    const std::string second = replaced(element, "\":\"", "\":\"second ");
    const auto read =
        decoded<T>(head + "[null,1,\"x\",[],{}," + second + ",true," + element + ",[" + element + "]]}");
    ASSERT_TRUE(read) << key;
    EXPECT_EQ(encoded(*read), head + "[" + second + "," + element + "]}");
    EXPECT_TRUE(decoded<T>(head + "[]}"));
    EXPECT_FALSE(decoded<T>(head + "null}"));
    EXPECT_FALSE(decoded<T>(head + "{}}"));
}

} // namespace

TEST(LossyLists, DropTheElementsThatFailAndKeepTheOrderOfTheRest)
{
    checkList<MeResponse>("products", R"({"_id":"p","name":"P","slug":"s"})", "\"agent\":" + agent + ",");
    checkList<AgentsResponse>("agents", agent);
    checkList<ProductsResponse>("products", R"({"_id":"p","name":"P","slug":"s"})");
    checkList<ConversationsResponse>("conversations", conversation);
    checkList<ConversationDetailResponse>("messages",
                                          R"({"_id":"m","conversationId":"c","sender":"agent","body":"b"})",
                                          "\"conversation\":" + conversation + ",");
    checkList<CannedResponsesResponse>("canned", R"({"_id":"r","shortcut":"s","body":"b"})");
    checkList<SearchResponse>("results", R"({"conversation":)" + conversation + R"(,"snippet":"s"})");
}

TEST(LossyLists, AMillionBadElementsCostNothingButTime)
{
    std::string list = "[0";
    for (int i = 1; i < 1'000'000; ++i)
        list += ",0";
    const auto page = decoded<ConversationsResponse>(R"({"conversations":)" + list + "]}");
    ASSERT_TRUE(page);
    EXPECT_TRUE(page->conversations.wrappedValue.empty());
    EXPECT_LE(page->conversations.wrappedValue.capacity(), 100'000U);
}

TEST(Pages, NeverMixUpTextsThatAreShared)
{
    ConversationsResponse page;
    for (int i = 0; i < 500; ++i) {
        Conversation& conversation = page.conversations.wrappedValue.emplace_back();
        conversation.productId = i % 2 == 0 ? u"66321fdd0"_s : u"66321fdd1"_s;
        // Alike at both ends, different in the middle.
        conversation.visitor.name = u"A visitor, number %1, of the shop"_s.arg(i);
        conversation.visitor.email = u"Besucher Nummer %1 aus der Straße"_s.arg(i);
    }
    EXPECT_EQ(decoded<ConversationsResponse>(encoded(page)), page);
}

} // namespace orvia
