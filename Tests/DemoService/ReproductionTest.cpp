#include "DemoFixture.h"

#include "DemoService/LoadGenerator.h"
#include "DemoService/SeedData.h"

#include <algorithm>

namespace orvia::test {

namespace {

/// A service without a network, whose clock stands still.
struct Bench {
    Instant now = *instantFromISO8601("2024-05-01T12:00:00Z");
    demo::Store store{[this] { return now; }};
    demo::LiveChannel live;
    demo::Desk desk{store, live};

    Bench() { demo::addTeam(store, u"demo"_s); }

    QByteArray page() { return store.encodedPage(*store.account(u"mara"_s), {}); }
};

QByteArray loadedPage(quint64 seed)
{
    Bench bench;
    demo::LoadGenerator load(bench.store, bench.desk, bench.live, seed);
    load.addConversations(40, 25);
    for (int times = 0; times < 200; ++times)
        load.happen();
    return bench.page();
}

} // namespace

using ReproductionTest = DemoTest;

TEST_F(ReproductionTest, TheSameSeedGivesTheSameService)
{
    EXPECT_EQ(loadedPage(7), loadedPage(7));
    EXPECT_NE(loadedPage(7), loadedPage(8));
}

TEST_F(ReproductionTest, GeneratesAsManyAsAskedInOrder)
{
    Bench bench;
    demo::LoadGenerator load(bench.store, bench.desk, bench.live, 1);
    load.addConversations(500, 200);
    EXPECT_EQ(bench.store.threadCount(), 500U);
    const auto& longest = bench.store.thread(u"load-1"_s)->messages;
    EXPECT_EQ(longest.size(), 200U);
    EXPECT_TRUE(std::is_sorted(longest.begin(), longest.end(), [](const Message& left, const Message& right) {
        return left.createdAt < right.createdAt;
    }));
    for (const demo::Thread* thread : bench.store.latestFirst()) {
        EXPECT_GE(thread->messages.size(), 1U);
        EXPECT_LT(thread->conversation.lastMessageAt, bench.now);
        EXPECT_EQ(thread->conversation.lastMessagePreview, thread->messages.back().body);
    }
}

TEST_F(ReproductionTest, SendsEventsAtTheRateAskedFor)
{
    Bench bench;
    demo::LoadGenerator load(bench.store, bench.desk, bench.live, 1);
    load.addConversations(10, 1);
    load.start(20'000);
    EXPECT_TRUE(waitUntil([&] { return bench.live.eventCount() > 1'000; }));
    load.start(0);
    const qint64 count = bench.live.eventCount();
    spinFor(std::chrono::milliseconds(40));
    EXPECT_EQ(bench.live.eventCount(), count) << "0 stops it";
}

TEST_F(ReproductionTest, TheTeamsLifeShowsEveryLiveFeature)
{
    Instant clock = now;
    demo::Options lively = options(clock);
    lively.lively = true;
    lively.beat = std::chrono::milliseconds(5);
    demo::DemoService livelyService(lively);
    ASSERT_TRUE(livelyService.listen());
    Listener mara(livelyService.origin(), livelyService.tokenOf(u"mara"_s));

    const std::pair<const char*, std::function<bool(const SocketEvent&)>> features[] = {
        {"a visitor types",
         [](const auto& e) { return e.type == u"typing"_s && e.from == u"visitor"_s && e.preview; }},
        {"a draft", [](const auto& e) { return e.type == u"typing"_s && e.agentId && *e.preview != u""_s; }},
        {"its end", [](const auto& e) { return e.type == u"typing"_s && e.agentId && *e.preview == u""_s; }},
        {"viewers", [](const auto& e) { return e.agents && !e.agents->empty(); }},
        {"no viewers", [](const auto& e) { return e.agents && e.agents->empty(); }},
        {"a receipt", [](const auto& e) { return e.type == u"read"_s && e.by == u"visitor"_s; }},
        {"a question",
         [](const auto& e) { return e.message && e.message->sender == MessageSender::visitor; }},
        {"an answer", [](const auto& e) { return e.message && e.message->sender == MessageSender::agent; }},
        {"a note", [](const auto& e) { return e.message && e.message->sender == MessageSender::note; }},
        {"a new visitor",
         [](const auto& e) {
             return e.conversation && e.conversation->visitor.name == u"Robin Achterberg"_s;
         }},
    };
    for (const auto& [name, matches] : features)
        EXPECT_TRUE(waitUntil([&] { return std::ranges::any_of(mara.events, matches); })) << name;
}

} // namespace orvia::test
