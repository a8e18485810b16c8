#include "Views/Widgets/Switch.h"

#include "Theme/Theme.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QVariantAnimation>

namespace orvia {

namespace {

constexpr QSize switchSize(30, 18);
constexpr int knobSize = 14;
constexpr int knobInset = 2;

} // namespace

Switch::Switch(const QString& accessibleName, QWidget* parent)
    : QCheckBox(parent)
    , m_knob(new QVariantAnimation(this))
{
    setAccessibleName(accessibleName);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_knob->setStartValue(0.0);
    m_knob->setEndValue(1.0);
    m_knob->setEasingCurve(QEasingCurve::OutCubic);
    connect(m_knob, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(this, &QCheckBox::toggled, this, &Switch::moveKnob);
    FocusRing::attach(this, switchSize.height() / 2.0);
}

void Switch::setLabel(QWidget* label)
{
    m_label = label;
    label->installEventFilter(this);
}

bool Switch::eventFilter(QObject* watched, QEvent* event)
{
    const bool presses =
        event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    if (watched != m_label || (!presses && event->type() != QEvent::MouseButtonRelease))
        return QCheckBox::eventFilter(watched, event);
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() != Qt::LeftButton || !isEnabled())
        return QCheckBox::eventFilter(watched, event);
    if (presses)
        setFocus(Qt::MouseFocusReason);
    else if (m_label->rect().contains(mouse->position().toPoint()))
        click();
    return true;
}

QSize Switch::sizeHint() const
{
    return switchSize;
}

void Switch::moveKnob(bool on)
{
    m_knob->stop();
    m_knob->setDirection(on ? QAbstractAnimation::Forward : QAbstractAnimation::Backward);
    const int duration = isVisible() ? Theme::duration(Motion::switchKnob) : 0;
    m_knob->setDuration(duration);
    if (duration > 0)
        m_knob->start();
    update();
}

void Switch::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        event->ignore(); // belongs to the default button of a sheet
    else
        QCheckBox::keyPressEvent(event);
}

void Switch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRectF track(QPointF(0, (height() - switchSize.height()) / 2.0), switchSize);
    painter.setOpacity(isEnabled() ? 1.0 : 0.5);
    PaintShapes::fillRounded(painter, track, track.height() / 2,
                             Theme::color(isChecked() ? ColorRole::switchOn : ColorRole::switchOff));
    const bool moving = m_knob->state() == QAbstractAnimation::Running;
    const qreal share = moving ? m_knob->currentValue().toReal() : isChecked() ? 1.0 : 0.0;
    const qreal travel = track.width() - knobSize - 2 * knobInset;
    const qreal offset = isRightToLeft() ? travel * (1 - share) : travel * share;
    PaintShapes::fillRounded(
        painter, QRectF(track.x() + knobInset + offset, track.y() + knobInset, knobSize, knobSize),
        knobSize / 2.0, Theme::color(ColorRole::switchKnob));
}

} // namespace orvia
