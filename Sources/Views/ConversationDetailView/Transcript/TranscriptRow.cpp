#include "Views/ConversationDetailView/Transcript/TranscriptRow.h"

#include <QCoreApplication>
#include <QStringList>

namespace orvia {

using namespace Qt::StringLiterals;

QString TranscriptRow::caption() const
{
    QStringList parts;
    if (showsEmailCaption)
        parts.append(QCoreApplication::translate("ConversationDetailView", "via email"));
    if (showsSeenCaption)
        parts.append(QCoreApplication::translate("ConversationDetailView", "Seen"));
    return parts.join(u"  "_s);
}

QString TranscriptRow::spokenName() const
{
    QStringList parts{divider, header};
    if (mentionsMe)
        parts.append(QCoreApplication::translate("ConversationDetailView", "Mentioned you"));
    parts.append(body);
    if (attachment)
        parts << attachment->name << attachment->size;
    if (showsEmailCaption)
        parts.append(QCoreApplication::translate("ConversationDetailView", "via email"));
    if (showsSeenCaption)
        parts.append(QCoreApplication::translate("ConversationDetailView", "Seen"));
    parts.removeAll(QString());
    return parts.join(u", "_s);
}

} // namespace orvia
