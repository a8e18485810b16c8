#include "Views/ConversationDetailView/Composer/SuggestionList.h"

#include "Platform/ShownText.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int rowHeight = 34;
constexpr int frameWidth = 1;
constexpr int sidePadding = 12; // from the frame's outer edge
constexpr int textGap = 10;
constexpr double mostLeadShare = 0.6; // of the row's width, so that the detail keeps a place

bool isForText(const QKeyEvent& event)
{
    if (event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete)
        return true;
    const bool isCommand = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    return !isCommand && !event.text().isEmpty() && event.text().front().isPrint();
}

} // namespace

SuggestionRow::SuggestionRow(const QString& lead, TextRole leadRole, const QString& detail, QWidget* parent)
    : QAbstractButton(parent)
    , m_lead(shownLine(lead))
    , m_leadRole(leadRole)
    , m_detail(shownLine(detail))
{
    setAccessibleName(m_detail.isEmpty() ? lead : lead + ", "_L1 + detail);
    // A click leaves the cursor in the draft.
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
}

void SuggestionRow::setPreferred(bool preferred)
{
    m_preferred = preferred;
    if (preferred)
        setAccessibleDescription(tr("Return inserts this"));
    update();
}

QSize SuggestionRow::sizeHint() const
{
    return {100, std::max(rowHeight, QFontMetrics(Theme::font(m_leadRole)).height() + 2 * Spacing::small)};
}

void SuggestionRow::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
        // A button by itself would walk on to any control; the list knows its edges.
        event->ignore();
        break;
    default:
        if (!clickOnReturn(*this, *event))
            QAbstractButton::keyPressEvent(event);
    }
}

void SuggestionRow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_preferred || underMouse() || isDown())
        paintFill(painter);
    if (!m_preferred)
        PaintShapes::hairLine(painter, 0, width(), 0);

    const QRect content = rect().adjusted(sidePadding - frameWidth, 0, frameWidth - sidePadding, 0);
    const QFont leadFont = Theme::font(m_leadRole);
    const QFontMetrics leadMetrics(leadFont);
    const int mostLead = m_detail.isEmpty() ? content.width() : qRound(content.width() * mostLeadShare);
    const QString lead = leadMetrics.elidedText(m_lead, Qt::ElideRight, mostLead);
    painter.setFont(leadFont);
    painter.setPen(Theme::color(ColorRole::textPrimary));
    const QRect leadRect = QStyle::visualRect(
        layoutDirection(), content, {content.left(), 0, leadMetrics.horizontalAdvance(lead) + 1, height()});
    paintText(painter, leadRect, lead);

    const QFont detailFont = Theme::font(TextRole::footnote);
    painter.setFont(detailFont);
    painter.setPen(Theme::color(ColorRole::textSecondary));
    const int detailLeft = content.left() + leadRect.width() + textGap;
    const QRect detailRect = QStyle::visualRect(layoutDirection(), content,
                                                {detailLeft, 0, content.right() + 1 - detailLeft, height()});
    paintText(painter, detailRect,
              QFontMetrics(detailFont).elidedText(m_detail, Qt::ElideRight, detailRect.width()));
    if (hasFocus())
        FocusRing::paintInside(painter, rect(), Radius::card - frameWidth);
}

void SuggestionRow::paintText(QPainter& painter, const QRect& place, const QString& text) const
{
    // The window's direction would move the sign in front of a name to its end when the name is written in
    // the other direction.
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter.drawText(place,
                     Qt::AlignVCenter | Qt::AlignAbsolute | Qt::TextSingleLine
                         | (isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft),
                     text);
}

void SuggestionRow::paintFill(QPainter& painter) const
{
    // The first and the last row end in the frame's round corners.
    QPainterPath frame;
    frame.addRoundedRect(QRectF(parentWidget()->rect())
                             .adjusted(frameWidth, frameWidth, -frameWidth, -frameWidth)
                             .translated(-pos()),
                         Radius::card - frameWidth, Radius::card - frameWidth);
    QPainterPath row;
    row.addRect(rect());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(frame.intersected(row), Theme::color(ColorRole::popoverSelection));
    painter.restore();
}

SuggestionList::SuggestionList(const QString& accessibleName, QWidget* parent)
    : QWidget(parent)
{
    setAccessibleName(accessibleName);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(frameWidth, frameWidth, frameWidth, frameWidth);
    m_layout->setSpacing(0);
}

bool SuggestionList::holdsFocus() const
{
    const QWidget* focused = window()->focusWidget();
    return focused && isAncestorOf(focused);
}

void SuggestionList::enterFromBelow()
{
    if (!m_rows.empty())
        m_rows.back()->setFocus(Qt::BacktabFocusReason);
}

void SuggestionList::clearRows()
{
    for (SuggestionRow* row : m_rows) {
        m_layout->removeWidget(row);
        row->hide();
        // A row may be on the way of telling that it was chosen.
        row->deleteLater();
    }
    m_rows.clear();
}

void SuggestionList::addRow(SuggestionRow* row, std::function<void()> choose)
{
    connect(row, &SuggestionRow::clicked, this, std::move(choose));
    row->setPreferred(m_rows.empty());
    m_layout->addWidget(row);
    if (QWidget* predecessor = m_rows.empty() ? m_tabPredecessor : m_rows.back())
        setTabOrder(predecessor, row);
    m_rows.push_back(row);
    row->show();
}

void SuggestionList::keyPressEvent(QKeyEvent* event)
{
    const auto focused =
        std::find_if(m_rows.begin(), m_rows.end(), [](const SuggestionRow* row) { return row->hasFocus(); });
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT leaveRequested();
    } else if (event->key() == Qt::Key_Down && focused != m_rows.end()) {
        if (focused + 1 != m_rows.end())
            (*(focused + 1))->setFocus(Qt::TabFocusReason);
        else
            Q_EMIT leaveRequested();
    } else if (event->key() == Qt::Key_Up && focused != m_rows.end()) {
        if (focused != m_rows.begin())
            (*(focused - 1))->setFocus(Qt::BacktabFocusReason);
    } else if (isForText(*event)) {
        Q_EMIT keyForTextPressed(event);
    } else {
        QWidget::keyPressEvent(event);
    }
}

void SuggestionList::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    PaintShapes::outlined(painter, rect(), Radius::card, Theme::color(ColorRole::menu),
                          Theme::color(ColorRole::menuBorder));
}

MentionSuggestionList::MentionSuggestionList(QWidget* parent)
    : SuggestionList(tr("Teammates to mention"), parent)
{
    setObjectName(QStringLiteral("mentionSuggestions"));
}

void MentionSuggestionList::setMatches(std::vector<Agent> matches)
{
    if (m_matches == matches)
        return;
    clearRows();
    m_matches = std::move(matches);
    for (const Agent& agent : m_matches) {
        addRow(new SuggestionRow(u'@' + agent.name, TextRole::body, agent.email, this),
               [this, agent] { Q_EMIT selected(agent); });
    }
}

CannedSuggestionList::CannedSuggestionList(QWidget* parent)
    : SuggestionList(tr("Canned responses"), parent)
{
    setObjectName(QStringLiteral("cannedSuggestions"));
}

void CannedSuggestionList::setMatches(std::vector<CannedResponse> matches)
{
    if (m_matches == matches)
        return;
    clearRows();
    m_matches = std::move(matches);
    for (const CannedResponse& response : m_matches) {
        addRow(new SuggestionRow(u'/' + response.shortcut, TextRole::code, response.body, this),
               [this, response] { Q_EMIT selected(response); });
    }
}

} // namespace orvia
