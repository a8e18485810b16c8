#include "Views/ConversationListView/ConversationRowPainter.h"

#include "Theme/Theme.h"
#include "Views/ConversationListView/ConversationRow.h"
#include "Views/ConversationListView/RowText.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"
#include "Views/Widgets/Tag.h"

#include <QCoreApplication>
#include <QStyle>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int leadingPadding = 28;
constexpr int trailingPadding = Spacing::large;
constexpr int verticalPadding = Spacing::small;
constexpr int nameLineHeight = 20;
constexpr int textLineHeight = 18;
constexpr int badgeLineHeight = 18;
constexpr int unreadDotX = 12;
constexpr int unreadDotSize = 8;
constexpr int snoozeIconSize = 13;
/// What a caption and a tag are left with before anything else gives way.
constexpr int leastCaptionWidth = 48;
constexpr int leastTagWidth = 40;

int advance(const QFont& font, const QString& text)
{
    return text.isEmpty() ? 0 : QFontMetrics(font).horizontalAdvance(text);
}

/// Takes up to @p overflow pixels from @p width, leaving it at least @p least. Answers what is still too
/// much.
int shrink(int& width, int least, int overflow)
{
    const int taken = std::clamp(width - least, 0, std::max(overflow, 0));
    width -= taken;
    return overflow - taken;
}

} // namespace

void paintRowGround(QPainter& painter, const QRect& area, const RowState& state, int leading)
{
    const QRectF highlight = QRectF(area).adjusted(6, 2, -6, -3);
    if (state.isSelected || state.isHovered) {
        const ColorRole fill = state.isSelected ? ColorRole::listSelection : ColorRole::hover;
        PaintShapes::fillRounded(painter, highlight, Radius::highlight, Theme::color(fill));
    }
    if (state.hasSeparator) {
        const QRect line(area.left() + leading, area.bottom(), area.width() - leading - trailingPadding, 1);
        const QRect placed = QStyle::visualRect(state.direction, area, line);
        PaintShapes::hairLine(painter, placed.left(), placed.right() + 1, placed.top());
    }
    if (state.showsFocus)
        FocusRing::paintInside(painter, highlight, Radius::highlight);
}

ConversationRowPainter::ConversationRowPainter()
    : m_nameFont(Theme::font(TextRole::bodyStrong))
    , m_textFont(Theme::font(TextRole::callout))
    , m_typingFont(m_textFont)
    , m_captionFont(Theme::font(TextRole::caption))
    , m_microFont(Theme::font(TextRole::micro))
{
    m_typingFont.setItalic(true);
    m_nameLine = std::max(nameLineHeight, QFontMetrics(m_nameFont).height());
    m_textLine = std::max(textLineHeight, QFontMetrics(m_textFont).height());
    m_badgeLine =
        std::max({badgeLineHeight, QFontMetrics(m_captionFont).height(), Tag::sizeFor({}).height()});
    m_height = 2 * verticalPadding + m_nameLine + m_textLine + Spacing::xSmall + m_badgeLine;
}

void ConversationRowPainter::paint(QPainter& painter, const QRect& area, const ConversationRow& row,
                                   const RowState& state, Instant now) const
{
    paintRowGround(painter, area, state, leadingPadding);
    const auto lineAt = [&area](int y, int height) {
        return QRect(area.left() + leadingPadding, area.top() + y,
                     area.width() - leadingPadding - trailingPadding, height);
    };
    int y = verticalPadding;
    paintFirstLine(painter, area, lineAt(y, m_nameLine), row, state, now);
    y += m_nameLine;
    const ColorRole textColor = row.isUnread ? ColorRole::textPrimary : ColorRole::textSecondary;
    paintRowText(painter, QStyle::visualRect(state.direction, area, lineAt(y, m_textLine)),
                 shownLine(row.text), row.isTyping ? m_typingFont : m_textFont, Theme::color(textColor),
                 state.direction);
    y += m_textLine + Spacing::xSmall;
    paintBadges(painter, area, lineAt(y, m_badgeLine), row, state);
}

void ConversationRowPainter::paintFirstLine(QPainter& painter, const QRect& area, const QRect& line,
                                            const ConversationRow& row, const RowState& state,
                                            Instant now) const
{
    const auto place = [&](int x, int width) {
        return QStyle::visualRect(state.direction, area, QRect(x, line.top(), width, line.height()));
    };
    if (row.isUnread) {
        const int top = line.top() + (line.height() - unreadDotSize) / 2;
        const QRect dot(area.left() + unreadDotX, top, unreadDotSize, unreadDotSize);
        PaintShapes::fillRounded(painter, QStyle::visualRect(state.direction, area, dot), unreadDotSize / 2.0,
                                 Theme::color(ColorRole::accentMark));
    }
    const QString time = row.time(now);
    const int timeWidth = advance(m_captionFont, time);
    const QColor secondary = Theme::color(ColorRole::textSecondary);
    paintRowText(painter, place(line.right() + 1 - timeWidth, timeWidth), time, m_captionFont, secondary,
                 state.direction);

    const QString code = shownLine(row.countryCode);
    int codeWidth = advance(m_microFont, code);
    const int free = line.width() - timeWidth - (timeWidth ? Spacing::small : 0);
    // A code that is none must not push the name away.
    codeWidth = std::min(codeWidth, free / 4);
    const int nameWidth = free - (codeWidth ? codeWidth + Spacing::iconGap : 0);
    const ColorRole nameColor = row.isClosed ? ColorRole::textSecondary : ColorRole::textPrimary;
    const int taken = paintRowText(painter, place(line.left(), nameWidth), shownLine(row.name), m_nameFont,
                                   Theme::color(nameColor), state.direction);
    const int codeX = line.left() + taken + (taken ? Spacing::iconGap : 0);
    paintRowText(painter, place(codeX, codeWidth), code, m_microFont, secondary, state.direction);
}

void ConversationRowPainter::paintBadges(QPainter& painter, const QRect& area, const QRect& line,
                                         const ConversationRow& row, const RowState& state) const
{
    const QString product = shownLine(row.productName);
    const QString caption = shownLine(row.viewingCaption);
    const QString snoozed =
        row.isSnoozed ? QCoreApplication::translate("ConversationListView", "Snoozed") : QString();
    const int ratingWidth = advance(m_captionFont, row.rating);
    const int snoozedWidth =
        snoozed.isEmpty() ? 0 : snoozeIconSize + Spacing::tight + advance(m_captionFont, snoozed);
    int tagWidth = product.isEmpty() ? 0 : Tag::sizeFor(product).width();
    int captionWidth = advance(m_microFont, caption);

    int needed = 0;
    for (const int width : {ratingWidth, tagWidth, snoozedWidth, captionWidth})
        needed += width ? width + Spacing::small : 0;
    int overflow = shrink(captionWidth, leastCaptionWidth, needed - Spacing::small - line.width());
    shrink(tagWidth, leastTagWidth, overflow);

    const auto place = [&](int x, int width) {
        return QStyle::visualRect(state.direction, area, QRect(x, line.top(), width, line.height()));
    };
    const QColor secondary = Theme::color(ColorRole::textSecondary);
    int x = line.left();
    if (ratingWidth) {
        paintRowText(painter, place(x, ratingWidth), row.rating, m_captionFont, secondary, state.direction);
        x += ratingWidth + Spacing::small;
    }
    if (tagWidth) {
        const int height = Tag::sizeFor({}).height();
        const QRect slot = place(x, tagWidth);
        const QRect tag(slot.left(), line.top() + (line.height() - height) / 2, tagWidth, height);
        const ColorRole fill = state.isSelected  ? ColorRole::tagSelected
                               : state.isHovered ? ColorRole::tagHover
                                                 : ColorRole::tag;
        painter.setLayoutDirection(product.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
        Tag::paint(painter, tag, product, fill);
        x += tagWidth + Spacing::small;
    }
    if (snoozedWidth) {
        Theme::drawIcon(painter, place(x, snoozeIconSize), u"snooze"_s, snoozeIconSize,
                        ColorRole::textSecondary);
        const int textX = x + snoozeIconSize + Spacing::tight;
        paintRowText(painter, place(textX, snoozedWidth - snoozeIconSize - Spacing::tight), snoozed,
                     m_captionFont, secondary, state.direction);
    }
    paintRowText(painter, place(line.right() + 1 - captionWidth, captionWidth), caption, m_microFont,
                 Theme::color(ColorRole::textTertiary), state.direction);
}

} // namespace orvia
