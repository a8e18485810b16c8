#pragma once

#include "Models/Agent.h"
#include "Models/Conversation.h"
#include "Models/Message.h"
#include "Models/Product.h"

#include <QHash>
#include <QSet>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvia::demo {

/// A conversation with its messages in the order in which they were written.
struct Thread {
    Conversation conversation;
    std::vector<Message> messages;

    /// The conversation's JSON, made once per change; see Store::encodedConversation.
    QByteArray encoded;
};

struct Device {
    QString platform;
    QString pushToken;

    friend bool operator==(const Device&, const Device&) = default;
};

struct Account {
    Agent agent;
    QString password;
    std::vector<Device> devices;

    bool isAdmin() const { return agent.role == AgentRole::admin; }
    /// Administrators serve every product.
    bool serves(const QString& productId) const;
};

/// Which conversations a page holds.
struct InboxFilter {
    std::optional<QString> productId;
    std::optional<ConversationStatus> status;
    std::optional<QString> assigneeId; ///< an agent's id; the empty text stands for nobody
    std::optional<QString> email;      ///< compared without regard to case
    bool includeSnoozed = true;
};

/// Everything that the service knows, in memory. Records are handed out by reference and changed in place; a
/// change of a conversation is told to the store with @c touch. Threads and accounts keep their address.
class Store {
public:
    using Clock = std::function<Instant()>;

    explicit Store(Clock clock);

    Instant now() const { return m_clock(); }
    /// A new identifier that begins with @p prefix; the same sequence in every run.
    QString newId(QLatin1StringView prefix);

    // Accounts and their tokens

    const std::vector<std::unique_ptr<Account>>& accounts() const { return m_accounts; }
    Account& addAccount(Agent agent, QString password);
    Account* account(const QString& agentId);
    Account* accountByEmail(const QString& email);
    Account* accountByToken(const QString& token);
    QString newToken(const Account& account);
    void revokeTokens();

    // Products and canned responses, in the order in which they were made

    std::vector<Product>& products() { return m_products; }
    Product* product(const QString& id);
    std::vector<CannedResponse>& canned() { return m_canned; }

    // Conversations

    Thread& addThread(Conversation conversation);
    Thread* thread(const QString& id);
    std::size_t threadCount() const { return m_threads.size(); }
    Thread& threadAt(std::size_t index) { return *m_threads[index]; }
    /// All threads, the one with the latest message first; undated ones last.
    const std::vector<Thread*>& latestFirst();
    /// Notes that the conversation of @p thread has changed.
    void touch(Thread& thread);
    const QByteArray& encodedConversation(Thread& thread);
    /// The page {"conversations": [...]} of what @p account may see, latest first. The text is kept until
    /// something changes or a snooze runs out.
    QByteArray encodedPage(const Account& account, const InboxFilter& filter);

private:
    struct Page {
        quint64 revision = 0;
        std::optional<Instant> validUntil; ///< the end of the first hidden snooze
        QByteArray body;
    };

    bool includes(const Conversation& conversation, const Account& account, const InboxFilter& filter,
                  Instant now, std::optional<Instant>& firstWakeUp) const;

    Clock m_clock;
    quint64 m_lastId = 0;
    quint64 m_revision = 1;
    std::vector<std::unique_ptr<Account>> m_accounts;
    QHash<QString, QString> m_agentIdByToken;
    std::vector<Product> m_products;
    std::vector<CannedResponse> m_canned;
    std::vector<std::unique_ptr<Thread>> m_threads;
    QHash<QString, Thread*> m_threadById;
    std::vector<Thread*> m_latestFirst;
    bool m_orderIsStale = false;
    QHash<QString, Page> m_pages;
};

} // namespace orvia::demo
