#include "Views/Widgets/Spinner.h"

#include "Views/Widgets/AccessibleRole.h"

#include <QElapsedTimer>
#include <QPainter>
#include <QTimerEvent>

namespace orvia {

namespace {

constexpr int frameInterval = 30;
constexpr qreal strokeWidth = 1.75;
constexpr qreal ringOpacity = 0.25;

/// All spinners turn together, so that one that is rebuilt does not jump.
qreal turnedDegrees()
{
    static const QElapsedTimer clock = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    return static_cast<qreal>(clock.elapsed() % Motion::spinnerTurn) * 360.0 / Motion::spinnerTurn;
}

} // namespace

Spinner::Spinner(int size, ColorRole color, QWidget* parent)
    : QWidget(parent)
    , m_size(size)
    , m_color(color)
{
    markAsProgress(this);
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(tr("Loading"));
}

void Spinner::setColor(ColorRole color)
{
    m_color = color;
    update();
}

void Spinner::showEvent(QShowEvent* event)
{
    m_timer.start(frameInterval, this);
    QWidget::showEvent(event);
}

void Spinner::hideEvent(QHideEvent* event)
{
    m_timer.stop();
    QWidget::hideEvent(event);
}

void Spinner::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_timer.timerId())
        update();
    else
        QWidget::timerEvent(event);
}

void Spinner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF ring = QRectF(rect()).adjusted(1, 1, -1, -1);
    QColor color = Theme::color(m_color);
    QPen pen(color, strokeWidth, Qt::SolidLine, Qt::RoundCap);
    color.setAlphaF(static_cast<float>(ringOpacity));
    painter.setPen(QPen(color, strokeWidth));
    painter.drawEllipse(ring);
    painter.setPen(pen);
    constexpr int sixteenths = 16;
    painter.drawArc(ring, static_cast<int>((90.0 - turnedDegrees()) * sixteenths), -90 * sixteenths);
}

} // namespace orvia
