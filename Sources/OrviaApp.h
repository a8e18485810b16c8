#pragma once

#include <QObject>
#include <QUrl>

#include <memory>

namespace orvia {

class DefaultsStore;
class Keychain;
class NetworkSession;
class RootView;
class Session;

/// The application: the one session with what it is built from, and the one window. Made after the
/// application object and after the configuration file is known; lives as long as the process.
class OrviaApp : public QObject {
    Q_OBJECT

public:
    OrviaApp();
    ~OrviaApp() override;

    Session& session() const { return *m_session; }
    RootView& window() const { return *m_window; }

    /// Shows the window, or brings it to the front.
    void activate();
    /// Opens an orvia: link and brings the window to the front.
    void openLink(const QUrl& url);

    /// Ends the event loop with status 0 when the process is asked to terminate.
    static void quitOnTermination();

private:
    std::unique_ptr<NetworkSession> m_urlSession;
    std::unique_ptr<DefaultsStore> m_defaults;
    std::unique_ptr<Keychain> m_keychain;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<RootView> m_window;
};

} // namespace orvia
