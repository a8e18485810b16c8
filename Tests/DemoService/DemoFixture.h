#pragma once

#include "APIClient/APIClient.h"
#include "APIClient/NetworkSession.h"
#include "DemoService/DemoService.h"
#include "SocketClient/SocketClient.h"
#include "Support/Waiting.h"

#include <QJsonObject>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

/// A console's live channel that writes down what arrives.
class Listener {
public:
    Listener(const QUrl& origin, const QString& token);

    SocketClient socket;
    std::vector<SocketEvent> events;
    bool connected = false;

    /// The events of @p type so far.
    std::vector<SocketEvent> ofType(QLatin1StringView type) const;
    /// Runs the event loop until at least @p count events of @p type have arrived.
    [[nodiscard]] bool waitFor(QLatin1StringView type, std::size_t count = 1) const;
};

/// A demo service of its own for each test, on a clock that stands still unless the test moves it.
class DemoTest : public testing::Test {
protected:
    DemoTest();

    static demo::Options options(Instant& clock);

    APIClient client(const QString& agentId);
    APIClient client() { return client(u"mara"_s); }
    std::unique_ptr<Listener> listener(const QString& agentId);

    /// What came back for a request that no client would send.
    NetworkSession::Answer request(const QByteArray& method, const QString& pathAndQuery,
                                   std::optional<QByteArray> body = std::nullopt,
                                   const QString& agentId = u"mara"_s,
                                   const QByteArray& contentType = "application/json");
    /// The error text of an answer; empty when it is not an error body.
    static QString errorOf(const NetworkSession::Answer& answer);
    static QStringList idsOf(const std::vector<Conversation>& conversations);

    Instant now;
    demo::DemoService service;
    NetworkSession session;
};

} // namespace orvia::test
