#include "Views/BannerView.h"

#include "Platform/ShownText.h"
#include "Theme/Theme.h"
#include "Views/Widgets/PaintShapes.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPainter>
#include <QVariantAnimation>

namespace orvia {

namespace {

constexpr int widest = 560;
constexpr int fromTop = 10;
constexpr int windowMargin = 12;
constexpr int horizontalPadding = 18;
constexpr int verticalPadding = 9;
constexpr int shadowOffset = 2;
constexpr int shadowBlur = 10;
constexpr qreal shadowOpacity = 0.25;
constexpr int shadowRoom = shadowBlur + shadowOffset;

class BannerAccessible : public QAccessibleWidget {
public:
    explicit BannerAccessible(BannerView* banner)
        : QAccessibleWidget(banner, QAccessible::AlertMessage)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? static_cast<BannerView*>(widget())->text()
                                         : QAccessibleWidget::text(kind);
    }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* banner = qobject_cast<BannerView*>(object);
    return banner ? new BannerAccessible(banner) : nullptr;
}

/// A soft shadow from rings of growing size, whose sum falls off towards the edge.
void drawShadow(QPainter& painter, const QRectF& panel)
{
    QColor shade(Qt::black);
    shade.setAlphaF(static_cast<float>(shadowOpacity / shadowBlur));
    for (int spread = -shadowBlur / 2; spread < shadowBlur / 2; ++spread) {
        const QRectF ring = panel.adjusted(-spread, -spread, spread, spread).translated(0, shadowOffset);
        PaintShapes::fillRounded(painter, ring, Radius::card + spread, shade);
    }
}

} // namespace

BannerView::BannerView(QWidget* parent)
    : QWidget(parent)
    , m_movement(new QVariantAnimation(this))
{
    static const bool installed = (QAccessible::installFactory(makeAccessible), true);
    Q_UNUSED(installed)
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
    connect(m_movement, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        m_share = value.toReal();
        place();
        update();
    });
    connect(m_movement, &QVariantAnimation::finished, this, [this] { setVisible(m_presented); });
    connect(&Theme::shared(), &Theme::changed, this, &BannerView::place);
}

void BannerView::present(const std::optional<QString>& text)
{
    if (!text) {
        if (std::exchange(m_presented, false))
            slide(false);
        return;
    }
    m_text = *text;
    m_shown = shownLine(m_text);
    if (!std::exchange(m_presented, true))
        slide(true);
    place();
    update();
    announce();
}

void BannerView::slide(bool in)
{
    m_movement->stop();
    const int duration = Theme::duration(in ? Motion::bannerIn : Motion::bannerOut);
    if (in) {
        show();
        raise();
    }
    if (duration == 0) {
        m_share = in ? 1 : 0;
        setVisible(in);
        return;
    }
    m_movement->setDuration(duration);
    m_movement->setEasingCurve(in ? QEasingCurve::OutCubic : QEasingCurve::InCubic);
    m_movement->setStartValue(m_share);
    m_movement->setEndValue(in ? 1.0 : 0.0);
    m_movement->start();
}

void BannerView::announce()
{
    QAccessibleEvent renamed(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&renamed);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

QRect BannerView::panel() const
{
    return rect().adjusted(shadowRoom, shadowRoom, -shadowRoom, -shadowRoom);
}

QRect BannerView::panelInParent() const
{
    return panel().translated(pos());
}

bool BannerView::isElided() const
{
    const QFontMetrics metrics(Theme::font(TextRole::callout));
    return metrics.horizontalAdvance(m_shown) > panel().width() - 2 * horizontalPadding;
}

void BannerView::place()
{
    const QFontMetrics metrics(Theme::font(TextRole::callout));
    const int room = std::min(widest, parentWidget()->width() - 2 * windowMargin);
    const int wanted = metrics.horizontalAdvance(m_shown) + 2 * horizontalPadding + 1;
    const QSize size(std::min(wanted, room), metrics.height() + 2 * verticalPadding);
    const int hidden = qRound((1 - m_share) * (size.height() + fromTop));
    resize(size.width() + 2 * shadowRoom, size.height() + 2 * shadowRoom);
    move((parentWidget()->width() - width()) / 2, fromTop - hidden - shadowRoom);
}

void BannerView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setOpacity(m_share);
    drawShadow(painter, panel());
    PaintShapes::fillRounded(painter, panel(), Radius::card, Theme::color(ColorRole::banner));
    painter.setFont(Theme::font(TextRole::callout));
    painter.setPen(Theme::color(ColorRole::bannerText));
    const QRect area = panel().adjusted(horizontalPadding, 0, -horizontalPadding, 0);
    painter.drawText(area, Qt::AlignCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(m_shown, Qt::ElideRight, area.width()));
}

} // namespace orvia
