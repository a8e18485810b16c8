#include "Session/Answers.h"
#include "Session/Fields.h"

/// The agent's notification mode and muted conversations, and opening a conversation from outside.
namespace orvia {

QCoro::Task<void> Session::setNotifyMode(NotifyMode mode)
{
    auto updated = co_await answerTo(client().updatePreferences(mode));
    if (!updated)
        co_return;
    assignField(m_agent, std::move(updated), &Session::agentChanged);
    cacheIdentity();
}

QCoro::Task<void> Session::setMuted(QString conversationId, bool muted)
{
    const auto accepted = co_await answerTo(client().setMuted(conversationId, muted));
    if (!accepted || !m_agent)
        co_return;
    Agent updated = *m_agent;
    QStringList mutedIds = updated.mutedConversationIds.value_or(QStringList());
    mutedIds.removeAll(conversationId);
    if (muted)
        mutedIds.append(conversationId);
    updated.mutedConversationIds = std::move(mutedIds);
    assignField(m_agent, std::optional(std::move(updated)), &Session::agentChanged);
    cacheIdentity();
}

bool Session::isMuted(const QString& conversationId) const
{
    return m_agent && m_agent->mutedConversationIds
           && m_agent->mutedConversationIds->contains(conversationId);
}

void Session::openFromDeepLink(const QString& conversationId)
{
    if (const Conversation* known = m_conversations.find(conversationId))
        revealConversation(*known);
    else
        setSelectedConversationId(conversationId);
}

} // namespace orvia
