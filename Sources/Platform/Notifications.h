#pragma once

#include <QMap>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>

namespace orvia {

/// Who notifies: what a notification server shows or groups by.
struct NotificationSender {
    QString name;
    /// The desktop entry's name without ".desktop", which is also the icon's name.
    QString desktopEntry;
};

struct Notification {
    /// Plain text, both; markup in them is shown as it is written.
    QString title{};
    QString body{};
    /// Shown as a banner only and not kept in the server's list.
    bool isTransient = false;
    bool hasSound = false;
    /// Handed back with a click.
    QVariantMap userInfo{};
};

/// Notifications on the desktop over org.freedesktop.Notifications (Desktop Notifications Specification 1.2).
/// Nothing here waits; without a bus or a server nothing happens. Main thread.
class Notifications : public QObject {
    Q_OBJECT

public:
    /// @p busConnection names a QtDBus connection; the session bus when it is empty.
    explicit Notifications(NotificationSender sender, const QString& busConnection = {},
                           QObject* parent = nullptr);

    /// Asks whether a notification server is on the bus and answers later. A server that the bus starts on
    /// demand is one. From the first question on, @c appeared tells of those that come.
    void askWhetherAvailable(std::function<void(bool)> answer);
    void present(const Notification& notification);

Q_SIGNALS:
    /// The user clicked a notification of this program. The token, which may be empty, lets a window come to
    /// the front where the desktop asks for one.
    void clicked(const QVariantMap& userInfo, const QString& activationToken);
    /// A notification server came onto the bus.
    void appeared();

private Q_SLOTS:
    void onActionInvoked(uint id, const QString& action);
    void onActivationToken(uint id, const QString& token);
    void onNotificationClosed(uint id, uint reason);

private:
    struct Presented {
        QVariantMap userInfo;
        QString activationToken;
    };

    void listen();
    void watchServer();
    void send(const Notification& notification, const QStringList& capabilities);
    void remember(uint id, const QVariantMap& userInfo);
    void whenKnown(uint id, const std::function<void()>& act);

    const NotificationSender m_sender;
    const QString m_busConnection;
    QMap<uint, Presented> m_presented;
    QMultiMap<uint, std::function<void()>> m_early; ///< signals that came before the answer that tells the id
    int m_unanswered = 0;                           ///< notifications whose id is not known yet
    bool m_isListening = false;
    bool m_isWatching = false;
    bool m_isServerRunning = false; ///< as far as the watch has told
};

} // namespace orvia
