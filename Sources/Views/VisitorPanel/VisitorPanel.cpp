#include "Views/VisitorPanel/VisitorPanel.h"

#include "Platform/RelativeTime.h"
#include "Platform/WebAddress.h"
#include "Session/Session.h"
#include "Views/VisitorPanel/PanelRowWidgets.h"
#include "Views/VisitorPanel/PanelRows.h"
#include "Views/VisitorPanel/PanelSection.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QPainter>
#include <QShowEvent>

#include <algorithm>

namespace orvia {

using namespace std::chrono_literals;

namespace {

constexpr qsizetype collapsedPages = 8;

} // namespace

VisitorPanel::VisitorPanel(Session& session, QString conversationId, QWidget* parent)
    : VisitorPanel(session, std::move(conversationId), Surroundings(), parent)
{
}

VisitorPanel::VisitorPanel(Session& session, QString conversationId, Surroundings surroundings,
                           QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_conversationId(std::move(conversationId))
    , m_surroundings(std::move(surroundings))
{
    setAccessibleName(tr("Visitor details"));
    for (QTimer* timer : {&m_refresh, &m_times, &m_tabOrder})
        timer->setSingleShot(true);
    connect(&m_refresh, &QTimer::timeout, this, &VisitorPanel::refresh);
    connect(&m_times, &QTimer::timeout, this, &VisitorPanel::refreshTimes);
    connect(&m_tabOrder, &QTimer::timeout, this, &VisitorPanel::orderTabs);
    build();
    connect(&session, &Session::conversationsReset, this, &VisitorPanel::scheduleRefresh);
    connect(&session, &Session::conversationInserted, this, &VisitorPanel::conversationTouched);
    connect(&session, &Session::conversationChanged, this, &VisitorPanel::conversationTouched);
    refresh();
}

void VisitorPanel::conversationTouched(qsizetype index)
{
    if (m_session.conversations().at(index).id == m_conversationId)
        scheduleRefresh();
}

void VisitorPanel::scheduleRefresh()
{
    // However much happens in one turn of the event loop, the panel follows once.
    if (!m_refresh.isActive())
        m_refresh.start(0);
}

const std::vector<VisitorPage>& VisitorPanel::pages() const
{
    static const std::vector<VisitorPage> none;
    return m_meta.pages ? *m_meta.pages : none;
}

const VisitorPage& VisitorPanel::page(qsizetype row) const
{
    static const VisitorPage none;
    const auto position = static_cast<std::size_t>(row);
    return position < pages().size() ? pages()[pages().size() - 1 - position] : none;
}

void VisitorPanel::refresh()
{
    const Conversation* current = m_session.conversations().find(m_conversationId);
    // Conversations change with every message; what is shown here seldom does.
    const bool same = current ? m_conversation && m_conversation->visitor == current->visitor
                                    && m_conversation->createdAt == current->createdAt
                              : !m_conversation;
    if (same)
        return;
    const std::vector<VisitorPage> pagesBefore = pages();
    const QString emailBefore = m_conversation ? m_conversation->visitor.email : QString();
    m_conversation = current ? std::optional(*current) : std::nullopt;
    m_meta = current && current->visitor.meta ? *current->visitor.meta->value() : VisitorMeta();
    refreshIdentity();
    refreshLocation();
    refreshCurrentPage();
    refreshCustomData();
    refreshJourney(pagesBefore);
    refreshDevice();
    if (emailBefore != (m_conversation ? m_conversation->visitor.email : QString())) {
        // What is shown belongs to somebody else now.
        showHistory({});
        if (isVisible())
            loadHistory();
    }
    scheduleTimes();
}

void VisitorPanel::refreshIdentity()
{
    m_identity->setVisible(m_conversation.has_value());
    if (!m_conversation)
        return;
    const Visitor& visitor = m_conversation->visitor;
    m_name->setLine(visitor.name.isEmpty() ? tr("Visitor") : visitor.name);
    m_email->setTexts(visitor.email);
    m_email->setVisible(!visitor.email.isEmpty());
    m_started->setLine(
        m_conversation->createdAt
            ? tr("Started %1").arg(relativeTime(*m_conversation->createdAt, m_surroundings.now()))
            : QString());
}

void VisitorPanel::refreshLocation()
{
    m_place->setLine(placeLine(m_meta.geo).value_or(QString()));
    m_network->setLine(networkLine(m_meta.geo).value_or(QString()));
    m_ip->setLine(m_meta.ip.value_or(QString()));
}

void VisitorPanel::refreshCurrentPage()
{
    const auto current = currentPage(m_meta);
    m_currentPageSection->setVisible(current.has_value());
    if (!current)
        return;
    m_currentPage->setTexts(*current->url, current->title.value_or(QString()));
    m_currentPage->setToolTip(shownToolTip(*current->url));
    m_currentPage->setAccessibleDescription(*current->url);
}

void VisitorPanel::refreshCustomData()
{
    m_data.clear();
    if (m_meta.data) {
        const auto& pairs = m_meta.data->pairs;
        std::copy_if(pairs.begin(), pairs.end(), std::back_inserter(m_data),
                     [](const OrderedStringMap::Pair& pair) { return !pair.value.isEmpty(); });
    }
    m_dataSection->setVisible(!m_data.empty());
    m_dataRows->setHeights(std::vector<int>(m_data.size(), LabelledRow::rowHeight()));
}

void VisitorPanel::refreshJourney(const std::vector<VisitorPage>& before)
{
    const std::vector<VisitorPage>& now = pages();
    const bool grew = now.size() >= before.size() && std::equal(before.begin(), before.end(), now.begin());
    showJourneyRows(grew ? static_cast<qsizetype>(now.size() - before.size()) : 0);
}

void VisitorPanel::showJourneyRows(qsizetype added)
{
    const auto total = static_cast<qsizetype>(pages().size());
    const bool folds = total > collapsedPages;
    const qsizetype listed = folds && !m_showAllPages ? collapsedPages : total;
    m_journeySection->setVisible(total > 0);
    m_journeyRows->setHeights(std::vector<int>(static_cast<std::size_t>(listed), JourneyRow::rowHeight()),
                              added);
    m_journeyToggle->setTexts(m_showAllPages ? tr("Show less") : tr("Show all %1").arg(total));
    m_journeyToggle->setVisible(folds);
}

void VisitorPanel::refreshDevice()
{
    const auto rows = deviceRows(m_meta);
    m_deviceSection->setVisible(!rows.empty());
    for (std::size_t row = 0; row < m_deviceRows.size(); ++row) {
        if (row < rows.size())
            m_deviceRows[row]->setTexts(rows[row].label, rows[row].value, false);
        m_deviceRows[row]->setVisible(row < rows.size());
    }
    m_tabOrder.start(0);
}

void VisitorPanel::loadHistory()
{
    const quint64 generation = ++m_historyGeneration;
    if (!m_conversation || m_conversation->visitor.email.isEmpty()) {
        showHistory({});
        return;
    }
    QCoro::connect(m_session.visitorConversations(m_conversation->visitor.email), this,
                   [this, generation](std::vector<Conversation>&& conversations) {
                       if (generation != m_historyGeneration)
                           return;
                       std::erase_if(conversations, [this](const Conversation& conversation) {
                           return conversation.id == m_conversationId;
                       });
                       showHistory(std::move(conversations));
                   });
}

void VisitorPanel::showHistory(std::vector<Conversation> history)
{
    m_history = std::move(history);
    std::vector<int> heights;
    heights.reserve(m_history.size());
    for (const Conversation& conversation : m_history) {
        const bool hasPreview =
            conversation.lastMessagePreview && !conversation.lastMessagePreview->isEmpty();
        heights.push_back(HistoryRow::rowHeight(hasPreview) + Spacing::iconGap);
    }
    if (!heights.empty())
        heights.back() -= Spacing::iconGap;
    m_historySection->setVisible(!m_history.empty());
    m_historyRows->setHeights(heights);
}

void VisitorPanel::copyEmail()
{
    if (!m_conversation)
        return;
    QGuiApplication::clipboard()->setText(m_conversation->visitor.email);
    m_copied->show();
    // Every click waits for itself, so the first of several quick ones ends the confirmation.
    QTimer::singleShot(m_surroundings.copiedShown, m_copied, &QWidget::hide);
}

/// A visitor tells the address; one of a file or a program is nothing for a browser.
void VisitorPanel::openAddress(const QString& address) const
{
    const auto url = openableURL(address);
    if (url && isWebAddress(*url))
        open(*url);
}

void VisitorPanel::open(const QUrl& url) const
{
    if (m_surroundings.openURL)
        m_surroundings.openURL(url);
    else
        QDesktopServices::openUrl(url);
}

void VisitorPanel::refreshTimes()
{
    if (!isVisible())
        return;
    refreshIdentity();
    m_journeyRows->refill();
    scheduleTimes();
}

void VisitorPanel::scheduleTimes()
{
    if (!isVisible()) {
        m_times.stop();
        return;
    }
    const Instant now = m_surroundings.now();
    std::optional<Instant> next;
    const auto consider = [&next, now](const std::optional<Instant>& then) {
        if (then)
            next = std::min(next.value_or(Instant::max()), nextRelativeTimeChange(*then, now));
    };
    if (m_conversation)
        consider(m_conversation->createdAt);
    for (const auto& [row, widget] : m_journeyRows->rows())
        consider(page(row).at);
    if (!next) {
        m_times.stop();
        return;
    }
    // A timer counts in 32 bits; an hour is as good for a change that lies further away.
    const auto wait = std::clamp<std::chrono::milliseconds>(
        *next - now, m_surroundings.leastRefresh,
        std::max<std::chrono::milliseconds>(m_surroundings.leastRefresh, 1h));
    if (!m_times.isActive() || m_times.remainingTimeAsDuration() > wait)
        m_times.start(wait);
}

QString VisitorPanel::placeInList(const PanelRows& rows, qsizetype index) const
{
    return rows.isPartial() ? tr("%1 of %2").arg(index + 1).arg(rows.count()) : QString();
}

void VisitorPanel::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    refreshTimes();
    loadHistory();
}

void VisitorPanel::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    m_times.stop();
}

void VisitorPanel::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), Theme::color(ColorRole::window));
}

} // namespace orvia
