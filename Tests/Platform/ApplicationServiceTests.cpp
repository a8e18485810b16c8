#include "Platform/ApplicationService.h"

#include "Support/BusPeers.h"
#include "Support/PrivateBus.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>

namespace orvia {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::PrivateBus;
using test::waitUntil;
using Start = ApplicationService::Start;

namespace {

const QString identifier = u"org.example.My-App"_s;
const QString objectPath = u"/org/example/My_App"_s;

/// Runs a second start in a process of its own and answers what it says.
QString secondStart(const QStringList& links)
{
    test::ChildProcess child;
    child.process().start(QStringLiteral(ORVIA_SECOND_START), QStringList{identifier} + links);
    EXPECT_TRUE(waitUntil([&] { return child.process().state() == QProcess::NotRunning; }));
    EXPECT_EQ(child.process().exitCode(), 0);
    return QString::fromLatin1(child.process().readAllStandardOutput()).trimmed();
}

class ApplicationServiceTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(bus.isRunning());
        environment.unset("XDG_ACTIVATION_TOKEN");
        environment.unset("DESKTOP_STARTUP_ID");
        QObject::connect(&service, &ApplicationService::activated, &service,
                         [this](const QString& token) { heard.append(u"activated "_s + token); });
        QObject::connect(&service, &ApplicationService::opened, &service,
                         [this](const QStringList& links, const QString& token) {
                             heard.append(u"opened "_s + links.join(u',') + u' ' + token);
                         });
    }

    PrivateBus bus;
    test::ScopedEnvironment environment;
    test::BusConnection own{bus};
    ApplicationService service{identifier, own.name()};
    QStringList heard;
};

TEST_F(ApplicationServiceTest, ASecondStartRaisesTheFirstAndHandsItsLinksOver)
{
    ASSERT_EQ(service.start({u"orvia://own"_s}), Start::first);
    EXPECT_EQ(secondStart({}), u"handed over"_s);
    EXPECT_EQ(secondStart({u"orvia://conversation/a b"_s, u"orvia://x"_s}), u"handed over"_s);
    environment.set("DESKTOP_STARTUP_ID", "startup");
    EXPECT_EQ(secondStart({}), u"handed over"_s);
    environment.set("XDG_ACTIVATION_TOKEN", "token");
    EXPECT_EQ(secondStart({u"orvia://y"_s}), u"handed over"_s);
    EXPECT_EQ(heard, QStringList({u"activated "_s, u"opened orvia://conversation/a b,orvia://x "_s,
                                  u"activated startup"_s, u"opened orvia://y token"_s}));
}

TEST_F(ApplicationServiceTest, TheDesktopActivatesOverTheStandardInterface)
{
    ASSERT_EQ(service.start({}), Start::first);
    test::BusConnection desktop(bus);
    const auto call = [&](const QString& method, const QVariantList& arguments) {
        QDBusMessage message =
            QDBusMessage::createMethodCall(identifier, objectPath, u"org.freedesktop.Application"_s, method);
        message.setArguments(arguments);
        const QDBusPendingCall reply = desktop.connection().asyncCall(message);
        EXPECT_TRUE(waitUntil([&] { return reply.isFinished(); }));
        EXPECT_FALSE(reply.isError()) << reply.error().message().toStdString();
    };
    const QVariantMap data{{u"activation-token"_s, u"t"_s}};
    call(u"Activate"_s, {data});
    call(u"Open"_s, {QStringList{u"orvia://a"_s}, data});
    call(u"ActivateAction"_s, {u"any"_s, QVariantList(), data});
    EXPECT_EQ(heard, QStringList({u"activated t"_s, u"opened orvia://a t"_s}));
}

TEST_F(ApplicationServiceTest, TheNameIsFreeAgainAfterTheFirstEnds)
{
    {
        test::BusConnection other(bus);
        ApplicationService first(identifier, other.name());
        ASSERT_EQ(first.start({}), Start::first);
    }
    EXPECT_EQ(service.start({}), Start::first);
}

TEST_F(ApplicationServiceTest, AFirstInstanceThatIsBusyGetsTheLinkLater)
{
    test::BusConnection other(bus);
    ApplicationService second(identifier, other.name());
    ASSERT_EQ(service.start({}), Start::first);
    // This thread is the first instance's too, so no answer can come while the second waits for it.
    EXPECT_EQ(second.start({u"orvia://late"_s}, 50ms), Start::handedOver);
    EXPECT_TRUE(heard.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return !heard.isEmpty(); }));
    EXPECT_EQ(heard, QStringList{u"opened orvia://late "_s});
}

TEST_F(ApplicationServiceTest, AStrangerUnderTheNameDoesNotStopTheProgram)
{
    // The bus answers a call to an object that the owner of the name does not have with an error.
    ASSERT_TRUE(own.connection().registerService(identifier));
    EXPECT_EQ(secondStart({u"orvia://x"_s}), u"alone"_s);
}

TEST_F(ApplicationServiceTest, WithoutABusTheProgramIsAlone)
{
    bus.kill();
    EXPECT_EQ(secondStart({}), u"alone"_s);
    environment.unset("DBUS_SESSION_BUS_ADDRESS");
    environment.unset("DISPLAY");
    EXPECT_EQ(secondStart({u"orvia://x"_s}), u"alone"_s);
    ApplicationService unconnected(identifier, u"no such connection"_s);
    EXPECT_EQ(unconnected.start({}), Start::alone);
}

TEST_F(ApplicationServiceTest, KnowsThatTheBusStartedIt)
{
    environment.unset("DBUS_STARTER_BUS_TYPE");
    environment.unset("DBUS_STARTER_ADDRESS");
    EXPECT_FALSE(ApplicationService::isStartedByBus());
    environment.set("DBUS_STARTER_BUS_TYPE", "session");
    EXPECT_TRUE(ApplicationService::isStartedByBus());
}

} // namespace

} // namespace orvia
