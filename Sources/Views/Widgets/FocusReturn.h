#pragma once

#include <QPointer>

class QWidget;

namespace orvia {

/// Gives the focus back to a control that lost it by being disabled.
class FocusReturn {
public:
    /// Enables or disables @p control. One that had the focus gets it back, with its ring, when it is enabled
    /// again, unless the agent has moved the focus meanwhile.
    void setEnabled(QWidget* control, bool enabled);

private:
    QPointer<QWidget> m_meanwhile; ///< where the focus went when the control lost it
    bool m_ring = false;
};

} // namespace orvia
