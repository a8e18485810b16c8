#include "Views/ConversationDetailView/Composer/PickedFile.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>

namespace orvia {

using namespace Qt::StringLiterals;

QString mimeTypeForFileName(const QString& fileName)
{
    const QString unknown = u"application/octet-stream"_s;
    const qsizetype dot = fileName.lastIndexOf(u'.');
    if (dot < 0 || dot == fileName.size() - 1)
        return unknown;
    // Only the extension counts: a registry that also knows whole names would call a Makefile a text.
    const QMimeType type =
        QMimeDatabase().mimeTypeForFile("file"_L1 + fileName.sliced(dot), QMimeDatabase::MatchExtension);
    return type.isValid() && !type.name().startsWith("inode/"_L1) ? type.name() : unknown;
}

std::variant<PickedFile, PickedFileFailure> readPickedFile(const QUrl& location)
{
    const QString path = location.toLocalFile();
    // Anything but a regular file, a pipe for example, could keep the reader waiting for ever.
    if (!QFileInfo(path).isFile())
        return PickedFileFailure::unreadable;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return PickedFileFailure::unreadable;
    PickedFile picked;
    picked.data = file.read(maxAttachmentBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return PickedFileFailure::unreadable;
    if (picked.data.size() > maxAttachmentBytes)
        return PickedFileFailure::tooLarge;
    picked.name = QFileInfo(path).fileName();
    picked.mimeType = mimeTypeForFileName(picked.name);
    return picked;
}

} // namespace orvia
