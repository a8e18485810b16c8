#include "DemoFixture.h"

#include <QJsonDocument>
#include <QNetworkRequest>

namespace orvia::test {

Listener::Listener(const QUrl& origin, const QString& token)
{
    socket.onEvent = [this](const SocketEvent& event) { events.push_back(event); };
    socket.onConnectionChange = [this](bool isConnected) { connected = isConnected; };
    socket.connect(origin, token);
}

std::vector<SocketEvent> Listener::ofType(QLatin1StringView type) const
{
    std::vector<SocketEvent> matching;
    std::copy_if(events.begin(), events.end(), std::back_inserter(matching),
                 [type](const SocketEvent& event) { return event.type == type; });
    return matching;
}

bool Listener::waitFor(QLatin1StringView type, std::size_t count) const
{
    return waitUntil([&] { return ofType(type).size() >= count; });
}

DemoTest::DemoTest()
    : now(*instantFromISO8601("2024-05-01T12:00:00Z"))
    , service(options(now))
{
    EXPECT_TRUE(service.listen());
}

demo::Options DemoTest::options(Instant& clock)
{
    demo::Options options;
    options.clock = [&clock] { return clock; };
    return options;
}

APIClient DemoTest::client(const QString& agentId)
{
    return APIClient(service.origin(), service.tokenOf(agentId), &session);
}

std::unique_ptr<Listener> DemoTest::listener(const QString& agentId)
{
    auto listener = std::make_unique<Listener>(service.origin(), service.tokenOf(agentId));
    EXPECT_TRUE(waitUntil([&] { return listener->connected; }));
    return listener;
}

NetworkSession::Answer DemoTest::request(const QByteArray& method, const QString& pathAndQuery,
                                         std::optional<QByteArray> body, const QString& agentId,
                                         const QByteArray& contentType)
{
    QNetworkRequest request(QUrl(service.origin().toString() + pathAndQuery));
    if (!agentId.isEmpty())
        request.setRawHeader("Authorization", "Bearer " + service.tokenOf(agentId).toLatin1());
    if (body)
        request.setHeader(QNetworkRequest::ContentTypeHeader, contentType);
    const auto outcome = runTask(session.perform(request, method, std::move(body), std::identity()));
    return outcome.value.value_or(NetworkSession::Answer());
}

QString DemoTest::errorOf(const NetworkSession::Answer& answer)
{
    return QJsonDocument::fromJson(answer.body.bytes().toByteArray()).object().value("error"_L1).toString();
}

QStringList DemoTest::idsOf(const std::vector<Conversation>& conversations)
{
    QStringList ids;
    for (const Conversation& conversation : conversations)
        ids.push_back(conversation.id);
    return ids;
}

} // namespace orvia::test
