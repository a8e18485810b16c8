#include "OrviaApp.h"
#include "AppConfig.h"
#include "AppIdentity.h"
#include "ConsoleFixture.h"
#include "Keychain/ScriptedSecretService.h"
#include "Platform/FakePortal.h"
#include "Platform/PrivateFile.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "Support/BusPeers.h"
#include "Theme/Theme.h"
#include "Views/LoginView.h"
#include "Views/RootView.h"

#include <QApplication>
#include <QLineEdit>
#include <QScopeGuard>
#include <QThreadPool>
#include <QTimer>

/// The application inside this process, so that somebody can sign in and the window can be looked at. The
/// service of a process is fixed at its first use, so these tests share one.
namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

/// What the toolkit finds as the activation token while the window's state changes.
class TokenAtChange : public QObject {
public:
    explicit TokenAtChange(QWidget& window) { window.installEventFilter(this); }

    QByteArray seen() const { return m_seen; }

private:
    bool eventFilter(QObject*, QEvent* event) override
    {
        // The window system repeats the change once the token is gone.
        if (event->type() == QEvent::WindowStateChange && m_seen.isEmpty())
            m_seen = qgetenv("XDG_ACTIVATION_TOKEN");
        return false;
    }

    QByteArray m_seen;
};

class OrviaAppTest : public testing::Test {
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

    /// Starts the application and waits for its window.
    static void start(OrviaApp& application, const QList<QUrl>& links = {})
    {
        ASSERT_TRUE(application.start(links));
        ASSERT_TRUE(waitUntil([] { return window() != nullptr; }));
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

    /// Leaves a token and an identity for the next application.
    static void signInBeforehand()
    {
        OrviaApp application;
        start(application);
        signIn();
        ASSERT_TRUE(waitUntil([] { return DefaultsStore().data(u"cachedIdentity"_s).has_value(); }));
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

TEST_F(OrviaAppTest, ALinkSurvivesARefusedTokenAndIsOpenedForOneAgentOnly)
{
    signInBeforehand();
    storage.add("stale", AppIdentity::identifier, u"agentToken"_s);
    OrviaApp application;
    start(application, {QUrl(u"orvia://conversation/helen-brandt"_s)});
    ASSERT_TRUE(waitUntil([] { return signInScreen() != nullptr; }));
    service->clearJournal();
    signIn();
    ASSERT_TRUE(waitUntil([] { return timesOpened(u"helen-brandt"_s) > 0 && !service->frames().empty(); }));
    application.session()->logout();
    ASSERT_NE(signInScreen(), nullptr);
    service->clearJournal();
    signIn();
    ASSERT_TRUE(waitUntil([] { return !service->frames().empty(); }));
    EXPECT_EQ(timesOpened(u"helen-brandt"_s), 0);
}

TEST_F(OrviaAppTest, ATokenWithoutAnIdentityIsFoundBehindTheSignIn)
{
    signInBeforehand();
    DefaultsStore().remove(u"cachedIdentity"_s);

    OrviaApp application;
    start(application);
    EXPECT_NE(signInScreen(), nullptr);
    EXPECT_TRUE(waitUntil([&] { return signInScreen() == nullptr && application.session()->agent(); }));
}

TEST_F(OrviaAppTest, AKeyringThatHangsDoesNotKeepTheWindowFromShowing)
{
    signInBeforehand();
    // Nothing is read from it later than the end of this test: the keyring's side of this process is shared.
    const QThreadPool& pool = *QThreadPool::globalInstance();
    const auto readingEnd =
        qScopeGuard([&pool] { EXPECT_TRUE(waitUntil([&pool] { return pool.activeThreadCount() == 0; })); });
    const ScriptedSecretService silent(*bus, ScriptedSecretService::Behaviour::silent);

    OrviaApp application;
    start(application);
    EXPECT_GT(pool.activeThreadCount(), 0) << "the keyring has answered";
    EXPECT_TRUE(waitUntil([] { return window()->isVisible(); }));
    EXPECT_NE(signInScreen(), nullptr);
}

TEST_F(OrviaAppTest, TheDesktopColoursBringsBackAndClosesTheWindow)
{
    constexpr uint dark = 1;
    constexpr uint light = 2;
    FakePortal portal(*bus, dark, false);
    ScopedEnvironment environment;
    environment.unset("XDG_ACTIVATION_TOKEN");
    OrviaApp application;
    start(application);
    EXPECT_TRUE(waitUntil([] { return Theme::shared().isDark(); }));
    Q_EMIT portal.SettingChanged(u"org.freedesktop.appearance"_s, u"color-scheme"_s,
                                 QDBusVariant(QVariant(light)));
    EXPECT_TRUE(waitUntil([] { return !Theme::shared().isDark(); }));

    window()->showMinimized();
    const TokenAtChange token(*window());
    BusConnection desktop(*bus);
    QDBusMessage call = QDBusMessage::createMethodCall(AppIdentity::identifier, u"/io/tessaly/Orvia"_s,
                                                       u"org.freedesktop.Application"_s, u"Activate"_s);
    call << QVariantMap{{u"activation-token"_s, u"leave to come to the front"_s}};
    desktop.connection().asyncCall(call);
    EXPECT_TRUE(waitUntil([] { return !window()->isMinimized(); }));
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(token.seen(), "leave to come to the front");
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN")) << "programs that it starts inherit it";

    QTimer::singleShot(0, window(), &QWidget::close);
    EXPECT_EQ(QApplication::exec(), 0) << "the program ends with its window";
}

} // namespace

} // namespace orvia::test
