#include "DemoService/Store.h"

#include "DemoService/WireEncoding.h"

#include <QUuid>

#include <algorithm>

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostKeptPages = 8;

/// Everything that a page depends on besides the records.
QString pageKey(const Account& account, const InboxFilter& filter)
{
    const auto part = [](const std::optional<QString>& value) { return value ? u"="_s + *value : QString(); };
    QStringList scope;
    if (!account.isAdmin())
        scope = account.agent.productIds.value_or(QStringList());
    return QStringList{account.isAdmin() ? u"*"_s : scope.join(u','),
                       part(filter.productId),
                       filter.status ? wireText(*filter.status) : QString(),
                       part(filter.assigneeId),
                       part(filter.email),
                       QString::number(filter.includeSnoozed)}
        .join(u'\n');
}

} // namespace

bool Account::serves(const QString& productId) const
{
    return isAdmin() || (agent.productIds && agent.productIds->contains(productId));
}

Store::Store(Clock clock)
    : m_clock(std::move(clock))
{
}

QString Store::newId(QLatin1StringView prefix)
{
    return prefix + QString::number(++m_lastId);
}

Account& Store::addAccount(Agent agent, QString password)
{
    m_accounts.push_back(std::make_unique<Account>(Account{std::move(agent), std::move(password), {}}));
    return *m_accounts.back();
}

Account* Store::account(const QString& agentId)
{
    const auto found = std::find_if(m_accounts.begin(), m_accounts.end(),
                                    [&](const auto& account) { return account->agent.id == agentId; });
    return found == m_accounts.end() ? nullptr : found->get();
}

Account* Store::accountByEmail(const QString& email)
{
    const auto found = std::find_if(m_accounts.begin(), m_accounts.end(), [&](const auto& account) {
        return account->agent.email.compare(email, Qt::CaseInsensitive) == 0;
    });
    return found == m_accounts.end() ? nullptr : found->get();
}

Account* Store::accountByToken(const QString& token)
{
    const auto found = m_agentIdByToken.constFind(token);
    return found == m_agentIdByToken.cend() ? nullptr : account(*found);
}

QString Store::newToken(const Account& account)
{
    const QString token = QUuid::createUuid().toString(QUuid::Id128);
    m_agentIdByToken.insert(token, account.agent.id);
    return token;
}

void Store::revokeTokens()
{
    m_agentIdByToken.clear();
}

Product* Store::product(const QString& id)
{
    const auto found = std::find_if(m_products.begin(), m_products.end(),
                                    [&](const Product& product) { return product.id == id; });
    return found == m_products.end() ? nullptr : &*found;
}

Thread& Store::addThread(Conversation conversation)
{
    m_threads.push_back(std::make_unique<Thread>(Thread{std::move(conversation), {}, {}}));
    Thread& thread = *m_threads.back();
    m_threadById.insert(thread.conversation.id, &thread);
    m_latestFirst.push_back(&thread);
    touch(thread);
    return thread;
}

Thread* Store::thread(const QString& id)
{
    return m_threadById.value(id);
}

const std::vector<Thread*>& Store::latestFirst()
{
    if (std::exchange(m_orderIsStale, false)) {
        std::stable_sort(m_latestFirst.begin(), m_latestFirst.end(),
                         [](const Thread* left, const Thread* right) {
                             return left->conversation.lastMessageAt > right->conversation.lastMessageAt;
                         });
    }
    return m_latestFirst;
}

void Store::touch(Thread& thread)
{
    thread.encoded.clear();
    m_orderIsStale = true;
    ++m_revision;
}

const QByteArray& Store::encodedConversation(Thread& thread)
{
    if (thread.encoded.isEmpty())
        thread.encoded = wire::encoded(thread.conversation);
    return thread.encoded;
}

QByteArray Store::encodedPage(const Account& account, const InboxFilter& filter)
{
    const QString key = pageKey(account, filter);
    const Instant moment = now();
    const auto kept = m_pages.constFind(key);
    if (kept != m_pages.cend() && kept->revision == m_revision
        && (!kept->validUntil || moment < *kept->validUntil))
        return kept->body;

    Page page;
    page.revision = m_revision;
    std::vector<const QByteArray*> items;
    qsizetype size = 32;
    for (Thread* thread : latestFirst()) {
        if (!includes(thread->conversation, account, filter, moment, page.validUntil))
            continue;
        items.push_back(&encodedConversation(*thread));
        size += items.back()->size() + 1;
    }
    page.body.reserve(size);
    page.body += R"({"conversations":[)";
    for (const QByteArray* item : items) {
        if (item != items.front())
            page.body += ',';
        page.body += *item;
    }
    page.body += "]}";

    if (m_pages.size() >= mostKeptPages)
        m_pages.clear();
    m_pages.insert(key, page);
    return page.body;
}

bool Store::includes(const Conversation& conversation, const Account& account, const InboxFilter& filter,
                     Instant now, std::optional<Instant>& firstWakeUp) const
{
    if (filter.productId && conversation.productId != *filter.productId)
        return false;
    if (filter.status && conversation.status != *filter.status)
        return false;
    if (filter.assigneeId && conversation.assigneeId.value_or(QString()) != *filter.assigneeId)
        return false;
    if (filter.email && conversation.visitor.email.compare(*filter.email, Qt::CaseInsensitive) != 0)
        return false;
    if (!account.serves(conversation.productId))
        return false;
    if (!filter.includeSnoozed && conversation.snoozedUntil && *conversation.snoozedUntil > now) {
        firstWakeUp = std::min(firstWakeUp.value_or(*conversation.snoozedUntil), *conversation.snoozedUntil);
        return false;
    }
    return true;
}

} // namespace orvia::demo
