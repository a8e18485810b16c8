#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <variant>

namespace orvia {

/// A file as it is uploaded: its name, its type by the name's extension, and its bytes.
struct PickedFile {
    QString name;
    QString mimeType;
    QByteArray data;
};

enum class PickedFileFailure { unreadable, tooLarge };

/// The largest attachment, in bytes.
inline constexpr qint64 maxAttachmentBytes = 10 * 1024 * 1024;

/// Reads the local file at @p location whole. At most one byte more than the limit is ever read.
std::variant<PickedFile, PickedFileFailure> readPickedFile(const QUrl& location);

/// The preferred media type for the extension of @p fileName, or application/octet-stream.
QString mimeTypeForFileName(const QString& fileName);

} // namespace orvia
