#include "Session/Session.h"

#include "Keychain/TokenStore.h"
#include "Session/Fields.h"

#include <QTimer>

namespace orvia {

using namespace Qt::StringLiterals;

Session::Session(Collaborators collaborators, QObject* parent)
    : QObject(parent)
    , m_defaults(collaborators.defaults)
    , m_tokenStore(collaborators.tokenStore)
    , m_urlSession(collaborators.urlSession)
    , m_baseURL(std::move(collaborators.baseURL))
    , m_timings(collaborators.timings)
    , m_now(std::move(collaborators.now))
    , m_socket(std::make_unique<SocketClient>(collaborators.socketTimings))
    , m_typingClear(m_timings.typingClear, [this](const QString& id) { unmarkTyping(id); })
    , m_previewClear(
          m_timings.previewClear,
          [this](const QString& id) { removeEntry(m_typingPreviews, id, &Session::typingPreviewChanged); })
    , m_agentPreviewClear(m_timings.previewClear, [this](const QString& id) {
        removeEntry(m_agentPreviews, id, &Session::agentPreviewChanged);
    })
{
    const auto prepare = [this](QTimer& timer, std::chrono::milliseconds wait, auto&& action) {
        timer.setSingleShot(true);
        timer.setInterval(wait);
        connect(&timer, &QTimer::timeout, this, action);
    };
    prepare(m_bannerDismiss, m_timings.bannerDismiss,
            [this] { assignField(m_banner, {}, &Session::bannerChanged); });
    prepare(m_sessionRetry, m_timings.sessionRetry, [this] { retrySession(); });
    prepare(m_searchDebounce, m_timings.searchDebounce, [this] { startSearch(); });

    if (collaborators.readsToken)
        m_token = m_tokenStore.string(tokenKey);
    restoreIdentity();
}

Session::~Session() = default;

APIClient Session::client() const
{
    return APIClient(m_baseURL, m_token, &m_urlSession);
}

void Session::showBanner(const QString& text)
{
    assignField(m_banner, std::optional(text), &Session::bannerChanged);
    m_bannerDismiss.start();
}

void Session::setSelectedConversationId(const std::optional<QString>& id)
{
    if (m_selectedConversationId == id)
        return;
    m_selectedConversationId = id;
    m_socket->sendViewing(id);
    Q_EMIT selectedConversationIdChanged();
}

void Session::setShowVisitorPanel(bool show)
{
    assignField(m_showVisitorPanel, show, &Session::showVisitorPanelChanged);
}

} // namespace orvia
