#include "APIClient/Perform.h"

/// The operations under /v1/agent: a method, a path, query items and a body each.
namespace orvia {

using namespace Qt::StringLiterals;

namespace {

QString conversationPath(const QString& id, QLatin1StringView suffix = {})
{
    return "/v1/agent/conversations/"_L1 + id + suffix;
}

struct LoginBody {
    QString email;
    QString password;

    static constexpr auto fields()
    {
        return std::tuple{json::required("email", &LoginBody::email),
                          json::required("password", &LoginBody::password)};
    }
};

struct AssignBody {
    std::optional<QString> agentId;

    static constexpr auto fields() { return std::tuple{json::nullable("agentId", &AssignBody::agentId)}; }
};

struct SnoozeBody {
    std::optional<Instant> until;

    static constexpr auto fields() { return std::tuple{json::nullable("until", &SnoozeBody::until)}; }
};

struct MutedBody {
    bool muted = false;

    static constexpr auto fields() { return std::tuple{json::required("muted", &MutedBody::muted)}; }
};

struct MessageBody {
    QString body;
    std::optional<bool> note;
    std::optional<QStringList> mentions;

    static constexpr auto fields()
    {
        return std::tuple{json::required("body", &MessageBody::body),
                          json::optional("note", &MessageBody::note),
                          json::optional("mentions", &MessageBody::mentions)};
    }
};

struct PreferencesBody {
    NotifyMode notifyMode = NotifyMode::all;

    static constexpr auto fields()
    {
        return std::tuple{json::required("notifyMode", &PreferencesBody::notifyMode)};
    }
};

struct DeviceBody {
    QString platform;
    QString apnsToken;

    static constexpr auto fields()
    {
        return std::tuple{json::required("platform", &DeviceBody::platform),
                          json::required("apnsToken", &DeviceBody::apnsToken)};
    }
};

/// The answer of the teammates operation; its list is strict.
struct Response {
    std::vector<Agent> teammates;

    static constexpr auto fields() { return std::tuple{json::required("teammates", &Response::teammates)}; }
};

} // namespace

QCoro::Task<LoginResponse> APIClient::login(QString email, QString password) const
{
    return send<LoginResponse>("POST", u"/v1/agent/login"_s,
                               LoginBody{std::move(email), std::move(password)});
}

QCoro::Task<MeResponse> APIClient::me() const
{
    return perform<MeResponse>("GET", u"/v1/agent/me"_s);
}

QCoro::Task<std::vector<Conversation>> APIClient::conversations(std::optional<QString> productId,
                                                                std::optional<ConversationStatus> status,
                                                                std::optional<QString> assignee,
                                                                bool includeSnoozed) const
{
    Query query;
    if (productId)
        query.emplace_back(u"productId"_s, *productId);
    if (status)
        query.emplace_back(u"status"_s, wireText(*status));
    if (assignee)
        query.emplace_back(u"assignee"_s, *assignee);
    if (includeSnoozed)
        query.emplace_back(u"includeSnoozed"_s, u"true"_s);
    auto page =
        co_await perform<ConversationsResponse>("GET", u"/v1/agent/conversations"_s, std::move(query));
    co_return std::move(page.conversations.wrappedValue);
}

QCoro::Task<ConversationDetailResponse> APIClient::conversationDetail(QString id) const
{
    return perform<ConversationDetailResponse>("GET", conversationPath(id));
}

QCoro::Task<Conversation> APIClient::closeConversation(QString id) const
{
    auto response = co_await perform<ConversationResponse>("POST", conversationPath(id, "/close"_L1));
    co_return std::move(response.conversation);
}

QCoro::Task<Conversation> APIClient::openConversation(QString id) const
{
    auto response = co_await perform<ConversationResponse>("POST", conversationPath(id, "/open"_L1));
    co_return std::move(response.conversation);
}

QCoro::Task<Conversation> APIClient::assign(QString conversationId, std::optional<QString> agentId) const
{
    AssignBody body{std::move(agentId)};
    auto response = co_await send<ConversationResponse>(
        "POST", conversationPath(conversationId, "/assign"_L1), std::move(body));
    co_return std::move(response.conversation);
}

QCoro::Task<Conversation> APIClient::snooze(QString conversationId, std::optional<Instant> until) const
{
    SnoozeBody body{until};
    auto response = co_await send<ConversationResponse>(
        "POST", conversationPath(conversationId, "/snooze"_L1), std::move(body));
    co_return std::move(response.conversation);
}

QCoro::Task<void> APIClient::setMuted(QString conversationId, bool muted) const
{
    MutedBody body{muted};
    co_await send<JSONValueIgnored>("POST", conversationPath(conversationId, "/mute"_L1), std::move(body));
}

QCoro::Task<Message> APIClient::sendMessage(QString conversationId, QString body, bool note,
                                            QStringList mentions) const
{
    MessageBody message{std::move(body), std::nullopt, std::nullopt};
    if (note) {
        message.note = true;
        if (!mentions.isEmpty())
            message.mentions = std::move(mentions);
    }
    auto response = co_await send<MessageResponse>("POST", conversationPath(conversationId, "/messages"_L1),
                                                   std::move(message));
    co_return std::move(response.message);
}

QCoro::Task<std::vector<CannedResponse>> APIClient::canned(std::optional<QString> productId) const
{
    Query query;
    if (productId)
        query.emplace_back(u"productId"_s, *productId);
    auto response = co_await perform<CannedResponsesResponse>("GET", u"/v1/agent/canned"_s, std::move(query));
    co_return std::move(response.canned.wrappedValue);
}

QCoro::Task<std::vector<SearchResult>> APIClient::search(QString text, int limit, std::stop_token stop) const
{
    Query query{{u"q"_s, text}, {u"limit"_s, QString::number(limit)}};
    auto response = co_await perform<SearchResponse>("GET", u"/v1/agent/search"_s, std::move(query), {}, {},
                                                     std::move(stop));
    co_return std::move(response.results.wrappedValue);
}

QCoro::Task<std::vector<Conversation>> APIClient::visitorConversations(QString email) const
{
    Query query{{u"email"_s, email}};
    auto response = co_await perform<ConversationsResponse>("GET", u"/v1/agent/visitors/conversations"_s,
                                                            std::move(query));
    co_return std::move(response.conversations.wrappedValue);
}

QCoro::Task<std::vector<Agent>> APIClient::teammates() const
{
    auto response = co_await perform<Response>("GET", u"/v1/agent/teammates"_s);
    co_return std::move(response.teammates);
}

QCoro::Task<Agent> APIClient::updatePreferences(NotifyMode notifyMode) const
{
    PreferencesBody body{notifyMode};
    auto response = co_await send<AgentResponse>("PATCH", u"/v1/agent/me/preferences"_s, std::move(body));
    co_return std::move(response.agent);
}

QCoro::Task<void> APIClient::registerDevice(QString platform, QString apnsToken) const
{
    DeviceBody body{std::move(platform), std::move(apnsToken)};
    co_await send<JSONValueIgnored>("POST", u"/v1/agent/devices"_s, std::move(body));
}

} // namespace orvia
