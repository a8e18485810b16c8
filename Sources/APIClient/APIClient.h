#pragma once

#include "APIClient/APIError.h"
#include "Models/Responses.h"

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QPointer>
#include <QUrl>

#include <stop_token>

namespace orvia {

class NetworkSession;

/// A plain value that talks to the service: made for one operation from the origin, the current token and the
/// shared HTTP session, dropped after it. Every operation is asynchronous and fails with APIError; the client
/// may be gone before its operation ends. Main thread.
class APIClient {
public:
    QUrl baseURL;                 ///< the service's origin; a path of its own is dropped
    std::optional<QString> token; ///< the agent's bearer token; absent before sign-in
    QPointer<NetworkSession> urlSession;

    APIClient(QUrl baseURL, std::optional<QString> token, NetworkSession* urlSession);

    // Agent operations, under /v1/agent

    [[nodiscard]] QCoro::Task<LoginResponse> login(QString email, QString password) const;
    [[nodiscard]] QCoro::Task<MeResponse> me() const;
    [[nodiscard]] QCoro::Task<std::vector<Conversation>>
    conversations(std::optional<QString> productId, std::optional<ConversationStatus> status,
                  std::optional<QString> assignee, bool includeSnoozed) const;
    [[nodiscard]] QCoro::Task<ConversationDetailResponse> conversationDetail(QString id) const;
    [[nodiscard]] QCoro::Task<Conversation> closeConversation(QString id) const;
    [[nodiscard]] QCoro::Task<Conversation> openConversation(QString id) const;
    /// An absent @p agentId unassigns.
    [[nodiscard]] QCoro::Task<Conversation> assign(QString conversationId,
                                                   std::optional<QString> agentId) const;
    /// An absent @p until ends a snooze.
    [[nodiscard]] QCoro::Task<Conversation> snooze(QString conversationId,
                                                   std::optional<Instant> until) const;
    [[nodiscard]] QCoro::Task<void> setMuted(QString conversationId, bool muted) const;
    /// Sends a public reply, or an internal note that may mention agents; a reply carries no mentions.
    [[nodiscard]] QCoro::Task<Message> sendMessage(QString conversationId, QString body, bool note,
                                                   QStringList mentions) const;
    /// Posts the file as multipart/form-data (RFC 7578) and answers the message that carries it.
    [[nodiscard]] QCoro::Task<Message> uploadAttachment(QString conversationId, QString fileName,
                                                        QString mimeType, QByteArray data, bool note) const;
    [[nodiscard]] QCoro::Task<std::vector<CannedResponse>> canned(std::optional<QString> productId) const;
    /// @p stop ends the request early, for a search that is superseded; its outcome then says nothing.
    [[nodiscard]] QCoro::Task<std::vector<SearchResult>> search(QString query, int limit,
                                                                std::stop_token stop = {}) const;
    [[nodiscard]] QCoro::Task<std::vector<Conversation>> visitorConversations(QString email) const;
    /// Strict: one malformed teammate fails the call.
    [[nodiscard]] QCoro::Task<std::vector<Agent>> teammates() const;
    [[nodiscard]] QCoro::Task<Agent> updatePreferences(NotifyMode notifyMode) const;
    [[nodiscard]] QCoro::Task<void> registerDevice(QString platform, QString apnsToken) const;

    // Administration operations, under /v1/admin

    [[nodiscard]] QCoro::Task<std::vector<Agent>> adminAgents() const;
    [[nodiscard]] QCoro::Task<void> adminCreateAgent(QString name, QString email, QString password,
                                                     AgentRole role, QStringList productIds) const;
    /// Absent arguments stay as they are on the service.
    [[nodiscard]] QCoro::Task<void> adminUpdateAgent(QString id, std::optional<QStringList> productIds,
                                                     std::optional<AgentRole> role,
                                                     std::optional<QString> password) const;
    [[nodiscard]] QCoro::Task<std::vector<Product>> adminProducts() const;
    [[nodiscard]] QCoro::Task<void> adminCreateProduct(QString name, QString slug) const;
    /// Absent arguments stay as they are on the service.
    [[nodiscard]] QCoro::Task<void> adminUpdateProduct(QString id, std::optional<QString> name,
                                                       std::optional<WidgetConfig> widget) const;
    [[nodiscard]] QCoro::Task<std::vector<CannedResponse>> adminCanned() const;
    /// An absent @p productId makes a response for every product.
    [[nodiscard]] QCoro::Task<void> adminCreateCanned(QString shortcut, QString body,
                                                      std::optional<QString> productId) const;
    [[nodiscard]] QCoro::Task<void> adminDeleteCanned(QString id) const;

private:
    using Query = std::vector<std::pair<QString, QString>>;

    /// The one request routine: builds the request, judges the answer, decodes it as @p Response.
    template <class Response>
    QCoro::Task<Response> perform(QByteArray method, QString path, Query query = {},
                                  std::optional<QByteArray> bodyData = std::nullopt,
                                  QByteArray contentType = {}, std::stop_token stop = {}) const;

    /// @c perform with @p body encoded as JSON.
    template <class Response, class Body>
    QCoro::Task<Response> send(QByteArray method, QString path, Body body) const;
};

/// The multipart/form-data body of an attachment upload. A double quote in @p fileName becomes an underscore.
QByteArray multipartBody(const QByteArray& boundary, const QString& fileName, const QString& mimeType,
                         const QByteArray& data, bool note);

} // namespace orvia
