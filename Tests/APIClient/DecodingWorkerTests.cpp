#include "APIClient/Perform.h"
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

Page pageOf(unsigned number)
{
    Page page;
    for (int i = 0; i < 300; ++i) {
        Conversation& conversation = page.conversations.wrappedValue.emplace_back();
        conversation.id = u"66321fcc%1"_s.arg(i);
        conversation.productId = u"66321fdd%1"_s.arg(i % 3); // equal texts share their memory
        conversation.visitor.name = u"Zoë \"%1\" of page %2"_s.arg(i).arg(number);
        VisitorMeta meta;
        meta.data = OrderedStringMap{{{u"plan"_s, u"pro"_s}}};
        conversation.visitor.meta = meta;
        conversation.lastMessagePreview = u"Straße \u2028 \U0001F469 "_s.repeated(12);
    }
    return page;
}

TEST(DecodingWorker, SharesNothingThatNeedsCare)
{
    const auto decodedOnWorker = [](const QByteArray& body) {
        return std::async(std::launch::async, [body] { return api::decoded<Page>(body); });
    };
    constexpr unsigned workers = 6; // more than the pool keeps parsers
    std::vector<Page> pages;
    std::vector<QByteArray> bodies;
    for (unsigned number = 0; number < workers; ++number) {
        pages.push_back(pageOf(number));
        bodies.push_back(APIJSON::encoder.encode(pages.back()));
        ASSERT_GE(bodies.back().size(), NetworkSession::workerThreshold);
    }
    // A number that only a second reading accepts, and a document that none does.
    bodies[1].replace(0, 1, "{\"beyond\":1e400,");
    const QByteArray broken = bodies[2].chopped(1);
    SocketEvent event;
    event.type = u"conversation"_s;
    event.conversation = pages[0].conversations.wrappedValue.front();
    const QByteArray frame = APIJSON::encoder.encode(event);

    std::vector<Conversation> inbox;
    for (int round = 0; round < 6; ++round) {
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
            // What the main thread does with a page that a worker decoded: it keeps copies and changes some.
            for (const Conversation& conversation : page->conversations.wrappedValue) {
                inbox.push_back(conversation);
                inbox.back().productId += u"-seen"_s;
            }
        }
        EXPECT_EQ(failure.get(), std::nullopt);
    }
}

} // namespace
} // namespace orvia
