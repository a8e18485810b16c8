#pragma once

#include "Support/PrivateBus.h"

#include <QDBusConnection>

namespace orvia::test {

/// A real keyring daemon on the private bus, with an unlocked keyring of its own. It looks at its items the
/// way another program would.
class PrivateKeyring {
public:
    explicit PrivateKeyring(const PrivateBus& bus);
    ~PrivateKeyring();
    Q_DISABLE_COPY_MOVE(PrivateKeyring)

    bool isRunning() const;

    /// Locks the keyring. There is nobody on the private bus who could ask for its password.
    bool lock();
    /// The secret of an item with these names and values of attributes; empty when there is none.
    QByteArray secret(const QStringList& attributes) const;
    bool store(const QStringList& attributes, const QByteArray& secret);

private:
    QDBusConnection m_connection;
    ChildProcess m_daemon;
};

} // namespace orvia::test
