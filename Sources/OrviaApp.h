#pragma once

#include <QObject>
#include <QUrl>

#include <memory>
#include <optional>

namespace orvia {

class Appearance;
class ApplicationService;
class DefaultsStore;
class Keychain;
class NetworkSession;
class RootView;
class Session;

/// The application: the one session with what it is built from, the one window, and what connects them to the
/// desktop. Made after the application object; lives as long as the process.
class OrviaApp : public QObject {
    Q_OBJECT

public:
    OrviaApp();
    ~OrviaApp() override;

    /// Builds the session and shows the window, and opens @p link. False when another instance of the user's
    /// has taken the request over; nothing is built then, and the process should end. Comes after the
    /// configuration file is known.
    bool start(const std::optional<QUrl>& link);

    /// Shows the window and brings it to the front. The token, which may be empty, is the desktop's
    /// permission.
    void activate(const QString& activationToken = {});
    /// Opens an orvia: link.
    void openLink(const QUrl& url);

    /// Ends the event loop with status 0 when the process is asked to terminate.
    static void quitOnTermination();

private:
    void followAppearance();
    void buildConsole();

    std::unique_ptr<ApplicationService> m_service;
    std::unique_ptr<Appearance> m_appearance;
    std::unique_ptr<NetworkSession> m_urlSession;
    std::unique_ptr<DefaultsStore> m_defaults;
    std::unique_ptr<Keychain> m_keychain;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<RootView> m_window;
};

} // namespace orvia
