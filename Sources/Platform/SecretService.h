#pragma once

#include "Platform/SecretStorage.h"

#include <chrono>
#include <memory>

namespace orvia {

/// How long a call to the Secret Service may hold up its caller.
struct SecretServiceLimits {
    /// For each run of steps in which programs answer to programs.
    std::chrono::milliseconds answer{5000};
    /// For a step in which the desktop may ask its user to unlock the keyring or to create one. Whoever does
    /// not answer in this time has refused, and the question is taken back.
    std::chrono::milliseconds question{15000};
};

/// The desktop's Secret Service. An item carries the attributes "service" and "account" and lies in the
/// default collection.
///
/// The service is unavailable where no session bus, or nothing behind the service's name on it, answers the
/// opening of a session; everything that goes wrong later counts as failed. The work itself runs in a thread
/// of its own, which is abandoned at the limit, so that the caller gets on whatever the keyring does.
///
/// The credential library and what it is built on are loaded at the first call, because a console that nobody
/// has signed in to does not need them to show its first screen. Thread-safe.
class SecretService final : public SecretStorage {
public:
    /// @p label is what the user sees as the items' name in the keyring.
    explicit SecretService(QString label, SecretServiceLimits limits = {});

    /// Loads the library ahead of the first call; for a thread that has time. Asks nobody anything.
    static void load();

    SecretReading read(const QString& service, const QString& account) override;
    SecretStatus add(const QByteArray& secret, const QString& service, const QString& account) override;
    SecretStatus remove(const QString& service, const QString& account) override;

private:
    std::unique_ptr<SecretStorage> loaded() const;

    QString m_label;
    SecretServiceLimits m_limits;
};

} // namespace orvia
