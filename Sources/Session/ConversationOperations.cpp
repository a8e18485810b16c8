#include "Session/Fields.h"

#include <QPointer>

/// One request each, then a merge of the service's answer. No state changes before the service has answered.
namespace orvia {

using namespace Qt::StringLiterals;

QCoro::Task<void> Session::loadConversation(QString id)
{
    const QPointer<Session> self = this;
    ConversationDetailResponse detail;
    std::optional<APIError> failure;
    try {
        detail = co_await client().conversationDetail(id);
    } catch (const APIError& error) {
        failure = error;
    }
    if (!self)
        co_return;
    if (failure) {
        showBanner(failure->message);
        co_return;
    }
    if (m_messages.thread(id) != detail.messages.wrappedValue) {
        m_messages.assign(id, std::move(detail.messages.wrappedValue));
        Q_EMIT threadReset(id);
    }
    detail.conversation.agentUnread = 0;
    upsert(std::move(detail.conversation));
}

QCoro::Task<std::vector<CannedResponse>> Session::loadCanned(std::optional<QString> productId)
{
    const QString key = productId.value_or(QString());
    if (const auto cached = m_cannedCache.constFind(key); cached != m_cannedCache.cend())
        co_return *cached;

    const QPointer<Session> self = this;
    std::vector<CannedResponse> canned;
    std::optional<APIError> failure;
    try {
        canned = co_await client().canned(productId);
    } catch (const APIError& error) {
        failure = error;
    }
    if (self && failure)
        showBanner(failure->message);
    else if (self)
        setEntry(m_cannedCache, key, canned, &Session::cannedCacheChanged);
    co_return canned;
}

QCoro::Task<void> Session::sendMessage(QString conversationId, QString body, bool note, QStringList mentions)
{
    const QString trimmed = body.trimmed();
    if (trimmed.isEmpty())
        co_return;
    const QPointer<Session> self = this;
    std::optional<Message> sent;
    std::optional<APIError> failure;
    try {
        sent = co_await client().sendMessage(conversationId, trimmed, note, std::move(mentions));
    } catch (const APIError& error) {
        failure = error;
    }
    if (!self)
        co_return;
    if (failure)
        showBanner(failure->message);
    else
        append(*sent, conversationId);
}

QCoro::Task<void> Session::mergeAnswer(QCoro::Task<Conversation> request)
{
    const QPointer<Session> self = this;
    std::optional<Conversation> answer;
    std::optional<APIError> failure;
    try {
        answer = co_await request;
    } catch (const APIError& error) {
        failure = error;
    }
    if (!self)
        co_return;
    if (failure)
        showBanner(failure->message);
    else
        upsert(std::move(*answer));
}

QCoro::Task<void> Session::assign(QString conversationId, std::optional<QString> agentId)
{
    return mergeAnswer(client().assign(std::move(conversationId), std::move(agentId)));
}

QCoro::Task<void> Session::snooze(QString conversationId, std::optional<Instant> until)
{
    return mergeAnswer(client().snooze(std::move(conversationId), until));
}

QCoro::Task<void> Session::setStatus(ConversationStatus status, QString conversationId)
{
    if (status == ConversationStatus::closed)
        return mergeAnswer(client().closeConversation(std::move(conversationId)));
    return mergeAnswer(client().openConversation(std::move(conversationId)));
}

QCoro::Task<std::vector<Conversation>> Session::visitorConversations(QString email)
{
    if (email.isEmpty())
        co_return {};
    std::vector<Conversation> conversations;
    try {
        conversations = co_await client().visitorConversations(std::move(email));
    } catch (const APIError&) {
        // The panel that asks shows no section without an answer; there is nothing to tell the agent.
        conversations.clear();
    }
    co_return conversations;
}

} // namespace orvia
