#include "Views/AdminViews/AdminRow.h"

#include "Theme/Theme.h"
#include "Views/ConversationListView/RowText.h"
#include "Views/Widgets/Tag.h"

#include <QFontMetrics>
#include <QStringList>
#include <QStyle>

#include <algorithm>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int titleLine = 18;
constexpr int detailLine = 16;
constexpr int tagGap = Spacing::small;
constexpr int codeGap = Spacing::medium;
constexpr int badgeGap = Spacing::medium;
constexpr int leastTagWidth = 48;

int lineHeight(int least, std::initializer_list<TextRole> roles)
{
    for (const TextRole role : roles)
        least = std::max(least, QFontMetrics(Theme::font(role)).height());
    return least;
}

int titleHeight()
{
    return lineHeight(titleLine, {TextRole::bodyMedium, TextRole::code});
}
int detailHeight()
{
    return lineHeight(detailLine, {TextRole::footnote, TextRole::codeRegular});
}
int lineGap(bool hasTag)
{
    return hasTag ? Spacing::hair : 0;
}

int advance(TextRole role, const QString& text)
{
    return text.isEmpty() ? 0 : QFontMetrics(Theme::font(role)).horizontalAdvance(shownLine(text)) + 1;
}

QRect centered(int x, int width, int height, const QRect& line)
{
    return {x, line.top() + (line.height() - height) / 2, width, height};
}

} // namespace

QString AdminRow::accessibleText() const
{
    QStringList parts{title, tag, detail, code, badge};
    parts.removeAll(QString());
    return parts.join(", "_L1);
}

int AdminRowGeometry::rowHeight(int least, bool hasTag)
{
    return std::max(least, titleHeight() + lineGap(hasTag) + detailHeight() + 2 * Spacing::small);
}

AdminRowGeometry AdminRowGeometry::of(const AdminRow& row, const QRect& area, int trailing,
                                      Qt::LayoutDirection direction)
{
    AdminRowGeometry geometry;
    QRect lines = area.adjusted(0, 0, -trailing, 0);
    if (!row.badge.isEmpty()) {
        const QSize size = BadgeLabel::sizeFor(row.badge);
        geometry.badge = centered(lines.right() + 1 - size.width(), size.width(), size.height(), area);
        lines.setRight(geometry.badge.left() - badgeGap - 1);
    }
    const int gap = lineGap(!row.tag.isEmpty());
    const int height = titleHeight() + gap + detailHeight();
    const QRect first(lines.left(), area.top() + (area.height() - height) / 2, lines.width(), titleHeight());
    const QRect second(lines.left(), first.bottom() + 1 + gap, lines.width(), detailHeight());

    // The tag gives way before the title, and neither vanishes.
    const int titleWidth = advance(row.titleIsCode ? TextRole::code : TextRole::bodyMedium, row.title);
    geometry.title = first;
    if (!row.tag.isEmpty()) {
        const QSize size = Tag::sizeFor(shownLine(row.tag));
        const int room = first.width() - tagGap;
        const int tagWidth = std::min(size.width(), std::max(room - titleWidth, leastTagWidth));
        geometry.title.setWidth(std::min(titleWidth, room - tagWidth));
        geometry.tag = centered(geometry.title.right() + 1 + tagGap, tagWidth, size.height(), first);
    }

    geometry.detail = second;
    if (!row.code.isEmpty()) {
        const int room = second.width() - codeGap;
        const int codeWidth =
            std::min(advance(TextRole::codeRegular, row.code),
                     std::max(room - advance(TextRole::footnote, row.detail), room * 2 / 3));
        geometry.detail.setWidth(std::min(advance(TextRole::footnote, row.detail), room - codeWidth));
        geometry.code =
            QRect(geometry.detail.right() + 1 + codeGap, second.top(), codeWidth, second.height());
    }
    for (QRect* part : {&geometry.title, &geometry.tag, &geometry.detail, &geometry.code, &geometry.badge}) {
        if (!part->isEmpty())
            *part = QStyle::visualRect(direction, area, *part);
    }
    return geometry;
}

} // namespace orvia
