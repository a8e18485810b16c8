#pragma once

#include "APIClient/APIClient.h"
#include "APIClient/Outcome.h"
#include "Models/SocketEvent.h"
#include "Session/ConversationStore.h"
#include "Session/KeyedTimers.h"
#include "Session/MessageStore.h"
#include "Session/SessionTimings.h"
#include "SocketClient/SocketClient.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>
#include <stop_token>

namespace orvia {

class DefaultsStore;
class NetworkSession;
class TokenStore;

/// A teammate's unsent draft as shown under a conversation.
struct AgentDraft {
    QString agentId;
    QString agentName;
    QString text;

    friend bool operator==(const AgentDraft&, const AgentDraft&) = default;
};

/// The one observable state object of the console. Every screen reads it and calls its operations; nothing
/// else holds state that outlives a screen. Main thread only.
///
/// Each stored field has a reader and a signal that tells of a real change; assigning an equal value notifies
/// nobody. The inbox and the threads say what changed, by position and id, so that an event costs the same
/// whatever their size. Operations never fail towards screens, except @c login: they report through the
/// banner. Their tasks may be dropped, and may outlive the session. An observer must not destroy the session
/// while it is being notified.
class Session : public QObject {
    Q_OBJECT

public:
    using Clock = std::function<Instant()>;

    /// What the session is built from. The stores and the network session outlive it.
    struct Collaborators {
        DefaultsStore& defaults;
        TokenStore& tokenStore;
        NetworkSession& urlSession;
        QUrl baseURL;
        SessionTimings timings = {};
        Clock now = currentInstant;
        SocketTimings socketTimings = {};
        /// Whether the stored token is read at construction. Otherwise the session begins signed out, and
        /// whoever made it reads the token and hands it to @c restore.
        bool readsToken = true;
    };

    /// Reads the stored token and restores the cached identity. No network.
    explicit Session(Collaborators collaborators, QObject* parent = nullptr);
    ~Session() override;

    // Constants

    const QUrl& baseURL() const { return m_baseURL; }
    NetworkSession& urlSession() const { return m_urlSession; }
    const SessionTimings& timings() const { return m_timings; }
    SocketClient& socket() { return *m_socket; }
    /// A client for one operation, with the current token.
    APIClient client() const;
    template <class Result>
    using Answer = std::optional<AnswerOf<Result>>;
    /// Waits for the answer to @p request, made for the agent who is signed in now. There is none when the
    /// request failed, which the banner tells, and none when that agent has signed out meanwhile or the
    /// session has gone; then nothing may be touched. Defined in Session/Answers.h.
    template <class Result>
    QCoro::Task<Answer<Result>> answerTo(QCoro::Task<Result> request);
    /// How often an agent has signed out: what was begun at another count is not for whoever is here now.
    quint64 signOuts() const { return m_signOuts; }

    // Identity

    const std::optional<QString>& token() const { return m_token; }
    const std::optional<Agent>& agent() const { return m_agent; }
    const std::vector<Product>& products() const { return m_products; }
    /// The teammates to whom a conversation can be assigned, in server order.
    const std::vector<Agent>& assignableAgents() const { return m_assignableAgents; }
    bool isAdmin() const;
    /// The product with this id, or null. Valid until the products change.
    const Product* product(const QString& id) const;
    std::optional<QString> agentName(const std::optional<QString>& id) const;
    /// The teammates who serve a product, administrators included, by name.
    std::vector<Agent> agents(const QString& productId) const;

    /// Wires the live channel and the push object and, with a token, establishes the session. Runs once.
    QCoro::Task<void> bootstrap();
    /// Takes a stored token that was not read at construction and establishes the session with it. Does
    /// nothing when somebody has signed in meanwhile.
    QCoro::Task<void> restore(QString token);
    /// Whether @p defaults hold the identity of somebody who was signed in when the program ended. That the
    /// token store has a token is to be expected then, and only then.
    static bool isIdentityCached(const DefaultsStore& defaults);
    /// The key of the token in the token store.
    inline static const QString tokenKey = QStringLiteral("agentToken");
    /// Signs in and establishes the session. Throws APIError when the sign-in itself fails.
    QCoro::Task<void> login(QString email, QString password);
    void logout();
    QCoro::Task<void> loadAssignableAgents();

    // Banner and channel state

    const std::optional<QString>& banner() const { return m_banner; }
    /// Shows @p text until the banner's time is over or a newer text replaces it.
    void showBanner(const QString& text);
    bool socketConnected() const { return m_socketConnected; }

    // Inbox

    const ConversationStore& conversations() const { return m_conversations; }
    /// The threads loaded or written to of late, at most @c keptMessages messages and the thread on show: a
    /// day's conversations would fill the memory, and each is loaded again when it is opened.
    const MessageStore& messages() const { return m_messages; }
    static constexpr qsizetype keptMessages = 20'000;
    ConversationStatus statusFilter() const { return m_statusFilter; }
    void setStatusFilter(ConversationStatus status);
    /// The product whose conversations are listed; absent lists all.
    const std::optional<QString>& productFilter() const { return m_productFilter; }
    void setProductFilter(const std::optional<QString>& productId);
    InboxQueue queue() const { return m_queue; }
    void setQueue(InboxQueue queue);
    bool showSnoozed() const { return m_showSnoozed; }
    void setShowSnoozed(bool show);
    bool isLoadingList() const { return m_isLoadingList; }
    /// The conversations that pass the filters at this instant, latest activity first. Computed on every
    /// read; the pointers are valid until the inbox changes.
    std::vector<const Conversation*> filteredConversations() const;
    /// Whether @p conversation passes the filters at @p instant.
    bool isListed(const Conversation& conversation, Instant instant) const;
    /// Reloads the inbox: the open and the closed page together. Changing a filter does not reload by itself.
    QCoro::Task<void> refreshConversations();
    /// Adds @p message to a loaded or live thread unless it is there, and clears the marks that it fulfils.
    void append(const Message& message, const QString& conversationId);

    // Selection

    const std::optional<QString>& selectedConversationId() const { return m_selectedConversationId; }
    /// Announces the selection on the live channel.
    void setSelectedConversationId(const std::optional<QString>& id);
    bool showVisitorPanel() const { return m_showVisitorPanel; }
    void setShowVisitorPanel(bool show);

    // Conversation operations

    /// Answers whether the conversation came.
    QCoro::Task<bool> loadConversation(QString id);
    QCoro::Task<std::vector<CannedResponse>> loadCanned(std::optional<QString> productId);
    QCoro::Task<void> sendMessage(QString conversationId, QString body, bool note, QStringList mentions);
    /// An absent @p agentId unassigns.
    QCoro::Task<void> assign(QString conversationId, std::optional<QString> agentId);
    /// An absent @p until ends the snooze.
    QCoro::Task<void> snooze(QString conversationId, std::optional<Instant> until);
    QCoro::Task<void> setStatus(ConversationStatus status, QString conversationId);
    /// The visitor's conversations in server order; empty on any failure, silently.
    QCoro::Task<std::vector<Conversation>> visitorConversations(QString email);

    // Live updates

    void handle(const SocketEvent& event);
    /// Tells teammates what the agent is typing, at most once per throttle interval and conversation.
    void sendTyping(const QString& conversationId, const QString& preview);
    const QSet<QString>& typingConversations() const { return m_typingConversations; }
    const QHash<QString, QString>& typingPreviews() const { return m_typingPreviews; }
    const QHash<QString, AgentDraft>& agentPreviews() const { return m_agentPreviews; }
    const QHash<QString, std::vector<ViewerAgent>>& viewers() const { return m_viewers; }

    // Search

    const QString& searchText() const { return m_searchText; }
    void setSearchText(const QString& text);
    const std::vector<SearchResult>& searchResults() const { return m_searchResults; }
    bool isSearching() const { return m_isSearching; }
    void clearSearch();
    void openSearchResult(const SearchResult& result);

    // Preferences

    QCoro::Task<void> setNotifyMode(NotifyMode mode);
    QCoro::Task<void> setMuted(QString conversationId, bool muted);
    bool isMuted(const QString& conversationId) const;
    void openFromDeepLink(const QString& conversationId);

Q_SIGNALS:
    void tokenChanged();
    void agentChanged();
    void productsChanged();
    void assignableAgentsChanged();
    void bannerChanged();
    void socketConnectedChanged();
    void statusFilterChanged();
    void productFilterChanged();
    void queueChanged();
    void showSnoozedChanged();
    void isLoadingListChanged();
    void selectedConversationIdChanged();
    void showVisitorPanelChanged();
    void searchTextChanged();
    void searchResultsChanged();
    void isSearchingChanged();

    /// The whole inbox was replaced; every pointer and position is void.
    void conversationsReset();
    /// A conversation was added at the end of the inbox.
    void conversationInserted(qsizetype index);
    /// The record at this position of the inbox was replaced by another one with the same id.
    void conversationChanged(qsizetype index);

    /// The whole thread was replaced.
    void threadReset(const QString& conversationId);
    /// A message was added at the end of the thread.
    void messageAppended(const QString& conversationId);

    // The entry of one conversation was set to a different value, or removed.
    void typingConversationChanged(const QString& conversationId);
    void typingPreviewChanged(const QString& conversationId);
    void agentPreviewChanged(const QString& conversationId);
    void viewersChanged(const QString& conversationId);
    /// The canned responses cached under this product key changed; the empty key stands for no product.
    void cannedCacheChanged(const QString& productKey);

private:
    /// The signed-in identity as it is kept in the defaults.
    struct CachedIdentity;

    template <class Value>
    void assignField(Value& field, std::type_identity_t<Value> value, void (Session::*changed)());
    template <class Value>
    void setEntry(QHash<QString, Value>& entries, const QString& id, std::type_identity_t<Value> value,
                  void (Session::*changed)(const QString&));
    template <class Value>
    void removeEntry(QHash<QString, Value>& entries, const QString& id,
                     void (Session::*changed)(const QString&));
    template <class Value>
    void removeAllEntries(QHash<QString, Value>& entries, void (Session::*changed)(const QString&));

    // Identity
    QCoro::Task<void> establishSession();
    QCoro::Task<bool> loadIdentity();
    void restoreIdentity();
    void cacheIdentity();
    void scheduleSessionRetry();
    void retrySession();
    QCoro::Task<void> registerDeviceIfPossible();
    void socketConnectionChanged(bool connected);

    // Inbox
    bool matchesQueue(const Conversation& conversation) const;
    void replaceConversations(ConversationStore conversations);
    void forgetOldThreads();
    void removeAllThreads();
    void upsert(Conversation conversation);
    /// Changes the conversation with this id in place, if it is in the inbox: @p change answers whether a
    /// field has a different value now.
    template <class Change>
    void changeConversation(const QString& id, Change change);
    void revealConversation(const Conversation& conversation);

    // Conversation operations
    QCoro::Task<void> mergeAnswer(QCoro::Task<Conversation> request);

    // Live updates
    void handleMessage(const SocketEvent& event);
    void handleConversation(const SocketEvent& event);
    void handleTyping(const SocketEvent& event);
    void handleViewers(const SocketEvent& event);
    void handleRead(const SocketEvent& event);
    void markTyping(const QString& conversationId);
    void unmarkTyping(const QString& conversationId);
    void markPreview(const QString& conversationId, const QString& preview);
    void clearPreview(const QString& conversationId);
    void markAgentPreview(const QString& conversationId, const AgentDraft& draft);
    void clearAgentPreview(const QString& conversationId, const QString& agentId);

    // Search
    void scheduleSearch();
    void cancelSearch();
    void startSearch();
    QCoro::Task<void> runSearch(QString query, std::stop_token stop);

    DefaultsStore& m_defaults;
    TokenStore& m_tokenStore;
    NetworkSession& m_urlSession;
    const QUrl m_baseURL;
    const SessionTimings m_timings;
    const Clock m_now;
    std::unique_ptr<SocketClient> m_socket;

    std::optional<QString> m_token;
    std::optional<Agent> m_agent;
    std::vector<Product> m_products;
    std::vector<Agent> m_assignableAgents;
    std::optional<QString> m_banner;
    bool m_socketConnected = false;
    ConversationStore m_conversations;
    MessageStore m_messages;
    std::optional<QString> m_selectedConversationId;
    bool m_showVisitorPanel = false;
    ConversationStatus m_statusFilter = ConversationStatus::open;
    std::optional<QString> m_productFilter;
    InboxQueue m_queue = InboxQueue::all;
    bool m_showSnoozed = false;
    bool m_isLoadingList = false;
    QString m_searchText;
    std::vector<SearchResult> m_searchResults;
    bool m_isSearching = false;
    QSet<QString> m_typingConversations;
    QHash<QString, QString> m_typingPreviews;
    QHash<QString, AgentDraft> m_agentPreviews;
    QHash<QString, std::vector<ViewerAgent>> m_viewers;
    QHash<QString, std::vector<CannedResponse>> m_cannedCache;

    QTimer m_bannerDismiss;
    QTimer m_sessionRetry;
    QTimer m_searchDebounce;
    std::stop_source m_searchTask; ///< ends the search that was started last
    KeyedTimers m_typingClear;
    KeyedTimers m_previewClear;
    KeyedTimers m_agentPreviewClear;
    QHash<QString, Instant> m_lastTypingSentAt;
    bool m_didBootstrap = false;
    quint64 m_signOuts = 0; ///< so that an answer to an agent who has signed out is known as such
};

} // namespace orvia
