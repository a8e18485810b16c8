#include "ChannelFixture.h"

#include <QElapsedTimer>

#include <limits>

namespace orvia::test {
namespace {

using Reconnect = ChannelFixture;
using testing::ElementsAre;

TEST(ReconnectDelay, DoublesUpToItsLimit)
{
    const std::pair<qint64, std::chrono::seconds> cases[] = {
        {0, 1s},  {1, 2s},  {2, 4s},   {3, 8s},     {4, 16s},
        {5, 30s}, {6, 30s}, {63, 30s}, {2000, 30s}, {std::numeric_limits<qint64>::max(), 30s}};
    for (const auto& [attempt, delay] : cases)
        EXPECT_EQ(reconnectDelay(attempt, SocketTimings()), delay) << attempt;

    const SocketTimings small{.firstReconnectDelay = 3ms, .longestReconnectDelay = 10ms};
    EXPECT_EQ(reconnectDelay(1, small), 6ms);
    EXPECT_EQ(reconnectDelay(2, small), 10ms);
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

TEST_F(Reconnect, GoesOnWhileNobodyListens)
{
    service.pause();
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return losses() >= 4; }));
    service.resume();
    ASSERT_TRUE(waitUntil([this] { return changes.back(); }));
    EXPECT_EQ(service.channels().size(), 1U);
}

TEST_F(Reconnect, NeverHappensOnceClosedByHand)
{
    SocketTimings timings = shortTimings;
    timings.firstReconnectDelay = timings.longestReconnectDelay = 20ms;
    useTimings(timings);
    service.answer("GET", "/ws", ScriptedAnswer::reset());
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return !changes.empty(); }));
    client->disconnect();
    EXPECT_THAT(changes, ElementsAre(false, false));
    spinFor(60ms);
    EXPECT_EQ(service.upgradeRequests().size(), 1U);
    EXPECT_EQ(changes.size(), 2U);
}

TEST_F(Reconnect, ThatWaitsGivesWayToANewConnect)
{
    SocketTimings timings = shortTimings;
    timings.firstReconnectDelay = timings.longestReconnectDelay = 20ms;
    useTimings(timings);
    service.answer("GET", "/ws", ScriptedAnswer::reset());
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return !changes.empty(); }));
    connectClient();
    ASSERT_TRUE(waitForChannels(1));
    spinFor(60ms);
    EXPECT_EQ(service.channels().size(), 1U) << "the waiting reconnect replaced a good connection";
}

/// Waits that double without a limit, so that a forgotten reset soon waits for ever.
constexpr SocketTimings doublingTimings{
    .pingInterval = 1h, .handshakeTimeout = 30s, .firstReconnectDelay = 1ms, .longestReconnectDelay = 1h};

TEST_F(Reconnect, WaitsTwiceAsLongWithEveryFailure)
{
    useTimings(doublingTimings);
    service.always("GET", "/ws", ScriptedAnswer::reset());
    QElapsedTimer sinceStart;
    sinceStart.start();
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return service.upgradeRequests().size() >= 8; }));
    // Before the attempt of number n the waits add up to 2^n - 1 milliseconds.
    const auto attempts = service.upgradeRequests().size();
    EXPECT_GE(sinceStart.elapsed() + 1, (qint64{1} << (attempts - 1)) - 1);
    client->disconnect();
}

TEST_F(Reconnect, StartsOverWithTheFirstDelayAfterASignOfLife)
{
    for (const bool isPong : {true, false}) {
        useTimings(doublingTimings);
        service.setAnswersPings(isPong);
        const std::size_t before = service.channels().size();
        connectClient();
        for (std::size_t round = 1; round <= 25; ++round) {
            ASSERT_TRUE(waitForChannels(before + round)) << "round " << round;
            if (!isPong)
                service.channel()->sendText(u"{\"type\":\"life\"}"_s);
            ASSERT_TRUE(waitUntil([this] { return !changes.empty() && changes.back(); }));
            service.channel()->reset();
            ASSERT_TRUE(waitUntil([this] { return !changes.back(); }));
        }
    }
}

TEST_F(Reconnect, StartsOverWithTheFirstDelayAfterAConnectByHand)
{
    useTimings(doublingTimings);
    for (std::size_t round = 1; round <= 25; ++round) {
        service.answer("GET", "/ws", ScriptedAnswer::reset());
        connectClient();
        ASSERT_TRUE(waitForChannels(round)) << "round " << round;
    }
}

} // namespace
} // namespace orvia::test
