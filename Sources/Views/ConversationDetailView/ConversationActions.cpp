#include "Views/ConversationDetailView/ConversationActions.h"

#include "Platform/ShownText.h"
#include "Views/ConversationDetailView/TranscriptRules.h"

#include <QCoreApplication>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

using Kind = ConversationAction::Kind;
using Section = ConversationAction::Section;

QString tr(const char* text)
{
    return QCoreApplication::translate("ConversationDetailView", text);
}

QString sectionTitle(Section section)
{
    switch (section) {
    case Section::assign:
        return tr("Assign");
    case Section::snooze:
        return tr("Snooze");
    case Section::other:
        break;
    }
    return {};
}

/// Wide enough for a name and narrow enough for a menu, in code units.
constexpr qsizetype longestItem = 80;

/// An action's text as it stands: a single "&" would mark a mnemonic.
QString literal(const QString& text)
{
    return shownLine(text, longestItem).replace("&"_L1, "&&"_L1);
}

} // namespace

std::vector<Agent> assignableAgents(const Session& session, const Conversation& conversation)
{
    std::vector<Agent> agents = session.agents(conversation.productId);
    std::erase_if(agents, [&](const Agent& agent) { return agent.id == conversation.assigneeId; });
    return agents;
}

std::vector<ConversationAction> conversationActions(const Session& session, const Conversation& conversation,
                                                    Instant now)
{
    const std::optional<Agent>& self = session.agent();
    const bool assignedToMe = self && conversation.assigneeId == self->id;
    std::vector<ConversationAction> actions;
    if (!assignedToMe && self)
        actions.push_back({Section::assign, Kind::assign, tr("Assign to Me"), self->id});
    if (conversation.assigneeId)
        actions.push_back({Section::assign, Kind::assign, tr("Unassign")});
    for (const Agent& agent : assignableAgents(session, conversation))
        actions.push_back({Section::assign, Kind::assign, tr("Assign to %1").arg(agent.name), agent.id});
    actions.push_back(
        {Section::snooze, Kind::snoozeUntilTomorrowMorning, tr("Snooze Until Tomorrow Morning")});
    actions.push_back({Section::snooze, Kind::snoozeForThreeDays, tr("Snooze for 3 Days")});
    if (conversation.snoozedUntil > now)
        actions.push_back({Section::snooze, Kind::unsnooze, tr("Unsnooze")});
    if (session.isMuted(conversation.id))
        actions.push_back({Section::other, Kind::unmute, tr("Unmute")});
    else
        actions.push_back({Section::other, Kind::mute, tr("Mute Notifications")});
    if (conversation.status == ConversationStatus::open)
        actions.push_back({Section::other, Kind::close, tr("Close Conversation")});
    else
        actions.push_back({Section::other, Kind::reopen, tr("Reopen Conversation")});
    return actions;
}

void performAction(Session& session, const QString& conversationId, const ConversationAction& action,
                   Instant now)
{
    const QTimeZone zone = QTimeZone::systemTimeZone();
    switch (action.kind) {
    case Kind::assign:
        session.assign(conversationId, action.agentId);
        break;
    case Kind::snoozeUntilTomorrowMorning:
        session.snooze(conversationId, TranscriptRules::tomorrowMorning(now, zone));
        break;
    case Kind::snoozeForThreeDays:
        session.snooze(conversationId, TranscriptRules::threeDaysOut(now, zone));
        break;
    case Kind::unsnooze:
        session.snooze(conversationId, std::nullopt);
        break;
    case Kind::mute:
    case Kind::unmute:
        session.setMuted(conversationId, action.kind == Kind::mute);
        break;
    case Kind::close:
    case Kind::reopen:
        session.setStatus(action.kind == Kind::close ? ConversationStatus::closed : ConversationStatus::open,
                          conversationId);
        break;
    }
}

ConversationActionsMenu::ConversationActionsMenu(Session& session, QString conversationId,
                                                 std::function<Instant()> now, QWidget* parent)
    : QMenu(parent)
    , m_session(session)
    , m_conversationId(std::move(conversationId))
    , m_now(std::move(now))
{
    connect(this, &QMenu::aboutToShow, this, &ConversationActionsMenu::populate);
}

void ConversationActionsMenu::populate()
{
    clear();
    const Conversation* conversation = m_session.conversations().find(m_conversationId);
    if (!conversation)
        return;
    std::optional<Section> section;
    for (const ConversationAction& action : conversationActions(m_session, *conversation, m_now())) {
        if (section != action.section) {
            if (section)
                addSeparator();
            section = action.section;
            if (const QString title = sectionTitle(action.section); !title.isEmpty())
                addSection(title);
        }
        addAction(literal(action.text), this,
                  [this, action] { performAction(m_session, m_conversationId, action, m_now()); });
    }
}

} // namespace orvia
