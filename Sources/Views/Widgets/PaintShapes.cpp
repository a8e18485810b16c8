#include "Views/Widgets/PaintShapes.h"

#include "Theme/Theme.h"

#include <QPainter>
#include <QPainterPath>

namespace orvia {

void PaintShapes::fillRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& fill)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(rect, radius, radius);
    painter.restore();
}

void PaintShapes::outlined(QPainter& painter, const QRectF& rect, qreal radius, const QColor& fill,
                           const QColor& line, qreal lineWidth)
{
    const qreal half = lineWidth / 2;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(fill);
    painter.setPen(QPen(line, lineWidth));
    painter.drawRoundedRect(rect.adjusted(half, half, -half, -half), radius - half, radius - half);
    painter.restore();
}

void PaintShapes::hairLine(QPainter& painter, qreal left, qreal right, qreal y)
{
    const qreal thickness = 1 / painter.device()->devicePixelRatio();
    painter.fillRect(QRectF(left, y, right - left, thickness), Theme::color(ColorRole::hairline));
}

} // namespace orvia
