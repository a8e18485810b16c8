#pragma once

#include "APIClient/NetworkSession.h"
#include "Keychain/TokenStore.h"
#include "Models/APIJSON.h"
#include "Models/Responses.h"
#include "PushManager.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "Support/ScriptedService.h"
#include "Support/Waiting.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

/// Keeps its texts for as long as the test runs.
class MemoryTokenStore : public TokenStore {
public:
    std::optional<QString> string(const QString& key) override
    {
        const auto found = texts.constFind(key);
        return found == texts.cend() ? std::nullopt : std::optional(*found);
    }

    bool set(const std::optional<QString>& value, const QString& key) override
    {
        if (value)
            texts.insert(key, *value);
        else
            texts.remove(key);
        return true;
    }

    QHash<QString, QString> texts;
};

/// Counts how often a signal fires.
class Notifications {
public:
    template <class... Arguments>
    Notifications(Session& session, void (Session::*signal)(Arguments...))
    {
        m_connection = QObject::connect(&session, signal, &session, [this](const Arguments&... arguments) {
            ++count;
            if constexpr (sizeof...(Arguments) == 1)
                ((last = QVariant::fromValue(arguments)), ...);
        });
    }
    ~Notifications() { QObject::disconnect(m_connection); }
    Notifications(const Notifications&) = delete;
    Notifications& operator=(const Notifications&) = delete;

    int count = 0;
    QVariant last; ///< the argument of the last notification

private:
    QMetaObject::Connection m_connection;
};

Agent makeAgent(const QString& id, const QString& name, AgentRole role = AgentRole::agent,
                std::optional<QStringList> productIds = QStringList{u"p1"_s});
Conversation makeConversation(const QString& id, int minutesAgo = 10);
Message makeMessage(const QString& id, const QString& conversationId,
                    MessageSender sender = MessageSender::visitor, const QString& body = u"Hello"_s);
/// Now minus @p minutes, in whole seconds, as it survives the wire.
Instant minutesAgo(int minutes);

template <class T>
ScriptedAnswer answerOf(const T& record)
{
    return ScriptedAnswer::json(APIJSON::encoder.encode(record));
}

ScriptedAnswer refusal(int status, const QByteArray& text);
/// The body of a request as JSON text without regard to how it was sent.
QByteArray bodyOf(const std::vector<ReceivedRequest>& requests, std::size_t index = 0);

/// A session over a scripted service on the loopback interface, with waits short enough to be waited for.
class SessionFixture : public testing::Test {
protected:
    explicit SessionFixture(ScriptedService::Transport transport = ScriptedService::Transport::plain);
    ~SessionFixture() override;

    /// Builds the session anew from the stores, as a start of the program does; over another service than the
    /// scripted one when @p origin is given.
    Session& makeSession(const QUrl& origin = {});
    /// Scripts everything that the establishing sequence asks for.
    void scriptEstablishing();
    void scriptInbox(std::vector<Conversation> open, std::vector<Conversation> closed = {});
    /// A session whose establishing sequence has run, with the inbox scripted before.
    Session& signIn();
    /// The same, and the live channel is up.
    Session& connectLive();

    // What the live channel brings, handed to the session at once.
    void deliver(const Conversation& conversation);
    void deliver(const Message& message);
    void deliverTyping(const QString& conversationId, const QString& preview);
    void deliverViewers(const QString& conversationId, const QStringList& names);

    QTemporaryDir directory;
    ScriptedService service;
    DefaultsStore defaults;
    MemoryTokenStore tokens;
    SessionTimings timings;
    SocketTimings socketTimings;
    Instant clock = minutesAgo(0);
    std::unique_ptr<NetworkSession> network;
    std::unique_ptr<Session> session;
    Agent self = makeAgent(u"a1"_s, u"Mara Ellison"_s);
    std::vector<Product> products;
    std::vector<Agent> teammates;
};

/// Whether the conversation at @p id in the inbox passes @p check; false when it is not there.
template <class Check>
bool holds(const Session& session, const QString& id, Check check)
{
    const Conversation* conversation = session.conversations().find(id);
    return conversation && check(*conversation);
}

QStringList listedIds(const Session& session);

} // namespace orvia::test
