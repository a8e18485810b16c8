#pragma once

#include "Models/Conversation.h"

#include <QHash>

#include <deque>
#include <vector>

namespace orvia {

/// Conversations in inbox order, found by id at constant cost. Identifiers are unique; of several records
/// with one id in a loaded page the lookup answers the first. A record stays where it is until the store is
/// replaced, so that adding one costs the same however many there are.
class ConversationStore {
public:
    ConversationStore() = default;
    /// The conversations of the pages, one page after the other.
    explicit ConversationStore(std::vector<std::vector<Conversation>> pages);

    const std::deque<Conversation>& all() const { return m_conversations; }
    qsizetype size() const { return static_cast<qsizetype>(m_conversations.size()); }
    bool isEmpty() const { return m_conversations.empty(); }

    /// The conversation with this id, or null. Valid until the store is replaced.
    const Conversation* find(const QString& id) const;
    /// The position of the conversation with this id, or -1.
    qsizetype indexOf(const QString& id) const;
    const Conversation& at(qsizetype index) const { return m_conversations[static_cast<std::size_t>(index)]; }

    /// Adds a conversation whose id is not in the store.
    void append(Conversation conversation);
    void replace(qsizetype index, Conversation conversation);
    /// The record at @p index, to change anything but its id in place.
    Conversation& mutableAt(qsizetype index) { return m_conversations[static_cast<std::size_t>(index)]; }

private:
    std::deque<Conversation> m_conversations;
    QHash<QString, qsizetype> m_positions;
};

} // namespace orvia
