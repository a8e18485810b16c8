#include "RecordChecks.h"
#include "RecordGenerator.h"

#include "Models/JSON/Hashing.h"
#include "Models/Responses.h"
#include "Models/SocketEvent.h"

#include <QJsonDocument>

namespace orvia {

template <class T>
class RoundTrips : public testing::Test {
};

using AllRecords =
    testing::Types<Agent, ViewerAgent, Product, WidgetConfig, WidgetGreeting, CannedResponse, Visitor,
                   VisitorMeta, VisitorGeo, VisitorPage, Rating, Conversation, Attachment, Message,
                   SearchResult, SocketEvent, LoginResponse, MeResponse, AgentResponse, AgentsResponse,
                   ProductsResponse, ConversationsResponse, ConversationResponse, ConversationDetailResponse,
                   MessageResponse, CannedResponsesResponse, SearchResponse>;
TYPED_TEST_SUITE(RoundTrips, AllRecords);

TYPED_TEST(RoundTrips, EveryRecordReadsBackAsItWasWritten)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        RecordGenerator generator(seed);
        const auto record = generator.make<TypeParam>();
        const std::string document = encoded(record);
        ASSERT_EQ(decoded<TypeParam>(document), record) << "seed " << seed << "\n" << document;
        // Another parser takes it too.
        ASSERT_TRUE(QJsonDocument::fromJson(bytes(document)).isObject()) << "seed " << seed;
    }
}

TYPED_TEST(RoundTrips, EqualityAndHashCoverEveryMember)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        RecordGenerator generator(seed);
        const auto record = generator.make<TypeParam>();
        const auto copy = record;
        ASSERT_EQ(copy, record);
        ASSERT_EQ(qHash(copy, 17), qHash(record, 17));
        const auto expectDistinct = [&](const auto& field) {
            auto changed = record;
            generator.change(changed.*(field.member));
            EXPECT_NE(changed, record) << field.key;
            EXPECT_NE(qHash(changed, 17), qHash(record, 17)) << field.key;
        };
        std::apply([&](const auto&... field) { (expectDistinct(field), ...); }, TypeParam::fields());
    }
}

TEST(RoundTripsOfPages, TextsAreSharedAndNeverMixedUp)
{
    RecordGenerator generator(7);
    ConversationsResponse page;
    for (int i = 0; i < 500; ++i) {
        auto conversation = generator.make<Conversation>();
        conversation.id = QStringLiteral("66321fcc%1").arg(i);
        conversation.productId = i % 2 == 0 ? QStringLiteral("66321fdd0") : QStringLiteral("66321fdd1");
        // Alike at both ends, different in the middle.
        conversation.visitor.name = QStringLiteral("A visitor, number %1, of the shop").arg(i);
        page.conversations.wrappedValue.push_back(conversation);
    }
    const auto read = decoded<ConversationsResponse>(encoded(page));
    ASSERT_EQ(read, page);
    const auto& conversations = read->conversations.wrappedValue;
    int shared = 0;
    for (std::size_t i = 2; i < conversations.size(); ++i)
        shared += conversations[i].productId.isSharedWith(conversations[i - 2].productId) ? 1 : 0;
    EXPECT_GE(shared, 400);
}

} // namespace orvia
