#include "ScriptedSecretService.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QMap>
#include <QUuid>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

constexpr auto itemPath = "/org/freedesktop/secrets/collection/login/1"_L1;
constexpr auto promptPath = "/org/freedesktop/secrets/prompt/1"_L1;

using Paths = QList<QDBusObjectPath>;

QVariant path(const QString& text)
{
    return QVariant::fromValue(QDBusObjectPath(text));
}

QVariantMap lockedItem()
{
    return {
        {u"Locked"_s, true},
        {u"Label"_s, u"Locked"_s},
        {u"Created"_s, QVariant::fromValue<quint64>(0)},
        {u"Modified"_s, QVariant::fromValue<quint64>(0)},
        {u"Attributes"_s, QVariant::fromValue(QMap<QString, QString>())},
    };
}

} // namespace

ScriptedSecretService::ScriptedSecretService(const PrivateBus& bus, Behaviour behaviour)
    : m_connectionName(QUuid::createUuid().toString())
    , m_behaviour(behaviour)
{
    qDBusRegisterMetaType<QMap<QString, QString>>();
    m_thread.start();
    moveToThread(&m_thread);
    QMetaObject::invokeMethod(
        this,
        [this, address = bus.address()] {
            QDBusConnection connection = QDBusConnection::connectToBus(address, m_connectionName);
            connection.registerVirtualObject(u"/org/freedesktop/secrets"_s, this, QDBusConnection::SubPath);
            connection.registerService(u"org.freedesktop.secrets"_s);
        },
        Qt::BlockingQueuedConnection);
}

ScriptedSecretService::~ScriptedSecretService()
{
    QDBusConnection(m_connectionName)
        .unregisterObject(u"/org/freedesktop/secrets"_s, QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(m_connectionName);
    m_thread.quit();
    m_thread.wait();
}

QString ScriptedSecretService::introspect(const QString&) const
{
    return {};
}

bool ScriptedSecretService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    if (m_behaviour == Behaviour::silent
        || (m_behaviour == Behaviour::silentInSearch && message.member() == "SearchItems"_L1)) {
        message.setDelayedReply(true);
        return true;
    }
    if (m_behaviour == Behaviour::goneInSearch && message.member() == "SearchItems"_L1) {
        message.setDelayedReply(true);
        QDBusConnection::disconnectFromBus(m_connectionName);
        return true;
    }
    if (message.member() == "OpenSession"_L1 && message.arguments().constFirst() != "plain"_L1)
        connection.send(message.createErrorReply(u"org.freedesktop.DBus.Error.NotSupported"_s, {}));
    else
        connection.send(message.createReply(answer(message, connection)));
    return true;
}

QVariantList ScriptedSecretService::answer(const QDBusMessage& message, const QDBusConnection& connection)
{
    const QString member = message.member();
    if (member == "OpenSession"_L1)
        return {QVariant::fromValue(QDBusVariant(QString())), path(u"/org/freedesktop/secrets/session/1"_s)};
    if (member == "SearchItems"_L1)
        return {QVariant::fromValue(Paths()), QVariant::fromValue(Paths{QDBusObjectPath(itemPath)})};
    if (member == "GetAll"_L1)
        return {lockedItem()};
    if (member == "Unlock"_L1)
        return {QVariant::fromValue(Paths()), path(promptPath)};
    if (member == "Prompt"_L1) {
        ++m_questions;
        if (m_behaviour == Behaviour::questionDeclined) {
            QDBusMessage completed =
                QDBusMessage::createSignal(promptPath, u"org.freedesktop.Secret.Prompt"_s, u"Completed"_s);
            completed << true << QVariant::fromValue(QDBusVariant(QVariant::fromValue(Paths())));
            connection.send(completed);
        }
    }
    return {};
}

} // namespace orvia::test
