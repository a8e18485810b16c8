#pragma once

#include "Platform/SecretStorage.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvia {

/// A small file that nobody but its owner may read: mode 0600 from the moment it exists, replaced as a whole
/// or not at all.
class PrivateFile {
public:
    /// Larger contents are neither written nor read.
    static constexpr qint64 sizeLimit = 64 * 1024;

    explicit PrivateFile(QString path);

    bool exists() const;
    /// The contents, or none where there is no regular file of this user within the limit. A file that others
    /// could read is closed to them first.
    std::optional<QByteArray> read() const;
    /// Replaces the contents, creating the missing directories with mode 0700. On failure the old contents
    /// remain.
    bool write(const QByteArray& contents) const;
    /// Answers whether the file is gone, which it also is when there was none.
    bool remove() const;

private:
    QString m_path;
};

/// Keeps each secret in a private file of its own, DIRECTORY/service/account.
class PrivateFileStorage final : public SecretStorage {
public:
    explicit PrivateFileStorage(QString directory);

    SecretReading read(const QString& service, const QString& account) override;
    SecretStatus add(const QByteArray& secret, const QString& service, const QString& account) override;
    SecretStatus remove(const QString& service, const QString& account) override;

private:
    PrivateFile file(const QString& service, const QString& account) const;

    QString m_directory;
};

} // namespace orvia
