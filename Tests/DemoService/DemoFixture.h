#pragma once

#include "APIClient/APIClient.h"
#include "APIClient/NetworkSession.h"
#include "DemoService/DemoService.h"
#include "SocketClient/SocketClient.h"
#include "Support/Waiting.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkRequest>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

/// A console's live channel that writes down what arrives.
struct Listener {
    Listener(const QUrl& origin, const QString& token)
    {
        socket.onEvent = [this](const SocketEvent& event) { events.push_back(event); };
        socket.onConnectionChange = [this](bool isConnected) { connected = isConnected; };
        socket.connect(origin, token);
    }

    /// The events of @p type so far.
    std::vector<SocketEvent> ofType(QLatin1StringView type) const
    {
        std::vector<SocketEvent> matching;
        std::copy_if(events.begin(), events.end(), std::back_inserter(matching),
                     [type](const SocketEvent& event) { return event.type == type; });
        return matching;
    }
    /// Runs the event loop until at least @p count events of @p type have arrived.
    [[nodiscard]] bool waitFor(QLatin1StringView type, std::size_t count = 1) const
    {
        return waitUntil([&] { return ofType(type).size() >= count; });
    }

    SocketClient socket;
    std::vector<SocketEvent> events;
    bool connected = false;
};

/// A demo service of its own for each test, on a clock that stands still unless the test moves it.
class DemoTest : public testing::Test {
protected:
    DemoTest() { EXPECT_TRUE(service.listen()); }

    static demo::Options options(Instant& clock)
    {
        demo::Options options;
        options.clock = [&clock] { return clock; };
        return options;
    }

    APIClient client(const QString& agentId = u"mara"_s)
    {
        return APIClient(service.origin(), service.tokenOf(agentId), &session);
    }

    std::unique_ptr<Listener> listener(const QString& agentId)
    {
        auto listener = std::make_unique<Listener>(service.origin(), service.tokenOf(agentId));
        EXPECT_TRUE(waitUntil([&] { return listener->connected; }));
        return listener;
    }

    /// What came back for a request that no client would send.
    NetworkSession::Answer request(const QByteArray& method, const QString& pathAndQuery,
                                   std::optional<QByteArray> body = std::nullopt,
                                   const QString& agentId = u"mara"_s)
    {
        QNetworkRequest request(QUrl(service.origin().toString() + pathAndQuery));
        if (!agentId.isEmpty())
            request.setRawHeader("Authorization", "Bearer " + service.tokenOf(agentId).toLatin1());
        if (body)
            request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json"_ba);
        const auto outcome = runTask(session.perform(request, method, std::move(body), std::identity()));
        return outcome.value.value_or(NetworkSession::Answer());
    }

    /// The error text of an answer; empty when it is not an error body.
    static QString errorOf(const NetworkSession::Answer& answer)
    {
        const QByteArray body = answer.body.bytes().toByteArray();
        return QJsonDocument::fromJson(body).object().value("error"_L1).toString();
    }

    Instant now = *instantFromISO8601("2024-05-01T12:00:00Z");
    demo::DemoService service{options(now)};
    NetworkSession session;
};

} // namespace orvia::test
