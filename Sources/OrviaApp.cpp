#include "OrviaApp.h"

#include "APIClient/NetworkSession.h"
#include "AppConfig.h"
#include "AppIdentity.h"
#include "Keychain/Keychain.h"
#include "Platform/Appearance.h"
#include "Platform/ApplicationService.h"
#include "PushManager.h"
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
    : m_service(std::make_unique<ApplicationService>(AppIdentity::identifier))
{
    connect(m_service.get(), &ApplicationService::activated, this, &OrviaApp::activate);
    connect(m_service.get(), &ApplicationService::opened, this,
            [this](const QStringList& links, const QString& activationToken) {
                for (const QString& link : links)
                    openLink(QUrl(link));
                activate(activationToken);
            });
}

OrviaApp::~OrviaApp() = default;

bool OrviaApp::start(const std::optional<QUrl>& link)
{
    // Push messages come as soon as the name is claimed, so whoever takes them is there before.
    PushManager::shared().connectToDesktop(
        {.isFrontmost = [] { return QApplication::activeWindow() != nullptr; },
         .bringToFront = [this](const QString& activationToken) { activate(activationToken); }});
    const QStringList links = link ? QStringList{link->toString(QUrl::FullyEncoded)} : QStringList();
    if (m_service->start(links) == ApplicationService::Start::handedOver)
        return false;
    followAppearance();
    buildConsole();
    if (!ApplicationService::isStartedByBus())
        activate();
    if (link)
        openLink(*link);
    return true;
}

void OrviaApp::followAppearance()
{
    m_appearance = std::make_unique<Appearance>();
    const auto follow = [this] {
        const std::optional<Appearance::Scheme> scheme = m_appearance->preferred();
        Theme::shared().setDesktopAppearance(scheme ? std::optional(*scheme == Appearance::Scheme::dark)
                                                    : std::nullopt);
    };
    connect(m_appearance.get(), &Appearance::changed, this, follow);
    follow();
}

void OrviaApp::buildConsole()
{
    m_urlSession = std::make_unique<NetworkSession>();
    m_defaults = std::make_unique<DefaultsStore>();
    m_keychain = std::make_unique<Keychain>(AppIdentity::identifier);
    m_session = std::make_unique<Session>(Session::Collaborators{.defaults = *m_defaults,
                                                                 .tokenStore = *m_keychain,
                                                                 .urlSession = *m_urlSession,
                                                                 .baseURL = AppConfig::apiBaseURL()});
    m_window = std::make_unique<RootView>(*m_session);
    m_window->resize(defaultWindowSize);
}

void OrviaApp::activate(const QString& activationToken)
{
    if (!m_window)
        return;
    // Qt hands the token of the environment on to the compositor.
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    if (m_window->isMinimized())
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void OrviaApp::openLink(const QUrl& url)
{
    if (m_window)
        m_window->openLink(url);
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
