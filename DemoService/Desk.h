#pragma once

#include "DemoService/LiveChannel.h"
#include "DemoService/Store.h"

namespace orvia::demo {

/// What a message is before the service accepts it.
struct MessageDraft {
    MessageSender sender = MessageSender::visitor;
    QString body;
    std::optional<QString> agentId;
    std::optional<MessageVia> via;
    std::optional<QStringList> mentions;
    std::optional<Attachment> attachment;
};

/// What happens in a conversation: each operation changes the records and tells the agents who serve the
/// product. Both routes and scripted visitors go through here, so that they follow the same rules.
class Desk {
public:
    Desk(Store& store, LiveChannel& live);

    /// Called after a message has been accepted and announced.
    std::function<void(const Thread& thread, const Message& message)> onPosted;

    /// A visitor's message reopens the conversation, ends its snooze and counts as unread for the agents; an
    /// agent's reply counts as unread for the visitor. Notes and system messages count for nobody.
    Message post(Thread& thread, MessageDraft draft);
    /// A conversation that begins now, without messages.
    Thread& startConversation(const QString& productId, Visitor visitor);

    void setStatus(Thread& thread, ConversationStatus status, const Agent& by);
    void assign(Thread& thread, const Agent* assignee);
    void snooze(Thread& thread, std::optional<Instant> until);
    void rate(Thread& thread, Rating rating);

    void readByAgent(Thread& thread);
    void readByVisitor(Thread& thread);
    /// An empty preview says that the visitor has cleared the text; an absent one only that keys are pressed.
    void visitorTyping(Thread& thread, const std::optional<QString>& preview);
    void agentTyping(Thread& thread, const Agent& agent, const QString& preview);

    /// Tells the agents that the conversation has changed.
    void announce(Thread& thread);
    void announceViewers(const QString& conversationId);
    /// The agents who serve the conversation's product.
    LiveChannel::Audience audienceOf(const Thread& thread) const;

private:
    void systemMessage(Thread& thread, const QString& text);

    Store& m_store;
    LiveChannel& m_live;
};

} // namespace orvia::demo
