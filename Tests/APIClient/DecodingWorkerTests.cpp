#include "APIClient/Perform.h"
#include "Models/RecordGenerator.h"
#include "Models/SocketEvent.h"

#include <gmock/gmock.h>

#include <future>

/// What threads share while large answers are decoded: the pool of parsers, the key-order probe, the body's
/// bytes and the texts of a page. Meant for the thread sanitizer. It does not see into the toolkit's own
/// thread pool, so the threads here are the standard library's; they run the function that the console gives
/// to its worker.
namespace orvia {
namespace {

using namespace Qt::StringLiterals;
using Page = ConversationsResponse;

Page pageOf(unsigned seed, int size)
{
    RecordGenerator generator(seed);
    Page page;
    for (int i = 0; i < size; ++i) {
        auto conversation = generator.make<Conversation>();
        conversation.id = u"66321fcc%1"_s.arg(i);
        conversation.productId = u"66321fdd%1"_s.arg(i % 3); // equal texts share their memory
        page.conversations.wrappedValue.push_back(std::move(conversation));
    }
    return page;
}

std::future<std::optional<Page>> decodedOnWorker(const QByteArray& body)
{
    return std::async(std::launch::async, [body] { return api::decoded<Page>(body); });
}

/// What the main thread does with a page that a worker decoded: keeps copies, changes some, writes them.
void use(const Page& page, std::vector<Conversation>& inbox)
{
    for (const Conversation& conversation : page.conversations.wrappedValue) {
        inbox.push_back(conversation);
        inbox.back().productId += u"-seen"_s;
        inbox.back().agentUnread = 0;
    }
    if (inbox.size() > 2000)
        inbox.erase(inbox.begin(), inbox.begin() + 1500);
    EXPECT_FALSE(APIJSON::encoder.encode(inbox.front()).isEmpty());
}

TEST(DecodingWorker, SharesNothingThatNeedsCare)
{
    constexpr int rounds = 6;
    constexpr unsigned workers = 6; // more than the pool keeps parsers
    std::vector<Page> pages;
    std::vector<QByteArray> bodies;
    for (unsigned seed = 0; seed < workers; ++seed) {
        pages.push_back(pageOf(seed, 300));
        bodies.push_back(APIJSON::encoder.encode(pages.back()));
        ASSERT_GE(bodies.back().size(), NetworkSession::workerThreshold);
    }
    // A number that only a second reading accepts, and a document that none does.
    bodies[1].replace(0, 1, "{\"beyond\":1e400,");
    const QByteArray broken = bodies[2].chopped(1);
    const SocketEvent event = RecordGenerator(7).make<SocketEvent>();
    const QByteArray frame = APIJSON::encoder.encode(event);

    std::vector<Conversation> inbox;
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::future<std::optional<Page>>> answers;
        for (const QByteArray& body : bodies) {
            // As an answer arrives: its bytes belong to the operation, which hands them on and forgets them.
            QByteArray received = body;
            received.detach();
            answers.push_back(decodedOnWorker(received));
        }
        auto failure = decodedOnWorker(broken);
        for (int i = 0; i < 50; ++i)
            ASSERT_EQ(api::decoded<SocketEvent>(frame), event);
        ASSERT_EQ(api::decoded<Page>(bodies[0]), pages[0]);
        for (std::size_t i = 0; i < answers.size(); ++i) {
            const std::optional<Page> page = answers[i].get();
            ASSERT_EQ(page, pages[i]) << "round " << round << ", page " << i;
            use(*page, inbox);
        }
        EXPECT_EQ(failure.get(), std::nullopt);
    }
}

} // namespace
} // namespace orvia
