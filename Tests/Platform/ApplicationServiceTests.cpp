#include "Platform/ApplicationService.h"

#include "Support/BusPeers.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

namespace orvia {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::spinFor;
using test::waitUntil;
using Start = ApplicationService::Start;

namespace {

const QString identifier = u"org.example.My-App"_s;

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

    test::PrivateBus bus;
    test::ScopedEnvironment environment;
    test::BusConnection own{bus};
    test::BusConnection other{bus};
    ApplicationService service{identifier, own.name()};
    QStringList heard;
};

TEST_F(ApplicationServiceTest, ASecondStartHandsItsLinksAndItsLeaveOverAlsoToABusyFirst)
{
    ASSERT_EQ(service.start({u"orvia://own"_s}), Start::first);
    // This thread is the first instance's too, so no answer can come while the second waits for it.
    const auto startAgain = [this](const QStringList& links) {
        const qsizetype before = heard.size();
        ApplicationService second(identifier, other.name());
        EXPECT_EQ(second.start(links, false, 50ms), Start::handedOver);
        EXPECT_EQ(heard.size(), before);
        EXPECT_TRUE(waitUntil([&] { return heard.size() > before; }));
    };
    startAgain({});
    startAgain({u"orvia://conversation/a b"_s, u"orvia://x"_s});
    environment.set("DESKTOP_STARTUP_ID", "startup");
    startAgain({});
    environment.set("XDG_ACTIVATION_TOKEN", "token");
    startAgain({u"orvia://y"_s});
    EXPECT_EQ(ApplicationService(identifier, other.name()).start({}, true, 50ms), Start::handedOver);
    spinFor(20ms);
    EXPECT_EQ(heard, QStringList({u"activated "_s, u"opened orvia://conversation/a b,orvia://x "_s,
                                  u"activated startup"_s, u"opened orvia://y token"_s}));
}

TEST_F(ApplicationServiceTest, TheDesktopActivatesOverTheStandardInterface)
{
    ASSERT_EQ(service.start({}), Start::first);
    const auto call = [&](const QString& method, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(identifier, u"/org/example/My_App"_s,
                                                              u"org.freedesktop.Application"_s, method);
        message.setArguments(arguments);
        const QDBusPendingCall reply = other.connection().asyncCall(message);
        EXPECT_TRUE(waitUntil([&] { return reply.isFinished(); }));
        EXPECT_FALSE(reply.isError()) << reply.error().message().toStdString();
    };
    const QVariantMap data{{u"activation-token"_s, u"t"_s}};
    call(u"Activate"_s, {data});
    call(u"Open"_s, {QStringList{u"orvia://a"_s}, data});
    call(u"ActivateAction"_s, {u"any"_s, QVariantList(), data});
    EXPECT_EQ(heard, QStringList({u"activated t"_s, u"opened orvia://a t"_s}));
}

TEST_F(ApplicationServiceTest, AStrangerUnderTheNameDoesNotStopTheProgram)
{
    // The bus answers a call to an object that the owner of the name does not have with an error.
    ASSERT_TRUE(other.connection().registerService(identifier));
    EXPECT_EQ(service.start({u"orvia://x"_s}), Start::alone);
}

} // namespace

} // namespace orvia
