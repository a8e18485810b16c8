#include "Views/ConversationListView/ConversationRow.h"

#include "Platform/RelativeTime.h"
#include "Session/Session.h"
#include "Views/ConversationListView/ListRules.h"

#include <QCoreApplication>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("ConversationListView", text);
}

QString upperCasedCountryCode(const Visitor& visitor)
{
    const auto geo = visitor.meta ? visitor.meta->value()->geo : std::nullopt;
    return geo ? geo->countryCode.value_or(QString()).toUpper() : QString();
}

} // namespace

ConversationRow ConversationRow::of(const Session& session, const Conversation& conversation, Instant now)
{
    ConversationRow row;
    row.name = conversation.visitor.name;
    row.isClosed = conversation.status == ConversationStatus::closed;
    row.countryCode = upperCasedCountryCode(conversation.visitor);
    row.lastMessageAt = conversation.lastMessageAt;

    const QString preview = session.typingPreviews().value(conversation.id);
    row.isTyping = !preview.isEmpty();
    row.text = row.isTyping ? preview : conversation.lastMessagePreview.value_or(QString());

    if (conversation.rating)
        row.rating = QString::number(conversation.rating->score) + "/5"_L1;
    if (const Product* product = session.product(conversation.productId))
        row.productName = product->name;
    row.isSnoozed = conversation.snoozedUntil && *conversation.snoozedUntil > now;
    row.isUnread = conversation.agentUnread.value_or(0) > 0;
    const auto viewers = session.viewers().constFind(conversation.id);
    if (viewers != session.viewers().cend())
        row.viewingCaption = ListRules::viewingCaption(*viewers).value_or(QString());
    return row;
}

QString ConversationRow::time(Instant now) const
{
    return lastMessageAt ? relativeTime(*lastMessageAt, now) : QString();
}

QString ConversationRow::accessibleText(Instant now) const
{
    QStringList parts{name, countryCode, time(now), text, rating, productName};
    if (isSnoozed)
        parts.append(translated("Snoozed"));
    if (isUnread)
        parts.append(translated("Unread"));
    if (!viewingCaption.isEmpty())
        parts.append(translated("%1 this conversation").arg(viewingCaption));
    parts.removeAll(QString());
    return parts.join(", "_L1);
}

} // namespace orvia
