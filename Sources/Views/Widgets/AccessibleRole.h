#pragma once

class QWidget;

namespace orvia {

/// Makes a widget that paints a text itself known to assistive tools as a text whose content is the widget's
/// accessible name. To be called before anything else in the widget's constructor: once an assistive tool has
/// heard of the widget its role is fixed.
void markAsStaticText(QWidget* widget);

} // namespace orvia
