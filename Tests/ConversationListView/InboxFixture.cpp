#include "InboxFixture.h"

namespace orvia::test {

Session& InboxFixture::sessionWith(std::vector<Conversation> open, std::vector<Conversation> closed)
{
    for (Conversation& conversation : closed)
        conversation.status = ConversationStatus::closed;
    scriptInbox(std::move(open), std::move(closed));
    return signIn();
}

Session& InboxFixture::sessionWithMany(int count)
{
    Session& made = sessionWith({});
    const Instant newest = minutesAgo(1);
    for (int number = 0; number < count; ++number) {
        Conversation conversation = makeConversation(u"c"_s + QString::number(number));
        conversation.lastMessageAt = newest - std::chrono::minutes(number);
        deliver(conversation);
    }
    return made;
}

void InboxFixture::deliverMessage(const QString& conversationId, Instant at, const QString& body)
{
    static int number = 0;
    Message message =
        makeMessage(u"live"_s + QString::number(++number), conversationId, MessageSender::visitor, body);
    message.createdAt = at;
    deliver(message);
}

Conversation InboxFixture::known(const QString& id) const
{
    const Conversation* found = session->conversations().find(id);
    EXPECT_TRUE(found) << id.toStdString();
    return found ? *found : Conversation();
}

} // namespace orvia::test
