#include "Session/MessageStore.h"

namespace orvia {

const std::vector<Message>& MessageStore::thread(const QString& conversationId) const
{
    static const std::vector<Message> none;
    const auto found = m_threads.constFind(conversationId);
    return found == m_threads.cend() ? none : found->messages;
}

bool MessageStore::contains(const QString& conversationId, const QString& messageId) const
{
    const auto found = m_threads.constFind(conversationId);
    return found != m_threads.cend() && found->ids.contains(messageId);
}

void MessageStore::assign(const QString& conversationId, std::vector<Message> messages)
{
    Thread& thread = m_threads[conversationId];
    thread.messages = std::move(messages);
    thread.ids.clear();
    thread.ids.reserve(static_cast<qsizetype>(thread.messages.size()));
    for (const Message& message : thread.messages)
        thread.ids.insert(message.id);
}

bool MessageStore::append(Message message, const QString& conversationId)
{
    Thread& thread = m_threads[conversationId];
    if (thread.ids.contains(message.id))
        return false;
    thread.ids.insert(message.id);
    thread.messages.push_back(std::move(message));
    return true;
}

} // namespace orvia
