#include "OrviaApp.h"

#include "APIClient/NetworkSession.h"
#include "APIClient/Worker.h"
#include "AppConfig.h"
#include "AppIdentity.h"
#include "Keychain/BackgroundTokenStore.h"
#include "Keychain/Keychain.h"
#include "Platform/Appearance.h"
#include "Platform/ParallelWork.h"
#include "Platform/RelativeTime.h"
#include "Platform/SecretService.h"
#include "PushManager.h"
#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/DeepLink.h"
#include "Views/RootView.h"

#include <QApplication>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

namespace orvia {

namespace {

constexpr QSize defaultWindowSize(1080, 700);
constexpr std::chrono::milliseconds iconDelay(250);
constexpr std::chrono::seconds keyringPatience(2);

} // namespace

OrviaApp::OrviaApp()
    : m_service(AppIdentity::identifier)
    , m_isTokenAwaited(Session::isIdentityCached(m_defaults))
{
    // Before the name is claimed: a message that makes the bus start this process comes with the name.
    const QPointer<OrviaApp> self = this;
    PushManager::shared().connectToDesktop({
        .isFrontmost = [] { return QGuiApplication::applicationState() == Qt::ApplicationActive; },
        .bringToFront =
            [self](const QString& activationToken) {
                if (self)
                    self->activate(activationToken);
            },
    });
    connect(&m_service, &ApplicationService::activated, this, &OrviaApp::activate);
    connect(&m_service, &ApplicationService::opened, this,
            [this](const QStringList& links, const QString& activationToken) {
                for (const QString& link : links)
                    openLink(QUrl(link));
                activate(activationToken);
            });
}

OrviaApp::~OrviaApp() = default;

/// What asks the keyring is loaded while the bus answers, where somebody was signed in. The network's thread
/// is made before, because the loader would keep it waiting.
bool OrviaApp::start(const QList<QUrl>& links, bool isInBackground)
{
    m_urlSession = std::make_unique<NetworkSession>();
    std::optional<ParallelWork<void>> loading;
    if (m_isTokenAwaited)
        loading.emplace(SecretService::load);
    if (m_service.start(QUrl::toStringList(links, QUrl::FullyEncoded), isInBackground)
        == ApplicationService::Start::handedOver)
        return false;
    m_appearance = std::make_unique<Appearance>();
    connect(m_appearance.get(), &Appearance::changed, this, &OrviaApp::followAppearance);
    open();
    for (const QUrl& link : links)
        openLink(link);
    m_isWanted = !isInBackground || !links.isEmpty();
    return true;
}

/// The session comes after the place on the desktop, so that a second start does not ask the keyring.
void OrviaApp::open()
{
    m_tokenStore =
        std::make_shared<BackgroundTokenStore>(std::make_unique<Keychain>(AppIdentity::identifier));
    m_session = std::make_unique<Session>(Session::Collaborators{.defaults = m_defaults,
                                                                 .tokenStore = *m_tokenStore,
                                                                 .urlSession = *m_urlSession,
                                                                 .baseURL = AppConfig::apiBaseURL(),
                                                                 .readsToken = false});
    m_session->bootstrap();
    if (m_isTokenAwaited) {
        readToken();
        QTimer::singleShot(keyringPatience, this, &OrviaApp::stopAwaitingToken);
    }
    QTimer::singleShot(0, this, &OrviaApp::prepareWindow);
    connect(m_session.get(), &Session::tokenChanged, this, &OrviaApp::followSignIn);
    connect(m_session.get(), &Session::agentChanged, this, &OrviaApp::followSignIn);
    connect(m_session.get(), &Session::isLoadingListChanged, this, &OrviaApp::followInbox);
    followSignIn();
}

/// Reads on a worker, because the keyring computes and may wait for its user. Where somebody was signed in,
/// the window waits a while for the token, to show the right screen first. Elsewhere the sign-in is on show
/// before, and a token is there after a sign-in alone that never had an answer to the next request.
QCoro::Task<void> OrviaApp::readToken()
{
    if (std::exchange(m_isTokenRead, true))
        co_return;
    const QPointer<OrviaApp> self = this;
    auto read = [store = m_tokenStore] { return store->string(Session::tokenKey); };
    auto reading = onWorker(std::move(read));
    // Meanwhile the first words about a time, which take milliseconds and come with the inbox.
    const Instant now = currentInstant();
    QThreadPool::globalInstance()->start([now] { relativeTime(now - std::chrono::days(1), now); });
    const std::optional<QString> token = co_await reading;
    if (!self)
        co_return;
    if (token)
        m_session->restore(*token);
    stopAwaitingToken();
}

void OrviaApp::stopAwaitingToken()
{
    m_isTokenAwaited = false;
    if (m_isPrepared && !m_window)
        buildWindow();
}

/// Loads what the main screen needs while the token is read and the service asked for the identity. The
/// answers come between two fonts, and lead to the requests that take longest.
void OrviaApp::prepareWindow()
{
    const bool mayBeSignedIn = m_isTokenAwaited || m_session->token();
    m_isPrepared = !mayBeSignedIn || !Theme::loadNextFont();
    if (!m_isPrepared)
        QTimer::singleShot(0, this, &OrviaApp::prepareWindow);
    else if (!m_isTokenAwaited)
        buildWindow();
}

void OrviaApp::buildWindow()
{
    m_window = std::make_unique<RootView>(*m_session);
    m_window->resize(defaultWindowSize);
    connect(m_window.get(), &RootView::painted, this, &OrviaApp::readToken);
    // In a turn of its own, after answers that have arrived.
    QTimer::singleShot(0, this, &OrviaApp::showWindow);
    // The first painting need not wait for what the desktop's lists of windows show.
    QTimer::singleShot(iconDelay, this, [] { QApplication::setWindowIcon(Theme::applicationIcon()); });
}

void OrviaApp::showWindow()
{
    if (m_isWanted)
        activate({});
    else
        readToken();
}

void OrviaApp::activate(const QString& activationToken)
{
    // The toolkit takes the token from where the desktop puts it for a program that it starts.
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    if (!m_window) {
        m_isWanted = true;
        return;
    }
    if (!m_window->isVisible()) {
        m_window->show();
    } else {
        if (m_window->isMinimized())
            m_window->showNormal();
        m_window->raise();
    }
    m_window->activateWindow();
    // Where the toolkit has no use for it, it must not reach the programs that open links and files.
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

void OrviaApp::openLink(const QUrl& link)
{
    const std::optional<QString> conversation = DeepLink::conversationId(link);
    if (!conversation)
        return;
    // A remembered token may be refused yet; then the link waits for the sign-in that follows.
    if (!m_isEstablished)
        m_waitingLink = link;
    if (m_isSignedIn)
        m_session->openFromDeepLink(*conversation);
}

void OrviaApp::followSignIn()
{
    const bool isSignedIn = m_session->token() && m_session->agent();
    if (isSignedIn == m_isSignedIn)
        return;
    m_isSignedIn = isSignedIn;
    m_isEstablished = false;
    if (isSignedIn && m_waitingLink)
        openLink(*m_waitingLink);
}

void OrviaApp::followInbox()
{
    if (m_session->isLoadingList() || !m_isSignedIn)
        return;
    m_isEstablished = true;
    m_waitingLink.reset();
}

void OrviaApp::followAppearance()
{
    using Scheme = Appearance::Scheme;
    const std::optional<Scheme> preferred = m_appearance->preferred();
    Theme::shared().setDesktopAppearance(preferred ? std::optional(*preferred == Scheme::dark)
                                                   : std::nullopt);
}

} // namespace orvia
