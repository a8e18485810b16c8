#pragma once

#include "Session/SessionFixture.h"
#include "Views/ConversationListView/ConversationListModel.h"

namespace orvia::test {

class InboxFixture : public SessionFixture {
protected:
    /// A signed-in session with these open conversations.
    Session& sessionWith(std::vector<Conversation> open)
    {
        scriptInbox(std::move(open));
        return signIn();
    }

    /// The same with @p count conversations "c0", "c1", ..., each a minute older than the one before.
    void sessionWithMany(int count)
    {
        sessionWith({});
        const Instant newest = minutesAgo(1);
        for (int number = 0; number < count; ++number) {
            Conversation conversation = makeConversation(u"c"_s + QString::number(number));
            conversation.lastMessageAt = newest - std::chrono::minutes(number);
            deliver(conversation);
        }
    }

    /// A visitor's message comes over the live channel.
    void deliverMessage(const QString& conversationId, Instant at)
    {
        Message message = makeMessage(u"live"_s + QString::number(++m_messages), conversationId);
        message.createdAt = at;
        deliver(message);
    }

    /// The conversation as the session has it, to be changed and delivered.
    Conversation known(const QString& id) const { return *session->conversations().find(id); }

    static QString idAt(const QModelIndex& index)
    {
        return index.data(ConversationListModel::conversationIdRole).toString();
    }

private:
    int m_messages = 0;
};

} // namespace orvia::test
