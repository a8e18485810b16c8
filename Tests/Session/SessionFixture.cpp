#include "SessionFixture.h"

namespace orvia::test {

using namespace std::chrono_literals;

Instant minutesAgo(int minutes)
{
    return std::chrono::floor<std::chrono::seconds>(currentInstant()) - std::chrono::minutes(minutes);
}

Agent makeAgent(const QString& id, const QString& name, AgentRole role, std::optional<QStringList> productIds)
{
    Agent agent;
    agent.id = id;
    agent.name = name;
    agent.email = id + "@orvia.example"_L1;
    agent.role = role;
    agent.productIds = std::move(productIds);
    return agent;
}

Conversation makeConversation(const QString& id, int minutes)
{
    Conversation conversation;
    conversation.id = id;
    conversation.productId = u"p1"_s;
    conversation.visitor.name = u"Visitor "_s + id;
    conversation.visitor.email = id + "@example.com"_L1;
    conversation.lastMessageAt = minutesAgo(minutes);
    conversation.lastMessagePreview = u"Hello"_s;
    return conversation;
}

Message makeMessage(const QString& id, const QString& conversationId, MessageSender sender,
                    const QString& body)
{
    Message message;
    message.id = id;
    message.conversationId = conversationId;
    message.sender = sender;
    message.body = body;
    message.createdAt = minutesAgo(1);
    return message;
}

ScriptedAnswer refusal(int status, const QByteArray& text)
{
    return ScriptedAnswer::json("{\"error\":\"" + text + "\"}", status);
}

QByteArray bodyOf(const std::vector<ReceivedRequest>& requests, std::size_t index)
{
    return index < requests.size() ? requests[index].body : QByteArray("(no such request)");
}

QStringList listedIds(const Session& session)
{
    QStringList ids;
    for (const Conversation* conversation : session.filteredConversations())
        ids.append(conversation->id);
    return ids;
}

SessionFixture::SessionFixture(ScriptedService::Transport transport)
    : service(transport)
    , defaults(directory.filePath(u"defaults.ini"_s))
{
    timings.typingClear = 60ms;
    timings.previewClear = 90ms;
    timings.bannerDismiss = 60ms;
    timings.searchDebounce = 30ms;
    timings.sessionRetry = 40ms;
    socketTimings.firstReconnectDelay = 20ms;
    socketTimings.longestReconnectDelay = 100ms;
    network = std::make_unique<NetworkSession>();
    Product product;
    product.id = u"p1"_s;
    product.name = u"Larkspur Coffee"_s;
    product.slug = u"larkspur"_s;
    products = {product};
    teammates = {self, makeAgent(u"a2"_s, u"Dana Whitfield"_s)};
}

SessionFixture::~SessionFixture()
{
    session.reset();
    network.reset();
    PushManager::shared().deviceToken.reset();
}

Session& SessionFixture::makeSession(const QUrl& origin)
{
    session = std::make_unique<Session>(
        Session::Collaborators{defaults, tokens, *network, origin.isEmpty() ? service.url() : origin, timings,
                               [this] { return clock; }, socketTimings});
    return *session;
}

void SessionFixture::scriptInbox(std::vector<Conversation> open, std::vector<Conversation> closed)
{
    service.always("GET", "/v1/agent/conversations",
                   [open = std::move(open), closed = std::move(closed)](const ReceivedRequest& request) {
                       return answerOf(
                           ConversationsResponse{{request.query().contains("status=open") ? open : closed}});
                   });
}

void SessionFixture::scriptEstablishing()
{
    service.always("GET", "/v1/agent/me", answerOf(MeResponse{self, {products}}));
    service.always("GET", "/v1/agent/teammates", ScriptedAnswer::json("{\"teammates\":" + [&] {
                       // The teammates' answer has no shared record; the agents' one has the same list.
                       const QByteArray agents = APIJSON::encoder.encode(AgentsResponse{{teammates}});
                       return agents.mid(qstrlen("{\"agents\":"));
                   }()));
}

Session& SessionFixture::signIn()
{
    tokens.texts.insert(u"agentToken"_s, u"t1"_s);
    scriptEstablishing();
    Session& made = makeSession();
    const auto outcome = runTask(made.bootstrap());
    EXPECT_TRUE(outcome.value);
    return made;
}

void SessionFixture::deliver(const Conversation& conversation)
{
    SocketEvent event;
    event.type = u"conversation"_s;
    event.conversation = conversation;
    session->handle(event);
}

void SessionFixture::deliver(const Message& message)
{
    SocketEvent event;
    event.type = u"message"_s;
    event.message = message;
    session->handle(event);
}

void SessionFixture::deliverTyping(const QString& conversationId, const QString& preview)
{
    SocketEvent event;
    event.type = u"typing"_s;
    event.from = u"visitor"_s;
    event.conversationId = conversationId;
    event.preview = preview;
    session->handle(event);
}

void SessionFixture::deliverViewers(const QString& conversationId, const QStringList& names)
{
    SocketEvent event;
    event.type = u"viewers"_s;
    event.conversationId = conversationId;
    event.agents.emplace();
    for (const QString& name : names)
        event.agents->push_back({u"viewer-"_s + QString::number(event.agents->size()), name});
    session->handle(event);
}

Session& SessionFixture::connectLive()
{
    Session& made = signIn();
    EXPECT_TRUE(waitUntil([&] { return made.socketConnected(); }));
    EXPECT_TRUE(waitUntil([&] { return service.channel() && !service.channel()->texts().isEmpty(); }));
    return made;
}

} // namespace orvia::test
