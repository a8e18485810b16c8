#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace orvia {

/// This program's side of UnifiedPush on D-Bus, version 1: finds the desktop's distributors, registers with
/// one, and receives what it delivers at /org/unifiedpush/Connector. Nothing here waits; without a bus or a
/// distributor nothing happens and nothing is reported. Main thread.
class PushDistributor : public QObject {
    Q_OBJECT

public:
    /// @p connectorService is the bus name at which distributors reach this program, which has to own it and
    /// should claim it only after this object exists. @p busConnection names a QtDBus connection; the session
    /// bus when it is empty.
    explicit PushDistributor(QString connectorService, const QString& busConnection = {},
                             QObject* parent = nullptr);
    ~PushDistributor() override;

    /// Registers under @p token with the first distributor that accepts: @p preferred when it is there, then
    /// the running ones, then those that the bus starts on demand, each group in the order of their names.
    void registerConnector(const QString& token, const QString& description, const QString& preferred);

Q_SIGNALS:
    /// @p distributor took the registration; the endpoint follows.
    void accepted(const QString& token, const QString& distributor);
    void endpointReceived(const QString& token, const QString& endpoint);
    void messageReceived(const QString& token, const QByteArray& message);
    void unregistered(const QString& token);
    /// A distributor came onto the bus.
    void appeared();

private:
    class Connector;
    struct Request {
        QString token;
        QString description;
        QString preferred;
    };

    void tryDistributors(const Request& request, QStringList candidates);

    const QString m_connectorService;
    const QString m_busConnection;
    const std::unique_ptr<Connector> m_connector;
};

} // namespace orvia
