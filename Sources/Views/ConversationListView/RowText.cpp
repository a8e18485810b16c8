#include "Views/ConversationListView/RowText.h"

#include <QTextBoundaryFinder>

namespace orvia {

namespace {

/// Wider than any column at any type size, in code units.
constexpr qsizetype longestRowText = 600;

} // namespace

QString rowText(const QString& text)
{
    if (text.size() <= longestRowText)
        return text.simplified();
    const QString head = text.left(longestRowText);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, head);
    finder.setPosition(longestRowText);
    const qsizetype boundary = finder.toPreviousBoundary();
    // Its last character may have been cut through; what follows is elided anyway.
    return head.left(boundary > 0 ? boundary : longestRowText).simplified();
}

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
    painter.setFont(font);
    painter.setPen(color);
    painter.setLayoutDirection(shown.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const Qt::Alignment leading = direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    painter.drawText(area,
                     static_cast<int>(leading | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine
                         | Qt::TextDontClip,
                     shown);
    return width;
}

} // namespace orvia
