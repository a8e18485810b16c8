#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace orvia {

class Notifications;
class PushDistributor;

/// What the push object needs to know of the program that it serves.
struct PushSurroundings {
    /// Whether the console is the window that the user works in. Unset means never.
    std::function<bool()> isFrontmost{};
    /// Brings the console to the front; the desktop's activation token may be empty.
    std::function<void(const QString& activationToken)> bringToFront{};
    /// Where the registration is kept; a file below the XDG data home when empty.
    QString registrationFile{};
    /// The QtDBus connection to use; the session bus when empty.
    QString busConnection{};
};

/// Asks for permission to notify, registers the machine for remote notifications, turns the device token into
/// text, shows what is pushed and routes a click to its conversation. Main thread.
class PushManager : public QObject {
    Q_OBJECT

public:
    PushManager();
    ~PushManager() override;

    /// The one object of the process, created on first use.
    static PushManager& shared();

    /// Called with the token text each time a token is delivered.
    std::function<void(const QString&)> onDeviceToken;
    /// Called with the conversation's id when a notification that names one is clicked.
    std::function<void(const QString&)> onOpenConversation;
    /// The last token text received; absent until the first delivery.
    std::optional<QString> deviceToken;

    /// Connects to the desktop, once: from here on what is pushed arrives and is shown. Until then there is
    /// no push. Comes before the program claims its name on the bus, because messages come with the name.
    void connectToDesktop(PushSurroundings surroundings);

    /// Asks for permission and, when it is granted, registers for remote notifications. Each call repeats
    /// both; a refusal or a failure has no consequence.
    void start();
    /// Stores and reports @p token as two lower-case hexadecimal digits per byte.
    void received(const QByteArray& token);
    /// Reports the conversation that the user-information dictionary names under "conversationId", if it
    /// does.
    void handleTap(const QVariantMap& userInfo);

private:
    /// What outlives the process, so that the machine keeps its endpoint.
    struct Registration {
        QString token;
        QString distributor;
    };

    void startAgain();
    void registerForRemoteNotifications();
    void show(const QByteArray& message);
    bool isOwn(const QString& token);
    void loadRegistration();
    void saveRegistration() const;

    PushSurroundings m_surroundings;
    Notifications* m_notifications = nullptr;
    PushDistributor* m_distributor = nullptr;
    Registration m_registration;
    bool m_hasStarted = false;
    bool m_hasEndpoint = false; ///< a distributor delivers; the token outlives that
};

} // namespace orvia
