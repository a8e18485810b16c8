#pragma once

#include "Platform/ApplicationService.h"
#include "Session/DefaultsStore.h"
#include "Theme/CaretRest.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QUrl>

#include <memory>
#include <optional>

namespace orvia {

class Appearance;
class NetworkSession;
class RootView;
class Session;
class TokenStore;

/// The application: its place on the desktop, the one session with what it is built from, and the one window.
/// Made after the application object and after the configuration file is known; lives as long as the process.
class OrviaApp : public QObject {
    Q_OBJECT

public:
    /// Connects to the desktop. Pushes can arrive from here on.
    OrviaApp();
    ~OrviaApp() override;

    /// Takes the user's one place on the desktop and shows the window from the event loop, or hands @p links
    /// to the instance that has it; false then, and the process may end. In the background and without links
    /// the window waits until the desktop, or a click on a notification, asks for it.
    bool start(const QList<QUrl>& links, bool isInBackground = false);

    /// The one session; null before a start that did not hand over.
    Session* session() const { return m_session.get(); }

private:
    void open();
    QCoro::Task<void> readToken();
    void stopAwaitingToken();
    void prepareWindow();
    void buildWindow();
    void showWindow();
    void activate(const QString& activationToken);
    void openLink(const QUrl& link);
    void followSignIn();
    void followInbox();
    void followAppearance();

    /// Shared with a worker that reads. Ends after the place on the desktop, because it may still be writing.
    std::shared_ptr<TokenStore> m_tokenStore;
    ApplicationService m_service;
    CaretRest m_caretRest;
    std::unique_ptr<Appearance> m_appearance;
    std::unique_ptr<NetworkSession> m_urlSession;
    DefaultsStore m_defaults;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<RootView> m_window;
    std::optional<QUrl> m_waitingLink; ///< to be opened by the next sign-in
    bool m_isWanted = false;           ///< the window is to be shown as soon as it is there
    bool m_isTokenAwaited;             ///< the window waits for it, because somebody was signed in at the end
    bool m_isTokenRead = false;        ///< or is being read
    bool m_isPrepared = false;         ///< the window can be built
    bool m_isSignedIn = false;         ///< there are a token and an agent
    bool m_isEstablished = false;      ///< the service has accepted the token since the sign-in
};

} // namespace orvia
