#include "Views/Widgets/ColumnGrip.h"

#include <QMouseEvent>

namespace orvia {

namespace {

constexpr int gripWidth = 7;

} // namespace

ColumnGrip::ColumnGrip(QWidget* parent)
    : QWidget(parent)
{
    setCursor(Qt::SplitHCursor);
}

QRect ColumnGrip::areaAround(int x, int height) const
{
    return {x - gripWidth / 2, 0, gripWidth, height};
}

void ColumnGrip::mousePressEvent(QMouseEvent* event)
{
    m_offset = event->position().toPoint().x();
}

void ColumnGrip::mouseMoveEvent(QMouseEvent* event)
{
    // The strip follows the line, so that what the line could not follow stays in the difference.
    const int delta = event->position().toPoint().x() - m_offset;
    if (event->buttons().testFlag(Qt::LeftButton) && delta != 0)
        Q_EMIT dragged(isRightToLeft() ? -delta : delta);
}

} // namespace orvia
