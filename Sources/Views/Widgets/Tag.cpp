#include "Views/Widgets/Tag.h"

#include "Views/Widgets/AccessibleRole.h"
#include "Views/Widgets/PaintShapes.h"

#include <QPainter>

namespace orvia {

namespace {

constexpr int tagHeight = 16;
constexpr int tagPadding = 7;
constexpr int badgeHeight = 18;
constexpr int badgePadding = 8;

QSize capsuleSize(const QString& text, TextRole role, int height, int padding)
{
    const QFontMetrics metrics(Theme::font(role));
    return {metrics.horizontalAdvance(text) + 2 * padding, std::max(height, metrics.height())};
}

void paintCapsuleText(QPainter& painter, const QRectF& area, const QString& text, TextRole role,
                      ColorRole color, int padding)
{
    painter.setFont(Theme::font(role));
    painter.setPen(Theme::color(color));
    const QRectF inner = area.adjusted(padding, 0, -padding, 0);
    painter.drawText(
        area, Qt::AlignCenter | Qt::TextSingleLine,
        painter.fontMetrics().elidedText(text, Qt::ElideRight, static_cast<int>(inner.width() + 1)));
}

} // namespace

Tag::Tag(const QString& text, QWidget* parent)
    : QWidget(parent)
{
    markAsStaticText(this);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setText(text);
    connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
}

void Tag::setText(const QString& text)
{
    m_text = text;
    setAccessibleName(text);
    updateGeometry();
    update();
}

QSize Tag::sizeFor(const QString& text)
{
    return capsuleSize(text, TextRole::micro, tagHeight, tagPadding);
}

QSize Tag::minimumSizeHint() const
{
    return {std::min(sizeHint().width(), 2 * tagPadding + 2 * tagHeight), sizeHint().height()};
}

void Tag::paint(QPainter& painter, const QRectF& area, const QString& text, ColorRole fill)
{
    PaintShapes::fillRounded(painter, area, area.height() / 2, Theme::color(fill));
    paintCapsuleText(painter, area, text, TextRole::micro, ColorRole::tagText, tagPadding);
}

void Tag::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paint(painter, rect(), m_text);
}

BadgeLabel::BadgeLabel(const QString& text, QWidget* parent)
    : QWidget(parent)
    , m_text(text)
{
    markAsStaticText(this);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName(text);
    connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
}

QSize BadgeLabel::sizeFor(const QString& text)
{
    return capsuleSize(text, TextRole::micro, badgeHeight, badgePadding);
}

void BadgeLabel::paint(QPainter& painter, const QRectF& area, const QString& text)
{
    PaintShapes::outlined(painter, area, area.height() / 2, Qt::transparent,
                          Theme::color(ColorRole::textTertiary));
    paintCapsuleText(painter, area, text, TextRole::micro, ColorRole::textSecondary, badgePadding);
}

void BadgeLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paint(painter, rect(), m_text);
}

HairLine::HairLine(Qt::Orientation orientation, QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    if (orientation == Qt::Horizontal)
        setFixedHeight(1);
    else
        setFixedWidth(1);
}

void HairLine::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const qreal thin = 1 / devicePixelRatioF();
    const QRectF line = width() > height() ? QRectF(0, 0, width(), thin) : QRectF(0, 0, thin, height());
    painter.fillRect(line, Theme::color(ColorRole::hairline));
}

} // namespace orvia
