#include "Views/Widgets/FocusRing.h"

#include "Theme/Theme.h"

#include <QEvent>
#include <QFocusEvent>
#include <QFocusFrame>
#include <QPainter>
#include <QPointer>
#include <QWidget>

namespace orvia {

namespace {

/// Qt's frame stays hidden when its widget got the focus out of sight and is scrolled to only then.
class Ring : public QFocusFrame {
public:
    using QFocusFrame::QFocusFrame;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const bool handled = QFocusFrame::eventFilter(watched, event);
        if (event->type() == QEvent::Move && isHidden() && widget() && widget()->isVisible()
            && parentWidget()->rect().intersects(geometry())) {
            raise();
            show();
        }
        return handled;
    }
};

/// Moves the one focus frame to the widget that needs it.
class RingFollower : public QObject {
public:
    RingFollower(QWidget* widget, FocusRing::Policy policy)
        : QObject(widget)
        , m_policy(policy)
    {
        widget->installEventFilter(this);
        if (widget->hasFocus() && policy == FocusRing::Policy::always)
            show(widget);
    }

    static QFocusFrame* frame() { return currentFrame(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* widget = static_cast<QWidget*>(watched);
        if (event->type() == QEvent::FocusIn)
            focusCame(widget, static_cast<QFocusEvent*>(event)->reason());
        else if (event->type() == QEvent::FocusOut)
            hide(widget);
        return false;
    }

private:
    static QPointer<QFocusFrame>& currentFrame()
    {
        static QPointer<QFocusFrame> frame;
        return frame;
    }

    void focusCame(QWidget* widget, Qt::FocusReason reason)
    {
        // A window or menu that comes and goes is no reason to change how the focus looks.
        const bool returns = reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason
                             || reason == Qt::MenuBarFocusReason;
        if (!returns || m_policy == FocusRing::Policy::always)
            m_shown = m_policy == FocusRing::Policy::always || FocusRing::showsFor(reason);
        if (m_shown)
            show(widget);
    }

    static void show(QWidget* widget)
    {
        if (!currentFrame())
            currentFrame() = new Ring(widget);
        currentFrame()->setWidget(widget);
    }

    static void hide(QWidget* widget)
    {
        if (currentFrame() && currentFrame()->widget() == widget) {
            currentFrame()->setWidget(nullptr);
            // The frame must not die with a window that it once visited.
            delete currentFrame();
        }
    }

    FocusRing::Policy m_policy;
    bool m_shown = false;
};

} // namespace

void FocusRing::attach(QWidget* widget, qreal radius, Policy policy, int gap)
{
    widget->setProperty("focusRingRadius", radius);
    widget->setProperty("focusRingGap", gap);
    new RingFollower(widget, policy);
}

bool FocusRing::showsFor(Qt::FocusReason reason)
{
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason
           || reason == Qt::ShortcutFocusReason;
}

bool FocusRing::isShown(const QWidget* widget)
{
    return widget && RingFollower::frame() && RingFollower::frame()->widget() == widget;
}

void FocusRing::restoreFocus(QWidget* widget, bool ring)
{
    widget->setFocus(ring ? Qt::ShortcutFocusReason : Qt::OtherFocusReason);
}

void FocusRing::paintInside(QPainter& painter, const QRectF& highlight, qreal radius)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Theme::color(ColorRole::focusRing), 2));
    painter.drawRoundedRect(highlight.adjusted(1, 1, -1, -1), radius - 1, radius - 1);
    painter.restore();
}

} // namespace orvia
