#include "Session/ConversationStore.h"

namespace orvia {

ConversationStore::ConversationStore(std::vector<std::vector<Conversation>> pages)
{
    for (std::vector<Conversation>& page : pages)
        m_conversations.insert(m_conversations.end(), std::make_move_iterator(page.begin()),
                               std::make_move_iterator(page.end()));
    m_positions.reserve(size());
    // Backwards, so that the first of several records with one id is the one found.
    for (qsizetype index = size() - 1; index >= 0; --index)
        m_positions.insert(at(index).id, index);
}

const Conversation* ConversationStore::find(const QString& id) const
{
    const qsizetype index = indexOf(id);
    return index < 0 ? nullptr : &at(index);
}

qsizetype ConversationStore::indexOf(const QString& id) const
{
    return m_positions.value(id, -1);
}

void ConversationStore::append(Conversation conversation)
{
    m_positions.insert(conversation.id, size());
    m_conversations.push_back(std::move(conversation));
}

void ConversationStore::replace(qsizetype index, Conversation conversation)
{
    m_conversations[static_cast<std::size_t>(index)] = std::move(conversation);
}

} // namespace orvia
