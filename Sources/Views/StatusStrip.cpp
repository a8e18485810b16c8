#include "Views/StatusStrip.h"

#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/PaintShapes.h"

#include <QHBoxLayout>
#include <QPainter>

namespace orvia {

namespace {

constexpr int stripHeight = 32;
constexpr int dotSize = 6;

} // namespace

StatusStrip::StatusStrip(Session& session, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_text(new ElidedLabel({}, TextRole::footnote, ColorRole::textSecondary))
{
    setMinimumHeight(stripHeight);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(Spacing::large + dotSize + Spacing::small, 1, Spacing::large, 0);
    line->addWidget(m_text);
    connect(&session, &Session::socketConnectedChanged, this, &StatusStrip::follow);
    follow();
}

void StatusStrip::follow()
{
    m_text->setText(m_session.socketConnected() ? tr("Connected") : tr("Reconnecting"));
    update();
}

void StatusStrip::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::color(ColorRole::sidebarBar));
    PaintShapes::hairLine(painter, 0, width(), 0);
    const int x = isRightToLeft() ? width() - Spacing::large - dotSize : static_cast<int>(Spacing::large);
    const QRectF dot(x, (height() + 1 - dotSize) / 2.0, dotSize, dotSize);
    const ColorRole role = m_session.socketConnected() ? ColorRole::accentFlame : ColorRole::dotOff;
    PaintShapes::fillRounded(painter, dot, dotSize / 2.0, Theme::color(role));
}

} // namespace orvia
