#include "Session/ConversationStore.h"

#include <algorithm>

namespace orvia {

ConversationStore::ConversationStore(std::vector<std::vector<Conversation>> pages)
    : m_pages(std::move(pages))
{
    std::size_t count = 0;
    for (const std::vector<Conversation>& page : m_pages)
        count += page.size();
    m_order.reserve(count);
    for (std::vector<Conversation>& page : m_pages) {
        for (Conversation& conversation : page)
            m_order.push_back(&conversation);
    }
    m_positions.reserve(size());
    // Backwards, so that the first of several records with one id is the one found.
    for (qsizetype index = size() - 1; index >= 0; --index)
        m_positions.insert(at(index).id, index);
}

bool operator==(const ConversationStore& left, const ConversationStore& right)
{
    return std::ranges::equal(left.all(), right.all());
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
    m_order.push_back(&m_added.emplace_back(std::move(conversation)));
}

void ConversationStore::replace(qsizetype index, Conversation conversation)
{
    mutableAt(index) = std::move(conversation);
}

} // namespace orvia
