#include "DemoService/FileShelf.h"

#include <QFile>
#include <QUrl>

namespace orvia::demo {

using namespace Qt::StringLiterals;

std::optional<Attachment> FileShelf::add(const QString& id, const QString& name, const QString& mime,
                                         const QByteArray& data)
{
    QFile file(m_folder.filePath(id));
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.flush())
        return std::nullopt;
    m_mimeById.insert(id, mime);

    Attachment attachment;
    attachment.fileId = id;
    attachment.name = name;
    attachment.mime = mime;
    attachment.size = data.size();
    attachment.kind = mime.startsWith("image/"_L1) ? AttachmentKind::image : AttachmentKind::file;
    attachment.url = "/files/%1/%2"_L1.arg(id, QString::fromLatin1(QUrl::toPercentEncoding(name)));
    return attachment;
}

std::optional<FileShelf::File> FileShelf::file(const QString& id) const
{
    const auto mime = m_mimeById.constFind(id);
    if (mime == m_mimeById.cend())
        return std::nullopt;
    QFile file(m_folder.filePath(id));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return File{file.readAll(), *mime};
}

} // namespace orvia::demo
