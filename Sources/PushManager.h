#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace orvia {

/// Asks for permission to notify, registers the machine for remote notifications, turns the device token into
/// text, shows what is pushed and routes a click to its conversation. Main thread.
class PushManager : public QObject {
    Q_OBJECT

public:
    /// The one object of the process, created on first use.
    static PushManager& shared();

    /// Called with the token text each time a token is delivered.
    std::function<void(const QString&)> onDeviceToken;
    /// Called with the conversation's id when a notification that names one is clicked.
    std::function<void(const QString&)> onOpenConversation;
    /// The last token text received; absent until the first delivery.
    std::optional<QString> deviceToken;

    /// Asks for permission and, when it is granted, registers for remote notifications. Each call repeats both;
    /// a refusal or a failure has no consequence.
    void start();
    /// Stores and reports @p token as two lower-case hexadecimal digits per byte.
    void received(const QByteArray& token);
    /// Reports the conversation that the user-information dictionary names under "conversationId", if it does.
    void handleTap(const QVariantMap& userInfo);

private:
    PushManager();
};

} // namespace orvia
