#include "Benchmarks/Sample.h"

#include "Models/APIJSON.h"
#include "Models/Responses.h"

#include <array>

namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

const Instant firstDay = std::chrono::sys_days(std::chrono::year(2024) / 5 / 1);

QString identifier(QStringView kind, int number)
{
    return u"66321f%1%2"_s.arg(kind).arg(number, 16, 16, QChar(u'0'));
}

VisitorMeta sampleMeta(int number)
{
    const std::array<VisitorGeo, 3> places{
        VisitorGeo{u"Graz"_s, u"Styria"_s, u"Austria"_s, u"AT"_s, u"Europe/Vienna"_s, u"Example Telecom"_s},
        VisitorGeo{u"São Paulo"_s, u"São Paulo"_s, u"Brazil"_s, u"BR"_s, u"America/Sao_Paulo"_s,
                   u"Example Net"_s},
        VisitorGeo{u"大阪"_s, u"Ōsaka"_s, u"Japan"_s, u"JP"_s, u"Asia/Tokyo"_s, u"Example KK"_s}};
    VisitorMeta meta;
    meta.url = u"https://shop.example/articles/%1?from=newsletter"_s.arg(number);
    meta.referrer = u"https://search.example/?q=article+%1"_s.arg(number);
    meta.userAgent = u"Mozilla/5.0 (X11; Linux x86_64; rv:124.0) Gecko/20100101 Firefox/124.0"_s;
    meta.ip = u"192.0.2.%1"_s.arg(number % 256);
    meta.geo = places[static_cast<std::size_t>(number % 3)];
    meta.language = u"en-GB"_s;
    meta.screen = u"1920x1080"_s;
    meta.timezoneOffset = -120;
    meta.pages.emplace();
    for (int page = 0; page <= number % 4; ++page) {
        meta.pages->push_back({u"https://shop.example/articles/%1"_s.arg(page),
                               u"Article %1 – Shop"_s.arg(page),
                               firstDay + std::chrono::minutes(number + page)});
    }
    meta.data.emplace().pairs = {{u"plan"_s, u"pro"_s},
                                 {u"customerSince"_s, u"2019-03-01"_s},
                                 {u"orders"_s, QString::number(number % 50)},
                                 {u"newsletter"_s, u"true"_s}};
    return meta;
}

SocketEvent messageEvent(const QString& conversationId, int number)
{
    SocketEvent event;
    event.type = u"message"_s;
    event.conversationId = conversationId;
    auto& message = event.message.emplace();
    message.id = identifier(u"aa", number);
    message.conversationId = conversationId;
    message.sender = number % 3 == 0 ? MessageSender::agent : MessageSender::visitor;
    message.body = u"Where is my parcel? It was sent %1 days ago."_s.arg(number % 30);
    message.createdAt = firstDay + std::chrono::seconds(number);
    return event;
}

SocketEvent typingEvent(const QString& conversationId, int number)
{
    SocketEvent event;
    event.type = u"typing"_s;
    event.conversationId = conversationId;
    event.from = u"visitor"_s;
    event.preview = u"Hello, I have a question about order %1"_s.arg(number);
    return event;
}

SocketEvent readEvent(const QString& conversationId, int number)
{
    SocketEvent event;
    event.type = u"read"_s;
    event.conversationId = conversationId;
    event.by = u"visitor"_s;
    event.at = firstDay + std::chrono::seconds(number);
    return event;
}

SocketEvent conversationEvent(int conversation, int number)
{
    SocketEvent event;
    event.type = u"conversation"_s;
    event.conversation = sampleConversation(conversation);
    event.conversation->lastMessageAt = firstDay + std::chrono::seconds(number);
    return event;
}

} // namespace

Conversation sampleConversation(int number)
{
    Conversation conversation;
    conversation.id = identifier(u"cc", number);
    conversation.productId = identifier(u"dd", number % 3);
    conversation.visitor.name = u"Visitor %1"_s.arg(number);
    conversation.visitor.email = u"visitor%1@mail.example"_s.arg(number);
    conversation.visitor.meta = sampleMeta(number);
    conversation.status = number % 5 == 4 ? ConversationStatus::closed : ConversationStatus::open;
    if (number % 2 == 0) {
        conversation.assigneeId = identifier(u"ee", number % 7);
        conversation.assignedAt = firstDay + std::chrono::minutes(number);
    }
    conversation.lastMessageAt = firstDay + std::chrono::seconds((number * 7919LL) % 1'000'000);
    conversation.lastMessagePreview = u"Thank you, that “just works” now – see you 👋 %1"_s.arg(number);
    conversation.visitorUnread = number % 3;
    conversation.agentUnread = number % 4;
    conversation.visitorLastReadAt = firstDay + std::chrono::minutes(number + 5);
    conversation.agentLastReadAt = firstDay + std::chrono::minutes(number + 6);
    if (number % 10 == 0)
        conversation.rating = Rating{5, u"Quick and friendly"_s};
    conversation.createdAt = firstDay;
    return conversation;
}

QByteArray inboxPage(int count)
{
    ConversationsResponse page;
    for (int number = 0; number < count; ++number)
        page.conversations.wrappedValue.push_back(sampleConversation(number));
    return APIJSON::encoder.encode(page);
}

std::vector<SocketEvent> sampleEvents(int count, int inboxSize, int active)
{
    std::vector<SocketEvent> events;
    for (int number = 0; number < count; ++number) {
        const int conversation = static_cast<int>((number * 7919LL) % active) * (inboxSize / active);
        const QString id = identifier(u"cc", conversation);
        switch (number % 4) {
        case 0:
            events.push_back(messageEvent(id, number));
            break;
        case 1:
            events.push_back(typingEvent(id, number));
            break;
        case 2:
            events.push_back(readEvent(id, number));
            break;
        default:
            events.push_back(conversationEvent(conversation, number));
        }
    }
    return events;
}

} // namespace orvia::bench
