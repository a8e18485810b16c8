#include "Views/ConversationDetailView/Transcript/TranscriptView.h"

#include "Platform/WebAddress.h"
#include "Views/ConversationDetailView/Transcript/TranscriptAccessibility.h"
#include "Views/Widgets/ScrollArea.h"

#include <QDesktopServices>
#include <QPaintEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

namespace orvia {

namespace {

constexpr int verticalPadding = 12;
/// Rows this far out of sight are laid out ahead, so that a small scroll shows nothing new.
constexpr int overscan = 200;
constexpr int singleStep = 24;
/// How many new messages are announced together at most, and how much of each, in code units.
constexpr qsizetype spokenAtOnce = 3;
constexpr qsizetype longestSpoken = 1000;

} // namespace

TranscriptView::TranscriptView(Session& session, QString conversationId, QWidget* parent)
    : QAbstractScrollArea(parent)
    , m_session(session)
    , m_conversationId(std::move(conversationId))
    , m_content(session, m_conversationId)
    , m_openURL([](const QUrl& url) { QDesktopServices::openUrl(url); })
{
    installTranscriptAccessibility();
    setAccessibleName(tr("Messages"));
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    OverlayScrollBar::install(this);
    verticalScrollBar()->setSingleStep(singleStep);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);

    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(0);
    connect(&m_refreshTimer, &QTimer::timeout, this, &TranscriptView::refresh);
    m_scrollAnimation.setStartValue(1.0);
    m_scrollAnimation.setEndValue(0.0);
    m_scrollAnimation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_scrollAnimation, &QVariantAnimation::valueChanged, this, [this](const QVariant& share) {
        m_lead = qRound64(static_cast<double>(m_leadAtStart) * share.toDouble());
        arrange();
    });
    connect(&m_images, &AttachmentImages::changed, this, &TranscriptView::imageChanged);
    connect(&Theme::shared(), &Theme::changed, this, &TranscriptView::themeChanged);
    followSession();
    refresh();
}

TranscriptView::~TranscriptView() = default;

void TranscriptView::followSession()
{
    const auto mine = [this](const QString& id) {
        if (id == m_conversationId)
            scheduleRefresh();
    };
    connect(&m_session, &Session::messageAppended, this, mine);
    connect(&m_session, &Session::typingConversationChanged, this, mine);
    connect(&m_session, &Session::typingPreviewChanged, this, mine);
    connect(&m_session, &Session::agentPreviewChanged, this, mine);
    connect(&m_session, &Session::threadReset, this, [this](const QString& id) {
        if (id != m_conversationId)
            return;
        m_replaced = true;
        scheduleRefresh();
    });
    connect(&m_session, &Session::conversationsReset, this, &TranscriptView::scheduleRefresh);
    const auto one = [this](qsizetype index) {
        if (m_session.conversations().at(index).id == m_conversationId)
            scheduleRefresh();
    };
    connect(&m_session, &Session::conversationInserted, this, one);
    connect(&m_session, &Session::conversationChanged, this, one);
    const auto namesChanged = [this] {
        m_layouts.clear();
        scheduleRefresh();
    };
    connect(&m_session, &Session::agentChanged, this, namesChanged);
    connect(&m_session, &Session::assignableAgentsChanged, this, namesChanged);
}

// Content

void TranscriptView::refresh()
{
    m_refreshTimer.stop();
    const TranscriptContent::State before = m_content.state();
    const bool wasEmpty = m_heights.size() == 0;
    const auto idOf = [this](qsizetype row) {
        const RowLayout* layout = rowLayout(row);
        return layout ? layout->row().id : QString();
    };
    const QString anchorId = idOf(m_anchorRow);
    const QString currentId = idOf(m_current.row);
    const QString selectedId = m_selectedRow >= 0 ? idOf(m_selectedRow) : QString();

    m_content.refresh();
    const TranscriptContent::State& now = m_content.state();
    const bool replaced = m_replaced || now.messageCount < before.messageCount;
    m_replaced = false;
    if (replaced) {
        rebuildHeights();
        const qsizetype anchor = anchorId.isEmpty() ? -1 : m_content.indexOf(anchorId);
        m_anchorRow = anchor >= 0 ? anchor : std::clamp<qsizetype>(m_anchorRow, 0, m_heights.size());
        m_hovered = {};
        m_pressed = {};
    } else {
        updateRows(before);
    }
    const qsizetype firstNew = replaced ? 0 : before.messageCount;
    if (m_current.row >= firstNew)
        m_current.row = currentId.isEmpty() ? -1 : m_content.indexOf(currentId);
    if (m_selectedRow >= firstNew)
        keepSelection(selectedId);
    const bool moves = now.messageCount != before.messageCount || now.isTyping != before.isTyping
                       || now.typingPreview != before.typingPreview
                       || now.agentPreview != before.agentPreview;
    if (moves && m_content.scrollTarget() >= 0)
        scrollToTarget(!wasEmpty);
    else
        arrange();
    tellAssistiveTools(before, replaced);
}

void TranscriptView::rebuildHeights()
{
    m_layouts.clear();
    const TranscriptContent::Measure measure = RowLayout::measure(viewport()->width());
    std::vector<int> heights(static_cast<std::size_t>(m_content.rowCount()));
    for (std::size_t i = 0; i < heights.size(); ++i)
        heights[i] = m_content.estimatedHeight(static_cast<qsizetype>(i), measure);
    m_heights.assign(std::move(heights));
}

void TranscriptView::keepSelection(const QString& id)
{
    m_selectedRow = id.isEmpty() ? -1 : m_content.indexOf(id);
    if (m_selectedRow < 0) {
        m_selection = {};
        m_dragging = false;
        return;
    }
    // The text may have become shorter.
    const qsizetype length = BubbleText(m_content.row(m_selectedRow).body, {}).text().size();
    for (BubbleText::Selection* kept : {&m_selection, &m_dragOrigin})
        *kept = {std::min(kept->anchor, length), std::min(kept->cursor, length)};
}

void TranscriptView::updateRows(const TranscriptContent::State& before)
{
    const TranscriptContent::State& now = m_content.state();
    // The last message so far learns of its new neighbour; everything behind it is made anew.
    const qsizetype firstChanged =
        now.messageCount > before.messageCount ? before.messageCount - 1 : before.messageCount;
    m_layouts.erase(m_layouts.lower_bound(firstChanged), m_layouts.end());
    if (now.seenMessageId != before.seenMessageId) {
        invalidateRow(before.seenMessageId);
        invalidateRow(now.seenMessageId);
    }
    while (m_heights.size() > before.messageCount)
        m_heights.removeLast();
    const TranscriptContent::Measure measure = RowLayout::measure(viewport()->width());
    for (qsizetype i = before.messageCount; i < m_content.rowCount(); ++i)
        m_heights.append(m_content.estimatedHeight(i, measure));
}

void TranscriptView::invalidateRow(const std::optional<QString>& id)
{
    const qsizetype index = id ? m_content.indexOf(*id) : -1;
    // The next row may be joined to it.
    m_layouts.erase(index);
    m_layouts.erase(index + 1);
}

void TranscriptView::imageChanged(const QUrl& url)
{
    std::erase_if(m_layouts, [&url](const auto& entry) {
        const std::optional<AttachmentView>& attachment = entry.second->row().attachment;
        return attachment && attachment->url == url;
    });
    arrange();
}

void TranscriptView::themeChanged()
{
    rebuildHeights();
    arrange();
}

void TranscriptView::tellAssistiveTools(const TranscriptContent::State& before, bool replaced)
{
    if (!QAccessible::isActive())
        return;
    if (replaced)
        return tellTranscriptReplaced(*this);
    const qsizetype count = m_content.state().messageCount;
    for (qsizetype i = before.messageCount; i < count; ++i)
        tellRowAdded(*this, i);
    // Of a burst only the end is worth hearing.
    QStringList spoken;
    for (qsizetype i = std::max(before.messageCount, count - spokenAtOnce); i < count; ++i)
        spoken.append(m_content.row(i).spokenName().left(longestSpoken));
    if (!spoken.isEmpty())
        Q_EMIT messagesArrived(spoken.join(QLatin1Char('\n')));
}

// Arrangement

RowLayout& TranscriptView::layOutRow(qsizetype index)
{
    std::unique_ptr<RowLayout>& layout = m_layouts[index];
    if (!layout) {
        TranscriptRow content = m_content.row(index);
        const qsizetype limit = m_bodyLimits.value(content.id, BubbleText::defaultLimit);
        const RowLayout::Setting setting{viewport()->width(), layoutDirection(), devicePixelRatioF(), limit,
                                         &m_images};
        layout = std::make_unique<RowLayout>(std::move(content), setting);
        m_heights.set(index, layout->height());
    }
    return *layout;
}

qint64 TranscriptView::contentHeight() const
{
    return m_heights.total() + 2 * verticalPadding;
}

qint64 TranscriptView::contentTop(qsizetype row) const
{
    // A thread shorter than the view stands at its bottom, next to the composer.
    const qint64 spare = std::max<qint64>(0, viewport()->height() - contentHeight());
    return spare + verticalPadding + m_heights.top(row);
}

qint64 TranscriptView::lastValue() const
{
    return std::max<qint64>(0, contentHeight() - viewport()->height());
}

qint64 TranscriptView::targetValue() const
{
    const qsizetype target = m_content.scrollTarget();
    const qint64 last = lastValue();
    if (target < 0)
        return last;
    // As far down as the content goes, unless what lies below the target would push its end out of sight.
    const qint64 bottom = contentTop(target + 1);
    return bottom > last ? last : std::max<qint64>(0, bottom - viewport()->height());
}

qint64 TranscriptView::wantedValue() const
{
    const qint64 value = m_following ? targetValue() - m_lead : contentTop(m_anchorRow) + m_anchorOffset;
    return std::clamp<qint64>(value, 0, lastValue());
}

void TranscriptView::anchorAt(qint64 value)
{
    m_following = value >= targetValue() && m_content.scrollTarget() >= 0;
    m_lead = 0;
    m_anchorRow = std::max<qsizetype>(0, m_heights.rowAt(value - verticalPadding));
    m_anchorOffset = m_heights.size() > 0 ? static_cast<int>(value - contentTop(m_anchorRow)) : 0;
}

bool TranscriptView::layOutBand(qint64 value)
{
    const qsizetype first = m_heights.rowAt(value - verticalPadding - overscan);
    const qint64 end = value + viewport()->height() + overscan;
    const std::size_t before = m_layouts.size();
    for (qsizetype row = std::max<qsizetype>(first, 0); row < m_heights.size() && contentTop(row) < end;
         ++row)
        layOutRow(row);
    return m_layouts.size() > before;
}

void TranscriptView::arrange()
{
    if (m_arranging || viewport()->width() <= 0)
        return;
    const QScopedValueRollback arranging(m_arranging, true);
    // What becomes exact moves the band; every round lays out at least one more row, so this ends.
    qint64 value = wantedValue();
    while (layOutBand(value))
        value = wantedValue();

    constexpr qint64 largest = std::numeric_limits<int>::max();
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setRange(0, static_cast<int>(std::min(lastValue(), largest)));
    verticalScrollBar()->setValue(static_cast<int>(std::min(value, largest)));
    if (m_following && m_heights.size() > 0) {
        m_anchorRow = std::max<qsizetype>(0, m_heights.rowAt(value - verticalPadding));
        m_anchorOffset = static_cast<int>(value - contentTop(m_anchorRow));
    }
    const qint64 top = value - 2 * overscan;
    const qint64 bottom = value + viewport()->height() + 2 * overscan;
    std::erase_if(m_layouts, [&](const auto& entry) {
        return contentTop(entry.first + 1) < top || contentTop(entry.first) > bottom;
    });
    viewport()->update();
}

void TranscriptView::scrollToTarget(bool animated)
{
    m_scrollAnimation.stop();
    const qint64 from = verticalScrollBar()->value();
    m_following = true;
    m_lead = 0;
    // The way to go is measured, not guessed.
    while (layOutBand(wantedValue()))
        continue;
    const int duration = Theme::duration(Motion::scrollToEnd);
    if (animated && duration > 0 && isVisible() && wantedValue() != from) {
        m_leadAtStart = m_lead = wantedValue() - from;
        m_scrollAnimation.setDuration(duration);
        m_scrollAnimation.start();
    }
    arrange();
}

void TranscriptView::scrollBy(int distance)
{
    verticalScrollBar()->setValue(verticalScrollBar()->value() + distance);
}

void TranscriptView::ensureVisible(const Stop& stop)
{
    // Guesses between here and there become exact on the way, hence more than one try.
    for (int tries = 0; tries < 4; ++tries) {
        const QRect part = layOutRow(stop.row).rect(stop.part);
        const qint64 top = contentTop(stop.row) + part.top() - verticalPadding;
        const qint64 bottom = contentTop(stop.row) + part.bottom() + verticalPadding;
        const qint64 value = verticalScrollBar()->value();
        const int height = viewport()->height();
        if (top >= value && bottom <= value + height)
            return;
        m_scrollAnimation.stop();
        const bool fitsOrAbove = top < value || bottom - top > height;
        anchorAt(std::clamp<qint64>(fitsOrAbove ? top : bottom - height, 0, lastValue()));
        arrange();
    }
}

void TranscriptView::scrollContentsBy(int, int)
{
    if (m_arranging)
        return;
    m_scrollAnimation.stop();
    anchorAt(verticalScrollBar()->value());
    arrange();
}

void TranscriptView::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    if (event->size().width() != event->oldSize().width()) {
        // A picture and a bubble near the top edge stay there, however the lines above it break now.
        rebuildHeights();
        if (m_anchorRow < m_heights.size() && !m_following)
            m_anchorOffset = std::min(m_anchorOffset, std::max(0, layOutRow(m_anchorRow).height() - 1));
    }
    arrange();
}

void TranscriptView::showEvent(QShowEvent* event)
{
    QAbstractScrollArea::showEvent(event);
    arrange();
}

// Reading

QRect TranscriptView::rowRect(qsizetype index) const
{
    const qint64 top = contentTop(index) - verticalScrollBar()->value();
    constexpr qint64 farthest = std::numeric_limits<int>::max() / 4;
    return {0, static_cast<int>(std::clamp(top, -farthest, farthest)), viewport()->width(),
            m_heights.height(index)};
}

QRect TranscriptView::partRect(const Stop& stop) const
{
    const RowLayout* layout = rowLayout(stop.row);
    const QRect rect = layout ? layout->rect(stop.part) : QRect();
    return rect.isEmpty() ? QRect() : rect.translated(rowRect(stop.row).topLeft());
}

bool TranscriptView::isRowInSight(qsizetype index) const
{
    return index >= 0 && index < rowCount() && rowRect(index).intersects(viewport()->rect());
}

const RowLayout* TranscriptView::rowLayout(qsizetype index) const
{
    const auto found = m_layouts.find(index);
    return found == m_layouts.end() ? nullptr : found->second.get();
}

qsizetype TranscriptView::rowAt(const QPoint& point) const
{
    const qint64 value =
        verticalScrollBar()->value() + point.y() - (m_heights.size() > 0 ? contentTop(0) : 0);
    if (value < 0 || value >= m_heights.total() || !viewport()->rect().contains(point))
        return -1;
    return m_heights.rowAt(value);
}

void TranscriptView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    painter.fillRect(event->rect(), Theme::color(ColorRole::window));
    const auto paintRow = [&](qsizetype index, const RowLayout& layout) {
        const QRect rect = rowRect(index);
        if (rect.adjusted(0, -Spacing::xSmall, 0, Spacing::xSmall).intersects(event->rect()))
            layout.paint(painter, rect.topLeft(), event->rect(), look(index));
    };
    for (const auto& [index, layout] : m_layouts) {
        if (index != m_current.row)
            paintRow(index, *layout);
    }
    // The focus ring reaches a little over the neighbours.
    if (const RowLayout* focused = rowLayout(m_current.row))
        paintRow(m_current.row, *focused);
}

void TranscriptView::activate(const Stop& stop)
{
    if (stop.row < 0 || stop.row >= rowCount())
        return;
    const TranscriptRow content = m_content.row(stop.row);
    if (stop.part == Part::attachment && content.attachment && content.attachment->url) {
        if (isWebAddress(*content.attachment->url))
            m_openURL(*content.attachment->url);
        else
            m_session.showBanner(tr("This attachment has no web address and was not opened."));
    } else if (stop.part == Part::showMore) {
        qsizetype& limit = m_bodyLimits[content.id];
        limit = std::max(limit, BubbleText::defaultLimit) + BubbleText::defaultLimit;
        // The text grows downwards; its beginning stays where it is.
        anchorAt(verticalScrollBar()->value());
        m_following = false;
        m_layouts.erase(stop.row);
        arrange();
        if (m_current == stop)
            setCurrent({stop.row, Part::body});
    }
}

} // namespace orvia
