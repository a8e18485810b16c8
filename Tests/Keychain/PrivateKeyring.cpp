#include "PrivateKeyring.h"

#include "Support/Waiting.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QUuid>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

constexpr auto serviceName = "org.freedesktop.secrets"_L1;
constexpr auto servicePath = "/org/freedesktop/secrets"_L1;
constexpr auto serviceInterface = "org.freedesktop.Secret.Service"_L1;
constexpr auto collectionPath = "/org/freedesktop/secrets/collection/login"_L1;

/// A secret as it travels in a session without encryption.
struct PlainSecret {
    QDBusObjectPath session;
    QByteArray value;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PlainSecret& secret)
{
    argument.beginStructure();
    argument << secret.session << QByteArray() << secret.value << u"text/plain"_s;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PlainSecret& secret)
{
    QByteArray parameters;
    QString contentType;
    argument.beginStructure();
    argument >> secret.session >> parameters >> secret.value >> contentType;
    argument.endStructure();
    return argument;
}

/// A call without an interface object, which would ask the service to describe itself first.
QDBusMessage call(const QDBusConnection& connection, const QString& path, const QString& interface,
                  const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(serviceName, path, interface, method);
    message.setArguments(arguments);
    return connection.call(message);
}

} // namespace

PrivateKeyring::PrivateKeyring(const PrivateBus& bus)
    : m_connection(QDBusConnection::connectToBus(bus.address(), QUuid::createUuid().toString()))
{
    qDBusRegisterMetaType<Attributes>();
    qDBusRegisterMetaType<PlainSecret>();
    QProcess& daemon = m_daemon.process();
    daemon.start(u"gnome-keyring-daemon"_s, {u"--foreground"_s, u"--unlock"_s, u"--components=secrets"_s,
                                             u"--control-directory=%1/keyring"_s.arg(bus.directory())});
    daemon.write("password");
    daemon.closeWriteChannel();
    // Whoever uses the keyring asks whether it runs.
    static_cast<void>(waitUntil([&] { return isRunning() || daemon.state() == QProcess::NotRunning; }));
}

PrivateKeyring::~PrivateKeyring()
{
    QDBusConnection::disconnectFromBus(m_connection.name());
}

bool PrivateKeyring::isRunning() const
{
    return m_connection.isConnected() && m_connection.interface()->isServiceRegistered(serviceName);
}

bool PrivateKeyring::lock()
{
    const QList<QDBusObjectPath> collections{QDBusObjectPath(collectionPath)};
    const QDBusMessage reply =
        call(m_connection, servicePath, serviceInterface, u"Lock"_s, {QVariant::fromValue(collections)});
    return reply.type() == QDBusMessage::ReplyMessage
           && qdbus_cast<QList<QDBusObjectPath>>(reply.arguments().constFirst()) == collections;
}

QList<PrivateKeyring::Attributes> PrivateKeyring::items() const
{
    const auto property = [this](const QString& path, const QString& interface, const QString& name) {
        return QDBusReply<QDBusVariant>(call(m_connection, path, u"org.freedesktop.DBus.Properties"_s,
                                             u"Get"_s, {interface, name}))
            .value()
            .variant();
    };
    const auto paths = qdbus_cast<QList<QDBusObjectPath>>(
        property(collectionPath, u"org.freedesktop.Secret.Collection"_s, u"Items"_s));
    QList<Attributes> all;
    for (const QDBusObjectPath& path : paths) {
        auto attributes =
            qdbus_cast<Attributes>(property(path.path(), u"org.freedesktop.Secret.Item"_s, u"Attributes"_s));
        // This daemon gives every item that comes without a schema the generic one.
        if (attributes.value(u"xdg:schema"_s) == "org.freedesktop.Secret.Generic"_L1)
            attributes.remove(u"xdg:schema"_s);
        all.append(attributes);
    }
    return all;
}

bool PrivateKeyring::store(const Attributes& attributes, const QByteArray& secret)
{
    const QDBusMessage session = call(m_connection, servicePath, serviceInterface, u"OpenSession"_s,
                                      {u"plain"_s, QVariant::fromValue(QDBusVariant(QString()))});
    if (session.type() != QDBusMessage::ReplyMessage)
        return false;

    const QVariantMap properties{
        {u"org.freedesktop.Secret.Item.Label"_s, u"Foreign"_s},
        {u"org.freedesktop.Secret.Item.Attributes"_s, QVariant::fromValue(attributes)},
    };
    const PlainSecret value{session.arguments().at(1).value<QDBusObjectPath>(), secret};
    return call(m_connection, collectionPath, u"org.freedesktop.Secret.Collection"_s, u"CreateItem"_s,
                {properties, QVariant::fromValue(value), false})
               .type()
           == QDBusMessage::ReplyMessage;
}

} // namespace orvia::test
