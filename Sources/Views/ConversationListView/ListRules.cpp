#include "Views/ConversationListView/ListRules.h"

#include <QCoreApplication>

namespace orvia::ListRules {

using namespace Qt::StringLiterals;

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("ConversationListView", text);
}

} // namespace

std::optional<QString> viewingCaption(const std::vector<ViewerAgent>& viewers)
{
    QStringList names;
    for (const ViewerAgent& viewer : viewers) {
        if (!viewer.name.isEmpty())
            names.append(viewer.name);
    }
    if (names.isEmpty())
        return std::nullopt;
    return translated("%1 viewing").arg(names.size() == 1 ? names.first() : QString::number(names.size()));
}

QString emptyTitle(InboxQueue queue, ConversationStatus status)
{
    switch (queue) {
    case InboxQueue::mine:
        return translated("Nothing Assigned to You");
    case InboxQueue::unassigned:
        return translated("Nothing Unassigned");
    case InboxQueue::all:
        break;
    }
    return status == ConversationStatus::closed ? translated("No Closed Conversations")
                                                : translated("No Open Conversations");
}

std::vector<UnicodeText::Range> highlighted(const QString& snippet, const QString& query)
{
    return UnicodeText::occurrences(snippet, query);
}

} // namespace orvia::ListRules
