#include "Views/ConversationListView/SearchResultRow.h"

#include "Platform/RelativeTime.h"
#include "Session/Session.h"

#include <QCoreApplication>

namespace orvia {

using namespace Qt::StringLiterals;

SearchResultRow SearchResultRow::of(const Session& session, const SearchResult& result)
{
    SearchResultRow row;
    const QString& name = result.conversation.visitor.name;
    row.name = name.isEmpty() ? QCoreApplication::translate("ConversationListView", "Visitor") : name;
    row.lastMessageAt = result.conversation.lastMessageAt;
    row.snippet = result.snippet;
    row.query = session.searchText().trimmed();
    if (const Product* product = session.product(result.conversation.productId))
        row.productName = product->name;
    return row;
}

QString SearchResultRow::time(Instant now) const
{
    return lastMessageAt ? relativeTime(*lastMessageAt, now) : QString();
}

QString SearchResultRow::accessibleText(Instant now) const
{
    QStringList parts{name, time(now), snippet, productName};
    parts.removeAll(QString());
    return parts.join(", "_L1);
}

} // namespace orvia
