#include "DemoFixture.h"

#include "DemoService/LoadGenerator.h"
#include "DemoService/ScriptedLife.h"
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

class ReproductionTest : public DemoTest {};

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

    const auto seen = [&](const std::function<bool(const SocketEvent&)>& matches) {
        return waitUntil([&] { return std::any_of(mara.events.begin(), mara.events.end(), matches); });
    };
    EXPECT_TRUE(
        seen([](const auto& e) { return e.type == u"typing"_s && e.from == u"visitor"_s && e.preview; }));
    EXPECT_TRUE(
        seen([](const auto& e) { return e.type == u"typing"_s && e.agentId && !e.preview->isEmpty(); }));
    EXPECT_TRUE(
        seen([](const auto& e) { return e.type == u"typing"_s && e.agentId && e.preview->isEmpty(); }));
    EXPECT_TRUE(seen([](const auto& e) { return e.type == u"viewers"_s && !e.agents->empty(); }));
    EXPECT_TRUE(seen([](const auto& e) { return e.type == u"viewers"_s && e.agents->empty(); }));
    EXPECT_TRUE(seen([](const auto& e) { return e.type == u"read"_s && e.by == u"visitor"_s; }));
    EXPECT_TRUE(seen([](const auto& e) { return e.message && e.message->sender == MessageSender::visitor; }));
    EXPECT_TRUE(seen([](const auto& e) { return e.message && e.message->sender == MessageSender::agent; }));
    EXPECT_TRUE(seen([](const auto& e) { return e.message && e.message->sender == MessageSender::note; }));
    EXPECT_TRUE(seen([](const auto& e) {
        return e.conversation && e.conversation->visitor.name == u"Robin Achterberg"_s;
    }));
}

TEST(ScriptedLifeTest, PreviewsGrowByWholeCharacters)
{
    const QString text = u"a👩🏽‍🍳é"_s;
    QString previous;
    for (int step = 1; step <= 9; ++step) {
        const QString typed = demo::typedSoFar(text, step, 9);
        EXPECT_TRUE(typed.startsWith(previous));
        EXPECT_TRUE(typed.isEmpty() || typed == u"a"_s || typed == u"a👩🏽‍🍳"_s || typed == text)
            << typed.toStdString();
        previous = typed;
    }
    EXPECT_EQ(previous, text);
}

TEST(SeedDataTest, DocumentsAreOfTheirSize)
{
    const QByteArray document = demo::pdfDocument("lid-fitting.pdf", 40'000);
    EXPECT_TRUE(document.startsWith("%PDF-"));
    EXPECT_TRUE(document.endsWith("%%EOF\n"));
    EXPECT_NEAR(static_cast<double>(document.size()), 40'000, 300);
    // The table stands where the trailer says, and each object where the table says (ISO 32000-1, 7.5).
    const qsizetype table =
        document.mid(document.lastIndexOf("startxref") + 10).split('\n').first().toLongLong();
    EXPECT_EQ(document.mid(table, 4), "xref");
    const QList<QByteArray> rows = document.mid(table).split('\n');
    for (int object = 1; object <= 5; ++object) {
        const qsizetype offset = rows.at(object + 2).left(10).toLongLong();
        EXPECT_TRUE(document.mid(offset).startsWith(QByteArray::number(object) + " 0 obj")) << object;
    }
}

} // namespace orvia::test
