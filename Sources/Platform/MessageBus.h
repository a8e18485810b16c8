#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QString>

#include <utility>

namespace orvia {

/// The QtDBus connection of this name; an empty name means the user's session bus. Without a bus the
/// connection is there but not connected, and every call over it fails at once.
inline QDBusConnection busNamed(const QString& name)
{
    return name.isEmpty() ? QDBusConnection::sessionBus() : QDBusConnection(name);
}

/// Sends @p call without waiting and runs @p callback with the reply, which may be an error, unless @p
/// context is gone by then.
template <typename Callback>
void sendCall(const QDBusConnection& bus, const QDBusMessage& call, QObject* context, Callback callback)
{
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [watcher, callback = std::move(callback)]() mutable {
                         watcher->deleteLater();
                         callback(watcher->reply());
                     });
}

} // namespace orvia
