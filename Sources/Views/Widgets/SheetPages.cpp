#include "Views/Widgets/SheetPages.h"

#include "Theme/Theme.h"
#include "Views/Widgets/ScrollArea.h"
#include "Views/Widgets/Sheet.h"

#include <QGraphicsOpacityEffect>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace orvia {

SheetPages::SheetPages(const QString& title, QWidget* parent)
    : QStackedWidget(parent)
{
    auto* scroll = new ScrollArea(this);
    addWidget(scroll);
    m_pages.push_back({title, scroll, nullptr, nullptr});
}

void SheetPages::setBody(QWidget* body)
{
    auto* padded = new QWidget;
    auto* column = new QVBoxLayout(padded);
    column->setContentsMargins(Sheet::bodyPadding);
    column->setSpacing(0);
    column->addWidget(body);
    column->addStretch();
    static_cast<ScrollArea*>(m_pages.front().contents)->setWidget(padded);
    padded->setAutoFillBackground(false);
}

int SheetPages::bodyHeight() const
{
    const auto* scroll = static_cast<const ScrollArea*>(m_pages.front().contents);
    QWidget* padded = scroll->widget();
    if (!padded)
        return 0;
    return padded->layout()->hasHeightForWidth() ? padded->layout()->totalHeightForWidth(width())
                                                 : padded->sizeHint().height();
}

void SheetPages::push(Page page)
{
    addWidget(page.contents);
    m_pages.push_back(std::move(page));
    setCurrentWidget(current().contents);
    slide(current().contents, Motion::pageSlide);
}

void SheetPages::pop()
{
    if (m_pages.size() < 2)
        return;
    const Page left = m_pages.back();
    m_pages.pop_back();
    setCurrentWidget(current().contents);
    removeWidget(left.contents);
    left.contents->deleteLater();
    if (left.trailing) {
        left.trailing->hide();
        left.trailing->deleteLater();
    }
    slide(current().contents, -Motion::pageSlide);
}

void SheetPages::slide(QWidget* page, int from)
{
    // A page that still slides arrives at once when the next one comes.
    if (m_movement)
        m_movement->setCurrentTime(m_movement->duration());
    const int duration = isVisible() ? Theme::duration(Motion::pagePush) : 0;
    if (duration == 0)
        return;
    // The effect is there for the length of the movement only: it paints through a pixmap.
    auto* fade = new QGraphicsOpacityEffect(page);
    fade->setOpacity(0);
    page->setGraphicsEffect(fade);
    auto* movement = new QVariantAnimation(page);
    m_movement = movement;
    movement->setDuration(duration);
    movement->setEasingCurve(QEasingCurve::OutCubic);
    movement->setStartValue(0.0);
    movement->setEndValue(1.0);
    connect(movement, &QVariantAnimation::valueChanged, page, [page, fade, from](const QVariant& value) {
        const qreal share = value.toReal();
        page->move(qRound(from * (1 - share)), page->y());
        fade->setOpacity(share);
    });
    connect(movement, &QVariantAnimation::finished, page, [page] {
        page->move(0, page->y());
        page->setGraphicsEffect(nullptr);
    });
    movement->start(QAbstractAnimation::DeleteWhenStopped);
}

} // namespace orvia
