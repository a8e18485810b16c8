#include "ChannelFixture.h"

#include <limits>

namespace orvia::test {
namespace {

using Reconnect = ChannelFixture;
using testing::ElementsAre;

TEST(ReconnectDelay, DoublesUpToItsLimit)
{
    const std::pair<qint64, std::chrono::seconds> cases[] = {
        {0, 1s}, {1, 2s}, {4, 16s}, {5, 30s}, {63, 30s}, {std::numeric_limits<qint64>::max(), 30s}};
    for (const auto& [attempt, delay] : cases)
        EXPECT_EQ(reconnectDelay(attempt, SocketTimings()), delay) << attempt;
}

TEST_F(Reconnect, GivesUpAHandshakeThatHangs)
{
    SocketTimings timings = shortTimings;
    timings.handshakeTimeout = 20ms;
    useTimings(timings);
    service.answer("GET", "/ws", ScriptedAnswer::stall());
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return !changes.empty() && changes.back(); }));
    EXPECT_THAT(changes, ElementsAre(false, true));
    // The limit is the handshake's alone: an idle connection outlives it.
    spinFor(60ms);
    EXPECT_EQ(service.channels().size(), 1U);
    EXPECT_TRUE(service.channel()->isOpen());
}

TEST_F(Reconnect, ThatWaitsGivesWayToWhatIsDoneByHand)
{
    SocketTimings timings = shortTimings;
    timings.firstReconnectDelay = timings.longestReconnectDelay = 20ms;
    useTimings(timings);
    service.answer("GET", "/ws", ScriptedAnswer::reset());
    service.answer("GET", "/ws", ScriptedAnswer::reset());
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return !changes.empty(); }));
    client->disconnect();
    spinFor(60ms);
    EXPECT_EQ(service.upgradeRequests().size(), 1U);
    EXPECT_THAT(changes, ElementsAre(false, false));

    connectClient();
    ASSERT_TRUE(waitUntil([this] { return changes.size() == 3; }));
    connectClient();
    ASSERT_TRUE(waitForChannels(1));
    spinFor(60ms);
    EXPECT_EQ(service.channels().size(), 1U) << "the waiting reconnect replaced a good connection";
}

TEST_F(Reconnect, WaitsTwiceAsLongWithEveryFailureAndStartsOverAfterASignOfLife)
{
    std::vector<std::chrono::milliseconds> waits;
    const auto useFirstDelay = [&](std::chrono::milliseconds delay) {
        SocketTimings timings = shortTimings;
        timings.firstReconnectDelay = delay;
        timings.longestReconnectDelay = 10h;
        useTimings(timings);
        client->onConnectionChange = [&](bool connected) {
            changes.push_back(connected);
            // The wait begins behind this callback.
            const auto note = [&] { waits.push_back(client->pendingReconnect().value_or(0ms)); };
            if (!connected)
                QMetaObject::invokeMethod(client.get(), note, Qt::QueuedConnection);
        };
    };
    const auto fail = [this](int times) {
        for (int time = 0; time < times; ++time)
            service.answer("GET", "/ws", ScriptedAnswer::reset());
    };

    useFirstDelay(10ms);
    fail(3);
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return !changes.empty() && changes.back(); })) << "a pong is a sign";
    fail(2);
    service.setAnswersPings(false);
    service.channel()->reset();
    ASSERT_TRUE(waitForChannels(2));
    service.channel()->sendText(u"any frame is another"_s);
    ASSERT_TRUE(waitUntil([this] { return changes.back(); }));
    service.channel()->reset();
    ASSERT_TRUE(waitForChannels(3));
    EXPECT_THAT(waits, ElementsAre(10ms, 20ms, 40ms, 10ms, 20ms, 40ms, 10ms));

    // And after a connect by hand.
    useFirstDelay(1h);
    waits.clear();
    for (std::size_t round = 1; round <= 2; ++round) {
        fail(1);
        connectClient();
        ASSERT_TRUE(waitUntil([&] { return waits.size() == round; }));
    }
    EXPECT_THAT(waits, ElementsAre(1h, 1h));
}

} // namespace
} // namespace orvia::test
