#pragma once

#include <QByteArray>
#include <QString>

namespace orvia {

/// How a call to a place that keeps secrets ended.
enum class SecretStatus {
    /// It was done.
    success,
    /// The place works and holds no such secret.
    notFound,
    /// There is no such place on this desktop; another one may be tried.
    unavailable,
    /// The place is there and did not do it: locked, refused, broken.
    failed,
};

struct SecretReading {
    SecretStatus status = SecretStatus::failed;
    /// The secret; meaningful with @c SecretStatus::success only.
    QByteArray secret;
};

/// A place that keeps secrets, each under a service and an account. Calls are synchronous, bounded in time,
/// and never throw.
class SecretStorage {
public:
    virtual ~SecretStorage() = default;

    virtual SecretReading read(const QString& service, const QString& account) = 0;
    /// Adds a secret where there is none under these two names.
    virtual SecretStatus add(const QByteArray& secret, const QString& service, const QString& account) = 0;
    /// Removes every secret under these two names.
    virtual SecretStatus remove(const QString& service, const QString& account) = 0;
};

} // namespace orvia
