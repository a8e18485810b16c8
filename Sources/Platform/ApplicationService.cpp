#include "Platform/ApplicationService.h"

#include "Platform/MessageBus.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QVariantMap>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr auto interfaceName = "org.freedesktop.Application"_L1;
constexpr auto activationTokenKey = "activation-token"_L1;
constexpr auto startupIdentifierKey = "desktop-startup-id"_L1;

QString objectPathOf(const QString& identifier)
{
    QString path = u'/' + identifier;
    path.replace(u'.', u'/');
    path.replace(u'-', u'_');
    return path;
}

/// The desktop's leave to come to the front, on its way from the process that was started to the one that
/// runs.
QVariantMap platformData()
{
    QVariantMap data;
    if (const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"); !token.isEmpty())
        data.insert(activationTokenKey, token);
    if (const QString identifier = qEnvironmentVariable("DESKTOP_STARTUP_ID"); !identifier.isEmpty())
        data.insert(startupIdentifierKey, identifier);
    return data;
}

QString activationToken(const QVariantMap& data)
{
    const QString token = data.value(activationTokenKey).toString();
    return token.isEmpty() ? data.value(startupIdentifierKey).toString() : token;
}

bool claimName(const QDBusConnection& bus, const QString& name)
{
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply = bus.interface()->registerService(
        name, QDBusConnectionInterface::DontQueueService, QDBusConnectionInterface::DontAllowReplacement);
    return reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
}

} // namespace

/// The object that the desktop and later starts call; its slots have the names and arguments of the D-Bus
/// interface.
class ApplicationService::Interface : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit Interface(ApplicationService& owner)
        : m_owner(owner)
    {
    }

public Q_SLOTS:
    void Activate(const QVariantMap& data) { Q_EMIT m_owner.activated(activationToken(data)); }
    void Open(const QStringList& links, const QVariantMap& data)
    {
        Q_EMIT m_owner.opened(links, activationToken(data));
    }
    /// The desktop entry lists no actions.
    void ActivateAction(const QString&, const QVariantList&, const QVariantMap&) {}

private:
    ApplicationService& m_owner;
};

ApplicationService::ApplicationService(QString identifier, const QString& busConnection, QObject* parent)
    : QObject(parent)
    , m_identifier(std::move(identifier))
    , m_objectPath(objectPathOf(m_identifier))
    , m_busConnection(busConnection)
    , m_interface(std::make_unique<Interface>(*this))
{
}

ApplicationService::~ApplicationService()
{
    busNamed(m_busConnection).unregisterObject(m_objectPath);
}

ApplicationService::Start ApplicationService::start(const QStringList& links, bool isInBackground,
                                                    std::chrono::milliseconds patience)
{
    QDBusConnection bus = busNamed(m_busConnection);
    if (!bus.isConnected())
        return Start::alone;
    // The object has to be there before the name, because callers come with the name.
    bus.registerObject(m_objectPath, m_interface.get(), QDBusConnection::ExportAllSlots);

    // Between the claim and the call the other instance may end, and a third may start.
    constexpr int mostAttempts = 3;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        if (claimName(bus, m_identifier))
            return Start::first;
        const Delivery delivery = deliver(messageFor(links, isInBackground), patience);
        if (delivery != Delivery::recipientGone) {
            bus.unregisterObject(m_objectPath);
            return delivery == Delivery::done ? Start::handedOver : Start::alone;
        }
    }
    return Start::alone;
}

QDBusMessage ApplicationService::messageFor(const QStringList& links, bool isInBackground) const
{
    const auto call = [this](const QString& interface, const QString& method) {
        return QDBusMessage::createMethodCall(m_identifier, m_objectPath, interface, method);
    };
    if (links.isEmpty() && isInBackground)
        return call(u"org.freedesktop.DBus.Peer"_s, u"Ping"_s);
    if (links.isEmpty())
        return call(interfaceName, u"Activate"_s) << platformData();
    return call(interfaceName, u"Open"_s) << links << platformData();
}

ApplicationService::Delivery ApplicationService::deliver(const QDBusMessage& message,
                                                         std::chrono::milliseconds patience) const
{
    QDBusConnection bus = busNamed(m_busConnection);
    QDBusMessage call = message;
    call.setAutoStartService(false);
    const QDBusMessage reply = bus.call(call, QDBus::Block, static_cast<int>(patience.count()));
    if (reply.type() == QDBusMessage::ReplyMessage)
        return Delivery::done;
    switch (QDBusError(reply).type()) {
    case QDBusError::ServiceUnknown:
        return Delivery::recipientGone;
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        // Either it ended with the call on its table, or it is busy and will come to it.
        return bus.interface()->isServiceRegistered(m_identifier) ? Delivery::done : Delivery::recipientGone;
    default:
        return Delivery::refused;
    }
}

} // namespace orvia

#include "ApplicationService.moc"
