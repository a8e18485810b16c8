#include "Views/ConversationListView/SnippetLayout.h"

#include "Theme/Theme.h"
#include "Views/ConversationListView/ListRules.h"
#include "Views/ConversationListView/RowText.h"
#include "Views/Widgets/PaintShapes.h"

#include <QPainter>

#include <numeric>

namespace orvia {

namespace {

constexpr int mostLines = 2;
constexpr QChar ellipsis(0x2026);

} // namespace

SnippetLayout::SnippetLayout(const QString& snippet, const QString& query, int width,
                             Qt::LayoutDirection direction)
    : m_width(std::max(width, 1))
    , m_lineHeight(Theme::lineHeight(TextRole::callout))
{
    const QString text = shownLine(snippet);
    m_hits = ListRules::highlighted(text, shownLine(query));
    const QFont font = Theme::font(TextRole::callout);
    m_lineHeight = std::max(m_lineHeight, QFontMetrics(font).height());
    m_layout.setFont(font);
    QTextOption option(direction == Qt::RightToLeft ? Qt::AlignRight | Qt::AlignAbsolute
                                                    : Qt::AlignLeft | Qt::AlignAbsolute);
    option.setTextDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_layout.setTextOption(option);
    if (!fits(text))
        elide(text);
}

bool SnippetLayout::fits(const QString& text)
{
    m_layout.setText(text);
    setFormats(text.size());
    m_layout.beginLayout();
    bool isComplete = false;
    for (int count = 0; count < mostLines; ++count) {
        QTextLine line = m_layout.createLine();
        isComplete = !line.isValid();
        if (isComplete)
            break;
        line.setLineWidth(m_width);
        line.setPosition({0, count * m_lineHeight + (m_lineHeight - line.height()) / 2});
        isComplete = line.textStart() + line.textLength() >= text.size();
    }
    m_layout.endLayout();
    return isComplete;
}

/// Looks for the longest beginning of @p text that leaves room for the ellipsis.
void SnippetLayout::elide(const QString& text)
{
    const QTextLine last = m_layout.lineAt(m_layout.lineCount() - 1);
    qsizetype shortEnough = last.textStart();
    // Part of the next word may fit where the whole word did not.
    qsizetype tooLong = std::min<qsizetype>(text.size(), 2 * (last.textStart() + last.textLength()));
    const auto elided = [&text](qsizetype length) {
        QString beginning = text.left(length);
        if (!beginning.isEmpty() && beginning.back().isHighSurrogate())
            beginning.chop(1);
        return beginning.trimmed() + ellipsis;
    };
    while (tooLong - shortEnough > 1) {
        const qsizetype middle = std::midpoint(shortEnough, tooLong);
        (fits(elided(middle)) ? shortEnough : tooLong) = middle;
    }
    fits(elided(shortEnough));
}

void SnippetLayout::setFormats(qsizetype length)
{
    QTextCharFormat hitFormat;
    hitFormat.setForeground(Theme::color(ColorRole::accentFlame));
    hitFormat.setFontWeight(QFont::DemiBold);
    QList<QTextLayout::FormatRange> formats;
    for (const UnicodeText::Range& hit : m_hits) {
        if (hit.start >= length)
            break;
        const qsizetype shown = std::min(hit.length, length - hit.start);
        formats.append({static_cast<int>(hit.start), static_cast<int>(shown), hitFormat});
    }
    m_layout.setFormats(formats);
}

void SnippetLayout::paint(QPainter& painter, const QPointF& topLeft) const
{
    paintTiles(painter, topLeft);
    painter.setPen(Theme::color(ColorRole::textSecondary));
    m_layout.draw(&painter, topLeft);
}

void SnippetLayout::paintTiles(QPainter& painter, const QPointF& topLeft) const
{
    const QColor fill = Theme::color(ColorRole::highlightFill);
    if (fill.alpha() == 0)
        return;
    for (const QTextLayout::FormatRange& hit : m_layout.formats()) {
        for (int number = 0; number < m_layout.lineCount(); ++number) {
            const QTextLine line = m_layout.lineAt(number);
            const int start = std::max(hit.start, line.textStart());
            const int end = std::min(hit.start + hit.length, line.textStart() + line.textLength());
            if (start >= end)
                continue;
            const qreal left = line.cursorToX(start);
            const qreal right = line.cursorToX(end);
            const QRectF tile(topLeft.x() + std::min(left, right) - 1,
                              topLeft.y() + number * m_lineHeight + 1, std::abs(right - left) + 2,
                              m_lineHeight - 2);
            PaintShapes::fillRounded(painter, tile, Radius::hit, fill);
        }
    }
}

} // namespace orvia
