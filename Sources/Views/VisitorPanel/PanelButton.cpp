#include "Views/VisitorPanel/PanelButton.h"

#include "Views/VisitorPanel/PanelMetrics.h"
#include "Views/VisitorPanel/PanelText.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FocusRing.h"

#include <QKeyEvent>
#include <QPainter>

namespace orvia {

using namespace Qt::StringLiterals;

PanelButton::PanelButton(QWidget* parent)
    : QPushButton(parent)
{
    setAttribute(Qt::WA_Hover);
    setAutoDefault(false);
    setFlat(true);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    FocusRing::attach(this, Radius::hit);
    connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
}

QSize PanelButton::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

void PanelButton::keyPressEvent(QKeyEvent* event)
{
    if (!clickOnReturn(*this, *event))
        QPushButton::keyPressEvent(event);
}

bool PanelButton::event(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return QPushButton::event(event);
}

int PanelButton::drawLine(QPainter& painter, const QRect& area, const QString& text, const QFont& font,
                          ColorRole color) const
{
    QFont shownFont = font;
    if (underMouse() || isDown())
        shownFont.setUnderline(true);
    painter.setFont(shownFont);
    painter.setPen(Theme::color(color));
    const QString shown = painter.fontMetrics().elidedText(text, Qt::ElideRight, area.width());
    painter.drawText(area, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine, shown);
    return painter.fontMetrics().horizontalAdvance(shown);
}

LinkButton::LinkButton(Kind kind, QWidget* parent)
    : PanelButton(parent)
    , m_kind(kind)
{
}

void LinkButton::setTexts(const QString& text, const QString& title)
{
    setAccessibleName(title.isEmpty() ? text : title + ", "_L1 + text);
    m_text = shownLine(text);
    m_title = shownLine(title);
    updateGeometry();
    update();
}

QFont LinkButton::textFont() const
{
    if (m_kind == Kind::action)
        return Theme::font(TextRole::bodyMedium);
    // The accent colour alone does not stand out enough on dark surfaces.
    QFont font = Theme::font(Theme::shared().isDark() ? TextRole::calloutStrong : TextRole::callout);
    font.setUnderline(Theme::shared().isDark());
    return font;
}

QSize LinkButton::sizeHint() const
{
    const QFontMetrics metrics(textFont());
    const QFontMetrics titleMetrics(Theme::font(TextRole::bodyMedium));
    const int line = qMax(PanelMetrics::lineHeight, metrics.height());
    const int width = qMax(metrics.horizontalAdvance(m_text), titleMetrics.horizontalAdvance(m_title));
    return {width + 1,
            m_title.isEmpty() ? line : line + qMax(PanelMetrics::lineHeight, titleMetrics.height())};
}

void LinkButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QRect area = rect();
    if (!m_title.isEmpty()) {
        const int textHeight = qMax(PanelMetrics::lineHeight, QFontMetrics(textFont()).height());
        const QRect titleArea(area.left(), area.top(), area.width(), area.height() - textHeight);
        drawLine(painter, titleArea, m_title, Theme::font(TextRole::bodyMedium), ColorRole::textPrimary);
        area.setTop(titleArea.bottom() + 1);
    }
    drawLine(painter, area, m_text, textFont(),
             m_kind == Kind::link ? ColorRole::accentFlame : ColorRole::textSecondary);
}

} // namespace orvia
