#pragma once

class QWidget;

namespace orvia {

/// Makes a widget that paints a text itself known to assistive tools as a text whose content is the widget's
/// accessible name. Call it in the widget's constructor.
void markAsStaticText(QWidget* widget);

} // namespace orvia
