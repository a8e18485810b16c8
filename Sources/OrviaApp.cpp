#include "OrviaApp.h"

#include "APIClient/NetworkSession.h"
#include "AppConfig.h"
#include "Keychain/Keychain.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/RootView.h"

#include <QApplication>
#include <QSocketNotifier>

#include <csignal>

#include <sys/socket.h>
#include <unistd.h>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// The name under which the token is kept, which is also the application's id on the desktop.
constexpr auto keychainService = "org.tessaly.Orvia"_L1;
constexpr QSize defaultWindowSize(1080, 700);

/// Written to by the signal handler, read by the event loop.
int terminationSockets[2] = {-1, -1};

void handleTermination(int)
{
    // Only what POSIX allows in a handler: one byte wakes the event loop.
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = write(terminationSockets[0], &byte, sizeof byte);
}

} // namespace

OrviaApp::OrviaApp()
    : m_urlSession(std::make_unique<NetworkSession>())
    , m_defaults(std::make_unique<DefaultsStore>())
    , m_keychain(std::make_unique<Keychain>(keychainService))
{
    m_session = std::make_unique<Session>(Session::Collaborators{.defaults = *m_defaults,
                                                                 .tokenStore = *m_keychain,
                                                                 .urlSession = *m_urlSession,
                                                                 .baseURL = AppConfig::apiBaseURL()});
    m_window = std::make_unique<RootView>(*m_session);
    m_window->resize(defaultWindowSize);
}

OrviaApp::~OrviaApp() = default;

void OrviaApp::activate()
{
    if (m_window->isMinimized())
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void OrviaApp::openLink(const QUrl& url)
{
    m_window->openLink(url);
    activate();
}

void OrviaApp::quitOnTermination()
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, terminationSockets) != 0)
        return;
    auto* notifier = new QSocketNotifier(terminationSockets[1], QSocketNotifier::Read, qApp);
    connect(notifier, &QSocketNotifier::activated, qApp, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::exit(0);
    });
    struct sigaction action = {};
    action.sa_handler = handleTermination;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr);
}

} // namespace orvia
