#include "Views/Widgets/ScrollArea.h"

#include "Theme/Theme.h"
#include "Views/Widgets/PaintShapes.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTimerEvent>

namespace orvia {

namespace {

constexpr int barWidth = 10;
constexpr int handleWidth = 6;
constexpr int handleInset = 2;
constexpr int litMilliseconds = 900;

} // namespace

OverlayScrollBar* OverlayScrollBar::install(QAbstractScrollArea* area)
{
    return new OverlayScrollBar(area);
}

OverlayScrollBar::OverlayScrollBar(QAbstractScrollArea* area)
    : QScrollBar(Qt::Vertical, area)
    , m_area(area)
{
    area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::NoFocus);
    QScrollBar* source = area->verticalScrollBar();
    connect(source, &QScrollBar::rangeChanged, this, &OverlayScrollBar::follow);
    connect(source, &QScrollBar::valueChanged, this, [this] {
        follow();
        flash();
    });
    connect(this, &QScrollBar::valueChanged, source, &QScrollBar::setValue);
    area->installEventFilter(this);
    follow();
}

void OverlayScrollBar::follow()
{
    const QScrollBar* source = m_area->verticalScrollBar();
    const QSignalBlocker silent(this);
    setRange(source->minimum(), source->maximum());
    setPageStep(source->pageStep());
    setSingleStep(source->singleStep());
    setValue(source->value());
    const QRect inner = m_area->rect();
    const int x = m_area->isRightToLeft() ? 0 : inner.width() - barWidth;
    setGeometry(x, 0, barWidth, inner.height());
    setVisible(source->maximum() > source->minimum());
    raise();
    update();
}

void OverlayScrollBar::flash()
{
    m_lit = true;
    m_fade.start(litMilliseconds, this);
    update();
}

bool OverlayScrollBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_area && (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest))
        follow();
    return QScrollBar::eventFilter(watched, event);
}

bool OverlayScrollBar::event(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return QScrollBar::event(event);
}

void OverlayScrollBar::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_fade.timerId()) {
        QScrollBar::timerEvent(event);
        return;
    }
    m_fade.stop();
    m_lit = false;
    update();
}

void OverlayScrollBar::paintEvent(QPaintEvent*)
{
    if (!m_lit && !underMouse() && !isSliderDown())
        return;
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect slider =
        style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    QPainter painter(this);
    const int x = isRightToLeft() ? handleInset : width() - handleInset - handleWidth;
    const QRectF handle(x, slider.y() + handleInset, handleWidth, slider.height() - 2 * handleInset);
    PaintShapes::fillRounded(painter, handle, handleWidth / 2.0, Theme::color(ColorRole::scrollHandle));
}

ScrollArea::ScrollArea(QWidget* parent)
    : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    // What lies under the area shows through; it is the surroundings that know their colour.
    viewport()->setAutoFillBackground(false);
    QPalette transparent = palette();
    transparent.setColor(QPalette::Window, Qt::transparent);
    viewport()->setPalette(transparent);
    OverlayScrollBar::install(this);
}

QSize ScrollArea::sizeHint() const
{
    return widget() ? widget()->sizeHint() : QScrollArea::sizeHint();
}

bool ScrollArea::focusNextPrevChild(bool next)
{
    // QScrollArea would stop the search at its own edge; whoever is around decides where the focus goes.
    const bool moved = QWidget::focusNextPrevChild(next);
    if (QWidget* focused = QApplication::focusWidget(); moved && focused && isAncestorOf(focused))
        ensureWidgetVisible(focused, Spacing::large, Spacing::large);
    return moved;
}

} // namespace orvia
