#include "APIClient/Worker.h"
#include "Session/Answers.h"
#include "Session/Fields.h"

#include <QThreadPool>
#include <QTimer>

#include <malloc.h>

/// The inbox: filters, loading, the derived list, and the two merges through which everything else changes
/// it.
namespace orvia {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> assigneeParameter(InboxQueue queue)
{
    switch (queue) {
    case InboxQueue::unassigned:
        return u"unassigned"_s;
    case InboxQueue::mine:
        return u"me"_s;
    case InboxQueue::all:
        break;
    }
    return std::nullopt;
}

/// Both pages in one store, once both are there. It is made on a worker, like everything that grows with the
/// inbox and need not be done on the main thread.
QCoro::Task<ConversationStore> joined(QCoro::Task<std::vector<Conversation>> openPage,
                                      QCoro::Task<std::vector<Conversation>> closedPage)
{
    std::vector<std::vector<Conversation>> pages(2);
    pages[0] = co_await openPage;
    pages[1] = co_await closedPage;
    auto join = [pages = std::move(pages)]() mutable { return ConversationStore(std::move(pages)); };
    co_return co_await onWorker(std::move(join));
}

/// Lets a worker free what may be ten thousand records, and later give back to the system what they and the
/// documents of a load left in the allocator: at once would be while the new inbox is painted.
void dispose(ConversationStore store)
{
    constexpr std::chrono::seconds trimDelay(1);
    const auto old = std::make_shared<std::optional<ConversationStore>>(std::move(store));
    QThreadPool::globalInstance()->start([old] { old->reset(); });
    QTimer::singleShot(trimDelay, [] { QThreadPool::globalInstance()->start([] { ::malloc_trim(0); }); });
}

} // namespace

void Session::setStatusFilter(ConversationStatus status)
{
    assignField(m_statusFilter, status, &Session::statusFilterChanged);
}

void Session::setProductFilter(const std::optional<QString>& productId)
{
    assignField(m_productFilter, productId, &Session::productFilterChanged);
}

void Session::setQueue(InboxQueue queue)
{
    assignField(m_queue, queue, &Session::queueChanged);
}

void Session::setShowSnoozed(bool show)
{
    assignField(m_showSnoozed, show, &Session::showSnoozedChanged);
}

QCoro::Task<void> Session::refreshConversations()
{
    if (!m_agent)
        co_return;
    const QPointer<Session> self = this;
    assignField(m_isLoadingList, true, &Session::isLoadingListChanged);

    // Tasks start at once, so both requests are under way before the first is awaited.
    const APIClient service = client();
    const std::optional<QString> assignee = assigneeParameter(m_queue);
    auto openPage = service.conversations(std::nullopt, ConversationStatus::open, assignee, m_showSnoozed);
    auto closedPage = service.conversations(std::nullopt, ConversationStatus::closed, assignee, true);
    auto loaded = co_await answerTo(joined(std::move(openPage), std::move(closedPage)));
    if (loaded)
        replaceConversations(std::move(*loaded));
    if (self)
        assignField(m_isLoadingList, false, &Session::isLoadingListChanged);
}

void Session::replaceConversations(ConversationStore conversations)
{
    if (m_conversations == conversations) {
        dispose(std::move(conversations));
        return;
    }
    dispose(std::exchange(m_conversations, std::move(conversations)));
    Q_EMIT conversationsReset();
}

void Session::forgetOldThreads()
{
    for (const QString& id : m_messages.trim(keptMessages, m_selectedConversationId))
        Q_EMIT threadReset(id);
}

void Session::removeAllThreads()
{
    const QStringList ids = m_messages.conversationIds();
    m_messages.clear();
    for (const QString& id : ids)
        Q_EMIT threadReset(id);
}

bool Session::matchesQueue(const Conversation& conversation) const
{
    switch (m_queue) {
    case InboxQueue::unassigned:
        return !conversation.assigneeId;
    case InboxQueue::mine:
        return conversation.assigneeId && m_agent && *conversation.assigneeId == m_agent->id;
    case InboxQueue::all:
        break;
    }
    return true;
}

bool Session::isListed(const Conversation& conversation, Instant instant) const
{
    if (conversation.status != m_statusFilter)
        return false;
    if (m_productFilter && *m_productFilter != conversation.productId)
        return false;
    if (!matchesQueue(conversation))
        return false;
    return m_statusFilter == ConversationStatus::closed || m_showSnoozed || !conversation.snoozedUntil
           || *conversation.snoozedUntil <= instant;
}

std::vector<const Conversation*> Session::filteredConversations() const
{
    const Instant instant = currentInstant();
    std::vector<std::pair<Instant, qsizetype>> dated;
    for (qsizetype index = 0; const Conversation& conversation : m_conversations.all()) {
        if (isListed(conversation, instant))
            dated.emplace_back(conversation.lastMessageAt.value_or(Instant::min()), index);
        ++index;
    }
    // Equal instants stay in inbox order.
    std::sort(dated.begin(), dated.end(), [](const auto& left, const auto& right) {
        return left.first != right.first ? left.first > right.first : left.second < right.second;
    });
    std::vector<const Conversation*> listed(dated.size());
    std::transform(dated.begin(), dated.end(), listed.begin(),
                   [this](const auto& entry) { return &m_conversations.at(entry.second); });
    return listed;
}

void Session::upsert(Conversation conversation)
{
    const qsizetype index = m_conversations.indexOf(conversation.id);
    if (index < 0) {
        m_conversations.append(std::move(conversation));
        Q_EMIT conversationInserted(m_conversations.size() - 1);
        return;
    }
    if (m_conversations.at(index) == conversation)
        return;
    m_conversations.replace(index, std::move(conversation));
    Q_EMIT conversationChanged(index);
}

void Session::append(const Message& message, const QString& conversationId)
{
    if (!m_messages.append(message, conversationId))
        return;
    forgetOldThreads();
    Q_EMIT messageAppended(conversationId);

    switch (message.sender) {
    case MessageSender::visitor:
        m_typingClear.cancel(conversationId);
        unmarkTyping(conversationId);
        clearPreview(conversationId);
        break;
    case MessageSender::agent:
    case MessageSender::note:
        if (message.agentId)
            clearAgentPreview(conversationId, *message.agentId);
        break;
    case MessageSender::system:
        break;
    }
}

/// Adjusts the filters so that @p conversation is among the listed ones, its snooze aside, and selects it.
void Session::revealConversation(const Conversation& conversation)
{
    const QString id = conversation.id;
    const QString productId = conversation.productId;
    const bool outsideQueue = !matchesQueue(conversation);
    setStatusFilter(conversation.status);
    if (m_productFilter && *m_productFilter != productId)
        setProductFilter(std::nullopt);
    if (outsideQueue)
        setQueue(InboxQueue::all);
    setSelectedConversationId(id);
}

} // namespace orvia
