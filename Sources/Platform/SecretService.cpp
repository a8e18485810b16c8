#include "Platform/SecretService.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QMap>
#include <QSemaphore>
#include <QThread>
#include <QUuid>

#include <algorithm>
#include <limits>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

const QString busName = u"org.freedesktop.secrets"_s;
const QString servicePath = u"/org/freedesktop/secrets"_s;
const QString defaultCollectionPath = u"/org/freedesktop/secrets/aliases/default"_s;
const QString serviceInterface = u"org.freedesktop.Secret.Service"_s;
const QString collectionInterface = u"org.freedesktop.Secret.Collection"_s;
const QString itemInterface = u"org.freedesktop.Secret.Item"_s;
const QString promptInterface = u"org.freedesktop.Secret.Prompt"_s;

using Attributes = QMap<QString, QString>;
using Paths = QList<QDBusObjectPath>;

/// A secret as it is on the bus, in the session's encoding.
struct Secret {
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString contentType;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Secret& secret)
{
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.contentType;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Secret& secret)
{
    argument.beginStructure();
    argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    argument.endStructure();
    return argument;
}

/// What the user, or the program that asked them, says to a question; it comes while the caller waits.
class PromptAnswer : public QObject {
    Q_OBJECT

public:
    /// Answers whether the question was answered, and not with a refusal.
    bool isGranted(QDeadlineTimer deadline)
    {
        return m_ended.tryAcquire(1, static_cast<int>(deadline.remainingTime())) && m_isGranted;
    }

public Q_SLOTS:
    void complete(bool isDismissed, const QDBusVariant&)
    {
        m_isGranted = !isDismissed;
        m_ended.release();
    }
    void ownerChanged(const QString&, const QString&, const QString&) { m_ended.release(); }

private:
    QSemaphore m_ended;
    bool m_isGranted = false;
};

/// A connection of its own to the session bus that is there by now. Over the one that the program shares,
/// Qt delivers no signal before the main event loop runs, which a question at the start would wait for.
class BusConnection {
public:
    BusConnection()
        : m_name(QUuid::createUuid().toString())
        , m_connection(connected(m_name))
    {
    }
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection() { QDBusConnection::disconnectFromBus(m_name); }

    const QDBusConnection* operator->() const { return &m_connection; }
    QDBusConnection* operator->() { return &m_connection; }

private:
    static QDBusConnection connected(const QString& name)
    {
        const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
        return address.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)
                                 : QDBusConnection::connectToBus(address, name);
    }

    const QString m_name;
    QDBusConnection m_connection;
};

bool isReply(const QDBusMessage& message, QLatin1StringView signature)
{
    return message.type() == QDBusMessage::ReplyMessage && message.signature() == signature;
}

Paths paths(const QDBusMessage& reply, qsizetype argument)
{
    return qdbus_cast<Paths>(reply.arguments().at(argument));
}

QDBusObjectPath path(const QDBusMessage& reply, qsizetype argument)
{
    return qdbus_cast<QDBusObjectPath>(reply.arguments().at(argument));
}

/// A conversation with the service, in which each call has until a common deadline. It ends with the
/// connection.
///
/// Secrets go over the bus as they are ("plain"): whoever can listen to this user's bus can also ask for the
/// secret.
class KeyringSession {
public:
    explicit KeyringSession(SecretServiceLimits limits)
        : m_limits(limits)
        , m_deadline(limits.answer)
    {
        static const bool registered =
            (qDBusRegisterMetaType<Attributes>(), qDBusRegisterMetaType<Secret>(), true);
        Q_UNUSED(registered)
        const QDBusMessage opened = call(servicePath, serviceInterface, u"OpenSession"_s,
                                         {u"plain"_s, QVariant::fromValue(QDBusVariant(QString()))});
        if (isReply(opened, "vo"_L1))
            m_path = path(opened, 1);
        expectAnswer();
    }
    bool isOpen() const { return !m_path.path().isEmpty(); }

    struct Found {
        Paths unlocked;
        Paths locked;

        Paths all() const { return unlocked + locked; }
    };
    std::optional<Found> search(const Attributes& attributes)
    {
        const QDBusMessage reply =
            call(servicePath, serviceInterface, u"SearchItems"_s, {QVariant::fromValue(attributes)});
        if (!isReply(reply, "aoao"_L1))
            return std::nullopt;
        return Found{paths(reply, 0), paths(reply, 1)};
    }

    /// Unlocks an item or a collection, which may mean that the desktop asks the user.
    bool unlock(const QDBusObjectPath& object)
    {
        const QDBusMessage reply =
            call(servicePath, serviceInterface, u"Unlock"_s, {QVariant::fromValue(Paths{object})});
        return isReply(reply, "aoo"_L1)
               && (paths(reply, 0).contains(object) || isAllowed(path(reply, 1), false));
    }

    std::optional<QByteArray> secret(const QDBusObjectPath& item)
    {
        const QDBusMessage reply =
            call(item.path(), itemInterface, u"GetSecret"_s, {QVariant::fromValue(m_path)});
        if (!isReply(reply, "(oayays)"_L1))
            return std::nullopt;
        return qdbus_cast<Secret>(reply.arguments().constFirst()).value;
    }

    bool remove(const QDBusObjectPath& item)
    {
        const QDBusMessage reply = call(item.path(), itemInterface, u"Delete"_s);
        return isReply(reply, "o"_L1) && isAllowed(path(reply, 0), true);
    }

    /// Creates an item in the default collection, which is unlocked, or created, on the way.
    bool create(const QString& label, const Attributes& attributes, const QByteArray& secret)
    {
        QDBusMessage reply = createItem(label, attributes, secret);
        if (isPrepared(reply.errorName()))
            reply = createItem(label, attributes, secret);
        return isReply(reply, "oo"_L1) && isAllowed(path(reply, 1), true);
    }

private:
    void expectAnswer() { m_deadline = QDeadlineTimer(m_limits.answer); }

    static QDBusMessage message(const QString& object, const QString& interface, const QString& method)
    {
        return QDBusMessage::createMethodCall(busName, object, interface, method);
    }

    QDBusMessage call(const QString& object, const QString& interface, const QString& method,
                      const QVariantList& arguments = {}) const
    {
        QDBusMessage call = message(object, interface, method);
        call.setArguments(arguments);
        const qint64 left =
            std::clamp<qint64>(m_deadline.remainingTime(), 1, std::numeric_limits<int>::max());
        return m_bus->call(call, QDBus::Block, static_cast<int>(left));
    }

    QDBusMessage createItem(const QString& label, const Attributes& attributes,
                            const QByteArray& secret) const
    {
        const QVariantMap properties{{itemInterface + ".Label"_L1, label},
                                     {itemInterface + ".Attributes"_L1, QVariant::fromValue(attributes)}};
        const Secret sent{m_path, {}, secret, u"text/plain"_s};
        return call(defaultCollectionPath, collectionInterface, u"CreateItem"_s,
                    {properties, QVariant::fromValue(sent), false});
    }

    /// Removes the reason why no item could be created, where that can be done.
    bool isPrepared(const QString& error)
    {
        static const QStringList missing{u"org.freedesktop.Secret.Error.NoSuchObject"_s,
                                         u"org.freedesktop.DBus.Error.UnknownObject"_s,
                                         u"org.freedesktop.DBus.Error.UnknownMethod"_s};
        if (error == "org.freedesktop.Secret.Error.IsLocked"_L1)
            return unlock(QDBusObjectPath(defaultCollectionPath));
        return missing.contains(error) && createDefaultCollection();
    }

    bool createDefaultCollection()
    {
        const QVariantMap properties{{collectionInterface + ".Label"_L1, u"Default keyring"_s}};
        const QDBusMessage reply =
            call(servicePath, serviceInterface, u"CreateCollection"_s, {properties, u"default"_s});
        return isReply(reply, "oo"_L1) && isAllowed(path(reply, 1), true);
    }

    /// Shows the question that the service has before it does what it was asked for. @p withoutQuestion is
    /// the answer when it has none.
    bool isAllowed(const QDBusObjectPath& prompt, bool withoutQuestion)
    {
        if (prompt.path() == "/"_L1)
            return withoutQuestion;
        // Signals are delivered by an event loop, and this thread's may be the one that waits here.
        QThread thread;
        PromptAnswer answer;
        answer.moveToThread(&thread);
        thread.start();
        m_bus->connect(busName, prompt.path(), promptInterface, u"Completed"_s, &answer,
                       SLOT(complete(bool, QDBusVariant)));
        m_bus->connect(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
                       u"NameOwnerChanged"_s, {busName}, u"sss"_s, &answer,
                       SLOT(ownerChanged(QString, QString, QString)));
        m_deadline = QDeadlineTimer(m_limits.question);
        const QDBusMessage shown = call(prompt.path(), promptInterface, u"Prompt"_s, {QString()});
        const bool isGranted = shown.type() == QDBusMessage::ReplyMessage && answer.isGranted(m_deadline);
        if (m_deadline.hasExpired())
            m_bus->send(message(prompt.path(), promptInterface, u"Dismiss"_s));
        thread.quit();
        thread.wait();
        expectAnswer();
        return isGranted;
    }

    const SecretServiceLimits m_limits;
    BusConnection m_bus;
    QDeadlineTimer m_deadline;
    QDBusObjectPath m_path;
};

/// Items are found by their attributes alone, whichever program stored them.
Attributes attributes(const QString& service, const QString& account)
{
    return {{u"service"_s, service}, {u"account"_s, account}};
}

} // namespace

SecretService::SecretService(QString label, SecretServiceLimits limits)
    : m_label(std::move(label))
    , m_limits(limits)
{
}

SecretReading SecretService::read(const QString& service, const QString& account)
{
    KeyringSession session(m_limits);
    if (!session.isOpen())
        return {SecretStatus::unavailable, {}};
    const auto found = session.search(attributes(service, account));
    if (!found)
        return {SecretStatus::failed, {}};
    if (found->all().isEmpty())
        return {SecretStatus::notFound, {}};
    const QDBusObjectPath item = found->all().constFirst();
    if (found->unlocked.isEmpty() && !session.unlock(item))
        return {SecretStatus::failed, {}};
    const auto secret = session.secret(item);
    if (!secret)
        return {SecretStatus::failed, {}};
    return {SecretStatus::success, *secret};
}

SecretStatus SecretService::add(const QByteArray& secret, const QString& service, const QString& account)
{
    KeyringSession session(m_limits);
    if (!session.isOpen())
        return SecretStatus::unavailable;
    return session.create(m_label, attributes(service, account), secret) ? SecretStatus::success
                                                                         : SecretStatus::failed;
}

SecretStatus SecretService::remove(const QString& service, const QString& account)
{
    KeyringSession session(m_limits);
    if (!session.isOpen())
        return SecretStatus::unavailable;
    const auto found = session.search(attributes(service, account));
    if (!found)
        return SecretStatus::failed;
    if (found->all().isEmpty())
        return SecretStatus::notFound;
    bool succeeded = true;
    for (const QDBusObjectPath& item : found->all())
        succeeded =
            (found->unlocked.contains(item) || session.unlock(item)) && session.remove(item) && succeeded;
    return succeeded ? SecretStatus::success : SecretStatus::failed;
}

} // namespace orvia

#include "SecretService.moc"
