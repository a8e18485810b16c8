#include "APIClient/NetworkSession.h"
#include "AppIdentity.h"
#include "DemoService/DemoService.h"
#include "Keychain/Keychain.h"
#include "Keychain/PrivateKeyring.h"
#include "Keychain/ScriptedSecretService.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "Support/PrivateBus.h"
#include "Support/Waiting.h"

#include <QFile>

#include <gmock/gmock.h>

#include <csignal>
#include <sys/resource.h>

namespace orvia::test {
namespace {

using namespace Qt::StringLiterals;

/// No file of this process can grow, as on a full disk, for whoever runs the test.
class FullDisk {
public:
    FullDisk()
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    rlimit m_before{};
};

/// What a desktop fails in, and what that costs the agent.
struct Failure {
    enum class Kind {
        none,
        noBus,
        noKeyring,
        lockedKeyring,
        dismissedPrompt,
        vanishingKeyring,
        fullDisk,
        readOnlyHome,
        readOnlyHomeAndNoBus,
    };
    const char* name;
    Kind kind;
    bool keepsToken;
    bool keepsIdentity;

    friend void PrintTo(const Failure& failure, std::ostream* stream) { *stream << failure.name; }
};

class FailingDesktop : public testing::TestWithParam<Failure> {
protected:
    using Kind = Failure::Kind;

    void SetUp() override
    {
        ASSERT_TRUE(bus.isRunning());
        ASSERT_TRUE(service.listen());
    }

    void fail(Kind kind)
    {
        if (kind == Kind::noBus || kind == Kind::readOnlyHomeAndNoBus)
            bus.kill();
        if (kind == Kind::none || kind == Kind::lockedKeyring || kind == Kind::readOnlyHome)
            keyring = std::make_unique<PrivateKeyring>(bus);
        EXPECT_TRUE(kind != Kind::lockedKeyring || keyring->lock());
        using Behaviour = ScriptedSecretService::Behaviour;
        if (kind == Kind::dismissedPrompt)
            scripted = std::make_unique<ScriptedSecretService>(bus, Behaviour::questionDeclined);
        if (kind == Kind::vanishingKeyring)
            scripted = std::make_unique<ScriptedSecretService>(bus, Behaviour::goneInSearch);
        if (kind == Kind::fullDisk)
            fullDisk = std::make_unique<FullDisk>();
        if (kind == Kind::readOnlyHome || kind == Kind::readOnlyHomeAndNoBus) {
            // Not even the superuser makes anything there.
            for (const char* variable : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
                environment.set(variable, "/proc/nowhere");
        }
    }

    /// The program's parts as a start makes them.
    void start()
    {
        session.reset();
        defaults = std::make_unique<DefaultsStore>();
        keychain = std::make_unique<Keychain>(AppIdentity::identifier);
        session = std::make_unique<Session>(Session::Collaborators{.defaults = *defaults,
                                                                   .tokenStore = *keychain,
                                                                   .urlSession = network,
                                                                   .baseURL = service.origin()});
    }

    /// The file itself: within a process, what could not be written is remembered.
    static QByteArray identityOnDisk()
    {
        QFile file(qEnvironmentVariable("XDG_CONFIG_HOME") + "/orvia/defaults.ini"_L1);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Whether the session does everything that it does on a sound desktop.
    void expectToWork()
    {
        EXPECT_TRUE(session->agent());
        EXPECT_FALSE(session->products().empty());
        EXPECT_FALSE(session->filteredConversations().empty());
        EXPECT_TRUE(waitUntil([this] { return session->socketConnected(); }));
        EXPECT_EQ(session->banner(), std::nullopt)
            << "it is no failure that an agent could do anything about";
        runTask(session->loadConversation(u"helen-brandt"_s));
        const std::size_t before = session->messages().thread(u"helen-brandt"_s).size();
        EXPECT_GT(before, 0U);
        runTask(session->sendMessage(u"helen-brandt"_s, u"Here"_s, false, {}));
        EXPECT_EQ(session->messages().thread(u"helen-brandt"_s).size(), before + 1);
    }

    PrivateBus bus;
    demo::DemoService service;
    ScopedEnvironment environment;
    NetworkSession network;
    std::unique_ptr<PrivateKeyring> keyring;
    std::unique_ptr<ScriptedSecretService> scripted;
    std::unique_ptr<DefaultsStore> defaults;
    std::unique_ptr<Keychain> keychain;
    std::unique_ptr<Session> session;
    std::unique_ptr<FullDisk> fullDisk;
};

TEST_P(FailingDesktop, CostsNoMoreThanWhatItCannotKeep)
{
    // An earlier agent has left an identity.
    start();
    DefaultsStore().setData("earlier", u"cachedIdentity"_s);
    fail(GetParam().kind);
    start();
    EXPECT_EQ(session->token(), std::nullopt);
    runTask(session->bootstrap());
    const auto signIn = [this] {
        return runTask(session->login(u"mara@tessaly.example"_s, demo::DemoService::password()))
            .errorMessage();
    };
    ASSERT_EQ(signIn(), QString());
    expectToWork();

    // The next start has what could be kept, and nothing half.
    start();
    EXPECT_EQ(session->token().has_value(), GetParam().keepsToken);
    const QByteArray identity = identityOnDisk();
    EXPECT_EQ(identity.contains("Mara"), GetParam().keepsIdentity);
    EXPECT_TRUE(GetParam().keepsIdentity || identity.isEmpty() || identity.contains("earlier"));
    runTask(session->bootstrap());
    if (!GetParam().keepsToken) {
        ASSERT_EQ(signIn(), QString());
    }
    expectToWork();

    // A sign-out leaves no token behind, also where removing it fails.
    session->logout();
    start();
    EXPECT_EQ(session->token(), std::nullopt);
}

using Kind = Failure::Kind;

// Those with a real keyring come first: a call that a scripted one leaves unanswered holds on to the
// process's connection to its bus for a while.
INSTANTIATE_TEST_SUITE_P(
    Of, FailingDesktop,
    testing::Values(Failure{"Nothing", Kind::none, true, true},
                    Failure{"ReadOnlyHome", Kind::readOnlyHome, true, false},
                    Failure{"LockedKeyring", Kind::lockedKeyring, false, true},
                    Failure{"Bus", Kind::noBus, true, true}, Failure{"Keyring", Kind::noKeyring, true, true},
                    Failure{"FullDisk", Kind::fullDisk, false, false},
                    Failure{"ReadOnlyHomeAndBus", Kind::readOnlyHomeAndNoBus, false, false},
                    Failure{"DismissedPrompt", Kind::dismissedPrompt, false, true},
                    Failure{"VanishingKeyring", Kind::vanishingKeyring, true, true}),
    [](const auto& failure) { return std::string(failure.param.name); });

} // namespace
} // namespace orvia::test
