#pragma once

#include "Models/Message.h"

#include <QHash>
#include <QSet>

#include <list>
#include <optional>
#include <vector>

namespace orvia {

/// The loaded threads by conversation id. A thread keeps the order in which its messages arrived.
class MessageStore {
public:
    MessageStore() = default;
    Q_DISABLE_COPY_MOVE(MessageStore)

    /// The thread of a conversation, empty when none is loaded. Valid until the store changes.
    const std::vector<Message>& thread(const QString& conversationId) const;
    bool contains(const QString& conversationId, const QString& messageId) const;
    QStringList conversationIds() const { return m_threads.keys(); }
    /// Of all threads together.
    qsizetype messageCount() const { return m_messageCount; }

    /// Replaces the thread whole; answers whether it is a different one now.
    bool assign(const QString& conversationId, std::vector<Message> messages);
    /// Adds @p message at the end unless its id is in the thread already; answers whether it was added.
    bool append(Message message, const QString& conversationId);
    /// Forgets whole threads, first the one that was neither assigned nor added to for longest, until at most
    /// @p messageLimit messages are left. The thread of @p kept and the one that was used last stay, however
    /// long they are. Answers whose threads were forgotten.
    QStringList trim(qsizetype messageLimit, const std::optional<QString>& kept);
    void clear();

private:
    struct Thread {
        std::vector<Message> messages;
        QSet<QString> ids;
        std::list<QString>::iterator use; ///< its place in m_uses
    };

    Thread& use(const QString& conversationId);

    QHash<QString, Thread> m_threads;
    std::list<QString> m_uses; ///< the ids of all threads, the one used last first
    qsizetype m_messageCount = 0;
};

} // namespace orvia
