#include "ChannelFixture.h"

namespace orvia::test {
namespace {

using Lifecycle = ChannelFixture;
using testing::Each;
using testing::ElementsAre;

TEST(SocketAddress, ComesFromOriginAndToken)
{
    const std::tuple<QString, QString, QByteArray> cases[] = {
        {u"http://h:3000/v1"_s, u"abc"_s, "ws://h:3000/ws?token=abc"},
        {u"https://h:8443/api/?old=1#part"_s, u"abc"_s, "wss://h:8443/ws?token=abc"},
        {u"https://h"_s, u"a+b/c=d&e é%20"_s, "wss://h/ws?token=a%2Bb%2Fc%3Dd%26e%20%C3%A9%2520"},
        {u"ftp://h"_s, u"abc"_s, "ws://h/ws?token=abc"},
        {u"http://h:port"_s, u"abc"_s, {}},
        {QString(), u"abc"_s, {}},
    };
    for (const auto& [baseURL, token, expected] : cases) {
        const auto url = SocketClient::socketURL(QUrl(baseURL), token);
        EXPECT_EQ(url ? url->toEncoded() : QByteArray(), expected) << baseURL.toStdString();
    }
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
    client->connect(service.url(), u"second+"_s);
    old->sendText(u"{\"type\":\"old\"}"_s);
    ASSERT_TRUE(waitForChannels(2));
    EXPECT_EQ(service.channel()->request().target, "/ws?token=second%2B");
    EXPECT_EQ(service.channel()->request().header("Authorization"), std::nullopt);
    ASSERT_TRUE(waitUntil([&] { return !old->isOpen(); }));
    EXPECT_EQ(old->closeCode(), 1001);

    service.channel()->sendText(u"{\"type\":\"new\"}"_s);
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_EQ(events.at(0).type, u"new"_s);
    EXPECT_EQ(events.size(), 1U);
    spinFor(30ms);
    EXPECT_EQ(service.upgradeRequests().size(), 2U) << "the old connection's end is no failure";
    EXPECT_THAT(changes, Each(true));
}

/// What an owner may do from inside a callback.
enum class Deed { close, reopen, destroy };

class InsideCallbacks : public ChannelFixture, public testing::WithParamInterface<Deed> {
protected:
    void act()
    {
        if (std::exchange(acted, true))
            return;
        if (GetParam() == Deed::close)
            client->disconnect();
        else if (GetParam() == Deed::reopen)
            connectClient();
        else
            client.reset();
    }

    /// Acts where the connection comes up or is lost.
    void actWhen(bool state)
    {
        client->onConnectionChange = [this, state](bool connected) {
            changes.push_back(connected);
            if (connected == state)
                act();
        };
    }

    /// The client must have done as told, after @p channels connections, and the service's later frames must
    /// find nobody else.
    void expectDone(std::size_t channels)
    {
        ASSERT_TRUE(waitUntil([this] { return acted; }));
        if (GetParam() == Deed::reopen) {
            ASSERT_TRUE(waitForChannels(channels + 1));
            service.channel()->sendText(u"{\"type\":\"after\"}"_s);
            EXPECT_TRUE(waitUntil([this] { return !events.empty() && events.back().type == u"after"_s; }));
        } else {
            spinFor(30ms);
            EXPECT_TRUE(!service.channel() || !service.channel()->isOpen());
            EXPECT_EQ(service.upgradeRequests().size(), 1U);
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
    expectDone(1);
}

TEST_P(InsideCallbacks, OnBeingUp)
{
    actWhen(true);
    connectClient();
    expectDone(1);
}

TEST_P(InsideCallbacks, OnLoss)
{
    actWhen(false);
    connectClient();
    ASSERT_TRUE(waitForChannels(1));
    service.channel()->reset();
    expectDone(1);
}

TEST_P(InsideCallbacks, OnARefusedHandshake)
{
    service.answer("GET", "/ws", ScriptedAnswer::json("{}", 401));
    actWhen(false);
    connectClient();
    expectDone(0);
}

TEST_P(InsideCallbacks, OnSend)
{
    client->onSend = [this](const QString&) { act(); };
    connectAndWait();
    client->sendRead(u"c1"_s);
    EXPECT_TRUE(acted);
    expectDone(1);
}

INSTANTIATE_TEST_SUITE_P(Owner, InsideCallbacks, testing::Values(Deed::close, Deed::reopen, Deed::destroy));

} // namespace
} // namespace orvia::test
