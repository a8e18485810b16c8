#include "Views/ConversationListView/RowText.h"

#include <QTextLayout>

#include <optional>

namespace orvia {

namespace {

constexpr int overhang = 4;
constexpr qreal unlimited = 1'000'000;

/// A text laid out on one line. Measuring and painting it apart would shape it each time, which for a symbol
/// in colour means to decode its picture.
class LineOfText {
public:
    LineOfText(const QString& text, const QFont& font)
        : m_layout(text, font)
    {
        QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
        option.setWrapMode(QTextOption::NoWrap);
        option.setTextDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
        m_layout.setTextOption(option);
        m_layout.setCacheEnabled(true);
        m_layout.beginLayout();
        m_line = m_layout.createLine();
        m_line.setLineWidth(unlimited);
        m_layout.endLayout();
    }

    int advance() const { return qRound(m_line.horizontalAdvance()); }
    void paint(QPainter& painter, const QRect& area, Qt::Alignment edge) const
    {
        const qreal x =
            edge == Qt::AlignRight ? area.left() + area.width() - m_line.horizontalAdvance() : area.left();
        const qreal height = m_line.ascent() + m_line.descent();
        m_line.draw(&painter, QPointF(x, area.top() + (area.height() - height) / 2));
    }

private:
    QTextLayout m_layout;
    QTextLine m_line;
};

} // namespace

int paintRowText(QPainter& painter, const QRect& area, const QString& text, const QFont& font,
                 const QColor& color, Qt::LayoutDirection direction)
{
    if (text.isEmpty() || area.width() <= 0)
        return 0;
    std::optional<LineOfText> line(std::in_place, text, font);
    // Eliding compares fractions of a pixel, and would cut a text into the very width that it asked for.
    if (line->advance() > area.width())
        line.emplace(QFontMetrics(font).elidedText(text, Qt::ElideRight, area.width()), font);
    painter.save();
    // Marks above and below a letter must not reach other lines; letters may lean out a little at the sides.
    painter.setClipRect(area.adjusted(-overhang, 0, overhang, 0), Qt::IntersectClip);
    painter.setPen(color);
    line->paint(painter, area, direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    painter.restore();
    return std::min(line->advance(), area.width());
}

} // namespace orvia
