#pragma once

#include "Session/Session.h"

#include <QMenu>

#include <vector>

namespace orvia {

/// One item of the actions menu.
struct ConversationAction {
    enum class Section { assign, snooze, other };
    enum class Kind {
        assign,
        snoozeUntilTomorrowMorning,
        snoozeForThreeDays,
        unsnooze,
        mute,
        unmute,
        close,
        reopen
    };

    Section section;
    Kind kind;
    QString text;
    std::optional<QString> agentId = {}; ///< to whom to assign; absent unassigns

    friend bool operator==(const ConversationAction&, const ConversationAction&) = default;
};

/// The teammates to whom @p conversation can be assigned: those who serve its product, without its assignee.
std::vector<Agent> assignableAgents(const Session& session, const Conversation& conversation);
/// The items that the menu offers for @p conversation at @p now, in order.
std::vector<ConversationAction> conversationActions(const Session& session, const Conversation& conversation,
                                                    Instant now);
/// Starts the operation behind an item; snooze times are counted from @p now in the user's time zone.
/// Failures are reported by the session.
void performAction(Session& session, const QString& conversationId, const ConversationAction& action,
                   Instant now);

/// The menu of these items. It is made anew each time it opens.
class ConversationActionsMenu : public QMenu {
    Q_OBJECT

public:
    /// @p session outlives the menu.
    ConversationActionsMenu(Session& session, QString conversationId, std::function<Instant()> now,
                            QWidget* parent = nullptr);

    /// Fills the menu from the session's present state; empty while the conversation is unknown.
    void populate();

private:
    Session& m_session;
    const QString m_conversationId;
    const std::function<Instant()> m_now;
};

} // namespace orvia
