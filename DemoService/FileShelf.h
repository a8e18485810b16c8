#pragma once

#include "Models/Message.h"

#include <QHash>
#include <QTemporaryDir>

#include <optional>

namespace orvia::demo {

/// The files that belong to messages, in a folder of their own that vanishes with the service.
class FileShelf {
public:
    inline static constexpr qsizetype maxFileBytes = 10 * 1024 * 1024;

    struct File {
        QByteArray data;
        QString mime;
    };

    /// Stores @p data and describes it; none when the disk refuses it. @p id becomes part of the address.
    std::optional<Attachment> add(const QString& id, const QString& name, const QString& mime,
                                  const QByteArray& data);

    std::optional<File> file(const QString& id) const;

private:
    QTemporaryDir m_folder;
    QHash<QString, QString> m_mimeById;
};

} // namespace orvia::demo
