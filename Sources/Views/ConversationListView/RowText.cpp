#include "Views/ConversationListView/RowText.h"

namespace orvia {

namespace {

constexpr int overhang = 4;

} // namespace

int paintRowText(QPainter& painter, const QRect& area, const QString& text, const QFont& font,
                 const QColor& color, Qt::LayoutDirection direction)
{
    if (text.isEmpty() || area.width() <= 0)
        return 0;
    const QFontMetrics metrics(font);
    // Eliding compares fractions of a pixel, and would cut a text into the very width that it asked for.
    const int advance = metrics.horizontalAdvance(text);
    const QString shown =
        advance <= area.width() ? text : metrics.elidedText(text, Qt::ElideRight, area.width());
    const int width = std::min(metrics.horizontalAdvance(shown), area.width());
    painter.save();
    // Marks above and below a letter must not reach other lines; letters may lean out a little at the sides.
    painter.setClipRect(area.adjusted(-overhang, 0, overhang, 0), Qt::IntersectClip);
    painter.setFont(font);
    painter.setPen(color);
    painter.setLayoutDirection(shown.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const Qt::Alignment leading = direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    painter.drawText(area,
                     static_cast<int>(leading | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine
                         | Qt::TextDontClip,
                     shown);
    painter.restore();
    return width;
}

} // namespace orvia
