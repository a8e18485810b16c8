#include "AppIdentity.h"
#include "ConsoleFixture.h"
#include "Platform/PrivateFile.h"
#include "Support/BusPeers.h"

#include <QDBusConnectionInterface>

#include <algorithm>
#include <csignal>

/// What the desktop asks of the program: one instance, links, a start by the bus, an end.
namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

class DesktopTest : public ConsoleTest {
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        environment.unset("XDG_ACTIVATION_TOKEN");
        environment.unset("DESKTOP_STARTUP_ID");
    }

    /// Calls the program as a desktop does, which starts it where the bus knows how to.
    void callApplication(const QString& method, const QVariantList& arguments)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(AppIdentity::identifier, u"/io/tessaly/Orvia"_s,
                                                           u"org.freedesktop.Application"_s, method);
        call.setArguments(arguments);
        const QDBusPendingCall reply = desktop.connection().asyncCall(call);
        ASSERT_TRUE(waitUntil([&] { return reply.isFinished(); }));
        ASSERT_FALSE(reply.isError()) << reply.error().message().toStdString();
    }

    ScopedEnvironment environment;
    BusConnection desktop{bus};
};

TEST_F(DesktopTest, ASecondStartEndsAndLeavesTheSessionToTheFirst)
{
    signInBeforehand();
    Console first(arguments());
    ASSERT_TRUE(waitForChannel());
    service.clearJournal();
    Console second(arguments({u"orvia://conversation/helen-brandt"_s}));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(waitForConversation(u"helen-brandt"_s));
    // A second session would ask who it is.
    EXPECT_EQ(timesAsked(u"/v1/agent/me"_s), 0);
    EXPECT_TRUE(first.isRunning());
}

TEST_F(DesktopTest, OutlivesTheBusAndWorksWithoutOne)
{
    signInBeforehand();
    Console console(arguments());
    ASSERT_TRUE(waitForChannel());
    bus.kill();
    service.postAsVisitor(u"helen-brandt"_s, u"Still there?"_s);
    spinFor(std::chrono::milliseconds(200));
    EXPECT_TRUE(console.isRunning());
    console.signal(SIGTERM);
    EXPECT_EQ(console.exitCode(), 0);

    service.clearJournal();
    Console alone(arguments({u"orvia://conversation/helen-brandt"_s}));
    EXPECT_TRUE(waitForConversation(u"helen-brandt"_s));
    EXPECT_TRUE(waitForChannel());
}

TEST_F(DesktopTest, EndsInOrderWhenAskedTo)
{
    signInBeforehand();
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        // The last one while the service owes an answer.
        service.holdAnswers(signal == SIGHUP);
        service.clearJournal();
        Console console(arguments());
        ASSERT_TRUE(signal == SIGHUP ? waitForRequest(u"/v1/agent/me"_s) : waitForChannel());
        console.signal(signal);
        EXPECT_EQ(console.exitCode(), 0) << "signal " << signal;
        EXPECT_EQ(console.errors() + console.output(), "");
    }
}

/// The machine sleeps: the program stands still while the service and the time go on without it.
TEST_F(DesktopTest, ComesBackAfterItWasSuspended)
{
    signInBeforehand();
    Console console(arguments({u"orvia://conversation/helen-brandt"_s}));
    ASSERT_TRUE(waitForConversation(u"helen-brandt"_s));
    ASSERT_TRUE(waitForChannel());
    const quint16 port = service.port();
    console.signal(SIGSTOP);
    service.stop();
    ASSERT_TRUE(service.listen(port));
    service.clearJournal();
    console.signal(SIGCONT);
    // It says again what is open.
    EXPECT_TRUE(waitUntil([this] {
        return std::ranges::any_of(service.frames(), [](const demo::DemoService::Frame& frame) {
            return frame.text.contains("viewing") && frame.text.contains("helen-brandt");
        });
    }));
    EXPECT_EQ(service.live().channelCount(), 1U);
}

/// The program as the bus starts it, on a display that shows whether there is a window.
class StartedByBusTest : public DesktopTest {
protected:
    void SetUp() override
    {
        DesktopTest::SetUp();
        signInBeforehand();
        // The bus, not the test, is the program's parent; it must not outlive a test that crashes.
        bus.addService(AppIdentity::identifier,
                       u"/usr/bin/timeout 120 %1 %2"_s.arg(QStringLiteral(ORVIA_PROGRAM),
                                                           arguments({u"--background"_s}).join(u' ')));
    }

    void TearDown() override
    {
        QDBusConnectionInterface* const daemon = desktop.connection().interface();
        if (const QDBusReply<uint> process = daemon->servicePid(AppIdentity::identifier); process.isValid()) {
            ::kill(static_cast<pid_t>(process.value()), SIGTERM);
            EXPECT_TRUE(waitUntil([&] { return !daemon->isServiceRegistered(AppIdentity::identifier); }));
        }
    }

    static qsizetype windowsOnShow()
    {
        QProcess search;
        search.start(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--class"_s, u"^orvia$"_s});
        EXPECT_TRUE(search.waitForFinished());
        return search.readAllStandardOutput().count('\n');
    }
};

TEST_F(StartedByBusTest, APushIsShownWithoutAWindowAndItsClickOpensTheConversation)
{
    const QString token = u"9b6d0f4e-5c1c-4a8e-9a57-2f1b60f3a1d7"_s;
    ASSERT_TRUE(PrivateFile(bus.dataHome() + "/orvia/push-registration"_L1).write(token.toUtf8() + "\n\n"));
    NotificationServer notifications(bus, {u"actions"_s, u"body"_s});
    Distributor distributor(bus, u"Example"_s);
    const QByteArray push = R"({"title":"Helen Brandt","body":"Hello?","conversationId":"helen-brandt"})";
    distributor.callConnector(AppIdentity::identifier, u"Message"_s, {token, push, QString()});

    ASSERT_TRUE(waitUntil([&] { return !notifications.shown.isEmpty(); }));
    EXPECT_EQ(notifications.shown.first().title, u"Helen Brandt"_s);
    ASSERT_TRUE(waitForChannel()); // The session runs.
    EXPECT_EQ(windowsOnShow(), 0);

    Q_EMIT notifications.ActionInvoked(1, u"default"_s);
    EXPECT_TRUE(waitForConversation(u"helen-brandt"_s));
    EXPECT_TRUE(waitUntil([] { return windowsOnShow() == 1; }));
}

TEST_F(StartedByBusTest, ALauncherOrALinkShowsTheWindow)
{
    callApplication(u"Activate"_s, {QVariantMap()});
    EXPECT_TRUE(waitUntil([] { return windowsOnShow() == 1; }));
    callApplication(u"Open"_s, {QStringList{u"orvia://conversation/helen-brandt"_s}, QVariantMap()});
    EXPECT_TRUE(waitForConversation(u"helen-brandt"_s));
    EXPECT_EQ(windowsOnShow(), 1);
}

TEST_F(StartedByBusTest, AStartByAProgramThatTheBusStartedShowsTheWindow)
{
    environment.set("DBUS_STARTER_BUS_TYPE", "session");
    environment.set("DBUS_STARTER_ADDRESS", bus.address().toUtf8());
    Console console(arguments());
    EXPECT_TRUE(waitUntil([] { return windowsOnShow() == 1; }));
}

TEST_F(StartedByBusTest, ALinkShowsTheWindowAlsoInTheBackground)
{
    Console console(arguments({u"--background"_s, u"orvia://conversation/helen-brandt"_s}));
    EXPECT_TRUE(waitUntil([] { return windowsOnShow() == 1; }));
}

} // namespace

} // namespace orvia::test
