#include "Platform/PushDistributor.h"

#include "Platform/MessageBus.h"

#include <QDBusServiceWatcher>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr auto distributorPrefix = "org.unifiedpush.Distributor."_L1;
constexpr auto distributorPath = "/org/unifiedpush/Distributor"_L1;
constexpr auto distributorInterface = "org.unifiedpush.Distributor1"_L1;
constexpr auto connectorPath = "/org/unifiedpush/Connector"_L1;

QStringList distributorsIn(const QDBusMessage& reply)
{
    QStringList names;
    const QStringList all = reply.arguments().value(0).toStringList();
    for (const QString& name : all) {
        if (name.startsWith(distributorPrefix))
            names.append(name);
    }
    names.sort();
    return names;
}

QDBusMessage callToBus(const QString& method)
{
    return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                          u"org.freedesktop.DBus"_s, method);
}

} // namespace

/// The object that distributors call; its slots have the names and arguments of the D-Bus interface.
class PushDistributor::Connector : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.unifiedpush.Connector1")

public:
    explicit Connector(PushDistributor& owner)
        : m_owner(owner)
    {
    }

public Q_SLOTS:
    void NewEndpoint(const QString& token, const QString& endpoint)
    {
        Q_EMIT m_owner.endpointReceived(token, endpoint);
    }
    void Message(const QString& token, const QByteArray& message, const QString&)
    {
        Q_EMIT m_owner.messageReceived(token, message);
    }
    void Unregistered(const QString& token) { Q_EMIT m_owner.unregistered(token); }

private:
    PushDistributor& m_owner;
};

PushDistributor::PushDistributor(QString connectorService, const QString& busConnection, QObject* parent)
    : QObject(parent)
    , m_connectorService(std::move(connectorService))
    , m_busConnection(busConnection)
    , m_connector(std::make_unique<Connector>(*this))
{
    QDBusConnection bus = busNamed(m_busConnection);
    if (!bus.isConnected())
        return;
    bus.registerObject(connectorPath, m_connector.get(), QDBusConnection::ExportAllSlots);
    auto* watcher = new QDBusServiceWatcher(u"org.unifiedpush.Distributor*"_s, bus,
                                            QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &PushDistributor::appeared);
}

PushDistributor::~PushDistributor()
{
    busNamed(m_busConnection).unregisterObject(connectorPath);
}

void PushDistributor::registerConnector(const QString& token, const QString& description,
                                        const QString& preferred)
{
    const Request request{token, description, preferred};
    const QDBusConnection bus = busNamed(m_busConnection);
    sendCall(bus, callToBus(u"ListNames"_s), this, [this, bus, request](const QDBusMessage& reply) {
        QStringList candidates = distributorsIn(reply);
        sendCall(bus, callToBus(u"ListActivatableNames"_s), this,
                 [this, request, candidates](const QDBusMessage& activatable) mutable {
                     candidates += distributorsIn(activatable);
                     if (candidates.contains(request.preferred))
                         candidates.prepend(request.preferred);
                     candidates.removeDuplicates();
                     tryDistributors(request, std::move(candidates));
                 });
    });
}

void PushDistributor::tryDistributors(const Request& request, QStringList candidates)
{
    if (candidates.isEmpty())
        return;
    const QString distributor = candidates.takeFirst();
    QDBusMessage call =
        QDBusMessage::createMethodCall(distributor, distributorPath, distributorInterface, u"Register"_s);
    call << m_connectorService << request.token << request.description;
    sendCall(busNamed(m_busConnection), call, this,
             [this, request, distributor, candidates](const QDBusMessage& reply) {
                 if (reply.type() == QDBusMessage::ReplyMessage
                     && reply.arguments().value(0) == "NEW_ENDPOINT"_L1)
                     Q_EMIT accepted(request.token, distributor);
                 else
                     tryDistributors(request, candidates);
             });
}

} // namespace orvia

#include "PushDistributor.moc"
