#include "Views/ConversationListView/SearchResultButton.h"

#include "Theme/Theme.h"
#include "Views/ConversationListView/ConversationRowPainter.h"
#include "Views/ConversationListView/RowText.h"
#include "Views/ConversationListView/TimeTick.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/Tag.h"

#include <QFocusEvent>
#include <QPainter>
#include <QStyle>

namespace orvia {

namespace {

constexpr int topPadding = Spacing::small;
constexpr int sidePadding = Spacing::large;
constexpr int bottomPadding = 10;
constexpr int firstLineHeight = 20;
constexpr int tagLineHeight = 18;

} // namespace

SearchResultButton::SearchResultButton(SearchResultRow row, TimeTick& tick, QWidget* parent)
    : QAbstractButton(parent)
    , m_tick(tick)
{
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::ClickFocus);
    connect(&Theme::shared(), &Theme::changed, this, &SearchResultButton::followTheme);
    connect(&tick, &TimeTick::ticked, this, [this] { setRow(m_row); });
    followTheme();
    setRow(std::move(row));
}

void SearchResultButton::setRow(SearchResultRow row)
{
    m_row = std::move(row);
    m_snippet.reset();
    setAccessibleName(m_row.accessibleText(m_tick.now()));
    updateGeometry();
    update();
}

void SearchResultButton::followTheme()
{
    m_firstLine = std::max(firstLineHeight, QFontMetrics(Theme::font(TextRole::bodyStrong)).height());
    m_tagLine = std::max(tagLineHeight, Tag::sizeFor({}).height());
    m_snippet.reset();
    updateGeometry();
}

const SnippetLayout& SearchResultButton::snippet(int width) const
{
    const int textWidth = std::max(width - 2 * sidePadding, 1);
    if (!m_snippet || m_snippet->width() != textWidth)
        m_snippet = std::make_unique<SnippetLayout>(m_row.snippet, m_row.query, textWidth, layoutDirection());
    return *m_snippet;
}

int SearchResultButton::heightForWidth(int width) const
{
    const int tagPart = m_row.productName.isEmpty() ? 0 : Spacing::xSmall + m_tagLine;
    return topPadding + m_firstLine + snippet(width).height() + tagPart + bottomPadding;
}

QSize SearchResultButton::sizeHint() const
{
    return {320, heightForWidth(width())};
}

bool SearchResultButton::event(QEvent* event)
{
    const bool handled = QAbstractButton::event(event);
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave) {
        update();
        Q_EMIT highlightChanged();
    }
    return handled;
}

void SearchResultButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)
        event->ignore(); // The list moves the focus.
    else if (!clickOnReturn(*this, *event))
        QAbstractButton::keyPressEvent(event);
}

void SearchResultButton::focusInEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        m_showsFocus = FocusRing::showsFor(event->reason());
    QAbstractButton::focusInEvent(event);
    update();
    Q_EMIT focused();
}

void SearchResultButton::focusOutEvent(QFocusEvent* event)
{
    QAbstractButton::focusOutEvent(event);
    update();
}

bool SearchResultButton::isAboveHighlight() const
{
    const QWidget* below = parentWidget() ? parentWidget()->childAt(x(), geometry().bottom() + 1) : nullptr;
    return below && below->underMouse();
}

void SearchResultButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    RowState state;
    state.isHovered = underMouse() || isDown();
    state.showsFocus = hasFocus() && m_showsFocus;
    state.hasSeparator = !state.isHovered && !isAboveHighlight();
    state.direction = layoutDirection();
    paintRowGround(painter, rect(), state, sidePadding);

    const int inner = width() - 2 * sidePadding;
    paintFirstLine(painter, QRect(sidePadding, topPadding, inner, m_firstLine));
    const SnippetLayout& text = snippet(width());
    int y = topPadding + m_firstLine;
    text.paint(painter, QPointF(sidePadding, y));
    y += text.height() + Spacing::xSmall;
    if (const QString product = shownLine(m_row.productName); !product.isEmpty()) {
        const QSize size = Tag::sizeFor(product).boundedTo({inner, m_tagLine});
        const QRect tag(sidePadding, y + (m_tagLine - size.height()) / 2, size.width(), size.height());
        Tag::paint(painter, QStyle::visualRect(layoutDirection(), rect(), tag), product,
                   state.isHovered ? ColorRole::tagHover : ColorRole::tag);
    }
    m_tick.request(m_row.lastMessageAt);
}

void SearchResultButton::paintFirstLine(QPainter& painter, const QRect& line) const
{
    const QFont timeFont = Theme::font(TextRole::caption);
    const QString time = m_row.time(m_tick.now());
    const int timeWidth = QFontMetrics(timeFont).horizontalAdvance(time);
    const auto place = [&](int x, int width) {
        return QStyle::visualRect(layoutDirection(), rect(), QRect(x, line.top(), width, line.height()));
    };
    paintRowText(painter, place(line.right() + 1 - timeWidth, timeWidth), time, timeFont,
                 Theme::color(ColorRole::textSecondary), layoutDirection());
    const int nameWidth = line.width() - timeWidth - (timeWidth ? Spacing::small : 0);
    paintRowText(painter, place(line.left(), nameWidth), shownLine(m_row.name),
                 Theme::font(TextRole::bodyStrong), Theme::color(ColorRole::textPrimary), layoutDirection());
}

} // namespace orvia
