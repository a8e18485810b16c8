#include "Session/Fields.h"

/// What the live channel brings, the short-lived typing and draft marks, and the typing frames sent back.
namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// Stores @p value and answers whether it is a different one.
template <class Value>
bool update(std::optional<Value>& field, Value value)
{
    if (field == value)
        return false;
    field = std::move(value);
    return true;
}

} // namespace

template <class Change>
void Session::changeConversation(const QString& id, Change change)
{
    const qsizetype index = m_conversations.indexOf(id);
    if (index >= 0 && change(m_conversations.mutableAt(index)))
        Q_EMIT conversationChanged(index);
}

void Session::handle(const SocketEvent& event)
{
    if (event.type == "message"_L1)
        handleMessage(event);
    else if (event.type == "conversation"_L1)
        handleConversation(event);
    else if (event.type == "typing"_L1)
        handleTyping(event);
    else if (event.type == "viewers"_L1)
        handleViewers(event);
    else if (event.type == "read"_L1)
        handleRead(event);
}

void Session::handleMessage(const SocketEvent& event)
{
    if (!event.message)
        return;
    const Message& message = *event.message;
    const QString conversationId = event.conversationId.value_or(message.conversationId);
    const bool isSelected = m_selectedConversationId == conversationId;
    const bool fromVisitor = message.sender == MessageSender::visitor;

    append(message, conversationId);

    changeConversation(conversationId, [&](Conversation& conversation) {
        const bool namesAttachment = message.body.isEmpty() && message.attachment && message.attachment->name;
        bool changed = update(conversation.lastMessagePreview,
                              namesAttachment ? *message.attachment->name : message.body);
        changed |= update(conversation.lastMessageAt, message.createdAt.value_or(currentInstant()));
        if (fromVisitor && !isSelected)
            changed |= update(conversation.agentUnread, conversation.agentUnread.value_or(0) + 1);
        return changed;
    });
    if (isSelected && fromVisitor)
        m_socket->sendRead(conversationId);
}

void Session::handleConversation(const SocketEvent& event)
{
    if (!event.conversation)
        return;
    Conversation conversation = *event.conversation;
    if (m_selectedConversationId == conversation.id)
        conversation.agentUnread = 0;
    upsert(std::move(conversation));
}

void Session::handleTyping(const SocketEvent& event)
{
    if (!event.conversationId || !event.from)
        return;
    const QString& conversationId = *event.conversationId;
    const bool hasText = event.preview && !event.preview->isEmpty();
    if (*event.from == "visitor"_L1) {
        if (hasText)
            markPreview(conversationId, *event.preview);
        else if (event.preview)
            clearPreview(conversationId);
        markTyping(conversationId);
    } else if (*event.from == "agent"_L1 && event.agentId) {
        const bool isOwnTyping = m_agent && m_agent->id == *event.agentId;
        if (isOwnTyping)
            return;
        if (hasText) {
            markAgentPreview(conversationId,
                             {*event.agentId, event.agentName.value_or(QString()), *event.preview});
        } else {
            clearAgentPreview(conversationId, *event.agentId);
        }
    }
}

void Session::handleViewers(const SocketEvent& event)
{
    if (!event.conversationId)
        return;
    std::vector<ViewerAgent> teammates;
    QSet<QString> seen;
    if (m_agent)
        seen.insert(m_agent->id);
    for (const ViewerAgent& viewer : event.agents.value_or(std::vector<ViewerAgent>())) {
        if (seen.contains(viewer.id))
            continue;
        seen.insert(viewer.id);
        teammates.push_back(viewer);
    }
    if (teammates.empty())
        removeEntry(m_viewers, *event.conversationId, &Session::viewersChanged);
    else
        setEntry(m_viewers, *event.conversationId, std::move(teammates), &Session::viewersChanged);
}

void Session::handleRead(const SocketEvent& event)
{
    if (!event.conversationId || !event.by)
        return;
    changeConversation(*event.conversationId, [&](Conversation& conversation) {
        auto& mark =
            *event.by == "visitor"_L1 ? conversation.visitorLastReadAt : conversation.agentLastReadAt;
        return update(mark, event.at.value_or(currentInstant()));
    });
}

void Session::markTyping(const QString& conversationId)
{
    m_typingClear.start(conversationId);
    if (m_typingConversations.contains(conversationId))
        return;
    m_typingConversations.insert(conversationId);
    Q_EMIT typingConversationChanged(conversationId);
}

void Session::unmarkTyping(const QString& conversationId)
{
    if (m_typingConversations.remove(conversationId))
        Q_EMIT typingConversationChanged(conversationId);
}

void Session::markPreview(const QString& conversationId, const QString& preview)
{
    m_previewClear.start(conversationId);
    setEntry(m_typingPreviews, conversationId, preview, &Session::typingPreviewChanged);
}

void Session::clearPreview(const QString& conversationId)
{
    m_previewClear.cancel(conversationId);
    removeEntry(m_typingPreviews, conversationId, &Session::typingPreviewChanged);
}

void Session::markAgentPreview(const QString& conversationId, const AgentDraft& draft)
{
    m_agentPreviewClear.start(conversationId);
    setEntry(m_agentPreviews, conversationId, draft, &Session::agentPreviewChanged);
}

void Session::clearAgentPreview(const QString& conversationId, const QString& agentId)
{
    const auto stored = m_agentPreviews.constFind(conversationId);
    if (stored == m_agentPreviews.cend() || stored->agentId != agentId)
        return;
    m_agentPreviewClear.cancel(conversationId);
    removeEntry(m_agentPreviews, conversationId, &Session::agentPreviewChanged);
}

void Session::sendTyping(const QString& conversationId, const QString& preview)
{
    const auto last = m_lastTypingSentAt.constFind(conversationId);
    if (preview.isEmpty()) {
        if (last == m_lastTypingSentAt.cend())
            return;
        m_lastTypingSentAt.erase(last);
        m_socket->sendTyping(conversationId, {});
        return;
    }
    const Instant now = m_now();
    if (last != m_lastTypingSentAt.cend()
        && std::chrono::duration<double>(now - *last).count() < m_timings.typingThrottle)
        return;
    m_lastTypingSentAt.insert(conversationId, now);
    m_socket->sendTyping(conversationId, preview);
}

} // namespace orvia
