#include "PrivateKeyring.h"

#include "Support/Waiting.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QUuid>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

/// Another program that uses keyrings: what it has printed, or nothing when it has failed.
std::optional<QByteArray> outputOfTool(const QStringList& arguments, const QByteArray& input = {})
{
    ChildProcess tool;
    tool.process().start(u"secret-tool"_s, arguments);
    tool.process().write(input);
    tool.process().closeWriteChannel();
    if (!tool.process().waitForFinished() || tool.process().exitCode() != 0)
        return std::nullopt;
    return tool.process().readAllStandardOutput();
}

} // namespace

PrivateKeyring::PrivateKeyring(const PrivateBus& bus)
    : m_connection(QDBusConnection::connectToBus(bus.address(), QUuid::createUuid().toString()))
{
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
    return m_connection.isConnected()
           && m_connection.interface()->isServiceRegistered(u"org.freedesktop.secrets"_s);
}

bool PrivateKeyring::lock()
{
    const QList<QDBusObjectPath> collections{QDBusObjectPath(u"/org/freedesktop/secrets/collection/login"_s)};
    QDBusMessage call =
        QDBusMessage::createMethodCall(u"org.freedesktop.secrets"_s, u"/org/freedesktop/secrets"_s,
                                       u"org.freedesktop.Secret.Service"_s, u"Lock"_s);
    call << QVariant::fromValue(collections);
    const QDBusReply<QList<QDBusObjectPath>> locked = m_connection.call(call);
    return locked.value() == collections;
}

QByteArray PrivateKeyring::secret(const QStringList& attributes) const
{
    return outputOfTool(QStringList{u"lookup"_s} + attributes).value_or(QByteArray());
}

bool PrivateKeyring::store(const QStringList& attributes, const QByteArray& secret)
{
    return outputOfTool(QStringList{u"store"_s, u"--label=Foreign"_s} + attributes, secret).has_value();
}

} // namespace orvia::test
