#pragma once

#include "Support/PrivateBus.h"

#include <QDBusVirtualObject>
#include <QThread>

#include <atomic>

namespace orvia::test {

/// A Secret Service that misbehaves in a chosen way, which no real one does on request. It answers from a
/// thread of its own, because the calls under test hold up theirs.
class ScriptedSecretService final : public QDBusVirtualObject {
public:
    enum class Behaviour {
        /// Takes every call and answers none.
        silent,
        /// Opens a session and gives no answer to a search.
        silentInSearch,
        /// Opens a session and leaves the bus when it is searched.
        goneInSearch,
        /// Has a locked item; its question to the user is never answered, not even when it is taken back.
        questionWithoutEnd,
        /// Has a locked item; the user declines to unlock it.
        questionDeclined,
    };

    ScriptedSecretService(const PrivateBus& bus, Behaviour behaviour);
    ~ScriptedSecretService() override;

    /// How often the user was asked something.
    int questions() const { return m_questions; }

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QVariantList answer(const QDBusMessage& message, const QDBusConnection& connection);

    const QString m_connectionName;
    const Behaviour m_behaviour;
    std::atomic<int> m_questions = 0;
    QThread m_thread;
};

} // namespace orvia::test
