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

/// The ways in which an opening connection fails. Each must count once.
struct Failure {
    const char* name;
    ScriptedAnswer answer;
};

TEST_F(Reconnect, FollowsEveryKindOfFailedHandshakeOnce)
{
    const Failure failures[] = {
        {"refused token", ScriptedAnswer::json("{\"error\":\"no\"}", 401)},
        {"no upgrade", ScriptedAnswer::json("{}")},
        {"redirect", ScriptedAnswer::redirect("http://127.0.0.1:1/")},
        {"wrong accept key",
         ScriptedAnswer::rawBytes("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                                  "Connection: Upgrade\r\nSec-WebSocket-Accept: AAAA\r\n\r\n",
                                  ScriptedAnswer::Ending::stall)},
        {"not HTTP", ScriptedAnswer::rawBytes("SSH-2.0-nothing here\r\n\r\n")},
        {"closed", ScriptedAnswer::rawBytes({})},
        {"reset", ScriptedAnswer::reset()},
        {"half an answer", ScriptedAnswer::rawBytes("HTTP/1.1 101 Swit")},
    };
    for (const Failure& failure : failures) {
        SCOPED_TRACE(failure.name);
        changes.clear();
        const std::size_t requestsBefore = service.upgradeRequests().size();
        service.answer("GET", "/ws", failure.answer);
        connectClient();
        ASSERT_TRUE(waitUntil([this] { return !changes.empty() && changes.back(); }));
        EXPECT_THAT(changes, ElementsAre(false, true));
        EXPECT_EQ(service.upgradeRequests().size(), requestsBefore + 2);
        client->disconnect();
    }
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

TEST_F(Reconnect, FollowsEveryWayInWhichAConnectionEnds)
{
    const std::pair<const char*, std::function<void(ServerChannel&)>> endings[] = {
        {"closed by the service", [](ServerChannel& channel) { channel.close(); }},
        {"reset", [](ServerChannel& channel) { channel.reset(); }},
        {"a frame that breaks the protocol",
         [](ServerChannel& channel) { channel.sendRaw("\xFF\xFF\xFF\xFF"); }},
    };
    for (const auto& [name, end] : endings) {
        SCOPED_TRACE(name);
        connectClient();
        const std::size_t before = service.channels().size();
        ASSERT_TRUE(waitForChannels(before + 1));
        ASSERT_TRUE(waitUntil([this] { return !changes.empty() && changes.back(); }));
        changes.clear();
        end(*service.channel());
        ASSERT_TRUE(waitUntil([this] { return !changes.empty() && changes.back(); }));
        EXPECT_THAT(changes, ElementsAre(false, true));
        EXPECT_EQ(service.channels().size(), before + 2);
        client->disconnect();
        changes.clear();
    }
}

TEST_F(Reconnect, SurvivesARestartOfTheService)
{
    connectAndWait();
    service.pause();
    ASSERT_TRUE(waitUntil([this] { return losses() >= 1; }));
    service.resume();
    ASSERT_TRUE(waitUntil([this] { return changes.back(); }));
    service.channel()->sendText(u"{\"type\":\"again\"}"_s);
    ASSERT_TRUE(waitForEvents(1));
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

TEST_F(Reconnect, StartsOverWithTheFirstDelayAfterAPong)
{
    useTimings(doublingTimings);
    connectClient();
    for (std::size_t round = 1; round <= 25; ++round) {
        ASSERT_TRUE(waitForChannels(round)) << "round " << round;
        ASSERT_TRUE(waitUntil([this] { return !changes.empty() && changes.back(); }));
        service.channel()->reset();
        ASSERT_TRUE(waitUntil([this] { return !changes.back(); }));
    }
}

TEST_F(Reconnect, StartsOverWithTheFirstDelayAfterAFrame)
{
    useTimings(doublingTimings);
    service.setAnswersPings(false);
    connectClient();
    for (std::size_t round = 1; round <= 25; ++round) {
        ASSERT_TRUE(waitForChannels(round)) << "round " << round;
        service.channel()->sendText(u"{\"type\":\"life\"}"_s);
        ASSERT_TRUE(waitForEvents(round));
        service.channel()->reset();
        ASSERT_TRUE(waitUntil([this] { return !changes.back(); }));
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
