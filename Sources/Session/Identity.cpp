#include "APIClient/Outcome.h"
#include "Keychain/TokenStore.h"
#include "Models/JSON/Decoding.h"
#include "Models/JSON/Encoding.h"
#include "PushManager.h"
#include "Session/DefaultsStore.h"
#include "Session/Fields.h"

#include <QCollator>
#include <QPointer>

/// Sign-in and sign-out, the establishing sequence, the cached identity, teammates.
namespace orvia {

using namespace Qt::StringLiterals;

namespace {

const QString identityKey = u"cachedIdentity"_s;
const QString devicePlatform = u"macos"_s; // the service's name for consoles, whatever they run on

bool isRejectedToken(const APIError& error)
{
    return error.status == 401 || error.status == 403;
}

} // namespace

struct Session::CachedIdentity {
    Agent agent;
    std::vector<Product> products;

    static constexpr auto fields()
    {
        return std::tuple{json::required("agent", &CachedIdentity::agent),
                          json::required("products", &CachedIdentity::products)};
    }
};

bool Session::isAdmin() const
{
    return m_agent && m_agent->role == AgentRole::admin;
}

const Product* Session::product(const QString& id) const
{
    const auto found = std::find_if(m_products.begin(), m_products.end(),
                                    [&](const Product& product) { return product.id == id; });
    return found == m_products.end() ? nullptr : &*found;
}

std::optional<QString> Session::agentName(const std::optional<QString>& id) const
{
    if (!id)
        return std::nullopt;
    if (m_agent && m_agent->id == *id)
        return m_agent->name;
    const auto found = std::find_if(m_assignableAgents.begin(), m_assignableAgents.end(),
                                    [&](const Agent& agent) { return agent.id == *id; });
    return found == m_assignableAgents.end() ? std::nullopt : std::optional(found->name);
}

std::vector<Agent> Session::agents(const QString& productId) const
{
    std::vector<Agent> serving;
    std::copy_if(m_assignableAgents.begin(), m_assignableAgents.end(), std::back_inserter(serving),
                 [&](const Agent& agent) {
                     return agent.role == AgentRole::admin
                            || (agent.productIds && agent.productIds->contains(productId));
                 });
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(serving.begin(), serving.end(), [&](const Agent& left, const Agent& right) {
        return collator.compare(left.name, right.name) < 0;
    });
    return serving;
}

void Session::restoreIdentity()
{
    if (!m_token)
        return;
    const auto bytes = m_defaults.data(identityKey);
    if (!bytes)
        return;
    try {
        auto identity = APIJSON::decoder.decode<CachedIdentity>(*bytes);
        assignField(m_agent, std::move(identity.agent), &Session::agentChanged);
        assignField(m_products, std::move(identity.products), &Session::productsChanged);
    } catch (const DecodingError&) {
        // A cache that cannot be read is worth nothing; the identity request will bring the truth.
    }
}

void Session::cacheIdentity()
{
    if (m_agent)
        m_defaults.setData(APIJSON::encoder.encode(CachedIdentity{*m_agent, m_products}), identityKey);
}

QCoro::Task<void> Session::bootstrap()
{
    if (m_didBootstrap)
        co_return;
    m_didBootstrap = true;

    const QPointer<Session> self = this;
    PushManager& push = PushManager::shared();
    push.onDeviceToken = [self](const QString&) {
        if (self)
            self->registerDeviceIfPossible();
    };
    push.onOpenConversation = [self](const QString& conversationId) {
        if (self)
            self->openFromDeepLink(conversationId);
    };
    m_socket->onEvent = [self](const SocketEvent& event) {
        if (self)
            self->handle(event);
    };
    m_socket->onConnectionChange = [self](bool connected) {
        if (self)
            self->socketConnectionChanged(connected);
    };
    if (m_token)
        co_await establishSession();
}

void Session::socketConnectionChanged(bool connected)
{
    if (m_socketConnected == connected)
        return;
    m_socketConnected = connected;
    if (connected)
        m_socket->sendViewing(m_selectedConversationId);
    Q_EMIT socketConnectedChanged();
}

bool Session::isIdentityCached(const DefaultsStore& defaults)
{
    return defaults.data(identityKey).has_value();
}

QCoro::Task<void> Session::restore(QString token)
{
    if (m_token || m_signOuts > 0)
        co_return;
    assignField(m_token, std::move(token), &Session::tokenChanged);
    restoreIdentity();
    co_await establishSession();
}

QCoro::Task<void> Session::login(QString email, QString password)
{
    const QPointer<Session> self = this;
    const APIClient signedOut(m_baseURL, std::nullopt, &m_urlSession);
    const LoginResponse response = co_await signedOut.login(email, password);
    if (!self)
        co_return;
    assignField(m_token, response.token, &Session::tokenChanged);
    m_tokenStore.set(response.token, tokenKey);
    if (self)
        co_await establishSession();
}

QCoro::Task<void> Session::establishSession()
{
    const QPointer<Session> self = this;
    const quint64 signOuts = m_signOuts;
    const bool agentIsKnown = co_await loadIdentity();
    if (!self || !agentIsKnown || m_signOuts != signOuts)
        co_return;
    co_await refreshConversations();
    if (!self || m_signOuts != signOuts)
        co_return;
    co_await loadAssignableAgents();
    if (!self || m_signOuts != signOuts)
        co_return;
    if (m_token)
        m_socket->connect(m_baseURL, *m_token);
    // A channel that takes the place of one that is up is no change, but knows nothing of the agent yet.
    if (m_socketConnected)
        m_socket->sendViewing(m_selectedConversationId);
    PushManager::shared().start();
    co_await registerDeviceIfPossible();
}

QCoro::Task<bool> Session::loadIdentity()
{
    const QPointer<Session> self = this;
    const quint64 signOuts = m_signOuts;
    auto outcome = co_await outcomeOf(client().me());
    if (!self || m_signOuts != signOuts)
        co_return false;
    if (auto& response = outcome.answer) {
        assignField(m_agent, std::move(response->agent), &Session::agentChanged);
        assignField(m_products, std::move(response->products.wrappedValue), &Session::productsChanged);
        cacheIdentity();
    } else if (isRejectedToken(*outcome.failure)) {
        logout();
        showBanner(tr("Session expired. Please sign in again."));
    } else {
        showBanner(outcome.failure->message);
        scheduleSessionRetry();
    }
    co_return m_agent.has_value();
}

void Session::scheduleSessionRetry()
{
    if (!m_sessionRetry.isActive() && m_token)
        m_sessionRetry.start();
}

void Session::retrySession()
{
    if (m_token)
        establishSession();
}

QCoro::Task<void> Session::registerDeviceIfPossible()
{
    const std::optional<QString> deviceToken = PushManager::shared().deviceToken;
    if (!m_agent || !deviceToken)
        co_return;
    const QPointer<Session> self = this;
    const quint64 signOuts = m_signOuts;
    const auto outcome = co_await outcomeOf(client().registerDevice(devicePlatform, *deviceToken));
    if (self && m_signOuts == signOuts && outcome.failure)
        showBanner(tr("Push registration failed: ") + outcome.failure->message);
}

QCoro::Task<void> Session::loadAssignableAgents()
{
    const QPointer<Session> self = this;
    const quint64 signOuts = m_signOuts;
    auto outcome = co_await outcomeOf(client().teammates());
    // Without teammates nobody but oneself can be assigned; that is told by the empty list alone.
    if (self && m_signOuts == signOuts)
        assignField(m_assignableAgents, std::move(outcome.answer).value_or(std::vector<Agent>()),
                    &Session::assignableAgentsChanged);
}

void Session::logout()
{
    ++m_signOuts;
    m_socket->sendViewing(std::nullopt);
    m_socket->disconnect();
    m_sessionRetry.stop();

    assignField(m_token, {}, &Session::tokenChanged);
    m_tokenStore.set(std::nullopt, tokenKey);
    m_defaults.remove(identityKey);

    assignField(m_agent, {}, &Session::agentChanged);
    assignField(m_products, {}, &Session::productsChanged);
    replaceConversations({});
    removeAllThreads();
    setSelectedConversationId(std::nullopt);

    removeAllEntries(m_typingPreviews, &Session::typingPreviewChanged);
    removeAllEntries(m_agentPreviews, &Session::agentPreviewChanged);
    removeAllEntries(m_viewers, &Session::viewersChanged);
    removeAllEntries(m_cannedCache, &Session::cannedCacheChanged);
    assignField(m_assignableAgents, {}, &Session::assignableAgentsChanged);
    setQueue(InboxQueue::all);
    clearSearch();
}

} // namespace orvia
