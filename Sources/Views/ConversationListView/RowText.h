#pragma once

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QRect>
#include <QString>

namespace orvia {

/// @p text on one line, and cut where no row is wide enough to show it, so that laying out a text of any
/// length costs the same. The service's texts go through here before they are painted.
QString rowText(const QString& text);

/// Paints @p text at the leading edge of @p area, centred vertically and elided where it does not fit. The
/// text's own direction orders its letters, @p direction says which edge leads. Answers the width it took.
int paintRowText(QPainter& painter, const QRect& area, const QString& text, const QFont& font,
                 const QColor& color, Qt::LayoutDirection direction);

} // namespace orvia
