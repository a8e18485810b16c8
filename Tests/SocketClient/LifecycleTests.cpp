#include "ChannelFixture.h"

#include <QLoggingCategory>

namespace orvia::test {
namespace {

using Lifecycle = ChannelFixture;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST(SocketAddress, ComesFromOriginAndToken)
{
    struct Case {
        QString baseURL;
        QString token;
        QByteArray expected; ///< empty for none
    };
    const Case cases[] = {
        {u"https://h"_s, u"abc"_s, "wss://h/ws?token=abc"},
        {u"http://h:3000/v1"_s, u"abc"_s, "ws://h:3000/ws?token=abc"},
        {u"https://h:8443/api/?old=1#part"_s, u"abc"_s, "wss://h:8443/ws?token=abc"},
        {u"http://[::1]:80/"_s, u"abc"_s, "ws://[::1]:80/ws?token=abc"},
        {u"https://h"_s, u"a+b/c=d&e é%20"_s, "wss://h/ws?token=a%2Bb%2Fc%3Dd%26e%20%C3%A9%2520"},
        {u"https://h"_s, QString(), "wss://h/ws?token="},
        {u"ftp://h"_s, u"abc"_s, "ws://h/ws?token=abc"},
        {u"//h"_s, u"abc"_s, "ws://h/ws?token=abc"},
        {u"http://h:port"_s, u"abc"_s, {}},
        {QString(), u"abc"_s, {}},
    };
    for (const Case& tested : cases) {
        const auto url = SocketClient::socketURL(QUrl(tested.baseURL), tested.token);
        EXPECT_EQ(url ? url->toEncoded() : QByteArray(), tested.expected) << tested.baseURL.toStdString();
    }
}

TEST_F(Lifecycle, CarriesTheTokenInTheQueryOnly)
{
    client->connect(QUrl(service.url().toString() + u"/api?x=1"_s), u"a+b é"_s);
    ASSERT_TRUE(waitForChannels(1));
    const ReceivedRequest& request = service.channel()->request();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.target, "/ws?token=a%2Bb%20%C3%A9");
    EXPECT_EQ(request.header("Authorization"), std::nullopt);
}

TEST_F(Lifecycle, TellsThatItIsUpWithTheFirstPong)
{
    service.setAnswersPings(false);
    connectClient();
    ASSERT_TRUE(waitForChannels(1));
    ASSERT_TRUE(waitUntil([this] { return service.channel()->pingCount() == 1; }));
    spinFor(20ms);
    EXPECT_THAT(changes, IsEmpty()) << "an open connection that does not answer is not up";
    service.channel()->sendFrame(ServerChannel::pong, {});
    ASSERT_TRUE(waitUntil([this] { return !changes.empty(); }));
    EXPECT_THAT(changes, ElementsAre(true));
}

TEST_F(Lifecycle, TellsThatItIsUpWithAFrameBeforeThePong)
{
    service.setAnswersPings(false);
    connectClient();
    ASSERT_TRUE(waitForChannels(1));
    service.channel()->sendText(u"not an event"_s);
    ASSERT_TRUE(waitUntil([this] { return !changes.empty(); }));
    EXPECT_THAT(changes, ElementsAre(true));
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(Lifecycle, PingsAtItsIntervalAndReportsOnlyTheFirstPong)
{
    SocketTimings timings = shortTimings;
    timings.pingInterval = 1ms;
    useTimings(timings);
    connectAndWait();
    ASSERT_TRUE(waitUntil([this] { return service.channel()->pingCount() >= 5; }));
    client->sendRead(u"c1"_s);
    ASSERT_TRUE(waitUntil([this] { return !service.channel()->texts().isEmpty(); }));
    EXPECT_THAT(changes, ElementsAre(true));
}

TEST_F(Lifecycle, SaysGoingAwayWhenClosedByHandAndStaysClosed)
{
    connectAndWait();
    client->sendViewing(std::nullopt);
    client->disconnect();
    EXPECT_THAT(changes, ElementsAre(true, false)) << "told at once, and once";
    ASSERT_TRUE(waitUntil([this] { return service.channel()->closeCode().has_value(); }));
    EXPECT_EQ(service.channel()->closeCode(), 1001);
    EXPECT_EQ(service.channel()->closeReason(), QByteArray());
    EXPECT_EQ(service.channel()->texts(), sent) << "what was sent just before still goes out";
    spinFor(30ms);
    EXPECT_EQ(service.upgradeRequests().size(), 1U);
    EXPECT_THAT(changes, ElementsAre(true, false));

    client->disconnect();
    EXPECT_THAT(changes, ElementsAre(true, false, false));
}

TEST_F(Lifecycle, ReplacesAConnectionAndNoLongerListensToIt)
{
    connectAndWait();
    const auto old = service.channel();
    old->sendText(u"{\"type\":\"old\"}"_s);
    client->connect(service.url(), u"second"_s);
    old->sendText(u"{\"type\":\"old\"}"_s);
    ASSERT_TRUE(waitForChannels(2));
    EXPECT_EQ(service.channel()->request().query(), "token=second");
    ASSERT_TRUE(waitUntil([&] { return !old->isOpen(); }));
    EXPECT_EQ(old->closeCode(), 1001);

    service.channel()->sendText(u"{\"type\":\"new\"}"_s);
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_EQ(events.at(0).type, u"new"_s);
    EXPECT_EQ(events.size(), 1U);
    spinFor(30ms);
    EXPECT_EQ(service.upgradeRequests().size(), 2U) << "the old connection's end is no failure";
    EXPECT_EQ(losses(), 0);
}

TEST_F(Lifecycle, IgnoresABaseURLThatIsNone)
{
    connectAndWait();
    client->connect(QUrl(u"http://h:port"_s), u"other"_s);
    service.channel()->reset();
    ASSERT_TRUE(waitForChannels(2));
    EXPECT_EQ(service.channel()->request().query(), "token=t0k3n") << "the address from before still holds";
}

TEST_F(Lifecycle, KeepsTheTokenOutOfLogs)
{
    static QStringList logged;
    logged.clear();
    const auto previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { logged.append(text); });
    service.answer("GET", "/ws", ScriptedAnswer::json("{}", 401));
    connectClient();
    const bool reconnected = waitForChannels(1);
    if (reconnected)
        service.channel()->reset();
    const bool reconnectedAgain = waitForChannels(2);
    client->connect(QUrl(u"http:///"_s), u"t0k3n"_s);
    spinFor(10ms);
    qInstallMessageHandler(previous);
    EXPECT_TRUE(reconnected && reconnectedAgain);
    EXPECT_THAT(logged.filter(u"t0k3n"_s), IsEmpty());
}

/// What an owner may do from inside a callback.
enum class Deed { close, reopen, destroy };

class InsideCallbacks : public ChannelFixture, public testing::WithParamInterface<Deed> {
protected:
    void act()
    {
        if (std::exchange(acted, true))
            return;
        switch (GetParam()) {
        case Deed::close:
            client->disconnect();
            break;
        case Deed::reopen:
            connectClient();
            break;
        case Deed::destroy:
            client.reset();
            break;
        }
    }

    /// The client must have done as told, and the service's later frames must find nobody else.
    void expectDone()
    {
        if (GetParam() == Deed::reopen) {
            const std::size_t before = service.channels().size();
            EXPECT_TRUE(waitUntil([&] { return service.channels().size() > 1 || before > 1; }));
            service.channel()->sendText(u"{\"type\":\"after\"}"_s);
            EXPECT_TRUE(waitUntil([&] { return !events.empty() && events.back().type == u"after"_s; }));
        } else {
            spinFor(30ms);
            EXPECT_TRUE(!service.channel() || !service.channel()->isOpen());
        }
    }

    bool acted = false;
};

TEST_P(InsideCallbacks, OnEvent)
{
    client->onEvent = [this](const SocketEvent& event) {
        events.push_back(event);
        act();
    };
    connectAndWait();
    // All in one piece, so that the second frame waits in the buffer when the first is handled.
    const QByteArray frame = ServerChannel::frameHead(ServerChannel::text, 15) + "{\"type\":\"once\"}";
    service.channel()->sendRaw(frame + frame);
    ASSERT_TRUE(waitUntil([this] { return acted; }));
    EXPECT_EQ(events.size(), 1U);
    expectDone();
}

TEST_P(InsideCallbacks, OnBeingUp)
{
    client->onConnectionChange = [this](bool connected) {
        changes.push_back(connected);
        if (connected)
            act();
    };
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return acted; }));
    expectDone();
}

TEST_P(InsideCallbacks, OnLoss)
{
    client->onConnectionChange = [this](bool connected) {
        if (!connected)
            act();
    };
    connectClient();
    ASSERT_TRUE(waitForChannels(1));
    service.channel()->reset();
    ASSERT_TRUE(waitUntil([this] { return acted; }));
    expectDone();
}

TEST_P(InsideCallbacks, OnARefusedHandshake)
{
    service.answer("GET", "/ws", ScriptedAnswer::json("{}", 401));
    client->onConnectionChange = [this](bool connected) {
        if (!connected)
            act();
    };
    connectClient();
    ASSERT_TRUE(waitUntil([this] { return acted; }));
    if (GetParam() == Deed::reopen)
        ASSERT_TRUE(waitForChannels(1));
    else
        spinFor(30ms);
    EXPECT_EQ(service.upgradeRequests().size(), GetParam() == Deed::reopen ? 2U : 1U);
}

TEST_P(InsideCallbacks, OnSend)
{
    client->onSend = [this](const QString&) { act(); };
    connectAndWait();
    client->sendRead(u"c1"_s);
    EXPECT_TRUE(acted);
    expectDone();
}

std::string nameOf(const testing::TestParamInfo<Deed>& deed)
{
    const std::array<std::string, 3> names{"Closes", "Reopens", "Destroys"};
    return names[static_cast<std::size_t>(deed.param)];
}

INSTANTIATE_TEST_SUITE_P(Owner, InsideCallbacks, testing::Values(Deed::close, Deed::reopen, Deed::destroy),
                         nameOf);

} // namespace
} // namespace orvia::test
