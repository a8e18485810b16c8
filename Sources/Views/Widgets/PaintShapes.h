#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

namespace orvia {

/// The few flat shapes that every screen is made of. Rectangles are the outer edge of what is painted.
namespace PaintShapes {

void fillRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& fill);
/// A filled rounded rectangle with a line inside its edge.
void outlined(QPainter& painter, const QRectF& rect, qreal radius, const QColor& fill, const QColor& line,
              qreal lineWidth = 1);
/// A horizontal line one device pixel high where the scale allows, at the top of the pixel row @p y.
void hairLine(QPainter& painter, qreal left, qreal right, qreal y);

} // namespace PaintShapes

} // namespace orvia
