#pragma once

#include "Platform/ShownText.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QRect>
#include <QString>

namespace orvia {

/// Paints @p text, one that @c shownLine answered, at the leading edge of @p area, centred vertically and
/// elided where it does not fit. The text's own direction orders its letters, @p direction says which edge
/// leads. Answers the width it took.
int paintRowText(QPainter& painter, const QRect& area, const QString& text, const QFont& font,
                 const QColor& color, Qt::LayoutDirection direction);

} // namespace orvia
