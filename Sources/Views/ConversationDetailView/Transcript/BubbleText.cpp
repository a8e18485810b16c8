#include "Views/ConversationDetailView/Transcript/BubbleText.h"

#include "Platform/ShownText.h"

#include <QPainter>
#include <QTextBoundaryFinder>

#include <cmath>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// How far from the limit a cut looks for the end of a word, in code units.
constexpr qsizetype cutSearch = 80;

/// One line break is granted for so many code units, so that a text of line breaks only stays bounded as
/// well.
constexpr qsizetype unitsPerParagraph = 10;

/// What a character beyond the basic plane counts, in code units: shaping an emoji costs as much as a few
/// words.
constexpr qsizetype emojiWeight = 8;

/// Around a position only this much is searched for a word's ends: a hostile word has a million letters.
constexpr qsizetype wordSearch = 2000;

/// The first character from @p from on that ends a line whatever its width, or -1.
qsizetype nextBreak(QStringView text, qsizetype from)
{
    const auto isBreak = [](QChar character) {
        return character == u'\n' || character == QChar::LineSeparator
               || character == QChar::ParagraphSeparator;
    };
    const auto found = std::find_if(text.begin() + from, text.end(), isBreak);
    return found == text.end() ? -1 : found - text.begin();
}

} // namespace

BubbleText::BubbleText(const QString& text, Style style)
    : m_text(text)
    , m_style(std::move(style))
{
    if (m_text.contains(u'\r'))
        m_text.replace("\r\n"_L1, "\n"_L1);
}

qsizetype BubbleText::cutPosition(qsizetype limit) const
{
    for (qsizetype position = 0, cost = 0; position < std::min(limit, m_text.size()); ++position) {
        cost += m_text.at(position).isHighSurrogate() ? emojiWeight : 1;
        if (cost > limit)
            limit = position;
    }
    const QStringView within = QStringView(m_text).first(std::min(limit, m_text.size()));
    qsizetype feed = -1;
    for (qsizetype breaks = limit / unitsPerParagraph; breaks > 0; --breaks) {
        feed = nextBreak(within, feed + 1);
        if (feed < 0)
            break;
    }
    const bool tooManyBreaks = feed >= 0 && feed + 1 < m_text.size();
    if (tooManyBreaks)
        return feed;
    if (m_text.size() <= limit)
        return m_text.size();
    const qsizetype from = std::max<qsizetype>(0, limit - cutSearch);
    const QStringView around = QStringView(m_text).mid(from, limit - from);
    const qsizetype space = around.lastIndexOf(u' ');
    if (space > 0)
        return from + space;
    QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, around.toString());
    graphemes.setPosition(around.size());
    const qsizetype boundary = graphemes.toPreviousBoundary();
    return boundary > 0 ? from + boundary : limit;
}

void BubbleText::layOut(qreal width, qsizetype limit)
{
    m_paragraphs.clear();
    m_size = {};
    m_lineCount = 0;
    m_shownLength = cutPosition(limit);
    const QStringView shown = QStringView(m_text).first(m_shownLength);
    qsizetype start = 0;
    for (;;) {
        const qsizetype feed = nextBreak(shown, start);
        const qsizetype end = feed < 0 ? shown.size() : feed;
        appendParagraph(start, shown.sliced(start, end - start), width);
        if (feed < 0)
            break;
        start = feed + 1;
    }
    m_size.setHeight(m_lineCount * m_style.lineHeight);
    m_size.setWidth(std::ceil(std::min(m_size.width(), width)));
    alignLines(m_size.width());
}

void BubbleText::appendParagraph(qsizetype start, QStringView text, qreal width)
{
    QString content = shownParagraph(text.toString());
    if (start + text.size() == m_shownLength && isCut())
        content.append(u'…');
    Paragraph paragraph{start, qreal(m_lineCount * m_style.lineHeight),
                        std::make_unique<QTextLayout>(content, m_style.font)};
    QTextOption option(m_style.alignment);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(content.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    paragraph.layout->setTextOption(option);
    paragraph.layout->setCacheEnabled(true);
    paragraph.layout->beginLayout();
    qreal y = 0;
    for (;;) {
        QTextLine line = paragraph.layout->createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(width);
        // Every line has the same height, whichever font its characters come from.
        const QFontMetricsF metrics(m_style.font);
        const qreal baseline = (m_style.lineHeight - metrics.height()) / 2 + metrics.ascent();
        line.setPosition({0, std::round(y + baseline - line.ascent())});
        m_size.setWidth(std::max(m_size.width(), line.naturalTextWidth()));
        y += m_style.lineHeight;
        ++m_lineCount;
    }
    paragraph.layout->endLayout();
    m_paragraphs.push_back(std::move(paragraph));
}

void BubbleText::alignLines(qreal width)
{
    // Alignment and right-to-left lines refer to the final width, which is that of the longest line.
    for (const Paragraph& paragraph : m_paragraphs) {
        const bool rightToLeft = paragraph.layout->textOption().textDirection() == Qt::RightToLeft;
        for (int i = 0; i < paragraph.layout->lineCount(); ++i) {
            QTextLine line = paragraph.layout->lineAt(i);
            const qreal room = width - line.naturalTextWidth();
            // QTextLine aligns inside the width at which it was broken.
            qreal wanted = rightToLeft ? room : 0;
            if (m_style.alignment.testFlag(Qt::AlignHCenter))
                wanted = room / 2;
            const qreal own = line.naturalTextRect().left() - line.x();
            line.setPosition({std::round(wanted - own), line.y()});
        }
    }
}

void BubbleText::paint(QPainter& painter, const QPointF& origin, const QRectF& clip,
                       const Selection& selection, const QColor& color, const QColor& selectionColor) const
{
    painter.setPen(color);
    for (const Paragraph& paragraph : m_paragraphs) {
        const int lines = paragraph.layout->lineCount();
        const QRectF bounds(origin.x(), origin.y() + paragraph.top, m_size.width(),
                            lines * m_style.lineHeight);
        if (!bounds.intersects(clip))
            continue;
        QList<QTextLayout::FormatRange> ranges;
        const qsizetype length = paragraph.layout->text().size();
        const qsizetype from = std::clamp<qsizetype>(selection.start() - paragraph.start, 0, length);
        const qsizetype to = std::clamp<qsizetype>(selection.end() - paragraph.start, 0, length);
        if (from < to) {
            QTextLayout::FormatRange range;
            range.start = static_cast<int>(from);
            range.length = static_cast<int>(to - from);
            range.format.setBackground(selectionColor);
            range.format.setForeground(color);
            ranges.append(range);
        }
        paragraph.layout->draw(&painter, origin + QPointF(0, paragraph.top), ranges, clip);
    }
}

const BubbleText::Paragraph& BubbleText::paragraphAt(qsizetype position) const
{
    const auto after = std::upper_bound(m_paragraphs.begin(), m_paragraphs.end(), position,
                                        [](qsizetype value, const Paragraph& p) { return value < p.start; });
    return after == m_paragraphs.begin() ? *after : *std::prev(after);
}

const BubbleText::Paragraph& BubbleText::paragraphAtHeight(qreal y) const
{
    const auto after = std::upper_bound(m_paragraphs.begin(), m_paragraphs.end(), y,
                                        [](qreal value, const Paragraph& p) { return value < p.top; });
    return after == m_paragraphs.begin() ? *after : *std::prev(after);
}

QTextLine BubbleText::lineAt(const Paragraph& paragraph, qsizetype position) const
{
    const qsizetype length = paragraph.layout->text().size();
    const qsizetype inside = std::clamp<qsizetype>(position - paragraph.start, 0, length);
    const QTextLine line = paragraph.layout->lineForTextPosition(static_cast<int>(inside));
    return line.isValid() ? line : paragraph.layout->lineAt(paragraph.layout->lineCount() - 1);
}

qsizetype BubbleText::positionAt(const QPointF& point) const
{
    const Paragraph& paragraph = paragraphAtHeight(point.y());
    const int index = static_cast<int>((point.y() - paragraph.top) / m_style.lineHeight);
    const QTextLine line = paragraph.layout->lineAt(std::clamp(index, 0, paragraph.layout->lineCount() - 1));
    return std::min(paragraph.start + line.xToCursor(point.x()), m_shownLength);
}

QRectF BubbleText::caretRect(qsizetype position) const
{
    const Paragraph& paragraph = paragraphAt(position);
    const QTextLine line = lineAt(paragraph, position);
    const qreal x = line.cursorToX(static_cast<int>(position - paragraph.start));
    return {x, paragraph.top + line.lineNumber() * m_style.lineHeight, 1, qreal(m_style.lineHeight)};
}

qsizetype BubbleText::nextPosition(qsizetype position, bool word) const
{
    const Paragraph& paragraph = paragraphAt(position);
    const qsizetype length = paragraph.layout->text().size();
    if (position - paragraph.start >= length || position >= m_shownLength)
        return std::min(position + 1, m_shownLength);
    const auto mode = word ? QTextLayout::SkipWords : QTextLayout::SkipCharacters;
    const int next = paragraph.layout->nextCursorPosition(static_cast<int>(position - paragraph.start), mode);
    return std::min(paragraph.start + next, m_shownLength);
}

qsizetype BubbleText::previousPosition(qsizetype position, bool word) const
{
    const Paragraph& paragraph = paragraphAt(position);
    if (position <= paragraph.start)
        return std::max<qsizetype>(position - 1, 0);
    const auto mode = word ? QTextLayout::SkipWords : QTextLayout::SkipCharacters;
    return paragraph.start
           + paragraph.layout->previousCursorPosition(static_cast<int>(position - paragraph.start), mode);
}

qsizetype BubbleText::verticalPosition(qsizetype position, int lines) const
{
    const QPointF caret = caretRect(position).center();
    const qreal y = caret.y() + lines * m_style.lineHeight;
    if (y < 0)
        return 0;
    return y > m_size.height() ? m_shownLength : positionAt({caret.x(), y});
}

qsizetype BubbleText::lineStart(qsizetype position) const
{
    const Paragraph& paragraph = paragraphAt(position);
    return paragraph.start + lineAt(paragraph, position).textStart();
}

qsizetype BubbleText::lineEnd(qsizetype position) const
{
    const Paragraph& paragraph = paragraphAt(position);
    const QTextLine line = lineAt(paragraph, position);
    const bool last = line.lineNumber() + 1 == paragraph.layout->lineCount();
    const qsizetype end = paragraph.start + line.textStart() + line.textLength();
    return std::min(last ? end : previousPosition(end, false), m_shownLength);
}

BubbleText::Selection BubbleText::wordAt(qsizetype position) const
{
    const qsizetype from = std::max<qsizetype>(0, position - wordSearch);
    const QString around = m_text.mid(from, 2 * wordSearch);
    QTextBoundaryFinder words(QTextBoundaryFinder::Word, around);
    words.setPosition(position - from);
    qsizetype start =
        words.isAtBoundary() && position < m_shownLength ? words.position() : words.toPreviousBoundary();
    words.setPosition(start);
    const qsizetype end = words.toNextBoundary();
    start = std::max<qsizetype>(start, 0);
    return {from + start, std::min(from + (end < 0 ? around.size() : end), m_shownLength)};
}

QString BubbleText::selectedText(const Selection& selection) const
{
    return m_text.mid(selection.start(), selection.end() - selection.start());
}

} // namespace orvia
