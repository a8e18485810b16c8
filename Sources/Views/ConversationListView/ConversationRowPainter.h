#pragma once

#include "Models/Instant.h"

#include <QFont>
#include <QRect>
#include <Qt>

class QPainter;

namespace orvia {

struct ConversationRow;

/// How a row of a list stands out from the others.
struct RowState {
    bool isSelected = false;
    bool isHovered = false;
    bool showsFocus = false;
    bool hasSeparator = true; ///< false next to a highlighted row
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

/// Paints the highlight, the focus ring and the separator of a list row that fills @p area. The separator
/// begins @p leading pixels after the leading edge.
void paintRowGround(QPainter& painter, const QRect& area, const RowState& state, int leading);

/// Paints the rows of the inbox. Keeps the fonts of its texts; make a new one when the theme changes.
class ConversationRowPainter {
public:
    ConversationRowPainter();

    /// The height of every row in pixels.
    int height() const { return m_height; }
    void paint(QPainter& painter, const QRect& area, const ConversationRow& row, const RowState& state,
               Instant now) const;

private:
    void paintFirstLine(QPainter& painter, const QRect& area, const QRect& line, const ConversationRow& row,
                        const RowState& state, Instant now) const;
    void paintBadges(QPainter& painter, const QRect& area, const QRect& line, const ConversationRow& row,
                     const RowState& state) const;

    QFont m_nameFont;
    QFont m_textFont;
    QFont m_typingFont;
    QFont m_captionFont;
    QFont m_microFont;
    int m_nameLine;
    int m_textLine;
    int m_badgeLine;
    int m_height;
};

} // namespace orvia
