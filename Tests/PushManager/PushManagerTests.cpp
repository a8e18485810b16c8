#include "PushManager.h"

#include "Platform/PrivateFile.h"
#include "Support/BusPeers.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

namespace orvia {

using namespace Qt::StringLiterals;
using test::Distributor;
using test::NotificationServer;
using test::PrivateBus;
using test::waitUntil;

namespace {

const QString ownService = u"io.tessaly.Orvia"_s;
const QStringList everything{u"actions"_s, u"body"_s, u"body-markup"_s};

class PushManagerOnDesktop : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.isRunning()); }

    std::unique_ptr<PushManager> connected()
    {
        auto manager = std::make_unique<PushManager>();
        manager->connectToDesktop({
            .isFrontmost = [this] { return isFrontmost; },
            .bringToFront = [this](const QString& token) { raised.append(token); },
            .registrationFile = {},
            .busConnection = own.name(),
        });
        manager->onDeviceToken = [this](const QString& token) { tokens.append(token); };
        manager->onOpenConversation = [this](const QString& id) { opened.append(id); };
        own.connection().registerService(ownService);
        return manager;
    }

    /// The distributor's call has been answered, so whatever it causes at once has been caused.
    static void deliver(Distributor& distributor, const QString& method, const QVariantList& arguments)
    {
        distributor.callConnector(ownService, method, arguments);
        ASSERT_TRUE(waitUntil([&] { return distributor.lastCall.isFinished(); }));
        ASSERT_FALSE(distributor.lastCall.isError());
    }

    /// Registers and returns the token that the distributor got.
    static QString registeredToken(PushManager& manager, Distributor& distributor)
    {
        const qsizetype before = distributor.registrations.size();
        manager.start();
        EXPECT_TRUE(waitUntil([&] { return distributor.registrations.size() > before; }));
        return distributor.registrations.constLast().token;
    }

    PrivateBus bus;
    test::BusConnection own{bus};
    bool isFrontmost = false;
    QStringList raised;
    QStringList tokens;
    QStringList opened;
};

TEST_F(PushManagerOnDesktop, RegistersOnEveryStartAndReportsEveryEndpoint)
{
    NotificationServer server(bus, everything);
    Distributor distributor(bus, u"test"_s);
    const auto manager = connected();
    const QString token = registeredToken(*manager, distributor);
    EXPECT_FALSE(QUuid::fromString(token).isNull());
    EXPECT_EQ(distributor.registrations.constLast().service, ownService);
    EXPECT_FALSE(distributor.registrations.constLast().description.isEmpty());

    deliver(distributor, u"NewEndpoint"_s, {token, u"https://push.example/\u00e9"_s});
    EXPECT_EQ(tokens, QStringList{u"68747470733a2f2f707573682e6578616d706c652fc3a9"_s});
    EXPECT_EQ(registeredToken(*manager, distributor), token);
    deliver(distributor, u"NewEndpoint"_s, {token, u"\n"_s});
    EXPECT_EQ(manager->deviceToken, u"0a"_s);
    EXPECT_EQ(tokens.size(), 2);

    deliver(distributor, u"NewEndpoint"_s, {u"a stranger's token"_s, u"https://elsewhere.example"_s});
    deliver(distributor, u"NewEndpoint"_s, {u""_s, u"https://elsewhere.example"_s});
    EXPECT_EQ(tokens.size(), 2);
}

TEST_F(PushManagerOnDesktop, AGivenUpRegistrationGoesToTheNextDistributorThatComes)
{
    NotificationServer server(bus, everything);
    auto distributor = std::make_unique<Distributor>(bus, u"test"_s);
    const auto manager = connected();
    const QString token = registeredToken(*manager, *distributor);
    deliver(*distributor, u"NewEndpoint"_s, {token, u"https://push.example/1"_s});
    deliver(*distributor, u"Unregistered"_s, {token});
    distributor.reset();
    EXPECT_TRUE(manager->deviceToken.has_value());

    Distributor next(bus, u"next"_s);
    ASSERT_TRUE(waitUntil([&] { return !next.registrations.isEmpty(); }));
    EXPECT_EQ(next.registrations.constLast().token, token);
}

TEST_F(PushManagerOnDesktop, KeepsItsTokenAndDistributorAcrossRuns)
{
    NotificationServer server(bus, everything);
    Distributor second(bus, u"b"_s);
    QString token;
    {
        const auto manager = connected();
        token = registeredToken(*manager, second);
        const PrivateFile kept(bus.dataHome() + u"/orvia/push-registration"_s);
        ASSERT_TRUE(
            waitUntil([&] { return kept.read().value_or(QByteArray()).contains("Distributor.b\n"); }));
    }
    Distributor first(bus, u"a"_s);
    const auto manager = connected();
    EXPECT_EQ(registeredToken(*manager, second), token);
    EXPECT_TRUE(first.registrations.isEmpty());

    // Once that distributor gave the registration up, the choice is open again.
    deliver(second, u"Unregistered"_s, {token});
    EXPECT_EQ(registeredToken(*manager, first), token);
}

TEST_F(PushManagerOnDesktop, ADamagedRegistrationIsReplaced)
{
    NotificationServer server(bus, everything);
    Distributor distributor(bus, u"test"_s);
    for (const QByteArray& damage : {QByteArray("guessable\n"), QByteArray("\n\n"), QByteArray("\xff\xfe")}) {
        ASSERT_TRUE(PrivateFile(bus.dataHome() + u"/orvia/push-registration"_s).write(damage));
        const auto manager = connected();
        EXPECT_FALSE(QUuid::fromString(registeredToken(*manager, distributor)).isNull());
    }
}

TEST_F(PushManagerOnDesktop, TriesTheNextDistributorWhenOneRefusesAlsoOneThatComesLater)
{
    NotificationServer server(bus, everything);
    Distributor refusing(bus, u"a"_s, u"REGISTRATION_FAILED"_s);
    Distributor unknown(bus, u"b"_s, u"SOMETHING_ELSE"_s);
    const auto manager = connected();
    const QString token = registeredToken(*manager, unknown);
    EXPECT_EQ(refusing.registrations.constLast().token, token);
    Distributor willing(bus, u"c"_s);
    ASSERT_TRUE(waitUntil([&] { return !willing.registrations.isEmpty(); })) << "it came after the start";
    EXPECT_EQ(willing.registrations.constLast().token, token);
    EXPECT_TRUE(tokens.isEmpty()) << "no endpoint, no token";
}

TEST_F(PushManagerOnDesktop, RegistersOnceANotificationServerIsThere)
{
    Distributor distributor(bus, u"test"_s);
    const auto manager = connected();
    manager->start();
    // The refusal has arrived once a later question over the same connection has been answered.
    const QDBusPendingCall later = own.connection().asyncCall(QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"ListNames"_s));
    ASSERT_TRUE(waitUntil([&] { return later.isFinished(); }));
    NotificationServer server(bus, everything);
    ASSERT_TRUE(waitUntil([&] { return !distributor.registrations.isEmpty(); })) << "it came after the start";
    EXPECT_EQ(distributor.registrations.size(), 1) << "without a server there is no registration";
}

TEST_F(PushManagerOnDesktop, ShowsMessagesAndRoutesTheirClicks)
{
    NotificationServer server(bus, everything);
    Distributor distributor(bus, u"test"_s);
    const auto manager = connected();
    const QString token = registeredToken(*manager, distributor);

    deliver(
        distributor, u"Message"_s,
        {token, QByteArray(R"({"title":"Ann <b>","body":"a & <i>b</i>","conversationId":"c42"})"), u"1"_s});
    ASSERT_TRUE(waitUntil([&] { return server.shown.size() == 1; }));
    const NotificationServer::Shown background = server.shown.constLast();
    EXPECT_EQ(background.title, u"Ann <b>"_s);
    EXPECT_EQ(background.body, u"a &amp; &lt;i&gt;b&lt;/i&gt;"_s);
    EXPECT_FALSE(background.hints.contains(u"transient"_s));

    isFrontmost = true;
    deliver(distributor, u"Message"_s,
            {token, QByteArray(R"({"body":"only a body","conversationId":42})"), u"2"_s});
    ASSERT_TRUE(waitUntil([&] { return server.shown.size() == 2; }));
    EXPECT_EQ(server.shown.constLast().title, u"Orvia"_s);
    EXPECT_EQ(server.shown.constLast().hints.value(u"transient"_s), true);
    EXPECT_TRUE(server.shown.constLast().hints.contains(u"sound-name"_s));

    Q_EMIT server.ActivationToken(1, u"token-1"_s);
    Q_EMIT server.ActionInvoked(2, u"default"_s);
    Q_EMIT server.ActionInvoked(1, u"default"_s);
    ASSERT_TRUE(waitUntil([&] { return raised.size() == 2; }));
    EXPECT_EQ(raised, QStringList({u""_s, u"token-1"_s}));
    EXPECT_EQ(opened, QStringList{u"c42"_s});
}

TEST_F(PushManagerOnDesktop, ShowsNothingForAMessageThatSaysNothing)
{
    NotificationServer server(bus, everything);
    Distributor distributor(bus, u"test"_s);
    const auto manager = connected();
    const QString token = registeredToken(*manager, distributor);
    const QByteArray large = R"({"title":")" + QByteArray(70000, 'x') + R"("})";
    for (const QByteArray& message :
         {QByteArray("{"), QByteArray("[1]"), QByteArray(R"({"conversationId":"c1"})"),
          QByteArray(R"({"title":5,"body":null})"), QByteArray("\xff\xff"), large})
        deliver(distributor, u"Message"_s, {token, message, u"1"_s});
    deliver(distributor, u"Message"_s, {u"other"_s, QByteArray(R"({"title":"stranger"})"), u"1"_s});
    deliver(distributor, u"Message"_s, {token, QByteArray(R"({"title":"last"})"), u"1"_s});
    ASSERT_TRUE(waitUntil([&] { return !server.shown.isEmpty(); }));
    EXPECT_EQ(server.shown.size(), 1);
    EXPECT_EQ(server.shown.constFirst().title, u"last"_s);
}

TEST_F(PushManagerOnDesktop, LosesMessagesNoLongerThanTheirServerIsAway)
{
    auto server = std::make_unique<NotificationServer>(bus, everything);
    auto distributor = std::make_unique<Distributor>(bus, u"test"_s);
    const auto manager = connected();
    const QString token = registeredToken(*manager, *distributor);
    const auto push = [&](const QByteArray& title) {
        const QByteArray message = R"({"title":")" + title + R"(","conversationId":"c1"})";
        deliver(*distributor, u"Message"_s, {token, message, QString()});
    };
    push("first");
    ASSERT_TRUE(waitUntil([&] { return server->shown.size() == 1; }));
    server.reset();
    push("lost");
    server = std::make_unique<NotificationServer>(bus, everything);
    // A distributor that went and came back delivers under the same token.
    distributor.reset();
    distributor = std::make_unique<Distributor>(bus, u"test"_s);
    push("second");
    ASSERT_TRUE(waitUntil([&] { return server->shown.size() == 1; }));
    EXPECT_EQ(server->shown.constFirst().title, u"second"_s);
    Q_EMIT server->ActionInvoked(1, u"default"_s);
    EXPECT_TRUE(waitUntil([&] { return opened == QStringList{u"c1"_s}; }));
}

} // namespace

} // namespace orvia
