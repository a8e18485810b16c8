#include "Session/Answers.h"
#include "Session/Fields.h"

/// One request each, then a merge of the service's answer. No state changes before the service has answered.
namespace orvia {

using namespace Qt::StringLiterals;

QCoro::Task<bool> Session::loadConversation(QString id)
{
    auto detail = co_await answerTo(client().conversationDetail(id));
    if (!detail)
        co_return false;
    const bool threadChanged = m_messages.assign(id, std::move(detail->messages.wrappedValue));
    forgetOldThreads();
    if (threadChanged)
        Q_EMIT threadReset(id);
    detail->conversation.agentUnread = 0;
    upsert(std::move(detail->conversation));
    co_return true;
}

QCoro::Task<std::vector<CannedResponse>> Session::loadCanned(std::optional<QString> productId)
{
    const QString key = productId.value_or(QString());
    if (const auto cached = m_cannedCache.constFind(key); cached != m_cannedCache.cend())
        co_return *cached;

    auto canned = co_await answerTo(client().canned(productId));
    if (!canned)
        co_return {};
    setEntry(m_cannedCache, key, *canned, &Session::cannedCacheChanged);
    co_return std::move(*canned);
}

QCoro::Task<void> Session::sendMessage(QString conversationId, QString body, bool note, QStringList mentions)
{
    const QString trimmed = body.trimmed();
    if (trimmed.isEmpty())
        co_return;
    const auto sent =
        co_await answerTo(client().sendMessage(conversationId, trimmed, note, std::move(mentions)));
    if (sent)
        append(*sent, conversationId);
}

QCoro::Task<void> Session::mergeAnswer(QCoro::Task<Conversation> request)
{
    auto answer = co_await answerTo(std::move(request));
    if (answer)
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
    auto outcome = co_await outcomeOf(client().visitorConversations(std::move(email)));
    // The panel that asks shows no section without an answer; there is nothing to tell the agent.
    co_return std::move(outcome.answer).value_or(std::vector<Conversation>());
}

} // namespace orvia
