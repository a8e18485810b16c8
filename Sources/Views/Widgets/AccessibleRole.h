#pragma once

class QWidget;

namespace orvia {

// What assistive tools take a widget for of which Qt knows nothing. To be called before anything else in the
// widget's constructor: once an assistive tool has heard of the widget its role is fixed.

/// A widget that paints a text itself is a text whose content is the widget's accessible name.
void markAsStaticText(QWidget* widget);
/// A widget that shows that something is under way is a progress bar without a value.
void markAsProgress(QWidget* widget);
/// A picture that says nothing by itself is passed over.
void markAsDecoration(QWidget* widget);

} // namespace orvia
