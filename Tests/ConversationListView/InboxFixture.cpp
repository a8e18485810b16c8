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

void InboxFixture::deliver(const Conversation& conversation)
{
    SocketEvent event;
    event.type = u"conversation"_s;
    event.conversation = conversation;
    session->handle(event);
}

void InboxFixture::deliverMessage(const QString& conversationId, Instant at, const QString& body)
{
    static int number = 0;
    SocketEvent event;
    event.type = u"message"_s;
    event.message =
        makeMessage(u"live"_s + QString::number(++number), conversationId, MessageSender::visitor, body);
    event.message->createdAt = at;
    session->handle(event);
}

void InboxFixture::deliverTyping(const QString& conversationId, const QString& preview)
{
    SocketEvent event;
    event.type = u"typing"_s;
    event.from = u"visitor"_s;
    event.conversationId = conversationId;
    event.preview = preview;
    session->handle(event);
}

void InboxFixture::deliverViewers(const QString& conversationId, const QStringList& names)
{
    SocketEvent event;
    event.type = u"viewers"_s;
    event.conversationId = conversationId;
    event.agents.emplace();
    for (const QString& name : names)
        event.agents->push_back({u"viewer-"_s + QString::number(event.agents->size()), name});
    session->handle(event);
}

Conversation InboxFixture::known(const QString& id) const
{
    const Conversation* found = session->conversations().find(id);
    EXPECT_TRUE(found) << id.toStdString();
    return found ? *found : Conversation();
}

} // namespace orvia::test
