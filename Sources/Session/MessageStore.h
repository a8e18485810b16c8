#pragma once

#include "Models/Message.h"

#include <QHash>
#include <QSet>

#include <vector>

namespace orvia {

/// The loaded threads by conversation id. A thread keeps the order in which its messages arrived.
class MessageStore {
public:
    /// The thread of a conversation, empty when none is loaded. Valid until the store changes.
    const std::vector<Message>& thread(const QString& conversationId) const;
    bool contains(const QString& conversationId, const QString& messageId) const;
    QStringList conversationIds() const { return m_threads.keys(); }

    /// Replaces the thread whole.
    void assign(const QString& conversationId, std::vector<Message> messages);
    /// Adds @p message at the end unless its id is in the thread already; answers whether it was added.
    bool append(Message message, const QString& conversationId);
    void clear() { m_threads.clear(); }

private:
    struct Thread {
        std::vector<Message> messages;
        QSet<QString> ids;
    };

    QHash<QString, Thread> m_threads;
};

} // namespace orvia
