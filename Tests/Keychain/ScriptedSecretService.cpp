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
constexpr auto sessionPath = "/org/freedesktop/secrets/session/1"_L1;
constexpr auto promptPath = "/org/freedesktop/secrets/prompt/1"_L1;

using Paths = QList<QDBusObjectPath>;

struct ScriptedSecret {
    QByteArray value;
};

QVariant path(const QString& text)
{
    return QVariant::fromValue(QDBusObjectPath(text));
}

QDBusArgument& operator<<(QDBusArgument& argument, const ScriptedSecret& secret)
{
    argument.beginStructure();
    argument << QDBusObjectPath(sessionPath) << QByteArray() << secret.value << u"text/plain"_s;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ScriptedSecret&)
{
    return argument;
}

} // namespace

ScriptedSecretService::ScriptedSecretService(const PrivateBus& bus, Behaviour behaviour)
    : m_connectionName(QUuid::createUuid().toString())
    , m_behaviour(behaviour)
{
    qDBusRegisterMetaType<ScriptedSecret>();
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
    if (message.member() == "CreateItem"_L1 && !obstacle().isEmpty())
        connection.send(message.createErrorReply(obstacle(), {}));
    else
        connection.send(message.createReply(answer(message, connection)));
    return true;
}

QString ScriptedSecretService::obstacle() const
{
    if (m_isGranted)
        return {};
    return m_behaviour == Behaviour::withoutCollection ? u"org.freedesktop.DBus.Error.UnknownObject"_s
                                                       : u"org.freedesktop.Secret.Error.IsLocked"_s;
}

void ScriptedSecretService::endQuestion(const QDBusConnection& connection)
{
    m_isGranted = m_behaviour != Behaviour::questionDeclined;
    QDBusMessage completed =
        QDBusMessage::createSignal(promptPath, u"org.freedesktop.Secret.Prompt"_s, u"Completed"_s);
    completed << !m_isGranted << QVariant::fromValue(QDBusVariant(QVariant::fromValue(Paths())));
    connection.send(completed);
}

QVariantList ScriptedSecretService::answer(const QDBusMessage& message, const QDBusConnection& connection)
{
    const QString member = message.member();
    if (member == "OpenSession"_L1)
        return {QVariant::fromValue(QDBusVariant(QString())), path(sessionPath)};
    if (member == "SearchItems"_L1)
        return {QVariant::fromValue(Paths()), QVariant::fromValue(Paths{QDBusObjectPath(itemPath)})};
    if (member == "GetSecret"_L1)
        return {QVariant::fromValue(ScriptedSecret{"secret"})};
    if (member == "Delete"_L1)
        return {path(u"/"_s)};
    if (member == "CreateItem"_L1)
        return {path(itemPath), path(u"/"_s)};
    if (member == "CreateCollection"_L1)
        return {path(u"/"_s), path(promptPath)};
    if (member == "Unlock"_L1)
        return {QVariant::fromValue(Paths()), path(promptPath)};
    if (member == "Prompt"_L1) {
        ++m_questions;
        if (m_behaviour != Behaviour::questionWithoutEnd)
            endQuestion(connection);
    }
    return {};
}

} // namespace orvia::test
