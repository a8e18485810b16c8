#include "APIClient/NetworkSession.h"
#include "Benchmarks/Benchmarks.h"
#include "Benchmarks/Programs.h"
#include "Keychain/TokenStore.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "Views/RootView.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>

/// How long the interface thread keeps a click or a key waiting, at worst.
namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr double frame = 16; // milliseconds

/// Records the longest gap between two turns of the event loop, in milliseconds.
class Watchdog {
public:
    Watchdog()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.callOnTimeout([this] { look(); });
        m_since.start();
        m_timer.start(1);
    }

    double longestGap()
    {
        look();
        return m_longest;
    }

private:
    void look()
    {
        m_longest = std::max(m_longest, static_cast<double>(m_since.nsecsElapsed()) / 1e6);
        m_since.restart();
    }

    QTimer m_timer;
    QElapsedTimer m_since;
    double m_longest = 0;
};

class OneToken : public TokenStore {
public:
    explicit OneToken(QString token)
        : m_token(std::move(token))
    {
    }
    std::optional<QString> string(const QString&) override { return m_token; }
    bool set(const std::optional<QString>&, const QString&) override { return true; }

private:
    QString m_token;
};

/// The console's window in this process, signed in to a service in another.
class Console {
public:
    explicit Console(const ServiceProcess& service)
        : m_tokens(service.signIn())
        , m_defaults(m_directory.filePath(u"defaults.ini"_s))
        , m_session({m_defaults, m_tokens, m_network, service.origin()})
        , m_window(m_session)
    {
        m_window.resize(1080, 700);
        m_window.show();
    }

    Session& session() { return m_session; }

private:
    QTemporaryDir m_directory;
    OneToken m_tokens;
    DefaultsStore m_defaults;
    NetworkSession m_network;
    Session m_session;
    RootView m_window;
};

void spin(std::chrono::milliseconds duration)
{
    QElapsedTimer timer;
    timer.start();
    while (!timer.hasExpired(duration.count()))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void spinUntil(const std::function<bool()>& condition)
{
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// The inbox replaced by one with other records, twice: the second time there is an old one to free.
double stallWhileLoading()
{
    const ServiceProcess service(
        {u"--quiet"_s, u"--conversations"_s, u"10000"_s, u"--events-per-second"_s, u"20"_s});
    Console console(service);
    spin(std::chrono::milliseconds(200));
    Watchdog watchdog;
    spinUntil([&] { return console.session().conversations().size() >= 10'000; });
    spin(std::chrono::milliseconds(300));
    bool isReset = false;
    QObject::connect(&console.session(), &Session::conversationsReset, [&isReset] { isReset = true; });
    console.session().refreshConversations();
    spinUntil([&] { return isReset; });
    spin(std::chrono::milliseconds(300));
    return watchdog.longestGap();
}

double stallUnderLoad()
{
    const ServiceProcess service(
        {u"--quiet"_s, u"--conversations"_s, u"10000"_s, u"--events-per-second"_s, u"2000"_s});
    Console console(service);
    spinUntil([&] { return console.session().socketConnected(); });
    console.session().setSelectedConversationId(console.session().filteredConversations().front()->id);
    spin(std::chrono::milliseconds(500));
    Watchdog watchdog;
    spin(std::chrono::seconds(2));
    return watchdog.longestGap();
}

double idleGap()
{
    Watchdog watchdog;
    spin(std::chrono::seconds(1));
    return watchdog.longestGap();
}

} // namespace

std::vector<Measurement> stallMeasurements()
{
    constexpr int rounds = 5;
    const Budget budget{Budget::Kind::atMost, frame};
    return {
        {u"longest stall while 10,000 conversations load"_s, u"ms"_s, stallWhileLoading,
         u"empty event loop"_s, idleGap, budget, rounds},
        {u"longest stall at 2,000 events/s"_s, u"ms"_s, stallUnderLoad, u"empty event loop"_s, idleGap,
         budget, rounds},
    };
}

} // namespace orvia::bench
