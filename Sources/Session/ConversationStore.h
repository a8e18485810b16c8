#pragma once

#include "Models/Conversation.h"

#include <QHash>

#include <deque>
#include <ranges>
#include <vector>

namespace orvia {

/// Conversations in inbox order, found by id at constant cost. Identifiers are unique; of several records
/// with one id in a loaded page the lookup answers the first. A record stays where it is until the store is
/// replaced: what was loaded is never moved, and adding one costs the same however many there are.
class ConversationStore {
public:
    ConversationStore() = default;
    /// The conversations of the pages, one page after the other.
    explicit ConversationStore(std::vector<std::vector<Conversation>> pages);

    ConversationStore(ConversationStore&&) = default;
    ConversationStore& operator=(ConversationStore&&) = default;

    friend bool operator==(const ConversationStore& left, const ConversationStore& right);

    /// A range of all records, random access included.
    auto all() const
    {
        return m_order | std::views::transform([](const Conversation* known) -> auto& { return *known; });
    }
    qsizetype size() const { return static_cast<qsizetype>(m_order.size()); }
    bool isEmpty() const { return m_order.empty(); }

    /// The conversation with this id, or null. Valid until the store is replaced.
    const Conversation* find(const QString& id) const;
    /// The position of the conversation with this id, or -1.
    qsizetype indexOf(const QString& id) const;
    const Conversation& at(qsizetype index) const { return *m_order[static_cast<std::size_t>(index)]; }

    /// Adds a conversation whose id is not in the store.
    void append(Conversation conversation);
    void replace(qsizetype index, Conversation conversation);
    /// The record at @p index, to change anything but its id in place.
    Conversation& mutableAt(qsizetype index) { return *m_order[static_cast<std::size_t>(index)]; }

private:
    std::vector<std::vector<Conversation>> m_pages;
    std::deque<Conversation> m_added;
    std::vector<Conversation*> m_order; ///< every record of the two
    QHash<QString, qsizetype> m_positions;
};

} // namespace orvia
