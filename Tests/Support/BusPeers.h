#pragma once

#include "Support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QObject>
#include <QUuid>

namespace orvia::test {

/// A connection of its own to the private bus, as another program would have.
class BusConnection {
public:
    explicit BusConnection(const PrivateBus& bus)
        : m_connection(QDBusConnection::connectToBus(bus.address(), QUuid::createUuid().toString()))
    {
    }
    ~BusConnection() { QDBusConnection::disconnectFromBus(name()); }
    Q_DISABLE_COPY_MOVE(BusConnection)

    QString name() const { return m_connection.name(); }
    QDBusConnection& connection() { return m_connection; }
    const QDBusConnection& connection() const { return m_connection; }

private:
    QDBusConnection m_connection;
};

/// A notification server that notes what it is given.
class NotificationServer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Shown {
        QString sender;
        QString icon;
        QString title;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int timeout;
    };

    explicit NotificationServer(const PrivateBus& bus, QStringList capabilities)
        : m_capabilities(std::move(capabilities))
        , m_bus(bus)
    {
        m_bus.connection().registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                                          QDBusConnection::ExportAllSlots
                                              | QDBusConnection::ExportAllSignals);
        m_bus.connection().registerService(QStringLiteral("org.freedesktop.Notifications"));
    }

    QList<Shown> shown;
    int permissionRequests = 0;
    /// Whether a notification is clicked before the sender has its number.
    bool isClickedAtOnce = false;

public Q_SLOTS:
    QString GetServerInformation(QString& vendor, QString& version, QString& specification)
    {
        ++permissionRequests;
        vendor = version = QStringLiteral("test");
        specification = QStringLiteral("1.2");
        return QStringLiteral("test");
    }
    QStringList GetCapabilities() { return m_capabilities; }
    uint Notify(const QString& sender, uint, const QString& icon, const QString& title, const QString& body,
                const QStringList& actions, const QVariantMap& hints, int timeout)
    {
        shown.append({sender, icon, title, body, actions, hints, timeout});
        const auto id = static_cast<uint>(shown.size());
        if (isClickedAtOnce) {
            Q_EMIT ActivationToken(id, QStringLiteral("token"));
            Q_EMIT ActionInvoked(id, QStringLiteral("default"));
        }
        return id;
    }

Q_SIGNALS:
    void ActionInvoked(uint id, const QString& action);
    void ActivationToken(uint id, const QString& token);
    void NotificationClosed(uint id, uint reason);

private:
    QStringList m_capabilities;
    BusConnection m_bus;
};

/// A push distributor that answers as told.
class Distributor : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.unifiedpush.Distributor1")

public:
    Distributor(const PrivateBus& bus, const QString& name, QString answer = QStringLiteral("NEW_ENDPOINT"))
        : m_answer(std::move(answer))
        , m_bus(bus)
    {
        m_bus.connection().registerObject(QStringLiteral("/org/unifiedpush/Distributor"), this,
                                          QDBusConnection::ExportAllSlots);
        m_bus.connection().registerService(QStringLiteral("org.unifiedpush.Distributor.") + name);
    }

    struct Registered {
        QString service;
        QString token;
        QString description;
    };
    QList<Registered> registrations;

    /// Calls the connector of this service as the protocol has it.
    void callConnector(const QString& service, const QString& method, const QVariantList& arguments)
    {
        QDBusMessage call =
            QDBusMessage::createMethodCall(service, QStringLiteral("/org/unifiedpush/Connector"),
                                           QStringLiteral("org.unifiedpush.Connector1"), method);
        call.setArguments(arguments);
        lastCall = m_bus.connection().asyncCall(call);
    }
    QDBusPendingCall lastCall = QDBusPendingCall::fromCompletedCall({});

public Q_SLOTS:
    QString Register(const QString& service, const QString& token, const QString& description,
                     QString& reason)
    {
        registrations.append({service, token, description});
        reason = m_answer == QStringLiteral("NEW_ENDPOINT") ? QString() : QStringLiteral("no account");
        return m_answer;
    }

private:
    QString m_answer;
    BusConnection m_bus;
};

} // namespace orvia::test
