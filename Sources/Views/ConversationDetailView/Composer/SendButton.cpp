#include "Views/ConversationDetailView/Composer/SendButton.h"

#include "Views/Widgets/FocusRing.h"

#include <QPainter>

namespace orvia {

namespace {

constexpr int diameter = 30;
constexpr int arrowSize = 18;
constexpr int pressedDarkening = 115; // percent

} // namespace

SendButton::SendButton(QWidget* parent)
    : BusyButton(parent)
{
    setObjectName(QStringLiteral("sendButton"));
    FocusRing::attach(this, diameter / 2.0);
    setNote(false);
}

void SendButton::setNote(bool isNote)
{
    m_isNote = isNote;
    const QString help = isNote ? tr("Add note") : tr("Send");
    setToolTip(help);
    setAccessibleName(help);
    update();
}

QSize SendButton::sizeHint() const
{
    return {diameter, diameter};
}

void SendButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = Theme::color(ColorRole::sendDisabled);
    if (isEnabled()) {
        fill = Theme::color(m_isNote ? ColorRole::noteAccent : ColorRole::accentFlame);
        if (isDown())
            fill = fill.darker(pressedDarkening);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawEllipse(rect());
    Theme::drawIcon(painter, rect(), QStringLiteral("send"), arrowSize, ColorRole::primaryButtonText);
}

} // namespace orvia
