#pragma once

#include "Support/PrivateBus.h"

#include <QDBusConnection>
#include <QMap>

#include <optional>

namespace orvia::test {

/// A real keyring daemon on the private bus, with an unlocked keyring of its own. It looks at its items the
/// way another program would.
class PrivateKeyring {
public:
    using Attributes = QMap<QString, QString>;

    explicit PrivateKeyring(const PrivateBus& bus);
    ~PrivateKeyring();
    Q_DISABLE_COPY_MOVE(PrivateKeyring)

    bool isRunning() const;
    qint64 processId() { return m_daemon.process().processId(); }

    /// Locks the keyring. There is nobody on the private bus who could ask for its password.
    bool lock();
    /// The attributes of every item in the keyring.
    QList<Attributes> items() const;
    /// Puts an item in, as a foreign program may do with any bytes.
    bool store(const Attributes& attributes, const QByteArray& secret);

private:
    QDBusConnection m_connection;
    ChildProcess m_daemon;
};

} // namespace orvia::test
