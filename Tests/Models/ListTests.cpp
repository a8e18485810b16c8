#include "RecordChecks.h"

#include "Models/Responses.h"

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

std::string conversation(const std::string& id, const std::string& status)
{
    return R"({"_id":")" + id + R"(","productId":"p","visitor":{"name":"V","email":""},"status":")" + status
           + "\"}";
}

QStringList idsIn(const std::string& list)
{
    QStringList ids;
    const auto page = decoded<ConversationsResponse>(R"({"conversations":)" + list + "}");
    for (const Conversation& each : page.value().conversations.wrappedValue)
        ids.append(each.id);
    return ids;
}

} // namespace

TEST(LossyLists, DropTheElementsThatFailAndKeepTheOrderOfTheRest)
{
    const std::string first = conversation("c1", "open");
    const std::string unknownStatus = conversation("c2", "pending");
    const std::string third = conversation("c3", "closed");
    EXPECT_EQ(idsIn("[" + first + "," + unknownStatus + "," + third + "]"), (QStringList{u"c1"_s, u"c3"_s}));
    EXPECT_EQ(idsIn("[null,1,\"x\",[],{}," + third + ",true," + first + ",[" + first + "]]"),
              (QStringList{u"c3"_s, u"c1"_s}));
    EXPECT_EQ(idsIn("[" + first + "," + first + "]"), (QStringList{u"c1"_s, u"c1"_s}));
    EXPECT_EQ(idsIn("[" + unknownStatus + "]"), QStringList());
    EXPECT_EQ(idsIn("[]"), QStringList());
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

} // namespace orvia
