#include "Views/Widgets/FocusReturn.h"

#include "Views/Widgets/FocusRing.h"

#include <QWidget>

namespace orvia {

void FocusReturn::setEnabled(QWidget* control, bool enabled)
{
    if (enabled == control->isEnabled())
        return;
    const QWidget* window = control->window();
    const bool hadFocus = window->focusWidget() == control;
    if (hadFocus)
        m_ring = FocusRing::isShown(control);
    // Disabled, it passes the focus on.
    control->setEnabled(enabled);
    QWidget* meanwhile = std::exchange(m_meanwhile, hadFocus ? window->focusWidget() : nullptr);
    if (enabled && meanwhile && meanwhile == window->focusWidget())
        FocusRing::restoreFocus(control, m_ring);
}

} // namespace orvia
