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

bool MessageStore::assign(const QString& conversationId, std::vector<Message> messages)
{
    if (messages.empty() && !m_threads.contains(conversationId))
        return false;
    Thread& thread = use(conversationId);
    if (thread.messages == messages)
        return false;
    m_messageCount += std::ssize(messages) - std::ssize(thread.messages);
    thread.messages = std::move(messages);
    thread.ids.clear();
    thread.ids.reserve(std::ssize(thread.messages));
    for (const Message& message : thread.messages)
        thread.ids.insert(message.id);
    return true;
}

bool MessageStore::append(Message message, const QString& conversationId)
{
    Thread& thread = use(conversationId);
    if (thread.ids.contains(message.id))
        return false;
    thread.ids.insert(message.id);
    thread.messages.push_back(std::move(message));
    ++m_messageCount;
    return true;
}

QStringList MessageStore::trim(qsizetype messageLimit, const std::optional<QString>& kept)
{
    QStringList forgotten;
    for (auto oldest = m_uses.end(); m_messageCount > messageLimit && oldest != m_uses.begin();) {
        --oldest;
        if (oldest == m_uses.begin() || *oldest == kept)
            continue;
        const auto thread = m_threads.constFind(*oldest);
        m_messageCount -= std::ssize(thread->messages);
        m_threads.erase(thread);
        forgotten.append(*oldest);
        oldest = m_uses.erase(oldest);
    }
    return forgotten;
}

void MessageStore::clear()
{
    m_threads.clear();
    m_uses.clear();
    m_messageCount = 0;
}

/// The thread, made if there is none, as the one used last.
MessageStore::Thread& MessageStore::use(const QString& conversationId)
{
    const auto found = m_threads.find(conversationId);
    if (found != m_threads.end()) {
        m_uses.splice(m_uses.begin(), m_uses, found->use);
        return *found;
    }
    m_uses.push_front(conversationId);
    return *m_threads.insert(conversationId, {{}, {}, m_uses.begin()});
}

} // namespace orvia
