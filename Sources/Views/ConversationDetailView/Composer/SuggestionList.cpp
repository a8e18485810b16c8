#include "Views/ConversationDetailView/Composer/SuggestionList.h"

#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int rowHeight = 34;
constexpr int sidePadding = 12;
constexpr int textGap = 10;
constexpr qsizetype longestShownText = 300; // characters; a row is one line
constexpr double mostLeadShare = 0.6;       // of the row's width, so that the detail keeps a place

/// One line of at most what can be seen: line breaks would paint over the neighbouring rows.
QString singleLine(const QString& text)
{
    return text.left(longestShownText).simplified();
}

} // namespace

SuggestionRow::SuggestionRow(const QString& lead, TextRole leadRole, const QString& detail, QWidget* parent)
    : QAbstractButton(parent)
    , m_lead(singleLine(lead))
    , m_leadRole(leadRole)
    , m_detail(singleLine(detail))
{
    setAccessibleName(m_detail.isEmpty() ? lead : lead + ", "_L1 + detail);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
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
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void SuggestionRow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_preferred || underMouse() || isDown())
        painter.fillRect(rect(), Theme::color(ColorRole::popoverSelection));

    const QRect content = rect().adjusted(sidePadding, 0, -sidePadding, 0);
    const QFont leadFont = Theme::font(m_leadRole);
    const QFontMetrics leadMetrics(leadFont);
    const int mostLead = m_detail.isEmpty() ? content.width() : qRound(content.width() * mostLeadShare);
    const QString lead = leadMetrics.elidedText(m_lead, Qt::ElideRight, mostLead);
    painter.setFont(leadFont);
    painter.setPen(Theme::color(ColorRole::textPrimary));
    const QRect leadRect = QStyle::visualRect(
        layoutDirection(), content, {content.left(), 0, leadMetrics.horizontalAdvance(lead) + 1, height()});
    painter.drawText(leadRect, Qt::AlignVCenter | Qt::AlignAbsolute | Qt::TextSingleLine | Qt::AlignLeft,
                     lead);

    const QFont detailFont = Theme::font(TextRole::footnote);
    painter.setFont(detailFont);
    painter.setPen(Theme::color(ColorRole::textSecondary));
    const int detailLeft = content.left() + leadRect.width() + textGap;
    const QRect detailRect = QStyle::visualRect(layoutDirection(), content,
                                                {detailLeft, 0, content.right() + 1 - detailLeft, height()});
    painter.drawText(detailRect, Qt::AlignVCenter | Qt::TextSingleLine,
                     QFontMetrics(detailFont).elidedText(m_detail, Qt::ElideRight, detailRect.width()));
    if (hasFocus())
        FocusRing::paintInside(painter, rect(), Radius::card - 1);
}

SuggestionList::SuggestionList(const QString& accessibleName, QWidget* parent)
    : QWidget(parent)
{
    setAccessibleName(accessibleName);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(1, 1, 1, 1);
    m_layout->setSpacing(1);
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
    } else {
        QWidget::keyPressEvent(event);
    }
}

void SuggestionList::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    PaintShapes::outlined(painter, rect(), Radius::card, Theme::color(ColorRole::menu),
                          Theme::color(ColorRole::menuBorder));
    for (std::size_t i = 1; i < m_rows.size(); ++i)
        PaintShapes::hairLine(painter, 1, width() - 1, m_rows[i]->y() - 1);
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
