#include "Views/ConversationDetailView/ConversationDetailView.h"

#include "Platform/RelativeTime.h"
#include "Platform/ShownText.h"
#include "Views/ConversationDetailView/ConversationActions.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/ConversationDetailView/ConversationHeader.h"
#include "Views/ConversationDetailView/Transcript/MessageAnnouncer.h"
#include "Views/ConversationDetailView/TranscriptRules.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FocusRing.h"

#include <QCoro/QCoroTask>
#include <QPainter>
#include <QPointer>
#include <QVBoxLayout>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// The clock may be set, and the timer's own stands still while the machine sleeps.
constexpr int longestWait = 10 * 60 * 1000;
constexpr qsizetype longestWindowTitle = 200;

} // namespace

ConversationDetailView::ConversationDetailView(Session& session, QString conversationId, QWidget* parent)
    : ConversationDetailView(session, std::move(conversationId), Environment(), parent)
{
}

ConversationDetailView::ConversationDetailView(Session& session, QString conversationId,
                                               Environment environment, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_conversationId(std::move(conversationId))
    , m_environment(std::move(environment))
    , m_titleBand(new ConversationTitleBand(this))
    , m_headerBar(new ConversationHeaderBar(this))
    , m_presenceLine(new ConversationPresenceLine(this))
    , m_transcript(new TranscriptView(session, m_conversationId, this))
    , m_composer(new ConversationComposer(session, m_conversationId, this))
    , m_menu(new ConversationActionsMenu(session, m_conversationId, m_environment.now, this))
{
    if (m_environment.openURL)
        m_transcript->setURLOpener(m_environment.openURL);
    buildLayout();
    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(0);
    m_clockTimer.setSingleShot(true);
    connect(&m_refreshTimer, &QTimer::timeout, this, &ConversationDetailView::refresh);
    connect(&m_clockTimer, &QTimer::timeout, this, &ConversationDetailView::refresh);

    IconButton* details = m_titleBand->visitorDetailsButton();
    connect(details, &IconButton::clicked, this,
            [this] { m_session.setShowVisitorPanel(!m_session.showVisitorPanel()); });
    IconButton* more = m_titleBand->moreActionsButton();
    connect(more, &IconButton::clicked, this, &ConversationDetailView::openActionsMenu);
    connect(m_menu, &QMenu::aboutToHide, more, [more] { more->setDown(false); });
    connect(m_transcript, &TranscriptView::messagesArrived, new MessageAnnouncer(this),
            &MessageAnnouncer::announce);
    connect(m_composer, &ConversationComposer::attachRequested, this, &ConversationDetailView::pickFile);
    followSession();
    refresh();
}

void ConversationDetailView::buildLayout()
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_titleBand);
    column->addWidget(m_headerBar);
    column->addWidget(m_presenceLine);
    column->addWidget(m_transcript, 1);
    column->addWidget(m_composer);
}

void ConversationDetailView::followSession()
{
    const auto one = [this](qsizetype index) {
        if (m_session.conversations().at(index).id == m_conversationId)
            scheduleRefresh();
    };
    connect(&m_session, &Session::conversationInserted, this, one);
    connect(&m_session, &Session::conversationChanged, this, one);
    connect(&m_session, &Session::conversationsReset, this, &ConversationDetailView::scheduleRefresh);
    connect(&m_session, &Session::agentChanged, this, &ConversationDetailView::scheduleRefresh);
    connect(&m_session, &Session::assignableAgentsChanged, this, &ConversationDetailView::scheduleRefresh);
    connect(&m_session, &Session::showVisitorPanelChanged, this, &ConversationDetailView::scheduleRefresh);
    connect(&m_session, &Session::isLoadingListChanged, this, [this] {
        if (!m_session.isLoadingList())
            loadAgain();
    });
    connect(&m_session, &Session::socketConnectedChanged, this, [this] {
        if (m_session.socketConnected())
            loadAgain();
    });
    connect(&m_session, &Session::viewersChanged, this, [this](const QString& id) {
        if (id == m_conversationId)
            scheduleRefresh();
    });
}

QCoro::Task<void> ConversationDetailView::load()
{
    const QPointer<ConversationDetailView> self(this);
    const QPointer<Session> session(&m_session);
    const QString id = m_conversationId;
    m_load = Load::running;
    const bool came = co_await session->loadConversation(id);
    if (self)
        m_load = came ? Load::done : Load::failed;
    const Conversation* loaded = self && session ? self->conversation() : nullptr;
    if (!loaded)
        co_return;
    const QString productId = loaded->productId;
    std::vector<CannedResponse> canned = co_await session->loadCanned(productId);
    if (self)
        self->m_composer->setCanned(std::move(canned));
}

/// Something else came through: the service is back.
void ConversationDetailView::loadAgain()
{
    if (m_load == Load::failed)
        load();
}

void ConversationDetailView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    refresh();
    if (m_load == Load::none)
        load();
}

void ConversationDetailView::refresh()
{
    m_refreshTimer.stop();
    m_clockTimer.stop();
    const Conversation* shown = conversation();
    const QString title = shown ? shown->visitor.name : tr("Conversation");
    m_titleBand->setTitle(title, shown ? shown->visitor.email : QString());
    if (isVisible()) {
        // "[*]" would stand for the mark of a changed document.
        const QString shownTitle = shownLine(title, longestWindowTitle).replace("[*]"_L1, "[*][*]"_L1);
        window()->setWindowTitle(tr("%1 — Orvia").arg(shownTitle));
    }
    m_titleBand->visitorDetailsButton()->setChecked(m_session.showVisitorPanel());
    m_titleBand->moreActionsButton()->setVisible(shown);
    m_headerBar->setVisible(shown);
    if (shown)
        refreshHeader(*shown);
    const auto viewers = m_session.viewers().constFind(m_conversationId);
    m_presenceLine->setText(
        viewers == m_session.viewers().constEnd() ? std::nullopt : TranscriptRules::presenceLine(*viewers));
}

void ConversationDetailView::refreshHeader(const Conversation& shown)
{
    const std::optional<QString> ownId =
        m_session.agent() ? std::optional(m_session.agent()->id) : std::nullopt;
    ConversationHeaderBar::Contents contents;
    contents.isAssigned = shown.assigneeId.has_value();
    contents.assignment =
        TranscriptRules::assignmentLine(&shown, ownId, m_session.agentName(shown.assigneeId));
    contents.isMuted = m_session.isMuted(m_conversationId);
    const Instant now = m_environment.now();
    if (shown.snoozedUntil > now) {
        contents.snoozed = tr("Snoozed %1").arg(relativeTime(*shown.snoozedUntil, now));
        const Instant next = std::min(nextRelativeTimeChange(*shown.snoozedUntil, now), *shown.snoozedUntil);
        const auto wait = std::clamp<qint64>((next - now).count() + 1, 1, longestWait);
        m_clockTimer.start(static_cast<int>(wait));
    }
    m_headerBar->setContents(contents);
}

void ConversationDetailView::openActionsMenu()
{
    IconButton* button = m_titleBand->moreActionsButton();
    m_menu->populate();
    if (m_menu->isEmpty())
        return;
    const int width = m_menu->sizeHint().width();
    const int x = isRightToLeft() ? 0 : button->width() - width;
    const bool byKeyboard = FocusRing::isShown(button);
    button->setDown(true);
    m_menu->popup(button->mapToGlobal(QPoint(x, button->height() + 1)));
    const QList<QAction*> actions = m_menu->actions();
    const auto first =
        std::find_if(actions.begin(), actions.end(), [](QAction* a) { return !a->isSeparator(); });
    if (byKeyboard && first != actions.end())
        m_menu->setActiveAction(*first);
}

void ConversationDetailView::pickFile()
{
    m_environment.pickFile(this, [composer = QPointer(m_composer)](const QUrl& file) {
        if (composer)
            composer->upload(file);
    });
}

void ConversationDetailView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::color(ColorRole::window));
}

} // namespace orvia
