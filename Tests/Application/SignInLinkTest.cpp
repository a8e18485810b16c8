#include "AppConfig.h"
#include "AppIdentity.h"
#include "ConsoleFixture.h"
#include "OrviaApp.h"
#include "Platform/PrivateFile.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "Views/LoginView.h"
#include "Views/RootView.h"

#include <QApplication>
#include <QLineEdit>
#include <QTimer>

/// Links around a sign-in, with the application inside this process so that somebody can sign in. The service
/// of a process is fixed at its first use, so these tests share one.
namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

class SignInLinkTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        bus = std::make_unique<PrivateBus>();
        service = std::make_unique<demo::DemoService>();
        ASSERT_TRUE(service->listen());
        const QString file = bus->directory() + "/console.conf"_L1;
        PrivateFile(file).write("APIBaseURL=" + service->origin().toEncoded() + '\n');
        AppConfig::setConfigurationFile(file);
    }

    static void TearDownTestSuite()
    {
        service.reset();
        bus.reset();
    }

    void SetUp() override
    {
        service->clearJournal();
        storage.remove(AppIdentity::identifier, u"agentToken"_s);
        DefaultsStore().remove(u"cachedIdentity"_s);
    }

    static RootView* window()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* root = qobject_cast<RootView*>(widget))
                return root;
        }
        return nullptr;
    }

    static LoginView* signInScreen() { return qobject_cast<LoginView*>(window()->screen()); }

    static void signIn()
    {
        const auto fields = signInScreen()->findChildren<QLineEdit*>();
        for (QLineEdit* field : fields)
            field->setText(field->accessibleName() == "Email"_L1 ? u"mara@tessaly.example"_s
                                                                 : demo::DemoService::password());
        Q_EMIT fields.last()->returnPressed();
    }

    static qsizetype timesOpened(const QString& id)
    {
        return std::ranges::count(service->requests(), "/v1/agent/conversations/"_L1 + id,
                                  &demo::Request::path);
    }

    inline static std::unique_ptr<PrivateBus> bus;
    inline static std::unique_ptr<demo::DemoService> service;
    PrivateFileStorage storage{bus->dataHome() + "/orvia/keychain"_L1};
};

TEST_F(SignInLinkTest, ALinkIsOpenedAfterTheSignIn)
{
    OrviaApp application;
    ASSERT_TRUE(application.start({QUrl(u"orvia://conversation/helen-brandt"_s)}));
    ASSERT_NE(signInScreen(), nullptr);
    EXPECT_TRUE(window()->isVisible());
    signIn();
    EXPECT_TRUE(waitUntil([] { return timesOpened(u"helen-brandt"_s) > 0; }));
}

TEST_F(SignInLinkTest, ALinkSurvivesARefusedToken)
{
    {
        OrviaApp application;
        ASSERT_TRUE(application.start({}));
        signIn();
        ASSERT_TRUE(waitUntil([] { return DefaultsStore().data(u"cachedIdentity"_s).has_value(); }));
    }
    storage.add("stale", AppIdentity::identifier, u"agentToken"_s);
    service->clearJournal();

    OrviaApp application;
    ASSERT_TRUE(application.start({QUrl(u"orvia://conversation/helen-brandt"_s)}));
    ASSERT_EQ(signInScreen(), nullptr);
    ASSERT_TRUE(waitUntil([] { return signInScreen() != nullptr; }));
    service->clearJournal();
    signIn();
    EXPECT_TRUE(waitUntil([] { return timesOpened(u"helen-brandt"_s) > 0; }));
}

TEST_F(SignInLinkTest, ALinkIsNotOpenedForTheNextAgentToo)
{
    OrviaApp application;
    ASSERT_TRUE(application.start({QUrl(u"orvia://conversation/helen-brandt"_s)}));
    signIn();
    ASSERT_TRUE(waitUntil([] { return timesOpened(u"helen-brandt"_s) > 0 && !service->frames().empty(); }));
    application.session()->logout();
    ASSERT_NE(signInScreen(), nullptr);
    service->clearJournal();
    signIn();
    ASSERT_TRUE(waitUntil([] { return !service->frames().empty(); }));
    EXPECT_EQ(timesOpened(u"helen-brandt"_s), 0);
}

TEST_F(SignInLinkTest, ClosingTheWindowEndsTheProgram)
{
    OrviaApp application;
    ASSERT_TRUE(application.start({}));
    QTimer::singleShot(0, window(), &QWidget::close);
    EXPECT_EQ(QApplication::exec(), 0);
}

} // namespace

} // namespace orvia::test
