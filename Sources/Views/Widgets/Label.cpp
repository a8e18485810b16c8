#include "Views/Widgets/Label.h"

#include "Platform/ShownText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace orvia {

Label::Label(const QString& text, TextRole role, ColorRole color, QWidget* parent)
    : QLabel(parent)
    , m_role(role)
    , m_color(color)
{
    setTextFormat(Qt::PlainText);
    setText(text);
    applyTheme();
    connect(&Theme::shared(), &Theme::changed, this, &Label::applyTheme);
}

void Label::setRole(TextRole role)
{
    m_role = role;
    applyTheme();
}

void Label::setColor(ColorRole color)
{
    m_color = color;
    applyTheme();
}

void Label::applyTheme()
{
    setFont(Theme::font(m_role));
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, Theme::color(m_color));
    setPalette(colors);
}

ElidedLabel::ElidedLabel(const QString& text, TextRole role, ColorRole color, QWidget* parent)
    : Label(text, role, color, parent)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QString ElidedLabel::singleLine() const
{
    return shownLine(text());
}

bool ElidedLabel::isElided() const
{
    return fontMetrics().horizontalAdvance(singleLine()) > contentsRect().width();
}

QSize ElidedLabel::sizeHint() const
{
    const QMargins margins = contentsMargins();
    return {fontMetrics().horizontalAdvance(singleLine()) + 1 + margins.left() + margins.right(),
            fontMetrics().height() + margins.top() + margins.bottom()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {std::min(sizeHint().width(), fontMetrics().horizontalAdvance(QChar(0x2026)) * 2),
            sizeHint().height()};
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        if (isElided())
            QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), shownToolTip(text()), this);
        else
            QToolTip::hideText();
        return true;
    }
    return Label::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    const QString shown = fontMetrics().elidedText(singleLine(), Qt::ElideRight, contentsRect().width());
    painter.drawText(contentsRect(), static_cast<int>(alignment()) | Qt::TextSingleLine, shown);
}

} // namespace orvia
