#include "DemoService/Desk.h"

#include <algorithm>

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

SocketEvent eventOf(QLatin1StringView type, const Thread& thread)
{
    SocketEvent event;
    event.type = type;
    event.conversationId = thread.conversation.id;
    return event;
}

QString previewOf(const Message& message)
{
    if (!message.body.isEmpty())
        return message.body;
    return message.attachment ? message.attachment->name.value_or(QString()) : QString();
}

} // namespace

Desk::Desk(Store& store, LiveChannel& live)
    : m_store(store)
    , m_live(live)
{
}

Message Desk::post(Thread& thread, MessageDraft draft)
{
    Conversation& conversation = thread.conversation;
    Message message;
    message.id = m_store.newId("m"_L1);
    message.conversationId = conversation.id;
    message.sender = draft.sender;
    message.agentId = std::move(draft.agentId);
    message.via = draft.via;
    message.mentions = std::move(draft.mentions);
    message.body = std::move(draft.body);
    message.attachment = std::move(draft.attachment);
    message.createdAt = m_store.now();

    if (draft.sender != MessageSender::system) {
        conversation.lastMessageAt = message.createdAt;
        conversation.lastMessagePreview = previewOf(message);
    }
    if (draft.sender == MessageSender::visitor) {
        conversation.status = ConversationStatus::open;
        conversation.snoozedUntil.reset();
        conversation.visitorUnread = 0;
        conversation.visitorLastReadAt = message.createdAt;
        conversation.agentUnread = conversation.agentUnread.value_or(0) + 1;
    } else if (draft.sender == MessageSender::agent) {
        conversation.visitorUnread = conversation.visitorUnread.value_or(0) + 1;
        conversation.agentUnread = 0;
        conversation.agentLastReadAt = message.createdAt;
    }
    thread.messages.push_back(message);

    SocketEvent event = eventOf("message"_L1, thread);
    event.message = message;
    m_live.send(event, audienceOf(thread));
    announce(thread);
    if (onPosted)
        onPosted(thread, message);
    return message;
}

Thread& Desk::startConversation(const QString& productId, Visitor visitor)
{
    Conversation conversation;
    conversation.id = m_store.newId("c"_L1);
    conversation.productId = productId;
    conversation.visitor = std::move(visitor);
    conversation.createdAt = m_store.now();
    conversation.lastMessageAt = conversation.createdAt;
    Thread& thread = m_store.addThread(std::move(conversation));
    announce(thread);
    return thread;
}

void Desk::setStatus(Thread& thread, ConversationStatus status, const Agent& by)
{
    if (thread.conversation.status == status)
        return;
    thread.conversation.status = status;
    const bool closed = status == ConversationStatus::closed;
    systemMessage(thread,
                  (closed ? u"Conversation closed by %1"_s : u"Conversation reopened by %1"_s).arg(by.name));
}

void Desk::assign(Thread& thread, const Agent* assignee)
{
    Conversation& conversation = thread.conversation;
    const std::optional<QString> id = assignee ? std::optional(assignee->id) : std::nullopt;
    if (conversation.assigneeId == id)
        return;
    conversation.assigneeId = id;
    conversation.assignedAt = id ? std::optional(m_store.now()) : std::nullopt;
    systemMessage(thread, assignee ? u"Conversation assigned to %1"_s.arg(assignee->name)
                                   : u"Conversation unassigned"_s);
}

void Desk::snooze(Thread& thread, std::optional<Instant> until)
{
    thread.conversation.snoozedUntil = until;
    announce(thread);
}

void Desk::rate(Thread& thread, Rating rating)
{
    thread.conversation.rating = std::move(rating);
    announce(thread);
}

void Desk::readByAgent(Thread& thread)
{
    thread.conversation.agentUnread = 0;
    thread.conversation.agentLastReadAt = m_store.now();
    m_store.touch(thread);
    SocketEvent event = eventOf("read"_L1, thread);
    event.by = u"agent"_s;
    event.at = thread.conversation.agentLastReadAt;
    m_live.send(event, audienceOf(thread));
}

void Desk::readByVisitor(Thread& thread)
{
    thread.conversation.visitorUnread = 0;
    thread.conversation.visitorLastReadAt = m_store.now();
    m_store.touch(thread);
    SocketEvent event = eventOf("read"_L1, thread);
    event.by = u"visitor"_s;
    event.at = thread.conversation.visitorLastReadAt;
    m_live.send(event, audienceOf(thread));
}

void Desk::visitorTyping(Thread& thread, const std::optional<QString>& preview)
{
    SocketEvent event = eventOf("typing"_L1, thread);
    event.from = u"visitor"_s;
    event.preview = preview;
    m_live.send(event, audienceOf(thread));
}

void Desk::agentTyping(Thread& thread, const Agent& agent, const QString& preview)
{
    SocketEvent event = eventOf("typing"_L1, thread);
    event.from = u"agent"_s;
    event.preview = preview;
    event.agentId = agent.id;
    event.agentName = agent.name;
    const auto concerned = audienceOf(thread);
    m_live.send(event, [&](const QString& id) { return id != agent.id && concerned(id); });
}

void Desk::announce(Thread& thread)
{
    m_store.touch(thread);
    SocketEvent event;
    event.type = u"conversation"_s;
    event.conversation = thread.conversation;
    m_live.send(event, audienceOf(thread));
}

void Desk::announceViewers(const QString& conversationId)
{
    Thread* const thread = m_store.thread(conversationId);
    if (!thread)
        return;
    SocketEvent event = eventOf("viewers"_L1, *thread);
    event.agents.emplace();
    for (const QString& id : m_live.viewers(conversationId)) {
        if (const Account* account = m_store.account(id))
            event.agents->push_back({id, account->agent.name});
    }
    m_live.send(event, audienceOf(*thread));
}

LiveChannel::Audience Desk::audienceOf(const Thread& thread) const
{
    return [store = &m_store, productId = thread.conversation.productId](const QString& agentId) {
        const Account* const account = store->account(agentId);
        return account && account->serves(productId);
    };
}

void Desk::systemMessage(Thread& thread, const QString& text)
{
    MessageDraft draft;
    draft.sender = MessageSender::system;
    draft.body = text;
    post(thread, std::move(draft));
}

} // namespace orvia::demo
